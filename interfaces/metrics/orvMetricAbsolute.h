#pragma once

#include "metrics/orvMetric.h"

/// `|a - b|` of the first dof: the metric of a translation, and of a bounded rotation.
class LUM_API CorvMetricAbsolute : public CorvMetric
{
  LUM_CONCRETE(CorvMetricAbsolute, CorvMetric);

public:
  ~CorvMetricAbsolute() override;
  /// With a walk of type `CorvRWLinearDof`.
  static CorvMetricAbsoluteShPtr create();
  /// @return null if `i_randomWalk` is null or `i_type` empty.
  static CorvMetricAbsoluteShPtr create(const CorvRandomWalkConstShPtr& i_randomWalk,
                                        const std::string& i_type = "orvane.core.metric.absolute");
  static CorvMetricAbsoluteShPtr createCopy(const CorvMetricAbsoluteConstShPtr& i_objectToCopy);
  CorvMetricShPtr clone() const override;

  double distance(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  bool isScaledAbsolute(double& o_scale) const override;

  bool operator==(const CorvMetric& i_other) const override;

protected:
  CorvMetricAbsolute() = default;
  CorvMetricAbsolute(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type);
  CorvMetricAbsolute(const CorvMetricAbsolute&) = default;
  lmStatus init(const CorvMetricAbsoluteWkPtr& i_weakPtr);
};
