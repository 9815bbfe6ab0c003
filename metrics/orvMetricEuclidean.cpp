#include "metrics/orvMetricEuclidean.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "metrics/orvRWComposite.h"

#include <cmath>

namespace
{
constexpr const char* EUCLIDEAN_FAMILY = "orvane.core.metric.euclidean";
} // namespace

LUM_DESCRIBE(CorvMetricEuclidean)
{
  i_class.creates(
    "(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)",
    static_cast<CorvMetricEuclideanShPtr (*)(const CorvRandomWalkConstShPtr&, const std::string&)>(&Self::create));
}

CorvMetricEuclidean::CorvMetricEuclidean(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)
  : CorvMetric(i_type, i_randomWalk)
{
}

CorvMetricEuclidean::~CorvMetricEuclidean() = default;

lmStatus CorvMetricEuclidean::init(const CorvMetricEuclideanWkPtr& i_weakPtr)
{
  return CorvMetric::init(i_weakPtr);
}

CorvMetricEuclideanShPtr CorvMetricEuclidean::create()
{
  return create(CorvRWComposite::create());
}

CorvMetricEuclideanShPtr CorvMetricEuclidean::create(const CorvRandomWalkConstShPtr& i_randomWalk,
                                                     const std::string& i_type)
{
  return lumCreate<CorvMetricEuclidean>(i_randomWalk, i_type);
}

CorvMetricEuclideanShPtr CorvMetricEuclidean::createCopy(const CorvMetricEuclideanConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMetricShPtr CorvMetricEuclidean::clone() const
{
  return createCopy(self());
}

double CorvMetricEuclidean::distance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return std::sqrt(CorvMetricEuclidean::squaredDistance(i_a, i_b));
}

double CorvMetricEuclidean::squaredDistance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  const CorvConfigSpaceShPtr& space = i_a.space();
  if (!space)
    return 0.0;
  const double* a = i_a.beginPtr();
  const double* b = i_b.beginPtr();
  m_flat.update(*space, *this, EUCLIDEAN_FAMILY);
  return m_flat.squaredDistance(a, b);
}

double CorvMetricEuclidean::distanceForSorting(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return CorvMetricEuclidean::squaredDistance(i_a, i_b);
}

bool CorvMetricEuclidean::getFlatForm(const CorvConfigSpace& i_space, CorvFlatForm& o_form) const
{
  m_flat.update(i_space, *this, EUCLIDEAN_FAMILY);
  return m_flat.getForm(o_form);
}

bool CorvMetricEuclidean::operator==(const CorvMetric& i_other) const
{
  return dynamic_cast<const CorvMetricEuclidean*>(&i_other) && CorvMetric::operator==(i_other);
}
