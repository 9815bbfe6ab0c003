#pragma once

#include "foundation/lumCodable.h"
#include "foundation/lumMat4.h"
#include "kinematics/handles.h"
#include "paths/handles.h"

#include <vector>

/// A motion in time: where the joints are, and how fast the dofs move, at each time from 0 to the duration.
class LUM_API CorvTrajectory : public ClumMutableCodable
{
  LUM_UNREFLECTED(CorvTrajectory, ClumMutableCodable);

public:
  ~CorvTrajectory() override;

  virtual double duration() const = 0;
  /// Frames of the device's joints, as `CorvConfig::getJointMatVector`.
  virtual lmStatus getJointPositionsAtTime(double i_time, std::vector<ClumMat4>& o_positions) const = 0;
  virtual lmStatus getDofsVelocityAtTime(double i_time, std::vector<double>& o_velocities) const = 0;
  virtual lmStatus getDofsAccelerationAtTime(double i_time, std::vector<double>& o_accelerations) const = 0;

protected:
  CorvTrajectory() = default;
  CorvTrajectory(const CorvTrajectory&) = default;
  lmStatus init(const CorvTrajectoryWkPtr& i_weakPtr);
};
