#pragma once

#include "foundation/lumMat4.h"

/// The rotation about a base vector (0, 1 or 2) by an angle, or its first or second derivative by the angle, which are
/// zero outside of the two other rows and columns.
void orvRotationAboutAxis(unsigned int i_axis, double i_angle, unsigned int i_order, ClumMat4& o_mat);

/// The product Rx(q0)·Ry(q1)·… of the first `i_count` base rotations, each derived as often as its rank occurs in
/// `i_orders`.
void orvRotationProduct(const double* i_angles, unsigned int i_count, const unsigned int* i_orders, ClumMat4& o_mat);
