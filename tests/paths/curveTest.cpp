#include "foundation/lumBox.h"
#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJointPlan.h"
#include "kinematics/orvKEPlan.h"
#include "kinematics/orvUtility.h"
#include "paths/orvDPDubins.h"
#include "paths/orvDPReedsNShepp.h"
#include "paths/orvSMDubins.h"
#include "paths/orvSMReedsNShepp.h"
#include "paths/pathSuite.h"
#include "support/spaces.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace
{
using TPose = CorvDPCurve::CCurveCoordinates;
constexpr double PI = ClumGeometryUtilities::PI;

CorvConfigSpaceShPtr carSpace()
{
  return CorvKEPlan::create()->configSpace();
}

template <class METHOD>
ShPtr<METHOD> carMethod(const CorvConfigSpaceShPtr& i_space, double i_radius)
{
  return METHOD::create(i_radius, i_space->dof(0), i_space->dof(1), i_space->dof(2));
}

template <class METHOD>
CorvDirectPathShPtr drive(const CorvConfigSpaceShPtr& i_space, const std::vector<double>& i_start,
                          const std::vector<double>& i_end, double i_radius = 1.0)
{
  return carMethod<METHOD>(i_space, i_radius)->makeDirectPath(CorvConfig(i_space, i_start), CorvConfig(i_space, i_end));
}

/// A plate that drives, and turns a second plate on top, which a motion leaves alone.
template <class METHOD>
CorvAbstractPathShPtr makeDrive()
{
  const CorvDeviceShPtr car = CorvDevice::create();
  const CorvJointShPtr chassis = CorvJointPlan::create(ClumMat4());
  car->rootJoint(chassis);
  chassis->addMobileGeometry(ClumBox::create(0.8, 0.4, 0.1));
  const CorvConfigSpaceShPtr space = car->configSpace();
  const double scale = CorvUtility::random(0.5, 4.0);
  CorvConfig start = randomConfigOf(space, 1.0), end = randomConfigOf(space, 1.0);
  for (unsigned int i = 0; i < 2; ++i)
    end.dofValue(i, end.dofValue(i) * scale);
  end.dofValue(2, end.dofValue(2) * 2.0);
  return carMethod<METHOD>(space, CorvUtility::random(0.3, 1.5))->makeDirectPath(start, end);
}

const PathKindEntry s_dubins(PathKind("DubinsCurve", makeDrive<CorvSMDubins>).withPartsThatForget());
const PathKindEntry s_reedsNShepp(PathKind("ReedsNSheppCurve", makeDrive<CorvSMReedsNShepp>).withPartsThatForget());

/// A path whose `computeParams` can be asked; its own ends do not matter.
template <class METHOD>
ShPtr<CorvDPCurve> anyCurve()
{
  return boost::dynamic_pointer_cast<CorvDPCurve>(drive<METHOD>(carSpace(), {0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}));
}

double shortest(const CorvDPCurve& i_path, const TPose& i_goal, int& o_word)
{
  double t = 0.0, u = 0.0, v = 0.0;
  return i_path.computeParams(TPose(), i_goal, o_word, t, u, v);
}

// Words are texts here: three letters for each curve, its kind (L, R, S), sense (+, -) and parameter (t, u, v, or q for
// a quarter circle).

std::string image(std::string i_word, bool i_isTimeFlipped, bool i_isReflected)
{
  for (std::size_t i = 0; i < i_word.size(); i += 3)
  {
    if (i_isTimeFlipped)
      i_word[i + 1] = i_word[i + 1] == '+' ? '-' : '+';
    if (i_isReflected && i_word[i] != 'S')
      i_word[i] = i_word[i] == 'L' ? 'R' : 'L';
  }
  return i_word;
}

std::vector<std::string> dubinsWords()
{
  return {"L+tR+uL+v", "R+tL+uR+v", "L+tS+uL+v", "L+tS+uR+v", "R+tS+uL+v", "R+tS+uR+v"};
}

/// The table of Reeds and Shepp (1990) with all its images.
std::vector<std::string> reedsNSheppWords()
{
  std::vector<std::string> words;
  for (const char* base :
       {"L+tR-uL+v", "L+tR-uL-v", "L+tS+uL+v", "L+tS+uR+v", "L+tR+uL-uR-v", "L+tR-uL-uR+v", "L+tR-qS-uL-v",
        "L+tR-qS-uR-v", "L+tR-qS-uL-qR+v", "L+tR+uL-v", "L+tS+uR+qL-v", "L+tS+uL+qR-v"})
    for (const bool isTimeFlipped : {false, true})
      for (const bool isReflected : {false, true})
        words.push_back(image(base, isTimeFlipped, isReflected));
  return words;
}

struct Replay
{
  double x = 0.0, y = 0.0, theta = 0.0, length = 0.0;
};

/// Drives along a word on the unit circle, or until its last curve.
Replay replayed(const std::string& i_word, double i_t, double i_u, double i_v)
{
  Replay at;
  for (std::size_t i = 0; i < i_word.size(); i += 3)
  {
    const char which = i_word[i + 2];
    const double way = which == 't' ? i_t : which == 'u' ? i_u : which == 'v' ? i_v : 0.5 * PI;
    const double forward = i_word[i + 1] == '+' ? way : -way;
    const double turn = i_word[i] == 'L' ? forward : i_word[i] == 'R' ? -forward : 0.0;
    if (i_word[i] == 'S')
    {
      at.x += forward * std::cos(at.theta);
      at.y += forward * std::sin(at.theta);
    }
    else
    {
      const double side = i_word[i] == 'L' ? 1.0 : -1.0;
      at.x += side * (std::sin(at.theta + turn) - std::sin(at.theta));
      at.y -= side * (std::cos(at.theta + turn) - std::cos(at.theta));
    }
    at.theta += turn;
    at.length += way;
  }
  return at;
}

double wrapped(double i_angle)
{
  const double rest = std::fmod(i_angle, 2.0 * PI);
  return rest < 0.0 ? rest + 2.0 * PI : rest;
}

/// The parameter v, an arc at the end of every word, that brings the heading about.
double lastArc(const std::string& i_word, double i_t, double i_u, double i_phi)
{
  const std::size_t last = i_word.size() - 3;
  const double sense = (i_word[last] == 'L') == (i_word[last + 1] == '+') ? 1.0 : -1.0;
  return wrapped(sense * (i_phi - replayed(i_word, i_t, i_u, 0.0).theta));
}

/// The least length with which a word leads to a goal: all zeros of the miss that Newton's method finds from a grid.
double bruteForce(const std::string& i_word, const TPose& i_goal)
{
  const auto missOf = [&](double i_t, double i_u, double* o_miss)
  {
    const Replay at = replayed(i_word, i_t, i_u, lastArc(i_word, i_t, i_u, i_goal.theta()));
    o_miss[0] = at.x - i_goal.x();
    o_miss[1] = at.y - i_goal.y();
  };
  const bool isLine = i_word.find('S') != std::string::npos;
  const double span = isLine ? std::hypot(i_goal.x(), i_goal.y()) + 4.0 : 2.0 * PI;
  double best = std::numeric_limits<double>::infinity();
  for (int start = 0; start < 64; ++start)
  {
    double t = (start / 8 + 0.3) * 2.0 * PI / 8.0, u = (start % 8 + 0.3) * span / 8.0;
    double miss[2], alongT[2], alongU[2];
    for (int step = 0; step < 25; ++step)
    {
      constexpr double H = 1e-7;
      missOf(t, u, miss);
      if (std::fabs(miss[0]) + std::fabs(miss[1]) < 1e-13)
        break;
      missOf(t + H, u, alongT);
      missOf(t, u + H, alongU);
      const double a = (alongT[0] - miss[0]) / H, b = (alongU[0] - miss[0]) / H;
      const double c = (alongT[1] - miss[1]) / H, d = (alongU[1] - miss[1]) / H;
      const double determinant = a * d - b * c;
      if (std::fabs(determinant) < 1e-12)
        break;
      t -= (d * miss[0] - b * miss[1]) / determinant;
      u -= (a * miss[1] - c * miss[0]) / determinant;
    }
    missOf(t, u, miss);
    const bool isThere = std::fabs(miss[0]) + std::fabs(miss[1]) < 1e-9 && (!isLine || u > -1e-9);
    if (!isThere)
      continue;
    const double ownU = isLine ? std::max(u, 0.0) : wrapped(u);
    const Replay whole = replayed(i_word, wrapped(t), ownU, lastArc(i_word, t, u, i_goal.theta()));
    best = std::min(best, whole.length);
  }
  return best;
}

template <class METHOD>
void expectShortest(const std::vector<std::string>& i_words, unsigned int i_seed, int i_goals)
{
  CorvUtility::randomSeed(i_seed);
  const ShPtr<CorvDPCurve> path = anyCurve<METHOD>();
  for (int k = 0; k < i_goals; ++k)
  {
    const double range = k % 3 == 0 ? 6.0 : k % 3 == 1 ? 3.0 : 1.0;
    const TPose goal(CorvUtility::random(-range, range), CorvUtility::random(-range, range),
                     CorvUtility::random(-PI, PI));
    double least = std::numeric_limits<double>::infinity();
    for (const std::string& word : i_words)
      least = std::min(least, bruteForce(word, goal));
    int word = 0;
    ASSERT_NEAR(shortest(*path, goal, word), least, 1e-6)
      << "goal " << goal.x() << " " << goal.y() << " " << goal.theta() << ", word " << word;
  }
}
} // namespace

TEST(CorvDPDubins, FindsTheShortestOfAllWords)
{
  expectShortest<CorvSMDubins>(dubinsWords(), 41, 300);
}

TEST(CorvDPReedsNShepp, FindsTheShortestOfAllWords)
{
  expectShortest<CorvSMReedsNShepp>(reedsNSheppWords(), 42, 60);
}

TEST(CorvDPReedsNShepp, EachWordLeadsWhereItsCurvesAreToldTo)
{
  // The order of the words, and the parameters in it: each word is told by its rank and replayed from its text.
  const ShPtr<CorvDPCurve> path = anyCurve<CorvSMReedsNShepp>();
  const std::vector<std::string> words = reedsNSheppWords();
  for (int rank = 1; rank <= 48; ++rank)
  {
    const int group = (rank - 1) / 4, k = (rank - 1) % 4;
    const bool isEarly = group < 2;
    const bool isTimeFlipped = k == 3 || k == (isEarly ? 1 : 2), isReflected = k == 3 || k == (isEarly ? 2 : 1);
    const std::string& word = words[4 * group + 2 * isTimeFlipped + isReflected];
    std::vector<CorvDPCurve::CCurve> curves;
    ASSERT_TRUE(path->createCurvesWithParams(rank, 0.3, 0.7, 1.1, TPose(), 1.0, curves).succeeded());
    ASSERT_EQ(3 * curves.size(), word.size());
    const Replay end = replayed(word, 0.3, 0.7, 1.1);
    EXPECT_NEAR(curves.back().endCoord.x(), end.x, 1e-12) << rank << " " << word;
    EXPECT_NEAR(curves.back().endCoord.y(), end.y, 1e-12) << rank << " " << word;
    EXPECT_NEAR(std::remainder(curves.back().endCoord.theta() - end.theta, 2.0 * PI), 0.0, 1e-12);
  }
  std::vector<CorvDPCurve::CCurve> none;
  EXPECT_TRUE(path->createCurvesWithParams(0, 1.0, 1.0, 1.0, TPose(), 1.0, none).failed());
  EXPECT_TRUE(path->createCurvesWithParams(49, 1.0, 1.0, 1.0, TPose(), 1.0, none).failed());
  EXPECT_TRUE(anyCurve<CorvSMDubins>()->createCurvesWithParams(7, 1.0, 1.0, 1.0, TPose(), 1.0, none).failed());
}

/// Lengths that the theorems of Dubins (1957, On curves of minimal length) and of Reeds and Shepp (1990, Optimal paths
/// for a car that goes both forwards and backwards) give: turning about on the spot takes three arcs of 60, 300 and 60
/// degrees forward, and three of 60 degrees with two cusps; a place beside the car, as seen from a turn to the side.
TEST(CorvDPCurve, HasThePublishedLengths)
{
  struct Case
  {
    TPose goal;
    double dubins, reedsNShepp;
  };
  const Case cases[] = {{TPose(0.0, 0.0, PI), 7.0 * PI / 3.0, PI},
                        {TPose(4.0, 0.0, 0.0), 4.0, 4.0},
                        {TPose(1.0, 1.0, 0.5 * PI), 0.5 * PI, 0.5 * PI},
                        {TPose(0.0, 2.0, PI), PI, PI},
                        {TPose(0.0, 6.0, PI), 4.0 + PI, 4.0 + PI},
                        {TPose(-3.0, 0.0, 0.0), 3.0 + 2.0 * PI, 3.0},
                        {TPose(std::sin(0.4), 1.0 - std::cos(0.4), 0.4), 0.4, 0.4},
                        {TPose(-std::sin(0.4), 1.0 - std::cos(0.4), -0.4), 2.0 * PI - 0.4, 0.4}};
  int word = 0;
  for (const Case& item : cases)
  {
    EXPECT_NEAR(shortest(*anyCurve<CorvSMReedsNShepp>(), item.goal, word), item.reedsNShepp, 1e-12) << item.goal.x();
    EXPECT_NEAR(shortest(*anyCurve<CorvSMDubins>(), item.goal, word), item.dubins, 1e-12) << item.goal.x();
  }
}

TEST(CorvDPCurve, TakesTheFirstOfEqualWordsAndKeepsToACircle)
{
  int word = 0;
  EXPECT_EQ(shortest(*anyCurve<CorvSMDubins>(), TPose(5.0, 0.0, 0.0), word), 5.0);
  EXPECT_EQ(word, 3);
  EXPECT_EQ(shortest(*anyCurve<CorvSMReedsNShepp>(), TPose(5.0, 0.0, 0.0), word), 5.0);
  EXPECT_EQ(word, 9);
  // A goal on the start's own circle: one arc, of the first word that has it.
  double t = 0.0, u = 0.0, v = 0.0;
  const TPose onCircle(std::sin(1.0), 1.0 - std::cos(1.0), 1.0);
  EXPECT_NEAR(anyCurve<CorvSMDubins>()->computeParams(TPose(), onCircle, word, t, u, v), 1.0, 1e-12);
  EXPECT_EQ(word, 1);
  EXPECT_EQ(u, 0.0);
  EXPECT_EQ(v, 0.0);
  EXPECT_NEAR(anyCurve<CorvSMReedsNShepp>()->computeParams(TPose(), onCircle, word, t, u, v), 1.0, 1e-12);
  EXPECT_EQ(word, 4);
  EXPECT_NEAR(u, 1.0, 1e-12);
  // Nowhere to go: no curve at all.
  EXPECT_EQ(anyCurve<CorvSMDubins>()->computeParams(TPose(), TPose(), word, t, u, v), 0.0);
  // A goal far ahead, so little aside that the turn counts as none.
  EXPECT_NEAR(shortest(*anyCurve<CorvSMDubins>(), TPose(1000.0, 2e-4, 0.0), word), 1000.0, 1e-3);
}

TEST(CorvDPCurve, RollsWithoutSlippingFromEndToEnd)
{
  CorvUtility::randomSeed(43);
  const CorvConfigSpaceShPtr space = carSpace();
  for (int k = 0; k < 60; ++k)
  {
    const double radius = CorvUtility::random(0.3, 2.0);
    const std::vector<double> start = randomConfigOf(space, 1.5).dofValues(),
                              end = randomConfigOf(space, 1.5).dofValues();
    const bool isDubins = k % 2 == 0;
    const CorvDirectPathShPtr path =
      isDubins ? drive<CorvSMDubins>(space, start, end, radius) : drive<CorvSMReedsNShepp>(space, start, end, radius);
    ASSERT_TRUE(path);
    const auto curve = boost::dynamic_pointer_cast<CorvDPCurve>(path);
    double sum = 0.0;
    for (unsigned int i = 0; i < curve->countCurves(); ++i)
    {
      CorvDPCurve::CCurve part;
      ASSERT_TRUE(curve->getCurve(i, part).succeeded());
      EXPECT_TRUE(!isDubins || part.direction == CorvDPCurve::CCurve::FORWARD);
      sum += part.length;
    }
    CorvDPCurve::CCurve none;
    EXPECT_TRUE(curve->getCurve(curve->countCurves(), none).failed());
    EXPECT_DOUBLE_EQ(path->length(), sum);

    constexpr int STEPS = 400;
    const double h = path->length() / STEPS;
    std::vector<double> before = start;
    for (int i = 1; i <= STEPS; ++i)
    {
      const std::vector<double> after = path->configAtDistance(i == STEPS ? path->length() : i * h)->dofValues();
      const double turn = std::remainder(after[2] - before[2], 2.0 * PI);
      const double heading = before[2] + 0.5 * turn;
      const double dx = after[0] - before[0], dy = after[1] - before[1];
      // Sideways it moves by no more than the chord of an arc, or by what a cusp or a change of curve leaves.
      EXPECT_LE(std::fabs(-std::sin(heading) * dx + std::cos(heading) * dy), h * h / radius + 1e-9);
      EXPECT_LE(std::fabs(turn), h / radius + 1e-9);
      EXPECT_LE(std::hypot(dx, dy), h + 1e-9);
      before = after;
    }
    EXPECT_EQ(before, end);
  }
}

TEST(CorvDPCurve, RefusesWhatACarCannotDo)
{
  const CorvConfigSpaceShPtr space = carSpace();
  EXPECT_FALSE(drive<CorvSMDubins>(space, {0.0, 0.0, 0.0}, {1.0, 1.0, PI}));
  EXPECT_FALSE(drive<CorvSMDubins>(space, {0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, 0.0));
  EXPECT_FALSE(drive<CorvSMDubins>(space, {0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, -1.0));
  const CorvConfig start(space), end(space, {1.0, 1.0, 1.0});
  const auto made = [&](unsigned int i_x, unsigned int i_y, unsigned int i_theta)
  {
    return CorvSMReedsNShepp::create(1.0, space->dof(i_x), space->dof(i_y), space->dof(i_theta))
      ->makeDirectPath(start, end);
  };
  EXPECT_TRUE(made(0, 1, 2));
  EXPECT_FALSE(made(0, 2, 1));
  EXPECT_FALSE(
    CorvSMDubins::create(1.0, space->dof(0), space->dof(1), CorvDof::create(true))->makeDirectPath(start, end));
  EXPECT_FALSE(
    CorvSMDubins::create(1.0, space->dof(0), space->dof(1), CorvDofConstShPtr())->makeDirectPath(start, end));

  const CorvCSCompositeShPtr wide = makeSpace({carSpace(), makeDof({false, false, 1.0})});
  EXPECT_TRUE(drive<CorvSMDubins>(wide, {0.0, 0.0, 0.0, 7.0}, {1.0, 1.0, 1.0, 7.0}));
  EXPECT_FALSE(drive<CorvSMDubins>(wide, {0.0, 0.0, 0.0, 7.0}, {1.0, 1.0, 1.0, 7.5}));
}

TEST(CorvDPCurve, EditsFindTheShortestWayAnewOrChangeNothing)
{
  const CorvConfigSpaceShPtr space = carSpace();
  const CorvDirectPathShPtr forward = drive<CorvSMDubins>(space, {0.0, 0.0, 0.0}, {3.0, 2.0, 1.0});
  const std::vector<double> inner = forward->configAtDistance(1.5)->dofValues();
  const double whole = forward->length();
  EXPECT_TRUE(forward->reverse().failed());
  EXPECT_FALSE(CorvDirectPath::createReversed(forward));
  EXPECT_EQ(forward->configAtDistance(1.5)->dofValues(), inner);
  forward->setMark("half", 1.5);
  ASSERT_TRUE(forward->extractFromMark("half").succeeded());
  EXPECT_EQ(forward->startConfiguration().dofValues(), inner);
  EXPECT_NEAR(forward->length(), whole - 1.5, 1e-9);
  EXPECT_FALSE(forward->hasMark("half"));

  const double minimum = CorvDirectPath::minimumLength();
  CorvDirectPath::minimumLength(0.0);
  const double left = forward->length();
  EXPECT_TRUE(forward->extractFrom(left - 1e-12).failed());
  EXPECT_TRUE(forward->extractTo(1e-12).failed());
  CorvDirectPath::minimumLength(minimum);
  EXPECT_EQ(forward->length(), left);

  // Where the goal lies on the spot nothing moves.
  const CorvDirectPathShPtr still = drive<CorvSMDubins>(space, {1.0, 2.0, 0.5}, {1.0, 2.0, 0.5});
  ASSERT_TRUE(still);
  EXPECT_EQ(still->length(), 0.0);
  EXPECT_EQ(still->configAtDistance(0.0)->dofValues(), (std::vector<double>{1.0, 2.0, 0.5}));
}
