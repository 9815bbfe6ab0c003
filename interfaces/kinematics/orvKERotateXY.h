#pragma once

#include "kinematics/orvKinematicalEffect.h"

/// A rotation by two revolute dofs: Rx(q0)·Ry(q1).
class LUM_API CorvKERotateXY : public TorvKELeaf<CorvKERotateXY, CorvKinematicalEffect>
{
  LUM_CONCRETE(CorvKERotateXY, CorvKinematicalEffect);
  ORV_EFFECT_OPERATIONS

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-xy";

protected:
  CorvKERotateXY() = default;
  explicit CorvKERotateXY(const std::string& i_type) : TorvKELeaf(makeConfigSpace(), i_type) {}

  static CorvConfigSpaceShPtr makeConfigSpace();
};
