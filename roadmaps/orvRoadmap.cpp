#include "roadmaps/orvRoadmap.h"

#include "foundation/lumAssert.h"
#include "foundation/lumNotification.h"
#include "foundation/lumNotificator.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "paths/orvSteeringMethod.h"
#include "roadmaps/orvConnectedComponent.h"
#include "validation/orvValidator.h"

#include <algorithm>
#include <atomic>
#include <cmath>

const unsigned int CorvRoadmap::DID_ADD_NODE = ClumNotification::makeID("CorvRoadmap", "DID_ADD_NODE");
const unsigned int CorvRoadmap::DID_ADD_EDGE = ClumNotification::makeID("CorvRoadmap", "DID_ADD_EDGE");
const unsigned int CorvRoadmap::DID_REMOVE_NODE = ClumNotification::makeID("CorvRoadmap", "DID_REMOVE_NODE");
const unsigned int CorvRoadmap::DID_REMOVE_EDGE = ClumNotification::makeID("CorvRoadmap", "DID_REMOVE_EDGE");
const unsigned int CorvRoadmap::DID_REMOVE_ALL_NODES_AND_EDGES =
  ClumNotification::makeID("CorvRoadmap", "DID_REMOVE_ALL_NODES_AND_EDGES");
const std::string CorvRoadmap::NODE_KEY = "node";
const std::string CorvRoadmap::EDGE_KEY = "edge";

namespace
{
std::size_t canonicalHashOf(const CorvConfig& i_config)
{
  return CorvConfig::canonical_hash()(i_config);
}

/// Most are equal to the bit, which is told faster.
bool isSamePlace(const CorvConfig& i_a, const CorvConfig& i_b)
{
  return i_a == i_b || i_a.isEquivalent(i_b);
}

bool leadsBetween(const CorvDirectPath& i_directPath, const CorvNode& i_start, const CorvNode& i_end)
{
  return isSamePlace(i_directPath.startConfiguration(), i_start.config()) &&
         isSamePlace(i_directPath.endConfiguration(), i_end.config());
}

lmStatus appendEdges(const CorvRoadmap::TEdgeList& i_edges, const CorvNode& i_start, CorvPathShPtr& io_path)
{
  const CorvPathShPtr o_path = io_path ? io_path : CorvPath::create(i_start.config().configSpace());
  o_path->clear();
  lmStatus status = o_path->setInitialConfig(i_start.config());
  for (auto it = i_edges.begin(); it != i_edges.end(); ++it)
    LUM_ASSERT_SUCCESS(o_path->appendDirectPath((*it)->directPath()));
  io_path = o_path;
  return status;
}
} // namespace

/// One run of A*.
class CorvRoadmap::CSearch
{
public:
  CSearch(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_goal, const CorvValidatorShPtr& i_validator,
          const ClumParameterMapConstShPtr& i_parameters)
    : m_id(nextId()), m_start(i_start.get()), m_goal(i_goal.get()), m_validator(i_validator), m_parameters(i_parameters)
  {
  }

  /// @param o_edges the edges found are put before what stands there.
  bool run(TEdgeList& o_edges)
  {
    reach(*m_start, CorvEdgeShPtr(), 0.0);
    while (!m_open.empty())
    {
      const CorvNode& node = **m_open.begin();
      if (&node == m_goal)
      {
        collectEdges(o_edges);
        return true;
      }
      m_open.erase(m_open.begin());
      node.searchData().status = CorvNode::CSearchData::CLOSED;
      for (unsigned int i = 0; i < node.countOutEdges(); ++i)
        follow(node, node.outEdge(i));
    }
    return false;
  }

private:
  struct CNodeComparator
  {
    bool operator()(const CorvNode* i_a, const CorvNode* i_b) const
    {
      const CorvNode::CSearchData& a = i_a->searchData();
      const CorvNode::CSearchData& b = i_b->searchData();
      return a.g + a.h < b.g + b.h;
    }
  };
  using TOpen = std::multiset<const CorvNode*, CNodeComparator>;

  static std::uint64_t nextId()
  {
    static std::atomic<std::uint64_t> s_id{0};
    return ++s_id;
  }

  void follow(const CorvNode& i_node, const CorvEdgeShPtr& i_edge)
  {
    const CorvNodeShPtr next = i_edge->endNode();
    if (!next || !isUsable(*i_edge))
      return;
    const double cost = i_node.searchData().g + i_edge->cost();
    const CorvNode::CSearchData& data = next->searchData();
    if (!std::isnan(cost) && (data.search != m_id || data.g > cost))
      reach(*next, i_edge, cost);
  }

  bool isUsable(const CorvEdge& i_edge) const
  {
    return !m_validator ||
           (m_validator->validate(*i_edge.directPath(), m_parameters) && i_edge.directPath()->isValid());
  }

  /// The order of the open set hangs on the record, so the node leaves the set before its record changes.
  void reach(const CorvNode& i_node, const CorvEdgeShPtr& i_edge, double i_cost)
  {
    CorvNode::CSearchData& data = i_node.searchData();
    if (data.search != m_id)
    {
      data.search = m_id;
      const double estimate = i_node.config().distanceTo(m_goal->config());
      data.h = std::isnan(estimate) ? 0.0 : estimate;
    }
    else if (data.status == CorvNode::CSearchData::OPEN)
    {
      const auto range = m_open.equal_range(&i_node);
      m_open.erase(std::find(range.first, range.second, &i_node));
    }
    data.g = i_cost;
    data.reachedBy = i_edge;
    data.status = CorvNode::CSearchData::OPEN;
    m_open.insert(&i_node);
  }

  void collectEdges(TEdgeList& o_edges) const
  {
    for (const CorvNode* node = m_goal; node != m_start;)
    {
      o_edges.push_front(node->searchData().reachedBy.lock());
      node = o_edges.front()->startNode().get();
    }
  }

  std::uint64_t m_id;
  const CorvNode* m_start;
  const CorvNode* m_goal;
  CorvValidatorShPtr m_validator;
  ClumParameterMapConstShPtr m_parameters;
  TOpen m_open;
};

/// What a removal takes apart, and what of it stays.
struct CorvRoadmap::CTouched
{
  struct CSurvivor
  {
    CorvNodeShPtr start;
    CorvNodeShPtr end;
  };

  std::set<CorvConnectedComponentShPtr, CorvConnectedComponent::CSerialLess> components;
  TNodeSet nodes;
  std::map<CorvEdgeShPtr, CSurvivor, CorvEdge::CSerialLess> edges;
};

CorvRoadmapShPtr CorvRoadmap::create(const CorvConfigSpaceShPtr& i_configSpace)
{
  return lumCreate<CorvRoadmap>(i_configSpace);
}

CorvRoadmapShPtr CorvRoadmap::create(const CorvDeviceShPtr& i_device)
{
  return i_device ? create(CorvConfigSpaceShPtr(i_device->configSpace())) : CorvRoadmapShPtr();
}

CorvRoadmap::CorvRoadmap(const CorvConfigSpaceShPtr& i_configSpace)
  : m_configSpace(i_configSpace), m_nodesByHash(11), m_notificator(ClumNotificator::create())
{
}

CorvRoadmap::~CorvRoadmap()
{
}

lmStatus CorvRoadmap::init(const CorvRoadmapWkPtr& i_weakPtr)
{
  m_self = i_weakPtr;
  return m_configSpace ? lmStatus() : lmStatus(-1);
}

CorvDeviceShPtr CorvRoadmap::device() const
{
  return m_configSpace->device();
}

bool CorvRoadmap::containsNode(const CorvNodeConstShPtr& i_node) const
{
  for (unsigned int i = 0; i < m_nodes.size(); ++i)
  {
    if (m_nodes[i] == i_node)
      return true;
  }
  return false;
}

CorvConnectedComponentShPtr CorvRoadmap::connectedComponent(unsigned int i_rank) const
{
  return i_rank < m_components.size() ? m_components[i_rank] : CorvConnectedComponentShPtr();
}

lmStatus CorvRoadmap::getConnectedComponent(unsigned int i_rank, CorvConnectedComponentShPtr& o_component) const
{
  if (i_rank >= m_components.size())
    return lmStatus(-1);
  o_component = m_components[i_rank];
  return lmStatus();
}

bool CorvRoadmap::containsConnectedComponent(const CorvConnectedComponentConstShPtr& i_component) const
{
  return std::find(m_components.begin(), m_components.end(), i_component) != m_components.end();
}

CorvNodeShPtr CorvRoadmap::nodeWithConfig(const CorvConfig& i_config) const
{
  if (i_config.space() != m_configSpace)
    return CorvNodeShPtr();
  const auto range = m_nodesByHash.equal_range(canonicalHashOf(i_config));
  const auto at =
    std::find_if(range.first, range.second, [&](const auto& entry) { return entry.second->config() == i_config; });
  return at == range.second ? CorvNodeShPtr() : at->second;
}

CorvNodeShPtr CorvRoadmap::nodeWithEquivalentConfig(const CorvConfig& i_config) const
{
  return i_config.space() == m_configSpace ? equivalentNode(i_config, canonicalHashOf(i_config)) : CorvNodeShPtr();
}

CorvNodeShPtr CorvRoadmap::equivalentNode(const CorvConfig& i_config, std::size_t i_hash) const
{
  const auto range = m_nodesByHash.equal_range(i_hash);
  for (auto it = range.first; it != range.second; ++it)
  {
    if (it->second->config().isEquivalent(i_config))
      return it->second;
  }
  for (const CorvConnectedComponentShPtr& component : m_components)
  {
    if (const CorvNodeShPtr node = component->equivalentNode(i_config))
      return node;
  }
  return CorvNodeShPtr();
}

lmStatus CorvRoadmap::addNode(const CorvNodeShPtr& i_node)
{
  if (!i_node || i_node->roadmap() || i_node->config().space() != m_configSpace)
    return lmStatus(-1);
  const std::size_t hash = canonicalHashOf(i_node->config());
  if (equivalentNode(i_node->config(), hash))
    return lmStatus(-1);
  insertNode(i_node, hash);
  notifyNode(DID_ADD_NODE, i_node);
  return lmStatus();
}

void CorvRoadmap::insertNode(const CorvNodeShPtr& i_node, std::size_t i_hash)
{
  const CorvConnectedComponentShPtr component = CorvConnectedComponent::create(self());
  i_node->roadmap(self());
  component->addNode(i_node);
  m_components.push_back(component);
  m_nodes.push(i_node);
  m_nodesByHash.emplace(i_hash, i_node);
}

bool CorvRoadmap::canAddEdge(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end,
                             const CorvEdgeShPtr& i_edge) const
{
  if (!i_start || !i_end || !i_edge || i_start == i_end || i_edge->roadmap())
    return false;
  if (i_start->roadmap().get() != this || i_end->roadmap().get() != this)
    return false;
  const CorvDirectPath& directPath = *i_edge->directPath();
  return directPath.configSpace() == m_configSpace && leadsBetween(directPath, *i_start, *i_end);
}

lmStatus CorvRoadmap::addEdge(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end, const CorvEdgeShPtr& i_edge)
{
  if (!canAddEdge(i_start, i_end, i_edge))
    return lmStatus(-1);
  insertEdge(i_start, i_end, i_edge);
  notifyEdge(DID_ADD_EDGE, i_edge);
  return lmStatus();
}

void CorvRoadmap::insertEdge(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end, const CorvEdgeShPtr& i_edge)
{
  i_edge->roadmap(self());
  i_start->addOutEdge(i_edge);
  i_end->addInEdge(i_edge);
  ++m_edgeCount;
  updateConnectivity(i_edge);
}

void CorvRoadmap::updateConnectivity(const CorvEdgeShPtr& i_edge)
{
  const CorvConnectedComponentShPtr from = i_edge->startNode()->connectedComponent();
  const CorvConnectedComponentShPtr to = i_edge->endNode()->connectedComponent();
  CorvConnectedComponentShPtr merged;
  if (from == to)
    CorvConnectedComponent::addInnerConnection(from, i_edge);
  else if (to->hasTransitiveOutComponent(from))
    CorvConnectedComponent::merge(to, from, i_edge, merged);
  else if (from->hasTransitiveOutComponent(to))
    CorvConnectedComponent::addConnection(from, to, i_edge);
  else
    CorvConnectedComponent::connect(from, to, i_edge);
}

lmStatus CorvRoadmap::addDoubleEdge(const CorvNodeShPtr& i_a, const CorvNodeShPtr& i_b, const CorvEdgeShPtr& i_edgeAB,
                                    const CorvEdgeShPtr& i_edgeBA)
{
  if (i_edgeAB == i_edgeBA || !canAddEdge(i_a, i_b, i_edgeAB) || !canAddEdge(i_b, i_a, i_edgeBA))
    return lmStatus(-1);
  if (i_a->isIsolated())
    joinIsolated(i_b, i_a, i_edgeBA, i_edgeAB);
  else if (i_b->isIsolated())
    joinIsolated(i_a, i_b, i_edgeAB, i_edgeBA);
  else
  {
    const lmStatus status = addEdge(i_a, i_b, i_edgeAB);
    return status.failed() ? status : addEdge(i_b, i_a, i_edgeBA);
  }
  notifyEdge(DID_ADD_EDGE, i_edgeAB);
  notifyEdge(DID_ADD_EDGE, i_edgeBA);
  return lmStatus();
}

void CorvRoadmap::joinIsolated(const CorvNodeShPtr& i_connected, const CorvNodeShPtr& i_isolated,
                               const CorvEdgeShPtr& i_edgeOut, const CorvEdgeShPtr& i_edgeIn)
{
  i_connected->connectedComponent()->addIsolatedNode(i_connected, i_isolated, i_edgeOut, i_edgeIn);
  m_edgeCount += 2;
}

lmStatus CorvRoadmap::removeNode(const CorvNodeShPtr& i_node)
{
  if (!i_node)
    return lmStatus(-1);
  const CorvConnectedComponentShPtr component = i_node->connectedComponent();
  const bool isFast = component && component->roadmap().get() == this;
  if (isFast && i_node->isIsolated())
    return component->removeIsolated(i_node);
  if (isFast && i_node->isDeadEnd())
    return component->removeDeadEnd(i_node);
  return removeNodesAndEdges(TNodeSet{i_node}, TEdgeSet());
}

lmStatus CorvRoadmap::removeEdge(const CorvEdgeShPtr& i_edge)
{
  return i_edge ? removeNodesAndEdges(TNodeSet(), TEdgeSet{i_edge}) : lmStatus(-1);
}

lmStatus CorvRoadmap::removeNodesAndEdges(const TNodeSet& i_nodes, const TEdgeSet& i_edges)
{
  const TNodeSet removedNodes = i_nodes;
  TEdgeSet removedEdges;
  const lmStatus status = checkRemoval(removedNodes, i_edges, removedEdges);
  if (status.failed())
    return status;

  CTouched touched;
  collectTouched(removedNodes, removedEdges, touched);
  takeApart(touched);
  for (const CorvNodeShPtr& node : removedNodes)
    touched.nodes.erase(node);
  rebuild(touched);

  for (const CorvEdgeShPtr& edge : removedEdges)
    notifyEdge(DID_REMOVE_EDGE, edge);
  for (const CorvNodeShPtr& node : removedNodes)
    notifyNode(DID_REMOVE_NODE, node);
  return status;
}

/// @param o_edges the edges given and all edges of the nodes.
lmStatus CorvRoadmap::checkRemoval(const TNodeSet& i_nodes, const TEdgeSet& i_edges, TEdgeSet& o_edges) const
{
  lmStatus status;
  o_edges = i_edges;
  for (const CorvNodeShPtr& node : i_nodes)
  {
    if (!node || node->roadmap().get() != this || !node->connectedComponent())
    {
      ClumLogManager::addWarning(
        "CorvRoadmap::removeNodesAndEdges() unable to remove a node that is not in the roadmap.");
      status = -1;
      continue;
    }
    for (unsigned int i = 0; i < node->countInEdges(); ++i)
      o_edges.insert(node->inEdge(i));
    for (unsigned int i = 0; i < node->countOutEdges(); ++i)
      o_edges.insert(node->outEdge(i));
  }
  for (const CorvEdgeShPtr& edge : o_edges)
  {
    const CorvNodeShPtr end = edge ? edge->endNode() : CorvNodeShPtr();
    if (end && edge->roadmap().get() == this && end->roadmap().get() == this && edge->startNode())
      continue;
    ClumLogManager::addWarning(
      "CorvRoadmap::removeNodesAndEdges() unable to remove an edge that is not in the roadmap.");
    status = -1;
  }
  return status;
}

/// Everything that a removal can have an effect on: the components of what is removed and, since sums and closures hang
/// together along the order of reaching, all that these are linked with over any number of closure lists.
void CorvRoadmap::collectTouched(const TNodeSet& i_nodes, const TEdgeSet& i_edges, CTouched& o_touched) const
{
  std::vector<CorvConnectedComponentShPtr> open;
  const auto touch = [&](const CorvConnectedComponentShPtr& component)
  {
    if (component && o_touched.components.insert(component).second)
      open.push_back(component);
  };
  for (const CorvNodeShPtr& node : i_nodes)
    touch(node->connectedComponent());
  for (const CorvEdgeShPtr& edge : i_edges)
  {
    touch(edge->startNode()->connectedComponent());
    touch(edge->endNode()->connectedComponent());
  }
  while (!open.empty())
  {
    const CorvConnectedComponentShPtr component = open.back();
    open.pop_back();
    for (auto it = component->beginInComponentIterator(); it != component->endInComponentIterator(); ++it)
      touch(it->lock());
    for (auto it = component->beginOutComponentIterator(); it != component->endOutComponentIterator(); ++it)
      touch(it->lock());
  }

  for (const CorvConnectedComponentShPtr& component : o_touched.components)
  {
    for (auto it = component->beginNodeIterator(); it != component->endNodeIterator(); ++it)
    {
      o_touched.nodes.insert(*it);
      for (unsigned int i = 0; i < (*it)->countOutEdges(); ++i)
      {
        const CorvEdgeShPtr& edge = (*it)->outEdge(i);
        if (i_edges.count(edge) == 0)
          o_touched.edges[edge] = CTouched::CSurvivor{*it, edge->endNode()};
      }
    }
  }
}

/// Takes all touched nodes and components out, and unties all edges.
void CorvRoadmap::takeApart(const CTouched& i_touched)
{
  for (const CorvNodeShPtr& node : i_touched.nodes)
  {
    m_edgeCount -= node->countOutEdges();
    dropHashEntry(node);
    node->detach();
  }
  ClumAtomicStackSafeSize<CorvNodeShPtr> survivors;
  for (unsigned int i = 0; i < m_nodes.size(); ++i)
  {
    if (m_nodes[i]->roadmap())
      survivors.push(m_nodes[i]);
  }
  m_nodes.swap(survivors);
  for (const CorvConnectedComponentShPtr& component : i_touched.components)
    component->roadmap(CorvRoadmapShPtr());
  eraseDroppedComponents();
}

void CorvRoadmap::eraseDroppedComponents()
{
  m_components.erase(std::remove_if(m_components.begin(), m_components.end(),
                                    [](const CorvConnectedComponentShPtr& component) { return !component->roadmap(); }),
                     m_components.end());
}

/// The nodes stood in the roadmap before, so none is equivalent to another one. Most components that come up on the way
/// are merged again: they leave the list all at once.
void CorvRoadmap::rebuild(const CTouched& i_touched)
{
  m_isRebuilding = true;
  for (const CorvNodeShPtr& node : i_touched.nodes)
    insertNode(node, canonicalHashOf(node->config()));
  for (const auto& entry : i_touched.edges)
    insertEdge(entry.second.start, entry.second.end, entry.first);
  m_isRebuilding = false;
  eraseDroppedComponents();
}

lmStatus CorvRoadmap::removeUnrelatedNode(const CorvNodeShPtr& i_node)
{
  if (!i_node || i_node->connectedComponent() || !i_node->isIsolated() || !containsNode(i_node))
    return lmStatus(-1);
  const CorvNodeShPtr node = i_node;
  ClumAtomicStackSafeSize<CorvNodeShPtr> survivors;
  for (unsigned int i = 0; i < m_nodes.size(); ++i)
  {
    if (m_nodes[i] != node)
      survivors.push(m_nodes[i]);
  }
  m_nodes.swap(survivors);
  dropHashEntry(node);
  node->roadmap(CorvRoadmapShPtr());
  return lmStatus();
}

void CorvRoadmap::dropHashEntry(const CorvNodeShPtr& i_node)
{
  const auto isOfNode = [&](const auto& entry) { return entry.second == i_node; };
  const auto range = m_nodesByHash.equal_range(canonicalHashOf(i_node->config()));
  auto at = std::find_if(range.first, range.second, isOfNode);
  if (at == range.second) // the space has changed since the node came in, and with it the hash
    at = std::find_if(m_nodesByHash.begin(), m_nodesByHash.end(), isOfNode);
  if (at != m_nodesByHash.end())
    m_nodesByHash.erase(at);
}

void CorvRoadmap::clear()
{
  for (unsigned int i = 0; i < m_nodes.size(); ++i)
    m_nodes[i]->detach();
  for (const CorvConnectedComponentShPtr& component : m_components)
    component->roadmap(CorvRoadmapShPtr());
  m_components.clear();
  m_nodes.clear();
  m_nodesByHash.clear();
  m_edgeCount = 0;
  if (m_notificator && m_notificator->hasSubscribers(DID_REMOVE_ALL_NODES_AND_EDGES))
    m_notificator->notify(ClumNotification::create(DID_REMOVE_ALL_NODES_AND_EDGES, self()));
}

void CorvRoadmap::addConnectedComponent(const CorvConnectedComponentShPtr& i_component)
{
  i_component->roadmap(self());
  m_components.push_back(i_component);
}

void CorvRoadmap::removeConnectedComponent(const CorvConnectedComponentShPtr& i_component)
{
  if (m_isRebuilding)
  {
    i_component->roadmap(CorvRoadmapShPtr());
    return;
  }
  // The newest goes most often.
  const auto at = std::find(m_components.rbegin(), m_components.rend(), i_component);
  if (at == m_components.rend())
    return;
  (*at)->roadmap(CorvRoadmapShPtr());
  m_components.erase(std::next(at).base());
}

bool CorvRoadmap::pathExists(const CorvNodeConstShPtr& i_start, const CorvNodeConstShPtr& i_goal) const
{
  return i_start && i_goal && i_start->roadmap().get() == this && i_goal->roadmap().get() == this &&
         i_start->hasTransitiveOutNode(i_goal);
}

bool CorvRoadmap::search(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_goal,
                         const CorvValidatorShPtr& i_validator, const ClumParameterMapConstShPtr& i_parameters,
                         CorvPathShPtr& io_path, TEdgeList& o_edges) const
{
  if (!i_start || !i_goal || i_start->roadmap().get() != this || i_goal->roadmap().get() != this)
    return false;
  TEdgeList edges;
  if (!CSearch(i_start, i_goal, i_validator, i_parameters).run(edges))
    return false;
  LUM_ASSERT_SUCCESS(appendEdges(edges, *i_start, io_path));
  o_edges.splice(o_edges.begin(), edges);
  return true;
}

bool CorvRoadmap::findPath(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_goal, CorvPathShPtr& io_path,
                           TEdgeList& o_edges) const
{
  return search(i_start, i_goal, CorvValidatorShPtr(), ClumParameterMapConstShPtr(), io_path, o_edges);
}

bool CorvRoadmap::findValidPath(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_goal,
                                const CorvValidatorShPtr& i_validator, const ClumParameterMapConstShPtr& i_parameters,
                                CorvPathShPtr& io_path, TEdgeList& o_edges) const
{
  return search(i_start, i_goal, i_validator, i_parameters, io_path, o_edges);
}

lmStatus CorvRoadmap::forcePath(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_goal, CorvPathShPtr& io_path) const
{
  if (!i_start || !i_goal || i_start->roadmap().get() != this || i_goal->roadmap().get() != this)
    return lmStatus(-1);
  TEdgeList edges;
  bool found = false;
  if (pathExists(i_start, i_goal))
  {
    found = findPath(i_start, i_goal, io_path, edges);
    LUM_ASSERT(found);
    return found ? lmStatus() : lmStatus(-1);
  }

  CorvNodeShPtr from;
  CorvNodeShPtr to;
  i_start->connectedComponent()->minDistanceTo(i_goal->connectedComponent(), from, to);
  const CorvSteeringMethodShPtr steering = m_configSpace->steeringMethod();
  const CorvDirectPathShPtr bridge =
    from && to && steering ? steering->makeDirectPath(from->config(), to->config()) : CorvDirectPathShPtr();
  if (!bridge)
    return lmStatus(-1);

  CorvPathShPtr before;
  CorvPathShPtr behind;
  found = findPath(i_start, from, before, edges);
  LUM_ASSERT(found);
  found = findPath(to, i_goal, behind, edges) && found;
  LUM_ASSERT(found);
  if (!found)
    return lmStatus(-1);
  lmStatus status = before->appendDirectPath(bridge);
  if (status.succeeded())
    status = before->appendPath(behind);
  if (status.failed())
    return status;
  if (!io_path)
    io_path = CorvPath::create(m_configSpace);
  *io_path = *before;
  return status;
}

lmStatus CorvRoadmap::forcePath(const CorvConfig& i_start, const CorvConfig& i_goal, CorvPathShPtr& io_path) const
{
  return forcePath(nodeWithEquivalentConfig(i_start), nodeWithEquivalentConfig(i_goal), io_path);
}

void CorvRoadmap::unvalidateNodes() const
{
  for (unsigned int i = 0; i < m_nodes.size(); ++i)
    m_nodes[i]->config().unvalidate();
}

void CorvRoadmap::unvalidateEdges() const
{
  for (unsigned int i = 0; i < m_nodes.size(); ++i)
  {
    for (unsigned int k = 0; k < m_nodes[i]->countOutEdges(); ++k)
      m_nodes[i]->outEdge(k)->directPath()->unvalidate();
  }
}

void CorvRoadmap::notifyNode(unsigned int i_id, const CorvNodeShPtr& i_node) const
{
  if (!m_notificator || !m_notificator->hasSubscribers(i_id))
    return;
  const ClumNotificationShPtr notification = ClumNotification::create(i_id, self());
  notification->value(NODE_KEY, ClumObjectShPtr(i_node));
  m_notificator->notify(notification);
}

void CorvRoadmap::notifyEdge(unsigned int i_id, const CorvEdgeShPtr& i_edge) const
{
  if (!m_notificator || !m_notificator->hasSubscribers(i_id))
    return;
  const ClumNotificationShPtr notification = ClumNotification::create(i_id, self());
  notification->value(EDGE_KEY, ClumObjectShPtr(i_edge));
  m_notificator->notify(notification);
}
