#pragma once

#include "optimizers/orvPathOptimizer.h"

/// Optimises loop by loop, until a number of loops, too small a gain or a delegate ends it.
///
/// Between loops a post-optimiser may run on what the loop left; it is one more part of the loop.
class LUM_API CorvLoopOptimizer : public CorvPathOptimizer
{
  LUM_ABSTRACT(CorvLoopOptimizer, CorvPathOptimizer);

public:
  ~CorvLoopOptimizer() override;
  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;
  void awake() override;

  /// 0 for no limit.
  unsigned int maxNbLoop() const { return m_maxNbLoop; }
  void maxNbLoop(unsigned int i_maxNbLoop);
  /// The part of the cost that a loop has to save for another to follow; 0 for any.
  double minGainStop() const { return m_minGainStop; }
  void minGainStop(double i_minGainStop);
  /// Null for none. This optimiser itself is refused.
  const CorvPathOptimizerShPtr& postOptimizer() const { return m_postOptimizer; }
  void postOptimizer(const CorvPathOptimizerShPtr& i_postOptimizer);

  /// The number of loops that are done in the running plan.
  unsigned int currentLoop() const { return m_currentLoop; }
  bool isPostOptimizing() const { return m_state == POST_OPTIMIZING; }
  /// The part of all loops that is done; above 1 where the number of loops has no limit.
  double completion() const;

protected:
  CorvLoopOptimizer() = default;
  CorvLoopOptimizer(const CorvLoopOptimizer& i_other);
  lmStatus init(const CorvLoopOptimizerWkPtr& i_weakPtr);

  /// One whole loop on a path.
  virtual lmStatus doOptimizeOneStep(const CorvPathShPtr& i_path) = 0;
  /// A part of a loop on the work path; by default the whole of it.
  virtual lmStatus doContinueOptimizeOneStep(bool& o_endOfLoop);
  /// The part of the present loop that is done, 0 to 1.
  virtual double loopCompletion() const = 0;

  lmStatus doOptimizePath(const CorvPathShPtr& i_path) override;
  lmStatus doStartPlan() override;
  lmStatus doContinuePlan(CorvPathShPtr& io_path, bool& o_shouldContinue) override;
  lmStatus doFinishPlan(const lmStatus& i_status, CorvPathShPtr& io_path) override;
  lmStatus doComputeCompletion(double& o_completion) const override;

  /// Stable configurations between the ends would be cut away. @return the planner's code for them if there are any.
  lmStatus checkNoStableIntermediate() const;

private:
  enum EState
  {
    LOOPING = 1,
    POST_OPTIMIZING = 2
  };

  void noteCostBeforeLoop();
  bool isLastLoop();
  bool startPostOptimizer();
  bool continuePostOptimizer();

  unsigned int m_maxNbLoop = 0;
  double m_minGainStop = 0.0;
  CorvPathOptimizerShPtr m_postOptimizer;
  unsigned int m_currentLoop = 0;
  EState m_state = LOOPING;
  double m_lastCost = -1.0; ///< -1: not evaluated
};
