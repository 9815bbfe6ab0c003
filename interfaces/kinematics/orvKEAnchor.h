#pragma once

#include "kinematics/orvKinematicalEffect.h"

/// No motion: no dof, and the identity for a frame. `inverseVelocity` gives no rate.
class LUM_API CorvKEAnchor : public TorvKELeaf<CorvKEAnchor, CorvKinematicalEffect>
{
  LUM_CONCRETE(CorvKEAnchor, CorvKinematicalEffect);
  ORV_EFFECT_OPERATIONS

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.anchor";

protected:
  CorvKEAnchor() = default;
  explicit CorvKEAnchor(const std::string& i_type) : TorvKELeaf(makeConfigSpace(), i_type) {}

  static CorvConfigSpaceShPtr makeConfigSpace();
};
