#include "roadmaps/orvConnectedComponent.h"

#include "foundation/lumAssert.h"
#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvConfigSpace.h"
#include "metrics/orvMetric.h"
#include "metrics/orvMetricRevolute.h"
#include "paths/orvDirectPath.h"
#include "roadmaps/componentCell.h"
#include "roadmaps/nodeIndex.h"
#include "roadmaps/orvEdge.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRoadmap.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <set>

const unsigned int CorvConnectedComponent::s_minSizeForCoverTree = 10;

namespace
{
constexpr double NO_DISTANCE = std::numeric_limits<double>::infinity();

std::uint64_t nextComponentSerial()
{
  static std::atomic<std::uint64_t> s_serial{0};
  return ++s_serial;
}

double lengthOfEdge(const CorvEdge& i_edge)
{
  return i_edge.directPath()->length();
}

using TInterval = std::pair<double, double>;

/// Widens an interval of angles to hold one more. An interval wider than half the circle becomes the whole one.
void widenOnCircle(TInterval& io_interval, double i_value)
{
  if (io_interval.second - io_interval.first > ClumGeometryUtilities::PI)
    return;
  const double below = CorvMetricRevolute::circularDistance(i_value, io_interval.first);
  const double above = CorvMetricRevolute::circularDistance(io_interval.second, i_value);
  io_interval.first -= std::max(below, 0.0);
  io_interval.second += std::max(above, 0.0);
  if (io_interval.second - io_interval.first > ClumGeometryUtilities::PI)
    io_interval = TInterval(-ClumGeometryUtilities::PI, ClumGeometryUtilities::PI);
}

/// @param i_rank of the dof in its space.
void widenInterval(TInterval& io_interval, const TInterval& i_other, const CorvConfigSpace& i_space,
                   unsigned int i_rank)
{
  // What lies inside widens nothing, on a circle neither.
  if (io_interval.first <= i_other.first && i_other.second <= io_interval.second)
    return;
  if (!i_space.isDofCircular(i_rank))
  {
    io_interval.first = std::min(io_interval.first, i_other.first);
    io_interval.second = std::max(io_interval.second, i_other.second);
  }
  else if (i_other.second - i_other.first > ClumGeometryUtilities::PI)
    io_interval = TInterval(-ClumGeometryUtilities::PI, ClumGeometryUtilities::PI);
  else
  {
    widenOnCircle(io_interval, i_other.first);
    widenOnCircle(io_interval, i_other.second);
  }
}

/// @return false, the box as it was, if the dimensions differ; an empty box takes any.
bool uniteBox(CorvConnectedComponent::TBox& io_box, const CorvConnectedComponent::TBox& i_other,
              const CorvConfigSpace& i_space)
{
  if (io_box.empty())
    io_box = i_other;
  else if (!i_other.empty() && io_box.size() != i_other.size())
    return false;
  for (unsigned int rank = 0; rank < i_other.size(); ++rank)
    widenInterval(io_box[rank], i_other[rank], i_space, rank);
  return true;
}

double distanceBy(const CorvMetric* i_metric, const CorvConfig& i_a, const CorvConfig& i_b)
{
  return i_metric ? i_metric->distance(i_a, i_b) : i_a.distanceTo(i_b);
}

/// The components that a walk along edges meets from some nodes on, those nodes' own included.
std::set<std::uint64_t> walkComponents(const CorvConnectedComponent::TNodeList& i_from, bool i_isForward)
{
  std::set<std::uint64_t> met;
  std::set<CorvNodeShPtr, CorvNode::CSerialLess> seen(i_from.begin(), i_from.end());
  std::vector<CorvNodeShPtr> open(i_from.begin(), i_from.end());
  while (!open.empty())
  {
    const CorvNodeShPtr node = open.back();
    open.pop_back();
    met.insert(node->connectedComponent()->serial());
    for (unsigned int i = 0; i < (i_isForward ? node->countOutEdges() : node->countInEdges()); ++i)
    {
      const CorvNodeShPtr next = i_isForward ? node->outEdge(i)->endNode() : node->inEdge(i)->startNode();
      if (seen.insert(next).second)
        open.push_back(next);
    }
  }
  return met;
}

template <class ITERATOR>
double sumOfEdges(ITERATOR i_begin, ITERATOR i_end, bool i_isForward)
{
  double sum = 0.0;
  for (; i_begin != i_end; ++i_begin)
  {
    const CorvNode& node = **i_begin;
    for (unsigned int i = 0; i < (i_isForward ? node.countOutEdges() : node.countInEdges()); ++i)
      sum += lengthOfEdge(*(i_isForward ? node.outEdge(i) : node.inEdge(i)));
  }
  return sum;
}

bool isNearlyEqual(double i_a, double i_b)
{
  return std::fabs(i_a - i_b) <= 1e-6 * (1.0 + std::fabs(i_a) + std::fabs(i_b));
}

using TFoldedNodes = CorvConnectedComponent::TNodesByDistance;

/// Enters once more every node nearer than the distance that does not stand there twice already.
void repeatNearNodes(TFoldedNodes& io_nodes, double i_maxDistance)
{
  std::map<std::uint64_t, unsigned int> counts;
  for (const auto& entry : io_nodes)
    ++counts[entry.second->serial()];
  const TFoldedNodes near(io_nodes.begin(), io_nodes.lower_bound(i_maxDistance));
  for (const auto& entry : near)
  {
    if (counts[entry.second->serial()]++ < 2)
      io_nodes.insert(entry);
  }
}

/// @param i_wasFull the nodes of the first component alone made up the count.
void foldNodes(TFoldedNodes& io_main, const TFoldedNodes& i_partial, double i_maxDistance, unsigned int i_count,
               bool i_wasFull)
{
  if (i_partial.empty())
    return;
  if (io_main.empty())
  {
    io_main = i_partial;
    return;
  }
  const bool isAllFarther = i_partial.begin()->first >= io_main.rbegin()->first;
  if (i_wasFull && isAllFarther)
    return;
  if (i_partial.size() >= i_count && i_partial.rbegin()->first <= io_main.begin()->first)
  {
    io_main = i_partial;
    return;
  }
  io_main.insert(i_partial.begin(), i_partial.end());
  repeatNearNodes(io_main, i_maxDistance);
}
} // namespace

CorvConnectedComponentShPtr CorvConnectedComponent::create(const CorvRoadmapShPtr& i_roadmap)
{
  return lumCreate<CorvConnectedComponent>(i_roadmap);
}

CorvConnectedComponent::CorvConnectedComponent(const CorvRoadmapShPtr& i_roadmap)
  : m_roadmap(i_roadmap), m_minSizeForIndex(s_minSizeForCoverTree), m_cell(new CorvComponentCell),
    m_serial(nextComponentSerial())
{
}

CorvConnectedComponent::~CorvConnectedComponent()
{
}

lmStatus CorvConnectedComponent::init(const CorvConnectedComponentWkPtr& i_weakPtr)
{
  m_self = i_weakPtr;
  m_cell->component = i_weakPtr;
  return lmStatus();
}

template <class OPERATION>
void CorvConnectedComponent::forEach(const TLinks& i_links, OPERATION i_operation)
{
  for (const CLink& link : i_links)
  {
    if (const CorvConnectedComponentShPtr component = link.lock())
      i_operation(*component);
  }
}

unsigned int CorvConnectedComponent::countNodesOf(const TLinks& i_links)
{
  unsigned int count = 0;
  forEach(i_links, [&](const CorvConnectedComponent& component) { count += component.countNodes(); });
  return count;
}

unsigned int CorvConnectedComponent::countTransitiveInNodes() const
{
  return countNodesOf(m_inComponents);
}

unsigned int CorvConnectedComponent::countTransitiveOutNodes() const
{
  return countNodesOf(m_outComponents);
}

bool CorvConnectedComponent::contains(const TLinks& i_links, const CorvConnectedComponent& i_component)
{
  const auto at = std::lower_bound(i_links.begin(), i_links.end(), i_component.m_serial,
                                   [](const CLink& link, std::uint64_t serial) { return link.serial < serial; });
  return at != i_links.end() && at->serial == i_component.m_serial;
}

bool CorvConnectedComponent::hasTransitiveOutComponent(const CorvConnectedComponentConstShPtr& i_component) const
{
  return i_component && contains(m_outComponents, *i_component);
}

CorvConnectedComponent::TLinkedNodeIterator CorvConnectedComponent::linkedNodes(bool i_in, bool i_out, bool i_own) const
{
  TLinkedNodeIterator::TChain chain;
  const auto append = [&](const CorvConnectedComponent& component)
  { chain.emplace_back(component.self(), &component.m_nodes); };
  if (i_in)
    forEach(m_inComponents, append);
  if (i_out)
    forEach(m_outComponents, append);
  if (i_own)
    append(*this);
  return TLinkedNodeIterator(std::move(chain));
}

lmStatus CorvConnectedComponent::boundingBox(TBox& o_box) const
{
  if (m_nodes.empty())
    return lmStatus(-1);
  o_box = m_box;
  return lmStatus();
}

lmStatus CorvConnectedComponent::inBoundingBox(TBox& o_box) const
{
  return uniteBoxes(true, false, o_box);
}

lmStatus CorvConnectedComponent::outBoundingBox(TBox& o_box) const
{
  return uniteBoxes(false, true, o_box);
}

lmStatus CorvConnectedComponent::inoutBoundingBox(TBox& o_box) const
{
  return uniteBoxes(true, true, o_box);
}

lmStatus CorvConnectedComponent::uniteBoxes(bool i_in, bool i_out, TBox& o_box) const
{
  if (!(i_in && !m_inComponents.empty()) && !(i_out && !m_outComponents.empty()))
    return boundingBox(o_box);
  TBox box;
  bool isUnited = true;
  unsigned int nodeCount = 0;
  const auto unite = [&](const CorvConnectedComponent& component)
  {
    nodeCount += component.countNodes();
    if (!component.m_nodes.empty())
      isUnited = isUnited && uniteBox(box, component.m_box, *component.m_nodes.front()->config().space());
  };
  unite(*this);
  if (i_in)
    forEach(m_inComponents, unite);
  if (i_out)
    forEach(m_outComponents, unite);
  if (!isUnited || nodeCount == 0)
    return lmStatus(-1);
  o_box.swap(box);
  return lmStatus();
}

void CorvConnectedComponent::updateBoundingBox(const CorvNode& i_node)
{
  const CorvConfigSpace& space = *i_node.config().space();
  const double* values = i_node.config().beginPtr();
  const unsigned int count = values ? space.size() : 0;
  m_box.reserve(count);
  for (unsigned int rank = 0; rank < count; ++rank)
  {
    const TInterval point(values[rank], values[rank]);
    if (rank >= m_box.size())
      m_box.push_back(point);
    else
      widenInterval(m_box[rank], point, space, rank);
  }
}

void CorvConnectedComponent::recomputeBoundingBox()
{
  m_box.clear();
  for (const CorvNodeShPtr& node : m_nodes)
    updateBoundingBox(*node);
}

double CorvConnectedComponent::reachingLength() const
{
  if (m_reachingLength < 0.0)
  {
    m_reachingLength = m_length + m_incomingEdgesLength;
    forEach(m_inComponents, [this](const CorvConnectedComponent& component)
            { m_reachingLength += component.m_length + component.m_incomingEdgesLength; });
  }
  return m_reachingLength;
}

double CorvConnectedComponent::reachableLength() const
{
  if (m_reachableLength < 0.0)
  {
    m_reachableLength = m_length + m_outgoingEdgesLength;
    forEach(m_outComponents, [this](const CorvConnectedComponent& component)
            { m_reachableLength += component.m_length + component.m_outgoingEdgesLength; });
  }
  return m_reachableLength;
}

void CorvConnectedComponent::addReachableLength(double i_length) const
{
  if (m_reachableLength >= 0.0)
    m_reachableLength += i_length;
}

void CorvConnectedComponent::addReachingLength(double i_length) const
{
  if (m_reachingLength >= 0.0)
    m_reachingLength += i_length;
}

bool CorvConnectedComponent::checkTransitiveInvariant() const
{
  const auto isClosure = [this](const TLinks& links, bool isForward)
  {
    std::set<std::uint64_t> expected = walkComponents(m_nodes, isForward);
    expected.erase(m_serial);
    return std::equal(links.begin(), links.end(), expected.begin(), expected.end(),
                      [](const CLink& link, std::uint64_t serial) { return link.serial == serial && link.lock(); });
  };
  return isClosure(m_outComponents, true) && isClosure(m_inComponents, false);
}

bool CorvConnectedComponent::checkReachableLengthInvariant() const
{
  return isNearlyEqual(reachableLength(), sumOfEdges(beginReachableNodeIterator(), endReachableNodeIterator(), true));
}

bool CorvConnectedComponent::checkReachingLengthInvariant() const
{
  return isNearlyEqual(reachingLength(), sumOfEdges(beginReachingNodeIterator(), endReachingNodeIterator(), false));
}

CorvMetricConstShPtr CorvConnectedComponent::spaceMetric() const
{
  return m_nodes.empty() ? CorvMetricConstShPtr() : CorvMetricConstShPtr(m_nodes.front()->config().space()->metric());
}

bool CorvConnectedComponent::isIndexCurrent() const
{
  if (m_index && !m_index->isCurrent(*m_nodes.front()->config().space()))
    m_index.reset();
  return static_cast<bool>(m_index);
}

std::size_t CorvConnectedComponent::coverTreeMemorySize() const
{
  return m_index ? m_index->memorySize() : 0;
}

void CorvConnectedComponent::updateIndex(const CorvNodeShPtr& i_newNode)
{
  if (isIndexCurrent())
    enterIndex(i_newNode);
  else if (m_nodes.size() >= m_minSizeForIndex)
    makeIndex();
}

void CorvConnectedComponent::makeIndex()
{
  m_index = CorvNodeIndex::create(m_nodes.front()->config().space());
  for (const CorvNodeShPtr& node : m_nodes)
    enterIndex(node);
}

/// Without an index, or if a node cannot be entered, none is built before the component has twice the size.
void CorvConnectedComponent::enterIndex(const CorvNodeShPtr& i_node)
{
  if (m_index && !m_index->insert(i_node))
    m_index.reset();
  if (!m_index)
    m_minSizeForIndex = 2 * std::max<std::size_t>(m_nodes.size(), s_minSizeForCoverTree);
}

CorvNodeShPtr CorvConnectedComponent::scanNearest(const CorvConfig& i_config, const CorvMetric* i_metric) const
{
  double best = NO_DISTANCE;
  const CorvNodeShPtr* nearest = nullptr;
  for (const CorvNodeShPtr& node : m_nodes)
  {
    const double distance =
      i_metric ? i_metric->distance(i_config, node->config()) : i_config.squaredDistanceTo(node->config());
    if (distance < best || (distance == best && nearest && node->serial() < (*nearest)->serial()))
    {
      best = distance;
      nearest = &node;
    }
  }
  return nearest ? *nearest : CorvNodeShPtr();
}

CorvNodeShPtr CorvConnectedComponent::nearestNode(const CorvConfig& i_config) const
{
  if (m_nodes.empty())
    return CorvNodeShPtr();
  if (isIndexCurrent() && i_config.space() == m_nodes.front()->config().space())
    return m_index->nearest(i_config, NO_DISTANCE);
  return scanNearest(i_config, nullptr);
}

CorvNodeShPtr CorvConnectedComponent::nearestNode(const CorvConfig& i_config,
                                                  const CorvMetricConstShPtr& i_metric) const
{
  return !i_metric || isSpaceMetric(i_metric) ? nearestNode(i_config) : scanNearest(i_config, i_metric.get());
}

CorvNodeShPtr CorvConnectedComponent::nearestOf(const CorvConfig& i_config, const CorvMetricConstShPtr& i_metric,
                                                bool i_in, bool i_out) const
{
  double best = NO_DISTANCE;
  CorvNodeShPtr nearest;
  const auto consider = [&](const CorvConnectedComponent& component)
  {
    const CorvNodeShPtr node = component.nearestNode(i_config, i_metric);
    if (!node)
      return;
    const double distance =
      i_metric ? i_metric->distance(i_config, node->config()) : i_config.squaredDistanceTo(node->config());
    if (distance < best)
    {
      best = distance;
      nearest = node;
    }
  };
  consider(*this);
  if (i_in)
    forEach(m_inComponents, consider);
  if (i_out)
    forEach(m_outComponents, consider);
  return nearest;
}

CorvNodeShPtr CorvConnectedComponent::nearestConnectedNode(const CorvConfig& i_config) const
{
  return nearestOf(i_config, CorvMetricConstShPtr(), true, true);
}

CorvNodeShPtr CorvConnectedComponent::nearestConnectedNode(const CorvConfig& i_config,
                                                           const CorvMetricConstShPtr& i_metric) const
{
  return nearestOf(i_config, i_metric, true, true);
}

CorvNodeShPtr CorvConnectedComponent::nearestReachableNode(const CorvConfig& i_config) const
{
  return m_outComponents.empty() ? nearestNode(i_config) : nearestReachableNode(i_config, spaceMetric());
}

CorvNodeShPtr CorvConnectedComponent::nearestReachableNode(const CorvConfig& i_config,
                                                           const CorvMetricConstShPtr& i_metric) const
{
  return nearestOf(i_config, i_metric, false, true);
}

CorvNodeShPtr CorvConnectedComponent::nearestReachingNode(const CorvConfig& i_config) const
{
  return m_inComponents.empty() ? nearestNode(i_config) : nearestReachingNode(i_config, spaceMetric());
}

CorvNodeShPtr CorvConnectedComponent::nearestReachingNode(const CorvConfig& i_config,
                                                          const CorvMetricConstShPtr& i_metric) const
{
  return nearestOf(i_config, i_metric, true, false);
}

CorvNodeShPtr CorvConnectedComponent::equivalentNode(const CorvConfig& i_config) const
{
  // Twice the tolerance of an equivalence: the configurations decide.
  constexpr double BOUND = 2e-10;
  if (m_nodes.empty() || i_config.space() != m_nodes.front()->config().space())
    return CorvNodeShPtr();
  const CorvNodeShPtr nearest = isIndexCurrent() ? m_index->nearest(i_config, BOUND) : scanNearest(i_config, nullptr);
  return nearest && nearest->config().isEquivalent(i_config) ? nearest : CorvNodeShPtr();
}

CorvConnectedComponent::TNodesByDistance CorvConnectedComponent::scanNearestNodes(const CorvConfig& i_config,
                                                                                  double i_maxDistance,
                                                                                  unsigned int i_count,
                                                                                  const CorvMetric* i_metric) const
{
  TNodesByDistance nodes;
  for (const CorvNodeShPtr& node : m_nodes)
  {
    if (!(node->config() != i_config))
      continue;
    const double distance = distanceBy(i_metric, i_config, node->config());
    if (nodes.size() >= i_count)
    {
      const double last = nodes.empty() ? -NO_DISTANCE : nodes.rbegin()->first;
      const bool isNear = distance < i_maxDistance;
      if (!isNear && !(distance < last))
        continue;
      if (!isNear || last > i_maxDistance)
        nodes.erase(std::prev(nodes.end()));
    }
    nodes.emplace(distance, node);
  }
  return nodes;
}

CorvConnectedComponent::TNodesByDistance
CorvConnectedComponent::nearestNodes(const CorvConfig& i_config, double i_maxDistance, unsigned int i_count) const
{
  return scanNearestNodes(i_config, i_maxDistance, i_count, nullptr);
}

CorvConnectedComponent::TNodesByDistance
CorvConnectedComponent::nearestNodes(const CorvConfig& i_config, double i_maxDistance, unsigned int i_count,
                                     const CorvMetricConstShPtr& i_metric) const
{
  return scanNearestNodes(i_config, i_maxDistance, i_count, i_metric.get());
}

std::vector<CorvNodeShPtr> CorvConnectedComponent::foldNearestNodes(const CorvConfig& i_config, double i_maxDistance,
                                                                    unsigned int i_count, const CorvMetric* i_metric,
                                                                    const TLinks& i_others) const
{
  TNodesByDistance nodes = scanNearestNodes(i_config, i_maxDistance, i_count, i_metric);
  const bool wasFull = nodes.size() >= i_count;
  const auto fold = [&](const CorvConnectedComponent& component)
  {
    const TNodesByDistance partial = component.scanNearestNodes(i_config, i_maxDistance, i_count, i_metric);
    foldNodes(nodes, partial, i_maxDistance, i_count, wasFull);
  };
  forEach(i_others, fold);
  std::vector<CorvNodeShPtr> result;
  for (const auto& entry : nodes)
  {
    if (entry.first < i_maxDistance || result.size() < i_count)
      result.push_back(entry.second);
  }
  return result;
}

std::vector<CorvNodeShPtr> CorvConnectedComponent::nearestReachableNodes(const CorvConfig& i_config,
                                                                         double i_maxDistance,
                                                                         unsigned int i_count) const
{
  return foldNearestNodes(i_config, i_maxDistance, i_count, nullptr, m_outComponents);
}

std::vector<CorvNodeShPtr> CorvConnectedComponent::nearestReachableNodes(const CorvConfig& i_config,
                                                                         double i_maxDistance, unsigned int i_count,
                                                                         const CorvMetricConstShPtr& i_metric) const
{
  return foldNearestNodes(i_config, i_maxDistance, i_count, i_metric.get(), m_outComponents);
}

std::vector<CorvNodeShPtr> CorvConnectedComponent::nearestReachingNodes(const CorvConfig& i_config,
                                                                        double i_maxDistance,
                                                                        unsigned int i_count) const
{
  return foldNearestNodes(i_config, i_maxDistance, i_count, nullptr, m_inComponents);
}

std::vector<CorvNodeShPtr> CorvConnectedComponent::nearestReachingNodes(const CorvConfig& i_config,
                                                                        double i_maxDistance, unsigned int i_count,
                                                                        const CorvMetricConstShPtr& i_metric) const
{
  return foldNearestNodes(i_config, i_maxDistance, i_count, i_metric.get(), m_inComponents);
}

double CorvConnectedComponent::minDistanceTo(const CorvConnectedComponentConstShPtr& i_component, CorvNodeShPtr& o_from,
                                             CorvNodeShPtr& o_to) const
{
  return minDistanceTo(i_component, spaceMetric(), o_from, o_to);
}

double CorvConnectedComponent::minDistanceTo(const CorvConnectedComponentConstShPtr& i_component,
                                             const CorvMetricConstShPtr& i_metric, CorvNodeShPtr& o_from,
                                             CorvNodeShPtr& o_to) const
{
  o_from.reset();
  o_to.reset();
  if (!i_component)
    return NO_DISTANCE;
  if (i_component.get() == this || hasTransitiveOutComponent(i_component))
    return 0.0;
  return minGapTo(*i_component, i_metric, o_from, o_to);
}

double CorvConnectedComponent::minGapTo(const CorvConnectedComponent& i_component, const CorvMetricConstShPtr& i_metric,
                                        CorvNodeShPtr& o_from, CorvNodeShPtr& o_to) const
{
  double best = NO_DISTANCE;
  const auto consider = [&](const CorvNodeShPtr& from, const CorvNodeShPtr& to)
  {
    const double distance = from && to ? distanceBy(i_metric.get(), from->config(), to->config()) : NO_DISTANCE;
    if (distance < best)
    {
      best = distance;
      o_from = from;
      o_to = to;
    }
  };
  if (countNodes() <= i_component.countNodes())
  {
    for (auto it = beginReachableNodeIterator(); it != endReachableNodeIterator(); ++it)
      consider(*it, i_component.nearestReachingNode((*it)->config(), i_metric));
  }
  else
  {
    for (auto it = i_component.beginReachingNodeIterator(); it != i_component.endReachingNodeIterator(); ++it)
      consider(nearestReachableNode((*it)->config(), i_metric), *it);
  }
  return best;
}

double CorvConnectedComponent::minDistanceTo(const CorvConfig& i_config, CorvNodeShPtr& o_node) const
{
  return minDistanceTo(i_config, spaceMetric(), o_node);
}

double CorvConnectedComponent::minDistanceTo(const CorvConfig& i_config, const CorvMetricConstShPtr& i_metric,
                                             CorvNodeShPtr& o_node) const
{
  o_node = nearestReachableNode(i_config, i_metric);
  return o_node ? distanceBy(i_metric.get(), o_node->config(), i_config) : NO_DISTANCE;
}

double CorvConnectedComponent::minDistanceFrom(const CorvConfig& i_config, CorvNodeShPtr& o_node) const
{
  return minDistanceFrom(i_config, spaceMetric(), o_node);
}

double CorvConnectedComponent::minDistanceFrom(const CorvConfig& i_config, const CorvMetricConstShPtr& i_metric,
                                               CorvNodeShPtr& o_node) const
{
  o_node = nearestReachingNode(i_config, i_metric);
  return o_node ? distanceBy(i_metric.get(), i_config, o_node->config()) : NO_DISTANCE;
}

double CorvConnectedComponent::minDistanceToOrFrom(const CorvConfig& i_config, CorvNodeShPtr& o_node) const
{
  return minDistanceToOrFrom(i_config, spaceMetric(), o_node);
}

double CorvConnectedComponent::minDistanceToOrFrom(const CorvConfig& i_config, const CorvMetricConstShPtr& i_metric,
                                                   CorvNodeShPtr& o_node) const
{
  double best = NO_DISTANCE;
  o_node.reset();
  for (auto it = beginConnectedNodeIterator(); it != endConnectedNodeIterator(); ++it)
  {
    const double distance = distanceBy(i_metric.get(), i_config, (*it)->config());
    if (distance < best)
    {
      best = distance;
      o_node = *it;
    }
  }
  return best;
}

void CorvConnectedComponent::addNode(const CorvNodeShPtr& i_node)
{
  i_node->connectedComponent(self());
  m_nodes.push_back(i_node);
  updateIndex(i_node);
  updateBoundingBox(*i_node);
}

void CorvConnectedComponent::addIsolatedNode(const CorvNodeShPtr& i_connectedNode, const CorvNodeShPtr& i_isolatedNode,
                                             const CorvEdgeShPtr& i_edgeOut, const CorvEdgeShPtr& i_edgeIn)
{
  const CorvRoadmapShPtr owner = roadmap();
  i_edgeOut->roadmap(owner);
  i_edgeIn->roadmap(owner);
  i_connectedNode->addOutEdge(i_edgeOut);
  i_isolatedNode->addInEdge(i_edgeOut);
  i_isolatedNode->addOutEdge(i_edgeIn);
  i_connectedNode->addInEdge(i_edgeIn);

  if (const CorvConnectedComponentShPtr lone = i_isolatedNode->connectedComponent())
  {
    owner->removeConnectedComponent(lone);
    lone->m_nodes.clear();
    lone->m_box.clear();
    lone->m_index.reset();
  }
  addNode(i_isolatedNode);
  const double length = lengthOfEdge(*i_edgeOut) + lengthOfEdge(*i_edgeIn);
  m_length += length;
  addReachingLength(length);
  addReachableLength(length);
  forEach(m_inComponents, [=](const CorvConnectedComponent& component) { component.addReachableLength(length); });
  forEach(m_outComponents, [=](const CorvConnectedComponent& component) { component.addReachingLength(length); });
}

bool CorvConnectedComponent::holds(const CorvNodeShPtr& i_node) const
{
  return i_node && i_node->roadmap() == roadmap() && roadmap() &&
         std::find(m_nodes.begin(), m_nodes.end(), i_node) != m_nodes.end();
}

lmStatus CorvConnectedComponent::removeFromRoadmap(const CorvNodeShPtr& i_node)
{
  const CorvConnectedComponentShPtr keptAlive = self();
  m_nodes.remove(i_node);
  m_index.reset();
  i_node->connectedComponent(CorvConnectedComponentShPtr());
  LUM_ASSERT_SUCCESS(roadmap()->removeUnrelatedNode(i_node));
  recomputeBoundingBox();
  if (m_nodes.empty())
    roadmap()->removeConnectedComponent(keptAlive);
  return lmStatus();
}

lmStatus CorvConnectedComponent::removeIsolated(const CorvNodeShPtr& i_node)
{
  if (!holds(i_node) || !i_node->isIsolated())
    return lmStatus(-1);
  const CorvNodeShPtr node = i_node;
  return removeFromRoadmap(node);
}

lmStatus CorvConnectedComponent::removeDeadEnd(const CorvNodeShPtr& i_node)
{
  if (!holds(i_node) || !i_node->isDeadEnd())
    return lmStatus(-1);
  const CorvNodeShPtr node = i_node;
  const CorvEdgeShPtr in = node->inEdge(0);
  const CorvEdgeShPtr out = node->outEdge(0);
  const CorvNodeShPtr neighbour = in->startNode();
  neighbour->removeOutEdge(in);
  neighbour->removeInEdge(out);
  node->removeInEdge(in);
  node->removeOutEdge(out);
  in->detach();
  out->detach();
  roadmap()->m_edgeCount -= 2;
  return removeFromRoadmap(node);
}

CorvConnectedComponent::CLink CorvConnectedComponent::link() const
{
  return CLink{m_serial, m_self};
}

/// Adds a component and what lies behind it.
void CorvConnectedComponent::uniteLinks(TLinks& io_links, const CorvConnectedComponent& i_component,
                                        const TLinks& i_behind)
{
  const auto isBefore = [](const CLink& a, const CLink& b) { return a.serial < b.serial; };
  TLinks united;
  united.reserve(io_links.size() + i_behind.size() + 1);
  std::set_union(io_links.begin(), io_links.end(), i_behind.begin(), i_behind.end(), std::back_inserter(united),
                 isBefore);
  const CLink own = i_component.link();
  const auto at = std::lower_bound(united.begin(), united.end(), own, isBefore);
  if (at == united.end() || at->serial != own.serial)
    united.insert(at, own);
  io_links.swap(united);
}

void CorvConnectedComponent::eraseDeadLinks(TLinks& io_links)
{
  const auto isDead = [](const CLink& link)
  {
    const CorvConnectedComponentShPtr component = link.lock();
    return !component || !component->roadmap();
  };
  io_links.erase(std::remove_if(io_links.begin(), io_links.end(), isDead), io_links.end());
}

void CorvConnectedComponent::eraseLink(TLinks& io_links, const CorvConnectedComponent& i_component)
{
  io_links.erase(std::remove_if(io_links.begin(), io_links.end(),
                                [&](const CLink& link) { return link.serial == i_component.m_serial; }),
                 io_links.end());
}

void CorvConnectedComponent::addInnerConnection(const CorvConnectedComponentShPtr& i_component,
                                                const CorvEdgeShPtr& i_edge)
{
  const double length = lengthOfEdge(*i_edge);
  i_component->m_length += length;
  i_component->addReachingLength(length);
  i_component->addReachableLength(length);
  forEach(i_component->m_inComponents, [=](const CorvConnectedComponent& c) { c.addReachableLength(length); });
  forEach(i_component->m_outComponents, [=](const CorvConnectedComponent& c) { c.addReachingLength(length); });
}

void CorvConnectedComponent::addConnection(const CorvConnectedComponentShPtr& i_from,
                                           const CorvConnectedComponentShPtr& i_to, const CorvEdgeShPtr& i_edge)
{
  const double length = lengthOfEdge(*i_edge);
  i_from->m_outgoingEdgesLength += length;
  i_to->m_incomingEdgesLength += length;
  i_from->addReachableLength(length);
  forEach(i_from->m_inComponents, [=](const CorvConnectedComponent& c) { c.addReachableLength(length); });
  i_to->addReachingLength(length);
  forEach(i_to->m_outComponents, [=](const CorvConnectedComponent& c) { c.addReachingLength(length); });
}

/// Takes off, where a component that will newly reach the whole of the target reaches a part of it already, what that
/// part would be counted twice with.
void CorvConnectedComponent::correctLengthsBeforeConnecting(const CorvConnectedComponentShPtr& i_from,
                                                            const CorvConnectedComponentShPtr& i_to)
{
  const auto correctPair = [](const CorvConnectedComponent& from, const CorvConnectedComponent& to)
  {
    if (!contains(from.m_outComponents, to))
      return;
    from.addReachableLength(-(to.m_outgoingEdgesLength + to.m_length));
    to.addReachingLength(-(from.m_incomingEdgesLength + from.m_length));
  };
  const auto correctFrom = [&](const CorvConnectedComponent& from)
  {
    correctPair(from, *i_to);
    forEach(i_to->m_outComponents, [&](const CorvConnectedComponent& to) { correctPair(from, to); });
  };
  correctFrom(*i_from);
  forEach(i_from->m_inComponents, correctFrom);
}

void CorvConnectedComponent::connect(const CorvConnectedComponentShPtr& i_from, const CorvConnectedComponentShPtr& i_to,
                                     const CorvEdgeShPtr& i_edge)
{
  const double length = lengthOfEdge(*i_edge);
  const double reachable = i_to->reachableLength() + length;
  const double reaching = i_from->reachingLength() + length;
  correctLengthsBeforeConnecting(i_from, i_to);

  const TLinks behind = i_to->m_outComponents;
  const TLinks before = i_from->m_inComponents;
  const auto extendOut = [&](CorvConnectedComponent& component)
  {
    uniteLinks(component.m_outComponents, *i_to, behind);
    component.addReachableLength(reachable);
  };
  const auto extendIn = [&](CorvConnectedComponent& component)
  {
    uniteLinks(component.m_inComponents, *i_from, before);
    component.addReachingLength(reaching);
  };
  extendOut(*i_from);
  forEach(before, extendOut);
  extendIn(*i_to);
  forEach(behind, extendIn);
  i_from->m_outgoingEdgesLength += length;
  i_to->m_incomingEdgesLength += length;
}

void CorvConnectedComponent::merge(const CorvConnectedComponentShPtr& i_from, const CorvConnectedComponentShPtr& i_to,
                                   const CorvEdgeShPtr& i_edge, CorvConnectedComponentShPtr& o_merged)
{
  const CorvRoadmapShPtr owner = i_from->roadmap();
  const double length = lengthOfEdge(*i_edge);
  o_merged = create(owner);
  owner->addConnectedComponent(o_merged);
  o_merged->m_reachableLength = i_from->reachableLength() + length;
  o_merged->m_reachingLength = i_to->reachingLength() + length;

  const TComponents parts = o_merged->takeClosures(i_from, i_to);
  for (const CorvConnectedComponentShPtr& part : parts)
    owner->removeConnectedComponent(part);
  o_merged->relinkNeighbours(o_merged);

  const auto largest = std::max_element(parts.begin(), parts.end(),
                                        [](const CorvConnectedComponentShPtr& a, const CorvConnectedComponentShPtr& b)
                                        { return a->m_nodes.size() < b->m_nodes.size(); });
  o_merged->takeLengths(parts, **largest, length);
  o_merged->takeIndex(parts);
  o_merged->takeNodes(parts, **largest);
}

/// @return what is merged: the two, and all that stand between them.
CorvConnectedComponent::TComponents CorvConnectedComponent::takeClosures(const CorvConnectedComponentShPtr& i_from,
                                                                         const CorvConnectedComponentShPtr& i_to)
{
  m_outComponents = i_from->m_outComponents;
  m_inComponents = i_to->m_inComponents;
  eraseLink(m_outComponents, *i_to);
  eraseLink(m_inComponents, *i_from);

  TComponents parts{i_from, i_to};
  TLinks between;
  std::set_intersection(m_outComponents.begin(), m_outComponents.end(), m_inComponents.begin(), m_inComponents.end(),
                        std::back_inserter(between),
                        [](const CLink& a, const CLink& b) { return a.serial < b.serial; });
  for (const CLink& link : between)
    parts.push_back(link.lock());
  const auto isBetween = [&](const CLink& link)
  {
    return std::binary_search(between.begin(), between.end(), link,
                              [](const CLink& a, const CLink& b) { return a.serial < b.serial; });
  };
  m_outComponents.erase(std::remove_if(m_outComponents.begin(), m_outComponents.end(), isBetween),
                        m_outComponents.end());
  m_inComponents.erase(std::remove_if(m_inComponents.begin(), m_inComponents.end(), isBetween), m_inComponents.end());
  return parts;
}

/// Puts this component in place of the merged ones in the closures of all others, whose sums are computed when asked
/// for.
void CorvConnectedComponent::relinkNeighbours(const CorvConnectedComponentShPtr& i_self)
{
  forEach(m_inComponents,
          [&](CorvConnectedComponent& component)
          {
            eraseDeadLinks(component.m_outComponents);
            uniteLinks(component.m_outComponents, *i_self, m_outComponents);
            component.m_reachableLength = -1.0;
          });
  forEach(m_outComponents,
          [&](CorvConnectedComponent& component)
          {
            eraseDeadLinks(component.m_inComponents);
            uniteLinks(component.m_inComponents, *i_self, m_inComponents);
            component.m_reachingLength = -1.0;
          });
}

/// Edges between the parts become inner ones. They are found from the smaller parts: each has an end there.
void CorvConnectedComponent::takeLengths(const TComponents& i_parts, const CorvConnectedComponent& i_largest,
                                         double i_edgeLength)
{
  double between = 0.0;
  for (const CorvConnectedComponentShPtr& part : i_parts)
  {
    m_length += part->m_length;
    m_incomingEdgesLength += part->m_incomingEdgesLength;
    m_outgoingEdgesLength += part->m_outgoingEdgesLength;
    if (part.get() == &i_largest)
      continue;
    for (const CorvNodeShPtr& node : part->m_nodes)
    {
      for (unsigned int i = 0; i < node->countOutEdges(); ++i)
      {
        const CorvConnectedComponentShPtr other = node->outEdge(i)->endNode()->connectedComponent();
        if (other != part && !other->roadmap())
          between += lengthOfEdge(*node->outEdge(i));
      }
      for (unsigned int i = 0; i < node->countInEdges(); ++i)
      {
        if (node->inEdge(i)->startNode()->connectedComponent().get() == &i_largest)
          between += lengthOfEdge(*node->inEdge(i));
      }
    }
  }
  m_length += between;
  // The edge that closes the cycle is no incoming or outgoing edge of any part.
  m_incomingEdgesLength -= between - i_edgeLength;
  m_outgoingEdgesLength -= between - i_edgeLength;
}

/// Takes over the index of the largest part that has one and enters the nodes of the others.
void CorvConnectedComponent::takeIndex(const TComponents& i_parts)
{
  CorvConnectedComponent* source = nullptr;
  for (const CorvConnectedComponentShPtr& part : i_parts)
  {
    if (part->isIndexCurrent() && (!source || part->m_nodes.size() > source->m_nodes.size()))
      source = part.get();
  }
  if (!source)
    return;
  m_index = std::move(source->m_index);
  for (const CorvConnectedComponentShPtr& part : i_parts)
  {
    if (part.get() == source)
      continue;
    for (const CorvNodeShPtr& node : part->m_nodes)
      enterIndex(node);
  }
}

void CorvConnectedComponent::takeNodes(const TComponents& i_parts, const CorvConnectedComponent& i_largest)
{
  m_cell = i_largest.m_cell;
  for (const CorvConnectedComponentShPtr& part : i_parts)
  {
    if (part->m_cell != m_cell)
      part->m_cell->next = m_cell;
    part->m_cell.reset(new CorvComponentCell);
    part->m_cell->component = part;
    uniteBox(m_box, part->m_box, *part->m_nodes.front()->config().space());
    m_minSizeForIndex = std::max(m_minSizeForIndex, part->m_minSizeForIndex);
    m_nodes.splice(m_nodes.end(), part->m_nodes);
    part->m_index.reset();
    part->m_inComponents.clear();
    part->m_outComponents.clear();
  }
  m_cell->component = self();
  if (!m_index && m_nodes.size() >= m_minSizeForIndex)
    makeIndex();
}
