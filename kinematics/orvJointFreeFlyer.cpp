#include "kinematics/orvJointFreeFlyer.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvKEFreeFlyer.h"
#include "kinematics/orvConfigSpace.h"
#include "metrics/orvMetricSlerp.h"

LUM_DESCRIBE(CorvJointFreeFlyer)
{
  i_class.creates("(const ClumMat4& i_position)",
                  static_cast<CorvJointFreeFlyerShPtr (*)(const ClumMat4&)>(&Self::create));
}

CorvJointFreeFlyer::~CorvJointFreeFlyer() = default;

CorvJointFreeFlyerShPtr CorvJointFreeFlyer::create(const ClumMat4& i_position)
{
  return lumCreate<CorvJointFreeFlyer>(CorvKEFreeFlyer::create(), i_position);
}

CorvJointFreeFlyerShPtr CorvJointFreeFlyer::create(double i_x, double i_y, double i_z, double i_rx, double i_ry,
                                                   double i_rz, const ClumMat4& i_position)
{
  return lumCreate<CorvJointFreeFlyer>(CorvKEFreeFlyer::create(), std::vector<double>{i_x, i_y, i_z, i_rx, i_ry, i_rz},
                                       i_position);
}

CorvJointFreeFlyerShPtr CorvJointFreeFlyer::createCopy(const CorvJointFreeFlyerConstShPtr& i_objectToCopy)
{
  return i_objectToCopy ? boost::dynamic_pointer_cast<CorvJointFreeFlyer>(i_objectToCopy->clone())
                        : CorvJointFreeFlyerShPtr();
}

CorvJointShPtr CorvJointFreeFlyer::clone() const
{
  return CorvJoint::createCopy(self());
}

lmStatus CorvJointFreeFlyer::init(const CorvJointFreeFlyerWkPtr& i_weakPtr)
{
  const lmStatus status = CorvJoint::init(i_weakPtr);
  if (status.succeeded())
    kinematicalEffect()->configSpace()->metric(CorvMetricSlerp::create(self()));
  return status;
}
