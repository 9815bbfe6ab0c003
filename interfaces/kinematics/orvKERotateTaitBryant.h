#pragma once

#include "kinematics/orvKinematicalEffect.h"

/// A rotation by three revolute dofs: Rx(q0)·Ry(q1)·Rz(q2).
class LUM_API CorvKERotateTaitBryant : public TorvKELeaf<CorvKERotateTaitBryant, CorvKinematicalEffect>
{
  LUM_CONCRETE(CorvKERotateTaitBryant, CorvKinematicalEffect);
  ORV_EFFECT_OPERATIONS

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-tait-bryant";

protected:
  CorvKERotateTaitBryant() = default;
  explicit CorvKERotateTaitBryant(const std::string& i_type) : TorvKELeaf(makeConfigSpace(), i_type) {}

  static CorvConfigSpaceShPtr makeConfigSpace();
};
