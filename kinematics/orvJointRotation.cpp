#include "kinematics/orvJointRotation.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvKERotate.h"

LUM_DESCRIBE(CorvJointRotation)
{
  i_class.creates("(const ClumMat4& i_position, ClumMat4::EBaseVector i_baseVector)",
                  static_cast<CorvJointRotationShPtr (*)(const ClumMat4&, ClumMat4::EBaseVector)>(&Self::create));
}

CorvJointRotation::~CorvJointRotation() = default;

CorvJointRotation::CorvJointRotation(const std::vector<double>& i_values, const ClumMat4& i_position,
                                     ClumMat4::EBaseVector i_baseVector)
  : CorvJoint(makeKinematicalEffectForAxis(i_baseVector), i_values, i_position), m_baseVector(i_baseVector)
{
}

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
  return lumCreate<CorvJointRotation>(std::vector<double>{i_value}, i_position, i_baseVector);
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

ClumVect3 CorvJointRotation::rotationAxis() const
{
  return currentPosition().axis(m_baseVector);
}

void CorvJointRotation::setCurrentRotationAxis(const ClumVect3& i_axis)
{
  setCurrentBaseVectorAxis(m_baseVector, i_axis);
}

void CorvJointRotation::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvJoint::encodeWithCoder(i_coder);
  i_coder->encodeInt(m_baseVector, "baseVector");
}

lmStatus CorvJointRotation::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvJoint::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  const int baseVector = i_coder->decodeInt("baseVector");
  m_baseVector = static_cast<ClumMat4::EBaseVector>(baseVector);
  const bool isKnown = baseVector >= ClumMat4::X_AXIS && baseVector <= ClumMat4::INVERSE_Z_AXIS;
  return isKnown ? status : lmStatus(lmStatus::FAILURE);
}
