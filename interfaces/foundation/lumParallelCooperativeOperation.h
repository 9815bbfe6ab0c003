#pragma once

#include "foundation/lumParallelOperation.h"

/// Runs its members side by side in one thread.
///
/// A step of it is a round, in which each active member that has not finished gets a turn, in the order in which they
/// were added. It has finished when all members have, active or not; a round without an active member does nothing. A
/// member may be added and removed while it runs, also by a member's step.
class LUM_API ClumParallelCooperativeOperation : public ClumParallelOperation
{
  LUM_CONCRETE(ClumParallelCooperativeOperation, ClumParallelOperation);

public:
  static ClumParallelCooperativeOperationShPtr create();

  bool isActive(unsigned int i_rank) const { return members()[i_rank].isActive; }
  void isActive(unsigned int i_rank, bool i_isActive) { member(i_rank).isActive = i_isActive; }

protected:
  ClumParallelCooperativeOperation() = default;
  lmStatus init(const ClumParallelCooperativeOperationWkPtr& i_weakPtr);

  /// One step of the member whose turn it is.
  virtual lmStatus stepMember(const ClumOperationShPtr& i_operation, bool& o_finished);
  ClumParallelOperationShPtr makeFlat() const override;

  lmStatus doStep(bool& o_finished) override;

  // The share of steps of each member, relative to the largest.
  double weightOf(unsigned int i_rank) const { return members()[i_rank].weight; }
  void weightOf(unsigned int i_rank, double i_weight) { member(i_rank).weight = i_weight; }

private:
  double largestActiveWeight() const;
};
