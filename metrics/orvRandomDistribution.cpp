#include "metrics/orvRandomDistribution.h"

#include "foundation/lumDescribe.h"

#include <typeinfo>

LUM_DESCRIBE(CorvRandomDistribution)
{
}

CorvRandomDistribution::~CorvRandomDistribution() = default;

lmStatus CorvRandomDistribution::init(const CorvRandomDistributionWkPtr& i_weakPtr)
{
  return ClumCodable::init(i_weakPtr);
}

bool CorvRandomDistribution::operator==(const CorvRandomDistribution& i_other) const
{
  return typeid(*this) == typeid(i_other);
}
