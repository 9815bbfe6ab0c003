#include "kinematics/orvDevice.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCloner.h"
#include "foundation/lumCoder.h"
#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumGeometry.h"
#include "foundation/lumMat.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumScene.h"
#include "foundation/lumStamp.h"
#include "foundation/lumTestParameters.h"
#include "foundation/lumXMLCoder.h"
#include "kinematics/orvBody.h"
#include "kinematics/orvBodyLumScene.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvCSDeviceWrapper.h"
#include "kinematics/orvCloner.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDeviceTable.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJoint.h"
#include "kinematics/orvKinematicalEffect.h"
#include "kinematics/orvMotionBound.h"
#include "metrics/orvMetric.h"
#include "paths/orvSteeringMethod.h"
#include "validation/orvValidatorCfgCollisionBase.h"
#include "validation/orvValidatorDPCollision.h"
#include "validation/orvValidatorDPComposite.h"
#include "validation/orvValidatorDPTurnJump.h"
#include "validation/orvValidatorPathDirectPaths.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>
#include <cmath>

namespace
{
const char* const DEVICE_SPACE_TYPE = "orvane.core.config-space.composite";
const char* const DEVICE_WRAPPER_TYPE = "orvane.core.config-space.device-wrapper";
const char* const TURN_JUMP_NAME = "orvane.next.dp-turn-jump";
const char* const DEVICE_FILE_KEY = "device";
const char* const OBSTACLE_COLLECTION = "obstacleGeometries";
/// The releases that brought coded keys.
constexpr int INNER_SCENE_VERSION = -500000;
constexpr int OBSTACLE_GROUP_VERSION = -600000;

const ClumTestParametersConstShPtr& classTestParameters()
{
  static const ClumTestParametersConstShPtr s_parameters = ClumTestParameters::create();
  return s_parameters;
}

template <class HANDLE, class ITEM>
bool containsItem(const std::vector<HANDLE>& i_items, const ITEM& i_item)
{
  return std::find(i_items.begin(), i_items.end(), i_item) != i_items.end();
}

template <class HANDLE>
HANDLE itemOrNull(const std::vector<HANDLE>& i_items, unsigned int i_rank)
{
  return i_rank < i_items.size() ? i_items[i_rank] : HANDLE();
}

template <class HANDLE, class ITEM>
lmStatus rankOfItem(const std::vector<HANDLE>& i_items, const ITEM& i_item, unsigned int i_error, unsigned int& o_rank)
{
  const auto found = std::find(i_items.begin(), i_items.end(), i_item);
  if (!i_item || found == i_items.end())
    return i_error;
  o_rank = static_cast<unsigned int>(found - i_items.begin());
  return lmStatus();
}

/// True if all are finite, and not negative if they are rates.
bool areUsableNumbers(const double* i_values, unsigned int i_count, bool i_areRates)
{
  for (unsigned int i = 0; i < i_count; ++i)
    if (!std::isfinite(i_values[i]) || (i_areRates && i_values[i] < 0.0))
      return false;
  return true;
}

bool isUsableRest(double i_rest)
{
  return std::isfinite(i_rest) && i_rest >= 0.0;
}
} // namespace

struct CorvDevice::CCache
{
  bool isFilled = false;
  unsigned int version = 0;
  unsigned int spaceVersion = 0;
  std::uint64_t shapeStamp = 0;
  std::uint64_t latestStamp = 0; ///< of all, when the shapes were last seen to be the same
  std::vector<CorvJointShPtr> joints;
  std::vector<CorvBodyShPtr> bodies;
  std::vector<CorvDofShPtr> dofs;
  std::vector<ClumGeometryShPtr> mobileGeometries;
  ShPtr<CorvDeviceTable> table;

  /// Whether some dof of a space is computed and not constant; looked up once a version of that space.
  const CorvConfigSpace* computedSpace = nullptr;
  unsigned int computedVersion = 0;
  bool hasUnboundedDof = false;

  /// Changes with the shape of any geometry, of which nobody else is told.
  std::uint64_t currentShapeStamp() const
  {
    std::uint64_t stamp = 0;
    for (const ClumGeometryShPtr& geometry : mobileGeometries)
      stamp += geometry->stamp();
    return stamp;
  }
  /// As long as no stamp at all was given, none has to be looked at.
  bool areShapesTheSame()
  {
    const std::uint64_t latest = lumLatestStamp();
    if (latest == latestStamp)
      return true;
    if (shapeStamp != currentShapeStamp())
      return false;
    latestStamp = latest;
    return true;
  }
};

LUM_DESCRIBE(CorvDevice)
{
  i_class.creates("()", &Self::create);
  i_class.property<ClumSceneShPtr>("collisionScene", &Self::collisionScene);
  i_class.property<CorvConfigSpaceShPtr>("configSpace", &Self::configSpace);
  i_class.property<ClumTestParametersConstShPtr>("defaultTestParameters", &Self::defaultTestParameters,
                                                 &Self::defaultTestParameters);
  i_class.property<CorvJointShPtr>("rootJoint", &Self::rootJoint, &Self::rootJoint);
  i_class.property<unsigned int>("version", &Self::version);
  i_class.collection<CorvBodyShPtr>("bodies", "CorvBodyShPtr", &Self::countBodies, &Self::body);
  i_class.collection<CorvDofShPtr>("dofs", "CorvDofShPtr", &Self::countDofs, &Self::dof);
  i_class.collection<CorvJointShPtr>("joints", "CorvJointShPtr", &Self::countJoints, &Self::joint);
  i_class.collection<ClumGeometryShPtr>("mobileGeometries", "ClumGeometryShPtr", &Self::countMobileGeometries,
                                        &Self::mobileGeometry);
  i_class.collection<ClumGeometryShPtr>("obstacleGeometries", "ClumGeometryShPtr", &Self::countObstacleGeometries,
                                        &Self::obstacleGeometry);
  i_class.dynamicProperty("orvane.next.lock-rootJoint", false);
}

LUM_STATUS_CODE(CorvDevice, NULL_OBSTACLE_ERROR, 20400, "Cannot add a null pointer as obstacle.");
LUM_STATUS_CODE(CorvDevice, OBSTACLE_ALREADY_IN_COLLECTION_ERROR, 20401,
                "Impossible to add a geometry as obstacle if its already an obstacle in this device.");
LUM_STATUS_CODE(CorvDevice, OBSTACLE_MOBILE_CONFLICT_ERROR, 20402,
                "Impossible to add a geometry as obstacle if its already a mobile geometry in a device of the device "
                "hierarchy.");
LUM_STATUS_CODE(CorvDevice, DEVICE_MOBILE_MOBILE_CONFLICT_ERROR, 20403,
                "Cannot attach the device as one of its mobile geometry is already a mobile geometry in a device of "
                "the parent device hierarchy.");
LUM_STATUS_CODE(CorvDevice, DEVICE_MOBILE_OBSTACLE_CONFLICT_ERROR, 20404,
                "Cannot attach the device as one of its mobile geometry is already an obstacle geometry in a device of "
                "the parent device hierarchy.");
LUM_STATUS_CODE(CorvDevice, DEVICE_OBSTACLE_MOBILE_CONFLICT_ERROR, 20405,
                "Cannot attach the device as one of its obstacle geometry is already a mobile geometry in a device of "
                "the parent device hierarchy.");
LUM_STATUS_CODE(CorvDevice, COLLISION_TOOLKIT_ERROR, 20406,
                "Cannot attach the device as its collision toolkit is not compatible.");
LUM_STATUS_CODE(CorvDevice, NULL_ATTACHED_DEVICE_ERROR, 20407, "A device is required for attachment.");
LUM_STATUS_CODE(CorvDevice, NULL_JOINT_ERROR, 20408, "A joint is required.");
LUM_STATUS_CODE(CorvDevice, ATTACHED_DEVICE_ALREADY_HAS_PARENT_ERROR, 20409,
                "Cannot attach device: it already has a parent.");
LUM_STATUS_CODE(CorvDevice, CONFIG_SPACE_INCLUSION_ERROR, 20410,
                "Involved configuration spaces are already included in either sense.");
LUM_STATUS_CODE(CorvDevice, INVALID_JOINT_RANK_ERROR, 20411, "Cannot find a joint with the given rank.");
LUM_STATUS_CODE(CorvDevice, ATTACHED_DEVICE_NOT_FOUND_ERROR, 20412, "Attached device not found.");
LUM_STATUS_CODE(CorvDevice, JOINT_NOT_FOUND_ERROR, 20413, "Cannot find the given joint.");
LUM_STATUS_CODE(CorvDevice, OBSTACLE_OUT_OF_RANGE, 20414, "Impossible to add a geometry at this index, out of range.");
LUM_STATUS_CODE(CorvDevice, LOCKED_KINEMATICAL_CHAIN_ERROR, 20415,
                "Impossible to add/insert/remove a joint, the kinematical chain is locked.");
LUM_STATUS_CODE(CorvDevice, ALREADY_IN_A_KINEMATICAL_CHAIN_ERROR, 20416,
                "Impossible to add this joint because it is already in an other kinematical chain.");
LUM_STATUS_CODE(CorvDevice, KINEMATICAL_CHAIN_BREAKING_ERROR, 20417,
                "Impossible to add/remove this joint because it will break the kinematical chain.");
LUM_STATUS_CODE(CorvDevice, DEVICE_OBSTACLE_OBSTACLE_CONFLICT_ERROR, 20418,
                "Cannot attach the device as one of its obstacle geometry is already an obstacle geometry in a device "
                "of the parent device hierarchy.");
LUM_STATUS_CODE(CorvDevice, OBSTACLE_OBSTACLE_CONFLICT_ERROR, 20419,
                "Impossible to add a geometry as obstacle if its already an obstacle geometry in a device of the "
                "device hierarchy.");
LUM_STATUS_CODE(CorvDevice, MOBILE_ALREADY_IN_SCENE_ERROR, 20420,
                "Impossible to add a geometry as mobile if its already added to the scene.");
LUM_STATUS_CODE(CorvDevice, OBSTACLE_ALREADY_IN_SCENE_ERROR, 20421,
                "Impossible to add a geometry as obstacle if its already added to the scene");

CorvDevice::CorvDevice() : m_cache(new CCache)
{
}

CorvDevice::~CorvDevice()
{
  unsubscribeFromVersionChanges();
}

CorvDeviceShPtr CorvDevice::create()
{
  return lumCreate<CorvDevice>();
}

lmStatus CorvDevice::init(const CorvDeviceWkPtr& i_weakPtr)
{
  lmStatus status = ClumMutableCodable::init(i_weakPtr);
  if (status.failed())
    return status;
  m_configSpace = CorvCSComposite::create(DEVICE_SPACE_TYPE);
  if (!m_configSpace)
    return lmStatus::FAILURE;
  m_configSpace->device(self());
  m_currentConfig = CorvConfig::create(CorvConfigSpaceShPtr(m_configSpace));
  makeUserSets();
  m_collisionToolkit = ClumCollisionToolkit::defaultCollisionToolkit();
  m_defaultTestParameters = classTestParameters();
  m_innerScene = ClumScene::create();
  LUM_ASSERT_SUCCESS(m_innerScene->addObjectGeometryCollection(self(), OBSTACLE_COLLECTION, m_obstacleGroup));
  return status;
}

/// The composite space comes with its composite constraint and validator; the sets take what judges motions.
void CorvDevice::makeUserSets()
{
  const CorvConfigSpaceShPtr space = m_configSpace;
  m_constraints = space->constraints();
  m_configValidators = space->configValidators();
  m_directPathValidators = space->directPathValidators();
  m_pathValidators = space->pathValidators();
  LUM_ASSERT_SUCCESS(m_directPathValidators->add(CorvValidatorDPComposite::create(space)));
  LUM_ASSERT_SUCCESS(m_directPathValidators->add(
    CorvValidatorDPCollision::create(space, CorvValidatorConstShPtr(), defaultValidatorPenetration())));
  LUM_ASSERT_SUCCESS(m_directPathValidators->add(CorvValidatorDPTurnJump::create(space, TURN_JUMP_NAME)));
  LUM_ASSERT_SUCCESS(m_pathValidators->add(CorvValidatorPathDirectPaths::create(space)));
}

CorvDeviceShPtr CorvDevice::createFromFile(const std::string& i_path)
{
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  if (coder->parseFile(i_path).failed())
  {
    ClumLogManager::addError("Unable to parse file " + i_path);
    return CorvDeviceShPtr();
  }
  const CorvDeviceShPtr device = coder->decode<CorvDevice>(DEVICE_FILE_KEY);
  if (!device)
    ClumLogManager::addError("No device found in file " + i_path);
  return device;
}

lmStatus CorvDevice::exportToFile(const std::string& i_path, const ClumParameterMapConstShPtr&,
                                  double* o_progress) const
{
  const auto report = [&](double progress)
  {
    if (o_progress)
      *o_progress = progress;
  };
  report(0.0);
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  coder->encodeObject(this, DEVICE_FILE_KEY);
  report(0.5);
  const lmStatus status = coder->writeToFile(i_path);
  if (status.succeeded())
    report(1.0);
  return status;
}

CorvDeviceShPtr CorvDevice::createCopy(const CorvDeviceConstShPtr& i_objectToCopy)
{
  if (!i_objectToCopy)
    return CorvDeviceShPtr();
  const CorvClonerShPtr cloner = CorvCloner::create();
  if (cloner->encodeObjectShPtr(i_objectToCopy, "object").failed())
    return CorvDeviceShPtr();
  return boost::dynamic_pointer_cast<CorvDevice>(cloner->decodeObject("object"));
}

CorvDeviceShPtr CorvDevice::clone() const
{
  return createCopy(self());
}

CorvDeviceShPtr CorvDevice::cloneWithGeometries() const
{
  const ClumClonerShPtr cloner = ClumCloner::create();
  if (cloner->encodeObjectShPtr(self(), "object").failed())
    return CorvDeviceShPtr();
  return boost::dynamic_pointer_cast<CorvDevice>(cloner->decodeObject("object"));
}

lmStatus CorvDevice::setRootJoint(const CorvJointShPtr& i_joint)
{
  if (i_joint == m_rootJoint)
    return lmStatus();
  lmStatus status;
  getSetRootJointStatus(i_joint, status);
  if (status.failed())
    return status;
  const CorvJointShPtr before = m_rootJoint;
  const CorvJointShPtr after = i_joint;
  structureWillChange(true);
  unsubscribeFromVersionChanges();
  m_rootJoint = after;
  const lmStatus rebuilt = rebuildConfigSpace();
  if (rebuilt.succeeded())
  {
    m_internalVersion += (before ? before->version() : 0u) + 1u;
    if (before)
      jointRemoved(before);
    if (after)
    {
      after->updateInitialPosition();
      jointAdded(after);
    }
  }
  else
  {
    m_rootJoint = before;
    LUM_ASSERT_SUCCESS(rebuildConfigSpace());
    status = rebuilt;
  }
  subscribeToVersionChanges();
  structureDidChange(true);
  return status;
}

bool CorvDevice::canSetRootJoint(const CorvJointShPtr& i_joint) const
{
  lmStatus status;
  getSetRootJointStatus(i_joint, status);
  return status.succeeded();
}

void CorvDevice::getSetRootJointStatus(const CorvJointShPtr& i_joint, lmStatus& o_status) const
{
  o_status = lmStatus();
  if (m_isKinematicalChainLocked)
    o_status = LOCKED_KINEMATICAL_CHAIN_ERROR;
  else if (i_joint && i_joint != m_rootJoint && (i_joint->device() || i_joint->parentJoint()))
    o_status = ALREADY_IN_A_KINEMATICAL_CHAIN_ERROR;
  else if (i_joint && i_joint != m_rootJoint)
    o_status = checkJointCanBeAdded(i_joint);
}

lmStatus CorvDevice::checkJointCanBeAdded(const CorvJointConstShPtr& i_joint) const
{
  if (!i_joint)
    return NULL_JOINT_ERROR;
  std::vector<ClumGeometryShPtr> geometries;
  i_joint->appendMobileGeometries(geometries);
  const ClumSceneShPtr scene = collisionScene();
  for (const ClumGeometryShPtr& geometry : geometries)
  {
    if (isMobileGeometry(geometry))
      return DEVICE_MOBILE_MOBILE_CONFLICT_ERROR;
    if (isObstacleGeometry(geometry))
      return DEVICE_MOBILE_OBSTACLE_CONFLICT_ERROR;
    if (scene && scene->doesContainGeometryOrParent(geometry))
      return MOBILE_ALREADY_IN_SCENE_ERROR;
  }
  return lmStatus();
}

/// Gives the bodies of a subtree their groups and tests; a body that has its group already keeps them.
void CorvDevice::jointAdded(const CorvJointShPtr& i_joint)
{
  i_joint->ensureMobileGroup();
  for (unsigned int c = 0; c < i_joint->countChildJoints(); ++c)
    jointAdded(i_joint->childJoint(c));
}

void CorvDevice::jointRemoved(const CorvJointShPtr& i_joint)
{
  i_joint->removedFromDevice();
  // Nothing that left is kept alive by a cache.
  m_cache.reset(new CCache);
}

void CorvDevice::newMobileGroupAddedToScene(const ClumGeometryShPtr& i_group)
{
  if (!m_innerScene || !i_group)
    return;
  std::vector<ClumGeometryShPtr> obstacleGroups;
  getObstacleGroups(true, obstacleGroups);
  for (const ClumGeometryShPtr& obstacles : obstacleGroups)
    LUM_ASSERT_SUCCESS(m_innerScene->addTestParameters(i_group, obstacles, ClumScene::KEEP_EXISTING_TEST,
                                                       ClumTestParameters::createCopy(defaultTestParameters())));
}

const CorvDevice::CCache& CorvDevice::updateCache() const
{
  CCache& cache = *m_cache;
  const unsigned int currentVersion = version();
  const unsigned int spaceVersion = m_configSpace->version();
  if (cache.isFilled && cache.version == currentVersion && cache.spaceVersion == spaceVersion &&
      cache.areShapesTheSame())
    return cache;
  if (cache.spaceVersion != spaceVersion)
    invalidateCurrentConfig();
  cache.isFilled = true;
  cache.version = currentVersion;
  cache.spaceVersion = spaceVersion;
  cache.dofs.clear();
  LUM_ASSERT_SUCCESS(internalConfigSpace()->getDofs(cache.dofs));
  cache.joints.clear();
  cache.bodies.clear();
  cache.mobileGeometries.clear();
  if (m_rootJoint)
  {
    m_rootJoint->fillJointVector(cache.joints);
    m_rootJoint->appendMobileGeometries(cache.mobileGeometries);
  }
  for (const CorvJointShPtr& joint : cache.joints)
    if (joint->attachedBody())
      cache.bodies.push_back(joint->attachedBody());
  cache.latestStamp = lumLatestStamp();
  cache.shapeStamp = cache.currentShapeStamp();
  cache.table.reset(new CorvDeviceTable(m_rootJoint, *m_configSpace));
  return cache;
}

unsigned int CorvDevice::countJoints() const
{
  return static_cast<unsigned int>(updateCache().joints.size());
}

CorvJointShPtr CorvDevice::joint(unsigned int i_rank) const
{
  return itemOrNull(updateCache().joints, i_rank);
}

const std::vector<CorvJointShPtr>& CorvDevice::jointVector() const
{
  return updateCache().joints;
}

lmStatus CorvDevice::getRankOfJoint(const CorvJointConstShPtr& i_joint, unsigned int& o_rank) const
{
  return rankOfItem(updateCache().joints, i_joint, INVALID_JOINT_RANK_ERROR, o_rank);
}

unsigned int CorvDevice::countBodies() const
{
  return static_cast<unsigned int>(updateCache().bodies.size());
}

CorvBodyShPtr CorvDevice::body(unsigned int i_rank) const
{
  return itemOrNull(updateCache().bodies, i_rank);
}

const std::vector<CorvBodyShPtr>& CorvDevice::bodyVector() const
{
  return updateCache().bodies;
}

lmStatus CorvDevice::getRankOfBody(const CorvBodyConstShPtr& i_body, unsigned int& o_rank) const
{
  return rankOfItem(updateCache().bodies, i_body, lmStatus::FAILURE, o_rank);
}

unsigned int CorvDevice::countDofs() const
{
  return m_configSpace->size();
}

CorvDofShPtr CorvDevice::dof(unsigned int i_rank) const
{
  return itemOrNull(updateCache().dofs, i_rank);
}

const std::vector<CorvDofShPtr>& CorvDevice::dofVector() const
{
  return updateCache().dofs;
}

lmStatus CorvDevice::getRankOfDof(const CorvDofConstShPtr& i_dof, unsigned int& o_rank) const
{
  return rankOfItem(updateCache().dofs, i_dof, lmStatus::FAILURE, o_rank);
}

void CorvDevice::lockKinematicalChain()
{
  m_isKinematicalChainLocked = true;
  if (m_rootJoint)
    m_rootJoint->lockKinematicalChain();
}

lmStatus CorvDevice::addExtraDof(const CorvDofShPtr& i_dof)
{
  if (!i_dof || i_dof->parent() || containsItem(m_extraDofs, i_dof))
    return lmStatus::FAILURE;
  structureWillChange(false);
  m_extraDofs.push_back(i_dof);
  lmStatus status = rebuildConfigSpace();
  if (status.succeeded())
    ++m_internalVersion;
  else
  {
    m_extraDofs.pop_back();
    LUM_ASSERT_SUCCESS(rebuildConfigSpace());
  }
  structureDidChange(false);
  return status;
}

lmStatus CorvDevice::removeExtraDof(const CorvDofShPtr& i_dof)
{
  const auto found = std::find(m_extraDofs.begin(), m_extraDofs.end(), i_dof);
  if (!i_dof || found == m_extraDofs.end())
    return lmStatus::FAILURE;
  structureWillChange(false);
  m_extraDofs.erase(found);
  const lmStatus status = rebuildConfigSpace();
  ++m_internalVersion;
  structureDidChange(false);
  return status;
}

CorvDofShPtr CorvDevice::extraDof(unsigned int i_rank) const
{
  return itemOrNull(m_extraDofs, i_rank);
}

/// On failure some sub-spaces are missing: the caller restores what it changed and rebuilds again.
lmStatus CorvDevice::rebuildConfigSpace()
{
  lmStatus status = m_configSpace->clear();
  for (auto it = m_extraDofs.begin(); it != m_extraDofs.end() && status.succeeded(); ++it)
    status = m_configSpace->appendSubspace(*it);
  if (m_rootJoint && status.succeeded())
    status = m_configSpace->appendSubspace(m_rootJoint->configSpace());
  invalidateCurrentConfig();
  return status;
}

void CorvDevice::structureWillChange(bool i_rootChanges)
{
  notifyPropertyWillChange("version");
  for (const char* name : {"joints", "bodies", "mobileGeometries", "dofs"})
    if (i_rootChanges || std::string(name) == "dofs")
      notifyCollectionWillChange(name, COLLECTION_CHANGE, -1);
  if (!i_rootChanges)
    return;
  notifyPropertyWillChange("rootJoint");
  notifyPropertyWillChange("collisionScene");
}

void CorvDevice::structureDidChange(bool i_rootChanges)
{
  if (i_rootChanges)
  {
    notifyPropertyDidChange("collisionScene");
    notifyPropertyDidChange("rootJoint");
  }
  for (const char* name : {"dofs", "mobileGeometries", "bodies", "joints"})
    if (i_rootChanges || std::string(name) == "dofs")
      notifyCollectionDidChange(name, COLLECTION_CHANGE, -1);
  notifyPropertyDidChange("version");
}

void CorvDevice::subscribeToVersionChanges()
{
  if (!m_rootJoint)
    return;
  const ClumNotificatorShPtr notificator = m_rootJoint->objectNotificator();
  LUM_ASSERT_SUCCESS(
    notificator->subscribe(WILL_CHANGE_PROPERTY, self(), this, &CorvDevice::rootJointPropertyWillChange));
  LUM_ASSERT_SUCCESS(
    notificator->subscribe(DID_CHANGE_PROPERTY, self(), this, &CorvDevice::rootJointPropertyDidChange));
}

void CorvDevice::unsubscribeFromVersionChanges()
{
  if (m_rootJoint && m_rootJoint->isObjectNotificatorInitialized())
    m_rootJoint->objectNotificator()->unsubscribe(static_cast<const void*>(this));
}

void CorvDevice::rootJointPropertyWillChange(const ShPtr<const ClumNotification>& i_notification)
{
  const std::string name = i_notification->stringValue(ELEMENT_NAME_KEY);
  if (name == "version")
    notifyPropertyWillChange("version");
  else if (name == "structuralVersion")
    for (const char* collection : {"joints", "bodies", "mobileGeometries", "dofs"})
      notifyCollectionWillChange(collection, COLLECTION_CHANGE, -1);
}

void CorvDevice::rootJointPropertyDidChange(const ShPtr<const ClumNotification>& i_notification)
{
  const std::string name = i_notification->stringValue(ELEMENT_NAME_KEY);
  if (name == "version")
    notifyPropertyDidChange("version");
  else if (name == "structuralVersion")
    for (const char* collection : {"dofs", "mobileGeometries", "bodies", "joints"})
      notifyCollectionDidChange(collection, COLLECTION_CHANGE, -1);
}

lmStatus CorvDevice::addObstacleGeometry(const ClumGeometryShPtr& i_geometry)
{
  return insertObstacleGeometry(i_geometry, countObstacleGeometries());
}

lmStatus CorvDevice::insertObstacleGeometry(const ClumGeometryShPtr& i_geometry, unsigned int i_rank)
{
  if (!i_geometry)
    return NULL_OBSTACLE_ERROR;
  if (!m_collisionToolkit)
    return COLLISION_TOOLKIT_ERROR;
  if (isObstacleGeometry(i_geometry))
    return OBSTACLE_ALREADY_IN_COLLECTION_ERROR;
  if (isMobileGeometry(i_geometry))
    return OBSTACLE_MOBILE_CONFLICT_ERROR;
  const ClumSceneShPtr scene = collisionScene();
  if (scene && scene->doesContainGeometryOrParent(i_geometry))
    return OBSTACLE_ALREADY_IN_SCENE_ERROR;
  if (i_rank > countObstacleGeometries())
    return OBSTACLE_OUT_OF_RANGE;
  notifyCollectionWillChange(OBSTACLE_COLLECTION, COLLECTION_INSERTION, static_cast<int>(i_rank));
  notifyPropertyWillChange("version");
  m_obstacleGeometries.insert(m_obstacleGeometries.begin() + i_rank, i_geometry);
  ++m_internalVersion;
  notifyPropertyDidChange("version");
  notifyCollectionDidChange(OBSTACLE_COLLECTION, COLLECTION_INSERTION, static_cast<int>(i_rank));
  return lmStatus();
}

lmStatus CorvDevice::removeObstacleGeometry(const ClumGeometryShPtr& i_geometry)
{
  const auto found = std::find(m_obstacleGeometries.begin(), m_obstacleGeometries.end(), i_geometry);
  if (found == m_obstacleGeometries.end())
    return lmStatus::FAILURE;
  const int rank = static_cast<int>(found - m_obstacleGeometries.begin());
  notifyCollectionWillChange(OBSTACLE_COLLECTION, COLLECTION_REMOVAL, rank);
  notifyPropertyWillChange("version");
  m_obstacleGeometries.erase(found);
  ++m_internalVersion;
  notifyPropertyDidChange("version");
  notifyCollectionDidChange(OBSTACLE_COLLECTION, COLLECTION_REMOVAL, rank);
  return lmStatus();
}

ClumGeometryShPtr CorvDevice::obstacleGeometry(unsigned int i_rank) const
{
  return itemOrNull(m_obstacleGeometries, i_rank);
}

bool CorvDevice::isObstacleGeometry(const ClumGeometryConstShPtr& i_geometry) const
{
  return containsItem(m_obstacleGeometries, i_geometry);
}

void CorvDevice::getObstacleGeometries(bool, std::vector<ClumGeometryShPtr>& o_geometries) const
{
  o_geometries.insert(o_geometries.end(), m_obstacleGeometries.begin(), m_obstacleGeometries.end());
}

void CorvDevice::getObstacleGeometries(bool, std::set<ClumGeometryShPtr>& o_geometries) const
{
  o_geometries.insert(m_obstacleGeometries.begin(), m_obstacleGeometries.end());
}

void CorvDevice::getObstacleGroups(bool, std::vector<ClumGeometryShPtr>& o_groups) const
{
  if (m_obstacleGroup)
    o_groups.push_back(m_obstacleGroup);
}

unsigned int CorvDevice::countMobileGeometries() const
{
  return static_cast<unsigned int>(updateCache().mobileGeometries.size());
}

ClumGeometryShPtr CorvDevice::mobileGeometry(unsigned int i_rank) const
{
  return itemOrNull(updateCache().mobileGeometries, i_rank);
}

bool CorvDevice::isMobileGeometry(const ClumGeometryConstShPtr& i_geometry) const
{
  return containsItem(updateCache().mobileGeometries, i_geometry);
}

void CorvDevice::getMobileGeometries(bool, std::vector<ClumGeometryShPtr>& o_geometries) const
{
  const std::vector<ClumGeometryShPtr>& geometries = updateCache().mobileGeometries;
  o_geometries.insert(o_geometries.end(), geometries.begin(), geometries.end());
}

void CorvDevice::getMobileGeometries(bool, std::set<ClumGeometryShPtr>& o_geometries) const
{
  const std::vector<ClumGeometryShPtr>& geometries = updateCache().mobileGeometries;
  o_geometries.insert(geometries.begin(), geometries.end());
}

void CorvDevice::getMobileGroups(bool, std::vector<ClumGeometryShPtr>& o_groups) const
{
  for (const CorvJointShPtr& joint : updateCache().joints)
    if (const ClumGeometryShPtr group = joint->mobileGroup())
      o_groups.push_back(group);
}

bool CorvDevice::containsMobileGeometry(const std::set<ClumGeometryShPtr>& i_geometries) const
{
  return std::any_of(i_geometries.begin(), i_geometries.end(),
                     [this](const ClumGeometryShPtr& i_geometry) { return isMobileGeometry(i_geometry); });
}

bool CorvDevice::containsObstacleGeometry(const std::set<ClumGeometryShPtr>& i_geometries) const
{
  return std::any_of(i_geometries.begin(), i_geometries.end(),
                     [this](const ClumGeometryShPtr& i_geometry) { return isObstacleGeometry(i_geometry); });
}

bool CorvDevice::canCheckCollisions() const
{
  const std::vector<CorvBodyShPtr>& bodies = updateCache().bodies;
  return std::all_of(bodies.begin(), bodies.end(),
                     [](const CorvBodyShPtr& i_body) { return i_body->canCheckCollisions(); });
}

ClumSceneShPtr CorvDevice::collisionScene() const
{
  return m_innerScene;
}

void CorvDevice::collisionToolkit(const ClumCollisionToolkitShPtr& i_toolkit)
{
  if (i_toolkit == m_collisionToolkit)
    return;
  notifyPropertyWillChange("version");
  m_collisionToolkit = i_toolkit;
  ++m_internalVersion;
  notifyPropertyDidChange("version");
}

CorvValidatorCfgCollisionBaseShPtr CorvDevice::collisionValidator() const
{
  willReturnConfigValidators(m_configValidators);
  return m_collisionValidator;
}

void CorvDevice::collisionValidator(const CorvValidatorCfgCollisionBaseShPtr& i_validator)
{
  if (i_validator == m_collisionValidator)
    return;
  if (m_collisionValidator)
    LUM_ASSERT_SUCCESS(m_configValidators->remove(m_collisionValidator));
  m_collisionValidator = i_validator;
  if (i_validator)
    LUM_ASSERT_SUCCESS(m_configValidators->add(i_validator));
}

void CorvDevice::willReturnConfigValidators(const CorvValidatorSetShPtr& i_set) const
{
  if (m_collisionValidator || !m_configValidators)
    return;
  for (const CorvBodyShPtr& body : updateCache().bodies)
  {
    m_collisionValidator = body->makeValidator(m_configSpace);
    if (!m_collisionValidator)
      continue;
    LUM_ASSERT_SUCCESS(m_configValidators->add(m_collisionValidator));
    // A set that was pushed before the validator existed is a copy without it.
    if (i_set && i_set != m_configValidators)
      LUM_ASSERT_SUCCESS(i_set->add(m_collisionValidator));
    return;
  }
}

ClumTestParametersConstShPtr CorvDevice::defaultTestParameters() const
{
  return m_defaultTestParameters;
}

void CorvDevice::defaultTestParameters(const ClumTestParametersConstShPtr& i_parameters)
{
  const ClumTestParametersConstShPtr parameters = i_parameters ? i_parameters : classTestParameters();
  if (parameters == m_defaultTestParameters)
    return;
  notifyPropertyWillChange("defaultTestParameters");
  m_defaultTestParameters = parameters;
  notifyPropertyDidChange("defaultTestParameters");
}

lmStatus CorvDevice::getMaximumTolerance(double& o_tolerance) const
{
  o_tolerance = 0.0;
  const CorvValidatorCfgCollisionBaseShPtr validator = collisionValidator();
  return validator ? validator->getMaximumTolerance(self(), o_tolerance) : lmStatus();
}

void CorvDevice::notifyCollisionSceneWillChange()
{
  notifyPropertyWillChange("collisionScene");
}

void CorvDevice::notifyCollisionSceneDidChange()
{
  notifyPropertyDidChange("collisionScene");
}

bool CorvDevice::collisionTest(const ClumParameterMapConstShPtr& i_parameters) const
{
  CorvConfig config(self());
  LUM_ASSERT_SUCCESS(getCurrentConfig(config));
  bool isColliding = false;
  config.isColliding(i_parameters, isColliding);
  return isColliding;
}

bool CorvDevice::collisionTest() const
{
  return collisionTest(ClumParameterMapConstShPtr());
}

lmStatus CorvDevice::pushToleranceModifier(double i_modifier)
{
  const std::vector<CorvBodyShPtr>& bodies = updateCache().bodies;
  for (std::size_t b = 0; b < bodies.size(); ++b)
  {
    const lmStatus status = bodies[b]->pushToleranceModifier(i_modifier);
    if (status.succeeded())
      continue;
    while (b-- > 0)
      LUM_ASSERT_SUCCESS(bodies[b]->popToleranceModifier());
    return status;
  }
  return lmStatus();
}

lmStatus CorvDevice::popToleranceModifier()
{
  lmStatus status;
  for (const CorvBodyShPtr& body : updateCache().bodies)
  {
    const lmStatus popped = body->popToleranceModifier();
    if (popped.failed())
      status = popped;
  }
  return status;
}

lmStatus CorvDevice::pushToleranceActivation(bool i_activation)
{
  const std::vector<CorvBodyShPtr>& bodies = updateCache().bodies;
  for (std::size_t b = 0; b < bodies.size(); ++b)
  {
    const lmStatus status = bodies[b]->pushToleranceActivation(i_activation);
    if (status.succeeded())
      continue;
    while (b-- > 0)
      LUM_ASSERT_SUCCESS(bodies[b]->popToleranceActivation());
    return status;
  }
  return lmStatus();
}

lmStatus CorvDevice::popToleranceActivation()
{
  lmStatus status;
  for (const CorvBodyShPtr& body : updateCache().bodies)
  {
    const lmStatus popped = body->popToleranceActivation();
    if (popped.failed())
      status = popped;
  }
  return status;
}

lmStatus CorvDevice::setCurrentConfig(const CorvConfigConstShPtr& i_config)
{
  return i_config ? setCurrentConfig(*i_config) : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvDevice::setCurrentConfig(const CorvConfig& i_config)
{
  const CorvConfigSpaceShPtr& space = i_config.space();
  if (!space)
    return lmStatus::FAILURE;
  if (space->includes(*m_configSpace))
    return doSetCurrentConfig(i_config);
  CorvConfig whole;
  lmStatus status = getCurrentConfig(whole);
  if (status.succeeded())
    status = whole.inject(i_config);
  return status.succeeded() ? doSetCurrentConfig(whole) : status;
}

lmStatus CorvDevice::doSetCurrentConfig(const CorvConfig& i_config)
{
  lmStatus status = i_config.convert();
  if (status.failed())
    return status;
  const CorvConfig own = i_config.restrict(m_configSpace);
  if (own.space() != m_configSpace)
    return lmStatus::FAILURE;
  currentConfigWillChange();
  *m_currentConfig = own;
  updateCache();
  if (m_rootJoint)
  {
    status = m_currentConfig->pushRestriction(m_rootJoint->configSpace());
    if (status.succeeded())
    {
      status = m_rootJoint->setCurrentConfig(*m_currentConfig);
      LUM_ASSERT_SUCCESS(m_currentConfig->popRestriction());
    }
  }
  m_isCurrentConfigValid = status.succeeded();
  currentConfigDidChange();
  return status;
}

void CorvDevice::invalidateCurrentConfig() const
{
  m_isCurrentConfigValid = false;
}

void CorvDevice::currentConfigWillChange()
{
}

void CorvDevice::currentConfigDidChange()
{
}

lmStatus CorvDevice::getCurrentConfig(CorvConfig& o_config) const
{
  updateCache();
  lmStatus status = m_currentConfig->convert();
  if (status.succeeded() && !m_isCurrentConfigValid && m_rootJoint)
  {
    m_currentConfig->isSelfValidationEnabled(false);
    status = m_currentConfig->pushRestriction(m_rootJoint->configSpace());
    if (status.succeeded())
    {
      status = m_rootJoint->getCurrentConfig(*m_currentConfig);
      LUM_ASSERT_SUCCESS(m_currentConfig->popRestriction());
    }
    m_currentConfig->isSelfValidationEnabled(true);
  }
  m_isCurrentConfigValid = status.succeeded();
  if (status.failed())
    return status;
  CorvConfig config = *m_currentConfig;
  status = config.changeSpaceWithoutInvalidation(configSpace());
  if (status.succeeded())
    o_config = config;
  return status;
}

lmStatus CorvDevice::getCurrentConfig(CorvConfigShPtr& o_config) const
{
  CorvConfig config;
  const lmStatus status = getCurrentConfig(config);
  if (status.succeeded())
    o_config = CorvConfig::create(config);
  return status;
}

/// The rank of this device's first dof in a configuration.
lmStatus CorvDevice::firstRankIn(const CorvConfig& i_config, unsigned int& o_rank) const
{
  const CorvConfigSpaceShPtr& space = i_config.space();
  o_rank = 0;
  if (!space)
    return lmStatus::FAILURE;
  if (&space->unwrapped() == m_configSpace.get())
    return lmStatus();
  return space->getFirstDofRankOfSubspace(*m_configSpace, o_rank);
}

lmStatus CorvDevice::getJointPosition(const CorvJointConstShPtr& i_joint, const CorvConfig& i_config,
                                      ClumMat4& o_position) const
{
  unsigned int rank = 0;
  lmStatus status = getRankOfJoint(i_joint, rank);
  if (status.failed())
  {
    status.push(JOINT_NOT_FOUND_ERROR);
    return status;
  }
  status = i_config.pushRestriction(m_rootJoint->configSpace());
  if (status.failed())
    return status;
  status = m_rootJoint->getJointPosition(i_joint, i_config, ClumMat4::IDENTITY, o_position);
  LUM_ASSERT_SUCCESS(i_config.popRestriction());
  return status;
}

lmStatus CorvDevice::getJointAbsolutePosition(const CorvJointConstShPtr& i_joint, const CorvConfig& i_config,
                                              ClumMat4& o_position) const
{
  return getJointPosition(i_joint, i_config, o_position);
}

lmStatus CorvDevice::computeBodyPositions(const CorvConfig& i_config, std::vector<ClumMat4>& o_positions) const
{
  unsigned int first = 0;
  const lmStatus status = firstRankIn(i_config, first);
  const double* values = status.succeeded() ? i_config.beginPtr() : nullptr;
  if (!values)
    return lmStatus::FAILURE;
  updateCache().table->computeBodyPositions(values + first, o_positions);
  return status;
}

lmStatus CorvDevice::computeJointPositions(const CorvConfig& i_config, std::vector<ClumMat4>& o_positions) const
{
  unsigned int first = 0;
  const lmStatus status = firstRankIn(i_config, first);
  const double* values = status.succeeded() ? i_config.beginPtr() : nullptr;
  if (!values)
    return lmStatus::FAILURE;
  updateCache().table->computeJointPositions(values + first, o_positions);
  return status;
}

lmStatus CorvDevice::computeJacobian(const CorvConfig& i_config, const ClumPoint3& i_point, ClumMat& o_jacobian) const
{
  const std::vector<CorvJointShPtr>& joints = updateCache().joints;
  return joints.empty() ? lmStatus(JOINT_NOT_FOUND_ERROR)
                        : computeJacobian(i_config, i_point, joints.back(), o_jacobian);
}

lmStatus CorvDevice::computeJacobian(const CorvConfig& i_config, const ClumPoint3& i_point,
                                     const CorvJointConstShPtr& i_joint, ClumMat& o_jacobian) const
{
  const std::vector<CorvJointShPtr>& joints = updateCache().joints;
  unsigned int rank = 0;
  lmStatus status = getRankOfJoint(i_joint, rank);
  if (status.failed())
  {
    status.push(JOINT_NOT_FOUND_ERROR);
    return status;
  }
  std::vector<ClumMat4> positions;
  status = computeJointPositions(i_config, positions);
  if (status.failed())
    return status;
  const CorvConfig own = i_config.restrict(m_configSpace);
  ClumMat jacobian(6, countDofs());
  for (std::size_t j = 0; j < joints.size(); ++j)
  {
    const CorvJoint& joint = *joints[j];
    if (&joint != i_joint.get() && !joint.isParentOf(i_joint))
      continue;
    unsigned int firstDof = 0, parentRank = 0;
    if (joint.countDofs() > 0 &&
        m_configSpace->getFirstDofRankOfSubspace(*joint.kinematicalEffect()->configSpace(), firstDof).failed())
      continue;
    ClumMat4 transform;
    if (const CorvJointShPtr parent = joint.parentJoint())
    {
      LUM_ASSERT_SUCCESS(getRankOfJoint(parent, parentRank));
      parent->computeTransform(positions[parentRank], transform);
    }
    const ClumMat4 inverse = positions[j].inverse();
    for (unsigned int k = 0; k < joint.countDofs(); ++k)
    {
      ClumMat4 derivative;
      status = joint.getDerivativeAtConfig(own, transform, k, derivative);
      if (status.failed())
        return status;
      const ClumMat4 motion = derivative * inverse;
      const ClumPoint3 velocity = motion * i_point;
      for (unsigned int r = 0; r < 3; ++r)
        jacobian(r, firstDof + k) = velocity[r];
      jacobian(3, firstDof + k) = 0.5 * (motion(2, 1) - motion(1, 2));
      jacobian(4, firstDof + k) = 0.5 * (motion(0, 2) - motion(2, 0));
      jacobian(5, firstDof + k) = 0.5 * (motion(1, 0) - motion(0, 1));
    }
  }
  o_jacobian = jacobian;
  return lmStatus();
}

/// True if a dof of this device is computed in the configuration's space, and not from locked dofs alone: then nothing
/// is known of its rate.
bool CorvDevice::hasUnboundedDof(const CorvConfig& i_config) const
{
  const CorvConfigSpace& space = *i_config.space();
  if (!space.hasComputedDofs())
    return false;
  CCache& cache = *m_cache;
  const unsigned int spaceVersion = space.version();
  if (cache.computedSpace == &space && cache.computedVersion == spaceVersion)
    return cache.hasUnboundedDof;
  unsigned int first = 0;
  cache.hasUnboundedDof = firstRankIn(i_config, first).failed();
  for (unsigned int i = first; i < first + countDofs() && !cache.hasUnboundedDof; ++i)
    cache.hasUnboundedDof = space.isDofComputed(i) && !space.isSubspaceTransitivelyLocked(space.dof(i));
  cache.computedSpace = &space;
  cache.computedVersion = spaceVersion;
  return cache.hasUnboundedDof;
}

/// Checks a motion's start and rates, and finds this device's part of them.
/// @param i_isStraight the rates are velocities of a straight motion.
/// @param io_table set to what the bound stands on. @return -1 where no bound is known.
lmStatus CorvDevice::readMotion(const CorvConfig& i_from, const std::vector<double>& i_rates, bool i_isStraight,
                                const double*& o_values, const double*& o_rates,
                                ShPtr<const CorvDeviceTable>& io_table) const
{
  const CCache& cache = updateCache();
  unsigned int first = 0;
  if (firstRankIn(i_from, first).failed() || i_rates.size() != i_from.size())
    return lmStatus::FAILURE;
  const double* values = i_from.beginPtr();
  if (!values || hasUnboundedDof(i_from))
    return lmStatus::FAILURE;
  const unsigned int count = static_cast<unsigned int>(cache.dofs.size());
  o_values = values + first;
  o_rates = i_rates.data() + first;
  const bool areUsable = areUsableNumbers(o_values, count, false) && areUsableNumbers(o_rates, count, !i_isStraight);
  if (!areUsable || cache.table->prepare({o_values, o_rates, i_isStraight}).failed())
    return lmStatus::FAILURE;
  if (io_table != cache.table)
    io_table = cache.table;
  return lmStatus();
}

lmStatus CorvDevice::boundedMove(const CorvConfig& i_from, const CorvConfig& i_to, double i_rest,
                                 const std::vector<double>& i_derivatives, std::vector<double>& io_maxDistances,
                                 double& o_advance, bool& o_hitsEnd) const
{
  const auto isNaN = [](double i_distance) { return std::isnan(i_distance); };
  const bool haveSameSpace =
    i_from.space() && i_to.space() && &i_from.space()->unwrapped() == &i_to.space()->unwrapped();
  CorvMotionBound bound;
  if (!haveSameSpace || !isUsableRest(i_rest) || io_maxDistances.size() != countBodies() ||
      std::any_of(io_maxDistances.begin(), io_maxDistances.end(), isNaN) ||
      bound.set(*this, i_from, i_derivatives).failed())
    return lmStatus::FAILURE;
  o_advance = bound.advance(io_maxDistances.data(), i_rest);
  o_hitsEnd = o_advance == i_rest;
  return lmStatus();
}

lmStatus CorvDevice::boundDisplacements(const CorvConfig& i_from, double i_rest,
                                        const std::vector<double>& i_derivatives, std::vector<double>& o_moved) const
{
  CorvMotionBound bound;
  if (!isUsableRest(i_rest) || bound.set(*this, i_from, i_derivatives).failed())
    return lmStatus::FAILURE;
  o_moved.resize(bound.countBodies());
  bound.displacements(i_rest, o_moved.data());
  return lmStatus();
}

CorvConfigSpaceShPtr CorvDevice::configSpace() const
{
  CorvCSDeviceWrapperShPtr wrapper = m_wrapperSpace.lock();
  if (!wrapper)
  {
    wrapper = CorvCSDeviceWrapper::create(self(), DEVICE_WRAPPER_TYPE);
    m_wrapperSpace = wrapper;
  }
  return wrapper;
}

CorvSteeringMethodShPtr CorvDevice::steeringMethod() const
{
  return m_configSpace->steeringMethod();
}

void CorvDevice::steeringMethod(const CorvSteeringMethodShPtr& i_method)
{
  m_configSpace->steeringMethod(i_method);
}

CorvMetricShPtr CorvDevice::metric() const
{
  return m_configSpace->metric();
}

void CorvDevice::metric(const CorvMetricShPtr& i_metric)
{
  m_configSpace->metric(i_metric);
}

unsigned int CorvDevice::version() const
{
  return m_internalVersion + (m_rootJoint ? m_rootJoint->version() : 0u);
}

double CorvDevice::defaultValidatorPenetration()
{
  return 5.0;
}

void CorvDevice::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumMutableCodable::encodeWithCoder(i_coder);
  // What is brought up to date before it is written is the same in the copy.
  if (m_currentConfig)
  {
    LUM_ASSERT_SUCCESS(m_currentConfig->convert());
    m_currentConfig->isValidItself();
  }
  i_coder->encodeObjectShPtr(m_configSpace, "configSpace");
  i_coder->encodeWeakObjectWkPtr(m_wrapperSpace, "wrapperSpace");
  i_coder->encodeObjectShPtr(m_rootJoint, "rootJoint");
  i_coder->encodeObjects(m_extraDofs, "extraDofs");
  i_coder->encodeBool(m_isKinematicalChainLocked, "isKinematicalChainLocked");
  i_coder->encodeUnsignedInt(m_internalVersion, "internalVersion");
  i_coder->encodeObjectShPtr(m_collisionValidator, "collisionValidator");
  if (m_currentConfig)
    m_currentConfig->encodeValueWithCoder(*i_coder, "currentConfig");
  i_coder->encodeObjectShPtr(m_constraints, "constraints");
  i_coder->encodeObjectShPtr(m_configValidators, "configValidators");
  i_coder->encodeObjectShPtr(m_directPathValidators, "directPathValidators");
  i_coder->encodeObjectShPtr(m_pathValidators, "pathValidators");
  // The space has its own reference to these two, from which they are read back.
  i_coder->encodeObjectShPtr(steeringMethod(), "steeringMethod");
  i_coder->encodeObjectShPtr(metric(), "metric");
  i_coder->encodeObjectShPtr(m_collisionToolkit, "collisionToolkit");
  i_coder->encodeObjectShPtr(m_innerScene, "innerScene");
  i_coder->encodeObjects(m_obstacleGeometries, "obstacleGeometries");
  i_coder->encodeObjectShPtr(m_obstacleGroup, "obstacleGroup");
  i_coder->encodeObjectShPtr(m_defaultTestParameters, "defaultTestParameters");
}

lmStatus CorvDevice::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_configSpace = i_coder->decode<CorvCSComposite>("configSpace");
  m_wrapperSpace = i_coder->decodeWeak<CorvCSDeviceWrapper>("wrapperSpace");
  m_rootJoint = i_coder->decodePart<CorvJoint>("rootJoint");
  i_coder->decodeObjects("extraDofs", m_extraDofs);
  m_isKinematicalChainLocked = i_coder->decodeBool("isKinematicalChainLocked");
  m_internalVersion = i_coder->decodeUnsignedInt("internalVersion");
  m_collisionValidator = i_coder->decode<CorvValidatorCfgCollisionBase>("collisionValidator");
  m_currentConfig = CorvConfig::create(*i_coder, "currentConfig");
  m_constraints = i_coder->decode<CorvValidatorSet>("constraints");
  m_configValidators = i_coder->decode<CorvValidatorSet>("configValidators");
  m_directPathValidators = i_coder->decode<CorvValidatorSet>("directPathValidators");
  m_pathValidators = i_coder->decode<CorvValidatorSet>("pathValidators");
  if (!i_coder->isDecodedVersionStrictlyLowerThan(INNER_SCENE_VERSION))
  {
    m_collisionToolkit = i_coder->decode<ClumCollisionToolkit>("collisionToolkit");
    m_innerScene = i_coder->decode<ClumScene>("innerScene");
  }
  i_coder->decodeObjects("obstacleGeometries", m_obstacleGeometries);
  if (!i_coder->isDecodedVersionStrictlyLowerThan(OBSTACLE_GROUP_VERSION))
    m_obstacleGroup = i_coder->decode<ClumGeometry>("obstacleGroup");
  m_defaultTestParameters = i_coder->decode<ClumTestParameters>("defaultTestParameters");
  const bool isWhole = m_configSpace && m_constraints && m_configValidators && m_directPathValidators &&
                       m_pathValidators && !containsItem(m_extraDofs, CorvDofShPtr()) &&
                       !containsItem(m_obstacleGeometries, ClumGeometryShPtr());
  const bool isJointIncluded =
    !m_rootJoint || (isWhole && m_configSpace->includes(CorvConfigSpaceConstShPtr(m_rootJoint->configSpace())));
  const bool isConfigSound = m_currentConfig->space() == m_configSpace && m_currentConfig->hasSoundValues();
  return isWhole && isJointIncluded && isConfigSound ? status : lmStatus(lmStatus::FAILURE);
}

void CorvDevice::awake()
{
  ClumMutableCodable::awake();
  if (!m_defaultTestParameters)
    m_defaultTestParameters = classTestParameters();
  subscribeToVersionChanges();
  rebuildDeviceGroups();
}

/// Makes the scene and the groups that a decoded device lacks, with their default tests; those it has keep theirs.
void CorvDevice::rebuildDeviceGroups()
{
  if (!m_collisionToolkit)
    m_collisionToolkit = ClumCollisionToolkit::defaultCollisionToolkit();
  if (!m_innerScene)
    m_innerScene = ClumScene::create();
  if (!m_obstacleGroup || !m_innerScene->doesContainGeometry(m_obstacleGroup))
    LUM_ASSERT_SUCCESS(m_innerScene->addObjectGeometryCollection(self(), OBSTACLE_COLLECTION, m_obstacleGroup));
  if (m_rootJoint)
    jointAdded(m_rootJoint);
}
