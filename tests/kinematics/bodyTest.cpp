#include "foundation/lumBox.h"
#include "foundation/lumScene.h"
#include "foundation/lumTestParameters.h"
#include "kinematics/orvBodyLumScene.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvJoint.h"
#include "support/devices.h"
#include "support/logCapture.h"

#include <gtest/gtest.h>

#include <cmath>

LUM_HANDLES(PlainBody)

/// A body without a shape or tolerance, that cannot be tested.
class PlainBody : public CorvBody
{
  LUM_UNREFLECTED(PlainBody, CorvBody);

public:
  static CorvBodyShPtr create() { return lumCreate<PlainBody>(); }
  CorvBodyShPtr clone() const override { return create(); }

protected:
  PlainBody() = default;
  void placeBody(const ClumMat4&) override {}
};

namespace
{
ClumMat4 placedAt(double i_x, double i_y, double i_z)
{
  ClumMat4 frame;
  frame.translate(i_x, i_y, i_z);
  return frame;
}

ClumGeometryShPtr unitBox()
{
  return ClumBox::create(1.0, 1.0, 1.0);
}

CorvBodyLumSceneShPtr onlyBodyOf(const CorvDeviceShPtr& i_device, unsigned int i_rank = 0)
{
  return boost::dynamic_pointer_cast<CorvBodyLumScene>(i_device->body(i_rank));
}
} // namespace

TEST(CorvBody, FreeBodyStandsAtItsRelativePositionAndMovesItsGeometries)
{
  const ClumGeometryShPtr box = unitBox();
  const CorvBodyLumSceneShPtr body = CorvBodyLumScene::create(box, placedAt(1.0, 0.0, 0.0));
  EXPECT_EQ(box->position(), placedAt(1.0, 0.0, 0.0));
  const unsigned int version = body->version();
  body->relativePosition(placedAt(0.0, 2.0, 0.0));
  EXPECT_EQ(body->absolutePosition(), placedAt(0.0, 2.0, 0.0));
  EXPECT_EQ(box->position(), placedAt(1.0, 2.0, 0.0));
  EXPECT_GT(body->version(), version);
  body->place(placedAt(9.0, 0.0, 0.0));
  EXPECT_EQ(box->position(), placedAt(10.0, 0.0, 0.0));
  EXPECT_EQ(body->absolutePosition(), placedAt(0.0, 2.0, 0.0));
  EXPECT_FALSE(CorvBodyLumScene::create({box, box}, {ClumMat4(), ClumMat4()}));
  EXPECT_FALSE(CorvBodyLumScene::create(ClumGeometryShPtr(), ClumMat4()));
  EXPECT_FALSE(CorvBodyLumScene::create(std::vector<ClumGeometryShPtr>{box}, std::vector<ClumMat4>()));
}

TEST(CorvBody, BodyOnAJointFollowsItAndRaisesTheDevicesVersionByShapeOnly)
{
  const ClumGeometryShPtr box = unitBox();
  const CorvDeviceShPtr device = freeFlyer(box);
  const CorvBodyLumSceneShPtr body = onlyBodyOf(device);
  const unsigned int version = device->version();
  ASSERT_TRUE(device->setCurrentConfig(CorvConfig(device, {1.0, 2.0, 3.0, 0.0, 0.0, 0.0})).succeeded());
  EXPECT_EQ(box->position(), placedAt(1.0, 2.0, 3.0));
  EXPECT_EQ(device->version(), version);
  ASSERT_TRUE(body->mobileObjectRelativePosition(0, placedAt(0.0, 0.0, 1.0)).succeeded());
  EXPECT_EQ(box->position(), placedAt(1.0, 2.0, 4.0));
  EXPECT_GT(device->version(), version);
  EXPECT_EQ(body->getBoundingSphereRadius(ClumPoint3(0.0, 0.0, 0.0)), std::sqrt(0.25 + 0.25 + 2.25));
  EXPECT_TRUE(body->mobileObjectRelativePosition(1, ClumMat4()).failed());

  ASSERT_TRUE(body->joint()->removeAttachedBody().succeeded());
  EXPECT_FALSE(body->joint());
  EXPECT_FALSE(body->hasMobileGroup());
  EXPECT_TRUE(box->canTakeExclusivePositionControl());
  EXPECT_EQ(device->countBodies(), 0u);
  ASSERT_TRUE(device->rootJoint()->setAttachedBody(body).succeeded());
  EXPECT_EQ(box->position(), placedAt(1.0, 2.0, 4.0));
  EXPECT_TRUE(body->hasMobileGroup());
}

TEST(CorvBody, ToleranceIsTheLargerObjectsPlusTheTestsAndNeedsAllThreeActive)
{
  const CorvDeviceShPtr device = twoFreeFlyers(unitBox(), unitBox());
  const CorvBodyLumSceneShPtr first = onlyBodyOf(device, 0), second = onlyBodyOf(device, 1);
  const ClumTestParametersShPtr test =
    device->innerCollisionScene()->testParameters(first->mobileGroup(), second->mobileGroup());
  ASSERT_TRUE(test);
  ASSERT_TRUE(first->setToleranceModifier(2.0).succeeded());
  ASSERT_TRUE(second->setToleranceModifier(3.0).succeeded());
  test->tolerance(0.5);
  EXPECT_EQ(CorvBodyLumScene::testTolerance(first.get(), second.get(), *test, 1.0), 4.5);
  EXPECT_EQ(CorvBodyLumScene::testTolerance(first.get(), nullptr, *test, 0.0), 2.5);
  double largest = 0.0;
  ASSERT_TRUE(first->getMaximumTolerance(largest).succeeded());
  EXPECT_EQ(largest, 3.5);
  for (unsigned int off = 0; off < 3; ++off)
  {
    ASSERT_TRUE(first->setToleranceActivation(off != 0).succeeded());
    ASSERT_TRUE(second->setToleranceActivation(off != 1).succeeded());
    test->toleranceActivation(off != 2);
    EXPECT_EQ(CorvBodyLumScene::testTolerance(first.get(), second.get(), *test, 1.0), 0.0);
  }
}

TEST(CorvBody, PushedTolerancesAddUpAndAFailureTakesAllBack)
{
  const CorvDeviceShPtr device = planarArm(2);
  const CorvBodyLumSceneShPtr body = onlyBodyOf(device);
  const auto modifier = [](const CorvBodyShPtr& i_body)
  {
    double value = -1.0;
    EXPECT_TRUE(i_body->getToleranceModifier(value).succeeded());
    return value;
  };
  ASSERT_TRUE(device->pushToleranceModifier(1.0).succeeded());
  ASSERT_TRUE(device->pushToleranceModifier(0.5).succeeded());
  EXPECT_EQ(modifier(device->body(1)), 1.5);
  ASSERT_TRUE(device->popToleranceModifier().succeeded());
  EXPECT_EQ(modifier(body), 1.0);
  ASSERT_TRUE(device->popToleranceModifier().succeeded());
  EXPECT_EQ(modifier(body), 0.0);
  EXPECT_TRUE(device->popToleranceModifier().failed());

  const CorvJointShPtr last = device->joint(1);
  ASSERT_TRUE(last->removeAttachedBody().succeeded());
  ASSERT_TRUE(last->setAttachedBody(PlainBody::create()).succeeded());
  EXPECT_TRUE(device->pushToleranceModifier(1.0).failed());
  EXPECT_TRUE(device->pushToleranceActivation(false).failed());
  EXPECT_EQ(modifier(body), 0.0);
  bool isActive = false;
  ASSERT_TRUE(body->getToleranceActivation(isActive).succeeded());
  EXPECT_TRUE(isActive);
  EXPECT_TRUE(body->popToleranceModifier().failed());
  EXPECT_EQ(last->addMobileGeometry(unitBox()), CorvJoint::MOBILE_BODY_CONFLICT_ERROR);
}

TEST(CorvBody, AnalysisAnswersAtAnyPositionWithoutMovingTheBody)
{
  const ClumGeometryShPtr box = unitBox(), wall = unitBox();
  const CorvDeviceShPtr device = freeFlyer(box);
  wall->position(placedAt(3.0, 0.0, 0.0));
  ASSERT_TRUE(device->addObstacleGeometry(wall).succeeded());
  const CorvBodyShPtr body = device->body(0);
  double distance = 0.0;
  ASSERT_TRUE(body->getExactDistance(distance, 0.0).succeeded());
  EXPECT_NEAR(distance, 2.0, 1e-6);
  ASSERT_TRUE(body->getEstimatedDistance(distance).succeeded());
  EXPECT_LE(distance, 2.0);
  EXPECT_GE(distance, 1.5);
  ClumPoint3 own, other;
  ASSERT_TRUE(body->measureDistance(0.0, distance, own, other).succeeded());
  EXPECT_NEAR(own.x(), 0.5, 1e-6);
  EXPECT_NEAR(other.x(), 2.5, 1e-6);

  const auto flags = [](int i_flags) { return static_cast<CorvBody::EDataFieldFlags>(i_flags); };
  using TParameters = CorvBody::CCollisionAnalysisParameters;
  const ClumMat4 near = placedAt(1.9, 0.0, 0.0), inside = placedAt(2.4, 0.0, 0.0);
  EXPECT_FALSE(body->isColliding(TParameters(CorvBody::EXACT_DISTANCE, 0.0, near, 0.0, true, flags(7)), distance));
  EXPECT_NEAR(distance, 0.1, 1e-6);
  EXPECT_TRUE(body->isColliding(TParameters(CorvBody::NO_DISTANCE, 0.0, inside, 0.0, true, flags(7)), distance));
  EXPECT_TRUE(body->isColliding(TParameters(CorvBody::NO_DISTANCE, 0.0, near, 0.2, true, flags(15)), distance));
  EXPECT_FALSE(body->isColliding(TParameters(CorvBody::NO_DISTANCE, 0.0, near, 0.2, false, flags(31)), distance));
  EXPECT_FALSE(
    body->isColliding(TParameters(CorvBody::DISTANCE_WITH_TOLERANCE, 0.0, near, 0.05, true, flags(15)), distance));
  EXPECT_NEAR(distance, 0.05, 1e-6);
  EXPECT_EQ(box->position(), ClumMat4());

  const TParameters defaults;
  EXPECT_EQ(defaults.distanceComputationMethod, 1);
  EXPECT_EQ(defaults.exactDistancePrecision, 0.0);
  EXPECT_EQ(defaults.fieldsToUse, 3);
  const LogCapture log;
  EXPECT_FALSE(PlainBody::create()->isColliding(defaults, distance));
  EXPECT_TRUE(log.contains("Assertion failed: false"));
}
