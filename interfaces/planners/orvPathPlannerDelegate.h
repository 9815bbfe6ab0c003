#pragma once

#include "foundation/lumObject.h"
#include "paths/handles.h"
#include "planners/handles.h"

#include <vector>

/// What a planner asks and tells while it plans.
///
/// Delegates form a chain for each planner, of which the planner itself is the head: each default forwards to the next
/// delegate for that planner, and at the end of the chain nothing stops the plan. One delegate may serve several
/// planners. An override that does not forward hides what stands behind it. The calls come on the planning thread;
/// `plannerShouldStopPlanning` between all steps, so it must be quick.
///
/// The chain holds its delegates, except one that owns the planner (or shares its owner): such a one is held weakly.
class LUM_API CorvPathPlannerDelegate
{
public:
  virtual ~CorvPathPlannerDelegate();

  virtual void plannerWillStartPlanning(const CorvPathPlannerShPtr& i_planner, const CorvPathConstShPtr& i_inputPath);
  virtual void plannerDidFinishPlanning(const CorvPathPlannerShPtr& i_planner, const CorvPathConstShPtr& i_outputPath,
                                        const lmStatus& i_status);
  /// @return true to end the plan before its next step.
  virtual bool plannerShouldStopPlanning(const CorvPathPlannerShPtr& i_planner);
  virtual void plannerDidComputePartialPath(const CorvPathPlannerShPtr& i_planner, const CorvPathConstShPtr& i_path);

  /// The delegate behind this one in the planner's chain, or null.
  CorvPathPlannerDelegateShPtr nextDelegate(const CorvPathPlanner& i_planner) const;
  /// Puts a delegate behind this one; null erases the entry.
  /// @param i_isOwner the delegate owns the planner and is held weakly.
  void nextDelegate(const CorvPathPlanner& i_planner, const CorvPathPlannerDelegateShPtr& i_delegate,
                    bool i_isOwner = false);

protected:
  CorvPathPlannerDelegate() = default;
  /// A copy stands in no chain.
  CorvPathPlannerDelegate(const CorvPathPlannerDelegate&) {}
  CorvPathPlannerDelegate& operator=(const CorvPathPlannerDelegate&) { return *this; }

private:
  friend class CorvPathPlanner;

  struct CNext
  {
    const CorvPathPlanner* planner;
    CorvPathPlannerDelegateShPtr held; ///< null if held weakly
    CorvPathPlannerDelegateWkPtr weak;
  };

  const CNext* entryOf(const CorvPathPlanner& i_planner) const;
  /// Takes the delegates from this one on out of the planner's chain.
  void dissolveChain(const CorvPathPlanner& i_planner);

  /// A delegate serves few planners, so a scan beats any map.
  std::vector<CNext> m_next;
};
