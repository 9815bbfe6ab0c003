#include "kinematics/orvJointAxis.h"

#include "foundation/lumCoder.h"

CorvJointAxis::CorvJointAxis(const CorvKinematicalEffectShPtr& i_effect, double i_value, const ClumMat4& i_position,
                             ClumMat4::EBaseVector i_baseVector)
  : CorvJoint(i_effect, std::vector<double>{i_value}, i_position), m_baseVector(i_baseVector)
{
}

void CorvJointAxis::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvJoint::encodeWithCoder(i_coder);
  i_coder->encodeInt(m_baseVector, "baseVector");
}

lmStatus CorvJointAxis::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvJoint::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  const int baseVector = i_coder->decodeInt("baseVector");
  m_baseVector = static_cast<ClumMat4::EBaseVector>(baseVector);
  const bool isKnown = baseVector >= ClumMat4::X_AXIS && baseVector <= ClumMat4::INVERSE_Z_AXIS;
  return isKnown ? status : lmStatus(lmStatus::FAILURE);
}
