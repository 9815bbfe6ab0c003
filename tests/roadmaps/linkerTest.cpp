#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvUtility.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "paths/orvSteeringMethod.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvExtendDirect.h"
#include "roadmaps/orvLinkerKeepValidPart.h"
#include "roadmaps/orvRoadmap.h"
#include "support/discWorld.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{
const DiscWorld::Discs s_clutter = {
  {2.5, 2.5, 1.0}, {7.0, 3.0, 1.5}, {4.0, 7.0, 1.2}, {8.0, 8.0, 0.8}, {5.0, 5.0, 0.7}};
/// A wall from below that leaves a passage on top.
const DiscWorld::Discs s_wall = {{5.0, 0.0, 1.0}, {5.0, 1.5, 1.0}, {5.0, 3.0, 1.0},
                                 {5.0, 4.5, 1.0}, {5.0, 6.0, 1.0}, {5.0, 7.5, 1.0}};

CorvNodeShPtr addNode(const DiscWorld& i_world, const CorvConfig& i_config)
{
  const CorvNodeShPtr node = CorvNode::create(i_config);
  return i_world.roadmap->addNode(node).succeeded() ? node : CorvNodeShPtr();
}

/// Links two nodes whatever is in the way; in an oriented world from the first to the second.
void join(const DiscWorld& i_world, const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end)
{
  const CorvDirectPathShPtr path = i_world.space->steeringMethod()->makeDirectPath(i_start->config(), i_end->config());
  CorvLinker::roadmapLink(i_start, i_end, path, ClumParameterMapConstShPtr());
}

/// Chains of a few nodes each, every chain a component of its own.
void growForest(const DiscWorld& i_world, unsigned int i_chains)
{
  for (unsigned int chain = 0; chain < i_chains; ++chain)
  {
    CorvNodeShPtr previous;
    for (int count = CorvUtility::random(1, 6); count > 0; --count)
    {
      const CorvNodeShPtr node = addNode(i_world, i_world.randomFree());
      if (previous)
        join(i_world, previous, node);
      previous = node;
    }
  }
}

ClumParameterMapShPtr linkParameters(int i_count, CorvLinkerStandard::ELinkNodeStrategy i_strategy)
{
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  parameters->setInt(CorvLinkerStandard::nearestNodeCountParameterKey(), i_count);
  parameters->setInt(CorvLinkerStandard::linkNodeStrategyParameterKey(), i_strategy);
  return parameters;
}

/// All nodes of a component in the order in which they should be tried, cut to the count.
std::vector<CorvNodeShPtr> candidatesByBruteForce(const CorvNodeShPtr& i_node,
                                                  const CorvConnectedComponent& i_component, int i_count,
                                                  CorvLinkerStandard::ELinkNodeStrategy i_strategy, bool i_isFrom)
{
  std::vector<CorvNodeShPtr> all(i_component.beginNodeIterator(), i_component.endNodeIterator());
  const auto key = [&](const CorvNodeShPtr& i_other)
  {
    if (i_strategy == CorvLinkerStandard::LINK_NEAREST)
      return i_node->config().distanceTo(i_other->config());
    return -1.0 * (i_isFrom ? i_other->countOutEdges() : i_other->countInEdges());
  };
  std::stable_sort(all.begin(), all.end(),
                   [&](const CorvNodeShPtr& i_a, const CorvNodeShPtr& i_b) { return key(i_a) < key(i_b); });
  all.resize(std::min<std::size_t>(all.size(), i_count));
  return all;
}
} // namespace

TEST(CorvLinkerStandard, TriesTheNodesThatABruteForceSearchNames)
{
  CorvUtility::randomSeed(3);
  const DiscWorld world(s_clutter, true);
  growForest(world, 12);
  unsigned int found = 0;
  for (int round = 0; round < 60; ++round)
  {
    const int count = 1 + round % 4;
    const auto strategy = round % 2 ? CorvLinkerStandard::LINK_NEAREST : CorvLinkerStandard::LINK_BEST_CONNECTED;
    const bool isFrom = round % 3 != 0;
    const CorvNodeShPtr node = CorvNode::create(world.randomFree());
    for (unsigned int rank = 0; rank < world.roadmap->countConnectedComponents(); ++rank)
    {
      const CorvConnectedComponentShPtr component = world.roadmap->connectedComponent(rank);
      CorvNodeShPtr expected;
      for (const CorvNodeShPtr& candidate : candidatesByBruteForce(node, *component, count, strategy, isFrom))
        if (!expected && world.isFree(node->config(), candidate->config()))
          expected = candidate;
      CorvNodeShPtr linked;
      CorvDirectPathShPtr path;
      CorvLinkerStandard::canLinkNodeWithComponent(isFrom ? CorvLinker::LINK_FROM_NODE : CorvLinker::LINK_TO_NODE, node,
                                                   component, linkParameters(count, strategy), linked, path);
      ASSERT_EQ(linked, expected);
      if (!expected)
        continue;
      ++found;
      EXPECT_EQ(path->startConfiguration(), (isFrom ? node : linked)->config());
      EXPECT_EQ(path->endConfiguration(), (isFrom ? linked : node)->config());
    }
  }
  EXPECT_GT(found, 100u);
}

TEST(CorvLinkerStandard, LinksEveryComponentInReachAndNoOther)
{
  CorvUtility::randomSeed(4);
  const DiscWorld world(s_clutter);
  growForest(world, 10);
  const CorvNodeShPtr node = addNode(world, world.randomFree());
  std::vector<std::pair<CorvNodeShPtr, bool>> expected; // a node of each component, and whether it is in reach
  for (unsigned int rank = 0; rank < world.roadmap->countConnectedComponents(); ++rank)
  {
    const CorvConnectedComponentShPtr component = world.roadmap->connectedComponent(rank);
    bool isInReach = false;
    for (const CorvNodeShPtr& candidate :
         candidatesByBruteForce(node, *component, 2, CorvLinkerStandard::LINK_NEAREST, true))
      isInReach = isInReach || world.isFree(node->config(), candidate->config());
    if (component != node->connectedComponent())
      expected.emplace_back(*component->beginNodeIterator(), isInReach);
  }
  const CorvLinkerShPtr linker = CorvLinkerStandard::create();
  EXPECT_TRUE(
    linker->link(CorvLinker::LINK_BOTH, node, linkParameters(2, CorvLinkerStandard::LINK_NEAREST)).succeeded());
  unsigned int linkCount = 0;
  for (const auto& [other, isInReach] : expected)
  {
    EXPECT_EQ(other->connectedComponent() == node->connectedComponent(), isInReach);
    linkCount += isInReach ? 1 : 0;
  }
  EXPECT_GT(linkCount, 2u);
  EXPECT_LT(linkCount, expected.size());
  EXPECT_EQ(node->countOutEdges(), linkCount); // one pass: a two-way link for each component
  EXPECT_EQ(node->countInEdges(), linkCount);
  EXPECT_TRUE(linker->link(CorvLinker::LINK_BOTH, CorvNode::create(world.at(1.0, 1.0))).failed());
}

TEST(CorvLinkerStandard, LeavesOutWhatALinkMadeReachable)
{
  const DiscWorld world(DiscWorld::Discs(), true);
  const CorvNodeShPtr first = addNode(world, world.at(1.0, 1.0));
  const CorvNodeShPtr second = addNode(world, world.at(9.0, 1.0));
  join(world, first, second);
  const CorvNodeShPtr node = addNode(world, world.at(5.0, 5.0));
  const CorvLinkerShPtr linker = CorvLinkerStandard::create();
  EXPECT_TRUE(linker->link(CorvLinker::LINK_FROM_NODE, node).succeeded());
  ASSERT_EQ(node->countOutEdges(), 1u);
  EXPECT_EQ(node->outEdge(0)->endNode(), first);
  EXPECT_EQ(node->countInEdges(), 0u);
  EXPECT_TRUE(linker->link(CorvLinker::LINK_TO_NODE, node).succeeded());
  ASSERT_EQ(node->countInEdges(), 1u);
  EXPECT_EQ(node->inEdge(0)->startNode(), second);
  EXPECT_EQ(world.roadmap->countConnectedComponents(), 1u);
}

TEST(CorvLinkerKeepValidPart, GrowsTheOtherTreeUpToTheObstacle)
{
  for (const bool isOriented : {false, true})
    for (const auto direction : {CorvLinker::LINK_FROM_NODE, CorvLinker::LINK_TO_NODE})
    {
      const DiscWorld world(s_wall, isOriented);
      const CorvNodeShPtr near = addNode(world, world.at(9.0, 3.0));
      const CorvNodeShPtr far = addNode(world, world.at(9.0, 5.0));
      join(world, near, far);
      if (isOriented)
        join(world, far, near);
      const CorvNodeShPtr free = addNode(world, world.at(1.0, 6.0));
      const CorvNodeShPtr node = addNode(world, world.at(1.0, 3.0));
      const CorvLinkerKeepValidPartShPtr linker = CorvLinkerKeepValidPart::create();
      const ClumParameterMapShPtr parameters = linkParameters(2, CorvLinkerStandard::LINK_NEAREST);
      EXPECT_TRUE(linker->link(direction, node, parameters).succeeded());
      EXPECT_TRUE(world.isSound(*world.roadmap));
      // One tip for each of the two nodes behind the wall; the free node is linked and gets none.
      ASSERT_EQ(world.roadmap->countNodes(), 6u);
      EXPECT_EQ(free->countInEdges() + free->countOutEdges(), isOriented ? 1u : 2u);
      const CorvNodeShPtr tip = world.roadmap->node(4);
      EXPECT_NEAR(tip->config().dofValue(0), 6.01, 1e-9);
      EXPECT_NEAR(tip->config().dofValue(1), 3.0, 1e-9);
      const bool growsBackwards = !isOriented || direction == CorvLinker::LINK_FROM_NODE;
      EXPECT_EQ(growsBackwards ? tip->outEdge(0)->endNode() : tip->inEdge(0)->startNode(), near);

      linker->minimumPartLength(8.0);
      const CorvNodeShPtr other = addNode(world, world.at(1.0, 1.0));
      const unsigned int before = world.roadmap->countNodes();
      linker->link(direction, other, parameters);
      EXPECT_EQ(world.roadmap->countNodes(), before);
    }
}

TEST(CorvExtendDirect, KeepsTheValidPartWithinItsBounds)
{
  CorvUtility::randomSeed(5);
  const DiscWorld world(s_clutter);
  const CorvExtendDirectShPtr extend = CorvExtendDirect::create();
  EXPECT_TRUE(extend->restrictionBounds(2.0, 1.0).failed());
  EXPECT_TRUE(extend->restrictionBounds(-1.0, 1.0).failed());
  EXPECT_LT(extend->upperRestrictionBound(), 0.0);
  CorvExtendDirect::resetExtensionCount();
  unsigned int cutCount = 0;
  for (int round = 0; round < 300; ++round)
  {
    const bool isRestricted = round % 3 == 0;
    EXPECT_TRUE(extend->restrictionBounds(isRestricted ? 0.5 : -1.0, isRestricted ? 1.5 : -1.0).succeeded());
    const bool isFrom = round % 2 == 0;
    const CorvConfig root = world.randomFree();
    const CorvConfig target = world.randomFree();
    const CorvPathShPtr input =
      isFrom ? CorvPath::createWithDirectPath(root, target) : CorvPath::createWithDirectPath(target, root);
    CorvPathShPtr output;
    const lmStatus status =
      extend->plan(input, isFrom ? CorvPathPlanner::STABLE_START : CorvPathPlanner::STABLE_END, output);
    ASSERT_EQ(status.succeeded(), static_cast<bool>(output));
    const bool isBlocked = !world.isFree(root, target);
    if (!output)
    {
      EXPECT_TRUE(isBlocked);
      continue;
    }
    ASSERT_EQ(output->countDirectPaths(), 1u);
    const CorvDirectPathConstShPtr part = output->directPath(0);
    const CorvConfig tip = isFrom ? part->endConfiguration() : part->startConfiguration();
    EXPECT_EQ(isFrom ? part->startConfiguration() : part->endConfiguration(), root);
    EXPECT_TRUE(part->isValid() && part->hasReports());
    EXPECT_TRUE(world.isFree(root, tip));
    EXPECT_NEAR(root.distanceTo(tip) + tip.distanceTo(target), root.distanceTo(target), 1e-9);
    EXPECT_LE(part->length(), isRestricted ? 1.5 : 20.0);
    if (tip == target)
      continue;
    ++cutCount;
    // What stops short of the target, and of the bounds, stops at an obstacle.
    EXPECT_TRUE(isBlocked || (isRestricted && part->length() >= 0.5));
  }
  EXPECT_GT(cutCount, 100u);
  EXPECT_EQ(CorvExtendDirect::extensionCount(), 300u);
  CorvPathShPtr output;
  const CorvPathShPtr input = CorvPath::createWithDirectPath(world.at(1.0, 1.0), world.at(1.0, 2.0));
  EXPECT_TRUE(extend->plan(input, CorvPathPlanner::STABLE_ENDS, output).failed());
}
