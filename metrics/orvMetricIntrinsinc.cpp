#include "metrics/orvMetricIntrinsinc.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "metrics/orvRWComposite.h"
#include "paths/orvDirectPath.h"
#include "paths/orvSteeringMethod.h"

#include <limits>

LUM_DESCRIBE(CorvMetricIntrinsinc)
{
  i_class.creates(
    "(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)",
    static_cast<CorvMetricIntrinsincShPtr (*)(const CorvRandomWalkConstShPtr&, const std::string&)>(&Self::create));
}

CorvMetricIntrinsinc::CorvMetricIntrinsinc(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)
  : CorvMetric(i_type, i_randomWalk)
{
}

CorvMetricIntrinsinc::~CorvMetricIntrinsinc() = default;

lmStatus CorvMetricIntrinsinc::init(const CorvMetricIntrinsincWkPtr& i_weakPtr)
{
  return CorvMetric::init(i_weakPtr);
}

CorvMetricIntrinsincShPtr CorvMetricIntrinsinc::create()
{
  return create(CorvRWComposite::create());
}

CorvMetricIntrinsincShPtr CorvMetricIntrinsinc::create(const CorvRandomWalkConstShPtr& i_randomWalk,
                                                       const std::string& i_type)
{
  return lumCreate<CorvMetricIntrinsinc>(i_randomWalk, i_type);
}

CorvMetricIntrinsincShPtr CorvMetricIntrinsinc::createCopy(const CorvMetricIntrinsincConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMetricShPtr CorvMetricIntrinsinc::clone() const
{
  return createCopy(self());
}

double CorvMetricIntrinsinc::distance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  constexpr double INFINITE = std::numeric_limits<double>::infinity();
  const CorvConfigSpaceShPtr space = i_a.space();
  if (!space || space->size() == 0)
    return 0.0;
  const CorvSteeringMethodShPtr method = space->steeringMethod();
  if (!method)
    return INFINITE;
  if (m_isMeasuring)
    return ownMetricDistance(*method, i_a, i_b);
  m_isMeasuring = true;
  const CorvDirectPathShPtr path = method->makeDirectPath(i_a, i_b);
  const double length = path ? path->length() : INFINITE;
  m_isMeasuring = false;
  return length;
}

double CorvMetricIntrinsinc::ownMetricDistance(const CorvSteeringMethod& i_method, const CorvConfig& i_a,
                                               const CorvConfig& i_b) const
{
  const CorvMetricShPtr& metric = i_method.metric();
  // A method that has no metric of its own either leaves nothing that could measure.
  if (!metric || dynamic_cast<const CorvMetricIntrinsinc*>(metric.get()))
    return std::numeric_limits<double>::infinity();
  return metric->distance(i_a, i_b);
}

bool CorvMetricIntrinsinc::operator==(const CorvMetric& i_other) const
{
  return dynamic_cast<const CorvMetricIntrinsinc*>(&i_other) && CorvMetric::operator==(i_other);
}
