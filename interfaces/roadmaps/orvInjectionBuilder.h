#pragma once

#include "paths/handles.h"
#include "roadmaps/orvBuilder.h"

#include <vector>

/// Puts paths into a roadmap, one direct path a step.
///
/// A direct path that is valid with the builder's parameters becomes a link between the nodes at its ends, which are
/// found or made. One that is not valid is left out, and the next valid one begins where it begins itself. Paths that
/// are done are dropped; the builder ends when none is left. With a const `CorvPath` under
/// "orvane.core.builder.hint-path" that has a direct path, that path comes last.
class LUM_API CorvInjectionBuilder : public CorvBuilder
{
  LUM_CONCRETE(CorvInjectionBuilder, CorvBuilder);

public:
  /// @return null without a roadmap.
  static CorvInjectionBuilderShPtr create(const CorvRoadmapShPtr& i_roadmap);
  /// An idle builder on the same roadmap, with the paths that are left.
  static CorvInjectionBuilderShPtr createCopy(const CorvInjectionBuilderConstShPtr& i_objectToCopy);
  ~CorvInjectionBuilder() override;

  /// A path added to a running builder is put in too.
  /// @return -1 for null, a path without a direct path or one of another space than the roadmap's.
  lmStatus addPath(const CorvPathConstShPtr& i_path);
  /// All of them or none.
  lmStatus addPaths(const std::vector<CorvPathConstShPtr>& i_paths);
  unsigned int countPaths() const { return static_cast<unsigned int>(m_paths.size()); }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvInjectionBuilder() = default;
  explicit CorvInjectionBuilder(const CorvRoadmapShPtr& i_roadmap) : CorvBuilder(i_roadmap) {}
  CorvInjectionBuilder(const CorvInjectionBuilder& i_other) : CorvBuilder(i_other), m_paths(i_other.m_paths) {}
  lmStatus init(const CorvInjectionBuilderWkPtr& i_weakPtr);

  lmStatus doStartBuild(const ClumParameterMapShPtr& io_parameters) override;
  lmStatus doContinueBuild(bool& o_shouldContinue) override;
  lmStatus doFinishBuild() override;
  /// By length; 1 without any.
  lmStatus doComputeCompletion(double& o_completion) const override;

private:
  bool canInject(const CorvPathConstShPtr& i_path) const;
  void inject(const CorvDirectPathConstShPtr& i_directPath);

  std::vector<CorvPathConstShPtr> m_paths; ///< the current one first
  unsigned int m_rank = 0;                 ///< of the next direct path of the current path
  CorvNodeShPtr m_startNode;               ///< where the run of valid direct paths at hand began
  CorvNodeShPtr m_endNode;                 ///< and where it has come to; null if there is none
  double m_totalLength = 0.0;
  double m_doneLength = 0.0;
};
