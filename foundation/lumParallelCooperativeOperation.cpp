#include "foundation/lumParallelCooperativeOperation.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"

#include <algorithm>

LUM_DESCRIBE(ClumParallelCooperativeOperation)
{
  i_class.creates("()", &Self::create);
}

ClumParallelCooperativeOperationShPtr ClumParallelCooperativeOperation::create()
{
  return lumCreate<ClumParallelCooperativeOperation>();
}

lmStatus ClumParallelCooperativeOperation::init(const ClumParallelCooperativeOperationWkPtr& i_weakPtr)
{
  return ClumOperation::init(i_weakPtr);
}

lmStatus ClumParallelCooperativeOperation::addOperation(const ClumOperationShPtr& i_operation)
{
  if (!i_operation || i_operation.get() == this || rankOf(i_operation) != countOperations())
    return lmStatus(lmStatus::FAILURE);
  if (state() == STATE_RUNNING)
  {
    const lmStatus status = i_operation->start(parameters(), outputParameters());
    if (status.failed())
      return status;
  }
  CMember member;
  member.operation = i_operation;
  m_members.push_back(member);
  return lmStatus();
}

lmStatus ClumParallelCooperativeOperation::removeOperation(const ClumOperationShPtr& i_operation)
{
  const unsigned int rank = rankOf(i_operation);
  if (rank == countOperations())
    return lmStatus(lmStatus::FAILURE);
  const ClumOperationShPtr removed = operation(rank);
  m_members.erase(m_members.begin() + rank);
  return state() == STATE_RUNNING ? stop(removed) : lmStatus();
}

void ClumParallelCooperativeOperation::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumOperation::encodeWithCoder(i_coder);
  i_coder->beginVectorEncoding("members");
  for (const CMember& member : m_members)
  {
    i_coder->encodeObjectShPtr(member.operation, "operation");
    i_coder->encodeBool(member.isActive, "isActive");
    i_coder->encodeDouble(member.weight, "weight");
  }
  i_coder->endVectorEncoding();
}

lmStatus ClumParallelCooperativeOperation::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
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

lmStatus ClumParallelCooperativeOperation::doStart(const ClumParameterMapShPtr& o_output)
{
  for (CMember& member : m_members)
  {
    member.isFinished = false;
    member.credit = 0.0;
    const lmStatus status = member.operation->start(parameters(), o_output);
    if (status.failed())
      return status;
  }
  return lmStatus();
}

lmStatus ClumParallelCooperativeOperation::doStep(bool& o_finished)
{
  const double largestWeight = largestActiveWeight();
  // By rank, for a member's step may add and remove members.
  for (unsigned int rank = 0; rank < countOperations(); ++rank)
  {
    CMember& member = m_members[rank];
    if (!member.isActive || member.isFinished)
      continue;
    member.credit += member.weight / largestWeight;
    // A share that does not divide evenly must not lose a turn to rounding.
    if (member.credit < 1.0 - 1e-9)
      continue;
    member.credit -= 1.0;
    const ClumOperationShPtr stepped = member.operation;
    bool isMemberFinished = false;
    const lmStatus status = stepped->step(isMemberFinished);
    if (status.failed())
      return status;
    const unsigned int rankNow = rankOf(stepped);
    if (isMemberFinished && rankNow != countOperations())
      m_members[rankNow].isFinished = true;
  }
  o_finished = isAllFinished();
  return lmStatus();
}

lmStatus ClumParallelCooperativeOperation::doFinish(const ClumParameterMapShPtr&)
{
  lmStatus first;
  for (const CMember& member : m_members)
  {
    const lmStatus status = stop(member.operation);
    if (first.succeeded())
      first = status;
  }
  return first;
}

lmStatus ClumParallelCooperativeOperation::doComputeCompletion(double& o_completion) const
{
  double smallest = 1.0;
  for (const CMember& member : m_members)
  {
    double completion = 1.0;
    const lmStatus status = member.isFinished ? lmStatus() : member.operation->computeCompletion(completion);
    if (status.failed())
      return status;
    smallest = std::min(smallest, completion);
  }
  o_completion = smallest;
  return lmStatus();
}

lmStatus ClumParallelCooperativeOperation::doComputeDifficulty(double& o_difficulty) const
{
  double largest = 0.0;
  for (const CMember& member : m_members)
  {
    double difficulty = 0.0;
    const lmStatus status = member.operation->computeDifficulty(difficulty);
    if (status.failed())
      return status;
    largest = std::max(largest, difficulty);
  }
  o_difficulty = largest;
  return lmStatus();
}

unsigned int ClumParallelCooperativeOperation::rankOf(const ClumOperationShPtr& i_operation) const
{
  unsigned int rank = 0;
  while (rank < countOperations() && operation(rank) != i_operation)
    ++rank;
  return rank;
}

double ClumParallelCooperativeOperation::largestActiveWeight() const
{
  double largest = 0.0;
  for (const CMember& member : m_members)
    if (member.isActive && !member.isFinished)
      largest = std::max(largest, member.weight);
  return largest > 0.0 ? largest : 1.0;
}

bool ClumParallelCooperativeOperation::isAllFinished() const
{
  return std::all_of(m_members.begin(), m_members.end(), [](const CMember& i_member) { return i_member.isFinished; });
}
