#pragma once

#include "foundation/lumExport.h"
#include "foundation/lumPoint3.h"

#include <vector>

/// A few points of which the convex hull contains all points given: these themselves if they are few, otherwise the
/// corners of the tightest polytope with 26 fixed face directions (those to the faces, edges and corners of a cube).
LUM_API std::vector<ClumPoint3> lumEnclosingPoints(const std::vector<ClumPoint3>& i_points);
