#pragma once

#include "foundation/lumLeafGeometry.h"

/// A solid capsule along the z axis of its frame: all within `radius` of a segment of length `height` around the
/// origin.
class LUM_API ClumCapsule : public ClumLeafGeometry
{
  LUM_CONCRETE(ClumCapsule, ClumLeafGeometry);

public:
  ~ClumCapsule() override;
  /// @return null unless all sizes are finite and above 0; the height may be 0.
  static ClumCapsuleShPtr create(double i_radius, double i_height);
  static ClumCapsuleShPtr createCopy(const ClumCapsuleConstShPtr& i_objectToCopy);
  ClumGeometryShPtr clone() const override;

  double radius() const { return m_radius; }
  double height() const { return m_height; }

  void getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const override;
  void getSweptTriangles(ClumSweptTriangles& o_shape) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumCapsule() = default;
  ClumCapsule(double i_radius, double i_height);
  ClumCapsule(const ClumCapsule& i_other) = default;
  lmStatus init(const ClumCapsuleWkPtr& i_weakPtr);

private:
  bool areSizesSound() const;

  double m_radius = 1.0;
  double m_height = 1.0;
};
