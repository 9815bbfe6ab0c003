#include "roadmaps/orvLinkerStandard.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumStringKey.h"
#include "paths/orvDirectPath.h"
#include "roadmaps/linkSearch.h"

LUM_DESCRIBE(CorvLinkerStandard)
{
  i_class.creates("()", &Self::create);
}

CorvLinkerStandardShPtr CorvLinkerStandard::create()
{
  return lumCreate<CorvLinkerStandard>();
}

CorvLinkerStandardShPtr CorvLinkerStandard::createCopy(const CorvLinkerStandardConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvLinkerStandard::~CorvLinkerStandard() = default;

lmStatus CorvLinkerStandard::init(const CorvLinkerStandardWkPtr& i_weakPtr)
{
  return CorvLinker::init(i_weakPtr);
}

const ClumStringKey& CorvLinkerStandard::nearestNodeCountParameterKey()
{
  static const ClumStringKey s_key("orvane.core.linker-standard.nearest-node-count");
  return s_key;
}

const ClumStringKey& CorvLinkerStandard::linkNodeStrategyParameterKey()
{
  static const ClumStringKey s_key("orvane.core.linker-standard.link-node-strategy");
  return s_key;
}

bool CorvLinkerStandard::canLinkNodeWithComponent(EDirection i_direction, const CorvNodeShPtr& i_node,
                                                  const CorvConnectedComponentConstShPtr& i_component,
                                                  const ClumParameterMapConstShPtr& i_parameters, CorvNodeShPtr& o_node,
                                                  CorvDirectPathShPtr& o_directPath)
{
  if (!i_node || !i_component)
    return false;
  const CorvLinkSearch search(i_direction, i_node, i_parameters);
  for (const CorvNodeShPtr& candidate : search.candidatesIn(*i_component))
  {
    const CorvDirectPathShPtr directPath = search.makePath(candidate);
    if (!directPath || !directPath->validate(i_parameters))
      continue;
    o_node = candidate;
    o_directPath = directPath;
    return true;
  }
  return false;
}

lmStatus CorvLinkerStandard::doLink(EDirection i_direction, const CorvNodeShPtr& i_node,
                                    const ClumParameterMapConstShPtr& i_parameters) const
{
  const CorvLinkSearch search(i_direction, i_node, i_parameters);
  const auto test = [&](const CorvConnectedComponentShPtr& i_component, CorvLinkSearch::CLink& o_link)
  {
    CorvDirectPathShPtr directPath;
    const bool canLink =
      canLinkNodeWithComponent(i_direction, i_node, i_component, i_parameters, o_link.node, directPath);
    o_link.directPath = directPath;
    return canLink;
  };
  return search.addLinks(search.searchComponents(test));
}
