#pragma once

#include "foundation/lumStatus.h"
#include "paths/handles.h"
#include "roadmaps/handles.h"

#include <utility>

/// Edges of a factory for a direct path, added to the roadmap of the nodes. Null where an edge cannot be made or added.
CorvEdgeShPtr orvAddNewEdge(CorvRoadmap& io_roadmap, const CorvEdgeFactory& i_factory, const CorvNodeShPtr& i_start,
                            const CorvNodeShPtr& i_end, const CorvDirectPathConstShPtr& i_directPath);
/// One edge each way, both or none.
std::pair<CorvEdgeShPtr, CorvEdgeShPtr> orvAddNewDoubleEdge(CorvRoadmap& io_roadmap, const CorvEdgeFactory& i_factory,
                                                            const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end,
                                                            const CorvDirectPathConstShPtr& i_directPath);
/// One edge for an oriented direct path, otherwise one each way.
lmStatus orvLinkNodes(CorvRoadmap& io_roadmap, const CorvEdgeFactory& i_factory, const CorvNodeShPtr& i_start,
                      const CorvNodeShPtr& i_end, const CorvDirectPathConstShPtr& i_directPath);
