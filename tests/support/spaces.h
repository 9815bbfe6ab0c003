#pragma once

#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvUtility.h"

#include <vector>

// Spaces without a device, and random configurations of them.

/// A dof of its own kind and weight.
struct DofKind
{
  bool isRevolute;
  bool isBounded; ///< within [-6, 6]
  double weight;
};

inline CorvDofShPtr makeDof(const DofKind& i_kind)
{
  const CorvDofShPtr dof = CorvDof::create(i_kind.isRevolute);
  if (i_kind.isBounded)
    dof->boundWithin(-6.0, 6.0);
  dof->weightMultiplier(i_kind.weight);
  return dof;
}

inline CorvCSCompositeShPtr makeSpace(const std::vector<CorvConfigSpaceShPtr>& i_subspaces)
{
  const CorvCSCompositeShPtr space = CorvCSComposite::create("test.space");
  for (const CorvConfigSpaceShPtr& subspace : i_subspaces)
    space->appendSubspace(subspace);
  return space;
}

/// x; (an unbounded angle of weight 2, a bounded angle); y of weight 3: four dofs in a tree.
inline CorvCSCompositeShPtr makeMixedSpace()
{
  return makeSpace({makeDof({false, false, 1.0}), makeSpace({makeDof({true, false, 2.0}), makeDof({true, true, 1.0})}),
                    makeDof({false, true, 3.0})});
}

/// A tree of up to three levels with dofs of all kinds, from the library's generator.
inline CorvCSCompositeShPtr makeRandomSpace(unsigned int i_levels)
{
  std::vector<CorvConfigSpaceShPtr> subspaces;
  const int count = CorvUtility::random(1, 4);
  for (int i = 0; i < count; ++i)
    if (i_levels > 1 && CorvUtility::random(0, 2) == 0)
      subspaces.push_back(makeRandomSpace(i_levels - 1));
    else
      subspaces.push_back(
        makeDof({CorvUtility::random(0, 1) == 1, CorvUtility::random(0, 1) == 1, CorvUtility::random(0.1, 4.0)}));
  return makeSpace(subspaces);
}

inline CorvConfig randomConfigOf(const CorvConfigSpaceShPtr& i_space, double i_range = 5.0)
{
  std::vector<double> values(i_space->size());
  for (double& value : values)
    value = CorvUtility::random(-i_range, i_range);
  return CorvConfig(i_space, values);
}
