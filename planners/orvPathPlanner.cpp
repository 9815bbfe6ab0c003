#include "planners/orvPathPlanner.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "paths/orvPath.h"
#include "planners/orvPlannerOperation.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>

LUM_DESCRIBE(CorvPathPlanner)
{
  i_class.enumeration("EStability",
                      "STABLE_NONE = 0x00, STABLE_START = 0x01, STABLE_END = 0x02, STABLE_INTERMEDIATE = 0x04, "
                      "STABLE_ENDS = STABLE_START | STABLE_END, STABLE_ALL = STABLE_INTERMEDIATE | STABLE_START | "
                      "STABLE_END");
  i_class.property<bool>("isPlanning", &Self::isPlanning);
}
LUM_STATUS_CODE(CorvPathPlanner, UNSUPPORTED_INTERMEDIATE_STABILITY_ERROR, 20100,
                "Path planner does not support stable intermediate configurations.");
LUM_STATUS_CODE(CorvPathPlanner, UNSUPPORTED_START_STABILITY_ERROR, 20101,
                "Path planner does not support stable start configuration.");
LUM_STATUS_CODE(CorvPathPlanner, UNSUPPORTED_END_STABILITY_ERROR, 20102,
                "Path planner does not support stable end configuration.");
LUM_NOTIFICATION(CorvPathPlanner, WILL_START);
LUM_NOTIFICATION(CorvPathPlanner, DID_COMPUTE_PARTIAL_PATH);
LUM_NOTIFICATION(CorvPathPlanner, DID_STOP);
const std::string CorvPathPlanner::PATH_KEY = "path";

CorvPathPlanner::CorvPathPlanner() : m_notificator(ClumNotificator::create())
{
}

/// The copy is idle and has neither delegates nor listeners.
CorvPathPlanner::CorvPathPlanner(const CorvPathPlanner& i_other)
  : CorvPathPlannerDelegate(i_other), ClumMutableCodable(i_other), m_notificator(ClumNotificator::create())
{
}

CorvPathPlanner::~CorvPathPlanner()
{
  dissolveChain(*this);
}

lmStatus CorvPathPlanner::init(const CorvPathPlannerWkPtr& i_weakPtr)
{
  return ClumMutableCodable::init(i_weakPtr);
}

void CorvPathPlanner::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  LUM_ASSERT(!isPlanning());
  ClumMutableCodable::encodeWithCoder(i_coder);
  i_coder->encodeBool(static_cast<bool>(m_notificator), "notificatorShPtr");
}

/// The copy has a notificator of its own, if this planner has one: listeners are not coded.
lmStatus CorvPathPlanner::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
  if (status.succeeded() && !i_coder->decodeBool("notificatorShPtr"))
    m_notificator.reset();
  return status;
}

CorvPathPlannerShPtr CorvPathPlanner::clone() const
{
  const CorvPathPlannerShPtr copy = boost::dynamic_pointer_cast<CorvPathPlanner>(cloneByCoding());
  if (!copy)
    LUM_ASSERT(false);
  return copy;
}

ClumOperationShPtr CorvPathPlanner::asOperation() const
{
  return CorvPlannerOperation::create(self());
}

lmStatus CorvPathPlanner::plan(const CorvPathConstShPtr& i_inputPath, EStability i_stability, CorvPathShPtr& o_path)
{
  return plan(i_inputPath, i_stability, ClumParameterMapConstShPtr(), o_path);
}

lmStatus CorvPathPlanner::plan(const CorvPathConstShPtr& i_inputPath, EStability i_stability, CorvPathShPtr& o_path,
                               std::vector<bool>& o_stableConfigs)
{
  return plan(i_inputPath, i_stability, ClumParameterMapConstShPtr(), o_path, o_stableConfigs);
}

lmStatus CorvPathPlanner::plan(const CorvPathConstShPtr& i_inputPath, EStability i_stability,
                               const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path)
{
  std::vector<bool> stableConfigs;
  return plan(i_inputPath, i_stability, i_parameters, o_path, stableConfigs);
}

lmStatus CorvPathPlanner::plan(const CorvPathConstShPtr& i_inputPath, EStability i_stability,
                               const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path,
                               std::vector<bool>& o_stableConfigs)
{
  if (!isPlanning())
    noteSingleConfig(i_inputPath, i_stability);
  return plan(i_inputPath, makeStableConfigVector(i_inputPath, i_stability), i_parameters, o_path, o_stableConfigs);
}

lmStatus CorvPathPlanner::plan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                               CorvPathShPtr& o_path)
{
  return plan(i_inputPath, i_stableConfigs, ClumParameterMapConstShPtr(), o_path);
}

lmStatus CorvPathPlanner::plan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                               CorvPathShPtr& o_path, std::vector<bool>& o_stableConfigs)
{
  return plan(i_inputPath, i_stableConfigs, ClumParameterMapConstShPtr(), o_path, o_stableConfigs);
}

lmStatus CorvPathPlanner::plan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                               const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path)
{
  std::vector<bool> stableConfigs;
  return plan(i_inputPath, i_stableConfigs, i_parameters, o_path, stableConfigs);
}

lmStatus CorvPathPlanner::plan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                               const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path,
                               std::vector<bool>& o_stableConfigs)
{
  const CorvPathConstShPtr inputPath = i_inputPath;
  const std::vector<bool> stableConfigs = i_stableConfigs;
  o_path.reset();
  if (!canStart(inputPath, stableConfigs.size()))
    return lmStatus(-1);
  const CorvPathPlannerShPtr keptAlive = self();
  internalStart(inputPath, stableConfigs, i_parameters);
  const lmStatus status = doPlan(inputPath, stableConfigs, m_parameters, o_path, o_stableConfigs);
  internalFinish(status, o_path, o_stableConfigs);
  return status;
}

lmStatus CorvPathPlanner::plan(const CorvConfig& i_start, const CorvConfig& i_goal, CorvPathShPtr& o_path)
{
  return plan(i_start, i_goal, ClumParameterMapConstShPtr(), o_path);
}

lmStatus CorvPathPlanner::plan(const CorvConfig& i_start, const CorvConfig& i_goal,
                               const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path)
{
  o_path.reset();
  const CorvPathShPtr inputPath = CorvPath::createWithConfig(i_start);
  if (!inputPath || inputPath->addConfiguration(i_goal).failed())
    return lmStatus(-1);
  return plan(CorvPathConstShPtr(inputPath), STABLE_ENDS, i_parameters, o_path);
}

lmStatus CorvPathPlanner::startPlan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs)
{
  return startPlan(i_inputPath, i_stableConfigs, ClumParameterMapConstShPtr());
}

lmStatus CorvPathPlanner::startPlan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                                    const ClumParameterMapConstShPtr& i_parameters)
{
  if (!canStart(i_inputPath, i_stableConfigs.size()))
    return lmStatus(-1);
  internalStart(i_inputPath, i_stableConfigs, i_parameters);
  return doStartPlan();
}

lmStatus CorvPathPlanner::startPlan(const CorvPathConstShPtr& i_inputPath, EStability i_stability)
{
  return startPlan(i_inputPath, i_stability, ClumParameterMapConstShPtr());
}

lmStatus CorvPathPlanner::startPlan(const CorvPathConstShPtr& i_inputPath, EStability i_stability,
                                    const ClumParameterMapConstShPtr& i_parameters)
{
  if (!isPlanning())
    noteSingleConfig(i_inputPath, i_stability);
  return startPlan(i_inputPath, makeStableConfigVector(i_inputPath, i_stability), i_parameters);
}

lmStatus CorvPathPlanner::continuePlan(CorvPathShPtr& o_path, bool& o_shouldContinue)
{
  o_path.reset();
  o_shouldContinue = true;
  if (!isPlanning())
    return lmStatus(-1);
  if (shouldStopPlanning())
  {
    o_shouldContinue = false;
    return lmStatus(-1);
  }
  return stepPlan(o_path, o_shouldContinue);
}

lmStatus CorvPathPlanner::finishPlan(const lmStatus& i_status, CorvPathShPtr& o_path)
{
  std::vector<bool> stableConfigs;
  return finishPlan(i_status, o_path, stableConfigs);
}

lmStatus CorvPathPlanner::finishPlan(const lmStatus& i_status, CorvPathShPtr& o_path,
                                     std::vector<bool>& o_stableConfigs)
{
  if (!isPlanning())
    return lmStatus(-1);
  const CorvPathPlannerShPtr keptAlive = self();
  const lmStatus status = doFinishPlan(i_status, o_path);
  internalFinish(status, o_path, o_stableConfigs);
  return status;
}

lmStatus CorvPathPlanner::finishPlanWithBool(bool i_success, CorvPathShPtr& o_path)
{
  return finishPlan(i_success ? lmStatus() : lmStatus(-1), o_path);
}

lmStatus CorvPathPlanner::finishPlanWithBool(bool i_success, CorvPathShPtr& o_path, std::vector<bool>& o_stableConfigs)
{
  return finishPlan(i_success ? lmStatus() : lmStatus(-1), o_path, o_stableConfigs);
}

bool CorvPathPlanner::stableStart() const
{
  if (m_stableConfigs.size() == 1 && m_singleConfigInputType != SINGLE_NOT_SET)
    return m_singleConfigInputType == SINGLE_START;
  return !m_stableConfigs.empty() && m_stableConfigs.front();
}

bool CorvPathPlanner::stableEnd() const
{
  if (m_stableConfigs.size() == 1 && m_singleConfigInputType != SINGLE_NOT_SET)
    return m_singleConfigInputType == SINGLE_END;
  return !m_stableConfigs.empty() && m_stableConfigs.back();
}

CorvConfigSpaceShPtr CorvPathPlanner::configSpace() const
{
  return m_inputPath ? m_inputPath->configSpace() : CorvConfigSpaceShPtr();
}

CorvDeviceShPtr CorvPathPlanner::device() const
{
  return m_inputPath ? m_inputPath->device() : CorvDeviceShPtr();
}

CorvValidatorSetShPtr CorvPathPlanner::currentConfigValidatorSet() const
{
  const CorvConfigSpaceShPtr space = configSpace();
  return space ? space->configValidators() : CorvValidatorSetShPtr();
}

CorvValidatorSetShPtr CorvPathPlanner::currentDirectPathValidatorSet() const
{
  const CorvConfigSpaceShPtr space = configSpace();
  return space ? space->directPathValidators() : CorvValidatorSetShPtr();
}

void CorvPathPlanner::linkNotificator(const CorvPathPlannerShPtr& i_otherPlanner) const
{
  if (i_otherPlanner && i_otherPlanner->notificator() && m_notificator)
    i_otherPlanner->notificator()->addRelay(m_notificator);
}

lmStatus CorvPathPlanner::computeCompletion(double& o_completion) const
{
  if (!isPlanning())
    return lmStatus(-1);
  const lmStatus status = doComputeCompletion(o_completion);
  const bool isInRange = o_completion >= 0.0 && o_completion <= 1.0;
  return status.failed() || isInRange ? status : lmStatus(-1);
}

bool CorvPathPlanner::checkResult(const CorvPathConstShPtr& i_path) const
{
  if (!m_inputPath || !i_path)
    return false;
  if (std::count(m_stableConfigs.begin(), m_stableConfigs.end(), true) <= 1)
  {
    const CorvConfigShPtr start = m_inputPath->configAtStart();
    const CorvConfigShPtr end = m_inputPath->configAtEnd();
    return (!stableStart() || (start && i_path->startsWith(*start))) &&
           (!stableEnd() || (end && i_path->endsWith(*end)));
  }
  unsigned int rank = 0;
  for (unsigned int i = 0; i < m_stableConfigs.size(); ++i)
  {
    if (!m_stableConfigs[i])
      continue;
    const CorvConfig& stable = m_inputPath->configuration(i);
    while (rank < i_path->countConfigurations() && !i_path->configuration(rank).isEquivalent(stable))
      ++rank;
    if (rank == i_path->countConfigurations())
      return false;
  }
  return true;
}

void CorvPathPlanner::addDelegate(const CorvPathPlannerDelegateShPtr& i_delegate, bool i_isOwner)
{
  if (!i_delegate || i_delegate.get() == this)
    return;
  const CorvPathPlannerDelegateShPtr delegate = i_delegate;
  removeDelegate(delegate);
  const CNext* entry = entryOf(*this);
  const CorvPathPlannerDelegateShPtr behind = nextDelegate(*this);
  delegate->nextDelegate(*this, behind, entry && !entry->held);
  nextDelegate(*this, delegate, i_isOwner);
}

void CorvPathPlanner::removeDelegate(const CorvPathPlannerDelegateShPtr& i_delegate)
{
  if (!i_delegate)
    return;
  const CorvPathPlannerDelegateShPtr delegate = i_delegate;
  CorvPathPlannerDelegateShPtr held;
  for (CorvPathPlannerDelegate* before = this; before;)
  {
    const CorvPathPlannerDelegateShPtr next = before->nextDelegate(*this);
    if (next == delegate)
    {
      const CNext* entry = delegate->entryOf(*this);
      before->nextDelegate(*this, delegate->nextDelegate(*this), entry && !entry->held);
      delegate->nextDelegate(*this, CorvPathPlannerDelegateShPtr());
      return;
    }
    held = next;
    before = held.get();
  }
}

lmStatus CorvPathPlanner::doPlan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                                 const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path,
                                 std::vector<bool>&)
{
  return doPlan(i_inputPath, i_stableConfigs, i_parameters, o_path);
}

lmStatus CorvPathPlanner::doPlan(const CorvPathConstShPtr&, const std::vector<bool>&, const ClumParameterMapConstShPtr&,
                                 CorvPathShPtr& o_path)
{
  lmStatus status = doStartPlan();
  bool shouldContinue = true;
  while (status.succeeded() && shouldContinue)
    status = shouldStopPlanning() ? lmStatus(-1) : stepPlan(o_path, shouldContinue);
  return doFinishPlan(status, o_path);
}

/// A path that was reported by the step before is not reported again.
lmStatus CorvPathPlanner::stepPlan(CorvPathShPtr& o_path, bool& o_shouldContinue)
{
  const lmStatus status = doContinuePlan(o_path, o_shouldContinue);
  if (o_path && o_path == m_lastPartialPath)
    o_path.reset();
  else if (o_path)
  {
    didComputePartialPath(o_path);
    m_lastPartialPath = o_path;
  }
  return status;
}

lmStatus CorvPathPlanner::doStartPlan()
{
  return lmStatus(-1);
}

lmStatus CorvPathPlanner::doContinuePlan(CorvPathShPtr&, bool&)
{
  return lmStatus(-1);
}

lmStatus CorvPathPlanner::doFinishPlan(const lmStatus& i_status, CorvPathShPtr&)
{
  return i_status;
}

lmStatus CorvPathPlanner::doComputeCompletion(double&) const
{
  return lmStatus(-1);
}

lmStatus CorvPathPlanner::getOutputStableConfigurations(const CorvPathConstShPtr& i_outputPath,
                                                        std::vector<bool>& o_stableConfigs) const
{
  for (std::size_t i = 1; i + 1 < m_stableConfigs.size(); ++i)
  {
    if (m_stableConfigs[i])
      return lmStatus(-1);
  }
  o_stableConfigs.assign(i_outputPath->countConfigurations(), false);
  if (!o_stableConfigs.empty())
    o_stableConfigs.front() = stableStart();
  if (o_stableConfigs.size() >= 2)
    o_stableConfigs.back() = stableEnd();
  return lmStatus();
}

ClumParameterMapConstShPtr CorvPathPlanner::setupParameters(const ClumParameterMapConstShPtr& i_parameters) const
{
  return i_parameters ? i_parameters : ClumParameterMapConstShPtr(ClumParameterMap::create());
}

bool CorvPathPlanner::shouldStopPlanning()
{
  return plannerShouldStopPlanning(self());
}

void CorvPathPlanner::didComputePartialPath(const CorvPathConstShPtr& i_path)
{
  notifyPath(DID_COMPUTE_PARTIAL_PATH, i_path);
  plannerDidComputePartialPath(self(), i_path);
}

void CorvPathPlanner::willStartPlanning(const CorvPathConstShPtr& i_inputPath)
{
  notifyPath(WILL_START, i_inputPath);
  plannerWillStartPlanning(self(), i_inputPath);
}

void CorvPathPlanner::didFinishPlanning(const CorvPathConstShPtr& i_outputPath, const lmStatus& i_status)
{
  notifyPath(DID_STOP, i_outputPath);
  plannerDidFinishPlanning(self(), i_outputPath, i_status);
}

lmStatus CorvPathPlanner::startSubplanner(const CorvPathPlannerShPtr& i_planner, const CorvPathConstShPtr& i_path,
                                          const ClumParameterMapConstShPtr& i_parameters) const
{
  if (!i_planner)
    return lmStatus(-1);
  if (std::count(m_stableConfigs.begin(), m_stableConfigs.end(), true) > 1)
    return i_planner->startPlan(i_path, m_stableConfigs, i_parameters);
  const int stability = (stableStart() ? STABLE_START : STABLE_NONE) | (stableEnd() ? STABLE_END : STABLE_NONE);
  return i_planner->startPlan(i_path, static_cast<EStability>(stability), i_parameters);
}

std::vector<bool> CorvPathPlanner::makeStableConfigVector(const CorvPathConstShPtr& i_path, EStability i_stability)
{
  const unsigned int count = i_path ? i_path->countConfigurations() : 0;
  std::vector<bool> stableConfigs(count, (i_stability & STABLE_INTERMEDIATE) != 0);
  if (count > 1)
    stableConfigs.back() = (i_stability & STABLE_END) != 0;
  if (count > 0)
    stableConfigs.front() = (i_stability & STABLE_START) != 0;
  return stableConfigs;
}

bool CorvPathPlanner::canStart(const CorvPathConstShPtr& i_inputPath, std::size_t i_stableCount) const
{
  return !isPlanning() && i_inputPath && i_stableCount == i_inputPath->countConfigurations();
}

void CorvPathPlanner::noteSingleConfig(const CorvPathConstShPtr& i_inputPath, EStability i_stability)
{
  if (!i_inputPath || i_inputPath->countConfigurations() != 1)
    return;
  if (i_stability == STABLE_START)
    m_singleConfigInputType = SINGLE_START;
  else if (i_stability == STABLE_END)
    m_singleConfigInputType = SINGLE_END;
}

void CorvPathPlanner::internalStart(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                                    const ClumParameterMapConstShPtr& i_parameters)
{
  notifyPropertyWillChange("isPlanning");
  m_inputPath = i_inputPath;
  m_stableConfigs = i_stableConfigs;
  m_parameters = setupParameters(i_parameters);
  willStartPlanning(i_inputPath);
  notifyPropertyDidChange("isPlanning");
}

void CorvPathPlanner::internalFinish(const lmStatus& i_status, const CorvPathShPtr& i_outputPath,
                                     std::vector<bool>& o_stableConfigs)
{
  notifyPropertyWillChange("isPlanning");
  if (i_outputPath)
    LUM_ASSERT_SUCCESS(getOutputStableConfigurations(i_outputPath, o_stableConfigs));
  else
    o_stableConfigs = m_stableConfigs;
  didFinishPlanning(i_outputPath, i_status);
  m_inputPath.reset();
  m_stableConfigs.clear();
  m_singleConfigInputType = SINGLE_NOT_SET;
  m_parameters.reset();
  m_lastPartialPath.reset();
  notifyPropertyDidChange("isPlanning");
}

void CorvPathPlanner::notifyPath(unsigned int i_id, const CorvPathConstShPtr& i_path) const
{
  if (!m_notificator || !m_notificator->hasSubscribers(i_id))
    return;
  const ClumNotificationShPtr notification = ClumNotification::create(i_id, self());
  notification->value(PATH_KEY, ClumObjectConstShPtr(i_path));
  m_notificator->notify(notification);
}
