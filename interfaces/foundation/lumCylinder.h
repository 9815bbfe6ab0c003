#pragma once

#include "foundation/lumLeafGeometry.h"

/// A solid cylinder along the z axis of its frame, half its height on either side of the origin.
///
/// Collision tests take a prism of 256 sides around it, which reaches beyond it by 7.6e-5 of its radius.
class LUM_API ClumCylinder : public ClumLeafGeometry
{
  LUM_CONCRETE(ClumCylinder, ClumLeafGeometry);

public:
  ~ClumCylinder() override;
  /// @return null unless all sizes are finite and above 0.
  static ClumCylinderShPtr create(double i_radius, double i_height);
  static ClumCylinderShPtr createCopy(const ClumCylinderConstShPtr& i_objectToCopy);
  ClumGeometryShPtr clone() const override;

  double radius() const { return m_radius; }
  double height() const { return m_height; }

  void getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const override;
  void getSweptTriangles(ClumSweptTriangles& o_shape) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumCylinder() = default;
  ClumCylinder(double i_radius, double i_height);
  ClumCylinder(const ClumCylinder& i_other) = default;
  lmStatus init(const ClumCylinderWkPtr& i_weakPtr);
  void makeEnclosure(std::vector<ClumPoint3>& o_points, double& o_radius) const override;

private:
  bool areSizesSound() const;

  double m_radius = 1.0;
  double m_height = 1.0;
};
