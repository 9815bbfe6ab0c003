#pragma once

#include "kinematics/orvJoint.h"

/// A planar joint: x and y, then a rotation about z.
class LUM_API CorvJointPlan : public CorvJoint
{
  LUM_CONCRETE(CorvJointPlan, CorvJoint);

public:
  ~CorvJointPlan() override;

  static CorvJointPlanShPtr create(const ClumMat4& i_position);
  static CorvJointPlanShPtr create(double i_x, double i_y, double i_angle, const ClumMat4& i_position);
  static CorvJointPlanShPtr createCopy(const CorvJointPlanConstShPtr& i_objectToCopy);
  CorvJointShPtr clone() const override;

protected:
  CorvJointPlan() = default;
  using CorvJoint::CorvJoint;
};
