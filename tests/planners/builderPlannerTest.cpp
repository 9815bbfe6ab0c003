#include "planners/orvBuilderPlanner.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumParameterMap.h"
#include "manifolds/orvManifoldUnion.h"
#include "manifolds/orvPointManifold.h"
#include "paths/orvPath.h"
#include "paths/orvSMLinear.h"
#include "roadmaps/orvBuilder.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvRoadmap.h"
#include "support/logCapture.h"
#include "support/plainSpace.h"

#include <gtest/gtest.h>

LUM_HANDLES(LadderBuilder)

/// Adds one configuration of a list a step, linked with the one before.
class LadderBuilder : public CorvBuilder
{
  LUM_CONCRETE(LadderBuilder, CorvBuilder);

public:
  static LadderBuilderShPtr create(const CorvRoadmapShPtr& i_roadmap) { return lumCreate<LadderBuilder>(i_roadmap); }

  std::vector<CorvConfig> rungs;
  CorvPathConstShPtr hint;
  unsigned int stepped = 0;
  unsigned int finished = 0;

protected:
  LadderBuilder() = default;
  explicit LadderBuilder(const CorvRoadmapShPtr& i_roadmap) : CorvBuilder(i_roadmap) {}
  lmStatus init(const LadderBuilderWkPtr& i_weakPtr) { return CorvBuilder::init(i_weakPtr); }

  lmStatus doStartBuild(const ClumParameterMapShPtr& io_parameters) override
  {
    hint = io_parameters->constShPtrValue<CorvPath>("orvane.core.builder.hint-path");
    stepped = 0;
    m_last.reset();
    return lmStatus();
  }
  lmStatus doContinueBuild(bool& o_shouldContinue) override
  {
    const CorvNodeShPtr node = roadmapNode(rungs[stepped]);
    if (m_last && m_last != node)
      roadmapLink(m_last, node, configSpace()->steeringMethod()->makeDirectPath(m_last->config(), node->config()));
    m_last = node;
    o_shouldContinue = ++stepped < rungs.size();
    return lmStatus();
  }
  lmStatus doFinishBuild() override
  {
    ++finished;
    return lmStatus();
  }
  lmStatus doComputeCompletion(double& o_completion) const override
  {
    o_completion = rungs.empty() ? 0.0 : double(stepped) / rungs.size();
    return lmStatus();
  }

private:
  CorvNodeShPtr m_last;
};

LUM_DESCRIBE(LadderBuilder)
{
}

namespace
{
struct NodeListener
{
  std::vector<unsigned int> ids;
  void hear(const ShPtr<const ClumNotification>& i_notification) { ids.push_back(i_notification->id()); }
};

struct StopAfter : CorvPathPlannerDelegate
{
  explicit StopAfter(unsigned int i_steps) : left(i_steps) {}
  bool plannerShouldStopPlanning(const CorvPathPlannerShPtr&) override { return left-- == 0; }
  unsigned int left;
};

class BuilderPlanner : public testing::Test
{
protected:
  BuilderPlanner() : space(plainSpace({false, false}))
  {
    space->steeringMethod(CorvSMLinear::create());
    roadmap = CorvRoadmap::create(space);
    builder = LadderBuilder::create(roadmap);
    builder->linker(CorvLinkerShPtr());
    planner = CorvBuilderPlanner::create(builder);
    for (int x = 0; x <= 4; ++x)
      builder->rungs.push_back(at(x, x % 2));
  }

  CorvConfig at(double i_x, double i_y) const { return CorvConfig(space, {i_x, i_y}); }
  CorvPathShPtr start() const { return CorvPath::createWithConfig(at(0.0, 0.0)); }
  CorvPathShPtr startToGoal() const
  {
    const CorvPathShPtr input = start();
    EXPECT_TRUE(input->addConfiguration(at(4.0, 0.0)).succeeded());
    return input;
  }

  CorvConfigSpaceShPtr space;
  CorvRoadmapShPtr roadmap;
  LadderBuilderShPtr builder;
  CorvBuilderPlannerShPtr planner;
  CorvPathShPtr path;
};
} // namespace

TEST_F(BuilderPlanner, PlansUntilStartReachesGoalAndFindsItAtOnceTheNextTime)
{
  builder->rungs.push_back(at(9.0, 9.0));
  ASSERT_TRUE(planner->plan(startToGoal(), CorvPathPlanner::STABLE_ENDS, path).succeeded());
  EXPECT_EQ(path->countDirectPaths(), 4u);
  EXPECT_TRUE(path->startsWith(at(0.0, 0.0)) && path->endsWith(at(4.0, 0.0)));
  EXPECT_EQ(builder->stepped, 5u);
  EXPECT_EQ(builder->finished, 1u);
  EXPECT_EQ(planner->countCurrentStartNodes() + planner->countCurrentGoalNodes(), 0u);
  EXPECT_EQ(planner->countStartConfigurations(), 1u);
  EXPECT_EQ(planner->goalConfiguration(0), at(4.0, 0.0));
  ASSERT_TRUE(builder->hint);
  EXPECT_EQ(builder->hint->countDirectPaths(), 1u);

  path.reset();
  ASSERT_TRUE(planner->plan(startToGoal(), CorvPathPlanner::STABLE_ENDS, path).succeeded());
  EXPECT_EQ(builder->stepped, 0u);
  EXPECT_EQ(builder->finished, 2u);
}

TEST_F(BuilderPlanner, FailedPlanGivesABridgedPathUnlessToldOtherwise)
{
  builder->rungs = {at(0.0, 0.0), at(1.0, 0.0)};
  EXPECT_EQ(planner->plan(startToGoal(), CorvPathPlanner::STABLE_ENDS, path).code(), lmStatus::FAILURE);
  ASSERT_TRUE(path);
  EXPECT_EQ(path->countConfigurations(), 3u);
  EXPECT_EQ(path->configuration(1), at(1.0, 0.0));
  EXPECT_TRUE(path->endsWith(at(4.0, 0.0)));

  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  parameters->setBool("orvane.core.builder-planner.force-path-on-failure", false);
  EXPECT_TRUE(planner->plan(startToGoal(), CorvPathPlanner::STABLE_ENDS, parameters, path).failed());
  EXPECT_FALSE(path);
  EXPECT_EQ(builder->finished, 2u);
}

TEST_F(BuilderPlanner, StopFromADelegateEndsTheBuilderAndForcesAPath)
{
  planner->addDelegate(CorvPathPlannerDelegateShPtr(new StopAfter(2)));
  EXPECT_EQ(planner->plan(startToGoal(), CorvPathPlanner::STABLE_ENDS, path).code(), lmStatus::FAILURE);
  EXPECT_EQ(builder->stepped, 2u);
  EXPECT_EQ(builder->finished, 1u);
  EXPECT_NE(builder->state(), ClumOperation::STATE_RUNNING);
  ASSERT_TRUE(path);
  EXPECT_TRUE(path->startsWith(at(0.0, 0.0)) && path->endsWith(at(4.0, 0.0)));
}

TEST_F(BuilderPlanner, AnyGoalOfTheUnionWillDo)
{
  ASSERT_TRUE(planner->addGoalConfiguration(at(8.0, 0.0)).succeeded());
  ASSERT_TRUE(planner->addGoalManifold(CorvPointManifold::create(at(2.0, 0.0), space)).succeeded());
  EXPECT_EQ(planner->countGoalConfigurations(), 2u);
  ASSERT_TRUE(planner->plan(start(), CorvPathPlanner::STABLE_START, path).succeeded());
  EXPECT_TRUE(path->endsWith(at(2.0, 0.0)));
  EXPECT_FALSE(builder->hint);

  planner->resetGoalConfigurations();
  ASSERT_TRUE(planner->addGoalConfiguration(at(0.0, 0.0)).succeeded());
  ASSERT_TRUE(planner->plan(start(), CorvPathPlanner::STABLE_START, path).succeeded());
  EXPECT_EQ(path->countDirectPaths(), 0u);
}

TEST_F(BuilderPlanner, RefusesWhatItCannotPlan)
{
  const LogCapture log;
  EXPECT_FALSE(CorvBuilderPlanner::create(CorvBuilderShPtr()));
  EXPECT_TRUE(log.contains("Unable to initialize a builder planner with a null builder."));
  EXPECT_TRUE(planner->plan(start(), CorvPathPlanner::STABLE_NONE, path).failed());
  EXPECT_TRUE(planner->plan(CorvPathConstShPtr(CorvPath::create(space)), CorvPathPlanner::STABLE_ENDS, path).failed());
  const CorvPathShPtr three = startToGoal();
  ASSERT_TRUE(three->addConfiguration(at(5.0, 0.0)).succeeded());
  EXPECT_TRUE(planner->plan(three, CorvPathPlanner::STABLE_ALL, path).failed());
  EXPECT_EQ(roadmap->countNodes(), 0u);
  EXPECT_FALSE(planner->isPlanning());

  ASSERT_TRUE(planner->startPlan(startToGoal(), CorvPathPlanner::STABLE_ENDS).succeeded());
  EXPECT_TRUE(planner->addStartConfiguration(at(1.0, 0.0)).failed());
  EXPECT_TRUE(log.contains("Cannot add a start manifold other than the stable start of the builder planner."));
  EXPECT_TRUE(planner->addGoalConfiguration(at(1.0, 0.0)).failed());
  EXPECT_TRUE(log.contains("Cannot add a goal manifold other than the stable end of the builder planner."));
  EXPECT_EQ(planner->countGoalConfigurations(), 1u);
  planner->goalConfiguration(1);
  EXPECT_TRUE(log.contains("Assertion failed: false"));
}

TEST_F(BuilderPlanner, FollowsTheRoadmapWhileItPlans)
{
  const ShPtr<NodeListener> listener(new NodeListener);
  for (const unsigned int id : {CorvBuilderPlanner::DID_ADD_START_NODE, CorvBuilderPlanner::DID_REMOVE_START_NODE})
    planner->notificator()->subscribe(id, listener, listener.get(), &NodeListener::hear);
  ASSERT_TRUE(planner->startPlan(startToGoal(), CorvPathPlanner::STABLE_ENDS).succeeded());
  ASSERT_EQ(planner->countCurrentStartNodes(), 1u);
  const CorvNodeShPtr node = planner->currentStartNode(0);
  EXPECT_EQ(node->config(), at(0.0, 0.0));
  EXPECT_EQ(roadmap->countNodes(), 2u);

  const CorvNodeShPtr other = CorvNode::create(at(7.0, 0.0));
  ASSERT_TRUE(roadmap->addNode(other).succeeded());
  const auto direct = space->steeringMethod()->makeDirectPath(node->config(), other->config());
  ASSERT_TRUE(roadmap->addEdge(node, other, CorvEdge::create(direct)).succeeded());
  ASSERT_TRUE(roadmap->removeNode(node).succeeded());
  EXPECT_EQ(planner->countCurrentStartNodes(), 0u);
  EXPECT_EQ(listener->ids, (std::vector<unsigned int>{CorvBuilderPlanner::DID_ADD_START_NODE,
                                                      CorvBuilderPlanner::DID_REMOVE_START_NODE}));
  bool shouldContinue = false;
  while (planner->continuePlan(path, shouldContinue).succeeded() && shouldContinue)
    continue;
  EXPECT_EQ(planner->countCurrentStartNodes(), 1u);
  EXPECT_TRUE(planner->isProblemSolved());
  roadmap->clear();
  EXPECT_EQ(planner->countCurrentGoalNodes(), 0u);
  EXPECT_TRUE(planner->finishPlan(lmStatus(), path).failed());
}
