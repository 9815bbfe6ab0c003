#include "paths/orvSteeringMethod.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "metrics/orvMetricIntrinsinc.h"

LUM_DESCRIBE(CorvSteeringMethod)
{
}

CorvSteeringMethod::CorvSteeringMethod() : m_metric(CorvMetricIntrinsinc::create())
{
}

CorvSteeringMethod::CorvSteeringMethod(const CorvSteeringMethod& i_other) : ClumMutableCodable(i_other)
{
  if (i_other.m_metric)
    m_metric = i_other.m_metric->clone();
}

CorvSteeringMethod::~CorvSteeringMethod() = default;

lmStatus CorvSteeringMethod::init(const CorvSteeringMethodWkPtr& i_weakPtr)
{
  return ClumMutableCodable::init(i_weakPtr);
}

bool CorvSteeringMethod::isConservative(const CorvConfigSpaceConstShPtr&) const
{
  return true;
}

bool CorvSteeringMethod::operator==(const CorvSteeringMethod&) const
{
  return true;
}

void CorvSteeringMethod::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumMutableCodable::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_metric, "metric");
}

lmStatus CorvSteeringMethod::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_metric = i_coder->decode<CorvMetric>("metric");
  return lmStatus();
}
