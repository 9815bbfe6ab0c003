#include "kinematics/orvCSDeviceWrapper.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumNotificator.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvDevice.h"
#include "validation/orvValidatorSet.h"

LUM_DESCRIBE(CorvCSDeviceWrapper)
{
  i_class.creates("(const CorvDeviceShPtr& i_device, const std::string& i_type)", &Self::create);
}

CorvCSDeviceWrapperShPtr CorvCSDeviceWrapper::create(const CorvDeviceShPtr& i_device, const std::string& i_type)
{
  return lumCreate<CorvCSDeviceWrapper>(i_device, i_type);
}

CorvCSDeviceWrapperShPtr CorvCSDeviceWrapper::createCopy(const CorvCSDeviceWrapperConstShPtr& i_objectToCopy)
{
  return boost::dynamic_pointer_cast<CorvCSDeviceWrapper>(CorvConfigSpace::createCopy(i_objectToCopy));
}

CorvCSDeviceWrapper::CorvCSDeviceWrapper(const CorvDeviceShPtr& i_device, const std::string& i_type)
  : CorvConfigSpace(i_type), m_wrappedDevice(i_device)
{
  if (m_wrappedDevice)
    m_internalSpace = m_wrappedDevice->internalConfigSpace();
  wrappedSpace(m_internalSpace.get());
}

CorvCSDeviceWrapper::~CorvCSDeviceWrapper()
{
  if (m_wrappedDevice && m_wrappedDevice->isObjectNotificatorInitialized())
    m_wrappedDevice->objectNotificator()->unsubscribe(this);
}

lmStatus CorvCSDeviceWrapper::init(const CorvCSDeviceWrapperWkPtr& i_weakPtr)
{
  const lmStatus status = CorvConfigSpace::init(i_weakPtr);
  if (status.failed())
    return status;
  if (!m_internalSpace)
    return -1;
  if (m_internalSpace->parent())
  {
    ClumLogManager::addError(
      "Unable to create a CorvCSDeviceWrapper instance for a device space that already has a parent.");
    return -1;
  }
  wrapDevice();
  return lmStatus();
}

void CorvCSDeviceWrapper::wrapDevice()
{
  m_internalSpace->parent(self());
  device(m_wrappedDevice);
  LUM_ASSERT_SUCCESS(m_wrappedDevice->objectNotificator()->subscribe(DID_CHANGE_PROPERTY, self(), this,
                                                                     &CorvCSDeviceWrapper::deviceDidChange));
}

void CorvCSDeviceWrapper::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvConfigSpace::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_wrappedDevice, "wrappedDevice");
}

lmStatus CorvCSDeviceWrapper::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvConfigSpace::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_wrappedDevice = i_coder->decode<CorvDevice>("wrappedDevice");
  if (!m_wrappedDevice)
    return -1;
  m_internalSpace = m_wrappedDevice->internalConfigSpace();
  wrappedSpace(m_internalSpace.get());
  return m_internalSpace ? lmStatus() : lmStatus(-1);
}

// The device is complete only now: what was asked of the wrapper before saw no dofs.
void CorvCSDeviceWrapper::awake()
{
  CorvConfigSpace::awake();
  if (!m_wrappedDevice)
    return;
  m_internalSpace = m_wrappedDevice->internalConfigSpace();
  wrappedSpace(m_internalSpace.get());
  m_isCacheValid = m_isPassiveDataValid = m_isVersionRecorded = false;
  if (m_internalSpace)
    wrapDevice();
}

CorvConfigSpaceShPtr CorvCSDeviceWrapper::subspace(unsigned int i_rank) const
{
  return i_rank == 0 ? m_internalSpace : CorvConfigSpaceShPtr();
}

unsigned int CorvCSDeviceWrapper::countSubspaces() const
{
  return m_internalSpace ? 1 : 0;
}

void CorvCSDeviceWrapper::steeringMethod(const CorvSteeringMethodShPtr& i_steeringMethod)
{
  if (!m_internalSpace || i_steeringMethod == m_internalSpace->steeringMethod())
    return;
  notifyPropertyWillChange("steeringMethod");
  m_internalSpace->steeringMethod(i_steeringMethod);
  notifyPropertyDidChange("steeringMethod");
}

const CorvSteeringMethodShPtr& CorvCSDeviceWrapper::steeringMethod() const
{
  return m_internalSpace ? m_internalSpace->steeringMethod() : CorvConfigSpace::steeringMethod();
}

// The stacks of the wrapper are never used: those of the internal space stand for them.
CorvValidatorSetShPtr CorvCSDeviceWrapper::makeValidatorSet() const
{
  return CorvValidatorSet::emptySet();
}

const CorvValidatorSetShPtr& CorvCSDeviceWrapper::spaceConstraints() const
{
  return m_internalSpace ? m_internalSpace->spaceConstraints() : CorvConfigSpace::spaceConstraints();
}

const CorvValidatorSetShPtr& CorvCSDeviceWrapper::spaceConfigValidators() const
{
  return m_internalSpace ? m_internalSpace->spaceConfigValidators() : CorvConfigSpace::spaceConfigValidators();
}

const CorvValidatorSetShPtr& CorvCSDeviceWrapper::spaceDirectPathValidators() const
{
  return m_internalSpace ? m_internalSpace->spaceDirectPathValidators() : CorvConfigSpace::spaceDirectPathValidators();
}

const CorvValidatorSetShPtr& CorvCSDeviceWrapper::spacePathValidators() const
{
  return m_internalSpace ? m_internalSpace->spacePathValidators() : CorvConfigSpace::spacePathValidators();
}

const CorvMetricShPtr& CorvCSDeviceWrapper::spaceMetric() const
{
  return m_internalSpace ? m_internalSpace->spaceMetric() : CorvConfigSpace::spaceMetric();
}

void CorvCSDeviceWrapper::spaceMetric(const CorvMetricShPtr& i_metric)
{
  if (m_internalSpace)
    m_internalSpace->spaceMetric(i_metric);
}

void CorvCSDeviceWrapper::willReturnConfigValidators(const CorvValidatorSetShPtr& i_set) const
{
  if (m_internalSpace)
    m_internalSpace->willReturnConfigValidators(i_set);
}

void CorvCSDeviceWrapper::deviceDidChange(const ShPtr<const ClumNotification>& i_notification)
{
  if (i_notification->stringValue(ELEMENT_NAME_KEY) == "version")
    invalidateCache();
}
