#include "kinematics/orvJointPlan.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvKEPlan.h"

LUM_DESCRIBE(CorvJointPlan)
{
  i_class.creates("(const ClumMat4& i_position)", static_cast<CorvJointPlanShPtr (*)(const ClumMat4&)>(&Self::create));
}

CorvJointPlan::~CorvJointPlan() = default;

CorvJointPlanShPtr CorvJointPlan::create(const ClumMat4& i_position)
{
  return lumCreate<CorvJointPlan>(CorvKEPlan::create(), i_position);
}

CorvJointPlanShPtr CorvJointPlan::create(double i_x, double i_y, double i_angle, const ClumMat4& i_position)
{
  return lumCreate<CorvJointPlan>(CorvKEPlan::create(), std::vector<double>{i_x, i_y, i_angle}, i_position);
}

CorvJointPlanShPtr CorvJointPlan::createCopy(const CorvJointPlanConstShPtr& i_objectToCopy)
{
  return i_objectToCopy ? boost::dynamic_pointer_cast<CorvJointPlan>(i_objectToCopy->clone()) : CorvJointPlanShPtr();
}

CorvJointShPtr CorvJointPlan::clone() const
{
  return CorvJoint::createCopy(self());
}
