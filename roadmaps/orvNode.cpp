#include "roadmaps/orvNode.h"

#include "foundation/lumDescribe.h"
#include "roadmaps/componentCell.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvEdge.h"
#include "roadmaps/orvRoadmap.h"

#include <atomic>
#include <set>

LUM_DESCRIBE(CorvNode)
{
  i_class.creates("(const CorvConfig & i_config)", &Self::create);
}

LUM_DESCRIBE(CorvNodeFactory)
{
  i_class.creates("()", &Self::create);
}

namespace
{
std::uint64_t nextNodeSerial()
{
  static std::atomic<std::uint64_t> s_serial{0};
  return ++s_serial;
}

using TEdgeStack = ClumAtomicStackSafeSize<CorvEdgeShPtr>;

/// @return false, the stack as it was, if the edge is not there.
bool removeFromStack(TEdgeStack& io_edges, const CorvEdgeShPtr& i_edge)
{
  TEdgeStack survivors;
  for (unsigned int i = 0; i < io_edges.size(); ++i)
  {
    if (io_edges[i] != i_edge)
      survivors.push(io_edges[i]);
  }
  if (survivors.size() == io_edges.size())
    return false;
  io_edges.swap(survivors);
  return true;
}

using TVisitedNodes = std::set<CorvNodeConstShPtr, CorvNode::CSerialLess>;

/// The node after `i_node` on a chain walked along in-edges, null at the end of the chain.
CorvNodeConstShPtr nextOfChain(const CorvNode& i_node, const TVisitedNodes& i_visited)
{
  CorvNodeConstShPtr next = i_node.inEdge(0)->startNode();
  if (!i_node.isDeadEnd() && i_visited.count(next) != 0)
    next = i_node.countInEdges() > 1 ? i_node.inEdge(1)->startNode() : CorvNodeConstShPtr();
  return next && i_visited.count(next) == 0 ? next : CorvNodeConstShPtr();
}
} // namespace

CorvNodeShPtr CorvNode::create(const CorvConfig& i_config)
{
  return lumCreate<CorvNode>(i_config);
}

CorvNode::CorvNode() : m_serial(nextNodeSerial())
{
}

CorvNode::CorvNode(const CorvConfig& i_config) : m_config(i_config), m_serial(nextNodeSerial())
{
}

CorvNode::~CorvNode()
{
}

lmStatus CorvNode::init(const CorvNodeWkPtr& i_weakPtr)
{
  return ClumObject::init(i_weakPtr);
}

CorvConnectedComponentShPtr CorvNode::connectedComponent() const
{
  return m_componentCell ? lastComponentCell(m_componentCell)->component.lock() : CorvConnectedComponentShPtr();
}

void CorvNode::connectedComponent(const CorvConnectedComponentShPtr& i_component)
{
  m_componentCell = i_component ? i_component->m_cell : ShPtr<CorvComponentCell>();
}

void CorvNode::addInEdge(const CorvEdgeShPtr& i_edge)
{
  i_edge->endNode(self());
  m_inEdges.push(i_edge);
}

void CorvNode::addOutEdge(const CorvEdgeShPtr& i_edge)
{
  i_edge->startNode(self());
  m_outEdges.push(i_edge);
}

void CorvNode::removeInEdge(const CorvEdgeShPtr& i_edge)
{
  if (removeFromStack(m_inEdges, i_edge))
    i_edge->endNode(CorvNodeShPtr());
}

void CorvNode::removeOutEdge(const CorvEdgeShPtr& i_edge)
{
  if (removeFromStack(m_outEdges, i_edge))
    i_edge->startNode(CorvNodeShPtr());
}

void CorvNode::detach()
{
  m_roadmap.reset();
  m_componentCell.reset();
  for (unsigned int i = 0; i < m_outEdges.size(); ++i)
    m_outEdges[i]->detach();
  for (unsigned int i = 0; i < m_inEdges.size(); ++i)
    m_inEdges[i]->detach();
  m_outEdges.clear();
  m_inEdges.clear();
}

bool CorvNode::isDeadEnd() const
{
  return m_inEdges.size() == 1 && m_outEdges.size() == 1 && m_inEdges[0]->startNode() == m_outEdges[0]->endNode();
}

bool CorvNode::isShortDeadEnd() const
{
  if (!isDeadEnd())
    return false;
  TVisitedNodes visited;
  CorvNodeConstShPtr node = self();
  while (node && !node->isCrossing())
  {
    visited.insert(node);
    node = node->countInEdges() == 0 ? CorvNodeConstShPtr() : nextOfChain(*node, visited);
  }
  if (!node)
    return false;

  const unsigned int limit = 2 * static_cast<unsigned int>(visited.size());
  unsigned int longBranches = 0;
  for (unsigned int i = 0; i < node->countOutEdges() && longBranches < 2; ++i)
  {
    const CorvEdgeShPtr& edge = node->outEdge(i);
    if (visited.count(edge->endNode()) == 0 && edge->longestBranch(limit) == limit)
      ++longBranches;
  }
  return longBranches == 2;
}

unsigned int CorvNode::countTransitiveInNodes() const
{
  const CorvConnectedComponentShPtr component = connectedComponent();
  return component ? component->countNodes() - 1 + component->countTransitiveInNodes() : 0;
}

unsigned int CorvNode::countTransitiveOutNodes() const
{
  const CorvConnectedComponentShPtr component = connectedComponent();
  return component ? component->countNodes() - 1 + component->countTransitiveOutNodes() : 0;
}

bool CorvNode::hasTransitiveOutNode(const CorvNodeConstShPtr& i_node) const
{
  const CorvConnectedComponentShPtr own = connectedComponent();
  const CorvConnectedComponentShPtr other = i_node ? i_node->connectedComponent() : CorvConnectedComponentShPtr();
  return own && other && (own == other || own->hasTransitiveOutComponent(other));
}

std::size_t CorvNode::memorySize() const
{
  return sizeof(*this) + m_inEdges.allocatedBytes() + m_outEdges.allocatedBytes();
}

CorvNodeFactoryShPtr CorvNodeFactory::create()
{
  return lumCreate<CorvNodeFactory>();
}

CorvNodeFactoryShPtr CorvNodeFactory::defaultFactory()
{
  static const CorvNodeFactoryShPtr s_factory = create();
  return s_factory;
}

CorvNodeFactory::~CorvNodeFactory()
{
}

lmStatus CorvNodeFactory::init(const CorvNodeFactoryWkPtr& i_weakPtr)
{
  return ClumCodable::init(i_weakPtr);
}

CorvNodeShPtr CorvNodeFactory::makeNode(const CorvConfig& i_config) const
{
  return CorvNode::create(i_config);
}
