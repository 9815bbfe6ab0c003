#pragma once

#include "metrics/orvMetric.h"

/// A metric around another one.
///
/// Its `type()` is the decorator type, then the decorated metric's type in parentheses. Random walks belong to the
/// decorated metric. Copies own a clone of the decorated metric.
class LUM_API CorvMetricDecorator : public CorvMetric
{
  LUM_ABSTRACT(CorvMetricDecorator, CorvMetric);

public:
  ~CorvMetricDecorator() override;

  const std::string& decoratorType() const { return m_decoratorType; }
  const CorvMetricShPtr& decoratedMetric() const { return m_decoratedMetric; }

  void randomStep(const CorvConfig& i_from, double i_step, CorvConfig& o_config) const override;
  /// This metric if `i_type` is its decorator type, else what the decorated metric finds.
  CorvMetricShPtr find(const std::string& i_type) const override;
  lmStatus substitute(const std::string& i_type, const CorvMetricShPtr& i_metric) override;
  CorvRandomWalkConstShPtr randomWalk() const override;
  void randomWalk(const CorvRandomWalkConstShPtr& i_randomWalk) override;
  bool operator==(const CorvMetric& i_other) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvMetricDecorator() = default;
  CorvMetricDecorator(const CorvMetricShPtr& i_decoratedMetric, const std::string& i_decoratorType);
  CorvMetricDecorator(const CorvMetricDecorator& i_other);
  /// Fails if the decorated metric is null.
  lmStatus init(const CorvMetricDecoratorWkPtr& i_weakPtr);

  /// What a decorator that multiplies by `i_scale` has in common with others of its kind.
  double scaledSquaredDistance(const CorvConfig& i_a, const CorvConfig& i_b, double i_scale) const;
  void scaledRandomStep(const CorvConfig& i_from, double i_step, double i_scale, CorvConfig& o_config) const;
  bool isScaledAbsoluteBy(double i_scale, double& o_scale) const;
  bool isScaledCircularBy(double i_scale, double& o_scale) const;

private:
  /// True if the metric is this one or, however deep, decorates it.
  bool isDecoratedBy(const CorvMetricShPtr& i_metric) const;

  std::string m_decoratorType;
  CorvMetricShPtr m_decoratedMetric;
};
