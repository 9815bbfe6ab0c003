#include "foundation/lumBox.h"
#include "foundation/lumBroadPhase.h"
#include "foundation/lumCapsule.h"
#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumSphere.h"
#include "support/allocations.h"
#include "support/meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <set>

namespace
{
constexpr double INF = std::numeric_limits<double>::infinity();

/// Moving and standing shapes at random places; the odd bodies are tested with half of what stands still only.
class BroadPhaseHall : public testing::Test
{
protected:
  static constexpr unsigned int BODIES = 12;
  static constexpr unsigned int STILLS = 90;

  BroadPhaseHall()
  {
    const ClumLeafGeometryShPtr shapes[] = {ClumBox::create(0.3, 2.0, 0.1), ClumSphere::create(0.2),
                                            ClumCapsule::create(0.1, 1.0), lPart(0.8, 0.4, 0.1)};
    for (unsigned int i = 0; i < STILLS; ++i)
    {
      add(shapes[i % 4], ClumBroadPhase::NO_BODY);
      phase.place(i, i < 3 ? ClumMat4() : randomPose(4.0)); // three at one place
    }
    for (unsigned int body = 0; body < BODIES; ++body)
    {
      const unsigned int moving = add(shapes[(body + 1) % 4], body);
      for (unsigned int still = 0; still < STILLS; still += 1 + body % 2)
        if (body % 3)
          phase.addPair(moving, still);
        else
          phase.addPair(still, moving);
      if (body > 0)
        phase.addPair(moving - 1, moving);
    }
    phase.build();
    move();
  }

  unsigned int add(const ClumLeafGeometryShPtr& i_leaf, unsigned int i_body)
  {
    leaves.push_back(i_leaf);
    return phase.addShape(*i_leaf->collisionModel(*toolkit), *i_leaf, i_body);
  }

  double number(double i_low, double i_high) { return i_low + (i_high - i_low) * (engine() / 4294967296.0); }
  ClumMat4 randomPose(double i_reach)
  {
    ClumMat4 pose;
    pose.rotate(number(-1, 1), number(-1, 1), number(-1, 1), number(-3, 3));
    const double x = number(-i_reach, i_reach), y = number(-i_reach, i_reach);
    pose.setTranslation({x, y, number(-i_reach, i_reach)});
    return pose;
  }
  void move()
  {
    for (const unsigned int shape : phase.movingShapes())
      phase.place(shape, randomPose(4.0));
    distances.clear();
    for (unsigned int pair = 0; pair < phase.countPairs(); ++pair)
    {
      const unsigned int a = phase.firstOf(pair), b = phase.secondOf(pair);
      distances.push_back(toolkit
                            ->exactDistance(*leaves[a]->collisionModel(*toolkit), phase.pose(a),
                                            *leaves[b]->collisionModel(*toolkit), phase.pose(b))
                            .upper);
    }
  }

  unsigned int bodyOfPair(unsigned int i_pair) const
  {
    const unsigned int first = phase.bodyOf(phase.firstOf(i_pair));
    return first != ClumBroadPhase::NO_BODY ? first : phase.bodyOf(phase.secondOf(i_pair));
  }
  bool isWithStill(unsigned int i_pair) const
  {
    return phase.bodyOf(phase.firstOf(i_pair)) == ClumBroadPhase::NO_BODY ||
           phase.bodyOf(phase.secondOf(i_pair)) == ClumBroadPhase::NO_BODY;
  }

  /// Walks with one limit for all; with `i_settles`, a body's limit sinks to the distances that are found.
  std::vector<unsigned int> walk(double i_limit, bool i_settles)
  {
    std::vector<unsigned int> found;
    phase.begin(BODIES);
    for (unsigned int body = 0; body < BODIES; ++body)
      phase.limit(body, i_limit);
    for (const unsigned int shape : phase.movingShapes())
      phase.follow(shape);
    ClumBroadPhase::CCandidate candidate;
    double last = -INF;
    while (phase.next(candidate))
    {
      found.push_back(candidate.pair);
      EXPECT_LE(last, candidate.lower);
      last = candidate.lower;
      EXPECT_LE(candidate.lower, distances[candidate.pair]);
      const unsigned int body = bodyOfPair(candidate.pair);
      if (i_settles)
        phase.limit(body, std::min(phase.limit(body), distances[candidate.pair]));
    }
    return found;
  }

  std::mt19937 engine{7};
  ClumCollisionToolkitShPtr toolkit = ClumCollisionToolkit::defaultCollisionToolkit();
  std::vector<ClumLeafGeometryShPtr> leaves;
  ClumBroadPhase phase;
  std::vector<double> distances; ///< by pair
};
} // namespace

TEST_F(BroadPhaseHall, FindsEveryPairWithinTheLimitOnceAndNearestFirst)
{
  for (int n = 0; n < 20; ++n)
    for (const double limit : {0.0, 0.3, 1.5, INF})
    {
      move();
      const std::vector<unsigned int> found = walk(limit, false);
      const std::set<unsigned int> isFound(found.begin(), found.end());
      EXPECT_EQ(isFound.size(), found.size());
      for (unsigned int pair = 0; pair < phase.countPairs(); ++pair)
        if (!isWithStill(pair))
        {
          EXPECT_EQ(isFound.count(pair), 0u);
          EXPECT_LE(phase.lowerBound(pair), distances[pair]);
        }
        else if (isFound.count(pair) == 0)
        {
          EXPECT_GT(distances[pair], limit);
          EXPECT_GE(distances[pair], phase.unseen(bodyOfPair(pair)));
          EXPECT_GE(phase.unseen(bodyOfPair(pair)), limit);
        }
      EXPECT_TRUE(limit > 0.0 || found.size() < phase.countPairs() / 10) << found.size();
    }
}

TEST_F(BroadPhaseHall, LooksNoFartherOnceABodyIsSettled)
{
  std::size_t looks = 0;
  for (int n = 0; n < 20; ++n)
  {
    move();
    looks += walk(INF, true).size();
    std::vector<double> nearest(BODIES, INF);
    for (unsigned int pair = 0; pair < phase.countPairs(); ++pair)
      if (isWithStill(pair))
        nearest[bodyOfPair(pair)] = std::min(nearest[bodyOfPair(pair)], distances[pair]);
    for (unsigned int body = 0; body < BODIES; ++body)
    {
      EXPECT_EQ(phase.limit(body), nearest[body]);
      EXPECT_GE(phase.unseen(body), nearest[body]);
    }
  }
  EXPECT_LT(looks, 20u * BODIES * 12u); // of 45 or 90 pairs a body
}

TEST_F(BroadPhaseHall, EnteredPairsComeInTheirPlaceAndWalksAllocateNothing)
{
  ClumBroadPhase::CCandidate candidate;
  const auto walkAll = [&]
  {
    phase.begin(BODIES);
    for (const unsigned int pair : phase.movingPairs())
      phase.enter(pair, phase.lowerBound(pair));
    for (const unsigned int shape : phase.movingShapes())
    {
      phase.place(shape, phase.pose(shape));
      phase.follow(shape);
    }
    double last = -INF;
    unsigned int count = 0;
    for (; phase.next(candidate); ++count)
    {
      EXPECT_LE(last, candidate.lower);
      last = candidate.lower;
    }
    return count;
  };
  EXPECT_EQ(walkAll(), phase.countPairs());
  const std::size_t before = countAllocations();
  const unsigned int count = walkAll();
  EXPECT_EQ(countAllocations() - before, 0u);
  EXPECT_EQ(count, phase.countPairs());
}

TEST_F(BroadPhaseHall, ShapesWithoutAPlaceAreNeverPassedOver)
{
  ClumMat4 nowhere;
  nowhere.setTranslation({std::nan(""), 0.0, 0.0});
  phase.place(phase.movingShapes()[0], nowhere);
  phase.begin(BODIES);
  phase.limit(0, 0.0);
  phase.follow(phase.movingShapes()[0]);
  ClumBroadPhase::CCandidate candidate;
  unsigned int count = 0;
  while (phase.next(candidate))
    ++count;
  EXPECT_EQ(count, STILLS);
}

// Single precision has seven digits: far from the origin, boxes and balls that almost touch keep a sound bound.
TEST_F(BroadPhaseHall, BoundsAreSoundFarAway)
{
  const unsigned int boxes[] = {add(ClumBox::create(1.0, 1.0, 1.0), 0), add(ClumBox::create(1.0, 1.0, 1.0), 1)};
  const unsigned int balls[] = {add(ClumSphere::create(0.5), 0), add(ClumSphere::create(0.5), 1)};
  const unsigned int pairs[] = {phase.addPair(boxes[0], boxes[1]), phase.addPair(balls[0], balls[1])};
  for (double away = 1e-3; away < 1e8; away *= 10.0)
    for (int n = 0; n < 100; ++n)
    {
      const ClumMat4 first = randomPose(away);
      ClumMat4 straight, step;
      straight.setTranslation(first.translation());
      step.setTranslation({1.0 + number(0.0, 1e-7) * away, 0.0, 0.0});
      phase.place(boxes[0], straight);
      phase.place(boxes[1], straight * step);
      EXPECT_LE(phase.lowerBound(pairs[0]), phase.pose(boxes[1])(0, 3) - straight(0, 3) - 1.0);
      phase.place(balls[0], first);
      phase.place(balls[1], first * step);
      EXPECT_LE(phase.lowerBound(pairs[1]),
                (phase.pose(balls[1]).translation() - first.translation()).norm() - 1.0 + 1e-15 * away);
    }
}

// The boxes of the shapes are within the limit, the shapes are not: what is passed over is known all the same.
TEST(ClumBroadPhase, ABallBetweenTheCornersOfACubeKnowsThatTheyAreThere)
{
  const ClumCollisionToolkitShPtr toolkit = ClumCollisionToolkit::defaultCollisionToolkit();
  const ClumLeafGeometryShPtr corner = ClumSphere::create(0.1), ball = ClumSphere::create(6.0);
  ClumBroadPhase phase;
  const unsigned int moving = phase.addShape(*ball->collisionModel(*toolkit), *ball, 0);
  for (unsigned int i = 0; i < 8; ++i)
  {
    const unsigned int still = phase.addShape(*corner->collisionModel(*toolkit), *corner, ClumBroadPhase::NO_BODY);
    ClumMat4 pose;
    pose.setTranslation({i & 1 ? 10.0 : -10.0, i & 2 ? 10.0 : -10.0, i & 4 ? 10.0 : -10.0});
    phase.place(still, pose);
    phase.addPair(moving, still);
  }
  phase.build();
  const double distance = std::sqrt(300.0) - 6.1;
  for (const double limit : {0.0, 4.0, 6.0, 11.0})
  {
    phase.begin(1);
    phase.limit(0, limit);
    phase.follow(moving);
    ClumBroadPhase::CCandidate candidate;
    EXPECT_FALSE(phase.next(candidate));
    EXPECT_GE(phase.unseen(0), limit);
    EXPECT_LE(phase.unseen(0), distance);
  }
}

// More shapes than a node holds, in two heaps far apart: what is near, a heap, and all of it are found step by step.
TEST(ClumBroadPhase, FindsTheNearestOfACrowdFromAnywhere)
{
  constexpr unsigned int STILLS = 700;
  const ClumCollisionToolkitShPtr toolkit = ClumCollisionToolkit::defaultCollisionToolkit();
  const ClumLeafGeometryShPtr ball = ClumSphere::create(0.1);
  const ClumCollisionModelConstShPtr model = ball->collisionModel(*toolkit);
  std::mt19937 engine(3);
  const auto number = [&](double i_reach) { return i_reach * (engine() / 2147483648.0 - 1.0); };
  const auto place = [&](double i_reach, double i_x)
  {
    ClumMat4 pose;
    const double y = number(i_reach), z = number(i_reach);
    pose.setTranslation({i_x + number(i_reach), y, z});
    return pose;
  };
  ClumBroadPhase phase;
  for (unsigned int still = 0; still < STILLS; ++still)
    phase.place(phase.addShape(*model, *ball, ClumBroadPhase::NO_BODY), place(5.0, still % 2 ? -50.0 : 50.0));
  const unsigned int moving = phase.addShape(*model, *ball, 0);
  for (unsigned int still = 0; still < STILLS; ++still)
    phase.addPair(moving, still);
  phase.build();

  for (int n = 0; n < 60; ++n)
    for (const double reach : {60.0, 1000.0})
    {
      phase.place(moving, place(reach, 0.0));
      std::vector<double> distances;
      for (unsigned int pair = 0; pair < STILLS; ++pair)
        distances.push_back((phase.pose(moving).translation() - phase.pose(phase.secondOf(pair)).translation()).norm() -
                            0.2);
      const double nearest = *std::min_element(distances.begin(), distances.end());
      for (const bool settles : {true, false})
      {
        phase.begin(1);
        phase.follow(moving);
        std::set<unsigned int> found;
        ClumBroadPhase::CCandidate candidate;
        double last = -INF;
        for (; phase.next(candidate); last = candidate.lower)
        {
          EXPECT_LE(last, candidate.lower);
          EXPECT_LE(candidate.lower, distances[candidate.pair]);
          EXPECT_TRUE(found.insert(candidate.pair).second);
          if (settles)
            phase.limit(0, std::min(phase.limit(0), distances[candidate.pair]));
        }
        if (settles)
        {
          EXPECT_EQ(phase.limit(0), nearest);
          EXPECT_GE(phase.unseen(0), nearest);
          EXPECT_LT(found.size(), 20u);
        }
        else
          EXPECT_EQ(found.size(), STILLS);
      }
    }
}
