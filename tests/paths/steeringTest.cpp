#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvCSGroup.h"
#include "kinematics/orvDevice.h"
#include "metrics/orvMetricManhattan.h"
#include "metrics/orvMetricZero.h"
#include "paths/orvDPManhattan.h"
#include "paths/orvDPSequence.h"
#include "paths/orvSMComposite.h"
#include "paths/orvSMLinear.h"
#include "paths/orvSMLinearWithDiscreteEnds.h"
#include "paths/orvSMManhattan.h"
#include "paths/orvSMSequence.h"
#include "support/devices.h"
#include "support/logCapture.h"
#include "support/pathRecorder.h"
#include "support/spaces.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

namespace
{
constexpr double PI = ClumGeometryUtilities::PI;

std::vector<double> placeOn(const CorvDirectPathConstShPtr& i_path, double i_distance)
{
  return i_path->configAtDistance(i_distance)->dofValues();
}

/// What a path tells, and the ends of the straight motions in it.
ShPtr<PathRecorder> told(const CorvDirectPathConstShPtr& i_path)
{
  const ShPtr<PathRecorder> recorder = PathRecorder::create();
  i_path->describe(recorder);
  return recorder;
}

CorvDPManhattanShPtr manhattan(const CorvConfigSpaceShPtr& i_space, const std::vector<double>& i_start,
                               const std::vector<double>& i_end,
                               const CorvSMManhattanShPtr& i_method = CorvSMManhattan::create())
{
  return boost::dynamic_pointer_cast<CorvDPManhattan>(
    i_method->makeDirectPath(CorvConfig(i_space, i_start), CorvConfig(i_space, i_end)));
}
} // namespace

TEST(CorvDPManhattan, MovesOneDofAfterTheOtherEachByItsOwnMetric)
{
  const CorvDeviceShPtr arm = planarArm(3);
  const CorvConfigSpaceShPtr space = arm->configSpace();
  space->dof(1)->weightMultiplier(4.0);
  space->dof(2)->boundWithin(-6.0, 6.0);
  const CorvDPManhattanShPtr path = manhattan(space, {3.0, 0.0, 3.0}, {-3.0, 0.5, -3.0});
  ASSERT_TRUE(path);
  const double angle = CorvDof::revoluteWeightScaler();
  const double first = angle * (2.0 * PI - 6.0), second = angle * 4.0 * 0.5, third = angle * 6.0;
  EXPECT_NEAR(path->length(), first + second + third, 1e-12);
  EXPECT_EQ(placeOn(path, first), (std::vector<double>{-3.0, 0.0, 3.0}));
  EXPECT_NEAR(placeOn(path, 0.25 * first)[0], 3.0 + 0.25 * (2.0 * PI - 6.0), 1e-12);
  EXPECT_NEAR(placeOn(path, first + 0.5 * second)[1], 0.25, 1e-12);
  EXPECT_NEAR(placeOn(path, first + second + 0.75 * third)[2], -1.5, 1e-12);

  const ShPtr<PathRecorder> visitor = told(CorvDirectPath::createByExtractingFrom(path, first + 0.5 * second));
  EXPECT_EQ(visitor->told, "---");
  ASSERT_EQ(visitor->executed.size(), 3u);
  EXPECT_EQ(visitor->executed[0]->length(), 0.0);
  EXPECT_NEAR(visitor->executed[1]->startConfiguration().dofValue(1), 0.25, 1e-12);
  EXPECT_EQ(visitor->executed[1]->endConfiguration().dofValues(), (std::vector<double>{-3.0, 0.5, 3.0}));
  EXPECT_EQ(visitor->executed[2]->endConfiguration(), path->endConfiguration());

  EXPECT_TRUE(path->goLeft(0, 4.0) && path->goLeft(0, -1.0) && !path->goLeft(0, 1.0) && !path->goLeft(0, -4.0));
  for (const double turn : {PI, PI - 0.9e-7, -PI})
    EXPECT_FALSE(manhattan(space, {0.0, 0.0, 0.0}, {0.0, turn, 0.0}));
  space->dof(1)->lockAt(0.0);
  EXPECT_FALSE(manhattan(planarArm(3)->configSpace(), {0.0, 0.0, 0.0}, {0.0, 0.0, PI}));
  EXPECT_TRUE(manhattan(space, {0.0, 0.0, 0.0}, {0.0, 0.0, PI})) << "a bounded angle goes straight";
  EXPECT_FALSE(manhattan(makeMixedSpace(), {0.0, 0.0, 0.0, 0.0}, {1.0, 1.0, 1.0, 1.0})) << "no device";
}

TEST(CorvDPManhattan, ShufflesItsDofsOnlyWhenToldTo)
{
  const CorvConfigSpaceShPtr space = sixAxisArm()->configSpace();
  const std::vector<double> start(6, 0.0), end(6, 1.0);
  const std::vector<unsigned int> inOrder = {0, 1, 2, 3, 4, 5};
  const CorvSMManhattanShPtr method = CorvSMManhattan::create();
  std::vector<unsigned int> order;
  manhattan(space, start, end, method)->retrieveDofMotionOrder(order);
  EXPECT_EQ(order, inOrder);
  method->doesRandomizeDofOrder(true);
  EXPECT_FALSE(*method == *CorvSMManhattan::create());
  EXPECT_TRUE(*method == *method->clone());
  EXPECT_TRUE(dynamic_cast<const CorvMetricManhattan*>(method->metric().get()));

  // The order comes from the C runtime: neither does the library's seed decide it, nor does it use that up.
  std::srand(3);
  CorvUtility::randomSeed(1);
  const CorvDPManhattanShPtr shuffled = manhattan(space, start, end, method);
  const double drawn = CorvUtility::random(0.0, 1.0);
  CorvUtility::randomSeed(1);
  EXPECT_EQ(CorvUtility::random(0.0, 1.0), drawn);
  std::srand(3);
  std::vector<unsigned int> again;
  shuffled->retrieveDofMotionOrder(order);
  manhattan(space, start, end, method)->retrieveDofMotionOrder(again);
  EXPECT_EQ(order, again);
  EXPECT_NE(order, inOrder);
  EXPECT_EQ(placeOn(shuffled, shuffled->configSpace()->dof(order[0])->distance(0.0, 1.0))[order[0]], 1.0);
  std::sort(again.begin(), again.end());
  EXPECT_EQ(again, inOrder);

  // A refused reversal turns the order that is told, and nothing else.
  EXPECT_TRUE(shuffled->reverse().failed());
  shuffled->retrieveDofMotionOrder(again);
  std::reverse(again.begin(), again.end());
  EXPECT_EQ(again, order);
  EXPECT_EQ(placeOn(shuffled, 0.0), start);
}

TEST(CorvDPManhattan, KeepsTheOrderOfItsDofsInASpaceWhereTheyHaveOtherRanks)
{
  const CorvDeviceShPtr arm = planarArm(3);
  const CorvConfigSpaceShPtr space = arm->configSpace();
  const CorvSMManhattanShPtr method = CorvSMManhattan::create();
  method->doesRandomizeDofOrder(true);
  std::srand(5);
  const CorvDPManhattanShPtr path = manhattan(space, {0.1, 0.2, 0.3}, {1.1, -0.8, 2.3}, method);
  std::vector<unsigned int> before, after;
  path->retrieveDofMotionOrder(before);
  const CorvCSGroupShPtr turned = CorvCSGroup::create("test.turned");
  for (const unsigned int rank : {2u, 1u, 0u})
    ASSERT_TRUE(turned->appendSubspace(space->dof(rank)).succeeded());
  turned->device(arm);
  const auto converted =
    boost::dynamic_pointer_cast<CorvDPManhattan>(CorvDirectPath::createByConvertingToSpace(path, turned));
  ASSERT_TRUE(converted);
  converted->retrieveDofMotionOrder(after);
  for (unsigned int i = 0; i < 3; ++i)
    EXPECT_EQ(after[i], 2u - before[i]);
  EXPECT_DOUBLE_EQ(converted->length(), path->length());
  for (const double t : {0.0, 0.2, 0.5, 0.7, 1.0})
  {
    const std::vector<double> here = placeOn(path, t * path->length());
    const std::vector<double> there = placeOn(converted, t * path->length());
    for (unsigned int rank = 0; rank < 3; ++rank)
      EXPECT_NEAR(there[2 - rank], here[rank], 1e-12);
  }
  EXPECT_FALSE(CorvDirectPath::createByConvertingToSpace(path, CorvConfigSpaceShPtr()));
}

TEST(CorvDPManhattan, ADofThatJumpsWithoutALengthHasNoFiniteRate)
{
  const CorvConfigSpaceShPtr space = planarArm(2)->configSpace();
  space->dof(0)->metric(CorvMetricZero::create());
  const CorvDPManhattanShPtr path = manhattan(space, {0.0, 0.0}, {1.0, 1.0});
  std::vector<double> rates;
  path->maxAbsoluteDerivative(0.0, path->length(), rates);
  EXPECT_TRUE(std::isinf(rates[0]));
  EXPECT_DOUBLE_EQ(rates[1], 1.0 / CorvDof::revoluteWeightScaler());
}

TEST(CorvDPSequence, MovesItsSubspacesInTurn)
{
  const CorvCSCompositeShPtr angles = makeSpace({makeDof({true, true, 1.0}), makeDof({true, true, 1.0})});
  const CorvCSCompositeShPtr space = makeSpace({makeDof({false, false, 1.0}), angles, makeDof({false, false, 1.0})});
  const CorvSMSequenceShPtr method = CorvSMSequence::create();
  const auto path = boost::dynamic_pointer_cast<CorvDPSequence>(
    method->makeDirectPath(CorvConfig(space, {0.0, 0.0, 0.0, 5.0}), CorvConfig(space, {2.0, 3.0, 4.0, 5.0})));
  ASSERT_TRUE(path);
  const double turn = CorvDof::revoluteWeightScaler() * 5.0;
  EXPECT_EQ(path->countDirectPaths(), 3u);
  EXPECT_NEAR(path->length(), 2.0 + turn, 1e-12);
  EXPECT_EQ(placeOn(path, 1.0), (std::vector<double>{1.0, 0.0, 0.0, 5.0}));
  EXPECT_EQ(placeOn(path, 2.0), (std::vector<double>{2.0, 0.0, 0.0, 5.0}));
  const std::vector<double> within = placeOn(path, 2.0 + 0.5 * turn);
  EXPECT_EQ(within[0], 2.0);
  EXPECT_NEAR(within[1], 1.5, 1e-12);
  EXPECT_NEAR(within[2], 2.0, 1e-12);

  std::vector<double> rates;
  path->maxAbsoluteDerivative(0.0, 1.5, rates);
  EXPECT_EQ(rates, (std::vector<double>{1.0, 0.0, 0.0, 0.0}));
  path->maxAbsoluteDerivative(path->length(), 2.5, rates);
  EXPECT_EQ(rates[0], 0.0);
  EXPECT_NEAR(rates[1], 3.0 / turn, 1e-12);

  EXPECT_EQ(told(path)->told, "<-[-]->");
  const CorvDirectPathShPtr back = CorvDirectPath::createReversed(CorvDirectPath::createByExtracting(path, 1.0, 3.0));
  const ShPtr<PathRecorder> visitor = told(back);
  EXPECT_EQ(visitor->told, "<[-]->");
  EXPECT_NEAR(visitor->executed[0]->startConfiguration().dofValue(0), 3.0 / turn, 1e-12);
  EXPECT_EQ(visitor->executed[0]->endConfiguration().dofValues(), (std::vector<double>{0.0, 0.0}));
  EXPECT_EQ(visitor->executed[1]->startConfiguration().dofValues(), std::vector<double>{2.0});
  EXPECT_NEAR(visitor->executed[1]->endConfiguration().dofValue(0), 1.0, 1e-12);

  EXPECT_FALSE(method->isOriented(space));
  angles->steeringMethod(CorvSMLinear::create(true));
  EXPECT_TRUE(method->isOriented(space));
  space->dof(0)->steeringMethod(CorvSteeringMethodShPtr());
  EXPECT_FALSE(method->makeDirectPath(CorvConfig(space), CorvConfig(space))) << "a sub-space without a motion";
  EXPECT_FALSE(method->makeDirectPath(CorvConfig(space), CorvConfig(angles)));
}

TEST(CorvDPSequence, EndsWhereItsSubspacesChoseToEnd)
{
  const CorvCSCompositeShPtr space = makeSpace({makeDof({false, false, 1.0}), makeDof({false, false, 1.0})});
  space->dof(1)->steeringMethod(CorvSMLinearWithDiscreteEnds::create(0.5));
  const CorvDirectPathShPtr path =
    CorvSMSequence::create()->makeDirectPath(CorvConfig(space, {0.1, 0.1}), CorvConfig(space, {1.1, 1.1}));
  ASSERT_TRUE(path);
  EXPECT_EQ(path->startConfiguration().dofValues(), (std::vector<double>{0.1, 0.0}));
  EXPECT_EQ(path->endConfiguration().dofValues(), (std::vector<double>{1.1, 1.0}));
  space->dof(0)->metric(CorvMetricZero::create());
  const CorvDirectPathShPtr jump =
    CorvSMSequence::create()->makeDirectPath(CorvConfig(space, {0.0, 0.0}), CorvConfig(space, {1.0, 1.0}));
  std::vector<double> rates;
  jump->maxAbsoluteDerivative(0.0, jump->length(), rates);
  EXPECT_TRUE(std::isinf(rates[0]));
  jump->maxAbsoluteDerivative(0.5, jump->length(), rates);
  EXPECT_EQ(rates, (std::vector<double>{0.0, 1.0}));
  EXPECT_EQ(placeOn(jump, 0.5), (std::vector<double>{1.0, 0.5}));
}

TEST(CorvSMLinearWithDiscreteEnds, RoundsItsEndsToTheGrid)
{
  const CorvConfigSpaceShPtr space = makeMixedSpace();
  const CorvSMLinearWithDiscreteEndsShPtr method = CorvSMLinearWithDiscreteEnds::create(0.25, 0.125);
  ASSERT_TRUE(method);
  EXPECT_FALSE(method->isConservative(space) || method->isOriented(space));
  EXPECT_TRUE(method->isThreadSafe(space));
  const CorvDirectPathShPtr path =
    method->makeDirectPath(CorvConfig(space, {0.0, 0.2, -0.2, 0.3}), CorvConfig(space, {1.0, 1.3, -2.0, 2.2}));
  ASSERT_TRUE(path);
  // A value half way between goes up.
  EXPECT_EQ(path->startConfiguration().dofValues(), (std::vector<double>{0.125, 0.125, -0.125, 0.375}));
  EXPECT_EQ(path->endConfiguration().dofValues(), (std::vector<double>{1.125, 1.375, -1.875, 2.125}));
  const CorvDirectPathShPtr part = CorvDirectPath::createByExtractingTo(path, 0.4 * path->length());
  ASSERT_TRUE(part);
  for (const double value : part->endConfiguration().dofValues())
    EXPECT_EQ(std::remainder(value - 0.125, 0.25), 0.0);

  EXPECT_TRUE(*method == *CorvSMLinearWithDiscreteEnds::create(0.25, 0.125));
  EXPECT_FALSE(*method == *CorvSMLinearWithDiscreteEnds::create(0.25));
  EXPECT_FALSE(*method == *CorvSMLinear::create());
  const CorvDirectPathShPtr exact = CorvSMLinearWithDiscreteEnds::create(0.0)->makeDirectPath(
    CorvConfig(space, {0.1, 0.2, 0.3, 0.4}), CorvConfig(space, {1.0, 1.0, 1.0, 1.0}));
  EXPECT_EQ(exact->startConfiguration().dofValues(), (std::vector<double>{0.1, 0.2, 0.3, 0.4}));
  const LogCapture log;
  EXPECT_FALSE(CorvSMLinearWithDiscreteEnds::create(-0.1));
  EXPECT_TRUE(log.contains("CorvSMLinearWithDiscreteEnds must have positive step."));
  EXPECT_FALSE(CorvSMLinearWithDiscreteEnds::create(std::nan("")));
}
