#pragma once

#include "kinematics/orvConfig.h"
#include "paths/handles.h"

#include <vector>

/// Writes the values of all dofs, passive ones included, into a configuration whose space has `i_count` dofs. What
/// constraints compute is computed anew from these values when it is next read.
void orvWriteAllValues(CorvConfig& io_cfg, const double* i_values, unsigned int i_count);

/// Copies of the motions of sub-spaces of one space, on the sub-spaces that stand at their places in another. Null
/// motions stay null. @return failure if a place is empty or a motion cannot be converted.
lmStatus orvConvertChildren(const CorvConfigSpace& i_from, const CorvConfigSpaceShPtr& i_to,
                            const std::vector<CorvDirectPathShPtr>& i_children,
                            std::vector<CorvDirectPathShPtr>& o_converted);
