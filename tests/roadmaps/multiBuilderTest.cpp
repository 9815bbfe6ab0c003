#include "foundation/lumAutotuningParallelCooperativeOperation.h"
#include "foundation/lumParallelCooperativeOperation.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumSequenceOperation.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvUtility.h"
#include "manifolds/orvManifoldUnion.h"
#include "manifolds/orvPointManifold.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvExtendDirect.h"
#include "roadmaps/orvInjectionBuilder.h"
#include "roadmaps/orvLinkerKeepValidPart.h"
#include "roadmaps/orvMultiDiffusingBuilder.h"
#include "roadmaps/orvRoadmap.h"
#include "roadmaps/orvSamplingBuilder.h"
#include "roadmaps/orvShooterConfigSpace.h"
#include "roadmaps/orvShooterRoadmapBox.h"
#include "support/discWorld.h"
#include "support/logCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace
{
using Multi = CorvMultiDiffusingBuilder;

/// A wall with a slit of width 0.2 in the middle.
const DiscWorld::Discs s_slit = {{5.0, 0.0, 1.0}, {5.0, 1.5, 1.0}, {5.0, 3.0, 1.0}, {5.0, 4.5, 1.0},
                                 {5.0, 6.7, 1.0}, {5.0, 8.2, 1.0}, {5.0, 9.7, 1.0}};
const ClumStringKey s_spotHintPath("orvane.core.builder.hint-path");

void stepTimes(CorvBuilder& io_builder, unsigned int i_count)
{
  bool shouldContinue = true;
  for (unsigned int step = 0; step < i_count; ++step)
    ASSERT_TRUE(io_builder.continueBuild(shouldContinue).succeeded() && shouldContinue);
}

void stopBuild(CorvBuilder& io_builder)
{
  bool shouldContinue = true;
  io_builder.abortBuild();
  EXPECT_TRUE(io_builder.continueBuild(shouldContinue).succeeded());
  EXPECT_FALSE(shouldContinue);
}

CorvMultiDiffusingBuilderShPtr makeMulti(const DiscWorld& i_world, const CorvDiffusionShooterShPtr& i_shooter)
{
  const CorvMultiDiffusingBuilderShPtr builder = Multi::create(i_world.roadmap);
  builder->diffusionShooter(i_shooter);
  builder->extendMethod(CorvExtendDirect::create());
  builder->linker(CorvLinkerShPtr());
  return builder;
}

/// From one corner to the other.
CorvMultiDiffusingBuilderShPtr makeQuery(const DiscWorld& i_world, const CorvLinkerShPtr& i_linker)
{
  const CorvMultiDiffusingBuilderShPtr builder = makeMulti(i_world, CorvShooterRoadmapBox::create());
  builder->linker(i_linker);
  EXPECT_TRUE(builder->addDiffusionSpot(i_world.at(1.0, 1.0), Multi::START_LIKE).succeeded());
  EXPECT_TRUE(builder->addDiffusionSpot(i_world.at(9.0, 9.0), Multi::GOAL_LIKE).succeeded());
  return builder;
}

/// All that a run made, to the last bit.
std::vector<double> fingerprint(const CorvRoadmap& i_roadmap)
{
  std::vector<double> values;
  for (unsigned int rank = 0; rank < i_roadmap.countNodes(); ++rank)
  {
    const CorvNodeShPtr& node = i_roadmap.node(rank);
    values.push_back(node->config().dofValue(0));
    values.push_back(node->config().dofValue(1));
    for (unsigned int out = 0; out < node->countOutEdges(); ++out)
      values.push_back(node->outEdge(out)->directPath()->length());
  }
  return values;
}
} // namespace

TEST(CorvMultiDiffusingBuilder, SeededRunsRepeatToTheLastBit)
{
  std::vector<std::vector<double>> runs;
  for (const unsigned int seed : {11u, 11u, 12u})
  {
    CorvUtility::randomSeed(seed);
    const DiscWorld world(s_slit);
    const CorvMultiDiffusingBuilderShPtr builder = makeQuery(world, CorvLinkerKeepValidPart::create());
    ASSERT_TRUE(builder->startBuild(ClumParameterMapConstShPtr()).succeeded());
    stepTimes(*builder, 300);
    EXPECT_TRUE(world.isSound(*world.roadmap));
    runs.push_back(fingerprint(*world.roadmap));
  }
  EXPECT_GT(runs[0].size(), 200u);
  EXPECT_EQ(runs[0], runs[1]);
  EXPECT_NE(runs[0], runs[2]);
}

TEST(CorvMultiDiffusingBuilder, ConnectsStartAndGoalThroughASlit)
{
  for (const CorvLinkerShPtr& linker :
       {CorvLinkerShPtr(CorvLinkerStandard::create()), CorvLinkerShPtr(CorvLinkerKeepValidPart::create())})
    for (unsigned int seed = 0; seed < 5; ++seed)
    {
      CorvUtility::randomSeed(seed);
      const DiscWorld world(s_slit);
      const CorvMultiDiffusingBuilderShPtr builder = makeQuery(world, linker);
      ASSERT_TRUE(builder->startBuild(ClumParameterMapConstShPtr()).succeeded());
      const CorvNodeShPtr start = builder->elementaryBuilder(0)->diffusionNode();
      const CorvNodeShPtr goal = builder->elementaryBuilder(1)->diffusionNode();
      for (int step = 0; step < 3000 && !world.roadmap->pathExists(start, goal); ++step)
        stepTimes(*builder, 1);
      CorvPathShPtr path;
      CorvRoadmap::TEdgeList edges;
      EXPECT_TRUE(world.roadmap->findPath(start, goal, path, edges));
      EXPECT_TRUE(world.isSound(*world.roadmap));
    }
}

TEST(CorvMultiDiffusingBuilder, TakesLateMembersAndDropsThoseThatHaveGrownTogether)
{
  CorvUtility::randomSeed(2);
  const DiscWorld world;
  const CorvMultiDiffusingBuilderShPtr builder = makeMulti(world, CorvShooterConfigSpace::create());
  builder->rating(CorvMultiDiffusingBuilderRatingShPtr());
  ASSERT_TRUE(builder->startBuild(ClumParameterMapConstShPtr()).succeeded());
  stepTimes(*builder, 3); // to have nothing to grow is no end
  EXPECT_EQ(world.roadmap->countNodes(), 0u);

  CorvMonoDiffusingBuilderShPtr first, second, goal;
  ASSERT_TRUE(builder->addDiffusionSpot(world.at(1.0, 1.0), Multi::START_LIKE, first).succeeded());
  EXPECT_EQ(first->state(), ClumOperation::STATE_RUNNING);
  EXPECT_NE(first->diffusionShooter(), builder->diffusionShooter());
  stepTimes(*builder, 5);
  EXPECT_EQ(world.roadmap->countNodes(), 6u);
  ASSERT_TRUE(builder->addDiffusionSpot(world.at(9.0, 1.0), Multi::START_LIKE, second).succeeded());
  ASSERT_TRUE(builder->addDiffusionSpot(world.at(9.0, 9.0), Multi::GOAL_LIKE, goal).succeeded());
  EXPECT_TRUE(builder->addDiffusionSpot(world.at(9.0, 1.0), Multi::START_LIKE).succeeded());
  stepTimes(*builder, 5);
  EXPECT_EQ(world.roadmap->countNodes(), 6u + 2u + 15u);
  EXPECT_EQ(builder->countElementaryBuilders(), 3u);
  EXPECT_EQ(builder->countDiffusionSpots(Multi::START_LIKE), 2u);
  EXPECT_FALSE(builder->isDiffusionSpotOfType(world.at(9.0, 9.0), Multi::START_LIKE));
  CorvConfig spot;
  EXPECT_TRUE(builder->getDiffusionSpot(Multi::START_LIKE, 1, spot).succeeded());
  EXPECT_EQ(spot, world.at(9.0, 1.0));
  EXPECT_TRUE(builder->getDiffusionSpot(Multi::GOAL_LIKE, 1, spot).failed());

  CorvLinkerStandard::create()->link(CorvLinker::LINK_BOTH, first->diffusionNode());
  ASSERT_EQ(world.roadmap->countConnectedComponents(), 1u);
  stepTimes(*builder, 1);
  ASSERT_EQ(builder->countElementaryBuilders(), 2u);
  EXPECT_EQ(builder->elementaryBuilder(0), first);
  EXPECT_EQ(builder->elementaryBuilder(1), goal);
  EXPECT_EQ(second->state(), ClumOperation::STATE_ABORTED);

  stopBuild(*builder);
  EXPECT_EQ(first->state(), ClumOperation::STATE_ABORTED);
  const CorvMultiDiffusingBuilderShPtr copy = Multi::createCopy(builder);
  ASSERT_TRUE(copy && copy->countElementaryBuilders() == 2u);
  EXPECT_NE(copy->elementaryBuilder(0), first);
  EXPECT_EQ(copy->elementaryBuilder(1)->diffusionType(), CorvMonoDiffusingBuilder::DIFFUSION_TO);
}

TEST(CorvMultiDiffusingBuilder, StepsTheBestTreeOfEachTypeAndHoldsTheBalance)
{
  CorvUtility::randomSeed(6);
  const DiscWorld world(s_slit);
  const CorvMultiDiffusingBuilderShPtr builder = makeQuery(world, CorvLinkerShPtr());
  EXPECT_TRUE(builder->addDiffusionSpot(world.at(1.0, 9.0), Multi::START_LIKE).succeeded());
  ASSERT_TRUE(builder->startBuild(ClumParameterMapConstShPtr()).succeeded());
  double lengths[3] = {};
  unsigned int activeCounts[3] = {};
  for (int step = 0; step < 200; ++step)
  {
    stepTimes(*builder, 1);
    for (unsigned int rank = 0; rank < 3; ++rank)
    {
      activeCounts[rank] += builder->parallelOperation()->isActive(rank) ? 1 : 0;
      ASSERT_TRUE(builder->rating()->getRating(builder->elementaryBuilder(rank), lengths[rank]).succeeded());
    }
    EXPECT_FALSE(builder->parallelOperation()->isActive(0) && builder->parallelOperation()->isActive(2));
    EXPECT_TRUE(builder->parallelOperation()->isActive(0) || builder->parallelOperation()->isActive(1) ||
                builder->parallelOperation()->isActive(2));
  }
  // The shorter start tree always went on; between the types no sum ran away from the other.
  EXPECT_LT(std::abs(lengths[0] - lengths[2]), 30.0);
  EXPECT_GT(lengths[0] + lengths[2], 30.0);
  const double ratio = (lengths[0] + lengths[2]) / lengths[1];
  EXPECT_LT(std::max(ratio, 1.0 / ratio), 2.0);
  EXPECT_GT(std::min({activeCounts[0], activeCounts[1], activeCounts[2]}), 10u);
}

TEST(CorvMultiDiffusingBuilder, TurnsAwayFromATreeThatIsStuck)
{
  CorvUtility::randomSeed(7);
  const DiscWorld world({{2.0, 2.0, 1.0}});
  const CorvMultiDiffusingBuilderShPtr builder = makeMulti(world, CorvShooterConfigSpace::create());
  builder->addDiffusionSpot(world.at(2.0, 2.0), Multi::START_LIKE); // inside of the disc
  builder->addDiffusionSpot(world.at(9.0, 9.0), Multi::START_LIKE);
  ASSERT_TRUE(builder->startBuild(ClumParameterMapConstShPtr()).succeeded());
  stepTimes(*builder, 500);
  EXPECT_EQ(world.roadmap->countNodes(), 2u);
  EXPECT_EQ(builder->elementaryBuilder(0)->countFruitlessShots(), 500u);
  stepTimes(*builder, 20);
  EXPECT_GT(world.roadmap->countNodes(), 15u);
}

TEST(CorvMultiDiffusingBuilder, ManifoldsAndHintPathBecomeRoots)
{
  CorvUtility::randomSeed(8);
  const DiscWorld world({{5.0, 5.0, 1.0}});
  const CorvMultiDiffusingBuilderShPtr builder = makeMulti(world, CorvShooterConfigSpace::create());
  const CorvManifoldUnionShPtr starts = CorvManifoldUnion::create(world.space);
  starts->addManifold(CorvPointManifold::create(world.at(1.0, 1.0), world.space));
  starts->addManifold(CorvPointManifold::create(world.at(5.0, 5.0), world.space)); // not free
  builder->startLikeManifold(starts);
  ASSERT_TRUE(builder->startBuild(ClumParameterMapConstShPtr()).succeeded());
  stepTimes(*builder, 2);
  EXPECT_EQ(builder->countElementaryBuilders(), 1u);
  starts->addManifold(CorvPointManifold::create(world.at(1.0, 9.0), world.space));
  stepTimes(*builder, 1);
  EXPECT_EQ(builder->countElementaryBuilders(), 2u);
  EXPECT_TRUE(builder->isDiffusionSpotOfType(world.at(1.0, 9.0), Multi::START_LIKE));

  const CorvMultiDiffusingBuilderShPtr hinted = makeMulti(world, CorvShooterConfigSpace::create());
  hinted->doesUseHintPath(true);
  const LogCapture log;
  EXPECT_TRUE(hinted->startBuild(ClumParameterMapConstShPtr()).failed());
  EXPECT_TRUE(log.contains("Multi diffusing builder cannot find hint path."));
  const CorvPathShPtr hint = CorvPath::createWithDirectPath(world.at(1.0, 2.0), world.at(9.0, 2.0));
  ASSERT_TRUE(hint->appendDirectPath(world.at(9.0, 2.0), world.at(9.0, 8.0)).succeeded());
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  parameters->setConstShPtr(s_spotHintPath, CorvPathConstShPtr(hint));
  ASSERT_TRUE(hinted->startBuild(parameters).succeeded());
  const struct
  {
    double x, y;
    bool isStartLike, isGoalLike;
  } spots[] = {{1.0, 2.0, true, false}, {9.0, 2.0, true, true}, {9.0, 8.0, false, true}};
  for (const auto& spot : spots)
  {
    EXPECT_EQ(hinted->isDiffusionSpotOfType(world.at(spot.x, spot.y), Multi::START_LIKE), spot.isStartLike);
    EXPECT_EQ(hinted->isDiffusionSpotOfType(world.at(spot.x, spot.y), Multi::GOAL_LIKE), spot.isGoalLike);
  }
}

TEST(CorvSamplingBuilder, FillsAFiniteSpaceWithValidNodes)
{
  CorvUtility::randomSeed(9);
  const DiscWorld world(s_slit);
  const CorvSamplingBuilderShPtr builder = CorvSamplingBuilder::create(world.roadmap);
  ASSERT_TRUE(builder->startBuild(ClumParameterMapConstShPtr()).succeeded());
  stepTimes(*builder, 300);
  EXPECT_EQ(world.roadmap->countNodes(), 300u);
  EXPECT_TRUE(world.isSound(*world.roadmap));
  for (unsigned int rank = 0; rank < 300; ++rank)
    EXPECT_TRUE(world.isFree(world.roadmap->node(rank)->config()));
  EXPECT_LT(world.roadmap->countConnectedComponents(), 20u);

  world.space->dof(0)->isBounded(false);
  const LogCapture log;
  EXPECT_TRUE(CorvSamplingBuilder::create(world.roadmap)->startBuild(ClumParameterMapConstShPtr()).failed());
  EXPECT_TRUE(log.contains("CorvSamplingBuilder cannot work on an infinite space."));
}

TEST(CorvBuilder, CompositionsRunOnOneRoadmap)
{
  CorvUtility::randomSeed(10);
  const DiscWorld world;
  const CorvBuilderShPtr sampler = CorvSamplingBuilder::create(world.roadmap);
  const CorvBuilderShPtr other = CorvSamplingBuilder::create(world.roadmap);
  const CorvBuilderShPtr chain = sampler->then(other)->then(sampler);
  const ClumSequenceOperationShPtr sequence = boost::dynamic_pointer_cast<ClumSequenceOperation>(chain->simplify());
  ASSERT_TRUE(sequence);
  EXPECT_EQ(sequence->countOperations(), 3u);
  EXPECT_EQ(chain->roadmap(), world.roadmap);
  EXPECT_FALSE(sampler->with(CorvBuilderShPtr()));
  EXPECT_FALSE(sampler->withWeighted(other, 0.0));

  const CorvBuilderShPtr both = sampler->withWeighted(other, 0.5);
  ASSERT_TRUE(both->startBuild(ClumParameterMapConstShPtr()).succeeded());
  stepTimes(*both, 20);
  EXPECT_EQ(world.roadmap->countNodes(), 30u);
  stopBuild(*both);
  EXPECT_EQ(sampler->state(), ClumOperation::STATE_ABORTED);
}

TEST(CorvBuilder, AutotunedCompositionPrefersWhatAddsNodes)
{
  CorvUtility::randomSeed(11);
  const DiscWorld world;
  const CorvBuilderShPtr sampler = CorvSamplingBuilder::create(world.roadmap);
  // A tree without room to grow: its steps are fruitless.
  const CorvMonoDiffusingBuilderShPtr stuck = CorvMonoDiffusingBuilder::create(world.roadmap);
  stuck->setDiffusionConfiguration(world.at(5.0, 5.0));
  const CorvExtendDirectShPtr extendMethod = CorvExtendDirect::create();
  extendMethod->restrictionBounds(0.0, 0.0);
  stuck->extendMethod(extendMethod);
  stuck->diffusionShooter(CorvShooterConfigSpace::create());
  const CorvBuilderShPtr tuned = stuck->withAutotuned(sampler);
  ASSERT_TRUE(tuned);
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  parameters->setDouble("orvane.core.shooter.standard-deviation", 1.0);
  ASSERT_TRUE(tuned->startBuild(parameters).succeeded());
  stepTimes(*tuned, 500);
  EXPECT_EQ(world.roadmap->countNodes(), 501u); // one a round, and the root
  const auto composition = boost::dynamic_pointer_cast<ClumAutotuningParallelCooperativeOperation>(tuned->simplify());
  ASSERT_TRUE(composition);
  EXPECT_EQ(composition->weight(0), 0.1);
  EXPECT_EQ(composition->weight(1), 1.0);
  stopBuild(*tuned);
  EXPECT_FALSE(sampler->withAutotuned(CorvBuilderShPtr()));
}

namespace
{
CorvPathShPtr pathThrough(const std::vector<CorvConfig>& i_configs)
{
  const CorvPathShPtr path = CorvPath::createWithConfig(i_configs.front());
  for (std::size_t i = 1; i < i_configs.size(); ++i)
    EXPECT_TRUE(path->addConfiguration(i_configs[i]).succeeded());
  return path;
}
} // namespace

TEST(CorvInjectionBuilder, PutsTheValidPartsOfPathsIntoTheRoadmap)
{
  const DiscWorld world(s_slit);
  // Free, through a disc, free, free.
  const CorvPathShPtr path =
    pathThrough({world.at(1.0, 1.0), world.at(1.0, 3.0), world.at(9.0, 3.0), world.at(9.0, 5.0), world.at(8.0, 5.0)});
  const CorvInjectionBuilderShPtr builder = CorvInjectionBuilder::create(world.roadmap);
  EXPECT_TRUE(builder->addPath(CorvPathConstShPtr()).failed());
  EXPECT_TRUE(builder->addPath(CorvPath::createWithConfig(world.at(1.0, 1.0))).failed());
  const DiscWorld elsewhere;
  EXPECT_TRUE(builder->addPath(pathThrough({elsewhere.at(1.0, 1.0), elsewhere.at(1.0, 2.0)})).failed());
  EXPECT_TRUE(builder->addPaths({path, CorvPathConstShPtr()}).failed());
  EXPECT_EQ(builder->countPaths(), 0u);
  ASSERT_TRUE(builder->addPath(path).succeeded());
  ASSERT_TRUE(builder->startBuild(ClumParameterMapConstShPtr()).succeeded());
  double completion = -1.0;
  for (const double expected : {2.0 / 13.0, 10.0 / 13.0, 12.0 / 13.0})
  {
    stepTimes(*builder, 1);
    EXPECT_TRUE(builder->computeCompletion(completion).succeeded());
    EXPECT_DOUBLE_EQ(completion, expected);
  }
  bool shouldContinue = true;
  EXPECT_TRUE(builder->continueBuild(shouldContinue).succeeded());
  EXPECT_FALSE(shouldContinue);
  EXPECT_TRUE(world.isSound(*world.roadmap));
  EXPECT_EQ(world.roadmap->countNodes(), 5u);
  EXPECT_EQ(world.roadmap->countEdges(), 6u);
  EXPECT_EQ(world.roadmap->countConnectedComponents(), 2u);

  // A path that is there already adds nothing; nor does none.
  ASSERT_TRUE(builder->addPath(path).succeeded());
  EXPECT_TRUE(builder->build(ClumParameterMapConstShPtr()).succeeded());
  EXPECT_EQ(world.roadmap->countEdges(), 6u);
  EXPECT_TRUE(builder->build(ClumParameterMapConstShPtr()).succeeded());
  EXPECT_TRUE(builder->computeCompletion(completion).succeeded());
  EXPECT_EQ(completion, 1.0);
}

TEST(CorvInjectionBuilder, GoesBeforeABuilderWithItsHintPath)
{
  CorvUtility::randomSeed(12);
  const DiscWorld world;
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  const CorvPathConstShPtr path = pathThrough({world.at(1.0, 1.0), world.at(2.0, 1.0), world.at(3.0, 2.0)});
  parameters->setConstShPtr(s_spotHintPath, path);
  const CorvBuilderShPtr builder = CorvSamplingBuilder::create(world.roadmap)->afterInjection();
  ASSERT_TRUE(builder->startBuild(parameters).succeeded());
  stepTimes(*builder, 2);
  EXPECT_EQ(world.roadmap->countNodes(), 3u);
  EXPECT_TRUE(world.roadmap->nodeWithConfig(world.at(2.0, 1.0)));
  stepTimes(*builder, 5);
  EXPECT_EQ(world.roadmap->countNodes(), 8u);
}
