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

/// Moving and standing shapes at random places; the odd bodies are tested with half of what stands still only, and
/// every third has a second shape, which is not where its body is.
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
      add(shapes[i % 4], ClumBroadPhase::NO_BODY, i < 3 ? ClumMat4() : randomPose(4.0)); // three at one place
    for (unsigned int body = 0; body < BODIES; ++body)
      for (unsigned int shape = 0; shape < (body % 3 ? 1u : 2u); ++shape)
      {
        const unsigned int moving =
          add(shapes[(body + 1 + shape) % 4], body, shape == 0 ? ClumMat4() : randomPose(0.5));
        for (unsigned int still = 0; still < STILLS; still += 1 + body % 2)
          if (body % 3)
            phase.addPair(moving, still);
          else
            phase.addPair(still, moving);
        if (body > 0)
          phase.addPair(moving - 1 - shape, moving);
      }
    phase.build();
    move();
  }

  unsigned int add(const ClumLeafGeometryShPtr& i_leaf, unsigned int i_body, const ClumMat4& i_frame)
  {
    leaves.push_back(i_leaf);
    frames.push_back(i_frame);
    return phase.addShape(*i_leaf->collisionModel(*toolkit), *i_leaf, i_body, i_frame);
  }

  ClumMat4 pose(unsigned int i_shape) const
  {
    const unsigned int body = phase.bodyOf(i_shape);
    return body == ClumBroadPhase::NO_BODY ? frames[i_shape] : positions[body] * frames[i_shape];
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
    positions.clear();
    for (unsigned int body = 0; body < BODIES; ++body)
      positions.push_back(randomPose(4.0));
    phase.place(positions.data());
    distances.clear();
    for (unsigned int pair = 0; pair < phase.countPairs(); ++pair)
    {
      const unsigned int a = phase.firstOf(pair), b = phase.secondOf(pair);
      distances.push_back(
        toolkit
          ->exactDistance(*leaves[a]->collisionModel(*toolkit), pose(a), *leaves[b]->collisionModel(*toolkit), pose(b))
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
    phase.follow();
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
  std::vector<ClumMat4> frames; ///< of the shapes, in their bodies
  std::vector<ClumMat4> positions;
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
  EXPECT_LT(looks, 20u * 16u * 12u); // of 45 or 90 pairs each of 16 shapes
}

TEST_F(BroadPhaseHall, EnteredPairsComeInTheirPlaceAndWalksAllocateNothing)
{
  ClumBroadPhase::CCandidate candidate;
  const auto walkAll = [&]
  {
    phase.begin(BODIES);
    for (const unsigned int pair : phase.movingPairs())
      phase.enter(pair, phase.lowerBound(pair));
    phase.follow();
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
  const unsigned int counts[] = {2 * STILLS, STILLS / 2, STILLS};
  for (const double place : {std::nan(""), INF, -1e300})
    for (unsigned int body = 0; body < 3; ++body)
    {
      nowhere.setTranslation({body == 2 ? 1.0 : place, body == 2 ? place : 1.0, 0.0});
      positions[body] = nowhere;
      phase.place(positions.data());
      for (const bool followsAll : {false, true})
      {
        phase.begin(BODIES);
        for (unsigned int other = 0; other < BODIES; ++other)
          phase.limit(other, 0.0);
        if (followsAll)
          phase.follow();
        else
          phase.follow(body);
        ClumBroadPhase::CCandidate candidate;
        unsigned int count = 0;
        while (phase.next(candidate))
        {
          count += bodyOfPair(candidate.pair) == body;
          EXPECT_TRUE(followsAll || bodyOfPair(candidate.pair) == body);
        }
        EXPECT_EQ(count, counts[body]);
      }
    }
}

// Single precision has seven digits: far from the origin, boxes and balls that almost touch keep a sound bound.
TEST_F(BroadPhaseHall, BoundsAreSoundFarAway)
{
  const unsigned int boxes[] = {add(ClumBox::create(1.0, 1.0, 1.0), 0, ClumMat4()),
                                add(ClumBox::create(1.0, 1.0, 1.0), 1, ClumMat4())};
  const unsigned int balls[] = {add(ClumSphere::create(0.5), 2, ClumMat4()),
                                add(ClumSphere::create(0.5), 3, ClumMat4())};
  const unsigned int pairs[] = {phase.addPair(boxes[0], boxes[1]), phase.addPair(balls[0], balls[1])};
  for (double away = 1e-3; away < 1e8; away *= 10.0)
    for (int n = 0; n < 100; ++n)
    {
      const ClumMat4 first = randomPose(away);
      ClumMat4 straight, step;
      straight.setTranslation(first.translation());
      step.setTranslation({1.0 + number(0.0, 1e-7) * away, 0.0, 0.0});
      const ClumMat4 placed[] = {straight, straight * step, first, first * step};
      phase.place(placed);
      EXPECT_LE(phase.lowerBound(pairs[0]), placed[1](0, 3) - straight(0, 3) - 1.0);
      EXPECT_LE(phase.lowerBound(pairs[1]),
                (placed[3].translation() - first.translation()).norm() - 1.0 + 1e-15 * away);
    }
}

// Balls in rooms of all shapes, which are cut into cells in all ways; the limit of each body is its distance from one
// of them, so that the least error in what is told of a cell would lose it.
TEST(ClumBroadPhase, FindsWhatIsJustWithinTheLimitInRoomsOfAllShapes)
{
  const struct
  {
    ClumVect3 reach;
    double away; ///< from the origin
    double largest;
    unsigned int stills;
  } rooms[] = {{{10.0, 10.0, 10.0}, 0.0, 0.5, 200}, {{30.0, 20.0, 0.01}, 3.0, 0.3, 100},
               {{1000.0, 0.0, 0.0}, 0.0, 0.2, 400}, {{3.0, 4.0, 5.0}, 1e5, 0.4, 60},
               {{1.0, 1.0, 1.0}, 0.0, 5.0, 80},     {{1e-4, 2e-4, 1e-4}, 1.0, 1e-5, 50},
               {{8.0, 8.0, 8.0}, -50.0, 3.0, 900},  {{5.0, 5.0, 5.0}, 0.0, 0.1, 6}};
  const ClumCollisionToolkitShPtr toolkit = ClumCollisionToolkit::defaultCollisionToolkit();
  std::mt19937 engine(5);
  const auto number = [&](double i_reach) { return i_reach * (engine() / 2147483648.0 - 1.0); };
  constexpr unsigned int BODIES = 20;
  for (const auto& room : rooms)
  {
    const auto place = [&](double i_stretch)
    {
      ClumMat4 pose;
      const double x = number(1.0), y = number(1.0);
      pose.rotate(x, y, number(1.0), number(3.0));
      const double px = number(room.reach[0]), py = number(room.reach[1]);
      pose.setTranslation(ClumVect3(px, py, number(room.reach[2])) * i_stretch +
                          ClumVect3(room.away, -room.away, room.away));
      return pose;
    };
    ClumBroadPhase phase;
    std::vector<double> radii;
    std::vector<ClumMat4> frames;
    const auto add = [&](unsigned int i_body, const ClumMat4& i_frame)
    {
      radii.push_back((0.55 + number(0.45)) * room.largest);
      frames.push_back(i_frame);
      const ClumLeafGeometryShPtr ball = ClumSphere::create(radii.back());
      return phase.addShape(*ball->collisionModel(*toolkit), *ball, i_body, i_frame);
    };
    for (unsigned int still = 0; still < room.stills; ++still)
      add(ClumBroadPhase::NO_BODY, place(1.0));
    for (unsigned int body = 0; body < BODIES; ++body)
    {
      ClumMat4 frame;
      frame.setTranslation({body % 2 * room.largest, 0.0, 0.0});
      const unsigned int moving = add(body, frame);
      for (unsigned int still = 0; still < room.stills; ++still)
        phase.addPair(moving, still);
    }
    phase.build();
    std::size_t looks = 0, within = 0;
    for (int n = 0; n < 100; ++n)
    {
      std::vector<ClumMat4> positions;
      for (unsigned int body = 0; body < BODIES; ++body)
        positions.push_back(place(n % 4 == 3 ? 3.0 : 1.0));
      phase.place(positions.data());
      phase.begin(BODIES);
      std::vector<double> distances;
      for (unsigned int pair = 0; pair < phase.countPairs(); ++pair)
      {
        const unsigned int moving = phase.firstOf(pair), still = phase.secondOf(pair);
        const ClumVect3 from = (positions[phase.bodyOf(moving)] * frames[moving]).translation();
        distances.push_back(std::max(0.0, (from - frames[still].translation()).norm() - radii[moving] - radii[still]));
      }
      for (unsigned int body = 0; body < BODIES; ++body)
      {
        const auto first = distances.begin() + body * room.stills;
        std::vector<double> sorted(first, first + room.stills);
        std::sort(sorted.begin(), sorted.end());
        phase.limit(body, sorted[engine() % std::min(room.stills, 8u)]);
      }
      phase.follow();
      std::set<unsigned int> found;
      ClumBroadPhase::CCandidate candidate;
      while (phase.next(candidate))
        EXPECT_TRUE(found.insert(candidate.pair).second);
      looks += found.size();
      for (unsigned int pair = 0; pair < phase.countPairs(); ++pair)
      {
        const unsigned int body = phase.bodyOf(phase.firstOf(pair));
        // The frames were put together in double precision, which far away is not exact.
        const double rounding = 1e-14 * (1.0 + std::fabs(room.away));
        const bool isWithin = distances[pair] <= phase.limit(body) - rounding;
        within += distances[pair] <= phase.limit(body) * 1.01 + 1e-6 * (1.0 + std::fabs(room.away));
        if (found.count(pair) == 0)
        {
          EXPECT_FALSE(isWithin) << pair << " at " << distances[pair];
          EXPECT_LE(phase.unseen(body), distances[pair] + rounding);
        }
      }
    }
    EXPECT_LE(looks, within + within / 20) << room.stills;
  }
}

// The boxes of the shapes are within the limit, the shapes are not: what is passed over is known all the same.
TEST(ClumBroadPhase, ABallBetweenTheCornersOfACubeKnowsThatTheyAreThere)
{
  const ClumCollisionToolkitShPtr toolkit = ClumCollisionToolkit::defaultCollisionToolkit();
  const ClumLeafGeometryShPtr corner = ClumSphere::create(0.1), ball = ClumSphere::create(6.0);
  ClumBroadPhase phase;
  const unsigned int moving = phase.addShape(*ball->collisionModel(*toolkit), *ball, 0, ClumMat4());
  for (unsigned int i = 0; i < 8; ++i)
  {
    ClumMat4 pose;
    pose.setTranslation({i & 1 ? 10.0 : -10.0, i & 2 ? 10.0 : -10.0, i & 4 ? 10.0 : -10.0});
    phase.addPair(moving, phase.addShape(*corner->collisionModel(*toolkit), *corner, ClumBroadPhase::NO_BODY, pose));
  }
  phase.build();
  const double distance = std::sqrt(300.0) - 6.1;
  for (const double limit : {0.0, 4.0, 6.0, 11.0})
  {
    phase.place(&ClumMat4::IDENTITY);
    phase.begin(1);
    phase.limit(0, limit);
    phase.follow();
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
    phase.addShape(*model, *ball, ClumBroadPhase::NO_BODY, place(5.0, still % 2 ? -50.0 : 50.0));
  const unsigned int moving = phase.addShape(*model, *ball, 0, ClumMat4());
  for (unsigned int still = 0; still < STILLS; ++still)
    phase.addPair(moving, still);
  phase.build();

  for (int n = 0; n < 60; ++n)
    for (const double reach : {60.0, 1000.0})
    {
      const ClumMat4 position = place(reach, 0.0);
      phase.place(&position);
      std::vector<double> distances;
      for (unsigned int pair = 0; pair < STILLS; ++pair)
        distances.push_back((phase.pose(moving).translation() - phase.pose(phase.secondOf(pair)).translation()).norm() -
                            0.2);
      const double nearest = *std::min_element(distances.begin(), distances.end());
      for (const bool settles : {true, false})
      {
        phase.begin(1);
        phase.follow();
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
