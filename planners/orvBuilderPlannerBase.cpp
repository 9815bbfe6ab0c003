#include "planners/orvBuilderPlannerBase.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "manifolds/orvManifoldUnion.h"
#include "manifolds/orvPointManifold.h"
#include "paths/orvPath.h"
#include "roadmaps/orvBuilder.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRoadmap.h"

#include <algorithm>
#include <limits>

LUM_DESCRIBE(CorvBuilderPlannerBase)
{
}
LUM_NOTIFICATION(CorvBuilderPlannerBase, DID_ADD_START_NODE);
LUM_NOTIFICATION(CorvBuilderPlannerBase, DID_REMOVE_START_NODE);
LUM_NOTIFICATION(CorvBuilderPlannerBase, DID_CLEAR_START_NODES);
LUM_NOTIFICATION(CorvBuilderPlannerBase, DID_ADD_GOAL_NODE);
LUM_NOTIFICATION(CorvBuilderPlannerBase, DID_REMOVE_GOAL_NODE);
LUM_NOTIFICATION(CorvBuilderPlannerBase, DID_CLEAR_GOAL_NODES);
const std::string CorvBuilderPlannerBase::NODE_KEY = "node";

namespace
{
const ClumStringKey s_forcePathKey("orvane.core.builder-planner.force-path-on-failure");
const ClumStringKey s_hintPathKey("orvane.core.builder.hint-path");

std::vector<CorvPointManifoldConstShPtr> pointsOf(const CorvManifoldUnion& i_union)
{
  std::vector<CorvPointManifoldConstShPtr> points;
  for (unsigned int i = 0; i < i_union.countManifolds(); ++i)
  {
    if (const auto point = boost::dynamic_pointer_cast<const CorvPointManifold>(i_union.manifold(i)))
      points.push_back(point);
  }
  return points;
}

CorvConfig pointConfiguration(const CorvManifoldUnion& i_union, unsigned int i_rank)
{
  const std::vector<CorvPointManifoldConstShPtr> points = pointsOf(i_union);
  if (i_rank < points.size())
    return points[i_rank]->configuration();
  LUM_ASSERT(false);
  return CorvConfig();
}

/// True if the configuration is the manifold's own nearest point to it.
bool leavesUnmoved(const CorvManifold& i_manifold, const CorvConfig& i_config)
{
  CorvConfig config = i_config;
  CorvConfig nearest;
  return config.convert(i_manifold.ambientSpace()).succeeded() && i_manifold.project(config, nearest).succeeded() &&
         nearest.isEquivalent(config);
}

bool holdsNode(const std::vector<CorvNodeWkPtr>& i_nodes, const CorvNodeShPtr& i_node)
{
  return std::any_of(i_nodes.begin(), i_nodes.end(), [&](const CorvNodeWkPtr& node) { return node.lock() == i_node; });
}

bool eraseNode(std::vector<CorvNodeWkPtr>& io_nodes, const CorvNodeShPtr& i_node)
{
  const auto end =
    std::remove_if(io_nodes.begin(), io_nodes.end(), [&](const CorvNodeWkPtr& node) { return node.lock() == i_node; });
  const bool isErased = end != io_nodes.end();
  io_nodes.erase(end, io_nodes.end());
  return isErased;
}

CorvNodeShPtr nodeOfRank(const std::vector<CorvNodeWkPtr>& i_nodes, unsigned int i_rank)
{
  return i_rank < i_nodes.size() ? i_nodes[i_rank].lock() : CorvNodeShPtr();
}

/// The nodes of the list that are in the roadmap.
std::vector<CorvNodeShPtr> nodesIn(const std::vector<CorvNodeWkPtr>& i_nodes, const CorvRoadmapShPtr& i_roadmap)
{
  std::vector<CorvNodeShPtr> nodes;
  for (const CorvNodeWkPtr& weak : i_nodes)
  {
    const CorvNodeShPtr node = weak.lock();
    if (node && i_roadmap && node->roadmap() == i_roadmap)
      nodes.push_back(node);
  }
  return nodes;
}

CorvNodeShPtr notifiedNode(const ClumNotification& i_notification)
{
  return boost::dynamic_pointer_cast<CorvNode>(i_notification.value(CorvRoadmap::NODE_KEY).getObject());
}
} // namespace

/// The copy has the same starts and goals, in unions of its own.
CorvBuilderPlannerBase::CorvBuilderPlannerBase(const CorvBuilderPlannerBase& i_other)
  : CorvPathPlannerDelegate(i_other), CorvPathPlanner(i_other),
    m_startManifold(CorvManifoldUnion::createCopy(i_other.m_startManifold)),
    m_goalManifold(CorvManifoldUnion::createCopy(i_other.m_goalManifold))
{
}

CorvBuilderPlannerBase::~CorvBuilderPlannerBase()
{
  unwatchRoadmap();
}

lmStatus CorvBuilderPlannerBase::init(const CorvBuilderPlannerBaseWkPtr& i_weakPtr)
{
  const lmStatus status = CorvPathPlanner::init(i_weakPtr);
  if (status.failed())
    return status;
  if (!roadmap())
    return lmStatus(-1);
  if (!m_startManifold)
    m_startManifold = CorvManifoldUnion::create(roadmap()->configSpace());
  if (!m_goalManifold)
    m_goalManifold = CorvManifoldUnion::create(roadmap()->configSpace());
  return m_startManifold && m_goalManifold ? status : lmStatus(-1);
}

void CorvBuilderPlannerBase::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvPathPlanner::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_startManifold, "startManifold");
  i_coder->encodeObjectShPtr(m_goalManifold, "goalManifold");
}

lmStatus CorvBuilderPlannerBase::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvPathPlanner::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_startManifold = i_coder->decode<CorvManifoldUnion>("startManifold");
  m_goalManifold = i_coder->decode<CorvManifoldUnion>("goalManifold");
  return m_startManifold && m_goalManifold ? status : lmStatus(-1);
}

CorvRoadmapShPtr CorvBuilderPlannerBase::roadmap() const
{
  const CorvBuilderShPtr used = builder();
  return used ? used->roadmap() : CorvRoadmapShPtr();
}

lmStatus CorvBuilderPlannerBase::forcePath(CorvPathShPtr& io_path) const
{
  const CorvRoadmapShPtr map = roadmap();
  CorvNodeShPtr start;
  CorvNodeShPtr goal;
  if (isProblemSolved(start, goal))
    return map->forcePath(start, goal, io_path);
  double best = std::numeric_limits<double>::infinity();
  for (const CorvNodeShPtr& from : nodesIn(m_currentStartNodes, map))
  {
    for (const CorvNodeShPtr& to : nodesIn(m_currentGoalNodes, map))
    {
      CorvNodeShPtr ignored;
      const double gap = from->connectedComponent()->minDistanceTo(to->connectedComponent(), ignored, ignored);
      if (gap < best)
      {
        best = gap;
        start = from;
        goal = to;
      }
    }
  }
  return start && goal ? map->forcePath(start, goal, io_path) : lmStatus(-1);
}

lmStatus CorvBuilderPlannerBase::addStartConfiguration(const CorvConfig& i_config)
{
  return addStartManifold(CorvPointManifold::create(i_config, m_startManifold->ambientSpace()));
}

lmStatus CorvBuilderPlannerBase::addGoalConfiguration(const CorvConfig& i_config)
{
  return addGoalManifold(CorvPointManifold::create(i_config, m_goalManifold->ambientSpace()));
}

lmStatus CorvBuilderPlannerBase::addStartManifold(const CorvManifoldConstShPtr& i_manifold)
{
  if (i_manifold && stableStart() && !leavesUnmoved(*i_manifold, inputPath()->configuration(0)))
  {
    ClumLogManager::addWarning("Cannot add a start manifold other than the stable start of the builder planner.");
    return lmStatus(-1);
  }
  return addManifold(m_startManifold, i_manifold);
}

lmStatus CorvBuilderPlannerBase::addGoalManifold(const CorvManifoldConstShPtr& i_manifold)
{
  if (i_manifold && stableEnd() &&
      !leavesUnmoved(*i_manifold, inputPath()->configuration(inputPath()->countConfigurations() - 1)))
  {
    ClumLogManager::addWarning("Cannot add a goal manifold other than the stable end of the builder planner.");
    return lmStatus(-1);
  }
  return addManifold(m_goalManifold, i_manifold);
}

lmStatus CorvBuilderPlannerBase::addManifold(const CorvManifoldUnionShPtr& i_union,
                                             const CorvManifoldConstShPtr& i_manifold)
{
  const lmStatus status = i_union->addManifold(i_manifold);
  if (status.succeeded() && builder()->state() == ClumOperation::STATE_RUNNING)
    recheckAllNodes();
  return status;
}

unsigned int CorvBuilderPlannerBase::countStartConfigurations() const
{
  return static_cast<unsigned int>(pointsOf(*m_startManifold).size());
}

unsigned int CorvBuilderPlannerBase::countGoalConfigurations() const
{
  return static_cast<unsigned int>(pointsOf(*m_goalManifold).size());
}

CorvConfig CorvBuilderPlannerBase::startConfiguration(unsigned int i_rank) const
{
  return pointConfiguration(*m_startManifold, i_rank);
}

CorvConfig CorvBuilderPlannerBase::goalConfiguration(unsigned int i_rank) const
{
  return pointConfiguration(*m_goalManifold, i_rank);
}

void CorvBuilderPlannerBase::resetStartConfigurations()
{
  m_startManifold->clear();
}

void CorvBuilderPlannerBase::resetGoalConfigurations()
{
  m_goalManifold->clear();
}

CorvNodeShPtr CorvBuilderPlannerBase::currentStartNode(unsigned int i_rank) const
{
  return nodeOfRank(m_currentStartNodes, i_rank);
}

CorvNodeShPtr CorvBuilderPlannerBase::currentGoalNode(unsigned int i_rank) const
{
  return nodeOfRank(m_currentGoalNodes, i_rank);
}

void CorvBuilderPlannerBase::clearStartNodes()
{
  m_currentStartNodes.clear();
  notifyNode(DID_CLEAR_START_NODES, CorvNodeShPtr());
}

void CorvBuilderPlannerBase::clearGoalNodes()
{
  m_currentGoalNodes.clear();
  notifyNode(DID_CLEAR_GOAL_NODES, CorvNodeShPtr());
}

void CorvBuilderPlannerBase::clearStartAndGoalNodes()
{
  clearStartNodes();
  clearGoalNodes();
}

bool CorvBuilderPlannerBase::isProblemSolved() const
{
  CorvNodeShPtr start;
  CorvNodeShPtr goal;
  return isProblemSolved(start, goal);
}

bool CorvBuilderPlannerBase::isProblemSolved(CorvNodeShPtr& o_start, CorvNodeShPtr& o_goal) const
{
  const CorvRoadmapShPtr map = roadmap();
  for (const CorvNodeWkPtr& weakStart : m_currentStartNodes)
  {
    const CorvNodeShPtr start = weakStart.lock();
    const auto isReached = [&](const CorvNodeWkPtr& goal) { return map->pathExists(start, goal.lock()); };
    const auto goal =
      start ? std::find_if(m_currentGoalNodes.begin(), m_currentGoalNodes.end(), isReached) : m_currentGoalNodes.end();
    if (goal == m_currentGoalNodes.end())
      continue;
    o_start = start;
    o_goal = goal->lock();
    return true;
  }
  return false;
}

bool CorvBuilderPlannerBase::canStartPlan() const
{
  const bool hasEnds =
    stableStart() || stableEnd() || m_startManifold->countManifolds() != 0 || m_goalManifold->countManifolds() != 0;
  if (!hasEnds || !roadmap() || inputPath()->isEmpty())
    return false;
  const std::vector<bool>& stable = stableConfigs();
  return stable.size() <= 2 || std::find(stable.begin() + 1, stable.end() - 1, true) == stable.end() - 1;
}

lmStatus CorvBuilderPlannerBase::doStartPlan()
{
  if (!canStartPlan())
    return lmStatus(-1);
  takeStableEnds();
  recheckAllNodes();
  watchRoadmap();
  const lmStatus status = builder()->startBuild(makeBuilderParameters());
  if (status.succeeded())
    linkStableEnds();
  return status;
}

/// The configurations keep the reports of this validation, and with them the nodes that are made of them.
void CorvBuilderPlannerBase::takeStableEnds()
{
  if (stableStart())
  {
    m_startManifold->clear();
    clearStartNodes();
    const CorvConfig start = inputPath()->configuration(0);
    start.validate(parameters());
    LUM_ASSERT_SUCCESS(addStartConfiguration(start));
  }
  if (stableEnd())
  {
    m_goalManifold->clear();
    clearGoalNodes();
    const CorvConfig end = inputPath()->configuration(inputPath()->countConfigurations() - 1);
    end.validate(parameters());
    LUM_ASSERT_SUCCESS(addGoalConfiguration(end));
  }
}

/// A sampling builder meets start and goal only as nodes that are tied to the roadmap like any other.
void CorvBuilderPlannerBase::linkStableEnds()
{
  const auto linkPoint = [this](const CorvManifold& manifold)
  {
    CorvConfig config;
    if (manifold.getCountableElement(0, config).failed() || roadmap()->nodeWithEquivalentConfig(config))
      return;
    if (const CorvNodeShPtr node = builder()->roadmapNode(config))
      builder()->link(CorvLinker::LINK_BOTH, node, builder()->buildParameters());
  };
  if (stableStart())
    linkPoint(*m_startManifold);
  if (stableEnd())
    linkPoint(*m_goalManifold);
}

ClumParameterMapConstShPtr CorvBuilderPlannerBase::makeBuilderParameters() const
{
  if (inputPath()->countDirectPaths() == 0)
    return parameters();
  const ClumParameterMapShPtr builderParameters = ClumParameterMap::createWithBase(parameters());
  builderParameters->setConstShPtr(s_hintPathKey, CorvPathConstShPtr(CorvPath::createCopy(inputPath())));
  return builderParameters;
}

lmStatus CorvBuilderPlannerBase::doContinuePlan(CorvPathShPtr&, bool& o_shouldContinue)
{
  dropGoneNodes();
  if (!isProblemSolved())
    return builder()->continueBuild(o_shouldContinue);
  o_shouldContinue = false;
  return lmStatus();
}

lmStatus CorvBuilderPlannerBase::doFinishPlan(const lmStatus& i_status, CorvPathShPtr& io_path)
{
  lmStatus status = i_status;
  dropGoneNodes();
  if (status.succeeded())
  {
    CorvNodeShPtr start;
    CorvNodeShPtr goal;
    CorvRoadmap::TEdgeList edges;
    if (isProblemSolved(start, goal))
    {
      const bool found = roadmap()->findPath(start, goal, io_path, edges);
      LUM_ASSERT(found);
    }
    else
      status = -1;
  }
  if (status.failed() && parameters() && parameters()->boolValue(s_forcePathKey, true))
    forcePath(io_path);
  stopBuilder();
  unwatchRoadmap();
  clearStartAndGoalNodes();
  return status;
}

/// An aborted operation ends in its next step.
void CorvBuilderPlannerBase::stopBuilder()
{
  if (builder()->state() != ClumOperation::STATE_RUNNING)
    return;
  builder()->abortBuild();
  bool shouldContinue = false;
  builder()->continueBuild(shouldContinue);
}

lmStatus CorvBuilderPlannerBase::doComputeCompletion(double& o_completion) const
{
  return builder()->computeCompletion(o_completion);
}

void CorvBuilderPlannerBase::checkNode(const CorvNodeShPtr& i_node)
{
  if (isElementOf(*m_startManifold, i_node->config()))
    addStartNode(i_node);
  if (isElementOf(*m_goalManifold, i_node->config()))
    addGoalNode(i_node);
}

bool CorvBuilderPlannerBase::isElementOf(const CorvManifoldUnion& i_manifold, const CorvConfig& i_config) const
{
  if (i_manifold.countManifolds() == 0)
    return false;
  if (i_config.space() == i_manifold.ambientSpace())
    return i_manifold.isValidElement(i_config, parameters());
  CorvConfig config = i_config;
  return config.convert(i_manifold.ambientSpace()).succeeded() && i_manifold.isValidElement(config, parameters());
}

void CorvBuilderPlannerBase::recheckAllNodes()
{
  clearStartAndGoalNodes();
  const CorvRoadmapShPtr map = roadmap();
  for (unsigned int i = 0; i < map->countNodes(); ++i)
    checkNode(map->node(i));
}

void CorvBuilderPlannerBase::addStartNode(const CorvNodeShPtr& i_node)
{
  if (holdsNode(m_currentStartNodes, i_node))
    return;
  m_currentStartNodes.push_back(i_node);
  notifyNode(DID_ADD_START_NODE, i_node);
}

void CorvBuilderPlannerBase::addGoalNode(const CorvNodeShPtr& i_node)
{
  if (holdsNode(m_currentGoalNodes, i_node))
    return;
  m_currentGoalNodes.push_back(i_node);
  notifyNode(DID_ADD_GOAL_NODE, i_node);
}

void CorvBuilderPlannerBase::removeStartNode(const CorvNodeShPtr& i_node)
{
  if (eraseNode(m_currentStartNodes, i_node))
    notifyNode(DID_REMOVE_START_NODE, i_node);
}

void CorvBuilderPlannerBase::removeGoalNode(const CorvNodeShPtr& i_node)
{
  if (eraseNode(m_currentGoalNodes, i_node))
    notifyNode(DID_REMOVE_GOAL_NODE, i_node);
}

/// Some removals send no notice.
void CorvBuilderPlannerBase::dropGoneNodes()
{
  const CorvRoadmapShPtr map = roadmap();
  const auto isGone = [&](const CorvNodeWkPtr& weak)
  {
    const CorvNodeShPtr node = weak.lock();
    return !node || node->roadmap() != map;
  };
  const auto firstGone = [&](const TNodes& nodes) { return std::find_if(nodes.begin(), nodes.end(), isGone); };
  for (auto gone = firstGone(m_currentStartNodes); gone != m_currentStartNodes.end();
       gone = firstGone(m_currentStartNodes))
    removeStartNode(gone->lock());
  for (auto gone = firstGone(m_currentGoalNodes); gone != m_currentGoalNodes.end();
       gone = firstGone(m_currentGoalNodes))
    removeGoalNode(gone->lock());
}

void CorvBuilderPlannerBase::watchRoadmap()
{
  unwatchRoadmap();
  m_watched = roadmap()->notificator();
  if (!m_watched)
    return;
  LUM_ASSERT_SUCCESS(m_watched->subscribe(CorvRoadmap::DID_ADD_NODE, self(), this, &Self::roadmapDidAddNode));
  LUM_ASSERT_SUCCESS(m_watched->subscribe(CorvRoadmap::DID_REMOVE_NODE, self(), this, &Self::roadmapDidRemoveNode));
  LUM_ASSERT_SUCCESS(
    m_watched->subscribe(CorvRoadmap::DID_REMOVE_ALL_NODES_AND_EDGES, self(), this, &Self::roadmapDidRemoveAllNodes));
}

void CorvBuilderPlannerBase::unwatchRoadmap()
{
  if (m_watched)
    m_watched->unsubscribe(this);
  m_watched.reset();
}

void CorvBuilderPlannerBase::roadmapDidAddNode(const ShPtr<const ClumNotification>& i_notification)
{
  if (const CorvNodeShPtr node = notifiedNode(*i_notification))
    checkNode(node);
}

void CorvBuilderPlannerBase::roadmapDidRemoveNode(const ShPtr<const ClumNotification>& i_notification)
{
  if (const CorvNodeShPtr node = notifiedNode(*i_notification))
  {
    removeStartNode(node);
    removeGoalNode(node);
  }
}

void CorvBuilderPlannerBase::roadmapDidRemoveAllNodes(const ShPtr<const ClumNotification>&)
{
  clearStartAndGoalNodes();
}

void CorvBuilderPlannerBase::notifyNode(unsigned int i_id, const CorvNodeShPtr& i_node) const
{
  if (!notificator() || !notificator()->hasSubscribers(i_id))
    return;
  const ClumNotificationShPtr notification = ClumNotification::create(i_id, self());
  if (i_node)
    notification->value(NODE_KEY, ClumObjectShPtr(i_node));
  notificator()->notify(notification);
}
