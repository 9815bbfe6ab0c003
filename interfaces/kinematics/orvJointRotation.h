#pragma once

#include "kinematics/orvJoint.h"

/// A joint that turns about one base vector of its frame, or against it for the inverse ones.
class LUM_API CorvJointRotation : public CorvJoint
{
  LUM_CONCRETE(CorvJointRotation, CorvJoint);

public:
  ~CorvJointRotation() override;

  static CorvJointRotationShPtr create(const ClumMat4& i_position, ClumMat4::EBaseVector i_baseVector);
  /// The frame at `i_center` whose base vector points along `i_axis`.
  static CorvJointRotationShPtr create(const ClumVect3& i_center, const ClumVect3& i_axis,
                                       ClumMat4::EBaseVector i_baseVector);
  static CorvJointRotationShPtr create(double i_value, const ClumMat4& i_position, ClumMat4::EBaseVector i_baseVector);
  static CorvJointRotationShPtr create(double i_value, const ClumVect3& i_center, const ClumVect3& i_axis,
                                       ClumMat4::EBaseVector i_baseVector);
  static CorvJointRotationShPtr createCopy(const CorvJointRotationConstShPtr& i_objectToCopy);
  CorvJointShPtr clone() const override;

  /// The effect of a base vector; null for a value that names none.
  static CorvKinematicalEffectShPtr makeKinematicalEffectForAxis(ClumMat4::EBaseVector i_baseVector);

  ClumMat4::EBaseVector baseVector() const { return m_baseVector; }
  /// The base vector's direction in the world, in the joint's present frame.
  ClumVect3 rotationAxis() const;
  /// Turns the joint's frame, or moves its origin, as `setCurrentPosition` does.
  void setCurrentRotationAxis(const ClumVect3& i_axis);
  void setCurrentCenter(const ClumVect3& i_center) { CorvJoint::setCurrentCenter(i_center); }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvJointRotation() = default;
  CorvJointRotation(const std::vector<double>& i_values, const ClumMat4& i_position,
                    ClumMat4::EBaseVector i_baseVector);

private:
  ClumMat4::EBaseVector m_baseVector = ClumMat4::EBaseVector();
};
