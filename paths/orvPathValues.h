#pragma once

#include "kinematics/orvConfig.h"

/// Writes the values of all dofs, passive ones included, into a configuration whose space has `i_count` dofs. What
/// constraints compute is computed anew from these values when it is next read.
void orvWriteAllValues(CorvConfig& io_cfg, const double* i_values, unsigned int i_count);
