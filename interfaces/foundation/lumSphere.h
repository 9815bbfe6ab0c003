#pragma once

#include "foundation/lumLeafGeometry.h"

/// A solid ball around the origin of its frame.
class LUM_API ClumSphere : public ClumLeafGeometry
{
  LUM_CONCRETE(ClumSphere, ClumLeafGeometry);

public:
  ~ClumSphere() override;
  /// @return null unless all sizes are finite and above 0.
  static ClumSphereShPtr create(double i_radius);
  static ClumSphereShPtr createCopy(const ClumSphereConstShPtr& i_objectToCopy);
  ClumGeometryShPtr clone() const override;

  double radius() const { return m_radius; }

  void getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const override;
  void getSweptTriangles(ClumSweptTriangles& o_shape) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumSphere() = default;
  explicit ClumSphere(double i_radius);
  ClumSphere(const ClumSphere& i_other) = default;
  lmStatus init(const ClumSphereWkPtr& i_weakPtr);

private:
  bool areSizesSound() const;

  double m_radius = 1.0;
};
