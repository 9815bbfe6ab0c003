#pragma once

#include "foundation/lumOperation.h"

/// Runs its members side by side in one thread: each step is a round in which every active member gets a turn.
///
/// It finishes when all members have finished; a member that is not active keeps its place, gets no steps, and so keeps
/// the composition from finishing. A member that comes late is started on entry, one that is removed is stopped. A
/// failing member ends the composition with its failure; the others are then stopped.
class LUM_API ClumParallelCooperativeOperation : public ClumOperation
{
  LUM_CONCRETE(ClumParallelCooperativeOperation, ClumOperation);

public:
  static ClumParallelCooperativeOperationShPtr create();

  /// @return -1 for null, the composition itself or an operation that is a member already; in a running composition
  /// the failure of the operation's start, which then is no member.
  lmStatus addOperation(const ClumOperationShPtr& i_operation);
  /// @return -1 if it is no member.
  lmStatus removeOperation(const ClumOperationShPtr& i_operation);
  unsigned int countOperations() const { return static_cast<unsigned int>(m_members.size()); }
  /// @param i_rank below `countOperations()`, here and in the following.
  const ClumOperationShPtr& operation(unsigned int i_rank) const { return m_members[i_rank].operation; }
  bool isActive(unsigned int i_rank) const { return m_members[i_rank].isActive; }
  void isActive(unsigned int i_rank, bool i_isActive) { m_members[i_rank].isActive = i_isActive; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumParallelCooperativeOperation() = default;
  lmStatus init(const ClumParallelCooperativeOperationWkPtr& i_weakPtr);

  lmStatus doStart(const ClumParameterMapShPtr& o_output) override;
  lmStatus doStep(bool& o_finished) override;
  lmStatus doFinish(const ClumParameterMapShPtr& o_output) override;
  /// The smallest of the members'.
  lmStatus doComputeCompletion(double& o_completion) const override;
  /// The largest of the members'.
  lmStatus doComputeDifficulty(double& o_difficulty) const override;

  // The share of steps of each member, relative to the largest.
  double weightOf(unsigned int i_rank) const { return m_members[i_rank].weight; }
  void weightOf(unsigned int i_rank, double i_weight) { m_members[i_rank].weight = i_weight; }
  /// @return `countOperations()` if it is no member.
  unsigned int rankOf(const ClumOperationShPtr& i_operation) const;

private:
  struct CMember
  {
    ClumOperationShPtr operation;
    bool isActive = true;
    bool isFinished = false; ///< in this run
    double weight = 1.0;
    double credit = 0.0; ///< steps that it has saved up; it spends one for each turn
  };

  double largestActiveWeight() const;
  bool isAllFinished() const;

  std::vector<CMember> m_members;
};
