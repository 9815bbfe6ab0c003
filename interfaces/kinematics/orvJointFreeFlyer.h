#pragma once

#include "kinematics/orvJoint.h"

/// A joint that moves freely: x, y, z, then the angles rx, ry, rz of Rx·Ry·Rz.
///
/// The space of its effect measures distances with a `CorvMetricSlerp`.
class LUM_API CorvJointFreeFlyer : public CorvJoint
{
  LUM_CONCRETE(CorvJointFreeFlyer, CorvJoint);

public:
  ~CorvJointFreeFlyer() override;

  static CorvJointFreeFlyerShPtr create(const ClumMat4& i_position);
  static CorvJointFreeFlyerShPtr create(double i_x, double i_y, double i_z, double i_rx, double i_ry, double i_rz,
                                        const ClumMat4& i_position);
  static CorvJointFreeFlyerShPtr createCopy(const CorvJointFreeFlyerConstShPtr& i_objectToCopy);
  CorvJointShPtr clone() const override;

protected:
  CorvJointFreeFlyer() = default;
  using CorvJoint::CorvJoint;
  lmStatus init(const CorvJointFreeFlyerWkPtr& i_weakPtr);
};
