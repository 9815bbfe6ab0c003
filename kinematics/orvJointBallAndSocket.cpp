#include "kinematics/orvJointBallAndSocket.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvKERotateTaitBryant.h"

LUM_DESCRIBE(CorvJointBallAndSocket)
{
  i_class.creates("(const ClumMat4& i_position)",
                  static_cast<CorvJointBallAndSocketShPtr (*)(const ClumMat4&)>(&Self::create));
}

CorvJointBallAndSocket::~CorvJointBallAndSocket() = default;

CorvJointBallAndSocketShPtr CorvJointBallAndSocket::create(const ClumMat4& i_position)
{
  return lumCreate<CorvJointBallAndSocket>(CorvKERotateTaitBryant::create(), i_position);
}

CorvJointBallAndSocketShPtr CorvJointBallAndSocket::create(double i_rx, double i_ry, double i_rz,
                                                           const ClumMat4& i_position)
{
  return lumCreate<CorvJointBallAndSocket>(CorvKERotateTaitBryant::create(), std::vector<double>{i_rx, i_ry, i_rz},
                                           i_position);
}

CorvJointBallAndSocketShPtr CorvJointBallAndSocket::createCopy(const CorvJointBallAndSocketConstShPtr& i_objectToCopy)
{
  return i_objectToCopy ? boost::dynamic_pointer_cast<CorvJointBallAndSocket>(i_objectToCopy->clone())
                        : CorvJointBallAndSocketShPtr();
}

CorvJointShPtr CorvJointBallAndSocket::clone() const
{
  return CorvJoint::createCopy(self());
}
