#include "foundation/lumGeometryUtilities.h"
#include "metrics/orvMetricZero.h"
#include "paths/orvDPComposite.h"
#include "paths/orvDPLinear.h"
#include "paths/orvDPRestriction.h"
#include "paths/orvSMComposite.h"
#include "paths/orvSMLinear.h"
#include "support/logCapture.h"
#include "support/pathRecorder.h"
#include "support/spaces.h"

#include <gtest/gtest.h>

#include <cmath>

LUM_HANDLES(RemakingMethod)

/// Linear motions that have to be made anew for every part of them.
class RemakingMethod : public CorvSMLinear
{
  LUM_UNREFLECTED(RemakingMethod, CorvSMLinear);

public:
  static RemakingMethodShPtr create(bool i_oriented) { return lumCreate<RemakingMethod>(i_oriented); }
  bool isConservative(const CorvConfigSpaceConstShPtr&) const override { return false; }
  mutable int made = 0;
  CorvDirectPathShPtr makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const override
  {
    ++made;
    return CorvSMLinear::makeDirectPath(i_start, i_end);
  }

protected:
  explicit RemakingMethod(bool i_oriented) : CorvSMLinear(i_oriented) {}
  lmStatus init(const RemakingMethodWkPtr& i_weakPtr) { return CorvSMLinear::init(i_weakPtr); }
};

namespace
{
constexpr double PI = ClumGeometryUtilities::PI;

/// A linear motion from p0 on, without a window: what a distance of the uncut path means.
std::vector<double> oracleAt(const CorvConfig& i_start, const CorvConfig& i_end, double i_t)
{
  std::vector<double> values;
  for (unsigned int i = 0; i < i_start.size(); ++i)
  {
    const CorvDofShPtr dof = i_start.space()->dof(i);
    const double way = i_end.dofValue(i) - i_start.dofValue(i);
    const bool isCircular = dof->isRevolute() && !dof->isBounded();
    values.push_back(i_start.dofValue(i) + i_t * (isCircular ? std::remainder(way, 2.0 * PI) : way));
  }
  return values;
}

void expectNear(const std::vector<double>& i_values, const std::vector<double>& i_expected, double i_tolerance)
{
  ASSERT_EQ(i_values.size(), i_expected.size());
  for (std::size_t i = 0; i < i_values.size(); ++i)
    ASSERT_NEAR(i_values[i], i_expected[i], i_tolerance) << "dof " << i;
}

std::vector<double> valuesAt(const CorvDirectPath& i_path, double i_distance)
{
  CorvConfig cfg(i_path.configSpace());
  EXPECT_TRUE(i_path.getConfigAtDistance(i_distance, cfg).succeeded());
  return cfg.dofValues();
}

/// Mixed space whose bounded angle steers by a motion of its own, so that composites have several children.
CorvCSCompositeShPtr makeSteeredSpace(const CorvSteeringMethodShPtr& i_method)
{
  const CorvCSCompositeShPtr space = makeMixedSpace();
  space->dof(2)->steeringMethod(i_method);
  return space;
}
} // namespace

/// The window of a path against an explicit interval of the private motion, under random cuts and reversals.
TEST(CorvDirectPath, WindowIsAnIntervalOfThePrivateMotion)
{
  CorvUtility::randomSeed(21);
  for (int run = 0; run < 60; ++run)
  {
    const CorvCSCompositeShPtr space = makeMixedSpace();
    const CorvDirectPathShPtr path =
      space->steeringMethod()->makeDirectPath(randomConfigOf(space), randomConfigOf(space));
    ASSERT_TRUE(path);
    const double whole = path->length();
    double from = 0.0, to = whole; // private distances of the public start and end
    path->setMark("middle", whole / 2.0);
    for (int edit = 0; edit < 12; ++edit)
    {
      const double sign = from < to ? 1.0 : -1.0;
      const double a = CorvUtility::random(-0.2, 1.2) * path->length();
      switch (CorvUtility::random(0, 2))
      {
      case 0:
        if (path->length() - a > 1e-7)
        {
          EXPECT_TRUE(path->extractFrom(a).succeeded());
          from += sign * std::max(a, 0.0);
        }
        else
          EXPECT_TRUE(path->extractFrom(a).failed());
        break;
      case 1:
        if (a > 1e-7)
        {
          const double kept = std::min(a, path->length());
          EXPECT_TRUE(path->extractTo(a).succeeded());
          to = from + sign * kept;
        }
        else
          EXPECT_TRUE(path->extractTo(a).failed());
        break;
      default: EXPECT_TRUE(path->reverse().succeeded()); std::swap(from, to);
      }
      const double tolerance = 1e-12 * (1.0 + whole);
      ASSERT_NEAR(path->length(), std::fabs(to - from), tolerance);
      const double d = CorvUtility::random(0.0, path->length());
      const double place = from + (from < to ? d : -d);
      ASSERT_NEAR(path->publicToPrivateDistance(d), place, tolerance);
      ASSERT_NEAR(path->privateToPublicDistance(path->publicToPrivateDistance(d)), d, tolerance);
      expectNear(valuesAt(*path, d), oracleAt(path->privateStart(), path->privateEnd(), place / whole), 1e-11);
      EXPECT_EQ(valuesAt(*path, 0.0), path->startConfiguration().dofValues());
      EXPECT_EQ(valuesAt(*path, -1.0), path->startConfiguration().dofValues());
      EXPECT_EQ(valuesAt(*path, path->length() + 1.0), path->endConfiguration().dofValues());
      EXPECT_EQ(path->firstConfiguration(CorvAbstractPath::BACKWARD), path->endConfiguration());
      double mark = 0.0;
      ASSERT_TRUE(path->getMarkDistance("middle", mark).succeeded());
      ASSERT_NEAR(from + (from < to ? mark : -mark), whole / 2.0, tolerance);
    }
  }
}

TEST(CorvDirectPath, UncutEndsAreTheGivenOnesBitForBit)
{
  CorvUtility::randomSeed(22);
  for (int run = 0; run < 100; ++run)
  {
    const CorvCSCompositeShPtr space = makeMixedSpace();
    const CorvConfig start = randomConfigOf(space), end = randomConfigOf(space);
    const CorvDirectPathShPtr path = space->steeringMethod()->makeDirectPath(start, end);
    EXPECT_EQ(valuesAt(*path, path->length()), end.dofValues());
    const CorvDirectPathShPtr back = CorvDirectPath::createReversed(path);
    EXPECT_EQ(valuesAt(*back, 0.0), end.dofValues());
    EXPECT_EQ(valuesAt(*back, back->length()), start.dofValues());
    // A cut of nothing keeps them, one that goes back to the old end does not re-open the path.
    ASSERT_TRUE(back->extract(0.0, back->length()).succeeded());
    EXPECT_EQ(back->endConfiguration(), start);
    ASSERT_TRUE(back->extractTo(back->length() / 2.0).succeeded());
    const double cut = back->length();
    ASSERT_TRUE(back->extractTo(2.0 * cut).succeeded());
    EXPECT_EQ(back->length(), cut);
    EXPECT_EQ(back->startConfiguration(), end);
  }
}

TEST(CorvDirectPath, RefusesPartsThatAreTooShortAndStaysAsItWas)
{
  const CorvCSCompositeShPtr space = makeSpace({makeDof({false, false, 1.0})});
  const CorvDirectPathShPtr path =
    space->steeringMethod()->makeDirectPath(CorvConfig(space, {0.0}), CorvConfig(space, {1.0}));
  const double usual = CorvDirectPath::minimumLength();
  EXPECT_EQ(usual, 1e-7);
  CorvDirectPath::minimumLength(0.25);
  EXPECT_TRUE(path->extractFrom(0.75).failed());
  EXPECT_TRUE(path->extractTo(0.25).failed());
  EXPECT_TRUE(path->extractFrom(std::nan("")).failed());
  EXPECT_FALSE(CorvDirectPath::createByExtracting(path, 0.25, 0.5));
  EXPECT_EQ(path->length(), 1.0);
  EXPECT_TRUE(CorvDirectPath::createByExtracting(path, 0.25, 0.75));
  // All or nothing is for the makers: in place the end is cut first.
  EXPECT_TRUE(path->extract(0.75, 0.5).failed());
  EXPECT_EQ(path->length(), 0.5);
  CorvDirectPath::minimumLength(usual);

  EXPECT_FALSE(CorvDirectPath::createByExtractingFrom(CorvDirectPathConstShPtr(), 0.0));
  EXPECT_FALSE(CorvDirectPath::createReversed(CorvDirectPathConstShPtr()));
  EXPECT_FALSE(CorvDPLinear::create(CorvConfig(space), CorvConfig(space), CorvSteeringMethodShPtr()));
  EXPECT_FALSE(CorvDPLinear::create(CorvConfig(space), CorvConfig(makeMixedSpace()), CorvSMLinear::create()));
}

TEST(CorvDirectPath, OrientedOrRemadePathsAreReversedAndCutAsTheirMethodAllows)
{
  const CorvCSCompositeShPtr space = makeSpace({makeDof({false, false, 1.0})});
  const CorvConfig start(space, {0.0}), end(space, {1.0});
  const CorvDirectPathShPtr oriented = CorvSMLinear::create(true)->makeDirectPath(start, end);
  EXPECT_TRUE(oriented->reverse().failed());
  EXPECT_FALSE(CorvDirectPath::createReversed(oriented));
  EXPECT_EQ(oriented->startConfiguration(), start);

  const RemakingMethodShPtr method = RemakingMethod::create(true);
  const CorvDirectPathShPtr remade = method->makeDirectPath(start, end);
  const CorvDirectPathShPtr back = CorvDirectPath::createReversed(remade);
  ASSERT_TRUE(back);
  EXPECT_EQ(back->privateStart(), end);
  remade->setMark("m", 0.25);
  const CorvDirectPathShPtr tail = CorvDirectPath::createByExtractingFromMark(remade, "m");
  ASSERT_TRUE(tail);
  EXPECT_DOUBLE_EQ(tail->privateStart().dofValue(0), 0.25);
  const CorvDirectPathShPtr piece = CorvDirectPath::createByExtracting(remade, 0.25, 0.5);
  ASSERT_TRUE(piece);
  EXPECT_DOUBLE_EQ(piece->privateEnd().dofValue(0), 0.5);
  EXPECT_EQ(method->made, 4);
  EXPECT_FALSE(CorvDirectPath::createByExtracting(remade, 0.5, 0.25));
}

TEST(CorvDirectPath, ACutAtAMarkEndsAtTheMarkedConfigurationItself)
{
  const CorvCSCompositeShPtr space = makeMixedSpace();
  const CorvDirectPathShPtr path = space->steeringMethod()->makeDirectPath(CorvConfig(space, {0.0, 3.0, 0.0, 0.0}),
                                                                           CorvConfig(space, {1.0, -3.0, 2.0, 3.0}));
  CorvConfigConstShPtr found;
  EXPECT_TRUE(path->getMarkConfig("a", found).failed());
  EXPECT_TRUE(path->deleteMark("a").failed());
  EXPECT_TRUE(path->extractToMark("a").failed());
  path->setMark("a", 1.0);
  ASSERT_TRUE(path->getMarkConfig("a", found).succeeded());
  EXPECT_EQ(found->dofValues(), valuesAt(*path, 1.0));
  CorvConfig noted(*found);
  noted.dofValue(0, noted.dofValue(0) + 1e-13);
  path->setMarkConfig("a", noted);
  for (const bool isReversed : {false, true})
  {
    const CorvDirectPathShPtr whole =
      isReversed ? CorvDirectPath::createReversed(path) : CorvDirectPath::createCopy(path);
    const CorvDirectPathShPtr head = CorvDirectPath::createByExtractingToMark(whole, "a");
    const CorvDirectPathShPtr tail = CorvDirectPath::createByExtractingFromMark(whole, "a");
    ASSERT_TRUE(head && tail);
    EXPECT_EQ(head->endConfiguration(), noted);
    EXPECT_EQ(tail->startConfiguration(), noted);
    EXPECT_NEAR(head->length() + tail->length(), path->length(), 1e-12);
  }
  path->unvalidate();
  EXPECT_FALSE(path->hasMark("a"));
}

TEST(CorvDPLinear, GoesTheShortWayRoundUnlessBoundedAndRefusesHalfTurns)
{
  const CorvCSCompositeShPtr space = makeSpace({makeDof({true, false, 1.0}), makeDof({true, true, 1.0})});
  const CorvSMLinearShPtr method = CorvSMLinear::create();
  const CorvDirectPathShPtr path =
    method->makeDirectPath(CorvConfig(space, {3.0, 3.0}), CorvConfig(space, {-3.0, -3.0}));
  ASSERT_TRUE(path);
  expectNear(valuesAt(*path, path->length() * 0.75), {3.0 + 0.75 * (2.0 * PI - 6.0), -1.5}, 1e-12);
  EXPECT_EQ(path->endConfiguration().dofValue(0), -3.0);
  for (const double turn : {PI, -PI, PI - 0.9e-7, 3.0 * PI})
    EXPECT_FALSE(method->makeDirectPath(CorvConfig(space, {0.5, 0.0}), CorvConfig(space, {0.5 + turn, 0.0})));
  EXPECT_TRUE(method->makeDirectPath(CorvConfig(space, {0.5, 0.0}), CorvConfig(space, {0.5 + PI - 1.1e-7, 0.0})));
  EXPECT_TRUE(method->makeDirectPath(CorvConfig(space, {0.0, 0.0}), CorvConfig(space, {0.0, PI})));
  EXPECT_FALSE(space->steeringMethod()->makeDirectPath(CorvConfig(space, {0.0, 0.0}), CorvConfig(space, {PI, 0.0})));

  const CorvDirectPathShPtr still =
    method->makeDirectPath(CorvConfig(space, {1.0, 2.0}), CorvConfig(space, {1.0, 2.0}));
  EXPECT_EQ(still->length(), 0.0);
  EXPECT_EQ(valuesAt(*still, 0.0), (std::vector<double>{1.0, 2.0}));
  std::vector<double> rates;
  still->maxAbsoluteDerivative(0.0, 0.0, rates);
  EXPECT_EQ(rates, (std::vector<double>{0.0, 0.0}));
}

TEST(CorvDPLinear, PassiveDofsDoNotDependOnWhatTheConfigurationHeldBefore)
{
  const CorvCSCompositeShPtr space = makeMixedSpace();
  space->dof(3)->lockAt(1.5);
  const CorvDirectPathShPtr path = space->steeringMethod()->makeDirectPath(CorvConfig(space, {0.0, 0.0, 0.0, 0.0}),
                                                                           CorvConfig(space, {1.0, 1.0, 1.0, 0.0}));
  ASSERT_TRUE(path);
  CorvConfig fresh(space);
  CorvConfig used(space, {9.0, 9.0, 9.0, 9.0});
  ASSERT_TRUE(path->getConfigAtDistance(path->length() / 2.0, fresh).succeeded());
  ASSERT_TRUE(path->getConfigAtDistance(path->length() / 2.0, used).succeeded());
  EXPECT_EQ(fresh.dofValues(), used.dofValues());
  expectNear(used.dofValues(), {0.5, 0.5, 0.5, 1.5}, 1e-15);
}

/// No dof of a path may move faster than its bound, and a linear motion moves exactly that fast.
TEST(CorvDirectPath, DerivativesBoundFiniteDifferences)
{
  CorvUtility::randomSeed(23);
  for (int run = 0; run < 40; ++run)
  {
    const CorvCSCompositeShPtr space = run % 2 ? makeMixedSpace() : makeSteeredSpace(RemakingMethod::create(false));
    CorvDirectPathShPtr path = space->steeringMethod()->makeDirectPath(randomConfigOf(space), randomConfigOf(space));
    ASSERT_TRUE(path);
    if (run % 3 == 0)
      path = CorvDirectPath::createByExtracting(path, 0.2 * path->length(), 0.9 * path->length());
    std::vector<double> bounds;
    path->maxAbsoluteDerivative(path->publicToPrivateDistance(0.0), path->publicToPrivateDistance(path->length()),
                                bounds);
    ASSERT_EQ(bounds.size(), space->size());
    const double h = path->length() / 64.0;
    for (int k = 0; k < 64; ++k)
    {
      const std::vector<double> a = valuesAt(*path, k * h), b = valuesAt(*path, (k + 1) * h);
      for (unsigned int i = 0; i < a.size(); ++i)
      {
        // The given end may be a whole turn from where the motion leads.
        const double way = k == 63 ? std::fabs(std::remainder(b[i] - a[i], 2.0 * PI)) : std::fabs(b[i] - a[i]);
        ASSERT_LE(way, bounds[i] * h * (1.0 + 1e-9) + 1e-12);
        ASSERT_GE(way, k == 63 ? 0.0 : bounds[i] * h * (1.0 - 1e-9) - 1e-12);
      }
    }
  }
}

TEST(CorvSMComposite, MovesSubspacesInParallelByTheirOwnMethods)
{
  const RemakingMethodShPtr own = RemakingMethod::create(false);
  const CorvCSCompositeShPtr space = makeSteeredSpace(own);
  EXPECT_FALSE(space->isSteeringConservative());
  const CorvConfig start(space, {0.0, 3.0, 0.0, 1.0}), end(space, {1.0, -3.0, 2.0, 4.0});
  const CorvDirectPathShPtr path = space->steeringMethod()->makeDirectPath(start, end);
  ASSERT_TRUE(path);
  EXPECT_EQ(own->made, 1);
  EXPECT_EQ(path->length(), start.distanceTo(end));
  for (const double t : {0.1, 0.5, 0.9})
    expectNear(valuesAt(*path, t * path->length()), oracleAt(start, end, t), 1e-12);

  const ShPtr<PathRecorder> visitor = PathRecorder::create();
  path->describe(visitor);
  EXPECT_EQ(visitor->told, "[----]");
  EXPECT_FALSE(space->steeringMethod()->makeDirectPath(start, CorvConfig(makeMixedSpace())));

  // An edit of the tree is seen: the own method goes, and one linear motion does it all.
  space->dof(2)->steeringMethod(CorvSMLinear::create());
  const CorvDirectPathShPtr linear = space->steeringMethod()->makeDirectPath(start, end);
  const ShPtr<PathRecorder> second = PathRecorder::create();
  linear->describe(second);
  EXPECT_EQ(second->told, "[-]");
  space->dof(2)->steeringMethod(CorvSMLinear::create(true));
  EXPECT_TRUE(space->isSteeringOriented());
  EXPECT_TRUE(space->steeringMethod()->makeDirectPath(start, end)->reverse().failed());
}

TEST(CorvDPComposite, DescribesThePartsOfItsChildrenInTheWindow)
{
  const CorvCSCompositeShPtr space = makeMixedSpace();
  const CorvDirectPathShPtr path = space->steeringMethod()->makeDirectPath(CorvConfig(space, {0.0, 0.0, 0.0, 0.0}),
                                                                           CorvConfig(space, {1.0, 1.0, -2.0, 3.0}));
  ASSERT_TRUE(path->extract(0.25 * path->length(), 0.75 * path->length()).succeeded());
  ASSERT_TRUE(path->reverse().succeeded());
  const ShPtr<PathRecorder> visitor = PathRecorder::create();
  path->describe(visitor);
  ASSERT_EQ(visitor->executed.size(), 1u);
  expectNear(visitor->executed[0]->startConfiguration().dofValues(), {0.75, 0.75, -1.5, 2.25}, 1e-12);
  expectNear(visitor->executed[0]->endConfiguration().dofValues(), {0.25, 0.25, -0.5, 0.75}, 1e-12);
}

TEST(CorvDPComposite, ASubspaceThatJumpsWithoutALengthHasNoFiniteRate)
{
  const CorvCSCompositeShPtr space = makeSteeredSpace(RemakingMethod::create(false));
  space->dof(2)->metric(CorvMetricZero::create());
  const CorvDirectPathShPtr path = space->steeringMethod()->makeDirectPath(CorvConfig(space, {0.0, 0.0, 0.0, 0.0}),
                                                                           CorvConfig(space, {1.0, 0.0, 1.0, 0.0}));
  std::vector<double> rates;
  path->maxAbsoluteDerivative(0.0, path->length(), rates);
  EXPECT_DOUBLE_EQ(rates[0], 1.0);
  EXPECT_EQ(rates[1], 0.0);
  EXPECT_TRUE(std::isinf(rates[2]));
}

TEST(CorvDPRestriction, IsTheWrappedPathInASubspace)
{
  const CorvCSCompositeShPtr space = makeMixedSpace();
  const CorvConfigSpaceShPtr angles = space->subspace(1);
  const CorvDirectPathShPtr path = space->steeringMethod()->makeDirectPath(CorvConfig(space, {0.0, 3.0, 0.0, 0.0}),
                                                                           CorvConfig(space, {1.0, -3.0, 2.0, 3.0}));
  ASSERT_TRUE(path->extractTo(0.5 * path->length()).succeeded());
  const CorvDPRestrictionShPtr restricted = CorvDPRestriction::create(path, angles);
  ASSERT_TRUE(restricted);
  EXPECT_EQ(restricted->configSpace(), angles);
  EXPECT_EQ(restricted->length(), path->length());
  for (const double t : {0.0, 0.3, 1.0})
  {
    const std::vector<double> values = valuesAt(*path, t * path->length());
    EXPECT_EQ(valuesAt(*restricted, t * path->length()), (std::vector<double>{values[1], values[2]}));
  }
  EXPECT_FALSE(CorvDPRestriction::create(CorvDirectPathShPtr(), angles));
  EXPECT_FALSE(CorvDPRestriction::create(path, CorvConfigSpaceShPtr()));
  const LogCapture log;
  std::vector<double> rates;
  restricted->maxAbsoluteDerivative(0.0, 1.0, rates);
  EXPECT_TRUE(log.contains("Assertion failed"));
}
