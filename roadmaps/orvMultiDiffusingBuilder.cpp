#include "roadmaps/orvMultiDiffusingBuilder.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDataMonitor.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumParallelCooperativeOperation.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "manifolds/orvManifold.h"
#include "paths/orvPath.h"
#include "planners/orvPathPlanner.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRatingShortestComponent.h"
#include "roadmaps/orvRoadmap.h"

#include <algorithm>
#include <limits>
#include <sstream>

LUM_DESCRIBE(CorvMultiDiffusingBuilderRating)
{
}

LUM_DESCRIBE(CorvMultiDiffusingBuilder)
{
  i_class.creates("(const CorvRoadmapShPtr& i_roadmap)", &Self::create);
}

namespace
{
const ClumStringKey s_multiDiffusionHintPathKey("orvane.core.builder.hint-path");
/// Shots without a node after which a tree is taken for stuck.
const unsigned int s_stuckShotCount = 500;

CorvMonoDiffusingBuilder::EDiffusionType diffusionTypeOfSpot(CorvMultiDiffusingBuilder::EDiffusionSpotType i_type)
{
  return i_type == CorvMultiDiffusingBuilder::START_LIKE ? CorvMonoDiffusingBuilder::DIFFUSION_FROM
                                                         : CorvMonoDiffusingBuilder::DIFFUSION_TO;
}
} // namespace

CorvMultiDiffusingBuilderRating::~CorvMultiDiffusingBuilderRating() = default;

lmStatus CorvMultiDiffusingBuilderRating::init(const CorvMultiDiffusingBuilderRatingWkPtr& i_weakPtr)
{
  return ClumCodable::init(i_weakPtr);
}

/// How the trees of one type stand.
struct CorvMultiDiffusingBuilder::CStanding
{
  bool exists = false;
  unsigned int best = 0; ///< rank of the elementary builder
  double sum = 0.0;      ///< of all ratings
};

CorvMultiDiffusingBuilderShPtr CorvMultiDiffusingBuilder::create(const CorvRoadmapShPtr& i_roadmap)
{
  return lumCreate<CorvMultiDiffusingBuilder>(i_roadmap);
}

CorvMultiDiffusingBuilderShPtr
CorvMultiDiffusingBuilder::createCopy(const CorvMultiDiffusingBuilderConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMultiDiffusingBuilder::CorvMultiDiffusingBuilder(const CorvMultiDiffusingBuilder& i_other)
  : CorvBuilder(i_other), m_rating(i_other.m_rating),
    m_doesUseHintPath(i_other.m_doesUseHintPath), m_manifolds{i_other.m_manifolds[START_LIKE],
                                                              i_other.m_manifolds[GOAL_LIKE]}
{
}

CorvMultiDiffusingBuilder::~CorvMultiDiffusingBuilder() = default;

lmStatus CorvMultiDiffusingBuilder::init(const CorvMultiDiffusingBuilderWkPtr& i_weakPtr)
{
  const lmStatus status = CorvBuilder::init(i_weakPtr);
  if (status.failed())
    return status;
  m_prototype = CorvMonoDiffusingBuilder::create(roadmap());
  m_rating = CorvRatingShortestComponent::create();
  m_parallelOperation = makeParallelOperation();
  return m_prototype && m_parallelOperation ? status : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvMultiDiffusingBuilder::init(const CorvMultiDiffusingBuilderWkPtr& i_weakPtr,
                                         const CorvMultiDiffusingBuilderConstShPtr& i_source)
{
  lmStatus status = CorvBuilder::init(i_weakPtr);
  if (status.failed())
    return status;
  m_prototype = CorvMonoDiffusingBuilder::createCopy(i_source->m_prototype);
  m_parallelOperation = makeParallelOperation();
  if (!m_prototype || !m_parallelOperation)
    return lmStatus(lmStatus::FAILURE);
  for (unsigned int rank = 0; rank < i_source->countElementaryBuilders() && status.succeeded(); ++rank)
    status = m_parallelOperation->addOperation(CorvMonoDiffusingBuilder::createCopy(i_source->elementaryBuilder(rank)));
  return status;
}

lmStatus CorvMultiDiffusingBuilder::addDiffusionSpot(const CorvConfig& i_config, EDiffusionSpotType i_type)
{
  CorvMonoDiffusingBuilderShPtr builder;
  return addDiffusionSpot(i_config, i_type, builder);
}

lmStatus CorvMultiDiffusingBuilder::addDiffusionSpot(const CorvConfig& i_config, EDiffusionSpotType i_type,
                                                     CorvMonoDiffusingBuilderShPtr& o_builder)
{
  o_builder.reset();
  if (isDiffusionSpotOfType(i_config, i_type))
    return lmStatus();
  const CorvMonoDiffusingBuilderShPtr builder = CorvMonoDiffusingBuilder::createCopy(m_prototype);
  if (!builder)
    return lmStatus(lmStatus::FAILURE);
  builder->setDiffusionConfiguration(i_config);
  builder->diffusionType(diffusionTypeOfSpot(i_type));
  const lmStatus status = m_parallelOperation->addOperation(builder);
  if (status.succeeded())
    o_builder = builder;
  return status;
}

unsigned int CorvMultiDiffusingBuilder::countDiffusionSpots(EDiffusionSpotType i_type) const
{
  unsigned int count = 0;
  for (unsigned int rank = 0; rank < countElementaryBuilders(); ++rank)
    if (elementaryBuilder(rank)->diffusionType() == diffusionTypeOfSpot(i_type))
      ++count;
  return count;
}

lmStatus CorvMultiDiffusingBuilder::getDiffusionSpot(EDiffusionSpotType i_type, unsigned int i_rank,
                                                     CorvConfig& o_config) const
{
  unsigned int left = i_rank;
  for (unsigned int rank = 0; rank < countElementaryBuilders(); ++rank)
  {
    const CorvMonoDiffusingBuilderShPtr builder = elementaryBuilder(rank);
    if (builder->diffusionType() != diffusionTypeOfSpot(i_type))
      continue;
    if (left == 0)
    {
      o_config = builder->diffusionConfiguration();
      return lmStatus();
    }
    --left;
  }
  return lmStatus(lmStatus::FAILURE);
}

bool CorvMultiDiffusingBuilder::isDiffusionSpotOfType(const CorvConfig& i_config, EDiffusionSpotType i_type) const
{
  for (unsigned int rank = 0; rank < countElementaryBuilders(); ++rank)
  {
    const CorvMonoDiffusingBuilderShPtr builder = elementaryBuilder(rank);
    if (builder->diffusionType() == diffusionTypeOfSpot(i_type) &&
        builder->diffusionConfiguration().isEquivalent(i_config))
      return true;
  }
  return false;
}

unsigned int CorvMultiDiffusingBuilder::countElementaryBuilders() const
{
  return m_parallelOperation ? m_parallelOperation->countOperations() : 0;
}

CorvMonoDiffusingBuilderShPtr CorvMultiDiffusingBuilder::elementaryBuilder(unsigned int i_rank) const
{
  return boost::static_pointer_cast<CorvMonoDiffusingBuilder>(m_parallelOperation->operation(i_rank));
}

lmStatus CorvMultiDiffusingBuilder::prototype(const CorvMonoDiffusingBuilderShPtr& i_prototype)
{
  if (!i_prototype || i_prototype->roadmap() != roadmap())
    return lmStatus(lmStatus::FAILURE);
  m_prototype = i_prototype;
  return lmStatus();
}

const CorvDiffusionShooterShPtr& CorvMultiDiffusingBuilder::diffusionShooter() const
{
  return m_prototype->diffusionShooter();
}

void CorvMultiDiffusingBuilder::diffusionShooter(const CorvDiffusionShooterShPtr& i_shooter)
{
  m_prototype->diffusionShooter(i_shooter);
  for (unsigned int rank = 0; rank < countElementaryBuilders(); ++rank)
    elementaryBuilder(rank)->diffusionShooter(i_shooter);
}

const CorvPathPlannerShPtr& CorvMultiDiffusingBuilder::extendMethod() const
{
  return m_prototype->extendMethod();
}

void CorvMultiDiffusingBuilder::extendMethod(const CorvPathPlannerShPtr& i_extendMethod)
{
  m_prototype->extendMethod(i_extendMethod);
  for (unsigned int rank = 0; rank < countElementaryBuilders(); ++rank)
    elementaryBuilder(rank)->extendMethod(i_extendMethod);
}

void CorvMultiDiffusingBuilder::linker(const CorvLinkerShPtr& i_linker)
{
  CorvBuilder::linker(i_linker);
  m_prototype->linker(i_linker);
  for (unsigned int rank = 0; rank < countElementaryBuilders(); ++rank)
    elementaryBuilder(rank)->linker(i_linker);
}

void CorvMultiDiffusingBuilder::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvBuilder::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_prototype, "prototype");
  i_coder->encodeObjectShPtr(m_rating, "rating");
  i_coder->encodeBool(m_doesUseHintPath, "doesUseHintPath");
  i_coder->encodeObjectShPtr(m_manifolds[START_LIKE], "startLikeManifold");
  i_coder->encodeObjectShPtr(m_manifolds[GOAL_LIKE], "goalLikeManifold");
  i_coder->encodeObjectShPtr(m_parallelOperation, "parallelOperation");
}

lmStatus CorvMultiDiffusingBuilder::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvBuilder::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_prototype = i_coder->decode<CorvMonoDiffusingBuilder>("prototype");
  m_rating = i_coder->decode<CorvMultiDiffusingBuilderRating>("rating");
  m_doesUseHintPath = i_coder->decodeBool("doesUseHintPath");
  m_manifolds[START_LIKE] = i_coder->decode<CorvManifold>("startLikeManifold");
  m_manifolds[GOAL_LIKE] = i_coder->decode<CorvManifold>("goalLikeManifold");
  m_parallelOperation = i_coder->decode<ClumParallelCooperativeOperation>("parallelOperation");
  return status;
}

ClumParallelCooperativeOperationShPtr CorvMultiDiffusingBuilder::makeParallelOperation() const
{
  return ClumParallelCooperativeOperation::create();
}

lmStatus CorvMultiDiffusingBuilder::doStartBuild(const ClumParameterMapShPtr& io_parameters)
{
  if (!m_prototype || !m_parallelOperation)
    return lmStatus(lmStatus::FAILURE);
  if (m_doesUseHintPath)
  {
    const lmStatus status = addHintPathSpots(io_parameters);
    if (status.failed())
      return status;
  }
  std::fill(m_thresholds, m_thresholds + 2, 0.0);
  std::fill(m_seededCounts, m_seededCounts + 2, 0u);
  return startDelegateOperation(m_parallelOperation);
}

lmStatus CorvMultiDiffusingBuilder::doContinueBuild(bool& o_shouldContinue)
{
  // Steps come here only once the parallel operation has finished, which is when all its members were stopped.
  o_shouldContinue = m_parallelOperation->state() == STATE_RUNNING;
  if (!o_shouldContinue)
    return lmStatus();
  bool isFinished = false;
  const lmStatus status = m_parallelOperation->step(isFinished);
  o_shouldContinue = !isFinished;
  return status;
}

lmStatus CorvMultiDiffusingBuilder::doFinishBuild()
{
  for (std::vector<CorvConnectedComponentShPtr>& components : m_seenComponents)
    components.clear();
  return m_parallelOperation ? stop(m_parallelOperation) : lmStatus();
}

lmStatus CorvMultiDiffusingBuilder::doStepDelegate(bool& o_finished)
{
  o_finished = false;
  removeRedundantSpots();
  steer();
  seedSpots(START_LIKE);
  seedSpots(GOAL_LIKE);
  // Without a tree there is nothing to step, and a manifold may still offer one.
  return countElementaryBuilders() == 0 ? lmStatus() : CorvBuilder::doStepDelegate(o_finished);
}

lmStatus CorvMultiDiffusingBuilder::doComputeCompletion(double& o_completion) const
{
  return m_parallelOperation ? m_parallelOperation->computeCompletion(o_completion) : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvMultiDiffusingBuilder::addHintPathSpots(const ClumParameterMapConstShPtr& i_parameters)
{
  const CorvPathConstShPtr path = i_parameters->constShPtrValue<CorvPath>(s_multiDiffusionHintPathKey);
  if (!path)
  {
    ClumLogManager::addError("Multi diffusing builder cannot find hint path.");
    return lmStatus(lmStatus::FAILURE);
  }
  const unsigned int count = path->countConfigurations();
  for (unsigned int rank = 0; rank < count; ++rank)
  {
    if (rank + 1 < count || count == 1)
      addHintPathSpot(*path, rank, START_LIKE);
    if (rank > 0)
      addHintPathSpot(*path, rank, GOAL_LIKE);
  }
  return lmStatus();
}

void CorvMultiDiffusingBuilder::addHintPathSpot(const CorvPath& i_path, unsigned int i_rank, EDiffusionSpotType i_type)
{
  CorvConfig config(configSpace());
  std::ostringstream warning;
  if (i_path.getConfiguration(i_rank, config).failed())
    warning << "Multi diffusing builder cannot retrieve hint path configuration #" << i_rank;
  else if (addDiffusionSpot(config, i_type).failed())
    warning << "Multi diffusing builder cannot diffuse from hint path configuration #" << i_rank
            << (i_type == START_LIKE ? " (start-like)." : " (goal-like).");
  else
    return;
  ClumLogManager::addWarning(warning.str());
}

/// Of the trees of one type that have become one, only the first goes on.
void CorvMultiDiffusingBuilder::removeRedundantSpots()
{
  for (std::vector<CorvConnectedComponentShPtr>& components : m_seenComponents)
    components.clear();
  for (unsigned int rank = 0; rank < countElementaryBuilders();)
  {
    const CorvMonoDiffusingBuilderShPtr builder = elementaryBuilder(rank);
    const CorvNodeShPtr root = builder->diffusionNode();
    const CorvConnectedComponentShPtr component = root ? root->connectedComponent() : CorvConnectedComponentShPtr();
    std::vector<CorvConnectedComponentShPtr>& seen = m_seenComponents[builder->diffusionType()];
    if (component && std::find(seen.begin(), seen.end(), component) != seen.end())
    {
      m_parallelOperation->removeOperation(builder);
      continue;
    }
    seen.push_back(component);
    ++rank;
  }
}

/// Decides which trees get the next step.
void CorvMultiDiffusingBuilder::steer()
{
  if (!m_rating)
    return;
  const CStanding standings[2] = {standingOf(START_LIKE), standingOf(GOAL_LIKE)};
  bool isPaused[2] = {false, false};
  choosePauses(standings, isPaused);
  for (unsigned int rank = 0; rank < countElementaryBuilders(); ++rank)
  {
    const unsigned int type = elementaryBuilder(rank)->diffusionType();
    m_parallelOperation->isActive(rank, !isPaused[type] && rank == standings[type].best);
  }
}

CorvMultiDiffusingBuilder::CStanding CorvMultiDiffusingBuilder::standingOf(EDiffusionSpotType i_type) const
{
  CStanding standing;
  double bestRating = std::numeric_limits<double>::infinity();
  bool isBestStuck = true;
  for (unsigned int rank = 0; rank < countElementaryBuilders(); ++rank)
  {
    const CorvMonoDiffusingBuilderShPtr builder = elementaryBuilder(rank);
    if (builder->diffusionType() != diffusionTypeOfSpot(i_type))
      continue;
    double rating = std::numeric_limits<double>::infinity();
    if (m_rating->getRating(builder, rating).succeeded())
      standing.sum += rating;
    if (ClumDataMonitor::s_hasMonitor)
      ClumDataMonitor::plot("rating$ " + std::to_string(rank), rating);
    const bool isStuck = builder->countFruitlessShots() >= s_stuckShotCount;
    const bool isBetter = isStuck == isBestStuck ? rating < bestRating : isBestStuck;
    if (!standing.exists || isBetter)
    {
      standing.best = rank;
      bestRating = rating;
      isBestStuck = isStuck;
    }
    standing.exists = true;
  }
  return standing;
}

/// A type whose sum of ratings passes its threshold waits for the other. When both would wait, both thresholds rise.
void CorvMultiDiffusingBuilder::choosePauses(const CStanding i_standings[2], bool o_isPaused[2])
{
  if (!i_standings[START_LIKE].exists || !i_standings[GOAL_LIKE].exists)
    return;
  for (unsigned int type = 0; type < 2; ++type)
    o_isPaused[type] = i_standings[type].sum > m_thresholds[type];
  if (!o_isPaused[START_LIKE] || !o_isPaused[GOAL_LIKE])
    return;
  const double raised = 1.5 * std::max(i_standings[START_LIKE].sum, i_standings[GOAL_LIKE].sum);
  for (unsigned int type = 0; type < 2; ++type)
  {
    m_thresholds[type] = raised;
    o_isPaused[type] = false;
  }
}

void CorvMultiDiffusingBuilder::seedSpots(EDiffusionSpotType i_type)
{
  const CorvManifoldConstShPtr& manifold = m_manifolds[i_type];
  if (!manifold)
    return;
  CorvConfig element(manifold->ambientSpace());
  const unsigned int cardinality = manifold->cardinality();
  if (cardinality <= CorvManifold::MAX_FINITE_CARDINALITY)
  {
    for (; m_seededCounts[i_type] < cardinality; ++m_seededCounts[i_type])
      if (manifold->getCountableElement(m_seededCounts[i_type], element).succeeded())
        seedSpot(element, i_type);
  }
  else if (countDiffusionSpots(i_type) == 0 && manifold->getRandomValidElement(element, buildParameters()).succeeded())
    seedSpot(element, i_type);
}

void CorvMultiDiffusingBuilder::seedSpot(const CorvConfig& i_element, EDiffusionSpotType i_type)
{
  CorvConfig root(i_element);
  if (root.convert(configSpace()).failed() || isDiffusionSpotOfType(root, i_type) || !root.validate(buildParameters()))
    return;
  if (addDiffusionSpot(root, i_type).failed())
    ClumLogManager::addWarning("CorvMultiDiffusingBuilder::seedSpots() could not add spot.");
}
