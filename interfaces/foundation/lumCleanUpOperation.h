#pragma once

#include "foundation/lumOperation.h"

/// Runs an operation, then a clean-up, whatever became of the operation.
///
/// The clean-up runs in steps after a success and after a failure, which is told at the end; if the run is aborted or
/// the operation does not start, the clean-up runs whole in the step that ends the run.
class LUM_API ClumCleanUpOperation : public ClumOperation
{
  LUM_CONCRETE(ClumCleanUpOperation, ClumOperation);

public:
  /// @return null if either is null.
  static ClumCleanUpOperationShPtr create(const ClumOperationShPtr& i_operation, const ClumOperationShPtr& i_cleanUp);

  const ClumOperationShPtr& operation() const { return m_operation; }
  const ClumOperationShPtr& cleanUp() const { return m_cleanUp; }

  EThreadSafety threadSafety() const override;
  /// Both in their own simple forms.
  ClumOperationShPtr simplify() const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumCleanUpOperation() = default;
  ClumCleanUpOperation(const ClumOperationShPtr& i_operation, const ClumOperationShPtr& i_cleanUp)
    : m_operation(i_operation), m_cleanUp(i_cleanUp)
  {
  }
  lmStatus init(const ClumCleanUpOperationWkPtr& i_weakPtr);

  lmStatus doStart(const ClumParameterMapShPtr& o_output) override;
  lmStatus doStep(bool& o_finished) override;
  lmStatus doFinish(const ClumParameterMapShPtr& o_output) override;
  /// That of the operation alone.
  lmStatus doComputeCompletion(double& o_completion) const override;
  lmStatus doComputeDifficulty(double& o_difficulty) const override;

private:
  ClumOperationShPtr m_operation;
  ClumOperationShPtr m_cleanUp;
  bool m_isCleaningUp = false; ///< the clean-up was started in this run
  lmStatus m_status;           ///< of the operation
};
