#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvCSVoid.h"
#include "kinematics/orvJointFreeFlyer.h"
#include "kinematics/orvKinematicalEffect.h"
#include "metrics/orvMetricAbsolute.h"
#include "metrics/orvMetricEuclidean.h"
#include "metrics/orvMetricIntrinsinc.h"
#include "metrics/orvMetricJointSweep.h"
#include "metrics/orvMetricManhattan.h"
#include "metrics/orvMetricRevolute.h"
#include "metrics/orvMetricScale.h"
#include "metrics/orvMetricSlerp.h"
#include "metrics/orvMetricZero.h"
#include "metrics/orvRWComposite.h"
#include "metrics/orvRWIdentity.h"
#include "support/logCapture.h"
#include "support/plainSpace.h"
#include "support/spaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
constexpr double PI = ClumGeometryUtilities::PI;

/// Weight and circular difference of one dof, by its flags alone.
double oracleDofDistance(const CorvDof& i_dof, double i_a, double i_b)
{
  const bool isCircular = i_dof.isRevolute() && !i_dof.isBounded();
  const double difference = isCircular ? std::remainder(i_b - i_a, 2.0 * PI) : i_b - i_a;
  return i_dof.weight() * std::fabs(difference);
}

struct Norms
{
  double sum = 0.0;
  double squares = 0.0;
};

Norms oracleNorms(const CorvConfig& i_a, const CorvConfig& i_b)
{
  Norms norms;
  for (unsigned int i = 0; i < i_a.size(); ++i)
  {
    const double d = oracleDofDistance(*i_a.space()->dof(i), i_a.dofValue(i), i_b.dofValue(i));
    norms.sum += d;
    norms.squares += d * d;
  }
  return norms;
}

/// The flat form must give the very bits of the metric.
void expectSameByNumbers(const CorvMetricEuclidean& i_metric, const CorvConfig& i_a, const CorvConfig& i_b)
{
  CorvFlatForm form;
  ASSERT_TRUE(i_metric.getFlatForm(*i_a.space(), form));
  std::vector<double> a(form.pointSize()), b(form.pointSize());
  form.makePoint(i_a.beginPtr(), a.data());
  form.makePoint(i_b.beginPtr(), b.data());
  ASSERT_EQ(form.squaredDistance(a.data(), b.data()), i_metric.squaredDistance(i_a, i_b));
}

void setMetricEverywhere(const CorvConfigSpaceShPtr& i_space, const CorvMetricShPtr& i_metric)
{
  if (i_space->countSubspaces() == 0)
    return;
  i_space->metric(i_metric->clone());
  for (unsigned int i = 0; i < i_space->countSubspaces(); ++i)
    setMetricEverywhere(i_space->subspace(i), i_metric);
}
} // namespace

TEST(CorvMetricRevolute, CircularDifferenceIsTheShortWayAndAHalfTurnIsMinusPi)
{
  CorvUtility::randomSeed(1);
  for (int i = 0; i < 2000; ++i)
  {
    const double from = CorvUtility::random(-30.0, 30.0);
    const double to = CorvUtility::random(-30.0, 30.0);
    const double d = CorvMetricRevolute::circularDistance(from, to);
    ASSERT_GE(d, -PI);
    ASSERT_LT(d, PI);
    ASSERT_NEAR(std::remainder(to - from - d, 2.0 * PI), 0.0, 1e-13);
  }
  for (const double turns : {-2.0, 0.0, 3.0})
  {
    EXPECT_DOUBLE_EQ(CorvMetricRevolute::circularDistance(0.0, PI + 2.0 * PI * turns), -PI);
    EXPECT_DOUBLE_EQ(CorvMetricRevolute::circularDistance(PI + 2.0 * PI * turns, 0.0), -PI);
  }
  EXPECT_EQ(CorvMetricRevolute::limitAngle(PI), -PI);
  const CorvDofShPtr dof = CorvDof::create(true);
  const CorvMetricRevoluteShPtr metric = CorvMetricRevolute::create();
  EXPECT_EQ(metric->distance(CorvConfig(dof, {0.0}), CorvConfig(dof, {PI})), PI);
  EXPECT_EQ(metric->distance(CorvConfig(dof, {PI}), CorvConfig(dof, {0.0})), PI);
}

TEST(CorvMetricEuclidean, AgreesWithTheSumOverDofsOnRandomTreesAsManhattanDoes)
{
  CorvUtility::randomSeed(2);
  for (int tree = 0; tree < 60; ++tree)
  {
    const CorvConfigSpaceShPtr space = makeRandomSpace(3);
    const CorvConfig a = randomConfigOf(space, 20.0);
    CorvConfig b = randomConfigOf(space, 20.0);
    b.dofValue(0, a.dofValue(0));
    const Norms expected = oracleNorms(a, b);
    setMetricEverywhere(space, CorvMetricEuclidean::create());
    EXPECT_NEAR(a.distanceTo(b), std::sqrt(expected.squares), 1e-12 * (1.0 + expected.sum));
    EXPECT_EQ(a.squaredDistanceTo(b), space->metric()->distanceForSorting(a, b));
    EXPECT_EQ(a.distanceTo(a), 0.0);

    expectSameByNumbers(*boost::dynamic_pointer_cast<CorvMetricEuclidean>(space->metric()), a, b);

    setMetricEverywhere(space, CorvMetricManhattan::create());
    EXPECT_NEAR(a.distanceTo(b), expected.sum, 1e-12 * (1.0 + expected.sum));
    EXPECT_NEAR(a.squaredDistanceTo(b), expected.sum * expected.sum, 1e-10 * (1.0 + expected.sum * expected.sum));
  }
}

TEST(CorvMetricEuclidean, CallsTheMetricsThatHaveNoFlatForm)
{
  const CorvConfigSpaceShPtr inner = makeSpace({makeDof({false, false, 1.0}), makeDof({false, false, 1.0})});
  const CorvConfigSpaceShPtr space = makeSpace({makeDof({false, false, 1.0}), inner});
  inner->metric(CorvMetricManhattan::create());
  const CorvConfig a(space, {0.0, 0.0, 0.0});
  EXPECT_DOUBLE_EQ(a.distanceTo(CorvConfig(space, {3.0, 1.0, 3.0})), 5.0);
  // A Euclidean metric under a key of its own is a leaf like any other; here with the same result as a branch.
  inner->metric(CorvMetricEuclidean::create(CorvRWComposite::create(), "test.euclidean"));
  EXPECT_DOUBLE_EQ(a.distanceTo(CorvConfig(space, {2.0, 3.0, 6.0})), 7.0);
  CorvFlatForm form;
  EXPECT_FALSE(boost::dynamic_pointer_cast<CorvMetricEuclidean>(space->metric())->getFlatForm(*space, form));

  // Skipped where the values do not differ, whatever the metric says of equal values.
  inner->metric(CorvMetricIntrinsinc::create());
  inner->steeringMethod(CorvSteeringMethodShPtr());
  EXPECT_DOUBLE_EQ(a.distanceTo(CorvConfig(space, {2.0, 0.0, 0.0})), 2.0);
  EXPECT_TRUE(std::isinf(a.distanceTo(CorvConfig(space, {2.0, 1.0, 0.0}))));
}

TEST(CorvMetricEuclidean, SharedByASpaceAndItsSubspaceItOpensTheSubspace)
{
  const CorvConfigSpaceShPtr inner = makeSpace({makeDof({false, false, 1.0}), makeDof({false, false, 1.0})});
  const CorvConfigSpaceShPtr space = makeSpace({inner});
  const CorvMetricShPtr metric = CorvMetricEuclidean::create(CorvRWComposite::create(), "test.euclidean");
  inner->metric(metric);
  space->metric(metric);
  EXPECT_DOUBLE_EQ(CorvConfig(space, {0.0, 0.0}).distanceTo(CorvConfig(space, {3.0, 4.0})), 5.0);
}

TEST(CorvMetricEuclidean, FollowsEditsOfTheSpaceAndOfTheMetricsInside)
{
  const CorvDofShPtr x = makeDof({false, false, 1.0});
  const CorvDofShPtr angle = makeDof({true, false, 1.0});
  const CorvCSCompositeShPtr space = makeSpace({x, makeSpace({angle})});
  const double base = CorvDof::revoluteWeightScaler();
  const auto distance = [&](double i_x, double i_angle) {
    return CorvConfig(space, {0.0, 0.0}).distanceTo(CorvConfig(space, {i_x, i_angle}));
  };
  EXPECT_DOUBLE_EQ(distance(0.0, 5.0), base * (2.0 * PI - 5.0));
  angle->boundWithin(-6.0, 6.0);
  EXPECT_DOUBLE_EQ(distance(0.0, 5.0), base * 5.0);

  const CorvMetricScaleShPtr inner = CorvMetricScale::create(CorvMetricAbsolute::create());
  const CorvMetricScaleShPtr outer = CorvMetricScale::create(inner);
  x->metric(outer);
  EXPECT_DOUBLE_EQ(distance(2.0, 0.0), 2.0);
  inner->scale(3.0);
  outer->scale(5.0);
  EXPECT_DOUBLE_EQ(distance(2.0, 0.0), 30.0);
  EXPECT_TRUE(outer->substitute("orvane.core.metric.absolute", CorvMetricZero::create()).succeeded());
  EXPECT_DOUBLE_EQ(distance(2.0, 2.0), base * 2.0);
  x->metric(CorvMetricShPtr());
  EXPECT_DOUBLE_EQ(distance(2.0, 2.0), base * 2.0);

  space->appendSubspace(makeDof({false, false, 2.0}));
  EXPECT_DOUBLE_EQ(CorvConfig(space, {0.0, 0.0, 0.0}).distanceTo(CorvConfig(space, {9.0, 0.0, 4.0})), 8.0);
}

TEST(CorvMetricDecorator, FindsSubstitutesAndScales)
{
  const CorvMetricAbsoluteShPtr absolute = CorvMetricAbsolute::create();
  const CorvMetricScaleShPtr scale = CorvMetricScale::create(absolute);
  scale->scale(4.0);
  EXPECT_EQ(scale->type(), "orvane.core.metric.scale(orvane.core.metric.absolute)");
  EXPECT_EQ(scale->find("orvane.core.metric.scale"), scale);
  EXPECT_EQ(scale->find("orvane.core.metric.absolute"), absolute);
  EXPECT_FALSE(scale->find(scale->type()));

  const CorvDofShPtr dof = CorvDof::create(false);
  const CorvConfig a(dof, {1.0});
  const CorvConfig b(dof, {-2.0});
  EXPECT_DOUBLE_EQ(scale->distance(a, b), 12.0);
  EXPECT_DOUBLE_EQ(scale->squaredDistance(a, b), 144.0);
  EXPECT_DOUBLE_EQ(scale->distanceForSorting(a, b), 3.0);
  double factor = 0.0;
  EXPECT_TRUE(scale->isScaledAbsolute(factor));
  EXPECT_EQ(factor, 4.0);
  EXPECT_FALSE(scale->isScaledCircular(factor));

  const auto clone = boost::dynamic_pointer_cast<CorvMetricScale>(scale->clone());
  EXPECT_TRUE(*clone == *scale);
  EXPECT_NE(clone->decoratedMetric(), scale->decoratedMetric());
  EXPECT_TRUE(clone->substitute("orvane.core.metric.absolute", CorvMetricRevolute::create()).succeeded());
  EXPECT_FALSE(*clone == *scale);
  EXPECT_TRUE(clone->substitute("orvane.core.metric.absolute", CorvMetricZero::create()).failed());
  EXPECT_EQ(scale->decoratedMetric(), absolute);

  scale->scale(0.0);
  CorvConfig stepped(dof, {7.0});
  scale->randomStep(a, 1.0, stepped);
  EXPECT_EQ(stepped.dofValue(0), 1.0);
  EXPECT_EQ(scale->distance(a, b), 0.0);
}

TEST(CorvMetric, RefusesWhatItCannotBeMadeOf)
{
  EXPECT_FALSE(CorvMetricAbsolute::create(CorvRandomWalkConstShPtr()));
  EXPECT_FALSE(CorvMetricAbsolute::create(CorvRWIdentity::create(), ""));
  EXPECT_FALSE(CorvMetricScale::create(CorvMetricShPtr()));
  const CorvMetricAbsoluteShPtr metric = CorvMetricAbsolute::create(CorvRWIdentity::create());
  const LogCapture log;
  metric->randomWalk(CorvRandomWalkConstShPtr());
  EXPECT_TRUE(log.contains("CorvMetric::randomWalk(): call with null parameter ignored."));
  EXPECT_TRUE(metric->randomWalk());
  EXPECT_FALSE(*metric == *CorvMetricAbsolute::create());
  EXPECT_TRUE(*metric == *metric->clone());
}

TEST(CorvMetricIntrinsinc, IsTheLengthOfTheDirectPathAndNeverAsksItselfForEver)
{
  const CorvCSCompositeShPtr space = makeMixedSpace();
  const CorvMetricShPtr intrinsinc = CorvMetricIntrinsinc::create();
  const CorvConfig a(space, {0.0, 0.5, 0.0, 1.0});
  const CorvConfig b(space, {1.0, -0.5, 2.0, 0.0});
  const double length = a.distanceTo(b);
  EXPECT_DOUBLE_EQ(intrinsinc->distance(a, b), length);
  EXPECT_TRUE(std::isinf(intrinsinc->distance(a, CorvConfig(space, {0.0, 0.5 + PI, 0.0, 1.0}))));
  // As the space's own metric it would be asked for the very length that it asks for.
  space->metric(intrinsinc);
  EXPECT_DOUBLE_EQ(a.distanceTo(b), length);

  const CorvConfigSpaceShPtr nowhere = CorvCSVoid::nullSpace();
  EXPECT_EQ(CorvConfig(nowhere).distanceTo(CorvConfig(nowhere)), 0.0);
}

TEST(CorvMetricSlerp, WeighsTheTurnByTheLeverAndAnswersZeroWithoutItsJoint)
{
  CorvJointFreeFlyerShPtr joint = CorvJointFreeFlyer::create(ClumMat4());
  joint->maxSweep(2.0);
  const CorvMetricSlerpShPtr metric = CorvMetricSlerp::create(joint);
  const CorvConfigSpaceShPtr space = joint->kinematicalEffect()->configSpace();
  CorvUtility::randomSeed(3);
  for (int i = 0; i < 200; ++i)
  {
    const CorvConfig a = randomConfigOf(space, 1.5);
    const CorvConfig b = randomConfigOf(space, 1.5);
    const ClumMat4 poseA = joint->kinematicalEffect()->forward(a.dofValues());
    const ClumMat4 poseB = joint->kinematicalEffect()->forward(b.dofValues());
    // The angle of a rotation by its trace.
    double trace = 0.0, squares = 0.0;
    for (unsigned int r = 0; r < 3; ++r)
    {
      squares += std::pow(poseB(r, 3) - poseA(r, 3), 2);
      for (unsigned int c = 0; c < 3; ++c)
        trace += poseA(r, c) * poseB(r, c);
    }
    const double turn = metric->lever() * 0.35 * std::acos(std::max(-1.0, std::min(1.0, (trace - 1.0) / 2.0)));
    ASSERT_NEAR(metric->distance(a, b), std::sqrt(squares + turn * turn), 1e-6);
  }
  // A Euclidean metric above it measures the poses as numbers, until the lever is another one.
  const CorvConfigSpaceShPtr both = joint->configSpace();
  space->metric(metric);
  const auto euclidean = boost::dynamic_pointer_cast<CorvMetricEuclidean>(both->metric());
  for (int i = 0; i < 50; ++i)
    expectSameByNumbers(*euclidean, randomConfigOf(both), randomConfigOf(both));
  CorvFlatForm form;
  ASSERT_TRUE(euclidean->getFlatForm(*both, form));
  EXPECT_TRUE(form.isCurrent());
  joint->maxSweep(2.5);
  EXPECT_FALSE(form.isCurrent());

  const CorvConfig origin(space);
  const CorvConfig away(space, {1.0, 0.0, 0.0, 0.0, 0.0, 0.0});
  EXPECT_DOUBLE_EQ(metric->distance(origin, away), 1.0);
  joint.reset();
  EXPECT_EQ(metric->distance(origin, away), 0.0);
}

TEST(CorvFlatForm, BlocksGiveTheBitsOfSinglePointsAndBoxesNeverMore)
{
  const CorvConfigSpaceShPtr space = plainSpace({false, true, true, false, true});
  const double weights[] = {1.0, 1.0, 0.3, 0.0, 7.0};
  for (unsigned int k = 0; k < 5; ++k)
    space->dof(k)->weightMultiplier(weights[k]);
  CorvFlatForm form;
  ASSERT_TRUE(boost::dynamic_pointer_cast<CorvMetricEuclidean>(space->metric())->getFlatForm(*space, form));
  ASSERT_TRUE(form.canMeasureBlocks());
  constexpr unsigned int SIZE = CorvFlatForm::BLOCK_SIZE;
  const double infinity = std::numeric_limits<double>::infinity();
  CorvUtility::randomSeed(99);
  for (int repetition = 0; repetition < 4000; ++repetition)
  {
    // From narrow boxes within a turn to wide ones many turns away.
    const double spread = std::pow(10.0, CorvUtility::random(-3.0, 1.0));
    const double reach = repetition % 2 == 0 ? 3.1 : 14.0;
    const unsigned int count = 1 + static_cast<unsigned int>(CorvUtility::random(0, int(SIZE) - 1));
    std::vector<double> query(5), center(5), block(5 * SIZE, 0.0), boxes(5 * CorvFlatForm::BOXES_SIZE);
    std::vector<std::vector<double>> points(count, std::vector<double>(5));
    for (unsigned int k = 0; k < 5; ++k)
    {
      query[k] = CorvUtility::random(-reach, reach);
      center[k] = CorvUtility::random(-reach, reach);
      double low = infinity, high = -infinity;
      for (unsigned int i = 0; i < count; ++i)
      {
        points[i][k] = block[k * SIZE + i] = center[k] + CorvUtility::random(-spread, spread);
        low = std::min(low, points[i][k]);
        high = std::max(high, points[i][k]);
      }
      // The second box is the first point.
      double* const box = &boxes[k * CorvFlatForm::BOXES_SIZE];
      box[0] = low;
      box[2] = high;
      box[1] = box[3] = points[0][k];
    }
    double squared[SIZE], bounds[2];
    EXPECT_TRUE(form.squaredDistancesOfBlock(query.data(), block.data(), boxes.data(), count, infinity, squared));
    form.squaredDistancesToBoxes(query.data(), boxes.data(), bounds);
    double smallest = infinity;
    for (unsigned int i = 0; i < count; ++i)
    {
      ASSERT_EQ(squared[i], form.squaredDistance(query.data(), points[i].data()));
      ASSERT_LE(bounds[0], squared[i]);
      smallest = std::min(smallest, squared[i]);
    }
    // A box that is a point is as near as the point, but for more than a turn.
    if (reach < 4.0 && spread < 0.01)
      ASSERT_EQ(bounds[1], squared[0]);
    else
      ASSERT_LE(bounds[1], squared[0]);
    EXPECT_TRUE(form.squaredDistancesOfBlock(query.data(), block.data(), boxes.data(), count, smallest, squared));
    // What stands behind the last of an odd number of points may be near.
    if (count % 2 == 0)
    {
      EXPECT_FALSE(
        form.squaredDistancesOfBlock(query.data(), block.data(), boxes.data(), count, 0.999 * smallest, squared));
    }
  }
}

TEST(CorvMetricJointSweep, ReadsTheSweepAtEachCall)
{
  CorvJointFreeFlyerShPtr joint = CorvJointFreeFlyer::create(ClumMat4());
  joint->maxSweep(2.0);
  const CorvDofShPtr dof = makeDof({true, false, 1.0});
  const CorvCSCompositeShPtr space = makeSpace({dof});
  const CorvMetricJointSweepShPtr sweep = CorvMetricJointSweep::create(joint, CorvMetricRevolute::create());
  dof->metric(sweep);
  const CorvConfig a(space, {0.0});
  const CorvConfig b(space, {0.5});
  EXPECT_DOUBLE_EQ(a.distanceTo(b), 0.5 * joint->maxSweep());
  // No version tells the flattened form above that the joint has changed.
  joint->maxSweep(7.0);
  EXPECT_DOUBLE_EQ(a.distanceTo(b), 0.5 * joint->maxSweep());
  joint.reset();
  EXPECT_EQ(a.distanceTo(b), 0.0);
}
