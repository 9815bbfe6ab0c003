#include "foundation/lumWeightedParallelCooperativeOperation.h"

#include "foundation/lumDescribe.h"

#include <cmath>

LUM_DESCRIBE(ClumWeightedParallelCooperativeOperation)
{
  i_class.creates("()", &Self::create);
}

namespace
{
bool isUsableWeight(double i_weight)
{
  return std::isfinite(i_weight) && i_weight > 0.0;
}
} // namespace

ClumWeightedParallelCooperativeOperationShPtr ClumWeightedParallelCooperativeOperation::create()
{
  return lumCreate<ClumWeightedParallelCooperativeOperation>();
}

lmStatus ClumWeightedParallelCooperativeOperation::init(const ClumWeightedParallelCooperativeOperationWkPtr& i_weakPtr)
{
  return ClumParallelCooperativeOperation::init(i_weakPtr);
}

/// The weights of a nested composition are relative to its own members.
ClumParallelOperationShPtr ClumWeightedParallelCooperativeOperation::makeFlat() const
{
  return ClumParallelOperationShPtr();
}

lmStatus ClumWeightedParallelCooperativeOperation::addOperation(const ClumOperationShPtr& i_operation, double i_weight)
{
  if (!isUsableWeight(i_weight))
    return lmStatus(lmStatus::FAILURE);
  const lmStatus status = addOperation(i_operation);
  if (status.succeeded())
    weightOf(rankOf(i_operation), i_weight);
  return status;
}

lmStatus ClumWeightedParallelCooperativeOperation::setWeightOfOperation(const ClumOperationShPtr& i_operation,
                                                                        double i_weight)
{
  const unsigned int rank = rankOf(i_operation);
  if (rank == countOperations() || !isUsableWeight(i_weight))
    return lmStatus(lmStatus::FAILURE);
  weightOf(rank, i_weight);
  return lmStatus();
}

double ClumWeightedParallelCooperativeOperation::weightOfOperation(const ClumOperationShPtr& i_operation) const
{
  const unsigned int rank = rankOf(i_operation);
  return rank == countOperations() ? 0.0 : weightOf(rank);
}
