#pragma once

#include "planners/orvBuilderPlannerBase.h"

/// A planner around any builder. See `CorvBuilderPlannerBase`.
class LUM_API CorvBuilderPlanner : public CorvBuilderPlannerBase
{
  LUM_CONCRETE(CorvBuilderPlanner, CorvBuilderPlannerBase);

public:
  /// @return null, with an error in the log, for a null builder.
  static CorvBuilderPlannerShPtr create(const CorvBuilderShPtr& i_builder);
  ~CorvBuilderPlanner() override;
  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  CorvBuilderShPtr builder() const override { return m_builder; }

protected:
  CorvBuilderPlanner() = default;
  explicit CorvBuilderPlanner(const CorvBuilderShPtr& i_builder);
  CorvBuilderPlanner(const CorvBuilderPlanner&) = default;
  lmStatus init(const CorvBuilderPlannerWkPtr& i_weakPtr);

private:
  CorvBuilderShPtr m_builder;
};
