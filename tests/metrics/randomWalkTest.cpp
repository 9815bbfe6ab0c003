#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvJointFreeFlyer.h"
#include "metrics/orvMetricAbsolute.h"
#include "metrics/orvMetricEuclidean.h"
#include "metrics/orvMetricManhattan.h"
#include "metrics/orvMetricScale.h"
#include "metrics/orvMetricZero.h"
#include "metrics/orvRDDiscrete.h"
#include "metrics/orvRDGaussian.h"
#include "metrics/orvRDUniform.h"
#include "metrics/orvRWCache.h"
#include "metrics/orvRWComposite.h"
#include "metrics/orvRWFixedValue.h"
#include "metrics/orvRWIdentity.h"
#include "metrics/orvRWLinearDof.h"
#include "metrics/orvRWSlerp.h"
#include "support/logCapture.h"
#include "support/spaces.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(CorvRandomDistribution, HasTheAskedDeviationAndItsOwnShape)
{
  const std::vector<CorvRandomDistributionConstShPtr> all = {CorvRDGaussian::create(), CorvRDUniform::create(),
                                                             CorvRDDiscrete::create()};
  // Share of draws within one deviation: erf(1/sqrt 2), 1/sqrt 3, all of them.
  const double within[] = {0.6827, 0.5774, 1.0};
  CorvUtility::randomSeed(5);
  for (unsigned int i = 0; i < all.size(); ++i)
  {
    const int count = 40000;
    const double size = 0.7;
    double sum = 0.0, squares = 0.0;
    int inside = 0;
    for (int k = 0; k < count; ++k)
    {
      const double value = all[i]->shoot(size);
      sum += value;
      squares += value * value;
      inside += std::fabs(value) <= size * (1.0 + 1e-12) ? 1 : 0;
    }
    EXPECT_NEAR(sum / count, 0.0, 5.0 * size / std::sqrt(count)) << i;
    EXPECT_NEAR(std::sqrt(squares / count), size, 0.02 * size) << i;
    EXPECT_NEAR(double(inside) / count, within[i], 0.015) << i;
    EXPECT_EQ(all[i]->shoot(0.0), 0.0) << i;
    for (unsigned int k = 0; k < all.size(); ++k)
      EXPECT_EQ(*all[i] == *all[k], i == k);
  }
}

TEST(CorvRandomWalk, ComparesClassAndDistribution)
{
  const CorvRandomWalkConstShPtr gaussian = CorvRWLinearDof::create();
  EXPECT_TRUE(*gaussian == *gaussian->clone());
  EXPECT_FALSE(*gaussian == *CorvRWLinearDof::create(CorvRDUniform::create()));
  EXPECT_FALSE(*gaussian == *CorvRWIdentity::create());
  EXPECT_TRUE(*CorvRWFixedValue::create(1.0) == *CorvRWFixedValue::create(2.0));
}

namespace
{
/// A space in which every branch of the flattening occurs.
CorvCSCompositeShPtr makeWalkSpace()
{
  const CorvDofShPtr still = makeDof({false, false, 1.0});
  still->metric(CorvMetricZero::create());
  const CorvDofShPtr fixed = makeDof({false, false, 1.0});
  fixed->metric(CorvMetricAbsolute::create(CorvRWFixedValue::create(0.25)));
  const CorvDofShPtr weightless = makeDof({false, false, 0.0});
  const CorvCSCompositeShPtr scaled = makeSpace({makeDof({false, false, 2.0}), makeDof({true, false, 1.0})});
  const CorvMetricScaleShPtr scale = CorvMetricScale::create(CorvMetricEuclidean::create());
  scale->scale(4.0);
  scaled->metric(scale);
  const CorvCSCompositeShPtr other = makeSpace({makeDof({false, false, 1.0}), makeDof({false, false, 1.0})});
  other->metric(CorvMetricManhattan::create());
  const CorvCSCompositeShPtr idle = makeSpace({makeDof({false, false, 1.0})});
  idle->metric(CorvMetricEuclidean::create(CorvRWIdentity::create()));
  return makeSpace({makeDof({true, true, 3.0}), still, fixed, weightless, scaled, other, idle});
}
} // namespace

TEST(CorvRWCache, StepsAsTheComposedWalkOnTheSameDraws)
{
  const CorvCSCompositeShPtr space = makeWalkSpace();
  const CorvRandomWalkConstShPtr composed = CorvRWComposite::create();
  const CorvRandomWalkConstShPtr flat = CorvRWCache::create(space);
  const CorvConfig from = randomConfigOf(space);
  for (unsigned int seed = 0; seed < 200; ++seed)
  {
    CorvConfig a(from), b(from), c(from);
    CorvUtility::randomSeed(seed);
    composed->step(0.3, a);
    CorvUtility::randomSeed(seed);
    flat->step(0.3, b);
    CorvUtility::randomSeed(seed);
    space->metric()->randomStep(c, 0.3, c);
    for (unsigned int i = 0; i < a.size(); ++i)
    {
      ASSERT_NEAR(a.dofValue(i), b.dofValue(i), 1e-12) << i;
      ASSERT_EQ(b.dofValue(i), c.dofValue(i)) << i;
    }
    EXPECT_NE(b.dofValue(0), from.dofValue(0));
    EXPECT_EQ(b.dofValue(1), from.dofValue(1));
    EXPECT_EQ(b.dofValue(2), 0.25);
    EXPECT_EQ(b.dofValue(3), from.dofValue(3));
    EXPECT_EQ(b.dofValue(8), from.dofValue(8));
  }
  const LogCapture log;
  EXPECT_FALSE(CorvRWCache::create(CorvConfigSpaceConstShPtr()));
  EXPECT_TRUE(log.contains("Cannot create a CorvRWCache instance with a null space."));
}

TEST(CorvRWCache, IsStaleAfterAnEditOfTheSpaceOrOfAMetric)
{
  const CorvCSCompositeShPtr space = makeMixedSpace();
  CorvRWCacheConstShPtr cache = CorvRWCache::create(space);
  EXPECT_TRUE(cache->check(*space));
  EXPECT_FALSE(cache->check(*makeMixedSpace()));
  space->dof(1)->boundWithin(-1.0, 1.0);
  EXPECT_FALSE(cache->check(*space));
  cache = CorvRWCache::create(space);
  space->dof(0)->metric()->randomWalk(CorvRWLinearDof::create(CorvRDDiscrete::create()));
  EXPECT_FALSE(cache->check(*space));

  // And a metric takes a new one by itself: the discrete walk steps by exactly one deviation.
  CorvConfig cfg(space);
  space->metric()->randomStep(cfg, 0.5, cfg);
  EXPECT_DOUBLE_EQ(std::fabs(cfg.dofValue(0)), 0.5);
  cfg.clear();
  space->dof(0)->weightMultiplier(2.0);
  space->metric()->randomStep(cfg, 0.5, cfg);
  EXPECT_DOUBLE_EQ(std::fabs(cfg.dofValue(0)), 0.5 / space->dof(0)->weight());
}

TEST(CorvRWCache, WithAPlainWalkOnTopIsThatWalk)
{
  const CorvCSCompositeShPtr space = makeMixedSpace();
  space->metric(CorvMetricEuclidean::create(CorvRWFixedValue::create(3.0)));
  CorvConfig cfg(space);
  CorvRWCache::create(space)->step(1.0, cfg);
  EXPECT_EQ(cfg.dofValues(), (std::vector<double>{3.0, 0.0, 0.0, 0.0}));
}

TEST(CorvMetric, RandomStepHasTheAskedDeviationInTheMetricsOwnUnit)
{
  const CorvCSCompositeShPtr space = makeMixedSpace();
  const CorvConfig from(space);
  CorvUtility::randomSeed(11);
  const int count = 20000;
  double squares = 0.0;
  for (int i = 0; i < count; ++i)
  {
    CorvConfig to(space);
    space->metric()->randomStep(from, 0.1, to);
    squares += from.squaredDistanceTo(to);
  }
  EXPECT_NEAR(squares / count, space->size() * 0.1 * 0.1, 0.02 * space->size() * 0.1 * 0.1);
}

TEST(CorvRWSlerp, StirsTranslationAndTurnInBalanceAndNothingWithoutALever)
{
  CorvJointFreeFlyerShPtr joint = CorvJointFreeFlyer::create(ClumMat4());
  joint->maxSweep(2.0);
  const CorvRWSlerpConstShPtr walk = CorvRWSlerp::create(joint);
  ASSERT_GT(walk->lever(), 0.0);
  CorvUtility::randomSeed(13);
  const int count = 10000;
  const double size = 0.05;
  double ways = 0.0, turns = 0.0;
  for (int i = 0; i < count; ++i)
  {
    ClumMat4 pose;
    walk->stepSolid(size, pose);
    const ClumVect3 t = pose.translation();
    ways += t.x() * t.x() + t.y() * t.y() + t.z() * t.z();
    turns += std::pow(walk->lever() * 0.35 * ClumGeometryUtilities::slerpAngle(ClumMat4(), pose), 2);
  }
  EXPECT_NEAR(ways / count, 3.0 * size * size, 0.05 * 3.0 * size * size);
  EXPECT_NEAR(turns / count, size * size, 0.05 * size * size);

  joint.reset();
  ClumMat4 pose;
  walk->stepSolid(size, pose);
  EXPECT_EQ(pose, ClumMat4());
}
