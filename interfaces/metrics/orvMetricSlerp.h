#pragma once

#include "metrics/orvMetricSolid.h"

/// Translation and angle of the turn between two poses, the angle weighed by the lever:
/// `sqrt(|t|^2 + (lever() * ROTATION_SCALE * angle)^2)`.
class LUM_API CorvMetricSlerp : public CorvMetricSolid
{
  LUM_CONCRETE(CorvMetricSlerp, CorvMetricSolid);

public:
  static constexpr double ROTATION_SCALE = 0.35;

  ~CorvMetricSlerp() override;
  /// @param i_randomWalk if null, a `CorvRWSlerp` of the joint with a Gaussian distribution.
  static CorvMetricSlerpShPtr create(const CorvJointShPtr& i_joint,
                                     const CorvRandomWalkConstShPtr& i_randomWalk = CorvRandomWalkConstShPtr(),
                                     const std::string& i_type = "orvane.core.metric.slerp");
  static CorvMetricSlerpShPtr createCopy(const CorvMetricSlerpConstShPtr& i_objectToCopy);
  CorvMetricShPtr clone() const override;

  bool operator==(const CorvMetric& i_other) const override;
  double solidDistance(const ClumMat4& i_a, const ClumMat4& i_b) const override;

protected:
  CorvMetricSlerp() = default;
  CorvMetricSlerp(const CorvJointShPtr& i_joint, const CorvRandomWalkConstShPtr& i_randomWalk,
                  const std::string& i_type);
  CorvMetricSlerp(const CorvMetricSlerp&) = default;
  lmStatus init(const CorvMetricSlerpWkPtr& i_weakPtr);
};
