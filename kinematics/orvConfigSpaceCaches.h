#pragma once

#include "kinematics/orvConfigSpace.h"

/// The constraints in force in a space, composites and sets taken apart, each with the rank of its first dof.
struct CorvConfigSpace::CConstraintCache
{
  struct CStep
  {
    CorvConstraintShPtr constraint;
    unsigned int rank = 0;
    bool isDofLock = false; ///< then `value` is written at `rank`, and the constraint need not be called
    double value = 0.0;
  };

  std::vector<CorvConstraintShPtr> flat;
  std::vector<CorvConstraintShPtr> sorted; ///< the flat list if the dependencies have a cycle
  std::vector<CStep> steps;                ///< in the order of `sorted`
};

/// The configuration validators in force in a space, in the order in which they are asked.
struct CorvConfigSpace::CValidatorCache
{
  struct CStep
  {
    CorvValidatorShPtr validator;
    unsigned int rank = 0;
    bool isDofBounds = false; ///< then it passes without a call if the value at `rank` lies in the bounds
    double lowerBound = 0.0;
    double upperBound = 0.0;
  };

  std::vector<CStep> steps;
};
