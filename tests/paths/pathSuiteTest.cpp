#include "paths/pathSuite.h"

#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMat4.h"
#include "foundation/lumXMLCoder.h"
#include "kinematics/orvBody.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJointRotation.h"
#include "kinematics/orvUtility.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "paths/orvSteeringMethod.h"
#include "support/logCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

PathKind::PathKind(const std::string& i_name, TMake i_make) : name(i_name), make(i_make), gap(largestDofGap)
{
}

PathKind& PathKind::withPartsMadeAnew(double i_gap)
{
  hasWindows = false;
  endGap = i_gap;
  return *this;
}

PathKind& PathKind::withPartsThatForget()
{
  keepsMarks = false;
  return *this;
}

PathKind& PathKind::withoutRates()
{
  hasRates = false;
  return *this;
}

PathKind& PathKind::withoutBoundedMoves()
{
  hasBoundedMoves = false;
  return *this;
}

PathKind& PathKind::withGap(TGap i_gap)
{
  gap = i_gap;
  return *this;
}

std::vector<PathKind>& pathKinds()
{
  static std::vector<PathKind> s_kinds;
  return s_kinds;
}

namespace
{
/// Signed change of a dof, the short way round for an unbounded rotation.
double dofChange(const CorvDof& i_dof, double i_from, double i_to)
{
  const bool isCircular = i_dof.isRevolute() && !i_dof.isBounded();
  return isCircular ? std::remainder(i_to - i_from, 2.0 * ClumGeometryUtilities::PI) : i_to - i_from;
}

CorvConfig configOn(const CorvAbstractPath& i_path, double i_distance)
{
  CorvConfig cfg(i_path.configSpace());
  EXPECT_TRUE(i_path.getConfigAtDistance(i_distance, cfg).succeeded());
  return cfg;
}

/// Values at places all along a path, ends included, bit for bit.
std::vector<std::vector<double>> fingerprint(const CorvAbstractPath& i_path)
{
  std::vector<std::vector<double>> values;
  for (int i = 0; i <= 16; ++i)
    values.push_back(configOn(i_path, i == 16 ? i_path.length() : i_path.length() * i / 16.0).dofValues());
  return values;
}

CorvDirectPathConstShPtr asDirect(const CorvAbstractPathConstShPtr& i_path)
{
  return boost::dynamic_pointer_cast<const CorvDirectPath>(i_path);
}

CorvAbstractPathShPtr partOf(const CorvAbstractPathConstShPtr& i_path, double i_from, double i_to)
{
  if (const CorvDirectPathConstShPtr direct = asDirect(i_path))
    return CorvDirectPath::createByExtracting(direct, i_from, i_to);
  return CorvAbstractPath::createByExtracting(i_path, i_from, i_to);
}

CorvAbstractPathShPtr wayBackOf(const CorvAbstractPathConstShPtr& i_path)
{
  if (const CorvDirectPathConstShPtr direct = asDirect(i_path))
    return CorvDirectPath::createReversed(direct);
  return CorvAbstractPath::createReversed(i_path);
}

lmStatus convertPath(const CorvAbstractPathShPtr& i_path)
{
  if (const auto direct = boost::dynamic_pointer_cast<CorvDirectPath>(i_path))
    return direct->convert(direct->configSpace());
  const auto path = boost::dynamic_pointer_cast<CorvPath>(i_path);
  return path ? path->convert(path->configSpace()) : lmStatus(-1);
}

bool canConvert(const CorvAbstractPathConstShPtr& i_path)
{
  return asDirect(i_path) || boost::dynamic_pointer_cast<const CorvPath>(i_path);
}

/// Adds a dof that becomes the last one. @return false if the space is of a kind that takes none.
bool appendDof(const CorvAbstractPath& i_path)
{
  if (const CorvDeviceShPtr device = i_path.device())
  {
    const CorvJointShPtr last = device->joint(device->countJoints() - 1);
    return last->addJoint(CorvJointRotation::create(ClumMat4(), ClumMat4::Z_AXIS)).succeeded();
  }
  const auto composite = boost::dynamic_pointer_cast<CorvCSComposite>(i_path.configSpace());
  return composite && composite->appendSubspace(CorvDof::create(false)).succeeded();
}

class EveryPath : public testing::TestWithParam<PathKind>
{
protected:
  static constexpr int RUNS = 12;

  /// Calls a check with one random path after the other; most draws must give one.
  template <class CHECK>
  void forEachPath(const CHECK& i_check)
  {
    int made = 0;
    for (int run = 0; run < RUNS && !HasFatalFailure(); ++run)
    {
      CorvUtility::randomSeed(1000u + run);
      const CorvAbstractPathShPtr path = kind().make();
      if (!path || !(path->length() > 0.01))
        continue;
      SCOPED_TRACE("run " + std::to_string(run));
      ++made;
      i_check(path);
    }
    EXPECT_GE(made, RUNS / 2);
  }

  static const PathKind& kind() { return GetParam(); }
  static double gap(const CorvConfig& i_a, const CorvConfig& i_b) { return kind().gap(i_a, i_b); }
  static double draw(double i_low, double i_high) { return CorvUtility::random(i_low, i_high); }

  /// Two distances in order, well apart.
  static void drawPart(const CorvAbstractPath& i_path, double& o_from, double& o_to)
  {
    o_from = draw(0.0, 0.6) * i_path.length();
    o_to = o_from + draw(0.2, 0.39) * i_path.length();
  }

  /// The path, a part of it or the way back, as far as there is one.
  static CorvAbstractPathShPtr drawVariant(const CorvAbstractPathShPtr& i_path)
  {
    double from = 0.0, to = 0.0;
    drawPart(*i_path, from, to);
    const int which = CorvUtility::random(0, 3);
    CorvAbstractPathShPtr variant = which & 1 ? partOf(i_path, from, to) : i_path;
    if (variant && which & 2 && !variant->isOriented())
      variant = wayBackOf(variant);
    return variant ? variant : i_path;
  }

  static void expectRatesHold(const CorvDirectPath& i_path)
  {
    const double a = draw(0.0, 1.0) * i_path.length(), b = draw(0.0, 1.0) * i_path.length();
    std::vector<double> rates;
    i_path.maxAbsoluteDerivative(i_path.publicToPrivateDistance(a), i_path.publicToPrivateDistance(b), rates);
    ASSERT_EQ(rates.size(), i_path.configSpace()->size());
    for (const double rate : rates)
      ASSERT_TRUE(std::isfinite(rate) && rate >= 0.0) << rate;
    constexpr int STEPS = 200;
    const double h = (b - a) / STEPS;
    std::vector<double> before = configOn(i_path, a).dofValues();
    for (int i = 1; i <= STEPS; ++i)
    {
      const std::vector<double> after = configOn(i_path, a + i * h).dofValues();
      for (unsigned int k = 0; k < after.size(); ++k)
        ASSERT_LE(std::fabs(dofChange(*i_path.configSpace()->dof(k), before[k], after[k])),
                  rates[k] * std::fabs(h) * (1.0 + 1e-9) + 1e-11)
          << "dof " << k << " at " << a + i * h;
      before = after;
    }
  }

  /// @return whether the path tells a velocity.
  static bool expectVelocityHolds(const CorvDirectPath& i_path)
  {
    std::vector<double> velocity;
    if (!i_path.getStraightVelocity(velocity))
      return false;
    EXPECT_EQ(velocity.size(), i_path.configSpace()->size());
    constexpr int STEPS = 50;
    const double h = i_path.length() / STEPS;
    std::vector<double> before = configOn(i_path, 0.0).dofValues();
    for (int i = 1; i <= STEPS; ++i)
    {
      const std::vector<double> after = configOn(i_path, i * h).dofValues();
      for (unsigned int k = 0; k < after.size(); ++k)
        EXPECT_NEAR(dofChange(*i_path.configSpace()->dof(k), before[k], after[k]), velocity[k] * h, 1e-11)
          << "dof " << k << " at " << i * h;
      before = after;
    }
    return true;
  }
};
} // namespace

double largestDofGap(const CorvConfig& i_a, const CorvConfig& i_b)
{
  EXPECT_EQ(i_a.size(), i_b.size());
  double largest = 0.0;
  for (unsigned int i = 0; i < std::min(i_a.size(), i_b.size()); ++i)
    largest = std::max(largest, std::fabs(dofChange(*i_a.space()->dof(i), i_a.dofValue(i), i_b.dofValue(i))));
  return largest;
}

TEST_P(EveryPath, GivesItsEndsBackToTheBit)
{
  forEachPath(
    [](const CorvAbstractPathShPtr& i_path)
    {
      CorvConfig start(i_path->configSpace()), end(i_path->configSpace());
      ASSERT_TRUE(i_path->getConfigAtStart(start).succeeded());
      ASSERT_TRUE(i_path->getConfigAtEnd(end).succeeded());
      const double whole = i_path->length();
      for (const double d : {0.0, -1.0})
        EXPECT_EQ(configOn(*i_path, d).dofValues(), start.dofValues());
      for (const double d : {whole, whole + 1.0})
        EXPECT_EQ(configOn(*i_path, d).dofValues(), end.dofValues());
      EXPECT_EQ(i_path->configAtParam(0.0)->dofValues(), start.dofValues());
      EXPECT_EQ(i_path->configAtParam(1.0)->dofValues(), end.dofValues());
      EXPECT_LE(gap(configOn(*i_path, 1e-9 * whole), start), 1e-5);
      EXPECT_LE(gap(configOn(*i_path, whole - 1e-9 * whole), end), 1e-5);
      if (const CorvDirectPathConstShPtr direct = asDirect(i_path))
      {
        EXPECT_EQ(direct->privateStart(), start);
        EXPECT_EQ(direct->privateEnd(), end);
        EXPECT_EQ(&direct->firstConfiguration(CorvAbstractPath::BACKWARD), &direct->endConfiguration());
      }
    });
}

TEST_P(EveryPath, HasPartsThatFollowTheWhole)
{
  forEachPath(
    [](const CorvAbstractPathShPtr& i_path)
    {
      const auto before = fingerprint(*i_path);
      double from = 0.0, to = 0.0;
      drawPart(*i_path, from, to);
      const CorvAbstractPathShPtr part = partOf(i_path, from, to);
      ASSERT_TRUE(part);
      EXPECT_LE(gap(*part->configAtStart(), configOn(*i_path, from)), kind().endGap);
      EXPECT_LE(gap(*part->configAtEnd(), configOn(*i_path, to)), kind().endGap);
      EXPECT_EQ(configOn(*part, part->length()).dofValues(), part->configAtEnd()->dofValues());
      EXPECT_EQ(configOn(*part, 0.0).dofValues(), part->configAtStart()->dofValues());
      EXPECT_EQ(fingerprint(*i_path), before) << "the path that is cut stays";
      if (!kind().hasWindows)
        return;
      const double tolerance = 1e-9 * (1.0 + i_path->length());
      EXPECT_NEAR(part->length(), to - from, tolerance);
      for (int i = 0; i < 10; ++i)
      {
        const double d = draw(0.0, part->length());
        EXPECT_LE(gap(configOn(*part, d), configOn(*i_path, from + d)), 1e-8) << d;
      }
      // What was cut off does not come back.
      const double kept = part->length();
      ASSERT_TRUE(part->extractTo(2.0 * i_path->length()).succeeded());
      ASSERT_TRUE(part->extractFrom(-1.0).succeeded());
      EXPECT_EQ(part->length(), kept);
    });
}

TEST_P(EveryPath, IsReversedOrRefusesAndStays)
{
  forEachPath(
    [](const CorvAbstractPathShPtr& i_path)
    {
      const auto before = fingerprint(*i_path);
      const CorvDirectPathConstShPtr direct = asDirect(i_path);
      const CorvAbstractPathShPtr back = wayBackOf(i_path);
      if (i_path->isOriented() && (!direct || direct->isConservative()))
      {
        EXPECT_FALSE(back);
        EXPECT_TRUE(i_path->reverse().failed());
        EXPECT_EQ(fingerprint(*i_path), before);
        return;
      }
      ASSERT_TRUE(back);
      EXPECT_EQ(fingerprint(*i_path), before);
      EXPECT_LE(gap(*back->configAtStart(), *i_path->configAtEnd()), kind().endGap);
      EXPECT_LE(gap(*back->configAtEnd(), *i_path->configAtStart()), kind().endGap);
      if (!kind().hasWindows || i_path->isOriented())
        return;
      EXPECT_EQ(back->configAtStart()->dofValues(), i_path->configAtEnd()->dofValues());
      EXPECT_EQ(back->configAtEnd()->dofValues(), i_path->configAtStart()->dofValues());
      const double whole = i_path->length();
      EXPECT_NEAR(back->length(), whole, 1e-12 * (1.0 + whole));
      double from = 0.0, to = 0.0;
      drawPart(*back, from, to);
      const CorvAbstractPathShPtr part = partOf(back, from, to);
      ASSERT_TRUE(part);
      for (int i = 0; i < 10; ++i)
      {
        const double d = draw(0.0, whole);
        EXPECT_LE(gap(configOn(*back, d), configOn(*i_path, whole - d)), 1e-8) << d;
        const double inPart = draw(0.0, part->length());
        EXPECT_LE(gap(configOn(*part, inPart), configOn(*i_path, whole - from - inPart)), 1e-8) << inPart;
      }
      ASSERT_TRUE(back->reverse().succeeded());
      EXPECT_EQ(fingerprint(*back), before);
    });
}

TEST_P(EveryPath, RefusesAPartOfNoLengthAndStays)
{
  forEachPath(
    [](const CorvAbstractPathShPtr& i_path)
    {
      const auto direct = boost::dynamic_pointer_cast<CorvDirectPath>(i_path);
      if (!direct)
        return;
      const auto before = fingerprint(*direct);
      const double whole = direct->length();
      EXPECT_TRUE(direct->extractFrom(whole).failed());
      EXPECT_TRUE(direct->extractFrom(std::nan("")).failed());
      EXPECT_TRUE(direct->extractTo(0.0).failed());
      EXPECT_FALSE(CorvDirectPath::createByExtracting(direct, 0.5 * whole, 0.5 * whole));
      EXPECT_FALSE(CorvDirectPath::createByExtracting(direct, 0.6 * whole, 0.4 * whole));
      EXPECT_EQ(fingerprint(*direct), before);
    });
}

TEST_P(EveryPath, KeepsItsMarksWhereTheyWereSet)
{
  forEachPath(
    [](const CorvAbstractPathShPtr& i_path)
    {
      const CorvDirectPathConstShPtr direct = asDirect(i_path);
      if (!direct)
        return;
      CorvConfigConstShPtr marked;
      EXPECT_TRUE(direct->getMarkConfig("m", marked).failed());
      EXPECT_FALSE(CorvDirectPath::createByExtractingToMark(direct, "m"));
      const double d = draw(0.3, 0.7) * direct->length();
      direct->setMark("m", d);
      ASSERT_TRUE(direct->getMarkConfig("m", marked).succeeded());
      EXPECT_EQ(marked->dofValues(), configOn(*direct, d).dofValues());

      const CorvDirectPathShPtr head = CorvDirectPath::createByExtractingToMark(direct, "m");
      const CorvDirectPathShPtr tail = CorvDirectPath::createByExtractingFromMark(direct, "m");
      ASSERT_TRUE(head && tail);
      EXPECT_LE(gap(head->endConfiguration(), *marked), kind().endGap);
      EXPECT_LE(gap(tail->startConfiguration(), *marked), kind().endGap);
      EXPECT_TRUE(kind().keepsMarks || !head->hasMark("m"));
      if (kind().hasWindows && kind().keepsMarks)
      {
        EXPECT_EQ(head->endConfiguration(), *marked);
        EXPECT_EQ(tail->startConfiguration(), *marked);
        const double tolerance = 1e-9 * (1.0 + direct->length());
        EXPECT_NEAR(head->length() + tail->length(), direct->length(), tolerance);
        const CorvDirectPathShPtr cut = CorvDirectPath::createByExtractingFrom(direct, 0.2 * direct->length());
        double place = 0.0;
        ASSERT_TRUE(cut && cut->getMarkDistance("m", place).succeeded());
        EXPECT_NEAR(place, d - 0.2 * direct->length(), tolerance);
        if (!cut->isOriented())
        {
          ASSERT_TRUE(cut->reverse().succeeded() && cut->getMarkDistance("m", place).succeeded());
          EXPECT_NEAR(place, direct->length() - d, tolerance);
        }
      }
      direct->unvalidate();
      EXPECT_FALSE(direct->hasMark("m"));
    });
}

TEST_P(EveryPath, MovesNoDofFasterThanItsRate)
{
  if (!kind().hasRates)
    return;
  forEachPath(
    [](const CorvAbstractPathShPtr& i_path)
    {
      for (int i = 0; i < 3; ++i)
      {
        const CorvDirectPathConstShPtr direct = asDirect(drawVariant(i_path));
        if (!direct)
          return;
        ASSERT_NO_FATAL_FAILURE(expectRatesHold(*direct));
      }
    });
}

TEST_P(EveryPath, MovesNoBodyFartherThanAllowed)
{
  if (!kind().hasRates || !kind().hasBoundedMoves)
    return;
  forEachPath(
    [](const CorvAbstractPathShPtr& i_path)
    {
      const CorvDeviceShPtr device = i_path->device();
      if (!device)
        return;
      const CorvAbstractPathShPtr variant = drawVariant(i_path);
      const bool isForward = CorvUtility::random(0, 1) == 0;
      const double start = draw(0.0, 1.0) * variant->length(), allowance = draw(0.05, 1.0);
      double goal = -1.0;
      bool hitsEnd = false;
      ASSERT_TRUE(variant
                    ->boundedMove(start, isForward ? CorvAbstractPath::FORWARD : CorvAbstractPath::BACKWARD, goal,
                                  hitsEnd, allowance)
                    .succeeded());
      EXPECT_EQ(hitsEnd, goal == (isForward ? variant->length() : 0.0));
      EXPECT_GT(isForward ? goal - start : start - goal, 0.0);
      std::vector<ClumMat4> before, after;
      ASSERT_TRUE(variant->getMatVectorAtDistance(start, before).succeeded());
      for (int i = 1; i <= 60; ++i)
      {
        ASSERT_TRUE(variant->getMatVectorAtDistance(start + (goal - start) * i / 60.0, after).succeeded());
        for (unsigned int b = 0; b < device->countBodies(); ++b)
        {
          std::vector<CorvBody::CEnclosingBall> balls;
          device->body(b)->getEnclosingBalls(balls);
          for (const CorvBody::CEnclosingBall& ball : balls)
          {
            const ClumVect3 way = (after[b] * ball.center).toVect3() - (before[b] * ball.center).toVect3();
            ASSERT_LE(std::sqrt(way.x() * way.x() + way.y() * way.y() + way.z() * way.z()), allowance * (1.0 + 1e-9));
          }
        }
      }
    });
}

TEST_P(EveryPath, SurvivesACodingRoundTrip)
{
  forEachPath(
    [](const CorvAbstractPathShPtr& i_path)
    {
      const CorvAbstractPathShPtr variant = drawVariant(i_path);
      const auto before = fingerprint(*variant);
      EXPECT_EQ(fingerprint(*variant->clone()), before);
      const LogCapture log;
      const ClumXMLCoderShPtr writer = ClumXMLCoder::create(), reader = ClumXMLCoder::create();
      ASSERT_TRUE(writer->encodeObjectShPtr(variant, "path").succeeded());
      ASSERT_TRUE(reader->parse(writer->data()).succeeded());
      // In memory the space is shared; from a text it is another one.
      for (const ClumCodableShPtr& coded : {variant->cloneByCoding(), reader->decodeObject("path")})
      {
        const auto copy = boost::dynamic_pointer_cast<CorvAbstractPath>(coded);
        ASSERT_TRUE(copy);
        EXPECT_EQ(copy->classObject(), variant->classObject());
        EXPECT_EQ(copy->length(), variant->length());
        EXPECT_EQ(copy->isOriented(), variant->isOriented());
        EXPECT_EQ(fingerprint(*copy), before);
      }
      EXPECT_EQ(log.count(), 0u);
    });
}

TEST_P(EveryPath, FollowsADofThatIsAddedUnderIt)
{
  forEachPath(
    [](const CorvAbstractPathShPtr& i_path)
    {
      if (!canConvert(i_path))
        return;
      const CorvAbstractPathShPtr variant = drawVariant(i_path);
      const auto before = fingerprint(*variant);
      const double whole = variant->length();
      const unsigned int count = variant->configSpace()->size();
      if (!appendDof(*variant))
        return;
      ASSERT_EQ(variant->configSpace()->size(), count + 1);
      ASSERT_TRUE(convertPath(variant).succeeded());
      EXPECT_NEAR(variant->length(), whole, 1e-9 * (1.0 + whole));
      const auto after = fingerprint(*variant);
      for (std::size_t i = 0; i < after.size(); ++i)
      {
        ASSERT_EQ(after[i].size(), count + 1);
        EXPECT_EQ(after[i][count], 0.0);
        for (unsigned int k = 0; k < count; ++k)
          EXPECT_NEAR(after[i][k], before[i][k], 1e-8) << "place " << i << " dof " << k;
      }
      const CorvDirectPathConstShPtr direct = asDirect(variant);
      if (!direct || !kind().hasRates)
        return;
      ASSERT_NO_FATAL_FAILURE(expectRatesHold(*direct));
      const bool mustTell = kind().name.find("Linear") == 0 || kind().name == "CompositeOnArm";
      EXPECT_TRUE(expectVelocityHolds(*direct) || !mustTell);
    });
}

TEST_P(EveryPath, GivesValuesThatDoNotDependOnWhatTheConfigurationHeld)
{
  forEachPath(
    [](const CorvAbstractPathShPtr& i_path)
    {
      for (int i = 0; i < 5; ++i)
      {
        const double d = draw(0.0, 1.0) * i_path->length();
        CorvConfig used = configOn(*i_path, draw(0.0, 1.0) * i_path->length());
        used.randomStep(1.0);
        ASSERT_TRUE(i_path->getConfigAtDistance(d, used).succeeded());
        EXPECT_EQ(used.dofValues(), configOn(*i_path, d).dofValues());
      }
    });
}

INSTANTIATE_TEST_SUITE_P(Paths, EveryPath, testing::ValuesIn(pathKinds()),
                         [](const testing::TestParamInfo<PathKind>& i_info) { return i_info.param.name; });
