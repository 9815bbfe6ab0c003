#include "harness.h"

#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvKEPlan.h"
#include "kinematics/orvUtility.h"
#include "paths/orvDPDubins.h"
#include "paths/orvDPReedsNShepp.h"
#include "paths/orvSMDubins.h"
#include "paths/orvSMReedsNShepp.h"

#include <cmath>
#include <vector>

namespace
{
using TPose = CorvDPCurve::CCurveCoordinates;

/// How many sines the shortest word costs, with its parameters and length, over the same random goals.
template <class METHOD>
double sinesForAWord()
{
  CorvUtility::randomSeed(1);
  const CorvConfigSpaceShPtr space = CorvKEPlan::create()->configSpace();
  const CorvDirectPathShPtr path = METHOD::create(1.0, space->dof(0), space->dof(1), space->dof(2))
                                     ->makeDirectPath(CorvConfig(space), CorvConfig(space, {1.0, 1.0, 1.0}));
  const CorvDPCurve& curve = dynamic_cast<const CorvDPCurve&>(*path);
  std::vector<TPose> goals;
  std::vector<double> angles;
  for (int i = 0; i < 256; ++i)
  {
    const double range = i % 2 == 0 ? 2.0 : 8.0;
    goals.emplace_back(CorvUtility::random(-range, range), CorvUtility::random(-range, range),
                       CorvUtility::random(-3.14, 3.14));
    angles.push_back(goals.back().theta());
  }
  const Comparison cost = compare(
    [&]
    {
      for (const TPose& goal : goals)
      {
        int word = 0;
        double t = 0.0, u = 0.0, v = 0.0;
        keep(curve.computeParams(TPose(), goal, word, t, u, v));
      }
    },
    [&]
    {
      for (const double angle : angles)
        keep(std::sin(angle));
    });
  return cost.ratio();
}

void benchmarkCurves()
{
  report("shortest word of a Dubins curve / std::sin", sinesForAWord<CorvSMDubins>(), "at most 100");
  report("shortest word of a Reeds-Shepp curve / std::sin", sinesForAWord<CorvSMReedsNShepp>(), "at most 800");
}

const Section s_curves("curves", benchmarkCurves);
} // namespace
