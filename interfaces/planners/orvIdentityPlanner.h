#pragma once

#include "planners/orvPathPlanner.h"

/// Returns a copy of its input path.
class LUM_API CorvIdentityPlanner : public CorvPathPlanner
{
  LUM_CONCRETE(CorvIdentityPlanner, CorvPathPlanner);

public:
  static CorvIdentityPlannerShPtr create();
  ~CorvIdentityPlanner() override;

protected:
  CorvIdentityPlanner() = default;
  CorvIdentityPlanner(const CorvIdentityPlanner&) = default;
  lmStatus init(const CorvIdentityPlannerWkPtr& i_weakPtr);

  using CorvPathPlanner::doPlan;
  lmStatus doPlan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                  const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path) override;
  /// All configurations are where they were.
  lmStatus getOutputStableConfigurations(const CorvPathConstShPtr& i_outputPath,
                                         std::vector<bool>& o_stableConfigs) const override;
};
