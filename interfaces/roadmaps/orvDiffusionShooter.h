#pragma once

#include "foundation/lumCodable.h"
#include "roadmaps/handles.h"

#include <vector>

class CorvConfig;

/// Says towards which configuration a diffusion should expand next.
///
/// A builder asks with the node that the diffusion stands on, and tells afterwards whether the shot paid off. What a
/// shooter must know when that feedback comes it leaves on the trace, of which it takes off exactly what it put on.
/// Shooters draw from `CorvUtility` only. A shooter serves one builder at a time.
class LUM_API CorvDiffusionShooter : public ClumCodable
{
  LUM_ABSTRACT(CorvDiffusionShooter, ClumCodable);

public:
  enum EDiffusionNodeType
  {
    DIFFUSE_FROM = 0, ///< the tree grows away from its root
    DIFFUSE_TO = 1,   ///< the tree grows backwards to its root
    DIFFUSE_BOTH = 2
  };
  using TTrace = std::vector<ClumValue>;

  ~CorvDiffusionShooter() override;

  /// Called by a builder at its start.
  virtual void reset();
  /// @param i_node the node that the diffusion stands on.
  /// @param i_standardDeviation size of the random steps.
  /// @param o_config a configuration of the roadmap's space.
  virtual lmStatus shoot(const CorvNodeShPtr& i_node, EDiffusionNodeType i_type, double i_standardDeviation,
                         TTrace& io_trace, CorvConfig& o_config) = 0;
  virtual void shootWasUseful(const CorvNodeShPtr& i_node, EDiffusionNodeType i_type,
                              const CorvNodeShPtr& i_extendedNode, TTrace& io_trace);
  virtual void shootWasUseless(const CorvNodeShPtr& i_node, EDiffusionNodeType i_type, TTrace& io_trace);

protected:
  CorvDiffusionShooter() = default;
  CorvDiffusionShooter(const CorvDiffusionShooter&) = default;
  lmStatus init(const CorvDiffusionShooterWkPtr& i_weakPtr);
};
