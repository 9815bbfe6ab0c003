#include "metrics/orvMetricAbsolute.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "metrics/orvRWLinearDof.h"

#include <cmath>

LUM_DESCRIBE(CorvMetricAbsolute)
{
  i_class.creates(
    "(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)",
    static_cast<CorvMetricAbsoluteShPtr (*)(const CorvRandomWalkConstShPtr&, const std::string&)>(&Self::create));
}

CorvMetricAbsolute::CorvMetricAbsolute(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)
  : CorvMetric(i_type, i_randomWalk)
{
}

CorvMetricAbsolute::~CorvMetricAbsolute() = default;

lmStatus CorvMetricAbsolute::init(const CorvMetricAbsoluteWkPtr& i_weakPtr)
{
  return CorvMetric::init(i_weakPtr);
}

CorvMetricAbsoluteShPtr CorvMetricAbsolute::create()
{
  return create(CorvRWLinearDof::create());
}

CorvMetricAbsoluteShPtr CorvMetricAbsolute::create(const CorvRandomWalkConstShPtr& i_randomWalk,
                                                   const std::string& i_type)
{
  return lumCreate<CorvMetricAbsolute>(i_randomWalk, i_type);
}

CorvMetricAbsoluteShPtr CorvMetricAbsolute::createCopy(const CorvMetricAbsoluteConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMetricShPtr CorvMetricAbsolute::clone() const
{
  return createCopy(self());
}

double CorvMetricAbsolute::distance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return std::fabs(i_a.dofValue(0) - i_b.dofValue(0));
}

bool CorvMetricAbsolute::isScaledAbsolute(double& o_scale) const
{
  o_scale = 1.0;
  return true;
}

bool CorvMetricAbsolute::operator==(const CorvMetric& i_other) const
{
  return dynamic_cast<const CorvMetricAbsolute*>(&i_other) && CorvMetric::operator==(i_other);
}
