#include "kinematics/orvSubspaceList.h"

#include "constraints/orvConstraintComposite.h"
#include "kinematics/orvConfigSpace.h"
#include "validation/orvValidatorCfgComposite.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>

lmStatus orvSubspaceList::checkInsertion(const CorvConfigSpace& i_owner, const CorvConfigSpaceShPtr& i_subspace,
                                         unsigned int i_rank)
{
  if (!i_subspace || i_rank > i_owner.countSubspaces() || i_subspace->includes(i_owner))
    return -1;
  return lmStatus();
}

bool orvSubspaceList::canHold(const CorvConfigSpace& i_owner, const std::vector<CorvConfigSpaceShPtr>& i_subspaces)
{
  return std::all_of(i_subspaces.begin(), i_subspaces.end(),
                     [&](const CorvConfigSpaceShPtr& i_space) { return i_space && !i_space->includes(i_owner); });
}

CorvConfigSpaceShPtr orvSubspaceList::at(const std::vector<CorvConfigSpaceShPtr>& i_subspaces, unsigned int i_rank)
{
  return i_rank < i_subspaces.size() ? i_subspaces[i_rank] : CorvConfigSpaceShPtr();
}

lmStatus orvSubspaceList::addComposites(CorvConfigSpace& io_owner)
{
  const lmStatus status = io_owner.constraints()->add(CorvConstraintComposite::create(io_owner.self()));
  if (status.failed())
    return status;
  return io_owner.configValidators()->add(CorvValidatorCfgComposite::create(io_owner.self()));
}
