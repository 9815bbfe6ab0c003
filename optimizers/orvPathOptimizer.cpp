#include "optimizers/orvPathOptimizer.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "optimizers/orvPathEvaluatorLength.h"
#include "paths/orvPath.h"

#include <cmath>

LUM_DESCRIBE(CorvPathOptimizer)
{
  i_class.enumeration("EShortcutType", "SHORTCUT_DOF, SHORTCUT_DIRECT");
  i_class.property<CorvPathEvaluatorConstShPtr>("pathEvaluator", &Self::pathEvaluator, &Self::pathEvaluator);
  i_class.property<CorvPathPlannerShPtr>("shortcutMethod", &Self::shortcutMethod, &Self::shortcutMethod);
}

namespace
{
const ClumStringKey& acceptAllShortcutsKey()
{
  static const ClumStringKey s_key("orvane.core.planner.path-optimizer.accept-all-valid-shortcuts");
  return s_key;
}

const ClumStringKey& shortcutPenetrationKey()
{
  static const ClumStringKey s_key("orvane.core.validator.dp.collision.penetration");
  return s_key;
}
} // namespace

CorvPathOptimizer::CorvPathOptimizer() : m_pathEvaluator(CorvPathEvaluatorLength::create())
{
}

CorvPathOptimizer::CorvPathOptimizer(const CorvPathOptimizer& i_other)
  : CorvPathPlannerDelegate(i_other), CorvPathPlanner(i_other), m_pathEvaluator(i_other.m_pathEvaluator),
    m_shortcutMethod(i_other.m_shortcutMethod), m_penetration(i_other.m_penetration)
{
}

CorvPathOptimizer::~CorvPathOptimizer() = default;

lmStatus CorvPathOptimizer::init(const CorvPathOptimizerWkPtr& i_weakPtr)
{
  const lmStatus status = CorvPathPlanner::init(i_weakPtr);
  if (status.succeeded())
    listenTo(m_shortcutMethod);
  return status;
}

void CorvPathOptimizer::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvPathPlanner::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_pathEvaluator, "pathEvaluator");
  i_coder->encodeObjectShPtr(m_shortcutMethod, "shortcutMethod");
  i_coder->encodeDouble(m_penetration, "penetration");
}

lmStatus CorvPathOptimizer::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvPathPlanner::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  if (const CorvPathEvaluatorConstShPtr evaluator = i_coder->decode<CorvPathEvaluator>("pathEvaluator"))
    m_pathEvaluator = evaluator;
  m_shortcutMethod = i_coder->decode<CorvPathPlanner>("shortcutMethod");
  m_penetration = i_coder->decodeDouble("penetration");
  return std::isfinite(m_penetration) ? status : lmStatus(lmStatus::FAILURE);
}

void CorvPathOptimizer::awake()
{
  CorvPathPlanner::awake();
  listenTo(m_shortcutMethod);
}

void CorvPathOptimizer::listenTo(const CorvPathPlannerShPtr& i_planner)
{
  if (i_planner)
    i_planner->addDelegate(self(), true);
}

void CorvPathOptimizer::stopListeningTo(const CorvPathPlannerShPtr& i_planner)
{
  if (i_planner)
    i_planner->removeDelegate(self());
}

lmStatus CorvPathOptimizer::optimizePath(const CorvPathShPtr& i_path)
{
  if (!i_path)
    return lmStatus(-1);
  return optimizePath(i_path, m_penetration < 0.0 ? i_path->maxPenetration() : m_penetration);
}

lmStatus CorvPathOptimizer::optimizePath(const CorvPathShPtr& i_path, double i_penetration)
{
  if (!i_path || !(i_penetration >= 0.0) || isPlanning())
    return lmStatus(-1);
  m_runningPenetration = i_penetration;
  CorvPathShPtr result;
  const lmStatus status = plan(i_path, STABLE_ENDS, result);
  m_runningPenetration = -1.0;
  if (status.failed())
    return status;
  if (!result)
    return lmStatus(-1);
  *i_path = *result;
  return status;
}

void CorvPathOptimizer::pathEvaluator(const CorvPathEvaluatorConstShPtr& i_pathEvaluator)
{
  if (i_pathEvaluator == m_pathEvaluator)
    return;
  notifyPropertyWillChange("pathEvaluator");
  m_pathEvaluator = i_pathEvaluator ? i_pathEvaluator : CorvPathEvaluatorConstShPtr(CorvPathEvaluatorLength::create());
  notifyPropertyDidChange("pathEvaluator");
}

void CorvPathOptimizer::shortcutMethod(const CorvPathPlannerShPtr& i_shortcutMethod)
{
  if (i_shortcutMethod == m_shortcutMethod || i_shortcutMethod.get() == this)
    return;
  notifyPropertyWillChange("shortcutMethod");
  stopListeningTo(m_shortcutMethod);
  m_shortcutMethod = i_shortcutMethod;
  listenTo(m_shortcutMethod);
  notifyPropertyDidChange("shortcutMethod");
}

void CorvPathOptimizer::penetration(double i_penetration)
{
  m_penetration = i_penetration;
}

bool CorvPathOptimizer::plannerShouldStopPlanning(const CorvPathPlannerShPtr& i_planner)
{
  const bool isInner = i_planner.get() != this;
  return (isInner && isPlanning() && shouldStopPlanning()) || CorvPathPlanner::plannerShouldStopPlanning(i_planner);
}

void CorvPathOptimizer::plannerDidComputePartialPath(const CorvPathPlannerShPtr& i_planner,
                                                     const CorvPathConstShPtr& i_path)
{
  // What an inner planner finds is no result of this one: the delegates hear of it in the inner planner's name.
  const CorvPathPlannerDelegateShPtr own =
    i_planner.get() != this && isPlanning() ? nextDelegate(*this) : CorvPathPlannerDelegateShPtr();
  if (own)
    own->plannerDidComputePartialPath(i_planner, i_path);
  CorvPathPlanner::plannerDidComputePartialPath(i_planner, i_path);
}

ClumParameterMapConstShPtr CorvPathOptimizer::setupParameters(const ClumParameterMapConstShPtr& i_parameters) const
{
  const ClumParameterMapConstShPtr parameters = CorvPathPlanner::setupParameters(i_parameters);
  const double inForce = m_runningPenetration == -1.0 ? m_penetration : m_runningPenetration;
  if (inForce < 0.0)
    return parameters;
  const ClumParameterMapShPtr withPenetration = ClumParameterMap::createWithBase(parameters);
  withPenetration->setDouble(shortcutPenetrationKey(), inForce);
  return withPenetration;
}

lmStatus CorvPathOptimizer::doStartPlan()
{
  m_acceptsAllValidShortcuts = parameters()->boolValue(acceptAllShortcutsKey(), false);
  m_workPath = CorvPath::createCopy(inputPath());
  m_bestPath = m_workPath ? CorvPath::createCopy(m_workPath) : CorvPathShPtr();
  return m_bestPath ? lmStatus() : lmStatus(-1);
}

lmStatus CorvPathOptimizer::doContinuePlan(CorvPathShPtr&, bool& o_shouldContinue)
{
  o_shouldContinue = false;
  const lmStatus status = doOptimizePath(m_workPath);
  if (status.succeeded())
    *m_bestPath = *m_workPath;
  return status;
}

lmStatus CorvPathOptimizer::doFinishPlan(const lmStatus& i_status, CorvPathShPtr& io_path)
{
  io_path = m_bestPath;
  m_bestPath.reset();
  m_workPath.reset();
  m_runningPenetration = -1.0;
  return i_status;
}

bool CorvPathOptimizer::shouldAcceptNewPath(const CorvPathConstShPtr& i_current,
                                            const CorvPathConstShPtr& i_candidate) const
{
  return (*m_pathEvaluator)(i_candidate) < (*m_pathEvaluator)(i_current)-COST_EPSILON;
}

bool CorvPathOptimizer::acceptShortcut(const CorvPathConstShPtr& i_current, const CorvPathConstShPtr& i_candidate,
                                       const ClumParameterMapConstShPtr& i_parameters) const
{
  // With conservative steering the shortcut method has validated what it made, and cut paths stay valid.
  const CorvConfigSpaceShPtr space = i_candidate->configSpace();
  if (!(space && space->isSteeringConservative()) && !i_candidate->validate(i_parameters))
    return false;
  return m_acceptsAllValidShortcuts || shouldAcceptNewPath(i_current, i_candidate);
}

void CorvPathOptimizer::updateBestPath(const CorvPathConstShPtr& i_path)
{
  if (!m_bestPath || !shouldAcceptNewPath(m_bestPath, i_path))
    return;
  *m_bestPath = *i_path;
  didComputePartialPath(CorvPath::createCopy(m_bestPath));
}

lmStatus CorvPathOptimizer::replan(const CorvPathConstShPtr& i_piece, const ClumParameterMapConstShPtr& i_parameters,
                                   CorvPathShPtr& o_path)
{
  if (!m_shortcutMethod)
    return lmStatus(-1);
  const lmStatus status = m_shortcutMethod->plan(i_piece, STABLE_ENDS, i_parameters, o_path);
  return status.succeeded() && !o_path ? lmStatus(-1) : status;
}

lmStatus CorvPathOptimizer::take(const CorvPathShPtr& io_path, const CorvPathShPtr& i_candidate,
                                 const ClumParameterMapConstShPtr& i_parameters)
{
  if (!acceptShortcut(io_path, i_candidate, i_parameters))
    return lmStatus(-1);
  *io_path = *i_candidate;
  updateBestPath(io_path);
  return lmStatus();
}

/// Plans a piece anew and puts it in its place. @param i_first, i_last ranks of direct paths, or distances.
template <class PLACE>
lmStatus CorvPathOptimizer::shortcutPiece(const CorvPathShPtr& i_path, const CorvPathConstShPtr& i_piece, PLACE i_first,
                                          PLACE i_last, const ClumParameterMapConstShPtr& i_parameters)
{
  if (!i_piece)
    return lmStatus(-1);
  if (i_piece->countDirectPaths() <= 1)
    return lmStatus();
  CorvPathShPtr planned;
  lmStatus status = replan(i_piece, i_parameters, planned);
  if (status.failed())
    return status;
  const CorvPathShPtr candidate = CorvPath::createCopy(i_path);
  status = candidate->replacePart(i_first, i_last, planned);
  return status.succeeded() ? take(i_path, candidate, i_parameters) : status;
}

lmStatus CorvPathOptimizer::shortcut(const CorvPathShPtr& i_path, unsigned int i_first, unsigned int i_last,
                                     const ClumParameterMapConstShPtr& i_parameters)
{
  if (i_first > i_last || i_last > i_path->countDirectPaths())
    return lmStatus(-1);
  return shortcutPiece(i_path, CorvPath::createByExtractingDirectPaths(i_path, i_first, i_last), i_first, i_last,
                       i_parameters);
}

lmStatus CorvPathOptimizer::shortcut(const CorvPathShPtr& i_path, double i_from, double i_to,
                                     const ClumParameterMapConstShPtr& i_parameters)
{
  if (!(i_from <= i_to))
    return lmStatus(-1);
  return shortcutPiece(i_path, CorvPath::createByExtracting(i_path, i_from, i_to), i_from, i_to, i_parameters);
}

lmStatus CorvPathOptimizer::shortcut(const CorvPathShPtr& i_path, const std::vector<double>& i_distances,
                                     const ClumParameterMapConstShPtr& i_parameters)
{
  std::vector<double> cuts = i_distances;
  cuts.insert(cuts.begin(), 0.0);
  cuts.push_back(i_path->length());
  const CorvPathShPtr candidate = CorvPath::create(i_path->configSpace());
  bool hasSucceeded = false;
  // Pieces that failed are kept as one stretch, so that they are not cut for nothing.
  double keptFrom = 0.0;
  const auto appendKept = [&](double i_to)
  {
    const CorvPathShPtr kept = keptFrom < i_to ? CorvPath::createByExtracting(i_path, keptFrom, i_to) : CorvPathShPtr();
    return kept ? candidate->appendPath(kept) : lmStatus();
  };
  lmStatus status;
  for (std::size_t i = 0; i + 1 < cuts.size() && status.succeeded(); ++i)
  {
    const CorvPathShPtr piece = CorvPath::createByExtracting(i_path, cuts[i], cuts[i + 1]);
    CorvPathShPtr planned;
    if (!piece || replan(piece, i_parameters, planned).failed())
      continue;
    hasSucceeded = true;
    status = appendKept(cuts[i]);
    if (status.succeeded())
      status = candidate->appendPath(planned);
    keptFrom = cuts[i + 1];
  }
  if (status.succeeded())
    status = hasSucceeded ? appendKept(cuts.back()) : lmStatus(-1);
  return status.succeeded() ? take(i_path, candidate, i_parameters) : status;
}
