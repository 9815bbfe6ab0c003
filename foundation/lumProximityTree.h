#pragma once

#include "foundation/lumProximityKernel.h"
#include "foundation/lumVect3.h"

#include <vector>

/// Builds the tree of a model: cuts the triangles in two again and again, fits a box to every part, and gathers eight
/// parts to a node. The nodes of large parts come first, level by level, and so do their boxes.
/// @param i_corners three of each triangle, around the origin.
/// @param o_places of each triangle.
/// @return how many nodes come first.
std::uint32_t lumBuildProximityTree(const std::vector<ClumVect3>& i_corners, std::vector<CProximityNode>& o_nodes,
                                    std::vector<CProximityBox>& o_boxes, std::vector<CProximityPacket>& o_packets,
                                    std::vector<std::uint32_t>& o_places);
