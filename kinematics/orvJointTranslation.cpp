#include "kinematics/orvJointTranslation.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvKETranslate.h"

LUM_DESCRIBE(CorvJointTranslation)
{
  i_class.creates("(const ClumMat4& i_position, ClumMat4::EBaseVector i_baseVector)",
                  static_cast<CorvJointTranslationShPtr (*)(const ClumMat4&, ClumMat4::EBaseVector)>(&Self::create));
}

CorvJointTranslation::~CorvJointTranslation() = default;

CorvJointTranslationShPtr CorvJointTranslation::create(const ClumMat4& i_position, ClumMat4::EBaseVector i_baseVector)
{
  return create(0.0, i_position, i_baseVector);
}

CorvJointTranslationShPtr CorvJointTranslation::create(const ClumVect3& i_center, const ClumVect3& i_axis,
                                                       ClumMat4::EBaseVector i_baseVector)
{
  return create(0.0, i_center, i_axis, i_baseVector);
}

CorvJointTranslationShPtr CorvJointTranslation::create(double i_value, const ClumMat4& i_position,
                                                       ClumMat4::EBaseVector i_baseVector)
{
  return lumCreate<CorvJointTranslation>(i_value, i_position, i_baseVector);
}

CorvJointTranslationShPtr CorvJointTranslation::create(double i_value, const ClumVect3& i_center,
                                                       const ClumVect3& i_axis, ClumMat4::EBaseVector i_baseVector)
{
  return create(i_value, frameOnAxis(i_baseVector, i_axis, i_center), i_baseVector);
}

CorvJointTranslationShPtr CorvJointTranslation::createCopy(const CorvJointTranslationConstShPtr& i_objectToCopy)
{
  return i_objectToCopy ? boost::dynamic_pointer_cast<CorvJointTranslation>(i_objectToCopy->clone())
                        : CorvJointTranslationShPtr();
}

CorvJointShPtr CorvJointTranslation::clone() const
{
  return CorvJoint::createCopy(self());
}

CorvKinematicalEffectShPtr CorvJointTranslation::makeKinematicalEffectForAxis(ClumMat4::EBaseVector i_baseVector)
{
  switch (i_baseVector)
  {
  case ClumMat4::X_AXIS: return CorvKETranslateX::create();
  case ClumMat4::Y_AXIS: return CorvKETranslateY::create();
  case ClumMat4::Z_AXIS: return CorvKETranslateZ::create();
  case ClumMat4::INVERSE_X_AXIS: return CorvKETranslateInverseX::create();
  case ClumMat4::INVERSE_Y_AXIS: return CorvKETranslateInverseY::create();
  case ClumMat4::INVERSE_Z_AXIS: return CorvKETranslateInverseZ::create();
  }
  return CorvKinematicalEffectShPtr();
}
