#pragma once

#include "metrics/orvMetric.h"

/// No distance at all: dofs that do not count, and that no random step moves.
class LUM_API CorvMetricZero : public CorvMetric
{
  LUM_CONCRETE(CorvMetricZero, CorvMetric);

public:
  ~CorvMetricZero() override;
  /// With a walk of type `CorvRWLinearDof`.
  static CorvMetricZeroShPtr create();
  /// @return null if `i_randomWalk` is null or `i_type` empty.
  static CorvMetricZeroShPtr create(const CorvRandomWalkConstShPtr& i_randomWalk,
                                    const std::string& i_type = "orvane.core.metric.zero");
  static CorvMetricZeroShPtr createCopy(const CorvMetricZeroConstShPtr& i_objectToCopy);
  CorvMetricShPtr clone() const override;

  double distance(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  void randomStep(const CorvConfig& i_from, double i_step, CorvConfig& o_config) const override;
  bool isScaledAbsolute(double& o_scale) const override;
  bool isScaledCircular(double& o_scale) const override;

  bool operator==(const CorvMetric& i_other) const override;

protected:
  CorvMetricZero() = default;
  CorvMetricZero(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type);
  CorvMetricZero(const CorvMetricZero&) = default;
  lmStatus init(const CorvMetricZeroWkPtr& i_weakPtr);
};
