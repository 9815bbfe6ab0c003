#pragma once

#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDof.h"
#include "validation/orvValidatorSet.h"

/// What the composites have in common that run the sets of a space's parts, constraints or configuration validators.
namespace orvSubspaceWalk
{
using TSetOf = const CorvValidatorSetShPtr& (CorvConfigSpace::*)() const;

/// True if walking the dofs one by one serves as well as descending through the sub-spaces: from the space down no set
/// holds anything but one composite, save at the dofs.
template <class COMPOSITE>
bool canFlatten(const CorvConfigSpace& i_space, TSetOf i_setOf)
{
  if (dynamic_cast<const CorvDof*>(&i_space))
    return true;
  const CorvConfigSpace& space = i_space.unwrapped();
  const CorvValidatorSet& set = *(space.*i_setOf)();
  const CorvValidatorShPtr first = set.at(0);
  if (set.count() > 1 || (first && !dynamic_cast<const COMPOSITE*>(first.get())))
    return false;
  for (unsigned int rank = 0; rank < space.countSubspaces(); ++rank)
    if (!canFlatten<COMPOSITE>(*space.subspace(rank), i_setOf))
      return false;
  return true;
}

/// Visits the parts of a configuration's space, its dofs or its direct sub-spaces, the configuration narrowed to each.
/// @param i_visit called without arguments; false ends the walk.
/// @return false if the visitor ended it; true also if there is nothing to walk over.
template <class VISITOR>
bool forEachPart(const CorvConfig& i_cfg, bool i_walksDofs, const VISITOR& i_visit)
{
  if ((i_walksDofs ? i_cfg.walkDofs() : i_cfg.pushSpace()).failed())
    return true;
  bool goesOn = true;
  do
    goesOn = i_visit();
  while (goesOn && (i_walksDofs ? i_cfg.nextDof() : i_cfg.nextSubspace()).succeeded());
  if (i_walksDofs)
    i_cfg.endWalk();
  else
    i_cfg.popSpace();
  return goesOn;
}
} // namespace orvSubspaceWalk
