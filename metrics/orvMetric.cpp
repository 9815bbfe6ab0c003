#include "metrics/orvMetric.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "metrics/orvRWCache.h"
#include "metrics/orvRandomWalk.h"

#include <atomic>

LUM_DESCRIBE(CorvMetric)
{
  i_class.method("CorvRandomWalkConstShPtr", "randomWalk", "()", "const",
                 static_cast<CorvRandomWalkConstShPtr (Self::*)() const>(&Self::randomWalk), "GetRandomWalk");
  i_class.method("double", "distance", "(const CorvConfig& i_a, const CorvConfig& i_b)", "const", &Self::distance,
                 "GetDistance");
}

namespace
{
/// Constant-initialised: metrics are made while the library loads.
std::atomic<unsigned int> g_metricRevision{1};
} // namespace

CorvMetric::CorvMetric(const std::string& i_type, const CorvRandomWalkConstShPtr& i_randomWalk)
  : m_type(i_type), m_randomWalk(i_randomWalk)
{
}

CorvMetric::CorvMetric(const CorvMetric& i_other)
  : ClumMutableCodable(i_other), m_type(i_other.m_type), m_randomWalk(i_other.m_randomWalk)
{
}

CorvMetric::~CorvMetric() = default;

lmStatus CorvMetric::init(const CorvMetricWkPtr& i_weakPtr)
{
  const lmStatus status = ClumMutableCodable::init(i_weakPtr);
  if (status.failed())
    return status;
  return m_type.empty() || !randomWalk() ? lmStatus(lmStatus::FAILURE) : lmStatus();
}

unsigned int CorvMetric::revision()
{
  return g_metricRevision.load(std::memory_order_relaxed);
}

void CorvMetric::raiseRevision()
{
  g_metricRevision.fetch_add(1, std::memory_order_relaxed);
}

double CorvMetric::squaredDistance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  const double d = distance(i_a, i_b);
  return d * d;
}

double CorvMetric::distanceForSorting(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return distance(i_a, i_b);
}

void CorvMetric::randomStep(const CorvConfig& i_from, double i_step, CorvConfig& o_config) const
{
  if (&o_config != &i_from)
    o_config = i_from;
  const CorvConfigSpaceShPtr space = o_config.space();
  if (!space || space->metric().get() != this)
  {
    randomWalk()->step(i_step, o_config);
    return;
  }
  if (!m_cachedWalk || !m_cachedWalk->check(*space))
    m_cachedWalk = CorvRWCache::create(space);
  // The step may come back to this metric by another space, and replace the cache under our feet.
  const CorvRWCacheConstShPtr walk = m_cachedWalk;
  walk->step(i_step, o_config);
}

CorvMetricShPtr CorvMetric::find(const std::string& i_type) const
{
  return i_type == m_type ? self() : CorvMetricShPtr();
}

lmStatus CorvMetric::substitute(const std::string&, const CorvMetricShPtr&)
{
  return lmStatus(lmStatus::FAILURE);
}

CorvRandomWalkConstShPtr CorvMetric::randomWalk() const
{
  return m_randomWalk;
}

void CorvMetric::randomWalk(const CorvRandomWalkConstShPtr& i_randomWalk)
{
  if (!i_randomWalk)
  {
    ClumLogManager::addError("CorvMetric::randomWalk(): call with null parameter ignored.");
    return;
  }
  m_randomWalk = i_randomWalk;
  m_cachedWalk.reset();
  raiseRevision();
}

bool CorvMetric::isScaledAbsolute(double&) const
{
  return false;
}

bool CorvMetric::isScaledCircular(double&) const
{
  return false;
}

bool CorvMetric::operator==(const CorvMetric& i_other) const
{
  const CorvRandomWalkConstShPtr mine = randomWalk();
  const CorvRandomWalkConstShPtr others = i_other.randomWalk();
  return m_type == i_other.m_type && (mine && others ? *mine == *others : !mine && !others);
}

void CorvMetric::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumMutableCodable::encodeWithCoder(i_coder);
  i_coder->encodeString(m_type, "type");
  i_coder->encodeObjectShPtr(m_randomWalk, "randomWalk");
}

lmStatus CorvMetric::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_type = i_coder->decodeString("type");
  m_randomWalk = i_coder->decode<CorvRandomWalk>("randomWalk");
  return m_type.empty() || !m_randomWalk ? lmStatus(lmStatus::FAILURE) : lmStatus();
}
