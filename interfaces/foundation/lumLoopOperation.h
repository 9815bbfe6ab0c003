#pragma once

#include "foundation/lumOperation.h"

/// Runs an operation a number of times. A failing run ends the loop with its failure.
class LUM_API ClumLoopOperation : public ClumOperation
{
  LUM_CONCRETE(ClumLoopOperation, ClumOperation);

public:
  /// @return null if the operation is null or the count 0.
  static ClumLoopOperationShPtr create(const ClumOperationShPtr& i_operation, unsigned int i_count);

  const ClumOperationShPtr& operation() const { return m_operation; }
  unsigned int count() const { return m_count; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumLoopOperation() = default;
  ClumLoopOperation(const ClumOperationShPtr& i_operation, unsigned int i_count)
    : m_operation(i_operation), m_count(i_count)
  {
  }
  lmStatus init(const ClumLoopOperationWkPtr& i_weakPtr);

  lmStatus doStart(const ClumParameterMapShPtr& o_output) override;
  lmStatus doStep(bool& o_finished) override;
  lmStatus doFinish(const ClumParameterMapShPtr& o_output) override;
  lmStatus doComputeCompletion(double& o_completion) const override;
  lmStatus doComputeDifficulty(double& o_difficulty) const override;

private:
  ClumOperationShPtr m_operation;
  unsigned int m_count = 0;
  unsigned int m_done = 0; ///< runs that have ended
};

/// Runs an operation until a run of it succeeds, at most a number of times. @see ClumLoopOperation
///
/// It fails with the failure of the last run.
class LUM_API ClumAttemptOperation : public ClumOperation
{
  LUM_CONCRETE(ClumAttemptOperation, ClumOperation);

public:
  /// @return null if the operation is null or the count 0.
  static ClumAttemptOperationShPtr create(const ClumOperationShPtr& i_operation, unsigned int i_count);

  const ClumOperationShPtr& operation() const { return m_operation; }
  unsigned int count() const { return m_count; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumAttemptOperation() = default;
  ClumAttemptOperation(const ClumOperationShPtr& i_operation, unsigned int i_count)
    : m_operation(i_operation), m_count(i_count)
  {
  }
  lmStatus init(const ClumAttemptOperationWkPtr& i_weakPtr);

  lmStatus doStart(const ClumParameterMapShPtr& o_output) override;
  lmStatus doStep(bool& o_finished) override;
  lmStatus doFinish(const ClumParameterMapShPtr& o_output) override;
  /// That of the run at hand.
  lmStatus doComputeCompletion(double& o_completion) const override;
  lmStatus doComputeDifficulty(double& o_difficulty) const override;

private:
  ClumOperationShPtr m_operation;
  unsigned int m_count = 0;
  unsigned int m_done = 0; ///< runs that have failed
};
