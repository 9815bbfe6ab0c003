#include "foundation/lumBox.h"
#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJoint.h"
#include "kinematics/orvJointPlan.h"
#include "kinematics/orvJointTranslation.h"
#include "kinematics/orvKEEuclideanPath.h"
#include "kinematics/orvKEPath.h"
#include "kinematics/orvUtility.h"
#include "metrics/orvMetric.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "support/devices.h"
#include "support/spaces.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
double largestGap(const ClumMat4& i_a, const ClumMat4& i_b)
{
  double gap = 0.0;
  for (unsigned int i = 0; i < 16; ++i)
    gap = std::max(gap, std::fabs(i_a.data()[i] - i_b.data()[i]));
  return gap;
}

CorvPathShPtr drawnPath(const CorvDeviceShPtr& i_device, double i_range)
{
  const CorvPathShPtr path = CorvPath::create(i_device);
  while (path->countDirectPaths() < 4)
    path->addConfiguration(randomConfigOf(i_device->configSpace(), i_range));
  return path;
}

/// A cart on rails that carries a plate that shifts and turns, with a slide on it.
CorvDeviceShPtr cart()
{
  const CorvDeviceShPtr device = CorvDevice::create();
  ClumMat4 aside;
  aside.translate(0.5, 1.0, 0.0);
  const CorvJointShPtr rails = CorvJointTranslation::create(ClumMat4(), ClumMat4::X_AXIS);
  const CorvJointShPtr plate = CorvJointPlan::create(aside);
  plate->addJoint(CorvJointTranslation::create(aside, ClumMat4::Y_AXIS));
  rails->addJoint(plate);
  device->rootJoint(rails);
  return device;
}

/// The largest speeds of the frame with respect to the parameter, by finite differences.
void sampleSpeeds(const CorvKinematicalEffect& i_effect, double& o_linear, double& o_angular)
{
  constexpr int STEPS = 4000;
  o_linear = o_angular = 0.0;
  ClumMat4 before = i_effect.forward({0.0});
  for (int i = 1; i <= STEPS; ++i)
  {
    const ClumMat4 after = i_effect.forward({static_cast<double>(i) / STEPS});
    o_linear = std::max(o_linear, STEPS * (after.translation() - before.translation()).norm());
    o_angular = std::max(o_angular, STEPS * ClumGeometryUtilities::slerpAngle(before, after));
    before = after;
  }
}

std::vector<ClumMat4> drawnFrames(unsigned int i_count)
{
  std::vector<ClumMat4> frames(i_count);
  for (ClumMat4& frame : frames)
  {
    double values[6];
    for (double& value : values)
      value = CorvUtility::random(-1.4, 1.4);
    ClumGeometryUtilities::bryantToMatrix(values, frame);
  }
  return frames;
}
} // namespace

TEST(CorvKEPath, FollowsTheJointOfItsDevice)
{
  CorvUtility::randomSeed(71);
  const CorvDeviceShPtr arm = planarArm(3);
  const CorvPathShPtr path = drawnPath(arm, 1.5);
  const CorvKEPathShPtr effect = CorvKEPath::create(path, arm->joint(2), arm);
  ASSERT_TRUE(effect);
  EXPECT_EQ(effect->type(), "orvane.core.kinematical-effect.path");
  for (const double q : {0.0, 0.1, 0.5, 0.93, 1.0})
  {
    ClumMat4 expected, told;
    ASSERT_TRUE(arm->getJointPosition(arm->joint(2), *path->configAtParam(q), expected).succeeded());
    ASSERT_TRUE(effect->forward(&q, told).succeeded());
    EXPECT_EQ(told, expected);
  }
  EXPECT_EQ(effect->forward({-3.0}), effect->forward({0.0}));
  EXPECT_EQ(effect->forward({2.0}), effect->forward({1.0}));

  const CorvDofShPtr dof = effect->configSpace()->dof(0);
  EXPECT_FALSE(dof->isRevolute());
  EXPECT_TRUE(dof->isBounded());
  EXPECT_EQ(dof->vmin(), 0.0);
  EXPECT_EQ(dof->vmax(), 1.0);
  EXPECT_EQ(dof->metric()->type(), "orvane.core.kinematical-effect.path.metric");
  EXPECT_DOUBLE_EQ(dof->distance(0.25, 0.75), 0.5 * path->length());
  const CorvPathShPtr half = CorvPath::createByExtractingTo(path, 0.5 * path->length());
  effect->path(half);
  EXPECT_DOUBLE_EQ(dof->distance(0.0, 1.0), half->length());

  ClumMat4 mat;
  std::vector<double> values;
  const double q = 0.5;
  EXPECT_TRUE(effect->forward(static_cast<const double*>(nullptr), mat) == lmStatus::FAILURE);
  EXPECT_TRUE(effect->inverse(mat, values).failed());
  EXPECT_TRUE(effect->forwardDerivate(&q, 0, mat).failed());
  EXPECT_TRUE(effect->forwardSecondDerivate(&q, 0, 0, mat).failed());
  EXPECT_TRUE(effect->inverseVelocity(1.0, 0.0, 0.0, 0.0, ClumVect3(), values).failed());
  EXPECT_TRUE(CorvKEPath::create(CorvPathConstShPtr(), arm->joint(0), arm)->forward(&q, mat).failed());
  EXPECT_TRUE(CorvKEPath::create(path, planarArm(1)->joint(0), arm)->forward(&q, mat).failed());
}

TEST(CorvKEPath, VelocityBoundsTheMotionOfTheFrameAndIsNotFarFromIt)
{
  CorvUtility::randomSeed(72);
  double best = 0.0;
  for (int k = 0; k < 24; ++k)
  {
    const CorvDeviceShPtr device = k % 3 == 0 ? planarArm(3) : k % 3 == 1 ? sixAxisArm() : cart();
    const CorvPathShPtr path = drawnPath(device, 1.2);
    const CorvJointShPtr joint = device->joint(device->countJoints() - 1);
    const CorvKEPathShPtr effect = CorvKEPath::create(path, joint, device);
    double linear = 0.0, angular = 0.0, sampledLinear = 0.0, sampledAngular = 0.0;
    ASSERT_TRUE(effect->forwardVelocity({-1.0}, linear, angular).succeeded());
    sampleSpeeds(*effect, sampledLinear, sampledAngular);
    EXPECT_LE(sampledLinear, linear * (1.0 + 1e-6)) << k;
    EXPECT_LE(sampledAngular, angular * (1.0 + 1e-6)) << k;
    best = std::max(best, sampledLinear / linear);
    double half = 0.0, halfAngular = 0.0;
    effect->forwardVelocity({0.5}, half, halfAngular);
    EXPECT_DOUBLE_EQ(half, 0.5 * linear);
    EXPECT_DOUBLE_EQ(halfAngular, 0.5 * angular);
  }
  EXPECT_GT(best, 0.5);
}

TEST(CorvKEPath, MovesAJointOfAnotherDevice)
{
  CorvUtility::randomSeed(73);
  const CorvDeviceShPtr arm = planarArm(2);
  const CorvPathShPtr path = drawnPath(arm, 1.5);
  const CorvDeviceShPtr cartOnPath = CorvDevice::create();
  const CorvJointShPtr joint = CorvJoint::create(CorvKEPath::create(path, arm->joint(1), arm), ClumMat4());
  ASSERT_TRUE(joint);
  ASSERT_TRUE(cartOnPath->rootJoint(joint).succeeded());
  joint->addMobileGeometry(ClumBox::create(0.3, 0.2, 0.1));
  const CorvPathShPtr along = CorvPath::createWithDirectPath(CorvConfig(cartOnPath->configSpace(), {0.0}),
                                                             CorvConfig(cartOnPath->configSpace(), {1.0}));
  ASSERT_TRUE(along);
  double goal = 0.0;
  bool hitsEnd = false;
  const double allowed = 0.2;
  ASSERT_TRUE(along->boundedMove(0.0, CorvAbstractPath::FORWARD, goal, hitsEnd, allowed).succeeded());
  EXPECT_GT(goal, 0.0);
  std::vector<ClumMat4> before, after;
  along->getMatVectorAtDistance(0.0, before);
  for (int i = 1; i <= 100; ++i)
  {
    along->getMatVectorAtDistance(0.01 * i * goal, after);
    for (int corner = 0; corner < 8; ++corner)
    {
      const ClumPoint3 point(corner & 1 ? 0.15 : -0.15, corner & 2 ? 0.1 : -0.1, corner & 4 ? 0.05 : -0.05);
      EXPECT_LE((after[0] * point - before[0] * point).norm(), allowed);
    }
  }
}

TEST(CorvKEEuclideanPath, GoesFromFrameToFrame)
{
  CorvUtility::randomSeed(74);
  for (int k = 0; k < 10; ++k)
  {
    const std::vector<ClumMat4> frames = drawnFrames(4);
    const CorvKEEuclideanPathShPtr effect = CorvKEEuclideanPath::create(frames);
    ASSERT_TRUE(effect);
    const std::vector<ClumMat4> told = effect->mat4List();
    ASSERT_EQ(told.size(), frames.size());
    double before = 0.0;
    for (std::size_t i = 0; i < frames.size(); ++i)
    {
      EXPECT_LT(largestGap(told[i], frames[i]), 1e-12);
      EXPECT_LT(largestGap(effect->forward({before / effect->path()->length()}), frames[i]), 1e-9);
      before += i < 3 ? effect->path()->directPath(static_cast<unsigned int>(i))->length() : 0.0;
    }
    // Straight, and about one axis: the bounds are the speeds themselves.
    double linear = 0.0, angular = 0.0, sampledLinear = 0.0, sampledAngular = 0.0;
    ASSERT_TRUE(effect->forwardVelocity({1.0}, linear, angular).succeeded());
    sampleSpeeds(*effect, sampledLinear, sampledAngular);
    EXPECT_LE(sampledLinear, linear * (1.0 + 1e-6));
    EXPECT_LE(sampledAngular, angular * (1.0 + 1e-6));
    EXPECT_GE(sampledLinear, linear * (1.0 - 1e-2));
    EXPECT_GE(sampledAngular, angular * (1.0 - 1e-2));
  }
}

TEST(CorvKEEuclideanPath, IsCopiedCodedAndGivenAnotherPath)
{
  CorvUtility::randomSeed(75);
  const CorvKEEuclideanPathShPtr effect = CorvKEEuclideanPath::create(drawnFrames(3));
  const CorvKinematicalEffectShPtr copy = effect->clone();
  const auto coded = boost::dynamic_pointer_cast<CorvKinematicalEffect>(effect->cloneByCoding());
  for (const CorvKinematicalEffectShPtr& other : {copy, coded})
  {
    ASSERT_TRUE(other);
    EXPECT_TRUE(*other == *effect);
    EXPECT_NE(other->configSpace(), effect->configSpace());
    EXPECT_EQ(other->forward({0.3}), effect->forward({0.3}));
  }
  const CorvPathShPtr shorter = CorvPath::createByExtractingTo(effect->path(), 0.5 * effect->path()->length());
  ASSERT_TRUE(effect->path(shorter).succeeded());
  EXPECT_LT(largestGap(effect->forward({1.0}), copy->forward({0.5})), 1e-9);
  EXPECT_TRUE(effect->path(CorvPathConstShPtr()).failed());
  EXPECT_TRUE(effect->path(drawnPath(planarArm(2), 1.0)).failed());
  EXPECT_EQ(effect->path(), shorter);

  EXPECT_FALSE(CorvKEEuclideanPath::create({}));
  ClumMat4 halfTurn;
  halfTurn.rotate(0.0, 0.0, 1.0, ClumGeometryUtilities::PI);
  EXPECT_FALSE(CorvKEEuclideanPath::create({ClumMat4(), halfTurn}));
  const CorvKEEuclideanPathShPtr one = CorvKEEuclideanPath::create({halfTurn});
  ASSERT_TRUE(one);
  EXPECT_LT(largestGap(one->forward({0.5}), halfTurn), 1e-12);
}
