#pragma once

#include "optimizers/orvLoopOptimizer.h"

/// Tries shortcuts between random places of the path, twenty in a loop, after one over the whole path.
class LUM_API CorvRandomOptimizer : public CorvLoopOptimizer
{
  LUM_CONCRETE(CorvRandomOptimizer, CorvLoopOptimizer);

public:
  ~CorvRandomOptimizer() override;
  /// With a `CorvShortcutDirect`.
  static CorvRandomOptimizerShPtr create();
  static CorvRandomOptimizerShPtr create(const CorvPathPlannerShPtr& i_shortcutMethod);
  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  /// A wish for clearing between loops, kept for those who can fulfil it.
  bool doesClear() const { return m_doesClear; }
  void doesClear(bool i_doesClear) { m_doesClear = i_doesClear; }

protected:
  CorvRandomOptimizer() = default;
  CorvRandomOptimizer(const CorvRandomOptimizer& i_other) = default;
  lmStatus init(const CorvRandomOptimizerWkPtr& i_weakPtr);

  lmStatus doStartPlan() override;
  lmStatus doOptimizeOneStep(const CorvPathShPtr& i_path) override;
  lmStatus doContinueOptimizeOneStep(bool& o_endOfLoop) override;
  double loopCompletion() const override { return m_progress; }

private:
  static const unsigned int s_nbInnerLoops;

  void tryRandomShortcut(const CorvPathShPtr& i_path);

  bool m_doesClear = false;
  ClumParameterMapConstShPtr m_shortcutParameters;
  unsigned int m_innerCount = 0;
  double m_progress = 0.0;
};
