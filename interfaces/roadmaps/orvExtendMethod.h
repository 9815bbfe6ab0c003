#pragma once

#include "planners/orvPathPlanner.h"
#include "roadmaps/handles.h"

/// A small planner that goes from a stable end along a direct path as far as it can.
///
/// The input path has one direct path, of which one end is stable. The output begins (or ends) at that end; an
/// extension that gets nowhere fails with -1 and has no output.
class LUM_API CorvExtendMethod : public CorvPathPlanner
{
  LUM_ABSTRACT(CorvExtendMethod, CorvPathPlanner);

public:
  ~CorvExtendMethod() override;

protected:
  CorvExtendMethod() = default;
  CorvExtendMethod(const CorvExtendMethod&) = default;
  lmStatus init(const CorvExtendMethodWkPtr& i_weakPtr);
};
