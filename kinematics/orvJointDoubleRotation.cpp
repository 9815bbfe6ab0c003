#include "kinematics/orvJointDoubleRotation.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvKERotateXY.h"

LUM_DESCRIBE(CorvJointDoubleRotation)
{
  i_class.creates("(const ClumMat4& i_position)",
                  static_cast<CorvJointDoubleRotationShPtr (*)(const ClumMat4&)>(&Self::create));
}

CorvJointDoubleRotation::~CorvJointDoubleRotation() = default;

CorvJointDoubleRotationShPtr CorvJointDoubleRotation::create(const ClumMat4& i_position)
{
  return lumCreate<CorvJointDoubleRotation>(CorvKERotateXY::create(), i_position);
}

CorvJointDoubleRotationShPtr CorvJointDoubleRotation::create(double i_x, double i_y, const ClumMat4& i_position)
{
  return lumCreate<CorvJointDoubleRotation>(CorvKERotateXY::create(), std::vector<double>{i_x, i_y}, i_position);
}

CorvJointDoubleRotationShPtr
CorvJointDoubleRotation::createCopy(const CorvJointDoubleRotationConstShPtr& i_objectToCopy)
{
  return i_objectToCopy ? boost::dynamic_pointer_cast<CorvJointDoubleRotation>(i_objectToCopy->clone())
                        : CorvJointDoubleRotationShPtr();
}

CorvJointShPtr CorvJointDoubleRotation::clone() const
{
  return CorvJoint::createCopy(self());
}
