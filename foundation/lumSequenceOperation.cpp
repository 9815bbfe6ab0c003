#include "foundation/lumSequenceOperation.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"

#include <algorithm>

LUM_DESCRIBE(ClumSequenceOperation)
{
  i_class.creates("()", &Self::create);
}

ClumSequenceOperationShPtr ClumSequenceOperation::create()
{
  return lumCreate<ClumSequenceOperation>();
}

ClumSequenceOperationShPtr ClumSequenceOperation::createChain(const ClumOperationShPtr& i_first,
                                                              const ClumOperationShPtr& i_next)
{
  const ClumSequenceOperationShPtr sequence = create();
  if (sequence->addFlattened(i_first).failed() || sequence->addFlattened(i_next).failed())
    return ClumSequenceOperationShPtr();
  return sequence;
}

lmStatus ClumSequenceOperation::init(const ClumSequenceOperationWkPtr& i_weakPtr)
{
  return ClumOperation::init(i_weakPtr);
}

lmStatus ClumSequenceOperation::addOperation(const ClumOperationShPtr& i_operation)
{
  if (!i_operation || i_operation.get() == this)
    return lmStatus(lmStatus::FAILURE);
  m_operations.push_back(i_operation);
  return lmStatus();
}

ClumOperation::EThreadSafety ClumSequenceOperation::threadSafety() const
{
  const bool isSafe =
    std::all_of(m_operations.begin(), m_operations.end(),
                [](const ClumOperationShPtr& i_member) { return i_member->threadSafety() == THREAD_SAFE; });
  return isSafe ? THREAD_SAFE : THREAD_UNSAFE;
}

ClumOperationShPtr ClumSequenceOperation::simplify() const
{
  const ClumSequenceOperationShPtr sequence = create();
  for (const ClumOperationShPtr& operation : m_operations)
    sequence->addFlattened(operation);
  if (sequence->countOperations() == 1 && customParameters()->empty())
    return sequence->operation(0);
  sequence->customParameters()->inject(*customParameters());
  return sequence;
}

void ClumSequenceOperation::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumOperation::encodeWithCoder(i_coder);
  i_coder->encodeObjects(m_operations, "operations");
}

lmStatus ClumSequenceOperation::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumOperation::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  std::vector<ClumOperationShPtr> operations;
  i_coder->decodeObjects("operations", operations);
  for (const ClumOperationShPtr& operation : operations)
    if (addOperation(operation).failed())
      return lmStatus(lmStatus::FAILURE);
  return status;
}

lmStatus ClumSequenceOperation::doStart(const ClumParameterMapShPtr&)
{
  m_current = 0;
  return startCurrent();
}

lmStatus ClumSequenceOperation::doStep(bool& o_finished)
{
  o_finished = m_current >= countOperations();
  if (o_finished)
    return lmStatus();
  bool isMemberFinished = false;
  const lmStatus status = operation(m_current)->step(isMemberFinished);
  if (status.failed() || !isMemberFinished)
    return status;
  ++m_current;
  o_finished = m_current == countOperations();
  return startCurrent();
}

lmStatus ClumSequenceOperation::doFinish(const ClumParameterMapShPtr&)
{
  return m_current < countOperations() ? stop(operation(m_current)) : lmStatus();
}

lmStatus ClumSequenceOperation::doComputeCompletion(double& o_completion) const
{
  double done = 0.0;
  double total = 0.0;
  for (unsigned int rank = 0; rank < countOperations(); ++rank)
  {
    double difficulty = 1.0;
    lmStatus status = operation(rank)->computeDifficulty(difficulty);
    double completion = rank < m_current ? 1.0 : 0.0;
    if (status.succeeded() && rank == m_current && operation(rank)->state() == STATE_RUNNING)
      status = operation(rank)->computeCompletion(completion);
    if (status.failed())
      return status;
    done += difficulty * completion;
    total += difficulty;
  }
  o_completion = total > 0.0 ? done / total : 1.0;
  return lmStatus();
}

lmStatus ClumSequenceOperation::doComputeDifficulty(double& o_difficulty) const
{
  double total = 0.0;
  for (const ClumOperationShPtr& member : m_operations)
  {
    double difficulty = 1.0;
    const lmStatus status = member->computeDifficulty(difficulty);
    if (status.failed())
      return status;
    total += difficulty;
  }
  o_difficulty = total;
  return lmStatus();
}

/// Adds an operation in its simple form, a sequence by its members. Custom parameters keep a sequence together.
lmStatus ClumSequenceOperation::addFlattened(const ClumOperationShPtr& i_operation)
{
  const ClumOperationShPtr simple = i_operation ? i_operation->simplify() : ClumOperationShPtr();
  const ClumSequenceOperationShPtr sequence = boost::dynamic_pointer_cast<ClumSequenceOperation>(simple);
  if (!sequence || !sequence->customParameters()->empty())
    return addOperation(simple);
  lmStatus status;
  for (unsigned int rank = 0; rank < sequence->countOperations() && status.succeeded(); ++rank)
    status = addOperation(sequence->operation(rank));
  return status;
}

lmStatus ClumSequenceOperation::startCurrent()
{
  return m_current < countOperations() ? operation(m_current)->start(parameters(), outputParameters()) : lmStatus();
}
