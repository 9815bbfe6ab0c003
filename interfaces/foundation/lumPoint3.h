#pragma once

#include "foundation/lumVect3.h"

/// A point in space. A frame turns and translates it, unlike a `ClumVect3`. A value class.
class LUM_API ClumPoint3
{
public:
  /// The origin.
  constexpr ClumPoint3() = default;
  constexpr ClumPoint3(double i_x, double i_y, double i_z) : m_position(i_x, i_y, i_z) {}
  /// The point that the vector reaches from the origin.
  explicit constexpr ClumPoint3(const ClumVect3& i_fromOrigin) : m_position(i_fromOrigin) {}

  constexpr double x() const { return m_position.x(); }
  constexpr double y() const { return m_position.y(); }
  constexpr double z() const { return m_position.z(); }
  constexpr double operator[](unsigned int i_rank) const { return m_position[i_rank]; }
  double& operator[](unsigned int i_rank) { return m_position[i_rank]; }
  /// The vector from the origin.
  const ClumVect3& toVect3() const { return m_position; }

  /// The vector from `i_other` to this point.
  ClumVect3 operator-(const ClumPoint3& i_other) const { return m_position - i_other.m_position; }
  ClumPoint3 operator+(const ClumVect3& i_vector) const { return ClumPoint3(m_position + i_vector); }
  ClumPoint3 operator-(const ClumVect3& i_vector) const { return ClumPoint3(m_position - i_vector); }
  bool operator==(const ClumPoint3& i_other) const { return m_position == i_other.m_position; }
  bool operator!=(const ClumPoint3& i_other) const { return m_position != i_other.m_position; }

  double distanceFrom(const ClumPoint3& i_other) const { return (*this - i_other).norm(); }

private:
  ClumVect3 m_position;
};
