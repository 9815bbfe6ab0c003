#include "kinematics/orvKEFreeFlyer.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvRotationProduct.h"

LUM_DESCRIBE(CorvKEFreeFlyer)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

CorvConfigSpaceShPtr CorvKEFreeFlyer::makeConfigSpace()
{
  return makeSpaceOfDofs({false, false, false, true, true, true}, "orvane.core.config-space.free-flyer");
}

lmStatus CorvKEFreeFlyer::forward(const double* i_values, ClumMat4& o_mat) const
{
  if (!i_values)
    return lmStatus(-1);
  ClumGeometryUtilities::bryantToMatrix(i_values, o_mat);
  return lmStatus();
}

lmStatus CorvKEFreeFlyer::inverse(const ClumMat4& i_mat, double* o_values) const
{
  if (!o_values)
    return lmStatus(-1);
  ClumGeometryUtilities::matrixToBryant(i_mat, o_values);
  return lmStatus();
}

lmStatus CorvKEFreeFlyer::forwardDerivate(const double* i_values, unsigned int i_rank, ClumMat4& o_mat) const
{
  if (!i_values || i_rank >= 6)
    return lmStatus(-1);
  if (i_rank >= 3)
  {
    unsigned int orders[] = {0, 0, 0};
    ++orders[i_rank - 3];
    orvRotationProduct(i_values + 3, 3, orders, o_mat);
  }
  else
  {
    o_mat.zero();
    o_mat(i_rank, 3) = 1.0;
  }
  return lmStatus();
}

lmStatus CorvKEFreeFlyer::forwardSecondDerivate(const double*, unsigned int, unsigned int, ClumMat4&) const
{
  return lmStatus(-1);
}

lmStatus CorvKEFreeFlyer::forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const
{
  if (!i_velocities)
    return lmStatus(-1);
  const double* v = i_velocities;
  o_linear = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  o_angular = std::sqrt(v[3] * v[3] + v[4] * v[4]) + std::fabs(v[5]);
  return lmStatus();
}

lmStatus CorvKEFreeFlyer::inverseVelocity(double i_vx, double i_vy, double i_vz, double i_angular, const ClumVect3&,
                                          std::vector<double>& o_velocities) const
{
  o_velocities = {i_vx, i_vy, i_vz, 0.0, 0.0, i_angular};
  return lmStatus();
}
