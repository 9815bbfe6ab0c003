#pragma once

#include "kinematics/orvCSComposite.h"
#include "kinematics/orvDof.h"

#include <vector>

/// A space of unbounded dofs without a device: for each entry an angle on the circle (true) or a translation.
inline CorvConfigSpaceShPtr plainSpace(const std::vector<bool>& i_isAngle)
{
  const CorvCSCompositeShPtr space = CorvCSComposite::create("test.plain");
  for (const bool isAngle : i_isAngle)
    space->appendSubspace(CorvDof::create(isAngle));
  return space;
}
