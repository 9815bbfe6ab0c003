#include "search.h"

#include "monitor.h"

#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "optimizers/orvAdaptiveShortcutOptimizer.h"
#include "optimizers/orvRandomOptimizer.h"
#include "paths/orvPath.h"
#include "planners/orvBuilderPlanner.h"
#include "roadmaps/orvExtendDirect.h"
#include "roadmaps/orvLinkerKeepValidPart.h"
#include "roadmaps/orvMultiDiffusingBuilder.h"
#include "roadmaps/orvRatingShortestComponent.h"
#include "roadmaps/orvRoadmap.h"
#include "roadmaps/orvShooterRoadmapBox.h"
#include "validation/orvValidatorDPCollision.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>
#include <vector>

namespace
{
/// Random step and longest motion of the near search, as a part of the bounds' diagonal.
constexpr double STEP = 0.025;
/// Of the far search, as multiples of those: motions are drawn between once and this many times the near one's.
constexpr double FAR_DEVIATION = 4.0;
constexpr double FAR_EXTENSION = 8.0;
/// The searches take turns of so many steps, the first time, and longer by this factor each time.
constexpr double FIRST_NEAR_TURN = 40.0;
constexpr double FIRST_FAR_TURN = 6.0;
constexpr double TURN_GROWTH = 1.5;
/// New nodes that are passed over before one is linked to the other tree.
constexpr int LINK_INTERVAL = 1;
/// Of the part's smallest side: a penetration beyond it is worth a note.
constexpr double NOTABLE_PENETRATION = 0.5;
/// At penetration 0, the clearance that is asked for, as a part of the part's radius.
constexpr double EXACT_CLEARANCE = 1e-4;

/// The sizes of the search, from those of the scene where the user did not say them.
///
/// A penetration far below the part's smallest side cannot miss anything that matters. Motions are kept short against
/// the scene: a long motion that ends at an obstacle teaches as little as a short one and costs more to prove.
void chooseSizes(const PlanScene& i_scene, const PlanOptions& i_options, SearchResult& o_result)
{
  const double size = i_scene.partRadius();
  o_result.penetration =
    i_options.penetration.value_or(std::clamp(0.05 * i_scene.partThickness(), 1e-4 * size, 0.01 * size));
  o_result.deviation = i_options.deviation.value_or(STEP * i_scene.extent());
  o_result.extension = std::max(10.0 * o_result.penetration, STEP * i_scene.extent());
  o_result.farExtension = FAR_EXTENSION * o_result.extension;
  if (o_result.penetration > NOTABLE_PENETRATION * i_scene.partThickness())
    o_result.notes.push_back("the penetration is large against the part's smallest side: the proof may miss contacts "
                             "that matter");
}

/// One of the searches that take turns, each with its own sizes and trees.
struct TurnSearch
{
  CorvRoadmapShPtr roadmap;
  ClumParameterMapShPtr parameters;
  CorvBuilderPlannerShPtr planner;
  double turn; ///< steps of its next turn
};

ClumParameterMapShPtr makeParameters(double i_penetration, double i_deviation)
{
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  parameters->setDouble("orvane.core.validator.dp.collision.penetration", i_penetration)
    .setDouble("orvane.core.shooter.standard-deviation", i_deviation)
    .setInt("orvane.core.builder.mono-diffusing.link-interval", LINK_INTERVAL)
    .setInt("orvane.core.linker-standard.nearest-node-count", 1)
    .setBool("orvane.core.builder-planner.force-path-on-failure", false);
  return parameters;
}

/// A motion that grazes an obstacle over its whole length can take millions of configurations to prove. One that needs
/// more than a few thousand is given up, as if it collided: the search goes on elsewhere, and what it returns is
/// proved. At penetration 0 a little clearance is asked for, by the size of the part, for the same reason.
void prepareProof(const PlanScene& i_scene, double i_penetration)
{
  const CorvValidatorSetShPtr validators = i_scene.space()->directPathValidators();
  CorvValidatorDPCollision::setPenetration(validators, i_penetration);
  const CorvValidatorDPCollisionShPtr proof = boost::dynamic_pointer_cast<CorvValidatorDPCollision>(
    validators->validatorNamed(CorvValidatorDPCollision::DEFAULT_NAME, true));
  if (!proof)
    return;
  proof->sampleout(5000);
  proof->zeroPenetrationSag(EXACT_CLEARANCE * i_scene.partRadius());
}

CorvMultiDiffusingBuilderShPtr makeBuilder(const CorvRoadmapShPtr& i_roadmap, const PlanScene& i_scene,
                                           double i_shortest, double i_longest)
{
  const CorvExtendDirectShPtr extendMethod = CorvExtendDirect::create();
  extendMethod->restrictionBounds(i_shortest, i_longest);
  const CorvMultiDiffusingBuilderShPtr builder = CorvMultiDiffusingBuilder::create(i_roadmap);
  builder->extendMethod(extendMethod);
  builder->diffusionShooter(CorvShooterRoadmapBox::create());
  builder->linker(CorvLinkerKeepValidPart::create());
  builder->rating(CorvRatingShortestComponent::create());
  builder->addDiffusionSpot(i_scene.start(), CorvMultiDiffusingBuilder::START_LIKE);
  builder->addDiffusionSpot(i_scene.goal(), CorvMultiDiffusingBuilder::GOAL_LIKE);
  return builder;
}

/// Shortens by bisection and rounded corners, then by random cuts while they still gain.
CorvPathShPtr shortened(const CorvPathShPtr& i_path, const ClumParameterMapShPtr& i_parameters,
                        const ShPtr<SearchMonitor>& i_monitor)
{
  const CorvRandomOptimizerShPtr random = CorvRandomOptimizer::create();
  random->maxNbLoop(3);
  const CorvAdaptiveShortcutOptimizerShPtr optimizer = CorvAdaptiveShortcutOptimizer::create();
  optimizer->postOptimizer(random);
  optimizer->maxNbLoop(10);
  optimizer->minGainStop(0.01);
  optimizer->addDelegate(i_monitor);
  CorvPathShPtr result;
  optimizer->plan(i_path, CorvPathPlanner::STABLE_ENDS, i_parameters, result);
  return result && result->length() <= i_path->length() ? result : i_path;
}
/// The near search, whose trees grow slowly and find their way through what is narrow, and the far one, which soon gets
/// around what is large. Which of them a scene needs is not seen beforehand.
std::vector<TurnSearch> makeSearches(const PlanScene& i_scene, const SearchResult& i_sizes,
                                     const ShPtr<SearchMonitor>& i_monitor)
{
  std::vector<TurnSearch> searches;
  for (const bool isFar : {false, true})
  {
    TurnSearch made;
    made.roadmap = CorvRoadmap::create(i_scene.space());
    made.parameters =
      makeParameters(i_sizes.penetration, isFar ? i_sizes.deviation * FAR_DEVIATION : i_sizes.deviation);
    made.planner = CorvBuilderPlanner::create(
      makeBuilder(made.roadmap, i_scene, i_sizes.extension, isFar ? i_sizes.farExtension : i_sizes.extension));
    made.planner->addDelegate(i_monitor);
    made.turn = isFar ? FIRST_FAR_TURN : FIRST_NEAR_TURN;
    i_monitor->watch(made.roadmap);
    searches.push_back(made);
  }
  return searches;
}

/// Lets the searches take turns until one finds a path, the monitor ends them, or none goes on.
bool takeTurns(const PlanScene& i_scene, std::vector<TurnSearch>& io_searches, SearchMonitor& io_monitor,
               CorvPathShPtr& o_path)
{
  unsigned int stepsBefore;
  do
  {
    stepsBefore = io_monitor.steps();
    for (TurnSearch& turn : io_searches)
    {
      io_monitor.beginTurn(static_cast<unsigned int>(turn.turn));
      turn.turn *= TURN_GROWTH;
      if (turn.planner->plan(i_scene.start(), i_scene.goal(), turn.parameters, o_path).succeeded())
        return true;
      if (!io_monitor.ending().empty())
        return false;
    }
  } while (io_monitor.steps() > stepsBefore);
  return false;
}
} // namespace

SearchResult search(const PlanScene& i_scene, const PlanOptions& i_options)
{
  SearchResult result;
  chooseSizes(i_scene, i_options, result);
  prepareProof(i_scene, result.penetration);
  const ShPtr<SearchMonitor> monitor(
    new SearchMonitor(i_options.maxSteps, i_options.timeLimit, i_scene.start(), i_scene.goal()));
  std::vector<TurnSearch> searches = makeSearches(i_scene, result, monitor);

  const std::uint64_t queriesBefore = i_scene.device()->collisionToolkit()->countQueries();
  result.isSolved = takeTurns(i_scene, searches, *monitor, result.path);
  result.planSeconds = monitor->seconds();
  result.steps = monitor->steps();
  for (const TurnSearch& turn : searches)
  {
    result.nodes += turn.roadmap->countNodes();
    result.edges += turn.roadmap->countEdges();
  }
  result.ending = monitor->ending().empty() ? "the search ended without a path" : monitor->ending();
  if (result.isSolved)
  {
    result.lengthBefore = result.lengthAfter = result.path->length();
    if (i_options.doesOptimize)
    {
      monitor->beginOptimizing();
      result.path = shortened(result.path, searches.front().parameters, monitor);
      result.optimizeSeconds = monitor->seconds() - result.planSeconds;
      result.lengthAfter = result.path->length();
    }
  }
  else
    result.path.reset();
  result.motionsTested = CorvValidatorDPCollision::countTests();
  result.configsTested = CorvValidatorDPCollision::countTestedConfigs();
  result.collisionQueries = i_scene.device()->collisionToolkit()->countQueries() - queriesBefore;
  return result;
}
