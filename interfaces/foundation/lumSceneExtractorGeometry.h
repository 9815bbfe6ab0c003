#pragma once

#include "foundation/lumGeometry.h"

/// Stands in a scene for one member of a collection adapter, so that the member can have tests of its own.
///
/// It is where the member is: its position is the member's when it was made, and setting it moves the member too once
/// applied. `ClumScene::extractGeometry` makes it.
class LUM_API ClumSceneExtractorGeometry : public ClumGeometry
{
  LUM_CONCRETE(ClumSceneExtractorGeometry, ClumGeometry);

public:
  ~ClumSceneExtractorGeometry() override;
  /// @return null if one of the two is null.
  static ClumSceneExtractorGeometryShPtr create(const ClumGeometryShPtr& i_extracted,
                                                const ClumCollectionAdapterGeometryShPtr& i_adapter);
  static ClumSceneExtractorGeometryShPtr createCopy(const ClumSceneExtractorGeometryConstShPtr& i_objectToCopy);
  ClumGeometryShPtr clone() const override;

  const ClumGeometryShPtr& extracted() const { return m_extracted; }
  /// The group that the member came from; null if it is gone.
  ClumCollectionAdapterGeometryShPtr adapter() const { return m_adapter.lock(); }

  unsigned int countMembers() const override { return m_extracted ? 1u : 0u; }
  ClumGeometryShPtr member(unsigned int i_rank) const override;
  bool hasCapability(ECapability i_capability) const override;
  std::uint64_t stamp() const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumSceneExtractorGeometry() = default;
  ClumSceneExtractorGeometry(const ClumGeometryShPtr& i_extracted, const ClumCollectionAdapterGeometryShPtr& i_adapter);
  ClumSceneExtractorGeometry(const ClumSceneExtractorGeometry& i_other) = default;
  lmStatus init(const ClumSceneExtractorGeometryWkPtr& i_weakPtr);

private:
  ClumGeometryShPtr m_extracted;
  WkPtr<ClumCollectionAdapterGeometry> m_adapter;
};
