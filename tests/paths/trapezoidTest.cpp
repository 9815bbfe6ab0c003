#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvUtility.h"
#include "paths/orvDPTrapezoidal.h"
#include "paths/orvPath.h"
#include "paths/orvSMLinear.h"
#include "paths/orvSMTrapezoidal.h"
#include "paths/orvTrajectoryTrapezoidal.h"
#include "paths/pathSuite.h"
#include "support/devices.h"
#include "support/logCapture.h"
#include "support/spaces.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
constexpr double PI = ClumGeometryUtilities::PI;
constexpr double INFINITE = std::numeric_limits<double>::infinity();

CorvDPTrapezoidalShPtr ramp(const CorvConfig& i_start, const CorvConfig& i_end, const std::vector<double>& i_velocities,
                            const std::vector<double>& i_accelerations)
{
  return boost::dynamic_pointer_cast<CorvDPTrapezoidal>(
    CorvSMTrapezoidal::create(i_velocities, i_accelerations)->makeDirectPath(i_start, i_end));
}

/// Of two translations from 0 to the given place.
CorvDPTrapezoidalShPtr rampOfTwo(const std::vector<double>& i_end, const std::vector<double>& i_velocities,
                                 const std::vector<double>& i_accelerations)
{
  const CorvConfigSpaceShPtr space = makeSpace({makeDof({false, false, 1.0}), makeDof({false, false, 1.0})});
  return ramp(CorvConfig(space), CorvConfig(space, i_end), i_velocities, i_accelerations);
}

std::vector<double> drawnLimits(unsigned int i_count)
{
  std::vector<double> limits(i_count);
  for (double& limit : limits)
    limit = CorvUtility::random(0, 9) == 0 ? INFINITE : CorvUtility::random(0.2, 3.0);
  limits[0] = std::min(limits[0], 3.0);
  return limits;
}

CorvDPTrapezoidalShPtr drawnRamp(const CorvConfigSpaceShPtr& i_space)
{
  const CorvConfig start = randomConfigOf(i_space, 2.0), end = randomConfigOf(i_space, 2.0);
  return ramp(start, end, drawnLimits(i_space->size()), drawnLimits(i_space->size()));
}

CorvAbstractPathShPtr makeRampOnArm()
{
  return drawnRamp(planarArm(3)->configSpace());
}

CorvAbstractPathShPtr makeRampInTree()
{
  return drawnRamp(makeMixedSpace());
}

// A cut piece stops at rest: it has other times.
const PathKindEntry s_rampOnArm(PathKind("TrapezoidalMotion", makeRampOnArm).withPartsMadeAnew(1e-9));
const PathKindEntry s_rampInTree(PathKind("TrapezoidalMotionInTree", makeRampInTree).withPartsMadeAnew(1e-9));
} // namespace

TEST(CorvDPTrapezoidal, IsTheIntegralOfItsAccelerationsWithinTheLimits)
{
  CorvUtility::randomSeed(61);
  const CorvConfigSpaceShPtr space = makeMixedSpace();
  const unsigned int size = space->size();
  int trapezoids = 0;
  for (int k = 0; k < 100; ++k)
  {
    const CorvDPTrapezoidalShPtr path = drawnRamp(space);
    if (!path)
      continue;
    trapezoids += path->isProfileTrapezoidal();
    const auto method = boost::dynamic_pointer_cast<CorvSMTrapezoidal>(path->steeringMethod());
    std::vector<double> place = path->startConfiguration().dofValues(), speed(size, 0.0), told, acceleration, peak;
    constexpr int STEPS = 4000;
    const double h = path->length() / STEPS;
    ASSERT_TRUE(path->getDofsAccelerationAtTime(0.0, peak).succeeded());
    double tightest = 0.0;
    for (int i = 0; i < STEPS; ++i)
    {
      ASSERT_TRUE(path->getDofsVelocityAtTime(i * h, told).succeeded());
      ASSERT_TRUE(path->getDofsAccelerationAtTime((i + 0.5) * h, acceleration).succeeded());
      const std::vector<double> values = path->configAtDistance(i * h)->dofValues();
      for (unsigned int d = 0; d < size; ++d)
      {
        // The steps miss the ends of the ramps by up to half a step.
        const double missed = 2.0 * std::fabs(peak[d]) * h + 1e-9;
        ASSERT_NEAR(told[d], speed[d], missed);
        ASSERT_NEAR(std::remainder(values[d] - place[d], 2.0 * PI), 0.0, missed * path->length() + 1e-9) << d;
        ASSERT_LE(std::fabs(told[d]), method->maxVelocities()[d] * (1.0 + 1e-12));
        ASSERT_LE(std::fabs(acceleration[d]), method->maxAccelerations()[d] * (1.0 + 1e-12));
        tightest = std::max(tightest, std::fabs(acceleration[d]) / method->maxAccelerations()[d]);
        place[d] += speed[d] * h + 0.5 * acceleration[d] * h * h;
        speed[d] += acceleration[d] * h;
      }
    }
    // Some dof is at its limit, or the motion could be faster.
    EXPECT_NEAR(tightest, 1.0, 1e-9);
    EXPECT_TRUE(path->getDofsVelocityAtTime(path->length(), told).failed());
    EXPECT_TRUE(path->getDofsAccelerationAtTime(-0.1, told).failed());
  }
  EXPECT_GT(trapezoids, 10);
  EXPECT_LT(trapezoids, 90);
}

TEST(CorvDPTrapezoidal, HasTheTimesOfItsProfile)
{
  // A triangle: 8 units at 2 a second squared take 2 * sqrt(8 / 2).
  const CorvDPTrapezoidalShPtr triangle = rampOfTwo({8.0, 1.0}, {100.0, 100.0}, {2.0, 2.0});
  EXPECT_FALSE(triangle->isProfileTrapezoidal());
  EXPECT_DOUBLE_EQ(triangle->length(), 4.0);
  std::vector<double> values;
  triangle->getDofsVelocityAtTime(1.0, values);
  EXPECT_DOUBLE_EQ(values[0], 2.0);
  triangle->maxAbsoluteDerivative(0.0, 1.0, values);
  EXPECT_DOUBLE_EQ(values[0], 4.0);
  EXPECT_DOUBLE_EQ(values[1], 0.5);

  // A trapezoid: 1 s up to 2, 3 s on the flat, 1 s down. Infinite limits do not limit.
  const CorvDPTrapezoidalShPtr flat = rampOfTwo({8.0, 1.0}, {2.0, INFINITE}, {2.0, INFINITE});
  EXPECT_TRUE(flat->isProfileTrapezoidal());
  EXPECT_DOUBLE_EQ(flat->length(), 5.0);
  EXPECT_DOUBLE_EQ(flat->configAtDistance(1.0)->dofValue(0), 1.0);
  EXPECT_DOUBLE_EQ(flat->configAtDistance(2.5)->dofValue(0), 4.0);
  EXPECT_DOUBLE_EQ(flat->configAtDistance(4.0)->dofValue(1), 0.875);
  flat->getDofsAccelerationAtTime(0.0, values);
  EXPECT_DOUBLE_EQ(values[0], 2.0);
  flat->getDofsAccelerationAtTime(2.5, values);
  EXPECT_EQ(values[0], 0.0);
  flat->getDofsAccelerationAtTime(4.5, values);
  EXPECT_DOUBLE_EQ(values[0], -2.0);

  // Nothing moves, or nothing holds it back: no time at all.
  const CorvDPTrapezoidalShPtr still = rampOfTwo({0.0, 0.0}, {1.0, 1.0}, {1.0, 1.0});
  EXPECT_EQ(still->length(), 0.0);
  const CorvDPTrapezoidalShPtr atOnce = rampOfTwo({8.0, 1.0}, {2.0, 1.0}, {INFINITE, INFINITE});
  EXPECT_EQ(atOnce->length(), 0.0);
  EXPECT_EQ(atOnce->configAtDistance(0.0)->dofValue(0), 0.0);
  EXPECT_EQ(atOnce->configAtEnd()->dofValue(0), 8.0);
}

TEST(CorvDPTrapezoidal, PiecesStartAndStopAtRest)
{
  const CorvDPTrapezoidalShPtr path = rampOfTwo({8.0, 1.0}, {2.0, 2.0}, {2.0, 2.0});
  path->setMark("mark", 1.0);
  // From 1 to 7: 6 units, of which 2 are ramps.
  ASSERT_TRUE(path->extract(1.0, 4.0).succeeded());
  EXPECT_DOUBLE_EQ(path->startConfiguration().dofValue(0), 1.0);
  EXPECT_DOUBLE_EQ(path->endConfiguration().dofValue(0), 7.0);
  EXPECT_DOUBLE_EQ(path->length(), 4.0);
  EXPECT_FALSE(path->hasMark("mark"));
  ASSERT_TRUE(path->reverse().succeeded());
  EXPECT_DOUBLE_EQ(path->configAtDistance(0.0)->dofValue(0), 7.0);
  std::vector<double> speed;
  ASSERT_TRUE(path->getDofsVelocityAtTime(0.0, speed).succeeded());
  EXPECT_EQ(speed, (std::vector<double>{0.0, 0.0}));
  EXPECT_TRUE(path->extract(2.0, 2.0).failed());
  EXPECT_TRUE(path->extractFrom(4.0).failed());
  EXPECT_DOUBLE_EQ(path->length(), 4.0);
}

TEST(CorvDPTrapezoidal, RefusesBadLimitsWithAReason)
{
  const CorvConfigSpaceShPtr space = makeSpace({makeDof({false, false, 1.0}), makeDof({true, false, 1.0})});
  const CorvConfig start(space), end(space, {1.0, 1.0});
  struct Case
  {
    std::vector<double> velocities, accelerations;
    const char* message;
  };
  const Case cases[] = {
    {{1.0, -1.0}, {1.0, 1.0}, "CorvDPTrapezoidal::init: Maximum velocity can not be a negative"},
    {{1.0, 1.0}, {-1.0, 1.0}, "CorvDPTrapezoidal::init: Maximum acceleration can not be negative"},
    {{1.0, 1.0}, {1.0, 0.0}, "CorvDPTrapezoidal::init: Maximum acceleration can not be nul"},
    {{1.0, std::nan("")}, {1.0, 1.0}, "CorvDPTrapezoidal::init: Maximum velocity can not be a negative"},
    {{INFINITE, 0.0},
     {INFINITE, 0.0},
     "CorvDPTrapezoidal::computeProfiles: Velocity or acceleration is not bounded by any Dof."}};
  for (const Case& item : cases)
  {
    LogCapture log;
    EXPECT_FALSE(ramp(start, end, item.velocities, item.accelerations));
    EXPECT_TRUE(log.contains(item.message)) << item.message;
  }
  EXPECT_FALSE(ramp(start, end, {1.0}, {1.0}));
  LogCapture log;
  EXPECT_FALSE(ramp(start, CorvConfig(space, {0.0, PI}), {1.0, 1.0}, {1.0, 1.0}));
  EXPECT_TRUE(log.contains("CorvDPTrapezoidal::init: Half turn is forbidden for actif revolute joint"));
  EXPECT_TRUE(ramp(start, end, {1.0, 0.0}, {1.0, 0.0}));
}

TEST(CorvTrajectoryTrapezoidal, TellsWhatItsMotionsTell)
{
  const CorvDeviceShPtr arm = planarArm(2);
  const CorvConfigSpaceShPtr space = arm->configSpace();
  const CorvSMTrapezoidalShPtr method = CorvSMTrapezoidal::create({1.0, 2.0}, {2.0, 2.0});
  const CorvConfig corners[] = {CorvConfig(space, {0.0, 0.0}), CorvConfig(space, {1.0, 0.5}),
                                CorvConfig(space, {1.5, -1.0})};
  const CorvPathShPtr path = CorvPath::create(space);
  path->appendDirectPath(method->makeDirectPath(corners[0], corners[1]));
  path->appendDirectPath(method->makeDirectPath(corners[1], corners[2]));
  const CorvTrajectoryTrapezoidalShPtr trajectory = CorvTrajectoryTrapezoidal::create(path);
  ASSERT_TRUE(trajectory);
  EXPECT_EQ(trajectory->duration(), path->length());
  const double h = 1e-6, junction = path->directPath(0)->length();
  std::vector<double> speed, later, acceleration;
  for (const double t : {0.2, 0.9 * junction, junction + 0.3, trajectory->duration() - 0.1})
  {
    ASSERT_TRUE(trajectory->getDofsVelocityAtTime(t, speed).succeeded());
    ASSERT_TRUE(trajectory->getDofsVelocityAtTime(t + h, later).succeeded());
    ASSERT_TRUE(trajectory->getDofsAccelerationAtTime(t, acceleration).succeeded());
    for (unsigned int d = 0; d < 2; ++d)
    {
      const double change = path->configAtDistance(t + h)->dofValue(d) - path->configAtDistance(t - h)->dofValue(d);
      EXPECT_NEAR(speed[d], change / (2.0 * h), 1e-6);
      EXPECT_NEAR(acceleration[d], (later[d] - speed[d]) / h, 1e-6);
    }
    std::vector<ClumMat4> told, expected;
    ASSERT_TRUE(trajectory->getJointPositionsAtTime(t, told).succeeded());
    ASSERT_TRUE(path->configAtDistance(t)->getJointMatVector(expected).succeeded());
    EXPECT_EQ(told, expected);
  }
  ASSERT_TRUE(trajectory->getDofsVelocityAtTime(junction, speed).succeeded());
  EXPECT_EQ(speed, (std::vector<double>{0.0, 0.0}));
  ASSERT_TRUE(trajectory->getDofsAccelerationAtTime(junction, acceleration).succeeded());
  EXPECT_GT(acceleration[0], 0.0);
  EXPECT_TRUE(trajectory->getDofsVelocityAtTime(trajectory->duration(), speed).failed());

  EXPECT_FALSE(CorvTrajectoryTrapezoidal::create(CorvPathShPtr()));
  path->appendDirectPath(CorvSMLinear::create()->makeDirectPath(corners[2], corners[0]));
  EXPECT_FALSE(CorvTrajectoryTrapezoidal::create(path));
}
