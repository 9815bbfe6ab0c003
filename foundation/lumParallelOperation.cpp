#include "foundation/lumParallelOperation.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"

#include <algorithm>

LUM_DESCRIBE(ClumParallelOperation)
{
}

lmStatus ClumParallelOperation::init(const ClumParallelOperationWkPtr& i_weakPtr)
{
  return ClumOperation::init(i_weakPtr);
}

lmStatus ClumParallelOperation::addOperation(const ClumOperationShPtr& i_operation)
{
  if (!i_operation || i_operation.get() == this || rankOf(i_operation) != countOperations() || !canTake(*i_operation))
    return lmStatus(lmStatus::FAILURE);
  CMember added;
  added.operation = i_operation;
  if (state() == STATE_RUNNING)
  {
    const lmStatus status = startMember(added.operation);
    if (status.failed())
      return status;
  }
  m_members.push_back(added);
  return lmStatus();
}

lmStatus ClumParallelOperation::removeOperation(const ClumOperationShPtr& i_operation)
{
  const unsigned int rank = rankOf(i_operation);
  if (rank == countOperations())
    return lmStatus(lmStatus::FAILURE);
  const ClumOperationShPtr removed = operation(rank);
  m_members.erase(m_members.begin() + rank);
  return state() == STATE_RUNNING ? stopMember(removed) : lmStatus();
}

ClumOperation::EThreadSafety ClumParallelOperation::threadSafety() const
{
  const bool isSafe =
    std::all_of(m_members.begin(), m_members.end(),
                [](const CMember& i_member) { return i_member.operation->threadSafety() == THREAD_SAFE; });
  return isSafe ? THREAD_SAFE : THREAD_UNSAFE;
}

ClumOperationShPtr ClumParallelOperation::simplify() const
{
  const bool isPlain =
    customParameters()->empty() &&
    std::all_of(m_members.begin(), m_members.end(), [](const CMember& i_member) { return i_member.isActive; });
  if (isPlain && m_members.size() == 1)
    return operation(0)->simplify();
  const ClumParallelOperationShPtr flat = isPlain ? makeFlat() : ClumParallelOperationShPtr();
  bool isWhole = static_cast<bool>(flat);
  for (unsigned int rank = 0; isWhole && rank < countOperations(); ++rank)
    isWhole = flat->addFlattened(operation(rank)).succeeded();
  return isWhole ? ClumOperationShPtr(flat) : ClumOperationShPtr(self());
}

void ClumParallelOperation::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumOperation::encodeWithCoder(i_coder);
  i_coder->beginVectorEncoding("members");
  for (const CMember& coded : m_members)
  {
    i_coder->encodeObjectShPtr(coded.operation, "operation");
    i_coder->encodeBool(coded.isActive, "isActive");
    i_coder->encodeDouble(coded.weight, "weight");
  }
  i_coder->endVectorEncoding();
}

lmStatus ClumParallelOperation::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  lmStatus status = ClumOperation::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  i_coder->beginVectorDecoding("members");
  while (i_coder->canContinueVectorDecoding() && status.succeeded())
  {
    status = addOperation(i_coder->decode<ClumOperation>("operation"));
    const bool isMemberActive = i_coder->decodeBool("isActive");
    const double weight = i_coder->decodeDouble("weight");
    if (status.failed())
      break;
    m_members.back().isActive = isMemberActive;
    m_members.back().weight = weight;
  }
  i_coder->endVectorDecoding();
  return status;
}

bool ClumParallelOperation::canTake(const ClumOperation&) const
{
  return true;
}

lmStatus ClumParallelOperation::startMember(const ClumOperationShPtr& i_operation)
{
  return i_operation->start(parameters(), outputParameters());
}

lmStatus ClumParallelOperation::stopMember(const ClumOperationShPtr& i_operation)
{
  return stop(i_operation);
}

ClumParallelOperationShPtr ClumParallelOperation::makeFlat() const
{
  return ClumParallelOperationShPtr();
}

lmStatus ClumParallelOperation::doStart(const ClumParameterMapShPtr&)
{
  for (CMember& started : m_members)
  {
    started.isFinished = false;
    started.credit = 0.0;
    const lmStatus status = startMember(started.operation);
    if (status.failed())
      return status;
  }
  return lmStatus();
}

lmStatus ClumParallelOperation::doFinish(const ClumParameterMapShPtr&)
{
  lmStatus first;
  for (const CMember& stopped : m_members)
  {
    const lmStatus status = stopMember(stopped.operation);
    if (first.succeeded())
      first = status;
  }
  return first;
}

lmStatus ClumParallelOperation::completionOf(const CMember& i_member, double& o_completion) const
{
  o_completion = 1.0;
  return i_member.isFinished ? lmStatus() : i_member.operation->computeCompletion(o_completion);
}

lmStatus ClumParallelOperation::difficultyOf(const CMember& i_member, double& o_difficulty) const
{
  return i_member.operation->computeDifficulty(o_difficulty);
}

lmStatus ClumParallelOperation::doComputeCompletion(double& o_completion) const
{
  double smallest = 1.0;
  for (const CMember& asked : m_members)
  {
    double completion = 1.0;
    const lmStatus status = completionOf(asked, completion);
    if (status.failed())
      return status;
    smallest = std::min(smallest, completion);
  }
  o_completion = smallest;
  return lmStatus();
}

lmStatus ClumParallelOperation::doComputeDifficulty(double& o_difficulty) const
{
  double largest = 0.0;
  for (const CMember& asked : m_members)
  {
    double difficulty = 0.0;
    const lmStatus status = difficultyOf(asked, difficulty);
    if (status.failed())
      return status;
    largest = std::max(largest, difficulty);
  }
  o_difficulty = largest;
  return lmStatus();
}

unsigned int ClumParallelOperation::rankOf(const ClumOperationShPtr& i_operation) const
{
  unsigned int rank = 0;
  while (rank < countOperations() && operation(rank) != i_operation)
    ++rank;
  return rank;
}

bool ClumParallelOperation::isAllFinished() const
{
  return std::all_of(m_members.begin(), m_members.end(), [](const CMember& i_member) { return i_member.isFinished; });
}

/// Adds an operation in its simple form, a composition of this kind by its members.
lmStatus ClumParallelOperation::addFlattened(const ClumOperationShPtr& i_operation)
{
  const ClumOperationShPtr simple = i_operation->simplify();
  const ClumParallelOperationShPtr nested = boost::dynamic_pointer_cast<ClumParallelOperation>(simple);
  const bool isMerged = nested && nested->classObject() == classObject() && nested->customParameters()->empty() &&
                        std::all_of(nested->m_members.begin(), nested->m_members.end(),
                                    [](const CMember& i_member) { return i_member.isActive; });
  if (!isMerged)
    return addOperation(simple);
  lmStatus status;
  for (unsigned int rank = 0; rank < nested->countOperations() && status.succeeded(); ++rank)
    status = addOperation(nested->operation(rank));
  return status;
}
