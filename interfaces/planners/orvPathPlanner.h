#pragma once

#include "foundation/lumCodable.h"
#include "kinematics/handles.h"
#include "paths/handles.h"
#include "planners/handles.h"
#include "planners/orvPathPlannerDelegate.h"
#include "validation/handles.h"

#include <string>
#include <vector>

/// Turns an input path, some configurations of which are stable, into an output path that has those configurations at
/// the same places. Every planner and optimiser is one.
///
/// Planning runs in one call (`plan`) or in steps (`startPlan`, `continuePlan`, `finishPlan`). Both end up in
/// `doStartPlan`, `doContinuePlan` and `doFinishPlan`, which subclasses write, or they replace the whole of `doPlan`.
/// `doFinishPlan` always runs, also after a failure, and the status it returns is the one that counts. Nothing but a
/// delegate stops a plan from outside.
///
/// A planner is idle or planning, one plan at a time; a start that fails leaves it planning until `finishPlan`. It can
/// be used again afterwards. Parameters and input paths are not coded, and a planner is not coded while it plans.
class LUM_API CorvPathPlanner : public ClumMutableCodable, public virtual CorvPathPlannerDelegate
{
  LUM_ABSTRACT(CorvPathPlanner, ClumMutableCodable);

public:
  /// Which configurations of an input path are stable.
  enum EStability
  {
    STABLE_NONE = 0x00,
    STABLE_START = 0x01,
    STABLE_END = 0x02,
    STABLE_INTERMEDIATE = 0x04,
    STABLE_ENDS = STABLE_START | STABLE_END,
    STABLE_ALL = STABLE_INTERMEDIATE | STABLE_START | STABLE_END
  };

  static const unsigned int UNSUPPORTED_START_STABILITY_ERROR;
  static const unsigned int UNSUPPORTED_END_STABILITY_ERROR;
  static const unsigned int UNSUPPORTED_INTERMEDIATE_STABILITY_ERROR;
  static const unsigned int WILL_START;
  static const unsigned int DID_COMPUTE_PARTIAL_PATH;
  static const unsigned int DID_STOP;
  /// The key under which the three notifications carry their path.
  static const std::string PATH_KEY;

  ~CorvPathPlanner() override;
  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  /// A copy by coding.
  virtual CorvPathPlannerShPtr clone() const;
  /// This planner as an operation, for sequences and parallel runs.
  virtual ClumOperationShPtr asOperation() const;

  /// Plan in one call. `o_path` is emptied first.
  /// @return -1, nothing else changed, for an empty input path, while planning, or if the number of stability flags is
  /// not that of the path's configurations; otherwise the status of the plan.
  lmStatus plan(const CorvPathConstShPtr& i_inputPath, EStability i_stability, CorvPathShPtr& o_path);
  lmStatus plan(const CorvPathConstShPtr& i_inputPath, EStability i_stability, CorvPathShPtr& o_path,
                std::vector<bool>& o_stableConfigs);
  lmStatus plan(const CorvPathConstShPtr& i_inputPath, EStability i_stability,
                const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path);
  lmStatus plan(const CorvPathConstShPtr& i_inputPath, EStability i_stability,
                const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path,
                std::vector<bool>& o_stableConfigs);
  lmStatus plan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs, CorvPathShPtr& o_path);
  lmStatus plan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs, CorvPathShPtr& o_path,
                std::vector<bool>& o_stableConfigs);
  lmStatus plan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path);
  lmStatus plan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path,
                std::vector<bool>& o_stableConfigs);
  /// The classic query: from start to goal, both stable. The input path has these two configurations and one direct
  /// path of the space's steering method. @return -1 if the steering method gives none.
  lmStatus plan(const CorvConfig& i_start, const CorvConfig& i_goal, CorvPathShPtr& o_path);
  lmStatus plan(const CorvConfig& i_start, const CorvConfig& i_goal, const ClumParameterMapConstShPtr& i_parameters,
                CorvPathShPtr& o_path);

  /// Plan in steps. Failures as in `plan`; if the start itself fails, `finishPlan` must still be called.
  lmStatus startPlan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs);
  lmStatus startPlan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                     const ClumParameterMapConstShPtr& i_parameters);
  lmStatus startPlan(const CorvPathConstShPtr& i_inputPath, EStability i_stability);
  lmStatus startPlan(const CorvPathConstShPtr& i_inputPath, EStability i_stability,
                     const ClumParameterMapConstShPtr& i_parameters);
  /// One step. @param o_path a partial path that was not reported yet, or null.
  /// @return -1 when not planning, or when a delegate stops the plan (`o_shouldContinue` is then false).
  lmStatus continuePlan(CorvPathShPtr& o_path, bool& o_shouldContinue);
  /// Ends the plan. @param i_status what the plan came to: 0 if its steps ended by themselves.
  /// @return -1 when not planning; otherwise the status of the plan.
  lmStatus finishPlan(const lmStatus& i_status, CorvPathShPtr& o_path);
  lmStatus finishPlan(const lmStatus& i_status, CorvPathShPtr& o_path, std::vector<bool>& o_stableConfigs);
  lmStatus finishPlanWithBool(bool i_success, CorvPathShPtr& o_path);
  lmStatus finishPlanWithBool(bool i_success, CorvPathShPtr& o_path, std::vector<bool>& o_stableConfigs);

  bool isPlanning() const { return static_cast<bool>(m_inputPath); }
  /// Null when not planning.
  const CorvPathConstShPtr& inputPath() const { return m_inputPath; }
  /// Null when not planning, never null while planning.
  const ClumParameterMapConstShPtr& parameters() const { return m_parameters; }
  const std::vector<bool>& stableConfigs() const { return m_stableConfigs; }
  bool stableStart() const;
  bool stableEnd() const;
  /// Of the input path; null when not planning.
  CorvConfigSpaceShPtr configSpace() const;
  CorvDeviceShPtr device() const;
  /// Those of `configSpace()`; null when not planning.
  CorvValidatorSetShPtr currentConfigValidatorSet() const;
  CorvValidatorSetShPtr currentDirectPathValidatorSet() const;

  const ClumNotificatorShPtr& notificator() const { return m_notificator; }
  void notificator(const ClumNotificatorShPtr& i_notificator) { m_notificator = i_notificator; }
  /// Relays the other planner's notices through this one's notificator.
  void linkNotificator(const CorvPathPlannerShPtr& i_otherPlanner) const;

  /// @param o_completion the part of the plan that is done, 0 to 1.
  /// @return -1 when not planning, if the planner cannot tell, or if it tells a value out of range.
  lmStatus computeCompletion(double& o_completion) const;
  /// True if a path has the stable configurations of the input path in their order; others may stand between them.
  bool checkResult(const CorvPathConstShPtr& i_path) const;

  /// Puts a delegate at the head of the chain, behind the planner. One that is in the chain already is moved.
  /// @param i_isOwner the delegate owns this planner: it is held weakly.
  void addDelegate(const CorvPathPlannerDelegateShPtr& i_delegate, bool i_isOwner = false);
  /// Does nothing if the delegate is not in the chain.
  void removeDelegate(const CorvPathPlannerDelegateShPtr& i_delegate);

protected:
  CorvPathPlanner();
  CorvPathPlanner(const CorvPathPlanner& i_other);
  lmStatus init(const CorvPathPlannerWkPtr& i_weakPtr);

  /// The whole plan between start and finish; the first form calls the second by default.
  virtual lmStatus doPlan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                          const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path,
                          std::vector<bool>& o_stableConfigs);
  virtual lmStatus doPlan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                          const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path);
  /// The stages. By default start and continue fail with -1, and finish passes its status on.
  virtual lmStatus doStartPlan();
  /// @param io_path what the step shows as a partial path, or null.
  /// @param o_shouldContinue set to false when the plan is done.
  virtual lmStatus doContinuePlan(CorvPathShPtr& io_path, bool& o_shouldContinue);
  /// @param io_path the result. @return the status of the plan.
  virtual lmStatus doFinishPlan(const lmStatus& i_status, CorvPathShPtr& io_path);
  virtual lmStatus doComputeCompletion(double& o_completion) const;
  /// One flag for each configuration of the output path. @return -1 by default if an intermediate configuration of the
  /// input path is stable.
  virtual lmStatus getOutputStableConfigurations(const CorvPathConstShPtr& i_outputPath,
                                                 std::vector<bool>& o_stableConfigs) const;
  /// The parameters of the plan: by default those given, or a new empty map.
  virtual ClumParameterMapConstShPtr setupParameters(const ClumParameterMapConstShPtr& i_parameters) const;

  bool shouldStopPlanning();
  void didComputePartialPath(const CorvPathConstShPtr& i_path);
  void willStartPlanning(const CorvPathConstShPtr& i_inputPath);
  void didFinishPlanning(const CorvPathConstShPtr& i_outputPath, const lmStatus& i_status);
  /// Starts a subordinate planner with the stability of this plan.
  lmStatus startSubplanner(const CorvPathPlannerShPtr& i_planner, const CorvPathConstShPtr& i_path,
                           const ClumParameterMapConstShPtr& i_parameters) const;
  static std::vector<bool> makeStableConfigVector(const CorvPathConstShPtr& i_path, EStability i_stability);

private:
  /// What a one-configuration input path stands for.
  enum ESingleConfig
  {
    SINGLE_START = 0,
    SINGLE_END = 1,
    SINGLE_NOT_SET = 2
  };

  bool canStart(const CorvPathConstShPtr& i_inputPath, std::size_t i_stableCount) const;
  void noteSingleConfig(const CorvPathConstShPtr& i_inputPath, EStability i_stability);
  void internalStart(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                     const ClumParameterMapConstShPtr& i_parameters);
  void internalFinish(const lmStatus& i_status, const CorvPathShPtr& i_outputPath, std::vector<bool>& o_stableConfigs);
  lmStatus stepPlan(CorvPathShPtr& o_path, bool& o_shouldContinue);
  void notifyPath(unsigned int i_id, const CorvPathConstShPtr& i_path) const;

  CorvPathConstShPtr m_inputPath;
  std::vector<bool> m_stableConfigs;
  ESingleConfig m_singleConfigInputType = SINGLE_NOT_SET;
  ClumParameterMapConstShPtr m_parameters;
  CorvPathConstShPtr m_lastPartialPath;
  ClumNotificatorShPtr m_notificator;
};
