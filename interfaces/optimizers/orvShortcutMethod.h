#pragma once

#include "optimizers/handles.h"
#include "planners/orvPathPlanner.h"

/// A planner that joins the two ends of a stretch of path anew, in one call of `plan`; what the stretch does in between
/// it may use or not. A stretch that cannot be improved is a failure.
class LUM_API CorvShortcutMethod : public CorvPathPlanner
{
  LUM_ABSTRACT(CorvShortcutMethod, CorvPathPlanner);

public:
  ~CorvShortcutMethod() override;

protected:
  CorvShortcutMethod() = default;
  CorvShortcutMethod(const CorvShortcutMethod&) = default;
  lmStatus init(const CorvShortcutMethodWkPtr& i_weakPtr) { return CorvPathPlanner::init(i_weakPtr); }

  /// The parameters with the validators' algorithm set to bisection, which finds contact soonest.
  static ClumParameterMapConstShPtr validationParameters(const ClumParameterMapConstShPtr& i_parameters);
};
