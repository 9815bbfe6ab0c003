#include "metrics/orvRDDiscrete.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvUtility.h"

LUM_DESCRIBE(CorvRDDiscrete)
{
  i_class.creates("()", &Self::create);
}

CorvRDDiscrete::~CorvRDDiscrete() = default;

lmStatus CorvRDDiscrete::init(const CorvRDDiscreteWkPtr& i_weakPtr)
{
  return CorvRandomDistribution::init(i_weakPtr);
}

CorvRDDiscreteConstShPtr CorvRDDiscrete::create()
{
  return lumCreate<CorvRDDiscrete>();
}

CorvRDDiscreteConstShPtr CorvRDDiscrete::createCopy(const CorvRDDiscreteConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvRandomDistributionConstShPtr CorvRDDiscrete::clone() const
{
  return createCopy(self());
}

double CorvRDDiscrete::shoot(double i_size) const
{
  return CorvUtility::random(0, 1) == 0 ? -i_size : i_size;
}
