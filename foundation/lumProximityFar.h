#pragma once

#include "foundation/lumProximityKernel.h"

/// Answers a question about two models that are very far apart for their size, where boxes in single precision tell
/// nothing: all is measured in double precision along the line between the centres.
void lumProximityFarDistance(const CProximityQuery& i_query, CProximityAnswer& o_answer);
