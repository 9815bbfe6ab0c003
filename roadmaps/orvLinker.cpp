#include "roadmaps/orvLinker.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "roadmaps/edgeMaking.h"
#include "roadmaps/orvEdge.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRoadmap.h"

LUM_DESCRIBE(CorvLinker)
{
}

CorvLinker::~CorvLinker() = default;

lmStatus CorvLinker::init(const CorvLinkerWkPtr& i_weakPtr)
{
  return ClumMutableCodable::init(i_weakPtr);
}

const ClumStringKey& CorvLinker::edgeFactoryParameterKey()
{
  static const ClumStringKey s_key("orvane.core.linker.edge-factory");
  return s_key;
}

lmStatus CorvLinker::link(EDirection i_direction, const CorvNodeShPtr& i_node) const
{
  return link(i_direction, i_node, ClumParameterMapConstShPtr());
}

lmStatus CorvLinker::link(EDirection i_direction, const CorvNodeShPtr& i_node,
                          const ClumParameterMapConstShPtr& i_parameters) const
{
  const CorvRoadmapShPtr roadmap = i_node ? i_node->roadmap() : CorvRoadmapShPtr();
  if (!roadmap)
    return lmStatus(lmStatus::FAILURE);
  const ClumParameterMapConstShPtr parameters = i_parameters ? i_parameters : ClumParameterMap::create();
  if (!roadmap->configSpace()->isSteeringOriented())
    return doLink(LINK_FROM_NODE, i_node, parameters);
  if (i_direction != LINK_BOTH)
    return doLink(i_direction, i_node, parameters);
  const lmStatus from = doLink(LINK_FROM_NODE, i_node, parameters);
  const lmStatus to = doLink(LINK_TO_NODE, i_node, parameters);
  return from.failed() ? from : to;
}

lmStatus CorvLinker::roadmapLink(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end,
                                 const CorvDirectPathConstShPtr& i_directPath,
                                 const ClumParameterMapConstShPtr& i_parameters)
{
  const CorvRoadmapShPtr roadmap = i_start ? i_start->roadmap() : CorvRoadmapShPtr();
  if (!roadmap)
    return lmStatus(lmStatus::FAILURE);
  CorvEdgeFactoryShPtr factory;
  if (i_parameters)
    factory = i_parameters->shPtrValue<CorvEdgeFactory>(edgeFactoryParameterKey());
  return orvLinkNodes(*roadmap, factory ? *factory : *CorvEdgeFactory::defaultFactory(), i_start, i_end, i_directPath);
}
