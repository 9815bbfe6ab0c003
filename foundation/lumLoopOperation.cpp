#include "foundation/lumLoopOperation.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"

LUM_DESCRIBE(ClumLoopOperation)
{
  i_class.creates("(const ClumOperationShPtr& i_operation, unsigned int i_count)", &Self::create);
}

LUM_DESCRIBE(ClumAttemptOperation)
{
  i_class.creates("(const ClumOperationShPtr& i_operation, unsigned int i_count)", &Self::create);
}

ClumLoopOperationShPtr ClumLoopOperation::create(const ClumOperationShPtr& i_operation, unsigned int i_count)
{
  return lumCreate<ClumLoopOperation>(i_operation, i_count);
}

lmStatus ClumLoopOperation::init(const ClumLoopOperationWkPtr& i_weakPtr)
{
  const lmStatus status = ClumOperation::init(i_weakPtr);
  return status.failed() || (m_operation && m_count > 0) ? status : lmStatus(lmStatus::FAILURE);
}

void ClumLoopOperation::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumOperation::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_operation, "operation");
  i_coder->encodeUnsignedInt(m_count, "count");
}

lmStatus ClumLoopOperation::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumOperation::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_operation = i_coder->decode<ClumOperation>("operation");
  m_count = i_coder->decodeUnsignedInt("count");
  return m_operation && m_count > 0 ? status : lmStatus(lmStatus::FAILURE);
}

lmStatus ClumLoopOperation::doStart(const ClumParameterMapShPtr& o_output)
{
  m_done = 0;
  return m_operation->start(parameters(), o_output);
}

lmStatus ClumLoopOperation::doStep(bool& o_finished)
{
  bool isRunFinished = false;
  const lmStatus status = m_operation->step(isRunFinished);
  if (status.failed() || !isRunFinished)
    return status;
  ++m_done;
  o_finished = m_done == m_count;
  return o_finished ? status : m_operation->start(parameters(), outputParameters());
}

lmStatus ClumLoopOperation::doFinish(const ClumParameterMapShPtr&)
{
  return stop(m_operation);
}

lmStatus ClumLoopOperation::doComputeCompletion(double& o_completion) const
{
  double ofRun = 0.0;
  const bool isRunning = m_operation->state() == STATE_RUNNING;
  const lmStatus status = isRunning ? m_operation->computeCompletion(ofRun) : lmStatus();
  if (status.succeeded())
    o_completion = (m_done + ofRun) / m_count;
  return status;
}

lmStatus ClumLoopOperation::doComputeDifficulty(double& o_difficulty) const
{
  double ofRun = 1.0;
  const lmStatus status = m_operation->computeDifficulty(ofRun);
  if (status.succeeded())
    o_difficulty = m_count * ofRun;
  return status;
}

ClumAttemptOperationShPtr ClumAttemptOperation::create(const ClumOperationShPtr& i_operation, unsigned int i_count)
{
  return lumCreate<ClumAttemptOperation>(i_operation, i_count);
}

lmStatus ClumAttemptOperation::init(const ClumAttemptOperationWkPtr& i_weakPtr)
{
  const lmStatus status = ClumOperation::init(i_weakPtr);
  return status.failed() || (m_operation && m_count > 0) ? status : lmStatus(lmStatus::FAILURE);
}

void ClumAttemptOperation::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumOperation::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_operation, "operation");
  i_coder->encodeUnsignedInt(m_count, "count");
}

lmStatus ClumAttemptOperation::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumOperation::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_operation = i_coder->decode<ClumOperation>("operation");
  m_count = i_coder->decodeUnsignedInt("count");
  return m_operation && m_count > 0 ? status : lmStatus(lmStatus::FAILURE);
}

lmStatus ClumAttemptOperation::doStart(const ClumParameterMapShPtr&)
{
  m_done = 0;
  return lmStatus();
}

lmStatus ClumAttemptOperation::doStep(bool& o_finished)
{
  // A step starts an attempt or advances the one that runs.
  lmStatus status;
  bool isRunFinished = false;
  if (m_operation->state() == STATE_RUNNING)
    status = m_operation->step(isRunFinished);
  else
    status = m_operation->start(parameters(), outputParameters());
  o_finished = status.succeeded() && isRunFinished;
  if (status.succeeded())
    return status;
  ++m_done;
  return m_done == m_count ? status : lmStatus();
}

lmStatus ClumAttemptOperation::doFinish(const ClumParameterMapShPtr&)
{
  return stop(m_operation);
}

lmStatus ClumAttemptOperation::doComputeCompletion(double& o_completion) const
{
  return m_operation->computeCompletion(o_completion);
}

lmStatus ClumAttemptOperation::doComputeDifficulty(double& o_difficulty) const
{
  return m_operation->computeDifficulty(o_difficulty);
}
