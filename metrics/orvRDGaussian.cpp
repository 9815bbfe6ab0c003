#include "metrics/orvRDGaussian.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvUtility.h"

LUM_DESCRIBE(CorvRDGaussian)
{
  i_class.creates("()", &Self::create);
}

CorvRDGaussian::~CorvRDGaussian() = default;

lmStatus CorvRDGaussian::init(const CorvRDGaussianWkPtr& i_weakPtr)
{
  return CorvRandomDistribution::init(i_weakPtr);
}

CorvRDGaussianConstShPtr CorvRDGaussian::create()
{
  return lumCreate<CorvRDGaussian>();
}

CorvRDGaussianConstShPtr CorvRDGaussian::createCopy(const CorvRDGaussianConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvRandomDistributionConstShPtr CorvRDGaussian::clone() const
{
  return createCopy(self());
}

double CorvRDGaussian::shoot(double i_size) const
{
  return CorvUtility::normalRand(i_size);
}
