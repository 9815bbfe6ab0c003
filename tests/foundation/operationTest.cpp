#include "foundation/lumCleanUpOperation.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLoopOperation.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumOperation.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumSequenceOperation.h"
#include "foundation/lumWeightedParallelCooperativeOperation.h"

#include <gtest/gtest.h>

LUM_HANDLES(ScriptedOperation)

namespace
{
/// What all operations of a test did, in order: "name:start", "name:step", "name:finish".
std::vector<std::string> g_trace;

const ClumStringKey s_resultKey("test.result");
const ClumStringKey s_renamedKey("test.renamed");
const ClumStringKey s_inputKey("test.input");

const int s_startFailure = 901;
const int s_stepFailure = 902;
const int s_finishFailure = 903;
} // namespace

/// Takes a number of steps and fails where it is told to.
class ScriptedOperation : public ClumOperation
{
  LUM_CONCRETE(ScriptedOperation, ClumOperation);

public:
  enum EFailure
  {
    NEVER,
    AT_START,
    AT_SECOND_STEP,
    AT_FINISH
  };

  static ScriptedOperationShPtr create(const std::string& i_name, unsigned int i_steps, EFailure i_failure = NEVER)
  {
    return lumCreate<ScriptedOperation>(i_name, i_steps, i_failure);
  }

  /// Handed over in the first step.
  ClumOperationShPtr delegate;
  unsigned int failingRuns = ~0u;
  using ClumOperation::unwireDelegateOutput;
  using ClumOperation::wireDelegateOutput;

protected:
  ScriptedOperation() = default;
  ScriptedOperation(const std::string& i_name, unsigned int i_steps, EFailure i_failure)
    : m_name(i_name), m_steps(i_steps), m_failure(i_failure)
  {
  }
  lmStatus init(const ScriptedOperationWkPtr& i_weakPtr) { return ClumOperation::init(i_weakPtr); }

  lmStatus doStart(const ClumParameterMapShPtr&) override
  {
    g_trace.push_back(m_name + ":start");
    m_done = 0;
    ++m_runs;
    return m_failure == AT_START ? lmStatus(s_startFailure) : lmStatus();
  }
  lmStatus doStep(bool& o_finished) override
  {
    g_trace.push_back(m_name + ":step");
    ++m_done;
    if (delegate && m_done == 1)
      return startDelegateOperation(delegate);
    if (m_failure == AT_SECOND_STEP && m_done == 2 && m_runs <= failingRuns)
      return lmStatus(s_stepFailure);
    o_finished = m_done == m_steps;
    return lmStatus();
  }
  lmStatus doFinish(const ClumParameterMapShPtr& o_output) override
  {
    g_trace.push_back(m_name + ":finish");
    o_output->setInt(s_resultKey, static_cast<int>(m_done) + parameters()->intValue(s_inputKey, 0));
    return m_failure == AT_FINISH ? lmStatus(s_finishFailure) : lmStatus();
  }
  lmStatus doComputeCompletion(double& o_completion) const override
  {
    o_completion = static_cast<double>(m_done) / m_steps;
    return lmStatus();
  }

private:
  std::string m_name;
  unsigned int m_steps = 0;
  EFailure m_failure = NEVER;
  unsigned int m_done = 0;
  unsigned int m_runs = 0;
};

LUM_DESCRIBE(ScriptedOperation)
{
}

namespace
{
using Names = std::vector<std::string>;

/// Counts the notices of an operation.
struct RunListener
{
  int starts = 0;
  int stops = 0;
  int input = 0;
  void willStart(const ShPtr<const ClumNotification>& i_notification)
  {
    ++starts;
    const ShPtr<const void> parameters = i_notification->value(ClumOperation::PARAMETERS_KEY).asConstVoid();
    input = static_cast<const ClumParameterMap*>(parameters.get())->intValue(s_inputKey, -1);
  }
  void didStop(const ShPtr<const ClumNotification>&) { ++stops; }
};

ShPtr<RunListener> listenTo(const ClumOperationShPtr& i_operation)
{
  const ShPtr<RunListener> listener(new RunListener);
  const ClumNotificatorShPtr& notificator = i_operation->objectNotificator();
  notificator->subscribe(ClumOperation::WILL_START, listener, listener.get(), &RunListener::willStart);
  notificator->subscribe(ClumOperation::DID_STOP, listener, listener.get(), &RunListener::didStop);
  return listener;
}

lmStatus run(const ClumOperationShPtr& i_operation)
{
  g_trace.clear();
  return i_operation->operate(ClumParameterMapConstShPtr(), ClumParameterMapShPtr());
}

/// The names of the operations in the order of their steps.
Names steps()
{
  Names names;
  for (const std::string& entry : g_trace)
    if (entry.size() > 5 && entry.compare(entry.size() - 5, 5, ":step") == 0)
      names.push_back(entry.substr(0, entry.size() - 5));
  return names;
}
} // namespace

TEST(ClumOperation, EveryRunFinishesAndStopsOnce)
{
  struct
  {
    ScriptedOperation::EFailure failure;
    int status;
    ClumOperation::EState state;
    Names trace;
  } cases[] = {
    {ScriptedOperation::NEVER, 0, ClumOperation::STATE_FINISHED, {"a:start", "a:step", "a:step", "a:finish"}},
    {ScriptedOperation::AT_START, s_startFailure, ClumOperation::STATE_FAILED, {"a:start", "a:finish"}},
    {ScriptedOperation::AT_SECOND_STEP,
     s_stepFailure,
     ClumOperation::STATE_FAILED,
     {"a:start", "a:step", "a:step", "a:finish"}},
    {ScriptedOperation::AT_FINISH,
     s_finishFailure,
     ClumOperation::STATE_FAILED,
     {"a:start", "a:step", "a:step", "a:finish"}},
  };
  for (const auto& test : cases)
  {
    const ScriptedOperationShPtr operation = ScriptedOperation::create("a", 2, test.failure);
    const ShPtr<RunListener> listener = listenTo(operation);
    EXPECT_EQ(operation->state(), ClumOperation::STATE_IDLE);
    EXPECT_EQ(run(operation).code(), static_cast<unsigned int>(test.status));
    EXPECT_EQ(g_trace, test.trace);
    EXPECT_EQ(operation->state(), test.state);
    EXPECT_EQ(listener->starts, 1);
    EXPECT_EQ(listener->stops, 1);
    bool isFinished = false;
    EXPECT_TRUE(operation->step(isFinished).failed());
    EXPECT_TRUE(isFinished);
    EXPECT_EQ(listener->stops, 1);
  }
}

TEST(ClumOperation, AbortEndsTheRunAtTheNextStepWithoutWork)
{
  const ScriptedOperationShPtr operation = ScriptedOperation::create("a", 5);
  const ShPtr<RunListener> listener = listenTo(operation);
  operation->abort(); // without effect: it does not run
  g_trace.clear();
  ASSERT_TRUE(operation->start(ClumParameterMapConstShPtr(), ClumParameterMapShPtr()).succeeded());
  EXPECT_TRUE(operation->start(ClumParameterMapConstShPtr(), ClumParameterMapShPtr()).failed());
  EXPECT_EQ(operation->state(), ClumOperation::STATE_RUNNING);
  operation->abort();
  bool isFinished = false;
  EXPECT_TRUE(operation->step(isFinished).succeeded());
  EXPECT_TRUE(isFinished);
  EXPECT_EQ(g_trace, (Names{"a:start", "a:finish"}));
  EXPECT_EQ(operation->state(), ClumOperation::STATE_ABORTED);
  EXPECT_EQ(listener->stops, 1);
  EXPECT_TRUE(run(operation).succeeded());
  EXPECT_EQ(operation->state(), ClumOperation::STATE_FINISHED);
}

TEST(ClumOperation, CustomParametersGoBeforeThoseOfTheStart)
{
  const ScriptedOperationShPtr operation = ScriptedOperation::create("a", 2);
  const ShPtr<RunListener> listener = listenTo(operation);
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  const ClumParameterMapShPtr output = ClumParameterMap::create();
  parameters->setInt(s_inputKey, 10);
  ASSERT_TRUE(operation->operate(parameters, output).succeeded());
  EXPECT_EQ(output->intValue(s_resultKey, 0), 12);
  operation->customParameters()->setInt(s_inputKey, 20);
  ASSERT_TRUE(operation->operate(parameters, ClumParameterMapShPtr()).succeeded());
  EXPECT_EQ(operation->outputParameters()->intValue(s_resultKey, 0), 22);
  EXPECT_EQ(listener->input, 20);
  EXPECT_EQ(parameters->intValue(s_inputKey, 0), 10);
  EXPECT_FALSE(operation->parameters());
}

TEST(ClumOperation, DelegateTakesTheStepsAndItsWiredOutputIsPassedOn)
{
  const ScriptedOperationShPtr operation = ScriptedOperation::create("a", 2);
  operation->delegate = ScriptedOperation::create("d", 3);
  operation->wireDelegateOutput(s_resultKey, s_renamedKey);
  ASSERT_TRUE(run(operation).succeeded());
  EXPECT_EQ(g_trace,
            (Names{"a:start", "a:step", "d:start", "d:step", "d:step", "d:step", "d:finish", "a:step", "a:finish"}));
  EXPECT_EQ(operation->outputParameters()->intValue(s_renamedKey, 0), 3);
  EXPECT_EQ(operation->outputParameters()->intValue(s_resultKey, 0), 2);
  operation->unwireDelegateOutput(s_resultKey);
  ASSERT_TRUE(run(operation).succeeded());
  EXPECT_FALSE(operation->outputParameters()->hasInt(s_renamedKey));

  operation->delegate = ScriptedOperation::create("d", 3, ScriptedOperation::AT_SECOND_STEP);
  EXPECT_EQ(run(operation).code(), static_cast<unsigned int>(s_stepFailure));
  EXPECT_EQ(g_trace, (Names{"a:start", "a:step", "d:start", "d:step", "d:step", "d:finish", "a:finish"}));

  operation->delegate = ScriptedOperation::create("d", 9);
  g_trace.clear();
  bool isFinished = false;
  operation->start(ClumParameterMapConstShPtr(), ClumParameterMapShPtr());
  operation->step(isFinished);
  operation->abort();
  operation->step(isFinished);
  EXPECT_EQ(g_trace, (Names{"a:start", "a:step", "d:start", "d:finish", "a:finish"}));
  EXPECT_EQ(operation->delegate->state(), ClumOperation::STATE_ABORTED);
}

TEST(ClumSequenceOperation, RunsItsMembersInOrderAndFlattensChains)
{
  const ScriptedOperationShPtr a = ScriptedOperation::create("a", 2);
  const ScriptedOperationShPtr b = ScriptedOperation::create("b", 1);
  const ScriptedOperationShPtr c = ScriptedOperation::create("c", 1);
  const ClumSequenceOperationShPtr chain = boost::dynamic_pointer_cast<ClumSequenceOperation>(a->then(b->then(c)));
  ASSERT_TRUE(chain);
  ASSERT_EQ(chain->countOperations(), 3u);
  EXPECT_TRUE(run(chain).succeeded());
  EXPECT_EQ(g_trace, (Names{"a:start", "a:step", "a:step", "a:finish", "b:start", "b:step", "b:finish", "c:start",
                            "c:step", "c:finish"}));
  EXPECT_FALSE(a->then(ClumOperationShPtr()));
  EXPECT_TRUE(chain->addOperation(chain).failed());
  EXPECT_TRUE(run(ClumSequenceOperation::create()).succeeded());

  double completion = 0.0;
  bool isFinished = false;
  chain->start(ClumParameterMapConstShPtr(), ClumParameterMapShPtr());
  chain->step(isFinished);
  EXPECT_TRUE(chain->computeCompletion(completion).succeeded());
  EXPECT_DOUBLE_EQ(completion, 0.5 / 3.0);
  g_trace.clear();
  chain->abort();
  chain->step(isFinished);
  EXPECT_EQ(g_trace, Names{"a:finish"});

  const ClumOperationShPtr failing = ScriptedOperation::create("f", 2, ScriptedOperation::AT_START)->then(b);
  EXPECT_EQ(run(failing).code(), static_cast<unsigned int>(s_startFailure));
  EXPECT_EQ(g_trace, (Names{"f:start", "f:finish"}));
}

TEST(ClumParallelCooperativeOperation, GivesEachActiveMemberATurnARound)
{
  const ClumParallelCooperativeOperationShPtr parallel = ClumParallelCooperativeOperation::create();
  const ScriptedOperationShPtr a = ScriptedOperation::create("a", 3);
  const ScriptedOperationShPtr b = ScriptedOperation::create("b", 1);
  const ScriptedOperationShPtr late = ScriptedOperation::create("l", 2);
  ASSERT_TRUE(parallel->addOperation(a).succeeded() && parallel->addOperation(b).succeeded());
  EXPECT_TRUE(parallel->addOperation(a).failed());
  g_trace.clear();
  bool isFinished = false;
  parallel->start(ClumParameterMapConstShPtr(), ClumParameterMapShPtr());
  parallel->step(isFinished);
  EXPECT_TRUE(parallel->addOperation(late).succeeded());
  EXPECT_EQ(late->state(), ClumOperation::STATE_RUNNING);
  parallel->isActive(0, false);
  parallel->step(isFinished);
  parallel->step(isFinished);
  EXPECT_FALSE(isFinished); // a sleeping member is not a finished one
  EXPECT_EQ(steps(), (Names{"a", "b", "l", "l"}));
  parallel->step(isFinished);
  EXPECT_FALSE(isFinished);
  parallel->isActive(0, true);
  parallel->step(isFinished);
  parallel->step(isFinished);
  EXPECT_TRUE(isFinished);
  EXPECT_EQ(steps(), (Names{"a", "b", "l", "l", "a", "a"}));
}

TEST(ClumParallelCooperativeOperation, StopsWhatIsRemovedAndAllWhenOneFails)
{
  const ScriptedOperationShPtr a = ScriptedOperation::create("a", 9);
  const ScriptedOperationShPtr f = ScriptedOperation::create("f", 9, ScriptedOperation::AT_SECOND_STEP);
  const ScriptedOperationShPtr r = ScriptedOperation::create("r", 9);
  const ClumParallelCooperativeOperationShPtr parallel = ClumParallelCooperativeOperation::create();
  parallel->addOperation(a);
  parallel->addOperation(r);
  parallel->addOperation(f);
  g_trace.clear();
  bool isFinished = false;
  parallel->start(ClumParameterMapConstShPtr(), ClumParameterMapShPtr());
  parallel->step(isFinished);
  EXPECT_TRUE(parallel->removeOperation(r).succeeded());
  EXPECT_TRUE(parallel->removeOperation(r).failed());
  EXPECT_EQ(r->state(), ClumOperation::STATE_ABORTED);
  EXPECT_EQ(parallel->step(isFinished).code(), static_cast<unsigned int>(s_stepFailure));
  EXPECT_TRUE(isFinished);
  EXPECT_EQ(a->state(), ClumOperation::STATE_ABORTED);
  EXPECT_EQ(steps(), (Names{"a", "r", "f", "a", "f"}));
}

TEST(ClumWeightedParallelCooperativeOperation, StepsAreInProportionToTheWeights)
{
  struct
  {
    double weightOfA, weightOfB;
    unsigned int stepsOfA, stepsOfB;
  } cases[] = {{1.0, 1.0, 300, 300}, {3.0, 1.0, 300, 100}, {0.1, 0.7, 42, 300}};
  for (const auto& test : cases)
  {
    const ClumWeightedParallelCooperativeOperationShPtr parallel = ClumWeightedParallelCooperativeOperation::create();
    const ScriptedOperationShPtr a = ScriptedOperation::create("a", 1000);
    const ScriptedOperationShPtr b = ScriptedOperation::create("b", 1000);
    ASSERT_TRUE(parallel->addOperation(a, test.weightOfA).succeeded());
    ASSERT_TRUE(parallel->addOperation(b).succeeded());
    ASSERT_TRUE(parallel->setWeightOfOperation(b, test.weightOfB).succeeded());
    EXPECT_TRUE(parallel->setWeightOfOperation(b, 0.0).failed());
    g_trace.clear();
    bool isFinished = false;
    parallel->start(ClumParameterMapConstShPtr(), ClumParameterMapShPtr());
    for (int round = 0; round < 300; ++round)
      parallel->step(isFinished);
    const Names order = steps();
    EXPECT_EQ(std::count(order.begin(), order.end(), "a"), test.stepsOfA);
    EXPECT_EQ(std::count(order.begin(), order.end(), "b"), test.stepsOfB);
  }
  const ClumOperationShPtr composed =
    ScriptedOperation::create("a", 2)->withWeighted(ScriptedOperation::create("b", 2), 0.5);
  EXPECT_TRUE(run(composed).succeeded());
  EXPECT_EQ(steps(), (Names{"a", "a", "b", "b"}));
  EXPECT_FALSE(ScriptedOperation::create("a", 2)->withWeighted(ScriptedOperation::create("b", 2), -1.0));
}

TEST(ClumCleanUpOperation, CleansUpWhateverHappened)
{
  struct
  {
    ScriptedOperation::EFailure failure, cleanUpFailure;
    int status;
  } cases[] = {{ScriptedOperation::NEVER, ScriptedOperation::NEVER, 0},
               {ScriptedOperation::AT_START, ScriptedOperation::NEVER, s_startFailure},
               {ScriptedOperation::AT_SECOND_STEP, ScriptedOperation::AT_FINISH, s_stepFailure},
               {ScriptedOperation::NEVER, ScriptedOperation::AT_FINISH, s_finishFailure},
               {ScriptedOperation::NEVER, ScriptedOperation::AT_START, s_startFailure}};
  for (const auto& test : cases)
  {
    const ClumOperationShPtr operation =
      ScriptedOperation::create("a", 3, test.failure)->finally(ScriptedOperation::create("z", 2, test.cleanUpFailure));
    EXPECT_EQ(run(operation).code(), static_cast<unsigned int>(test.status));
    EXPECT_EQ(std::count(g_trace.begin(), g_trace.end(), "z:start"), 1);
    EXPECT_EQ(g_trace.back(), "z:finish");
  }
  const ClumOperationShPtr aborted = ScriptedOperation::create("a", 9)->finally(ScriptedOperation::create("z", 2));
  g_trace.clear();
  bool isFinished = false;
  aborted->start(ClumParameterMapConstShPtr(), ClumParameterMapShPtr());
  aborted->step(isFinished);
  aborted->abort();
  EXPECT_TRUE(aborted->step(isFinished).succeeded());
  EXPECT_EQ(g_trace, (Names{"a:start", "a:step", "a:finish", "z:start", "z:step", "z:step", "z:finish"}));
  EXPECT_EQ(aborted->state(), ClumOperation::STATE_ABORTED);
}

TEST(ClumLoopOperation, RepeatsAndAttemptStopsAtTheFirstSuccess)
{
  const ScriptedOperationShPtr operation = ScriptedOperation::create("a", 2);
  EXPECT_TRUE(run(operation->loop(3)).succeeded());
  EXPECT_EQ(steps().size(), 6u);
  EXPECT_FALSE(operation->loop(0));
  EXPECT_FALSE(operation->attempt(0));
  EXPECT_TRUE(run(operation->attempt(3)).succeeded());
  EXPECT_EQ(steps().size(), 2u);

  const ScriptedOperationShPtr stubborn = ScriptedOperation::create("s", 3, ScriptedOperation::AT_SECOND_STEP);
  EXPECT_EQ(run(stubborn->loop(2)).code(), static_cast<unsigned int>(s_stepFailure));
  EXPECT_EQ(steps().size(), 2u);
  EXPECT_EQ(run(stubborn->attempt(3)).code(), static_cast<unsigned int>(s_stepFailure));
  EXPECT_EQ(steps().size(), 6u);
  const ScriptedOperationShPtr moody = ScriptedOperation::create("m", 3, ScriptedOperation::AT_SECOND_STEP);
  moody->failingRuns = 2;
  EXPECT_TRUE(run(moody->attempt(5)).succeeded());
  EXPECT_EQ(steps().size(), 2u + 2u + 3u);
}
