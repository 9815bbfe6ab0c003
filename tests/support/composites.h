#pragma once

#include "kinematics/orvCSComposite.h"
#include "kinematics/orvDof.h"

#include <vector>

/// A composite of the given dofs, in their order.
inline CorvCSCompositeShPtr compositeOf(const std::vector<CorvDofShPtr>& i_dofs)
{
  const CorvCSCompositeShPtr space = CorvCSComposite::create("test.composite");
  for (const CorvDofShPtr& dof : i_dofs)
    space->appendSubspace(dof);
  return space;
}

/// A composite of new translation dofs.
inline CorvCSCompositeShPtr compositeOfSize(unsigned int i_count)
{
  std::vector<CorvDofShPtr> dofs;
  while (dofs.size() < i_count)
    dofs.push_back(CorvDof::create(false));
  return compositeOf(dofs);
}
