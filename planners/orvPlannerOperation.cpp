#include "planners/orvPlannerOperation.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumParameterMap.h"
#include "paths/orvPath.h"
#include "planners/orvPathPlanner.h"

LUM_DESCRIBE(CorvPlannerOperation)
{
  i_class.creates("(const CorvPathPlannerShPtr & i_planner)", &Self::create);
}

LUM_DESCRIBE(CorvPlannerLoopOperation)
{
  i_class.creates("(const CorvPlannerOperationShPtr & i_operation, unsigned int i_count)", &Self::create);
}

const ClumStringKey CorvPlannerOperation::INPUT_PATH_KEY("orvane.core.planner-operation.input-path");
const ClumStringKey CorvPlannerOperation::STABILITY_KEY("orvane.core.planner-operation.stability");
const ClumStringKey CorvPlannerOperation::WAYPOINT_STABILITY_KEY("orvane.core.planner-operation.waypoint-stability");
const ClumStringKey CorvPlannerOperation::INTERMEDIATE_PATH_KEY("orvane.core.planner-operation.intermediate-path");
const ClumStringKey CorvPlannerOperation::OUTPUT_PATH_KEY("orvane.core.planner-operation.output-path");
const ClumStringKey CorvPlannerOperation::STATUS_KEY("orvane.core.planner-operation.status");

CorvPlannerOperationShPtr CorvPlannerOperation::create(const CorvPathPlannerShPtr& i_planner)
{
  return lumCreate<CorvPlannerOperation>(i_planner);
}

CorvPlannerOperation::CorvPlannerOperation(const CorvPathPlannerShPtr& i_planner) : m_planner(i_planner)
{
}

CorvPlannerOperation::~CorvPlannerOperation()
{
}

lmStatus CorvPlannerOperation::init(const CorvPlannerOperationWkPtr& i_weakPtr)
{
  const lmStatus status = ClumOperation::init(i_weakPtr);
  return status.failed() || m_planner ? status : lmStatus(-1);
}

void CorvPlannerOperation::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumOperation::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_planner, "planner");
}

lmStatus CorvPlannerOperation::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumOperation::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_planner = i_coder->decode<CorvPathPlanner>("planner");
  return m_planner ? status : lmStatus(-1);
}

ClumOperationShPtr CorvPlannerOperation::loop(unsigned int i_count) const
{
  return CorvPlannerLoopOperation::create(self(), i_count);
}

lmStatus CorvPlannerOperation::doStart(const ClumParameterMapShPtr&)
{
  if (m_planner->isPlanning())
    return lmStatus(-1);
  if (m_planner->notificator())
    m_planner->notificator()->addRelay(objectNotificator());
  const lmStatus status = startPlanner();
  if (status.failed())
  {
    CorvPathShPtr path;
    m_planner->finishPlan(status, path);
  }
  return status;
}

lmStatus CorvPlannerOperation::startPlanner()
{
  const ClumParameterMapConstShPtr given = parameters() ? parameters() : ClumParameterMap::create();
  const CorvPathConstShPtr path = given->constShPtrValue<CorvPath>(INPUT_PATH_KEY);
  if (!path)
    return lmStatus(-1);
  if (const ShPtr<const std::vector<bool>> stable = given->constShPtrValue<std::vector<bool>>(WAYPOINT_STABILITY_KEY))
    return m_planner->startPlan(path, *stable, given);
  const int stability = given->intValue(STABILITY_KEY, -1) & CorvPathPlanner::STABLE_ALL;
  return m_planner->startPlan(path, static_cast<CorvPathPlanner::EStability>(stability), given);
}

lmStatus CorvPlannerOperation::doStep(bool& o_finished)
{
  CorvPathShPtr path;
  bool shouldContinue = true;
  lmStatus status = m_planner->continuePlan(path, shouldContinue);
  if (path)
    showPartialPath(path);
  o_finished = !shouldContinue || status.failed();
  if (o_finished)
    status = finishPlanner(status);
  return status;
}

lmStatus CorvPlannerOperation::finishPlanner(const lmStatus& i_status)
{
  CorvPathShPtr path;
  const ShPtr<std::vector<bool>> stableConfigs(new std::vector<bool>);
  const lmStatus status = m_planner->finishPlan(i_status, path, *stableConfigs);
  outputParameters()->setInt(STATUS_KEY, static_cast<int>(status.code()));
  outputParameters()->setShPtr(WAYPOINT_STABILITY_KEY, stableConfigs);
  outputParameters()->setShPtr(OUTPUT_PATH_KEY, path);
  return status;
}

void CorvPlannerOperation::showPartialPath(const CorvPathShPtr& i_path) const
{
  const CorvPathShPtr shown =
    parameters() ? parameters()->shPtrValue<CorvPath>(INTERMEDIATE_PATH_KEY) : CorvPathShPtr();
  if (!shown)
    outputParameters()->setShPtr(OUTPUT_PATH_KEY, i_path);
  else if (shown != i_path)
  {
    shown->clear();
    shown->appendPath(i_path);
  }
}

lmStatus CorvPlannerOperation::doFinish(const ClumParameterMapShPtr&)
{
  if (m_planner->notificator())
    m_planner->notificator()->removeRelay(objectNotificator());
  if (m_planner->isPlanning())
    finishPlanner(lmStatus(-1));
  return lmStatus();
}

lmStatus CorvPlannerOperation::doComputeCompletion(double& o_completion) const
{
  return m_planner->computeCompletion(o_completion);
}

lmStatus CorvPlannerOperation::doComputeDifficulty(double&) const
{
  return lmStatus(-1);
}

CorvPlannerLoopOperationShPtr CorvPlannerLoopOperation::create(const CorvPlannerOperationShPtr& i_operation,
                                                               unsigned int i_count)
{
  return lumCreate<CorvPlannerLoopOperation>(i_operation, i_count);
}

CorvPlannerLoopOperation::CorvPlannerLoopOperation(const CorvPlannerOperationShPtr& i_operation, unsigned int i_count)
  : ClumLoopOperation(i_operation, i_count)
{
}

CorvPlannerLoopOperation::~CorvPlannerLoopOperation()
{
}

lmStatus CorvPlannerLoopOperation::init(const CorvPlannerLoopOperationWkPtr& i_weakPtr)
{
  return ClumLoopOperation::init(i_weakPtr);
}

ClumParameterMapConstShPtr CorvPlannerLoopOperation::parametersOfRun(unsigned int i_rank) const
{
  using Operation = CorvPlannerOperation;
  if (i_rank == 0)
    return parameters();
  const ClumParameterMapShPtr output = outputParameters();
  const ClumParameterMapShPtr input = ClumParameterMap::createWithBase(parameters());
  input->setShPtr(Operation::INPUT_PATH_KEY, output->shPtrValue<CorvPath>(Operation::OUTPUT_PATH_KEY));
  input->setShPtr(Operation::WAYPOINT_STABILITY_KEY,
                  output->shPtrValue<std::vector<bool>>(Operation::WAYPOINT_STABILITY_KEY));
  return input;
}
