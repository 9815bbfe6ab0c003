#include "planners/orvPathPlanner.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumParameterMap.h"
#include "paths/orvPath.h"
#include "paths/orvSMLinear.h"
#include "planners/orvIdentityPlanner.h"
#include "planners/orvPlannerOperation.h"
#include "support/logCapture.h"
#include "support/plainSpace.h"

#include <gtest/gtest.h>

LUM_HANDLES(ScriptPlanner)

namespace
{
using TEvents = std::vector<std::string>;
}

/// Counts down its steps, shows one of them as a partial path, and writes down what is called.
class ScriptPlanner : public CorvPathPlanner
{
  LUM_CONCRETE(ScriptPlanner, CorvPathPlanner);

public:
  static ScriptPlannerShPtr create() { return lumCreate<ScriptPlanner>(); }

  unsigned int steps = 3;
  lmStatus startStatus;
  unsigned int failingStep = ~0u;
  double completion = 0.5;
  CorvPathShPtr partial; ///< shown by every step
  TEvents events;

  using CorvPathPlanner::didComputePartialPath;
  using CorvPathPlanner::startSubplanner;

protected:
  ScriptPlanner() = default;
  lmStatus init(const ScriptPlannerWkPtr& i_weakPtr) { return CorvPathPlanner::init(i_weakPtr); }

  lmStatus doStartPlan() override
  {
    events.push_back("start");
    m_done = 0;
    return startStatus;
  }
  lmStatus doContinuePlan(CorvPathShPtr& io_path, bool& o_shouldContinue) override
  {
    events.push_back("step");
    io_path = partial;
    o_shouldContinue = ++m_done < steps;
    return m_done == failingStep ? lmStatus(77) : lmStatus();
  }
  lmStatus doFinishPlan(const lmStatus& i_status, CorvPathShPtr& io_path) override
  {
    events.push_back("finish");
    if (i_status.succeeded())
      io_path = CorvPath::createCopy(inputPath());
    return i_status;
  }
  lmStatus doComputeCompletion(double& o_completion) const override
  {
    o_completion = completion;
    return lmStatus();
  }

private:
  unsigned int m_done = 0;
};

LUM_DESCRIBE(ScriptPlanner)
{
}

namespace
{
/// Writes down what it hears under its name, and stops a plan at a given query.
class Witness : public CorvPathPlannerDelegate
{
public:
  Witness(const std::string& i_name, TEvents& i_events) : name(i_name), events(i_events) {}

  void plannerWillStartPlanning(const CorvPathPlannerShPtr& i_planner, const CorvPathConstShPtr& i_path) override
  {
    events.push_back(name + " will start");
    CorvPathPlannerDelegate::plannerWillStartPlanning(i_planner, i_path);
  }
  void plannerDidFinishPlanning(const CorvPathPlannerShPtr& i_planner, const CorvPathConstShPtr& i_path,
                                const lmStatus& i_status) override
  {
    events.push_back(name + (i_status.succeeded() ? " did finish" : " did fail"));
    CorvPathPlannerDelegate::plannerDidFinishPlanning(i_planner, i_path, i_status);
  }
  bool plannerShouldStopPlanning(const CorvPathPlannerShPtr& i_planner) override
  {
    if (stopAt != 0 && --stopAt == 0)
      return true;
    return CorvPathPlannerDelegate::plannerShouldStopPlanning(i_planner);
  }
  void plannerDidComputePartialPath(const CorvPathPlannerShPtr& i_planner, const CorvPathConstShPtr& i_path) override
  {
    events.push_back(name + " partial");
    CorvPathPlannerDelegate::plannerDidComputePartialPath(i_planner, i_path);
  }

  std::string name;
  TEvents& events;
  unsigned int stopAt = 0;
};

struct PlannerListener
{
  TEvents& events;
  CorvPathPlannerShPtr planner;
  void hear(const ShPtr<const ClumNotification>& i_notification)
  {
    const bool isStart = i_notification->id() == CorvPathPlanner::WILL_START;
    const bool isStop = i_notification->id() == CorvPathPlanner::DID_STOP;
    EXPECT_EQ(i_notification->sender(), planner);
    events.push_back(isStart ? "WILL_START" : isStop ? "DID_STOP" : "DID_COMPUTE_PARTIAL_PATH");
  }
  void hearProperty(const ShPtr<const ClumNotification>& i_notification)
  {
    EXPECT_EQ(i_notification->stringValue(ClumObject::ELEMENT_NAME_KEY), "isPlanning");
    events.push_back(i_notification->id() == ClumObject::WILL_CHANGE_PROPERTY ? "will change" : "did change");
  }
};

class PathPlanner : public testing::Test
{
protected:
  PathPlanner() : space(plainSpace({false, false})), planner(ScriptPlanner::create())
  {
    space->steeringMethod(CorvSMLinear::create());
  }

  /// Through (x, 0) for each x.
  CorvPathShPtr pathThrough(const std::vector<double>& i_xs) const
  {
    const CorvPathShPtr line = CorvPath::create(space);
    for (const double x : i_xs)
      EXPECT_TRUE(line->addConfiguration(CorvConfig(space, {x, 0.0})).succeeded());
    return line;
  }

  void listen()
  {
    listener.reset(new PlannerListener{planner->events, planner});
    for (const unsigned int id :
         {CorvPathPlanner::WILL_START, CorvPathPlanner::DID_COMPUTE_PARTIAL_PATH, CorvPathPlanner::DID_STOP})
      planner->notificator()->subscribe(id, listener, listener.get(), &PlannerListener::hear);
    for (const unsigned int id : {ClumObject::WILL_CHANGE_PROPERTY, ClumObject::DID_CHANGE_PROPERTY})
      planner->objectNotificator()->subscribe(id, listener, listener.get(), &PlannerListener::hearProperty);
  }

  CorvConfigSpaceShPtr space;
  ScriptPlannerShPtr planner;
  ShPtr<PlannerListener> listener;
  CorvPathShPtr path;
  std::vector<bool> stable;
};
} // namespace

TEST_F(PathPlanner, CallsStagesNoticesAndDelegatesInOrder)
{
  listen();
  planner->addDelegate(CorvPathPlannerDelegateShPtr(new Witness("first", planner->events)));
  planner->addDelegate(CorvPathPlannerDelegateShPtr(new Witness("last", planner->events)));
  planner->partial = pathThrough({0.0, 0.5});
  planner->steps = 2;
  ASSERT_TRUE(planner->plan(pathThrough({0.0, 1.0}), CorvPathPlanner::STABLE_ENDS, path, stable).succeeded());
  EXPECT_EQ(planner->events,
            (TEvents{"will change", "WILL_START", "last will start", "first will start", "did change", "start", "step",
                     "DID_COMPUTE_PARTIAL_PATH", "last partial", "first partial", "step", "finish", "will change",
                     "DID_STOP", "last did finish", "first did finish", "did change"}));
  EXPECT_EQ(stable, (std::vector<bool>{true, true}));
  EXPECT_FALSE(planner->isPlanning() || planner->inputPath() || planner->parameters());
}

TEST_F(PathPlanner, StopFromADelegateEndsThroughTheFinish)
{
  listen();
  const ShPtr<Witness> witness(new Witness("w", planner->events));
  planner->addDelegate(witness);
  witness->stopAt = 1;
  EXPECT_EQ(planner->plan(pathThrough({0.0, 1.0}), CorvPathPlanner::STABLE_ENDS, path).code(), lmStatus::FAILURE);
  EXPECT_EQ(planner->events, (TEvents{"will change", "WILL_START", "w will start", "did change", "start", "finish",
                                      "will change", "DID_STOP", "w did fail", "did change"}));
  EXPECT_FALSE(planner->isPlanning());
  EXPECT_FALSE(path);

  witness->stopAt = 2;
  bool shouldContinue = false;
  ASSERT_TRUE(planner->startPlan(pathThrough({0.0, 1.0}), CorvPathPlanner::STABLE_ENDS).succeeded());
  EXPECT_TRUE(planner->continuePlan(path, shouldContinue).succeeded());
  EXPECT_TRUE(shouldContinue);
  EXPECT_TRUE(planner->continuePlan(path, shouldContinue).failed());
  EXPECT_FALSE(shouldContinue);
  EXPECT_TRUE(planner->finishPlanWithBool(false, path).failed());
}

TEST_F(PathPlanner, FailingStepGoesThroughTheFinishAndFailingStartWaitsForIt)
{
  planner->failingStep = 2;
  EXPECT_EQ(planner->plan(pathThrough({0.0, 1.0}), CorvPathPlanner::STABLE_ENDS, path).code(), 77u);
  EXPECT_EQ(planner->events, (TEvents{"start", "step", "step", "finish"}));

  planner->startStatus = 5;
  EXPECT_EQ(planner->startPlan(pathThrough({0.0, 1.0}), CorvPathPlanner::STABLE_ENDS).code(), 5u);
  EXPECT_TRUE(planner->isPlanning());
  EXPECT_EQ(planner->finishPlan(lmStatus(5), path, stable).code(), 5u);
  EXPECT_EQ(stable, (std::vector<bool>{true, true}));
  EXPECT_FALSE(planner->isPlanning());
}

TEST_F(PathPlanner, RefusesWrongCallsWithoutChange)
{
  bool shouldContinue = false;
  EXPECT_TRUE(planner->finishPlan(lmStatus(), path).failed());
  EXPECT_TRUE(planner->continuePlan(path, shouldContinue).failed());
  EXPECT_TRUE(shouldContinue);
  EXPECT_TRUE(planner->plan(CorvPathConstShPtr(), CorvPathPlanner::STABLE_ENDS, path).failed());
  const CorvPathShPtr input = pathThrough({0.0, 1.0});
  EXPECT_TRUE(planner->plan(input, std::vector<bool>{true}, path).failed());
  double completion = 0.0;
  EXPECT_TRUE(planner->computeCompletion(completion).failed());
  EXPECT_TRUE(planner->events.empty());

  ASSERT_TRUE(planner->startPlan(input, CorvPathPlanner::STABLE_START).succeeded());
  EXPECT_TRUE(planner->plan(pathThrough({3.0}), CorvPathPlanner::STABLE_END, path).failed());
  EXPECT_TRUE(planner->startPlan(pathThrough({3.0}), CorvPathPlanner::STABLE_END).failed());
  EXPECT_EQ(planner->inputPath(), input);
  EXPECT_TRUE(planner->stableStart() && !planner->stableEnd());
  EXPECT_TRUE(planner->computeCompletion(completion).succeeded());
  planner->completion = 1.5;
  EXPECT_TRUE(planner->computeCompletion(completion).failed());
  const LogCapture log;
  planner->cloneByCoding();
  EXPECT_TRUE(log.contains("Assertion failed: !isPlanning()"));
}

TEST_F(PathPlanner, OneConfigurationStandsForStartOrEnd)
{
  const auto ends = [&](CorvPathPlanner::EStability stability)
  {
    EXPECT_TRUE(planner->startPlan(pathThrough({2.0}), stability).succeeded());
    const std::pair<bool, bool> found(planner->stableStart(), planner->stableEnd());
    planner->finishPlan(lmStatus(-1), path);
    return found;
  };
  EXPECT_EQ(ends(CorvPathPlanner::STABLE_END), std::make_pair(false, true));
  EXPECT_EQ(ends(CorvPathPlanner::STABLE_START), std::make_pair(true, false));
  EXPECT_EQ(ends(CorvPathPlanner::STABLE_ENDS), std::make_pair(true, true));
  EXPECT_EQ(ends(CorvPathPlanner::STABLE_NONE), std::make_pair(false, false));
}

TEST_F(PathPlanner, SubplannerGetsTheStabilityOfThePlan)
{
  const auto check = [&](const CorvPathShPtr& input, CorvPathPlanner::EStability stability)
  {
    ASSERT_TRUE(planner->startPlan(input, stability).succeeded());
    const ScriptPlannerShPtr sub = ScriptPlanner::create();
    ASSERT_TRUE(planner->startSubplanner(sub, input, planner->parameters()).succeeded());
    EXPECT_EQ(sub->stableConfigs(), planner->stableConfigs());
    EXPECT_EQ(sub->stableStart(), planner->stableStart());
    EXPECT_EQ(sub->stableEnd(), planner->stableEnd());
    EXPECT_EQ(sub->parameters(), planner->parameters());
    planner->finishPlan(lmStatus(-1), path);
  };
  check(pathThrough({0.0, 1.0, 2.0}), CorvPathPlanner::STABLE_ALL);
  check(pathThrough({0.0, 1.0, 2.0}), CorvPathPlanner::STABLE_END);
  check(pathThrough({0.0}), CorvPathPlanner::STABLE_END);
}

TEST_F(PathPlanner, ResultKeepsStableConfigurationsInOrder)
{
  ASSERT_TRUE(planner->startPlan(pathThrough({0.0, 1.0, 2.0}), CorvPathPlanner::STABLE_ALL).succeeded());
  EXPECT_TRUE(planner->checkResult(pathThrough({0.0, 0.5, 1.0, 1.5, 2.0})));
  EXPECT_FALSE(planner->checkResult(pathThrough({0.0, 0.5, 2.0})));
  EXPECT_FALSE(planner->checkResult(pathThrough({1.0, 0.0, 2.0})));
  EXPECT_FALSE(planner->checkResult(CorvPathConstShPtr()));
  planner->finishPlan(lmStatus(-1), path);
  ASSERT_TRUE(planner->startPlan(pathThrough({0.0, 1.0, 2.0}), CorvPathPlanner::STABLE_END).succeeded());
  EXPECT_TRUE(planner->checkResult(pathThrough({5.0, 2.0})));
  EXPECT_FALSE(planner->checkResult(pathThrough({0.0, 1.0})));
}

TEST_F(PathPlanner, ReportsASamePartialPathOnce)
{
  planner->partial = pathThrough({0.0, 0.5});
  ASSERT_TRUE(planner->startPlan(pathThrough({0.0, 1.0}), CorvPathPlanner::STABLE_ENDS).succeeded());
  bool shouldContinue = false;
  ASSERT_TRUE(planner->continuePlan(path, shouldContinue).succeeded());
  EXPECT_EQ(path, planner->partial);
  ASSERT_TRUE(planner->continuePlan(path, shouldContinue).succeeded());
  EXPECT_FALSE(path);
}

TEST_F(PathPlanner, DelegatesMoveLeaveAndMayGoBeforeOrAfterThePlanner)
{
  TEvents events;
  const ShPtr<Witness> a(new Witness("a", events));
  const ShPtr<Witness> b(new Witness("b", events));
  const ShPtr<Witness> c(new Witness("c", events));
  const auto heard = [&]
  {
    events.clear();
    planner->didComputePartialPath(CorvPathConstShPtr());
    return events;
  };
  for (const auto& witness : {a, b, c, a})
    planner->addDelegate(witness);
  EXPECT_EQ(heard(), (TEvents{"a partial", "c partial", "b partial"}));
  planner->removeDelegate(c);
  EXPECT_EQ(heard(), (TEvents{"a partial", "b partial"}));
  planner->addDelegate(planner);
  planner->addDelegate(CorvPathPlannerDelegateShPtr());
  EXPECT_EQ(heard(), (TEvents{"a partial", "b partial"}));

  CorvPathPlannerDelegateShPtr owner(new Witness("owner", events));
  planner->addDelegate(owner, true);
  EXPECT_EQ(heard(), (TEvents{"owner partial", "a partial", "b partial"}));
  owner.reset();
  EXPECT_EQ(heard(), TEvents());
  EXPECT_FALSE(a->nextDelegate(*planner));

  const ScriptPlannerShPtr second = ScriptPlanner::create();
  second->addDelegate(a);
  planner->addDelegate(b);
  planner->addDelegate(a);
  const CorvPathPlanner* gone = planner.get();
  EXPECT_EQ(a->nextDelegate(*gone), b);
  planner.reset();
  EXPECT_FALSE(a->nextDelegate(*gone));
  EXPECT_EQ(second->nextDelegate(*second), a);
}

TEST_F(PathPlanner, IdentityReturnsACopyAndAllStability)
{
  const CorvIdentityPlannerShPtr identity = CorvIdentityPlanner::create();
  const CorvPathShPtr input = pathThrough({0.0, 1.0, 2.0});
  ASSERT_TRUE(identity->plan(input, CorvPathPlanner::STABLE_ALL, path, stable).succeeded());
  EXPECT_NE(path, input);
  EXPECT_EQ(path->countConfigurations(), 3u);
  EXPECT_EQ(stable, std::vector<bool>(3, true));
  ASSERT_TRUE(identity->plan(CorvConfig(space, {0.0, 0.0}), CorvConfig(space, {4.0, 3.0}), path).succeeded());
  EXPECT_DOUBLE_EQ(path->length(), 5.0);
  const CorvPathPlannerShPtr clone = identity->clone();
  ASSERT_TRUE(clone);
  EXPECT_NE(clone, identity);
  EXPECT_TRUE(clone->plan(input, CorvPathPlanner::STABLE_ENDS, path).succeeded());
  EXPECT_TRUE(clone->notificator());
  EXPECT_NE(clone->notificator(), identity->notificator());
}

TEST_F(PathPlanner, PlansWithoutANotificator)
{
  planner->notificator(ClumNotificatorShPtr());
  const ClumParameterMapShPtr input = ClumParameterMap::create();
  input->setShPtr(CorvPlannerOperation::INPUT_PATH_KEY, pathThrough({0.0, 1.0}));
  EXPECT_TRUE(planner->asOperation()->operate(input, ClumParameterMapShPtr()).succeeded());
  const CorvIdentityPlannerShPtr silent = CorvIdentityPlanner::create();
  silent->notificator(ClumNotificatorShPtr());
  const CorvPathPlannerShPtr clone = silent->clone();
  ASSERT_TRUE(clone);
  EXPECT_FALSE(clone->notificator());
}

TEST_F(PathPlanner, OperationPlansInStepsAndReportsUnderItsKeys)
{
  using Operation = CorvPlannerOperation;
  const ClumOperationShPtr operation = planner->asOperation();
  const ClumParameterMapShPtr input = ClumParameterMap::create();
  const ClumParameterMapShPtr output = ClumParameterMap::create();
  const CorvPathShPtr shown = CorvPath::create(space);
  planner->partial = pathThrough({0.0, 0.5});
  EXPECT_TRUE(operation->operate(input, output).failed());

  input->setShPtr(Operation::INPUT_PATH_KEY, pathThrough({0.0, 1.0}));
  input->setInt(Operation::STABILITY_KEY, CorvPathPlanner::STABLE_START);
  input->setShPtr(Operation::INTERMEDIATE_PATH_KEY, shown);
  planner->events.clear();
  ASSERT_TRUE(operation->operate(input, output).succeeded());
  EXPECT_EQ(planner->events, (TEvents{"start", "step", "step", "step", "finish"}));
  EXPECT_EQ(output->intValue(Operation::STATUS_KEY, 9), 0);
  EXPECT_EQ(output->shPtrValue<CorvPath>(Operation::OUTPUT_PATH_KEY)->countConfigurations(), 2u);
  EXPECT_EQ(*output->shPtrValue<std::vector<bool>>(Operation::WAYPOINT_STABILITY_KEY),
            (std::vector<bool>{true, false}));
  EXPECT_EQ(shown->countConfigurations(), 2u);
  EXPECT_DOUBLE_EQ(shown->length(), 0.5);

  ASSERT_TRUE(operation->start(input, output).succeeded());
  bool isFinished = false;
  ASSERT_TRUE(operation->step(isFinished).succeeded());
  EXPECT_FALSE(isFinished);
  operation->abort();
  operation->step(isFinished);
  EXPECT_TRUE(isFinished);
  EXPECT_FALSE(planner->isPlanning());
  EXPECT_EQ(output->intValue(Operation::STATUS_KEY, 9), -1);
  double difficulty = 0.0;
  EXPECT_TRUE(operation->computeDifficulty(difficulty).failed());
}

TEST_F(PathPlanner, LoopedOperationPlansOnItsOwnResult)
{
  struct Inputs
  {
    std::vector<CorvPathConstShPtr> paths;
    void hear(const ShPtr<const ClumNotification>& i_notification)
    {
      paths.push_back(
        boost::dynamic_pointer_cast<const CorvPath>(i_notification->value(CorvPathPlanner::PATH_KEY).getConstObject()));
    }
  };
  const ShPtr<Inputs> started(new Inputs);
  const ShPtr<Inputs> stopped(new Inputs);
  planner->notificator()->subscribe(CorvPathPlanner::WILL_START, started, started.get(), &Inputs::hear);
  planner->notificator()->subscribe(CorvPathPlanner::DID_STOP, stopped, stopped.get(), &Inputs::hear);
  const ClumParameterMapShPtr input = ClumParameterMap::create();
  input->setShPtr(CorvPlannerOperation::INPUT_PATH_KEY, pathThrough({0.0, 1.0}));
  ASSERT_TRUE(planner->asOperation()->loop(3)->operate(input, ClumParameterMap::create()).succeeded());
  ASSERT_EQ(started->paths.size(), 3u);
  EXPECT_EQ(started->paths[1], stopped->paths[0]);
  EXPECT_EQ(started->paths[2], stopped->paths[1]);
  EXPECT_FALSE(planner->asOperation()->loop(0));
}
