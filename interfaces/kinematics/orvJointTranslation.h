#pragma once

#include "kinematics/orvJointAxis.h"

/// A joint that slides along one base vector of its frame, or against it for the inverse ones.
class LUM_API CorvJointTranslation : public CorvJointAxis
{
  LUM_CONCRETE(CorvJointTranslation, CorvJoint);

public:
  ~CorvJointTranslation() override;

  static CorvJointTranslationShPtr create(const ClumMat4& i_position, ClumMat4::EBaseVector i_baseVector);
  /// The frame at `i_center` whose base vector points along `i_axis`.
  static CorvJointTranslationShPtr create(const ClumVect3& i_center, const ClumVect3& i_axis,
                                          ClumMat4::EBaseVector i_baseVector);
  static CorvJointTranslationShPtr create(double i_value, const ClumMat4& i_position,
                                          ClumMat4::EBaseVector i_baseVector);
  static CorvJointTranslationShPtr create(double i_value, const ClumVect3& i_center, const ClumVect3& i_axis,
                                          ClumMat4::EBaseVector i_baseVector);
  static CorvJointTranslationShPtr createCopy(const CorvJointTranslationConstShPtr& i_objectToCopy);
  CorvJointShPtr clone() const override;

  /// The effect of a base vector; null for a value that names none.
  static CorvKinematicalEffectShPtr makeKinematicalEffectForAxis(ClumMat4::EBaseVector i_baseVector);

  /// The base vector's direction in the world, in the joint's present frame.
  ClumVect3 translationAxis() const { return currentAxis(); }
  /// Turns the joint's frame, as `setCurrentPosition` does.
  void setCurrentTranslationAxis(const ClumVect3& i_axis) { setCurrentAxis(i_axis); }

protected:
  CorvJointTranslation() = default;
  CorvJointTranslation(double i_value, const ClumMat4& i_position, ClumMat4::EBaseVector i_baseVector)
    : CorvJointAxis(makeKinematicalEffectForAxis(i_baseVector), i_value, i_position, i_baseVector)
  {
  }
};
