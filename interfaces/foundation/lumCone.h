#pragma once

#include "foundation/lumTurnedSolid.h"

/// A solid cone along the z axis of its frame: the base at minus half its height, the apex at plus half of it.
///
/// Collision tests take a pyramid of 256 sides around it, which reaches beyond it by 7.6e-5 of its radius.
class LUM_API ClumCone : public ClumTurnedSolid
{
  LUM_CONCRETE(ClumCone, ClumTurnedSolid);

public:
  ~ClumCone() override;
  /// @return null unless all sizes are finite and above 0.
  static ClumConeShPtr create(double i_radius, double i_height);
  static ClumConeShPtr createCopy(const ClumConeConstShPtr& i_objectToCopy);
  ClumGeometryShPtr clone() const override;

  void getSweptTriangles(ClumSweptTriangles& o_shape) const override;

protected:
  ClumCone() : ClumCone(1.0, 1.0) {}
  ClumCone(double i_radius, double i_height) : ClumTurnedSolid(i_radius, i_height, false) {}
  ClumCone(const ClumCone& i_other) = default;
  void makeEnclosure(std::vector<ClumPoint3>& o_points, double& o_radius) const override;
};
