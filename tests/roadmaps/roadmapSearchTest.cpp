#include "foundation/lumDescribe.h"
#include "kinematics/orvUtility.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "paths/orvSMLinear.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvRoadmap.h"
#include "support/discWorld.h"
#include "support/logCapture.h"
#include "support/plainSpace.h"
#include "validation/orvValidatorSet.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>

LUM_HANDLES(DearEdge)

/// An edge whose cost is not its length.
class DearEdge : public CorvEdge
{
  LUM_CONCRETE(DearEdge, CorvEdge);

public:
  static CorvEdgeShPtr create(const CorvDirectPathConstShPtr& i_directPath, double i_cost)
  {
    return lumCreate<DearEdge>(i_directPath, i_cost);
  }
  double cost() const override { return m_cost; }

protected:
  DearEdge() = default;
  DearEdge(const CorvDirectPathConstShPtr& i_directPath, double i_cost) : CorvEdge(i_directPath), m_cost(i_cost) {}
  lmStatus init(const DearEdgeWkPtr& i_weakPtr) { return CorvEdge::init(i_weakPtr); }

private:
  double m_cost = 0.0;
};

LUM_DESCRIBE(DearEdge)
{
}

namespace
{
class RoadmapSearch : public testing::Test
{
protected:
  RoadmapSearch() : space(plainSpace({false, false}))
  {
    space->steeringMethod(CorvSMLinear::create());
    roadmap = CorvRoadmap::create(space);
  }
  void SetUp() override { CorvUtility::randomSeed(99); }

  CorvNodeShPtr newNode(double i_x, double i_y)
  {
    const CorvNodeShPtr node = CorvNode::create(CorvConfig(space, {i_x, i_y}));
    EXPECT_TRUE(roadmap->addNode(node).succeeded());
    return node;
  }

  CorvDirectPathShPtr straight(const CorvNodeShPtr& i_a, const CorvNodeShPtr& i_b) const
  {
    return space->steeringMethod()->makeDirectPath(i_a->config(), i_b->config());
  }

  CorvEdgeShPtr link(const CorvNodeShPtr& i_a, const CorvNodeShPtr& i_b, double i_costFactor = 1.0)
  {
    const double cost = i_costFactor * i_a->config().distanceTo(i_b->config());
    const CorvEdgeShPtr edge = DearEdge::create(straight(i_a, i_b), cost);
    EXPECT_TRUE(roadmap->addEdge(i_a, i_b, edge).succeeded());
    return edge;
  }

  /// Dijkstra by repeated relaxation, without any heuristic.
  std::map<CorvNodeShPtr, double> costsFrom(const CorvNodeShPtr& i_start) const
  {
    std::map<CorvNodeShPtr, double> costs{{i_start, 0.0}};
    for (bool hasChanged = true; hasChanged;)
    {
      hasChanged = false;
      for (unsigned int i = 0; i < roadmap->countNodes(); ++i)
      {
        const CorvNodeShPtr& node = roadmap->node(i);
        for (unsigned int k = 0; costs.count(node) && k < node->countOutEdges(); ++k)
        {
          const double cost = costs[node] + node->outEdge(k)->cost();
          const auto entry = costs.emplace(node->outEdge(k)->endNode(), std::numeric_limits<double>::infinity()).first;
          hasChanged = hasChanged || cost < entry->second;
          entry->second = std::min(entry->second, cost);
        }
      }
    }
    return costs;
  }

  CorvConfigSpaceShPtr space;
  CorvRoadmapShPtr roadmap;
};
} // namespace

TEST_F(RoadmapSearch, FindsTheCheapestWayOrNone)
{
  std::vector<CorvNodeShPtr> nodes;
  for (int i = 0; i < 60; ++i)
    nodes.push_back(newNode(CorvUtility::random(0.0, 5.0), CorvUtility::random(0.0, 5.0)));
  for (int i = 0; i < 110; ++i)
  {
    const CorvNodeShPtr a = nodes[CorvUtility::random(0, 59)];
    const CorvNodeShPtr b = nodes[CorvUtility::random(0, 59)];
    if (a != b)
      link(a, b, CorvUtility::random(1.0, 4.0));
  }
  int found = 0;
  for (int query = 0; query < 400 && !HasFailure(); ++query)
  {
    const CorvNodeShPtr start = nodes[query % 60];
    const CorvNodeShPtr goal = nodes[CorvUtility::random(0, 59)];
    const auto costs = costsFrom(start);
    CorvPathShPtr path;
    CorvRoadmap::TEdgeList edges;
    ASSERT_EQ(roadmap->findPath(start, goal, path, edges), costs.count(goal) != 0);
    if (!path)
      continue;
    ++found;
    double cost = 0.0;
    CorvNodeShPtr node = start;
    for (const CorvEdgeShPtr& edge : edges)
    {
      EXPECT_EQ(edge->startNode(), node);
      node = edge->endNode();
      cost += edge->cost();
    }
    EXPECT_EQ(node, goal);
    EXPECT_NEAR(cost, costs.at(goal), 1e-9);
    EXPECT_EQ(path->countDirectPaths(), edges.size());
    EXPECT_TRUE(path->startsWith(start->config()) && path->endsWith(goal->config()));
  }
  EXPECT_GT(found, 100);
}

TEST_F(RoadmapSearch, ReopensANodeThatACheaperWayReachesLater)
{
  // By the straight estimate b is closed at cost 10 before c, which leads to it for 3, is taken up.
  const CorvNodeShPtr a = newNode(0.0, 0.0);
  const CorvNodeShPtr b = newNode(5.0, 0.0);
  const CorvNodeShPtr c = newNode(0.0, -20.0);
  const CorvNodeShPtr goal = newNode(6.0, 0.0);
  const auto dear = [&](const CorvNodeShPtr& from, const CorvNodeShPtr& to, double cost)
  {
    const CorvEdgeShPtr edge = DearEdge::create(straight(from, to), cost);
    ASSERT_TRUE(roadmap->addEdge(from, to, edge).succeeded());
  };
  dear(a, b, 10.0);
  dear(a, c, 1.0);
  dear(c, b, 2.0);
  dear(b, goal, 100.0);
  CorvPathShPtr path;
  CorvRoadmap::TEdgeList edges;
  ASSERT_TRUE(roadmap->findPath(a, goal, path, edges));
  EXPECT_EQ(edges.size(), 3u);
}

TEST_F(RoadmapSearch, WayToItselfIsEmptyAndNoWayLeavesThePathAlone)
{
  const CorvNodeShPtr a = newNode(0.0, 0.0);
  const CorvNodeShPtr b = newNode(1.0, 0.0);
  CorvPathShPtr path;
  CorvRoadmap::TEdgeList edges;
  EXPECT_TRUE(roadmap->findPath(a, a, path, edges));
  EXPECT_TRUE(edges.empty());
  EXPECT_EQ(path->countDirectPaths(), 0u);
  EXPECT_EQ(path->countConfigurations(), 1u);
  const CorvPathShPtr before = path;
  EXPECT_FALSE(roadmap->findPath(a, b, path, edges));
  EXPECT_EQ(path, before);
  EXPECT_EQ(path->countConfigurations(), 1u);
  EXPECT_FALSE(roadmap->findPath(a, CorvNode::create(a->config()), path, edges));
}

TEST_F(RoadmapSearch, ForcedPathBridgesTheShortestGap)
{
  const CorvNodeShPtr start = newNode(0.0, 0.0);
  const CorvNodeShPtr shore = newNode(2.0, 0.0);
  const CorvNodeShPtr far = newNode(3.0, 0.0);
  const CorvNodeShPtr goal = newNode(9.0, 0.0);
  link(start, shore);
  link(far, goal);
  CorvPathShPtr path;
  ASSERT_TRUE(roadmap->forcePath(start->config(), goal->config(), path).succeeded());
  ASSERT_EQ(path->countConfigurations(), 4u);
  EXPECT_EQ(path->configuration(1), shore->config());
  EXPECT_EQ(path->configuration(2), far->config());
  EXPECT_TRUE(path->endsWith(goal->config()));
  CorvPathShPtr none;
  EXPECT_TRUE(roadmap->forcePath(start->config(), CorvConfig(space, {1.0, 1.0}), none).failed());
  EXPECT_FALSE(none);
  ASSERT_TRUE(roadmap->forcePath(start, shore, path).succeeded());
  EXPECT_EQ(path->countDirectPaths(), 1u);
}

TEST(RoadmapValidSearch, GoesRoundEdgesThatAreNotValid)
{
  DiscWorld world({{5.0, 5.0, 1.0}});
  const auto node = [&](double x, double y)
  {
    const CorvNodeShPtr made = CorvNode::create(world.at(x, y));
    EXPECT_TRUE(world.roadmap->addNode(made).succeeded());
    return made;
  };
  const auto link = [&](const CorvNodeShPtr& a, const CorvNodeShPtr& b)
  {
    const auto path = world.space->steeringMethod()->makeDirectPath(a->config(), b->config());
    EXPECT_TRUE(world.roadmap->addEdge(a, b, CorvEdge::create(path)).succeeded());
  };
  const CorvNodeShPtr a = node(2.0, 5.0);
  const CorvNodeShPtr b = node(5.0, 8.0);
  const CorvNodeShPtr c = node(8.0, 5.0);
  link(a, c);
  CorvPathShPtr path;
  CorvRoadmap::TEdgeList edges;
  const CorvValidatorShPtr validator = world.space->directPathValidators();
  EXPECT_FALSE(world.roadmap->findValidPath(a, c, validator, ClumParameterMapConstShPtr(), path, edges));
  EXPECT_FALSE(path);
  link(a, b);
  link(b, c);
  ASSERT_TRUE(world.roadmap->findValidPath(a, c, validator, ClumParameterMapConstShPtr(), path, edges));
  EXPECT_EQ(edges.size(), 2u);
  edges.clear();
  EXPECT_TRUE(world.roadmap->findPath(a, c, path, edges));
  EXPECT_EQ(edges.size(), 1u);
}
