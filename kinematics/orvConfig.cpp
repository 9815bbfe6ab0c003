#include "kinematics/orvConfig.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumMat4.h"
#include "foundation/lumMemoryCoder.h"
#include "foundation/lumXMLCoder.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvUtility.h"
#include "manifolds/orvPointManifold.h"
#include "metrics/orvMetric.h"
#include "metrics/orvMetricRevolute.h"
#include "metrics/orvRandomWalk.h"
#include "validation/orvValidationReport.h"
#include "validation/orvValidatorCfgCollisionBase.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace
{
const char* const CONVERSION_REPORT = "orvane.core.config.convert";

/// The distance up to which two configurations count as equivalent.
const double EQUIVALENCE_DISTANCE = 1e-10;

CorvConfigSpaceShPtr spaceOfDevice(const CorvDeviceShPtr& i_device)
{
  return i_device ? i_device->configSpace() : CorvConfigSpaceShPtr();
}

/// 32 bits of a double, the same for both zeros.
std::uint32_t hashWord(double i_value)
{
  if (i_value == 0.0)
    return 0;
  std::uint64_t bits = 0;
  std::memcpy(&bits, &i_value, sizeof(bits));
  const std::uint32_t high = static_cast<std::uint32_t>(bits >> 32);
  const std::uint32_t low = static_cast<std::uint32_t>(bits);
  return ((high >> 2) + (high << 6) + low) ^ high;
}

std::uint32_t rotatedLeft(std::uint32_t i_value, unsigned int i_count)
{
  return (i_value << i_count) | (i_value >> (32 - i_count));
}

/// One step of the body of 32-bit MurmurHash3 (A. Appleby).
void addToHash(double i_value, std::uint32_t& io_hash)
{
  std::uint32_t word = hashWord(i_value) * 0xcc9e2d51u;
  word = rotatedLeft(word, 15) * 0x1b873593u;
  io_hash = rotatedLeft(io_hash ^ word, 13) * 5u + 0xe6546b64u;
}
} // namespace

CorvConfig::CorvConfig() = default;

CorvConfig::CorvConfig(const CorvConfigSpaceShPtr& i_space)
{
  m_bottom.space = i_space;
  fillFrom(nullptr, 0);
}

CorvConfig::CorvConfig(const CorvDeviceShPtr& i_device) : CorvConfig(spaceOfDevice(i_device))
{
}

CorvConfig::CorvConfig(const CorvConfigSpaceShPtr& i_space, const std::vector<double>& i_values)
{
  m_bottom.space = i_space;
  fillFrom(i_values.data(), i_values.size());
}

CorvConfig::CorvConfig(const CorvDeviceShPtr& i_device, const std::vector<double>& i_values)
  : CorvConfig(spaceOfDevice(i_device), i_values)
{
}

CorvConfig::CorvConfig(const CorvConfigSpaceShPtr& i_space, unsigned int i_first, const std::vector<double>& i_values)
{
  m_bottom.space = i_space;
  const std::size_t first = std::min<std::size_t>(i_first, i_values.size());
  fillFrom(i_values.data() + first, i_values.size() - first);
}

CorvConfig::CorvConfig(ClumCoder& i_coder, const std::string& i_key)
{
  decode(i_coder, i_key);
}

CorvConfig::CorvConfig(const ClumCoderShPtr& i_coder, const std::string& i_key)
{
  if (i_coder)
    decode(*i_coder, i_key);
}

void CorvConfig::fillFrom(const double* i_values, std::size_t i_count)
{
  if (!m_bottom.space)
    return;
  m_spaceVersion = m_validationSpaceVersion = m_bottom.space->version();
  m_bottom.nbSubspaces = m_bottom.space->countSubspaces();
  m_values.assign(m_bottom.space->size(), 0.0);
  std::copy_n(i_values, std::min(i_count, m_values.size()), m_values.begin());
}

CorvConfigShPtr CorvConfig::create()
{
  return CorvConfigShPtr(new CorvConfig);
}

CorvConfigShPtr CorvConfig::create(const CorvConfigSpaceShPtr& i_space)
{
  return CorvConfigShPtr(new CorvConfig(i_space));
}

CorvConfigShPtr CorvConfig::create(const CorvDeviceShPtr& i_device)
{
  return CorvConfigShPtr(new CorvConfig(i_device));
}

CorvConfigShPtr CorvConfig::create(const CorvConfigSpaceShPtr& i_space, const std::vector<double>& i_values)
{
  return CorvConfigShPtr(new CorvConfig(i_space, i_values));
}

CorvConfigShPtr CorvConfig::create(const CorvDeviceShPtr& i_device, const std::vector<double>& i_values)
{
  return CorvConfigShPtr(new CorvConfig(i_device, i_values));
}

CorvConfigShPtr CorvConfig::create(const CorvConfigSpaceShPtr& i_space, unsigned int i_first,
                                   const std::vector<double>& i_values)
{
  return CorvConfigShPtr(new CorvConfig(i_space, i_first, i_values));
}

CorvConfigShPtr CorvConfig::create(ClumCoder& i_coder, const std::string& i_key)
{
  return CorvConfigShPtr(new CorvConfig(i_coder, i_key));
}

CorvConfigShPtr CorvConfig::create(const ClumCoderShPtr& i_coder, const std::string& i_key)
{
  return CorvConfigShPtr(new CorvConfig(i_coder, i_key));
}

CorvConfigShPtr CorvConfig::create(const CorvConfig& i_config)
{
  return CorvConfigShPtr(new CorvConfig(i_config));
}

CorvDeviceShPtr CorvConfig::device() const
{
  return space() ? space()->device() : CorvDeviceShPtr();
}

unsigned int CorvConfig::size() const
{
  const CorvConfigSpaceShPtr& top = space();
  return top ? top->size() : 0;
}

bool CorvConfig::isConversionDue() const
{
  return m_walkDepth == 0 && m_bottom.space && m_spaceVersion != m_bottom.space->version();
}

// A conversion that failed is not tried again before the space changes once more, but shows as invalid each time.
void CorvConfig::selfConvert() const
{
  if (m_isConverting)
    return;
  const unsigned int version = m_bottom.space->version();
  if (!m_hasConversionFailed || m_failedVersion != version)
  {
    CorvConfig& self = const_cast<CorvConfig&>(*this);
    if (self.convertValues(m_bottom.space, nullptr).succeeded())
      return;
    m_hasConversionFailed = true;
    m_failedVersion = version;
  }
  if (report(CONVERSION_REPORT))
    return;
  const CorvValidationReportShPtr failure = CorvValidationReport::create();
  failure->isValid(false);
  setReport(CONVERSION_REPORT, failure);
}

// False if the values do not stand for the dofs of the space as it is now.
bool CorvConfig::bringUpToDate() const
{
  if (m_walkDepth != 0)
    return true;
  const CorvConfigSpace* space = m_bottom.space.get();
  if (!space)
    return false;
  if (m_spaceVersion != space->version())
  {
    selfConvert();
    if (m_spaceVersion != space->version() && !m_isConverting)
      return false;
  }
  if (space->hasComputedDofs())
    selfValidateWhenDue();
  return true;
}

bool CorvConfig::isPassive(unsigned int i_valueRank) const
{
  return m_bottom.space->hasPassiveDofs() && m_bottom.space->isDofPassive(i_valueRank);
}

double CorvConfig::dofValue(unsigned int i_rank) const
{
  const std::size_t rank = m_valueOffset + std::size_t(i_rank);
  const CorvConfigSpace* space = m_bottom.space.get();
  if (m_walkDepth == 0 && space)
  {
    if (m_spaceVersion != space->version())
      selfConvert();
    if (space->hasComputedDofs() && space->isDofComputed(i_rank))
      selfValidateWhenDue();
  }
  if (rank < m_values.size())
    return m_values[rank];
  ClumLogManager::addError(__FILE__, __LINE__, "A configuration was read at a rank that it does not have.");
  return 0.0;
}

void CorvConfig::dofValue(unsigned int i_rank, double i_value)
{
  if (isConversionDue())
    selfConvert();
  const std::size_t rank = m_valueOffset + std::size_t(i_rank);
  if (rank >= m_values.size())
  {
    ClumLogManager::addError(__FILE__, __LINE__, "A configuration was written at a rank that it does not have.");
    return;
  }
  if (isPassive(static_cast<unsigned int>(rank)))
  {
    if (m_isSelfValidating || !isSelfValidationEnabled())
      m_values[rank] = i_value;
    return;
  }
  if (m_values[rank] == i_value)
    return;
  m_values[rank] = i_value;
  didChange();
}

lmStatus CorvConfig::setDofValues(const std::vector<double>& i_values)
{
  if (i_values.size() != size())
    return -1;
  return setDofValues(i_values.data(), static_cast<unsigned int>(i_values.size()));
}

lmStatus CorvConfig::setDofValues(const double* i_values, unsigned int i_count)
{
  if (!m_bottom.space || i_count != size())
    return -1;
  if (isConversionDue())
    selfConvert();
  if (m_valueOffset + std::size_t(i_count) > m_values.size())
    return -1;
  if (m_bottom.space->hasPassiveDofs())
  {
    beginChange();
    for (unsigned int rank = 0; rank < i_count; ++rank)
      dofValue(rank, i_values[rank]);
    endChange();
    return lmStatus();
  }
  double* values = m_values.data() + m_valueOffset;
  if (std::equal(i_values, i_values + i_count, values))
    return lmStatus();
  std::copy_n(i_values, i_count, values);
  didChange();
  return lmStatus();
}

lmStatus CorvConfig::getDofValues(std::vector<double>& o_values) const
{
  const double* values = beginPtr();
  if (!values)
    return -1;
  o_values.assign(values, values + size());
  return lmStatus();
}

std::vector<double> CorvConfig::dofValues() const
{
  std::vector<double> values;
  getDofValues(values);
  return values;
}

const double* CorvConfig::beginPtr() const
{
  return bringUpToDate() ? m_values.data() + m_valueOffset : nullptr;
}

const double* CorvConfig::endValues() const
{
  const double* values = beginPtr();
  return values ? values + size() : nullptr;
}

std::pair<const double*, const double*> CorvConfig::valueRange() const
{
  const double* values = beginPtr();
  return std::make_pair(values, values ? values + size() : nullptr);
}

void CorvConfig::clear()
{
  if (!bringUpToDate())
    return;
  std::fill_n(m_values.begin() + m_valueOffset, size(), 0.0);
  didChange();
}

lmStatus CorvConfig::inject(const CorvConfig& i_subCfg)
{
  const double* values = i_subCfg.beginPtr();
  if (!values || !bringUpToDate())
    return -1;
  unsigned int first = 0;
  const lmStatus status = space()->getFirstDofRankOfSubspace(i_subCfg.space(), first);
  if (status.failed())
    return status;
  std::copy_n(values, i_subCfg.size(), m_values.begin() + m_valueOffset + first);
  didChange();
  return lmStatus();
}

CorvConfig CorvConfig::restrict(const CorvConfigSpaceShPtr& i_subspace) const
{
  unsigned int first = 0;
  if (!bringUpToDate() || space()->getFirstDofRankOfSubspace(i_subspace, first).failed())
    return CorvConfig();
  CorvConfig result;
  result.m_bottom.space = i_subspace;
  result.fillFrom(m_values.data() + m_valueOffset + first, i_subspace->size());
  return result;
}

CorvConfig CorvConfig::restrict(unsigned int i_subspaceRank) const
{
  unsigned int first = 0;
  if (!space() || space()->getFirstDofRankOfSubspace(i_subspaceRank, first).failed())
    return CorvConfig();
  return restrict(space()->subspace(i_subspaceRank));
}

lmStatus CorvConfig::convert() const
{
  if (m_walkDepth != 0)
    return lmStatus();
  if (!m_bottom.space)
    return -1;
  if (!isConversionDue())
    return lmStatus();
  selfConvert();
  return isConversionDue() ? lmStatus(-1) : lmStatus();
}

lmStatus CorvConfig::convert(const CorvConfigSpaceShPtr& i_space)
{
  return convertValues(i_space, nullptr);
}

lmStatus CorvConfig::convert(const CorvConfigSpaceShPtr& i_space, const std::vector<int>& i_map)
{
  return convertValues(i_space, &i_map);
}

lmStatus CorvConfig::makeDofMap(const CorvConfigSpaceShPtr& i_space, std::vector<int>& o_map) const
{
  o_map.clear();
  if (!i_space || !space())
    return -1;
  if ((m_spaceVersion & UNCHECKED) != 0)
    selfConvert();
  std::vector<CorvDofWkPtr> oldDofs;
  LUM_ASSERT_SUCCESS(space()->getDofsAtVersion(m_spaceVersion, oldDofs));
  if (oldDofs.size() != m_values.size())
    return -1;
  std::vector<const CorvDof*> old;
  for (const CorvDofWkPtr& dof : oldDofs)
    old.push_back(dof.lock().get());
  const unsigned int count = i_space->size();
  for (unsigned int rank = 0; rank < count; ++rank)
  {
    const auto found = std::find(old.begin(), old.end(), i_space->dof(rank).get());
    o_map.push_back(found == old.end() ? -1 : static_cast<int>(found - old.begin()));
  }
  return lmStatus();
}

// Values of a new space by a map; a dof that is new takes what stood at its rank. False if the map does not fit.
bool CorvConfig::makeConvertedValues(const CorvConfigSpace& i_space, const std::vector<int>* i_map,
                                     TValues& o_values) const
{
  const unsigned int count = i_space.size();
  const int oldCount = static_cast<int>(m_values.size());
  o_values.assign(count, 0.0);
  if (i_map->size() != count)
    return false;
  bool fits = true;
  for (unsigned int rank = 0; rank < count; ++rank)
  {
    const int from = (*i_map)[rank] >= 0 ? (*i_map)[rank] : static_cast<int>(rank);
    if (from < oldCount)
      o_values[rank] = m_values[from];
    else if ((*i_map)[rank] >= 0)
      fits = false;
  }
  return fits;
}

lmStatus CorvConfig::convertValues(const CorvConfigSpaceShPtr& i_space, const std::vector<int>* i_map)
{
  if (!i_space || !m_bottom.space || m_walkDepth != 0 || m_isConverting)
    return -1;
  const CorvConfigSpaceShPtr oldSpace = m_bottom.space;
  const unsigned int unchecked = m_spaceVersion & UNCHECKED;
  m_spaceVersion &= ~UNCHECKED;
  const bool hasOldDofs = oldSpace->hasSameDofsAtVersions(m_spaceVersion, oldSpace->version());
  const bool fitsOldSpace = hasOldDofs && oldSpace->size() == m_values.size();
  // Decoded values of the present version were only to be held against it.
  if (unchecked != 0 && fitsOldSpace && i_space == oldSpace && !i_map && m_spaceVersion == i_space->version())
    return lmStatus();
  m_isConverting = true;
  if (fitsOldSpace)
    selfValidateWhenDue();
  TValues values;
  bool isConverted = true;
  if (!i_map && i_space == oldSpace && fitsOldSpace)
    values = m_values;
  else
  {
    std::vector<int> map;
    isConverted = i_map || makeDofMap(i_space, map).succeeded();
    isConverted = isConverted && makeConvertedValues(*i_space, i_map ? i_map : &map, values);
  }
  m_isConverting = false;
  if (!isConverted)
  {
    m_spaceVersion |= unchecked;
    return -1;
  }

  m_spaceVersion = i_space->version();
  m_hasConversionFailed = false;
  m_bottom.nbSubspaces = i_space->countSubspaces();
  if (i_space == oldSpace && values == m_values)
    return lmStatus();
  m_bottom.space = i_space;
  m_bottom.index = 0;
  m_valueOffset = 0;
  m_values.swap(values);
  convertToSpace(i_space);
  return lmStatus();
}

lmStatus CorvConfig::changeSpaceWithoutInvalidation(const CorvConfigSpaceShPtr& i_space)
{
  if (!i_space || !m_bottom.space || m_walkDepth != 0)
    return -1;
  if (i_space == m_bottom.space)
    return lmStatus();
  if (convert().failed() || !i_space->hasSameDofsAs(*m_bottom.space))
    return -1;
  const bool isValidated = m_validationSpaceVersion == m_bottom.space->version();
  m_bottom.space = i_space;
  m_bottom.nbSubspaces = i_space->countSubspaces();
  m_spaceVersion = i_space->version();
  m_validationSpaceVersion = isValidated ? m_spaceVersion : 0;
  return lmStatus();
}

void CorvConfig::copyWalk(const CorvConfig& i_other)
{
  if (this == &i_other)
    return;
  m_walkDepth = i_other.m_walkDepth;
  if (m_walkDepth == 0)
    m_walk->clear();
  else
    m_walk.reset(new std::vector<CFrame>(*i_other.m_walk));
}

void CorvConfig::pushFrame(const CorvConfigSpaceShPtr& i_space, unsigned int i_offset) const
{
  if (!m_walk)
    m_walk.reset(new std::vector<CFrame>);
  CFrame frame;
  frame.space = i_space;
  frame.nbSubspaces = i_space->countSubspaces();
  frame.outerOffset = m_valueOffset;
  m_walk->push_back(frame);
  m_valueOffset += i_offset;
  ++m_walkDepth;
}

void CorvConfig::popFrame() const
{
  m_valueOffset = m_walk->back().outerOffset;
  m_walk->pop_back();
  --m_walkDepth;
}

lmStatus CorvConfig::endFrame() const
{
  if (m_walkDepth == 0)
    return -1;
  popFrame();
  return lmStatus();
}

lmStatus CorvConfig::nextFrame(const CorvConfigSpaceShPtr& i_space, unsigned int i_step) const
{
  if (!i_space)
    return -1;
  CFrame& frame = m_walk->back();
  frame.space = i_space;
  frame.nbSubspaces = i_space->countSubspaces();
  ++frame.index;
  m_valueOffset += i_step;
  return lmStatus();
}

lmStatus CorvConfig::pushSpace() const
{
  if (!bringUpToDate() || space()->unwrapped().countSubspaces() == 0)
    return -1;
  pushFrame(space()->unwrapped().subspace(0), 0);
  return lmStatus();
}

lmStatus CorvConfig::nextSubspace() const
{
  if (m_walkDepth == 0)
    return -1;
  const CFrame& outer = m_walkDepth == 1 ? m_bottom : (*m_walk)[m_walkDepth - 2];
  const CFrame& frame = m_walk->back();
  return nextFrame(outer.space->unwrapped().subspace(frame.index + 1), frame.space->size());
}

lmStatus CorvConfig::popSpace() const
{
  return endFrame();
}

lmStatus CorvConfig::walkDofs() const
{
  if (!bringUpToDate() || space()->size() == 0)
    return -1;
  pushFrame(space()->dof(0), 0);
  return lmStatus();
}

lmStatus CorvConfig::nextDof() const
{
  if (m_walkDepth == 0)
    return -1;
  const CFrame& outer = m_walkDepth == 1 ? m_bottom : (*m_walk)[m_walkDepth - 2];
  const unsigned int next = m_walk->back().index + 1;
  return next < outer.space->size() ? nextFrame(outer.space->dof(next), 1) : lmStatus(-1);
}

lmStatus CorvConfig::endWalk() const
{
  return endFrame();
}

lmStatus CorvConfig::pushRestriction(const CorvConfigSpaceShPtr& i_subspace) const
{
  unsigned int first = 0;
  if (!bringUpToDate() || !i_subspace || space()->getFirstDofRankOfSubspace(*i_subspace, first).failed())
    return -1;
  pushFrame(i_subspace, first);
  return lmStatus();
}

lmStatus CorvConfig::popRestriction() const
{
  return endFrame();
}

double CorvConfig::distanceTo(const CorvConfig& i_config) const
{
  const CorvConfigSpaceShPtr& top = space();
  if (!top || !top->metric())
    return std::numeric_limits<double>::infinity();
  return top->size() == 0 ? 0.0 : top->metric()->distance(*this, i_config);
}

double CorvConfig::squaredDistanceTo(const CorvConfig& i_config) const
{
  const CorvConfigSpaceShPtr& top = space();
  if (!top || !top->metric())
    return std::numeric_limits<double>::infinity();
  return top->size() == 0 ? 0.0 : top->metric()->squaredDistance(*this, i_config);
}

bool CorvConfig::isEquivalent(const CorvConfig& i_config) const
{
  if (this == &i_config)
    return true;
  if (space() != i_config.space() || !bringUpToDate() || !i_config.bringUpToDate())
    return false;
  return EQUIVALENCE_DISTANCE >= distanceTo(i_config);
}

void CorvConfig::randomize()
{
  if (!bringUpToDate())
    return;
  beginChange();
  const unsigned int count = size();
  for (unsigned int rank = 0; rank < count; ++rank)
    if (m_bottom.space->isDofFree(m_valueOffset + rank))
      randomizeDof(rank);
  didChange();
  endChange();
}

void CorvConfig::randomizeDof(unsigned int i_rank)
{
  const CorvDofShPtr dof = space()->dof(i_rank);
  if (dof->isBounded() && std::isfinite(dof->lowerBound()) && std::isfinite(dof->upperBound()))
  {
    dofValue(i_rank, CorvUtility::random(dof->lowerBound(), dof->upperBound()));
    return;
  }
  if (!dof->metric())
    return;
  if (const CorvRandomWalkConstShPtr walk = dof->metric()->randomWalk())
  {
    pushFrame(dof, i_rank);
    walk->step(1.0, *this);
    popFrame();
  }
}

void CorvConfig::randomStep(double i_step)
{
  if (!space() || !space()->metric())
    return;
  const CorvMetricShPtr metric = space()->metric();
  beginChange();
  metric->randomStep(*this, i_step, *this);
  endChange();
}

lmStatus CorvConfig::isColliding(bool& o_isColliding) const
{
  return isColliding(ClumParameterMapConstShPtr(), o_isColliding);
}

lmStatus CorvConfig::isColliding(const ClumParameterMapConstShPtr& i_params, bool& o_isColliding) const
{
  const CorvDeviceShPtr ownDevice = device();
  const CorvValidatorCfgCollisionBaseShPtr validator =
    ownDevice ? ownDevice->collisionValidator() : CorvValidatorCfgCollisionBaseShPtr();
  if (!validator || !bringUpToDate())
    return -1;
  const CorvConfigSpaceShPtr judged = validator->configSpace();
  if (judged == space())
  {
    o_isColliding = !validator->validate(*this, i_params);
    return lmStatus();
  }
  if (pushRestriction(judged).failed())
    return -1;
  o_isColliding = !validator->validate(*this, i_params);
  popFrame();
  return lmStatus();
}

lmStatus CorvConfig::getBodyMatVector(std::vector<ClumMat4>& o_matrices) const
{
  const CorvDeviceShPtr ownDevice = device();
  return ownDevice ? ownDevice->computeBodyPositions(*this, o_matrices) : lmStatus(-1);
}

CorvManifoldShPtr CorvConfig::toManifold(const CorvConfigSpaceShPtr& i_ambientSpace) const
{
  return CorvPointManifold::create(*this, i_ambientSpace);
}

lmStatus CorvConfig::getJointMatVector(std::vector<ClumMat4>& o_matrices) const
{
  const CorvDeviceShPtr ownDevice = device();
  if (!ownDevice)
    return -1;
  std::vector<ClumMat4> matrices(ownDevice->countJoints());
  for (unsigned int rank = 0; rank < matrices.size(); ++rank)
  {
    const lmStatus status = ownDevice->getJointPosition(ownDevice->joint(rank), *this, matrices[rank]);
    if (status.failed())
      return status;
  }
  o_matrices.swap(matrices);
  return lmStatus();
}

lmStatus CorvConfig::getJointAbsoluteMatVector(std::vector<ClumMat4>& o_matrices) const
{
  const CorvDeviceShPtr ownDevice = device();
  return ownDevice ? ownDevice->computeJointPositions(*this, o_matrices) : lmStatus(-1);
}

bool CorvConfig::validate(const ClumParameterMapConstShPtr& i_params) const
{
  if (space())
    space()->applyValidatorsOn(*this, i_params);
  return isValid();
}

bool CorvConfig::needsRevalidationWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params,
                                       const CorvValidationReportConstShPtr& i_report) const
{
  return i_validator.shouldRevalidateConfig(*this, i_params, i_report);
}

CorvValidatorShPtr CorvConfig::designatedValidator() const
{
  return space() ? CorvValidatorShPtr(space()->configValidators()) : CorvValidatorShPtr();
}

bool CorvConfig::mustSelfValidate() const
{
  return m_bottom.space && m_validationSpaceVersion != m_bottom.space->version();
}

bool CorvConfig::doSelfValidate()
{
  if (!m_bottom.space)
    return true;
  if (isConversionDue())
    selfConvert();
  m_validationSpaceVersion = m_bottom.space->version();
  if (isConversionDue() && !m_isConverting)
    return false;
  m_isSelfValidating = true;
  const bool isValid = m_bottom.space->applyConstraintsOn(*this, ClumParameterMapConstShPtr());
  m_isSelfValidating = false;
  return isValid;
}

bool CorvConfig::doValidateWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params,
                                const CorvValidationReportConstShPtr& i_report, CorvValidationReportShPtr& o_report)
{
  return i_validator.doValidateConfig(*this, i_params, i_report, o_report);
}

template <class OPERATION>
CorvConfig& CorvConfig::combine(const CorvConfig& i_config, OPERATION i_operation)
{
  std::vector<double> myValues;
  std::vector<double> otherValues;
  LUM_ASSERT_SUCCESS(getDofValues(myValues));
  LUM_ASSERT_SUCCESS(i_config.getDofValues(otherValues));
  const std::size_t count = std::min(myValues.size(), otherValues.size());
  std::transform(myValues.begin(), myValues.begin() + count, otherValues.begin(), myValues.begin(), i_operation);
  LUM_ASSERT_SUCCESS(setDofValues(myValues));
  return *this;
}

CorvConfig CorvConfig::operator+(const CorvConfig& i_config) const
{
  return CorvConfig(*this) += i_config;
}

CorvConfig CorvConfig::operator-(const CorvConfig& i_config) const
{
  return CorvConfig(*this) -= i_config;
}

CorvConfig CorvConfig::operator*(double i_factor) const
{
  return CorvConfig(*this) *= i_factor;
}

CorvConfig CorvConfig::operator/(double i_divisor) const
{
  return *this * (1.0 / i_divisor);
}

CorvConfig& CorvConfig::operator+=(const CorvConfig& i_config)
{
  return combine(i_config, [](double i_mine, double i_other) { return i_mine + i_other; });
}

CorvConfig& CorvConfig::operator-=(const CorvConfig& i_config)
{
  return combine(i_config, [](double i_mine, double i_other) { return i_mine - i_other; });
}

CorvConfig& CorvConfig::operator*=(double i_factor)
{
  return combine(*this, [i_factor](double i_mine, double) { return i_mine * i_factor; });
}

bool CorvConfig::operator==(const CorvConfig& i_config) const
{
  if (this == &i_config)
    return true;
  if (space() != i_config.space())
    return false;
  const std::pair<const double*, const double*> mine = valueRange();
  const std::pair<const double*, const double*> other = i_config.valueRange();
  if (!mine.first || !other.first)
    return !mine.first && !other.first && m_values == i_config.m_values;
  return std::equal(mine.first, mine.second, other.first, other.second);
}

CorvConfig CorvConfig::canonical() const
{
  CorvConfig result(*this);
  if (!result.bringUpToDate())
    return result;
  bool isChanged = false;
  for (unsigned int rank = 0; rank < result.m_values.size(); ++rank)
  {
    double& value = result.m_values[rank];
    const double reduced =
      m_bottom.space->hasDofFlag(rank, CorvConfigSpace::CIRCULAR) ? CorvMetricRevolute::limitAngle(value) : value;
    isChanged = isChanged || reduced != value;
    value = reduced;
  }
  if (isChanged)
    result.didChange();
  return result;
}

std::size_t CorvConfig::hash::operator()(const CorvConfig& i_config) const
{
  const std::pair<const double*, const double*> values = i_config.valueRange();
  std::uint32_t result = 0;
  for (const double* value = values.first; value != values.second; ++value)
    addToHash(*value, result);
  return result;
}

std::size_t CorvConfig::canonical_hash::operator()(const CorvConfig& i_config) const
{
  const std::pair<const double*, const double*> values = i_config.valueRange();
  const CorvConfigSpace* space = i_config.m_bottom.space.get();
  unsigned int rank = i_config.m_valueOffset;
  std::uint32_t result = 0;
  for (const double* value = values.first; value != values.second; ++value, ++rank)
    addToHash(space->hasDofFlag(rank, CorvConfigSpace::CIRCULAR) ? CorvMetricRevolute::limitAngle(*value) : *value,
              result);
  return result;
}

bool CorvConfig::less::operator()(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  if (&i_a == &i_b || i_a.isEquivalent(i_b))
    return false;
  const std::pair<const double*, const double*> a = i_a.valueRange();
  const std::pair<const double*, const double*> b = i_b.valueRange();
  return std::lexicographical_compare(a.first, a.second, b.first, b.second);
}

bool CorvConfig::equivalent_to::operator()(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return i_a.isEquivalent(i_b);
}

bool CorvConfig::canonically_equal_to::operator()(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  if (&i_a == &i_b)
    return true;
  if (i_a.space() != i_b.space())
    return false;
  const std::pair<const double*, const double*> a = i_a.valueRange();
  const std::pair<const double*, const double*> b = i_b.valueRange();
  if (!a.first || !b.first)
    return i_a == i_b;
  const CorvConfigSpace* space = i_a.m_bottom.space.get();
  for (unsigned int rank = 0; a.first + rank != a.second; ++rank)
  {
    const double x = a.first[rank];
    const double y = b.first[rank];
    const bool isCircular = space->hasDofFlag(i_a.m_valueOffset + rank, CorvConfigSpace::CIRCULAR);
    if (x != y && !(isCircular && CorvMetricRevolute::limitAngle(x) == CorvMetricRevolute::limitAngle(y)))
      return false;
  }
  return true;
}

void CorvConfig::encodeValueWithCoder(ClumCoder& i_coder, const std::string& i_key) const
{
  if (isConversionDue())
    selfConvert();
  const CorvConfigSpaceShPtr& ownSpace = m_bottom.space;
  ClumMemoryCoder* memory = dynamic_cast<ClumMemoryCoder*>(&i_coder);
  if (memory && ownSpace)
    memory->pin(ownSpace.get());
  i_coder.encodeObjectShPtr(ownSpace, i_key + "/configSpace");
  i_coder.encodeUnsignedInt(m_spaceVersion & ~UNCHECKED, i_key + "/spaceVersion");
  i_coder.encodeUnsignedInt(m_validationSpaceVersion, i_key + "/validationSpaceVersion");
  i_coder.encodeUnsignedInt(m_bottom.nbSubspaces, i_key + "/nbSubspaces");
  i_coder.encodeDoubleVector(std::vector<double>(m_values.begin(), m_values.end()), i_key + "/dofValues");
}

bool CorvConfig::hasSoundValues() const
{
  const CorvConfigSpace* space = m_bottom.space.get();
  if (!space)
    return false;
  const unsigned int version = m_spaceVersion & ~UNCHECKED;
  if (space->hasSameDofsAtVersions(version, space->version()))
    return space->size() == m_values.size();
  std::vector<CorvDofWkPtr> dofs;
  return space->getDofsAtVersion(version, dofs).succeeded() && dofs.size() == m_values.size();
}

std::string CorvConfig::textualDump() const
{
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  encodeValueWithCoder(*coder, "config");
  return coder->data();
}

void CorvConfig::decode(ClumCoder& i_coder, const std::string& i_key)
{
  m_bottom.space = i_coder.decode<CorvConfigSpace>(i_key + "/configSpace");
  m_spaceVersion = i_coder.decodeUnsignedInt(i_key + "/spaceVersion") | UNCHECKED;
  m_validationSpaceVersion = i_coder.decodeUnsignedInt(i_key + "/validationSpaceVersion");
  if (i_coder.hasKey(i_key + "/nbSubspaces"))
    m_bottom.nbSubspaces = i_coder.decodeUnsignedInt(i_key + "/nbSubspaces");
  else if (m_bottom.space)
  {
    ClumLogManager::addWarning("Configuration '" + i_key + "' might be decoded incorrectly " +
                               "because of missing 'nbSubspaces' data. Probably decoding an old XML file.");
    m_bottom.nbSubspaces = m_bottom.space->countSubspaces();
  }
  std::vector<double> values;
  i_coder.decodeDoubleVector(i_key + "/dofValues", values);
  m_values.assign(values.begin(), values.end());
}
