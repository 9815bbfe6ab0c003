#include "optimizers/orvLoopOptimizer.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "optimizers/orvPathEvaluator.h"
#include "paths/orvPath.h"

#include <algorithm>
#include <cmath>

LUM_DESCRIBE(CorvLoopOptimizer)
{
  i_class.property<unsigned int>("maxNbLoop", &Self::maxNbLoop, &Self::maxNbLoop);
  i_class.property<double>("minGainStop", &Self::minGainStop, &Self::minGainStop);
  i_class.property<CorvPathOptimizerShPtr>("postOptimizer", &Self::postOptimizer, &Self::postOptimizer);
}

CorvLoopOptimizer::CorvLoopOptimizer(const CorvLoopOptimizer& i_other)
  : CorvPathPlannerDelegate(i_other), CorvPathOptimizer(i_other), m_maxNbLoop(i_other.m_maxNbLoop),
    m_minGainStop(i_other.m_minGainStop), m_postOptimizer(i_other.m_postOptimizer)
{
}

CorvLoopOptimizer::~CorvLoopOptimizer() = default;

lmStatus CorvLoopOptimizer::init(const CorvLoopOptimizerWkPtr& i_weakPtr)
{
  const lmStatus status = CorvPathOptimizer::init(i_weakPtr);
  if (status.succeeded())
    listenTo(m_postOptimizer);
  return status;
}

void CorvLoopOptimizer::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvPathOptimizer::encodeWithCoder(i_coder);
  i_coder->encodeUnsignedInt(m_maxNbLoop, "maxNbLoop");
  i_coder->encodeDouble(m_minGainStop, "minGainStop");
  i_coder->encodeObjectShPtr(m_postOptimizer, "postOptimizer");
}

lmStatus CorvLoopOptimizer::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvPathOptimizer::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_maxNbLoop = i_coder->decodeUnsignedInt("maxNbLoop");
  m_minGainStop = i_coder->decodeDouble("minGainStop");
  m_postOptimizer = i_coder->decode<CorvPathOptimizer>("postOptimizer");
  return std::isfinite(m_minGainStop) ? status : lmStatus(lmStatus::FAILURE);
}

void CorvLoopOptimizer::awake()
{
  CorvPathOptimizer::awake();
  listenTo(m_postOptimizer);
}

void CorvLoopOptimizer::maxNbLoop(unsigned int i_maxNbLoop)
{
  if (i_maxNbLoop == m_maxNbLoop)
    return;
  notifyPropertyWillChange("maxNbLoop");
  m_maxNbLoop = i_maxNbLoop;
  notifyPropertyDidChange("maxNbLoop");
}

void CorvLoopOptimizer::minGainStop(double i_minGainStop)
{
  if (i_minGainStop == m_minGainStop)
    return;
  notifyPropertyWillChange("minGainStop");
  m_minGainStop = i_minGainStop;
  notifyPropertyDidChange("minGainStop");
}

void CorvLoopOptimizer::postOptimizer(const CorvPathOptimizerShPtr& i_postOptimizer)
{
  if (i_postOptimizer == m_postOptimizer || i_postOptimizer.get() == this)
    return;
  notifyPropertyWillChange("postOptimizer");
  stopListeningTo(m_postOptimizer);
  m_postOptimizer = i_postOptimizer;
  listenTo(m_postOptimizer);
  notifyPropertyDidChange("postOptimizer");
}

double CorvLoopOptimizer::completion() const
{
  double part = loopCompletion();
  if (m_postOptimizer)
  {
    double ofPost = 0.0;
    if (isPostOptimizing())
      m_postOptimizer->computeCompletion(ofPost);
    part = isPostOptimizing() ? (ofPost + 1.0) * 0.5 : part * 0.5;
  }
  return (m_currentLoop + part) / std::max(m_maxNbLoop, 1u);
}

lmStatus CorvLoopOptimizer::doComputeCompletion(double& o_completion) const
{
  o_completion = completion();
  return lmStatus();
}

lmStatus CorvLoopOptimizer::checkNoStableIntermediate() const
{
  const std::vector<bool>& stable = stableConfigs();
  for (std::size_t i = 1; i + 1 < stable.size(); ++i)
    if (stable[i])
      return lmStatus(UNSUPPORTED_INTERMEDIATE_STABILITY_ERROR);
  return lmStatus();
}

lmStatus CorvLoopOptimizer::doContinueOptimizeOneStep(bool& o_endOfLoop)
{
  o_endOfLoop = true;
  return doOptimizeOneStep(workPath());
}

lmStatus CorvLoopOptimizer::doOptimizePath(const CorvPathShPtr& i_path)
{
  lmStatus status;
  for (bool isLast = false; !isLast && status.succeeded(); ++m_currentLoop)
  {
    if (shouldStopPlanning())
      return lmStatus(-1);
    noteCostBeforeLoop();
    status = doOptimizeOneStep(i_path);
    CorvPathShPtr result;
    if (status.succeeded() && m_postOptimizer && !m_postOptimizer->isPlanning() &&
        m_postOptimizer->plan(CorvPath::createCopy(i_path), STABLE_ENDS, parameters(), result).succeeded() && result)
    {
      *i_path = *result;
      updateBestPath(i_path);
    }
    isLast = isLastLoop();
  }
  return status;
}

lmStatus CorvLoopOptimizer::doStartPlan()
{
  m_currentLoop = 0;
  m_state = LOOPING;
  m_lastCost = -1.0;
  return CorvPathOptimizer::doStartPlan();
}

void CorvLoopOptimizer::noteCostBeforeLoop()
{
  if (m_minGainStop > 0.0 && m_lastCost < 0.0)
    m_lastCost = (*pathEvaluator())(bestPath());
}

bool CorvLoopOptimizer::isLastLoop()
{
  if (m_maxNbLoop != 0 && m_currentLoop + 1 >= m_maxNbLoop)
    return true;
  if (m_minGainStop <= 0.0)
    return false;
  const double cost = (*pathEvaluator())(bestPath());
  // A path that costs nothing has nothing to gain.
  const bool isGainTooSmall = m_lastCost <= 0.0 || (m_lastCost - cost) / m_lastCost < m_minGainStop;
  m_lastCost = cost;
  return isGainTooSmall;
}

bool CorvLoopOptimizer::startPostOptimizer()
{
  if (!m_postOptimizer || m_postOptimizer->isPlanning())
    return false;
  const lmStatus status = m_postOptimizer->startPlan(CorvPath::createCopy(workPath()), STABLE_ENDS, parameters());
  if (status.succeeded())
  {
    m_state = POST_OPTIMIZING;
    return true;
  }
  CorvPathShPtr none;
  m_postOptimizer->finishPlan(status, none);
  return false;
}

bool CorvLoopOptimizer::continuePostOptimizer()
{
  CorvPathShPtr result;
  bool hasMore = true;
  lmStatus status = m_postOptimizer->continuePlan(result, hasMore);
  if (status.succeeded() && hasMore)
    return false;
  status = m_postOptimizer->finishPlan(status, result);
  m_state = LOOPING;
  if (status.succeeded() && result)
  {
    *workPath() = *result;
    updateBestPath(workPath());
  }
  return true;
}

lmStatus CorvLoopOptimizer::doContinuePlan(CorvPathShPtr&, bool& o_shouldContinue)
{
  o_shouldContinue = true;
  bool isEndOfLoop = false;
  lmStatus status;
  if (m_state == LOOPING)
  {
    noteCostBeforeLoop();
    status = doContinueOptimizeOneStep(isEndOfLoop);
    if (isEndOfLoop)
    {
      *workPath() = *bestPath();
      isEndOfLoop = status.failed() || !startPostOptimizer();
    }
  }
  else
    isEndOfLoop = continuePostOptimizer();

  if (status == lmStatus::FAILURE)
    o_shouldContinue = false;
  else if (isEndOfLoop)
    o_shouldContinue = !isLastLoop();
  if (isEndOfLoop)
    ++m_currentLoop;
  return status;
}

lmStatus CorvLoopOptimizer::doFinishPlan(const lmStatus& i_status, CorvPathShPtr& io_path)
{
  if (m_state == POST_OPTIMIZING && m_postOptimizer && m_postOptimizer->isPlanning())
  {
    CorvPathShPtr result;
    if (m_postOptimizer->finishPlan(i_status, result).succeeded() && result)
      updateBestPath(result);
  }
  m_state = LOOPING;
  return CorvPathOptimizer::doFinishPlan(i_status, io_path);
}
