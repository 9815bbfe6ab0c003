#pragma once

#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvLinker.h"

#include <vector>

/// What linkers have in common: which components and nodes to try, in which order, and how to add what was found.
class CorvLinkSearch
{
public:
  struct CLink
  {
    CorvNodeShPtr node; ///< in the other component
    CorvDirectPathConstShPtr directPath;
  };

  /// @param i_direction one of the two single directions.
  CorvLinkSearch(CorvLinker::EDirection i_direction, const CorvNodeShPtr& i_node,
                 const ClumParameterMapConstShPtr& i_parameters);

  /// The nodes of a component to be tried, best first.
  std::vector<CorvNodeShPtr> candidatesIn(const CorvConnectedComponent& i_component) const;
  /// The motion that would link the node and a candidate, or null.
  CorvDirectPathShPtr makePath(const CorvNodeShPtr& i_candidate) const;
  /// Adds all that can be added. @return the first failure.
  lmStatus addLinks(const std::vector<CLink>& i_links) const;

  /// Calls `i_test(component, o_link)`, which answers whether a link was found, for each component that a link would
  /// connect anew, as long as no link found before has made it useless. The roadmap must not change meanwhile.
  template <class TEST>
  std::vector<CLink> searchComponents(TEST i_test) const
  {
    std::vector<CLink> links;
    std::vector<CWanted> wanted = wantedComponents();
    for (auto tried = wanted.begin(); tried != wanted.end(); ++tried)
    {
      CLink link;
      if (!tried->isWanted || !i_test(tried->component, link))
        continue;
      links.push_back(link);
      for (auto later = tried + 1; later != wanted.end(); ++later)
        later->isWanted = later->isWanted && !isMadeUseless(*later->component, *tried->component);
    }
    return links;
  }

private:
  struct CWanted
  {
    unsigned int key;
    CorvConnectedComponentShPtr component;
    bool isWanted;
  };

  lmStatus addLink(const CLink& i_link) const;
  bool isFromNode() const { return m_direction == CorvLinker::LINK_FROM_NODE; }
  std::vector<CWanted> wantedComponents() const;
  bool isMadeUseless(const CorvConnectedComponent& i_component, const CorvConnectedComponent& i_linked) const;
  double keyOf(const CorvNode& i_candidate) const;

  CorvLinker::EDirection m_direction;
  const CorvNodeShPtr& m_node;
  const ClumParameterMapConstShPtr& m_parameters;
  unsigned int m_count;
  bool m_isByDistance;
};

/// The part of an invalid, progressively tested direct path that the space's collision validator proved, validated by
/// all direct path validators with the same parameters. Null if there is none.
CorvDirectPathShPtr orvProvedPart(const CorvDirectPathConstShPtr& i_directPath,
                                  const ClumParameterMapConstShPtr& i_parameters);
