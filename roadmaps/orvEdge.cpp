#include "roadmaps/orvEdge.h"

#include "foundation/lumDescribe.h"
#include "paths/orvDirectPath.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRoadmap.h"

#include <algorithm>
#include <atomic>
#include <set>

LUM_DESCRIBE(CorvEdge)
{
  i_class.creates("(const CorvDirectPathConstShPtr & i_directPath)", &Self::create);
}

LUM_DESCRIBE(CorvEdgeFactory)
{
  i_class.creates("()", &Self::create);
}

namespace
{
std::uint64_t nextEdgeSerial()
{
  static std::atomic<std::uint64_t> s_serial{0};
  return ++s_serial;
}

using TBranchNodes = std::set<CorvNodeConstShPtr, CorvNode::CSerialLess>;

unsigned int longestBranchOf(const CorvEdge& i_edge, TBranchNodes& io_nodes, unsigned int i_limit)
{
  const CorvNodeShPtr end = i_edge.endNode();
  if (!end)
    return 0;
  if (!io_nodes.insert(end).second || i_limit == 1)
    return 1;
  unsigned int longest = 0;
  const CorvNodeShPtr start = i_edge.startNode();
  for (unsigned int i = 0; i < end->countOutEdges(); ++i)
  {
    const CorvEdgeShPtr& next = end->outEdge(i);
    if (next->endNode() != start)
      longest = std::max(longest, longestBranchOf(*next, io_nodes, i_limit == 0 ? 0 : i_limit - 1));
  }
  return longest + 1;
}
} // namespace

CorvEdgeShPtr CorvEdge::create(const CorvDirectPathConstShPtr& i_directPath)
{
  return lumCreate<CorvEdge>(i_directPath);
}

CorvEdge::CorvEdge() : m_serial(nextEdgeSerial())
{
}

CorvEdge::CorvEdge(const CorvDirectPathConstShPtr& i_directPath)
  : m_directPath(i_directPath), m_serial(nextEdgeSerial())
{
}

CorvEdge::~CorvEdge()
{
}

lmStatus CorvEdge::init(const CorvEdgeWkPtr& i_weakPtr)
{
  const lmStatus status = ClumObject::init(i_weakPtr);
  return status.failed() || m_directPath ? status : lmStatus(-1);
}

void CorvEdge::detach()
{
  m_roadmap.reset();
  m_startNode.reset();
  m_endNode.reset();
}

unsigned int CorvEdge::longestBranch(unsigned int i_limit) const
{
  TBranchNodes nodes;
  if (const CorvNodeShPtr start = startNode())
    nodes.insert(start);
  return longestBranchOf(*this, nodes, i_limit);
}

double CorvEdge::cost() const
{
  const CorvNodeShPtr start = startNode();
  const CorvNodeShPtr end = endNode();
  return start && end ? start->config().distanceTo(end->config()) : 0.0;
}

CorvEdgeFactoryShPtr CorvEdgeFactory::create()
{
  return lumCreate<CorvEdgeFactory>();
}

CorvEdgeFactoryShPtr CorvEdgeFactory::defaultFactory()
{
  static const CorvEdgeFactoryShPtr s_factory = create();
  return s_factory;
}

CorvEdgeFactory::~CorvEdgeFactory()
{
}

lmStatus CorvEdgeFactory::init(const CorvEdgeFactoryWkPtr& i_weakPtr)
{
  return ClumCodable::init(i_weakPtr);
}

CorvEdgeShPtr CorvEdgeFactory::makeEdge(const CorvDirectPathConstShPtr& i_directPath) const
{
  return CorvEdge::create(i_directPath);
}
