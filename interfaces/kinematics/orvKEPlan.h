#pragma once

#include "kinematics/orvKinematicalEffect.h"

/// A motion in the xy plane: x and y, then the angle of a rotation about z.
class LUM_API CorvKEPlan : public TorvKELeaf<CorvKEPlan, CorvKinematicalEffect>
{
  LUM_CONCRETE(CorvKEPlan, CorvKinematicalEffect);
  ORV_EFFECT_OPERATIONS

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.plan";

protected:
  CorvKEPlan() = default;
  explicit CorvKEPlan(const std::string& i_type) : TorvKELeaf(makeConfigSpace(), i_type) {}

  static CorvConfigSpaceShPtr makeConfigSpace();
};
