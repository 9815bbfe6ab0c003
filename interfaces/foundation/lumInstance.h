#pragma once

#include "foundation/lumGeometry.h"

/// Another geometry shown once more, at a position of its own. The other one is its only member, and does not move
/// with it.
class LUM_API ClumInstance : public ClumGeometry
{
  LUM_CONCRETE(ClumInstance, ClumGeometry);

public:
  ~ClumInstance() override;
  /// @return null if the geometry is null.
  static ClumInstanceShPtr create(const ClumGeometryShPtr& i_instanced);
  /// Another instance of the same geometry.
  static ClumInstanceShPtr createCopy(const ClumInstanceConstShPtr& i_objectToCopy);
  ClumGeometryShPtr clone() const override;

  const ClumGeometryShPtr& instanced() const { return m_instanced; }

  void applyPositionToMembers() override {}
  unsigned int countMembers() const override { return m_instanced ? 1u : 0u; }
  ClumGeometryShPtr member(unsigned int i_rank) const override;
  bool hasCapability(ECapability i_capability) const override;
  std::uint64_t stamp() const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumInstance() = default;
  explicit ClumInstance(const ClumGeometryShPtr& i_instanced);
  ClumInstance(const ClumInstance& i_other) = default;
  lmStatus init(const ClumInstanceWkPtr& i_weakPtr);

private:
  ClumGeometryShPtr m_instanced;
};
