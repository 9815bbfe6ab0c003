#pragma once

#include "kinematics/orvKinematicalEffect.h"

/// A free rigid motion: the translation x, y, z, then the rotation Rx(rx)·Ry(ry)·Rz(rz).
///
/// It offers no second derivative. The angular part of `forwardVelocity`, sqrt(vrx² + vry²) + |vrz|, is an upper bound
/// of the angular speed. `inverseVelocity` gives the six rates vx, vy, vz, 0, 0 and the angular speed: the axis is not
/// looked at.
class LUM_API CorvKEFreeFlyer : public TorvKELeaf<CorvKEFreeFlyer, CorvKinematicalEffect>
{
  LUM_CONCRETE(CorvKEFreeFlyer, CorvKinematicalEffect);
  ORV_EFFECT_OPERATIONS

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.free-flyer";

protected:
  CorvKEFreeFlyer() = default;
  explicit CorvKEFreeFlyer(const std::string& i_type) : TorvKELeaf(makeConfigSpace(), i_type) {}

  static CorvConfigSpaceShPtr makeConfigSpace();
};
