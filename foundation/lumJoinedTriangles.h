#pragma once

#include "foundation/lumLeafGeometry.h"

/// Puts several placed shapes into one, their triangles numbered through.
/// @return false if there is none, or if they differ in what their triangles mean: the radius of the sweep, or what
/// overrides whether they bound a volume.
bool lumJoinSweptTriangles(const std::vector<ClumPlacedLeaf>& i_leaves, ClumSweptTriangles& o_joined);
