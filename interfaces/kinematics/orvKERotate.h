#pragma once

#include "kinematics/orvKEAxis.h"

/// A rotation by the value of one revolute dof about an axis of the frame, or by its opposite: all six of them.
/// `inverseVelocity` gives the angular speed.
class LUM_API CorvKERotateAxis : public CorvKEAxis
{
  LUM_UNREFLECTED(CorvKERotateAxis, CorvKEAxis);
  ORV_EFFECT_OPERATIONS

protected:
  using CorvKEAxis::CorvKEAxis;
  CorvKERotateAxis(unsigned int i_axis, int i_sign, const std::string& i_type);
};

/// Rotation about the x axis by its dof.
class LUM_API CorvKERotateX : public TorvKEAxisLeaf<CorvKERotateX, CorvKERotateAxis, 0, 1>
{
  LUM_CONCRETE(CorvKERotateX, CorvKERotateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-x";

protected:
  CorvKERotateX() = default;
  using TorvKEAxisLeaf::TorvKEAxisLeaf;
};

/// Rotation about the y axis by its dof.
class LUM_API CorvKERotateY : public TorvKEAxisLeaf<CorvKERotateY, CorvKERotateAxis, 1, 1>
{
  LUM_CONCRETE(CorvKERotateY, CorvKERotateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-y";

protected:
  CorvKERotateY() = default;
  using TorvKEAxisLeaf::TorvKEAxisLeaf;
};

/// Rotation about the z axis by its dof.
class LUM_API CorvKERotateZ : public TorvKEAxisLeaf<CorvKERotateZ, CorvKERotateAxis, 2, 1>
{
  LUM_CONCRETE(CorvKERotateZ, CorvKERotateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-z";

protected:
  CorvKERotateZ() = default;
  using TorvKEAxisLeaf::TorvKEAxisLeaf;
};

/// Rotation about the x axis by the opposite of its dof.
class LUM_API CorvKERotateInverseX : public TorvKEAxisLeaf<CorvKERotateInverseX, CorvKERotateAxis, 0, -1>
{
  LUM_CONCRETE(CorvKERotateInverseX, CorvKERotateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-inverse-x";

protected:
  CorvKERotateInverseX() = default;
  using TorvKEAxisLeaf::TorvKEAxisLeaf;
};

/// Rotation about the y axis by the opposite of its dof.
class LUM_API CorvKERotateInverseY : public TorvKEAxisLeaf<CorvKERotateInverseY, CorvKERotateAxis, 1, -1>
{
  LUM_CONCRETE(CorvKERotateInverseY, CorvKERotateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-inverse-y";

protected:
  CorvKERotateInverseY() = default;
  using TorvKEAxisLeaf::TorvKEAxisLeaf;
};

/// Rotation about the z axis by the opposite of its dof.
class LUM_API CorvKERotateInverseZ : public TorvKEAxisLeaf<CorvKERotateInverseZ, CorvKERotateAxis, 2, -1>
{
  LUM_CONCRETE(CorvKERotateInverseZ, CorvKERotateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.rotate-inverse-z";

protected:
  CorvKERotateInverseZ() = default;
  using TorvKEAxisLeaf::TorvKEAxisLeaf;
};
