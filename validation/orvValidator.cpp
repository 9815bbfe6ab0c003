#include "validation/orvValidator.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumStringKey.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "paths/orvDirectPath.h"
#include "validation/orvValidationPool.h"
#include "validation/orvValidationReport.h"

LUM_DESCRIBE(CorvValidator)
{
  i_class.property<std::string>("name", &Self::name);
}

LUM_DESCRIBE(CorvConfigValidator)
{
}

CorvValidator::CorvValidator() = default;

CorvValidator::CorvValidator(const CorvConfigSpaceShPtr& i_space, const std::string& i_name) : m_name(i_name)
{
  watch(i_space);
}

CorvValidator::CorvValidator(const CorvValidator& i_other)
  : ClumMutableCodable(i_other), m_isActivated(i_other.m_isActivated), m_name(i_other.m_name), m_pool(i_other.m_pool)
{
  watch(i_other.m_space, i_other.m_device);
}

CorvValidator& CorvValidator::operator=(const CorvValidator& i_other)
{
  ClumMutableCodable::operator=(i_other);
  m_isActivated = i_other.m_isActivated;
  m_name = i_other.m_name;
  m_pool = i_other.m_pool;
  watch(i_other.m_space, i_other.m_device);
  return *this;
}

CorvValidator::~CorvValidator() = default;

lmStatus CorvValidator::init(const CorvValidatorWkPtr& i_weakPtr)
{
  const lmStatus status = ClumMutableCodable::init(i_weakPtr);
  if (status.failed())
    return status;
  if (name().empty())
  {
    ClumLogManager::addWarning("Cannot create a validator without a name.");
    return -1;
  }
  if (doesRequireSpace() && m_space.expired() && m_device.expired())
  {
    ClumLogManager::addWarning("Cannot create a validator without a space.");
    return -1;
  }
  return lmStatus();
}

void CorvValidator::watch(const CorvConfigSpaceShPtr& i_space)
{
  const CorvDeviceShPtr owner = i_space ? i_space->device() : CorvDeviceShPtr();
  const bool isOfDevice = owner && owner->internalConfigSpace().get() == &i_space->unwrapped();
  if (isOfDevice)
    watch(CorvConfigSpaceWkPtr(), owner);
  else
    watch(i_space, CorvDeviceWkPtr());
}

void CorvValidator::watch(const CorvConfigSpaceWkPtr& i_space, const CorvDeviceWkPtr& i_device)
{
  m_space = i_space;
  m_device = i_device;
  m_bareSpace = m_space.lock().get();
  m_bareDevice = m_device.lock().get();
}

const ClumStringKey& CorvValidator::validationSpaceParameterKey()
{
  static const ClumStringKey s_key(validationSpaceParameterName());
  return s_key;
}

const std::string& CorvValidator::validationSpaceParameterName()
{
  static const std::string s_name("orvane.next.validation-space");
  return s_name;
}

const CorvConfigSpace* CorvValidator::unwrappedValidationSpace(const ClumParameterMapConstShPtr& i_params)
{
  void* space = nullptr;
  if (!i_params || i_params->getPointer(validationSpaceParameterKey(), space).failed() || !space)
    return nullptr;
  return &static_cast<const CorvConfigSpace*>(space)->unwrapped();
}

CorvConfigSpaceShPtr CorvValidator::configSpace() const
{
  if (const CorvDeviceShPtr device = m_device.lock())
    return device->configSpace();
  return m_space.lock();
}

CorvDeviceShPtr CorvValidator::device() const
{
  if (CorvDeviceShPtr device = m_device.lock())
    return device;
  const CorvConfigSpaceShPtr space = m_space.lock();
  return space ? space->device() : CorvDeviceShPtr();
}

const CorvDevice* CorvValidator::bareDevice() const
{
  if (!m_device.expired())
    return m_bareDevice;
  return m_space.expired() ? nullptr : m_bareSpace->device().get();
}

const CorvConfigSpace* CorvValidator::unwrappedSpace() const
{
  if (!m_device.expired())
    return m_bareDevice->internalConfigSpace().get();
  return m_space.expired() ? nullptr : &m_bareSpace->unwrapped();
}

bool CorvValidator::watches(const CorvConfigSpace& i_space) const
{
  if (m_device.expired())
    return !m_space.expired() && m_bareSpace == &i_space;
  const CorvConfigSpace* unwrapped = &i_space.unwrapped();
  return unwrapped != &i_space && unwrapped == m_bareDevice->internalConfigSpace().get();
}

void CorvValidator::isActivated(bool i_isActivated)
{
  m_isActivated = i_isActivated;
  didChange();
}

bool CorvValidator::validate(const CorvValidable& i_validable) const
{
  return validate(i_validable, ClumParameterMapConstShPtr());
}

bool CorvValidator::validate(const CorvValidable& i_validable, const ClumParameterMapConstShPtr& i_params) const
{
  const ClumStringKey& key = validationSpaceParameterKey();
  if (!doesRequireSpace() || (i_params && i_params->hasPointer(key)))
    return validateInSpace(i_validable, i_params);

  // The scratch map is taken out for the time of the call: a nested call on this validator makes one of its own.
  ClumParameterMapShPtr scratch;
  scratch.swap(m_spaceParams);
  if (!scratch)
    scratch = ClumParameterMap::create();
  const CorvConfigSpaceShPtr space = configSpace();
  scratch->setPointer(key, space.get());
  LUM_ASSERT_SUCCESS(scratch->setBase(i_params));
  const bool result = validateInSpace(i_validable, scratch);
  scratch->setBase(ClumParameterMapConstShPtr());
  scratch->remove(key);
  m_spaceParams.swap(scratch);
  return result;
}

bool CorvValidator::validateInSpace(const CorvValidable& i_validable, const ClumParameterMapConstShPtr& i_params) const
{
  if (doesRequireSpace())
  {
    const CorvConfigSpace* space = i_validable.bareSpace();
    if (!space || &space->unwrapped() != unwrappedSpace())
    {
      ClumLogManager::addWarning("Spaces of validable and validator don't match. See the Porting Notes if this warning "
                                 "appeared after upgrading to Orvane 4.0.");
      return i_validable.validate(i_params);
    }
  }
  if (m_isActivated && i_validable.isValidItself())
    return validateActivated(i_validable, i_params);
  if (doesUseReports())
    i_validable.removeKeyedReport(m_name);
  return true;
}

bool CorvValidator::validateActivated(const CorvValidable& i_validable,
                                      const ClumParameterMapConstShPtr& i_params) const
{
  if (!m_pool)
    return i_validable.validateWith(*this, i_params);
  const CorvValidationPoolShPtr pool = m_pool;
  const CorvValidable& target = pool->targetOf(i_validable);
  const bool result = target.validateWith(*this, i_params);
  pool->didValidate(i_validable, target);
  return result;
}

void CorvValidator::apply(CorvValidable& io_validable) const
{
  validate(io_validable);
}

void CorvValidator::apply(CorvValidable& io_validable, const ClumParameterMapConstShPtr& i_params) const
{
  validate(io_validable, i_params);
}

CorvValidationReportConstShPtr CorvValidator::upToDateReportFrom(const CorvValidable& i_validable) const
{
  return upToDateReportFrom(i_validable, ClumParameterMapConstShPtr());
}

CorvValidationReportConstShPtr CorvValidator::upToDateReportFrom(const CorvValidable& i_validable,
                                                                 const ClumParameterMapConstShPtr& i_params) const
{
  const CorvValidable& target = m_pool ? m_pool->targetOf(i_validable) : i_validable;
  const CorvValidationReportConstShPtr report = target.keyedReport(m_name);
  if (!report || target.needsRevalidationWith(*this, i_params, report))
    return CorvValidationReportConstShPtr();
  // The question itself may have put a corrected report in its place.
  return target.keyedReport(m_name);
}

lmStatus CorvValidator::validMotion(const CorvDirectPath& i_dp, double i_param,
                                    CorvAbstractPath::EDirection i_direction,
                                    const ClumParameterMapConstShPtr& i_params, double& o_bound, bool& o_exact) const
{
  CorvConfig config(i_dp.configSpace());
  const lmStatus status = i_dp.getConfigAtDistance(i_param, config);
  if (status.failed())
    return status;
  return validMotion(i_dp, i_param, config, i_direction, i_params, o_bound, o_exact);
}

void CorvValidator::getEmbeddedValidators(std::vector<CorvValidatorShPtr>& o_validators) const
{
  o_validators.push_back(self());
}

void CorvValidator::pushAttributes()
{
}

void CorvValidator::popAttributes()
{
}

CorvValidatorShPtr CorvValidator::validatorNamed(const std::string& i_name, bool) const
{
  return i_name == name() ? self() : CorvValidatorShPtr();
}

unsigned int CorvValidator::deepCount() const
{
  return doesUseReports() ? 1 : 0;
}

CorvValidatorShPtr CorvValidator::deepAt(unsigned int i_rank) const
{
  return i_rank == 0 && doesUseReports() ? self() : CorvValidatorShPtr();
}

bool CorvValidator::operator==(const CorvValidator& i_other) const
{
  return m_name == i_other.m_name;
}

bool CorvValidator::doesUseReports() const
{
  return true;
}

bool CorvValidator::doValidateConfig(const CorvConfig&, const ClumParameterMapConstShPtr&,
                                     const CorvValidationReportConstShPtr&, CorvValidationReportShPtr&) const
{
  LUM_ASSERT(false);
  return false;
}

bool CorvValidator::doValidateDirectPath(const CorvDirectPath&, const ClumParameterMapConstShPtr&,
                                         const CorvValidationReportConstShPtr&, CorvValidationReportShPtr&) const
{
  LUM_ASSERT(false);
  return false;
}

bool CorvValidator::doValidatePath(const CorvPath&, const ClumParameterMapConstShPtr&,
                                   const CorvValidationReportConstShPtr&, CorvValidationReportShPtr&) const
{
  LUM_ASSERT(false);
  return false;
}

bool CorvValidator::shouldRevalidateConfig(const CorvConfig&, const ClumParameterMapConstShPtr&,
                                           const CorvValidationReportConstShPtr&) const
{
  return false;
}

bool CorvValidator::shouldRevalidateDirectPath(const CorvDirectPath&, const ClumParameterMapConstShPtr&,
                                               const CorvValidationReportConstShPtr&) const
{
  return false;
}

bool CorvValidator::shouldRevalidatePath(const CorvPath&, const ClumParameterMapConstShPtr&,
                                         const CorvValidationReportConstShPtr&) const
{
  return false;
}

lmStatus CorvValidator::validMotion(const CorvDirectPath& i_dp, double, const CorvConfig&, CorvAbstractPath::EDirection,
                                    const ClumParameterMapConstShPtr&, double& o_bound, bool& o_exact) const
{
  o_bound = i_dp.length();
  o_exact = true;
  return lmStatus();
}

void CorvValidator::getTransitivity(std::vector<CorvConfigSpaceShPtr>& o_input,
                                    std::vector<CorvConfigSpaceShPtr>& o_output) const
{
  o_input.clear();
  o_output.clear();
}

bool CorvValidator::isImplicit() const
{
  return false;
}

lmStatus CorvValidator::getLipschitzMatrix(ClumMat&, const CorvDomainConstShPtr&) const
{
  return -1;
}

void CorvValidator::didChange()
{
  // Of a device, the internal space is told: its wrapper, made on demand, is above it and hears of it.
  if (const CorvDeviceShPtr device = m_device.lock())
    device->internalConfigSpace()->invalidateCache();
  else if (const CorvConfigSpaceShPtr space = m_space.lock())
    space->invalidateCache();
}

void CorvValidator::didAddToConfigSpace()
{
}

void CorvValidator::willRemoveFromConfigSpace()
{
}

bool CorvValidator::doesRequireSpace() const
{
  return true;
}

void CorvValidator::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumMutableCodable::encodeWithCoder(i_coder);
  i_coder->encodeBool(m_isActivated, "activated");
  i_coder->encodeString(name(), "name");
  i_coder->encodeWeakObjectWkPtr(m_space, "configSpace");
  i_coder->encodeWeakObjectWkPtr(m_device, "device");
  i_coder->encodeObjectShPtr(m_pool, "pool");
}

lmStatus CorvValidator::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_isActivated = i_coder->decodeBool("activated");
  m_name = i_coder->decodeString("name");
  watch(i_coder->decodeWeak<CorvConfigSpace>("configSpace"), i_coder->decodeWeak<CorvDevice>("device"));
  m_pool = i_coder->decode<CorvValidationPool>("pool");
  return lmStatus();
}

ClumCodableShPtr CorvValidator::cloneByCoding() const
{
  std::vector<ClumCodableConstShPtr> pinned;
  if (const CorvConfigSpaceShPtr space = m_space.lock())
    pinned.push_back(space);
  if (const CorvDeviceShPtr device = m_device.lock())
    pinned.push_back(device);
  return cloneByCodingWithPinnedObjects(pinned);
}

CorvConfigValidator::~CorvConfigValidator() = default;

lmStatus CorvConfigValidator::init(const CorvConfigValidatorWkPtr& i_weakPtr)
{
  return CorvValidator::init(i_weakPtr);
}
