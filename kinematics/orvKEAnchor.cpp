#include "kinematics/orvKEAnchor.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvCSVoid.h"

LUM_DESCRIBE(CorvKEAnchor)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

CorvConfigSpaceShPtr CorvKEAnchor::makeConfigSpace()
{
  return CorvCSVoid::create();
}

lmStatus CorvKEAnchor::forward(const double* i_values, ClumMat4& o_mat) const
{
  if (!i_values)
    return lmStatus(-1);
  o_mat.identity();
  return lmStatus();
}

lmStatus CorvKEAnchor::inverse(const ClumMat4&, double* o_values) const
{
  if (!o_values)
    return lmStatus(-1);
  return lmStatus();
}

lmStatus CorvKEAnchor::forwardDerivate(const double*, unsigned int, ClumMat4&) const
{
  return lmStatus(-1);
}

lmStatus CorvKEAnchor::forwardSecondDerivate(const double*, unsigned int, unsigned int, ClumMat4&) const
{
  return lmStatus(-1);
}

lmStatus CorvKEAnchor::forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const
{
  if (!i_velocities)
    return lmStatus(-1);
  o_linear = 0.0;
  o_angular = 0.0;
  return lmStatus();
}

lmStatus CorvKEAnchor::inverseVelocity(double, double, double, double, const ClumVect3&,
                                       std::vector<double>& o_velocities) const
{
  o_velocities.clear();
  return lmStatus();
}
