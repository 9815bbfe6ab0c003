#include "foundation/lumCleanUpOperation.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"

LUM_DESCRIBE(ClumCleanUpOperation)
{
  i_class.creates("(const ClumOperationShPtr& i_operation, const ClumOperationShPtr& i_cleanUp)", &Self::create);
}

ClumCleanUpOperationShPtr ClumCleanUpOperation::create(const ClumOperationShPtr& i_operation,
                                                       const ClumOperationShPtr& i_cleanUp)
{
  return lumCreate<ClumCleanUpOperation>(i_operation, i_cleanUp);
}

lmStatus ClumCleanUpOperation::init(const ClumCleanUpOperationWkPtr& i_weakPtr)
{
  const lmStatus status = ClumOperation::init(i_weakPtr);
  return status.failed() || (m_operation && m_cleanUp) ? status : lmStatus(lmStatus::FAILURE);
}

ClumOperation::EThreadSafety ClumCleanUpOperation::threadSafety() const
{
  const bool isSafe = m_operation->threadSafety() == THREAD_SAFE && m_cleanUp->threadSafety() == THREAD_SAFE;
  return isSafe ? THREAD_SAFE : THREAD_UNSAFE;
}

ClumOperationShPtr ClumCleanUpOperation::simplify() const
{
  return customParameters()->empty() ? create(m_operation->simplify(), m_cleanUp->simplify()) : self();
}

void ClumCleanUpOperation::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumOperation::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_operation, "operation");
  i_coder->encodeObjectShPtr(m_cleanUp, "cleanUp");
}

lmStatus ClumCleanUpOperation::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumOperation::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_operation = i_coder->decode<ClumOperation>("operation");
  m_cleanUp = i_coder->decode<ClumOperation>("cleanUp");
  return m_operation && m_cleanUp ? status : lmStatus(lmStatus::FAILURE);
}

lmStatus ClumCleanUpOperation::doStart(const ClumParameterMapShPtr& o_output)
{
  m_isCleaningUp = false;
  m_status = m_operation->start(parameters(), o_output);
  return m_status;
}

lmStatus ClumCleanUpOperation::doStep(bool& o_finished)
{
  o_finished = false;
  if (m_isCleaningUp)
  {
    const lmStatus status = m_cleanUp->step(o_finished);
    return o_finished && m_status.failed() ? m_status : status;
  }
  bool isOperationFinished = false;
  m_status = m_operation->step(isOperationFinished);
  if (!isOperationFinished)
    return lmStatus();
  m_isCleaningUp = true;
  const lmStatus status = m_cleanUp->start(parameters(), outputParameters());
  return status.failed() && m_status.failed() ? m_status : status;
}

lmStatus ClumCleanUpOperation::doFinish(const ClumParameterMapShPtr& o_output)
{
  const lmStatus status = stop(m_operation);
  // An abort does not spare what is left of the clean-up.
  lmStatus cleanUpStatus;
  bool isFinished = false;
  if (!m_isCleaningUp)
    cleanUpStatus = m_cleanUp->operate(parameters(), o_output);
  else
    while (m_cleanUp->state() == STATE_RUNNING && cleanUpStatus.succeeded())
      cleanUpStatus = m_cleanUp->step(isFinished);
  return status.failed() ? status : cleanUpStatus;
}

lmStatus ClumCleanUpOperation::doComputeCompletion(double& o_completion) const
{
  if (!m_isCleaningUp)
    return m_operation->computeCompletion(o_completion);
  o_completion = 1.0;
  return lmStatus();
}

lmStatus ClumCleanUpOperation::doComputeDifficulty(double& o_difficulty) const
{
  return m_operation->computeDifficulty(o_difficulty);
}
