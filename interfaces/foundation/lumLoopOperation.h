#pragma once

#include "foundation/lumRepeatingOperation.h"

/// Runs an operation a number of times. A failing run ends the loop with its failure.
class LUM_API ClumLoopOperation : public ClumRepeatingOperation
{
  LUM_CONCRETE(ClumLoopOperation, ClumRepeatingOperation);

public:
  /// @return null if the operation is null or the count 0.
  static ClumLoopOperationShPtr create(const ClumOperationShPtr& i_operation, unsigned int i_count);

protected:
  ClumLoopOperation() = default;
  ClumLoopOperation(const ClumOperationShPtr& i_operation, unsigned int i_count)
    : ClumRepeatingOperation(i_operation, i_count)
  {
  }
  lmStatus init(const ClumLoopOperationWkPtr& i_weakPtr);

  /// What a run is started with: the loop's own parameters. @param i_rank of the run, from 0.
  virtual ClumParameterMapConstShPtr parametersOfRun(unsigned int i_rank) const;

  lmStatus doStart(const ClumParameterMapShPtr& o_output) override;
  lmStatus doStep(bool& o_finished) override;
  /// By the runs that are done, and the part of the run at hand where the operation can tell it.
  lmStatus doComputeCompletion(double& o_completion) const override;
  lmStatus doComputeDifficulty(double& o_difficulty) const override;
};

/// Runs an operation until a run of it succeeds, at most a number of times.
///
/// It fails with the failure of the last run.
class LUM_API ClumAttemptOperation : public ClumRepeatingOperation
{
  LUM_CONCRETE(ClumAttemptOperation, ClumRepeatingOperation);

public:
  /// @return null if the operation is null or the count 0.
  static ClumAttemptOperationShPtr create(const ClumOperationShPtr& i_operation, unsigned int i_count);

protected:
  ClumAttemptOperation() = default;
  ClumAttemptOperation(const ClumOperationShPtr& i_operation, unsigned int i_count)
    : ClumRepeatingOperation(i_operation, i_count)
  {
  }
  lmStatus init(const ClumAttemptOperationWkPtr& i_weakPtr);

  lmStatus doStep(bool& o_finished) override;
  /// That of the run at hand.
  lmStatus doComputeCompletion(double& o_completion) const override;
  lmStatus doComputeDifficulty(double& o_difficulty) const override;
};
