#include "foundation/lumBox.h"
#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvKEFreeFlyer.h"
#include "kinematics/orvUtility.h"
#include "paths/orvDPSlerp.h"
#include "paths/orvSMSlerp.h"
#include "paths/pathSuite.h"
#include "support/devices.h"
#include "support/pathRecorder.h"
#include "support/spaces.h"

#include <eigen3/Eigen/Geometry>
#include <gtest/gtest.h>

#include <cmath>

namespace
{
constexpr double PI = ClumGeometryUtilities::PI;

CorvConfigSpaceShPtr solidSpace()
{
  return CorvKEFreeFlyer::create()->configSpace();
}

CorvDPSlerpShPtr slerp(const CorvConfigSpaceShPtr& i_space, const std::vector<double>& i_start,
                       const std::vector<double>& i_end)
{
  return boost::dynamic_pointer_cast<CorvDPSlerp>(
    CorvSMSlerp::create()->makeDirectPath(CorvConfig(i_space, i_start), CorvConfig(i_space, i_end)));
}

ClumMat4 frameOf(const CorvConfig& i_cfg)
{
  ClumMat4 frame;
  ClumGeometryUtilities::bryantToMatrix(i_cfg.beginPtr(), frame);
  return frame;
}

/// How far apart two frames are, whatever the names of their rotations; other dofs count by value.
double poseGap(const CorvConfig& i_a, const CorvConfig& i_b)
{
  const ClumMat4 a = frameOf(i_a), b = frameOf(i_b);
  double gap = 0.0;
  for (unsigned int i = 0; i < 16; ++i)
    gap = std::max(gap, std::fabs(a.data()[i] - b.data()[i]));
  for (unsigned int i = 6; i < i_a.size(); ++i)
    gap = std::max(gap, std::fabs(i_a.dofValue(i) - i_b.dofValue(i)));
  return gap;
}

template <int TENTHS>
CorvAbstractPathShPtr makeSlerp()
{
  const CorvConfigSpaceShPtr space = freeFlyer(ClumBox::create(1.0, 0.5, 0.25))->configSpace();
  const CorvConfig start = randomConfigOf(space, 0.1 * TENTHS), end = randomConfigOf(space, 0.1 * TENTHS);
  return CorvSMSlerp::create()->makeDirectPath(start, end);
}

// Within ry = ± pi/2 every frame has one name; beyond, the end may go by another than the motion.
const PathKindEntry s_slerp(PathKind("Slerp", makeSlerp<15>));
const PathKindEntry s_wideSlerp(PathKind("SlerpOfAnyNames", makeSlerp<40>).withGap(poseGap));

Eigen::Quaterniond quaternionOf(const ClumMat4& i_frame)
{
  Eigen::Matrix3d rotation;
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c)
      rotation(r, c) = i_frame(r, c);
  return Eigen::Quaterniond(rotation);
}
} // namespace

TEST(CorvDPSlerp, GoesAsASphericalInterpolationOfQuaternions)
{
  CorvUtility::randomSeed(51);
  const CorvConfigSpaceShPtr space = solidSpace();
  for (int k = 0; k < 300; ++k)
  {
    const CorvConfig start = randomConfigOf(space, 4.0), end = randomConfigOf(space, 4.0);
    const CorvDPSlerpShPtr path = slerp(space, start.dofValues(), end.dofValues());
    ASSERT_TRUE(path);
    const ClumMat4 from = frameOf(start), to = frameOf(end);
    for (const double t : {0.0, 1e-3, 0.25, 0.6, 0.999, 1.0})
    {
      const CorvConfigShPtr at = path->configAtParam(t);
      const Eigen::Quaterniond expected = quaternionOf(from).slerp(t, quaternionOf(to));
      EXPECT_LT(expected.angularDistance(quaternionOf(frameOf(*at))), 1e-7);
      const ClumVect3 place = from.translation() * (1.0 - t) + to.translation() * t;
      EXPECT_LT((frameOf(*at).translation() - place).norm(), 1e-12);
      ClumMat4 told;
      ASSERT_TRUE(path->getFrameAtDistance(t * path->length(), told).succeeded());
      EXPECT_EQ(told, frameOf(*at));
    }
    EXPECT_NEAR(path->angularSpeed() * path->length(), ClumGeometryUtilities::slerpAngle(from, to), 1e-9);
    EXPECT_NEAR(path->linearSpeed() * path->length(), (to.translation() - from.translation()).norm(), 1e-9);
  }
}

TEST(CorvDPSlerp, RatesAreTheLargestOnTheInterval)
{
  CorvUtility::randomSeed(52);
  const CorvConfigSpaceShPtr space = solidSpace();
  for (int k = 0; k < 200; ++k)
  {
    const CorvDPSlerpShPtr path =
      slerp(space, randomConfigOf(space, 1.4).dofValues(), randomConfigOf(space, 1.4).dofValues());
    ASSERT_TRUE(path);
    const double from = CorvUtility::random(0.0, 0.7) * path->length();
    const double to = from + CorvUtility::random(0.05, 0.3) * path->length();
    std::vector<double> rates, largest(6, 0.0);
    path->maxAbsoluteDerivative(from, to, rates);
    constexpr int STEPS = 2000;
    const double h = (to - from) / STEPS;
    std::vector<double> before = path->configAtDistance(from)->dofValues();
    for (int i = 1; i <= STEPS; ++i)
    {
      const std::vector<double> after = path->configAtDistance(from + i * h)->dofValues();
      for (unsigned int d = 0; d < 6; ++d)
        largest[d] = std::max(largest[d], std::fabs(after[d] - before[d]) / h);
      before = after;
    }
    for (unsigned int d = 0; d < 6; ++d)
    {
      EXPECT_LE(largest[d], rates[d] * (1.0 + 1e-9) + 1e-9) << k << " " << d;
      // What the samples miss is their spacing times how fast the rate changes: little, but near a lock of the angles.
      if (std::fabs(std::cos(before[4])) > 0.2)
      {
        EXPECT_GE(largest[d] * 1.02 + 1e-6, rates[d]) << k << " " << d;
      }
    }
  }
}

TEST(CorvDPSlerp, PassesTheLockOfTheAnglesWithoutAJump)
{
  const CorvConfigSpaceShPtr space = solidSpace();
  // A turn about y by 2.4, past a quarter turn: ry alone moves, at the angular speed.
  const CorvDPSlerpShPtr over = slerp(space, {0.0, 0.0, 0.0, 0.3, 0.2, 0.0}, {1.0, 0.0, 0.0, 0.3, 2.6, 0.0});
  ASSERT_TRUE(over);
  std::vector<double> rates;
  over->maxAbsoluteDerivative(0.0, over->length(), rates);
  EXPECT_NEAR(rates[3], 0.0, 1e-6);
  EXPECT_NEAR(rates[4], 2.4 / over->length(), 1e-6);
  EXPECT_NEAR(rates[5], 0.0, 1e-6);
  for (int i = 0; i <= 100; ++i)
  {
    const std::vector<double> values = over->configAtParam(0.01 * i)->dofValues();
    EXPECT_NEAR(values[3], 0.3, 1e-12);
    EXPECT_NEAR(values[4], 0.2 + 0.024 * i, 1e-9);
    EXPECT_NEAR(values[5], 0.0, 1e-12);
  }
  // The same frame at the end by its other name: only the very end changes its name.
  const CorvDPSlerpShPtr renamed =
    slerp(space, {0.0, 0.0, 0.0, 0.3, 0.2, 0.0}, {1.0, 0.0, 0.0, 0.3 + PI, PI - 2.6, PI});
  ASSERT_TRUE(renamed);
  EXPECT_LT(poseGap(*renamed->configAtParam(0.99), *over->configAtParam(0.99)), 1e-12);
  EXPECT_EQ(renamed->configAtParam(1.0)->dofValue(5), PI);

  // From and to a locked frame whose split into rx and rz is not that of the motion: the bound on bodies still holds,
  // since both rx and ry are told to go at least as fast as the frame turns.
  for (const bool isStart : {true, false})
  {
    const std::vector<double> locked = {0.0, 0.0, 0.0, 0.7, 0.5 * PI, -0.4}, free = {1.0, 0.0, 0.0, 0.2, 0.9, 0.1};
    const CorvDPSlerpShPtr path = isStart ? slerp(space, locked, free) : slerp(space, free, locked);
    ASSERT_TRUE(path);
    path->maxAbsoluteDerivative(0.0, path->length(), rates);
    for (const double rate : rates)
      EXPECT_TRUE(std::isfinite(rate));
    EXPECT_GE(rates[3], path->angularSpeed());
    EXPECT_GE(rates[4], path->angularSpeed());
    EXPECT_LT(poseGap(*path->configAtParam(1e-9), *path->configAtStart()), 1e-7);
    EXPECT_LT(poseGap(*path->configAtParam(1.0 - 1e-9), *path->configAtEnd()), 1e-7);
  }
}

TEST(CorvDPSlerp, BoundsTheMotionOfABodyNearTheLock)
{
  // Rods along each axis, which the wrong axis of a turn would miss.
  CorvUtility::randomSeed(53);
  for (int k = 0; k < 60; ++k)
  {
    const CorvDeviceShPtr device =
      freeFlyer(ClumBox::create(k % 3 == 0 ? 4.0 : 0.01, k % 3 == 1 ? 4.0 : 0.01, k % 3 == 2 ? 4.0 : 0.01));
    const CorvConfigSpaceShPtr space = device->configSpace();
    std::vector<double> start = randomConfigOf(space, 1.0).dofValues(), end = randomConfigOf(space, 1.0).dofValues();
    (k % 2 == 0 ? start : end)[4] = 0.5 * PI + (k % 5 == 0 ? 1e-9 : 0.0);
    const CorvDPSlerpShPtr path = slerp(space, start, end);
    ASSERT_TRUE(path);
    for (const auto direction : {CorvAbstractPath::FORWARD, CorvAbstractPath::BACKWARD})
    {
      const double t = direction == CorvAbstractPath::FORWARD ? 0.0 : path->length();
      double goal = 0.0;
      bool hitsEnd = false;
      const double allowed = 0.3;
      ASSERT_TRUE(path->boundedMove(t, direction, goal, hitsEnd, allowed).succeeded());
      const ClumMat4 before = frameOf(*path->configAtDistance(t));
      for (int i = 1; i <= 200; ++i)
      {
        const ClumMat4 after = frameOf(*path->configAtDistance(t + (goal - t) * i / 200.0));
        for (int tip = 0; tip < 6; ++tip)
        {
          const double reach = (tip % 2 == 0 ? 0.5 : -0.5) * (tip / 2 == k % 3 ? 4.0 : 0.01);
          const ClumPoint3 point(tip / 2 == 0 ? reach : 0.0, tip / 2 == 1 ? reach : 0.0, tip / 2 == 2 ? reach : 0.0);
          EXPECT_LE((after * point - before * point).norm(), allowed + 1e-9) << k;
        }
      }
    }
  }
}

TEST(CorvDPSlerp, IsRefusedWhereThereIsNoShortestRotation)
{
  const CorvConfigSpaceShPtr space = solidSpace();
  const std::vector<double> origin(6, 0.0);
  EXPECT_FALSE(slerp(space, origin, {0.0, 0.0, 0.0, PI, 0.0, 0.0}));
  EXPECT_FALSE(slerp(space, origin, {0.0, 0.0, 0.0, PI - 5e-8, 0.0, 0.0}));
  EXPECT_TRUE(slerp(space, origin, {0.0, 0.0, 0.0, PI - 1e-6, 0.0, 0.0}));
  // The same rotation under other angles is no turn at all.
  const CorvDPSlerpShPtr still = slerp(space, origin, {1.0, 0.0, 0.0, PI, PI, PI});
  ASSERT_TRUE(still);
  EXPECT_NEAR(still->angularSpeed(), 0.0, 1e-7);
  EXPECT_FALSE(
    CorvSMSlerp::create()->makeDirectPath(randomConfigOf(makeMixedSpace()), randomConfigOf(makeMixedSpace())));

  // A locked angle cannot follow a free rotation; a bounded one cannot change its name.
  const CorvConfigSpaceShPtr bounded = solidSpace();
  bounded->dof(5)->boundWithin(-4.0, 4.0);
  EXPECT_TRUE(slerp(bounded, {0.0, 0.0, 0.0, 0.0, 0.0, 3.0}, {0.0, 0.0, 0.0, 0.0, 0.0, 3.5}));
  EXPECT_FALSE(slerp(bounded, {0.0, 0.0, 0.0, 0.0, 0.0, 3.0}, {0.0, 0.0, 0.0, 0.0, 0.0, -3.0}));
  const CorvConfigSpaceShPtr locked = solidSpace();
  locked->dof(4)->lockAt(0.0);
  EXPECT_FALSE(slerp(locked, origin, {1.0, 0.0, 0.0, 0.0, 0.0, 0.5}));
}

TEST(CorvDPSlerp, TellsAVisitorThatItIsOne)
{
  const ShPtr<PathRecorder> recorder = PathRecorder::create();
  slerp(solidSpace(), std::vector<double>(6, 0.0), {1.0, 0.0, 0.0, 0.0, 0.5, 0.0})->describe(recorder);
  EXPECT_EQ(recorder->told, "~");
}
