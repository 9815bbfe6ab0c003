#include "roadmaps/orvMonoDiffusingBuilder.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDof.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "paths/orvSteeringMethod.h"
#include "planners/orvPathPlanner.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvLinkerStandard.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRoadmap.h"

#include <algorithm>
#include <numeric>

LUM_DESCRIBE(CorvMonoDiffusingBuilder)
{
  i_class.creates("(const CorvRoadmapShPtr& i_roadmap)", &Self::create);
}

namespace
{
const ClumStringKey s_diffusionDeviationKey("orvane.core.shooter.standard-deviation");
const ClumStringKey s_diffusionLinkIntervalKey("orvane.core.builder.mono-diffusing.link-interval");
const ClumStringKey s_diffusionHintPathKey("orvane.core.builder.hint-path");
const ClumStringKey s_diffusionPenetrationKey("orvane.core.validator.dp.collision.penetration");

/// Refuses to start, with a line in the log.
lmStatus refuseDiffusion(const char* i_reason)
{
  ClumLogManager::addError(i_reason);
  return lmStatus(lmStatus::FAILURE);
}
} // namespace

CorvMonoDiffusingBuilderShPtr CorvMonoDiffusingBuilder::create(const CorvRoadmapShPtr& i_roadmap)
{
  return lumCreate<CorvMonoDiffusingBuilder>(i_roadmap);
}

CorvMonoDiffusingBuilderShPtr CorvMonoDiffusingBuilder::createFrom(const CorvRoadmapShPtr& i_roadmap,
                                                                   const CorvConfig& i_config)
{
  const CorvMonoDiffusingBuilderShPtr builder = create(i_roadmap);
  if (builder)
    builder->setDiffusionConfiguration(i_config);
  return builder;
}

CorvMonoDiffusingBuilderShPtr CorvMonoDiffusingBuilder::createTo(const CorvRoadmapShPtr& i_roadmap,
                                                                 const CorvConfig& i_config)
{
  const CorvMonoDiffusingBuilderShPtr builder = createFrom(i_roadmap, i_config);
  if (builder)
    builder->diffusionType(DIFFUSION_TO);
  return builder;
}

CorvMonoDiffusingBuilderShPtr
CorvMonoDiffusingBuilder::createCopy(const CorvMonoDiffusingBuilderConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMonoDiffusingBuilder::CorvMonoDiffusingBuilder() = default;

CorvMonoDiffusingBuilder::CorvMonoDiffusingBuilder(const CorvRoadmapShPtr& i_roadmap) : CorvBuilder(i_roadmap)
{
}

CorvMonoDiffusingBuilder::CorvMonoDiffusingBuilder(const CorvMonoDiffusingBuilder& i_other)
  : CorvBuilder(i_other), m_diffusionConfiguration(i_other.m_diffusionConfiguration),
    m_diffusionType(i_other.m_diffusionType), m_doesUseHintPath(i_other.m_doesUseHintPath)
{
}

CorvMonoDiffusingBuilder::~CorvMonoDiffusingBuilder() = default;

lmStatus CorvMonoDiffusingBuilder::init(const CorvMonoDiffusingBuilderWkPtr& i_weakPtr)
{
  return CorvBuilder::init(i_weakPtr);
}

lmStatus CorvMonoDiffusingBuilder::init(const CorvMonoDiffusingBuilderWkPtr& i_weakPtr,
                                        const CorvMonoDiffusingBuilderConstShPtr& i_source)
{
  const lmStatus status = init(i_weakPtr);
  if (status.failed())
    return status;
  if (i_source->m_diffusionShooter)
  {
    m_diffusionShooter =
      boost::dynamic_pointer_cast<CorvDiffusionShooter>(i_source->m_diffusionShooter->cloneByCoding());
    if (!m_diffusionShooter)
      return lmStatus(lmStatus::FAILURE);
  }
  if (i_source->m_extendMethod)
  {
    m_extendMethod = i_source->m_extendMethod->clone();
    if (!m_extendMethod)
      return lmStatus(lmStatus::FAILURE);
  }
  return status;
}

void CorvMonoDiffusingBuilder::setDiffusionConfiguration(const CorvConfig& i_config)
{
  m_diffusionConfiguration = i_config;
  m_diffusionNode.reset();
}

CorvNodeShPtr CorvMonoDiffusingBuilder::diffusionNode()
{
  if (!m_diffusionNode || m_diffusionNode->roadmap() != roadmap())
    m_diffusionNode = roadmapNode(m_diffusionConfiguration);
  return m_diffusionNode;
}

double CorvMonoDiffusingBuilder::failSuccessRatio() const
{
  const unsigned int tries = std::accumulate(m_tries, m_tries + s_periodCount, 0u);
  const unsigned int failures = std::accumulate(m_failures, m_failures + s_periodCount, 0u);
  return tries == 0 ? 0.0 : static_cast<double>(failures) / tries;
}

void CorvMonoDiffusingBuilder::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvBuilder::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_diffusionShooter, "diffusionShooter");
  i_coder->encodeObjectShPtr(m_extendMethod, "extendMethod");
  m_diffusionConfiguration.encodeValueWithCoder(*i_coder, "diffusionConfiguration");
  i_coder->encodeInt(m_diffusionType, "diffusionType");
  i_coder->encodeBool(m_doesUseHintPath, "doesUseHintPath");
}

lmStatus CorvMonoDiffusingBuilder::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvBuilder::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_diffusionShooter = i_coder->decode<CorvDiffusionShooter>("diffusionShooter");
  m_extendMethod = i_coder->decode<CorvPathPlanner>("extendMethod");
  m_diffusionConfiguration = CorvConfig(i_coder, "diffusionConfiguration");
  m_diffusionType = i_coder->decodeInt("diffusionType") == DIFFUSION_TO ? DIFFUSION_TO : DIFFUSION_FROM;
  m_doesUseHintPath = i_coder->decodeBool("doesUseHintPath");
  return status;
}

lmStatus CorvMonoDiffusingBuilder::doStartBuild(const ClumParameterMapShPtr& io_parameters)
{
  if (!m_extendMethod)
    return refuseDiffusion("Mono diffusing builder cannot start diffusion. Extend method required.");
  if (!m_diffusionShooter)
    return refuseDiffusion("Mono diffusing builder cannot start diffusion. Shooter required.");
  if (m_doesUseHintPath && readHintPath(io_parameters).failed())
    return refuseDiffusion("Mono diffusing builder cannot find hint path.");
  if (!m_diffusionConfiguration.space())
    return refuseDiffusion("Mono diffusing builder cannot start diffusion. Diffusion configuration required.");
  double deviation = 0.0;
  if (!io_parameters->hasDouble(s_diffusionDeviationKey))
  {
    if (defaultStandardDeviationOfShooter(io_parameters, deviation).failed())
      return refuseDiffusion("Mono diffusing builder cannot start diffusion. Standard deviation required.");
    io_parameters->setDouble(s_diffusionDeviationKey, deviation);
  }
  const ClumStringKey& strategyKey = CorvLinkerStandard::linkNodeStrategyParameterKey();
  if (!io_parameters->hasInt(strategyKey))
    io_parameters->setInt(strategyKey, CorvLinkerStandard::LINK_NEAREST);
  m_diffusionShooter->reset();
  m_nodesSinceLink = 0;
  clearStatistics();
  return lmStatus();
}

lmStatus CorvMonoDiffusingBuilder::doContinueBuild(bool& o_shouldContinue)
{
  o_shouldContinue = true;
  const CorvNodeShPtr node = diffuse(buildParameters());
  if (!node)
  {
    ++m_fruitlessShots;
    return lmStatus();
  }
  m_fruitlessShots = 0;
  ++m_nodesSinceLink;
  const int interval = std::max(buildParameters()->intValue(s_diffusionLinkIntervalKey, 0), 0);
  if (m_nodesSinceLink > static_cast<unsigned int>(interval))
  {
    link(m_diffusionType == DIFFUSION_FROM ? CorvLinker::LINK_FROM_NODE : CorvLinker::LINK_TO_NODE, node,
         buildParameters());
    m_nodesSinceLink = 0;
  }
  return lmStatus();
}

lmStatus CorvMonoDiffusingBuilder::doFinishBuild()
{
  m_diffusionNode.reset();
  clearStatistics();
  return lmStatus();
}

lmStatus CorvMonoDiffusingBuilder::doComputeCompletion(double&) const
{
  return lmStatus(lmStatus::FAILURE);
}

lmStatus CorvMonoDiffusingBuilder::doComputeDifficulty(double& o_difficulty) const
{
  o_difficulty = 1.0 - 1.0 / (failSuccessRatio() + 1.0);
  return lmStatus();
}

CorvNodeShPtr CorvMonoDiffusingBuilder::diffuse(const ClumParameterMapConstShPtr& i_parameters)
{
  double deviation = 0.0;
  const CorvNodeShPtr root = diffusionNode();
  if (!root || i_parameters->getDouble(s_diffusionDeviationKey, deviation).failed())
    return CorvNodeShPtr();
  CorvConfig target(configSpace());
  m_trace.clear();
  const CorvDiffusionShooter::EDiffusionNodeType type =
    m_diffusionType == DIFFUSION_FROM ? CorvDiffusionShooter::DIFFUSE_FROM : CorvDiffusionShooter::DIFFUSE_TO;
  if (m_diffusionShooter->shoot(root, type, deviation, m_trace, target).failed())
    return CorvNodeShPtr();
  const CorvNodeShPtr extended = chooseExtendedNode(target);
  if (!extended)
    return CorvNodeShPtr();
  notifyWillExplore(target);

  bool hasTreeWidened = false;
  const CorvNodeShPtr newNode = extend(extended, target, i_parameters, hasTreeWidened);
  // Feedback carries whether the tree grows away from its root, as a number, in place of the type.
  const auto growsAway = static_cast<CorvDiffusionShooter::EDiffusionNodeType>(m_diffusionType == DIFFUSION_FROM);
  if (newNode)
    m_diffusionShooter->shootWasUseful(extended, growsAway, newNode, m_trace);
  else
    m_diffusionShooter->shootWasUseless(extended, growsAway, m_trace);
  return newNode;
}

CorvNodeShPtr CorvMonoDiffusingBuilder::chooseExtendedNode(const CorvConfig& i_config)
{
  const CorvNodeShPtr root = diffusionNode();
  const CorvConnectedComponentShPtr component = root ? root->connectedComponent() : CorvConnectedComponentShPtr();
  if (!component)
    return CorvNodeShPtr();
  switch (m_diffusionType)
  {
  case DIFFUSION_FROM: return component->nearestReachableNode(i_config);
  case DIFFUSION_TO: return component->nearestReachingNode(i_config);
  }
  LUM_ASSERT(false);
  return CorvNodeShPtr();
}

CorvNodeShPtr CorvMonoDiffusingBuilder::extend(const CorvNodeShPtr& i_node, const CorvConfig& i_config,
                                               const ClumParameterMapConstShPtr& i_parameters, bool& o_hasWidened)
{
  o_hasWidened = false;
  const CorvPathShPtr path = planExtension(i_node, i_config, i_parameters);
  if (!path)
    return CorvNodeShPtr();
  getTreeBox(i_node, m_boxBefore);
  const CorvNodeShPtr newNode = addExtension(i_node, *path);
  if (!newNode)
    return newNode;
  getTreeBox(i_node, m_boxAfter);
  o_hasWidened = hasWidened(m_boxBefore, m_boxAfter);
  if (o_hasWidened)
    statAccountForSuccess(i_parameters);
  else
    statAccountForFailure(i_parameters);
  return newNode;
}

void CorvMonoDiffusingBuilder::statAccountForSuccess(const ClumParameterMapConstShPtr&)
{
  accountForTry(false);
}

void CorvMonoDiffusingBuilder::statAccountForFailure(const ClumParameterMapConstShPtr&)
{
  accountForTry(true);
}

lmStatus CorvMonoDiffusingBuilder::defaultStandardDeviationOfShooter(const ClumParameterMapConstShPtr& i_parameters,
                                                                     double& o_deviation) const
{
  const double penetrationsPerStep = 20.0;
  const double penetration = i_parameters ? i_parameters->doubleValue(s_diffusionPenetrationKey, 0.0) : 0.0;
  if (penetration == 0.0)
    return refuseDiffusion("Standard deviation must be specified by user in zero penetration mode.");
  o_deviation = penetrationsPerStep * penetration;
  return lmStatus();
}

lmStatus CorvMonoDiffusingBuilder::readHintPath(const ClumParameterMapConstShPtr& i_parameters)
{
  const CorvPathConstShPtr path = i_parameters->constShPtrValue<CorvPath>(s_diffusionHintPathKey);
  if (!path || path->isEmpty())
    return lmStatus(lmStatus::FAILURE);
  CorvConfig root(configSpace());
  const lmStatus status = m_diffusionType == DIFFUSION_FROM ? path->getConfigAtStart(root) : path->getConfigAtEnd(root);
  if (status.succeeded())
    setDiffusionConfiguration(root);
  return status;
}

/// What the extend method makes of the motion between a node and a configuration; null if it gets nowhere.
CorvPathShPtr CorvMonoDiffusingBuilder::planExtension(const CorvNodeShPtr& i_node, const CorvConfig& i_config,
                                                      const ClumParameterMapConstShPtr& i_parameters)
{
  const bool isFrom = m_diffusionType == DIFFUSION_FROM;
  const CorvSteeringMethodShPtr steering = configSpace()->steeringMethod();
  CorvDirectPathShPtr directPath;
  if (steering)
    directPath = isFrom ? steering->makeDirectPath(i_node->config(), i_config)
                        : steering->makeDirectPath(i_config, i_node->config());
  if (!directPath)
    return CorvPathShPtr();
  CorvPathShPtr result;
  const lmStatus status =
    m_extendMethod->plan(CorvPath::createWithDirectPath(directPath),
                         isFrom ? CorvPathPlanner::STABLE_START : CorvPathPlanner::STABLE_END, i_parameters, result);
  return status.succeeded() ? result : CorvPathShPtr();
}

/// Adds the direct paths of an extension, going away from the node. Stops where one cannot be added.
CorvNodeShPtr CorvMonoDiffusingBuilder::addExtension(const CorvNodeShPtr& i_node, const CorvPath& i_path)
{
  CorvNodeShPtr last;
  const unsigned int count = i_path.countDirectPaths();
  for (unsigned int done = 0; done < count; ++done)
  {
    const unsigned int rank = m_diffusionType == DIFFUSION_FROM ? done : count - 1 - done;
    const CorvNodeShPtr next = addDirectPath(last ? last : i_node, i_path.directPath(rank));
    if (!next)
      break;
    last = next;
  }
  return last;
}

/// @return the node at the far end of the direct path, or null if it leads nowhere new.
CorvNodeShPtr CorvMonoDiffusingBuilder::addDirectPath(const CorvNodeShPtr& i_node,
                                                      const CorvDirectPathConstShPtr& i_directPath)
{
  const bool isFrom = m_diffusionType == DIFFUSION_FROM;
  const CorvConfig& far = isFrom ? i_directPath->endConfiguration() : i_directPath->startConfiguration();
  CorvNodeShPtr node = addNode(far);
  const bool isFresh = static_cast<bool>(node);
  if (!isFresh)
    node = roadmap()->nodeWithEquivalentConfig(far);
  if (!node || node == i_node)
    return CorvNodeShPtr();
  const lmStatus status = isFrom ? roadmapLink(i_node, node, i_directPath) : roadmapLink(node, i_node, i_directPath);
  if (status.succeeded())
    return node;
  if (isFresh)
    roadmap()->removeNode(node);
  return CorvNodeShPtr();
}

void CorvMonoDiffusingBuilder::getTreeBox(const CorvNodeShPtr& i_node, TBox& o_box) const
{
  const CorvConnectedComponentShPtr component = i_node->connectedComponent();
  if (m_diffusionType == DIFFUSION_FROM)
    LUM_ASSERT_SUCCESS(component->outBoundingBox(o_box));
  else
    LUM_ASSERT_SUCCESS(component->inBoundingBox(o_box));
}

bool CorvMonoDiffusingBuilder::hasWidened(const TBox& i_before, const TBox& i_after) const
{
  const CorvConfigSpaceShPtr space = configSpace();
  for (unsigned int rank = 0; rank < i_after.size() && rank < i_before.size(); ++rank)
  {
    // Most bounds stay as they are to the bit.
    if (i_before[rank] == i_after[rank])
      continue;
    const CorvDofShPtr dof = space->dof(rank);
    if (!dof->equivalentValues(i_before[rank].first, i_after[rank].first) ||
        !dof->equivalentValues(i_before[rank].second, i_after[rank].second))
      return true;
  }
  return false;
}

void CorvMonoDiffusingBuilder::clearStatistics()
{
  std::fill(m_tries, m_tries + s_periodCount, 0u);
  std::fill(m_failures, m_failures + s_periodCount, 0u);
  m_period = 0;
  m_fruitlessShots = 0;
}

void CorvMonoDiffusingBuilder::accountForTry(bool i_isFailure)
{
  if (m_tries[m_period] == s_triesOfPeriod)
  {
    m_period = (m_period + 1) % s_periodCount;
    m_tries[m_period] = 0;
    m_failures[m_period] = 0;
  }
  ++m_tries[m_period];
  if (i_isFailure)
    ++m_failures[m_period];
}

void CorvMonoDiffusingBuilder::notifyWillExplore(const CorvConfig& i_target) const
{
  if (!hasListeners(WILL_EXPLORE_TOWARDS))
    return;
  const ClumNotificationShPtr notification = ClumNotification::create(WILL_EXPLORE_TOWARDS, self());
  notification->value(CONFIG_KEY, ClumValue(ShPtr<const void>(new CorvConfig(i_target))));
  notify(notification);
}
