#pragma once

#include "metrics/orvMetric.h"
#include "paths/handles.h"

/// The length of the direct path that the space's steering method makes from one configuration to the other, infinite
/// if it makes none. Not symmetric where the steering method is oriented.
///
/// Where that length is itself measured by this metric, the steering method's own metric answers instead.
class LUM_API CorvMetricIntrinsinc : public CorvMetric
{
  LUM_CONCRETE(CorvMetricIntrinsinc, CorvMetric);

public:
  ~CorvMetricIntrinsinc() override;
  /// With a walk of type `CorvRWComposite`.
  static CorvMetricIntrinsincShPtr create();
  /// @return null if `i_randomWalk` is null or `i_type` empty.
  static CorvMetricIntrinsincShPtr create(const CorvRandomWalkConstShPtr& i_randomWalk,
                                          const std::string& i_type = "orvane.core.metric.intrinsinc");
  static CorvMetricIntrinsincShPtr createCopy(const CorvMetricIntrinsincConstShPtr& i_objectToCopy);
  CorvMetricShPtr clone() const override;

  double distance(const CorvConfig& i_a, const CorvConfig& i_b) const override;

  bool operator==(const CorvMetric& i_other) const override;

protected:
  CorvMetricIntrinsinc() = default;
  CorvMetricIntrinsinc(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type);
  CorvMetricIntrinsinc(const CorvMetricIntrinsinc&) = default;
  lmStatus init(const CorvMetricIntrinsincWkPtr& i_weakPtr);

private:
  double ownMetricDistance(const CorvSteeringMethod& i_method, const CorvConfig& i_a, const CorvConfig& i_b) const;

  mutable bool m_isMeasuring = false;
};
