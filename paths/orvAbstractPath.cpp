#include "paths/orvAbstractPath.h"

#include "foundation/lumAssert.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumMat4.h"
#include "foundation/lumNotificator.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"

LUM_DESCRIBE(CorvAbstractPath)
{
  i_class.enumeration("EDirection", "FORWARD, BACKWARD");
  i_class.property<CorvConfigSpaceShPtr>("configSpace", &Self::configSpace);
  i_class.property<CorvDeviceShPtr>("device", &Self::device);
  i_class.property<double>("length", &Self::length);
}
LUM_NOTIFICATION(CorvAbstractPath, DID_CHANGE);

CorvAbstractPath::CorvAbstractPath() = default;
CorvAbstractPath::CorvAbstractPath(const CorvAbstractPath& i_other) : ClumMutableCodable(i_other)
{
}

CorvAbstractPath::~CorvAbstractPath()
{
  unsubscribeFromDevice();
}

lmStatus CorvAbstractPath::init(const CorvAbstractPathWkPtr& i_weakPtr)
{
  const lmStatus status = ClumMutableCodable::init(i_weakPtr);
  if (status.failed() || !isObjectNotificatorInitialized())
    return status;
  subscribeToSelf();
  subscribeToDevice();
  return lmStatus();
}

lmStatus CorvAbstractPath::getConfigAtParam(double i_param, CorvConfig& io_cfg) const
{
  return getConfigAtDistance(length() * i_param, io_cfg);
}

lmStatus CorvAbstractPath::getConfigAtStart(CorvConfig& io_cfg) const
{
  return getConfigAtDistance(0.0, io_cfg);
}

lmStatus CorvAbstractPath::getConfigAtEnd(CorvConfig& io_cfg) const
{
  return getConfigAtDistance(length(), io_cfg);
}

CorvDeviceShPtr CorvAbstractPath::device() const
{
  const CorvConfigSpaceShPtr space = configSpace();
  return space ? space->device() : CorvDeviceShPtr();
}

namespace
{
/// The configuration that a query fills in, null if it fails.
template <class QUERY>
CorvConfigShPtr newPathConfig(const CorvAbstractPath& i_path, const QUERY& i_query)
{
  const CorvConfigShPtr cfg = CorvConfig::create(i_path.configSpace());
  return i_query(*cfg).succeeded() ? cfg : CorvConfigShPtr();
}

/// A clone on which an edit has run, null if it fails.
template <class EDIT>
CorvAbstractPathShPtr editedPathClone(const CorvAbstractPathConstShPtr& i_path, const EDIT& i_edit)
{
  const CorvAbstractPathShPtr path = i_path ? i_path->clone() : CorvAbstractPathShPtr();
  return path && i_edit(*path).succeeded() ? path : CorvAbstractPathShPtr();
}
} // namespace

CorvConfigShPtr CorvAbstractPath::configAtDistance(double i_distance) const
{
  return newPathConfig(*this, [&](CorvConfig& o_cfg) { return getConfigAtDistance(i_distance, o_cfg); });
}

CorvConfigShPtr CorvAbstractPath::configAtParam(double i_param) const
{
  return newPathConfig(*this, [&](CorvConfig& o_cfg) { return getConfigAtParam(i_param, o_cfg); });
}

CorvConfigShPtr CorvAbstractPath::configAtStart() const
{
  return newPathConfig(*this, [&](CorvConfig& o_cfg) { return getConfigAtStart(o_cfg); });
}

CorvConfigShPtr CorvAbstractPath::configAtEnd() const
{
  return newPathConfig(*this, [&](CorvConfig& o_cfg) { return getConfigAtEnd(o_cfg); });
}

bool CorvAbstractPath::startsWith(const CorvConfig& i_cfg) const
{
  const CorvConfigShPtr start = configAtStart();
  return start && start->isEquivalent(i_cfg);
}

bool CorvAbstractPath::endsWith(const CorvConfig& i_cfg) const
{
  const CorvConfigShPtr end = configAtEnd();
  return end && end->isEquivalent(i_cfg);
}

lmStatus CorvAbstractPath::getMatVectorAtDistance(double i_distance, std::vector<ClumMat4>& o_matrices) const
{
  const CorvConfigShPtr cfg = configAtDistance(i_distance);
  return cfg ? cfg->getBodyMatVector(o_matrices) : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvAbstractPath::getMatVectorAtParam(double i_param, std::vector<ClumMat4>& o_matrices) const
{
  const CorvConfigShPtr cfg = configAtParam(i_param);
  return cfg ? cfg->getBodyMatVector(o_matrices) : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvAbstractPath::boundedMove(double i_tStart, EDirection i_direction, double& o_tGoal, bool& o_hitsEnd,
                                       double i_maxDistance) const
{
  const CorvDeviceShPtr moved = device();
  if (!moved)
    return lmStatus(lmStatus::FAILURE);
  std::vector<double> maxDistances(moved->countBodies(), i_maxDistance);
  return boundedMoveByBody(i_tStart, i_direction, o_tGoal, o_hitsEnd, maxDistances);
}

CorvAbstractPathShPtr CorvAbstractPath::createByExtracting(const CorvAbstractPathConstShPtr& i_path, double i_from,
                                                           double i_to)
{
  return editedPathClone(i_path, [&](CorvAbstractPath& io_path) { return io_path.extract(i_from, i_to); });
}

CorvAbstractPathShPtr CorvAbstractPath::createByExtractingFrom(const CorvAbstractPathConstShPtr& i_path, double i_from)
{
  return editedPathClone(i_path, [&](CorvAbstractPath& io_path) { return io_path.extractFrom(i_from); });
}

CorvAbstractPathShPtr CorvAbstractPath::createByExtractingTo(const CorvAbstractPathConstShPtr& i_path, double i_to)
{
  return editedPathClone(i_path, [&](CorvAbstractPath& io_path) { return io_path.extractTo(i_to); });
}

CorvAbstractPathShPtr CorvAbstractPath::createReversed(const CorvAbstractPathConstShPtr& i_path)
{
  return editedPathClone(i_path, [](CorvAbstractPath& io_path) { return io_path.reverse(); });
}

void CorvAbstractPath::awake()
{
  ClumMutableCodable::awake();
  if (isObjectNotificatorInitialized())
    subscribeToDevice();
}

void CorvAbstractPath::willReturnObjectNotificator() const
{
  ClumMutableCodable::willReturnObjectNotificator();
  subscribeToSelf();
  subscribeToDevice();
}

void CorvAbstractPath::subscribeToSelf() const
{
  const CorvAbstractPathShPtr me = self();
  LUM_ASSERT_SUCCESS(
    objectNotificator()->subscribe(DID_CHANGE_PROPERTY, me, me.get(), &CorvAbstractPath::propertyDidChange));
  LUM_ASSERT_SUCCESS(
    objectNotificator()->subscribe(WILL_CHANGE_PROPERTY, me, me.get(), &CorvAbstractPath::propertyWillChange));
}

void CorvAbstractPath::subscribeToDevice() const
{
  const CorvDeviceShPtr observed = device();
  if (!observed || observed == m_observedDevice.lock())
    return;
  const CorvAbstractPathShPtr me = self();
  LUM_ASSERT_SUCCESS(observed->objectNotificator()->subscribe(DID_CHANGE_PROPERTY, me, me.get(),
                                                              &CorvAbstractPath::devicePropertyDidChange));
  m_observedDevice = observed;
}

void CorvAbstractPath::unsubscribeFromDevice() const
{
  if (const CorvDeviceShPtr observed = m_observedDevice.lock())
    observed->objectNotificator()->unsubscribe(DID_CHANGE_PROPERTY, static_cast<const CorvAbstractPath*>(this));
  m_observedDevice.reset();
}

void CorvAbstractPath::propertyWillChange(const ShPtr<const ClumNotification>& i_notification)
{
  if (i_notification->stringValue(ELEMENT_NAME_KEY) == "device")
    unsubscribeFromDevice();
}

void CorvAbstractPath::propertyDidChange(const ShPtr<const ClumNotification>& i_notification)
{
  if (i_notification->stringValue(ELEMENT_NAME_KEY) == "device")
    subscribeToDevice();
}

void CorvAbstractPath::devicePropertyDidChange(const ShPtr<const ClumNotification>& i_notification)
{
  if (i_notification->stringValue(ELEMENT_NAME_KEY) == "version")
    deviceVersionChanged();
}
