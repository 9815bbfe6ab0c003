#include "roadmaps/orvEdge.h"

#include "foundation/lumDescribe.h"
#include "paths/orvDirectPath.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRoadmap.h"

#include <algorithm>
#include <atomic>
#include <set>
#include <vector>

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

/// An edge on the branch that is being followed.
struct CBranchStep
{
  CorvNodeShPtr start;
  CorvNodeShPtr end;
  unsigned int limit;
  unsigned int next;    ///< out-edge of the end to be followed next
  unsigned int longest; ///< of those that were
};

/// Depth first, without recursion: branches may be long.
unsigned int longestBranchOf(const CorvEdge& i_edge, TBranchNodes& io_nodes, unsigned int i_limit)
{
  std::vector<CBranchStep> way;
  unsigned int length = 0; // of the branch that was just ended
  const auto follow = [&](const CorvEdge& edge, unsigned int limit)
  {
    const CorvNodeShPtr end = edge.endNode();
    const bool isEnd = !end || !io_nodes.insert(end).second || limit == 1;
    if (isEnd)
      length = end ? 1 : 0;
    else
      way.push_back({edge.startNode(), end, limit, 0, 0});
    return isEnd;
  };
  bool isEnded = follow(i_edge, i_limit);
  while (!way.empty())
  {
    CBranchStep& step = way.back();
    if (isEnded)
      step.longest = std::max(step.longest, length);
    isEnded = false;
    if (step.next < step.end->countOutEdges())
    {
      const CorvEdgeShPtr& edge = step.end->outEdge(step.next++);
      if (edge->endNode() != step.start)
        isEnded = follow(*edge, step.limit == 0 ? 0 : step.limit - 1);
      continue;
    }
    length = step.longest + 1;
    isEnded = true;
    way.pop_back();
  }
  return length;
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
