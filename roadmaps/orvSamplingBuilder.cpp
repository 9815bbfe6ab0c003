#include "roadmaps/orvSamplingBuilder.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "roadmaps/orvLinkerStandard.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRoadmap.h"

LUM_DESCRIBE(CorvSamplingBuilder)
{
  i_class.creates("(const CorvRoadmapShPtr& i_roadmap)", &Self::create);
}

CorvSamplingBuilderShPtr CorvSamplingBuilder::create(const CorvRoadmapShPtr& i_roadmap)
{
  return lumCreate<CorvSamplingBuilder>(i_roadmap);
}

CorvSamplingBuilderShPtr CorvSamplingBuilder::createCopy(const CorvSamplingBuilderConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvSamplingBuilder::~CorvSamplingBuilder() = default;

lmStatus CorvSamplingBuilder::init(const CorvSamplingBuilderWkPtr& i_weakPtr)
{
  return CorvBuilder::init(i_weakPtr);
}

lmStatus CorvSamplingBuilder::doStartBuild(const ClumParameterMapShPtr& io_parameters)
{
  if (!configSpace()->hasFiniteSize())
  {
    ClumLogManager::addWarning("CorvSamplingBuilder cannot work on an infinite space.");
    return lmStatus(lmStatus::FAILURE);
  }
  const ClumStringKey& strategyKey = CorvLinkerStandard::linkNodeStrategyParameterKey();
  if (!io_parameters->hasInt(strategyKey))
    io_parameters->setInt(strategyKey, CorvLinkerStandard::LINK_NEAREST);
  return lmStatus();
}

lmStatus CorvSamplingBuilder::doContinueBuild(bool& o_shouldContinue)
{
  o_shouldContinue = true;
  const CorvNodeShPtr node = shootValidNode();
  if (node && addNode(node).succeeded())
    link(CorvLinker::LINK_BOTH, node, buildParameters());
  return lmStatus();
}

lmStatus CorvSamplingBuilder::doFinishBuild()
{
  return lmStatus();
}

lmStatus CorvSamplingBuilder::doComputeCompletion(double&) const
{
  return lmStatus(lmStatus::FAILURE);
}

CorvNodeShPtr CorvSamplingBuilder::shootValidNode() const
{
  const unsigned int drawCount = 100;
  CorvConfig config(configSpace());
  for (unsigned int draw = 0; draw < drawCount; ++draw)
  {
    config.randomize();
    if (config.validate(buildParameters()))
      return nodeFactory()->makeNode(config);
  }
  return CorvNodeShPtr();
}
