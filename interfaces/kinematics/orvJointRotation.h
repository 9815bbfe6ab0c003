#pragma once

#include "kinematics/orvJointAxis.h"

/// A joint that turns about one base vector of its frame, or against it for the inverse ones.
class LUM_API CorvJointRotation : public CorvJointAxis
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

  /// The base vector's direction in the world, in the joint's present frame.
  ClumVect3 rotationAxis() const { return currentAxis(); }
  /// Turns the joint's frame, as `setCurrentPosition` does.
  void setCurrentRotationAxis(const ClumVect3& i_axis) { setCurrentAxis(i_axis); }

protected:
  CorvJointRotation() = default;
  CorvJointRotation(double i_value, const ClumMat4& i_position, ClumMat4::EBaseVector i_baseVector)
    : CorvJointAxis(makeKinematicalEffectForAxis(i_baseVector), i_value, i_position, i_baseVector)
  {
  }
};
