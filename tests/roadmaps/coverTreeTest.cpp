#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvUtility.h"
#include "metrics/orvMetricManhattan.h"
#include "metrics/orvMetricZero.h"
#include "metrics/orvRWLinearDof.h"
#include "paths/orvDirectPath.h"
#include "paths/orvSMLinear.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvEdge.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRoadmap.h"
#include "support/plainSpace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

LUM_HANDLES(TroubleMetric)

/// A metric that is none: undefined from some place on, or longer one way than the other.
class TroubleMetric : public CorvMetric
{
  LUM_CONCRETE(TroubleMetric, CorvMetric);

public:
  enum EKind
  {
    LOPSIDED,
    UNDEFINED,
    INFINITE
  };
  static TroubleMetricShPtr create(EKind i_kind) { return lumCreate<TroubleMetric>(i_kind); }
  CorvMetricShPtr clone() const override { return create(m_kind); }
  double distance(const CorvConfig& i_a, const CorvConfig& i_b) const override
  {
    const double difference = i_b.dofValue(0) - i_a.dofValue(0);
    if (m_kind == LOPSIDED)
      return difference > 0.0 ? difference : -3.0 * difference;
    if (std::fabs(difference) < 2.0)
      return std::fabs(difference);
    return m_kind == UNDEFINED ? std::numeric_limits<double>::quiet_NaN() : std::numeric_limits<double>::infinity();
  }

protected:
  TroubleMetric() = default;
  explicit TroubleMetric(EKind i_kind) : CorvMetric("test.trouble", CorvRWLinearDof::create()), m_kind(i_kind) {}
  lmStatus init(const TroubleMetricWkPtr& i_weakPtr) { return CorvMetric::init(i_weakPtr); }

private:
  EKind m_kind = LOPSIDED;
};

LUM_DESCRIBE(TroubleMetric)
{
}

namespace
{
/// A component that is filled by hand, so that equal places and equal distances can be had, with the scan as oracle.
class CoverTree : public testing::Test
{
protected:
  void SetUp() override { CorvUtility::randomSeed(20260); }

  void use(const CorvConfigSpaceShPtr& i_space)
  {
    space = i_space;
    roadmap = CorvRoadmap::create(space);
    component = CorvConnectedComponent::create(roadmap);
    nodes.clear();
  }

  void addNode(const CorvConfig& i_config)
  {
    nodes.push_back(CorvNode::create(i_config));
    component->addNode(nodes.back());
  }

  CorvConfig randomConfig(double i_size) const
  {
    std::vector<double> values(space->size());
    for (double& value : values)
      value = CorvUtility::random(-i_size, i_size);
    return CorvConfig(space, values);
  }

  CorvConfig near(const CorvConfig& i_config, double i_step) const
  {
    CorvConfig config = i_config;
    config += randomConfig(i_step);
    return config;
  }

  CorvNodeShPtr scan(const CorvConfig& i_config) const
  {
    CorvNodeShPtr nearest;
    double best = std::numeric_limits<double>::infinity();
    for (const CorvNodeShPtr& node : nodes)
    {
      const double distance = i_config.squaredDistanceTo(node->config());
      if (distance < best)
      {
        best = distance;
        nearest = node;
      }
    }
    return nearest;
  }

  void expectNearestAsScanned(const CorvConfig& i_config) const
  {
    const CorvNodeShPtr found = component->nearestNode(i_config);
    const CorvNodeShPtr expected = scan(i_config);
    ASSERT_EQ(found, expected) << (found ? i_config.distanceTo(found->config()) : -1.0) << " instead of "
                               << (expected ? i_config.distanceTo(expected->config()) : -1.0);
  }

  /// A tree grown by steps, as builders leave it.
  void growCluster(unsigned int i_count, double i_step)
  {
    if (nodes.empty())
      addNode(randomConfig(1.0));
    while (nodes.size() < i_count)
      addNode(near(nodes[CorvUtility::random(0, static_cast<int>(nodes.size()) - 1)]->config(), i_step));
  }

  void checkQueries(unsigned int i_count, double i_size)
  {
    for (unsigned int i = 0; i < i_count && !HasFatalFailure(); ++i)
    {
      expectNearestAsScanned(randomConfig(i_size));
      expectNearestAsScanned(near(nodes[i % nodes.size()]->config(), 1e-3));
      expectNearestAsScanned(nodes[(7 * i) % nodes.size()]->config());
    }
  }

  CorvConfigSpaceShPtr space;
  CorvRoadmapShPtr roadmap;
  CorvConnectedComponentShPtr component;
  std::vector<CorvNodeShPtr> nodes;
};
} // namespace

TEST_F(CoverTree, AnswersAsTheScanOverClusteredAndUniformNodes)
{
  for (const double step : {0.05, 0.4, 10.0})
  {
    use(plainSpace({false, false, false, true, true, true}));
    for (const unsigned int count : {12u, 65u, 1000u, 5000u})
    {
      growCluster(count, step);
      ASSERT_TRUE(component->hasCoverTree());
      checkQueries(100, 4.0);
    }
  }
}

TEST_F(CoverTree, AnswersAsTheScanAroundTheSeamAndTurnsAway)
{
  const double pi = ClumGeometryUtilities::PI;
  // Angles on either side of the seam and upon it, and some that were turned on and on.
  for (const double center : {pi, -pi, 0.0, 8.0, 40.0})
  {
    use(plainSpace({true, true, false}));
    for (int i = 0; i < 600; ++i)
    {
      std::vector<double> values = {center, CorvUtility::random(-20.0, 20.0), CorvUtility::random(-1.0, 1.0)};
      if (i % 10 != 0)
        values[0] += CorvUtility::random(-0.5, 0.5);
      addNode(CorvConfig(space, values));
    }
    checkQueries(100, 4.0);
    checkQueries(100, 15.0);
    for (int i = 0; i < 50; ++i)
      expectNearestAsScanned(
        CorvConfig(space, {i % 2 == 0 ? pi : -pi, CorvUtility::random(-7.0, 7.0), CorvUtility::random(-1.0, 1.0)}));
  }
}

TEST_F(CoverTree, AnswersAsTheScanOverNodesThatComeInOrder)
{
  // One way, to and fro, and all at one place.
  for (const int period : {100000, 40, 1})
  {
    use(plainSpace({false, true}));
    for (int i = 0; i < 2500; ++i)
      addNode(CorvConfig(space, {0.01 * (i % period), 0.001 * (i % period)}));
    checkQueries(60, 30.0);
    for (int i = 0; i < 60; ++i)
      expectNearestAsScanned(CorvConfig(space, {0.005 * CorvUtility::random(0, 5000), 0.0}));
  }
}

TEST_F(CoverTree, HoldsDofsWithoutWeightAndHugeValues)
{
  const double huge = 1e200; // its square is infinite
  use(plainSpace({false, false, true}));
  space->dof(1)->weightMultiplier(0.0);
  for (int i = 0; i < 300; ++i)
  {
    const double x = i % 7 == 0 ? huge * CorvUtility::random(-1.0, 1.0) : CorvUtility::random(-5.0, 5.0);
    const double y = i % 5 == 0 ? 1e308 * CorvUtility::random(-1.0, 1.0) : CorvUtility::random(-5.0, 5.0);
    addNode(CorvConfig(space, {x, y, CorvUtility::random(-3.0, 3.0)}));
  }
  ASSERT_TRUE(component->hasCoverTree());
  checkQueries(100, 8.0);
  for (const double y : {0.0, 1e308, -1e308})
  {
    expectNearestAsScanned(CorvConfig(space, {0.0, y, 0.0}));
    expectNearestAsScanned(CorvConfig(space, {huge, y, 1.0}));
  }
  expectNearestAsScanned(CorvConfig(space, {std::numeric_limits<double>::quiet_NaN(), 0.0, 0.0}));
  expectNearestAsScanned(CorvConfig(space, {0.0, std::numeric_limits<double>::infinity(), 0.0}));
}

TEST_F(CoverTree, IsGivenUpWhenANodeIsNowhere)
{
  for (const double number : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
  {
    use(plainSpace({false, true}));
    growCluster(100, 0.3);
    ASSERT_TRUE(component->hasCoverTree());
    addNode(CorvConfig(space, {number, 0.0}));
    EXPECT_FALSE(component->hasCoverTree());
    checkQueries(30, 2.0);
  }
}

TEST_F(CoverTree, AnswersAsTheScanAfterMergesAndRemovals)
{
  use(plainSpace({false, true, true}));
  const CorvSteeringMethodConstShPtr steering = CorvSMLinear::create();
  const auto edge = [&](const CorvNodeShPtr& i_from, const CorvNodeShPtr& i_to)
  { return CorvEdge::create(steering->makeDirectPath(i_from->config(), i_to->config())); };
  const auto link = [&](const CorvNodeShPtr& i_a, const CorvNodeShPtr& i_b)
  { EXPECT_TRUE(roadmap->addDoubleEdge(i_a, i_b, edge(i_a, i_b), edge(i_b, i_a)).succeeded()); };
  const auto grow = [&](unsigned int i_count)
  {
    const unsigned int first = static_cast<unsigned int>(nodes.size());
    while (nodes.size() < first + i_count)
    {
      const CorvNodeShPtr from =
        nodes.size() == first ? nullptr : nodes[CorvUtility::random(int(first), int(nodes.size()) - 1)];
      nodes.push_back(CorvNode::create(from ? near(from->config(), 0.3) : randomConfig(3.0)));
      ASSERT_TRUE(roadmap->addNode(nodes.back()).succeeded());
      if (from)
        link(from, nodes.back());
    }
  };
  for (const unsigned int count : {700u, 8u, 900u, 40u})
  {
    grow(count);
    link(nodes.front(), nodes.back());
    component = nodes.front()->connectedComponent();
    ASSERT_EQ(component->countNodes(), nodes.size());
    EXPECT_TRUE(component->hasCoverTree());
    checkQueries(50, 4.0);
  }
  for (unsigned int removed = 0; removed < 20; ++removed)
  {
    const auto tip =
      std::find_if(nodes.begin(), nodes.end(), [](const CorvNodeShPtr& node) { return node->isDeadEnd(); });
    ASSERT_NE(tip, nodes.end());
    const CorvConfig place = (*tip)->config();
    ASSERT_TRUE(roadmap->removeNode(*tip).succeeded());
    nodes.erase(tip);
    expectNearestAsScanned(place);
    grow(1);
    link(nodes.front(), nodes.back());
    EXPECT_TRUE(component->hasCoverTree());
    expectNearestAsScanned(place);
  }
}

TEST_F(CoverTree, AnswersAsTheScanWithAMetricThatMustBeCalled)
{
  use(plainSpace({false, false, false}));
  space->metric(CorvMetricManhattan::create());
  growCluster(800, 0.3);
  ASSERT_TRUE(component->hasCoverTree());
  checkQueries(100, 3.0);
}

TEST_F(CoverTree, FirstMadeNodeWinsAmongEqualDistancesAndEqualPlaces)
{
  use(plainSpace({false, false}));
  for (const unsigned int count : {400u, 1600u})
  {
    while (nodes.size() < count)
      addNode(CorvConfig(space, {double(CorvUtility::random(0, 9)), double(CorvUtility::random(0, 9))}));
    EXPECT_EQ(component->countNodes(), count);
    for (int x = -1; x <= 20; ++x)
    {
      for (int y = -1; y <= 20; ++y)
        expectNearestAsScanned(CorvConfig(space, {0.5 * x, 0.5 * y}));
    }
  }
}

TEST_F(CoverTree, HoldsPlacesOfVeryDifferentScale)
{
  for (const int repetitions : {1, 15})
  {
    use(plainSpace({false, false}));
    for (int i = 0; i < repetitions; ++i)
      for (int exponent = -40; exponent < 40; ++exponent)
        addNode(CorvConfig(space, {std::ldexp(1.0 + i / 16.0, exponent), std::ldexp(-1.5, exponent / 2)}));
    for (const CorvNodeShPtr& node : nodes)
    {
      expectNearestAsScanned(node->config());
      expectNearestAsScanned(node->config() * 1.3);
    }
  }
}

TEST_F(CoverTree, StandsFromTenNodesOnAndGoesWithTheMetricOrTheVersion)
{
  use(plainSpace({false, false}));
  while (nodes.size() < 9)
    addNode(randomConfig(1.0));
  EXPECT_FALSE(component->hasCoverTree());
  addNode(randomConfig(1.0));
  EXPECT_TRUE(component->hasCoverTree());
  EXPECT_GT(component->coverTreeMemorySize(), 0u);

  space->metric(CorvMetricManhattan::create());
  expectNearestAsScanned(randomConfig(1.0));
  EXPECT_FALSE(component->hasCoverTree());
  addNode(randomConfig(1.0));
  EXPECT_TRUE(component->hasCoverTree());

  space->dof(0)->weightMultiplier(5.0);
  checkQueries(20, 1.0);
  EXPECT_FALSE(component->hasCoverTree());
  addNode(randomConfig(1.0));
  EXPECT_TRUE(component->hasCoverTree());
  checkQueries(20, 1.0);
}

TEST_F(CoverTree, IsNotUsedForMetricsThatAreNone)
{
  for (const TroubleMetric::EKind kind : {TroubleMetric::LOPSIDED, TroubleMetric::UNDEFINED, TroubleMetric::INFINITE})
  {
    use(plainSpace({false}));
    space->metric(TroubleMetric::create(kind));
    for (int i = 0; i < 60; ++i)
      addNode(randomConfig(3.0));
    EXPECT_FALSE(component->hasCoverTree()) << kind;
    checkQueries(30, 4.0);
  }
  use(plainSpace({false}));
  space->metric(CorvMetricZero::create());
  for (int i = 0; i < 30; ++i)
    addNode(randomConfig(3.0));
  checkQueries(10, 3.0);

  use(plainSpace({false, false}));
  space->steeringMethod(CorvSMLinear::create(true));
  for (int i = 0; i < 30; ++i)
    addNode(randomConfig(3.0));
  EXPECT_FALSE(component->hasCoverTree());
}

TEST_F(CoverTree, ForeignMetricIsScanned)
{
  use(plainSpace({false, false}));
  addNode(CorvConfig(space, {0.0, 0.0}));
  addNode(CorvConfig(space, {1.0, 1.0}));
  addNode(CorvConfig(space, {1.6, 0.0}));
  while (nodes.size() < 20)
    addNode(CorvConfig(space, {10.0 + nodes.size(), 0.0}));
  const CorvConfig query(space, {2.4, 1.0});
  EXPECT_EQ(component->nearestNode(query), nodes[2]);
  EXPECT_EQ(component->nearestNode(query, CorvMetricManhattan::create()), nodes[1]);
  EXPECT_EQ(component->nearestNode(query, space->metric()), nodes[2]);
}

TEST_F(CoverTree, NearestNodesGivesTheCountAndAllThatAreNearer)
{
  use(plainSpace({false}));
  for (int i = 0; i < 20; ++i)
    addNode(CorvConfig(space, {double(i)}));
  const CorvConfig query(space, {4.0});
  const auto distances = [&](double maxDistance, unsigned int count)
  {
    std::vector<double> keys;
    for (const auto& entry : component->nearestNodes(query, maxDistance, count))
    {
      EXPECT_DOUBLE_EQ(entry.first, query.distanceTo(entry.second->config()));
      keys.push_back(entry.first);
    }
    return keys;
  };
  EXPECT_EQ(distances(0.0, 3), (std::vector<double>{1.0, 1.0, 2.0}));
  EXPECT_EQ(distances(2.5, 1), (std::vector<double>{1.0, 1.0, 2.0, 2.0}));
  EXPECT_EQ(distances(1e9, 1).size(), 19u);
  EXPECT_TRUE(distances(0.0, 0).empty());
  EXPECT_TRUE(CorvConnectedComponent::create(roadmap)->nearestNodes(query, 1.0, 1).empty());
  EXPECT_FALSE(CorvConnectedComponent::create(roadmap)->nearestNode(query));
}
