#include "kinematics/orvJoint.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumGeometry.h"
#include "foundation/lumObjectFilter.h"
#include "foundation/lumScene.h"
#include "kinematics/orvBodyLumScene.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvCloner.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvKinematicalEffect.h"

#include <algorithm>
#include <cmath>

namespace
{
const char* const JOINT_SPACE_TYPE = "orvane.core.config-space.composite";
/// The release that brought the coded structural version.
constexpr int STRUCTURAL_VERSION_VERSION = -500000;
const CorvJointShPtr NO_JOINT;

/// The dofs of a space; none without a space.
std::vector<CorvDofShPtr> dofsOfSpace(const CorvConfigSpaceShPtr& i_space)
{
  std::vector<CorvDofShPtr> dofs;
  if (i_space)
    LUM_ASSERT_SUCCESS(i_space->getDofs(dofs));
  return dofs;
}
} // namespace

LUM_DESCRIBE(CorvJoint)
{
  i_class.creates("(const CorvKinematicalEffectShPtr& i_effect, const ClumMat4& i_position)",
                  static_cast<CorvJointShPtr (*)(const CorvKinematicalEffectShPtr&, const ClumMat4&)>(&Self::create));
  i_class.property<CorvBodyShPtr>("attachedBody", &Self::attachedBody, &Self::attachedBody);
  i_class.property<CorvCSCompositeShPtr>("configSpace", &Self::configSpace);
  i_class.property<ClumMat4>("currentPosition", &Self::currentPosition, &Self::currentPosition);
  i_class.property<ClumMat4>("currentRigidPosition", &Self::currentRigidPosition, &Self::currentRigidPosition);
  i_class.property<ClumMat4>("initialPosition", &Self::initialPosition);
  i_class.property<CorvKinematicalEffectShPtr>("kinematicalEffect", &Self::kinematicalEffect, &Self::kinematicalEffect);
  i_class.property<unsigned int>("structuralVersion", &Self::structuralVersion);
  i_class.property<unsigned int>("version", &Self::version);
  i_class.collection<CorvJointShPtr>("childJoints", "const CorvJointShPtr&", &Self::countChildJoints,
                                     &Self::childJoint);
  i_class.collection<CorvDofShPtr>("dofs", "CorvDofShPtr", &Self::countDofs, &Self::dof);
  i_class.collection<ClumGeometryShPtr>("mobileGeometries", "ClumGeometryShPtr", &Self::countMobileGeometries,
                                        &Self::mobileGeometry);
  i_class.collection<ClumMat4>("mobileGeometryRelativePositions", "ClumMat4", &Self::countMobileGeometries,
                               &Self::mobileGeometryRelativePosition);
  i_class.dynamicProperty("orvane.next.lock-childJoints", false);
  i_class.dynamicProperty("orvane.next.lock-currentPosition", false);
  i_class.dynamicProperty("orvane.next.display-path", false);
}

LUM_STATUS_CODE(CorvJoint, MOBILE_ALREADY_IN_COLLECTION_ERROR, 20500,
                "Impossible to add a geometry as mobile if its already a mobile in this device.");
LUM_STATUS_CODE(CorvJoint, MOBILE_MOBILE_CONFLICT_ERROR, 20501,
                "Impossible to add a geometry as mobile if its already a mobile geometry in a device of the device "
                "hierarchy.");
LUM_STATUS_CODE(CorvJoint, MOBILE_OBSTACLE_CONFLICT_ERROR, 20502,
                "Impossible to add a geometry as mobile if its already an obstacle geometry in a device of the device "
                "hierarchy.");
LUM_STATUS_CODE(CorvJoint, MOBILE_BODY_CONFLICT_ERROR, 20503,
                "Impossible to add a geometry as mobile if the joint already have an incompatible body.");
LUM_STATUS_CODE(CorvJoint, LOCKED_KINEMATICAL_CHAIN_ERROR, 20504, "The kinematical chain is locked.");
LUM_STATUS_CODE(CorvJoint, NULL_JOINT_ERROR, 20505, "A joint is required.");
LUM_STATUS_CODE(CorvJoint, JOINT_ALREADY_HAS_PARENT_ERROR, 20506, "The given joint already has a parent.");
LUM_STATUS_CODE(CorvJoint, INVALID_CHILDREN_RANK_ERROR, 20507, "The given rank is bigger than the number of children.");
LUM_STATUS_CODE(CorvJoint, REBUILD_CONFIG_SPACE_ERROR, 20508, "The configuration space cannot be rebuilt.");
LUM_STATUS_CODE(CorvJoint, JOINT_ADDING_CHECK_ERROR, 20509, "Cannot add joint to device.");
LUM_STATUS_CODE(CorvJoint, KINEMATICAL_LOOP_ATTEMPT_ERROR, 20510, "Cannot create a kinemeatical loop.");
LUM_STATUS_CODE(CorvJoint, MOBILE_OUT_OF_RANGE_ERROR, 20511,
                "Impossible to add a geometry at this index, out of range.");
LUM_STATUS_CODE(CorvJoint, NULL_GEOMETRY_ERROR, 20512, "A geometry is required.");
LUM_STATUS_CODE(CorvJoint, POSITIONER_NOT_ALLOWED_AS_CHILD_ERROR, 20513,
                "Positioner joint is only allowed as root joint of a device.");
LUM_STATUS_CODE(CorvJoint, MOBILE_NOT_IN_COLLECTION_ERROR, 20514,
                "Impossible to remove a geometry which is not in the collection.");
LUM_STATUS_CODE(CorvJoint, MOBILE_ALREADY_CONTROLLED_ERROR, 20515,
                "Impossible to add a geometry because exclusive position control on geometry cannot be taken.");
LUM_STATUS_CODE(CorvJoint, INCOMPATIBLE_KINEMATICAL_EFFECT_ERROR, 20516,
                "Kinematical Effect has not the same number of DOF than the joint");
LUM_STATUS_CODE(CorvJoint, MOBILE_ALREADY_IN_SCENE_ERROR, 20517,
                "Impossible to add a geometry as mobile if the joint already added to the scene.");
LUM_STATUS_CODE(CorvJoint, COLLISION_TOOLKIT_ERROR, 20518, "The device holding the joint has no collision toolkit.");

CorvJoint::CorvJoint() = default;

CorvJoint::CorvJoint(const CorvKinematicalEffectShPtr& i_effect, const ClumMat4& i_position)
  : CorvJoint(i_effect, std::vector<double>(i_effect ? i_effect->configSpace()->size() : 0u, 0.0), i_position)
{
}

CorvJoint::CorvJoint(const CorvKinematicalEffectShPtr& i_effect, const std::vector<double>& i_values,
                     const ClumMat4& i_position)
  : m_kinematicalEffect(i_effect), m_currentEffectDofValues(i_values), m_currentPosition(i_position)
{
}

CorvJoint::~CorvJoint()
{
  // Whoever held control by this joint's handle has lost it with the handle.
  if (const CorvBodyLumSceneShPtr body = lumSceneBody())
    body->m_controlled.clear();
  if (m_attachedBody)
    m_attachedBody->jointWkPtr(CorvJointWkPtr());
}

lmStatus CorvJoint::init(const CorvJointWkPtr& i_weakPtr)
{
  lmStatus status = ClumMutableCodable::init(i_weakPtr);
  if (status.failed())
    return status;
  if (!m_kinematicalEffect || m_currentEffectDofValues.size() != m_kinematicalEffect->configSpace()->size())
    return lmStatus::FAILURE;
  m_configSpace = CorvCSComposite::create(JOINT_SPACE_TYPE);
  if (!m_configSpace)
    return lmStatus::FAILURE;
  m_configSpace->joint(self());
  status = rebuildConfigSpace();
  if (status.failed())
    return status;
  m_initialPosition = m_currentPosition;
  m_initialPosition.repair();
  computeEffect(m_currentEffectDofValues, m_effect);
  m_currentPosition *= m_effect;
  computeTransform(m_currentPosition, m_transform);
  return status;
}

CorvJointShPtr CorvJoint::create(const CorvKinematicalEffectShPtr& i_effect, const ClumMat4& i_position)
{
  return lumCreate<CorvJoint>(i_effect, i_position);
}

CorvJointShPtr CorvJoint::create(const CorvKinematicalEffectShPtr& i_effect, const std::vector<double>& i_values,
                                 const ClumMat4& i_position)
{
  return lumCreate<CorvJoint>(i_effect, i_values, i_position);
}

CorvJointShPtr CorvJoint::createCopy(const CorvJointConstShPtr& i_objectToCopy)
{
  if (!i_objectToCopy)
    return CorvJointShPtr();
  const CorvClonerShPtr cloner = CorvCloner::create();
  if (cloner->encodeObjectShPtr(i_objectToCopy, "object").failed())
    return CorvJointShPtr();
  return boost::dynamic_pointer_cast<CorvJoint>(cloner->decodeObject("object"));
}

CorvJointShPtr CorvJoint::clone() const
{
  return createCopy(self());
}

lmStatus CorvJoint::addJoint(const CorvJointShPtr& i_joint)
{
  return insertJoint(i_joint, countChildJoints());
}

lmStatus CorvJoint::insertJoint(const CorvJointShPtr& i_joint, unsigned int i_rank)
{
  lmStatus status = checkInsertion(i_joint, i_rank);
  if (status.failed())
    return status;
  const CorvDeviceShPtr holder = device();
  notifyCollectionWillChange("childJoints", COLLECTION_INSERTION, static_cast<int>(i_rank));
  if (holder)
    holder->notifyCollisionSceneWillChange();
  m_childJoints.insert(m_childJoints.begin() + i_rank, i_joint);
  i_joint->parentJoint(CorvJointWkPtr(self()));
  status = rebuildConfigSpaceOr(
    [&]
    {
      m_childJoints.erase(m_childJoints.begin() + i_rank);
      i_joint->parentJoint(CorvJointWkPtr());
    });
  if (status.succeeded())
  {
    // The new child keeps the frame in which it stands.
    i_joint->updateInitialPosition();
    didChangeStructure();
    if (holder)
      holder->jointAdded(i_joint);
  }
  if (holder)
    holder->notifyCollisionSceneDidChange();
  notifyCollectionDidChange("childJoints", COLLECTION_INSERTION, static_cast<int>(i_rank));
  return status;
}

lmStatus CorvJoint::checkInsertion(const CorvJointShPtr& i_joint, unsigned int i_rank) const
{
  if (m_isKinematicalChainLocked)
    return LOCKED_KINEMATICAL_CHAIN_ERROR;
  if (!i_joint)
    return NULL_JOINT_ERROR;
  if (i_joint->parentJoint())
    return JOINT_ALREADY_HAS_PARENT_ERROR;
  if (willLoopAsChild(*i_joint))
    return KINEMATICAL_LOOP_ATTEMPT_ERROR;
  if (i_rank > countChildJoints())
    return INVALID_CHILDREN_RANK_ERROR;
  lmStatus status;
  if (i_joint->device())
    status = CorvDevice::ALREADY_IN_A_KINEMATICAL_CHAIN_ERROR;
  else if (const CorvDeviceShPtr holder = device())
    status = holder->checkJointCanBeAdded(i_joint);
  if (status.failed())
  {
    status.push(JOINT_ADDING_CHECK_ERROR);
    return status;
  }
  std::vector<ClumGeometryShPtr> geometries;
  i_joint->appendMobileGeometries(geometries);
  for (const ClumGeometryShPtr& geometry : geometries)
    if (isMobileInTree(geometry))
      return MOBILE_MOBILE_CONFLICT_ERROR;
  return status;
}

lmStatus CorvJoint::removeJoint(const CorvJointShPtr& i_joint)
{
  if (m_isKinematicalChainLocked)
    return LOCKED_KINEMATICAL_CHAIN_ERROR;
  if (!i_joint)
    return NULL_JOINT_ERROR;
  const auto found = std::find(m_childJoints.begin(), m_childJoints.end(), i_joint);
  if (found == m_childJoints.end())
    return lmStatus::FAILURE;
  const CorvJointShPtr child = i_joint;
  const int rank = static_cast<int>(found - m_childJoints.begin());
  const CorvDeviceShPtr holder = device();
  notifyCollectionWillChange("childJoints", COLLECTION_REMOVAL, rank);
  if (holder)
    holder->notifyCollisionSceneWillChange();
  m_childJoints.erase(found);
  child->parentJoint(CorvJointWkPtr());
  const lmStatus status = rebuildConfigSpaceOr(
    [&]
    {
      m_childJoints.insert(m_childJoints.begin() + rank, child);
      child->parentJoint(CorvJointWkPtr(self()));
    });
  if (status.succeeded())
  {
    if (holder)
      holder->jointRemoved(child);
    child->updateInitialPosition();
    didChangeStructure();
  }
  if (holder)
    holder->notifyCollisionSceneDidChange();
  notifyCollectionDidChange("childJoints", COLLECTION_REMOVAL, rank);
  return status;
}

const CorvJointShPtr& CorvJoint::childJoint(unsigned int i_rank) const
{
  return i_rank < m_childJoints.size() ? m_childJoints[i_rank] : NO_JOINT;
}

CorvJointShPtr CorvJoint::parentJoint() const
{
  return m_parentJoint.lock();
}

void CorvJoint::parentJoint(const CorvJointWkPtr& i_parent)
{
  m_parentJoint = i_parent;
}

bool CorvJoint::isParentOf(const CorvJointConstShPtr& i_joint) const
{
  for (CorvJointShPtr up = i_joint ? i_joint->parentJoint() : CorvJointShPtr(); up; up = up->parentJoint())
    if (up.get() == this)
      return true;
  return false;
}

bool CorvJoint::willLoopAsChild(const CorvJoint& i_joint) const
{
  return &i_joint == this || i_joint.isParentOf(self());
}

void CorvJoint::fillJointVector(std::vector<CorvJointShPtr>& o_joints) const
{
  o_joints.push_back(self());
  for (const CorvJointShPtr& child : m_childJoints)
    child->fillJointVector(o_joints);
}

ClumObjectFilterShPtr CorvJoint::makeChildFilter() const
{
  const CorvJointConstWkPtr top(self());
  const auto isBelow = [top](const ClumObject& i_object)
  {
    const CorvJoint* const joint = dynamic_cast<const CorvJoint*>(&i_object);
    const CorvJointConstShPtr parent = top.lock();
    return joint && parent && parent->isParentOf(joint->self());
  };
  return ClumCallbackObjectFilter(isBelow).clone();
}

const CorvJoint& CorvJoint::rootOfTree() const
{
  const CorvJoint* top = this;
  for (CorvJointShPtr up = parentJoint(); up; up = up->parentJoint())
    top = up.get();
  return *top;
}

CorvDeviceShPtr CorvJoint::device() const
{
  const CorvConfigSpaceShPtr holder = rootOfTree().m_configSpace->parent();
  return holder ? holder->device() : CorvDeviceShPtr();
}

void CorvJoint::lockKinematicalChain()
{
  m_isKinematicalChainLocked = true;
  for (const CorvJointShPtr& child : m_childJoints)
    child->lockKinematicalChain();
}

lmStatus CorvJoint::addVirtualChild(const CorvJointShPtr& i_joint)
{
  const auto isJoint = [&](const CorvJointWkPtr& i_child) { return i_child.lock() == i_joint; };
  if (!i_joint || i_joint.get() == this || std::any_of(m_virtualChildren.begin(), m_virtualChildren.end(), isJoint))
    return lmStatus::FAILURE;
  m_virtualChildren.push_back(i_joint);
  didChange();
  return lmStatus();
}

lmStatus CorvJoint::removeVirtualChild(const CorvJointShPtr& i_joint)
{
  const auto isJoint = [&](const CorvJointWkPtr& i_child) { return i_child.lock() == i_joint; };
  const auto found = std::find_if(m_virtualChildren.begin(), m_virtualChildren.end(), isJoint);
  if (!i_joint || found == m_virtualChildren.end())
    return lmStatus::FAILURE;
  m_virtualChildren.erase(found);
  didChange();
  return lmStatus();
}

CorvJointShPtr CorvJoint::virtualChild(unsigned int i_rank) const
{
  return i_rank < m_virtualChildren.size() ? m_virtualChildren[i_rank].lock() : CorvJointShPtr();
}

void CorvJoint::getRigidlyLinkedJoints(std::vector<CorvJointShPtr>& o_joints) const
{
  const std::size_t first = o_joints.size();
  const auto add = [&](const CorvJointShPtr& i_joint)
  {
    if (i_joint && std::find(o_joints.begin() + first, o_joints.end(), i_joint) == o_joints.end())
      o_joints.push_back(i_joint);
  };
  add(self());
  for (std::size_t i = first; i < o_joints.size(); ++i)
  {
    const CorvJointShPtr joint = o_joints[i];
    if (joint->countDofs() == 0)
      add(joint->parentJoint());
    for (const CorvJointShPtr& child : joint->m_childJoints)
      if (child->countDofs() == 0)
        add(child);
    add(joint->linkedJoint());
  }
}

bool CorvJoint::hasLinkedBody() const
{
  std::vector<CorvBodyShPtr> bodies;
  getLinkedBodies(bodies);
  return !bodies.empty();
}

void CorvJoint::getLinkedBodies(std::vector<CorvBodyShPtr>& o_bodies) const
{
  std::vector<CorvJointShPtr> joints;
  getRigidlyLinkedJoints(joints);
  for (const CorvJointShPtr& joint : joints)
    if (joint->m_attachedBody)
      o_bodies.push_back(joint->m_attachedBody);
}

CorvBodyLumSceneShPtr CorvJoint::lumSceneBody() const
{
  return boost::dynamic_pointer_cast<CorvBodyLumScene>(m_attachedBody);
}

void CorvJoint::appendMobileGeometries(std::vector<ClumGeometryShPtr>& io_geometries) const
{
  if (const CorvBodyLumSceneShPtr body = lumSceneBody())
    io_geometries.insert(io_geometries.end(), body->mobileGeometries().begin(), body->mobileGeometries().end());
  for (const CorvJointShPtr& child : m_childJoints)
    child->appendMobileGeometries(io_geometries);
}

bool CorvJoint::isMobileInTree(const ClumGeometryConstShPtr& i_geometry) const
{
  std::vector<ClumGeometryShPtr> geometries;
  rootOfTree().appendMobileGeometries(geometries);
  return std::find(geometries.begin(), geometries.end(), i_geometry) != geometries.end();
}

lmStatus CorvJoint::addMobileGeometry(const ClumGeometryShPtr& i_geometry)
{
  return insertMobileGeometry(i_geometry, countMobileGeometries());
}

lmStatus CorvJoint::insertMobileGeometry(const ClumGeometryShPtr& i_geometry, unsigned int i_rank)
{
  if (!i_geometry)
    return NULL_GEOMETRY_ERROR;
  if (m_attachedBody && !lumSceneBody())
    return MOBILE_BODY_CONFLICT_ERROR;
  if (m_attachedBody && lumSceneBody()->isMobileGeometry(i_geometry))
    return MOBILE_ALREADY_IN_COLLECTION_ERROR;
  lmStatus status = checkMobileGeometry(i_geometry);
  if (status.succeeded() && i_rank > countMobileGeometries())
    status = MOBILE_OUT_OF_RANGE_ERROR;
  if (status.succeeded() && !i_geometry->canTakeExclusivePositionControl())
    status = MOBILE_ALREADY_CONTROLLED_ERROR;
  if (status.succeeded() && !m_attachedBody)
    status = setAttachedBody(CorvBodyLumScene::create(), ClumMat4());
  if (status.failed())
    return status;
  const CorvBodyLumSceneShPtr body = lumSceneBody();
  notifyCollectionWillChange("mobileGeometries", COLLECTION_INSERTION, static_cast<int>(i_rank));
  body->insertUnchecked(i_geometry, i_rank);
  body->takeControl(i_geometry, self());
  body->didChange();
  notifyCollectionDidChange("mobileGeometries", COLLECTION_INSERTION, static_cast<int>(i_rank));
  body->ensureMobileGroup();
  return status;
}

/// Whether a geometry that is not this joint's may become so, as far as the tree, the device and its scene know.
lmStatus CorvJoint::checkMobileGeometry(const ClumGeometryShPtr& i_geometry) const
{
  if (isMobileInTree(i_geometry))
    return MOBILE_MOBILE_CONFLICT_ERROR;
  const CorvDeviceShPtr holder = device();
  if (!holder)
    return lmStatus();
  if (holder->isObstacleGeometry(i_geometry))
    return MOBILE_OBSTACLE_CONFLICT_ERROR;
  if (!holder->collisionToolkit())
    return COLLISION_TOOLKIT_ERROR;
  const ClumSceneShPtr scene = holder->collisionScene();
  if (scene && scene->doesContainGeometryOrParent(i_geometry))
    return MOBILE_ALREADY_IN_SCENE_ERROR;
  return lmStatus();
}

lmStatus CorvJoint::removeMobileGeometry(const ClumGeometryShPtr& i_geometry)
{
  if (!i_geometry)
    return NULL_GEOMETRY_ERROR;
  const CorvBodyLumSceneShPtr body = lumSceneBody();
  if (!body || !body->isMobileGeometry(i_geometry))
    return MOBILE_NOT_IN_COLLECTION_ERROR;
  const ClumGeometryShPtr geometry = i_geometry;
  const std::vector<ClumGeometryShPtr>& geometries = body->mobileGeometries();
  const int rank = static_cast<int>(std::find(geometries.begin(), geometries.end(), geometry) - geometries.begin());
  notifyCollectionWillChange("mobileGeometries", COLLECTION_REMOVAL, rank);
  body->eraseUnchecked(static_cast<unsigned int>(rank));
  body->releaseControl(geometry);
  body->didChange();
  notifyCollectionDidChange("mobileGeometries", COLLECTION_REMOVAL, rank);
  return lmStatus();
}

lmStatus CorvJoint::mobileGeometries(const std::vector<ClumGeometryShPtr>& i_geometries)
{
  const CorvBodyLumSceneShPtr body = lumSceneBody();
  const std::vector<ClumGeometryShPtr> before = body ? body->mobileGeometries() : std::vector<ClumGeometryShPtr>();
  const std::vector<ClumMat4> frames = body ? body->mobileObjectRelativePositions() : std::vector<ClumMat4>();
  const std::vector<ClumGeometryShPtr> wanted = i_geometries;
  for (const ClumGeometryShPtr& geometry : before)
    LUM_ASSERT_SUCCESS(removeMobileGeometry(geometry));
  lmStatus status;
  for (auto it = wanted.begin(); it != wanted.end() && status.succeeded(); ++it)
    status = addMobileGeometry(*it);
  if (status.succeeded())
    return status;
  while (countMobileGeometries() > 0)
    LUM_ASSERT_SUCCESS(removeMobileGeometry(mobileGeometry(0)));
  for (const ClumGeometryShPtr& geometry : before)
    LUM_ASSERT_SUCCESS(addMobileGeometry(geometry));
  if (body)
    LUM_ASSERT_SUCCESS(body->mobileObjectRelativePositions(frames));
  else if (m_attachedBody)
    LUM_ASSERT_SUCCESS(removeAttachedBody());
  return status;
}

unsigned int CorvJoint::countMobileGeometries() const
{
  const CorvBodyLumScene* body = dynamic_cast<const CorvBodyLumScene*>(m_attachedBody.get());
  return body ? body->countMobileGeometries() : 0u;
}

ClumGeometryShPtr CorvJoint::mobileGeometry(unsigned int i_rank) const
{
  const CorvBodyLumSceneShPtr body = lumSceneBody();
  return body ? body->mobileGeometry(i_rank) : ClumGeometryShPtr();
}

ClumMat4 CorvJoint::mobileGeometryRelativePosition(unsigned int i_rank) const
{
  const CorvBodyLumSceneShPtr body = lumSceneBody();
  return body ? body->mobileObjectRelativePosition(i_rank) : ClumMat4();
}

lmStatus CorvJoint::mobileGeometryRelativePosition(unsigned int i_rank, const ClumMat4& i_position)
{
  const CorvBodyLumSceneShPtr body = lumSceneBody();
  return body ? body->mobileObjectRelativePosition(i_rank, i_position) : lmStatus(MOBILE_OUT_OF_RANGE_ERROR);
}

ClumGeometryShPtr CorvJoint::mobileGroup() const
{
  const CorvBodyLumSceneShPtr body = lumSceneBody();
  return body ? body->mobileGroup() : ClumGeometryShPtr();
}

ClumGeometryShPtr CorvJoint::ensureMobileGroup()
{
  const CorvBodyLumSceneShPtr body = lumSceneBody();
  return body ? body->ensureMobileGroup() : ClumGeometryShPtr();
}

lmStatus CorvJoint::setAttachedBody(const CorvBodyShPtr& i_body)
{
  if (!i_body)
    return removeAttachedBody();
  if (i_body == m_attachedBody)
    return lmStatus();
  return setAttachedBody(i_body, m_currentPosition.inverse() * i_body->absolutePosition());
}

lmStatus CorvJoint::setAttachedBody(const CorvBodyShPtr& i_body, const ClumMat4& i_relativePosition)
{
  if (!i_body)
    return removeAttachedBody();
  if (i_body != m_attachedBody)
  {
    lmStatus status = checkBody(i_body);
    if (status.succeeded())
      status = replaceBody(i_body);
    if (status.failed())
      return status;
  }
  i_body->relativePosition(i_relativePosition);
  return lmStatus();
}

lmStatus CorvJoint::checkBody(const CorvBodyShPtr& i_body) const
{
  if (i_body->joint())
    return lmStatus::FAILURE;
  const CorvBodyLumSceneShPtr body = boost::dynamic_pointer_cast<CorvBodyLumScene>(i_body);
  if (!body)
    return lmStatus();
  for (const ClumGeometryShPtr& geometry : body->mobileGeometries())
  {
    lmStatus status = checkMobileGeometry(geometry);
    if (status.succeeded() && !geometry->canTakeExclusivePositionControl())
      status = MOBILE_ALREADY_CONTROLLED_ERROR;
    if (status.failed())
      return status;
  }
  return lmStatus();
}

lmStatus CorvJoint::removeAttachedBody()
{
  return m_attachedBody ? replaceBody(CorvBodyShPtr()) : lmStatus();
}

/// @param i_body free and checked, or null.
lmStatus CorvJoint::replaceBody(const CorvBodyShPtr& i_body)
{
  const CorvBodyShPtr before = m_attachedBody;
  const CorvBodyShPtr after = i_body;
  notifyPropertyWillChange("attachedBody");
  notifyCollectionWillChange("mobileGeometries", COLLECTION_CHANGE, -1);
  dropBody();
  takeBody(after);
  const lmStatus status = rebuildConfigSpaceOr(
    [&]
    {
      dropBody();
      takeBody(before);
    });
  if (status.succeeded())
    didChangeStructure();
  notifyCollectionDidChange("mobileGeometries", COLLECTION_CHANGE, -1);
  notifyPropertyDidChange("attachedBody");
  if (const CorvBodyLumSceneShPtr body = lumSceneBody())
    body->ensureMobileGroup();
  return status;
}

void CorvJoint::takeBody(const CorvBodyShPtr& i_body)
{
  m_attachedBody = i_body;
  if (!i_body)
    return;
  i_body->jointWkPtr(CorvJointWkPtr(self()));
  if (const CorvBodyLumSceneShPtr body = lumSceneBody())
    for (const ClumGeometryShPtr& geometry : body->mobileGeometries())
      body->takeControl(geometry, self());
}

void CorvJoint::dropBody()
{
  if (const CorvBodyLumSceneShPtr body = lumSceneBody())
  {
    body->removedFromDevice();
    for (const ClumGeometryShPtr& geometry : body->mobileGeometries())
      body->releaseControl(geometry);
  }
  if (m_attachedBody)
    m_attachedBody->jointWkPtr(CorvJointWkPtr());
  m_attachedBody.reset();
}

CorvConfigSpaceShPtr CorvJoint::bodySubspace() const
{
  return m_attachedBody ? m_attachedBody->configSpace() : CorvConfigSpaceShPtr();
}

lmStatus CorvJoint::setKinematicalEffect(const CorvKinematicalEffectShPtr& i_effect)
{
  if (!i_effect)
    return lmStatus::FAILURE;
  if (i_effect == m_kinematicalEffect)
    return lmStatus();
  if (i_effect->configSpace()->size() != countDofs())
    return INCOMPATIBLE_KINEMATICAL_EFFECT_ERROR;
  const CorvKinematicalEffectShPtr before = m_kinematicalEffect;
  notifyPropertyWillChange("kinematicalEffect");
  m_kinematicalEffect = i_effect;
  const lmStatus status = rebuildConfigSpaceOr([&] { m_kinematicalEffect = before; });
  if (status.succeeded())
  {
    updateInitialPosition();
    didChangeStructure();
  }
  notifyPropertyDidChange("kinematicalEffect");
  return status;
}

lmStatus CorvJoint::customSubspace(const CorvConfigSpaceShPtr& i_space)
{
  if (i_space == m_customSubspace)
    return lmStatus();
  const CorvConfigSpaceShPtr before = m_customSubspace;
  m_customSubspace = i_space;
  const lmStatus status = rebuildConfigSpaceOr([&] { m_customSubspace = before; });
  if (status.succeeded())
    didChangeStructure();
  return status;
}

/// On failure some sub-spaces are missing: the caller restores what it changed and rebuilds again.
lmStatus CorvJoint::rebuildConfigSpace()
{
  std::vector<CorvConfigSpaceShPtr> parts;
  if (configSpaceIncludesCustomSubspace())
    parts.push_back(m_customSubspace);
  if (configSpaceIncludesBody())
    parts.push_back(bodySubspace());
  parts.push_back(m_kinematicalEffect->configSpace());
  if (configSpaceIncludesChildJoints())
    for (const CorvJointShPtr& child : m_childJoints)
      parts.push_back(child->m_configSpace);
  lmStatus status = m_configSpace->clear();
  for (auto it = parts.begin(); it != parts.end() && status.succeeded(); ++it)
    status = m_configSpace->appendSubspace(*it);
  invalidateCurrentConfig();
  return status;
}

/// Rebuilds the space after a change, or takes the change back by `i_restore`.
template <class RESTORE>
lmStatus CorvJoint::rebuildConfigSpaceOr(RESTORE i_restore)
{
  lmStatus status = rebuildConfigSpace();
  if (status.succeeded())
    return status;
  i_restore();
  LUM_ASSERT_SUCCESS(rebuildConfigSpace());
  status.push(REBUILD_CONFIG_SPACE_ERROR);
  return status;
}

bool CorvJoint::configSpaceIncludesChildJoints() const
{
  return true;
}

bool CorvJoint::configSpaceIncludesCustomSubspace() const
{
  return static_cast<bool>(m_customSubspace);
}

bool CorvJoint::configSpaceIncludesBody() const
{
  return m_attachedBody && m_attachedBody->configSpace() && m_attachedBody->configSpace()->size() > 0;
}

unsigned int CorvJoint::countDofs() const
{
  return m_kinematicalEffect->configSpace()->size();
}

CorvDofShPtr CorvJoint::dof(unsigned int i_rank) const
{
  return i_rank < countDofs() ? m_kinematicalEffect->configSpace()->dof(i_rank) : CorvDofShPtr();
}

unsigned int CorvJoint::countDofsInTree() const
{
  return m_configSpace->size();
}

CorvDofShPtr CorvJoint::dofInTree(unsigned int i_rank) const
{
  return i_rank < countDofsInTree() ? m_configSpace->dof(i_rank) : CorvDofShPtr();
}

lmStatus CorvJoint::setCurrentConfig(const CorvConfig& i_config)
{
  if (i_config.space() != m_configSpace)
    return lmStatus::FAILURE;
  const lmStatus status = writeDofValues(i_config);
  if (status.failed())
    return status;
  invalidateCurrentConfig();
  updateCurrentPosition();
  return status;
}

lmStatus CorvJoint::setCurrentConfig(const CorvConfigConstShPtr& i_config)
{
  return i_config ? setCurrentConfig(*i_config) : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvJoint::writeDofValues(const CorvConfig& i_config)
{
  lmStatus status = i_config.pushSpace();
  if (status.failed())
    return status;
  if (configSpaceIncludesCustomSubspace())
    LUM_ASSERT_SUCCESS(i_config.nextSubspace());
  if (configSpaceIncludesBody())
  {
    status = m_attachedBody->setCurrentConfig(i_config);
    LUM_ASSERT_SUCCESS(i_config.nextSubspace());
  }
  if (status.succeeded())
    status = i_config.getDofValues(m_currentEffectDofValues);
  if (configSpaceIncludesChildJoints())
    for (auto it = m_childJoints.begin(); it != m_childJoints.end() && status.succeeded(); ++it)
    {
      status = i_config.nextSubspace();
      if (status.succeeded())
        status = (*it)->writeDofValues(i_config);
    }
  LUM_ASSERT_SUCCESS(i_config.popSpace());
  return status;
}

lmStatus CorvJoint::getCurrentConfig(CorvConfig& io_config) const
{
  if (!io_config.space())
    io_config = CorvConfig(m_configSpace);
  if (io_config.space() != m_configSpace)
    return lmStatus::FAILURE;
  const bool isSelfValidating = io_config.isSelfValidationEnabled();
  io_config.isSelfValidationEnabled(false);
  io_config.beginChange();
  const lmStatus status = readDofValues(io_config);
  io_config.endChange();
  io_config.isSelfValidationEnabled(isSelfValidating);
  return status;
}

lmStatus CorvJoint::getCurrentConfig(CorvConfigShPtr& io_config) const
{
  if (!io_config)
    io_config = CorvConfig::create(CorvConfigSpaceShPtr(m_configSpace));
  return getCurrentConfig(*io_config);
}

lmStatus CorvJoint::readDofValues(CorvConfig& io_config) const
{
  lmStatus status = io_config.pushSpace();
  if (status.failed())
    return status;
  if (configSpaceIncludesCustomSubspace())
    LUM_ASSERT_SUCCESS(io_config.nextSubspace());
  if (configSpaceIncludesBody())
    LUM_ASSERT_SUCCESS(io_config.nextSubspace());
  if (!m_currentEffectDofValues.empty())
    status = io_config.setDofValues(m_currentEffectDofValues);
  if (configSpaceIncludesChildJoints())
    for (auto it = m_childJoints.begin(); it != m_childJoints.end() && status.succeeded(); ++it)
    {
      status = io_config.nextSubspace();
      if (status.succeeded())
        status = (*it)->readDofValues(io_config);
    }
  LUM_ASSERT_SUCCESS(io_config.popSpace());
  return status;
}

const ClumMat4& CorvJoint::parentTransform() const
{
  const CorvJointShPtr parent = parentJoint();
  return parent ? parent->m_transform : ClumMat4::IDENTITY;
}

void CorvJoint::currentPositionWillChange() const
{
  notifyPropertyWillChange("currentPosition");
  notifyPropertyWillChange("currentRigidPosition");
}

void CorvJoint::currentPositionDidChange() const
{
  notifyPropertyDidChange("currentRigidPosition");
  notifyPropertyDidChange("currentPosition");
}

void CorvJoint::updateCurrentPosition()
{
  currentPositionWillChange();
  computeEffect(m_currentEffectDofValues, m_effect);
  computePosition(parentTransform(), m_effect, m_currentPosition);
  computeTransform(m_currentPosition, m_transform);
  if (m_attachedBody)
    m_attachedBody->updateAbsolutePosition();
  for (const CorvJointShPtr& child : m_childJoints)
    child->updateCurrentPosition();
  currentPositionDidChange();
}

void CorvJoint::setCurrentPosition(const ClumMat4& i_position)
{
  if (i_position == m_currentPosition)
    return;
  currentPositionWillChange();
  m_currentPosition = i_position;
  updateInitialPosition();
  if (m_attachedBody)
    m_attachedBody->updateAbsolutePosition();
  currentPositionDidChange();
}

/// Moves the zero so that the joint has its present frame at its present values, and so in the children.
void CorvJoint::updateInitialPosition()
{
  computeEffect(m_currentEffectDofValues, m_effect);
  notifyPropertyWillChange("initialPosition");
  m_initialPosition = parentTransform().inverse() * m_currentPosition * m_effect.inverse();
  m_initialPosition.repair();
  computeTransform(m_currentPosition, m_transform);
  for (const CorvJointShPtr& child : m_childJoints)
    child->updateInitialPosition();
  notifyPropertyDidChange("initialPosition");
  didChange();
}

void CorvJoint::setCurrentRigidPosition(const ClumMat4& i_position)
{
  if (i_position == m_currentPosition)
    return;
  const ClumMat4 motion = i_position * m_currentPosition.inverse();
  moveFrames(motion);
  m_currentPosition = i_position;
  updateInitialPosition();
  if (m_attachedBody)
    m_attachedBody->updateAbsolutePosition();
}

void CorvJoint::applyRigidTransformation(const ClumMat4& i_motion)
{
  moveFrames(i_motion);
  updateInitialPosition();
}

void CorvJoint::moveFrames(const ClumMat4& i_motion)
{
  currentPositionWillChange();
  m_currentPosition = i_motion * m_currentPosition;
  m_currentPosition.repair();
  if (m_attachedBody)
    m_attachedBody->updateAbsolutePosition();
  for (const CorvJointShPtr& child : m_childJoints)
    child->moveFrames(i_motion);
  currentPositionDidChange();
}

ClumMat4 CorvJoint::frameOnAxis(ClumMat4::EBaseVector i_baseVector, const ClumVect3& i_axis, const ClumVect3& i_origin)
{
  ClumMat4 frame;
  frame.setAsFrameWithBaseVectorAxis(i_baseVector, i_axis);
  frame.setTranslation(i_origin);
  return frame;
}

void CorvJoint::setCurrentBaseVectorAxis(ClumMat4::EBaseVector i_baseVector, const ClumVect3& i_axis)
{
  setCurrentPosition(frameOnAxis(i_baseVector, i_axis, m_currentPosition.translation()));
}

void CorvJoint::setCurrentCenter(const ClumVect3& i_center)
{
  ClumMat4 position = m_currentPosition;
  position.setTranslation(i_center);
  setCurrentPosition(position);
}

void CorvJoint::computeEffect(const std::vector<double>& i_values, ClumMat4& o_effect) const
{
  const lmStatus status = m_kinematicalEffect->forward(i_values, o_effect);
  if (status.succeeded())
    return;
  ClumLogManager::addError("CorvJoint: the effect has no frame for the given values. " + status.description());
  o_effect.identity();
}

lmStatus CorvJoint::computeEffectDerivative(const std::vector<double>& i_values, unsigned int i_rank,
                                            ClumMat4& o_mat) const
{
  return m_kinematicalEffect->forwardDerivate(i_values, i_rank, o_mat);
}

void CorvJoint::computePosition(const ClumMat4& i_parentTransform, const ClumMat4& i_effect, ClumMat4& o_position) const
{
  o_position = i_parentTransform * m_initialPosition * i_effect;
}

void CorvJoint::computeTransform(const ClumMat4& i_position, ClumMat4& o_transform) const
{
  o_transform = i_position * m_initialPosition.inverse();
}

/// Calls `io_visitor(joint, frame, effect values)` for each joint of the subtree, depth-first, at a configuration whose
/// current space is this joint's.
template <class VISITOR>
lmStatus CorvJoint::visitAtConfig(const CorvConfig& i_config, const ClumMat4& i_parentTransform,
                                  VISITOR& io_visitor) const
{
  if (i_config.space() != m_configSpace)
    return lmStatus::FAILURE;
  lmStatus status = i_config.pushSpace();
  if (status.failed())
    return status;
  if (configSpaceIncludesCustomSubspace())
    LUM_ASSERT_SUCCESS(i_config.nextSubspace());
  if (configSpaceIncludesBody())
    LUM_ASSERT_SUCCESS(i_config.nextSubspace());
  std::vector<double> values;
  status = i_config.getDofValues(values);
  if (status.succeeded())
  {
    ClumMat4 effect, position, transform;
    computeEffect(values, effect);
    computePosition(i_parentTransform, effect, position);
    computeTransform(position, transform);
    io_visitor(*this, position);
    if (configSpaceIncludesChildJoints())
      for (auto it = m_childJoints.begin(); it != m_childJoints.end() && status.succeeded(); ++it)
      {
        status = i_config.nextSubspace();
        if (status.succeeded())
          status = (*it)->visitAtConfig(i_config, transform, io_visitor);
      }
  }
  LUM_ASSERT_SUCCESS(i_config.popSpace());
  return status;
}

lmStatus CorvJoint::getJointPosition(const CorvJointConstShPtr& i_joint, const CorvConfig& i_config,
                                     const ClumMat4& i_parentTransform, ClumMat4& o_position) const
{
  bool isFound = false;
  ClumMat4 position;
  const auto visitor = [&](const CorvJoint& i_visited, const ClumMat4& i_position)
  {
    if (&i_visited != i_joint.get())
      return;
    isFound = true;
    position = i_position;
  };
  const lmStatus status = visitAtConfig(i_config, i_parentTransform, visitor);
  if (status.failed() || !isFound)
    return status.failed() ? status : lmStatus(lmStatus::FAILURE);
  o_position = position;
  return status;
}

lmStatus CorvJoint::getBodyMatVector(const CorvConfig& i_config, const ClumMat4& i_parentTransform,
                                     std::vector<ClumMat4>& o_positions) const
{
  const auto visitor = [&](const CorvJoint& i_visited, const ClumMat4& i_position)
  {
    if (i_visited.m_attachedBody)
      o_positions.push_back(i_position * i_visited.m_attachedBody->relativePosition());
  };
  return visitAtConfig(i_config, i_parentTransform, visitor);
}

lmStatus CorvJoint::getJointMatVector(const CorvConfig& i_config, const ClumMat4& i_parentTransform,
                                      std::vector<ClumMat4>& o_positions) const
{
  const auto visitor = [&](const CorvJoint&, const ClumMat4& i_position) { o_positions.push_back(i_position); };
  return visitAtConfig(i_config, i_parentTransform, visitor);
}

lmStatus CorvJoint::getDerivativeAtConfig(const CorvConfig& i_config, const ClumMat4& i_parentTransform,
                                          unsigned int i_rank, ClumMat4& o_derivative) const
{
  const CorvConfigSpaceShPtr effectSpace = m_kinematicalEffect->configSpace();
  lmStatus status = i_config.pushRestriction(effectSpace);
  if (status.failed())
    return status;
  std::vector<double> values;
  status = i_config.getDofValues(values);
  LUM_ASSERT_SUCCESS(i_config.popRestriction());
  ClumMat4 derivative;
  if (status.succeeded())
    status = computeEffectDerivative(values, i_rank, derivative);
  if (status.succeeded())
    o_derivative = i_parentTransform * m_initialPosition * derivative;
  return status;
}

lmStatus CorvJoint::getCurrentPositionDerivative(unsigned int i_rank, ClumMat4& o_derivative) const
{
  ClumMat4 derivative;
  const lmStatus status = computeEffectDerivative(m_currentEffectDofValues, i_rank, derivative);
  if (status.succeeded())
    o_derivative = parentTransform() * m_initialPosition * derivative;
  return status;
}

lmStatus CorvJoint::getAxisHint(unsigned int i_rank, ClumVect3& o_axis) const
{
  const CorvConfig values(m_kinematicalEffect->configSpace(), m_currentEffectDofValues);
  ClumVect3 axis;
  const lmStatus status = m_kinematicalEffect->getAxisHint(values, i_rank, axis);
  if (status.succeeded())
    o_axis = parentTransform() * (m_initialPosition * axis);
  return status;
}

double CorvJoint::maxSweep() const
{
  if (!m_isMaxSweepValid || m_maxSweepSpaceVersion != m_configSpace->version())
    updateMaxSweep();
  return std::max({m_minMaxSweep, m_maxSweep, virtualMaxSweep()});
}

void CorvJoint::maxSweep(double i_sweep)
{
  m_maxSweep = i_sweep;
  m_maxSweepSpaceVersion = m_configSpace->version();
  m_isMaxSweepValid = true;
}

void CorvJoint::minMaxSweep(double i_sweep)
{
  m_minMaxSweep = i_sweep;
}

void CorvJoint::updateMaxSweep() const
{
  std::vector<const CorvJoint*> visited;
  m_maxSweep = reach(visited);
  m_maxSweepSpaceVersion = m_configSpace->version();
  m_isMaxSweepValid = true;
}

double CorvJoint::virtualMaxSweep() const
{
  double sweep = 0.0;
  if (m_virtualChildren.empty())
    return sweep;
  std::vector<const CorvJoint*> visited{this};
  const ClumPoint3 origin(m_currentPosition.translation());
  for (const CorvJointWkPtr& child : m_virtualChildren)
    if (const CorvJointShPtr joint = child.lock())
      sweep = std::max(sweep, joint->sweepFrom(origin, visited));
  return sweep;
}

double CorvJoint::computeMaxSweepFrom(const ClumPoint3& i_point) const
{
  std::vector<const CorvJoint*> visited;
  return sweepFrom(i_point, visited);
}

/// The distance from a point to where the joint stands at zero translation, its own travel, and its reach.
double CorvJoint::sweepFrom(const ClumPoint3& i_point, std::vector<const CorvJoint*>& io_visited) const
{
  if (std::find(io_visited.begin(), io_visited.end(), this) != io_visited.end())
    return 0.0;
  const ClumPoint3 base((parentTransform() * m_initialPosition).translation());
  return base.distanceFrom(i_point) + effectTravel() + reach(io_visited);
}

/// How far a point of the subtree can be from the origin of this joint's frame, whatever the dofs beyond are.
double CorvJoint::reach(std::vector<const CorvJoint*>& io_visited) const
{
  if (std::find(io_visited.begin(), io_visited.end(), this) != io_visited.end())
    return 0.0;
  io_visited.push_back(this);
  double farthest = 0.0;
  std::vector<CorvBody::CEnclosingBall> balls;
  if (m_attachedBody)
    m_attachedBody->getEnclosingBalls(balls);
  for (const CorvBody::CEnclosingBall& ball : balls)
    farthest = std::max(farthest, (m_attachedBody->relativePosition() * ball.center).toVect3().norm() + ball.radius);
  const ClumPoint3 origin(m_currentPosition.translation());
  for (const CorvJointShPtr& child : m_childJoints)
    farthest = std::max(farthest, child->sweepFrom(origin, io_visited));
  if (io_visited.size() > 1)
    for (const CorvJointWkPtr& child : m_virtualChildren)
      if (const CorvJointShPtr joint = child.lock())
        farthest = std::max(farthest, joint->sweepFrom(origin, io_visited));
  return farthest;
}

/// The longest translation of the effect: bounded translations at either bound, unbounded ones where they stand.
double CorvJoint::effectTravel() const
{
  std::vector<unsigned int> bounded;
  for (unsigned int i = 0; i < countDofs(); ++i)
    if (dof(i)->isBounded() && !dof(i)->isRevolute())
      bounded.push_back(i);
  double travel = 0.0;
  std::vector<double> values = m_currentEffectDofValues;
  for (unsigned int corner = 0; corner < (1u << bounded.size()); ++corner)
  {
    for (unsigned int k = 0; k < bounded.size(); ++k)
      values[bounded[k]] = corner & (1u << k) ? dof(bounded[k])->upperBound() : dof(bounded[k])->lowerBound();
    ClumMat4 effect;
    computeEffect(values, effect);
    travel = std::max(travel, effect.translation().norm());
  }
  return travel;
}

void CorvJoint::userWeightScaler(double i_scaler)
{
  for (unsigned int i = 0; i < countDofs(); ++i)
    dof(i)->userWeightScaler(i_scaler);
}

bool CorvJoint::isLocked() const
{
  for (const CorvConfigSpaceShPtr& space : {m_customSubspace, bodySubspace(), m_kinematicalEffect->configSpace()})
    for (const CorvDofShPtr& dof : dofsOfSpace(space))
      if (!dof->isLocked())
        return false;
  return true;
}

void CorvJoint::isLocked(bool i_isLocked)
{
  for (const CorvConfigSpaceShPtr& space : {m_customSubspace, bodySubspace(), m_kinematicalEffect->configSpace()})
    for (const CorvDofShPtr& dof : dofsOfSpace(space))
      dof->isLocked(i_isLocked);
}

bool CorvJoint::operator==(const CorvJoint& i_other) const
{
  if (countDofs() != i_other.countDofs() || m_initialPosition != i_other.m_initialPosition ||
      m_currentPosition != i_other.m_currentPosition)
    return false;
  for (unsigned int i = 0; i < countDofs(); ++i)
    if (!(*dof(i) == *i_other.dof(i)))
      return false;
  return true;
}

void CorvJoint::didChange()
{
  notifyPropertyWillChange("version");
  ++m_version;
  m_isMaxSweepValid = false;
  notifyPropertyDidChange("version");
  if (const CorvJointShPtr parent = parentJoint())
    parent->didChange();
}

void CorvJoint::didChangeStructure()
{
  notifyPropertyWillChange("version");
  notifyPropertyWillChange("structuralVersion");
  ++m_version;
  ++m_structuralVersion;
  m_isMaxSweepValid = false;
  notifyPropertyDidChange("structuralVersion");
  notifyPropertyDidChange("version");
  if (const CorvJointShPtr parent = parentJoint())
    parent->didChangeStructure();
}

void CorvJoint::invalidateCurrentConfig()
{
  if (const CorvDeviceShPtr holder = device())
    holder->invalidateCurrentConfig();
}

void CorvJoint::removedFromDevice()
{
  if (const CorvBodyLumSceneShPtr body = lumSceneBody())
    body->removedFromDevice();
  for (const CorvJointShPtr& child : m_childJoints)
    child->removedFromDevice();
}

void CorvJoint::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumMutableCodable::encodeWithCoder(i_coder);
  i_coder->encodeWeakObjectWkPtr(m_parentJoint, "parentJoint");
  i_coder->encodeWeakObjectWkPtrVector(
    std::vector<ClumCodableConstWkPtr>(m_virtualChildren.begin(), m_virtualChildren.end()), "virtualChildren");
  i_coder->encodeWeakObjectWkPtr(m_linkedJoint, "linkedJoint");
  i_coder->encodeObjectShPtr(m_kinematicalEffect, "kinematicalEffect");
  i_coder->encodeObjectShPtr(m_attachedBody, "attachedBody");
  i_coder->encodeObjectShPtr(m_configSpace, "configSpace");
  i_coder->encodeObjects(m_childJoints, "childJoints");
  i_coder->encodeObjectShPtr(m_customSubspace, "customSubspace");
  i_coder->encodeDoubleVector(m_currentEffectDofValues, "currentEffectDofValues");
  i_coder->encodeMat4(m_effect, "effect");
  i_coder->encodeMat4(m_initialPosition, "initialPosition");
  i_coder->encodeMat4(m_currentPosition, "currentPosition");
  i_coder->encodeMat4(m_transform, "transform");
  i_coder->encodeDouble(m_maxSweep, "maxSweep");
  i_coder->encodeDouble(m_minMaxSweep, "minMaxSweep");
  i_coder->encodeUnsignedInt(m_version, "version");
  i_coder->encodeUnsignedInt(m_structuralVersion, "structuralVersion");
  i_coder->encodeBool(m_isKinematicalChainLocked, "isKinematicalChainLocked");
}

lmStatus CorvJoint::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_parentJoint = i_coder->decodeWeak<CorvJoint>("parentJoint");
  if (isBelowItself())
  {
    m_parentJoint.reset();
    return lmStatus::FAILURE;
  }
  std::vector<ClumCodableShPtr> virtualChildren;
  i_coder->decodeWeakObjectShPtrVector("virtualChildren", virtualChildren);
  for (const ClumCodableShPtr& child : virtualChildren)
    if (const CorvJointShPtr joint = boost::dynamic_pointer_cast<CorvJoint>(child))
      m_virtualChildren.push_back(joint);
  m_linkedJoint = i_coder->decodeWeak<CorvJoint>("linkedJoint");
  m_kinematicalEffect = i_coder->decode<CorvKinematicalEffect>("kinematicalEffect");
  m_attachedBody = i_coder->decodePart<CorvBody>("attachedBody");
  m_configSpace = i_coder->decode<CorvCSComposite>("configSpace");
  i_coder->decodeParts("childJoints", m_childJoints);
  m_customSubspace = i_coder->decode<CorvConfigSpace>("customSubspace");
  i_coder->decodeDoubleVector("currentEffectDofValues", m_currentEffectDofValues);
  m_effect = i_coder->decodeMat4("effect");
  m_initialPosition = i_coder->decodeMat4("initialPosition");
  m_currentPosition = i_coder->decodeMat4("currentPosition");
  m_transform = i_coder->decodeMat4("transform");
  m_maxSweep = i_coder->decodeDouble("maxSweep");
  m_minMaxSweep = i_coder->decodeDouble("minMaxSweep");
  m_version = i_coder->decodeUnsignedInt("version");
  if (!i_coder->isDecodedVersionStrictlyLowerThan(STRUCTURAL_VERSION_VERSION))
    m_structuralVersion = i_coder->decodeUnsignedInt("structuralVersion");
  m_isKinematicalChainLocked = i_coder->decodeBool("isKinematicalChainLocked");
  return isWhole() ? status : lmStatus(lmStatus::FAILURE);
}

bool CorvJoint::isBelowItself() const
{
  CorvJointShPtr above = m_parentJoint.lock();
  while (above && above.get() != this)
    above = above->m_parentJoint.lock();
  return static_cast<bool>(above);
}

/// True if what was decoded fits together.
bool CorvJoint::isWhole() const
{
  if (!m_kinematicalEffect || !m_configSpace || !m_configSpace->includes(m_kinematicalEffect->configSpace()))
    return false;
  const auto isChildWhole = [&](const CorvJointShPtr& i_child)
  {
    const bool isIncluded = !configSpaceIncludesChildJoints() ||
                            (i_child && m_configSpace->includes(CorvConfigSpaceConstShPtr(i_child->m_configSpace)));
    return i_child && i_child->m_parentJoint.lock().get() == this && isIncluded;
  };
  return m_currentEffectDofValues.size() == countDofs() &&
         std::all_of(m_childJoints.begin(), m_childJoints.end(), isChildWhole);
}

void CorvJoint::awake()
{
  ClumMutableCodable::awake();
  for (const CorvJointShPtr& child : m_childJoints)
    child->m_parentJoint = self();
  if (m_attachedBody)
    m_attachedBody->jointWkPtr(CorvJointWkPtr(self()));
}
