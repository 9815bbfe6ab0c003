#pragma once

#include "foundation/lumPoint3.h"
#include "foundation/lumVect3.h"

/// A 4x4 homogeneous matrix that holds a rigid frame: the axes in the first three columns, the translation in the last.
///
/// `parentFrame * localFrame` is the frame in the parent's coordinates. Derivatives of frames are held in it too, so
/// the product is the full one; only `inverse`, `repair` and the action on points and vectors take the last row as 0 0
/// 0 1. A value class of 16 doubles, column after column.
class LUM_API ClumMat4
{
public:
  enum EBaseVector : int
  {
    X_AXIS = 0,
    Y_AXIS = 1,
    Z_AXIS = 2,
    INVERSE_X_AXIS = 3, ///< the opposite directions
    INVERSE_Y_AXIS = 4,
    INVERSE_Z_AXIS = 5
  };

  static const ClumMat4 IDENTITY;

  /// The identity.
  constexpr ClumMat4() = default;

  void identity() { *this = ClumMat4(); }
  void zero()
  {
    for (double& value : m_values)
      value = 0.0;
  }

  double operator()(unsigned int i_row, unsigned int i_column) const { return m_values[4 * i_column + i_row]; }
  double& operator()(unsigned int i_row, unsigned int i_column) { return m_values[4 * i_column + i_row]; }
  /// The 16 values, column after column.
  const double* data() const { return m_values; }
  double* data() { return m_values; }

  void setColumnComponents(unsigned int i_column, double i_row0, double i_row1, double i_row2, double i_row3)
  {
    double* column = m_values + 4 * i_column;
    column[0] = i_row0;
    column[1] = i_row1;
    column[2] = i_row2;
    column[3] = i_row3;
  }

  ClumVect3 translation() const { return column(3); }
  ClumVect3 xAxis() const { return column(0); }
  ClumVect3 axis(EBaseVector i_axis) const { return i_axis < 3 ? column(i_axis) : -column(i_axis - 3u); }
  /// Replaces the last column and leaves the rotation.
  void setTranslation(const ClumVect3& i_translation)
  {
    setColumnComponents(3, i_translation.x(), i_translation.y(), i_translation.z(), 1.0);
  }

  /// Sets this matrix to a pure translation.
  void translate(double i_x, double i_y, double i_z)
  {
    identity();
    setColumnComponents(3, i_x, i_y, i_z, 1.0);
  }
  /// Sets this matrix to the rotation about an axis through the origin, of any length; the identity for a zero axis.
  /// @param i_angle in radians.
  void rotate(const ClumVect3& i_axis, double i_angle);
  void rotate(double i_axisX, double i_axisY, double i_axisZ, double i_angle)
  {
    rotate(ClumVect3(i_axisX, i_axisY, i_axisZ), i_angle);
  }
  /// Sets this matrix to a rotation that takes the named base vector to the direction of `i_axis`, the other two being
  /// any right-handed completion; the identity for a zero direction.
  void setAsFrameWithBaseVectorAxis(EBaseVector i_baseVector, const ClumVect3& i_axis);

  ClumMat4 operator*(const ClumMat4& i_other) const
  {
    ClumMat4 product;
    for (unsigned int c = 0; c < 4; ++c)
    {
      const double* b = i_other.m_values + 4 * c;
      for (unsigned int r = 0; r < 4; ++r)
        product.m_values[4 * c + r] =
          ((m_values[r] * b[0] + m_values[4 + r] * b[1]) + m_values[8 + r] * b[2]) + m_values[12 + r] * b[3];
    }
    return product;
  }
  ClumVect3 operator*(const ClumVect3& i_vector) const
  {
    const double* m = m_values;
    const double x = i_vector.x(), y = i_vector.y(), z = i_vector.z();
    return {m[0] * x + m[4] * y + m[8] * z, m[1] * x + m[5] * y + m[9] * z, m[2] * x + m[6] * y + m[10] * z};
  }
  ClumPoint3 operator*(const ClumPoint3& i_point) const
  {
    return ClumPoint3(*this * i_point.toVect3() + translation());
  }
  ClumMat4 operator*(double i_factor) const
  {
    ClumMat4 result;
    for (unsigned int i = 0; i < 16; ++i)
      result.m_values[i] = m_values[i] * i_factor;
    return result;
  }
  ClumMat4& operator+=(const ClumMat4& i_other)
  {
    for (unsigned int i = 0; i < 16; ++i)
      m_values[i] += i_other.m_values[i];
    return *this;
  }
  ClumMat4 operator+(const ClumMat4& i_other) const { return ClumMat4(*this) += i_other; }
  ClumMat4& operator*=(const ClumMat4& i_other) { return *this = *this * i_other; }

  bool operator==(const ClumMat4& i_other) const
  {
    for (unsigned int i = 0; i < 16; ++i)
      if (m_values[i] != i_other.m_values[i])
        return false;
    return true;
  }
  bool operator!=(const ClumMat4& i_other) const { return !(*this == i_other); }

  /// The transpose.
  ClumMat4 t() const
  {
    ClumMat4 result;
    for (unsigned int c = 0; c < 4; ++c)
      for (unsigned int r = 0; r < 4; ++r)
        result.m_values[4 * c + r] = m_values[4 * r + c];
    return result;
  }
  /// The inverse of a rigid frame: of no meaning for any other matrix.
  ClumMat4 inverse() const
  {
    ClumMat4 result;
    for (unsigned int c = 0; c < 3; ++c)
      for (unsigned int r = 0; r < 3; ++r)
        result.m_values[4 * c + r] = m_values[4 * r + c];
    result.setTranslation(-(result * translation()));
    return result;
  }
  /// Makes the rotation block orthonormal and right-handed again, the x axis keeping its direction, and the last row
  /// 0 0 0 1. @return this matrix.
  ClumMat4& repair();

private:
  ClumVect3 column(unsigned int i_column) const
  {
    return {m_values[4 * i_column], m_values[4 * i_column + 1], m_values[4 * i_column + 2]};
  }

  double m_values[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};
