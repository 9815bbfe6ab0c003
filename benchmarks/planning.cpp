#include "harness.h"
#include "scene.h"
#include "search.h"
#include "timedToolkit.h"
#include "windowScene.h"

#include "kinematics/orvDevice.h"
#include "kinematics/orvUtility.h"
#include "validation/orvValidatorDPCollision.h"

#include <cstdio>

namespace
{
/// The share of a search that is spent in collision queries, over some seeds and a fixed number of steps each.
void benchmarkPlanning()
{
  double planSeconds = 0.0, querySeconds = 0.0;
  std::uint64_t queries = 0;
  const unsigned long motionsBefore = CorvValidatorDPCollision::countTests();
  for (unsigned int seed = 1; seed <= 5; ++seed)
  {
    PlanOptions options = windowScene(seed);
    options.maxSteps = 1000;
    PlanScene scene;
    std::string error;
    if (!scene.load(options, error))
      return report("the window scene cannot be loaded", error);
    const CTimedToolkitShPtr toolkit = CTimedToolkit::create(scene.device()->collisionToolkit());
    scene.device()->collisionToolkit(toolkit);
    bool isColliding = false;
    scene.start().isColliding(isColliding); // makes the models
    const double warmUp = toolkit->seconds();
    CorvUtility::randomSeed(seed);
    const SearchResult result = search(scene, options);
    planSeconds += result.planSeconds;
    querySeconds += toolkit->seconds() - warmUp;
    queries += result.collisionQueries;
  }
  report("time in collision queries / time of the search, up to 1,000 steps of five seeds", querySeconds / planSeconds,
         "at least 0.9");
  char text[64];
  std::snprintf(text, sizeof text, "%.3g",
                static_cast<double>(queries) / (CorvValidatorDPCollision::countTests() - motionsBefore));
  report("collision queries for a motion tested", text);
}

const Section s_planning("planning", benchmarkPlanning);
} // namespace
