#pragma once

#include "kinematics/orvJoint.h"

/// A ball joint, by the three angles rx, ry, rz of Rx·Ry·Rz.
class LUM_API CorvJointBallAndSocket : public CorvJoint
{
  LUM_CONCRETE(CorvJointBallAndSocket, CorvJoint);

public:
  ~CorvJointBallAndSocket() override;

  static CorvJointBallAndSocketShPtr create(const ClumMat4& i_position);
  static CorvJointBallAndSocketShPtr create(double i_rx, double i_ry, double i_rz, const ClumMat4& i_position);
  static CorvJointBallAndSocketShPtr createCopy(const CorvJointBallAndSocketConstShPtr& i_objectToCopy);
  CorvJointShPtr clone() const override;

protected:
  CorvJointBallAndSocket() = default;
  using CorvJoint::CorvJoint;
};
