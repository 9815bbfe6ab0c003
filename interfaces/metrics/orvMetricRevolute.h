#pragma once

#include "metrics/orvMetric.h"

/// `|circularDistance(a, b)|` of the first dof: the metric of an unbounded rotation.
class LUM_API CorvMetricRevolute : public CorvMetric
{
  LUM_CONCRETE(CorvMetricRevolute, CorvMetric);

public:
  ~CorvMetricRevolute() override;
  /// With a walk of type `CorvRWLinearDof`.
  static CorvMetricRevoluteShPtr create();
  /// @return null if `i_randomWalk` is null or `i_type` empty.
  static CorvMetricRevoluteShPtr create(const CorvRandomWalkConstShPtr& i_randomWalk,
                                        const std::string& i_type = "orvane.core.metric.revolute");
  static CorvMetricRevoluteShPtr createCopy(const CorvMetricRevoluteConstShPtr& i_objectToCopy);
  CorvMetricShPtr clone() const override;

  /// The signed short way from one angle to the other, in [-pi, pi): an exact half turn gives -pi in both orders.
  static double circularDistance(double i_from, double i_to);
  /// The angle folded into [-pi, pi).
  static double limitAngle(double i_angle);

  double distance(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  bool isScaledCircular(double& o_scale) const override;

  bool operator==(const CorvMetric& i_other) const override;

protected:
  CorvMetricRevolute() = default;
  CorvMetricRevolute(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type);
  CorvMetricRevolute(const CorvMetricRevolute&) = default;
  lmStatus init(const CorvMetricRevoluteWkPtr& i_weakPtr);
};
