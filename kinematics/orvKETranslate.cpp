#include "kinematics/orvKETranslate.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvDof.h"

LUM_DESCRIBE(CorvKETranslateX)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

LUM_DESCRIBE(CorvKETranslateY)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

LUM_DESCRIBE(CorvKETranslateZ)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

LUM_DESCRIBE(CorvKETranslateInverseX)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

LUM_DESCRIBE(CorvKETranslateInverseY)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

LUM_DESCRIBE(CorvKETranslateInverseZ)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

CorvKETranslateAxis::CorvKETranslateAxis(unsigned int i_axis, int i_sign, const std::string& i_type)
  : CorvKEAxis(i_axis, i_sign, CorvDof::create(false), i_type)
{
}

lmStatus CorvKETranslateAxis::forward(const double* i_values, ClumMat4& o_mat) const
{
  if (!i_values)
    return lmStatus(-1);
  o_mat.identity();
  o_mat(axis(), 3) = sign() < 0 ? -i_values[0] : i_values[0];
  return lmStatus();
}

lmStatus CorvKETranslateAxis::inverse(const ClumMat4& i_mat, double* o_values) const
{
  if (!o_values)
    return lmStatus(-1);
  o_values[0] = sign() < 0 ? -i_mat(axis(), 3) : i_mat(axis(), 3);
  return lmStatus();
}

lmStatus CorvKETranslateAxis::forwardDerivate(const double* i_values, unsigned int i_rank, ClumMat4& o_mat) const
{
  if (!i_values || i_rank > 0)
    return lmStatus(-1);
  o_mat.zero();
  o_mat(axis(), 3) = sign();
  return lmStatus();
}

lmStatus CorvKETranslateAxis::forwardSecondDerivate(const double* i_values, unsigned int i_rank1, unsigned int i_rank2,
                                                    ClumMat4& o_mat) const
{
  if (!i_values || i_rank1 > 0 || i_rank2 > 0)
    return lmStatus(-1);
  o_mat.zero();
  return lmStatus();
}

lmStatus CorvKETranslateAxis::forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const
{
  if (!i_velocities)
    return lmStatus(-1);
  o_linear = std::fabs(i_velocities[0]);
  o_angular = 0.0;
  return lmStatus();
}

lmStatus CorvKETranslateAxis::inverseVelocity(double i_vx, double i_vy, double i_vz, double, const ClumVect3&,
                                              std::vector<double>& o_velocities) const
{
  o_velocities.assign(1, sign() * ClumVect3(i_vx, i_vy, i_vz)[axis()]);
  return lmStatus();
}
