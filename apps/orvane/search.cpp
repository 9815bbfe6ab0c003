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

namespace
{
/// Random step and longest motion, as a part of the bounds' diagonal.
constexpr double STEP = 0.025;

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
}

ClumParameterMapShPtr makeParameters(const SearchResult& i_sizes)
{
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  parameters->setDouble("orvane.core.validator.dp.collision.penetration", i_sizes.penetration)
    .setDouble("orvane.core.shooter.standard-deviation", i_sizes.deviation)
    .setInt("orvane.core.builder.mono-diffusing.link-interval", 0)
    .setInt("orvane.core.linker-standard.nearest-node-count", 1)
    .setBool("orvane.core.builder-planner.force-path-on-failure", false);
  return parameters;
}

/// A motion that grazes an obstacle over its whole length can take millions of configurations to prove. One that needs
/// more than a few thousand is given up, as if it collided: the search goes on elsewhere, and what it returns is
/// proved.
void prepareProof(const CorvConfigSpace& i_space, double i_penetration)
{
  const CorvValidatorSetShPtr validators = i_space.directPathValidators();
  CorvValidatorDPCollision::setPenetration(validators, i_penetration);
  const CorvValidatorDPCollisionShPtr proof = boost::dynamic_pointer_cast<CorvValidatorDPCollision>(
    validators->validatorNamed(CorvValidatorDPCollision::DEFAULT_NAME, true));
  if (proof)
    proof->sampleout(5000);
}

CorvMultiDiffusingBuilderShPtr makeBuilder(const CorvRoadmapShPtr& i_roadmap, const PlanScene& i_scene,
                                           double i_extension)
{
  const CorvExtendDirectShPtr extendMethod = CorvExtendDirect::create();
  extendMethod->restrictionBounds(i_extension, i_extension);
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
} // namespace

SearchResult search(const PlanScene& i_scene, const PlanOptions& i_options)
{
  SearchResult result;
  chooseSizes(i_scene, i_options, result);
  prepareProof(*i_scene.space(), result.penetration);
  const ClumParameterMapShPtr parameters = makeParameters(result);
  const CorvRoadmapShPtr roadmap = CorvRoadmap::create(i_scene.space());
  const CorvBuilderPlannerShPtr planner = CorvBuilderPlanner::create(makeBuilder(roadmap, i_scene, result.extension));
  const ShPtr<SearchMonitor> monitor(
    new SearchMonitor(i_options.maxSteps, i_options.timeLimit, roadmap, i_scene.start(), i_scene.goal()));
  planner->addDelegate(monitor);

  const std::uint64_t queriesBefore = i_scene.device()->collisionToolkit()->countQueries();
  result.isSolved = planner->plan(i_scene.start(), i_scene.goal(), parameters, result.path).succeeded();
  result.planSeconds = monitor->seconds();
  result.steps = monitor->steps();
  result.nodes = roadmap->countNodes();
  result.edges = roadmap->countEdges();
  result.ending = monitor->ending().empty() ? "the search ended without a path" : monitor->ending();
  if (result.isSolved)
  {
    result.lengthBefore = result.lengthAfter = result.path->length();
    if (i_options.doesOptimize)
    {
      monitor->beginOptimizing();
      result.path = shortened(result.path, parameters, monitor);
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
