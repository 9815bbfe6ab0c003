#pragma once

#include "foundation/lumOperation.h"

/// Runs its members one after the other. A failing member ends the sequence with its failure.
class LUM_API ClumSequenceOperation : public ClumOperation
{
  LUM_CONCRETE(ClumSequenceOperation, ClumOperation);

public:
  static ClumSequenceOperationShPtr create();
  /// A sequence of both as `simplify` gives them, in which the members of a sequence stand one by one. Null if either
  /// is null.
  static ClumSequenceOperationShPtr createChain(const ClumOperationShPtr& i_first, const ClumOperationShPtr& i_next);

  /// A member added to a running sequence gets its turn too. @return -1 for null and for the sequence itself.
  lmStatus addOperation(const ClumOperationShPtr& i_operation);
  unsigned int countOperations() const { return static_cast<unsigned int>(m_operations.size()); }
  /// @param i_rank below `countOperations()`.
  const ClumOperationShPtr& operation(unsigned int i_rank) const { return m_operations[i_rank]; }

  EThreadSafety threadSafety() const override;
  /// The members in their own simple forms, or the only one itself.
  ClumOperationShPtr simplify() const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumSequenceOperation() = default;
  lmStatus init(const ClumSequenceOperationWkPtr& i_weakPtr);

  lmStatus doStart(const ClumParameterMapShPtr& o_output) override;
  lmStatus doStep(bool& o_finished) override;
  lmStatus doFinish(const ClumParameterMapShPtr& o_output) override;
  /// The members' completions, weighted by their difficulties; 1 if there is none.
  lmStatus doComputeCompletion(double& o_completion) const override;
  lmStatus doComputeDifficulty(double& o_difficulty) const override;

private:
  lmStatus addFlattened(const ClumOperationShPtr& i_operation);
  lmStatus startCurrent();

  std::vector<ClumOperationShPtr> m_operations;
  unsigned int m_current = 0; ///< the rank of the member that runs
};
