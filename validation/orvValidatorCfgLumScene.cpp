#include "validation/orvValidatorCfgLumScene.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLeafGeometry.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumScene.h"
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
#include <type_traits>

LUM_DESCRIBE(CorvValidatorCfgLumScene)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space, bool i_isDistanceValidator)", &Self::create);
}

namespace
{
constexpr double UNLIMITED = std::numeric_limits<double>::infinity();
constexpr int NO_BODY = -1;
/// At penetration 0 a distance is resolved down to this many times the slack, whatever is needed.
constexpr double RESOLVED_SLACKS = 4.0;
/// Of the coordinates' magnitude, for the rounding of a ball's place.
constexpr double BALL_ROUNDING = 1e-12;

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
  /// A leaf with its frame in its body, or in the world if it stands still.
  struct CShape
  {
    ClumCollisionModelConstShPtr model;
    ClumMat4 frame;
    int body = NO_BODY;
    ClumGeometryConstShPtr geometry; ///< of the test that brought the leaf
  };

  struct CPair
  {
    unsigned int first;
    unsigned int second;
    unsigned int test;
    ClumDistanceResult hint;
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
    bool isToleranceActive;
    double distance;  ///< net clearance found so far
    double allowance; ///< the query's slack included
    bool isCapped;
    bool hasPoints;
    ClumPoint3 onBody;
    ClumPoint3 onOther;
  };

  struct CCandidate
  {
    double lower; ///< bound of the net distance, by the balls
    double tolerance;
    unsigned int pair;
    bool operator<(const CCandidate& i_other) const
    {
      return lower < i_other.lower || (lower == i_other.lower && pair < i_other.pair);
    }
  };

  ClumCollisionToolkitShPtr toolkit;
  ClumSceneWkPtr scene;
  unsigned int deviceVersion = 0;
  unsigned int bodiesVersion = 0;
  std::uint64_t sceneVersion = 0;
  std::uint64_t stamp = 0;
  std::vector<CShape> shapes;
  std::vector<CPair> pairs;
  std::vector<ClumTestParametersConstShPtr> tests;
  std::vector<CStill> stills;
  unsigned int lastColliding = 0;
  bool hasLastColliding = false;

  std::vector<ClumMat4> positions;
  std::vector<ClumMat4> poses;
  std::vector<ClumPoint3> centers;
  std::vector<CBodyState> bodies;
  std::vector<CCandidate> candidates;

  bool areStillsInPlace() const
  {
    for (const CStill& still : stills)
      if (still.geometry->poseStamp() != still.poseStamp || still.geometry->stamp() != still.stamp)
        return false;
    return true;
  }

  void placeStillShapes()
  {
    poses.resize(shapes.size());
    centers.resize(shapes.size());
    for (unsigned int i = 0; i < shapes.size(); ++i)
      if (shapes[i].body == NO_BODY)
        place(i, shapes[i].frame);
  }

  void placeMovingShapes()
  {
    for (unsigned int i = 0; i < shapes.size(); ++i)
      if (shapes[i].body != NO_BODY)
        place(i, positions[static_cast<unsigned int>(shapes[i].body)] * shapes[i].frame);
  }

  void place(unsigned int i_shape, const ClumMat4& i_pose)
  {
    poses[i_shape] = i_pose;
    centers[i_shape] = i_pose * shapes[i_shape].model->center();
  }

  /// A lower bound of the distance of two shapes, negative if their balls overlap.
  double ballDistance(const CPair& i_pair) const
  {
    const ClumPoint3& a = centers[i_pair.first];
    const ClumPoint3& b = centers[i_pair.second];
    const double between = a.distanceFrom(b);
    const double magnitude = between + std::fabs(a.x()) + std::fabs(a.y()) + std::fabs(a.z());
    return between - shapes[i_pair.first].model->radius() - shapes[i_pair.second].model->radius() -
           BALL_ROUNDING * magnitude;
  }
};

namespace
{
/// Finds which body a tested geometry is of, and its frame in that body.
bool findBodyOfGeometry(const std::vector<CorvBodyLumScene*>& i_bodies, const ClumGeometry& i_geometry, int& o_body,
                        ClumMat4& o_frame)
{
  for (std::size_t rank = 0; rank < i_bodies.size(); ++rank)
  {
    const CorvBodyLumScene& body = *i_bodies[rank];
    o_body = static_cast<int>(rank);
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
    for (const CSeen& seen : m_seen)
      if (seen.geometry == i_geometry.get())
      {
        o_range = seen.range;
        return true;
      }
    ClumMat4 frame;
    int body = NO_BODY;
    if (!findBodyOfGeometry(m_bodies, *i_geometry, body, frame))
      io_inner.stills.push_back({i_geometry, i_geometry->poseStamp(), i_geometry->stamp()});
    o_range.first = static_cast<unsigned int>(io_inner.shapes.size());
    std::vector<ClumPlacedLeaf> leaves;
    i_geometry->getLeaves(leaves);
    for (const ClumPlacedLeaf& leaf : leaves)
    {
      typename std::remove_reference_t<decltype(io_inner.shapes)>::value_type shape;
      shape.model = leaf.leaf->collisionModel(m_toolkit);
      shape.frame = frame * leaf.frame;
      shape.body = body;
      shape.geometry = leaf.leaf;
      if (!shape.model)
        return false;
      io_inner.shapes.push_back(shape);
    }
    o_range.second = static_cast<unsigned int>(io_inner.shapes.size());
    m_seen.push_back({i_geometry.get(), o_range});
    return true;
  }

private:
  struct CSeen
  {
    const ClumGeometry* geometry;
    std::pair<unsigned int, unsigned int> range;
  };

  const ClumCollisionToolkit& m_toolkit;
  const std::vector<CorvBodyLumScene*>& m_bodies;
  std::vector<CSeen> m_seen;
};
} // namespace

/// One validation: asks the pairs in a good order and keeps what each body is left with.
class CorvValidatorCfgLumScene::CTest
{
public:
  CTest(CInnerScene& io_inner, const CorvCollisionQuery& i_query) : m_inner(io_inner), m_query(i_query) {}

  /// @return true if something touches, or is within its tolerance.
  bool run(const CorvDevice& i_device)
  {
    prepareBodies(i_device);
    collectCandidates();
    for (const CInnerScene::CCandidate& candidate : m_inner.candidates)
      if (canMatter(candidate) && isContact(candidate))
      {
        m_inner.lastColliding = candidate.pair;
        m_inner.hasLastColliding = true;
        return true;
      }
    return false;
  }

  /// Applies the thresholds of the distance mode. @return true if one refuses.
  bool applyThresholds()
  {
    bool isRefused = false;
    for (std::size_t i = 0; i < m_inner.bodies.size(); ++i)
    {
      CInnerScene::CBodyState& body = m_inner.bodies[i];
      const double measured = body.distance;
      body.distance += m_query.distanceModifier;
      if (i >= m_query.thresholds.size() || std::isnan(m_query.thresholds[i]) || !isTested(static_cast<int>(i)))
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

private:
  using CPair = CInnerScene::CPair;
  using CShape = CInnerScene::CShape;
  using CBodyState = CInnerScene::CBodyState;

  bool isTested(int i_body) const { return m_query.specificBody < 0 || m_query.specificBody == i_body; }
  double sag() const { return m_query.isExact ? m_query.slack : 0.0; }
  bool usesTolerance() const { return m_query.distanceMode != 1; }

  void prepareBodies(const CorvDevice& i_device)
  {
    const std::vector<CorvBodyShPtr>& bodies = i_device.bodyVector();
    m_inner.bodies.resize(bodies.size());
    for (std::size_t i = 0; i < bodies.size(); ++i)
    {
      CBodyState& state = m_inner.bodies[i];
      getTolerance(*bodies[i], m_query, state.toleranceModifier, state.isToleranceActive);
      state.distance = UNLIMITED;
      state.allowance = UNLIMITED;
      state.isCapped = false;
      state.hasPoints = false;
    }
  }

  const CBodyState* bodyOf(const CShape& i_shape) const
  {
    return i_shape.body == NO_BODY ? nullptr : &m_inner.bodies[static_cast<unsigned int>(i_shape.body)];
  }
  CBodyState* bodyOf(const CShape& i_shape)
  {
    return i_shape.body == NO_BODY ? nullptr : &m_inner.bodies[static_cast<unsigned int>(i_shape.body)];
  }

  /// 0 unless the test and both objects have theirs active. Overlap cannot be measured: nothing below 0.
  double toleranceOf(const CPair& i_pair) const
  {
    const ClumTestParameters& test = *m_inner.tests[i_pair.test];
    if (!usesTolerance() || !test.toleranceActivation())
      return 0.0;
    double modifier = -UNLIMITED;
    for (const unsigned int side : {i_pair.first, i_pair.second})
    {
      const CBodyState* body = bodyOf(m_inner.shapes[side]);
      if (body && !body->isToleranceActive)
        return 0.0;
      const double obstacleModifier = m_query.hasToleranceModifier ? m_query.toleranceModifier : 0.0;
      modifier = std::max(modifier, body ? body->toleranceModifier : obstacleModifier);
    }
    return std::max(0.0, modifier + test.tolerance());
  }

  void collectCandidates()
  {
    std::vector<CInnerScene::CCandidate>& candidates = m_inner.candidates;
    candidates.clear();
    for (unsigned int i = 0; i < m_inner.pairs.size(); ++i)
    {
      const CPair& pair = m_inner.pairs[i];
      const int first = m_inner.shapes[pair.first].body;
      const int second = m_inner.shapes[pair.second].body;
      const bool isSelf = first != NO_BODY && second != NO_BODY;
      if ((isSelf && !m_query.testsSelfCollision) || (!isTested(first) && !isTested(second)))
        continue;
      m_sharesDistances = m_sharesDistances || isSelf;
      CInnerScene::CCandidate candidate;
      candidate.tolerance = toleranceOf(pair);
      candidate.lower = m_inner.ballDistance(pair) - candidate.tolerance;
      candidate.pair = i;
      if (candidate.lower <= 0.0 || m_query.wantsDistances())
        candidates.push_back(candidate);
    }
    // What collided last is likely to collide again: first, if it may.
    for (CInnerScene::CCandidate& candidate : candidates)
      if (m_inner.hasLastColliding && candidate.pair == m_inner.lastColliding && candidate.lower <= 0.0)
        candidate.lower = -UNLIMITED;
    std::sort(candidates.begin(), candidates.end());
  }

  /// What the body still needs to know of its distance to something that stands still, or shares with another body.
  double needOf(int i_body) const
  {
    const unsigned int rank = static_cast<unsigned int>(i_body);
    return rank < m_query.needs.size() ? m_query.needs[rank] : UNLIMITED;
  }

  /// The net distance of the pair beyond which nothing is of use to the proof.
  double neededDistance(const CPair& i_pair) const
  {
    const int first = m_inner.shapes[i_pair.first].body;
    const int second = m_inner.shapes[i_pair.second].body;
    double needed = -m_query.slack + sag();
    if (first != NO_BODY)
      needed += needOf(first);
    if (second != NO_BODY)
      needed += needOf(second);
    return m_query.isExact ? std::max(needed, RESOLVED_SLACKS * m_query.slack) : needed;
  }

  /// The net distance of the pair above which it changes nothing of what is known.
  double limitingDistance(const CPair& i_pair) const
  {
    const CBodyState* first = bodyOf(m_inner.shapes[i_pair.first]);
    const CBodyState* second = bodyOf(m_inner.shapes[i_pair.second]);
    if (first && second)
      return std::max({first->distance + sag(), second->distance + sag(),
                       first->allowance + second->allowance - m_query.slack + sag()});
    return (first ? first : second)->distance + sag();
  }

  /// False if the pair is clear by its balls and cannot bring anything down. Takes the balls' bound where it is enough.
  bool canMatter(const CInnerScene::CCandidate& i_candidate)
  {
    if (i_candidate.lower <= 0.0)
      return true;
    const CPair& pair = m_inner.pairs[i_candidate.pair];
    if (!m_query.wantsDistances() || i_candidate.lower >= limitingDistance(pair))
      return false;
    if (i_candidate.lower < neededDistance(pair))
      return true;
    store(pair, i_candidate.lower, true, nullptr);
    return false;
  }

  bool isContact(const CInnerScene::CCandidate& i_candidate)
  {
    CPair& pair = m_inner.pairs[i_candidate.pair];
    const double needed = m_query.wantsDistances() ? neededDistance(pair) : 0.0;
    if (!(needed > 0.0))
    {
      if (isWithinTolerance(pair, i_candidate.tolerance))
        return true;
      if (m_query.wantsDistances())
        store(pair, 0.0, true, nullptr);
      return false;
    }
    const double limiting = limitingDistance(pair);
    const double cap = std::min(needed, limiting);
    const ClumDistanceResult found = measure(pair, cap + i_candidate.tolerance, i_candidate.tolerance);
    const bool isNear = found.lower <= i_candidate.tolerance;
    if (isNear && (found.upper <= i_candidate.tolerance || isWithinTolerance(pair, i_candidate.tolerance)))
      return true;
    const double net = std::max(0.0, found.lower - i_candidate.tolerance);
    store(pair, net, net >= needed && needed < UNLIMITED, found.hasPoints ? &found : nullptr);
    return false;
  }

  /// Whether the pair touches, or cannot be shown to be farther apart than its tolerance.
  bool isWithinTolerance(CPair& io_pair, double i_tolerance)
  {
    const CShape& a = m_inner.shapes[io_pair.first];
    const CShape& b = m_inner.shapes[io_pair.second];
    ++s_countQueries;
    if (i_tolerance == 0.0)
      return m_inner.toolkit->areTouching(*a.model, m_inner.poses[io_pair.first], *b.model,
                                          m_inner.poses[io_pair.second]);
    // Half as much again is asked for, so that the bound clears the tolerance in spite of its rounding.
    const ClumDistanceResult found =
      m_inner.toolkit->boundedDistance(*a.model, m_inner.poses[io_pair.first], *b.model, m_inner.poses[io_pair.second],
                                       1.5 * i_tolerance, 0.0, i_tolerance, hintOf(io_pair));
    keepHint(io_pair, found);
    return found.lower <= i_tolerance;
  }

  const ClumDistanceResult* hintOf(const CPair& i_pair) const { return i_pair.hint.hasPoints ? &i_pair.hint : nullptr; }

  static void keepHint(CPair& io_pair, const ClumDistanceResult& i_found)
  {
    if (i_found.hasPoints)
      io_pair.hint = i_found;
  }

  ClumDistanceResult ask(CPair& io_pair, double i_cap, double i_accuracy, double i_stopBelow)
  {
    const CShape& a = m_inner.shapes[io_pair.first];
    const CShape& b = m_inner.shapes[io_pair.second];
    ++s_countQueries;
    const ClumDistanceResult found =
      m_inner.toolkit->boundedDistance(*a.model, m_inner.poses[io_pair.first], *b.model, m_inner.poses[io_pair.second],
                                       i_cap, i_accuracy, i_stopBelow, hintOf(io_pair));
    keepHint(io_pair, found);
    return found;
  }

  /// The distance as the query wants it: a bound for a proof, to the precision otherwise.
  ClumDistanceResult measure(CPair& io_pair, double i_cap, double i_stopBelow)
  {
    const bool wantsExact =
      !m_query.isBoundEnough && (m_query.method >= CorvCollisionQuery::EXACT_DISTANCE || m_query.pointsMode != 0);
    if (!wantsExact)
      return ask(io_pair, i_cap, CorvCollisionQuery::BOUND_ACCURACY, i_stopBelow);
    if (m_query.precision <= 0.0)
      return ask(io_pair, i_cap, 0.0, i_stopBelow);
    ClumDistanceResult found = ask(io_pair, i_cap, CorvCollisionQuery::BOUND_ACCURACY, i_stopBelow);
    if (found.lower < i_cap && found.lower > i_stopBelow && found.upper - found.lower > m_query.precision)
      found = ask(io_pair, i_cap, 0.5 * m_query.precision / found.upper, i_stopBelow);
    return found;
  }

  /// Lets a pair's net distance limit its bodies.
  void store(const CPair& i_pair, double i_net, bool i_isCapped, const ClumDistanceResult* i_points)
  {
    const CShape& a = m_inner.shapes[i_pair.first];
    const CShape& b = m_inner.shapes[i_pair.second];
    const double reported = std::max(0.0, i_net - sag());
    const double total = m_query.isExact ? i_net : i_net + m_query.slack;
    CBodyState* first = bodyOf(a);
    CBodyState* second = bodyOf(b);
    double firstShare = total;
    double secondShare = total;
    if (first && second)
      share(total, std::min(first->allowance, needOf(a.body)), std::min(second->allowance, needOf(b.body)), firstShare,
            secondShare);
    if (first)
      limit(*first, reported, firstShare, i_isCapped, i_points, i_points ? &i_points->pointA : nullptr,
            i_points ? &i_points->pointB : nullptr);
    if (second)
      limit(*second, reported, secondShare, i_isCapped, i_points, i_points ? &i_points->pointB : nullptr,
            i_points ? &i_points->pointA : nullptr);
  }

  static void limit(CBodyState& io_body, double i_distance, double i_allowance, bool i_isCapped,
                    const ClumDistanceResult* i_points, const ClumPoint3* i_onBody, const ClumPoint3* i_onOther)
  {
    if (i_distance < io_body.distance)
    {
      io_body.distance = i_distance;
      io_body.hasPoints = i_points != nullptr;
      if (i_points)
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
  const CorvCollisionQuery& m_query;
  bool m_sharesDistances = false;
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
  m_inner->hasLastColliding = false;
  for (CInnerScene::CPair& pair : m_inner->pairs)
    pair.hint.hasPoints = false;
}

std::uint64_t CorvValidatorCfgLumScene::sceneStamp() const
{
  const CorvDeviceShPtr owner = device();
  const CInnerScene* inner = owner ? updateInnerData(owner) : nullptr;
  return inner ? inner->stamp : 0;
}

CorvValidatorCfgLumScene::CInnerScene* CorvValidatorCfgLumScene::updateInnerData(const CorvDeviceShPtr& i_device) const
{
  const ClumSceneShPtr scene = m_scene ? m_scene : i_device->collisionScene();
  if (!scene)
  {
    ClumLogManager::addError(__FILE__, __LINE__, "failed to check the config because a body has no scene");
    return nullptr;
  }
  const unsigned int bodiesVersion = bodiesVersionSum(*i_device);
  if (m_inner && m_inner->deviceVersion == i_device->version() && m_inner->bodiesVersion == bodiesVersion &&
      m_inner->toolkit == i_device->collisionToolkit() && m_inner->scene.lock() == scene &&
      m_inner->sceneVersion == scene->version() && m_inner->areStillsInPlace())
    return m_inner.get();

  std::unique_ptr<CInnerScene> inner(new CInnerScene);
  inner->scene = scene;
  inner->deviceVersion = i_device->version();
  inner->bodiesVersion = bodiesVersion;
  inner->sceneVersion = scene->version();
  m_inner.reset();
  if (rebuildInnerScene(*i_device, *inner).failed())
    return nullptr;
  inner->stamp = nextInnerSceneStamp();
  m_inner = std::move(inner);
  return m_inner.get();
}

lmStatus CorvValidatorCfgLumScene::rebuildInnerScene(const CorvDevice& i_device, CInnerScene& o_inner) const
{
  o_inner.toolkit = i_device.collisionToolkit();
  std::vector<CorvBodyLumScene*> bodies;
  for (const CorvBodyShPtr& body : i_device.bodyVector())
  {
    bodies.push_back(dynamic_cast<CorvBodyLumScene*>(body.get()));
    if (!bodies.back())
    {
      ClumLogManager::addError(__FILE__, __LINE__,
                               "failed to check the config because a body is not a CorvBodyLumScene");
      return -1;
    }
    if (!m_scene && !bodies.back()->scene())
    {
      ClumLogManager::addError(__FILE__, __LINE__, "failed to check the config because a body has no scene");
      return -1;
    }
  }
  const ClumSceneShPtr scene = o_inner.scene.lock();
  const std::vector<ClumScene::CTestPair>& testPairs = scene->testPairs();
  if (!o_inner.toolkit && !testPairs.empty())
  {
    ClumLogManager::addError(__FILE__, __LINE__, "failed to check the config because there is no collision toolkit");
    return -1;
  }
  if (testPairs.empty())
    return lmStatus();

  CLumSceneShapes shapes(*o_inner.toolkit, bodies);
  for (const ClumScene::CTestPair& test : testPairs)
  {
    std::pair<unsigned int, unsigned int> first;
    std::pair<unsigned int, unsigned int> second;
    if (!shapes.add(test.first, o_inner, first) || !shapes.add(test.second, o_inner, second))
    {
      ClumLogManager::addError(__FILE__, __LINE__,
                               "failed to check the config because the collision toolkit cannot take a geometry");
      return -1;
    }
    const unsigned int testRank = static_cast<unsigned int>(o_inner.tests.size());
    o_inner.tests.push_back(test.parameters);
    for (unsigned int a = first.first; a < first.second; ++a)
      for (unsigned int b = second.first; b < second.second; ++b)
        if (o_inner.shapes[a].body != NO_BODY || o_inner.shapes[b].body != NO_BODY)
          o_inner.pairs.push_back({a, b, testRank, ClumDistanceResult()});
  }
  o_inner.placeStillShapes();
  return lmStatus();
}

bool CorvValidatorCfgLumScene::doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                                                const CorvValidationReportConstShPtr&,
                                                CorvValidationReportShPtr& o_report) const
{
  if (isJudgedElsewhere(i_cfg, i_params))
    return true;
  const CorvDeviceShPtr owner = device();
  if (!owner)
    return false;
  const CorvCollisionQuery* record = CorvCollisionQuery::in(i_params, owner.get());
  const CorvCollisionQuery parsed = record ? CorvCollisionQuery() : makeQuery(i_params);
  const CorvCollisionQuery& query = record ? *record : parsed;
  CInnerScene* inner = updateInnerData(owner);
  if (!inner || owner->computeBodyPositions(i_cfg, inner->positions).failed())
    return false;

  ++s_countTests;
  inner->placeMovingShapes();
  CTest test(*inner, query);
  bool isColliding = test.run(*owner);
  const bool isTouching = isColliding;
  if (!isColliding && query.distanceMode != 0)
    isColliding = test.applyThresholds();
  o_report = makeReport(*owner, *inner, query, isTouching, isColliding, test.sharesDistances());
  return !isColliding;
}

CorvReportCfgCollisionShPtr CorvValidatorCfgLumScene::makeReport(const CorvDevice& i_device, const CInnerScene& i_inner,
                                                                 const CorvCollisionQuery& i_query, bool i_isTouching,
                                                                 bool i_isColliding, bool i_sharesDistances) const
{
  CorvReportCfgCollisionPointsShPtr pointsReport;
  if (i_query.pointsMode != 0)
    pointsReport = CorvReportCfgCollisionPoints::create();
  const CorvReportCfgCollisionShPtr report =
    pointsReport ? CorvReportCfgCollisionShPtr(pointsReport) : CorvReportCfgCollision::create();
  report->specificBody(i_query.specificBody);
  report->query(i_query);
  report->stamps({i_inner.deviceVersion, i_inner.bodiesVersion, i_inner.stamp});
  report->sharesDistances(i_sharesDistances);

  const bool hasAllowances = i_query.isProof() || i_query.reportsMaxAllowableDistances;
  const bool hasDistances = i_query.wantsDistances() && !i_isColliding;
  for (unsigned int i = 0; i < i_device.countBodies(); ++i)
  {
    const CInnerScene::CBodyState& body = i_inner.bodies[i];
    const bool isTested = i_query.specificBody < 0 || i_query.specificBody == static_cast<int>(i);
    if (isTested)
    {
      report->appendToleranceModifier(body.toleranceModifier);
      report->appendToleranceActivation(body.isToleranceActive);
    }
    if (hasDistances && (isTested || hasAllowances))
      report->appendDistance(body.distance);
    if (hasDistances)
      report->appendAllowance(body.allowance, body.isCapped);
    if (hasDistances && isTested && pointsReport)
      pointsReport->appendPoints(body.hasPoints ? body.onBody : NO_POINT, body.hasPoints ? body.onOther : NO_POINT);
  }
  if (i_isTouching)
  {
    const CInnerScene::CPair& pair = i_inner.pairs[i_inner.lastColliding];
    const CInnerScene::CShape* a = &i_inner.shapes[pair.first];
    const CInnerScene::CShape* b = &i_inner.shapes[pair.second];
    if (a->body == NO_BODY)
      std::swap(a, b);
    report->contact({a->body, b->body, a->geometry, b->geometry});
  }
  return report;
}
