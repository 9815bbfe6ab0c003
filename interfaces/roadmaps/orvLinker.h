#pragma once

#include "foundation/lumCodable.h"
#include "paths/handles.h"
#include "roadmaps/handles.h"

class ClumStringKey;

/// How a node of a roadmap is tied to the components that it is not yet connected with.
///
/// A linker has no state of a run: what it does depends on its arguments, the roadmap and the parameters.
class LUM_API CorvLinker : public ClumMutableCodable
{
  LUM_ABSTRACT(CorvLinker, ClumMutableCodable);

public:
  enum EDirection
  {
    LINK_FROM_NODE = 0, ///< the new edge leaves the node
    LINK_TO_NODE = 1,   ///< the new edge arrives at the node
    LINK_BOTH = 2
  };

  ~CorvLinker() override;

  /// Where motions can be reversed, any direction is one pass, which makes two-way links.
  /// @return -1 if the node is null or in no roadmap. That nothing could be linked is no failure.
  lmStatus link(EDirection i_direction, const CorvNodeShPtr& i_node) const;
  lmStatus link(EDirection i_direction, const CorvNodeShPtr& i_node,
                const ClumParameterMapConstShPtr& i_parameters) const;

  /// One edge for an oriented direct path, otherwise one each way, of the edge factory in the parameters or else the
  /// default one. @return -1 if an edge cannot be made.
  static lmStatus roadmapLink(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end,
                              const CorvDirectPathConstShPtr& i_directPath,
                              const ClumParameterMapConstShPtr& i_parameters);

  /// "orvane.core.linker.edge-factory": a `CorvEdgeFactory` by handle.
  static const ClumStringKey& edgeFactoryParameterKey();

protected:
  CorvLinker() = default;
  CorvLinker(const CorvLinker&) = default;
  lmStatus init(const CorvLinkerWkPtr& i_weakPtr);

  /// @param i_direction one of the two single directions.
  /// @param i_parameters never null.
  virtual lmStatus doLink(EDirection i_direction, const CorvNodeShPtr& i_node,
                          const ClumParameterMapConstShPtr& i_parameters) const = 0;
};
