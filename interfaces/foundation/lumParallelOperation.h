#pragma once

#include "foundation/lumOperation.h"

#include <vector>

/// What compositions have in common whose members run side by side: the members and their coding.
///
/// All members are started together, with the composition's parameters. A failing member ends the composition with its
/// failure; the others are then stopped.
class LUM_API ClumParallelOperation : public ClumOperation
{
  LUM_ABSTRACT(ClumParallelOperation, ClumOperation);

public:
  /// @return -1 for null, the composition itself, an operation that is a member already or one that the composition
  /// does not take; in a running composition the failure of the operation's start, which then is no member.
  lmStatus addOperation(const ClumOperationShPtr& i_operation);
  /// Stops it if the composition runs. @return -1 if it is no member.
  lmStatus removeOperation(const ClumOperationShPtr& i_operation);
  unsigned int countOperations() const { return static_cast<unsigned int>(m_members.size()); }
  /// @param i_rank below `countOperations()`, here and in the following.
  const ClumOperationShPtr& operation(unsigned int i_rank) const { return m_members[i_rank].operation; }

  EThreadSafety threadSafety() const override;
  /// The members in their own simple forms, or the only one itself.
  ClumOperationShPtr simplify() const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  struct CMember
  {
    ClumOperationShPtr operation;
    bool isActive = true;
    bool isFinished = false; ///< in this run
    double weight = 1.0;
    double credit = 0.0; ///< steps that it has saved up; it spends one for each turn
  };

  ClumParallelOperation() = default;
  lmStatus init(const ClumParallelOperationWkPtr& i_weakPtr);

  /// True if the operation may become a member.
  virtual bool canTake(const ClumOperation& i_operation) const;
  /// Start and stop a member of a running composition.
  virtual lmStatus startMember(const ClumOperationShPtr& i_operation);
  virtual lmStatus stopMember(const ClumOperationShPtr& i_operation);
  virtual lmStatus completionOf(const CMember& i_member, double& o_completion) const;
  virtual lmStatus difficultyOf(const CMember& i_member, double& o_difficulty) const;
  /// A fresh composition of the same kind, into which members of a nested one can be moved without a change of what
  /// they do; null if there is no such.
  virtual ClumParallelOperationShPtr makeFlat() const;

  /// Starts all members.
  lmStatus doStart(const ClumParameterMapShPtr& o_output) override;
  /// Stops all members. @return the first failure.
  lmStatus doFinish(const ClumParameterMapShPtr& o_output) override;
  /// The smallest of the members'.
  lmStatus doComputeCompletion(double& o_completion) const override;
  /// The largest of the members'.
  lmStatus doComputeDifficulty(double& o_difficulty) const override;

  const std::vector<CMember>& members() const { return m_members; }
  CMember& member(unsigned int i_rank) { return m_members[i_rank]; }
  /// @return `countOperations()` if it is no member.
  unsigned int rankOf(const ClumOperationShPtr& i_operation) const;
  bool isAllFinished() const;

private:
  lmStatus addFlattened(const ClumOperationShPtr& i_operation);

  std::vector<CMember> m_members;
};
