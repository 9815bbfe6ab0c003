#pragma once

#include "kinematics/orvKinematicalEffect.h"

/// A translation by the value of one dof along an axis of the frame, or by its opposite: all six of them.
class LUM_API CorvKETranslateAxis : public CorvKinematicalEffect
{
  LUM_UNREFLECTED(CorvKETranslateAxis, CorvKinematicalEffect);

public:
  using CorvKinematicalEffect::forward;
  using CorvKinematicalEffect::forwardDerivate;
  using CorvKinematicalEffect::forwardSecondDerivate;
  using CorvKinematicalEffect::forwardVelocity;
  using CorvKinematicalEffect::inverse;

  /// The rank of the axis: 0, 1 or 2.
  unsigned int axis() const { return m_axis; }
  /// 1, or -1 for the inverse forms.
  int sign() const { return m_sign; }

  lmStatus forward(const double* i_values, ClumMat4& o_mat) const override;
  lmStatus inverse(const ClumMat4& i_mat, double* o_values) const override;
  lmStatus forwardDerivate(const double* i_values, unsigned int i_rank, ClumMat4& o_mat) const override;
  lmStatus forwardSecondDerivate(const double* i_values, unsigned int i_rank1, unsigned int i_rank2,
                                 ClumMat4& o_mat) const override;
  lmStatus forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const override;
  /// @param o_velocities one rate: the component of the linear velocity along the direction in which the dof moves.
  lmStatus inverseVelocity(double i_vx, double i_vy, double i_vz, double i_angular, const ClumVect3& i_axis,
                           std::vector<double>& o_velocities) const override;

protected:
  CorvKETranslateAxis(unsigned int i_axis, int i_sign) : m_axis(i_axis), m_sign(i_sign) {}
  CorvKETranslateAxis(unsigned int i_axis, int i_sign, const std::string& i_type);

private:
  unsigned int m_axis;
  int m_sign;
};

/// A leaf of the family: its axis and sign, known when compiling.
template <class LEAF, unsigned int AXIS, int SIGN>
class TorvKETranslate : public TorvKELeaf<LEAF, CorvKETranslateAxis>
{
protected:
  TorvKETranslate() : TorvKELeaf<LEAF, CorvKETranslateAxis>(AXIS, SIGN) {}
  explicit TorvKETranslate(const std::string& i_type) : TorvKELeaf<LEAF, CorvKETranslateAxis>(AXIS, SIGN, i_type) {}
};

/// Translation along the x axis by its dof.
class LUM_API CorvKETranslateX : public TorvKETranslate<CorvKETranslateX, 0, 1>
{
  LUM_CONCRETE(CorvKETranslateX, CorvKETranslateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.translate-x";

protected:
  CorvKETranslateX() = default;
  using TorvKETranslate::TorvKETranslate;
};

/// Translation along the y axis by its dof.
class LUM_API CorvKETranslateY : public TorvKETranslate<CorvKETranslateY, 1, 1>
{
  LUM_CONCRETE(CorvKETranslateY, CorvKETranslateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.translate-y";

protected:
  CorvKETranslateY() = default;
  using TorvKETranslate::TorvKETranslate;
};

/// Translation along the z axis by its dof.
class LUM_API CorvKETranslateZ : public TorvKETranslate<CorvKETranslateZ, 2, 1>
{
  LUM_CONCRETE(CorvKETranslateZ, CorvKETranslateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.translate-z";

protected:
  CorvKETranslateZ() = default;
  using TorvKETranslate::TorvKETranslate;
};

/// Translation along the x axis by the opposite of its dof.
class LUM_API CorvKETranslateInverseX : public TorvKETranslate<CorvKETranslateInverseX, 0, -1>
{
  LUM_CONCRETE(CorvKETranslateInverseX, CorvKETranslateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.translate-inverse-x";

protected:
  CorvKETranslateInverseX() = default;
  using TorvKETranslate::TorvKETranslate;
};

/// Translation along the y axis by the opposite of its dof.
class LUM_API CorvKETranslateInverseY : public TorvKETranslate<CorvKETranslateInverseY, 1, -1>
{
  LUM_CONCRETE(CorvKETranslateInverseY, CorvKETranslateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.translate-inverse-y";

protected:
  CorvKETranslateInverseY() = default;
  using TorvKETranslate::TorvKETranslate;
};

/// Translation along the z axis by the opposite of its dof.
class LUM_API CorvKETranslateInverseZ : public TorvKETranslate<CorvKETranslateInverseZ, 2, -1>
{
  LUM_CONCRETE(CorvKETranslateInverseZ, CorvKETranslateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.translate-inverse-z";

protected:
  CorvKETranslateInverseZ() = default;
  using TorvKETranslate::TorvKETranslate;
};
