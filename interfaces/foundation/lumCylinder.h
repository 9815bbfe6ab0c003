#pragma once

#include "foundation/lumTurnedSolid.h"

/// A solid cylinder along the z axis of its frame, half its height on either side of the origin.
///
/// Collision tests take a prism of 256 sides around it, which reaches beyond it by 7.6e-5 of its radius.
class LUM_API ClumCylinder : public ClumTurnedSolid
{
  LUM_CONCRETE(ClumCylinder, ClumTurnedSolid);

public:
  ~ClumCylinder() override;
  /// @return null unless all sizes are finite and above 0.
  static ClumCylinderShPtr create(double i_radius, double i_height);
  static ClumCylinderShPtr createCopy(const ClumCylinderConstShPtr& i_objectToCopy);
  ClumGeometryShPtr clone() const override;

  void getSweptTriangles(ClumSweptTriangles& o_shape) const override;

protected:
  ClumCylinder() : ClumCylinder(1.0, 1.0) {}
  ClumCylinder(double i_radius, double i_height) : ClumTurnedSolid(i_radius, i_height, false) {}
  ClumCylinder(const ClumCylinder& i_other) = default;
  void makeEnclosure(std::vector<ClumPoint3>& o_points, double& o_radius) const override;
};
