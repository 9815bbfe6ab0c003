#pragma once

#include "optimizers/handles.h"
#include "planners/orvPathPlanner.h"

/// Takes a valid path and returns a better one with the same ends.
///
/// Its one lever is the shortcut: a stretch of the path is cut out, `shortcutMethod` plans it anew between the same two
/// ends, and the result is kept if `pathEvaluator` finds the whole better. The work path is what is being changed; the
/// best path is replaced only when the cost falls by more than `COST_EPSILON`, so that a stop at any time leaves a
/// valid path that is never worse than the input. Each better path is reported as a partial path.
///
/// The optimiser is a delegate of its shortcut method: a stop that is asked of the optimiser stops the method too.
class LUM_API CorvPathOptimizer : public CorvPathPlanner
{
  LUM_ABSTRACT(CorvPathOptimizer, CorvPathPlanner);

public:
  /// The kinds of shortcut that a client may ask for by parameter.
  enum EShortcutType
  {
    SHORTCUT_DOF,
    SHORTCUT_DIRECT
  };

  static constexpr double COST_EPSILON = 1e-6;

  ~CorvPathOptimizer() override;
  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;
  void awake() override;

  /// Replaces the content of the path by the optimised path. The path stays as it is unless that succeeds.
  /// The first form uses `penetration()`, or if that is negative the one that the path was validated with.
  /// @return -1 for a null path or a negative penetration; otherwise the status of the plan.
  lmStatus optimizePath(const CorvPathShPtr& i_path);
  lmStatus optimizePath(const CorvPathShPtr& i_path, double i_penetration);

  /// Never null: null restores the default, the length.
  const CorvPathEvaluatorConstShPtr& pathEvaluator() const { return m_pathEvaluator; }
  void pathEvaluator(const CorvPathEvaluatorConstShPtr& i_pathEvaluator);
  /// Without one no shortcut succeeds.
  const CorvPathPlannerShPtr& shortcutMethod() const { return m_shortcutMethod; }
  void shortcutMethod(const CorvPathPlannerShPtr& i_shortcutMethod);
  /// The penetration that shortcuts are validated with; negative, as at first: what the parameters of the plan say, or
  /// in `optimizePath` the path.
  double penetration() const { return m_penetration; }
  void penetration(double i_penetration);

  bool plannerShouldStopPlanning(const CorvPathPlannerShPtr& i_planner) override;
  void plannerDidComputePartialPath(const CorvPathPlannerShPtr& i_planner, const CorvPathConstShPtr& i_path) override;

protected:
  CorvPathOptimizer();
  CorvPathOptimizer(const CorvPathOptimizer& i_other);
  lmStatus init(const CorvPathOptimizerWkPtr& i_weakPtr);

  /// Optimises the work path within a running plan, in one go. The status of the step.
  virtual lmStatus doOptimizePath(const CorvPathShPtr& i_path) = 0;
  /// Puts the penetration in force over the parameters.
  ClumParameterMapConstShPtr setupParameters(const ClumParameterMapConstShPtr& i_parameters) const override;

  lmStatus doStartPlan() override;
  lmStatus doContinuePlan(CorvPathShPtr& io_path, bool& o_shouldContinue) override;
  lmStatus doFinishPlan(const lmStatus& i_status, CorvPathShPtr& io_path) override;

  /// Null when no plan is running.
  const CorvPathShPtr& bestPath() const { return m_bestPath; }
  const CorvPathShPtr& workPath() const { return m_workPath; }

  bool shouldAcceptNewPath(const CorvPathConstShPtr& i_current, const CorvPathConstShPtr& i_candidate) const;
  /// A shortcut whose steering is not conservative has to pass the validators as a whole first.
  bool acceptShortcut(const CorvPathConstShPtr& i_current, const CorvPathConstShPtr& i_candidate,
                      const ClumParameterMapConstShPtr& i_parameters) const;
  /// Takes the path over as the best one, and reports a copy, if it is better.
  void updateBestPath(const CorvPathConstShPtr& i_path);

  /// Plans the direct paths from `i_first` up to but without `i_last` anew.
  /// @return success, with nothing changed, for a single direct path; failure if no better path comes.
  lmStatus shortcut(const CorvPathShPtr& i_path, unsigned int i_first, unsigned int i_last,
                    const ClumParameterMapConstShPtr& i_parameters);
  /// Plans what lies between two distances anew.
  lmStatus shortcut(const CorvPathShPtr& i_path, double i_from, double i_to,
                    const ClumParameterMapConstShPtr& i_parameters);
  /// Plans each piece between the sorted distances anew, and those between them and the ends. @return success if a
  /// piece succeeds and the whole is accepted.
  lmStatus shortcut(const CorvPathShPtr& i_path, const std::vector<double>& i_distances,
                    const ClumParameterMapConstShPtr& i_parameters);

  /// Listens to a planner that works for this one, or stops listening.
  void listenTo(const CorvPathPlannerShPtr& i_planner);
  void stopListeningTo(const CorvPathPlannerShPtr& i_planner);

private:
  template <class PLACE>
  lmStatus shortcutPiece(const CorvPathShPtr& i_path, const CorvPathConstShPtr& i_piece, PLACE i_first, PLACE i_last,
                         const ClumParameterMapConstShPtr& i_parameters);
  lmStatus replan(const CorvPathConstShPtr& i_piece, const ClumParameterMapConstShPtr& i_parameters,
                  CorvPathShPtr& o_path);
  lmStatus take(const CorvPathShPtr& io_path, const CorvPathShPtr& i_candidate,
                const ClumParameterMapConstShPtr& i_parameters);

  CorvPathEvaluatorConstShPtr m_pathEvaluator;
  CorvPathPlannerShPtr m_shortcutMethod;
  double m_penetration = -1.0;
  double m_runningPenetration = -1.0; ///< -1 when idle
  CorvPathShPtr m_bestPath;
  CorvPathShPtr m_workPath;
  bool m_acceptsAllValidShortcuts = false;
};
