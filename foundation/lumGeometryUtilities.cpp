#include "foundation/lumGeometryUtilities.h"

#include "foundation/lumAssert.h"
#include "foundation/lumMath.h"

#include <algorithm>

namespace
{
/// Twice the sine of the angle times the axis: the skew part of the rotation block.
ClumVect3 skewVector(const ClumMat4& i_frame)
{
  return {i_frame(2, 1) - i_frame(1, 2), i_frame(0, 2) - i_frame(2, 0), i_frame(1, 0) - i_frame(0, 1)};
}

double traceOfRotation(const ClumMat4& i_frame)
{
  return i_frame(0, 0) + i_frame(1, 1) + i_frame(2, 2);
}

/// Below this cosine of ry, rx and rz are not told apart any more. Rounding of a rigid frame is smaller.
constexpr double GIMBAL_LOCK_COSINE = 1e-12;
} // namespace

double ClumGeometryUtilities::rotationAngle(const ClumMat4& i_frame)
{
  return lumAtan2(skewVector(i_frame).norm(), traceOfRotation(i_frame) - 1.0);
}

void ClumGeometryUtilities::getRotationAxisAndAngle(const ClumMat4& i_frame, ClumVect3& o_axis, double& o_angle)
{
  const ClumVect3 skew = skewVector(i_frame);
  o_angle = rotationAngle(i_frame);
  if (traceOfRotation(i_frame) > 0.0)
  {
    o_axis = skew.squaredNorm() > 0.0 ? skew.normalized() : ClumVect3(1.0, 0.0, 0.0);
    return;
  }
  // Toward a half turn the skew part vanishes; the symmetric part, R + R^T = 2 c I + 2 (1 - c) a a^T, does not. Its
  // column with the largest diagonal gives the axis, up to the sign, which the skew part still tells.
  unsigned int k = 0;
  for (unsigned int i = 1; i < 3; ++i)
    if (i_frame(i, i) > i_frame(k, k))
      k = i;
  const double cosine = 0.5 * (traceOfRotation(i_frame) - 1.0);
  ClumVect3 axis(i_frame(0, k) + i_frame(k, 0), i_frame(1, k) + i_frame(k, 1), i_frame(2, k) + i_frame(k, 2));
  axis[k] -= 2.0 * cosine;
  o_axis = axis.normalized();
  if (o_axis.scalarProduct(skew) < 0.0)
    o_axis = -o_axis;
}

double ClumGeometryUtilities::slerpAngle(const ClumMat4& i_from, const ClumMat4& i_to)
{
  return rotationAngle(i_from.inverse() * i_to);
}

void ClumGeometryUtilities::matrixToBryant(const ClumMat4& i_frame, double* o_values)
{
  for (unsigned int i = 0; i < 3; ++i)
    o_values[i] = i_frame(i, 3);
  // Row 0 of Rx·Ry·Rz is (cy cz, -cy sz, sy); column 2 is (sy, -sx cy, cx cy).
  const double cosine = std::sqrt(i_frame(0, 0) * i_frame(0, 0) + i_frame(0, 1) * i_frame(0, 1));
  o_values[4] = lumAtan2(i_frame(0, 2), cosine);
  if (cosine > GIMBAL_LOCK_COSINE)
  {
    o_values[3] = lumAtan2(-i_frame(1, 2), i_frame(2, 2));
    o_values[5] = lumAtan2(-i_frame(0, 1), i_frame(0, 0));
  }
  else
  {
    // With rz = 0, column 1 is (0, cx, sx) whatever ry is.
    o_values[3] = lumAtan2(i_frame(2, 1), i_frame(1, 1));
    o_values[5] = 0.0;
  }
}

void ClumGeometryUtilities::matrixToBryant(const ClumMat4& i_frame, std::vector<double>& o_values)
{
  o_values.resize(6);
  matrixToBryant(i_frame, o_values.data());
}

void ClumGeometryUtilities::matrixToBryant(const ClumMat4& i_frame, double& o_x, double& o_y, double& o_z, double& o_rx,
                                           double& o_ry, double& o_rz)
{
  double values[6];
  matrixToBryant(i_frame, values);
  o_x = values[0];
  o_y = values[1];
  o_z = values[2];
  o_rx = values[3];
  o_ry = values[4];
  o_rz = values[5];
}

void ClumGeometryUtilities::matrixToBryant(const ClumMat4& i_frame, ClumVect3& o_translation, ClumVect3& o_angles)
{
  double values[6];
  matrixToBryant(i_frame, values);
  o_translation.setValue(values[0], values[1], values[2]);
  o_angles.setValue(values[3], values[4], values[5]);
}

void ClumGeometryUtilities::bryantToMatrix(double i_x, double i_y, double i_z, double i_rx, double i_ry, double i_rz,
                                           ClumMat4& o_frame)
{
  double sx, cx, sy, cy, sz, cz;
  lumSinCos(i_rx, sx, cx);
  lumSinCos(i_ry, sy, cy);
  lumSinCos(i_rz, sz, cz);
  o_frame.setColumnComponents(0, cy * cz, cx * sz + sx * sy * cz, sx * sz - cx * sy * cz, 0.0);
  o_frame.setColumnComponents(1, -(cy * sz), cx * cz - sx * sy * sz, sx * cz + cx * sy * sz, 0.0);
  o_frame.setColumnComponents(2, sy, -(sx * cy), cx * cy, 0.0);
  o_frame.setColumnComponents(3, i_x, i_y, i_z, 1.0);
}

void ClumGeometryUtilities::bryantToMatrix(const double* i_values, ClumMat4& o_frame)
{
  bryantToMatrix(i_values[0], i_values[1], i_values[2], i_values[3], i_values[4], i_values[5], o_frame);
}

void ClumGeometryUtilities::bryantToMatrix(const std::vector<double>& i_values, ClumMat4& o_frame)
{
  LUM_ASSERT(i_values.size() == 6);
  if (i_values.size() == 6)
    bryantToMatrix(i_values.data(), o_frame);
  else
    o_frame.identity();
}

double ClumGeometryUtilities::distancePointSegment(const ClumPoint3& i_point, const ClumPoint3& i_start,
                                                   const ClumPoint3& i_end)
{
  const ClumVect3 along = i_end - i_start;
  const double squaredLength = along.squaredNorm();
  const double t =
    squaredLength > 0.0 ? std::clamp((i_point - i_start).scalarProduct(along) / squaredLength, 0.0, 1.0) : 0.0;
  return i_point.distanceFrom(i_start + along * t);
}
