#include "kinematics/orvJointAnchor.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvKEAnchor.h"

LUM_DESCRIBE(CorvJointAnchor)
{
  i_class.creates("()", static_cast<CorvJointAnchorShPtr (*)()>(&Self::create));
}

CorvJointAnchor::~CorvJointAnchor() = default;

CorvJointAnchorShPtr CorvJointAnchor::create()
{
  return lumCreate<CorvJointAnchor>(CorvKEAnchor::create(), ClumMat4());
}

CorvJointAnchorShPtr CorvJointAnchor::createCopy(const CorvJointAnchorConstShPtr& i_objectToCopy)
{
  return i_objectToCopy ? boost::dynamic_pointer_cast<CorvJointAnchor>(i_objectToCopy->clone())
                        : CorvJointAnchorShPtr();
}

CorvJointShPtr CorvJointAnchor::clone() const
{
  return CorvJoint::createCopy(self());
}
