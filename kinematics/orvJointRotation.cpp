#include "kinematics/orvJointRotation.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvKERotate.h"

LUM_DESCRIBE(CorvJointRotation)
{
  i_class.creates("(const ClumMat4& i_position, ClumMat4::EBaseVector i_baseVector)",
                  static_cast<CorvJointRotationShPtr (*)(const ClumMat4&, ClumMat4::EBaseVector)>(&Self::create));
}

CorvJointRotation::~CorvJointRotation() = default;

CorvJointRotationShPtr CorvJointRotation::create(const ClumMat4& i_position, ClumMat4::EBaseVector i_baseVector)
{
  return create(0.0, i_position, i_baseVector);
}

CorvJointRotationShPtr CorvJointRotation::create(const ClumVect3& i_center, const ClumVect3& i_axis,
                                                 ClumMat4::EBaseVector i_baseVector)
{
  return create(0.0, i_center, i_axis, i_baseVector);
}

CorvJointRotationShPtr CorvJointRotation::create(double i_value, const ClumMat4& i_position,
                                                 ClumMat4::EBaseVector i_baseVector)
{
  return lumCreate<CorvJointRotation>(i_value, i_position, i_baseVector);
}

CorvJointRotationShPtr CorvJointRotation::create(double i_value, const ClumVect3& i_center, const ClumVect3& i_axis,
                                                 ClumMat4::EBaseVector i_baseVector)
{
  return create(i_value, frameOnAxis(i_baseVector, i_axis, i_center), i_baseVector);
}

CorvJointRotationShPtr CorvJointRotation::createCopy(const CorvJointRotationConstShPtr& i_objectToCopy)
{
  return i_objectToCopy ? boost::dynamic_pointer_cast<CorvJointRotation>(i_objectToCopy->clone())
                        : CorvJointRotationShPtr();
}

CorvJointShPtr CorvJointRotation::clone() const
{
  return CorvJoint::createCopy(self());
}

CorvKinematicalEffectShPtr CorvJointRotation::makeKinematicalEffectForAxis(ClumMat4::EBaseVector i_baseVector)
{
  switch (i_baseVector)
  {
  case ClumMat4::X_AXIS: return CorvKERotateX::create();
  case ClumMat4::Y_AXIS: return CorvKERotateY::create();
  case ClumMat4::Z_AXIS: return CorvKERotateZ::create();
  case ClumMat4::INVERSE_X_AXIS: return CorvKERotateInverseX::create();
  case ClumMat4::INVERSE_Y_AXIS: return CorvKERotateInverseY::create();
  case ClumMat4::INVERSE_Z_AXIS: return CorvKERotateInverseZ::create();
  }
  return CorvKinematicalEffectShPtr();
}
