#include "metrics/orvMetricIK.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "metrics/orvRWLinearDof.h"

#include <cmath>

LUM_DESCRIBE(CorvMetricIK)
{
  i_class.creates(
    "(const CorvConfigSpaceShPtr& i_commandSpace, const CorvConfigSpaceShPtr& i_targetSpace, const "
    "CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)",
    static_cast<CorvMetricIKShPtr (*)(const CorvConfigSpaceShPtr&, const CorvConfigSpaceShPtr&,
                                      const CorvRandomWalkConstShPtr&, const std::string&)>(&Self::create));
}

CorvMetricIK::CorvMetricIK(const CorvConfigSpaceShPtr& i_commandSpace, const CorvConfigSpaceShPtr& i_targetSpace,
                           const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)
  : CorvMetric(i_type, i_randomWalk), m_commandSpace(i_commandSpace), m_targetSpace(i_targetSpace)
{
}

CorvMetricIK::~CorvMetricIK() = default;

lmStatus CorvMetricIK::init(const CorvMetricIKWkPtr& i_weakPtr)
{
  const lmStatus status = CorvMetric::init(i_weakPtr);
  if (status.failed())
    return status;
  return m_commandSpace ? lmStatus() : lmStatus(lmStatus::FAILURE);
}

CorvMetricIKShPtr CorvMetricIK::create(const CorvConfigSpaceShPtr& i_commandSpace,
                                       const CorvConfigSpaceShPtr& i_targetSpace)
{
  return create(i_commandSpace, i_targetSpace, CorvRWLinearDof::create());
}

CorvMetricIKShPtr CorvMetricIK::create(const CorvConfigSpaceShPtr& i_commandSpace,
                                       const CorvConfigSpaceShPtr& i_targetSpace,
                                       const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)
{
  return lumCreate<CorvMetricIK>(i_commandSpace, i_targetSpace, i_randomWalk, i_type);
}

CorvMetricIKShPtr CorvMetricIK::createCopy(const CorvMetricIKConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMetricShPtr CorvMetricIK::clone() const
{
  return createCopy(self());
}

namespace
{
/// The squared distance within a space, 0 if one of the configurations cannot be restricted to it.
double squaredDistanceWithin(const CorvConfigSpaceShPtr& i_space, const CorvConfig& i_a, const CorvConfig& i_b)
{
  if (!i_space || !i_space->metric() || i_a.pushRestriction(i_space).failed())
    return 0.0;
  double squared = 0.0;
  if (i_b.pushRestriction(i_space).succeeded())
  {
    squared = i_space->metric()->squaredDistance(i_a, i_b);
    i_b.popRestriction();
  }
  i_a.popRestriction();
  return squared;
}

void stepWithin(const CorvConfigSpaceShPtr& i_space, double i_step, CorvConfig& io_cfg)
{
  if (!i_space || !i_space->metric() || io_cfg.pushRestriction(i_space).failed())
    return;
  i_space->metric()->randomStep(io_cfg, i_step, io_cfg);
  io_cfg.popRestriction();
}
} // namespace

double CorvMetricIK::distance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return std::sqrt(CorvMetricIK::squaredDistance(i_a, i_b));
}

double CorvMetricIK::squaredDistance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return squaredDistanceWithin(m_commandSpace, i_a, i_b) + squaredDistanceWithin(m_targetSpace, i_a, i_b);
}

double CorvMetricIK::distanceForSorting(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return CorvMetricIK::squaredDistance(i_a, i_b);
}

void CorvMetricIK::randomStep(const CorvConfig& i_from, double i_step, CorvConfig& o_config) const
{
  // Both spaces step in one configuration, or the second would undo the first.
  if (&o_config != &i_from)
    o_config = i_from;
  stepWithin(m_commandSpace, i_step, o_config);
  stepWithin(m_targetSpace, i_step, o_config);
}

void CorvMetricIK::randomWalk(const CorvRandomWalkConstShPtr& i_randomWalk)
{
  const CorvRandomWalkConstShPtr old = randomWalk();
  ClumLogManager::addWarning(
    "Setting the random walk of CorvMetricIK has no effect (old=" + (old ? old->description() : std::string()) +
    ", new=" + (i_randomWalk ? i_randomWalk->description() : std::string()));
}

bool CorvMetricIK::operator==(const CorvMetric& i_other) const
{
  const auto* other = dynamic_cast<const CorvMetricIK*>(&i_other);
  return other && CorvMetric::operator==(i_other) && m_commandSpace == other->m_commandSpace &&
         m_targetSpace == other->m_targetSpace;
}

void CorvMetricIK::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvMetric::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_commandSpace, "commandSpace");
  i_coder->encodeObjectShPtr(m_targetSpace, "targetSpace");
}

lmStatus CorvMetricIK::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvMetric::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_commandSpace = i_coder->decode<CorvConfigSpace>("commandSpace");
  m_targetSpace = i_coder->decode<CorvConfigSpace>("targetSpace");
  return m_commandSpace ? lmStatus() : lmStatus(lmStatus::FAILURE);
}
