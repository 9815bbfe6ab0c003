#pragma once

#include "kinematics/orvJoint.h"

/// What a joint that turns about, or slides along, one base vector of its frame has for the vector.
class LUM_API CorvJointAxis : public CorvJoint
{
public:
  ClumMat4::EBaseVector baseVector() const { return m_baseVector; }
  /// Moves the joint's origin, as `setCurrentPosition` does.
  void setCurrentCenter(const ClumVect3& i_center) { CorvJoint::setCurrentCenter(i_center); }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvJointAxis() = default;
  CorvJointAxis(const CorvKinematicalEffectShPtr& i_effect, double i_value, const ClumMat4& i_position,
                ClumMat4::EBaseVector i_baseVector);

  /// The base vector's direction in the world, in the joint's present frame.
  ClumVect3 currentAxis() const { return currentPosition().axis(m_baseVector); }
  /// Turns the joint's frame, as `setCurrentPosition` does.
  void setCurrentAxis(const ClumVect3& i_axis) { setCurrentBaseVectorAxis(m_baseVector, i_axis); }

private:
  ClumMat4::EBaseVector m_baseVector = ClumMat4::EBaseVector();
};
