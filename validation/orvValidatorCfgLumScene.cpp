#include "validation/orvValidatorCfgLumScene.h"

#include "foundation/lumAssert.h"
#include "foundation/lumBroadPhase.h"
#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLeafGeometry.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumScene.h"
#include "foundation/lumStamp.h"
#include "foundation/lumTestParameters.h"
#include "kinematics/orvBodyLumScene.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "paths/orvDirectPath.h"
#include "validation/orvReportCfgCollision.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <map>

LUM_DESCRIBE(CorvValidatorCfgLumScene)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space, bool i_isDistanceValidator)", &Self::create);
}

namespace
{
constexpr double UNLIMITED = std::numeric_limits<double>::infinity();
constexpr unsigned int NO_BODY = ClumBroadPhase::NO_BODY;
constexpr unsigned int NO_PAIR = ~0u;
/// At penetration 0 a distance is resolved down to this many times the slack, whatever is needed.
constexpr double RESOLVED_SLACKS = 4.0;
/// Reports that are kept to be filled again once nobody else holds them.
constexpr std::size_t KEPT_REPORTS = 4;

const ClumPoint3 NO_POINT(std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN(),
                          std::numeric_limits<double>::quiet_NaN());

std::uint64_t nextInnerSceneStamp()
{
  static std::atomic<std::uint64_t> s_stamp{0};
  return ++s_stamp;
}
} // namespace

/// The scene taken apart: shapes, pairs of shapes, and scratch memory for one validation.
struct CorvValidatorCfgLumScene::CInnerScene
{
  /// A leaf. Its rank is that in the broad phase.
  struct CShape
  {
    ClumCollisionModelConstShPtr model;
    unsigned int body;
    ClumGeometryConstShPtr geometry;
  };

  /// What is remembered of a pair, for as long as the epoch lasts.
  struct CMemory
  {
    unsigned int test;
    unsigned int epoch;
    ClumTrianglePair contact;
    ClumDistanceResult nearest;
  };

  /// A geometry that stands still, with the stamps under which its leaves were placed.
  struct CStill
  {
    ClumGeometryConstShPtr geometry;
    std::uint64_t poseStamp;
    std::uint64_t stamp;
  };

  struct CBodyState
  {
    double toleranceModifier;
    double largestTolerance; ///< in the tests with what stands still
    bool isToleranceActive;
    bool isCapped;
    bool hasPoints;
    double distance;  ///< net clearance found so far
    double allowance; ///< the query's slack included
    ClumPoint3 onBody;
    ClumPoint3 onOther;
  };

  ClumCollisionToolkitShPtr toolkit;
  const CorvDevice* device = nullptr; ///< whose bodies these are; for comparison only
  ClumSceneWkPtr scene;               ///< the device's own, which it never changes, or the one that was set
  unsigned int deviceVersion = 0;
  unsigned int bodiesVersion = 0;
  std::uint64_t sceneVersion = 0;
  std::uint64_t stamp = 0;
  std::uint64_t latestStamp = 0; ///< of all stamps when scene and obstacles were last seen to be the same
  std::vector<CShape> shapes;
  ClumBroadPhase broadPhase;
  std::vector<CMemory> memory; ///< by pair
  std::vector<ClumTestParametersConstShPtr> tests;
  double largestTestTolerance = -UNLIMITED; ///< of the tests with active tolerances
  std::vector<CStill> stills;
  unsigned int epoch = 0;
  unsigned int lastColliding = NO_PAIR;

  std::vector<ClumMat4> positions;
  std::vector<CBodyState> bodies;

  /// The verdicts last given without distances, which any number of configurations may share, and what may be refilled.
  CorvReportCfgCollisionShPtr verdicts[2];
  unsigned int verdictPair = NO_PAIR;
  std::vector<CorvReportCfgCollisionShPtr> reports;
  std::size_t nextReport = 0;

  /// True if a verdict was made for the same question in the present state of the bodies.
  bool answers(const CorvReportCfgCollision& i_verdict, const CorvCollisionQuery& i_query, bool i_sharesDistances) const
  {
    const unsigned int first = i_query.specificBody < 0 ? 0 : static_cast<unsigned int>(i_query.specificBody);
    if (!i_verdict.query().isSameQuestion(i_query) || i_verdict.sharesDistances() != i_sharesDistances)
      return false;
    for (unsigned int i = 0; i < i_verdict.countToleranceModifiers(); ++i)
      if (i_verdict.toleranceModifier(i) != bodies[first + i].toleranceModifier ||
          i_verdict.toleranceActivation(i) != bodies[first + i].isToleranceActive)
        return false;
    return true;
  }

  bool areStillsInPlace() const
  {
    for (const CStill& still : stills)
      if (still.geometry->poseStamp() != still.poseStamp || still.geometry->stamp() != still.stamp)
        return false;
    return true;
  }

  void addShape(const ClumCollisionModelConstShPtr& i_model, const ClumMat4& i_frame, unsigned int i_body,
                const ClumLeafGeometryConstShPtr& i_leaf)
  {
    shapes.push_back({i_model, i_body, i_leaf});
    broadPhase.addShape(*i_model, *i_leaf, i_body, i_frame);
  }

  CMemory& memoryOf(unsigned int i_pair)
  {
    CMemory& found = memory[i_pair];
    if (found.epoch != epoch)
    {
      found.epoch = epoch;
      found.contact = ClumTrianglePair();
      found.nearest.hasTriangles = false;
    }
    return found;
  }
};

namespace
{
/// Finds which body a tested geometry is of, and its frame in that body.
bool findBodyOfGeometry(const std::vector<CorvBodyLumScene*>& i_bodies, const ClumGeometry& i_geometry,
                        unsigned int& o_body, ClumMat4& o_frame)
{
  for (unsigned int rank = 0; rank < i_bodies.size(); ++rank)
  {
    const CorvBodyLumScene& body = *i_bodies[rank];
    o_body = rank;
    o_frame = ClumMat4();
    if (body.mobileGroup().get() == &i_geometry)
      return true;
    for (unsigned int i = 0; i < body.countMobileGeometries(); ++i)
    {
      const ClumGeometry& member = *body.mobileGeometry(i);
      const bool isMember = &member == &i_geometry;
      if (!isMember && !(i_geometry.countMembers() == 1 && i_geometry.member(0).get() == &member))
        continue;
      o_frame = body.mobileObjectRelativePosition(i);
      if (!isMember)
        o_frame = o_frame * i_geometry.memberFrame(0).inverse();
      return true;
    }
  }
  o_body = NO_BODY;
  o_frame = i_geometry.position();
  return false;
}

/// Collects the shapes of tested geometries, each geometry once.
class CLumSceneShapes
{
public:
  CLumSceneShapes(const ClumCollisionToolkit& i_toolkit, const std::vector<CorvBodyLumScene*>& i_bodies)
    : m_toolkit(i_toolkit), m_bodies(i_bodies)
  {
  }

  /// @param o_range ranks of the geometry's shapes, first and past the last. @return false for an untestable leaf.
  template <class INNER>
  bool add(const ClumGeometryConstShPtr& i_geometry, INNER& io_inner, std::pair<unsigned int, unsigned int>& o_range)
  {
    const auto seen = m_seen.find(i_geometry.get());
    if (seen != m_seen.end())
    {
      o_range = seen->second;
      return true;
    }
    ClumMat4 frame;
    unsigned int body = NO_BODY;
    if (!findBodyOfGeometry(m_bodies, *i_geometry, body, frame))
      io_inner.stills.push_back({i_geometry, i_geometry->poseStamp(), i_geometry->stamp()});
    o_range.first = static_cast<unsigned int>(io_inner.shapes.size());
    std::vector<ClumPlacedLeaf> leaves;
    i_geometry->getLeaves(leaves);
    for (const ClumPlacedLeaf& leaf : leaves)
    {
      const ClumCollisionModelConstShPtr model = leaf.leaf->collisionModel(m_toolkit);
      if (!model)
        return false;
      io_inner.addShape(model, frame * leaf.frame, body, leaf.leaf);
    }
    o_range.second = static_cast<unsigned int>(io_inner.shapes.size());
    m_seen[i_geometry.get()] = o_range;
    return true;
  }

private:
  const ClumCollisionToolkit& m_toolkit;
  const std::vector<CorvBodyLumScene*>& m_bodies;
  std::map<const ClumGeometry*, std::pair<unsigned int, unsigned int>> m_seen; ///< for look-up only
};
} // namespace

/// One validation: asks the pairs in a good order and keeps what each body is left with.
class CorvValidatorCfgLumScene::CTest
{
public:
  CTest(CInnerScene& io_inner, const CorvCollisionQuery& i_query)
    : m_inner(io_inner), m_broadPhase(io_inner.broadPhase), m_query(i_query), m_wantsDistances(i_query.wantsDistances())
  {
  }

  /// @return true if something touches, or is within its tolerance.
  bool run(const CorvDevice& i_device)
  {
    prepareBodies(i_device);
    m_broadPhase.place(m_inner.positions.data());
    if (asksLastColliding())
      return true;
    m_broadPhase.begin(static_cast<unsigned int>(m_inner.bodies.size()));
    for (unsigned int body = 0; body < m_inner.bodies.size(); ++body)
      updateLimit(body);
    m_isWalking = true;
    if (m_query.testsSelfCollision)
      enterMovingPairs();
    if (m_query.specificBody < 0)
      m_broadPhase.follow();
    else
      m_broadPhase.follow(static_cast<unsigned int>(m_query.specificBody));
    ClumBroadPhase::CCandidate candidate;
    while (m_broadPhase.next(candidate))
      if (candidate.pair != m_askedFirst && canMatter(candidate) && isContact(candidate.pair))
      {
        m_inner.lastColliding = candidate.pair;
        return true;
      }
    storeUnseen();
    return false;
  }

  /// Applies the thresholds of the distance mode. @return true if one refuses.
  bool applyThresholds()
  {
    bool isRefused = false;
    for (unsigned int i = 0; i < m_inner.bodies.size(); ++i)
    {
      CInnerScene::CBodyState& body = m_inner.bodies[i];
      const double measured = body.distance;
      body.distance += m_query.distanceModifier;
      if (i >= m_query.thresholds.size() || std::isnan(m_query.thresholds[i]) || !isTested(i))
        continue;
      const double threshold = m_query.thresholds[i];
      body.distance -= threshold;
      if (m_query.comparisonMode == 1)
      {
        isRefused = isRefused || threshold > measured;
        body.allowance -= std::max(0.0, threshold);
      }
      else if (m_query.comparisonMode == 2)
      {
        // No distance is known from above: the body may not be said to move at all.
        isRefused = isRefused || measured > threshold;
        body.allowance = 0.0;
      }
      else
        LUM_ASSERT(false);
    }
    return isRefused;
  }

  bool sharesDistances() const { return m_sharesDistances; }
  unsigned int countQueries() const { return m_countQueries; }

private:
  using CMemory = CInnerScene::CMemory;
  using CBodyState = CInnerScene::CBodyState;

  /// What a query needs of a pair.
  struct CPair
  {
    const ClumCollisionModel& a;
    const ClumMat4& poseA;
    const ClumCollisionModel& b;
    const ClumMat4& poseB;
  };

  bool isTested(unsigned int i_body) const
  {
    return i_body != NO_BODY && (m_query.specificBody < 0 || static_cast<unsigned int>(m_query.specificBody) == i_body);
  }
  double sag() const { return m_query.isExact ? m_query.slack : 0.0; }
  bool usesTolerance() const { return m_query.distanceMode != 1; }
  double obstacleModifier() const { return m_query.hasToleranceModifier ? m_query.toleranceModifier : 0.0; }

  void prepareBodies(const CorvDevice& i_device)
  {
    const std::vector<CorvBodyShPtr>& bodies = i_device.bodyVector();
    m_inner.bodies.resize(bodies.size());
    for (std::size_t i = 0; i < bodies.size(); ++i)
    {
      CBodyState& state = m_inner.bodies[i];
      getTolerance(*bodies[i], m_query, state.toleranceModifier, state.isToleranceActive);
      const double modifier = std::max(state.toleranceModifier, obstacleModifier());
      state.largestTolerance =
        usesTolerance() && state.isToleranceActive ? std::max(0.0, modifier + m_inner.largestTestTolerance) : 0.0;
      state.distance = UNLIMITED;
      state.allowance = UNLIMITED;
      state.isCapped = false;
      state.hasPoints = false;
    }
  }

  unsigned int firstBody(unsigned int i_pair) const { return m_inner.shapes[m_broadPhase.firstOf(i_pair)].body; }
  unsigned int secondBody(unsigned int i_pair) const { return m_inner.shapes[m_broadPhase.secondOf(i_pair)].body; }
  CBodyState* stateOf(unsigned int i_body) { return i_body == NO_BODY ? nullptr : &m_inner.bodies[i_body]; }

  /// 0 unless the test and both objects have theirs active. Overlap cannot be measured: nothing below 0.
  double toleranceOf(unsigned int i_pair) const
  {
    const ClumTestParameters& test = *m_inner.tests[m_inner.memory[i_pair].test];
    if (!usesTolerance() || !test.toleranceActivation())
      return 0.0;
    double modifier = -UNLIMITED;
    for (const unsigned int body : {firstBody(i_pair), secondBody(i_pair)})
    {
      if (body != NO_BODY && !m_inner.bodies[body].isToleranceActive)
        return 0.0;
      modifier = std::max(modifier, body != NO_BODY ? m_inner.bodies[body].toleranceModifier : obstacleModifier());
    }
    return std::max(0.0, modifier + test.tolerance());
  }

  /// What collided last is likely to collide again.
  bool asksLastColliding()
  {
    const unsigned int pair = m_inner.lastColliding;
    if (pair == NO_PAIR)
      return false;
    const unsigned int first = firstBody(pair), second = secondBody(pair);
    const bool isSelf = first != NO_BODY && second != NO_BODY;
    if ((isSelf && !m_query.testsSelfCollision) || (!isTested(first) && !isTested(second)))
      return false;
    if (m_broadPhase.lowerBound(pair) > toleranceOf(pair))
      return false;
    m_askedFirst = pair;
    return isContact(pair);
  }

  /// Settles the pairs of two bodies that are clear by their volumes; the others wait for their turn.
  void enterMovingPairs()
  {
    for (const unsigned int pair : m_broadPhase.movingPairs())
    {
      if (!isTested(firstBody(pair)) && !isTested(secondBody(pair)))
        continue;
      m_sharesDistances = true;
      const ClumBroadPhase::CCandidate candidate = {m_broadPhase.lowerBound(pair), pair};
      if (canMatter(candidate))
        m_broadPhase.enter(pair, candidate.lower);
    }
  }

  /// Beyond the limit, nothing that stands still is of use to the body.
  void updateLimit(unsigned int i_body)
  {
    const CBodyState& body = m_inner.bodies[i_body];
    const double net = m_wantsDistances ? std::min(neededDistance(i_body, NO_BODY), body.distance + sag()) : 0.0;
    m_broadPhase.limit(i_body, std::max(0.0, net) + body.largestTolerance);
  }

  /// What was passed over is at least beyond the limits.
  void storeUnseen()
  {
    for (unsigned int body = 0; m_wantsDistances && body < m_inner.bodies.size(); ++body)
      if (m_broadPhase.unseen(body) < UNLIMITED)
      {
        const double net = std::max(0.0, m_broadPhase.unseen(body) - m_inner.bodies[body].largestTolerance);
        limit(m_inner.bodies[body], reportedFor(net), totalFor(net), true, nullptr, nullptr);
      }
  }

  /// What the body still needs to know of its distance to something that stands still, or shares with another body.
  double needOf(unsigned int i_body) const { return i_body < m_query.needs.size() ? m_query.needs[i_body] : UNLIMITED; }

  /// The net distance of a pair of these bodies beyond which nothing is of use to the proof.
  double neededDistance(unsigned int i_first, unsigned int i_second) const
  {
    double needed = -m_query.slack + sag();
    if (i_first != NO_BODY)
      needed += needOf(i_first);
    if (i_second != NO_BODY)
      needed += needOf(i_second);
    return m_query.isExact ? std::max(needed, RESOLVED_SLACKS * m_query.slack) : needed;
  }
  double neededDistance(unsigned int i_pair) const { return neededDistance(firstBody(i_pair), secondBody(i_pair)); }

  /// The net distance of the pair above which it changes nothing of what is known.
  double limitingDistance(unsigned int i_pair)
  {
    const CBodyState* first = stateOf(firstBody(i_pair));
    const CBodyState* second = stateOf(secondBody(i_pair));
    if (first && second)
      return std::max({first->distance + sag(), second->distance + sag(),
                       first->allowance + second->allowance - m_query.slack + sag()});
    return (first ? first : second)->distance + sag();
  }

  /// False if the pair is clear by its volumes and cannot bring anything down. Takes their bound where it is enough.
  bool canMatter(const ClumBroadPhase::CCandidate& i_candidate)
  {
    const double net = i_candidate.lower - toleranceOf(i_candidate.pair);
    if (!(net > 0.0))
      return true;
    if (!m_wantsDistances || net >= limitingDistance(i_candidate.pair))
      return false;
    if (net < neededDistance(i_candidate.pair))
      return true;
    store(i_candidate.pair, net, true, nullptr);
    return false;
  }

  bool isContact(unsigned int i_pair)
  {
    const double tolerance = toleranceOf(i_pair);
    const double needed = m_wantsDistances ? neededDistance(i_pair) : 0.0;
    if (!(needed > 0.0))
    {
      if (isWithinTolerance(i_pair, tolerance))
        return true;
      if (m_wantsDistances)
        store(i_pair, 0.0, true, nullptr);
      return false;
    }
    const double cap = std::min(needed, limitingDistance(i_pair));
    const ClumDistanceResult& found = measure(i_pair, cap + tolerance, tolerance);
    const bool isNear = found.lower <= tolerance;
    if (isNear && (found.upper <= tolerance || isWithinTolerance(i_pair, tolerance)))
      return true;
    const double net = std::max(0.0, found.lower - tolerance);
    store(i_pair, net, net >= needed && needed < UNLIMITED, found.hasPoints ? &found : nullptr);
    return false;
  }

  CPair placed(unsigned int i_pair) const
  {
    const unsigned int first = m_broadPhase.firstOf(i_pair), second = m_broadPhase.secondOf(i_pair);
    return {*m_inner.shapes[first].model, m_broadPhase.pose(first), *m_inner.shapes[second].model,
            m_broadPhase.pose(second)};
  }

  /// Whether the pair touches, or cannot be shown to be farther apart than its tolerance.
  bool isWithinTolerance(unsigned int i_pair, double i_tolerance)
  {
    // Half as much again is asked for, so that the bound clears the tolerance in spite of its rounding.
    if (i_tolerance != 0.0)
      return ask(i_pair, 1.5 * i_tolerance, 0.0, i_tolerance).lower <= i_tolerance;
    ++m_countQueries;
    const CPair pair = placed(i_pair);
    return m_inner.toolkit->areTouching(pair.a, pair.poseA, pair.b, pair.poseB, &m_inner.memoryOf(i_pair).contact);
  }

  const ClumDistanceResult& ask(unsigned int i_pair, double i_cap, double i_accuracy, double i_stopBelow)
  {
    ++m_countQueries;
    const CPair pair = placed(i_pair);
    CMemory& memory = m_inner.memoryOf(i_pair);
    m_found = m_inner.toolkit->boundedDistance(pair.a, pair.poseA, pair.b, pair.poseB, i_cap, i_accuracy, i_stopBelow,
                                               memory.nearest.hasTriangles ? &memory.nearest : nullptr,
                                               m_query.pointsMode != 0);
    if (m_found.hasTriangles)
      memory.nearest = m_found;
    return m_found;
  }

  /// The distance as the query wants it: a bound for a proof, to the precision otherwise.
  const ClumDistanceResult& measure(unsigned int i_pair, double i_cap, double i_stopBelow)
  {
    const bool wantsExact =
      !m_query.isBoundEnough && (m_query.method >= CorvCollisionQuery::EXACT_DISTANCE || m_query.pointsMode != 0);
    if (!wantsExact)
      return ask(i_pair, i_cap, CorvCollisionQuery::BOUND_ACCURACY, i_stopBelow);
    if (m_query.precision <= 0.0)
      return ask(i_pair, i_cap, 0.0, i_stopBelow);
    const ClumDistanceResult& found = ask(i_pair, i_cap, CorvCollisionQuery::BOUND_ACCURACY, i_stopBelow);
    if (found.lower < i_cap && found.lower > i_stopBelow && found.upper - found.lower > m_query.precision)
      return ask(i_pair, i_cap, 0.5 * m_query.precision / found.upper, i_stopBelow);
    return found;
  }

  double reportedFor(double i_net) const { return std::max(0.0, i_net - sag()); }
  double totalFor(double i_net) const { return m_query.isExact ? i_net : i_net + m_query.slack; }

  /// Lets a pair's net distance limit its bodies.
  void store(unsigned int i_pair, double i_net, bool i_isCapped, const ClumDistanceResult* i_points)
  {
    const unsigned int firstRank = firstBody(i_pair), secondRank = secondBody(i_pair);
    const double reported = reportedFor(i_net);
    const double total = totalFor(i_net);
    CBodyState* first = stateOf(firstRank);
    CBodyState* second = stateOf(secondRank);
    double firstShare = total;
    double secondShare = total;
    if (first && second)
      share(total, std::min(first->allowance, needOf(firstRank)), std::min(second->allowance, needOf(secondRank)),
            firstShare, secondShare);
    if (first)
      limit(*first, reported, firstShare, i_isCapped, i_points ? &i_points->pointA : nullptr,
            i_points ? &i_points->pointB : nullptr);
    if (second)
      limit(*second, reported, secondShare, i_isCapped, i_points ? &i_points->pointB : nullptr,
            i_points ? &i_points->pointA : nullptr);
    if (first && m_isWalking)
      updateLimit(firstRank);
    if (second && m_isWalking)
      updateLimit(secondRank);
  }

  /// @param i_onBody the nearest points, or null.
  static void limit(CBodyState& io_body, double i_distance, double i_allowance, bool i_isCapped,
                    const ClumPoint3* i_onBody, const ClumPoint3* i_onOther)
  {
    if (i_distance < io_body.distance)
    {
      io_body.distance = i_distance;
      io_body.hasPoints = i_onBody != nullptr;
      if (i_onBody)
      {
        io_body.onBody = *i_onBody;
        io_body.onOther = *i_onOther;
      }
    }
    if (i_allowance < io_body.allowance)
    {
      io_body.allowance = i_allowance;
      io_body.isCapped = i_isCapped;
    }
  }

  /// Divides what two bodies may move together by what each can use.
  static void share(double i_total, double i_firstUse, double i_secondUse, double& o_first, double& o_second)
  {
    if (i_firstUse == UNLIMITED && i_secondUse == UNLIMITED)
      o_first = o_second = 0.5 * i_total;
    else if (i_firstUse == UNLIMITED)
    {
      o_second = std::min(std::max(i_secondUse, 0.0), 0.5 * i_total);
      o_first = i_total - o_second;
    }
    else if (i_secondUse == UNLIMITED)
      share(i_total, i_secondUse, i_firstUse, o_second, o_first);
    else
    {
      const double uses = std::max(i_firstUse, 0.0) + std::max(i_secondUse, 0.0);
      o_first = uses > 0.0 ? i_total * (std::max(i_firstUse, 0.0) / uses) : 0.5 * i_total;
      o_second = i_total - o_first;
    }
  }

  CInnerScene& m_inner;
  ClumBroadPhase& m_broadPhase;
  const CorvCollisionQuery& m_query;
  const bool m_wantsDistances;
  bool m_sharesDistances = false;
  bool m_isWalking = false;
  unsigned int m_askedFirst = NO_PAIR;
  unsigned int m_countQueries = 0;
  ClumDistanceResult m_found;
};

CorvValidatorCfgLumScene::CorvValidatorCfgLumScene() = default;

CorvValidatorCfgLumScene::CorvValidatorCfgLumScene(const CorvConfigSpaceShPtr& i_space, bool i_isDistanceValidator)
  : CorvValidatorCfgCollisionBase(i_space, i_isDistanceValidator)
{
}

CorvValidatorCfgLumScene::CorvValidatorCfgLumScene(const CorvValidatorCfgLumScene& i_other)
  : CorvValidatorCfgCollisionBase(i_other), m_scene(i_other.m_scene)
{
}

CorvValidatorCfgLumScene::~CorvValidatorCfgLumScene() = default;

lmStatus CorvValidatorCfgLumScene::init(const CorvValidatorCfgLumSceneWkPtr& i_weakPtr)
{
  return CorvValidatorCfgCollisionBase::init(i_weakPtr);
}

CorvValidatorCfgLumSceneShPtr CorvValidatorCfgLumScene::create(const CorvConfigSpaceShPtr& i_space,
                                                               bool i_isDistanceValidator)
{
  return lumCreate<CorvValidatorCfgLumScene>(i_space, i_isDistanceValidator);
}

CorvValidatorCfgLumSceneShPtr
CorvValidatorCfgLumScene::createCopy(const CorvValidatorCfgLumSceneConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorCfgLumScene::clone() const
{
  return createCopy(self());
}

void CorvValidatorCfgLumScene::setScene(const ClumSceneShPtr& i_scene)
{
  if (i_scene == m_scene)
    return;
  m_scene = i_scene;
  sceneDidChange();
  didChange();
}

void CorvValidatorCfgLumScene::sceneDidChange() const
{
  m_inner.reset();
}

void CorvValidatorCfgLumScene::willTestMotion() const
{
  if (!m_inner)
    return;
  m_inner->lastColliding = NO_PAIR;
  ++m_inner->epoch;
}

std::uint64_t CorvValidatorCfgLumScene::sceneStamp() const
{
  const CorvDevice* owner = bareDevice();
  const CInnerScene* inner = owner ? updateInnerData(*owner) : nullptr;
  return inner ? inner->stamp : 0;
}

CorvValidatorCfgLumScene::CInnerScene* CorvValidatorCfgLumScene::updateInnerData(const CorvDevice& i_device) const
{
  const std::uint64_t latestStamp = lumLatestStamp();
  const unsigned int bodiesVersion = bodiesVersionSum(i_device);
  const bool isSameDevice = m_inner && m_inner->device == &i_device && m_inner->deviceVersion == i_device.version() &&
                            m_inner->bodiesVersion == bodiesVersion && m_inner->toolkit == i_device.collisionToolkit();
  if (isSameDevice && m_inner->latestStamp == latestStamp)
    return m_inner.get();
  const ClumSceneShPtr scene = m_scene ? m_scene : i_device.collisionScene();
  if (!scene)
  {
    ClumLogManager::addError(__FILE__, __LINE__, "failed to check the config because a body has no scene");
    return nullptr;
  }
  if (isSameDevice && m_inner->scene.lock() == scene && m_inner->sceneVersion == scene->version() &&
      m_inner->areStillsInPlace())
  {
    m_inner->latestStamp = latestStamp;
    return m_inner.get();
  }

  std::unique_ptr<CInnerScene> inner(new CInnerScene);
  inner->device = &i_device;
  inner->scene = scene;
  inner->deviceVersion = i_device.version();
  inner->bodiesVersion = bodiesVersion;
  inner->sceneVersion = scene->version();
  m_inner.reset();
  if (rebuildInnerScene(i_device, *inner).failed())
    return nullptr;
  inner->stamp = nextInnerSceneStamp();
  inner->latestStamp = latestStamp;
  m_inner = std::move(inner);
  return m_inner.get();
}

lmStatus CorvValidatorCfgLumScene::refuse(const char* i_why)
{
  ClumLogManager::addError(__FILE__, __LINE__, std::string("failed to check the config because ") + i_why);
  return -1;
}

lmStatus CorvValidatorCfgLumScene::rebuildInnerScene(const CorvDevice& i_device, CInnerScene& o_inner) const
{
  o_inner.toolkit = i_device.collisionToolkit();
  std::vector<CorvBodyLumScene*> bodies;
  for (const CorvBodyShPtr& body : i_device.bodyVector())
  {
    bodies.push_back(dynamic_cast<CorvBodyLumScene*>(body.get()));
    if (!bodies.back())
      return refuse("a body is not a CorvBodyLumScene");
    if (!m_scene && !bodies.back()->scene())
      return refuse("a body has no scene");
  }
  const ClumSceneShPtr scene = o_inner.scene.lock();
  const std::vector<ClumScene::CTestPair>& testPairs = scene->testPairs();
  if (!o_inner.toolkit && !testPairs.empty())
    return refuse("there is no collision toolkit");
  if (testPairs.empty())
    return lmStatus();

  CLumSceneShapes shapes(*o_inner.toolkit, bodies);
  for (const ClumScene::CTestPair& test : testPairs)
  {
    std::pair<unsigned int, unsigned int> first;
    std::pair<unsigned int, unsigned int> second;
    if (!shapes.add(test.first, o_inner, first) || !shapes.add(test.second, o_inner, second))
      return refuse("the collision toolkit cannot take a geometry");
    const unsigned int testRank = static_cast<unsigned int>(o_inner.tests.size());
    o_inner.tests.push_back(test.parameters);
    if (test.parameters->toleranceActivation())
      o_inner.largestTestTolerance = std::max(o_inner.largestTestTolerance, test.parameters->tolerance());
    for (unsigned int a = first.first; a < first.second; ++a)
      for (unsigned int b = second.first; b < second.second; ++b)
        if (o_inner.shapes[a].body != NO_BODY || o_inner.shapes[b].body != NO_BODY)
        {
          o_inner.broadPhase.addPair(a, b);
          o_inner.memory.push_back({testRank, 0, ClumTrianglePair(), ClumDistanceResult()});
        }
  }
  o_inner.broadPhase.build();
  return lmStatus();
}

bool CorvValidatorCfgLumScene::doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                                                const CorvValidationReportConstShPtr&,
                                                CorvValidationReportShPtr& o_report) const
{
  const CorvDevice* owner = bareDevice();
  if (isJudgedElsewhere(i_cfg, i_params, owner))
    return true;
  if (!owner)
    return false;
  CInnerScene* inner = updateInnerData(*owner);
  if (!inner || owner->computeBodyPositions(i_cfg, inner->positions).failed())
    return false;

  const CorvCollisionQuery* record = CorvCollisionQuery::in(i_params, owner);
  if (record)
    return test(*owner, *inner, *record, o_report);
  return test(*owner, *inner, makeQuery(i_params), o_report);
}

bool CorvValidatorCfgLumScene::test(const CorvDevice& i_device, CInnerScene& io_inner,
                                    const CorvCollisionQuery& i_query, CorvValidationReportShPtr& o_report) const
{
  CTest test(io_inner, i_query);
  const bool isTouching = test.run(i_device);
  s_countTests.fetch_add(1, std::memory_order_relaxed);
  s_countQueries.fetch_add(test.countQueries(), std::memory_order_relaxed);
  const bool isColliding = isTouching || (i_query.distanceMode != 0 && test.applyThresholds());
  const bool isVerdict =
    i_query.distanceMode == 0 && i_query.pointsMode == 0 && (isTouching || !i_query.wantsDistances());
  const CorvReportCfgCollision* known = isVerdict ? io_inner.verdicts[isTouching].get() : nullptr;
  if (known && (!isTouching || io_inner.verdictPair == io_inner.lastColliding) &&
      io_inner.answers(*known, i_query, test.sharesDistances()))
  {
    o_report = io_inner.verdicts[isTouching];
    return !isColliding;
  }
  const CorvReportCfgCollisionShPtr report =
    isVerdict ? CorvReportCfgCollision::create() : blankReport(io_inner, i_query);
  fillReport(i_device, io_inner, i_query, isTouching, isColliding, *report);
  report->sharesDistances(test.sharesDistances());
  if (isVerdict)
  {
    io_inner.verdicts[isTouching] = report;
    if (isTouching)
      io_inner.verdictPair = io_inner.lastColliding;
  }
  o_report = report;
  return !isColliding;
}

/// A report to be filled: one that was given out before, if nobody holds it any more, or a new one.
CorvReportCfgCollisionShPtr CorvValidatorCfgLumScene::blankReport(CInnerScene& io_inner,
                                                                  const CorvCollisionQuery& i_query)
{
  if (i_query.pointsMode != 0)
    return CorvReportCfgCollisionPoints::create();
  for (CorvReportCfgCollisionShPtr& kept : io_inner.reports)
    if (kept.use_count() == 1)
    {
      // Another thread may have been the last to let it go.
      std::atomic_thread_fence(std::memory_order_acquire);
      kept->clear();
      return kept;
    }
  const CorvReportCfgCollisionShPtr fresh = CorvReportCfgCollision::create();
  if (io_inner.reports.size() < KEPT_REPORTS)
    io_inner.reports.push_back(fresh);
  else
    io_inner.reports[io_inner.nextReport++ % KEPT_REPORTS] = fresh;
  return fresh;
}

void CorvValidatorCfgLumScene::fillReport(const CorvDevice& i_device, const CInnerScene& i_inner,
                                          const CorvCollisionQuery& i_query, bool i_isTouching, bool i_isColliding,
                                          CorvReportCfgCollision& o_report)
{
  o_report.specificBody(i_query.specificBody);
  o_report.query(i_query);
  o_report.stamps({i_inner.deviceVersion, i_inner.bodiesVersion, i_inner.stamp});
  CorvReportCfgCollisionPoints* points =
    i_query.pointsMode != 0 ? static_cast<CorvReportCfgCollisionPoints*>(&o_report) : nullptr;

  const bool hasAllowances = i_query.isProof() || i_query.reportsMaxAllowableDistances;
  const bool hasDistances = i_query.wantsDistances() && !i_isColliding;
  for (unsigned int i = 0; i < i_device.countBodies(); ++i)
  {
    const CInnerScene::CBodyState& body = i_inner.bodies[i];
    const bool isTested = i_query.specificBody < 0 || i_query.specificBody == static_cast<int>(i);
    if (isTested)
    {
      o_report.appendToleranceModifier(body.toleranceModifier);
      o_report.appendToleranceActivation(body.isToleranceActive);
    }
    if (hasDistances && (isTested || hasAllowances))
      o_report.appendDistance(body.distance);
    if (hasDistances)
      o_report.appendAllowance(body.allowance, body.isCapped);
    if (hasDistances && isTested && points)
      points->appendPoints(body.hasPoints ? body.onBody : NO_POINT, body.hasPoints ? body.onOther : NO_POINT);
  }
  if (i_isTouching)
  {
    const CInnerScene::CShape* a = &i_inner.shapes[i_inner.broadPhase.firstOf(i_inner.lastColliding)];
    const CInnerScene::CShape* b = &i_inner.shapes[i_inner.broadPhase.secondOf(i_inner.lastColliding)];
    if (a->body == NO_BODY)
      std::swap(a, b);
    o_report.contact({static_cast<int>(a->body), static_cast<int>(b->body), a->geometry, b->geometry});
  }
}
