#pragma once

#include "kinematics/orvJoint.h"

/// A universal joint: a rotation about x, then about the turned y.
class LUM_API CorvJointDoubleRotation : public CorvJoint
{
  LUM_CONCRETE(CorvJointDoubleRotation, CorvJoint);

public:
  ~CorvJointDoubleRotation() override;

  static CorvJointDoubleRotationShPtr create(const ClumMat4& i_position);
  static CorvJointDoubleRotationShPtr create(double i_x, double i_y, const ClumMat4& i_position);
  static CorvJointDoubleRotationShPtr createCopy(const CorvJointDoubleRotationConstShPtr& i_objectToCopy);
  CorvJointShPtr clone() const override;

protected:
  CorvJointDoubleRotation() = default;
  using CorvJoint::CorvJoint;
};
