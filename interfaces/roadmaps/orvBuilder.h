#pragma once

#include "foundation/lumOperation.h"
#include "kinematics/handles.h"
#include "paths/handles.h"
#include "planners/handles.h"
#include "roadmaps/handles.h"
#include "roadmaps/orvLinker.h"

#include <string>
#include <utility>

class CorvConfig;

// The typed compositions stand beside those of the base, they do not replace them.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"

/// An operation that grows a roadmap.
///
/// A subclass writes `doStartBuild`, `doContinueBuild` and `doFinishBuild`. Each run has a parameter map of its own,
/// laid over the parameters that it was started with, so a builder may write into it; builders that share a run's
/// parameters do not see each other's. The map settles the penetration: where the parameters have none, it is that of
/// the space's direct path validators.
///
/// Builders that share a roadmap run in one thread. The roadmap is shared by copies; a coder keeps it by pointer, so it
/// survives a copy in memory and is null in what is read from a file.
class LUM_API CorvBuilder : public ClumOperation
{
  LUM_ABSTRACT(CorvBuilder, ClumOperation);

public:
  /// Sent before an extension, with the configuration shot, a `CorvConfig` as a const void handle, under `CONFIG_KEY`.
  static const unsigned int WILL_EXPLORE_TOWARDS;
  static const std::string CONFIG_KEY;

  ~CorvBuilder() override;

  /// A planner around this builder.
  virtual CorvPathPlannerShPtr asPlanner() const;
  /// Compositions on this builder's roadmap. @return null if the other is null or cannot be a member.
  virtual CorvBuilderShPtr then(const CorvBuilderShPtr& i_next) const;
  virtual CorvBuilderShPtr with(const CorvBuilderShPtr& i_other) const;
  /// The one that adds more nodes to the roadmap gets more steps. @return null too if the roadmap has no notificator.
  virtual CorvBuilderShPtr withAutotuned(const CorvBuilderShPtr& i_other) const;
  /// @param i_weight the other's share of steps, where this builder has 1.
  virtual CorvBuilderShPtr withWeighted(const CorvBuilderShPtr& i_other, double i_weight) const;
  virtual CorvBuilderShPtr finally(const CorvBuilderShPtr& i_cleanUp) const;
  /// A builder that puts the hint path of its parameters into the roadmap, followed by this one.
  virtual CorvBuilderShPtr afterInjection() const;

  /// Runs to the end, which many builders never reach by themselves.
  lmStatus build(const ClumParameterMapConstShPtr& i_parameters);
  lmStatus startBuild(const ClumParameterMapConstShPtr& i_parameters);
  /// @param o_shouldContinue false once the run has ended.
  lmStatus continueBuild(bool& o_shouldContinue);
  void abortBuild() { abort(); }

  /// Adds a node of the factory. @return null if the roadmap refuses it.
  CorvNodeShPtr addNode(const CorvConfig& i_config);
  lmStatus addNode(const CorvNodeShPtr& i_node);
  /// Adds an edge of the factory. @return null if the roadmap refuses it.
  CorvEdgeShPtr addEdge(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end,
                        const CorvDirectPathConstShPtr& i_directPath);
  lmStatus addEdge(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end, const CorvEdgeShPtr& i_edge);
  /// Adds an edge for the direct path and one for its reverse. @return both null if either cannot be.
  std::pair<CorvEdgeShPtr, CorvEdgeShPtr> addDoubleEdge(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end,
                                                        const CorvDirectPathConstShPtr& i_directPath);
  lmStatus addDoubleEdge(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end, const CorvEdgeShPtr& i_edge,
                         const CorvEdgeShPtr& i_reverseEdge);
  /// The node with an equivalent configuration, or a new one. @return null if there is none and the roadmap refuses it.
  CorvNodeShPtr roadmapNode(const CorvConfig& i_config);
  /// One edge for an oriented direct path, otherwise one each way. @return -1 if an edge cannot be made.
  lmStatus roadmapLink(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end,
                       const CorvDirectPathConstShPtr& i_directPath);
  /// Has the linker tie a node to other components, with this builder's edge factory.
  lmStatus link(CorvLinker::EDirection i_direction, const CorvNodeShPtr& i_node,
                const ClumParameterMapConstShPtr& i_parameters);

  const CorvNodeFactoryShPtr& nodeFactory() const { return m_nodeFactory; }
  const CorvEdgeFactoryShPtr& edgeFactory() const { return m_edgeFactory; }
  const CorvLinkerShPtr& linker() const { return m_linker; }
  const CorvRoadmapShPtr& roadmap() const { return m_roadmap; }
  /// Of the roadmap; null without one.
  CorvConfigSpaceShPtr configSpace() const;
  /// Null is refused with -1.
  lmStatus nodeFactory(const CorvNodeFactoryShPtr& i_factory);
  lmStatus edgeFactory(const CorvEdgeFactoryShPtr& i_factory);
  /// Null for no linking.
  void linker(const CorvLinkerShPtr& i_linker) { m_linker = i_linker; }

  /// This run's own parameters; null between runs.
  const ClumParameterMapShPtr& buildParameters() const { return m_buildParameters; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvBuilder();
  explicit CorvBuilder(const CorvRoadmapShPtr& i_roadmap);
  /// The copy works on the same roadmap, with the same factories and linker.
  CorvBuilder(const CorvBuilder& i_other);
  /// Fails without a roadmap or a factory.
  lmStatus init(const CorvBuilderWkPtr& i_weakPtr);

  /// @param io_parameters the run's own map.
  virtual lmStatus doStartBuild(const ClumParameterMapShPtr& io_parameters) = 0;
  /// @param o_shouldContinue set to false when the builder is done.
  virtual lmStatus doContinueBuild(bool& o_shouldContinue) = 0;
  virtual lmStatus doFinishBuild() = 0;

  lmStatus doStart(const ClumParameterMapShPtr& o_output) override;
  lmStatus doStep(bool& o_finished) override;
  lmStatus doFinish(const ClumParameterMapShPtr& o_output) override;

private:
  ClumParameterMapShPtr makeParams(const ClumParameterMapConstShPtr& i_parameters) const;

  CorvNodeFactoryShPtr m_nodeFactory;
  CorvEdgeFactoryShPtr m_edgeFactory;
  CorvLinkerShPtr m_linker;
  CorvRoadmapShPtr m_roadmap;
  ClumParameterMapShPtr m_buildParameters;
};

#pragma GCC diagnostic pop
