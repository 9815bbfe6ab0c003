#include "kinematics/orvCSComposite.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvSubspaceList.h"

LUM_DESCRIBE(CorvCSComposite)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

CorvCSCompositeShPtr CorvCSComposite::create(const std::string& i_type)
{
  return lumCreate<CorvCSComposite>(i_type);
}

CorvCSCompositeShPtr CorvCSComposite::createCopy(const CorvCSCompositeConstShPtr& i_objectToCopy)
{
  return boost::dynamic_pointer_cast<CorvCSComposite>(CorvConfigSpace::createCopy(i_objectToCopy));
}

CorvCSComposite::CorvCSComposite(const std::string& i_type) : CorvConfigSpace(i_type)
{
}

CorvCSComposite::~CorvCSComposite() = default;

lmStatus CorvCSComposite::init(const CorvCSCompositeWkPtr& i_weakPtr)
{
  const lmStatus status = CorvConfigSpace::init(i_weakPtr);
  return status.failed() ? status : orvSubspaceList::addComposites(*this);
}

void CorvCSComposite::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvConfigSpace::encodeWithCoder(i_coder);
  i_coder->encodeObjects(m_subspaces, "subspaces");
}

lmStatus CorvCSComposite::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvConfigSpace::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  std::vector<CorvConfigSpaceShPtr> subspaces;
  i_coder->decodeParts("subspaces", subspaces);
  if (!orvSubspaceList::canHold(*this, subspaces))
    return -1;
  m_subspaces.swap(subspaces);
  return lmStatus();
}

lmStatus CorvCSComposite::insertSubspace(const CorvConfigSpaceShPtr& i_subspace, unsigned int i_rank)
{
  if (orvSubspaceList::checkInsertion(*this, i_subspace, i_rank).failed() || i_subspace->parent())
    return -1;
  i_subspace->parent(self());
  m_subspaces.insert(m_subspaces.begin() + i_rank, i_subspace);
  invalidateCache();
  return lmStatus();
}

CorvConfigSpaceShPtr CorvCSComposite::subspace(unsigned int i_rank) const
{
  return orvSubspaceList::at(m_subspaces, i_rank);
}

unsigned int CorvCSComposite::countSubspaces() const
{
  return static_cast<unsigned int>(m_subspaces.size());
}

lmStatus CorvCSComposite::removeSubspace(unsigned int i_rank)
{
  if (i_rank >= m_subspaces.size())
    return -1;
  m_subspaces[i_rank]->parent(CorvConfigSpaceShPtr());
  m_subspaces.erase(m_subspaces.begin() + i_rank);
  invalidateCache();
  return lmStatus();
}

void CorvCSComposite::willReturnConfigValidators(const CorvValidatorSetShPtr& i_set) const
{
  if (const CorvDeviceShPtr owner = device())
    owner->willReturnConfigValidators(i_set);
}
