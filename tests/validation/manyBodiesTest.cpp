#include "foundation/lumBox.h"
#include "foundation/lumCapsule.h"
#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumFCLCollisionToolkit.h"
#include "foundation/lumGeometryCollection.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumSphere.h"
#include "kinematics/orvBodyLumScene.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvUtility.h"
#include "support/allocations.h"
#include "support/devices.h"
#include "support/meshes.h"
#include "validation/orvReportCfgCollision.h"
#include "validation/orvValidatorCfgLumScene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
const std::string MANY_BODIES_KEYS = "orvane.core.validator.cfg.collision.";

/// Bodies of all kinds in a hall of obstacles; each body is tested against its neighbour too.
class ManyBodies : public testing::Test
{
protected:
  static constexpr unsigned int BODIES = 12;

  ManyBodies()
  {
    const ClumLeafGeometryShPtr parts[] = {torusKnot(2, 3, 0.5, 0.1, 24, 5), ClumSphere::create(0.3),
                                           ClumBox::create(0.2, 1.4, 0.3), ClumCapsule::create(0.15, 0.9),
                                           lPart(0.9, 0.6, 0.2)};
    std::vector<ClumGeometryShPtr> carried;
    for (unsigned int i = 0; i < BODIES; ++i)
      carried.push_back(boost::static_pointer_cast<ClumGeometry>(parts[i % 5]->clone()));
    device = freeFlyers(carried);
    for (unsigned int i = 0; i < 60; ++i)
    {
      const ClumGeometryShPtr obstacle = boost::static_pointer_cast<ClumGeometry>(parts[i % 5]->clone());
      obstacle->position(randomPose());
      EXPECT_TRUE(device->addObstacleGeometry(obstacle).succeeded());
    }
    for (unsigned int i = 0; i + 1 < BODIES; ++i)
      EXPECT_TRUE(addSelfTest(device, i, i + 1).succeeded());
  }

  static ClumMat4 randomPose()
  {
    ClumMat4 pose;
    const auto number = [](double i_reach) { return CorvUtility::random(-i_reach, i_reach); };
    pose.rotate(number(1.0), number(1.0), number(1.0), number(3.0));
    const double x = number(9.0), y = number(9.0);
    pose.setTranslation({x, y, number(9.0)});
    return pose;
  }

  CorvReportCfgCollisionConstShPtr test(const CorvConfig& i_config, const ClumParameterMapConstShPtr& i_params) const
  {
    i_config.unvalidate();
    device->collisionValidator()->validate(i_config, i_params);
    return boost::dynamic_pointer_cast<const CorvReportCfgCollision>(
      i_config.report(CorvValidatorCfgCollisionBase::VALIDATOR_NAME));
  }

  /// The distance of each body from everything that it is tested with, pair by pair.
  std::vector<double> allPairs(const CorvConfig& i_config) const
  {
    std::vector<ClumMat4> poses;
    EXPECT_TRUE(device->computeBodyPositions(i_config, poses).succeeded());
    std::vector<std::vector<ClumPlacedLeaf>> leaves(BODIES + 1);
    for (unsigned int i = 0; i < BODIES; ++i)
      boost::static_pointer_cast<CorvBodyLumScene>(device->body(i))->mobileGroup()->getLeaves(leaves[i]);
    device->obstacleGroup()->getLeaves(leaves[BODIES]);
    poses.push_back(device->obstacleGroup()->position());
    std::vector<double> nearest(BODIES, std::numeric_limits<double>::infinity());
    const auto measure = [&](unsigned int i_first, unsigned int i_second)
    {
      double distance = std::numeric_limits<double>::infinity();
      for (const ClumPlacedLeaf& a : leaves[i_first])
        for (const ClumPlacedLeaf& b : leaves[i_second])
          distance = std::min(
            distance, device->collisionToolkit()
                        ->exactDistance(*a.leaf->collisionModel(*device->collisionToolkit()), poses[i_first] * a.frame,
                                        *b.leaf->collisionModel(*device->collisionToolkit()), poses[i_second] * b.frame)
                        .lower);
      nearest[i_first] = std::min(nearest[i_first], distance);
      if (i_second < BODIES)
        nearest[i_second] = std::min(nearest[i_second], distance);
    };
    for (unsigned int i = 0; i < BODIES; ++i)
    {
      measure(i, BODIES);
      if (i + 1 < BODIES)
        measure(i, i + 1);
    }
    return nearest;
  }

  static ClumParameterMapShPtr exactDistances()
  {
    const ClumParameterMapShPtr params = ClumParameterMap::create();
    params->setInt(MANY_BODIES_KEYS + "method", 2);
    return params;
  }

  CorvDeviceShPtr device;
};
} // namespace

TEST_F(ManyBodies, ReportSaysWhatAllPairsSay)
{
  CorvConfig config(device);
  unsigned int countFree = 0;
  for (int n = 0; n < 40; ++n)
  {
    config.randomize();
    const std::vector<double> expected = allPairs(config);
    const bool isFree = *std::min_element(expected.begin(), expected.end()) > 0.0;
    countFree += isFree;
    const CorvReportCfgCollisionConstShPtr verdict = test(config, ClumParameterMapConstShPtr());
    ASSERT_TRUE(verdict);
    EXPECT_EQ(verdict->isValid(), isFree);
    const CorvReportCfgCollisionConstShPtr report = test(config, exactDistances());
    EXPECT_EQ(report->isValid(), isFree);
    ASSERT_EQ(report->countDistances(), isFree ? BODIES : 0u);
    for (unsigned int i = 0; i < report->countDistances(); ++i)
      EXPECT_NEAR(report->distance(i), expected[i], 1e-9 * (1.0 + expected[i]));
  }
  EXPECT_GT(countFree, 4u);
  EXPECT_LT(countFree, 36u);
}

TEST_F(ManyBodies, LimitsKeepFarPairsFromBeingAsked)
{
  CorvConfig config(device);
  do
    config.randomize();
  while (!test(config, ClumParameterMapConstShPtr())->isValid());
  const auto queriesFor = [&](const ClumParameterMapConstShPtr& i_params)
  {
    const unsigned long before = CorvValidatorCfgCollisionBase::countQueries();
    test(config, i_params);
    return CorvValidatorCfgCollisionBase::countQueries() - before;
  };
  const unsigned long verdict = queriesFor(ClumParameterMapConstShPtr());
  const unsigned long distances = queriesFor(exactDistances());
  EXPECT_LT(verdict, BODIES);
  EXPECT_LT(distances, 8u * BODIES); // of 60 obstacles each

  // A proof that needs little, and one that needs much; what is told holds in either case.
  const std::vector<double> expected = allPairs(config);
  CorvCollisionQuery query;
  query.device = device.get();
  query.reportsMaxAllowableDistances = true;
  query.method = CorvCollisionQuery::ESTIMATED_DISTANCE;
  query.isBoundEnough = true;
  query.slack = 0.05;
  unsigned long last = 0;
  for (const double need : {0.1, 0.3, 1.0})
  {
    query.needs.assign(BODIES, need);
    const ClumParameterMapShPtr params = ClumParameterMap::create();
    params->setPointer(CorvCollisionQuery::parameterKey(), &query);
    const unsigned long queries = queriesFor(params);
    EXPECT_GE(queries, last);
    last = queries;
    const CorvReportCfgCollisionConstShPtr report = test(config, params);
    ASSERT_EQ(report->countAllowances(), BODIES);
    for (unsigned int i = 0; i < BODIES; ++i)
    {
      EXPECT_LE(report->allowance(i), expected[i] + query.slack);
      EXPECT_GE(report->allowance(i), std::min(need, 0.4 * expected[i]));
      if (report->isAllowanceCapped(i))
      {
        EXPECT_GE(report->allowance(i), 0.5 * need); // two bodies may share
      }
    }
  }
  EXPECT_LT(last, distances);
}

TEST_F(ManyBodies, BothToolkitsAgree)
{
  const ClumCollisionToolkitShPtr standard = device->collisionToolkit();
  const ClumCollisionToolkitShPtr peer = ClumFCLCollisionToolkit::create();
  CorvConfig config(device);
  unsigned int countFree = 0;
  for (int n = 0; n < 60; ++n)
  {
    config.randomize();
    device->collisionToolkit(standard);
    const CorvReportCfgCollisionConstShPtr ours = test(config, exactDistances());
    device->collisionToolkit(peer);
    const CorvReportCfgCollisionConstShPtr theirs = test(config, exactDistances());
    EXPECT_EQ(ours->isValid(), theirs->isValid());
    ASSERT_EQ(ours->countDistances(), theirs->countDistances());
    countFree += ours->isValid();
    for (unsigned int i = 0; i < ours->countDistances(); ++i)
      EXPECT_NEAR(ours->distance(i), theirs->distance(i), 1e-6);
  }
  EXPECT_GT(countFree, 5u);
}

TEST_F(ManyBodies, VerdictsAreSharedFreedReportsFilledAgainAndTestsAllocateNothing)
{
  CorvConfig first(device), second(device);
  do
    first.randomize();
  while (!test(first, ClumParameterMapConstShPtr())->isValid());
  do
    second.randomize();
  while (!test(second, ClumParameterMapConstShPtr())->isValid());
  const CorvReportCfgCollisionConstShPtr verdict = test(first, ClumParameterMapConstShPtr());
  EXPECT_EQ(test(second, ClumParameterMapConstShPtr()), verdict);
  ASSERT_TRUE(device->pushToleranceModifier(1e-3).succeeded());
  EXPECT_NE(test(second, ClumParameterMapConstShPtr()), verdict);
  EXPECT_EQ(verdict->toleranceModifier(0), 0.0);
  ASSERT_TRUE(device->popToleranceModifier().succeeded());

  // A report that somebody holds stays as it is.
  const CorvReportCfgCollisionConstShPtr held = test(first, exactDistances());
  const double distance = held->distance(0);
  for (int n = 0; n < 20; ++n)
  {
    second.randomize();
    EXPECT_NE(test(second, exactDistances()), held);
  }
  EXPECT_EQ(held->distance(0), distance);

  // But for the block in which a configuration keeps its reports, a test allocates nothing once it was made before.
  for (const ClumParameterMapConstShPtr& params :
       {ClumParameterMapConstShPtr(), ClumParameterMapConstShPtr(exactDistances())})
  {
    test(first, params);
    test(first, params);
    const std::size_t before = countAllocations();
    for (int n = 0; n < 20; ++n)
    {
      first.unvalidate();
      device->collisionValidator()->validate(first, params);
    }
    EXPECT_LE(countAllocations() - before, 20u);
  }
}
