#include "metrics/orvMetricZero.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "metrics/orvRWLinearDof.h"

LUM_DESCRIBE(CorvMetricZero)
{
  i_class.creates(
    "(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)",
    static_cast<CorvMetricZeroShPtr (*)(const CorvRandomWalkConstShPtr&, const std::string&)>(&Self::create));
}

CorvMetricZero::CorvMetricZero(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)
  : CorvMetric(i_type, i_randomWalk)
{
}

CorvMetricZero::~CorvMetricZero() = default;

lmStatus CorvMetricZero::init(const CorvMetricZeroWkPtr& i_weakPtr)
{
  return CorvMetric::init(i_weakPtr);
}

CorvMetricZeroShPtr CorvMetricZero::create()
{
  return create(CorvRWLinearDof::create());
}

CorvMetricZeroShPtr CorvMetricZero::create(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)
{
  return lumCreate<CorvMetricZero>(i_randomWalk, i_type);
}

CorvMetricZeroShPtr CorvMetricZero::createCopy(const CorvMetricZeroConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMetricShPtr CorvMetricZero::clone() const
{
  return createCopy(self());
}

double CorvMetricZero::distance(const CorvConfig&, const CorvConfig&) const
{
  return 0.0;
}

void CorvMetricZero::randomStep(const CorvConfig& i_from, double, CorvConfig& o_config) const
{
  if (&o_config != &i_from)
    o_config = i_from;
}

bool CorvMetricZero::isScaledAbsolute(double& o_scale) const
{
  o_scale = 0.0;
  return true;
}

bool CorvMetricZero::isScaledCircular(double& o_scale) const
{
  o_scale = 0.0;
  return true;
}

bool CorvMetricZero::operator==(const CorvMetric& i_other) const
{
  return dynamic_cast<const CorvMetricZero*>(&i_other) && CorvMetric::operator==(i_other);
}
