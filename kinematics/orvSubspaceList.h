#pragma once

#include "foundation/lumStatus.h"
#include "kinematics/handles.h"

#include <vector>

/// What the spaces that keep a list of sub-spaces have in common.
namespace orvSubspaceList
{
/// @return -1 for null, a rank above the count, the owner itself, or a space that includes the owner.
lmStatus checkInsertion(const CorvConfigSpace& i_owner, const CorvConfigSpaceShPtr& i_subspace, unsigned int i_rank);
/// False if one of the spaces is null, or includes the owner.
bool canHold(const CorvConfigSpace& i_owner, const std::vector<CorvConfigSpaceShPtr>& i_subspaces);
/// @return null past the end.
CorvConfigSpaceShPtr at(const std::vector<CorvConfigSpaceShPtr>& i_subspaces, unsigned int i_rank);
/// Puts a composite constraint and a composite validator into the owner's sets.
lmStatus addComposites(CorvConfigSpace& io_owner);
} // namespace orvSubspaceList
