#pragma once

#include "optimizers/orvLoopOptimizer.h"

/// Removes whole chains of direct paths by bisection, then rounds each remaining corner with ever smaller cuts.
///
/// A loop first tries the whole path, then its halves, and so on down to pairs of direct paths; then it walks the
/// junctions from the last to the first, and cuts each corner at half of both sides, at a quarter, and so on down to
/// `precision`. A loop is one step for each of these intervals and junctions.
class LUM_API CorvAdaptiveShortcutOptimizer : public CorvLoopOptimizer
{
  LUM_CONCRETE(CorvAdaptiveShortcutOptimizer, CorvLoopOptimizer);

public:
  ~CorvAdaptiveShortcutOptimizer() override;
  /// With a `CorvShortcutDirect`.
  static CorvAdaptiveShortcutOptimizerShPtr create();
  static CorvAdaptiveShortcutOptimizerShPtr create(const CorvPathPlannerShPtr& i_shortcutMethod);
  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  /// The shortest side of a corner that is still cut. Negative, as at first: a thousandth of the path's length when the
  /// plan starts. Never less than the minimum length of a direct path.
  double precision() const { return m_precision; }
  void precision(double i_precision);

protected:
  CorvAdaptiveShortcutOptimizer() = default;
  CorvAdaptiveShortcutOptimizer(const CorvAdaptiveShortcutOptimizer& i_other) = default;
  lmStatus init(const CorvAdaptiveShortcutOptimizerWkPtr& i_weakPtr);

  lmStatus doStartPlan() override;
  lmStatus doOptimizeOneStep(const CorvPathShPtr& i_path) override;
  lmStatus doContinueOptimizeOneStep(bool& o_endOfLoop) override;
  double loopCompletion() const override;

private:
  enum EPhase
  {
    NEW_LOOP,
    SHORTCUTS,
    ORACLE
  };
  /// A range of direct paths, the last one excluded.
  struct CInterval
  {
    unsigned int first;
    unsigned int last;
  };

  static const double s_shortcutProgressWeight;

  void resetLoop();
  bool advanceLoop(const CorvPathShPtr& i_path);
  void continueShortcut(const CorvPathShPtr& i_path);
  void continueOracle(const CorvPathShPtr& i_path);

  double m_precision = -1.0;
  double m_runningPrecision = 0.0;
  ClumParameterMapConstShPtr m_shortcutParameters;
  ClumParameterMapConstShPtr m_oracleParameters;
  EPhase m_phase = NEW_LOOP;
  std::vector<CInterval> m_intervals; ///< the next one last
  int m_junction = -1;
  unsigned int m_shortcutDone = 0;
  unsigned int m_shortcutTotal = 0;
  unsigned int m_oracleDone = 0;
  unsigned int m_oracleTotal = 0;
};
