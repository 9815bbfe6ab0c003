#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumNotificator.h"
#include "kinematics/orvUtility.h"
#include "metrics/orvMetricRevolute.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "paths/orvSMLinear.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvRoadmap.h"
#include "support/logCapture.h"
#include "support/plainSpace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace
{
using TSerials = std::set<std::uint64_t>;

/// What a walk along edges tells of a node.
struct Reach
{
  TSerials nodes; ///< the node itself included
  double edges = 0.0;
};

Reach walk(const CorvNodeShPtr& i_from, bool i_isForward)
{
  Reach reach;
  std::vector<CorvNodeShPtr> open{i_from};
  reach.nodes.insert(i_from->serial());
  while (!open.empty())
  {
    const CorvNodeShPtr node = open.back();
    open.pop_back();
    for (unsigned int i = 0; i < (i_isForward ? node->countOutEdges() : node->countInEdges()); ++i)
    {
      const CorvEdgeShPtr& edge = i_isForward ? node->outEdge(i) : node->inEdge(i);
      EXPECT_EQ(i_isForward ? edge->startNode() : edge->endNode(), node);
      reach.edges += edge->directPath()->length();
      const CorvNodeShPtr next = i_isForward ? edge->endNode() : edge->startNode();
      if (reach.nodes.insert(next->serial()).second)
        open.push_back(next);
    }
  }
  return reach;
}

/// x on a line, an angle on the circle; straight motions.
class Roadmap : public testing::Test
{
protected:
  Roadmap() : space(plainSpace({false, true}))
  {
    space->steeringMethod(CorvSMLinear::create());
    roadmap = CorvRoadmap::create(space);
  }
  void SetUp() override { CorvUtility::randomSeed(4711); }

  CorvConfig at(double i_x, double i_angle) const { return CorvConfig(space, {i_x, i_angle}); }
  CorvNodeShPtr newNode(double i_x, double i_angle) { return added(CorvNode::create(at(i_x, i_angle))); }
  CorvNodeShPtr added(const CorvNodeShPtr& i_node)
  {
    EXPECT_TRUE(roadmap->addNode(i_node).succeeded());
    return i_node;
  }
  CorvEdgeShPtr edgeBetween(const CorvNodeShPtr& i_a, const CorvNodeShPtr& i_b) const
  {
    return CorvEdge::create(space->steeringMethod()->makeDirectPath(i_a->config(), i_b->config()));
  }
  CorvEdgeShPtr link(const CorvNodeShPtr& i_a, const CorvNodeShPtr& i_b)
  {
    const CorvEdgeShPtr edge = edgeBetween(i_a, i_b);
    EXPECT_TRUE(roadmap->addEdge(i_a, i_b, edge).succeeded());
    return edge;
  }
  void doubleLink(const CorvNodeShPtr& i_a, const CorvNodeShPtr& i_b)
  {
    EXPECT_TRUE(roadmap->addDoubleEdge(i_a, i_b, edgeBetween(i_a, i_b), edgeBetween(i_b, i_a)).succeeded());
  }

  CorvNodeShPtr randomNode() const
  {
    const int count = static_cast<int>(roadmap->countNodes());
    return count == 0 ? CorvNodeShPtr() : roadmap->node(CorvUtility::random(0, count - 1));
  }
  CorvEdgeShPtr randomEdge() const
  {
    const CorvNodeShPtr node = randomNode();
    if (!node || node->countOutEdges() == 0)
      return CorvEdgeShPtr();
    return node->outEdge(CorvUtility::random(0, static_cast<int>(node->countOutEdges()) - 1));
  }

  enum ERemoval
  {
    EXACT, ///< by `removeNodesAndEdges`
    QUICK  ///< by `removeNode`, which leaves lengths as they were
  };

  void randomStep(ERemoval i_removal)
  {
    const int kind = CorvUtility::random(0, 99);
    const CorvNodeShPtr a = randomNode();
    const CorvNodeShPtr b = randomNode();
    const CorvEdgeShPtr edge = randomEdge();
    lmStatus status;
    if (kind < 30 || !a || a == b)
      newNode(CorvUtility::random(-2.0, 2.0), CorvUtility::random(-3.0, 3.0));
    else if (kind < 60)
      link(a, b);
    else if (kind < 80)
      doubleLink(a, b);
    else if (kind < 88)
      status = i_removal == QUICK ? roadmap->removeNode(a) : roadmap->removeNodesAndEdges({a}, {});
    else if (edge && kind < 95)
      status = roadmap->removeEdge(edge);
    else if (edge)
      status = roadmap->removeNodesAndEdges({a, b}, {edge});
    EXPECT_TRUE(status.succeeded());
  }

  void checkNode(const CorvNodeShPtr& i_node, bool i_areLengthsExact) const
  {
    const CorvConnectedComponentShPtr component = i_node->connectedComponent();
    ASSERT_TRUE(component && roadmap->containsConnectedComponent(component));
    EXPECT_EQ(std::count(component->beginNodeIterator(), component->endNodeIterator(), i_node), 1);
    const Reach out = walk(i_node, true);
    const Reach in = walk(i_node, false);
    for (unsigned int i = 0; i < roadmap->countNodes(); ++i)
    {
      const CorvNodeShPtr& other = roadmap->node(i);
      const bool reaches = out.nodes.count(other->serial()) != 0;
      EXPECT_EQ(roadmap->pathExists(i_node, other), reaches);
      EXPECT_EQ(component == other->connectedComponent(), reaches && in.nodes.count(other->serial()) != 0);
    }
    EXPECT_EQ(i_node->countTransitiveOutNodes() + 1, out.nodes.size());
    EXPECT_EQ(i_node->countTransitiveInNodes() + 1, in.nodes.size());
    if (i_areLengthsExact)
    {
      EXPECT_NEAR(component->reachableLength(), out.edges, 1e-8 * (1.0 + out.edges));
      EXPECT_NEAR(component->reachingLength(), in.edges, 1e-8 * (1.0 + in.edges));
    }
  }

  void checkBox(const CorvConnectedComponent& i_component) const
  {
    CorvConnectedComponent::TBox box;
    ASSERT_TRUE(i_component.boundingBox(box).succeeded());
    double low = 1e9;
    double high = -1e9;
    const double width = box[1].second - box[1].first;
    for (auto it = i_component.beginNodeIterator(); it != i_component.endNodeIterator(); ++it)
    {
      low = std::min(low, (*it)->config().dofValue(0));
      high = std::max(high, (*it)->config().dofValue(0));
      const double middle = box[1].first + 0.5 * width;
      EXPECT_LE(std::fabs(CorvMetricRevolute::circularDistance(middle, (*it)->config().dofValue(1))),
                0.5 * width + 1e-9);
    }
    EXPECT_EQ(box[0].first, low);
    EXPECT_EQ(box[0].second, high);
    EXPECT_TRUE(width <= ClumGeometryUtilities::PI || box[1].first == -ClumGeometryUtilities::PI);
  }

  void checkAll(bool i_areLengthsExact) const
  {
    unsigned int edges = 0;
    for (unsigned int i = 0; i < roadmap->countNodes(); ++i)
    {
      checkNode(roadmap->node(i), i_areLengthsExact);
      edges += roadmap->node(i)->countOutEdges();
      EXPECT_EQ(roadmap->nodeWithConfig(roadmap->node(i)->config()), roadmap->node(i));
    }
    EXPECT_EQ(roadmap->countEdges(), edges);
    unsigned int nodes = 0;
    for (unsigned int i = 0; i < roadmap->countConnectedComponents(); ++i)
    {
      const CorvConnectedComponentShPtr component = roadmap->connectedComponent(i);
      nodes += component->countNodes();
      EXPECT_TRUE(component->checkTransitiveInvariant());
      checkBox(*component);
      if (i_areLengthsExact)
        checkInnerLength(*component);
    }
    EXPECT_EQ(nodes, roadmap->countNodes());
  }

  void checkInnerLength(const CorvConnectedComponent& i_component) const
  {
    double inner = 0.0;
    for (auto it = i_component.beginNodeIterator(); it != i_component.endNodeIterator(); ++it)
    {
      for (unsigned int i = 0; i < (*it)->countOutEdges(); ++i)
      {
        const CorvEdgeShPtr& edge = (*it)->outEdge(i);
        inner += edge->endNode()->connectedComponent().get() == &i_component ? edge->directPath()->length() : 0.0;
      }
    }
    EXPECT_NEAR(i_component.length(), inner, 1e-8 * (1.0 + inner));
    EXPECT_TRUE(i_component.checkReachableLengthInvariant());
    EXPECT_TRUE(i_component.checkReachingLengthInvariant());
  }

  void checkNearest() const
  {
    const CorvConfig query = at(CorvUtility::random(-2.0, 2.0), CorvUtility::random(-4.0, 4.0));
    for (unsigned int i = 0; i < roadmap->countConnectedComponents(); ++i)
    {
      const CorvConnectedComponentShPtr component = roadmap->connectedComponent(i);
      const auto isNearer = [&](const CorvNodeShPtr& a, const CorvNodeShPtr& b)
      { return query.squaredDistanceTo(a->config()) < query.squaredDistanceTo(b->config()); };
      const CorvNodeShPtr expected =
        *std::min_element(component->beginNodeIterator(), component->endNodeIterator(), isNearer);
      EXPECT_EQ(component->nearestNode(query), expected);
    }
  }

  /// All that can be read of the graph, with the order of everything.
  std::vector<const void*> snapshot() const
  {
    std::vector<const void*> all;
    for (unsigned int i = 0; i < roadmap->countNodes(); ++i)
    {
      const CorvNodeShPtr& node = roadmap->node(i);
      all.insert(all.end(), {node.get(), node->connectedComponent().get(), node->roadmap().get()});
      for (unsigned int k = 0; k < node->countOutEdges(); ++k)
        all.insert(all.end(), {node->outEdge(k).get(), node->outEdge(k)->endNode().get()});
    }
    for (unsigned int i = 0; i < roadmap->countConnectedComponents(); ++i)
      all.push_back(roadmap->connectedComponent(i).get());
    return all;
  }

  CorvConfigSpaceShPtr space;
  CorvRoadmapShPtr roadmap;
};

struct NoticeLog
{
  std::vector<unsigned int> ids;
  std::vector<const void*> senders;
  void hear(const ShPtr<const ClumNotification>& i_notification)
  {
    ids.push_back(i_notification->id());
    senders.push_back(i_notification->sender().get());
  }
};
} // namespace

TEST_F(Roadmap, ClosureLengthsBoxesAndNearestNodesHoldUnderRandomEdits)
{
  unsigned int largest = 0;
  for (int step = 0; step < 2500 && !HasFailure(); ++step)
  {
    if (roadmap->countNodes() > 40)
      roadmap->clear();
    randomStep(EXACT);
    largest = std::max(largest, roadmap->countNodes());
    checkNearest();
    if (step % 3 == 0)
      checkAll(true);
  }
  EXPECT_GT(largest, 25u);
}

TEST_F(Roadmap, ClosureHoldsUnderRandomQuickRemovals)
{
  for (int step = 0; step < 2500 && !HasFailure(); ++step)
  {
    if (roadmap->countNodes() > 40)
      roadmap->clear();
    randomStep(QUICK);
    checkNearest();
    if (step % 3 == 0)
      checkAll(false);
  }
}

TEST_F(Roadmap, LengthsAreNotCountedTwiceWhereWaysJoin)
{
  const CorvNodeShPtr a = newNode(0.0, 0.0);
  const CorvNodeShPtr b = newNode(1.0, 0.0);
  const CorvNodeShPtr c = newNode(2.0, 0.0);
  const CorvNodeShPtr d = newNode(3.0, 0.0);
  link(a, c);
  link(c, d);
  link(a, c);
  link(b, c);
  link(a, b);
  checkAll(true);
  EXPECT_NEAR(a->connectedComponent()->reachableLength(), 2.0 + 1.0 + 2.0 + 1.0 + 1.0, 1e-12);
}

TEST_F(Roadmap, RefusedAdditionsLeaveItAsItWas)
{
  const CorvNodeShPtr a = newNode(0.0, 0.0);
  const CorvNodeShPtr b = newNode(1.0, 0.5);
  const CorvNodeShPtr c = newNode(2.0, 1.0);
  const CorvEdgeShPtr used = link(a, b);
  const auto before = snapshot();

  const CorvRoadmapShPtr other = CorvRoadmap::create(space);
  const CorvNodeShPtr foreign = CorvNode::create(at(5.0, 0.0));
  ASSERT_TRUE(other->addNode(foreign).succeeded());
  const CorvConfigSpaceShPtr otherSpace = plainSpace({false, true});
  const CorvNodeShPtr stranger = CorvNode::create(CorvConfig(otherSpace, {7.0, 7.0}));
  for (const CorvNodeShPtr& node : {CorvNodeShPtr(), a, foreign, stranger, CorvNode::create(at(1.0, 0.5)),
                                    CorvNode::create(at(1.0, 0.5 - 2.0 * ClumGeometryUtilities::PI))})
    EXPECT_TRUE(roadmap->addNode(node).failed());

  EXPECT_TRUE(roadmap->addEdge(a, CorvNodeShPtr(), edgeBetween(a, b)).failed());
  EXPECT_TRUE(roadmap->addEdge(a, b, CorvEdgeShPtr()).failed());
  EXPECT_TRUE(roadmap->addEdge(a, a, edgeBetween(a, b)).failed());
  EXPECT_TRUE(roadmap->addEdge(a, b, used).failed());
  EXPECT_TRUE(roadmap->addEdge(a, c, edgeBetween(a, b)).failed());
  EXPECT_TRUE(roadmap->addEdge(b, a, edgeBetween(a, b)).failed());
  EXPECT_TRUE(roadmap->addEdge(a, foreign, edgeBetween(a, foreign)).failed());
  EXPECT_TRUE(roadmap->addDoubleEdge(a, c, edgeBetween(a, c), edgeBetween(a, c)).failed());
  EXPECT_FALSE(CorvEdge::create(CorvDirectPathConstShPtr()));
  EXPECT_FALSE(CorvRoadmap::create(CorvConfigSpaceShPtr()));
  EXPECT_EQ(snapshot(), before);
  EXPECT_FALSE(CorvNode::create(at(1.0, 0.0))->roadmap());
}

TEST_F(Roadmap, RefusedRemovalsLeaveItAsItWas)
{
  const CorvNodeShPtr a = newNode(0.0, 0.0);
  const CorvNodeShPtr b = newNode(1.0, 0.5);
  doubleLink(a, b);
  const CorvRoadmapShPtr other = CorvRoadmap::create(space);
  const CorvNodeShPtr foreign = CorvNode::create(at(5.0, 0.0));
  ASSERT_TRUE(other->addNode(foreign).succeeded());
  const auto before = snapshot();
  const LogCapture log;
  EXPECT_TRUE(roadmap->removeNode(CorvNodeShPtr()).failed());
  EXPECT_TRUE(roadmap->removeNode(foreign).failed());
  EXPECT_TRUE(log.contains("CorvRoadmap::removeNodesAndEdges() unable to remove a node that is not in the roadmap."));
  EXPECT_TRUE(roadmap->removeEdge(edgeBetween(a, b)).failed());
  EXPECT_TRUE(log.contains("CorvRoadmap::removeNodesAndEdges() unable to remove an edge that is not in the roadmap."));
  EXPECT_TRUE(roadmap->removeNodesAndEdges({a, foreign}, {}).failed());
  EXPECT_TRUE(roadmap->removeNodesAndEdges({a, CorvNodeShPtr()}, {a->outEdge(0), CorvEdgeShPtr()}).failed());
  EXPECT_TRUE(roadmap->removeUnrelatedNode(a).failed());
  EXPECT_TRUE(a->connectedComponent()->removeIsolated(a).failed());
  EXPECT_TRUE(foreign->connectedComponent()->removeDeadEnd(a).failed());
  EXPECT_EQ(snapshot(), before);
}

TEST_F(Roadmap, TellsOfChangesButNotOfQuickRemovals)
{
  const ShPtr<NoticeLog> log(new NoticeLog);
  for (const unsigned int id : {CorvRoadmap::DID_ADD_NODE, CorvRoadmap::DID_ADD_EDGE, CorvRoadmap::DID_REMOVE_NODE,
                                CorvRoadmap::DID_REMOVE_EDGE, CorvRoadmap::DID_REMOVE_ALL_NODES_AND_EDGES})
    ASSERT_TRUE(roadmap->notificator()->subscribe(id, log, log.get(), &NoticeLog::hear).succeeded());
  const auto heard = [&]
  {
    std::vector<unsigned int> ids;
    ids.swap(log->ids);
    return ids;
  };
  using Ids = std::vector<unsigned int>;

  const CorvNodeShPtr a = newNode(0.0, 0.0);
  const CorvNodeShPtr b = newNode(1.0, 0.0);
  const CorvNodeShPtr c = newNode(2.0, 0.0);
  EXPECT_EQ(heard(), Ids(3, CorvRoadmap::DID_ADD_NODE));
  EXPECT_EQ(log->senders, std::vector<const void*>(3, roadmap.get()));
  doubleLink(a, b);
  EXPECT_EQ(a->connectedComponent(), b->connectedComponent());
  EXPECT_EQ(roadmap->countConnectedComponents(), 2u);
  EXPECT_EQ(heard(), Ids(2, CorvRoadmap::DID_ADD_EDGE));
  EXPECT_TRUE(a->isDeadEnd());
  EXPECT_TRUE(roadmap->removeNode(a).succeeded());
  EXPECT_TRUE(roadmap->removeNode(c).succeeded());
  EXPECT_EQ(roadmap->countConnectedComponents(), 1u);
  EXPECT_EQ(heard(), Ids());

  const CorvNodeShPtr d = newNode(3.0, 0.0);
  link(b, d);
  heard();
  EXPECT_TRUE(roadmap->removeNode(d).succeeded());
  EXPECT_EQ(heard(), (Ids{CorvRoadmap::DID_REMOVE_EDGE, CorvRoadmap::DID_REMOVE_NODE}));
  roadmap->clear();
  EXPECT_EQ(heard(), Ids{CorvRoadmap::DID_REMOVE_ALL_NODES_AND_EDGES});
  EXPECT_EQ(roadmap->countConnectedComponents(), 0u);
  const CorvRoadmapShPtr other = CorvRoadmap::create(space);
  EXPECT_TRUE(other->addNode(b).succeeded());
}

TEST_F(Roadmap, BoxOfAnAngleReachesOverTheWrapPoint)
{
  const CorvNodeShPtr a = newNode(0.0, 3.0);
  const CorvNodeShPtr b = newNode(1.0, -3.0);
  doubleLink(b, a); // b joins a
  CorvConnectedComponent::TBox box;
  ASSERT_TRUE(a->connectedComponent()->boundingBox(box).succeeded());
  EXPECT_DOUBLE_EQ(box[1].first, 3.0);
  EXPECT_NEAR(box[1].second, 2.0 * ClumGeometryUtilities::PI - 3.0, 1e-12);
  const CorvNodeShPtr c = newNode(0.5, 0.0);
  link(c, a);
  ASSERT_TRUE(c->connectedComponent()->outBoundingBox(box).succeeded());
  EXPECT_EQ(box[1], std::make_pair(-ClumGeometryUtilities::PI, ClumGeometryUtilities::PI));
  ASSERT_TRUE(c->connectedComponent()->inBoundingBox(box).succeeded());
  EXPECT_EQ(box[1], std::make_pair(0.0, 0.0));
  EXPECT_TRUE(CorvConnectedComponent::create(roadmap)->boundingBox(box).failed());
}

TEST_F(Roadmap, GapIsMeasuredFromAllThatIsReachedToAllThatReaches)
{
  const CorvNodeShPtr a = newNode(0.0, 0.0);
  const CorvNodeShPtr a2 = newNode(3.0, 0.0);
  const CorvNodeShPtr b2 = newNode(4.0, 0.0);
  const CorvNodeShPtr b = newNode(9.0, 0.0);
  link(a, a2);
  link(b2, b);
  CorvNodeShPtr from, to;
  EXPECT_DOUBLE_EQ(a->connectedComponent()->minDistanceTo(b->connectedComponent(), from, to), 1.0);
  EXPECT_EQ(from, a2);
  EXPECT_EQ(to, b2);
  EXPECT_DOUBLE_EQ(b->connectedComponent()->minDistanceTo(a->connectedComponent(), from, to), 9.0);
  EXPECT_EQ(a->connectedComponent()->minDistanceTo(a2->connectedComponent(), from, to), 0.0);
  EXPECT_FALSE(from || to);
  EXPECT_EQ(a->connectedComponent()->nearestReachableNode(at(3.5, 0.0)), a2);
  EXPECT_EQ(a->connectedComponent()->nearestReachingNode(at(3.5, 0.0)), a);
  EXPECT_EQ(b->connectedComponent()->nearestConnectedNode(at(3.5, 0.0)), b2);
}

TEST_F(Roadmap, FoldedNearNodesHoldEachNodeAtMostTwice)
{
  std::vector<CorvNodeShPtr> nodes;
  for (int i = 0; i < 30; ++i)
  {
    nodes.push_back(newNode(0.1 * i, 0.0));
    if (i > 0)
      link(nodes[i - 1], nodes[i]);
  }
  const CorvConfig query = at(0.0, 0.2);
  const std::vector<CorvNodeShPtr> found =
    nodes[0]->connectedComponent()->nearestReachableNodes(query, 1.5, 4, CorvMetricConstShPtr());
  double last = 0.0;
  std::map<CorvNodeShPtr, int> counts;
  for (const CorvNodeShPtr& node : found)
  {
    EXPECT_LE(last, query.distanceTo(node->config()));
    last = query.distanceTo(node->config());
    EXPECT_LE(++counts[node], 2);
  }
  for (const CorvNodeShPtr& node : nodes)
    EXPECT_EQ(counts.count(node) != 0, query.distanceTo(node->config()) < 1.5);
}

TEST_F(Roadmap, ShortDeadEndHangsOnACrossingWithLongerBranches)
{
  const CorvNodeShPtr crossing = newNode(0.0, 0.0);
  const CorvNodeShPtr tip = newNode(0.0, 0.1);
  doubleLink(crossing, tip);
  for (const double angle : {0.3, 0.6})
  {
    CorvNodeShPtr last = crossing;
    for (int i = 1; i <= 3; ++i)
    {
      const CorvNodeShPtr next = newNode(i, angle);
      doubleLink(last, next);
      last = next;
    }
    EXPECT_FALSE(last->isShortDeadEnd());
  }
  EXPECT_TRUE(crossing->isCrossing());
  EXPECT_TRUE(tip->isShortDeadEnd());
  const CorvNodeShPtr further = newNode(0.0, 0.2);
  doubleLink(tip, further);
  EXPECT_FALSE(tip->isShortDeadEnd());
  EXPECT_FALSE(further->isShortDeadEnd());
}

TEST_F(Roadmap, BranchOfAnyLengthIsMeasured)
{
  const unsigned int count = 100000;
  std::vector<CorvNodeShPtr> nodes;
  std::vector<CorvEdgeShPtr> edges;
  const CorvConfig place = newNode(0.0, 0.0)->config();
  const CorvDirectPathConstShPtr motion = CorvSMLinear::create()->makeDirectPath(place, newNode(1.0, 0.0)->config());
  for (unsigned int i = 0; i <= count; ++i)
    nodes.push_back(CorvNode::create(place));
  for (unsigned int i = 0; i < count; ++i)
  {
    edges.push_back(CorvEdge::create(motion));
    nodes[i]->addOutEdge(edges.back());
    nodes[i + 1]->addInEdge(edges.back());
  }
  EXPECT_EQ(edges[0]->longestBranch(0), count);
  EXPECT_EQ(edges[0]->longestBranch(1000), 1000u);
  EXPECT_EQ(edges[count - 3]->longestBranch(1000), 3u);
}
