#include "kinematics/orvCSGroup.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvSubspaceList.h"

LUM_DESCRIBE(CorvCSGroup)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

CorvCSGroupShPtr CorvCSGroup::create(const std::string& i_type)
{
  return lumCreate<CorvCSGroup>(i_type);
}

CorvCSGroupShPtr CorvCSGroup::createCopy(const CorvCSGroupConstShPtr& i_objectToCopy)
{
  return boost::dynamic_pointer_cast<CorvCSGroup>(CorvConfigSpace::createCopy(i_objectToCopy));
}

CorvCSGroup::CorvCSGroup(const std::string& i_type) : CorvConfigSpace(i_type)
{
}

CorvCSGroup::~CorvCSGroup() = default;

lmStatus CorvCSGroup::init(const CorvCSGroupWkPtr& i_weakPtr)
{
  const lmStatus status = CorvConfigSpace::init(i_weakPtr);
  return status.failed() ? status : orvSubspaceList::addComposites(*this);
}

void CorvCSGroup::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvConfigSpace::encodeWithCoder(i_coder);
  i_coder->encodeObjects(m_subspaces, "subspaces");
}

lmStatus CorvCSGroup::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvConfigSpace::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  std::vector<CorvConfigSpaceShPtr> subspaces;
  i_coder->decodeObjects("subspaces", subspaces);
  if (!orvSubspaceList::canHold(*this, subspaces))
    return -1;
  m_subspaces.swap(subspaces);
  return lmStatus();
}

void CorvCSGroup::awake()
{
  CorvConfigSpace::awake();
  for (const CorvConfigSpaceShPtr& space : m_subspaces)
    if (space)
      space->addGroup(self());
}

lmStatus CorvCSGroup::insertSubspace(const CorvConfigSpaceShPtr& i_subspace, unsigned int i_rank)
{
  const lmStatus status = orvSubspaceList::checkInsertion(*this, i_subspace, i_rank);
  if (status.failed())
    return status;
  i_subspace->addGroup(self());
  m_subspaces.insert(m_subspaces.begin() + i_rank, i_subspace);
  invalidateCache();
  return lmStatus();
}

CorvConfigSpaceShPtr CorvCSGroup::subspace(unsigned int i_rank) const
{
  return orvSubspaceList::at(m_subspaces, i_rank);
}

unsigned int CorvCSGroup::countSubspaces() const
{
  return static_cast<unsigned int>(m_subspaces.size());
}

lmStatus CorvCSGroup::removeSubspace(unsigned int i_rank)
{
  if (i_rank >= m_subspaces.size())
    return -1;
  m_subspaces[i_rank]->removeGroup(*this);
  m_subspaces.erase(m_subspaces.begin() + i_rank);
  invalidateCache();
  return lmStatus();
}
