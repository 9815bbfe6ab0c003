#include "kinematics/orvKERotate.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMath.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvRotationProduct.h"

LUM_DESCRIBE(CorvKERotateX)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

LUM_DESCRIBE(CorvKERotateY)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

LUM_DESCRIBE(CorvKERotateZ)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

LUM_DESCRIBE(CorvKERotateInverseX)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

LUM_DESCRIBE(CorvKERotateInverseY)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

LUM_DESCRIBE(CorvKERotateInverseZ)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

CorvKERotateAxis::CorvKERotateAxis(unsigned int i_axis, int i_sign, const std::string& i_type)
  : CorvKEAxis(i_axis, i_sign, CorvDof::create(true), i_type)
{
}

lmStatus CorvKERotateAxis::forward(const double* i_values, ClumMat4& o_mat) const
{
  if (!i_values)
    return lmStatus(-1);
  orvRotationAboutAxis(axis(), sign() * i_values[0], 0, o_mat);
  return lmStatus();
}

lmStatus CorvKERotateAxis::inverse(const ClumMat4& i_mat, double* o_values) const
{
  if (!o_values)
    return lmStatus(-1);
  const unsigned int a = (axis() + 1) % 3, b = (axis() + 2) % 3;
  const double angle = sign() * lumAtan2(i_mat(b, a) - i_mat(a, b), i_mat(a, a) + i_mat(b, b));
  // A half turn reads as pi.
  o_values[0] = angle <= -ClumGeometryUtilities::PI ? ClumGeometryUtilities::PI : angle;
  return lmStatus();
}

lmStatus CorvKERotateAxis::forwardDerivate(const double* i_values, unsigned int i_rank, ClumMat4& o_mat) const
{
  if (!i_values || i_rank > 0)
    return lmStatus(-1);
  orvRotationAboutAxis(axis(), sign() * i_values[0], 1, o_mat);
  if (sign() < 0)
    o_mat = o_mat * -1.0;
  return lmStatus();
}

lmStatus CorvKERotateAxis::forwardSecondDerivate(const double* i_values, unsigned int i_rank1, unsigned int i_rank2,
                                                 ClumMat4& o_mat) const
{
  if (!i_values || i_rank1 > 0 || i_rank2 > 0)
    return lmStatus(-1);
  orvRotationAboutAxis(axis(), sign() * i_values[0], 2, o_mat);
  return lmStatus();
}

lmStatus CorvKERotateAxis::forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const
{
  if (!i_velocities)
    return lmStatus(-1);
  o_linear = 0.0;
  o_angular = std::fabs(i_velocities[0]);
  return lmStatus();
}

lmStatus CorvKERotateAxis::inverseVelocity(double, double, double, double i_angular, const ClumVect3&,
                                           std::vector<double>& o_velocities) const
{
  o_velocities.assign(1, i_angular);
  return lmStatus();
}
