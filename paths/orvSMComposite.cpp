#include "paths/orvSMComposite.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDof.h"
#include "metrics/orvMetricEuclidean.h"
#include "paths/orvDPComposite.h"
#include "paths/orvSMLinear.h"

#include <typeinfo>

LUM_DESCRIBE(CorvSMComposite)
{
  i_class.creates("()", &Self::create);
}

CorvSMComposite::CorvSMComposite(const CorvSMComposite& i_other) : CorvSteeringMethod(i_other)
{
}

CorvSMComposite::~CorvSMComposite() = default;

lmStatus CorvSMComposite::init(const CorvSMCompositeWkPtr& i_weakPtr)
{
  metric(CorvMetricEuclidean::create());
  return CorvSteeringMethod::init(i_weakPtr);
}

CorvSMCompositeShPtr CorvSMComposite::create()
{
  return lumCreate<CorvSMComposite>();
}

CorvSMCompositeShPtr CorvSMComposite::createCopy(const CorvSMCompositeConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvSteeringMethodShPtr CorvSMComposite::clone() const
{
  return createCopy(self());
}

const CorvSMComposite::CCache& CorvSMComposite::checkCache(const CorvConfigSpace& i_space) const
{
  const CorvConfigSpace& space = i_space.unwrapped();
  if (m_cache.spaceAddress == &space && !m_cache.space.expired() && m_cache.version == space.version())
    return m_cache;
  // Filled aside: a sub-space that shares this steering method asks it on the way.
  CCache cache;
  cache.space = space.self();
  cache.spaceAddress = &space;
  cache.version = space.version();
  for (unsigned int i = 0; i < space.countSubspaces(); ++i)
  {
    const CorvConfigSpaceShPtr subspace = space.subspace(i);
    cache.isOriented = cache.isOriented || subspace->isSteeringOriented();
    cache.isConservative = cache.isConservative && subspace->isSteeringConservative();
  }
  addToCache(space.self(), 0, cache);
  m_cache = cache;
  return m_cache;
}

void CorvSMComposite::addToCache(const CorvConfigSpaceShPtr& i_space, unsigned int i_firstRank, CCache& io_cache)
{
  const CorvSteeringMethodShPtr method = i_space->steeringMethod();
  if (!method || i_space->size() == 0)
    return;
  const CorvConfigSpace& space = i_space->unwrapped();
  if (isFullyLinear(space))
  {
    io_cache.entries.push_back({i_firstRank, space.size(), i_space, CorvSMLinear::create(false)});
    io_cache.isWholeLinear = &space == io_cache.spaceAddress;
    return;
  }
  if (!dynamic_cast<const CorvSMComposite*>(method.get()))
  {
    io_cache.entries.push_back({i_firstRank, space.size(), i_space, method});
    return;
  }
  unsigned int rank = i_firstRank;
  for (unsigned int i = 0; i < space.countSubspaces(); ++i)
  {
    addToCache(space.subspace(i), rank, io_cache);
    rank += space.subspace(i)->size();
  }
}

bool CorvSMComposite::isFullyLinear(const CorvConfigSpace& i_space)
{
  const CorvSteeringMethod* method = i_space.steeringMethod().get();
  if (!method)
    return false;
  if (dynamic_cast<const CorvDof*>(&i_space))
    return typeid(*method) == typeid(CorvSMLinear) && !i_space.isSteeringOriented();
  // A composite is oriented if a part of it is: the dofs at the bottom tell.
  if (!dynamic_cast<const CorvSMComposite*>(method))
    return false;
  for (unsigned int i = 0; i < i_space.countSubspaces(); ++i)
    if (!isFullyLinear(i_space.subspace(i)->unwrapped()))
      return false;
  return true;
}

bool CorvSMComposite::isOriented(const CorvConfigSpaceConstShPtr& i_space) const
{
  return i_space && checkCache(*i_space).isOriented;
}

bool CorvSMComposite::isConservative(const CorvConfigSpaceConstShPtr& i_space) const
{
  return !i_space || checkCache(*i_space).isConservative;
}

bool CorvSMComposite::operator==(const CorvSteeringMethod& i_other) const
{
  return dynamic_cast<const CorvSMComposite*>(&i_other) != nullptr;
}

CorvDirectPathShPtr CorvSMComposite::makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const
{
  const CorvConfigSpaceShPtr& space = i_start.space();
  if (!space || space != i_end.space())
    return CorvDirectPathShPtr();
  const CCache& cache = checkCache(*space);
  if (cache.isWholeLinear && !space->hasPassiveDofs())
    return CorvDPComposite::createStraight(i_start, i_end, self());
  CorvConfig start(i_start);
  CorvConfig end(i_end);
  start.beginPtr();
  end.beginPtr();
  start.beginChange();
  end.beginChange();
  // By value: a child's steering method may be this very object.
  const std::vector<CEntry> entries = cache.entries;
  std::vector<CorvDirectPathShPtr> children(entries.size());
  bool isComplete = true;
  for (unsigned int i = 0; i < entries.size(); ++i)
    isComplete = makeChild(entries[i], start, end, children[i]) && isComplete;
  start.endChange();
  end.endChange();
  return isComplete ? CorvDPComposite::create(start, end, children, self()) : CorvDPCompositeShPtr();
}

bool CorvSMComposite::makeChild(const CEntry& i_entry, CorvConfig& io_start, CorvConfig& io_end,
                                CorvDirectPathShPtr& o_child)
{
  const CorvConfigSpaceShPtr subspace = i_entry.space.lock();
  if (!subspace)
    return false;
  if (io_start.space()->isSubspaceFullyPassive(subspace))
    return true;
  CorvConfig start(subspace);
  CorvConfig end(subspace);
  start.isSelfValidationEnabled(false);
  end.isSelfValidationEnabled(false);
  start.setDofValues(io_start.beginPtr() + i_entry.rank, i_entry.count);
  end.setDofValues(io_end.beginPtr() + i_entry.rank, i_entry.count);
  o_child = i_entry.steeringMethod->makeDirectPath(start, end);
  if (o_child && !i_entry.steeringMethod->isConservative(subspace))
  {
    // The method may have chosen ends of its own.
    io_start.inject(o_child->startConfiguration());
    io_end.inject(o_child->endConfiguration());
  }
  return static_cast<bool>(o_child);
}
