#pragma once

#include "foundation/lumExport.h"

#include <cmath>

/// A free vector of three doubles: a direction or a displacement.
///
/// A frame turns it without translating it, unlike a `ClumPoint3`. A value class.
class LUM_API ClumVect3
{
public:
  /// The zero vector.
  constexpr ClumVect3() = default;
  constexpr ClumVect3(double i_x, double i_y, double i_z) : m_values{i_x, i_y, i_z} {}

  void setValue(double i_x, double i_y, double i_z)
  {
    m_values[0] = i_x;
    m_values[1] = i_y;
    m_values[2] = i_z;
  }

  constexpr double x() const { return m_values[0]; }
  constexpr double y() const { return m_values[1]; }
  constexpr double z() const { return m_values[2]; }
  constexpr double operator[](unsigned int i_rank) const { return m_values[i_rank]; }
  double& operator[](unsigned int i_rank) { return m_values[i_rank]; }
  const double* data() const { return m_values; }

  ClumVect3 operator+(const ClumVect3& i_other) const
  {
    return {x() + i_other.x(), y() + i_other.y(), z() + i_other.z()};
  }
  ClumVect3 operator-(const ClumVect3& i_other) const
  {
    return {x() - i_other.x(), y() - i_other.y(), z() - i_other.z()};
  }
  ClumVect3 operator-() const { return {-x(), -y(), -z()}; }
  ClumVect3 operator*(double i_factor) const { return {x() * i_factor, y() * i_factor, z() * i_factor}; }
  ClumVect3 operator/(double i_divisor) const { return {x() / i_divisor, y() / i_divisor, z() / i_divisor}; }
  ClumVect3& operator+=(const ClumVect3& i_other) { return *this = *this + i_other; }
  ClumVect3& operator-=(const ClumVect3& i_other) { return *this = *this - i_other; }
  ClumVect3& operator*=(double i_factor) { return *this = *this * i_factor; }

  /// The cross product.
  ClumVect3 operator*(const ClumVect3& i_other) const
  {
    return {y() * i_other.z() - z() * i_other.y(), z() * i_other.x() - x() * i_other.z(),
            x() * i_other.y() - y() * i_other.x()};
  }
  double scalarProduct(const ClumVect3& i_other) const
  {
    return x() * i_other.x() + y() * i_other.y() + z() * i_other.z();
  }

  bool operator==(const ClumVect3& i_other) const
  {
    return x() == i_other.x() && y() == i_other.y() && z() == i_other.z();
  }
  bool operator!=(const ClumVect3& i_other) const { return !(*this == i_other); }

  double squaredNorm() const { return scalarProduct(*this); }
  double norm() const { return std::sqrt(squaredNorm()); }
  /// Leaves a zero vector as it is.
  void normalize() { *this = normalized(); }
  ClumVect3 normalized() const
  {
    const double length = norm();
    return length > 0.0 ? *this / length : *this;
  }

private:
  double m_values[3] = {0.0, 0.0, 0.0};
};

inline ClumVect3 operator*(double i_factor, const ClumVect3& i_vector)
{
  return i_vector * i_factor;
}
