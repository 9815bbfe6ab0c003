#include "kinematics/orvConfig.h"
#include "metrics/orvMetricRevolute.h"
#include "support/composites.h"
#include "support/spaces.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <unordered_map>

// The laws of the notions of equality, over values that tend to meet: whole and half turns, zeros of both signs.

namespace
{
using Values = std::vector<double>;
const double HALF_TURN = 3.14159265358979323846;

std::vector<CorvConfig> meetingConfigs(const CorvConfigSpaceShPtr& i_space, unsigned int i_count,
                                       std::mt19937& io_random)
{
  const Values pool = {0.0,           -0.0,           1.0,           1.0 + 1e-11, HALF_TURN, -HALF_TURN,
                       2 * HALF_TURN, -2 * HALF_TURN, 3 * HALF_TURN, 0.25,        100.0,     -5.5};
  std::vector<CorvConfig> configs;
  while (configs.size() < i_count)
  {
    Values values(i_space->size());
    for (double& value : values)
      value = pool[io_random() % pool.size()];
    configs.emplace_back(i_space, values);
    // The same up to whole turns, as far as they can be told in doubles.
    if (io_random() % 3 == 0)
      configs.push_back(configs.back().canonical());
  }
  return configs;
}

bool isCircular(const CorvDofShPtr& i_dof)
{
  return i_dof->isRevolute() && !i_dof->isBounded();
}

/// By the definition, dof by dof.
bool areCanonicallyEqual(const CorvConfig& i_a, const CorvConfig& i_b)
{
  for (unsigned int rank = 0; rank < i_a.size(); ++rank)
  {
    const double a = i_a.dofValue(rank), b = i_b.dofValue(rank);
    if (isCircular(i_a.space()->dof(rank)) ? CorvMetricRevolute::limitAngle(a) != CorvMetricRevolute::limitAngle(b)
                                           : a != b)
      return false;
  }
  return true;
}
} // namespace

TEST(CorvConfigEquality, EqualImpliesEqualHashForBothPairs)
{
  const CorvConfig::canonically_equal_to canonicallyEqual;
  const CorvConfig::equivalent_to equivalent;
  const CorvConfig::less less;
  unsigned int equalPairs = 0, canonicalPairs = 0;
  for (unsigned int seed = 0; seed < 15; ++seed)
  {
    std::mt19937 random(seed);
    CorvUtility::randomSeed(seed);
    const CorvConfigSpaceShPtr space = makeRandomSpace(3);
    const std::vector<CorvConfig> configs = meetingConfigs(space, 60, random);
    for (const CorvConfig& a : configs)
      for (const CorvConfig& b : configs)
      {
        const bool areEqual = a == b, areCanonical = canonicallyEqual(a, b), areEquivalent = equivalent(a, b);
        EXPECT_EQ(areEqual, b == a);
        EXPECT_EQ(areCanonical, areCanonicallyEqual(a, b));
        EXPECT_EQ(areEquivalent, equivalent(b, a));
        EXPECT_TRUE(!areEqual || CorvConfig::hash()(a) == CorvConfig::hash()(b));
        EXPECT_TRUE(!areCanonical || CorvConfig::canonical_hash()(a) == CorvConfig::canonical_hash()(b));
        EXPECT_TRUE(!areEqual || areCanonical);
        EXPECT_TRUE(!areCanonical || areEquivalent);
        EXPECT_FALSE(less(a, b) && less(b, a));
        EXPECT_EQ(less(a, b) || less(b, a), !areEquivalent);
        equalPairs += areEqual && &a != &b;
        canonicalPairs += areCanonical && !areEqual;
      }
  }
  EXPECT_GT(equalPairs, 100u);
  EXPECT_GT(canonicalPairs, 100u);
}

TEST(CorvConfigEquality, CanonicalFormIsReducedOnceAndHashesAsItself)
{
  for (unsigned int seed = 0; seed < 20; ++seed)
  {
    CorvUtility::randomSeed(seed);
    const CorvConfigSpaceShPtr space = makeRandomSpace(3);
    for (int draw = 0; draw < 20; ++draw)
    {
      const CorvConfig config = randomConfigOf(space, 50.0);
      const CorvConfig reduced = config.canonical();
      EXPECT_EQ(reduced.canonical(), reduced);
      EXPECT_TRUE(CorvConfig::canonically_equal_to()(config, reduced));
      EXPECT_EQ(CorvConfig::canonical_hash()(config), CorvConfig::hash()(reduced));
      for (unsigned int rank = 0; rank < config.size(); ++rank)
      {
        const double before = config.dofValue(rank), after = reduced.dofValue(rank);
        if (!isCircular(space->dof(rank)))
          EXPECT_EQ(after, before);
        else
        {
          EXPECT_TRUE(-HALF_TURN <= after && after < HALF_TURN) << after;
          EXPECT_NEAR(std::remainder(before - after, 2 * HALF_TURN), 0.0, 1e-12);
        }
      }
    }
  }
}

TEST(CorvConfigEquality, FunctorsServeHashedMaps)
{
  const CorvCSCompositeShPtr space = compositeOf({CorvDof::create(true), CorvDof::create(false)});
  std::unordered_map<CorvConfig, int, CorvConfig::hash, std::equal_to<CorvConfig>> exact;
  std::unordered_map<CorvConfig, int, CorvConfig::canonical_hash, CorvConfig::canonically_equal_to> canonical;
  for (const double angle : {HALF_TURN, -HALF_TURN, 0.0, -0.0, 2 * HALF_TURN})
  {
    ++exact[CorvConfig(space, Values{angle, 1.0})];
    ++canonical[CorvConfig(space, Values{angle, 1.0})];
  }
  EXPECT_EQ(exact.size(), 4u);
  EXPECT_EQ(canonical.size(), 2u);
  EXPECT_EQ(canonical[CorvConfig(space, Values{-HALF_TURN, 1.0})], 2);
  // In a walk they look at the part that is in view.
  const CorvConfig a(space, Values{HALF_TURN, 1.0}), b(space, Values{-HALF_TURN, 2.0});
  ASSERT_TRUE(a.walkDofs().succeeded() && b.walkDofs().succeeded());
  EXPECT_TRUE(CorvConfig::canonically_equal_to()(a, b));
  EXPECT_EQ(CorvConfig::canonical_hash()(a), CorvConfig::canonical_hash()(b));
  EXPECT_NE(a, b);
}
