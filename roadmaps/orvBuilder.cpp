#include "roadmaps/orvBuilder.h"

#include "foundation/lumAutotuningParallelCooperativeOperation.h"
#include "foundation/lumCleanUpOperation.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumParallelCooperativeOperation.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumSequenceOperation.h"
#include "foundation/lumWeightedParallelCooperativeOperation.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "planners/orvBuilderPlanner.h"
#include "roadmaps/edgeMaking.h"
#include "roadmaps/orvEdge.h"
#include "roadmaps/orvInjectionBuilder.h"
#include "roadmaps/orvLinkerStandard.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvOperationAdapterBuilder.h"
#include "roadmaps/orvRoadmap.h"
#include "validation/orvValidatorDPCollision.h"
#include "validation/orvValidatorSet.h"

#include <sstream>

LUM_DESCRIBE(CorvBuilder)
{
}
LUM_NOTIFICATION(CorvBuilder, WILL_EXPLORE_TOWARDS);
const std::string CorvBuilder::CONFIG_KEY = "config";

namespace
{
const ClumStringKey s_builderPenetrationKey("orvane.core.validator.dp.collision.penetration");
}

CorvBuilder::CorvBuilder() = default;

CorvBuilder::CorvBuilder(const CorvRoadmapShPtr& i_roadmap)
  : m_nodeFactory(CorvNodeFactory::defaultFactory()), m_edgeFactory(CorvEdgeFactory::defaultFactory()),
    m_linker(CorvLinkerStandard::create()), m_roadmap(i_roadmap)
{
}

CorvBuilder::CorvBuilder(const CorvBuilder& i_other)
  : ClumOperation(i_other), m_nodeFactory(i_other.m_nodeFactory), m_edgeFactory(i_other.m_edgeFactory),
    m_linker(i_other.m_linker), m_roadmap(i_other.m_roadmap)
{
}

CorvBuilder::~CorvBuilder() = default;

lmStatus CorvBuilder::init(const CorvBuilderWkPtr& i_weakPtr)
{
  const lmStatus status = ClumOperation::init(i_weakPtr);
  return status.failed() || (m_roadmap && m_nodeFactory && m_edgeFactory) ? status : lmStatus(lmStatus::FAILURE);
}

CorvPathPlannerShPtr CorvBuilder::asPlanner() const
{
  return CorvBuilderPlanner::create(self());
}

CorvBuilderShPtr CorvBuilder::then(const CorvBuilderShPtr& i_next) const
{
  return CorvOperationAdapterBuilder::create(m_roadmap, ClumSequenceOperation::createChain(self(), i_next));
}

CorvBuilderShPtr CorvBuilder::with(const CorvBuilderShPtr& i_other) const
{
  return CorvOperationAdapterBuilder::create(m_roadmap, ClumOperation::with(i_other));
}

CorvBuilderShPtr CorvBuilder::withAutotuned(const CorvBuilderShPtr& i_other) const
{
  return CorvOperationAdapterBuilder::create(m_roadmap, composed(ClumAutotuningParallelCooperativeOperation::create(
                                                                   m_roadmap->notificator(), CorvRoadmap::DID_ADD_NODE),
                                                                 i_other));
}

CorvBuilderShPtr CorvBuilder::withWeighted(const CorvBuilderShPtr& i_other, double i_weight) const
{
  return CorvOperationAdapterBuilder::create(m_roadmap, ClumOperation::withWeighted(i_other, i_weight));
}

CorvBuilderShPtr CorvBuilder::finally(const CorvBuilderShPtr& i_cleanUp) const
{
  return CorvOperationAdapterBuilder::create(m_roadmap, ClumOperation::finally(i_cleanUp));
}

CorvBuilderShPtr CorvBuilder::afterInjection() const
{
  const CorvBuilderShPtr injection = CorvInjectionBuilder::create(m_roadmap);
  return injection ? injection->then(self()) : injection;
}

lmStatus CorvBuilder::build(const ClumParameterMapConstShPtr& i_parameters)
{
  return operate(makeParams(i_parameters), ClumParameterMapShPtr());
}

lmStatus CorvBuilder::startBuild(const ClumParameterMapConstShPtr& i_parameters)
{
  return start(makeParams(i_parameters), ClumParameterMapShPtr());
}

lmStatus CorvBuilder::continueBuild(bool& o_shouldContinue)
{
  bool isFinished = false;
  const lmStatus status = step(isFinished);
  o_shouldContinue = !isFinished;
  return status;
}

CorvNodeShPtr CorvBuilder::addNode(const CorvConfig& i_config)
{
  const CorvNodeShPtr node = m_nodeFactory->makeNode(i_config);
  return addNode(node).succeeded() ? node : CorvNodeShPtr();
}

lmStatus CorvBuilder::addNode(const CorvNodeShPtr& i_node)
{
  return m_roadmap->addNode(i_node);
}

CorvEdgeShPtr CorvBuilder::addEdge(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end,
                                   const CorvDirectPathConstShPtr& i_directPath)
{
  return orvAddNewEdge(*m_roadmap, *m_edgeFactory, i_start, i_end, i_directPath);
}

lmStatus CorvBuilder::addEdge(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end, const CorvEdgeShPtr& i_edge)
{
  return m_roadmap->addEdge(i_start, i_end, i_edge);
}

std::pair<CorvEdgeShPtr, CorvEdgeShPtr> CorvBuilder::addDoubleEdge(const CorvNodeShPtr& i_start,
                                                                   const CorvNodeShPtr& i_end,
                                                                   const CorvDirectPathConstShPtr& i_directPath)
{
  return orvAddNewDoubleEdge(*m_roadmap, *m_edgeFactory, i_start, i_end, i_directPath);
}

lmStatus CorvBuilder::addDoubleEdge(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end,
                                    const CorvEdgeShPtr& i_edge, const CorvEdgeShPtr& i_reverseEdge)
{
  return m_roadmap->addDoubleEdge(i_start, i_end, i_edge, i_reverseEdge);
}

CorvNodeShPtr CorvBuilder::roadmapNode(const CorvConfig& i_config)
{
  // The roadmap looks for an equivalent node before it takes a new one: asking it first would look twice.
  const CorvNodeShPtr node = addNode(i_config);
  return node ? node : m_roadmap->nodeWithEquivalentConfig(i_config);
}

lmStatus CorvBuilder::roadmapLink(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end,
                                  const CorvDirectPathConstShPtr& i_directPath)
{
  return orvLinkNodes(*m_roadmap, *m_edgeFactory, i_start, i_end, i_directPath);
}

lmStatus CorvBuilder::link(CorvLinker::EDirection i_direction, const CorvNodeShPtr& i_node,
                           const ClumParameterMapConstShPtr& i_parameters)
{
  if (!m_linker)
    return lmStatus();
  const ClumStringKey& key = CorvLinker::edgeFactoryParameterKey();
  ShPtr<void> factory;
  // The run's own map holds the factory already.
  if (i_parameters && i_parameters->getVoidShPtr(key, factory).succeeded() && factory == m_edgeFactory)
    return m_linker->link(i_direction, i_node, i_parameters);
  const ClumParameterMapShPtr parameters = ClumParameterMap::createWithBase(i_parameters);
  parameters->setShPtr(key, m_edgeFactory);
  return m_linker->link(i_direction, i_node, parameters);
}

CorvConfigSpaceShPtr CorvBuilder::configSpace() const
{
  return m_roadmap ? m_roadmap->configSpace() : CorvConfigSpaceShPtr();
}

lmStatus CorvBuilder::nodeFactory(const CorvNodeFactoryShPtr& i_factory)
{
  if (!i_factory)
    return lmStatus(lmStatus::FAILURE);
  m_nodeFactory = i_factory;
  return lmStatus();
}

lmStatus CorvBuilder::edgeFactory(const CorvEdgeFactoryShPtr& i_factory)
{
  if (!i_factory)
    return lmStatus(lmStatus::FAILURE);
  m_edgeFactory = i_factory;
  if (m_buildParameters)
    m_buildParameters->setShPtr(CorvLinker::edgeFactoryParameterKey(), m_edgeFactory);
  return lmStatus();
}

void CorvBuilder::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumOperation::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_nodeFactory, "nodeFactory");
  i_coder->encodeObjectShPtr(m_edgeFactory, "edgeFactory");
  i_coder->encodeSharedPointer(ShPtr<void>(m_roadmap), "roadmap");
  i_coder->encodeObjectShPtr(m_linker, "linker");
}

lmStatus CorvBuilder::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumOperation::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_nodeFactory = i_coder->decode<CorvNodeFactory>("nodeFactory");
  m_edgeFactory = i_coder->decode<CorvEdgeFactory>("edgeFactory");
  m_roadmap = boost::static_pointer_cast<CorvRoadmap>(i_coder->decodeSharedPointer("roadmap"));
  m_linker = i_coder->decode<CorvLinker>("linker");
  return m_roadmap && m_nodeFactory && m_edgeFactory ? status : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvBuilder::doStart(const ClumParameterMapShPtr&)
{
  if (!m_roadmap || !m_nodeFactory || !m_edgeFactory)
    return lmStatus(lmStatus::FAILURE);
  m_buildParameters = makeParams(parameters());
  m_buildParameters->setShPtr(CorvLinker::edgeFactoryParameterKey(), m_edgeFactory);
  return doStartBuild(m_buildParameters);
}

lmStatus CorvBuilder::doStep(bool& o_finished)
{
  bool shouldContinue = true;
  const lmStatus status = doContinueBuild(shouldContinue);
  o_finished = !shouldContinue;
  return status;
}

lmStatus CorvBuilder::doFinish(const ClumParameterMapShPtr&)
{
  const lmStatus status = doFinishBuild();
  m_buildParameters.reset();
  return status;
}

/// A fresh map on the given one, in which the penetration is settled.
ClumParameterMapShPtr CorvBuilder::makeParams(const ClumParameterMapConstShPtr& i_parameters) const
{
  const ClumParameterMapShPtr made = ClumParameterMap::createWithBase(i_parameters);
  double penetration = 0.0;
  if (made->hasDouble(s_builderPenetrationKey) || !configSpace() ||
      CorvValidatorDPCollision::getPenetration(configSpace()->directPathValidators(), penetration).failed())
    return made;
  std::ostringstream text;
  text << "Builder using penetration " << penetration << " present in validator.";
  ClumLogManager::addInfo(text.str());
  made->setDouble(s_builderPenetrationKey, penetration);
  return made;
}
