#pragma once

#include "metrics/orvMetric.h"
#include "metrics/orvFlatMetric.h"

/// Root of the sum of the squared distances of the sub-spaces, each by its own metric.
///
/// The tree of sub-spaces is flattened once for each version of a space, so that a distance is a loop over numbers. A
/// sub-space without a metric counts for nothing. A sub-space whose dofs are equal is not asked, so that the distance
/// of a metric that is not zero between equal values goes unseen.
class LUM_API CorvMetricEuclidean : public CorvMetric
{
  LUM_CONCRETE(CorvMetricEuclidean, CorvMetric);

public:
  ~CorvMetricEuclidean() override;
  /// With a walk of type `CorvRWComposite`.
  static CorvMetricEuclideanShPtr create();
  /// @return null if `i_randomWalk` is null or `i_type` empty.
  static CorvMetricEuclideanShPtr create(const CorvRandomWalkConstShPtr& i_randomWalk,
                                         const std::string& i_type = "orvane.core.metric.euclidean");
  static CorvMetricEuclideanShPtr createCopy(const CorvMetricEuclideanConstShPtr& i_objectToCopy);
  CorvMetricShPtr clone() const override;

  double distance(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  double squaredDistance(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  /// The squared distance: no root is taken.
  double distanceForSorting(const CorvConfig& i_a, const CorvConfig& i_b) const override;

  /// The metric as numbers for a space: how an index of many configurations measures them.
  /// @return false, with an empty form, if some sub-space's metric has none.
  bool getFlatForm(const CorvConfigSpace& i_space, CorvFlatForm& o_form) const;

  bool operator==(const CorvMetric& i_other) const override;

protected:
  CorvMetricEuclidean() = default;
  CorvMetricEuclidean(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type);
  CorvMetricEuclidean(const CorvMetricEuclidean&) = default;
  lmStatus init(const CorvMetricEuclideanWkPtr& i_weakPtr);

private:
  mutable CorvFlatMetric m_flat;
};
