#include "optimizers/orvPathEvaluatorLength.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "optimizers/orvPathOptimizer.h"
#include "paths/orvPath.h"

#include <cmath>

LUM_DESCRIBE(CorvPathEvaluatorLength)
{
  i_class.creates("(double i_costPerDirectPath)", static_cast<CorvPathEvaluatorLengthShPtr (*)(double)>(&Self::create));
}

CorvPathEvaluatorLength::~CorvPathEvaluatorLength() = default;

CorvPathEvaluatorLengthShPtr CorvPathEvaluatorLength::create()
{
  return create(2.0 * CorvPathOptimizer::COST_EPSILON);
}

CorvPathEvaluatorLengthShPtr CorvPathEvaluatorLength::create(double i_costPerDirectPath)
{
  return lumCreate<CorvPathEvaluatorLength>(i_costPerDirectPath);
}

double CorvPathEvaluatorLength::operator()(const CorvPathConstShPtr& i_path) const
{
  return i_path->length() + m_costPerDirectPath * i_path->countDirectPaths();
}

void CorvPathEvaluatorLength::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvPathEvaluator::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_costPerDirectPath, "costPerDirectPath");
}

lmStatus CorvPathEvaluatorLength::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvPathEvaluator::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_costPerDirectPath = i_coder->decodeDouble("costPerDirectPath");
  return std::isfinite(m_costPerDirectPath) ? status : lmStatus(lmStatus::FAILURE);
}
