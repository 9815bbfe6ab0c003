#include "planners/orvBuilderPlanner.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "roadmaps/orvBuilder.h"

LUM_DESCRIBE(CorvBuilderPlanner)
{
  i_class.creates("(const CorvBuilderShPtr & i_builder)", &Self::create);
}

CorvBuilderPlannerShPtr CorvBuilderPlanner::create(const CorvBuilderShPtr& i_builder)
{
  return lumCreate<CorvBuilderPlanner>(i_builder);
}

CorvBuilderPlanner::CorvBuilderPlanner(const CorvBuilderShPtr& i_builder) : m_builder(i_builder)
{
}

CorvBuilderPlanner::~CorvBuilderPlanner()
{
}

lmStatus CorvBuilderPlanner::init(const CorvBuilderPlannerWkPtr& i_weakPtr)
{
  if (m_builder)
    return CorvBuilderPlannerBase::init(i_weakPtr);
  ClumLogManager::addError("Unable to initialize a builder planner with a null builder.");
  return lmStatus(-1);
}

void CorvBuilderPlanner::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvBuilderPlannerBase::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_builder, "builder");
}

lmStatus CorvBuilderPlanner::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvBuilderPlannerBase::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_builder = i_coder->decode<CorvBuilder>("builder");
  return m_builder ? status : lmStatus(-1);
}
