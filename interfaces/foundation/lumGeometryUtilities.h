#pragma once

#include "foundation/lumMat4.h"

#include <vector>

/// Angles, axes and coordinates of rigid frames.
///
/// Bryant coordinates of a frame are x, y, z of its translation, then rx, ry, rz in radians with the rotation
/// Rx(rx)·Ry(ry)·Rz(rz).
class LUM_API ClumGeometryUtilities
{
public:
  static constexpr double PI = 3.14159265358979323846;

  static double degreesToRadian(double i_degrees) { return i_degrees * (PI / 180.0); }

  /// The angle of the frame's rotation, 0 to pi. Accurate at both ends too.
  static double rotationAngle(const ClumMat4& i_frame);
  /// Axis (of length 1) and angle, 0 to pi. A frame without rotation has the x axis.
  static void getRotationAxisAndAngle(const ClumMat4& i_frame, ClumVect3& o_axis, double& o_angle);
  /// The angle of the rotation that leads from one frame's rotation to the other's, 0 to pi.
  static double slerpAngle(const ClumMat4& i_from, const ClumMat4& i_to);

  /// Angles rx and rz come in [-pi, pi], ry in [-pi/2, pi/2]. In gimbal lock, where only rx ± rz is determined, rz is
  /// 0; the result gives the frame back there too.
  static void matrixToBryant(const ClumMat4& i_frame, std::vector<double>& o_values);
  /// @param o_values six values.
  static void matrixToBryant(const ClumMat4& i_frame, double* o_values);
  static void matrixToBryant(const ClumMat4& i_frame, double& o_x, double& o_y, double& o_z, double& o_rx, double& o_ry,
                             double& o_rz);
  static void matrixToBryant(const ClumMat4& i_frame, ClumVect3& o_translation, ClumVect3& o_angles);

  static void bryantToMatrix(double i_x, double i_y, double i_z, double i_rx, double i_ry, double i_rz,
                             ClumMat4& o_frame);
  /// Asserts and gives the identity unless there are six values.
  static void bryantToMatrix(const std::vector<double>& i_values, ClumMat4& o_frame);
  /// @param i_values six values.
  static void bryantToMatrix(const double* i_values, ClumMat4& o_frame);

  static double distancePointSegment(const ClumPoint3& i_point, const ClumPoint3& i_start, const ClumPoint3& i_end);

  ClumGeometryUtilities() = delete;
};
