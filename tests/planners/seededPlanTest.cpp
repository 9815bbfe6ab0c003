#include "foundation/lumMat4.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvUtility.h"
#include "optimizers/orvRandomOptimizer.h"
#include "paths/orvPath.h"
#include "planners/orvBuilderPlanner.h"
#include "planners/orvPathPlannerDelegate.h"
#include "roadmaps/orvExtendDirect.h"
#include "roadmaps/orvLinkerKeepValidPart.h"
#include "roadmaps/orvMultiDiffusingBuilder.h"
#include "roadmaps/orvRoadmap.h"
#include "roadmaps/orvShooterRoadmapBox.h"
#include "support/devices.h"
#include "support/meshes.h"
#include "validation/orvValidatorDPCollision.h"
#include "validation/orvValidatorSet.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{
/// Ends a search after a number of steps.
class SeededPlanBudget : public CorvPathPlannerDelegate
{
public:
  bool plannerShouldStopPlanning(const CorvPathPlannerShPtr&) override { return ++m_steps > 5000; }

private:
  unsigned int m_steps = 0;
};

/// The whole of a plan: every value of every configuration of the path, one after the other, then its length. The
/// device, its meshes and the planner are made anew.
std::vector<double> planThroughClutter(unsigned int i_seed, double i_penetration, bool i_doesOptimize)
{
  const CorvDeviceShPtr device = freeFlyer(lPart(1.2, 0.8, 0.2));
  EXPECT_TRUE(device->addObstacleGeometry(clutter(11, 60, 8.0)).succeeded());
  const CorvConfigSpaceShPtr space = device->configSpace();
  CorvValidatorDPCollision::setPenetration(space->directPathValidators(), i_penetration);
  const CorvConfig start(space, {-6.0, -6.0, 0.0, 0.0, 0.0, 0.0}), goal(space, {6.0, 6.0, 1.0, 1.0, -0.5, 2.0});
  const CorvRoadmapShPtr roadmap = CorvRoadmap::create(space);
  const CorvMultiDiffusingBuilderShPtr builder = CorvMultiDiffusingBuilder::create(roadmap);
  builder->addDiffusionSpot(start, CorvMultiDiffusingBuilder::START_LIKE);
  builder->addDiffusionSpot(goal, CorvMultiDiffusingBuilder::GOAL_LIKE);
  const CorvExtendDirectShPtr extendMethod = CorvExtendDirect::create();
  extendMethod->restrictionBounds(1.5, 1.5);
  builder->extendMethod(extendMethod);
  builder->diffusionShooter(CorvShooterRoadmapBox::create());
  builder->linker(CorvLinkerKeepValidPart::create());
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  parameters->setDouble("orvane.core.validator.dp.collision.penetration", i_penetration)
    .setDouble("orvane.core.shooter.standard-deviation", 2.0)
    .setBool("orvane.core.builder-planner.force-path-on-failure", false);
  const CorvBuilderPlannerShPtr planner = CorvBuilderPlanner::create(builder);
  planner->addDelegate(ShPtr<SeededPlanBudget>(new SeededPlanBudget));

  CorvUtility::randomSeed(i_seed);
  CorvPathShPtr path;
  EXPECT_TRUE(planner->plan(start, goal, parameters, path).succeeded());
  if (!path)
    return {};
  if (i_doesOptimize)
  {
    const CorvRandomOptimizerShPtr optimizer = CorvRandomOptimizer::create();
    optimizer->maxNbLoop(2);
    EXPECT_TRUE(optimizer->plan(path, CorvPathPlanner::STABLE_ENDS, parameters, path).succeeded());
  }
  std::vector<double> values;
  for (unsigned int i = 0; i < path->countConfigurations(); ++i)
    for (unsigned int k = 0; k < space->size(); ++k)
      values.push_back(path->configuration(i).dofValue(k));
  values.push_back(path->length());
  return values;
}

bool isSameToTheBit(const std::vector<double>& i_first, const std::vector<double>& i_second)
{
  return i_first.size() == i_second.size() &&
         std::memcmp(i_first.data(), i_second.data(), i_first.size() * sizeof(double)) == 0;
}
} // namespace

TEST(SeededPlan, RepeatsToTheLastBitWhereverItsObjectsLie)
{
  for (const bool doesOptimize : {false, true})
    for (const double penetration : {0.01, 0.0})
    {
      SCOPED_TRACE(testing::Message() << "penetration " << penetration << ", optimised " << doesOptimize);
      const std::vector<double> first = planThroughClutter(5, penetration, doesOptimize);
      ASSERT_GT(first.size(), 3u * 6u);
      // Objects that live on between the plans move all later ones to other addresses and version numbers.
      std::vector<CorvDeviceShPtr> between;
      std::vector<std::vector<char>> blocks;
      for (std::size_t i = 0; i < 200; ++i)
      {
        blocks.emplace_back(37 * i + 1);
        if (i % 20 == 0)
          between.push_back(planarArm(3));
      }
      EXPECT_TRUE(isSameToTheBit(planThroughClutter(5, penetration, doesOptimize), first));
      EXPECT_FALSE(isSameToTheBit(planThroughClutter(6, penetration, doesOptimize), first));
    }
}
