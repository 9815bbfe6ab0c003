#include "optimizers/orvRandomOptimizer.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvUtility.h"
#include "optimizers/orvShortcutDirect.h"
#include "paths/orvPath.h"

#include <algorithm>

LUM_DESCRIBE(CorvRandomOptimizer)
{
  i_class.creates("()", static_cast<CorvRandomOptimizerShPtr (*)()>(&Self::create));
  i_class.creates("(const CorvPathPlannerShPtr& i_shortcutMethod)",
                  static_cast<CorvRandomOptimizerShPtr (*)(const CorvPathPlannerShPtr&)>(&Self::create));
}

const unsigned int CorvRandomOptimizer::s_nbInnerLoops = 20;

CorvRandomOptimizer::~CorvRandomOptimizer() = default;

CorvRandomOptimizerShPtr CorvRandomOptimizer::create()
{
  return create(CorvShortcutDirect::create());
}

CorvRandomOptimizerShPtr CorvRandomOptimizer::create(const CorvPathPlannerShPtr& i_shortcutMethod)
{
  const CorvRandomOptimizerShPtr optimizer = lumCreate<CorvRandomOptimizer>();
  if (optimizer)
    optimizer->shortcutMethod(i_shortcutMethod);
  return optimizer;
}

lmStatus CorvRandomOptimizer::init(const CorvRandomOptimizerWkPtr& i_weakPtr)
{
  return CorvLoopOptimizer::init(i_weakPtr);
}

void CorvRandomOptimizer::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvLoopOptimizer::encodeWithCoder(i_coder);
  i_coder->encodeBool(m_doesClear, "doesClear");
}

lmStatus CorvRandomOptimizer::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvLoopOptimizer::initWithCoder(i_coder, i_self);
  if (status.succeeded())
    m_doesClear = i_coder->decodeBool("doesClear");
  return status;
}

lmStatus CorvRandomOptimizer::doStartPlan()
{
  lmStatus status = checkNoStableIntermediate();
  if (status.succeeded())
    status = CorvLoopOptimizer::doStartPlan();
  if (status.failed())
    return status;
  const ClumParameterMapShPtr shortcutParameters = ClumParameterMap::createWithBase(parameters());
  shortcutParameters->setBool("orvane.core.validator.dp.collision.test-start", true);
  shortcutParameters->setBool("orvane.core.validator.dp.collision.test-goal", true);
  m_shortcutParameters = shortcutParameters;
  m_innerCount = 0;
  m_progress = 0.0;
  shortcut(workPath(), 0u, workPath()->countDirectPaths(), m_shortcutParameters);
  return status;
}

void CorvRandomOptimizer::tryRandomShortcut(const CorvPathShPtr& i_path)
{
  const double length = i_path->length();
  const double first = CorvUtility::random(0.0, length);
  const double second = CorvUtility::random(0.0, length);
  shortcut(i_path, std::vector<double>{std::min(first, second), std::max(first, second)}, m_shortcutParameters);
}

lmStatus CorvRandomOptimizer::doOptimizeOneStep(const CorvPathShPtr& i_path)
{
  for (unsigned int i = 0; i < s_nbInnerLoops; ++i)
  {
    if (shouldStopPlanning())
      return lmStatus(-1);
    tryRandomShortcut(i_path);
  }
  return lmStatus();
}

lmStatus CorvRandomOptimizer::doContinueOptimizeOneStep(bool& o_endOfLoop)
{
  tryRandomShortcut(workPath());
  ++m_innerCount;
  o_endOfLoop = m_innerCount == s_nbInnerLoops;
  if (o_endOfLoop)
    m_innerCount = 0;
  m_progress = static_cast<double>(m_innerCount) / s_nbInnerLoops;
  return lmStatus();
}
