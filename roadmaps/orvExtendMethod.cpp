#include "roadmaps/orvExtendMethod.h"

#include "foundation/lumDescribe.h"

LUM_DESCRIBE(CorvExtendMethod)
{
}

CorvExtendMethod::~CorvExtendMethod() = default;

lmStatus CorvExtendMethod::init(const CorvExtendMethodWkPtr& i_weakPtr)
{
  return CorvPathPlanner::init(i_weakPtr);
}
