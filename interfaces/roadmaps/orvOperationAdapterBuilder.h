#pragma once

#include "roadmaps/orvBuilder.h"

/// Makes a builder of an operation that grows a roadmap by whatever means.
class LUM_API CorvOperationAdapterBuilder : public CorvBuilder
{
  LUM_CONCRETE(CorvOperationAdapterBuilder, CorvBuilder);

public:
  /// @return null without a roadmap or an operation.
  static CorvOperationAdapterBuilderShPtr create(const CorvRoadmapShPtr& i_roadmap,
                                                 const ClumOperationShPtr& i_operation);
  ~CorvOperationAdapterBuilder() override;

  const ClumOperationShPtr& operation() const { return m_operation; }
  /// The wrapped operation.
  ClumOperationShPtr simplify() const override { return m_operation; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvOperationAdapterBuilder() = default;
  CorvOperationAdapterBuilder(const CorvRoadmapShPtr& i_roadmap, const ClumOperationShPtr& i_operation)
    : CorvBuilder(i_roadmap), m_operation(i_operation)
  {
  }
  lmStatus init(const CorvOperationAdapterBuilderWkPtr& i_weakPtr);

  lmStatus doStartBuild(const ClumParameterMapShPtr& io_parameters) override;
  lmStatus doContinueBuild(bool& o_shouldContinue) override;
  lmStatus doFinishBuild() override;
  lmStatus doComputeCompletion(double& o_completion) const override;
  lmStatus doComputeDifficulty(double& o_difficulty) const override;

private:
  ClumOperationShPtr m_operation;
};
