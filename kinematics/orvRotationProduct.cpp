#include "kinematics/orvRotationProduct.h"

#include "foundation/lumMath.h"

void orvRotationAboutAxis(unsigned int i_axis, double i_angle, unsigned int i_order, ClumMat4& o_mat)
{
  double s, c;
  lumSinCos(i_angle, s, c);
  if (i_order == 0)
    o_mat.identity();
  else
    o_mat.zero();
  // Each derivation turns (cos, sin) by a quarter.
  for (unsigned int i = 0; i < i_order; ++i)
  {
    const double sine = s;
    s = c;
    c = -sine;
  }
  const unsigned int a = (i_axis + 1) % 3, b = (i_axis + 2) % 3;
  o_mat(a, a) = c;
  o_mat(b, b) = c;
  o_mat(b, a) = s;
  o_mat(a, b) = -s;
}

void orvRotationProduct(const double* i_angles, unsigned int i_count, const unsigned int* i_orders, ClumMat4& o_mat)
{
  orvRotationAboutAxis(0, i_angles[0], i_orders[0], o_mat);
  for (unsigned int i = 1; i < i_count; ++i)
  {
    ClumMat4 factor;
    orvRotationAboutAxis(i, i_angles[i], i_orders[i], factor);
    o_mat = o_mat * factor;
  }
}
