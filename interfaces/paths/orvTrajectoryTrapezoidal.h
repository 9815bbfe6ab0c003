#pragma once

#include "paths/orvTrajectory.h"

/// The trajectory along a path of trapezoidal motions, each of which starts and stops at rest.
///
/// A time on a junction belongs to the later motion: the velocity is 0, the acceleration that of the next start.
class LUM_API CorvTrajectoryTrapezoidal : public CorvTrajectory
{
  LUM_CONCRETE(CorvTrajectoryTrapezoidal, CorvTrajectory);

public:
  ~CorvTrajectoryTrapezoidal() override;
  /// @return null if the path is null, or some direct path is no `CorvDPTrapezoidal`.
  static CorvTrajectoryTrapezoidalShPtr create(const CorvPathShPtr& i_path);
  static CorvTrajectoryTrapezoidalShPtr createCopy(const CorvTrajectoryTrapezoidalConstShPtr& i_objectToCopy);
  virtual CorvTrajectoryTrapezoidalShPtr clone() const;

  const CorvPathShPtr& path() const { return m_path; }

  double duration() const override;
  lmStatus getJointPositionsAtTime(double i_time, std::vector<ClumMat4>& o_positions) const override;
  /// @return -1 for a time that is negative or not below the duration, as the next.
  lmStatus getDofsVelocityAtTime(double i_time, std::vector<double>& o_velocities) const override;
  lmStatus getDofsAccelerationAtTime(double i_time, std::vector<double>& o_accelerations) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvTrajectoryTrapezoidal() = default;
  explicit CorvTrajectoryTrapezoidal(const CorvPathShPtr& i_path);
  /// The copy has a copy of the path.
  CorvTrajectoryTrapezoidal(const CorvTrajectoryTrapezoidal& i_other);
  lmStatus init(const CorvTrajectoryTrapezoidalWkPtr& i_weakPtr);

private:
  CorvDPTrapezoidalConstShPtr motionAtTime(double& io_time) const;

  CorvPathShPtr m_path;
};
