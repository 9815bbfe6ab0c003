#include "foundation/lumMat4.h"
#include "foundation/lumNotification.h"
#include "foundation/lumNotificator.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvJointRotation.h"
#include "metrics/orvMetricEuclidean.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "paths/orvSMLinear.h"
#include "paths/orvSteeringMethod.h"
#include "support/allocations.h"
#include "support/devices.h"
#include "support/logCapture.h"
#include "support/pathRecorder.h"
#include "support/spaces.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
/// Notes every notification that a path sends.
struct PathListener
{
  explicit PathListener(const CorvPathShPtr& i_path)
  {
    self.reset(this, [](PathListener*) {});
    const unsigned int ids[] = {ClumObject::WILL_CHANGE_PROPERTY,
                                ClumObject::DID_CHANGE_PROPERTY,
                                ClumObject::WILL_CHANGE_COLLECTION,
                                ClumObject::DID_CHANGE_COLLECTION,
                                CorvPath::WILL_CHANGE_CONFIGURATION_COUNT,
                                CorvPath::DID_CHANGE_CONFIGURATION_COUNT,
                                CorvAbstractPath::DID_CHANGE};
    for (const unsigned int id : ids)
      EXPECT_TRUE(i_path->objectNotificator()->subscribe(id, self, this, &PathListener::hear).succeeded());
  }

  void hear(const ShPtr<const ClumNotification>& i_notification)
  {
    const std::string element = i_notification->stringValue(ClumObject::ELEMENT_NAME_KEY);
    const unsigned int id = i_notification->id();
    if (id == CorvAbstractPath::DID_CHANGE)
      heard.push_back("changed");
    else if (id == CorvPath::WILL_CHANGE_CONFIGURATION_COUNT)
      heard.push_back("will count " + number(i_notification, CorvPath::NEW_COUNT_KEY) + " at " +
                      number(i_notification, CorvPath::AFFECTED_INDEX_KEY));
    else if (id == CorvPath::DID_CHANGE_CONFIGURATION_COUNT)
      heard.push_back("did count " + number(i_notification, CorvPath::OLD_COUNT_KEY) + " at " +
                      number(i_notification, CorvPath::AFFECTED_INDEX_KEY));
    else if (id == ClumObject::WILL_CHANGE_PROPERTY || id == ClumObject::DID_CHANGE_PROPERTY)
      heard.push_back((id == ClumObject::WILL_CHANGE_PROPERTY ? "will " : "did ") + element);
    else
      heard.push_back((id == ClumObject::WILL_CHANGE_COLLECTION ? "will " : "did ") + element + " " +
                      number(i_notification, ClumObject::ACTION_KEY) + " at " +
                      number(i_notification, ClumObject::INDEX_KEY));
  }

  static std::string number(const ShPtr<const ClumNotification>& i_notification, const std::string& i_key)
  {
    return std::to_string(i_notification->intValue(i_key));
  }

  ShPtr<PathListener> self;
  std::vector<std::string> heard;
};

std::vector<CorvDirectPathConstShPtr> directPathsOf(const CorvPath& i_path)
{
  std::vector<CorvDirectPathConstShPtr> all;
  for (unsigned int i = 0; i < i_path.countDirectPaths(); ++i)
    all.push_back(i_path.directPath(i));
  return all;
}

CorvCSCompositeShPtr makePlane()
{
  return makeSpace({makeDof({false, false, 1.0}), makeDof({false, false, 1.0})});
}

CorvPathShPtr pathThrough(const CorvConfigSpaceShPtr& i_space, const std::vector<std::vector<double>>& i_points)
{
  const CorvPathShPtr path = CorvPath::create(i_space);
  for (const std::vector<double>& point : i_points)
    EXPECT_TRUE(path->addConfiguration(CorvConfig(i_space, point)).succeeded());
  return path;
}

/// A polyline in the plane: what a path of linear motions must be.
class Polyline
{
public:
  using TPoint = std::vector<double>;
  std::vector<TPoint> points;

  static double between(const TPoint& i_a, const TPoint& i_b) { return std::hypot(i_b[0] - i_a[0], i_b[1] - i_a[1]); }
  double length() const
  {
    double total = 0.0;
    for (std::size_t i = 1; i < points.size(); ++i)
      total += between(points[i - 1], points[i]);
    return total;
  }
  TPoint at(double i_distance) const
  {
    double rest = i_distance;
    for (std::size_t i = 1; i < points.size(); ++i)
    {
      const double side = between(points[i - 1], points[i]);
      if (rest <= side)
        return {points[i - 1][0] + rest / side * (points[i][0] - points[i - 1][0]),
                points[i - 1][1] + rest / side * (points[i][1] - points[i - 1][1])};
      rest -= side;
    }
    return points.back();
  }
  /// The points strictly between two distances, with the places at these distances around them.
  std::vector<TPoint> part(double i_from, double i_to) const
  {
    std::vector<TPoint> kept = {at(i_from)};
    double distance = 0.0;
    for (std::size_t i = 1; i < points.size(); ++i)
    {
      distance += between(points[i - 1], points[i]);
      if (distance > i_from && distance < i_to)
        kept.push_back(points[i]);
    }
    kept.push_back(at(i_to));
    return kept;
  }
};

void expectSame(const CorvPath& i_path, const Polyline& i_model)
{
  ASSERT_EQ(i_path.countConfigurations(), i_model.points.size());
  for (unsigned int i = 0; i < i_model.points.size(); ++i)
    for (unsigned int k = 0; k < 2; ++k)
      ASSERT_NEAR(i_path.configuration(i).dofValue(k), i_model.points[i][k], 1e-10);
  ASSERT_NEAR(i_path.length(), i_model.length(), 1e-9);
  for (unsigned int i = 1; i < i_path.countDirectPaths(); ++i)
    ASSERT_TRUE(i_path.directPath(i - 1)->endConfiguration().isEquivalent(i_path.directPath(i)->startConfiguration()));
  const double d = CorvUtility::random(0.0, i_model.length());
  ASSERT_NEAR(Polyline::between(i_path.configAtDistance(d)->dofValues(), i_model.at(d)), 0.0, 1e-9);
}

std::vector<double> randomPoint()
{
  return {CorvUtility::random(-5.0, 5.0), CorvUtility::random(-5.0, 5.0)};
}

/// One random edit of a path and of its model. @return false if the edit must fail.
bool editBoth(CorvPath& io_path, Polyline& io_model, lmStatus& o_status)
{
  std::vector<Polyline::TPoint>& points = io_model.points;
  const CorvConfigSpaceShPtr space = io_path.configSpace();
  const unsigned int count = static_cast<unsigned int>(points.size());
  const unsigned int i = static_cast<unsigned int>(CorvUtility::random(0, static_cast<int>(count) + 1));
  const double whole = io_model.length();
  const double a = CorvUtility::random(0.0, whole), b = CorvUtility::random(0.0, whole);
  const Polyline::TPoint fresh = randomPoint();
  switch (CorvUtility::random(0, 7))
  {
  case 0:
    o_status = io_path.addConfiguration(CorvConfig(space, fresh));
    points.push_back(fresh);
    return true;
  case 1:
    o_status = io_path.setConfiguration(i, CorvConfig(space, fresh));
    if (i >= count)
      return false;
    points[i] = fresh;
    return true;
  case 2:
    o_status = io_path.reverse();
    std::reverse(points.begin(), points.end());
    return true;
  case 3:
  {
    const CorvPathShPtr other = pathThrough(space, {points.back(), fresh, randomPoint()});
    o_status = io_path.appendPath(other);
    for (unsigned int k = 1; k < 3; ++k)
      points.push_back(other->configuration(k).dofValues());
    return true;
  }
  case 4:
    if (count < 3)
    {
      o_status = io_path.extractDirectPaths(0, count);
      return false;
    }
    o_status = io_path.extractDirectPaths(1, count - 1);
    points.erase(points.begin());
    return true;
  case 5:
    o_status = io_path.extract(a, b);
    if (b < a)
      return false;
    points = io_model.part(a, b);
    return true;
  case 6:
  {
    // A detour between two ranks; wrong by a point where it must be refused.
    const unsigned int first = std::min(i, count - 1);
    const bool isWrong = first > 0 && CorvUtility::random(0, 1) == 0;
    o_status =
      io_path.replacePart(first, first, pathThrough(space, {isWrong ? fresh : points[first], fresh, points[first]}));
    if (isWrong)
      return false;
    points.insert(points.begin() + first, {points[first], fresh});
    return true;
  }
  default:
  {
    const double from = std::min(a, b), to = std::max(a, b);
    const bool isWrong = CorvUtility::random(0, 2) == 0;
    const Polyline::TPoint start = io_model.at(from), end = isWrong ? randomPoint() : io_model.at(to);
    o_status = io_path.replacePart(from, to, pathThrough(space, {start, fresh, end}));
    if (isWrong)
      return false;
    std::vector<Polyline::TPoint> all = io_model.part(0.0, from);
    const std::vector<Polyline::TPoint> tail = io_model.part(to, whole);
    all.push_back(fresh);
    all.insert(all.end(), tail.begin(), tail.end());
    points = all;
    return true;
  }
  }
}
} // namespace

TEST(CorvPath, IsAPolylineUnderRandomEditsAndAFailedOneChangesNothing)
{
  int refused = 0, edits = 0;
  for (unsigned int seed = 0; seed < 40; ++seed)
  {
    CorvUtility::randomSeed(seed);
    const LogCapture quiet;
    const CorvConfigSpaceShPtr space = makePlane();
    Polyline model;
    for (int i = 0; i < 4; ++i)
      model.points.push_back(randomPoint());
    const CorvPathShPtr path = pathThrough(space, model.points);
    PathListener listener(path);
    for (int edit = 0; edit < 15; ++edit)
    {
      const auto before = directPathsOf(*path);
      listener.heard.clear();
      lmStatus status;
      Polyline edited = model;
      const bool mustSucceed = editBoth(*path, edited, status);
      ASSERT_EQ(status.succeeded(), mustSucceed) << "seed " << seed << " edit " << edit << status.description();
      if (mustSucceed)
        model = edited;
      else
      {
        ASSERT_TRUE(listener.heard.empty());
        ASSERT_EQ(directPathsOf(*path), before);
        ++refused;
      }
      ++edits;
      ASSERT_NO_FATAL_FAILURE(expectSame(*path, model)) << "seed " << seed << " edit " << edit;
    }
  }
  EXPECT_GT(refused, edits / 20);
}

TEST(CorvPath, AnnouncesAChangeInOneOrder)
{
  const CorvConfigSpaceShPtr space = makePlane();
  const CorvPathShPtr path = pathThrough(space, {{0.0, 0.0}, {1.0, 0.0}});
  PathListener listener(path);
  ASSERT_TRUE(path->addConfiguration(CorvConfig(space, {2.0, 0.0})).succeeded());
  EXPECT_EQ(listener.heard,
            (std::vector<std::string>{"will length", "will count 3 at 2", "will directPaths 0 at 1",
                                      "did directPaths 0 at 1", "did count 2 at 2", "did length", "changed"}));
  listener.heard.clear();
  ASSERT_TRUE(path->reverse().succeeded());
  EXPECT_EQ(listener.heard, (std::vector<std::string>{"will length", "will directPaths 2 at -1",
                                                      "did directPaths 2 at -1", "did length", "changed"}));
  listener.heard.clear();
  EXPECT_TRUE(path->appendDirectPath(CorvDirectPathConstShPtr()) == CorvPath::NULL_DIRECT_PATH_ERROR);
  EXPECT_TRUE(path->appendPath(path) == CorvPath::EQUAL_PATHS_ERROR);
  EXPECT_TRUE(path->appendPath(pathThrough(space, {{9.0, 9.0}, {8.0, 9.0}})) == CorvPath::NON_EQUIVALENT_CONFIGS_ERROR);
  EXPECT_TRUE(path->appendPath(CorvPath::create(makePlane())) == CorvPath::INCONSISTENT_CONFIG_SPACE_ERROR);
  EXPECT_TRUE(path->setInitialConfig(CorvConfig(space)) == CorvPath::DIRECT_PATH_ALREADY_EXIST_ERROR);
  EXPECT_TRUE(path->appendDirectPath(CorvConfig(space), CorvConfig(makePlane())) ==
              CorvPath::INVALID_DIRECT_PATH_ERROR);
  EXPECT_TRUE(path->replacePart(0u, 5u, CorvPath::createCopy(path)).failed());
  EXPECT_TRUE(listener.heard.empty());
}

TEST(CorvPath, AJunctionBelongsToTheEarlierDirectPath)
{
  const CorvConfigSpaceShPtr space = makePlane();
  const CorvPathShPtr path = pathThrough(space, {{0.0, 0.0}, {1.0, 0.0}, {1.0, 0.0}, {1.0, 2.0}});
  const auto place = [&](double i_distance)
  {
    unsigned int rank = 99;
    const CorvDirectPathConstShPtr found = path->directPathAtDistance(i_distance, rank);
    EXPECT_EQ(found, path->directPath(rank));
    return std::make_pair(rank, i_distance);
  };
  EXPECT_EQ(place(1.0), std::make_pair(0u, 1.0));
  EXPECT_EQ(place(1.5), std::make_pair(2u, 0.5));
  EXPECT_EQ(place(-3.0), std::make_pair(0u, 0.0));
  EXPECT_EQ(place(9.0), std::make_pair(2u, 2.0));
  EXPECT_EQ(path->configAtDistance(9.0)->dofValues(), (std::vector<double>{1.0, 2.0}));
  EXPECT_EQ(path->configAtParam(0.5)->dofValues(), (std::vector<double>{1.0, 0.5}));
  EXPECT_TRUE(path->startsWith(CorvConfig(space)));
  EXPECT_FALSE(path->endsWith(CorvConfig(space)));

  // Motions of no length are counted but not told.
  EXPECT_EQ(path->countConfigurations(), 4u);
  const ShPtr<PathRecorder> visitor = PathRecorder::create();
  path->describe(visitor);
  EXPECT_EQ(visitor->told, "(.[-].[-].)");
}

TEST(CorvPath, ACutAtItsLengthKeepsTheBitsOfTheEnd)
{
  CorvUtility::randomSeed(5);
  const CorvConfigSpaceShPtr space = makePlane();
  for (int trial = 0; trial < 200; ++trial)
  {
    const CorvPathShPtr path = pathThrough(space, {randomPoint(), randomPoint(), randomPoint(), randomPoint()});
    const std::vector<double> end = path->configuration(3).dofValues();
    const double from = CorvUtility::random(0.0, path->length());
    for (const double start : {0.0, from})
    {
      const CorvPathShPtr rest = CorvPath::createByExtracting(path, start, path->length());
      ASSERT_TRUE(rest);
      ASSERT_EQ(rest->configuration(rest->countConfigurations() - 1).dofValues(), end);
    }
    ASSERT_TRUE(path->extractTo(path->length()).succeeded());
    ASSERT_EQ(path->configuration(3).dofValues(), end);
  }
}

TEST(CorvPath, LocatesOnALongChainWithoutAllocating)
{
  const CorvConfigSpaceShPtr space = makePlane();
  constexpr unsigned int COUNT = 10000;
  const CorvPathShPtr path = CorvPath::create(space);
  for (unsigned int i = 0; i <= COUNT; ++i)
    ASSERT_TRUE(path->addConfiguration(CorvConfig(space, {0.1 * i, i % 2 ? 0.3 : 0.0})).succeeded());
  const double whole = path->length();
  CorvConfig cfg(space);
  ASSERT_TRUE(path->getConfigAtDistance(0.5 * whole, cfg).succeeded());
  CorvUtility::randomSeed(4);
  const std::size_t before = countAllocations();
  for (int i = 0; i < 100; ++i)
  {
    double distance = CorvUtility::random(0.0, 1.0) * whole;
    const double x = 0.1 * COUNT * distance / whole;
    unsigned int rank = 0;
    EXPECT_TRUE(path->getConfigAtDistance(distance, cfg).succeeded());
    EXPECT_NEAR(cfg.dofValue(0), x, 1e-6);
    const CorvDirectPathConstShPtr found = path->directPathAtDistance(distance, rank);
    EXPECT_EQ(found, path->directPath(rank));
    EXPECT_NEAR(0.1 * (rank + distance / path->directPath(rank)->length()), x, 1e-6);
  }
  EXPECT_EQ(countAllocations() - before, 0u);
}

TEST(CorvPath, CutsAndReplacesAtItsEndsEvenWhereMotionsHaveNoLength)
{
  const CorvConfigSpaceShPtr space = makePlane();
  const std::vector<double> a = {0.0, 0.0}, b = {1.0, 0.0}, c = {1.0, 2.0};
  const CorvPathShPtr path = pathThrough(space, {a, a, b, c, c});
  for (const double from : {3.0, 4.0})
  {
    const CorvPathShPtr end = CorvPath::createByExtractingFrom(path, from);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->countDirectPaths(), 0u);
    EXPECT_EQ(end->configAtStart()->dofValues(), c);
  }
  EXPECT_EQ(CorvPath::createByExtractingFrom(path, 0.0)->countDirectPaths(), 4u);
  EXPECT_EQ(CorvPath::createByExtractingFrom(path, 1.0)->countDirectPaths(), 2u);
  EXPECT_EQ(CorvPath::createByExtractingTo(path, 1.0)->countDirectPaths(), 2u);
  EXPECT_EQ(CorvPath::createByExtracting(path, 9.0, 10.0)->countConfigurations(), 1u);

  const CorvPathShPtr point = CorvPath::createWithConfig(CorvConfig(space, a));
  const CorvPathShPtr detour = pathThrough(space, {a, b, a});
  for (const double at : {-2.0, 0.0, 2.0})
  {
    const CorvPathShPtr replaced = CorvPath::createCopy(point);
    ASSERT_TRUE(replaced->replacePart(at, at, detour).succeeded()) << at;
    EXPECT_EQ(replaced->countDirectPaths(), 2u);
  }
}

TEST(CorvPath, HasThreeShapes)
{
  const CorvConfigSpaceShPtr space = makePlane();
  const CorvPathShPtr empty = CorvPath::create(space);
  CorvConfig cfg(space);
  EXPECT_TRUE(empty->isEmpty());
  EXPECT_EQ(empty->length(), 0.0);
  EXPECT_TRUE(empty->getConfigAtStart(cfg) == CorvPath::EMPTY_PATH_ERROR);
  EXPECT_TRUE(empty->getConfigAtDistance(0.0, cfg).failed());
  EXPECT_TRUE(empty->extractFrom(1.0).succeeded());
  EXPECT_TRUE(empty->isEmpty());
  EXPECT_FALSE(CorvPath::create(CorvConfigSpaceShPtr()));

  const CorvPathShPtr path = pathThrough(space, {{0.0, 0.0}, {1.0, 0.0}, {1.0, 2.0}});
  const CorvPathShPtr end = CorvPath::createByExtractingFrom(path, path->length());
  ASSERT_TRUE(end);
  EXPECT_EQ(end->countConfigurations(), 1u);
  EXPECT_EQ(end->countDirectPaths(), 0u);
  EXPECT_EQ(end->configAtEnd()->dofValues(), (std::vector<double>{1.0, 2.0}));
  const CorvPathShPtr start = CorvPath::createByExtractingTo(path, 0.0);
  EXPECT_EQ(start->configAtStart()->dofValues(), (std::vector<double>{0.0, 0.0}));

  // A replacement of the whole takes over even a single configuration.
  ASSERT_TRUE(path->replacePart(0.0, path->length(), end).succeeded());
  EXPECT_EQ(path->countConfigurations(), 1u);
  EXPECT_EQ(path->configAtStart()->dofValues(), (std::vector<double>{1.0, 2.0}));
  ASSERT_TRUE(start->extractDirectPaths(0, 0).succeeded());
  EXPECT_TRUE(start->isEmpty());
  ASSERT_TRUE(start->appendPath(path).succeeded());
  EXPECT_EQ(start->countConfigurations(), 1u);
}

TEST(CorvPath, SharesItsDirectPathsAndRefusesToTurnOrientedOnes)
{
  const CorvConfigSpaceShPtr space = makePlane();
  const CorvPathShPtr path = pathThrough(space, {{0.0, 0.0}, {1.0, 0.0}, {1.0, 2.0}});
  EXPECT_EQ(directPathsOf(*CorvPath::createCopy(path)), directPathsOf(*path));
  const CorvPathShPtr deep = CorvPath::createDeepCopy(path);
  EXPECT_NE(deep->directPath(0), path->directPath(0));
  EXPECT_EQ(deep->length(), path->length());
  EXPECT_EQ(CorvPath::createByExtracting(path, 0.5, 2.0)->countDirectPaths(), 2u);
  EXPECT_EQ(CorvPath::createByExtractingFrom(path, 0.5)->directPath(1), path->directPath(1));

  ASSERT_TRUE(path
                ->appendDirectPath(CorvSMLinear::create(true)->makeDirectPath(CorvConfig(space, {1.0, 2.0}),
                                                                              CorvConfig(space, {3.0, 2.0})))
                .succeeded());
  const auto before = directPathsOf(*path);
  EXPECT_TRUE(path->isOriented());
  EXPECT_TRUE(path->reverse().failed());
  EXPECT_FALSE(CorvPath::createReversed(path));
  EXPECT_EQ(directPathsOf(*path), before);

  const LogCapture log;
  EXPECT_TRUE(path->extract(2.0, 1.0).failed());
  EXPECT_TRUE(log.contains("CorvPath::extract(): end located before start."));
  EXPECT_TRUE(path->extract(0.5, 0.5).failed());
  EXPECT_TRUE(log.contains("CorvPath::extract(): unable to extract direct path."));
  EXPECT_EQ(directPathsOf(*path), before);
}

namespace
{
/// How far the corners of any body's box have moved between two configurations.
double displacementOf(const CorvDevice& i_device, const CorvConfig& i_a, const CorvConfig& i_b, unsigned int i_body)
{
  std::vector<ClumMat4> a, b;
  EXPECT_TRUE(i_device.computeBodyPositions(i_a, a).succeeded());
  EXPECT_TRUE(i_device.computeBodyPositions(i_b, b).succeeded());
  double largest = 0.0;
  for (const double x : {0.0, 1.0})
    for (const double y : {-0.05, 0.05})
    {
      const ClumVect3 corner(x, y, 0.0);
      const ClumVect3 way = b[i_body] * corner + b[i_body].translation() - a[i_body] * corner - a[i_body].translation();
      largest = std::max(largest, std::sqrt(way.x() * way.x() + way.y() * way.y() + way.z() * way.z()));
    }
  return largest;
}
} // namespace

TEST(CorvPath, BodiesSpendTheirAllowanceAlongTheChain)
{
  const CorvDeviceShPtr arm = planarArm(2);
  const CorvConfigSpaceShPtr space = arm->configSpace();
  CorvUtility::randomSeed(31);
  int limited = 0;
  for (int run = 0; run < 60; ++run)
  {
    const CorvPathShPtr path = CorvPath::create(space);
    for (int i = 0; i < 5; ++i)
      ASSERT_TRUE(path->addConfiguration(randomConfigOf(space, 0.7)).succeeded());
    const CorvAbstractPath::EDirection direction = run % 2 ? CorvAbstractPath::BACKWARD : CorvAbstractPath::FORWARD;
    const double start = CorvUtility::random(0.0, 1.0) * path->length();
    const double allowance = CorvUtility::random(0.05, 1.5);
    std::vector<double> left(arm->countBodies(), allowance);
    double goal = -1.0;
    bool hitsEnd = false;
    ASSERT_TRUE(path->boundedMoveByBody(start, direction, goal, hitsEnd, left).succeeded());
    const double end = direction == CorvAbstractPath::FORWARD ? path->length() : 0.0;
    EXPECT_EQ(hitsEnd, std::fabs(goal - end) < 1e-12);
    EXPECT_GT(std::fabs(goal - start), 0.0);
    EXPECT_EQ(goal > start, direction == CorvAbstractPath::FORWARD);
    limited += hitsEnd ? 0 : 1;
    const CorvConfigShPtr from = path->configAtDistance(start);
    for (int k = 1; k <= 50; ++k)
      for (unsigned int body = 0; body < arm->countBodies(); ++body)
        ASSERT_LE(displacementOf(*arm, *from, *path->configAtDistance(start + (goal - start) * k / 50.0), body),
                  allowance * (1.0 + 1e-9));

    ASSERT_TRUE(
      path->boundedMove(start, direction, goal, hitsEnd, std::numeric_limits<double>::infinity()).succeeded());
    EXPECT_TRUE(hitsEnd);
    EXPECT_NEAR(goal, end, 1e-12);
  }
  EXPECT_GT(limited, 20);
}

TEST(CorvPath, FollowsTheVersionOfItsDeviceOnceSomebodyListens)
{
  const CorvDeviceShPtr arm = planarArm(1);
  const CorvPathShPtr path = CorvPath::create(arm->configSpace());
  ASSERT_TRUE(path->appendDirectPath(CorvConfig(arm, {0.25}), CorvConfig(arm, {0.75})).succeeded());
  const CorvDirectPathConstShPtr before = path->directPath(0);
  const PathListener listener(path);
  ASSERT_TRUE(arm->rootJoint()->addJoint(CorvJointRotation::create(ClumMat4(), ClumMat4::Z_AXIS)).succeeded());
  EXPECT_NE(path->directPath(0), before);
  EXPECT_EQ(path->configAtEnd()->size(), 2u);
  EXPECT_EQ(path->configAtEnd()->dofValue(0), 0.75);
}
