#include "kinematics/orvKEPathMetric.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "metrics/orvRWLinearDof.h"

#include <cmath>

LUM_DESCRIBE(CorvKEPathMetric)
{
  i_class.creates("(double i_pathLength)", &Self::create);
}

CorvKEPathMetric::CorvKEPathMetric(double i_pathLength)
  : CorvMetric(TYPE, CorvRWLinearDof::create()), m_pathLength(i_pathLength)
{
}

CorvKEPathMetric::~CorvKEPathMetric() = default;

lmStatus CorvKEPathMetric::init(const CorvKEPathMetricWkPtr& i_weakPtr)
{
  return CorvMetric::init(i_weakPtr);
}

CorvKEPathMetricShPtr CorvKEPathMetric::create(double i_pathLength)
{
  return lumCreate<CorvKEPathMetric>(i_pathLength);
}

CorvKEPathMetricShPtr CorvKEPathMetric::createCopy(const CorvKEPathMetricConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMetricShPtr CorvKEPathMetric::clone() const
{
  return createCopy(self());
}

void CorvKEPathMetric::pathLength(double i_pathLength)
{
  if (i_pathLength == m_pathLength)
    return;
  m_pathLength = i_pathLength;
  raiseRevision();
}

double CorvKEPathMetric::distance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return std::fabs(i_a.dofValue(0) - i_b.dofValue(0)) * m_pathLength;
}

bool CorvKEPathMetric::isScaledAbsolute(double& o_scale) const
{
  o_scale = m_pathLength;
  return true;
}

bool CorvKEPathMetric::operator==(const CorvMetric& i_other) const
{
  const auto* other = dynamic_cast<const CorvKEPathMetric*>(&i_other);
  return other && CorvMetric::operator==(i_other) && m_pathLength == other->m_pathLength;
}

void CorvKEPathMetric::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvMetric::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_pathLength, "pathLength");
}

lmStatus CorvKEPathMetric::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvMetric::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_pathLength = i_coder->decodeDouble("pathLength");
  return lmStatus(std::isfinite(m_pathLength) && m_pathLength >= 0.0 ? lmStatus::SUCCESS : lmStatus::FAILURE);
}
