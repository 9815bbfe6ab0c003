#pragma once

#include "paths/orvDirectPath.h"

class ClumMat4;

/// A motion of a free-flying body that is told by its frames rather than by its dofs.
///
/// The space holds one free-flying joint, the solid: x, y, z, and the angles of Rx·Ry·Rz. It may hold other dofs, such
/// as those of joints that the solid carries.
class LUM_API CorvDPSolidMotion : public CorvDirectPath
{
  LUM_ABSTRACT(CorvDPSolidMotion, CorvDirectPath);

public:
  ~CorvDPSolidMotion() override;

  /// Calls `executeSlerpDirectPath`.
  void describe(const CorvPathVisitorShPtr& i_visitor) const override;

  /// The frame that the dofs of the solid give, at a public distance.
  lmStatus getFrameAtDistance(double i_distance, ClumMat4& o_frame) const;

  /// Upper bounds of the speed of the frame's origin, and of its angular speed, with respect to distance. Infinite
  /// where the frame moves over no distance.
  virtual double linearSpeed() const = 0;
  virtual double angularSpeed() const = 0;

  /// The rank of the first dof of the solid. @return -1 unless the space holds exactly one free-flying joint.
  static lmStatus getRankOfSolid(const CorvConfigSpace& i_space, unsigned int& o_rank);

protected:
  CorvDPSolidMotion() = default;
  CorvDPSolidMotion(const CorvConfig& i_start, const CorvConfig& i_end,
                    const CorvSteeringMethodShPtr& i_steeringMethod);
  CorvDPSolidMotion(const CorvDPSolidMotion&) = default;
  /// Fails unless the space holds one solid.
  lmStatus init(const CorvDPSolidMotionWkPtr& i_weakPtr);
};
