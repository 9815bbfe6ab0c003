#pragma once

#include "foundation/lumLoopOperation.h"
#include "paths/handles.h"
#include "planners/handles.h"

#include <vector>

/// A planner as an operation, for sequences, loops and parallel runs.
///
/// It reads the input path from its parameters under `INPUT_PATH_KEY`, and which of its configurations are stable
/// under `WAYPOINT_STABILITY_KEY` (a vector of bool) or, without that, `STABILITY_KEY` (an int,
/// `CorvPathPlanner::EStability`); without either all are. The result is put in the output map. Paths are handles on
/// `CorvPath`.
class LUM_API CorvPlannerOperation : public ClumOperation
{
  LUM_CONCRETE(CorvPlannerOperation, ClumOperation);

public:
  static const ClumStringKey INPUT_PATH_KEY;
  static const ClumStringKey STABILITY_KEY;
  /// Also an output: the stable configurations of the result.
  static const ClumStringKey WAYPOINT_STABILITY_KEY;
  /// A mutable path that each step fills with the partial path.
  static const ClumStringKey INTERMEDIATE_PATH_KEY;
  static const ClumStringKey OUTPUT_PATH_KEY;
  /// An int: the code of the status with which the plan finished.
  static const ClumStringKey STATUS_KEY;

  /// @return null for a null planner.
  static CorvPlannerOperationShPtr create(const CorvPathPlannerShPtr& i_planner);
  ~CorvPlannerOperation() override;
  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  const CorvPathPlannerShPtr& planner() const { return m_planner; }

  /// Plans a number of times: the result of each round is the input of the next.
  ClumOperationShPtr loop(unsigned int i_count) const override;

protected:
  CorvPlannerOperation() = default;
  explicit CorvPlannerOperation(const CorvPathPlannerShPtr& i_planner);
  CorvPlannerOperation(const CorvPlannerOperation&) = default;
  lmStatus init(const CorvPlannerOperationWkPtr& i_weakPtr);

  lmStatus doStart(const ClumParameterMapShPtr& o_output) override;
  lmStatus doStep(bool& o_finished) override;
  lmStatus doFinish(const ClumParameterMapShPtr& o_output) override;
  lmStatus doComputeCompletion(double& o_completion) const override;
  lmStatus doComputeDifficulty(double& o_difficulty) const override;

private:
  lmStatus startPlanner();
  lmStatus finishPlanner(const lmStatus& i_status);
  void showPartialPath(const CorvPathShPtr& i_path) const;

  CorvPathPlannerShPtr m_planner;
};

/// Repeats a planner operation, each time on the result of the round before. A failing round ends the loop with its
/// failure; the output is that of the last round.
class LUM_API CorvPlannerLoopOperation : public ClumLoopOperation
{
  LUM_CONCRETE(CorvPlannerLoopOperation, ClumLoopOperation);

public:
  /// @return null if the operation is null or the count 0.
  static CorvPlannerLoopOperationShPtr create(const CorvPlannerOperationShPtr& i_operation, unsigned int i_count);
  ~CorvPlannerLoopOperation() override;

protected:
  CorvPlannerLoopOperation() = default;
  CorvPlannerLoopOperation(const CorvPlannerOperationShPtr& i_operation, unsigned int i_count);
  lmStatus init(const CorvPlannerLoopOperationWkPtr& i_weakPtr);

  /// From the second round on with the results of the round before, under the keys of the inputs.
  ClumParameterMapConstShPtr parametersOfRun(unsigned int i_rank) const override;
};
