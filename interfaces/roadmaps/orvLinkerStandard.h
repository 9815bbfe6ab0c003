#pragma once

#include "roadmaps/orvLinker.h"

/// Tries a few nodes of each component that a link would connect anew, small and poorly connected components first.
///
/// All tests are made before the first edge is added; a component that one success makes reachable is not tried any
/// more. Parameters: "orvane.core.linker-standard.nearest-node-count" (int, 2), how many nodes of a component are
/// tried at most; "orvane.core.linker-standard.link-node-strategy" (int, 1), which ones. A try costs the proof of a
/// direct path, and choosing the nodes a scan of the component unless a single nearest one is asked for.
class LUM_API CorvLinkerStandard : public CorvLinker
{
  LUM_CONCRETE(CorvLinkerStandard, CorvLinker);

public:
  enum ELinkNodeStrategy
  {
    LINK_NEAREST = 0,       ///< by distance
    LINK_BEST_CONNECTED = 1 ///< most edges first
  };

  static CorvLinkerStandardShPtr create();
  static CorvLinkerStandardShPtr createCopy(const CorvLinkerStandardConstShPtr& i_objectToCopy);
  ~CorvLinkerStandard() override;

  /// Looks for a valid direct path between a node and one of a component; nothing is added.
  /// @param i_direction one of the two single directions.
  static bool canLinkNodeWithComponent(EDirection i_direction, const CorvNodeShPtr& i_node,
                                       const CorvConnectedComponentConstShPtr& i_component,
                                       const ClumParameterMapConstShPtr& i_parameters, CorvNodeShPtr& o_node,
                                       CorvDirectPathShPtr& o_directPath);

  static const ClumStringKey& nearestNodeCountParameterKey();
  static const ClumStringKey& linkNodeStrategyParameterKey();

protected:
  CorvLinkerStandard() = default;
  CorvLinkerStandard(const CorvLinkerStandard&) = default;
  lmStatus init(const CorvLinkerStandardWkPtr& i_weakPtr);

  lmStatus doLink(EDirection i_direction, const CorvNodeShPtr& i_node,
                  const ClumParameterMapConstShPtr& i_parameters) const override;
};
