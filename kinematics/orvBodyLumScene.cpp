#include "kinematics/orvBodyLumScene.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumCollectionAdapterGeometry.h"
#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLeafGeometry.h"
#include "foundation/lumScene.h"
#include "foundation/lumTestParameters.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvJoint.h"
#include "validation/orvValidatorCfgLumScene.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
const char* const BODY_GEOMETRIES = "mobileGeometries";
const char* const BODY_FRAMES = "mobileGeometryRelativePositions";
/// An estimated distance may be this much too short, relatively.
constexpr double ESTIMATE_ACCURACY = 0.2;
/// The release that brought the coded group.
constexpr int MOBILE_GROUP_VERSION = -600000;

/// What a test of two placed groups of leaves found.
struct GroupDistance
{
  bool isTouching = false;
  double distance = std::numeric_limits<double>::infinity();
  ClumPoint3 onFirst;
  ClumPoint3 onSecond;
};

void measureLeafPair(const ClumCollisionToolkit& i_toolkit, CorvBody::EDistanceComputationMethod i_method,
                     const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                     const ClumMat4& i_poseB, GroupDistance& io_result)
{
  if (i_method == CorvBody::NO_DISTANCE)
  {
    io_result.isTouching = io_result.isTouching || i_toolkit.areTouching(i_a, i_poseA, i_b, i_poseB);
    return;
  }
  const ClumDistanceResult found =
    i_method == CorvBody::ESTIMATED_DISTANCE
      ? i_toolkit.boundedDistance(i_a, i_poseA, i_b, i_poseB, io_result.distance, ESTIMATE_ACCURACY)
      : i_toolkit.exactDistance(i_a, i_poseA, i_b, i_poseB);
  double distance = found.lower;
  if (distance <= 0.0)
  {
    io_result.isTouching = true;
    double depth = 0.0;
    ClumVect3 wayOut;
    if (i_method == CorvBody::PENETRATION_DISTANCE &&
        i_toolkit.penetration(i_a, i_poseA, i_b, i_poseB, depth, wayOut).succeeded())
      distance = -depth;
  }
  if (distance >= io_result.distance)
    return;
  io_result.distance = distance;
  io_result.onFirst = found.pointA;
  io_result.onSecond = found.pointB;
}

/// A leaf without a model counts as touching: it cannot be proved to be clear.
GroupDistance measureGroups(const ClumCollisionToolkit& i_toolkit, CorvBody::EDistanceComputationMethod i_method,
                            const ClumGeometry& i_first, const ClumMat4& i_firstPose, const ClumGeometry& i_second)
{
  std::vector<ClumPlacedLeaf> first, second;
  i_first.getLeaves(first);
  i_second.getLeaves(second);
  GroupDistance result;
  for (const ClumPlacedLeaf& a : first)
    for (const ClumPlacedLeaf& b : second)
    {
      const ClumCollisionModelConstShPtr modelA = a.leaf->collisionModel(i_toolkit);
      const ClumCollisionModelConstShPtr modelB = b.leaf->collisionModel(i_toolkit);
      if (modelA && modelB)
        measureLeafPair(i_toolkit, i_method, *modelA, i_firstPose * a.frame, *modelB, i_second.position() * b.frame,
                        result);
      else
      {
        result.isTouching = true;
        result.distance = std::min(result.distance, 0.0);
      }
    }
  return result;
}
} // namespace

LUM_DESCRIBE(CorvBodyLumScene)
{
  i_class.creates("()", static_cast<CorvBodyLumSceneShPtr (*)()>(&Self::create));
}

CorvBodyLumScene::~CorvBodyLumScene() = default;

CorvBodyLumScene::CorvBodyLumScene(const std::vector<ClumGeometryShPtr>& i_geometries,
                                   const std::vector<ClumMat4>& i_relativePositions)
  : m_mobileGeometries(i_geometries), m_relativePositions(i_relativePositions)
{
}

CorvBodyLumSceneShPtr CorvBodyLumScene::create()
{
  return lumCreate<CorvBodyLumScene>();
}

CorvBodyLumSceneShPtr CorvBodyLumScene::create(const ClumGeometryShPtr& i_geometry, const ClumMat4& i_relativePosition)
{
  return create(std::vector<ClumGeometryShPtr>{i_geometry}, std::vector<ClumMat4>{i_relativePosition});
}

CorvBodyLumSceneShPtr CorvBodyLumScene::create(const std::vector<ClumGeometryShPtr>& i_geometries,
                                               const std::vector<ClumMat4>& i_relativePositions)
{
  return lumCreate<CorvBodyLumScene>(i_geometries, i_relativePositions);
}

CorvBodyLumSceneShPtr CorvBodyLumScene::createCopy(const CorvBodyLumSceneConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvBodyShPtr CorvBodyLumScene::clone() const
{
  return createCopy(self());
}

lmStatus CorvBodyLumScene::init(const CorvBodyLumSceneWkPtr& i_weakPtr)
{
  const lmStatus status = CorvBody::init(i_weakPtr);
  if (status.failed() || m_mobileGeometries.size() != m_relativePositions.size())
    return status.failed() ? status : lmStatus(lmStatus::FAILURE);
  for (auto it = m_mobileGeometries.begin(); it != m_mobileGeometries.end(); ++it)
    if (!*it || std::find(m_mobileGeometries.begin(), it, *it) != it)
      return lmStatus::FAILURE;
  if (!m_mobileGeometries.empty())
    placeBody(absolutePosition());
  return status;
}

lmStatus CorvBodyLumScene::init(const CorvBodyLumSceneWkPtr& i_weakPtr, const CorvBodyLumSceneConstShPtr&)
{
  m_mobileGroup.reset();
  m_controlled.clear();
  return CorvBody::init(i_weakPtr);
}

lmStatus CorvBodyLumScene::addMobileGeometry(const ClumGeometryShPtr& i_geometry)
{
  return insertMobileGeometry(i_geometry, countMobileGeometries());
}

lmStatus CorvBodyLumScene::insertMobileGeometry(const ClumGeometryShPtr& i_geometry, unsigned int i_rank)
{
  if (const CorvJointShPtr holder = joint())
    return holder->insertMobileGeometry(i_geometry, i_rank);
  if (!i_geometry)
    return CorvJoint::NULL_GEOMETRY_ERROR;
  if (isMobileGeometry(i_geometry))
    return CorvJoint::MOBILE_ALREADY_IN_COLLECTION_ERROR;
  if (i_rank > countMobileGeometries())
    return CorvJoint::MOBILE_OUT_OF_RANGE_ERROR;
  insertUnchecked(i_geometry, i_rank);
  didChange();
  return lmStatus();
}

lmStatus CorvBodyLumScene::removeMobileGeometry(const ClumGeometryShPtr& i_geometry)
{
  if (const CorvJointShPtr holder = joint())
    return holder->removeMobileGeometry(i_geometry);
  if (!i_geometry)
    return CorvJoint::NULL_GEOMETRY_ERROR;
  const auto found = std::find(m_mobileGeometries.begin(), m_mobileGeometries.end(), i_geometry);
  if (found == m_mobileGeometries.end())
    return CorvJoint::MOBILE_NOT_IN_COLLECTION_ERROR;
  eraseUnchecked(static_cast<unsigned int>(found - m_mobileGeometries.begin()));
  didChange();
  return lmStatus();
}

void CorvBodyLumScene::insertUnchecked(const ClumGeometryShPtr& i_geometry, unsigned int i_rank)
{
  ClumMat4 relative = absolutePosition().inverse() * i_geometry->position();
  relative.repair();
  m_mobileGeometries.insert(m_mobileGeometries.begin() + i_rank, i_geometry);
  m_relativePositions.insert(m_relativePositions.begin() + i_rank, relative);
}

void CorvBodyLumScene::eraseUnchecked(unsigned int i_rank)
{
  m_mobileGeometries.erase(m_mobileGeometries.begin() + i_rank);
  m_relativePositions.erase(m_relativePositions.begin() + i_rank);
}

void CorvBodyLumScene::takeControl(const ClumGeometryShPtr& i_geometry, const CorvJointShPtr& i_joint)
{
  LUM_ASSERT_SUCCESS(i_geometry->takeExclusivePositionControl(i_joint));
  m_controlled.push_back(i_geometry);
}

void CorvBodyLumScene::releaseControl(const ClumGeometryShPtr& i_geometry)
{
  const auto found = std::find(m_controlled.begin(), m_controlled.end(), i_geometry);
  if (found == m_controlled.end())
    return;
  LUM_ASSERT_SUCCESS(i_geometry->releaseExclusivePositionControl());
  m_controlled.erase(found);
}

ClumGeometryShPtr CorvBodyLumScene::mobileGeometry(unsigned int i_rank) const
{
  return i_rank < m_mobileGeometries.size() ? m_mobileGeometries[i_rank] : ClumGeometryShPtr();
}

bool CorvBodyLumScene::isMobileGeometry(const ClumGeometryConstShPtr& i_geometry) const
{
  return std::find(m_mobileGeometries.begin(), m_mobileGeometries.end(), i_geometry) != m_mobileGeometries.end();
}

ClumMat4 CorvBodyLumScene::mobileObjectRelativePosition(unsigned int i_rank) const
{
  return i_rank < m_relativePositions.size() ? m_relativePositions[i_rank] : ClumMat4();
}

lmStatus CorvBodyLumScene::mobileObjectRelativePosition(unsigned int i_rank, const ClumMat4& i_position)
{
  if (i_rank >= m_relativePositions.size())
    return CorvJoint::MOBILE_OUT_OF_RANGE_ERROR;
  std::vector<ClumMat4> positions = m_relativePositions;
  positions[i_rank] = i_position;
  return mobileObjectRelativePositions(positions);
}

lmStatus CorvBodyLumScene::mobileObjectRelativePositions(const std::vector<ClumMat4>& i_positions)
{
  if (i_positions.size() != m_relativePositions.size())
    return lmStatus::FAILURE;
  if (i_positions == m_relativePositions)
    return lmStatus();
  m_relativePositions = i_positions;
  didChange();
  placeBody(absolutePosition());
  return lmStatus();
}

ClumSceneShPtr CorvBodyLumScene::scene() const
{
  const CorvJointShPtr holder = joint();
  const CorvDeviceShPtr device = holder ? holder->device() : CorvDeviceShPtr();
  return device ? device->innerCollisionScene() : ClumSceneShPtr();
}

ClumCollisionToolkitShPtr CorvBodyLumScene::toolkit() const
{
  const CorvJointShPtr holder = joint();
  const CorvDeviceShPtr device = holder ? holder->device() : CorvDeviceShPtr();
  return device && device->collisionToolkit() ? device->collisionToolkit()
                                              : ClumCollisionToolkit::defaultCollisionToolkit();
}

const ClumGeometryShPtr& CorvBodyLumScene::ensureMobileGroup()
{
  const ClumSceneShPtr home = scene();
  if (m_mobileGroup || m_mobileGeometries.empty() || !home)
    return m_mobileGroup;
  LUM_ASSERT_SUCCESS(home->addObjectGeometryCollection(joint(), BODY_GEOMETRIES, m_mobileGroup, BODY_FRAMES));
  if (m_mobileGroup)
  {
    m_mobileGroup->position(absolutePosition());
    joint()->device()->newMobileGroupAddedToScene(m_mobileGroup);
  }
  return m_mobileGroup;
}

void CorvBodyLumScene::removedFromDevice()
{
  const auto adapter = boost::dynamic_pointer_cast<ClumCollectionAdapterGeometry>(m_mobileGroup);
  const ClumSceneShPtr home = adapter ? adapter->scene() : ClumSceneShPtr();
  if (home)
    LUM_ASSERT_SUCCESS(home->removeObjectGeometryCollection(adapter->object(), BODY_GEOMETRIES));
  m_mobileGroup.reset();
}

double CorvBodyLumScene::testTolerance(const CorvBodyLumScene* i_first, const CorvBodyLumScene* i_second,
                                       const ClumTestParameters& i_test, double i_extra)
{
  const bool isActive = i_test.toleranceActivation() && (!i_first || i_first->m_toleranceActivation) &&
                        (!i_second || i_second->m_toleranceActivation);
  if (!isActive)
    return 0.0;
  return std::max(i_first ? i_first->m_toleranceModifier : 0.0, i_second ? i_second->m_toleranceModifier : 0.0) +
         i_test.tolerance() + i_extra;
}

/// Calls `i_function(parameters, other geometry, the other's body or null)` for each active test of this body's group.
template <class FUNCTION>
void CorvBodyLumScene::forEachTest(FUNCTION i_function) const
{
  const ClumSceneShPtr home = scene();
  if (!home || !m_mobileGroup)
    return;
  const std::vector<CorvBodyShPtr>& bodies = joint()->device()->bodyVector();
  for (const ClumScene::CTestPair& pair : home->testPairs())
  {
    if (pair.first != m_mobileGroup && pair.second != m_mobileGroup)
      continue;
    const ClumGeometryShPtr& other = pair.first == m_mobileGroup ? pair.second : pair.first;
    const CorvBodyLumScene* otherBody = nullptr;
    for (const CorvBodyShPtr& body : bodies)
    {
      const CorvBodyLumScene* candidate = dynamic_cast<const CorvBodyLumScene*>(body.get());
      if (candidate && candidate->m_mobileGroup == other)
        otherBody = candidate;
    }
    i_function(*pair.parameters, *other, otherBody);
  }
}

lmStatus CorvBodyLumScene::getMaximumTolerance(double& o_tolerance) const
{
  o_tolerance = 0.0;
  forEachTest([&](const ClumTestParameters& i_test, const ClumGeometry&, const CorvBodyLumScene* i_other)
              { o_tolerance = std::max(o_tolerance, testTolerance(this, i_other, i_test, 0.0)); });
  return lmStatus();
}

lmStatus CorvBodyLumScene::getToleranceActivation(bool& o_activation) const
{
  o_activation = m_toleranceActivation;
  return lmStatus();
}

lmStatus CorvBodyLumScene::setToleranceActivation(bool i_activation)
{
  m_toleranceActivation = i_activation;
  return lmStatus();
}

lmStatus CorvBodyLumScene::getToleranceModifier(double& o_modifier) const
{
  o_modifier = m_toleranceModifier;
  return lmStatus();
}

lmStatus CorvBodyLumScene::setToleranceModifier(double i_modifier)
{
  m_toleranceModifier = i_modifier;
  return lmStatus();
}

bool CorvBodyLumScene::canCheckCollisions() const
{
  return static_cast<bool>(scene());
}

bool CorvBodyLumScene::isColliding(const CCollisionAnalysisParameters& i_parameters, double& o_distance) const
{
  const ClumMat4& pose = i_parameters.uses(POSITION_FIELD) ? i_parameters.bodyPosition : absolutePosition();
  const double extra = i_parameters.uses(MODIFIER_FIELD) ? i_parameters.toleranceModifier : 0.0;
  const bool hasTolerance =
    i_parameters.uses(ACTIVATION_FIELD) ? i_parameters.toleranceActivation : m_toleranceActivation;
  const EDistanceComputationMethod method =
    i_parameters.uses(METHOD_FIELD) ? i_parameters.distanceComputationMethod : ESTIMATED_DISTANCE;
  const ClumCollisionToolkitShPtr provider = toolkit();
  bool isColliding = false;
  o_distance = std::numeric_limits<double>::infinity();
  forEachTest(
    [&](const ClumTestParameters& i_test, const ClumGeometry& i_other, const CorvBodyLumScene* i_otherBody)
    {
      const double tolerance = hasTolerance ? testTolerance(this, i_otherBody, i_test, extra) : 0.0;
      EDistanceComputationMethod asked = method;
      if (tolerance > 0.0 && (method == NO_DISTANCE || method == ESTIMATED_DISTANCE))
        asked = EXACT_DISTANCE;
      if (tolerance < 0.0)
        asked = PENETRATION_DISTANCE;
      const GroupDistance found = measureGroups(*provider, asked, *m_mobileGroup, pose, i_other);
      isColliding = isColliding || (tolerance == 0.0 ? found.isTouching : found.distance <= tolerance);
      o_distance = std::min(o_distance, found.distance - (method == DISTANCE_WITH_TOLERANCE ? tolerance : 0.0));
    });
  return isColliding;
}

lmStatus CorvBodyLumScene::measureDistance(double, double& o_distance, ClumPoint3& o_onBody,
                                           ClumPoint3& o_onOther) const
{
  if (!canCheckCollisions())
    return lmStatus::FAILURE;
  const ClumCollisionToolkitShPtr provider = toolkit();
  GroupDistance nearest;
  forEachTest(
    [&](const ClumTestParameters&, const ClumGeometry& i_other, const CorvBodyLumScene*)
    {
      const GroupDistance found = measureGroups(*provider, EXACT_DISTANCE, *m_mobileGroup, absolutePosition(), i_other);
      if (found.distance < nearest.distance)
        nearest = found;
    });
  o_distance = nearest.distance;
  o_onBody = nearest.onFirst;
  o_onOther = nearest.onSecond;
  return lmStatus();
}

double CorvBodyLumScene::getBoundingSphereRadius(const ClumPoint3& i_point) const
{
  std::vector<CEnclosingBall> balls;
  getEnclosingBalls(balls);
  double radius = 0.0;
  for (const CEnclosingBall& ball : balls)
    radius = std::max(radius, ball.center.distanceFrom(i_point) + ball.radius);
  return radius;
}

bool CorvBodyLumScene::operator==(const CorvBody& i_other) const
{
  const CorvBodyLumScene* other = dynamic_cast<const CorvBodyLumScene*>(&i_other);
  return other && CorvBody::operator==(i_other) && m_mobileGeometries == other->m_mobileGeometries &&
         m_relativePositions == other->m_relativePositions;
}

CorvValidatorCfgCollisionBaseShPtr CorvBodyLumScene::makeValidator(const CorvConfigSpaceShPtr& i_space) const
{
  return CorvValidatorCfgLumScene::create(i_space);
}

void CorvBodyLumScene::getEnclosingBalls(std::vector<CEnclosingBall>& io_balls) const
{
  std::vector<ClumPlacedLeaf> leaves;
  for (std::size_t g = 0; g < m_mobileGeometries.size(); ++g)
  {
    leaves.clear();
    m_mobileGeometries[g]->getLeaves(leaves);
    for (const ClumPlacedLeaf& placed : leaves)
    {
      const ClumMat4 frame = m_relativePositions[g] * placed.frame;
      for (const ClumPoint3& point : placed.leaf->enclosingPoints())
        io_balls.push_back(CEnclosingBall{frame * point, placed.leaf->enclosingRadius()});
    }
  }
}

void CorvBodyLumScene::placeBody(const ClumMat4& i_position)
{
  if (m_mobileGroup)
  {
    m_mobileGroup->position(i_position);
    m_mobileGroup->applyPositionToMembers();
    return;
  }
  for (std::size_t g = 0; g < m_mobileGeometries.size(); ++g)
    m_mobileGeometries[g]->position(i_position * m_relativePositions[g]);
}

void CorvBodyLumScene::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvBody::encodeWithCoder(i_coder);
  i_coder->encodeObjects(m_mobileGeometries, "mobileGeometries");
  i_coder->encodeMat4Vector(m_relativePositions, "mobileObjectRelativePositions");
  i_coder->encodeDouble(m_toleranceModifier, "toleranceModifier");
  i_coder->encodeBool(m_toleranceActivation, "toleranceActivation");
  i_coder->encodeObjectShPtr(m_mobileGroup, "mobileGroup");
}

lmStatus CorvBodyLumScene::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvBody::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  i_coder->decodeObjects("mobileGeometries", m_mobileGeometries);
  i_coder->decodeMat4Vector("mobileObjectRelativePositions", m_relativePositions);
  m_toleranceModifier = i_coder->decodeDouble("toleranceModifier");
  m_toleranceActivation = i_coder->decodeBool("toleranceActivation");
  if (!i_coder->isDecodedVersionStrictlyLowerThan(MOBILE_GROUP_VERSION))
    m_mobileGroup = i_coder->decode<ClumGeometry>("mobileGroup");
  const bool isWhole = m_mobileGeometries.size() == m_relativePositions.size() && std::isfinite(m_toleranceModifier) &&
                       std::count(m_mobileGeometries.begin(), m_mobileGeometries.end(), ClumGeometryShPtr()) == 0;
  return isWhole ? status : lmStatus(lmStatus::FAILURE);
}

void CorvBodyLumScene::awake()
{
  CorvBody::awake();
  const auto adapter = boost::dynamic_pointer_cast<ClumCollectionAdapterGeometry>(m_mobileGroup);
  if (!adapter || !adapter->scene())
    m_mobileGroup.reset();
  // A copy that shares its geometries with the original leaves the control where it is.
  const CorvJointShPtr holder = joint();
  for (const ClumGeometryShPtr& geometry : m_mobileGeometries)
    if (holder && geometry->canTakeExclusivePositionControl())
      takeControl(geometry, holder);
}
