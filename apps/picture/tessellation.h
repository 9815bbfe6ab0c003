#pragma once

#include "foundation/handles.h"
#include "foundation/lumPoint3.h"

#include <array>
#include <vector>

/// The surface of a geometry as triangles in the geometry's own frame: meshes as they are, boxes exactly, rounded
/// shapes as fine facets.
std::vector<std::array<ClumPoint3, 3>> tessellate(const ClumGeometry& i_geometry);
