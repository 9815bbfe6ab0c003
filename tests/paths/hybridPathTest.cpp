#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "paths/orvHybridPath.h"
#include "paths/orvPath.h"
#include "paths/orvSMLinear.h"
#include "paths/pathSuite.h"
#include "support/devices.h"
#include "support/logCapture.h"
#include "support/pathRecorder.h"
#include "support/spaces.h"

#include <gtest/gtest.h>

namespace
{
/// Three dofs under two spaces that hold the very same dofs in another order, and a sub-space of two of them.
struct Stages
{
  CorvCSCompositeShPtr pair = makeSpace({makeDof({false, false, 1.0}), makeDof({false, false, 1.0})});
  CorvDofShPtr angle = makeDof({true, false, 1.0});
  CorvCSCompositeShPtr ambient = makeSpace({pair, angle});
};

CorvPathShPtr chain(const std::vector<CorvConfig>& i_corners)
{
  const CorvPathShPtr path = CorvPath::createWithConfig(i_corners.front());
  for (std::size_t i = 1; i < i_corners.size(); ++i)
    path->appendDirectPath(CorvSMLinear::create()->makeDirectPath(i_corners[i - 1], i_corners[i]));
  return path;
}

/// Of two stages of lengths 1 and 2 along the first translation, from 0 to 3.
CorvHybridPathShPtr twoStages(const Stages& i_stages)
{
  const auto at = [&](double i_x) { return CorvConfig(i_stages.ambient, {i_x, 0.0, 0.0}); };
  const CorvHybridPathShPtr hybrid = CorvHybridPath::create(i_stages.ambient);
  EXPECT_TRUE(hybrid->appendPath(chain({at(0.0), at(1.0)})).succeeded());
  EXPECT_TRUE(hybrid->appendPath(chain({at(1.0), at(3.0)})).succeeded());
  return hybrid;
}

double placeAt(const CorvHybridPath& i_path, double i_distance)
{
  CorvConfig cfg;
  EXPECT_TRUE(i_path.getConfigAtDistance(i_distance, cfg).succeeded());
  return cfg.dofValue(0);
}

CorvAbstractPathShPtr makeHybridOnArm()
{
  const CorvDeviceShPtr arm = planarArm(2);
  const CorvHybridPathShPtr hybrid = CorvHybridPath::create(arm->configSpace());
  CorvConfig start = randomConfigOf(arm->configSpace(), 1.5);
  for (int stage = 0; stage < 3; ++stage)
  {
    const CorvConfig middle = randomConfigOf(arm->configSpace(), 1.5), end = randomConfigOf(arm->configSpace(), 1.5);
    if (hybrid->appendPath(chain({start, middle, end})).failed())
      return CorvAbstractPathShPtr();
    start = end;
  }
  return hybrid;
}

const PathKindEntry s_hybrid(PathKind("HybridPath", makeHybridOnArm).withoutBoundedMoves());
} // namespace

TEST(CorvHybridPath, RefusesWithTheStatusOfItsStep)
{
  const Stages stages;
  const CorvHybridPathShPtr hybrid = CorvHybridPath::create(stages.ambient);
  const CorvHybridPathConstShPtr none;
  EXPECT_FALSE(CorvHybridPath::create(CorvConfigSpaceShPtr()));
  EXPECT_TRUE(hybrid->appendPath(CorvPathConstShPtr()) == CorvHybridPath::NULL_PATH_ERROR);
  EXPECT_TRUE(hybrid->appendPath(CorvPath::create(CorvConfigSpaceShPtr(stages.ambient))) ==
              CorvHybridPath::EMPTY_PATH_ERROR);
  EXPECT_TRUE(hybrid->appendHybridPath(none) == lmStatus::FAILURE);
  CorvConfig cfg;
  EXPECT_TRUE(hybrid->getConfigAtStart(cfg) == CorvHybridPath::EMPTY_PATH_ERROR);
  EXPECT_TRUE(hybrid->getConfigAtEnd(cfg) == CorvHybridPath::EMPTY_PATH_ERROR);
  EXPECT_TRUE(hybrid->getConfigAtDistance(0.0, cfg).failed());
  EXPECT_EQ(hybrid->length(), 0.0);

  const CorvPathShPtr narrow = chain({CorvConfig(stages.pair, {0.0, 0.0}), CorvConfig(stages.pair, {1.0, 0.0})});
  EXPECT_TRUE(hybrid->appendPath(narrow) == CorvHybridPath::INVALID_CONFIG_SPACE_SIZE_ERROR);
  EXPECT_TRUE(hybrid->isEmpty());
  const CorvHybridPathShPtr filled = twoStages(stages);
  const auto at = [&](double i_x) { return CorvConfig(stages.ambient, {i_x, 0.0, 0.0}); };
  EXPECT_TRUE(filled->appendPath(chain({at(2.9), at(5.0)})) == CorvHybridPath::NON_EQUIVALENT_CONFIGS_ERROR);
  EXPECT_TRUE(filled->prependPath(chain({at(-2.0), at(0.1)})) == CorvHybridPath::NON_EQUIVALENT_CONFIGS_ERROR);
  EXPECT_EQ(filled->countPaths(), 2u);
  EXPECT_TRUE(filled->prependPath(chain({at(-2.0), at(0.0)})).succeeded());
  EXPECT_EQ(filled->length(), 5.0);
  EXPECT_EQ(placeAt(*filled, 0.5), -1.5);
}

TEST(CorvHybridPath, JoinsStagesWhoseSpacesHoldTheSameDofs)
{
  // The angle may differ by a turn: what counts is equivalence.
  const Stages stages;
  const CorvHybridPathShPtr hybrid = CorvHybridPath::create(stages.ambient);
  ASSERT_TRUE(hybrid->appendPath(chain({CorvConfig(stages.ambient, {0.0, 0.0, 3.0})})).succeeded());
  const double turn = 6.283185307179586;
  ASSERT_TRUE(hybrid
                ->appendPath(chain({CorvConfig(stages.ambient, {0.0, 0.0, 3.0 - turn}),
                                    CorvConfig(stages.ambient, {1.0, 0.0, 3.0 - turn})}))
                .succeeded());

  // A path of the device's internal space, asked in the space that clients use.
  const CorvDeviceShPtr arm = planarArm(2);
  const CorvConfigSpaceShPtr inner = arm->internalConfigSpace(), outer = arm->configSpace();
  const CorvHybridPathShPtr onArm = CorvHybridPath::create(outer);
  ASSERT_TRUE(onArm->appendPath(chain({CorvConfig(inner, {0.0, 0.0}), CorvConfig(inner, {1.0, 0.5})})).succeeded());
  CorvConfig cfg;
  ASSERT_TRUE(onArm->getConfigAtDistance(0.5 * onArm->length(), cfg).succeeded());
  EXPECT_EQ(cfg.space(), outer);
  EXPECT_DOUBLE_EQ(cfg.dofValue(0), 0.5);
  EXPECT_EQ(onArm->device(), arm);
}

TEST(CorvHybridPath, LocatesADistanceInItsPaths)
{
  const Stages stages;
  const CorvHybridPathShPtr hybrid = twoStages(stages);
  struct Case
  {
    double distance, inPath;
    unsigned int rank;
  };
  for (const Case& item : {Case{-1.0, 0.0, 0}, Case{0.5, 0.5, 0}, Case{1.0, 1.0, 0}, Case{1.5, 0.5, 1},
                           Case{3.0, 2.0, 1}, Case{9.0, 2.0, 1}})
  {
    double distance = item.distance;
    unsigned int rank = 7;
    EXPECT_EQ(hybrid->pathAtDistance(distance, rank), hybrid->path(item.rank));
    EXPECT_EQ(distance, item.inPath);
    EXPECT_EQ(rank, item.rank);
  }
  EXPECT_EQ(placeAt(*hybrid, 2.5), 2.5);
  EXPECT_FALSE(hybrid->path(2));
  const ShPtr<PathRecorder> recorder = PathRecorder::create();
  hybrid->describe(recorder);
  EXPECT_EQ(recorder->told, "{(.-.)(.-.)}");
  double goal = 0.0;
  bool hitsEnd = false;
  std::vector<double> allowances;
  EXPECT_TRUE(hybrid->boundedMoveByBody(0.0, CorvAbstractPath::FORWARD, goal, hitsEnd, allowances).failed());
}

TEST(CorvHybridPath, EditsAllOrNothing)
{
  const Stages stages;
  const CorvHybridPathShPtr hybrid = twoStages(stages);
  const CorvHybridPathShPtr across = CorvHybridPath::createByExtracting(hybrid, 0.25, 2.0);
  ASSERT_TRUE(across);
  EXPECT_DOUBLE_EQ(across->length(), 1.75);
  EXPECT_DOUBLE_EQ(placeAt(*across, 0.0), 0.25);
  EXPECT_DOUBLE_EQ(placeAt(*across, 1.0), 1.25);
  const CorvHybridPathShPtr within = CorvHybridPath::createByExtracting(hybrid, 1.5, 2.0);
  EXPECT_EQ(within->countPaths(), 1u);
  EXPECT_DOUBLE_EQ(placeAt(*within, 0.25), 1.75);
  EXPECT_DOUBLE_EQ(CorvHybridPath::createByExtractingFrom(hybrid, 2.0)->length(), 1.0);
  EXPECT_DOUBLE_EQ(CorvHybridPath::createByExtractingTo(hybrid, 2.0)->length(), 2.0);
  EXPECT_DOUBLE_EQ(CorvHybridPath::createByExtractingTo(hybrid, 99.0)->length(), 3.0);
  EXPECT_EQ(CorvHybridPath::createByExtractingPaths(hybrid, 1, 2)->length(), 2.0);
  EXPECT_FALSE(CorvHybridPath::createByExtractingPaths(hybrid, 1, 3));
  EXPECT_FALSE(CorvHybridPath::createByExtractingPaths(hybrid, 2, 1));
  {
    LogCapture log;
    EXPECT_TRUE(hybrid->extract(2.0, 1.0).failed());
    EXPECT_TRUE(log.contains("CorvHybridPath::extract(): end located before start."));
  }
  const CorvHybridPathShPtr back = CorvHybridPath::createReversed(hybrid);
  ASSERT_TRUE(back);
  EXPECT_DOUBLE_EQ(placeAt(*back, 0.5), 2.5);
  EXPECT_EQ(back->path(0)->length(), 2.0);
  EXPECT_EQ(hybrid->length(), 3.0);

  // A path that is oriented cannot go back: nothing changes.
  const auto at = [&](double i_x) { return CorvConfig(stages.ambient, {i_x, 0.0, 0.0}); };
  const CorvPathShPtr oneWay =
    CorvPath::createWithDirectPath(CorvSMLinear::create(true)->makeDirectPath(at(3.0), at(4.0)));
  ASSERT_TRUE(hybrid->appendPath(oneWay).succeeded());
  EXPECT_TRUE(hybrid->isOriented());
  EXPECT_TRUE(hybrid->reverse().failed());
  EXPECT_EQ(placeAt(*hybrid, 0.5), 0.5);

  // All of another hybrid path, or none of it.
  const CorvHybridPathShPtr other = CorvHybridPath::create(stages.ambient);
  ASSERT_TRUE(other->appendPath(chain({at(4.0), at(5.0)})).succeeded());
  ASSERT_TRUE(other->appendPath(chain({at(5.0), at(6.0)})).succeeded());
  ASSERT_TRUE(hybrid->appendHybridPath(other).succeeded());
  EXPECT_EQ(hybrid->countPaths(), 5u);
  EXPECT_TRUE(hybrid->appendHybridPath(other) == CorvHybridPath::NON_EQUIVALENT_CONFIGS_ERROR);
  EXPECT_EQ(hybrid->countPaths(), 5u);
  hybrid->clear();
  EXPECT_TRUE(hybrid->isEmpty());
}
