#pragma once

#include "kinematics/orvKinematicalEffect.h"

/// A rotation by the value of one revolute dof about an axis of the frame, or by its opposite: all six of them.
class LUM_API CorvKERotateAxis : public CorvKinematicalEffect
{
  LUM_UNREFLECTED(CorvKERotateAxis, CorvKinematicalEffect);

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
  /// @param o_velocities one rate, `i_angular`.
  lmStatus inverseVelocity(double i_vx, double i_vy, double i_vz, double i_angular, const ClumVect3& i_axis,
                           std::vector<double>& o_velocities) const override;

protected:
  CorvKERotateAxis(unsigned int i_axis, int i_sign) : m_axis(i_axis), m_sign(i_sign) {}
  CorvKERotateAxis(unsigned int i_axis, int i_sign, const std::string& i_type);

private:
  unsigned int m_axis;
  int m_sign;
};

/// A leaf of the family: its axis and sign, known when compiling.
template <class LEAF, unsigned int AXIS, int SIGN>
class TorvKERotate : public TorvKELeaf<LEAF, CorvKERotateAxis>
{
protected:
  TorvKERotate() : TorvKELeaf<LEAF, CorvKERotateAxis>(AXIS, SIGN) {}
  explicit TorvKERotate(const std::string& i_type) : TorvKELeaf<LEAF, CorvKERotateAxis>(AXIS, SIGN, i_type) {}
};

/// Rotation about the x axis by its dof.
class LUM_API CorvKERotateX : public TorvKERotate<CorvKERotateX, 0, 1>
{
  LUM_CONCRETE(CorvKERotateX, CorvKERotateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-x";

protected:
  CorvKERotateX() = default;
  using TorvKERotate::TorvKERotate;
};

/// Rotation about the y axis by its dof.
class LUM_API CorvKERotateY : public TorvKERotate<CorvKERotateY, 1, 1>
{
  LUM_CONCRETE(CorvKERotateY, CorvKERotateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-y";

protected:
  CorvKERotateY() = default;
  using TorvKERotate::TorvKERotate;
};

/// Rotation about the z axis by its dof.
class LUM_API CorvKERotateZ : public TorvKERotate<CorvKERotateZ, 2, 1>
{
  LUM_CONCRETE(CorvKERotateZ, CorvKERotateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-z";

protected:
  CorvKERotateZ() = default;
  using TorvKERotate::TorvKERotate;
};

/// Rotation about the x axis by the opposite of its dof.
class LUM_API CorvKERotateInverseX : public TorvKERotate<CorvKERotateInverseX, 0, -1>
{
  LUM_CONCRETE(CorvKERotateInverseX, CorvKERotateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-inverse-x";

protected:
  CorvKERotateInverseX() = default;
  using TorvKERotate::TorvKERotate;
};

/// Rotation about the y axis by the opposite of its dof.
class LUM_API CorvKERotateInverseY : public TorvKERotate<CorvKERotateInverseY, 1, -1>
{
  LUM_CONCRETE(CorvKERotateInverseY, CorvKERotateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-inverse-y";

protected:
  CorvKERotateInverseY() = default;
  using TorvKERotate::TorvKERotate;
};

/// Rotation about the z axis by the opposite of its dof.
class LUM_API CorvKERotateInverseZ : public TorvKERotate<CorvKERotateInverseZ, 2, -1>
{
  LUM_CONCRETE(CorvKERotateInverseZ, CorvKERotateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-inverse-z";

protected:
  CorvKERotateInverseZ() = default;
  using TorvKERotate::TorvKERotate;
};
