#include "harness.h"
#include "scene.h"
#include "search.h"
#include "timedToolkit.h"
#include "windowScene.h"

#include "foundation/lumFCLCollisionToolkit.h"
#include "foundation/lumProximityCollisionToolkit.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvUtility.h"
#include "validation/orvValidatorDPCollision.h"

#include <cstdio>

namespace
{
struct Searches
{
  double planSeconds = 0.0;
  double querySeconds = 0.0;
  double motions = 0.0;
  double queries = 0.0;
};

/// Searches in the window scene with one toolkit: a fixed number of steps at most for each of some seeds.
Searches searchWith(const ClumCollisionToolkitShPtr& i_toolkit)
{
  Searches sum;
  const unsigned long motionsBefore = CorvValidatorDPCollision::countTests();
  for (unsigned int seed = 1; seed <= 20; ++seed)
  {
    PlanOptions options = windowScene(seed);
    options.maxSteps = 1000;
    PlanScene scene;
    std::string error;
    if (!scene.load(options, error))
    {
      report("the window scene cannot be loaded", error);
      return sum;
    }
    const CTimedToolkitShPtr toolkit = CTimedToolkit::create(i_toolkit);
    scene.device()->collisionToolkit(toolkit);
    bool isColliding = false;
    scene.start().isColliding(isColliding); // makes the models
    const double warmUp = toolkit->seconds();
    CorvUtility::randomSeed(seed);
    const SearchResult result = search(scene, options);
    sum.planSeconds += result.planSeconds;
    sum.querySeconds += toolkit->seconds() - warmUp;
    sum.queries += static_cast<double>(result.collisionQueries);
  }
  sum.motions = static_cast<double>(CorvValidatorDPCollision::countTests() - motionsBefore);
  return sum;
}

void reportSearches(const std::string& i_name, const Searches& i_searches)
{
  report("time in collision queries / time of the search, " + i_name, i_searches.querySeconds / i_searches.planSeconds,
         "at least 0.9");
  char text[64];
  std::snprintf(text, sizeof text, "%.3g", i_searches.queries / i_searches.motions);
  report("  collision queries for a motion tested", text);
}

/// Two toolkits do not give the same distances, so the searches differ; what is compared is the time for a motion.
void benchmarkPlanning()
{
  const Searches fcl = searchWith(ClumFCLCollisionToolkit::create());
  const Searches own = searchWith(ClumProximityCollisionToolkit::create());
  reportSearches("FCL", fcl);
  reportSearches("own kernel", own);
  report("time for a motion tested, FCL / own kernel: in queries",
         fcl.querySeconds / fcl.motions / (own.querySeconds / own.motions), "told");
  report("  in all", fcl.planSeconds / fcl.motions / (own.planSeconds / own.motions), "told");
  report("  beside queries",
         (fcl.planSeconds - fcl.querySeconds) / fcl.motions / ((own.planSeconds - own.querySeconds) / own.motions),
         "1: the same work");
}

const Section s_planning("planning", benchmarkPlanning);
} // namespace
