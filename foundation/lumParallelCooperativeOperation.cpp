#include "foundation/lumParallelCooperativeOperation.h"

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
  return ClumParallelOperation::init(i_weakPtr);
}

lmStatus ClumParallelCooperativeOperation::stepMember(const ClumOperationShPtr& i_operation, bool& o_finished)
{
  return i_operation->step(o_finished);
}

ClumParallelOperationShPtr ClumParallelCooperativeOperation::makeFlat() const
{
  return create();
}

lmStatus ClumParallelCooperativeOperation::doStep(bool& o_finished)
{
  const double largestWeight = largestActiveWeight();
  // By rank, for a member's step may add and remove members.
  for (unsigned int rank = 0; rank < countOperations(); ++rank)
  {
    CMember& turn = member(rank);
    if (!turn.isActive || turn.isFinished)
      continue;
    turn.credit += turn.weight / largestWeight;
    // A share that does not divide evenly must not lose a turn to rounding.
    if (turn.credit < 1.0 - 1e-9)
      continue;
    turn.credit -= 1.0;
    const ClumOperationShPtr stepped = turn.operation;
    bool isMemberFinished = false;
    const lmStatus status = stepMember(stepped, isMemberFinished);
    if (status.failed())
      return status;
    const unsigned int rankNow = rankOf(stepped);
    if (isMemberFinished && rankNow != countOperations())
      member(rankNow).isFinished = true;
  }
  o_finished = isAllFinished();
  return lmStatus();
}

double ClumParallelCooperativeOperation::largestActiveWeight() const
{
  double largest = 0.0;
  for (const CMember& weighed : members())
    if (weighed.isActive && !weighed.isFinished)
      largest = std::max(largest, weighed.weight);
  return largest > 0.0 ? largest : 1.0;
}
