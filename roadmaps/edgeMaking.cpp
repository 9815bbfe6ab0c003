#include "roadmaps/edgeMaking.h"

#include "paths/orvDirectPath.h"
#include "roadmaps/orvEdge.h"
#include "roadmaps/orvRoadmap.h"

CorvEdgeShPtr orvAddNewEdge(CorvRoadmap& io_roadmap, const CorvEdgeFactory& i_factory, const CorvNodeShPtr& i_start,
                            const CorvNodeShPtr& i_end, const CorvDirectPathConstShPtr& i_directPath)
{
  const CorvEdgeShPtr edge = i_factory.makeEdge(i_directPath);
  return edge && io_roadmap.addEdge(i_start, i_end, edge).succeeded() ? edge : CorvEdgeShPtr();
}

std::pair<CorvEdgeShPtr, CorvEdgeShPtr> orvAddNewDoubleEdge(CorvRoadmap& io_roadmap, const CorvEdgeFactory& i_factory,
                                                            const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end,
                                                            const CorvDirectPathConstShPtr& i_directPath)
{
  const CorvEdgeShPtr edge = i_factory.makeEdge(i_directPath);
  const CorvEdgeShPtr reverse = i_factory.makeEdge(CorvDirectPath::createReversed(i_directPath));
  if (!edge || !reverse || io_roadmap.addDoubleEdge(i_start, i_end, edge, reverse).failed())
    return std::make_pair(CorvEdgeShPtr(), CorvEdgeShPtr());
  return std::make_pair(edge, reverse);
}

lmStatus orvLinkNodes(CorvRoadmap& io_roadmap, const CorvEdgeFactory& i_factory, const CorvNodeShPtr& i_start,
                      const CorvNodeShPtr& i_end, const CorvDirectPathConstShPtr& i_directPath)
{
  if (!i_directPath)
    return lmStatus(lmStatus::FAILURE);
  const bool isLinked =
    i_directPath->isOriented()
      ? static_cast<bool>(orvAddNewEdge(io_roadmap, i_factory, i_start, i_end, i_directPath))
      : static_cast<bool>(orvAddNewDoubleEdge(io_roadmap, i_factory, i_start, i_end, i_directPath).first);
  return isLinked ? lmStatus() : lmStatus(lmStatus::FAILURE);
}
