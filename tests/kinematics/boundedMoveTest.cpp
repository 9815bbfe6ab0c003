#include "constraints/orvConstraint.h"
#include "foundation/lumBox.h"
#include "foundation/lumCapsule.h"
#include "foundation/lumPRNGGameRand.h"
#include "kinematics/orvBody.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJointAnchor.h"
#include "kinematics/orvJointBallAndSocket.h"
#include "kinematics/orvJointDoubleRotation.h"
#include "kinematics/orvJointFreeFlyer.h"
#include "kinematics/orvJointPlan.h"
#include "kinematics/orvJointRotation.h"
#include "kinematics/orvJointTranslation.h"
#include "kinematics/orvKinematicalEffect.h"
#include "kinematics/orvMotionBound.h"
#include "support/devices.h"
#include "validation/orvValidatorSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace
{
constexpr double SCREW_TURN = 2.0 * 3.14159265358979323846;
}

LUM_HANDLES(ScrewEffect)

/// An effect of a client's own class: a screw of one turn a unit, of which the device knows no more than the interface.
class ScrewEffect : public CorvKinematicalEffect
{
  LUM_UNREFLECTED(ScrewEffect, CorvKinematicalEffect);

public:
  static CorvKinematicalEffectShPtr create()
  {
    const CorvCSCompositeShPtr space = CorvCSComposite::create("screw");
    space->appendSubspace(CorvDof::create(false));
    return lumCreate<ScrewEffect>(space, "screw");
  }
  CorvKinematicalEffectShPtr clone() const override { return create(); }
  lmStatus forward(const double* i_values, ClumMat4& o_mat) const override
  {
    o_mat.rotate(0.0, 1.0, 0.0, SCREW_TURN * i_values[0]);
    o_mat.setTranslation(ClumVect3(0.0, 0.5 * i_values[0], 0.0));
    return lmStatus();
  }
  lmStatus inverse(const ClumMat4&, double*) const override { return -1; }
  lmStatus forwardDerivate(const double*, unsigned int, ClumMat4&) const override { return -1; }
  lmStatus forwardSecondDerivate(const double*, unsigned int, unsigned int, ClumMat4&) const override { return -1; }
  lmStatus forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const override
  {
    o_linear = 0.5 * std::fabs(i_velocities[0]);
    o_angular = SCREW_TURN * std::fabs(i_velocities[0]);
    return lmStatus();
  }
  lmStatus inverseVelocity(double, double, double, double, const ClumVect3&, std::vector<double>&) const override
  {
    return -1;
  }

protected:
  ScrewEffect(const CorvConfigSpaceShPtr& i_space, const std::string& i_type) : CorvKinematicalEffect(i_space, i_type)
  {
  }
};

LUM_HANDLES(DoublingConstraint)

/// The second dof is twice the first.
class DoublingConstraint : public CorvConstraint
{
  LUM_UNREFLECTED(DoublingConstraint, CorvConstraint);

public:
  static CorvConstraintShPtr create(const CorvConfigSpaceShPtr& i_space)
  {
    return lumCreate<DoublingConstraint>(i_space, "doubling");
  }
  CorvValidatorShPtr clone() const override { return create(configSpace()); }
  lmStatus doApply(unsigned int, unsigned int, CorvConfig& io_config, const ClumParameterMapConstShPtr&) const override
  {
    io_config.dofValue(1, 2.0 * io_config.dofValue(0));
    return lmStatus();
  }
  void getTransitivity(unsigned int, std::vector<CorvConfigSpaceShPtr>& o_input,
                       std::vector<CorvConfigSpaceShPtr>& o_output) const override
  {
    o_input.push_back(configSpace()->dof(0));
    o_output.push_back(configSpace()->dof(1));
  }

protected:
  DoublingConstraint(const CorvConfigSpaceShPtr& i_space, const std::string& i_name) : CorvConstraint(i_space, i_name)
  {
  }
};

namespace
{
constexpr double INFINITE = std::numeric_limits<double>::infinity();

ClumMat4 frameAt(double i_x, double i_y, double i_z)
{
  ClumMat4 frame;
  frame.translate(i_x, i_y, i_z);
  return frame;
}

/// Random trees of joints with boxes, random motions on them, and where the boxes go.
class BoundedMove : public testing::Test
{
protected:
  void SetUp() override
  {
    m_random = ClumPRNGGameRand::create();
    m_random->seed(17u);
  }

  double draw(double i_low, double i_high) { return m_random->random(i_low, i_high); }

  ClumMat4 randomFrame(double i_range)
  {
    ClumMat4 frame;
    frame.rotate(ClumVect3(draw(-1.0, 1.0), draw(-1.0, 1.0), draw(-1.0, 1.0)), draw(-3.0, 3.0));
    frame.setTranslation(ClumVect3(draw(-i_range, i_range), draw(-i_range, i_range), draw(-i_range, i_range)));
    return frame;
  }

  CorvJointShPtr randomJoint(int i_kind)
  {
    const ClumMat4 frame = randomFrame(1.5);
    const auto axis = static_cast<ClumMat4::EBaseVector>(m_random->random(0, 5));
    switch (i_kind)
    {
    case 0: return CorvJointRotation::create(frame, axis);
    case 1: return CorvJointTranslation::create(frame, axis);
    case 2: return CorvJointDoubleRotation::create(frame);
    case 3: return CorvJointBallAndSocket::create(frame);
    case 4: return CorvJointPlan::create(frame);
    case 5: return CorvJointFreeFlyer::create(frame);
    case 6: return CorvJoint::create(ScrewEffect::create(), frame);
    default: return CorvJointAnchor::create();
    }
  }

  void addBox(const CorvJointShPtr& i_joint)
  {
    const double x = draw(0.1, 2.0), y = draw(0.05, 0.5), z = draw(0.05, 0.5);
    const ClumGeometryShPtr box = ClumBox::create(x, y, z);
    box->position(i_joint->currentPosition() * randomFrame(0.7));
    EXPECT_TRUE(i_joint->addMobileGeometry(box).succeeded());
    std::vector<ClumPoint3> corners;
    for (unsigned int c = 0; c < 8; ++c)
      corners.push_back(i_joint->mobileGeometryRelativePosition(0) *
                        ClumPoint3((c & 1 ? 0.5 : -0.5) * x, (c & 2 ? 0.5 : -0.5) * y, (c & 4 ? 0.5 : -0.5) * z));
    m_cornersOfJoint.emplace_back(i_joint, corners);
  }

  void makeDevice(const std::vector<int>& i_kinds)
  {
    std::vector<CorvJointShPtr> joints;
    m_cornersOfJoint.clear();
    for (int kind : i_kinds)
    {
      const CorvJointShPtr joint = randomJoint(kind);
      addBox(joint);
      const int count = static_cast<int>(joints.size());
      if (count > 0)
      {
        ASSERT_TRUE(joints[m_random->random(std::max(0, count - 2), count - 1)]->addJoint(joint).succeeded());
      }
      joints.push_back(joint);
    }
    useDevice(joints.front());
  }

  void useDevice(const CorvJointShPtr& i_root)
  {
    m_device = CorvDevice::create();
    ASSERT_TRUE(m_device->setRootJoint(i_root).succeeded());
    m_space = m_device->configSpace();
    m_corners.clear();
    for (unsigned int b = 0; b < m_device->countBodies(); ++b)
      for (const auto& [joint, corners] : m_cornersOfJoint)
        if (m_device->body(b)->joint() == joint)
          m_corners.push_back(corners);
    ASSERT_EQ(m_corners.size(), m_device->countBodies());
  }

  CorvConfig configAt(const std::vector<double>& i_values) const { return CorvConfig(m_space, i_values); }

  /// Frames of the bodies by the joints' own forward kinematics, not by the table that the bound uses.
  std::vector<ClumMat4> bodyFrames(const std::vector<double>& i_values) const
  {
    const CorvConfig config = configAt(i_values);
    std::vector<ClumMat4> frames;
    EXPECT_TRUE(config.pushRestriction(m_device->rootJoint()->configSpace()).succeeded());
    EXPECT_TRUE(m_device->rootJoint()->getBodyMatVector(config, ClumMat4(), frames).succeeded());
    return frames;
  }

  /// For each body the largest displacement of a corner, which no other point of a box exceeds.
  std::vector<double> displacements(const std::vector<ClumMat4>& i_from, const std::vector<double>& i_values) const
  {
    const std::vector<ClumMat4> to = bodyFrames(i_values);
    std::vector<double> moved(to.size(), 0.0);
    for (std::size_t b = 0; b < to.size(); ++b)
      for (const ClumPoint3& corner : m_corners[b])
        moved[b] = std::max(moved[b], (to[b] * corner).distanceFrom(i_from[b] * corner));
    return moved;
  }

  std::vector<double> randomValues()
  {
    std::vector<double> values;
    for (unsigned int k = 0; k < m_space->size(); ++k)
      values.push_back(draw(-3.0, 3.0));
    return values;
  }

  /// Rates of quite different sizes, some of them 0.
  std::vector<double> randomRates()
  {
    std::vector<double> rates;
    for (unsigned int k = 0; k < m_space->size(); ++k)
      rates.push_back(draw(0.0, 1.0) < 0.2 ? 0.0 : std::pow(draw(0.0, 1.0), 3.0));
    return rates;
  }

  lmStatus ask(const std::vector<double>& i_values, const std::vector<double>& i_rates, double i_rest,
               std::vector<double>& io_allowances, double& o_advance, bool& o_hitsEnd) const
  {
    const CorvConfig config = configAt(i_values);
    return m_device->boundedMove(config, config, i_rest, i_rates, io_allowances, o_advance, o_hitsEnd);
  }

  /// A motion within the rates: each dof goes forth and back with a random period, or straight on.
  std::function<std::vector<double>(double)> randomMotion(const std::vector<double>& i_from,
                                                          const std::vector<double>& i_rates, double i_length)
  {
    std::vector<double> periods, signs;
    for (std::size_t k = 0; k < i_from.size(); ++k)
    {
      periods.push_back(draw(0.0, 1.0) < 0.7 ? INFINITE : draw(0.2, 1.0) * i_length);
      signs.push_back(draw(-1.0, 1.0) < 0.0 ? -1.0 : 1.0);
    }
    return [=](double i_s)
    {
      std::vector<double> values = i_from;
      for (std::size_t k = 0; k < values.size(); ++k)
      {
        const double phase = std::isinf(periods[k]) ? i_s : std::fmod(i_s, 2.0 * periods[k]);
        values[k] +=
          signs[k] * i_rates[k] * (std::isinf(periods[k]) ? phase : std::min(phase, 2.0 * periods[k] - phase));
      }
      return values;
    };
  }

  ClumPRNGShPtr m_random;
  CorvDeviceShPtr m_device;
  CorvConfigSpaceShPtr m_space;
  std::vector<std::pair<CorvJointShPtr, std::vector<ClumPoint3>>> m_cornersOfJoint;
  std::vector<std::vector<ClumPoint3>> m_corners;
};
} // namespace

TEST_F(BoundedMove, NoSampledPointMovesFartherThanAllowedAndTheAdvanceIsNotSmall)
{
  const std::vector<std::vector<int>> trees = {
    {5},       {0, 0, 0, 0, 0, 0}, {1, 0, 1, 0}, {4, 0, 3}, {3, 3}, {2, 1, 2},       {0, 7, 5, 0},
    {6, 0, 6}, {5, 3, 1, 0, 4},    {1, 1, 1},    {4},       {3},    {0, 2, 4, 5, 6}, {7, 5, 5}};
  double sumOfRatios = 0.0;
  unsigned int countLimited = 0;
  for (unsigned int trial = 0; trial < 420; ++trial)
  {
    makeDevice(trees[trial % trees.size()]);
    const std::vector<double> from = randomValues(), rates = randomRates();
    const std::vector<ClumMat4> framesFrom = bodyFrames(from);
    const double rest = draw(0.1, 6.0);
    std::vector<double> allowances;
    for (std::size_t b = 0; b < framesFrom.size(); ++b)
      allowances.push_back(draw(0.0, 1.0) < 0.15 ? INFINITE : std::pow(draw(0.0, 1.0), 2.0) * 4.0);
    std::vector<double> left = allowances;
    double advance = -1.0;
    bool hitsEnd = false;
    ASSERT_TRUE(ask(from, rates, rest, left, advance, hitsEnd).succeeded());
    ASSERT_GE(advance, 0.0);
    ASSERT_LE(advance, rest);
    ASSERT_EQ(hitsEnd, advance == rest);

    double shortestExcess = rest;
    for (unsigned int m = 0; m < 24; ++m)
    {
      const auto motion = randomMotion(from, rates, m % 2 == 0 ? INFINITE : advance);
      for (unsigned int i = 1; i <= 24; ++i)
      {
        const std::vector<double> moved = displacements(framesFrom, motion(advance * i / 24.0));
        for (std::size_t b = 0; b < moved.size(); ++b)
        {
          ASSERT_LE(moved[b], allowances[b]) << "trial " << trial << " body " << b;
          if (!std::isinf(allowances[b]))
          {
            ASSERT_LE(moved[b], allowances[b] - left[b] + 1e-12);
          }
        }
      }
      for (unsigned int i = 1; i <= 100 && !hitsEnd && advance * (1.0 + 0.05 * i) < shortestExcess; ++i)
      {
        const double s = advance * (1.0 + 0.05 * i);
        const std::vector<double> moved = displacements(framesFrom, motion(s));
        for (std::size_t b = 0; b < moved.size(); ++b)
          if (moved[b] > allowances[b])
            shortestExcess = std::min(shortestExcess, s);
      }
    }
    if (hitsEnd || advance == 0.0)
      continue;
    ++countLimited;
    sumOfRatios += advance / shortestExcess;
  }
  // The best advance is at most the shortest at which one of the sampled motions moved a body too far.
  ASSERT_GT(countLimited, 150u);
  EXPECT_GT(sumOfRatios / countLimited, 0.8);
}

TEST_F(BoundedMove, DisplacementsOfAWholeMotionAreBoundedAtEveryScale)
{
  for (unsigned int trial = 0; trial < 60; ++trial)
  {
    makeDevice(trial % 2 == 0 ? std::vector<int>{5, 0, 3} : std::vector<int>{0, 2, 6, 4});
    const std::vector<double> from = randomValues(), rates = randomRates();
    const CorvConfig config = configAt(from);
    const std::vector<ClumMat4> framesFrom = bodyFrames(from);
    for (const double rest : {1e-9, 1e-3, 0.5, 5.0})
    {
      std::vector<double> bounds;
      ASSERT_TRUE(m_device->boundDisplacements(config, rest, rates, bounds).succeeded());
      ASSERT_EQ(bounds.size(), framesFrom.size());
      // An allowance of just that bound covers the motion; half of it does not.
      for (std::size_t b = 0; b < bounds.size(); ++b)
      {
        std::vector<double> left(bounds.size(), INFINITE);
        double advance = 0.0;
        bool hitsEnd = false;
        left[b] = bounds[b] * (1.0 + 1e-12);
        ASSERT_TRUE(ask(from, rates, rest, left, advance, hitsEnd).succeeded());
        EXPECT_TRUE(hitsEnd);
        left[b] = 0.5 * bounds[b];
        ASSERT_TRUE(ask(from, rates, rest, left, advance, hitsEnd).succeeded());
        EXPECT_EQ(hitsEnd, bounds[b] == 0.0);
      }
      for (unsigned int m = 0; m < 8; ++m)
      {
        const std::vector<double> moved = displacements(framesFrom, randomMotion(from, rates, rest)(rest));
        for (std::size_t b = 0; b < moved.size(); ++b)
          ASSERT_LE(moved[b], bounds[b] + 1e-13);
      }
    }
    std::vector<double> untouched = {-1.0};
    EXPECT_TRUE(m_device->boundDisplacements(config, -1.0, rates, untouched).failed());
    EXPECT_EQ(untouched, std::vector<double>{-1.0});
  }
}

TEST_F(BoundedMove, OneBoundAnswersSeveralQuestionsWhateverIsAskedBetween)
{
  for (unsigned int trial = 0; trial < 40; ++trial)
  {
    makeDevice(trial % 2 == 0 ? std::vector<int>{5, 0, 3} : std::vector<int>{0, 2, 6, 4});
    const std::vector<double> values[2] = {randomValues(), randomValues()}, rates[2] = {randomRates(), randomRates()};
    const CorvConfig configs[2] = {configAt(values[0]), configAt(values[1])};
    CorvMotionBound bounds[2];
    for (unsigned int k = 0; k < 2; ++k)
      ASSERT_TRUE(bounds[k].set(*m_device, configs[k], rates[k]).succeeded());
    for (const double allowance : {0.01, 0.3})
      for (unsigned int k = 0; k < 2; ++k)
      {
        std::vector<double> left(bounds[k].countBodies(), allowance), moved(left.size()), expectedMoved;
        EXPECT_EQ(bounds[k].advanceWithin(left.data(), 0.7), bounds[k].advance(std::vector<double>(left).data(), 0.7));
        bounds[k].displacements(0.7, moved.data());
        std::vector<double> expectedLeft = left;
        double advance = 0.0;
        bool hitsEnd = false;
        ASSERT_TRUE(ask(values[k], rates[k], 0.7, expectedLeft, advance, hitsEnd).succeeded());
        ASSERT_TRUE(m_device->boundDisplacements(configs[k], 0.7, rates[k], expectedMoved).succeeded());
        EXPECT_EQ(bounds[k].advance(left.data(), 0.7), advance);
        EXPECT_EQ(left, expectedLeft);
        EXPECT_EQ(moved, expectedMoved);
      }
    // The device may change while a bound is kept: it goes on to tell of what was.
    const double before = bounds[0].advanceWithin(std::vector<double>(bounds[0].countBodies(), 0.3).data(), 0.7);
    ASSERT_TRUE(m_device->rootJoint()->addMobileGeometry(ClumBox::create(90.0, 90.0, 90.0)).succeeded());
    std::vector<double> ignored;
    ASSERT_TRUE(m_device->boundDisplacements(configs[0], 0.7, rates[0], ignored).succeeded());
    EXPECT_EQ(bounds[0].advanceWithin(std::vector<double>(bounds[0].countBodies(), 0.3).data(), 0.7), before);
  }
}

TEST_F(BoundedMove, StraightMotionsAreBoundedByHowTheJointsMoveTogether)
{
  const std::vector<std::vector<int>> trees = {
    {5},    {0, 0, 0, 0, 0, 0}, {1, 0, 1, 0}, {4, 0, 3}, {3, 3},      {2, 1, 2},
    {0, 7}, {5, 3, 1, 0, 4},    {1, 1, 1},    {4},       {0, 6, 5, 0}};
  double sumOfGains = 0.0;
  unsigned int countGains = 0;
  for (unsigned int trial = 0; trial < 330; ++trial)
  {
    const std::vector<int>& tree = trees[trial % trees.size()];
    makeDevice(tree);
    // Of a client's own effect no more is known than how fast it may move.
    const bool isKnown = std::find(tree.begin(), tree.end(), 6) == tree.end();
    const std::vector<double> from = randomValues(), rates = randomRates();
    std::vector<double> velocity = rates;
    for (double& number : velocity)
      number = draw(-1.0, 1.0) < 0.0 ? -number : number;
    const auto at = [&](double i_s)
    {
      std::vector<double> values = from;
      for (std::size_t k = 0; k < values.size(); ++k)
        values[k] += velocity[k] * i_s;
      return values;
    };
    const CorvConfig config = configAt(from);
    const std::vector<ClumMat4> framesFrom = bodyFrames(from);
    CorvMotionBound straight, any;
    ASSERT_TRUE(straight.setStraight(*m_device, config, velocity).succeeded());
    ASSERT_TRUE(any.set(*m_device, config, rates).succeeded());
    for (const double rest : {1e-7, 1e-2, 0.3, 4.0})
    {
      std::vector<double> bounds(framesFrom.size()), anyBounds(bounds.size());
      straight.displacements(rest, bounds.data());
      any.displacements(rest, anyBounds.data());
      std::vector<double> allowances, left;
      for (std::size_t b = 0; b < bounds.size(); ++b)
      {
        EXPECT_LE(bounds[b], anyBounds[b] * 1.02);
        allowances.push_back(draw(0.0, 1.0) < 0.15 ? INFINITE : draw(0.0, 1.0) * bounds[b]);
      }
      left = allowances;
      const double advance = straight.advance(left.data(), rest);
      EXPECT_EQ(straight.advanceWithin(allowances.data(), rest), advance);
      EXPECT_GE(advance, any.advanceWithin(allowances.data(), rest) * 0.98);
      // Forth and back.
      for (int i = -32; i <= 32; ++i)
      {
        const std::vector<double> whole = displacements(framesFrom, at(rest * i / 32.0));
        const std::vector<double> moved = displacements(framesFrom, at(advance * i / 32.0));
        for (std::size_t b = 0; b < bounds.size(); ++b)
        {
          ASSERT_LE(whole[b], bounds[b] + 1e-13) << "trial " << trial << " body " << b << " rest " << rest;
          ASSERT_LE(moved[b], allowances[b] + 1e-13) << "trial " << trial << " body " << b << " rest " << rest;
          if (!std::isinf(allowances[b]))
          {
            ASSERT_LE(moved[b], allowances[b] - left[b] + 1e-13);
          }
        }
      }
      const std::vector<double> moved = displacements(framesFrom, at(rest));
      for (std::size_t b = 0; b < bounds.size() && isKnown && rest == 1e-7; ++b)
      {
        if (moved[b] > 1e-3 * rest)
        {
          EXPECT_LE(bounds[b], moved[b] * (1.0 + 1e-5)) << "trial " << trial << " body " << b;
          sumOfGains += anyBounds[b] / bounds[b];
          ++countGains;
        }
      }
    }
  }
  EXPECT_GT(sumOfGains / countGains, 1.3);
}

TEST_F(BoundedMove, IsExactWhereOneJointMovesOneBody)
{
  const CorvJointShPtr turn = CorvJointRotation::create(ClumMat4(), ClumMat4::INVERSE_Z_AXIS);
  const ClumGeometryShPtr box = ClumBox::create(2.0, 1.0, 1.0);
  box->position(frameAt(4.0, 0.0, 3.0));
  ASSERT_TRUE(turn->addMobileGeometry(box).succeeded());
  const double lever = std::sqrt(25.0 + 0.25);
  m_cornersOfJoint = {{turn, {}}};
  useDevice(turn);
  for (double allowance : {0.001, 0.5, 3.0, 9.0, 10.0})
  {
    std::vector<double> left = {allowance};
    double advance = 0.0;
    bool hitsEnd = true;
    ASSERT_TRUE(ask({0.4}, {0.5}, 100.0, left, advance, hitsEnd).succeeded());
    const double best = 2.0 * std::asin(allowance / (2.0 * lever)) / 0.5;
    EXPECT_FALSE(hitsEnd);
    EXPECT_LE(advance, best);
    EXPECT_GT(advance, 0.995 * best);
    EXPECT_NEAR(left[0], 0.0, 0.005 * allowance);
  }
  // A body never gets farther away than across its circle.
  std::vector<double> left = {2.0 * lever + 0.001};
  double advance = 0.0;
  bool hitsEnd = false;
  ASSERT_TRUE(ask({0.4}, {0.5}, 100.0, left, advance, hitsEnd).succeeded());
  EXPECT_TRUE(hitsEnd);
  EXPECT_NEAR(left[0], 0.001, 1e-6);

  // A round body is enclosed by points and a radius.
  const CorvJointShPtr slide = CorvJointTranslation::create(ClumMat4(), ClumMat4::X_AXIS);
  const CorvJointShPtr hinge = CorvJointRotation::create(ClumMat4(), ClumMat4::Z_AXIS);
  const ClumGeometryShPtr capsule = ClumCapsule::create(0.5, 2.0);
  capsule->position(frameAt(0.0, 4.0, 0.0));
  ASSERT_TRUE(hinge->addMobileGeometry(capsule).succeeded());
  ASSERT_TRUE(slide->addJoint(hinge).succeeded());
  m_cornersOfJoint = {{hinge, {}}};
  useDevice(slide);
  left = {0.3};
  ASSERT_TRUE(ask({7.0, 2.0}, {0.0, 1.0}, 100.0, left, advance, hitsEnd).succeeded());
  EXPECT_NEAR(advance, 2.0 * std::asin(0.3 / 9.0), 1e-4);
  left = {0.3};
  ASSERT_TRUE(ask({7.0, 2.0}, {0.25, 0.0}, 100.0, left, advance, hitsEnd).succeeded());
  EXPECT_NEAR(advance, 1.2, 1e-8);
  EXPECT_LE(advance, 1.2);
}

TEST_F(BoundedMove, FoldedArmThatUnfoldsIsBoundedByTodaysLevers)
{
  m_device = planarArm(2);
  m_space = m_device->configSpace();
  const std::vector<double> folded = {0.3, 3.1};
  const CorvConfig from = configAt(folded);
  std::vector<ClumMat4> before, after;
  ASSERT_TRUE(m_device->computeBodyPositions(from, before).succeeded());
  std::vector<double> left = {INFINITE, 0.8};
  double advance = 0.0;
  bool hitsEnd = false;
  ASSERT_TRUE(ask(folded, {1.0, 1.0}, 10.0, left, advance, hitsEnd).succeeded());
  ASSERT_GT(advance, 0.3);
  for (double first : {-1.0, 1.0})
    for (double second : {-1.0, 1.0})
    {
      ASSERT_TRUE(
        m_device->computeBodyPositions(configAt({0.3 + first * advance, 3.1 + second * advance}), after).succeeded());
      for (double end : {0.0, 1.0})
        EXPECT_LE((after[1] * ClumPoint3(end, 0.0, 0.0)).distanceFrom(before[1] * ClumPoint3(end, 0.0, 0.0)), 0.8);
    }
}

TEST_F(BoundedMove, BodiesThatAreFreeOrDoNotMoveDoNotLimit)
{
  m_device = planarArm(3);
  m_space = m_device->configSpace();
  double advance = 0.0;
  bool hitsEnd = false;
  std::vector<double> left = {0.0, 0.0, INFINITE};
  ASSERT_TRUE(ask({0.1, 0.2, 0.3}, {0.0, 0.0, 1.0}, 2.0, left, advance, hitsEnd).succeeded());
  EXPECT_TRUE(hitsEnd);
  EXPECT_EQ(advance, 2.0);
  EXPECT_EQ(left, (std::vector<double>{0.0, 0.0, INFINITE}));
  left = {0.0, 0.0, 0.0};
  ASSERT_TRUE(ask({0.1, 0.2, 0.3}, {0.0, 0.0, 1.0}, 2.0, left, advance, hitsEnd).succeeded());
  EXPECT_FALSE(hitsEnd);
  EXPECT_EQ(advance, 0.0);

  const CorvDeviceShPtr bare = CorvDevice::create();
  ASSERT_TRUE(bare->setRootJoint(CorvJointFreeFlyer::create(ClumMat4())).succeeded());
  const CorvConfig config(bare);
  left.clear();
  ASSERT_TRUE(bare->boundedMove(config, config, 5.0, std::vector<double>(6, 1.0), left, advance, hitsEnd).succeeded());
  EXPECT_TRUE(hitsEnd);
}

TEST_F(BoundedMove, RefusesWhatItCannotBoundAndTouchesNothing)
{
  m_device = planarArm(2);
  m_space = m_device->configSpace();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> values = {0.1, 0.2}, rates = {1.0, 1.0}, room = {0.1, 0.1};
  const auto refuses = [&](const std::vector<double>& i_values, const std::vector<double>& i_rates, double i_rest,
                           const std::vector<double>& i_room)
  {
    std::vector<double> left = i_room;
    double advance = -7.0;
    bool hitsEnd = true;
    const bool failed = ask(i_values, i_rates, i_rest, left, advance, hitsEnd).failed();
    return failed && advance == -7.0 && hitsEnd && left.size() == i_room.size() &&
           (left == i_room || left[0] != left[0]);
  };
  EXPECT_FALSE(refuses(values, rates, 1.0, room));
  EXPECT_TRUE(refuses({0.1, nan}, rates, 1.0, room));
  EXPECT_TRUE(refuses(values, {1.0}, 1.0, room));
  EXPECT_TRUE(refuses(values, {1.0, -1.0}, 1.0, room));
  EXPECT_TRUE(refuses(values, {1.0, nan}, 1.0, room));
  EXPECT_TRUE(refuses(values, rates, nan, room));
  EXPECT_TRUE(refuses(values, rates, -1.0, room));
  EXPECT_TRUE(refuses(values, rates, INFINITE, room));
  EXPECT_TRUE(refuses(values, rates, 1.0, {0.1}));
  EXPECT_TRUE(refuses(values, rates, 1.0, {nan, 0.1}));

  const CorvDeviceShPtr other = planarArm(2);
  const CorvConfig here = configAt(values), there(other, values);
  std::vector<double> left = room;
  double advance = 0.0;
  bool hitsEnd = false;
  EXPECT_TRUE(m_device->boundedMove(here, there, 1.0, rates, left, advance, hitsEnd).failed());
  EXPECT_TRUE(m_device->boundedMove(there, there, 1.0, rates, left, advance, hitsEnd).failed());
  EXPECT_EQ(left, room);

  // A computed dof moves as its constraint says; a locked one, or one computed from it alone, does not move.
  ASSERT_TRUE(m_device->userConstraints()->add(DoublingConstraint::create(m_device->configSpace())).succeeded());
  EXPECT_TRUE(refuses(values, {1.0, 0.0}, 1.0, room));
  m_device->dof(0)->lockAt(0.1);
  EXPECT_FALSE(refuses(values, {0.0, 0.0}, 1.0, room));
}

TEST_F(BoundedMove, CountsTheDofsOfAWiderSpaceAndFollowsTheShape)
{
  const CorvDeviceShPtr first = planarArm(1), second = planarArm(1);
  const CorvCSCompositeShPtr both = CorvCSComposite::create("both");
  ASSERT_TRUE(both->appendSubspace(first->configSpace()).succeeded());
  ASSERT_TRUE(both->appendSubspace(second->configSpace()).succeeded());
  const CorvConfig config(CorvConfigSpaceShPtr(both), {0.0, 0.0});
  double advance = 0.0;
  bool hitsEnd = false;
  std::vector<double> left = {0.1};
  ASSERT_TRUE(second->boundedMove(config, config, 1.0, {1.0, 0.0}, left, advance, hitsEnd).succeeded());
  EXPECT_TRUE(hitsEnd);
  ASSERT_TRUE(second->boundedMove(config, config, 1.0, {0.0, 1.0}, left, advance, hitsEnd).succeeded());
  EXPECT_FALSE(hitsEnd);
  const double withShortLink = advance;

  const ClumGeometryShPtr tool = ClumBox::create(0.1, 0.1, 0.1);
  tool->position(frameAt(3.0, 0.0, 0.0));
  ASSERT_TRUE(second->rootJoint()->addMobileGeometry(tool).succeeded());
  left = {0.1};
  ASSERT_TRUE(second->boundedMove(config, config, 1.0, {0.0, 1.0}, left, advance, hitsEnd).succeeded());
  EXPECT_NEAR(advance, withShortLink / 3.05, 0.01 * withShortLink);
}
