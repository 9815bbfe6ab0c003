#include "foundation/lumDescribe.h"
#include "foundation/lumMultithreadedParallelOperation.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumUtilityMultithread.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvUtility.h"
#include "optimizers/orvRandomOptimizer.h"
#include "paths/orvPath.h"
#include "planners/orvBuilderPlanner.h"
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

LUM_HANDLES(PlanOnCloneOperation)

/// Plans, then optimises, for a clone of a device: all that it works on is its own but for the geometry, which clones
/// share.
class PlanOnCloneOperation : public ClumOperation
{
  LUM_CONCRETE(PlanOnCloneOperation, ClumOperation);

public:
  static PlanOnCloneOperationShPtr create(const CorvDeviceShPtr& i_device)
  {
    return lumCreate<PlanOnCloneOperation>(CorvDevice::createCopy(i_device));
  }
  EThreadSafety threadSafety() const override { return THREAD_SAFE; }

  /// The values of the path, one after the other.
  std::vector<double> values() const
  {
    std::vector<double> result;
    for (unsigned int i = 0; m_path && i < m_path->countConfigurations(); ++i)
      for (unsigned int k = 0; k < m_device->configSpace()->size(); ++k)
        result.push_back(m_path->configuration(i).dofValue(k));
    return result;
  }

protected:
  PlanOnCloneOperation() = default;
  explicit PlanOnCloneOperation(const CorvDeviceShPtr& i_device) : m_device(i_device) {}
  lmStatus init(const PlanOnCloneOperationWkPtr& i_weakPtr) { return ClumOperation::init(i_weakPtr); }

  lmStatus doStart(const ClumParameterMapShPtr&) override
  {
    const CorvConfigSpaceShPtr space = m_device->configSpace();
    CorvValidatorDPCollision::setPenetration(space->directPathValidators(), 0.01);
    const CorvMultiDiffusingBuilderShPtr builder = CorvMultiDiffusingBuilder::create(CorvRoadmap::create(space));
    const CorvExtendDirectShPtr extendMethod = CorvExtendDirect::create();
    extendMethod->restrictionBounds(1.5, 1.5);
    builder->extendMethod(extendMethod);
    builder->diffusionShooter(CorvShooterRoadmapBox::create());
    builder->linker(CorvLinkerKeepValidPart::create());
    const CorvConfig start(space, {-6.0, -6.0, 0.0, 0.0, 0.0, 0.0}), goal(space, {6.0, 6.0, 1.0, 1.0, -0.5, 2.0});
    builder->addDiffusionSpot(start, CorvMultiDiffusingBuilder::START_LIKE);
    builder->addDiffusionSpot(goal, CorvMultiDiffusingBuilder::GOAL_LIKE);
    m_planner = CorvBuilderPlanner::create(builder);
    const ClumParameterMapShPtr own = ClumParameterMap::createWithBase(parameters());
    own->setDouble("orvane.core.shooter.standard-deviation", 2.0);
    const CorvPathShPtr query = CorvPath::createWithConfig(start);
    const lmStatus status = query->addConfiguration(goal);
    m_path.reset();
    return status.failed() ? status : m_planner->startPlan(query, CorvPathPlanner::STABLE_ENDS, own);
  }

  lmStatus doStep(bool& o_finished) override
  {
    CorvPathShPtr partial;
    bool shouldContinue = true;
    lmStatus status = m_planner->continuePlan(partial, shouldContinue);
    if (status.succeeded() && shouldContinue)
      return status;
    status = m_planner->finishPlan(status, m_path);
    if (status.succeeded() && m_planner != m_optimizer)
    {
      m_optimizer->maxNbLoop(1);
      m_planner = m_optimizer;
      return m_planner->startPlan(m_path, CorvPathPlanner::STABLE_ENDS, parameters());
    }
    o_finished = true;
    return status;
  }

  lmStatus doFinish(const ClumParameterMapShPtr&) override
  {
    CorvPathShPtr ignored;
    if (m_planner && m_planner->isPlanning())
      m_planner->finishPlan(lmStatus(-1), ignored);
    return lmStatus();
  }

  lmStatus doComputeCompletion(double& o_completion) const override
  {
    o_completion = m_planner == m_optimizer ? 0.5 : 0.0;
    return lmStatus();
  }

private:
  CorvDeviceShPtr m_device;
  CorvPathPlannerShPtr m_planner;
  CorvRandomOptimizerShPtr m_optimizer = CorvRandomOptimizer::create();
  CorvPathShPtr m_path;
};

LUM_DESCRIBE(PlanOnCloneOperation)
{
}

namespace
{
using Results = std::vector<std::vector<double>>;

std::vector<PlanOnCloneOperationShPtr> threePlans()
{
  const CorvDeviceShPtr device = freeFlyer(lPart(1.2, 0.8, 0.2));
  EXPECT_TRUE(device->addObstacleGeometry(clutter(11, 60, 8.0)).succeeded());
  std::vector<PlanOnCloneOperationShPtr> plans;
  for (int i = 0; i < 3; ++i)
    plans.push_back(PlanOnCloneOperation::create(device));
  return plans;
}

Results resultsOf(const std::vector<PlanOnCloneOperationShPtr>& i_plans)
{
  Results results;
  for (const PlanOnCloneOperationShPtr& plan : i_plans)
    results.push_back(plan->values());
  return results;
}

Results planAtTheSameTime()
{
  CorvUtility::randomSeed(3);
  const std::vector<PlanOnCloneOperationShPtr> plans = threePlans();
  const auto composition = ClumMultithreadedParallelOperation::create();
  for (const PlanOnCloneOperationShPtr& plan : plans)
    EXPECT_TRUE(composition->addOperation(plan).succeeded());
  EXPECT_TRUE(composition->operate(ClumParameterMap::create(), ClumParameterMapShPtr()).succeeded());
  return resultsOf(plans);
}

Results planOneAfterTheOther()
{
  CorvUtility::randomSeed(3);
  const std::vector<PlanOnCloneOperationShPtr> plans = threePlans();
  std::vector<std::vector<ClumWorkerContextShPtr>> contexts;
  for (std::size_t i = 0; i < plans.size(); ++i)
    contexts.push_back(ClumUtilityMultithread::makeWorkerContexts());
  for (std::size_t i = 0; i < plans.size(); ++i)
  {
    for (const ClumWorkerContextShPtr& context : contexts[i])
      context->enter();
    EXPECT_TRUE(plans[i]->operate(ClumParameterMap::create(), ClumParameterMapShPtr()).succeeded());
    for (const ClumWorkerContextShPtr& context : contexts[i])
      context->leave();
  }
  return resultsOf(plans);
}
} // namespace

TEST(Threads, PlansOnClonesGiveWhatTheyGiveOneAfterTheOther)
{
  const Results expected = planOneAfterTheOther();
  ASSERT_EQ(expected.size(), 3u);
  EXPECT_GT(expected[0].size(), 12u);
  EXPECT_NE(expected[0], expected[1]); // each draws its own numbers
  for (int repetition = 0; repetition < 3; ++repetition)
    EXPECT_EQ(planAtTheSameTime(), expected);
}
