#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvJointFreeFlyer.h"
#include "kinematics/orvKinematicalEffect.h"
#include "metrics/orvMetricAbsolute.h"
#include "metrics/orvMetricEuclidean.h"
#include "metrics/orvMetricIK.h"
#include "metrics/orvMetricIntrinsinc.h"
#include "metrics/orvMetricJointSweep.h"
#include "metrics/orvMetricManhattan.h"
#include "metrics/orvMetricScale.h"
#include "metrics/orvMetricSlerp.h"
#include "metrics/orvMetricSlerpWithCustomMotionFrame.h"
#include "metrics/orvMetricZero.h"
#include "metrics/orvRWComposite.h"
#include "metrics/orvRWIdentity.h"
#include "support/logCapture.h"
#include "support/spaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace
{
/// Keeps the joints that the metrics of a random tree know weakly.
struct TreeOfMetrics
{
  std::vector<CorvJointShPtr> joints;
  CorvConfigSpaceShPtr space;
};

CorvMetricShPtr randomComposedMetric(TreeOfMetrics& io_tree)
{
  switch (CorvUtility::random(0, 7))
  {
  case 0: return CorvMetricManhattan::create();
  case 1: return CorvMetricManhattan::create(CorvRWComposite::create(), "test.manhattan");
  case 2: return CorvMetricEuclidean::create(CorvRWComposite::create(), "test.euclidean");
  case 3: return CorvMetricShPtr();
  case 4: return CorvMetricZero::create();
  case 5:
  {
    const CorvMetricScaleShPtr scale = CorvMetricScale::create(randomComposedMetric(io_tree));
    if (scale)
      scale->scale(CorvUtility::random(0.0, 3.0));
    return scale;
  }
  case 6:
  {
    const CorvJointShPtr joint = CorvJointFreeFlyer::create(ClumMat4());
    joint->maxSweep(CorvUtility::random(0.1, 3.0));
    io_tree.joints.push_back(joint);
    return CorvMetricJointSweep::create(joint, CorvMetricEuclidean::create());
  }
  default: return CorvMetricEuclidean::create();
  }
}

/// The six dofs of a free-flyer, measured by poses.
CorvConfigSpaceShPtr makePoseSpace(TreeOfMetrics& io_tree)
{
  const CorvJointShPtr joint = CorvJointFreeFlyer::create(ClumMat4());
  joint->maxSweep(CorvUtility::random(0.1, 3.0));
  io_tree.joints.push_back(joint);
  const CorvConfigSpaceShPtr space = joint->kinematicalEffect()->configSpace();
  space->metric(CorvMetricSlerp::create(joint));
  return joint->configSpace();
}

CorvConfigSpaceShPtr makeRandomBranch(TreeOfMetrics& io_tree, int i_levels)
{
  std::vector<CorvConfigSpaceShPtr> subspaces;
  const int count = CorvUtility::random(1, 4);
  for (int i = 0; i < count; ++i)
  {
    const int kind = CorvUtility::random(0, 5);
    if (kind == 0)
      subspaces.push_back(makePoseSpace(io_tree));
    else if (kind <= 2 && i_levels > 1)
      subspaces.push_back(makeRandomBranch(io_tree, i_levels - 1));
    else
      subspaces.push_back(
        makeDof({CorvUtility::random(0, 1) == 1, CorvUtility::random(0, 1) == 1, CorvUtility::random(0.1, 4.0)}));
  }
  const CorvCSCompositeShPtr space = makeSpace(subspaces);
  space->metric(randomComposedMetric(io_tree));
  return space;
}

/// A tree that has a metric at its top.
TreeOfMetrics makeTreeOfMetrics()
{
  TreeOfMetrics tree;
  while (!tree.space || !tree.space->metric())
    tree.space = makeRandomBranch(tree, 3);
  return tree;
}

/// What a metric means, by recursion over the tree and without any flat form.
double plainDistance(const CorvConfigSpace& i_space, const CorvMetricShPtr& i_metric, const double* i_a,
                     const double* i_b)
{
  if (!i_metric || boost::dynamic_pointer_cast<CorvMetricZero>(i_metric))
    return 0.0;
  if (const auto scale = boost::dynamic_pointer_cast<CorvMetricScale>(i_metric))
    return scale->scale() * plainDistance(i_space, scale->decoratedMetric(), i_a, i_b);
  if (const auto sweep = boost::dynamic_pointer_cast<CorvMetricJointSweep>(i_metric))
    return sweep->scale() * plainDistance(i_space, sweep->decoratedMetric(), i_a, i_b);
  const bool isSum = static_cast<bool>(boost::dynamic_pointer_cast<CorvMetricManhattan>(i_metric));
  if (isSum || boost::dynamic_pointer_cast<CorvMetricEuclidean>(i_metric))
  {
    double total = 0.0;
    unsigned int rank = 0;
    for (unsigned int i = 0; i < i_space.countSubspaces(); ++i)
    {
      const CorvConfigSpaceShPtr subspace = i_space.subspace(i);
      const double d = plainDistance(*subspace, subspace->metric(), i_a + rank, i_b + rank);
      total += isSum ? d : d * d;
      rank += subspace->size();
    }
    return isSum ? total : std::sqrt(total);
  }
  const CorvConfigSpaceShPtr space = i_space.self();
  return i_metric->distance(CorvConfig(space, std::vector<double>(i_a, i_a + space->size())),
                            CorvConfig(space, std::vector<double>(i_b, i_b + space->size())));
}

/// Twelve plain dofs.
CorvConfigSpaceShPtr makeSpaceOfTwelve()
{
  std::vector<CorvConfigSpaceShPtr> dofs;
  for (unsigned int i = 0; i < 12; ++i)
    dofs.push_back(makeDof({i % 6 >= 3, false, 1.0}));
  return makeSpace(dofs);
}
} // namespace

TEST(MetricLaws, HoldOnRandomTreesOfSpacesAndMetrics)
{
  int measured = 0;
  for (unsigned int seed = 0; seed < 150; ++seed)
  {
    CorvUtility::randomSeed(seed);
    const TreeOfMetrics tree = makeTreeOfMetrics();
    SCOPED_TRACE(tree.space->metric()->type() + ", seed " + std::to_string(seed));
    const CorvMetric& metric = *tree.space->metric();
    for (int i = 0; i < 10; ++i)
    {
      const CorvConfig a = randomConfigOf(tree.space, 8.0), b = randomConfigOf(tree.space, 8.0);
      const CorvConfig c = CorvUtility::random(0, 1) ? randomConfigOf(tree.space, 8.0) : a;
      const double ab = metric.distance(a, b);
      const double tolerance = 1e-9 * (1.0 + ab);
      ASSERT_NEAR(ab, plainDistance(*tree.space, tree.space->metric(), a.beginPtr(), b.beginPtr()), tolerance);
      ASSERT_EQ(metric.distance(b, a), ab);
      ASSERT_EQ(metric.distance(a, a), 0.0);
      ASSERT_LE(ab, metric.distance(a, c) + metric.distance(c, b) + tolerance);
      ASSERT_NEAR(metric.squaredDistance(a, b), ab * ab, tolerance * (1.0 + ab));
      // What sorts must sort as the distance does.
      const double ac = metric.distance(a, c);
      if (std::fabs(ac - ab) > tolerance)
      {
        ASSERT_EQ(metric.distanceForSorting(a, b) < metric.distanceForSorting(a, c), ab < ac);
      }
      measured += ab > 0.0 ? 1 : 0;
    }
  }
  EXPECT_GT(measured, 800);
}

TEST(MetricLaws, TheLengthsOfDirectPathsAreADistance)
{
  CorvUtility::randomSeed(5);
  const CorvMetricShPtr metric = CorvMetricIntrinsinc::create();
  for (int i = 0; i < 100; ++i)
  {
    const CorvConfigSpaceShPtr space = makeRandomSpace(2);
    const CorvConfig a = randomConfigOf(space), b = randomConfigOf(space), c = randomConfigOf(space);
    const double ab = metric->distance(a, b);
    EXPECT_NEAR(ab, a.distanceTo(b), 1e-12 * (1.0 + ab));
    EXPECT_DOUBLE_EQ(metric->distance(b, a), ab);
    EXPECT_LE(ab, metric->distance(a, c) + metric->distance(c, b) + 1e-9);
  }
}

TEST(CorvMetricDecorator, NeverDecoratesItself)
{
  const CorvMetricScaleShPtr inner = CorvMetricScale::create(CorvMetricAbsolute::create());
  const CorvMetricScaleShPtr outer = CorvMetricScale::create(inner);
  EXPECT_TRUE(inner->substitute("orvane.core.metric.absolute", inner).failed());
  EXPECT_TRUE(inner->substitute("orvane.core.metric.absolute", outer).failed());
  EXPECT_EQ(inner->decoratedMetric()->type(), "orvane.core.metric.absolute");
}

TEST(CorvMetricDecorator, OfAnotherClassIsAnotherMetricWhateverItIsCalled)
{
  const CorvJointShPtr joint = CorvJointFreeFlyer::create(ClumMat4());
  const CorvMetricShPtr scale = CorvMetricScale::create(CorvMetricAbsolute::create(), "test.factor");
  const CorvMetricShPtr sweep = CorvMetricJointSweep::create(joint, CorvMetricAbsolute::create(), "test.factor");
  EXPECT_FALSE(*scale == *sweep);
  EXPECT_FALSE(*sweep == *scale);
  EXPECT_TRUE(*sweep == *sweep->clone());
}

TEST(CorvMetricIK, AddsTheSquaresOfBothSpacesAndStepsInBoth)
{
  const CorvConfigSpaceShPtr command = makeSpace({makeDof({false, false, 2.0}), makeDof({false, false, 1.0})});
  const CorvConfigSpaceShPtr target = makeSpace({makeDof({true, false, 1.0})});
  const CorvConfigSpaceShPtr other = makeDof({false, false, 1.0});
  const CorvCSCompositeShPtr space = makeSpace({other, command, target});
  const CorvMetricIKShPtr metric = CorvMetricIK::create(command, target);
  ASSERT_TRUE(metric);
  CorvUtility::randomSeed(8);
  for (int i = 0; i < 50; ++i)
  {
    const CorvConfig a = randomConfigOf(space), b = randomConfigOf(space);
    const double expected = a.restrict(command).squaredDistanceTo(b.restrict(command)) +
                            a.restrict(target).squaredDistanceTo(b.restrict(target));
    ASSERT_NEAR(metric->squaredDistance(a, b), expected, 1e-12 * (1.0 + expected));
    ASSERT_EQ(metric->distance(a, b), std::sqrt(metric->squaredDistance(a, b)));
    ASSERT_EQ(metric->distanceForSorting(a, b), metric->squaredDistance(a, b));
    ASSERT_EQ(metric->distance(a, a), 0.0);

    CorvConfig stepped(space);
    metric->randomStep(a, 0.5, stepped);
    ASSERT_EQ(stepped.dofValue(0), a.dofValue(0));
    for (unsigned int rank = 1; rank < 4; ++rank)
      ASSERT_NE(stepped.dofValue(rank), a.dofValue(rank));
  }
  // Of a configuration that has only one of the spaces, that one is measured.
  EXPECT_DOUBLE_EQ(metric->distance(CorvConfig(command, {0.0, 0.0}), CorvConfig(command, {0.0, 3.0})), 3.0);
  EXPECT_EQ(metric->distance(CorvConfig(other, {0.0}), CorvConfig(other, {3.0})), 0.0);
  EXPECT_FALSE(CorvMetricIK::create(CorvConfigSpaceShPtr(), target));
  EXPECT_TRUE(CorvMetricIK::create(command, CorvConfigSpaceShPtr()));

  const CorvRandomWalkConstShPtr walk = metric->randomWalk();
  const LogCapture log;
  metric->randomWalk(CorvRWIdentity::create());
  EXPECT_TRUE(log.contains("Setting the random walk of CorvMetricIK has no effect (old=CorvRWLinearDof, "
                           "new=CorvRWIdentity"));
  EXPECT_EQ(metric->randomWalk(), walk);
}

/// Turning about the motion frame costs the way along the arc and nothing else; shifting costs the shift.
TEST(CorvMetricSlerpWithCustomMotionFrame, MeasuresTurnsAboutTheFrameOfTheGoal)
{
  const CorvJointShPtr joint = CorvJointFreeFlyer::create(ClumMat4());
  const CorvMetricSlerpWithCustomMotionFrameShPtr metric = CorvMetricSlerpWithCustomMotionFrame::create(joint);
  ASSERT_TRUE(metric);
  EXPECT_EQ(metric->type(), "orvane.core.metric.slerp-with-custom-motion-frame");
  const CorvConfigSpaceShPtr space = makeSpaceOfTwelve();
  CorvUtility::randomSeed(9);
  for (int i = 0; i < 100; ++i)
  {
    std::vector<double> frameValues(6), poseValues(6);
    for (unsigned int k = 0; k < 6; ++k)
    {
      frameValues[k] = CorvUtility::random(-1.0, 1.0);
      poseValues[k] = CorvUtility::random(-1.0, 1.0);
    }
    ClumMat4 frame, pose, turn, shift;
    ClumGeometryUtilities::bryantToMatrix(frameValues, frame);
    ClumGeometryUtilities::bryantToMatrix(poseValues, pose);
    const double angle = CorvUtility::random(0.1, 3.0), way = CorvUtility::random(0.0, 2.0);
    const ClumVect3 axis(CorvUtility::random(-1.0, 1.0), 0.3, CorvUtility::random(-1.0, 1.0));
    turn.rotate(axis, angle);
    shift.translate(0.0, way, 0.0);
    const auto configOf = [&](const ClumMat4& i_pose)
    {
      std::vector<double> values = frameValues, own;
      ClumGeometryUtilities::matrixToBryant(i_pose, own);
      values.insert(values.end(), own.begin(), own.end());
      return CorvConfig(space, values);
    };
    const double lever =
      std::sqrt(frameValues[0] * frameValues[0] + frameValues[1] * frameValues[1] + frameValues[2] * frameValues[2]);
    const CorvConfig start = configOf(pose);
    const CorvConfig turned = configOf(pose * frame * turn * frame.inverse());
    EXPECT_NEAR(metric->distance(start, turned), std::hypot(0.35 * angle, lever * angle), 1e-7);
    EXPECT_NEAR(metric->distance(start, configOf(pose * frame * shift * frame.inverse())), way, 1e-7);
    EXPECT_NEAR(metric->distance(start, configOf(pose * frame * shift * turn * frame.inverse())),
                std::hypot(0.35 * angle, lever * angle + way), 1e-7);
    EXPECT_NEAR(metric->distance(start, start), 0.0, 1e-7);
  }
  const CorvConfigSpaceShPtr sixes = joint->kinematicalEffect()->configSpace();
  EXPECT_EQ(metric->distance(CorvConfig(sixes), randomConfigOf(sixes)), 0.0);
  EXPECT_EQ(
    CorvMetricSlerpWithCustomMotionFrame::create(CorvJointShPtr())->distance(CorvConfig(space), CorvConfig(space)),
    0.0);
}
