#include "roadmaps/linkSearch.h"

#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "paths/orvDirectPath.h"
#include "paths/orvSteeringMethod.h"
#include "roadmaps/orvLinkerStandard.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRoadmap.h"
#include "validation/orvValidatorDPCollision.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>

CorvLinkSearch::CorvLinkSearch(CorvLinker::EDirection i_direction, const CorvNodeShPtr& i_node,
                               const ClumParameterMapConstShPtr& i_parameters)
  : m_direction(i_direction), m_node(i_node), m_parameters(i_parameters)
{
  const int count = i_parameters ? i_parameters->intValue(CorvLinkerStandard::nearestNodeCountParameterKey(), 2) : 2;
  const int byConnection = CorvLinkerStandard::LINK_BEST_CONNECTED;
  const int strategy = i_parameters
                         ? i_parameters->intValue(CorvLinkerStandard::linkNodeStrategyParameterKey(), byConnection)
                         : byConnection;
  m_count = static_cast<unsigned int>(std::max(count, 0));
  m_isByDistance = strategy == CorvLinkerStandard::LINK_NEAREST;
}

std::vector<CorvNodeShPtr> CorvLinkSearch::candidatesIn(const CorvConnectedComponent& i_component) const
{
  if (m_count == 1 && m_isByDistance)
  {
    const CorvNodeShPtr nearest = i_component.nearestNode(m_node->config());
    return nearest ? std::vector<CorvNodeShPtr>{nearest} : std::vector<CorvNodeShPtr>();
  }
  // The best few by ascending key; among equals the one that came first stays before.
  using TKeyed = std::pair<double, CorvNodeShPtr>;
  std::vector<TKeyed> best;
  for (auto node = i_component.beginNodeIterator(); m_count > 0 && node != i_component.endNodeIterator(); ++node)
  {
    const double key = keyOf(**node);
    if (best.size() == m_count && !(key < best.back().first))
      continue;
    const auto place = std::upper_bound(best.begin(), best.end(), key,
                                        [](double i_key, const TKeyed& i_other) { return i_key < i_other.first; });
    best.insert(place, TKeyed(key, *node));
    if (best.size() > m_count)
      best.pop_back();
  }
  std::vector<CorvNodeShPtr> candidates;
  for (const TKeyed& keyed : best)
    candidates.push_back(keyed.second);
  return candidates;
}

CorvDirectPathShPtr CorvLinkSearch::makePath(const CorvNodeShPtr& i_candidate) const
{
  const CorvConfig& own = m_node->config();
  const CorvConfig& other = i_candidate->config();
  const CorvSteeringMethodShPtr& steering = own.space()->steeringMethod();
  if (!steering)
    return CorvDirectPathShPtr();
  return isFromNode() ? steering->makeDirectPath(own, other) : steering->makeDirectPath(other, own);
}

lmStatus CorvLinkSearch::addLinks(const std::vector<CLink>& i_links) const
{
  lmStatus first;
  for (const CLink& link : i_links)
  {
    const lmStatus status = addLink(link);
    if (first.succeeded())
      first = status;
  }
  return first;
}

lmStatus CorvLinkSearch::addLink(const CLink& i_link) const
{
  return isFromNode() ? CorvLinker::roadmapLink(m_node, i_link.node, i_link.directPath, m_parameters)
                      : CorvLinker::roadmapLink(i_link.node, m_node, i_link.directPath, m_parameters);
}

/// Small and poorly connected components first; components of one key in the order of the roadmap.
std::vector<CorvLinkSearch::CWanted> CorvLinkSearch::wantedComponents() const
{
  const CorvRoadmapShPtr roadmap = m_node->roadmap();
  const CorvConnectedComponentShPtr own = m_node->connectedComponent();
  std::vector<CWanted> wanted;
  const unsigned int count = roadmap->countConnectedComponents();
  for (unsigned int rank = 0; rank < count; ++rank)
  {
    const CorvConnectedComponentShPtr component = roadmap->connectedComponent(rank);
    const bool isConnected = component == own || (isFromNode() ? own->hasTransitiveOutComponent(component)
                                                               : component->hasTransitiveOutComponent(own));
    if (!isConnected)
      wanted.push_back(
        {isFromNode() ? component->countTransitiveInComponents() : component->countTransitiveOutComponents(), component,
         true});
  }
  // Mostly there is one, and sorting would allocate.
  if (wanted.size() > 1)
    std::stable_sort(wanted.begin(), wanted.end(),
                     [](const CWanted& i_a, const CWanted& i_b) { return i_a.key < i_b.key; });
  return wanted;
}

bool CorvLinkSearch::isMadeUseless(const CorvConnectedComponent& i_component,
                                   const CorvConnectedComponent& i_linked) const
{
  return isFromNode() ? i_linked.hasTransitiveOutComponent(i_component.self())
                      : i_component.hasTransitiveOutComponent(i_linked.self());
}

double CorvLinkSearch::keyOf(const CorvNode& i_candidate) const
{
  if (m_isByDistance)
    return m_node->config().distanceTo(i_candidate.config());
  return -static_cast<double>(isFromNode() ? i_candidate.countOutEdges() : i_candidate.countInEdges());
}

CorvDirectPathShPtr orvProvedPart(const CorvDirectPathConstShPtr& i_directPath,
                                  const ClumParameterMapConstShPtr& i_parameters)
{
  std::vector<CorvValidatorShPtr> validators;
  i_directPath->configSpace()->directPathValidators()->getEmbeddedValidators(validators);
  for (const CorvValidatorShPtr& validator : validators)
    if (const auto* const collision = dynamic_cast<const CorvValidatorDPCollision*>(validator.get()))
    {
      const CorvDirectPathShPtr part = collision->extractValidPart(i_directPath);
      if (!part)
        return part;
      // A part that the steering method made anew need not lie on the motion that was proved.
      if (!i_directPath->isConservative())
        part->clearReports();
      return part->validate(i_parameters) ? part : CorvDirectPathShPtr();
    }
  return CorvDirectPathShPtr();
}
