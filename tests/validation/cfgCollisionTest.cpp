#include "foundation/lumBox.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumScene.h"
#include "foundation/lumSphere.h"
#include "foundation/lumTestParameters.h"
#include "kinematics/orvBodyLumScene.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvJoint.h"
#include "paths/orvDirectPath.h"
#include "paths/orvSteeringMethod.h"
#include "support/devices.h"
#include "support/logCapture.h"
#include "validation/orvReportCfgCollision.h"
#include "validation/orvValidatorCfgLumScene.h"
#include "validation/orvValidatorSet.h"

#include <cmath>
#include <gtest/gtest.h>

namespace
{
const std::string PREFIX = "orvane.core.validator.cfg.collision.";

/// Balls of radius 1: one flies, one stands at the origin. At (x, 0, 0) they are x - 2 apart.
class CfgCollision : public testing::Test
{
protected:
  CfgCollision() : device(freeFlyer(ClumSphere::create(1.0))), obstacle(ClumSphere::create(1.0))
  {
    EXPECT_TRUE(device->addObstacleGeometry(obstacle).succeeded());
    space = device->configSpace();
    validator = device->collisionValidator();
  }

  CorvConfig at(double i_x) const { return CorvConfig(space, {i_x, 0.0, 0.0, 0.0, 0.0, 0.0}); }

  static ClumParameterMapShPtr exact(double i_precision = 0.0)
  {
    const ClumParameterMapShPtr params = ClumParameterMap::create();
    params->setInt(PREFIX + "method", 2).setDouble(PREFIX + "precision", i_precision);
    return params;
  }

  static CorvReportCfgCollisionConstShPtr reportOf(const CorvConfig& i_config)
  {
    return boost::dynamic_pointer_cast<const CorvReportCfgCollision>(
      i_config.report(CorvValidatorCfgCollisionBase::VALIDATOR_NAME));
  }

  double distanceAt(double i_x, const ClumParameterMapConstShPtr& i_params) const
  {
    const CorvConfig config = at(i_x);
    EXPECT_TRUE(validator->validate(config, i_params));
    const CorvReportCfgCollisionConstShPtr report = reportOf(config);
    return report && report->countDistances() == 1 ? report->distance(0) : -1.0;
  }

  CorvDeviceShPtr device;
  ClumGeometryShPtr obstacle;
  CorvConfigSpaceShPtr space;
  CorvValidatorCfgCollisionBaseShPtr validator;
};

/// A boolean question, asked of a configuration that may have an answer; how many tests it cost.
unsigned long testsFor(const CorvValidator& i_validator, const CorvConfig& i_config,
                       const ClumParameterMapConstShPtr& i_params = ClumParameterMapConstShPtr())
{
  const unsigned long before = CorvValidatorCfgCollisionBase::countTests();
  i_validator.validate(i_config, i_params);
  return CorvValidatorCfgCollisionBase::countTests() - before;
}
} // namespace

TEST_F(CfgCollision, TellsContactAndClearance)
{
  EXPECT_TRUE(validator->validate(at(2.1)));
  const CorvConfig touching = at(1.9);
  EXPECT_FALSE(validator->validate(touching));
  ASSERT_TRUE(reportOf(touching) && reportOf(touching)->contact());
  EXPECT_EQ(reportOf(touching)->contact()->body, 0);
  EXPECT_EQ(reportOf(touching)->contact()->otherBody, -1);
  EXPECT_EQ(reportOf(touching)->contact()->otherGeometry.lock(), obstacle);
  EXPECT_EQ(reportOf(touching)->countDistances(), 0u);

  EXPECT_NEAR(distanceAt(5.0, exact()), 3.0, 1e-4);
  EXPECT_LE(distanceAt(5.0, exact()), 3.0);
  const double coarse = distanceAt(5.0, exact(0.2));
  EXPECT_LE(coarse, 3.0);
  EXPECT_GE(coarse, 2.8);

  const ClumParameterMapShPtr points = exact();
  points->setInt(PREFIX + "report-distance-points-mode", 1);
  const CorvConfig apart = at(5.0);
  ASSERT_TRUE(validator->validate(apart, points));
  const CorvReportCfgCollisionPointsConstShPtr report =
    boost::dynamic_pointer_cast<const CorvReportCfgCollisionPoints>(reportOf(apart));
  ASSERT_TRUE(report && report->countPoints() == 1);
  EXPECT_LT(report->points(0).first.distanceFrom(ClumPoint3(4.0, 0.0, 0.0)), 1e-3);
  EXPECT_LT(report->points(0).second.distanceFrom(ClumPoint3(1.0, 0.0, 0.0)), 1e-3);
}

TEST_F(CfgCollision, MovesNothing)
{
  ASSERT_TRUE(device->setCurrentConfig(at(7.0)).succeeded());
  const ClumMat4 before = device->body(0)->absolutePosition();
  const ClumMat4 group = boost::static_pointer_cast<CorvBodyLumScene>(device->body(0))->mobileGroup()->position();
  validator->validate(at(1.0));
  validator->validate(at(3.0), exact());
  EXPECT_EQ(device->body(0)->absolutePosition(), before);
  EXPECT_EQ(boost::static_pointer_cast<CorvBodyLumScene>(device->body(0))->mobileGroup()->position(), group);
}

TEST_F(CfgCollision, ReportServesUntilTheWorldOrTheQuestionChanges)
{
  const CorvConfig config = at(5.0);
  EXPECT_EQ(testsFor(*validator, config), 1u);
  EXPECT_EQ(testsFor(*validator, config), 0u);
  EXPECT_EQ(testsFor(*validator, config, exact(0.2)), 1u); // a verdict has no distance
  EXPECT_EQ(testsFor(*validator, config, exact(0.5)), 0u);
  EXPECT_EQ(testsFor(*validator, config), 0u);
  EXPECT_EQ(testsFor(*validator, config, exact(0.01)), 1u);
  const ClumParameterMapShPtr noSelf = ClumParameterMap::create();
  noSelf->setBool(PREFIX + "autocol-activation", false);
  EXPECT_EQ(testsFor(*validator, config, noSelf), 1u);
  EXPECT_EQ(testsFor(*validator, config, noSelf), 0u);

  EXPECT_EQ(testsFor(*validator, config), 1u);
  ClumMat4 aside;
  aside.translate(3.5, 0.0, 0.0);
  obstacle->position(aside);
  EXPECT_FALSE(validator->upToDateReportFrom(config));
  EXPECT_EQ(testsFor(*validator, config), 1u);
  EXPECT_FALSE(config.isValid()); // 1.5 apart now

  // A contact stays a contact for every kind of question.
  EXPECT_EQ(testsFor(*validator, config, exact()), 0u);
  const ClumGeometryShPtr second = ClumBox::create(0.1, 0.1, 0.1);
  ASSERT_TRUE(device->addObstacleGeometry(second).succeeded());
  EXPECT_EQ(testsFor(*validator, config), 1u);
}

TEST_F(CfgCollision, ToleranceIsAContactDistanceAndGrowsIntoTheReport)
{
  const CorvConfig config = at(5.0);
  ASSERT_TRUE(device->pushToleranceModifier(0.5).succeeded());
  ASSERT_TRUE(validator->validate(config, exact()));
  EXPECT_NEAR(reportOf(config)->distance(0), 2.5, 1e-3);
  EXPECT_FALSE(validator->validate(at(2.4)));
  EXPECT_TRUE(validator->validate(at(2.6)));

  const CorvConfig copy = config; // shares the report
  ASSERT_TRUE(device->pushToleranceModifier(1.0).succeeded());
  EXPECT_EQ(testsFor(*validator, config, exact()), 0u);
  EXPECT_NEAR(reportOf(config)->distance(0), 1.5, 1e-3);
  EXPECT_EQ(reportOf(config)->toleranceModifier(0), 1.5);
  EXPECT_NEAR(reportOf(copy)->distance(0), 2.5, 1e-3);
  ASSERT_TRUE(device->popToleranceModifier().succeeded());
  EXPECT_EQ(testsFor(*validator, config, exact()), 0u);
  EXPECT_NEAR(reportOf(config)->distance(0), 1.5, 1e-3); // a smaller tolerance keeps the distance

  // Beyond the clearance the test is made again, and again when the tolerance that refused goes down.
  const ClumParameterMapShPtr large = exact();
  large->setDouble(PREFIX + "tolerance-modifier", 2.7);
  EXPECT_EQ(testsFor(*validator, config, large), 1u);
  EXPECT_FALSE(config.isValid());
  large->setDouble(PREFIX + "tolerance-modifier", 2.9);
  EXPECT_EQ(testsFor(*validator, config, large), 0u);
  large->setDouble(PREFIX + "tolerance-modifier", 2.4);
  EXPECT_EQ(testsFor(*validator, config, large), 1u);
  EXPECT_TRUE(config.isValid());
  large->setBool(PREFIX + "tolerance-activation", false);
  EXPECT_EQ(testsFor(*validator, config, large), 1u);
  EXPECT_NEAR(reportOf(config)->distance(0), 3.0, 1e-3);
  double tolerance = 0.0;
  EXPECT_TRUE(validator->getMaximumTolerance(device, tolerance).succeeded());
  EXPECT_EQ(tolerance, 0.5);
}

TEST_F(CfgCollision, DistanceModeComparesWithThresholds)
{
  const ClumParameterMapShPtr params = ClumParameterMap::create();
  params->setInt(PREFIX + "distance-mode", 1).setInt(PREFIX + "distance-comparison-mode", 1);
  params->setDouble(PREFIX + "distance-modifier", 0.25).setDouble(PREFIX + "distance-threshold-0", 1.0);
  EXPECT_FALSE(validator->validate(at(2.9), params));
  EXPECT_TRUE(validator->validate(at(3.1), params));
  EXPECT_FALSE(validator->validate(at(1.9), params));
  EXPECT_NEAR(distanceAt(4.0, params), 2.0 + 0.25 - 1.0, 1e-3);
  params->setInt(PREFIX + "distance-comparison-mode", 2);
  EXPECT_TRUE(validator->validate(at(2.9), params));
  EXPECT_FALSE(validator->validate(at(3.1), params));

  // The tolerances that the parameters name count in the collision mode alone; those of the bodies in mode 2 too.
  params->setDouble(PREFIX + "tolerance-modifier", 0.5).setInt(PREFIX + "distance-comparison-mode", 1);
  EXPECT_NEAR(distanceAt(4.0, params), 2.0 + 0.25 - 1.0, 1e-3);
  ASSERT_TRUE(device->pushToleranceModifier(0.5).succeeded());
  EXPECT_NEAR(distanceAt(4.0, params), 2.0 + 0.25 - 1.0, 1e-3);
  params->setInt(PREFIX + "distance-mode", 2);
  EXPECT_NEAR(distanceAt(4.0, params), 2.0 - 0.5 + 0.25 - 1.0, 1e-3);
  ASSERT_TRUE(device->popToleranceModifier().succeeded());
  params->setInt(PREFIX + "distance-mode", 1).setInt(PREFIX + "distance-comparison-mode", 2);

  const CorvConfig config = at(3.1);
  EXPECT_EQ(testsFor(*validator, config, params), 1u);
  params->setDouble(PREFIX + "distance-threshold-0", 1.5);
  EXPECT_EQ(testsFor(*validator, config, params), 1u);
  EXPECT_TRUE(config.isValid());
}

TEST_F(CfgCollision, MotionBoundStaysClear)
{
  const CorvConfig start = at(5.0);
  const CorvDirectPathShPtr path = space->steeringMethod()->makeDirectPath(start, at(-5.0));
  double bound = 0.0;
  bool isExact = true;
  const auto boundOf = [&](const ClumParameterMapConstShPtr& i_params)
  {
    return validator->validMotion(*path, 0.0, path->startConfiguration(), CorvAbstractPath::FORWARD, i_params, bound,
                                  isExact);
  };
  EXPECT_TRUE(boundOf(exact()).failed()); // nothing is known yet
  ASSERT_TRUE(validator->validate(path->startConfiguration(), exact()));
  EXPECT_TRUE(boundOf(exact()).succeeded());
  EXPECT_FALSE(isExact);
  EXPECT_LE(bound, 3.0);
  EXPECT_GT(bound, 2.9);
  const ClumParameterMapShPtr coarse = exact();
  coarse->setDouble("orvane.core.validator.dp.collision.penetration", 0.5);
  EXPECT_TRUE(boundOf(coarse).succeeded());
  EXPECT_NEAR(bound, 4.0, 0.01); // the distance and twice the penetration

  const CorvDirectPathShPtr near = space->steeringMethod()->makeDirectPath(at(2.0 + 0.8e-4), at(-5.0));
  ASSERT_TRUE(validator->validate(near->startConfiguration(), exact()));
  EXPECT_TRUE(
    validator->validMotion(*near, 0.0, near->startConfiguration(), CorvAbstractPath::FORWARD, exact(), bound, isExact)
      .failed());
}

TEST_F(CfgCollision, EmptyWorldIsFree)
{
  const CorvDeviceShPtr alone = freeFlyer(ClumSphere::create(1.0));
  const CorvConfig config(alone->configSpace());
  EXPECT_TRUE(alone->collisionValidator()->validate(config, exact()));
  ASSERT_TRUE(reportOf(config));
  EXPECT_TRUE(std::isinf(reportOf(config)->distance(0)));

  const CorvDeviceShPtr bare = CorvDevice::create();
  const CorvValidatorShPtr judge = CorvValidatorCfgLumScene::create(bare->configSpace());
  EXPECT_TRUE(judge->validate(CorvConfig(bare->configSpace())));
}

TEST(CfgCollisionOfTwoBodies, SharesOneDistanceAndCanBeSwitchedOff)
{
  const CorvDeviceShPtr device = twoFreeFlyers(ClumSphere::create(1.0), ClumSphere::create(1.0));
  const CorvConfigSpaceShPtr space = device->configSpace();
  const CorvValidatorCfgCollisionBaseShPtr validator = device->collisionValidator();
  CorvConfig config(space);
  config.dofValue(6, 3.0);
  const ClumParameterMapShPtr params = ClumParameterMap::create();
  params->setInt(PREFIX + "method", 2);
  ASSERT_TRUE(validator->validate(config, params));
  CorvReportCfgCollisionConstShPtr report = boost::dynamic_pointer_cast<const CorvReportCfgCollision>(
    config.report(CorvValidatorCfgCollisionBase::VALIDATOR_NAME));
  ASSERT_EQ(report->countDistances(), 2u);
  EXPECT_NEAR(report->distance(0), 1.0, 1e-3);
  EXPECT_NEAR(report->distance(1), 1.0, 1e-3);
  EXPECT_LE(report->allowance(0) + report->allowance(1), 1.0);
  EXPECT_GT(report->allowance(0) + report->allowance(1), 0.99);

  config.dofValue(6, 1.0);
  EXPECT_FALSE(validator->validate(config));
  const ClumParameterMapShPtr noSelf = ClumParameterMap::create();
  noSelf->setBool(PREFIX + "autocol-activation", false);
  EXPECT_TRUE(validator->validate(config, noSelf));

  // A specific body: one entry, or with allowances one a body.
  config.dofValue(6, 3.0);
  params->setInt(PREFIX + "specific-body", 1);
  ASSERT_TRUE(validator->validate(config, params));
  report = boost::dynamic_pointer_cast<const CorvReportCfgCollision>(
    config.report(CorvValidatorCfgCollisionBase::VALIDATOR_NAME));
  EXPECT_EQ(report->specificBody(), 1);
  EXPECT_EQ(report->countDistances(), 1u);
  EXPECT_EQ(report->countToleranceModifiers(), 1u);
  params->setBool(PREFIX + "report-max-allowable-distances", true).setInt(PREFIX + "specific-body", 0);
  ASSERT_TRUE(validator->validate(config, params));
  report = boost::dynamic_pointer_cast<const CorvReportCfgCollision>(
    config.report(CorvValidatorCfgCollisionBase::VALIDATOR_NAME));
  EXPECT_EQ(report->countDistances(), 2u);
}

TEST(CfgCollisionOfDevices, InACompositeSpaceEachDeviceIsTestedOnce)
{
  const CorvDeviceShPtr first = freeFlyer(ClumSphere::create(1.0));
  const CorvDeviceShPtr second = freeFlyer(ClumSphere::create(1.0));
  ASSERT_TRUE(second->addObstacleGeometry(ClumSphere::create(1.0)).succeeded());
  const CorvCSCompositeShPtr both = CorvCSComposite::create("test.both");
  const CorvConfigSpaceShPtr firstSpace = first->configSpace();
  const CorvConfigSpaceShPtr secondSpace = second->configSpace();
  ASSERT_TRUE(both->appendSubspace(firstSpace).succeeded());
  ASSERT_TRUE(both->appendSubspace(secondSpace).succeeded());
  CorvConfig config(both);
  EXPECT_FALSE(config.validate(ClumParameterMapConstShPtr()));
  config.dofValue(6, 4.0);
  const unsigned long before = CorvValidatorCfgCollisionBase::countTests();
  EXPECT_TRUE(config.validate(ClumParameterMapConstShPtr()));
  EXPECT_EQ(CorvValidatorCfgCollisionBase::countTests() - before, 2u);
}
