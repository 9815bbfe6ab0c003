#include "kinematics/orvKEPlan.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumMath.h"
#include "kinematics/orvRotationProduct.h"

LUM_DESCRIBE(CorvKEPlan)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

CorvConfigSpaceShPtr CorvKEPlan::makeConfigSpace()
{
  return makeSpaceOfDofs({false, false, true}, "orvane.core.config-space.plan");
}

lmStatus CorvKEPlan::forward(const double* i_values, ClumMat4& o_mat) const
{
  if (!i_values)
    return lmStatus(-1);
  orvRotationAboutAxis(2, i_values[2], 0, o_mat);
  o_mat.setTranslation(ClumVect3(i_values[0], i_values[1], 0.0));
  return lmStatus();
}

lmStatus CorvKEPlan::inverse(const ClumMat4& i_mat, double* o_values) const
{
  if (!o_values)
    return lmStatus(-1);
  o_values[0] = i_mat(0, 3);
  o_values[1] = i_mat(1, 3);
  o_values[2] = lumAtan2(-i_mat(0, 1), i_mat(0, 0));
  return lmStatus();
}

lmStatus CorvKEPlan::forwardDerivate(const double* i_values, unsigned int i_rank, ClumMat4& o_mat) const
{
  if (!i_values || i_rank >= 3)
    return lmStatus(-1);
  if (i_rank == 2)
    orvRotationAboutAxis(2, i_values[2], 1, o_mat);
  else
  {
    o_mat.zero();
    o_mat(i_rank, 3) = 1.0;
  }
  return lmStatus();
}

lmStatus CorvKEPlan::forwardSecondDerivate(const double* i_values, unsigned int i_rank1, unsigned int i_rank2,
                                           ClumMat4& o_mat) const
{
  if (!i_values || i_rank1 >= 3 || i_rank2 >= 3)
    return lmStatus(-1);
  if (i_rank1 == 2 && i_rank2 == 2)
    orvRotationAboutAxis(2, i_values[2], 2, o_mat);
  else
    o_mat.zero();
  return lmStatus();
}

lmStatus CorvKEPlan::forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const
{
  if (!i_velocities)
    return lmStatus(-1);
  o_linear = std::sqrt(i_velocities[0] * i_velocities[0] + i_velocities[1] * i_velocities[1]);
  o_angular = std::fabs(i_velocities[2]);
  return lmStatus();
}

lmStatus CorvKEPlan::inverseVelocity(double i_vx, double i_vy, double, double i_angular, const ClumVect3&,
                                     std::vector<double>& o_velocities) const
{
  o_velocities = {i_vx, i_vy, i_angular};
  return lmStatus();
}
