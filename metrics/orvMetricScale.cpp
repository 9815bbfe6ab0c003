#include "metrics/orvMetricScale.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"

#include <cmath>

LUM_DESCRIBE(CorvMetricScale)
{
  i_class.creates("(const CorvMetricShPtr& i_scaledMetric, const std::string& i_type)", &Self::create);
}

CorvMetricScale::CorvMetricScale(const CorvMetricShPtr& i_scaledMetric, const std::string& i_type)
  : CorvMetricDecorator(i_scaledMetric, i_type)
{
}

CorvMetricScale::~CorvMetricScale() = default;

lmStatus CorvMetricScale::init(const CorvMetricScaleWkPtr& i_weakPtr)
{
  return CorvMetricDecorator::init(i_weakPtr);
}

CorvMetricScaleShPtr CorvMetricScale::create(const CorvMetricShPtr& i_scaledMetric, const std::string& i_type)
{
  return lumCreate<CorvMetricScale>(i_scaledMetric, i_type);
}

CorvMetricScaleShPtr CorvMetricScale::createCopy(const CorvMetricScaleConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMetricShPtr CorvMetricScale::clone() const
{
  return createCopy(self());
}

void CorvMetricScale::scale(double i_scale)
{
  if (i_scale == m_scale)
    return;
  m_scale = i_scale;
  raiseRevision();
}

double CorvMetricScale::distance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return decoratedMetric()->distance(i_a, i_b) * scale();
}

double CorvMetricScale::squaredDistance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return scaledSquaredDistance(i_a, i_b, scale());
}

double CorvMetricScale::distanceForSorting(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return decoratedMetric()->distanceForSorting(i_a, i_b);
}

void CorvMetricScale::randomStep(const CorvConfig& i_from, double i_step, CorvConfig& o_config) const
{
  scaledRandomStep(i_from, i_step, scale(), o_config);
}

bool CorvMetricScale::isScaledAbsolute(double& o_scale) const
{
  return isScaledAbsoluteBy(scale(), o_scale);
}

bool CorvMetricScale::isScaledCircular(double& o_scale) const
{
  return isScaledCircularBy(scale(), o_scale);
}

bool CorvMetricScale::operator==(const CorvMetric& i_other) const
{
  const auto* other = dynamic_cast<const CorvMetricScale*>(&i_other);
  return other && CorvMetricDecorator::operator==(i_other) && m_scale == other->m_scale;
}

void CorvMetricScale::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvMetricDecorator::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_scale, "scale");
}

lmStatus CorvMetricScale::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvMetricDecorator::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_scale = i_coder->decodeDouble("scale");
  return std::isfinite(m_scale) ? lmStatus() : lmStatus(lmStatus::FAILURE);
}
