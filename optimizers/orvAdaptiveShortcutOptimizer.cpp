#include "optimizers/orvAdaptiveShortcutOptimizer.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "optimizers/orvShortcutDirect.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"

#include <algorithm>
#include <cmath>

LUM_DESCRIBE(CorvAdaptiveShortcutOptimizer)
{
  i_class.creates("()", static_cast<CorvAdaptiveShortcutOptimizerShPtr (*)()>(&Self::create));
  i_class.creates("(const CorvPathPlannerShPtr& i_shortcutMethod)",
                  static_cast<CorvAdaptiveShortcutOptimizerShPtr (*)(const CorvPathPlannerShPtr&)>(&Self::create));
}

const double CorvAdaptiveShortcutOptimizer::s_shortcutProgressWeight = 0.5;

namespace
{
double partDone(unsigned int i_done, unsigned int i_total)
{
  return static_cast<double>(i_done) / std::max(i_total, 1u);
}
} // namespace

CorvAdaptiveShortcutOptimizer::~CorvAdaptiveShortcutOptimizer() = default;

CorvAdaptiveShortcutOptimizerShPtr CorvAdaptiveShortcutOptimizer::create()
{
  return create(CorvShortcutDirect::create());
}

CorvAdaptiveShortcutOptimizerShPtr CorvAdaptiveShortcutOptimizer::create(const CorvPathPlannerShPtr& i_shortcutMethod)
{
  const CorvAdaptiveShortcutOptimizerShPtr optimizer = lumCreate<CorvAdaptiveShortcutOptimizer>();
  if (optimizer)
    optimizer->shortcutMethod(i_shortcutMethod);
  return optimizer;
}

lmStatus CorvAdaptiveShortcutOptimizer::init(const CorvAdaptiveShortcutOptimizerWkPtr& i_weakPtr)
{
  return CorvLoopOptimizer::init(i_weakPtr);
}

void CorvAdaptiveShortcutOptimizer::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvLoopOptimizer::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_precision, "precision");
}

lmStatus CorvAdaptiveShortcutOptimizer::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvLoopOptimizer::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_precision = i_coder->decodeDouble("precision");
  return std::isfinite(m_precision) ? status : lmStatus(lmStatus::FAILURE);
}

void CorvAdaptiveShortcutOptimizer::precision(double i_precision)
{
  m_precision = i_precision;
}

lmStatus CorvAdaptiveShortcutOptimizer::doStartPlan()
{
  lmStatus status = inputPath()->isEmpty() ? lmStatus(-1) : checkNoStableIntermediate();
  if (status.succeeded())
    status = CorvLoopOptimizer::doStartPlan();
  if (status.failed())
    return status;
  m_shortcutParameters = parameters();
  const ClumParameterMapShPtr oracleParameters = ClumParameterMap::createWithBase(parameters());
  oracleParameters->setBool("orvane.core.validator.dp.collision.test-start", true);
  oracleParameters->setBool("orvane.core.validator.dp.collision.test-goal", true);
  m_oracleParameters = oracleParameters;
  const double wanted = m_precision < 0.0 ? 1e-3 * inputPath()->length() : m_precision;
  m_runningPrecision = std::max(wanted, CorvDirectPath::minimumLength());
  resetLoop();
  return status;
}

void CorvAdaptiveShortcutOptimizer::resetLoop()
{
  m_phase = NEW_LOOP;
  m_intervals.clear();
  m_junction = -1;
  m_shortcutDone = m_shortcutTotal = m_oracleDone = m_oracleTotal = 0;
}

lmStatus CorvAdaptiveShortcutOptimizer::doOptimizeOneStep(const CorvPathShPtr& i_path)
{
  while (!advanceLoop(i_path))
    if (shouldStopPlanning())
      return lmStatus(-1);
  return lmStatus();
}

lmStatus CorvAdaptiveShortcutOptimizer::doContinueOptimizeOneStep(bool& o_endOfLoop)
{
  o_endOfLoop = advanceLoop(workPath());
  return lmStatus();
}

bool CorvAdaptiveShortcutOptimizer::advanceLoop(const CorvPathShPtr& i_path)
{
  if (m_phase == NEW_LOOP)
  {
    m_shortcutTotal = i_path->countDirectPaths();
    m_intervals.assign(1, CInterval{0, m_shortcutTotal});
    m_phase = SHORTCUTS;
  }
  if (m_phase == SHORTCUTS)
  {
    continueShortcut(i_path);
    if (!m_intervals.empty())
      return false;
    m_oracleTotal = i_path->countDirectPaths();
    m_junction = static_cast<int>(m_oracleTotal) - 2;
    m_phase = ORACLE;
  }
  else
    continueOracle(i_path);
  const bool isEndOfLoop = m_junction < 0;
  if (isEndOfLoop)
    resetLoop();
  return isEndOfLoop;
}

void CorvAdaptiveShortcutOptimizer::continueShortcut(const CorvPathShPtr& i_path)
{
  const CInterval interval = m_intervals.back();
  m_intervals.pop_back();
  const unsigned int width = interval.last - interval.first;
  if (width > 1)
  {
    const unsigned int before = i_path->countDirectPaths();
    if (shortcut(i_path, interval.first, interval.last, m_shortcutParameters).failed())
    {
      const unsigned int middle = (interval.first + interval.last) / 2;
      m_intervals.push_back(CInterval{middle, interval.last});
      m_intervals.push_back(CInterval{interval.first, middle});
      return;
    }
    // The ranks behind the interval move; the difference wraps around where they move down.
    const unsigned int shift = i_path->countDirectPaths() - before;
    for (CInterval& waiting : m_intervals)
      if (waiting.first >= interval.last)
      {
        waiting.first += shift;
        waiting.last += shift;
      }
  }
  m_shortcutDone += width;
}

void CorvAdaptiveShortcutOptimizer::continueOracle(const CorvPathShPtr& i_path)
{
  const auto junction = static_cast<unsigned int>(m_junction);
  --m_junction;
  ++m_oracleDone;
  if (junction + 1 >= i_path->countDirectPaths())
    return;
  double place = 0.0;
  for (unsigned int i = 0; i <= junction; ++i)
    place += i_path->directPath(i)->length();
  const double before = i_path->directPath(junction)->length();
  const double after = i_path->directPath(junction + 1)->length();
  double part = 0.5;
  bool isCut = false;
  do
  {
    if (shouldStopPlanning())
      return;
    isCut = shortcut(i_path, place - before * part, place + after * part, m_oracleParameters).succeeded();
    part *= 0.5;
  } while (!isCut && before * part >= m_runningPrecision && after * part >= m_runningPrecision);
}

double CorvAdaptiveShortcutOptimizer::loopCompletion() const
{
  return partDone(m_oracleDone, m_oracleTotal) * (1.0 - s_shortcutProgressWeight) +
         partDone(m_shortcutDone, m_shortcutTotal) * s_shortcutProgressWeight;
}
