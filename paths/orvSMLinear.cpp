#include "paths/orvSMLinear.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "metrics/orvMetricEuclidean.h"
#include "paths/orvDPLinear.h"

LUM_DESCRIBE(CorvSMLinear)
{
  i_class.creates("(bool i_oriented)", &Self::create);
}

CorvSMLinear::CorvSMLinear(bool i_oriented) : m_oriented(i_oriented)
{
}

CorvSMLinear::~CorvSMLinear() = default;

lmStatus CorvSMLinear::init(const CorvSMLinearWkPtr& i_weakPtr)
{
  metric(CorvMetricEuclidean::create());
  return CorvSteeringMethod::init(i_weakPtr);
}

CorvSMLinearShPtr CorvSMLinear::create(bool i_oriented)
{
  return lumCreate<CorvSMLinear>(i_oriented);
}

CorvSMLinearShPtr CorvSMLinear::createCopy(const CorvSMLinearConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvSteeringMethodShPtr CorvSMLinear::clone() const
{
  return createCopy(self());
}

CorvDirectPathShPtr CorvSMLinear::makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const
{
  return CorvDPLinear::create(i_start, i_end, self());
}

bool CorvSMLinear::isOriented(const CorvConfigSpaceConstShPtr&) const
{
  return m_oriented;
}

bool CorvSMLinear::operator==(const CorvSteeringMethod& i_other) const
{
  const auto* other = dynamic_cast<const CorvSMLinear*>(&i_other);
  return other && m_oriented == other->m_oriented;
}

void CorvSMLinear::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvSteeringMethod::encodeWithCoder(i_coder);
  i_coder->encodeBool(m_oriented, "oriented");
}

lmStatus CorvSMLinear::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvSteeringMethod::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_oriented = i_coder->decodeBool("oriented");
  return lmStatus();
}
