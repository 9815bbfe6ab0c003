#include "kinematics/orvKERotateTaitBryant.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvRotationProduct.h"

LUM_DESCRIBE(CorvKERotateTaitBryant)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

CorvConfigSpaceShPtr CorvKERotateTaitBryant::makeConfigSpace()
{
  return makeSpaceOfDofs({true, true, true}, "orvane.core.config-space.rotate-tait-bryant");
}

lmStatus CorvKERotateTaitBryant::forward(const double* i_values, ClumMat4& o_mat) const
{
  if (!i_values)
    return lmStatus(-1);
  ClumGeometryUtilities::bryantToMatrix(0.0, 0.0, 0.0, i_values[0], i_values[1], i_values[2], o_mat);
  return lmStatus();
}

lmStatus CorvKERotateTaitBryant::inverse(const ClumMat4& i_mat, double* o_values) const
{
  if (!o_values)
    return lmStatus(-1);
  double values[6];
  ClumGeometryUtilities::matrixToBryant(i_mat, values);
  for (unsigned int i = 0; i < 3; ++i)
    o_values[i] = values[3 + i];
  return lmStatus();
}

lmStatus CorvKERotateTaitBryant::forwardDerivate(const double* i_values, unsigned int i_rank, ClumMat4& o_mat) const
{
  if (!i_values || i_rank >= 3)
    return lmStatus(-1);
  unsigned int orders[] = {0, 0, 0};
  ++orders[i_rank];
  orvRotationProduct(i_values, 3, orders, o_mat);
  return lmStatus();
}

lmStatus CorvKERotateTaitBryant::forwardSecondDerivate(const double* i_values, unsigned int i_rank1,
                                                       unsigned int i_rank2, ClumMat4& o_mat) const
{
  if (!i_values || i_rank1 >= 3 || i_rank2 >= 3)
    return lmStatus(-1);
  unsigned int orders[] = {0, 0, 0};
  ++orders[i_rank1];
  ++orders[i_rank2];
  orvRotationProduct(i_values, 3, orders, o_mat);
  return lmStatus();
}

lmStatus CorvKERotateTaitBryant::forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const
{
  if (!i_velocities)
    return lmStatus(-1);
  o_linear = 0.0;
  o_angular =
    std::sqrt(i_velocities[0] * i_velocities[0] + i_velocities[1] * i_velocities[1]) + std::fabs(i_velocities[2]);
  return lmStatus();
}

lmStatus CorvKERotateTaitBryant::inverseVelocity(double, double, double, double i_angular, const ClumVect3& i_axis,
                                                 std::vector<double>& o_velocities) const
{
  const ClumVect3 axis = i_axis.normalized();
  o_velocities = {i_angular * axis.x(), i_angular * axis.y(), i_angular * axis.z()};
  return lmStatus();
}
