#pragma once

#include "foundation/lumParallelCooperativeOperation.h"

/// A cooperative parallel in which each member gets steps in proportion to its weight.
///
/// The active member of the largest weight steps in every round, one of half that weight in every second.
class LUM_API ClumWeightedParallelCooperativeOperation : public ClumParallelCooperativeOperation
{
  LUM_CONCRETE(ClumWeightedParallelCooperativeOperation, ClumParallelCooperativeOperation);

public:
  static ClumWeightedParallelCooperativeOperationShPtr create();

  using ClumParallelCooperativeOperation::addOperation;
  /// @return -1 too for a weight that is not above 0 and finite.
  lmStatus addOperation(const ClumOperationShPtr& i_operation, double i_weight);
  /// @return -1 if it is no member, or for a weight that is not above 0 and finite.
  lmStatus setWeightOfOperation(const ClumOperationShPtr& i_operation, double i_weight);
  /// @return 0 if it is no member.
  double weightOfOperation(const ClumOperationShPtr& i_operation) const;

protected:
  ClumWeightedParallelCooperativeOperation() = default;
  lmStatus init(const ClumWeightedParallelCooperativeOperationWkPtr& i_weakPtr);

  ClumParallelOperationShPtr makeFlat() const override;
};
