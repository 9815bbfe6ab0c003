#pragma once

#include "kinematics/orvKinematicalEffect.h"

/// A motion by one dof about or along an axis of the frame, or against it.
class LUM_API CorvKEAxis : public CorvKinematicalEffect
{
  LUM_UNREFLECTED(CorvKEAxis, CorvKinematicalEffect);

public:
  /// The rank of the axis: 0, 1 or 2.
  unsigned int axis() const { return m_axis; }
  /// 1, or -1 for the inverse forms.
  int sign() const { return m_sign; }

protected:
  CorvKEAxis(unsigned int i_axis, int i_sign) : m_axis(i_axis), m_sign(i_sign) {}
  CorvKEAxis(unsigned int i_axis, int i_sign, const CorvConfigSpaceShPtr& i_dof, const std::string& i_type)
    : CorvKinematicalEffect(i_dof, i_type), m_axis(i_axis), m_sign(i_sign)
  {
  }

private:
  unsigned int m_axis;
  int m_sign;
};

/// A leaf of such a family: its axis and sign, known when compiling.
template <class LEAF, class BASE, unsigned int AXIS, int SIGN>
class TorvKEAxisLeaf : public TorvKELeaf<LEAF, BASE>
{
protected:
  TorvKEAxisLeaf() : TorvKELeaf<LEAF, BASE>(AXIS, SIGN) {}
  explicit TorvKEAxisLeaf(const std::string& i_type) : TorvKELeaf<LEAF, BASE>(AXIS, SIGN, i_type) {}
};
