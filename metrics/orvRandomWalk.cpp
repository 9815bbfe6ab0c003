#include "metrics/orvRandomWalk.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "metrics/orvRandomDistribution.h"

#include <typeinfo>

LUM_DESCRIBE(CorvRandomWalk)
{
}

CorvRandomWalk::CorvRandomWalk(const CorvRandomDistributionConstShPtr& i_distribution) : m_distribution(i_distribution)
{
}

CorvRandomWalk::~CorvRandomWalk() = default;

lmStatus CorvRandomWalk::init(const CorvRandomWalkWkPtr& i_weakPtr)
{
  return ClumCodable::init(i_weakPtr);
}

bool CorvRandomWalk::operator==(const CorvRandomWalk& i_other) const
{
  if (typeid(*this) != typeid(i_other))
    return false;
  if (m_distribution && i_other.m_distribution)
    return *m_distribution == *i_other.m_distribution;
  return !m_distribution && !i_other.m_distribution;
}

void CorvRandomWalk::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumCodable::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_distribution, "distribution");
}

lmStatus CorvRandomWalk::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumCodable::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_distribution = i_coder->decode<CorvRandomDistribution>("distribution");
  return lmStatus();
}
