#include "foundation/lumOperation.h"

#include "foundation/lumCleanUpOperation.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLoopOperation.h"
#include "foundation/lumMultithreadedParallelOperation.h"
#include "foundation/lumParallelCooperativeOperation.h"
#include "foundation/lumParallelOperation.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumSequenceOperation.h"
#include "foundation/lumWeightedParallelCooperativeOperation.h"

#include <algorithm>

LUM_DESCRIBE(ClumOperation)
{
}
LUM_NOTIFICATION(ClumOperation, WILL_START);
LUM_NOTIFICATION(ClumOperation, DID_STOP);
const std::string ClumOperation::PARAMETERS_KEY = "parameters";

ClumOperation::ClumOperation() : m_customParameters(ClumParameterMap::create())
{
}

ClumOperation::ClumOperation(const ClumOperation& i_other)
  : ClumMutableCodable(i_other),
    m_customParameters(ClumParameterMap::createByStacking(i_other.m_customParameters, ClumParameterMapConstShPtr())),
    m_wires(i_other.m_wires)
{
}

ClumOperation::~ClumOperation() = default;

lmStatus ClumOperation::init(const ClumOperationWkPtr& i_weakPtr)
{
  return ClumMutableCodable::init(i_weakPtr);
}

ClumOperationShPtr ClumOperation::then(const ClumOperationShPtr& i_next) const
{
  return ClumSequenceOperation::createChain(self(), i_next);
}

ClumOperationShPtr ClumOperation::with(const ClumOperationShPtr& i_other) const
{
  return composed(ClumParallelCooperativeOperation::create(), i_other);
}

ClumOperationShPtr ClumOperation::withWeighted(const ClumOperationShPtr& i_other, double i_weight) const
{
  const ClumWeightedParallelCooperativeOperationShPtr parallel = ClumWeightedParallelCooperativeOperation::create();
  if (!i_other || parallel->addOperation(simplify(), 1.0).failed() ||
      parallel->addOperation(i_other->simplify(), i_weight).failed())
    return ClumOperationShPtr();
  return parallel;
}

ClumOperationShPtr ClumOperation::multithreadedWith(const ClumOperationShPtr& i_other) const
{
  return composed(ClumMultithreadedParallelOperation::create(), i_other);
}

ClumOperationShPtr ClumOperation::composed(const ClumParallelOperationShPtr& i_parallel,
                                           const ClumOperationShPtr& i_other) const
{
  const bool isComposed = i_parallel && i_other && i_parallel->addOperation(simplify()).succeeded() &&
                          i_parallel->addOperation(i_other->simplify()).succeeded();
  return isComposed ? i_parallel : ClumParallelOperationShPtr();
}

ClumOperationShPtr ClumOperation::finally(const ClumOperationShPtr& i_cleanUp) const
{
  return i_cleanUp ? ClumCleanUpOperation::create(simplify(), i_cleanUp->simplify()) : ClumCleanUpOperationShPtr();
}

ClumOperationShPtr ClumOperation::loop(unsigned int i_count) const
{
  return ClumLoopOperation::create(simplify(), i_count);
}

ClumOperationShPtr ClumOperation::attempt(unsigned int i_count) const
{
  return ClumAttemptOperation::create(simplify(), i_count);
}

lmStatus ClumOperation::start(const ClumParameterMapConstShPtr& i_parameters, const ClumParameterMapShPtr& o_output)
{
  if (m_state == STATE_RUNNING)
    return lmStatus(lmStatus::FAILURE);
  const ClumOperationShPtr keepAlive = self();
  m_state = STATE_RUNNING;
  m_isAborting = false;
  m_output = o_output ? o_output : ClumParameterMap::create();
  if (!m_customParameters->empty() || !i_parameters)
    m_parameters = ClumParameterMap::createByStacking(m_customParameters, i_parameters);
  else
    m_parameters = i_parameters;
  notifyWillStart();
  const lmStatus status = doStart(m_output);
  return status.failed() ? endRun(status) : status;
}

lmStatus ClumOperation::step(bool& o_finished)
{
  o_finished = true;
  if (m_state != STATE_RUNNING)
    return lmStatus(lmStatus::FAILURE);
  const ClumOperationShPtr keepAlive = self();
  lmStatus status;
  if (!m_isAborting)
  {
    o_finished = false;
    status = m_delegate ? doStepDelegate(o_finished) : doStep(o_finished);
    o_finished = o_finished || status.failed();
  }
  return o_finished ? endRun(status) : status;
}

lmStatus ClumOperation::operate(const ClumParameterMapConstShPtr& i_parameters, const ClumParameterMapShPtr& o_output)
{
  const ClumOperationShPtr keepAlive = self();
  lmStatus status = start(i_parameters, o_output);
  bool isFinished = false;
  while (status.succeeded() && !isFinished)
    status = step(isFinished);
  return status;
}

void ClumOperation::abort()
{
  m_isAborting = true;
}

lmStatus ClumOperation::doComputeDifficulty(double& o_difficulty) const
{
  o_difficulty = 1.0;
  return lmStatus();
}

lmStatus ClumOperation::doStepDelegate(bool& o_finished)
{
  o_finished = false;
  bool isDelegateFinished = false;
  const lmStatus status = m_delegate->step(isDelegateFinished);
  if (!isDelegateFinished)
    return status;
  if (status.succeeded())
    transferDelegateOutputs();
  m_delegate.reset();
  m_delegateOutput.reset();
  return status;
}

lmStatus ClumOperation::startDelegateOperation(const ClumOperationShPtr& i_delegate)
{
  if (!i_delegate || m_delegate || m_state != STATE_RUNNING)
    return lmStatus(lmStatus::FAILURE);
  const ClumParameterMapShPtr output = ClumParameterMap::create();
  const lmStatus status = i_delegate->start(m_parameters, output);
  if (status.failed())
    return status;
  m_delegate = i_delegate;
  m_delegateOutput = output;
  return status;
}

void ClumOperation::wireDelegateOutput(const ClumStringKey& i_from, const ClumStringKey& i_to)
{
  m_wires.push_back({i_from, i_to});
}

void ClumOperation::unwireDelegateOutput(const ClumStringKey& i_from)
{
  m_wires.erase(
    std::remove_if(m_wires.begin(), m_wires.end(), [&](const COutputWire& i_wire) { return i_wire.from == i_from; }),
    m_wires.end());
}

lmStatus ClumOperation::stop(const ClumOperationShPtr& i_operation)
{
  if (i_operation->state() != STATE_RUNNING)
    return lmStatus();
  bool isFinished;
  i_operation->abort();
  return i_operation->step(isFinished);
}

/// The one end of every run. @return `i_status` if it is a failure, otherwise what the end gives.
lmStatus ClumOperation::endRun(const lmStatus& i_status)
{
  lmStatus status = i_status;
  const auto keepFirstFailure = [&](const lmStatus& i_next)
  {
    if (status.succeeded())
      status = i_next;
  };
  if (m_delegate)
  {
    keepFirstFailure(stop(m_delegate));
    m_delegate.reset();
    m_delegateOutput.reset();
  }
  keepFirstFailure(doFinish(m_output));
  m_parameters.reset();
  m_state = status.failed() ? STATE_FAILED : (m_isAborting ? STATE_ABORTED : STATE_FINISHED);
  notify(DID_STOP);
  return status;
}

void ClumOperation::notifyWillStart() const
{
  if (!hasListeners(WILL_START))
    return;
  const ClumNotificationShPtr notification = ClumNotification::create(WILL_START, self());
  notification->value(PARAMETERS_KEY, ClumValue(ShPtr<const void>(m_parameters)));
  notify(notification);
}

void ClumOperation::transferDelegateOutputs()
{
  // A wired output that the delegate did not give stays absent.
  for (const COutputWire& wire : m_wires)
    m_output->setFrom(wire.to, *m_delegateOutput, wire.from);
}
