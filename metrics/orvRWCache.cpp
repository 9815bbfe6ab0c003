#include "metrics/orvRWCache.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "metrics/orvMetricJointSweep.h"
#include "metrics/orvMetricScale.h"
#include "metrics/orvRWComposite.h"
#include "metrics/orvRWLinearDof.h"
#include "metrics/orvRandomDistribution.h"

#include <algorithm>
#include <typeinfo>

LUM_DESCRIBE(CorvRWCache)
{
  i_class.creates("(const CorvConfigSpaceConstShPtr& i_space)", &Self::create);
}

namespace
{
/// True if the walk is of exactly the class, not of one derived from it.
template <class WALK>
bool isExactlyWalk(const CorvRandomWalkConstShPtr& i_walk)
{
  const CorvRandomWalk* walk = i_walk.get();
  return walk && typeid(*walk) == typeid(WALK);
}
} // namespace

CorvRWCache::CorvRWCache(const CorvConfigSpaceConstShPtr& i_space)
{
  if (!i_space)
    return;
  m_spaceAddress = &i_space->unwrapped();
  m_space = m_spaceAddress->self();
  m_version = m_spaceAddress->version();
  m_revision = CorvMetric::revision();
  const CorvMetricShPtr metric = i_space->metric();
  m_isComposed = metric && isExactlyWalk<CorvRWComposite>(metric->randomWalk());
  if (m_isComposed)
    addSubspaces(*m_spaceAddress, 0, 1.0);
}

CorvRWCache::~CorvRWCache() = default;

lmStatus CorvRWCache::init(const CorvRWCacheWkPtr& i_weakPtr)
{
  const lmStatus status = CorvRandomWalk::init(i_weakPtr);
  if (status.failed() || m_spaceAddress)
    return status;
  ClumLogManager::addError("Cannot create a CorvRWCache instance with a null space.");
  return lmStatus(lmStatus::FAILURE);
}

CorvRWCacheConstShPtr CorvRWCache::create(const CorvConfigSpaceConstShPtr& i_space)
{
  return lumCreate<CorvRWCache>(i_space);
}

CorvRWCacheConstShPtr CorvRWCache::createCopy(const CorvRWCacheConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvRandomWalkConstShPtr CorvRWCache::clone() const
{
  return createCopy(self());
}

void CorvRWCache::addSubspaces(const CorvConfigSpace& i_space, unsigned int i_firstRank, double i_factor)
{
  unsigned int rank = i_firstRank;
  for (unsigned int i = 0; i < i_space.countSubspaces(); ++i)
  {
    const CorvConfigSpaceShPtr subspace = i_space.subspace(i);
    add(subspace, rank, subspace->metric(), i_factor);
    rank += subspace->size();
  }
}

void CorvRWCache::add(const CorvConfigSpaceShPtr& i_space, unsigned int i_firstRank, const CorvMetricShPtr& i_metric,
                      double i_factor)
{
  if (i_space->size() == 0 || !i_metric)
    return;
  const bool isEuclidean = i_metric->type() == "orvane.core.metric.euclidean";
  const bool isOwnMetric = i_metric == m_spaceAddress->metric();
  if ((isEuclidean || isOwnMetric) && isExactlyWalk<CorvRWComposite>(i_metric->randomWalk()))
    addSubspaces(i_space->unwrapped(), i_firstRank, i_factor);
  else if (i_metric->type() == "orvane.core.metric.zero")
    m_entries.push_back({i_space, i_firstRank, i_metric, CorvRandomDistributionConstShPtr(), 0.0});
  else if (const auto sweep = boost::dynamic_pointer_cast<CorvMetricJointSweep>(i_metric))
    addSweep(i_space, i_firstRank, sweep, i_factor);
  else if (const auto scale = boost::dynamic_pointer_cast<CorvMetricScale>(i_metric))
    add(i_space, i_firstRank, scale->decoratedMetric(), i_factor * scale->scale());
  else
    addLeaf(i_space, i_firstRank, i_metric, i_factor);
}

void CorvRWCache::addSweep(const CorvConfigSpaceShPtr& i_space, unsigned int i_firstRank,
                           const CorvMetricJointSweepShPtr& i_sweep, double i_factor)
{
  const double scale = i_sweep->scale();
  m_sweeps.push_back({i_sweep, scale});
  add(i_space, i_firstRank, i_sweep->decoratedMetric(), i_factor * scale);
}

void CorvRWCache::addLeaf(const CorvConfigSpaceShPtr& i_space, unsigned int i_firstRank,
                          const CorvMetricShPtr& i_metric, double i_factor)
{
  CEntry entry = {i_space, i_firstRank, i_metric, CorvRandomDistributionConstShPtr(), i_factor};
  const CorvRandomWalkConstShPtr walk = i_metric->randomWalk();
  double factor = 1.0;
  if (isExactlyWalk<CorvRWLinearDof>(walk) && walk->distribution() &&
      (i_metric->isScaledAbsolute(factor) || i_metric->isScaledCircular(factor)))
  {
    entry.scale = factor * i_factor;
    entry.distribution = walk->distribution();
  }
  m_entries.push_back(entry);
}

bool CorvRWCache::check(const CorvConfigSpace& i_space) const
{
  const CorvConfigSpace& space = i_space.unwrapped();
  return m_spaceAddress == &space && !m_space.expired() && m_version == space.version() &&
         m_revision == CorvMetric::revision() &&
         std::all_of(m_sweeps.begin(), m_sweeps.end(),
                     [](const CSweep& i_sweep)
                     {
                       const CorvMetricJointSweepShPtr metric = i_sweep.metric.lock();
                       return metric && metric->scale() == i_sweep.scale;
                     });
}

void CorvRWCache::step(double i_size, CorvConfig& io_cfg) const
{
  if (!m_isComposed)
  {
    const CorvConfigSpaceConstShPtr space = m_space.lock();
    if (const CorvMetricShPtr metric = space ? space->metric() : CorvMetricShPtr())
      metric->randomWalk()->step(i_size, io_cfg);
    return;
  }
  io_cfg.beginChange();
  for (const CEntry& entry : m_entries)
    if (entry.scale != 0.0)
      stepEntry(entry, i_size / entry.scale, io_cfg);
  io_cfg.endChange();
}

void CorvRWCache::stepEntry(const CEntry& i_entry, double i_size, CorvConfig& io_cfg) const
{
  if (i_entry.distribution)
  {
    io_cfg.dofValue(i_entry.rank, io_cfg.dofValue(i_entry.rank) + i_entry.distribution->shoot(i_size));
    return;
  }
  const CorvConfigSpaceShPtr space = i_entry.space.lock();
  const CorvMetricShPtr metric = i_entry.metric.lock();
  if (!space || !metric || io_cfg.pushRestriction(space).failed())
    return;
  metric->randomStep(io_cfg, i_size, io_cfg);
  io_cfg.popRestriction();
}
