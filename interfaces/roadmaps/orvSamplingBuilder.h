#pragma once

#include "roadmaps/orvBuilder.h"

/// Adds random valid configurations of the whole space, one a step, and links each with the components around it.
///
/// It works on spaces of finite size and never ends by itself. A step in which a hundred draws gave no valid
/// configuration adds nothing.
class LUM_API CorvSamplingBuilder : public CorvBuilder
{
  LUM_CONCRETE(CorvSamplingBuilder, CorvBuilder);

public:
  /// @return null without a roadmap.
  static CorvSamplingBuilderShPtr create(const CorvRoadmapShPtr& i_roadmap);
  static CorvSamplingBuilderShPtr createCopy(const CorvSamplingBuilderConstShPtr& i_objectToCopy);
  ~CorvSamplingBuilder() override;

protected:
  CorvSamplingBuilder() = default;
  explicit CorvSamplingBuilder(const CorvRoadmapShPtr& i_roadmap) : CorvBuilder(i_roadmap) {}
  CorvSamplingBuilder(const CorvSamplingBuilder&) = default;
  lmStatus init(const CorvSamplingBuilderWkPtr& i_weakPtr);

  lmStatus doStartBuild(const ClumParameterMapShPtr& io_parameters) override;
  lmStatus doContinueBuild(bool& o_shouldContinue) override;
  lmStatus doFinishBuild() override;
  /// Cannot tell.
  lmStatus doComputeCompletion(double& o_completion) const override;

private:
  CorvNodeShPtr shootValidNode() const;
};
