#include "kinematics/orvConfigSpace.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumXMLCoder.h"
#include "kinematics/orvCSGroup.h"
#include "kinematics/orvCloner.h"
#include "kinematics/orvConfigSpaceCaches.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJoint.h"
#include "metrics/orvMetricEuclidean.h"
#include "paths/orvSMComposite.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>

LUM_DESCRIBE(CorvConfigSpace)
{
  i_class.property<CorvValidatorSetShPtr>("directPathValidators", &Self::directPathValidators);
  i_class.property<CorvSteeringMethodShPtr>("steeringMethod", &Self::steeringMethod, &Self::steeringMethod);
  i_class.collection<CorvDofShPtr>("dofs", "CorvDofShPtr", &Self::size, &Self::dof);
}

CorvConfigSpace::CorvConfigSpace() = default;

CorvConfigSpace::CorvConfigSpace(const std::string& i_type) : m_type(i_type)
{
}

CorvConfigSpace::~CorvConfigSpace() = default;

lmStatus CorvConfigSpace::init(const CorvConfigSpaceWkPtr& i_weakPtr)
{
  const lmStatus status = ClumMutableCodable::init(i_weakPtr);
  if (status.failed())
    return status;
  if (m_type.empty())
    return -1;
  for (const TStackMember stack : {&CorvConfigSpace::m_constraints, &CorvConfigSpace::m_configValidators,
                                   &CorvConfigSpace::m_directPathValidators, &CorvConfigSpace::m_pathValidators})
  {
    const CorvValidatorSetShPtr set = makeValidatorSet();
    if (!set)
      return -1;
    (this->*stack).assign(1, set);
  }
  if (!m_wrapped && !m_steeringMethod)
    m_steeringMethod = CorvSMComposite::create();
  if (!m_wrapped && !m_metric)
    m_metric = CorvMetricEuclidean::create();
  return lmStatus();
}

CorvConfigSpaceShPtr CorvConfigSpace::createCopy(const CorvConfigSpaceConstShPtr& i_objectToCopy)
{
  if (!i_objectToCopy)
    return CorvConfigSpaceShPtr();
  const CorvClonerShPtr cloner = CorvCloner::create();
  if (cloner->encodeObjectShPtr(i_objectToCopy, "object").failed())
    return CorvConfigSpaceShPtr();
  return boost::dynamic_pointer_cast<CorvConfigSpace>(cloner->decodeObject("object"));
}

CorvConfigSpaceShPtr CorvConfigSpace::clone() const
{
  return createCopy(self());
}

void CorvConfigSpace::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumMutableCodable::encodeWithCoder(i_coder);
  const auto top = [](const TStack& i_stack)
  {
    const bool isKept = !i_stack.empty() && i_stack.back() != CorvValidatorSet::emptySet();
    return isKept ? i_stack.back() : CorvValidatorSetShPtr();
  };
  i_coder->encodeString(m_type, "type");
  i_coder->encodeWeakObjectWkPtr(m_parent, "parent");
  i_coder->encodeWeakObjectWkPtr(m_device, "device");
  i_coder->encodeWeakObjectWkPtr(m_joint, "joint");
  i_coder->encodeObjectShPtr(m_steeringMethod, "steeringMethod");
  i_coder->encodeObjectShPtr(m_metric, "metric");
  i_coder->encodeObjectShPtr(top(m_constraints), "constraints");
  i_coder->encodeObjectShPtr(top(m_configValidators), "configValidators");
  i_coder->encodeObjectShPtr(top(m_directPathValidators), "directPathValidators");
  i_coder->encodeObjectShPtr(top(m_pathValidators), "pathValidators");
  // Configurations that are encoded later refer to this version.
  i_coder->encodeUnsignedInt(version(), "version");
  i_coder->beginVectorEncoding("dofsOfThisVersion");
  for (const auto& [version, dofs] : m_dofsOfThisVersion)
  {
    i_coder->encodeUnsignedInt(version, "version");
    i_coder->encodeWeakObjectWkPtrVector(std::vector<ClumCodableConstWkPtr>(dofs->begin(), dofs->end()), "dofs");
  }
  i_coder->endVectorEncoding();
}

lmStatus CorvConfigSpace::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_type = i_coder->decodeString("type");
  m_parent = i_coder->decodeWeak<CorvConfigSpace>("parent");
  if (isInsideItself())
  {
    m_parent.reset();
    return -1;
  }
  m_device = i_coder->decodeWeak<CorvDevice>("device");
  m_joint = i_coder->decodeWeak<CorvJoint>("joint");
  m_steeringMethod = i_coder->decode<CorvSteeringMethod>("steeringMethod");
  m_metric = i_coder->decode<CorvMetric>("metric");
  // The shared empty set is not stored.
  const auto decodeStack = [&](TStackMember i_stack, const char* i_key)
  {
    const CorvValidatorSetShPtr set = i_coder->decode<CorvValidatorSet>(i_key);
    (this->*i_stack).assign(1, set ? set : CorvValidatorSet::emptySet());
  };
  decodeStack(&CorvConfigSpace::m_constraints, "constraints");
  decodeStack(&CorvConfigSpace::m_configValidators, "configValidators");
  decodeStack(&CorvConfigSpace::m_directPathValidators, "directPathValidators");
  decodeStack(&CorvConfigSpace::m_pathValidators, "pathValidators");
  m_version = i_coder->decodeUnsignedInt("version");
  i_coder->beginVectorDecoding("dofsOfThisVersion");
  while (i_coder->canContinueVectorDecoding())
  {
    const unsigned int version = i_coder->decodeUnsignedInt("version");
    std::vector<ClumCodableShPtr> objects;
    i_coder->decodeWeakObjectShPtrVector("dofs", objects);
    const ShPtr<std::vector<CorvDofWkPtr>> dofs(new std::vector<CorvDofWkPtr>);
    for (const ClumCodableShPtr& object : objects)
      dofs->push_back(boost::dynamic_pointer_cast<CorvDof>(object));
    keepDofs(version, dofs);
  }
  i_coder->endVectorDecoding();
  const bool isPlausible = !m_type.empty() && m_version <= MAX_VERSION;
  return isPlausible ? lmStatus() : lmStatus(-1);
}

unsigned int CorvConfigSpace::size() const
{
  if (!m_isCacheValid)
    updateCache();
  return static_cast<unsigned int>(m_dofs.size());
}

CorvDofShPtr CorvConfigSpace::dof(unsigned int i_rank) const
{
  if (i_rank < size())
    return m_dofs[i_rank];
  ClumLogManager::addError(__FILE__, __LINE__, "A config space was asked for a dof that it does not have.");
  return CorvDofShPtr();
}

lmStatus CorvConfigSpace::getDofs(std::vector<CorvDofShPtr>& o_dofs) const
{
  if (!m_isCacheValid)
    updateCache();
  o_dofs = m_dofs;
  return lmStatus();
}

lmStatus CorvConfigSpace::insertSubspace(const CorvConfigSpaceShPtr&, unsigned int)
{
  return -1;
}

CorvConfigSpaceShPtr CorvConfigSpace::subspace(unsigned int) const
{
  return CorvConfigSpaceShPtr();
}

unsigned int CorvConfigSpace::countSubspaces() const
{
  return 0;
}

lmStatus CorvConfigSpace::removeSubspace(unsigned int)
{
  return -1;
}

void CorvConfigSpace::steeringMethod(const CorvSteeringMethodShPtr& i_steeringMethod)
{
  if (i_steeringMethod == m_steeringMethod)
    return;
  notifyPropertyWillChange("steeringMethod");
  m_steeringMethod = i_steeringMethod;
  invalidateCache();
  notifyPropertyDidChange("steeringMethod");
}

const CorvSteeringMethodShPtr& CorvConfigSpace::steeringMethod() const
{
  return m_steeringMethod;
}

bool CorvConfigSpace::operator==(const CorvConfigSpace& i_other) const
{
  const auto areEqual = [](const auto& i_a, const auto& i_b) { return i_a && i_b ? *i_a == *i_b : !i_a && !i_b; };
  return m_type == i_other.m_type && areEqual(steeringMethod(), i_other.steeringMethod()) &&
         areEqual(metric(), i_other.metric()) && areEqual(constraints(), i_other.constraints()) &&
         areEqual(configValidators(), i_other.configValidators()) &&
         areEqual(directPathValidators(), i_other.directPathValidators()) &&
         areEqual(pathValidators(), i_other.pathValidators());
}

// An object that is being decoded has no stacks yet.
const CorvValidatorSetShPtr& CorvConfigSpace::spaceConstraints() const
{
  return m_constraints.empty() ? CorvValidatorSet::emptySet() : m_constraints.back();
}

const CorvValidatorSetShPtr& CorvConfigSpace::spaceConfigValidators() const
{
  return m_configValidators.empty() ? CorvValidatorSet::emptySet() : m_configValidators.back();
}

const CorvValidatorSetShPtr& CorvConfigSpace::spaceDirectPathValidators() const
{
  return m_directPathValidators.empty() ? CorvValidatorSet::emptySet() : m_directPathValidators.back();
}

const CorvValidatorSetShPtr& CorvConfigSpace::spacePathValidators() const
{
  return m_pathValidators.empty() ? CorvValidatorSet::emptySet() : m_pathValidators.back();
}

const CorvMetricShPtr& CorvConfigSpace::spaceMetric() const
{
  return m_metric;
}

void CorvConfigSpace::spaceMetric(const CorvMetricShPtr& i_metric)
{
  if (i_metric == m_metric)
    return;
  m_metric = i_metric;
  invalidateCache();
}

void CorvConfigSpace::willReturnConfigValidators(const CorvValidatorSetShPtr&) const
{
}

CorvValidatorSetShPtr CorvConfigSpace::makeValidatorSet() const
{
  return CorvValidatorSet::create(self());
}

void CorvConfigSpace::invalidateCache()
{
  ++m_version;
  m_isVersionRecorded = false;
  m_isCacheValid = false;
  m_isPassiveDataValid = false;
  m_constraintCache.reset();
  m_validatorCache.reset();
  if (const CorvConfigSpaceShPtr enclosing = m_parent.lock())
    enclosing->invalidateCache();
  for (std::size_t rank = 0; rank < m_groups.size(); ++rank)
    if (const CorvConfigSpaceShPtr group = m_groups[rank].lock())
      group->invalidateCache();
}

const CorvValidatorSetShPtr& CorvConfigSpace::configValidators() const
{
  willReturnConfigValidators(spaceConfigValidators());
  return spaceConfigValidators();
}

lmStatus CorvConfigSpace::pushConstraints()
{
  return pushCopyOfTop(&CorvConfigSpace::m_constraints);
}

lmStatus CorvConfigSpace::pushConfigValidators()
{
  return pushCopyOfTop(&CorvConfigSpace::m_configValidators);
}

lmStatus CorvConfigSpace::pushDirectPathValidators()
{
  return pushCopyOfTop(&CorvConfigSpace::m_directPathValidators);
}

lmStatus CorvConfigSpace::pushPathValidators()
{
  return pushCopyOfTop(&CorvConfigSpace::m_pathValidators);
}

lmStatus CorvConfigSpace::pushConstraints(const CorvValidatorSetShPtr& i_set)
{
  return pushSet(&CorvConfigSpace::m_constraints, i_set);
}

lmStatus CorvConfigSpace::pushConfigValidators(const CorvValidatorSetShPtr& i_set)
{
  return pushSet(&CorvConfigSpace::m_configValidators, i_set);
}

lmStatus CorvConfigSpace::pushDirectPathValidators(const CorvValidatorSetShPtr& i_set)
{
  return pushSet(&CorvConfigSpace::m_directPathValidators, i_set);
}

lmStatus CorvConfigSpace::pushPathValidators(const CorvValidatorSetShPtr& i_set)
{
  return pushSet(&CorvConfigSpace::m_pathValidators, i_set);
}

lmStatus CorvConfigSpace::popConstraints()
{
  return popSet(&CorvConfigSpace::m_constraints);
}

lmStatus CorvConfigSpace::popConfigValidators()
{
  return popSet(&CorvConfigSpace::m_configValidators);
}

lmStatus CorvConfigSpace::popDirectPathValidators()
{
  return popSet(&CorvConfigSpace::m_directPathValidators);
}

lmStatus CorvConfigSpace::popPathValidators()
{
  return popSet(&CorvConfigSpace::m_pathValidators);
}

// The stacks of a wrapper are those of the space that it wraps.
lmStatus CorvConfigSpace::pushSet(TStackMember i_stack, const CorvValidatorSetShPtr& i_set)
{
  if (!i_set)
    return -1;
  CorvConfigSpace& owner = const_cast<CorvConfigSpace&>(unwrapped());
  (owner.*i_stack).push_back(i_set);
  owner.invalidateCache();
  return lmStatus();
}

lmStatus CorvConfigSpace::pushCopyOfTop(TStackMember i_stack)
{
  const TStack& stack = unwrapped().*i_stack;
  if (stack.empty())
    return -1;
  if (stack.back() == CorvValidatorSet::emptySet())
    return pushSet(i_stack, stack.back());
  return pushSet(i_stack, CorvValidatorSet::createCopy(stack.back()));
}

lmStatus CorvConfigSpace::popSet(TStackMember i_stack)
{
  CorvConfigSpace& owner = const_cast<CorvConfigSpace&>(unwrapped());
  if ((owner.*i_stack).size() < 2)
    return -1;
  (owner.*i_stack).pop_back();
  owner.invalidateCache();
  return lmStatus();
}

unsigned int CorvConfigSpace::recordVersion() const
{
  std::vector<CorvDofShPtr> dofs;
  getDofs(dofs);
  keepDofs(m_version, TDofList(new std::vector<CorvDofWkPtr>(dofs.begin(), dofs.end())));
  m_isVersionRecorded = true;
  return m_version;
}

// A version shares its list with the one before if the dofs are the same.
void CorvConfigSpace::keepDofs(unsigned int i_version, const TDofList& i_dofs) const
{
  const auto next = m_dofsOfThisVersion.lower_bound(i_version);
  const auto isSame = [](const CorvDofWkPtr& i_old, const CorvDofWkPtr& i_new)
  { return !i_old.owner_before(i_new) && !i_new.owner_before(i_old); };
  const TDofList last = next == m_dofsOfThisVersion.begin() ? TDofList() : std::prev(next)->second;
  const bool isAsBefore = last && std::equal(last->begin(), last->end(), i_dofs->begin(), i_dofs->end(), isSame);
  m_dofsOfThisVersion[i_version] = isAsBefore ? last : i_dofs;
}

lmStatus CorvConfigSpace::getDofsAtVersion(unsigned int i_version, std::vector<CorvDofWkPtr>& o_dofs) const
{
  o_dofs.clear();
  const auto found = m_dofsOfThisVersion.find(i_version);
  if (found == m_dofsOfThisVersion.end())
    return -1;
  o_dofs = *found->second;
  return lmStatus();
}

bool CorvConfigSpace::hasSameDofsAtVersions(unsigned int i_a, unsigned int i_b) const
{
  const auto a = m_dofsOfThisVersion.find(i_a);
  const auto b = m_dofsOfThisVersion.find(i_b);
  return a != m_dofsOfThisVersion.end() && b != m_dofsOfThisVersion.end() && a->second == b->second;
}

bool CorvConfigSpace::hasSameDofsAs(const CorvConfigSpace& i_other) const
{
  if (&unwrapped() == &i_other.unwrapped())
    return true;
  std::vector<CorvDofShPtr> mine;
  std::vector<CorvDofShPtr> others;
  return getDofs(mine).succeeded() && i_other.getDofs(others).succeeded() && mine == others;
}

void CorvConfigSpace::parent(const CorvConfigSpaceShPtr& i_parent)
{
  m_parent = i_parent;
}

bool CorvConfigSpace::isInsideItself() const
{
  CorvConfigSpaceShPtr enclosing = m_parent.lock();
  while (enclosing && enclosing.get() != this)
    enclosing = enclosing->m_parent.lock();
  return static_cast<bool>(enclosing);
}

CorvConfigSpaceShPtr CorvConfigSpace::root() const
{
  CorvConfigSpaceShPtr top = self();
  while (const CorvConfigSpaceShPtr enclosing = top->parent())
    top = enclosing;
  return top;
}

void CorvConfigSpace::device(const CorvDeviceShPtr& i_device)
{
  m_device = i_device;
}

void CorvConfigSpace::joint(const CorvJointShPtr& i_joint)
{
  m_joint = i_joint;
}

lmStatus CorvConfigSpace::appendSubspace(const CorvConfigSpaceShPtr& i_subspace)
{
  return insertSubspace(i_subspace, countSubspaces());
}

lmStatus CorvConfigSpace::removeSubspace(const CorvConfigSpaceShPtr& i_subspace)
{
  unsigned int rank = 0;
  const lmStatus status = getRankOfSubspace(i_subspace, rank);
  return status.failed() ? status : removeSubspace(rank);
}

lmStatus CorvConfigSpace::clear()
{
  while (countSubspaces() != 0)
  {
    const lmStatus status = removeSubspace(0u);
    if (status.failed())
      return status;
  }
  return lmStatus();
}

bool CorvConfigSpace::includes(const CorvConfigSpace& i_space) const
{
  const CorvConfigSpace& space = unwrapped();
  if (&space == &i_space.unwrapped())
    return true;
  const unsigned int count = space.countSubspaces();
  for (unsigned int rank = 0; rank < count; ++rank)
    if (space.subspace(rank)->includes(i_space))
      return true;
  return false;
}

bool CorvConfigSpace::includes(const CorvConfigSpaceConstShPtr& i_space) const
{
  return i_space && includes(*i_space);
}

lmStatus CorvConfigSpace::getRankOfSubspace(const CorvConfigSpaceConstShPtr& i_subspace, unsigned int& o_rank) const
{
  const unsigned int count = countSubspaces();
  for (unsigned int rank = 0; rank < count; ++rank)
    if (subspace(rank) == i_subspace)
    {
      o_rank = rank;
      return lmStatus();
    }
  return -1;
}

void CorvConfigSpace::updateCache() const
{
  m_dofs.clear();
  m_firstDofRanks.clear();
  fillCache(*this);
  m_isCacheValid = true;
}

// A dof keeps no list of dofs, in which it would hold itself.
void CorvConfigSpace::fillCache(const CorvConfigSpace& i_space) const
{
  m_firstDofRanks.emplace(&i_space, static_cast<unsigned int>(m_dofs.size()));
  if (const CorvDof* leaf = dynamic_cast<const CorvDof*>(&i_space))
  {
    if (leaf != this)
      m_dofs.push_back(leaf->self());
    return;
  }
  const unsigned int count = i_space.countSubspaces();
  for (unsigned int rank = 0; rank < count; ++rank)
    fillCache(*i_space.subspace(rank));
}

lmStatus CorvConfigSpace::getFirstDofRankOfSubspace(const CorvConfigSpace& i_subspace, unsigned int& o_rank) const
{
  if (!m_isCacheValid)
    updateCache();
  auto found = m_firstDofRanks.find(&i_subspace);
  if (found == m_firstDofRanks.end())
    found = m_firstDofRanks.find(&i_subspace.unwrapped());
  if (found == m_firstDofRanks.end())
  {
    if (&unwrapped() != &i_subspace.unwrapped())
      return -1;
    o_rank = 0;
    return lmStatus();
  }
  o_rank = found->second;
  return lmStatus();
}

lmStatus CorvConfigSpace::getFirstDofRankOfSubspace(const CorvConfigSpaceConstShPtr& i_subspace,
                                                    unsigned int& o_rank) const
{
  return i_subspace ? getFirstDofRankOfSubspace(*i_subspace, o_rank) : lmStatus(-1);
}

lmStatus CorvConfigSpace::getFirstDofRankOfSubspace(unsigned int i_subspaceRank, unsigned int& o_rank) const
{
  return getFirstDofRankOfSubspace(subspace(i_subspaceRank), o_rank);
}

lmStatus CorvConfigSpace::getPositionOfSubspace(const CorvConfigSpaceConstShPtr& i_subspace,
                                                std::vector<unsigned int>& o_position) const
{
  o_position.clear();
  return i_subspace ? fillPositionOfSubspace(*i_subspace, o_position) : lmStatus(-1);
}

lmStatus CorvConfigSpace::fillPositionOfSubspace(const CorvConfigSpace& i_subspace,
                                                 std::vector<unsigned int>& io_position) const
{
  if (this == &i_subspace)
    return lmStatus();
  const unsigned int count = countSubspaces();
  for (unsigned int rank = 0; rank < count; ++rank)
  {
    io_position.push_back(rank);
    if (subspace(rank)->fillPositionOfSubspace(i_subspace, io_position).succeeded())
      return lmStatus();
    io_position.pop_back();
  }
  return -1;
}

CorvConfigSpaceShPtr CorvConfigSpace::getSubspaceAtPosition(const std::vector<unsigned int>& i_position) const
{
  CorvConfigSpaceShPtr space = self();
  for (const unsigned int rank : i_position)
  {
    space = rank < space->countSubspaces() ? space->subspace(rank) : CorvConfigSpaceShPtr();
    if (!space)
      return space;
  }
  return space;
}

void CorvConfigSpace::addGroup(const CorvConfigSpaceWkPtr& i_group)
{
  m_groups.erase(std::remove_if(m_groups.begin(), m_groups.end(),
                                [](const CorvConfigSpaceWkPtr& i_entry) { return i_entry.expired(); }),
                 m_groups.end());
  m_groups.push_back(i_group);
}

// One entry for each time that the group holds this space; the dead go with it.
void CorvConfigSpace::removeGroup(const CorvConfigSpace& i_group)
{
  bool isRemoved = false;
  const auto isGone = [&](const CorvConfigSpaceWkPtr& i_entry)
  {
    const CorvConfigSpaceShPtr group = i_entry.lock();
    const bool isThis = !isRemoved && group.get() == &i_group;
    isRemoved = isRemoved || isThis;
    return !group || isThis;
  };
  m_groups.erase(std::remove_if(m_groups.begin(), m_groups.end(), isGone), m_groups.end());
}

unsigned int CorvConfigSpace::countDofsWith(unsigned int i_mask, unsigned int i_flags) const
{
  allDofFlags();
  const auto fits = [&](unsigned char i_dofFlags) { return (i_dofFlags & i_mask) == i_flags; };
  return static_cast<unsigned int>(std::count_if(m_dofFlags.begin(), m_dofFlags.end(), fits));
}

unsigned int CorvConfigSpace::countActiveDofs() const
{
  return countDofsWith(PASSIVE, 0);
}

unsigned int CorvConfigSpace::countPassiveDofs() const
{
  return countDofsWith(PASSIVE, PASSIVE);
}

unsigned int CorvConfigSpace::countComputedDofs() const
{
  return countDofsWith(COMPUTED, COMPUTED);
}

unsigned int CorvConfigSpace::countFreeDofs() const
{
  return countDofsWith(PASSIVE | COMPUTED, 0);
}

void CorvConfigSpace::getPassiveDofs(std::vector<bool>& o_passive) const
{
  allDofFlags();
  o_passive.clear();
  for (const unsigned char flags : m_dofFlags)
    o_passive.push_back((flags & PASSIVE) != 0);
}

bool CorvConfigSpace::isFullyPassive() const
{
  return countPassiveDofs() == size();
}

bool CorvConfigSpace::isFullyLocked() const
{
  std::vector<CorvDofShPtr> dofs;
  getDofs(dofs);
  return std::all_of(dofs.begin(), dofs.end(), [](const CorvDofShPtr& i_dof) { return i_dof->isLocked(); });
}

bool CorvConfigSpace::isSubspaceFullyPassive(const CorvConfigSpaceConstShPtr& i_subspace) const
{
  unsigned int first = 0;
  if (getFirstDofRankOfSubspace(i_subspace, first).failed())
    return false;
  const unsigned int count = i_subspace->size();
  for (unsigned int rank = 0; rank < count; ++rank)
    if (!isDofPassive(first + rank))
      return false;
  return true;
}

bool CorvConfigSpace::hasFiniteSize() const
{
  std::vector<CorvDofShPtr> dofs;
  getDofs(dofs);
  return std::all_of(dofs.begin(), dofs.end(),
                     [](const CorvDofShPtr& i_dof)
                     { return i_dof->isLocked() || i_dof->isBounded() || i_dof->isRevolute(); });
}

std::string CorvConfigSpace::textualDump() const
{
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  coder->encodeObjectShPtr(self(), "configSpace");
  return coder->data();
}

bool CorvConfigSpace::isSteeringConservative() const
{
  return steeringMethod() && steeringMethod()->isConservative(self());
}

bool CorvConfigSpace::isSteeringOriented() const
{
  return steeringMethod() && steeringMethod()->isOriented(self());
}
