#pragma once

#include "metrics/orvMetric.h"
#include "metrics/orvFlatMetric.h"

/// Sum of the distances of the sub-spaces, each by its own metric. Flattened as `CorvMetricEuclidean` is.
class LUM_API CorvMetricManhattan : public CorvMetric
{
  LUM_CONCRETE(CorvMetricManhattan, CorvMetric);

public:
  ~CorvMetricManhattan() override;
  /// With a walk of type `CorvRWComposite`.
  static CorvMetricManhattanShPtr create();
  /// @return null if `i_randomWalk` is null or `i_type` empty.
  static CorvMetricManhattanShPtr create(const CorvRandomWalkConstShPtr& i_randomWalk,
                                         const std::string& i_type = "orvane.core.metric.manhattan");
  static CorvMetricManhattanShPtr createCopy(const CorvMetricManhattanConstShPtr& i_objectToCopy);
  CorvMetricShPtr clone() const override;

  double distance(const CorvConfig& i_a, const CorvConfig& i_b) const override;

  bool operator==(const CorvMetric& i_other) const override;

protected:
  CorvMetricManhattan() = default;
  CorvMetricManhattan(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type);
  CorvMetricManhattan(const CorvMetricManhattan&) = default;
  lmStatus init(const CorvMetricManhattanWkPtr& i_weakPtr);

private:
  mutable CorvFlatMetric m_flat;
};
