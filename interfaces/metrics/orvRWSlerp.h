#pragma once

#include "metrics/orvRWSolid.h"

/// Turns the pose about a uniformly drawn axis and moves it, both in the pose's own frame. The step is balanced between
/// turn and translation by the same lever as `CorvMetricSlerp`; without a lever the pose stays.
class LUM_API CorvRWSlerp : public CorvRWSolid
{
  LUM_CONST_CONCRETE(CorvRWSlerp, CorvRWSolid);

public:
  ~CorvRWSlerp() override;
  /// With a Gaussian distribution.
  static CorvRWSlerpConstShPtr create(const CorvJointShPtr& i_joint);
  static CorvRWSlerpConstShPtr create(const CorvJointShPtr& i_joint,
                                      const CorvRandomDistributionConstShPtr& i_distribution);
  static CorvRWSlerpConstShPtr createCopy(const CorvRWSlerpConstShPtr& i_objectToCopy);
  CorvRandomWalkConstShPtr clone() const override;
  void stepSolid(double i_size, ClumMat4& io_pose) const override;

protected:
  CorvRWSlerp() = default;
  CorvRWSlerp(const CorvJointShPtr& i_joint, const CorvRandomDistributionConstShPtr& i_distribution);
  CorvRWSlerp(const CorvRWSlerp&) = default;
  lmStatus init(const CorvRWSlerpWkPtr& i_weakPtr);
};
