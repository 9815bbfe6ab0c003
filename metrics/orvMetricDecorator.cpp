#include "metrics/orvMetricDecorator.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "metrics/orvRWComposite.h"

LUM_DESCRIBE(CorvMetricDecorator)
{
}

CorvMetricDecorator::CorvMetricDecorator(const CorvMetricShPtr& i_decoratedMetric, const std::string& i_decoratorType)
  : CorvMetric(i_decoratorType + "(" + (i_decoratedMetric ? i_decoratedMetric->type() : std::string()) + ")",
               CorvRWComposite::create()),
    m_decoratorType(i_decoratorType), m_decoratedMetric(i_decoratedMetric)
{
}

CorvMetricDecorator::CorvMetricDecorator(const CorvMetricDecorator& i_other)
  : CorvMetric(i_other), m_decoratorType(i_other.m_decoratorType)
{
  if (i_other.m_decoratedMetric)
    m_decoratedMetric = i_other.m_decoratedMetric->clone();
}

CorvMetricDecorator::~CorvMetricDecorator() = default;

lmStatus CorvMetricDecorator::init(const CorvMetricDecoratorWkPtr& i_weakPtr)
{
  return m_decoratedMetric ? CorvMetric::init(i_weakPtr) : lmStatus(lmStatus::FAILURE);
}

void CorvMetricDecorator::randomStep(const CorvConfig& i_from, double i_step, CorvConfig& o_config) const
{
  m_decoratedMetric->randomStep(i_from, i_step, o_config);
}

bool CorvMetricDecorator::isDecoratedBy(const CorvMetricShPtr& i_metric) const
{
  CorvMetricShPtr inner = i_metric;
  while (const auto decorator = boost::dynamic_pointer_cast<CorvMetricDecorator>(inner))
  {
    if (decorator.get() == this)
      return true;
    inner = decorator->m_decoratedMetric;
  }
  return false;
}

CorvMetricShPtr CorvMetricDecorator::find(const std::string& i_type) const
{
  return i_type == m_decoratorType ? self() : m_decoratedMetric->find(i_type);
}

lmStatus CorvMetricDecorator::substitute(const std::string& i_type, const CorvMetricShPtr& i_metric)
{
  if (!i_metric || isDecoratedBy(i_metric))
    return lmStatus(lmStatus::FAILURE);
  const lmStatus status = m_decoratedMetric->substitute(i_type, i_metric);
  if (status.succeeded() || m_decoratedMetric->type() != i_type)
    return status;
  m_decoratedMetric = i_metric;
  raiseRevision();
  return lmStatus();
}

CorvRandomWalkConstShPtr CorvMetricDecorator::randomWalk() const
{
  return m_decoratedMetric ? m_decoratedMetric->randomWalk() : CorvRandomWalkConstShPtr();
}

void CorvMetricDecorator::randomWalk(const CorvRandomWalkConstShPtr& i_randomWalk)
{
  m_decoratedMetric->randomWalk(i_randomWalk);
}

bool CorvMetricDecorator::operator==(const CorvMetric& i_other) const
{
  const auto* other = dynamic_cast<const CorvMetricDecorator*>(&i_other);
  return other && CorvMetric::operator==(i_other) && m_decoratorType == other->m_decoratorType &&
         *m_decoratedMetric == *other->m_decoratedMetric;
}

double CorvMetricDecorator::scaledSquaredDistance(const CorvConfig& i_a, const CorvConfig& i_b, double i_scale) const
{
  return m_decoratedMetric->squaredDistance(i_a, i_b) * i_scale * i_scale;
}

void CorvMetricDecorator::scaledRandomStep(const CorvConfig& i_from, double i_step, double i_scale,
                                           CorvConfig& o_config) const
{
  if (i_scale != 0.0)
    m_decoratedMetric->randomStep(i_from, i_step / i_scale, o_config);
  else if (&o_config != &i_from)
    o_config = i_from;
}

bool CorvMetricDecorator::isScaledAbsoluteBy(double i_scale, double& o_scale) const
{
  double scale = 1.0;
  if (!m_decoratedMetric->isScaledAbsolute(scale))
    return false;
  o_scale = scale * i_scale;
  return true;
}

bool CorvMetricDecorator::isScaledCircularBy(double i_scale, double& o_scale) const
{
  double scale = 1.0;
  if (!m_decoratedMetric->isScaledCircular(scale))
    return false;
  o_scale = scale * i_scale;
  return true;
}

void CorvMetricDecorator::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvMetric::encodeWithCoder(i_coder);
  i_coder->encodeString(m_decoratorType, "decoratorType");
  i_coder->encodeObjectShPtr(m_decoratedMetric, "decoratedMetric");
}

lmStatus CorvMetricDecorator::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvMetric::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_decoratorType = i_coder->decodeString("decoratorType");
  m_decoratedMetric = i_coder->decode<CorvMetric>("decoratedMetric");
  return m_decoratedMetric && !isDecoratedBy(m_decoratedMetric) ? lmStatus() : lmStatus(lmStatus::FAILURE);
}
