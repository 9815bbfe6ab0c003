#pragma once

#include "metrics/orvMetricDecorator.h"

/// The decorated distance times a factor.
class LUM_API CorvMetricScale : public CorvMetricDecorator
{
  LUM_CONCRETE(CorvMetricScale, CorvMetricDecorator);

public:
  ~CorvMetricScale() override;
  /// With scale 1. @return null if `i_scaledMetric` is null.
  static CorvMetricScaleShPtr create(const CorvMetricShPtr& i_scaledMetric,
                                     const std::string& i_type = "orvane.core.metric.scale");
  static CorvMetricScaleShPtr createCopy(const CorvMetricScaleConstShPtr& i_objectToCopy);
  CorvMetricShPtr clone() const override;

  double scale() const { return m_scale; }
  void scale(double i_scale);

  double distance(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  double squaredDistance(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  /// The decorated metric's value, unscaled: a constant factor does not change an order.
  double distanceForSorting(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  /// With scale 0 the start itself.
  void randomStep(const CorvConfig& i_from, double i_step, CorvConfig& o_config) const override;
  bool isScaledAbsolute(double& o_scale) const override;
  bool isScaledCircular(double& o_scale) const override;
  bool operator==(const CorvMetric& i_other) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvMetricScale() = default;
  CorvMetricScale(const CorvMetricShPtr& i_scaledMetric, const std::string& i_type);
  CorvMetricScale(const CorvMetricScale&) = default;
  lmStatus init(const CorvMetricScaleWkPtr& i_weakPtr);

private:
  double m_scale = 1.0;
};
