#pragma once

#include "foundation/lumTurnedSolid.h"

/// A solid capsule along the z axis of its frame: all within `radius` of a segment of length `height` around the
/// origin.
class LUM_API ClumCapsule : public ClumTurnedSolid
{
  LUM_CONCRETE(ClumCapsule, ClumTurnedSolid);

public:
  ~ClumCapsule() override;
  /// @return null unless all sizes are finite and above 0; the height may be 0.
  static ClumCapsuleShPtr create(double i_radius, double i_height);
  static ClumCapsuleShPtr createCopy(const ClumCapsuleConstShPtr& i_objectToCopy);
  ClumGeometryShPtr clone() const override;

  void getSweptTriangles(ClumSweptTriangles& o_shape) const override;

protected:
  ClumCapsule() : ClumCapsule(1.0, 1.0) {}
  ClumCapsule(double i_radius, double i_height) : ClumTurnedSolid(i_radius, i_height, true) {}
  ClumCapsule(const ClumCapsule& i_other) = default;
};
