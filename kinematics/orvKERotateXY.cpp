#include "kinematics/orvKERotateXY.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumMath.h"
#include "kinematics/orvRotationProduct.h"

LUM_DESCRIBE(CorvKERotateXY)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

CorvConfigSpaceShPtr CorvKERotateXY::makeConfigSpace()
{
  return makeSpaceOfDofs({true, true}, "orvane.core.config-space.rotate-xy");
}

lmStatus CorvKERotateXY::forward(const double* i_values, ClumMat4& o_mat) const
{
  if (!i_values)
    return lmStatus(-1);
  const unsigned int orders[] = {0, 0};
  orvRotationProduct(i_values, 2, orders, o_mat);
  return lmStatus();
}

lmStatus CorvKERotateXY::inverse(const ClumMat4& i_mat, double* o_values) const
{
  if (!o_values)
    return lmStatus(-1);
  // Row 0 of Rx·Ry is (cos q1, 0, sin q1), column 1 is (0, cos q0, sin q0).
  o_values[0] = lumAtan2(i_mat(2, 1), i_mat(1, 1));
  o_values[1] = lumAtan2(i_mat(0, 2), i_mat(0, 0));
  return lmStatus();
}

lmStatus CorvKERotateXY::forwardDerivate(const double* i_values, unsigned int i_rank, ClumMat4& o_mat) const
{
  if (!i_values || i_rank >= 2)
    return lmStatus(-1);
  unsigned int orders[] = {0, 0};
  ++orders[i_rank];
  orvRotationProduct(i_values, 2, orders, o_mat);
  return lmStatus();
}

lmStatus CorvKERotateXY::forwardSecondDerivate(const double* i_values, unsigned int i_rank1, unsigned int i_rank2,
                                               ClumMat4& o_mat) const
{
  if (!i_values || i_rank1 >= 2 || i_rank2 >= 2)
    return lmStatus(-1);
  unsigned int orders[] = {0, 0};
  ++orders[i_rank1];
  ++orders[i_rank2];
  orvRotationProduct(i_values, 2, orders, o_mat);
  return lmStatus();
}

lmStatus CorvKERotateXY::forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const
{
  if (!i_velocities)
    return lmStatus(-1);
  o_linear = 0.0;
  o_angular = std::sqrt(i_velocities[0] * i_velocities[0] + i_velocities[1] * i_velocities[1]);
  return lmStatus();
}

lmStatus CorvKERotateXY::inverseVelocity(double, double, double, double i_angular, const ClumVect3& i_axis,
                                         std::vector<double>& o_velocities) const
{
  const ClumVect3 axis = i_axis.normalized();
  o_velocities = {i_angular * axis.x(), i_angular * axis.y()};
  return lmStatus();
}
