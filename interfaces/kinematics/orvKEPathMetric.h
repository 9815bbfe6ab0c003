#pragma once

#include "metrics/orvMetric.h"

/// The metric of a path effect's dof: the length of the path between two parameters.
class LUM_API CorvKEPathMetric : public CorvMetric
{
  LUM_CONCRETE(CorvKEPathMetric, CorvMetric);

public:
  static constexpr const char* TYPE = "orvane.core.kinematical-effect.path.metric";

  ~CorvKEPathMetric() override;
  /// @param i_pathLength the length of the whole path. With a walk of type `CorvRWLinearDof`.
  static CorvKEPathMetricShPtr create(double i_pathLength);
  static CorvKEPathMetricShPtr createCopy(const CorvKEPathMetricConstShPtr& i_objectToCopy);
  CorvMetricShPtr clone() const override;

  double pathLength() const { return m_pathLength; }
  void pathLength(double i_pathLength);

  double distance(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  bool isScaledAbsolute(double& o_scale) const override;
  bool operator==(const CorvMetric& i_other) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvKEPathMetric() = default;
  explicit CorvKEPathMetric(double i_pathLength);
  CorvKEPathMetric(const CorvKEPathMetric&) = default;
  lmStatus init(const CorvKEPathMetricWkPtr& i_weakPtr);

private:
  double m_pathLength = 1.0;
};
