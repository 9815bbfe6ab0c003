#include "metrics/orvRDUniform.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvUtility.h"

LUM_DESCRIBE(CorvRDUniform)
{
  i_class.creates("()", &Self::create);
}

CorvRDUniform::~CorvRDUniform() = default;

lmStatus CorvRDUniform::init(const CorvRDUniformWkPtr& i_weakPtr)
{
  return CorvRandomDistribution::init(i_weakPtr);
}

CorvRDUniformConstShPtr CorvRDUniform::create()
{
  return lumCreate<CorvRDUniform>();
}

CorvRDUniformConstShPtr CorvRDUniform::createCopy(const CorvRDUniformConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvRandomDistributionConstShPtr CorvRDUniform::clone() const
{
  return createCopy(self());
}

double CorvRDUniform::shoot(double i_size) const
{
  // The uniform distribution over [-a, a] has the standard deviation a / sqrt(3).
  const double range = i_size * 1.7320508075688772;
  return CorvUtility::random(-range, range);
}
