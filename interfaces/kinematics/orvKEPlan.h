#pragma once

#include "kinematics/orvKinematicalEffect.h"

/// A motion in the xy plane: x and y, then the angle of a rotation about z.
class LUM_API CorvKEPlan : public TorvKELeaf<CorvKEPlan, CorvKinematicalEffect>
{
  LUM_CONCRETE(CorvKEPlan, CorvKinematicalEffect);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.plan";

  using CorvKinematicalEffect::forward;
  using CorvKinematicalEffect::forwardDerivate;
  using CorvKinematicalEffect::forwardSecondDerivate;
  using CorvKinematicalEffect::forwardVelocity;
  using CorvKinematicalEffect::inverse;

  lmStatus forward(const double* i_values, ClumMat4& o_mat) const override;
  lmStatus inverse(const ClumMat4& i_mat, double* o_values) const override;
  lmStatus forwardDerivate(const double* i_values, unsigned int i_rank, ClumMat4& o_mat) const override;
  lmStatus forwardSecondDerivate(const double* i_values, unsigned int i_rank1, unsigned int i_rank2,
                                 ClumMat4& o_mat) const override;
  lmStatus forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const override;
  /// @param o_velocities three rates, `i_vx`, `i_vy`, `i_angular`: the axis is not looked at.
  lmStatus inverseVelocity(double i_vx, double i_vy, double i_vz, double i_angular, const ClumVect3& i_axis,
                           std::vector<double>& o_velocities) const override;

protected:
  CorvKEPlan() = default;
  explicit CorvKEPlan(const std::string& i_type) : TorvKELeaf(makeConfigSpace(), i_type) {}

  static CorvConfigSpaceShPtr makeConfigSpace();
};
