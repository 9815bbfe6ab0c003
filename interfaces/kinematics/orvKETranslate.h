#pragma once

#include "kinematics/orvKEAxis.h"

/// A translation by the value of one dof along an axis of the frame, or by its opposite: all six of them.
/// `inverseVelocity` gives the speed along the axis.
class LUM_API CorvKETranslateAxis : public CorvKEAxis
{
  LUM_UNREFLECTED(CorvKETranslateAxis, CorvKEAxis);
  ORV_EFFECT_OPERATIONS

protected:
  using CorvKEAxis::CorvKEAxis;
  CorvKETranslateAxis(unsigned int i_axis, int i_sign, const std::string& i_type);
};

/// Translation along the x axis by its dof.
class LUM_API CorvKETranslateX : public TorvKEAxisLeaf<CorvKETranslateX, CorvKETranslateAxis, 0, 1>
{
  LUM_CONCRETE(CorvKETranslateX, CorvKETranslateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.translate-x";

protected:
  CorvKETranslateX() = default;
  using TorvKEAxisLeaf::TorvKEAxisLeaf;
};

/// Translation along the y axis by its dof.
class LUM_API CorvKETranslateY : public TorvKEAxisLeaf<CorvKETranslateY, CorvKETranslateAxis, 1, 1>
{
  LUM_CONCRETE(CorvKETranslateY, CorvKETranslateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.translate-y";

protected:
  CorvKETranslateY() = default;
  using TorvKEAxisLeaf::TorvKEAxisLeaf;
};

/// Translation along the z axis by its dof.
class LUM_API CorvKETranslateZ : public TorvKEAxisLeaf<CorvKETranslateZ, CorvKETranslateAxis, 2, 1>
{
  LUM_CONCRETE(CorvKETranslateZ, CorvKETranslateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.translate-z";

protected:
  CorvKETranslateZ() = default;
  using TorvKEAxisLeaf::TorvKEAxisLeaf;
};

/// Translation along the x axis by the opposite of its dof.
class LUM_API CorvKETranslateInverseX : public TorvKEAxisLeaf<CorvKETranslateInverseX, CorvKETranslateAxis, 0, -1>
{
  LUM_CONCRETE(CorvKETranslateInverseX, CorvKETranslateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.translate-inverse-x";

protected:
  CorvKETranslateInverseX() = default;
  using TorvKEAxisLeaf::TorvKEAxisLeaf;
};

/// Translation along the y axis by the opposite of its dof.
class LUM_API CorvKETranslateInverseY : public TorvKEAxisLeaf<CorvKETranslateInverseY, CorvKETranslateAxis, 1, -1>
{
  LUM_CONCRETE(CorvKETranslateInverseY, CorvKETranslateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.translate-inverse-y";

protected:
  CorvKETranslateInverseY() = default;
  using TorvKEAxisLeaf::TorvKEAxisLeaf;
};

/// Translation along the z axis by the opposite of its dof.
class LUM_API CorvKETranslateInverseZ : public TorvKEAxisLeaf<CorvKETranslateInverseZ, CorvKETranslateAxis, 2, -1>
{
  LUM_CONCRETE(CorvKETranslateInverseZ, CorvKETranslateAxis);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.translate-inverse-z";

protected:
  CorvKETranslateInverseZ() = default;
  using TorvKEAxisLeaf::TorvKEAxisLeaf;
};
