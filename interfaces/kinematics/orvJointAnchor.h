#pragma once

#include "kinematics/orvJoint.h"

/// A joint that does not move: it ties its body and children to its parent.
class LUM_API CorvJointAnchor : public CorvJoint
{
  LUM_CONCRETE(CorvJointAnchor, CorvJoint);

public:
  ~CorvJointAnchor() override;

  static CorvJointAnchorShPtr create();
  static CorvJointAnchorShPtr createCopy(const CorvJointAnchorConstShPtr& i_objectToCopy);
  CorvJointShPtr clone() const override;

protected:
  CorvJointAnchor() = default;
  using CorvJoint::CorvJoint;
};
