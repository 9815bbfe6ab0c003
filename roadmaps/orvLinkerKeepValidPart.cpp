#include "roadmaps/orvLinkerKeepValidPart.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "paths/orvDirectPath.h"
#include "roadmaps/linkSearch.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRoadmap.h"
#include "validation/orvValidatorDPCollision.h"

LUM_DESCRIBE(CorvLinkerKeepValidPart)
{
  i_class.creates("()", &Self::create);
}

namespace
{
const ClumStringKey s_keepPartAlgorithmKey("orvane.core.validator.dp.collision.algorithm");

/// Adds the proved part of a link that failed, with a node at its free end. The node goes again if it cannot be linked.
void addProvedPart(const CorvNodeShPtr& i_candidate, const CorvDirectPathConstShPtr& i_part, bool i_endsAtCandidate,
                   const ClumParameterMapConstShPtr& i_parameters)
{
  const CorvRoadmapShPtr roadmap = i_candidate->roadmap();
  const CorvNodeShPtr tip =
    CorvNode::create(i_endsAtCandidate ? i_part->startConfiguration() : i_part->endConfiguration());
  if (roadmap->addNode(tip).failed())
    return;
  const lmStatus status = i_endsAtCandidate ? CorvLinker::roadmapLink(tip, i_candidate, i_part, i_parameters)
                                            : CorvLinker::roadmapLink(i_candidate, tip, i_part, i_parameters);
  if (status.failed())
    roadmap->removeNode(tip);
}
} // namespace

CorvLinkerKeepValidPartShPtr CorvLinkerKeepValidPart::create()
{
  return lumCreate<CorvLinkerKeepValidPart>();
}

CorvLinkerKeepValidPartShPtr
CorvLinkerKeepValidPart::createCopy(const CorvLinkerKeepValidPartConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvLinkerKeepValidPart::~CorvLinkerKeepValidPart() = default;

lmStatus CorvLinkerKeepValidPart::init(const CorvLinkerKeepValidPartWkPtr& i_weakPtr)
{
  return CorvLinker::init(i_weakPtr);
}

void CorvLinkerKeepValidPart::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvLinker::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_minimumPartLength, "minimumPartLength");
}

lmStatus CorvLinkerKeepValidPart::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvLinker::initWithCoder(i_coder, i_self);
  if (status.succeeded())
    m_minimumPartLength = i_coder->decodeDouble("minimumPartLength");
  return status;
}

lmStatus CorvLinkerKeepValidPart::doLink(EDirection i_direction, const CorvNodeShPtr& i_node,
                                         const ClumParameterMapConstShPtr& i_parameters) const
{
  const bool isFromNode = i_direction == LINK_FROM_NODE;
  const ClumParameterMapShPtr testParameters = ClumParameterMap::createWithBase(i_parameters);
  testParameters->setInt(s_keepPartAlgorithmKey, isFromNode ? CorvValidatorDPCollision::PROGRESSIVE_BACKWARD
                                                            : CorvValidatorDPCollision::PROGRESSIVE_FORWARD);
  const CorvLinkSearch search(i_direction, i_node, i_parameters);
  std::vector<CorvLinkSearch::CLink> parts;
  const auto test = [&](const CorvConnectedComponentShPtr& i_component, CorvLinkSearch::CLink& o_link)
  {
    const std::size_t partCount = parts.size();
    for (const CorvNodeShPtr& candidate : search.candidatesIn(*i_component))
    {
      const CorvDirectPathShPtr directPath = search.makePath(candidate);
      if (!directPath)
        continue;
      if (directPath->validate(testParameters))
      {
        // A component that is reached needs no part of a way to it.
        parts.resize(partCount);
        o_link = {candidate, directPath};
        return true;
      }
      const CorvDirectPathConstShPtr part = orvProvedPart(directPath, testParameters);
      if (part && part->length() >= m_minimumPartLength)
        parts.push_back({candidate, part});
    }
    return false;
  };
  const lmStatus status = search.addLinks(search.searchComponents(test));
  for (const CorvLinkSearch::CLink& part : parts)
    addProvedPart(part.node, part.directPath, isFromNode, i_parameters);
  return status;
}
