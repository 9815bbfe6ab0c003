#include "roadmaps/orvInjectionBuilder.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "roadmaps/orvEdge.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRoadmap.h"

#include <algorithm>

LUM_DESCRIBE(CorvInjectionBuilder)
{
  i_class.creates("(const CorvRoadmapShPtr& i_roadmap)", &Self::create);
}

namespace
{
const ClumStringKey s_injectionHintPathKey("orvane.core.builder.hint-path");

bool hasEdgeBetween(const CorvNode& i_start, const CorvNodeShPtr& i_end)
{
  for (unsigned int rank = 0; rank < i_start.countOutEdges(); ++rank)
    if (i_start.outEdge(rank)->endNode() == i_end)
      return true;
  return false;
}
} // namespace

CorvInjectionBuilderShPtr CorvInjectionBuilder::create(const CorvRoadmapShPtr& i_roadmap)
{
  return lumCreate<CorvInjectionBuilder>(i_roadmap);
}

CorvInjectionBuilderShPtr CorvInjectionBuilder::createCopy(const CorvInjectionBuilderConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvInjectionBuilder::~CorvInjectionBuilder() = default;

lmStatus CorvInjectionBuilder::init(const CorvInjectionBuilderWkPtr& i_weakPtr)
{
  return CorvBuilder::init(i_weakPtr);
}

bool CorvInjectionBuilder::canInject(const CorvPathConstShPtr& i_path) const
{
  return i_path && i_path->countDirectPaths() > 0 && i_path->configSpace() == configSpace();
}

lmStatus CorvInjectionBuilder::addPath(const CorvPathConstShPtr& i_path)
{
  return addPaths(std::vector<CorvPathConstShPtr>(1, i_path));
}

lmStatus CorvInjectionBuilder::addPaths(const std::vector<CorvPathConstShPtr>& i_paths)
{
  for (const CorvPathConstShPtr& path : i_paths)
    if (!canInject(path))
      return lmStatus(lmStatus::FAILURE);
  for (const CorvPathConstShPtr& path : i_paths)
  {
    m_paths.push_back(path);
    m_totalLength += path->length();
  }
  return lmStatus();
}

void CorvInjectionBuilder::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvBuilder::encodeWithCoder(i_coder);
  i_coder->encodeObjects(m_paths, "paths");
}

lmStatus CorvInjectionBuilder::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvBuilder::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  i_coder->decodeObjects("paths", m_paths);
  const bool isWhole = std::find(m_paths.begin(), m_paths.end(), CorvPathConstShPtr()) == m_paths.end();
  return isWhole ? status : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvInjectionBuilder::doStartBuild(const ClumParameterMapShPtr& io_parameters)
{
  m_rank = 0;
  m_totalLength = 0.0;
  m_doneLength = 0.0;
  for (const CorvPathConstShPtr& path : m_paths)
    m_totalLength += path->length();
  const CorvPathConstShPtr hintPath = io_parameters->constShPtrValue<CorvPath>(s_injectionHintPathKey);
  if (canInject(hintPath))
    addPath(hintPath);
  return lmStatus();
}

lmStatus CorvInjectionBuilder::doContinueBuild(bool& o_shouldContinue)
{
  if (!m_paths.empty())
  {
    const CorvPathConstShPtr path = m_paths.front();
    if (m_rank < path->countDirectPaths())
      inject(path->directPath(m_rank++));
    if (m_rank >= path->countDirectPaths())
    {
      m_paths.erase(m_paths.begin());
      m_rank = 0;
      m_startNode.reset();
      m_endNode.reset();
    }
  }
  o_shouldContinue = !m_paths.empty();
  return lmStatus();
}

/// A direct path that is in the roadmap already gets no second link.
void CorvInjectionBuilder::inject(const CorvDirectPathConstShPtr& i_directPath)
{
  m_doneLength += i_directPath->length();
  CorvNodeShPtr end;
  if (i_directPath->validate(buildParameters()))
  {
    if (!m_endNode || m_endNode->roadmap() != roadmap())
      m_startNode = m_endNode = roadmapNode(i_directPath->startConfiguration());
    end = roadmapNode(i_directPath->endConfiguration());
  }
  if (end && m_endNode && end != m_endNode && !hasEdgeBetween(*m_endNode, end) &&
      roadmapLink(m_endNode, end, i_directPath).failed())
    end.reset();
  m_endNode = end;
  if (!m_endNode)
    m_startNode.reset();
}

lmStatus CorvInjectionBuilder::doFinishBuild()
{
  m_startNode.reset();
  m_endNode.reset();
  return lmStatus();
}

lmStatus CorvInjectionBuilder::doComputeCompletion(double& o_completion) const
{
  o_completion = m_totalLength > 0.0 ? std::min(m_doneLength / m_totalLength, 1.0) : 1.0;
  return lmStatus();
}
