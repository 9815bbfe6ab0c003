#include "planners/orvIdentityPlanner.h"

#include "foundation/lumDescribe.h"
#include "paths/orvPath.h"

LUM_DESCRIBE(CorvIdentityPlanner)
{
  i_class.creates("()", &Self::create);
}

CorvIdentityPlannerShPtr CorvIdentityPlanner::create()
{
  return lumCreate<CorvIdentityPlanner>();
}

CorvIdentityPlanner::~CorvIdentityPlanner()
{
}

lmStatus CorvIdentityPlanner::init(const CorvIdentityPlannerWkPtr& i_weakPtr)
{
  return CorvPathPlanner::init(i_weakPtr);
}

lmStatus CorvIdentityPlanner::doPlan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>&,
                                     const ClumParameterMapConstShPtr&, CorvPathShPtr& o_path)
{
  o_path = CorvPath::createCopy(i_inputPath);
  return o_path ? lmStatus() : lmStatus(-1);
}

lmStatus CorvIdentityPlanner::getOutputStableConfigurations(const CorvPathConstShPtr&,
                                                            std::vector<bool>& o_stableConfigs) const
{
  o_stableConfigs = stableConfigs();
  return lmStatus();
}
