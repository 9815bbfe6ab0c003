// The algebra of config spaces on lists of spaces: a list stands for the set of the dofs in it.

#include "kinematics/orvConfigSpace.h"

#include <algorithm>

namespace
{
using TSpaceList = CorvConfigSpace::TSpaces;

bool isInsideOneOf(const CorvConfigSpace& i_space, const TSpaceList& i_spaces)
{
  return std::any_of(i_spaces.begin(), i_spaces.end(),
                     [&](const CorvConfigSpaceShPtr& i_other) { return i_other && i_other->includes(i_space); });
}

/// Appends the parts of a space that lie in the list, the largest that do.
void appendCommonParts(const CorvConfigSpaceShPtr& i_space, const TSpaceList& i_spaces, TSpaceList& io_parts)
{
  if (!i_space)
    return;
  if (isInsideOneOf(*i_space, i_spaces))
  {
    io_parts.push_back(i_space);
    return;
  }
  const CorvConfigSpace& space = i_space->unwrapped();
  for (unsigned int rank = 0; rank < space.countSubspaces(); ++rank)
    appendCommonParts(space.subspace(rank), i_spaces, io_parts);
}

/// Appends the parts of a space that have nothing in common with the list, the largest that have not.
void appendOtherParts(const CorvConfigSpaceShPtr& i_space, const TSpaceList& i_spaces, TSpaceList& io_parts)
{
  if (!i_space || isInsideOneOf(*i_space, i_spaces))
    return;
  if (!i_space->intersects(i_spaces))
  {
    io_parts.push_back(i_space);
    return;
  }
  const CorvConfigSpace& space = i_space->unwrapped();
  for (unsigned int rank = 0; rank < space.countSubspaces(); ++rank)
    appendOtherParts(space.subspace(rank), i_spaces, io_parts);
}
} // namespace

void CorvConfigSpace::merge(TSpaces& io_spaces, const CorvConfigSpaceShPtr& i_space)
{
  if (!i_space || i_space->isFullyIncludedIn(io_spaces))
    return;
  const TSpaces added(1, i_space);
  const auto isCovered = [&](const CorvConfigSpaceShPtr& i_old) { return !i_old || i_old->isFullyIncludedIn(added); };
  io_spaces.erase(std::remove_if(io_spaces.begin(), io_spaces.end(), isCovered), io_spaces.end());
  TSpaces parts;
  appendOtherParts(i_space, io_spaces, parts);
  io_spaces.insert(io_spaces.end(), parts.begin(), parts.end());
}

void CorvConfigSpace::merge(TSpaces& io_spaces, const TSpaces& i_others)
{
  for (const CorvConfigSpaceShPtr& space : i_others)
    merge(io_spaces, space);
}

void CorvConfigSpace::intersect(const TSpaces& i_a, const TSpaces& i_b, TSpaces& o_common)
{
  TSpaces common;
  for (const CorvConfigSpaceShPtr& space : i_a)
  {
    TSpaces parts;
    appendCommonParts(space, i_b, parts);
    merge(common, parts);
  }
  o_common.swap(common);
}

bool CorvConfigSpace::intersect(const TSpaces& i_a, const TSpaces& i_b)
{
  return std::any_of(i_a.begin(), i_a.end(),
                     [&](const CorvConfigSpaceShPtr& i_space) { return i_space && i_space->intersects(i_b); });
}

void CorvConfigSpace::subtract(TSpaces& io_spaces, const TSpaces& i_removed)
{
  TSpaces rest;
  for (const CorvConfigSpaceShPtr& space : io_spaces)
    appendOtherParts(space, i_removed, rest);
  io_spaces.swap(rest);
}

void CorvConfigSpace::subtractAndCumulate(TSpaces& io_spaces, const TSpaces& i_removed, TSpaces& io_cumulated)
{
  TSpaces common;
  intersect(io_spaces, i_removed, common);
  subtract(io_spaces, i_removed);
  merge(io_cumulated, common);
}

bool CorvConfigSpace::intersects(const TSpaces& i_spaces) const
{
  if (isInsideOneOf(*this, i_spaces))
    return size() != 0;
  const CorvConfigSpace& space = unwrapped();
  for (unsigned int rank = 0; rank < space.countSubspaces(); ++rank)
    if (space.subspace(rank)->intersects(i_spaces))
      return true;
  return false;
}

bool CorvConfigSpace::isFullyIncludedIn(const TSpaces& i_spaces) const
{
  if (isInsideOneOf(*this, i_spaces))
    return true;
  const CorvConfigSpace& space = unwrapped();
  if (space.countSubspaces() == 0)
    return size() == 0;
  for (unsigned int rank = 0; rank < space.countSubspaces(); ++rank)
    if (!space.subspace(rank)->isFullyIncludedIn(i_spaces))
      return false;
  return true;
}
