#include "roadmaps/orvOperationAdapterBuilder.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"

LUM_DESCRIBE(CorvOperationAdapterBuilder)
{
  i_class.creates("(const CorvRoadmapShPtr& i_roadmap, const ClumOperationShPtr& i_operation)", &Self::create);
}

CorvOperationAdapterBuilderShPtr CorvOperationAdapterBuilder::create(const CorvRoadmapShPtr& i_roadmap,
                                                                     const ClumOperationShPtr& i_operation)
{
  return lumCreate<CorvOperationAdapterBuilder>(i_roadmap, i_operation);
}

CorvOperationAdapterBuilder::~CorvOperationAdapterBuilder() = default;

lmStatus CorvOperationAdapterBuilder::init(const CorvOperationAdapterBuilderWkPtr& i_weakPtr)
{
  const lmStatus status = CorvBuilder::init(i_weakPtr);
  return status.failed() || m_operation ? status : lmStatus(lmStatus::FAILURE);
}

void CorvOperationAdapterBuilder::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvBuilder::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_operation, "operation");
}

lmStatus CorvOperationAdapterBuilder::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvBuilder::initWithCoder(i_coder, i_self);
  if (status.succeeded())
    m_operation = i_coder->decode<ClumOperation>("operation");
  return status;
}

lmStatus CorvOperationAdapterBuilder::doStartBuild(const ClumParameterMapShPtr& io_parameters)
{
  return m_operation ? m_operation->start(io_parameters, ClumParameterMapShPtr()) : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvOperationAdapterBuilder::doContinueBuild(bool& o_shouldContinue)
{
  bool isFinished = false;
  const lmStatus status = m_operation->step(isFinished);
  o_shouldContinue = !isFinished;
  return status;
}

lmStatus CorvOperationAdapterBuilder::doFinishBuild()
{
  return m_operation ? stop(m_operation) : lmStatus();
}

lmStatus CorvOperationAdapterBuilder::doComputeCompletion(double& o_completion) const
{
  return m_operation ? m_operation->computeCompletion(o_completion) : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvOperationAdapterBuilder::doComputeDifficulty(double& o_difficulty) const
{
  return m_operation ? m_operation->computeDifficulty(o_difficulty) : lmStatus(lmStatus::FAILURE);
}
