#pragma once

#include "metrics/orvMetricDecorator.h"

/// The decorated distance times the sweep of a joint, read at each call: how far a turn of the joint carries what hangs
/// on it. The joint is held weakly; without it the sweep is 0.
class LUM_API CorvMetricJointSweep : public CorvMetricDecorator
{
  LUM_CONCRETE(CorvMetricJointSweep, CorvMetricDecorator);

public:
  static constexpr const char* TYPE = "orvane.core.metric.joint-sweep";

  ~CorvMetricJointSweep() override;
  static CorvMetricJointSweepShPtr create(const CorvJointShPtr& i_joint, const CorvMetricShPtr& i_decoratedMetric,
                                          const std::string& i_type = TYPE);
  static CorvMetricJointSweepShPtr createCopy(const CorvMetricJointSweepConstShPtr& i_objectToCopy);
  CorvMetricShPtr clone() const override;

  CorvJointShPtr joint() const;
  void joint(const CorvJointShPtr& i_joint);
  /// The joint's `maxSweep()`.
  double scale() const;

  double distance(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  double squaredDistance(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  /// The decorated metric's value, unscaled: a constant factor does not change an order.
  double distanceForSorting(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  /// With scale 0 the start itself.
  void randomStep(const CorvConfig& i_from, double i_step, CorvConfig& o_config) const override;
  bool isScaledAbsolute(double& o_scale) const override;
  bool isScaledCircular(double& o_scale) const override;
  bool operator==(const CorvMetric& i_other) const override;

  /// Gives the joint to the joint sweeps among the metrics of its space and of the sub-spaces.
  static void repairJoint(const CorvJointShPtr& i_joint);

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvMetricJointSweep() = default;
  CorvMetricJointSweep(const CorvJointShPtr& i_joint, const CorvMetricShPtr& i_decoratedMetric,
                       const std::string& i_type);
  CorvMetricJointSweep(const CorvMetricJointSweep&) = default;
  lmStatus init(const CorvMetricJointSweepWkPtr& i_weakPtr);

private:
  CorvJointWkPtr m_joint;
};
