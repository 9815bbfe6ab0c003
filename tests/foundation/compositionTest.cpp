#include "foundation/lumAutotuningParallelCooperativeOperation.h"
#include "foundation/lumCleanUpOperation.h"
#include "foundation/lumDataMonitor.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLoopOperation.h"
#include "foundation/lumMultithreadedParallelOperation.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumSequenceOperation.h"
#include "foundation/lumUtilityMultithread.h"
#include "foundation/lumWeightedParallelCooperativeOperation.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

LUM_HANDLES(CountingOperation)

namespace
{
const int s_failure = 931;
const unsigned int s_doneId = ClumNotification::makeID("CountingOperation", "DONE");
const ClumStringKey s_countKey("test.count");
} // namespace

/// Counts its own steps. Shares nothing with others but the place where it tells its thread.
class CountingOperation : public ClumOperation
{
  LUM_CONCRETE(CountingOperation, ClumOperation);

public:
  static CountingOperationShPtr create(unsigned int i_steps) { return lumCreate<CountingOperation>(i_steps); }

  EThreadSafety threadSafety() const override { return safety; }

  EThreadSafety safety = THREAD_SAFE;
  unsigned int failingStep = 0; ///< 0 for none
  bool failsAtStart = false;
  unsigned int signalInterval = 0; ///< a signal each so many steps; 0 for none
  ClumNotificatorShPtr notificator;
  std::atomic<unsigned int> count{0};
  std::thread::id thread; ///< of the last step

protected:
  CountingOperation() = default;
  explicit CountingOperation(unsigned int i_steps) : m_steps(i_steps) {}
  lmStatus init(const CountingOperationWkPtr& i_weakPtr) { return ClumOperation::init(i_weakPtr); }

  lmStatus doStart(const ClumParameterMapShPtr&) override { return failsAtStart ? lmStatus(s_failure) : lmStatus(); }
  lmStatus doStep(bool& o_finished) override
  {
    thread = std::this_thread::get_id();
    o_finished = ++count == m_steps;
    if (signalInterval != 0 && count % signalInterval == 0)
      notificator->notify(ClumNotification::create(s_doneId, self()));
    return count == failingStep ? lmStatus(s_failure) : lmStatus();
  }
  lmStatus doFinish(const ClumParameterMapShPtr& o_output) override
  {
    o_output->setInt(s_countKey, static_cast<int>(count.load()));
    return lmStatus();
  }
  lmStatus doComputeCompletion(double& o_completion) const override
  {
    o_completion = static_cast<double>(count) / m_steps;
    return lmStatus();
  }

private:
  unsigned int m_steps = 0;
};

LUM_DESCRIBE(CountingOperation)
{
}

namespace
{
const unsigned int s_endless = 4000000000u;

lmStatus runToItsEnd(const ClumOperationShPtr& i_operation, const ClumParameterMapShPtr& o_output)
{
  return i_operation->operate(ClumParameterMapConstShPtr(), o_output);
}

/// The composition as it is written: "seq(a b)".
std::string formOf(const ClumOperationShPtr& i_operation)
{
  const auto joined = [](const std::string& name, const auto& composition)
  {
    std::string text = name + "(";
    for (unsigned int rank = 0; rank < composition.countOperations(); ++rank)
      text += (rank == 0 ? "" : " ") + formOf(composition.operation(rank));
    return text + ")";
  };
  if (const auto* sequence = dynamic_cast<const ClumSequenceOperation*>(i_operation.get()))
    return joined("seq", *sequence);
  if (const auto* weighted = dynamic_cast<const ClumWeightedParallelCooperativeOperation*>(i_operation.get()))
    return joined("weighted", *weighted);
  if (const auto* threads = dynamic_cast<const ClumMultithreadedParallelOperation*>(i_operation.get()))
    return joined("threads", *threads);
  if (const auto* parallel = dynamic_cast<const ClumParallelCooperativeOperation*>(i_operation.get()))
    return joined("par", *parallel);
  if (const auto* loop = dynamic_cast<const ClumRepeatingOperation*>(i_operation.get()))
    return "repeat(" + formOf(loop->operation()) + ")";
  if (const auto* cleanUp = dynamic_cast<const ClumCleanUpOperation*>(i_operation.get()))
    return "finally(" + formOf(cleanUp->operation()) + " " + formOf(cleanUp->cleanUp()) + ")";
  return i_operation ? "x" : "null";
}

template <class COMPOSITION>
ShPtr<COMPOSITION> compositionOf(const ShPtr<COMPOSITION>& i_composition,
                                 const std::vector<ClumOperationShPtr>& i_members)
{
  for (const ClumOperationShPtr& member : i_members)
    EXPECT_TRUE(i_composition->addOperation(member).succeeded());
  return i_composition;
}
} // namespace

TEST(ClumOperation, SimpleFormsHaveFewerLayersAndDoTheSame)
{
  const auto x = [] { return CountingOperation::create(1); };
  const auto sequence = [](const std::vector<ClumOperationShPtr>& members)
  { return compositionOf(ClumSequenceOperation::create(), members); };
  const auto parallel = [](const std::vector<ClumOperationShPtr>& members)
  { return compositionOf(ClumParallelCooperativeOperation::create(), members); };
  const auto weighted = [](const std::vector<ClumOperationShPtr>& members)
  { return compositionOf(ClumWeightedParallelCooperativeOperation::create(), members); };
  const auto threads = [](const std::vector<ClumOperationShPtr>& members)
  { return compositionOf(ClumMultithreadedParallelOperation::create(), members); };
  const ClumOperationShPtr shared = x();
  const ClumParallelCooperativeOperationShPtr halfAsleep = parallel({x(), x()});
  halfAsleep->isActive(1, false);
  const ClumLoopOperationShPtr withParameters = ClumLoopOperation::create(x(), 1);
  withParameters->customParameters()->setInt(s_countKey, 1);
  struct
  {
    ClumOperationShPtr operation;
    std::string form;
  } cases[] = {
    {x(), "x"},
    {sequence({x()}), "x"},
    {sequence({x(), sequence({x(), x()})}), "seq(x x x)"},
    {parallel({x()}), "x"},
    {parallel({x(), parallel({x(), parallel({x(), x()})})}), "par(x x x x)"},
    {parallel({x(), sequence({x()}), threads({x(), x()})}), "par(x x threads(x x))"},
    {parallel({x(), halfAsleep}), "par(x par(x x))"},
    {parallel({shared, parallel({x(), shared})}), "par(x par(x x))"}, // a member may stand there once only
    {weighted({x()}), "x"},
    {weighted({x(), weighted({x(), x()})}), "weighted(x weighted(x x))"},
    {parallel({x(), weighted({x(), x()})}), "par(x weighted(x x))"},
    {threads({x(), threads({x(), x()})}), "threads(x x x)"},
    {ClumLoopOperation::create(sequence({x()}), 1), "x"},
    {ClumAttemptOperation::create(x(), 1), "x"},
    {ClumLoopOperation::create(x(), 2), "repeat(x)"},
    {withParameters, "repeat(x)"},
    {ClumCleanUpOperation::create(sequence({x()}), parallel({x()})), "finally(x x)"},
    {x()->with(x())->with(x())->simplify(), "par(x x x)"},
  };
  for (const auto& test : cases)
    EXPECT_EQ(formOf(test.operation->simplify()), test.form) << formOf(test.operation);
}

TEST(ClumAutotuningParallelCooperativeOperation, GivesMoreStepsToWhatGetsMoreDone)
{
  const ClumNotificatorShPtr notificator = ClumNotificator::create();
  const auto composition = ClumAutotuningParallelCooperativeOperation::create(notificator, s_doneId);
  const CountingOperationShPtr good = CountingOperation::create(s_endless);
  const CountingOperationShPtr half = CountingOperation::create(s_endless);
  const CountingOperationShPtr idle = CountingOperation::create(s_endless);
  good->signalInterval = 1;
  half->signalInterval = 2;
  for (const CountingOperationShPtr& member : {good, half, idle})
  {
    member->notificator = notificator;
    ASSERT_TRUE(composition->addOperation(member).succeeded());
  }
  ASSERT_TRUE(composition->start(ClumParameterMapConstShPtr(), ClumParameterMapShPtr()).succeeded());
  bool isFinished = false;
  for (int round = 0; round < 1000; ++round)
    composition->step(isFinished);
  EXPECT_EQ(good->count, 1000u);
  EXPECT_NEAR(half->count, 500.0, 60.0);
  EXPECT_NEAR(idle->count, 100.0, 60.0);

  // Fortune turns: what was counted before is forgotten.
  good->signalInterval = 0;
  idle->signalInterval = 1;
  for (int round = 0; round < 2000; ++round)
    composition->step(isFinished);
  EXPECT_NEAR(composition->weight(0), 0.1, 0.05);
  EXPECT_EQ(composition->weight(2), 1.0);
  composition->abort();
  composition->step(isFinished);
  EXPECT_FALSE(notificator->hasSubscribers(s_doneId));
  EXPECT_FALSE(ClumAutotuningParallelCooperativeOperation::create(ClumNotificatorShPtr(), s_doneId));
}

TEST(ClumMultithreadedParallelOperation, RunsEachMemberInAThreadOfItsOwn)
{
  const auto composition = ClumMultithreadedParallelOperation::create();
  std::vector<CountingOperationShPtr> members;
  for (unsigned int i = 0; i < 4; ++i)
  {
    members.push_back(CountingOperation::create(100 + i));
    ASSERT_TRUE(composition->addOperation(members.back()).succeeded());
  }
  const ClumParameterMapShPtr output = ClumParameterMap::create();
  ASSERT_TRUE(runToItsEnd(composition, output).succeeded());
  std::set<std::thread::id> threads;
  for (unsigned int i = 0; i < 4; ++i)
  {
    EXPECT_EQ(members[i]->count, 100 + i);
    EXPECT_EQ(members[i]->state(), ClumOperation::STATE_FINISHED);
    EXPECT_NE(members[i]->thread, std::this_thread::get_id());
    threads.insert(members[i]->thread);
  }
  EXPECT_EQ(threads.size(), 4u);
  EXPECT_EQ(output->intValue(s_countKey, 0), 103); // outputs come in the order of the members
  double completion = 0.0;
  EXPECT_TRUE(composition->computeCompletion(completion).succeeded());
  EXPECT_EQ(completion, 1.0);
}

TEST(ClumMultithreadedParallelOperation, TakesThreadSafeMembersOnly)
{
  const CountingOperationShPtr safe = CountingOperation::create(2);
  const CountingOperationShPtr unsafe = CountingOperation::create(2);
  unsafe->safety = ClumOperation::THREAD_UNSAFE;
  const ClumOperationShPtr mixed = safe->then(unsafe);
  EXPECT_EQ(mixed->threadSafety(), ClumOperation::THREAD_UNSAFE);
  EXPECT_EQ(safe->loop(2)->threadSafety(), ClumOperation::THREAD_SAFE);
  EXPECT_EQ(safe->with(unsafe)->threadSafety(), ClumOperation::THREAD_UNSAFE);
  EXPECT_EQ(unsafe->finally(safe)->threadSafety(), ClumOperation::THREAD_UNSAFE);
  EXPECT_TRUE(safe->multithreadedWith(CountingOperation::create(1)));
  EXPECT_FALSE(safe->multithreadedWith(unsafe));
  EXPECT_FALSE(safe->multithreadedWith(mixed));
  EXPECT_FALSE(unsafe->multithreadedWith(safe));
  EXPECT_FALSE(safe->multithreadedWith(ClumOperationShPtr()));
}

TEST(ClumMultithreadedParallelOperation, StopsAllOnAFailureAnAbortAndItsEnd)
{
  const CountingOperationShPtr endless = CountingOperation::create(s_endless);
  const CountingOperationShPtr failing = CountingOperation::create(s_endless);
  failing->failingStep = 50;
  EXPECT_EQ(runToItsEnd(endless->multithreadedWith(failing), ClumParameterMapShPtr()).code(),
            static_cast<unsigned int>(s_failure));
  EXPECT_EQ(endless->state(), ClumOperation::STATE_ABORTED);
  EXPECT_EQ(failing->state(), ClumOperation::STATE_FAILED);

  const CountingOperationShPtr unstartable = CountingOperation::create(5);
  unstartable->failsAtStart = true;
  EXPECT_EQ(runToItsEnd(endless->multithreadedWith(unstartable), ClumParameterMapShPtr()).code(),
            static_cast<unsigned int>(s_failure));
  EXPECT_EQ(endless->state(), ClumOperation::STATE_ABORTED);

  const auto composition = ClumMultithreadedParallelOperation::create();
  const CountingOperationShPtr late = CountingOperation::create(s_endless);
  bool isFinished = false;
  composition->addOperation(endless);
  ASSERT_TRUE(composition->start(ClumParameterMapConstShPtr(), ClumParameterMapShPtr()).succeeded());
  EXPECT_TRUE(composition->addOperation(late).succeeded());
  while (late->count == 0)
    composition->step(isFinished);
  EXPECT_TRUE(composition->removeOperation(late).succeeded());
  EXPECT_EQ(late->state(), ClumOperation::STATE_ABORTED);
  const unsigned int countWhenRemoved = late->count;
  EXPECT_TRUE(composition->addOperation(late).succeeded());
  while (late->count == countWhenRemoved)
    composition->step(isFinished);
  EXPECT_FALSE(isFinished);
  double completion = 1.0;
  EXPECT_TRUE(composition->computeCompletion(completion).succeeded());
  EXPECT_LT(completion, 1.0);
  composition->abort();
  EXPECT_TRUE(composition->step(isFinished).succeeded());
  EXPECT_TRUE(isFinished);
  EXPECT_EQ(endless->state(), ClumOperation::STATE_ABORTED);

  // One that is dropped in the middle of its run leaves no thread behind.
  {
    const ClumOperationShPtr dropped = endless->multithreadedWith(late);
    ASSERT_TRUE(dropped->start(ClumParameterMapConstShPtr(), ClumParameterMapShPtr()).succeeded());
  }
  const unsigned int countAtEnd = endless->count;
  std::this_thread::yield();
  EXPECT_EQ(endless->count, countAtEnd);
}

TEST(ClumDataMonitor, SendsToItsSinkWhileThereIsOne)
{
  struct Sink : ClumDataMonitorSink
  {
    void plot(const std::string& i_name, double i_value) override { text += i_name + "=" + std::to_string(i_value); }
    void display(const std::string& i_name, const ClumObjectConstShPtr&) override { text += "[" + i_name + "]"; }
    std::string text;
  };
  EXPECT_FALSE(ClumDataMonitor::s_hasMonitor);
  ClumDataMonitor::plot("nobody hears", 1.0);
  const ShPtr<Sink> sink(new Sink);
  EXPECT_FALSE(ClumDataMonitor::sink(sink));
  EXPECT_TRUE(ClumDataMonitor::s_hasMonitor);
  ClumDataMonitor::plot("rate", 0.5);
  ClumDataMonitor::display("box", CountingOperation::create(1));
  EXPECT_EQ(ClumDataMonitor::sink(ClumDataMonitorSinkShPtr()), sink);
  EXPECT_FALSE(ClumDataMonitor::s_hasMonitor);
  ClumDataMonitor::plot("rate", 1.5);
  EXPECT_EQ(sink->text, "rate=0.500000[box]");
}
