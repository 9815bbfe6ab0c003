#include "foundation/lumParameterMap.h"
#include "foundation/lumSphere.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvUtility.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "paths/orvSteeringMethod.h"
#include "support/devices.h"
#include "support/logCapture.h"
#include "support/meshes.h"
#include "support/samples.h"
#include "support/sumConstraint.h"
#include "validation/orvReportDPCollision.h"
#include "validation/orvValidatorCfgCollisionBase.h"
#include "validation/orvValidatorDPCollision.h"
#include "validation/orvReportPathCollision.h"
#include "validation/orvValidatorDPMonotonic.h"
#include "validation/orvValidatorDPSampler.h"
#include "validation/orvValidatorDPTurnJump.h"
#include "validation/orvValidatorPathCollision.h"
#include "validation/orvValidatorSet.h"

#include <gtest/gtest.h>

namespace
{
using Algorithm = CorvValidatorDPCollision::EAlgorithm;
const std::string DP_PREFIX = "orvane.core.validator.dp.collision.";

/// A flying ball of radius 1 and one that stands at the origin.
class DPCollision : public testing::Test
{
protected:
  DPCollision() : device(freeFlyer(ClumSphere::create(1.0)))
  {
    EXPECT_TRUE(device->addObstacleGeometry(ClumSphere::create(1.0)).succeeded());
    space = device->configSpace();
  }

  CorvValidatorDPCollisionShPtr make(double i_penetration,
                                     Algorithm i_algorithm = CorvValidatorDPCollision::DICHOTOMY) const
  {
    return CorvValidatorDPCollision::create(space, CorvValidatorConstShPtr(), i_penetration, i_algorithm);
  }

  CorvConfig at(double i_x, double i_y) const { return CorvConfig(space, {i_x, i_y, 0.0, 0.0, 0.0, 0.0}); }
  CorvDirectPathShPtr path(double i_x0, double i_y0, double i_x1, double i_y1) const
  {
    return space->steeringMethod()->makeDirectPath(at(i_x0, i_y0), at(i_x1, i_y1));
  }

  CorvDeviceShPtr device;
  CorvConfigSpaceShPtr space;
};

unsigned long configsFor(const CorvValidatorShPtr& i_validator, const CorvDirectPath& i_path, bool& o_isValid,
                         const ClumParameterMapConstShPtr& i_params = ClumParameterMapConstShPtr())
{
  const unsigned long before = CorvValidatorDPCollision::countTestedConfigs();
  o_isValid = i_validator->validate(i_path, i_params);
  return CorvValidatorDPCollision::countTestedConfigs() - before;
}
} // namespace

TEST_F(DPCollision, CreationRefusesWhatCannotWork)
{
  LogCapture log;
  EXPECT_FALSE(make(-1.0));
  EXPECT_TRUE(log.contains("Cannot create CorvValidatorDPCollision with negative penetration."));
  const CorvConfigSpaceShPtr other = sampleSpace();
  EXPECT_FALSE(CorvValidatorDPCollision::create(other, device->collisionValidator(), 1.0));
  EXPECT_TRUE(log.contains("CorvValidatorDPCollision config validator cannot work on another space."));

  const CorvValidatorShPtr set = space->directPathValidators();
  EXPECT_TRUE(CorvValidatorDPCollision::setPenetration(set, 0.25).succeeded());
  EXPECT_TRUE(CorvValidatorDPCollision::setPenetration(set, -0.25).failed());
  double penetration = 0.0;
  EXPECT_TRUE(CorvValidatorDPCollision::getPenetration(set, penetration).succeeded());
  EXPECT_EQ(penetration, 0.25);
  EXPECT_TRUE(CorvValidatorDPCollision::getPenetration(device->collisionValidator(), penetration).failed());
}

TEST_F(DPCollision, ClearPathCostsTwoConfigurations)
{
  for (const double penetration : {0.0, 0.5})
  {
    bool isValid = false;
    EXPECT_EQ(configsFor(make(penetration), *path(-3.0, 8.0, 3.0, 8.0), isValid), 2u);
    EXPECT_TRUE(isValid);
  }
}

TEST_F(DPCollision, ProgressiveMarksWhatIsProvedAndWhereItCollides)
{
  for (const double penetration : {0.0, 0.1})
    for (const bool isForward : {true, false})
    {
      const auto validator = make(penetration, isForward ? CorvValidatorDPCollision::PROGRESSIVE_FORWARD
                                                         : CorvValidatorDPCollision::PROGRESSIVE_BACKWARD);
      const CorvDirectPathShPtr colliding = path(-9.0, 0.0, 9.0, 0.0);
      const double middle = 0.5 * colliding->length();
      const double contact = middle * (isForward ? 1.0 - 2.0 / 9.0 : 1.0 + 2.0 / 9.0);
      EXPECT_FALSE(validator->validate(*colliding));
      EXPECT_FALSE(colliding->isValid());
      double proved = 0.0;
      double collision = 0.0;
      const std::string& mark =
        isForward ? CorvValidatorDPCollision::maxParamMark() : CorvValidatorDPCollision::minParamMark();
      ASSERT_TRUE(colliding->getMarkDistance(mark, proved).succeeded());
      ASSERT_TRUE(colliding->getMarkDistance(CorvValidatorDPCollision::collisionMark(), collision).succeeded());
      const double slope = colliding->length() / 18.0;
      EXPECT_LT(std::fabs(proved - contact), (2.0 * penetration + 0.71) * slope);
      EXPECT_TRUE(isForward ? proved < contact && collision >= contact - 1e-3
                            : proved > contact && collision <= contact + 1e-3);

      const CorvDirectPathShPtr part = validator->extractValidPart(colliding);
      ASSERT_TRUE(part);
      EXPECT_TRUE(part->isValid());
      EXPECT_NEAR(part->length(), isForward ? proved : colliding->length() - proved, 1e-9);
      EXPECT_TRUE(validator->upToDateReportFrom(*part));
      const CorvDirectPathShPtr shorter = validator->extractValidPart(colliding, 0.5);
      ASSERT_TRUE(shorter);
      EXPECT_NEAR(shorter->length(), part->length() - 0.5, 1e-9);
      const CorvDirectPathShPtr again =
        space->steeringMethod()->makeDirectPath(part->startConfiguration(), part->endConfiguration());
      EXPECT_TRUE(validator->validate(*again));
    }
  EXPECT_FALSE(make(1.0)->extractValidPart(path(-9.0, 0.0, 9.0, 0.0)));
}

TEST_F(DPCollision, DichotomyFindsTheMiddleFirstAndLeavesOnlyTheCollisionMark)
{
  const CorvDirectPathShPtr colliding = path(-9.0, 0.0, 9.0, 0.0);
  bool isValid = true;
  EXPECT_LE(configsFor(make(0.5), *colliding, isValid), 3u);
  EXPECT_FALSE(isValid);
  EXPECT_TRUE(colliding->hasMark(CorvValidatorDPCollision::collisionMark()));
  EXPECT_FALSE(colliding->hasMark(CorvValidatorDPCollision::maxParamMark()));
  EXPECT_FALSE(colliding->hasMark(CorvValidatorDPCollision::minParamMark()));
}

TEST_F(DPCollision, SampleoutCountsAsCollidingWithoutAMarkAndIsAskedAgain)
{
  const CorvDirectPathShPtr grazing = path(-9.0, 2.05, 9.0, 2.05);
  for (const Algorithm algorithm : {CorvValidatorDPCollision::DICHOTOMY, CorvValidatorDPCollision::PROGRESSIVE_FORWARD})
  {
    const CorvValidatorDPCollisionShPtr validator = make(0.0, algorithm);
    validator->sampleout(1);
    EXPECT_FALSE(validator->validate(*grazing));
    EXPECT_FALSE(grazing->hasMark(CorvValidatorDPCollision::collisionMark()));
    validator->sampleout(0);
    EXPECT_TRUE(validator->validate(*grazing));
    grazing->unvalidate();
    validator->timeout(0.0);
    EXPECT_FALSE(validator->validate(*grazing));
    EXPECT_FALSE(grazing->hasMark(CorvValidatorDPCollision::collisionMark()));
    grazing->unvalidate();
  }
}

TEST_F(DPCollision, ReportServesCoarserQuestionsIfValidAndFinerOnesIfNot)
{
  struct Case
  {
    const char* name;
    bool isFree;
    double made;
    double asked;
    int algorithmAsked;
    bool isReused;
  };
  const int dichotomy = CorvValidatorDPCollision::DICHOTOMY;
  const int forward = CorvValidatorDPCollision::PROGRESSIVE_FORWARD;
  const Case cases[] = {{"free, coarser", true, 2.0, 3.0, dichotomy, true},
                        {"free, same", true, 2.0, 2.0, forward, true},
                        {"free, finer", true, 2.0, 1.0, dichotomy, false},
                        {"colliding, coarser", false, 0.5, 1.0, dichotomy, false},
                        {"colliding, finer", false, 0.5, 0.1, dichotomy, true},
                        {"colliding, marks missing", false, 0.5, 0.5, forward, false}};
  for (const Case& test : cases)
  {
    const CorvDirectPathShPtr motion = test.isFree ? path(-3.0, 8.0, 3.0, 8.0) : path(-9.0, 0.0, 9.0, 0.0);
    const CorvValidatorDPCollisionShPtr validator = make(test.made);
    bool isValid = false;
    configsFor(validator, *motion, isValid);
    ASSERT_EQ(isValid, test.isFree) << test.name;
    const ClumParameterMapShPtr params = ClumParameterMap::create();
    params->setDouble(DP_PREFIX + "penetration", test.asked).setInt(DP_PREFIX + "algorithm", test.algorithmAsked);
    const unsigned long before = CorvValidatorDPCollision::countTests();
    EXPECT_EQ(validator->validate(*motion, params), test.isFree) << test.name;
    EXPECT_EQ(CorvValidatorDPCollision::countTests() == before, test.isReused) << test.name;
  }
}

TEST_F(DPCollision, ReportIsOutdatedByTheWorldTheEndsTheToleranceAndTheLength)
{
  const CorvValidatorDPCollisionShPtr validator = make(0.1);
  const CorvDirectPathShPtr motion = path(-3.0, 6.0, 3.0, 6.0);
  const auto isTestedAgain = [&](const ClumParameterMapConstShPtr& i_params = ClumParameterMapConstShPtr())
  {
    const unsigned long before = CorvValidatorDPCollision::countTests();
    validator->validate(*motion, i_params);
    return CorvValidatorDPCollision::countTests() != before;
  };
  const ClumParameterMapShPtr noGoal = ClumParameterMap::create();
  noGoal->setBool(DP_PREFIX + "test-goal", false);
  EXPECT_TRUE(isTestedAgain(noGoal));
  EXPECT_FALSE(isTestedAgain(noGoal));
  EXPECT_TRUE(isTestedAgain());
  EXPECT_FALSE(isTestedAgain(noGoal));

  ASSERT_TRUE(device->pushToleranceModifier(1.0).succeeded());
  EXPECT_TRUE(isTestedAgain());
  EXPECT_TRUE(motion->isValid());
  ASSERT_TRUE(device->popToleranceModifier().succeeded());
  EXPECT_FALSE(isTestedAgain());
  ASSERT_TRUE(device->pushToleranceModifier(4.5).succeeded());
  EXPECT_TRUE(isTestedAgain());
  EXPECT_FALSE(motion->isValid());
  ASSERT_TRUE(device->popToleranceModifier().succeeded());
  EXPECT_TRUE(isTestedAgain());
  EXPECT_TRUE(motion->isValid());

  const ClumGeometryShPtr wall = boxMesh(1.0, 12.0, 8.0);
  ASSERT_TRUE(device->addObstacleGeometry(wall).succeeded());
  EXPECT_TRUE(isTestedAgain());
  EXPECT_FALSE(motion->isValid());
  EXPECT_FALSE(isTestedAgain());
  ASSERT_TRUE(motion->extractTo(0.1 * motion->length()).succeeded());
  EXPECT_TRUE(isTestedAgain());
  EXPECT_TRUE(motion->isValid());
}

TEST_F(DPCollision, PathWithoutLengthIsJudgedByItsEnds)
{
  const CorvValidatorDPCollisionShPtr validator = make(0.0);
  bool isValid = true;
  EXPECT_EQ(configsFor(validator, *path(5.0, 0.0, 5.0, 0.0), isValid), 2u);
  EXPECT_TRUE(isValid);
  configsFor(validator, *path(1.0, 0.0, 1.0, 0.0), isValid);
  EXPECT_FALSE(isValid);
  validator->testStart(false);
  validator->testGoal(false);
  EXPECT_EQ(configsFor(validator, *path(1.0, 0.0, 1.0, 0.0), isValid), 0u);
  EXPECT_TRUE(isValid);
}

TEST_F(DPCollision, UntestedEndIsNotRefusedButWhatFollowsItIs)
{
  // The end lies in the obstacle: with the test off, a coarse proof may end there, an exact one may not.
  const CorvDirectPathShPtr into = path(6.0, 0.0, 1.9, 0.0);
  const CorvValidatorDPCollisionShPtr coarse = make(1.0);
  EXPECT_FALSE(coarse->validate(*into));
  coarse->testGoal(false);
  EXPECT_TRUE(coarse->validate(*into));
  for (const Algorithm algorithm : {CorvValidatorDPCollision::DICHOTOMY, CorvValidatorDPCollision::PROGRESSIVE_FORWARD,
                                    CorvValidatorDPCollision::PROGRESSIVE_BACKWARD})
  {
    const CorvValidatorDPCollisionShPtr exact = make(0.0, algorithm);
    exact->testStart(false);
    exact->testGoal(false);
    EXPECT_FALSE(exact->validate(*path(6.0, 0.0, 1.9, 0.0)));
    EXPECT_FALSE(exact->validate(*path(1.9, 0.0, 6.0, 0.0)));
    EXPECT_TRUE(exact->validate(*path(6.0, 0.0, 2.5, 0.0)));
  }
}

TEST_F(DPCollision, PenetrationBoundsHowThickAMissedContactIs)
{
  // With a penetration of p, each sample covers its clearance and p more: a path that goes deeper than p is refused.
  CorvUtility::randomSeed(3);
  for (int i = 0; i < 200; ++i)
  {
    const double penetration = CorvUtility::random(0.05, 1.0);
    const double depth = CorvUtility::random(1.1, 2.5) * penetration;
    const double y = 2.0 - depth;
    if (y < 0.0)
      continue;
    const double phase = CorvUtility::random(0.0, 3.0);
    for (const Algorithm algorithm :
         {CorvValidatorDPCollision::DICHOTOMY, CorvValidatorDPCollision::PROGRESSIVE_FORWARD,
          CorvValidatorDPCollision::PROGRESSIVE_BACKWARD})
      EXPECT_FALSE(make(penetration, algorithm)->validate(*path(-9.0 + phase, y, 5.0 + phase, y)))
        << penetration << " " << depth << " " << algorithm;
  }
}

TEST_F(DPCollision, AnswerDoesNotDependOnWhatWasAskedBefore)
{
  const CorvDeviceShPtr part = freeFlyer(longBar(3.0, 0.2));
  ASSERT_TRUE(part->addObstacleGeometry(clutter(5, 30, 8.0)).succeeded());
  const CorvConfigSpaceShPtr partSpace = part->configSpace();
  const auto ask = [&](const CorvValidatorShPtr& i_validator, unsigned int i_seed)
  {
    CorvUtility::randomSeed(i_seed);
    CorvConfig start(partSpace);
    CorvConfig end(partSpace);
    for (unsigned int i = 0; i < 6; ++i)
    {
      start.dofValue(i, CorvUtility::random(-3.0, 3.0));
      end.dofValue(i, start.dofValue(i) + CorvUtility::random(-0.6, 0.6));
    }
    bool isValid = false;
    const CorvDirectPathShPtr motion = partSpace->steeringMethod()->makeDirectPath(start, end);
    return configsFor(i_validator, *motion, isValid) + (isValid ? 1000u : 0u);
  };
  const CorvValidatorShPtr validator =
    CorvValidatorDPCollision::create(partSpace, CorvValidatorConstShPtr(), 0.0, CorvValidatorDPCollision::DICHOTOMY);
  std::vector<unsigned long> forwards;
  for (unsigned int seed = 0; seed < 100; ++seed)
    forwards.push_back(ask(validator, seed));
  for (unsigned int seed = 100; seed-- > 0;)
    EXPECT_EQ(ask(validator, seed), forwards[seed]) << seed;
}

// Where the judge is switched off, the ends keep the reports that the proof before gave them; of the world since, these
// tell nothing.
TEST_F(DPCollision, AJudgeThatIsSwitchedOffLeavesNoReportsToProveBy)
{
  const ClumGeometryShPtr wall = boxMesh(0.5, 20.0, 8.0);
  ASSERT_TRUE(device->addObstacleGeometry(wall).succeeded());
  const auto moveWall = [&](double i_x)
  {
    ClumMat4 pose;
    pose.setTranslation({i_x, 0.0, 0.0});
    wall->position(pose);
  };
  const CorvValidatorSetShPtr judge = CorvValidatorSet::create(space);
  ASSERT_TRUE(judge->add(device->collisionValidator()).succeeded());
  judge->isActivated(false);
  for (const Algorithm algorithm : {CorvValidatorDPCollision::DICHOTOMY, CorvValidatorDPCollision::PROGRESSIVE_FORWARD,
                                    CorvValidatorDPCollision::PROGRESSIVE_BACKWARD})
    for (const double penetration : {0.0, 0.5})
    {
      moveWall(50.0);
      const CorvDirectPathShPtr motion = path(-3.0, 8.0, 3.0, 8.0);
      bool isValid = false;
      EXPECT_EQ(configsFor(make(penetration, algorithm), *motion, isValid), 2u);
      EXPECT_TRUE(isValid);

      moveWall(0.0);
      const CorvValidatorShPtr unjudged = CorvValidatorDPCollision::create(space, judge, penetration, algorithm);
      const unsigned long count = configsFor(unjudged, *motion, isValid);
      EXPECT_TRUE(penetration == 0.0 ? !isValid : count > 5) << algorithm << " " << penetration << " " << count;
    }
}

TEST_F(DPCollision, WhatPassedWithoutAJudgeIsJudgedOnceItIsBack)
{
  ASSERT_TRUE(device->addObstacleGeometry(boxMesh(0.5, 20.0, 8.0)).succeeded());
  const CorvDirectPathShPtr motion = path(-3.0, 0.0, 3.0, 0.0);
  const CorvValidatorShPtr judge = device->collisionValidator();
  const CorvValidatorShPtr proof = CorvValidatorDPCollision::create(space, judge, 0.5);
  EXPECT_FALSE(proof->validate(*motion));
  judge->isActivated(false);
  EXPECT_TRUE(proof->validate(*motion));
  judge->isActivated(true);
  EXPECT_FALSE(proof->validate(*motion));
}

TEST(DPCollisionScale, AProofCostsTheSameInEveryUnit)
{
  for (const double relativePenetration : {0.0, 0.02})
  {
    std::vector<unsigned long> counts;
    for (const double unit : {1.0, 1e-3, 1e-6})
    {
      const CorvDeviceShPtr device = freeFlyer(ClumSphere::create(unit));
      ASSERT_TRUE(device->addObstacleGeometry(ClumSphere::create(unit)).succeeded());
      const CorvConfigSpaceShPtr space = device->configSpace();
      // Collisions alone are judged: the flyer's bounds do not grow with the unit.
      const CorvValidatorDPCollisionShPtr validator =
        CorvValidatorDPCollision::create(space, device->collisionValidator(), relativePenetration * unit);
      validator->zeroPenetrationSag(1e-4 * unit);
      const auto at = [&](double i_x) { return CorvConfig(space, {i_x * unit, 2.05 * unit, 0.0, 0.0, 0.0, 0.0}); };
      const CorvDirectPathShPtr grazing = space->steeringMethod()->makeDirectPath(at(-9.0), at(7.0));
      bool isValid = false;
      counts.push_back(configsFor(validator, *grazing, isValid));
      EXPECT_TRUE(isValid) << unit;
    }
    EXPECT_GT(counts[0], 4u);
    EXPECT_EQ(counts[1], counts[0]);
    EXPECT_EQ(counts[2], counts[0]);
  }
}

TEST_F(DPCollision, AttributesAreStacked)
{
  const CorvValidatorDPCollisionShPtr validator = make(1.0);
  validator->pushAttributes();
  EXPECT_TRUE(validator->penetration(0.0).succeeded());
  EXPECT_TRUE(validator->penetration(-1.0).failed());
  validator->algorithm(CorvValidatorDPCollision::PROGRESSIVE_FORWARD);
  validator->testGoal(false);
  validator->popAttributes();
  EXPECT_EQ(validator->penetration(), 1.0);
  EXPECT_EQ(validator->algorithm(), CorvValidatorDPCollision::DICHOTOMY);
  EXPECT_TRUE(validator->testGoal());
  validator->popAttributes();
  EXPECT_EQ(validator->penetration(), 1.0);
}

TEST(DPTurnJump, RefusesAJumpOfAComputedBoundedRotationOnly)
{
  const CorvCSCompositeShPtr space = CorvCSComposite::create("test.turn");
  const CorvDofShPtr shift = CorvDof::create(false);
  const CorvDofShPtr turn = CorvDof::create(true);
  ASSERT_TRUE(turn->boundWithin(-50.0, 50.0).succeeded());
  ASSERT_TRUE(space->appendSubspace(shift).succeeded());
  ASSERT_TRUE(space->appendSubspace(turn).succeeded());
  const CorvValidatorShPtr validator = CorvValidatorDPTurnJump::create(space);
  const auto isAccepted = [&](double i_end)
  {
    CorvConfig end(space);
    end.dofValue(0, i_end);
    return validator->validate(*space->steeringMethod()->makeDirectPath(CorvConfig(space), end));
  };
  EXPECT_TRUE(isAccepted(5.0)); // nothing is computed yet
  ASSERT_TRUE(space->constraints()->add(SumConstraint::create(space, "turn", {{{shift}, {turn}}})).succeeded());
  EXPECT_TRUE(isAccepted(3.0));
  EXPECT_FALSE(isAccepted(5.0));
  turn->isBounded(false);
  EXPECT_TRUE(isAccepted(5.0));
}

TEST_F(DPCollision, SamplerSeesOnlyItsSamplesAndTheEnd)
{
  LogCapture log;
  EXPECT_FALSE(CorvValidatorDPSampler::create(space, CorvValidatorConstShPtr(), 0.0));
  const auto sampler = CorvValidatorDPSampler::create(space, CorvValidatorConstShPtr(), 5.0);
  EXPECT_EQ(sampler->name(), "orvane.core.dp-sampler");
  const CorvDirectPathShPtr through = path(-9.0, 0.0, 9.0, 0.0);
  const double unit = through->length() / 18.0; // of path length, for one of distance
  ASSERT_TRUE(sampler->samplingLength(20.0 * unit).succeeded());
  EXPECT_TRUE(sampler->validate(*path(-9.0, 0.0, 9.0, 0.0)));
  ASSERT_TRUE(sampler->samplingLength(6.0 * unit).succeeded());
  EXPECT_TRUE(sampler->validate(*path(-9.0, 0.0, 9.0, 0.0))); // at -3 and 3
  ASSERT_TRUE(sampler->samplingLength(4.0 * unit).succeeded());
  EXPECT_FALSE(sampler->validate(*path(-9.0, 0.0, 9.0, 0.0))); // at -1
  ASSERT_TRUE(sampler->samplingLength(20.0 * unit).succeeded());
  EXPECT_FALSE(sampler->validate(*path(-9.0, 0.0, 0.5, 0.0)));
  EXPECT_TRUE(sampler->samplingLength(-1.0).failed());
  EXPECT_EQ(sampler->samplingLength(), 20.0 * unit);
}

TEST_F(DPCollision, MonotonicComparesTheEndsOfOneDof)
{
  struct Row
  {
    int profile;
    bool ups, stays, downs;
  };
  for (const Row& row : {Row{0, true, false, false}, Row{1, false, false, true}, Row{2, false, false, false},
                         Row{3, false, true, true}, Row{4, true, true, false}})
  {
    LogCapture log;
    const auto validator =
      CorvValidatorDPMonotonic::create(space, 1, static_cast<CorvValidatorDPMonotonic::EEvolutionProfile>(row.profile));
    EXPECT_EQ(validator->validate(*path(0.0, 1.0, 5.0, 2.0)), row.ups) << row.profile;
    EXPECT_EQ(validator->validate(*path(0.0, 1.0, 5.0, 1.0)), row.stays) << row.profile;
    EXPECT_EQ(validator->validate(*path(0.0, 1.0, 5.0, -2.0)), row.downs) << row.profile;
    EXPECT_EQ(log.contains("Assertion failed: false"), row.profile == 2);
  }
}

TEST_F(DPCollision, PathCollisionJudgesEachMotionAtItsPenetration)
{
  EXPECT_FALSE(CorvValidatorPathCollision::create(space, -0.1));
  const auto validator = CorvValidatorPathCollision::create(space, 0.0);
  const auto pathOver = [&](double i_height)
  {
    const CorvPathShPtr whole = CorvPath::createWithDirectPath(path(-9.0, 0.0, -4.0, i_height));
    EXPECT_TRUE(whole->appendDirectPath(path(-4.0, i_height, 4.0, i_height)).succeeded());
    EXPECT_TRUE(whole->appendDirectPath(path(4.0, i_height, 9.0, 0.0)).succeeded());
    return whole;
  };
  EXPECT_TRUE(validator->validate(*pathOver(2.1)));
  // A contact 0.02 deep: refused exactly, passed if that much may be missed, refused again afterwards.
  EXPECT_FALSE(validator->validate(*pathOver(1.98)));
  ASSERT_TRUE(validator->penetration(2.0).succeeded());
  const CorvPathShPtr grazing = pathOver(1.98);
  EXPECT_TRUE(validator->validate(*grazing));
  const auto report = boost::dynamic_pointer_cast<const CorvReportPathCollision>(grazing->report(validator->name()));
  ASSERT_TRUE(report);
  EXPECT_EQ(report->penetration(), 2.0);
  ASSERT_TRUE(validator->penetration(0.0).succeeded());
  EXPECT_FALSE(validator->validate(*pathOver(1.98)));

  for (const bool isExhaustive : {false, true})
  {
    validator->isExhaustive(isExhaustive);
    const CorvPathShPtr colliding = CorvPath::createWithDirectPath(path(-9.0, 0.0, 0.0, 0.0));
    ASSERT_TRUE(colliding->appendDirectPath(path(0.0, 0.0, 9.0, 0.0)).succeeded());
    const unsigned long before = CorvValidatorDPCollision::countTests();
    EXPECT_FALSE(validator->validate(*colliding));
    EXPECT_EQ(CorvValidatorDPCollision::countTests() - before, isExhaustive ? 2u : 1u);
  }
}
