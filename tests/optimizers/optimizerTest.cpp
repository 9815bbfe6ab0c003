#include "foundation/lumBox.h"
#include "foundation/lumNotification.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvUtility.h"
#include "optimizers/orvAdaptiveShortcutOptimizer.h"
#include "optimizers/orvPathEvaluatorLength.h"
#include "optimizers/orvRandomOptimizer.h"
#include "optimizers/orvShortcutDirect.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "support/devices.h"
#include "support/discWorld.h"
#include "support/logCapture.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace
{
CorvPathShPtr pathThrough(const DiscWorld& i_world, const std::vector<std::pair<double, double>>& i_points)
{
  const CorvPathShPtr path = CorvPath::create(i_world.space);
  for (const auto& [x, y] : i_points)
    EXPECT_TRUE(path->addConfiguration(i_world.at(x, y)).succeeded());
  return path;
}

/// A free way with many needless corners from (1, 5) over the top of the disc at (5, 5) to (9, 5).
CorvPathShPtr detour(const DiscWorld& i_world)
{
  return pathThrough(i_world, {{1.0, 5.0},
                               {1.0, 8.0},
                               {2.0, 7.5},
                               {2.5, 9.5},
                               {4.0, 8.0},
                               {5.0, 9.0},
                               {6.0, 8.0},
                               {7.0, 9.5},
                               {8.0, 7.0},
                               {9.5, 8.0},
                               {9.0, 5.0}});
}

const DiscWorld::Disc s_disc{5.0, 5.0, 2.0};

/// The length of the shortest way around the disc: two tangents of length sqrt(4^2 - 2^2) and an arc of pi/3.
const double s_shortest = 2.0 * std::sqrt(12.0) + 2.0 * M_PI / 3.0;

void expectSoundResult(const DiscWorld& i_world, const CorvPathConstShPtr& i_input, const CorvPathConstShPtr& i_result)
{
  ASSERT_TRUE(i_result);
  EXPECT_TRUE(i_result->startsWith(i_input->configuration(0)));
  EXPECT_TRUE(i_result->endsWith(i_input->configuration(i_input->countDirectPaths())));
  EXPECT_LE(i_result->length(), i_input->length());
  for (unsigned int i = 0; i < i_result->countDirectPaths(); ++i)
  {
    EXPECT_TRUE(i_world.isFree(i_result->configuration(i), i_result->configuration(i + 1)));
    EXPECT_TRUE(
      i == 0 ||

      i_result->directPath(i - 1)->endConfiguration().isEquivalent(i_result->directPath(i)->startConfiguration()));
  }
}

/// Counts the questions, and says stop after a number of them.
class StoppingDelegate : public CorvPathPlannerDelegate
{
public:
  explicit StoppingDelegate(int i_allowed) : allowed(i_allowed) {}
  bool plannerShouldStopPlanning(const CorvPathPlannerShPtr&) override { return ++asked > allowed; }
  int allowed;
  int asked = 0;
};

/// Collects the lengths of the partial paths that a planner reports.
struct PartialPathListener
{
  std::vector<double> lengths;
  std::vector<CorvPathConstShPtr> paths;
  void hear(const ShPtr<const ClumNotification>& i_notification)
  {
    const CorvPathConstShPtr path =
      boost::dynamic_pointer_cast<const CorvPath>(i_notification->value(CorvPathPlanner::PATH_KEY).getConstObject());
    ASSERT_TRUE(path);
    paths.push_back(path);
    lengths.push_back(path->length());
  }
};

/// A shortcut method that never finds anything.
class HopelessMethod : public CorvShortcutDirect
{
public:
  static CorvPathPlannerShPtr create()
  {
    const ShPtr<HopelessMethod> method(new HopelessMethod);
    EXPECT_TRUE(method->init(WkPtr<HopelessMethod>(method)).succeeded());
    return method;
  }
  unsigned int calls = 0;

protected:
  lmStatus doPlan(const CorvPathConstShPtr&, const std::vector<bool>&, const ClumParameterMapConstShPtr&,
                  CorvPathShPtr&) override
  {
    ++calls;
    return lmStatus(-1);
  }
};
} // namespace

TEST(CorvPathEvaluatorLength, ChargesEachDirectPath)
{
  const DiscWorld world;
  const CorvPathShPtr path = pathThrough(world, {{0.0, 0.0}, {3.0, 4.0}, {6.0, 8.0}});
  EXPECT_DOUBLE_EQ((*CorvPathEvaluatorLength::create(0.5))(path), 11.0);
  EXPECT_DOUBLE_EQ((*CorvPathEvaluatorLength::create())(path), 10.0 + 4e-6);
}

TEST(CorvShortcutDirect, JoinsTheEndsIfTheStraightMotionIsFree)
{
  const DiscWorld world({s_disc});
  const CorvShortcutDirectShPtr method = CorvShortcutDirect::create();
  CorvPathShPtr result;
  const CorvPathShPtr free = pathThrough(world, {{1.0, 1.0}, {2.0, 3.0}, {1.0, 5.0}});
  ASSERT_TRUE(method->plan(free, CorvPathPlanner::STABLE_ENDS, result).succeeded());
  ASSERT_TRUE(result);
  EXPECT_EQ(result->countDirectPaths(), 1u);
  EXPECT_NEAR(result->length(), 4.0, 1e-12);
  EXPECT_TRUE(method->plan(detour(world), CorvPathPlanner::STABLE_ENDS, result).failed());
  EXPECT_TRUE(
    method->plan(pathThrough(world, {{1.0, 1.0}, {2.0, 3.0}}), CorvPathPlanner::STABLE_ENDS, result).failed());
}

TEST(CorvAdaptiveShortcutOptimizer, ComesCloseToTheShortestWay)
{
  const DiscWorld world({s_disc});
  const CorvPathShPtr path = detour(world);
  const CorvPathShPtr input = CorvPath::createCopy(path);
  const CorvAdaptiveShortcutOptimizerShPtr optimizer = CorvAdaptiveShortcutOptimizer::create();
  optimizer->maxNbLoop(10);
  ASSERT_TRUE(optimizer->optimizePath(path, 0.1).succeeded());
  expectSoundResult(world, input, path);
  EXPECT_GE(path->length(), s_shortest - 1e-9);
  EXPECT_LT(path->length(), 1.03 * s_shortest);
  EXPECT_FALSE(optimizer->isPlanning());

  // Without an obstacle, the bisection alone leaves one straight motion, in one step.
  const DiscWorld empty;
  const CorvPathShPtr straight = detour(empty);
  optimizer->maxNbLoop(1);
  ASSERT_TRUE(optimizer->optimizePath(straight, 0.1).succeeded());
  EXPECT_EQ(straight->countDirectPaths(), 1u);
  EXPECT_NEAR(straight->length(), 8.0, 1e-12);
}

TEST(CorvAdaptiveShortcutOptimizer, RefusesWhatItCannotKeep)
{
  const DiscWorld world({s_disc});
  const CorvAdaptiveShortcutOptimizerShPtr optimizer = CorvAdaptiveShortcutOptimizer::create();
  optimizer->maxNbLoop(1);
  const CorvPathShPtr path = detour(world);
  CorvPathShPtr result;
  {
    const LogCapture log;
    EXPECT_EQ(optimizer->plan(path, CorvPathPlanner::STABLE_ALL, result).code(),
              CorvPathPlanner::UNSUPPORTED_INTERMEDIATE_STABILITY_ERROR);
    EXPECT_FALSE(result);
    EXPECT_EQ(log.count(), 0u);
  }
  EXPECT_FALSE(optimizer->isPlanning());

  const double length = path->length();
  EXPECT_TRUE(optimizer->optimizePath(path, -0.5).failed());
  EXPECT_TRUE(optimizer->optimizePath(CorvPathShPtr(), 0.1).failed());
  // Never validated: there is no penetration to take over.
  EXPECT_TRUE(optimizer->optimizePath(path).failed());
  EXPECT_EQ(path->length(), length);

  const CorvPathShPtr single = pathThrough(world, {{1.0, 1.0}, {2.0, 1.0}});
  ASSERT_TRUE(optimizer->optimizePath(single, 0.1).succeeded());
  EXPECT_EQ(single->countDirectPaths(), 1u);
}

TEST(CorvAdaptiveShortcutOptimizer, PrecisionBoundsTheAttempts)
{
  const DiscWorld world({s_disc});
  const CorvPathShPtr corner = pathThrough(world, {{1.0, 1.0}, {5.0, 1.0}, {5.0, 2.5}});
  const auto attempts = [&](double i_precision)
  {
    const CorvPathPlannerShPtr method = HopelessMethod::create();
    const CorvAdaptiveShortcutOptimizerShPtr optimizer = CorvAdaptiveShortcutOptimizer::create(method);
    optimizer->maxNbLoop(1);
    optimizer->precision(i_precision);
    EXPECT_TRUE(optimizer->optimizePath(CorvPath::createCopy(corner), 0.1).succeeded());
    return boost::dynamic_pointer_cast<HopelessMethod>(method)->calls;
  };
  // One for the whole path; then the shorter side of 1.5 is halved from 0.75 on while it is no shorter than asked.
  EXPECT_EQ(attempts(1.0), 2u);
  EXPECT_EQ(attempts(0.3), 3u);
  EXPECT_EQ(attempts(0.15), 4u);
  // A thousandth of the length of 5.5: 0.75 / 2^7 > 0.0055 > 0.75 / 2^8.
  EXPECT_EQ(attempts(-1.0), 9u);
}

TEST(CorvRandomOptimizer, ShortensAndRepeatsWithItsSeed)
{
  const DiscWorld world({s_disc});
  std::vector<double> lengths;
  for (unsigned int seed : {3u, 3u, 4u})
  {
    const CorvPathShPtr path = detour(world);
    const CorvPathShPtr input = CorvPath::createCopy(path);
    const CorvRandomOptimizerShPtr optimizer = CorvRandomOptimizer::create();
    optimizer->maxNbLoop(10);
    CorvUtility::randomSeed(seed);
    ASSERT_TRUE(optimizer->optimizePath(path, 0.1).succeeded());
    expectSoundResult(world, input, path);
    EXPECT_GE(path->length(), s_shortest - 1e-9);
    EXPECT_LT(path->length(), 1.1 * s_shortest);
    lengths.push_back(path->length());
  }
  EXPECT_EQ(lengths[0], lengths[1]);
  EXPECT_NE(lengths[0], lengths[2]);
}

TEST(CorvLoopOptimizer, StopsByLoopsOrGain)
{
  const DiscWorld world({s_disc});
  const CorvRandomOptimizerShPtr optimizer = CorvRandomOptimizer::create();
  const auto steps = [&](unsigned int i_maxLoops, double i_minGain)
  {
    optimizer->maxNbLoop(i_maxLoops);
    optimizer->minGainStop(i_minGain);
    CorvUtility::randomSeed(1);
    EXPECT_TRUE(optimizer->startPlan(detour(world), CorvPathPlanner::STABLE_ENDS).succeeded());
    unsigned int count = 0;
    double last = 0.0;
    for (bool more = true; more && count < 2000; ++count)
    {
      double completion = 0.0;
      if (i_maxLoops != 0)
      {
        EXPECT_TRUE(optimizer->computeCompletion(completion).succeeded());
        EXPECT_GE(completion, last);
        last = completion;
      }
      CorvPathShPtr partial;
      EXPECT_TRUE(optimizer->continuePlan(partial, more).succeeded());
    }
    CorvPathShPtr result;
    EXPECT_TRUE(optimizer->finishPlan(lmStatus(), result).succeeded());
    EXPECT_TRUE(result);
    return count;
  };
  EXPECT_EQ(steps(3, 0.0), 60u);
  EXPECT_EQ(steps(0, 0.0), 2000u);
  // No loop saves all of the cost.
  EXPECT_EQ(steps(0, 1.0), 20u);
  const unsigned int untilSmallGain = steps(0, 0.02);
  EXPECT_TRUE(untilSmallGain > 20u && untilSmallGain < 2000u && untilSmallGain % 20u == 0u) << untilSmallGain;
}

TEST(CorvLoopOptimizer, PostOptimizerRunsWithinEachLoop)
{
  const DiscWorld world({s_disc});
  const CorvAdaptiveShortcutOptimizerShPtr post = CorvAdaptiveShortcutOptimizer::create();
  post->maxNbLoop(1);
  const CorvRandomOptimizerShPtr optimizer = CorvRandomOptimizer::create(HopelessMethod::create());
  optimizer->maxNbLoop(2);
  optimizer->postOptimizer(post);
  const CorvPathShPtr path = detour(world);
  const CorvPathShPtr input = CorvPath::createCopy(path);
  ASSERT_TRUE(optimizer->optimizePath(path, 0.1).succeeded());
  expectSoundResult(world, input, path);
  // Only the post-optimiser could have found it.
  EXPECT_LT(path->length(), 0.8 * input->length());
  EXPECT_FALSE(post->isPlanning());
}

TEST(CorvPathOptimizer, StopOfTheDelegateEndsItWithTheBestPath)
{
  const DiscWorld world({s_disc});
  const CorvPathShPtr input = detour(world);
  const CorvAdaptiveShortcutOptimizerShPtr optimizer = CorvAdaptiveShortcutOptimizer::create();
  for (int allowed : {0, 5, 30})
  {
    const ShPtr<StoppingDelegate> delegate(new StoppingDelegate(allowed));
    optimizer->addDelegate(delegate);
    CorvPathShPtr result;
    EXPECT_TRUE(optimizer->plan(input, CorvPathPlanner::STABLE_ENDS, result).failed());
    expectSoundResult(world, input, result);
    EXPECT_TRUE(allowed != 0 || result->length() == input->length());
    EXPECT_TRUE(allowed != 30 || result->length() < input->length());
    optimizer->removeDelegate(delegate);
  }
}

TEST(CorvPathOptimizer, ReportsEachBetterPathOnce)
{
  const DiscWorld world({s_disc});
  const CorvAdaptiveShortcutOptimizerShPtr optimizer = CorvAdaptiveShortcutOptimizer::create();
  optimizer->maxNbLoop(3);
  const ShPtr<PartialPathListener> listener(new PartialPathListener);
  ASSERT_TRUE(
    optimizer->notificator()
      ->subscribe(CorvPathPlanner::DID_COMPUTE_PARTIAL_PATH, listener, listener.get(), &PartialPathListener::hear)
      .succeeded());
  const CorvPathShPtr path = detour(world);
  double last = path->length();
  ASSERT_TRUE(optimizer->optimizePath(path, 0.1).succeeded());
  ASSERT_GT(listener->lengths.size(), 2u);
  for (std::size_t i = 0; i < listener->paths.size(); ++i)
  {
    EXPECT_LT(listener->lengths[i], last);
    last = listener->lengths[i];
    // What was reported does not change afterwards.
    EXPECT_EQ(listener->paths[i]->length(), last);
  }
  EXPECT_EQ(path->length(), last);
}

TEST(CorvPathOptimizer, AcceptingAllShortcutsNeverWorsensTheResult)
{
  const DiscWorld world({s_disc});
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  parameters->setBool("orvane.core.planner.path-optimizer.accept-all-valid-shortcuts", true);
  const CorvPathShPtr input = detour(world);
  const CorvRandomOptimizerShPtr optimizer = CorvRandomOptimizer::create();
  optimizer->maxNbLoop(3);
  CorvUtility::randomSeed(9);
  CorvPathShPtr result;
  ASSERT_TRUE(optimizer->plan(input, CorvPathPlanner::STABLE_ENDS, parameters, result).succeeded());
  expectSoundResult(world, input, result);
}

TEST(CorvPathOptimizer, KeepsAProvedMotionClearOfRealGeometry)
{
  const CorvDeviceShPtr device = freeFlyer(ClumBox::create(1.0, 1.0, 1.0));
  ASSERT_TRUE(device->addObstacleGeometry(ClumBox::create(2.0, 2.0, 30.0)).succeeded());
  const CorvPathShPtr path = CorvPath::create(device);
  for (const auto& [x, y, angle] : std::vector<std::array<double, 3>>{
         {-4.0, 0.0, 0.0}, {-4.0, 5.0, 1.0}, {-2.0, 6.0, 0.5}, {2.0, 5.0, -1.0}, {3.0, 6.0, 0.0}, {4.0, 0.0, 0.3}})
    ASSERT_TRUE(path->addConfiguration(CorvConfig(device, {x, y, 0.0, 0.0, 0.0, angle})).succeeded());
  ASSERT_TRUE(path->validateWithPenetration(0.05, true));
  EXPECT_EQ(path->maxPenetration(), 0.05);
  const double before = path->length();

  const CorvAdaptiveShortcutOptimizerShPtr optimizer = CorvAdaptiveShortcutOptimizer::create();
  optimizer->maxNbLoop(3);
  optimizer->precision(0.1);
  ASSERT_TRUE(optimizer->optimizePath(path).succeeded());
  EXPECT_LT(path->length(), 0.8 * before);
  // No deeper than the penetration that the path was validated with.
  const CorvDeviceShPtr thinner = freeFlyer(ClumBox::create(0.9, 0.9, 0.9));
  ASSERT_TRUE(thinner->addObstacleGeometry(ClumBox::create(2.0, 2.0, 30.0)).succeeded());
  for (int i = 0; i <= 1000; ++i)
  {
    const CorvConfigShPtr cfg = path->configAtParam(i / 1000.0);
    ASSERT_TRUE(cfg);
    bool isColliding = true;
    ASSERT_TRUE(CorvConfig(thinner, cfg->dofValues()).isColliding(isColliding).succeeded());
    EXPECT_FALSE(isColliding) << i;
  }
}

TEST(CorvPathOptimizer, CopyByCodingKeepsItsSettings)
{
  const CorvAdaptiveShortcutOptimizerShPtr optimizer = CorvAdaptiveShortcutOptimizer::create();
  optimizer->maxNbLoop(7);
  optimizer->minGainStop(0.125);
  optimizer->precision(0.5);
  optimizer->penetration(0.25);
  optimizer->postOptimizer(CorvRandomOptimizer::create());
  const auto copy = boost::dynamic_pointer_cast<CorvAdaptiveShortcutOptimizer>(optimizer->clone());
  ASSERT_TRUE(copy);
  EXPECT_EQ(copy->maxNbLoop(), 7u);
  EXPECT_EQ(copy->minGainStop(), 0.125);
  EXPECT_EQ(copy->precision(), 0.5);
  EXPECT_EQ(copy->penetration(), 0.25);
  EXPECT_NE(copy->shortcutMethod(), optimizer->shortcutMethod());
  ASSERT_TRUE(copy->shortcutMethod() && copy->postOptimizer());

  // The copy hears the questions of its own method: a stop reaches it.
  const DiscWorld world({s_disc});
  CorvPathShPtr result;
  copy->postOptimizer(CorvPathOptimizerShPtr());
  copy->maxNbLoop(1);
  EXPECT_TRUE(copy->plan(detour(world), CorvPathPlanner::STABLE_ENDS, result).succeeded());
  expectSoundResult(world, detour(world), result);
}
