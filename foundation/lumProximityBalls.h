#pragma once

#include "foundation/lumProximityKernel.h"

#include <cstdint>
#include <vector>

class CProximityModel;

/// Finds a ball that belongs to the shape for each of the first boxes of a model's tree. Where two of these overlap,
/// the shapes touch, and no triangle has to be looked at.
///
/// In a solid they are balls that reach from side to side; elsewhere corners, with what the triangles are swept by.
/// @param i_model with its tree and parts, but no balls yet.
/// @param i_countNodes how many nodes have balls: their boxes are the first, after the one around all.
void lumFindProximityBalls(const CProximityModel& i_model, std::uint32_t i_countNodes,
                           std::vector<CProximityBalls>& o_nodeBalls, std::vector<CProximityBall>& o_balls);
