#include "metrics/orvMetricManhattan.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "metrics/orvRWComposite.h"

LUM_DESCRIBE(CorvMetricManhattan)
{
  i_class.creates(
    "(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)",
    static_cast<CorvMetricManhattanShPtr (*)(const CorvRandomWalkConstShPtr&, const std::string&)>(&Self::create));
}

CorvMetricManhattan::CorvMetricManhattan(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)
  : CorvMetric(i_type, i_randomWalk)
{
}

CorvMetricManhattan::~CorvMetricManhattan() = default;

lmStatus CorvMetricManhattan::init(const CorvMetricManhattanWkPtr& i_weakPtr)
{
  return CorvMetric::init(i_weakPtr);
}

CorvMetricManhattanShPtr CorvMetricManhattan::create()
{
  return create(CorvRWComposite::create());
}

CorvMetricManhattanShPtr CorvMetricManhattan::create(const CorvRandomWalkConstShPtr& i_randomWalk,
                                                     const std::string& i_type)
{
  return lumCreate<CorvMetricManhattan>(i_randomWalk, i_type);
}

CorvMetricManhattanShPtr CorvMetricManhattan::createCopy(const CorvMetricManhattanConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMetricShPtr CorvMetricManhattan::clone() const
{
  return createCopy(self());
}

double CorvMetricManhattan::distance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  const CorvConfigSpaceShPtr& space = i_a.space();
  if (!space)
    return 0.0;
  const double* a = i_a.beginPtr();
  const double* b = i_b.beginPtr();
  m_flat.update(*space, *this, "orvane.core.metric.manhattan");
  return m_flat.sumOfDistances(a, b);
}

bool CorvMetricManhattan::operator==(const CorvMetric& i_other) const
{
  return dynamic_cast<const CorvMetricManhattan*>(&i_other) && CorvMetric::operator==(i_other);
}
