#include "foundation/lumClass.h"
#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumPRNG.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvKEAnchor.h"
#include "kinematics/orvKEFreeFlyer.h"
#include "kinematics/orvKEPlan.h"
#include "kinematics/orvKERotate.h"
#include "kinematics/orvKERotateTaitBryant.h"
#include "kinematics/orvKERotateXY.h"
#include "kinematics/orvKETranslate.h"
#include "kinematics/orvUtility.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
struct EffectCase
{
  CorvKinematicalEffectShPtr effect;
  std::string dofs; ///< one letter a dof: r for revolute, t for translation
  bool hasSecondDerivative = true;
};

std::vector<EffectCase> allEffects()
{
  return {{CorvKEAnchor::create(), ""},
          {CorvKERotateX::create(), "r"},
          {CorvKERotateY::create(), "r"},
          {CorvKERotateZ::create(), "r"},
          {CorvKERotateInverseX::create(), "r"},
          {CorvKERotateInverseY::create(), "r"},
          {CorvKERotateInverseZ::create(), "r"},
          {CorvKETranslateX::create(), "t"},
          {CorvKETranslateY::create(), "t"},
          {CorvKETranslateZ::create(), "t"},
          {CorvKETranslateInverseX::create(), "t"},
          {CorvKETranslateInverseY::create(), "t"},
          {CorvKETranslateInverseZ::create(), "t"},
          {CorvKERotateXY::create(), "rr"},
          {CorvKERotateTaitBryant::create(), "rrr"},
          {CorvKEPlan::create(), "ttr"},
          {CorvKEFreeFlyer::create(), "tttrrr", false}};
}

std::vector<double> drawnValues(std::size_t i_count)
{
  std::vector<double> values(i_count);
  for (double& value : values)
    value = CorvUtility::random(-3.0, 3.0);
  return values;
}

double largestGap(const ClumMat4& i_a, const ClumMat4& i_b)
{
  double gap = 0.0;
  for (unsigned int i = 0; i < 16; ++i)
    gap = std::max(gap, std::fabs(i_a.data()[i] - i_b.data()[i]));
  return gap;
}

/// The central difference quotient of a map from values to matrices in one direction.
template <class MAP>
ClumMat4 quotient(const MAP& i_map, std::vector<double> i_values, unsigned int i_rank)
{
  const double h = 1e-5;
  i_values[i_rank] += h;
  const ClumMat4 after = i_map(i_values);
  i_values[i_rank] -= 2.0 * h;
  return (after + i_map(i_values) * -1.0) * (0.5 / h);
}
} // namespace

TEST(CorvKinematicalEffect, HasTheDofsAndTheTypeOfItsKind)
{
  for (const EffectCase& item : allEffects())
  {
    ASSERT_TRUE(item.effect);
    const std::string name = item.effect->classObject()->name();
    ASSERT_EQ(item.effect->configSpace()->size(), item.dofs.size()) << name;
    for (unsigned int i = 0; i < item.dofs.size(); ++i)
      EXPECT_EQ(item.effect->configSpace()->dof(i)->isRevolute(), item.dofs[i] == 'r') << name;
  }
  EXPECT_EQ(CorvKERotateInverseZ::create()->type(), "orvane.core.kinematical-effect.rotate-inverse-z");
  EXPECT_EQ(CorvKEPlan::create()->configSpace()->type(), "orvane.core.config-space.plan");
  EXPECT_FALSE(CorvKEPlan::create(""));
}

TEST(CorvKinematicalEffect, ForwardTurnsAndMovesTheWayItsNameSays)
{
  const double q = 0.7;
  const ClumVect3 x(1.0, 0.0, 0.0), y(0.0, 1.0, 0.0), z(0.0, 0.0, 1.0);
  const ClumVect3 axes[] = {x, y, z};
  const CorvKinematicalEffectShPtr rotations[] = {CorvKERotateX::create(), CorvKERotateY::create(),
                                                  CorvKERotateZ::create()};
  const CorvKinematicalEffectShPtr inverses[] = {CorvKETranslateInverseX::create(), CorvKETranslateInverseY::create(),
                                                 CorvKETranslateInverseZ::create()};
  for (unsigned int i = 0; i < 3; ++i)
  {
    ClumMat4 expected;
    expected.rotate(axes[i], q);
    EXPECT_LT(largestGap(rotations[i]->forward({q}), expected), 1e-15);
    EXPECT_EQ(inverses[i]->forward({q}).translation(), axes[i] * -q);
  }
  EXPECT_LT(largestGap(CorvKERotateInverseY::create()->forward({q}), CorvKERotateY::create()->forward({-q})), 1e-15);
  EXPECT_LT(largestGap(CorvKERotateXY::create()->forward({q, 0.4}),
                       CorvKERotateX::create()->forward({q}) * CorvKERotateY::create()->forward({0.4})),
            1e-15);
  EXPECT_EQ(CorvKEFreeFlyer::create()->forward({1.0, 2.0, 3.0, 0.0, 0.0, 0.0}).translation(), ClumVect3(1.0, 2.0, 3.0));
}

TEST(CorvKinematicalEffect, InverseUndoesForward)
{
  CorvUtility::randomSeed(1);
  for (const EffectCase& item : allEffects())
    for (int i = 0; i < 200; ++i)
    {
      const std::vector<double> values = drawnValues(item.dofs.size());
      const ClumMat4 frame = item.effect->forward(values);
      const std::vector<double> found = item.effect->inverse(frame);
      ASSERT_EQ(found.size(), values.size());
      EXPECT_LT(largestGap(item.effect->forward(found), frame), 1e-12) << item.effect->classObject()->name();
      // Only Rx·Ry·Rz has a second set of angles within the range.
      for (std::size_t k = 0; k < values.size() && values.size() < 3; ++k)
        EXPECT_NEAR(found[k], values[k], 1e-14) << item.effect->classObject()->name();
    }
  // An exact half turn reads as pi both ways round.
  ClumMat4 half;
  half(1, 1) = half(2, 2) = -1.0;
  half(2, 1) = -0.0;
  EXPECT_EQ(CorvKERotateX::create()->inverse(half)[0], ClumGeometryUtilities::PI);
  EXPECT_EQ(CorvKERotateInverseX::create()->inverse(half)[0], ClumGeometryUtilities::PI);
}

TEST(CorvKinematicalEffect, DerivativesAgreeWithFiniteDifferences)
{
  CorvUtility::randomSeed(2);
  for (const EffectCase& item : allEffects())
  {
    const std::string name = item.effect->classObject()->name();
    const CorvKinematicalEffect& effect = *item.effect;
    for (int trial = 0; trial < 20; ++trial)
    {
      const std::vector<double> values = drawnValues(item.dofs.size());
      for (unsigned int i = 0; i < values.size(); ++i)
      {
        ClumMat4 derivative;
        ASSERT_TRUE(effect.forwardDerivate(values, i, derivative).succeeded());
        EXPECT_LT(largestGap(derivative, quotient([&](const auto& q) { return effect.forward(q); }, values, i)), 1e-9)
          << name << " " << i;
        for (unsigned int k = 0; k < values.size(); ++k)
        {
          ClumMat4 second;
          ASSERT_EQ(effect.forwardSecondDerivate(values, i, k, second).succeeded(), item.hasSecondDerivative);
          const auto first = [&](const std::vector<double>& q)
          {
            ClumMat4 result;
            effect.forwardDerivate(q, i, result);
            return result;
          };
          if (!item.hasSecondDerivative)
            continue;
          EXPECT_LT(largestGap(second, quotient(first, values, k)), 1e-9) << name << " " << i << " " << k;
        }
      }
    }
  }
}

TEST(CorvKinematicalEffect, VelocityBoundsTheMotionOfTheFrame)
{
  CorvUtility::randomSeed(3);
  const double step = 1e-4;
  for (const EffectCase& item : allEffects())
    for (int trial = 0; trial < 200; ++trial)
    {
      const std::vector<double> values = drawnValues(item.dofs.size()), rates = drawnValues(item.dofs.size());
      std::vector<double> later = values;
      for (std::size_t i = 0; i < values.size(); ++i)
        later[i] += step * rates[i];
      double linear = -1.0, angular = -1.0;
      ASSERT_TRUE(item.effect->forwardVelocity(rates, linear, angular).succeeded());
      const ClumMat4 a = item.effect->forward(values), b = item.effect->forward(later);
      EXPECT_LE((b.translation() - a.translation()).norm(), step * linear * (1.0 + 1e-9) + 1e-15);
      EXPECT_LE(ClumGeometryUtilities::slerpAngle(a, b), step * angular * (1.0 + 1e-9) + 1e-14);
    }
  double linear = 0.0, angular = 0.0;
  CorvKEFreeFlyer::create()->forwardVelocity({3.0, 4.0, 0.0, 3.0, -4.0, -2.0}, linear, angular);
  EXPECT_DOUBLE_EQ(linear, 5.0);
  EXPECT_DOUBLE_EQ(angular, 7.0);
  std::vector<double> rates;
  CorvKEFreeFlyer::create()->inverseVelocity(1.0, 2.0, 3.0, 4.0, ClumVect3(1.0, 0.0, 0.0), rates);
  EXPECT_EQ(rates, (std::vector<double>{1.0, 2.0, 3.0, 0.0, 0.0, 4.0}));
}

TEST(CorvKinematicalEffect, RefusesNullWrongSizesAndRanks)
{
  for (const EffectCase& item : allEffects())
  {
    const CorvKinematicalEffect& effect = *item.effect;
    const auto size = static_cast<unsigned int>(item.dofs.size());
    const double* const none = nullptr;
    const std::vector<double> values(size, 0.5), tooMany(size + 1, 0.5);
    double linear = 0.0, angular = 0.0;
    ClumMat4 mat;
    mat(0, 3) = 42.0;
    EXPECT_TRUE(effect.forward(none, mat) == lmStatus::FAILURE);
    EXPECT_TRUE(effect.inverse(mat, static_cast<double*>(nullptr)).failed());
    EXPECT_TRUE(effect.forwardVelocity(none, linear, angular).failed());
    EXPECT_TRUE(effect.forwardDerivate(none, 0, mat).failed());
    EXPECT_TRUE(effect.forwardSecondDerivate(none, 0, 0, mat).failed());
    EXPECT_TRUE(effect.forward(tooMany, mat).failed());
    EXPECT_TRUE(effect.forwardDerivate(values, size, mat).failed());
    EXPECT_TRUE(effect.forwardSecondDerivate(values, 0, size, mat).failed());
    EXPECT_EQ(mat(0, 3), 42.0);
    EXPECT_TRUE(effect.forward(values, mat).succeeded());
  }
}

TEST(CorvKinematicalEffect, WorksOnConfigurationsAndHintsItsAxis)
{
  const CorvKEPlanShPtr plan = CorvKEPlan::create();
  CorvConfig cfg(plan->configSpace(), {1.0, 2.0, 0.3});
  ClumMat4 fromConfig;
  ASSERT_TRUE(plan->forward(cfg, fromConfig).succeeded());
  EXPECT_EQ(fromConfig, plan->forward({1.0, 2.0, 0.3}));
  CorvConfig read(plan->configSpace());
  ASSERT_TRUE(plan->inverse(fromConfig, read).succeeded());
  EXPECT_NEAR(read.dofValue(2), 0.3, 1e-15);
  ClumVect3 axis;
  ASSERT_TRUE(plan->getAxisHint(cfg, 2, axis).succeeded());
  EXPECT_LT((axis - ClumVect3(0.0, 0.0, 1.0)).norm(), 1e-14);
  ASSERT_TRUE(plan->getAxisHint(cfg, 0, axis).succeeded());
  EXPECT_LT((axis - ClumVect3(1.0, 0.0, 0.0)).norm(), 1e-14);
  EXPECT_TRUE(plan->getAxisHint(cfg, 3, axis).failed());

  // The second axis of Rx·Ry is turned by the first.
  const CorvKERotateXYShPtr xy = CorvKERotateXY::create();
  ASSERT_TRUE(xy->getAxisHint(CorvConfig(xy->configSpace(), {0.4, 0.9}), 1, axis).succeeded());
  EXPECT_LT((axis - ClumVect3(0.0, std::cos(0.4), std::sin(0.4))).norm(), 1e-14);
}

TEST(CorvKinematicalEffect, CopiesHaveASpaceOfTheirOwn)
{
  for (const EffectCase& item : allEffects())
  {
    const CorvKinematicalEffectShPtr copy = item.effect->clone();
    const CorvKinematicalEffectShPtr coded =
      boost::dynamic_pointer_cast<CorvKinematicalEffect>(item.effect->cloneByCoding());
    ASSERT_TRUE(copy && coded);
    for (const CorvKinematicalEffectShPtr& other : {copy, coded})
    {
      EXPECT_EQ(other->classObject(), item.effect->classObject());
      EXPECT_NE(other->configSpace(), item.effect->configSpace());
      EXPECT_TRUE(*other == *item.effect) << item.effect->classObject()->name();
      const std::vector<double> values(item.dofs.size(), 0.3);
      EXPECT_EQ(other->forward(values), item.effect->forward(values));
    }
  }
  EXPECT_TRUE(*CorvKERotateX::create() != *CorvKERotateY::create());
}

TEST(CorvUtility, WorkerScopeReplacesTheGeneratorOfItsThread)
{
  CorvUtility::randomSeed(5);
  const double first = CorvUtility::random(0.0, 1.0);
  CorvUtility::randomSeed(5);
  const ClumPRNGShPtr main = CorvUtility::prng();
  {
    const CorvUtility::CWorkerGenerator scope(main->makeWorkerGenerator());
    EXPECT_NE(CorvUtility::prng(), main);
    EXPECT_NE(CorvUtility::random(0.0, 1.0), first);
    CorvUtility::randomSeed(5);
    EXPECT_EQ(CorvUtility::random(0.0, 1.0), first);
  }
  EXPECT_EQ(CorvUtility::prng(), main);
  EXPECT_EQ(CorvUtility::orvaneVersion(), -601000);
}
