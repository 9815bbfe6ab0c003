#pragma once

#include "foundation/lumCodable.h"
#include "kinematics/handles.h"
#include "metrics/handles.h"
#include "paths/handles.h"

/// The local planner of a space: makes the simple motion between two configurations, whatever is in the way.
class LUM_API CorvSteeringMethod : public ClumMutableCodable
{
  LUM_ABSTRACT(CorvSteeringMethod, ClumMutableCodable);

public:
  ~CorvSteeringMethod() override;
  virtual CorvSteeringMethodShPtr clone() const = 0;

  /// @return null if there is no such motion. Both configurations must be of one space.
  virtual CorvDirectPathShPtr makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const = 0;
  /// True if the path from a to b is not the reverse of the path from b to a: such a path cannot be reversed in place.
  virtual bool isOriented(const CorvConfigSpaceConstShPtr& i_space) const = 0;
  /// True if the stretch of a path between two of its points is what the method would make between these points, so
  /// that a part of a path can be a cut of the same path.
  virtual bool isConservative(const CorvConfigSpaceConstShPtr& i_space) const;
  virtual bool operator==(const CorvSteeringMethod& i_other) const;
  bool operator!=(const CorvSteeringMethod& i_other) const { return !(*this == i_other); }

  const CorvMetricShPtr& metric() const { return m_metric; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvSteeringMethod();
  /// The copy gets a clone of the metric.
  CorvSteeringMethod(const CorvSteeringMethod& i_other);
  lmStatus init(const CorvSteeringMethodWkPtr& i_weakPtr);
  void metric(const CorvMetricShPtr& i_metric) { m_metric = i_metric; }

private:
  CorvMetricShPtr m_metric;
};
