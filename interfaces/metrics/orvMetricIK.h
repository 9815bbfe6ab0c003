#pragma once

#include "metrics/orvMetric.h"

/// The distance of a space whose dofs fall into those that are commanded and those that are reached by inverse
/// kinematics: root of the sum of both squared distances, each by the metric of its own space. A configuration in which
/// one of the two does not lie is measured by the other alone.
class LUM_API CorvMetricIK : public CorvMetric
{
  LUM_CONCRETE(CorvMetricIK, CorvMetric);

public:
  ~CorvMetricIK() override;
  /// With a walk of type `CorvRWLinearDof`. @return null if `i_commandSpace` is null.
  static CorvMetricIKShPtr create(const CorvConfigSpaceShPtr& i_commandSpace,
                                  const CorvConfigSpaceShPtr& i_targetSpace);
  static CorvMetricIKShPtr create(const CorvConfigSpaceShPtr& i_commandSpace, const CorvConfigSpaceShPtr& i_targetSpace,
                                  const CorvRandomWalkConstShPtr& i_randomWalk,
                                  const std::string& i_type = "orvane.core.metric.ik");
  static CorvMetricIKShPtr createCopy(const CorvMetricIKConstShPtr& i_objectToCopy);
  CorvMetricShPtr clone() const override;

  const CorvConfigSpaceShPtr& commandSpace() const { return m_commandSpace; }
  /// May be null.
  const CorvConfigSpaceShPtr& targetSpace() const { return m_targetSpace; }

  double distance(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  double squaredDistance(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  /// The squared distance: no root is taken.
  double distanceForSorting(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  /// Each space steps by its own metric.
  void randomStep(const CorvConfig& i_from, double i_step, CorvConfig& o_config) const override;
  using CorvMetric::randomWalk;
  /// Logged, and without effect.
  void randomWalk(const CorvRandomWalkConstShPtr& i_randomWalk) override;

  bool operator==(const CorvMetric& i_other) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvMetricIK() = default;
  CorvMetricIK(const CorvConfigSpaceShPtr& i_commandSpace, const CorvConfigSpaceShPtr& i_targetSpace,
               const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type);
  CorvMetricIK(const CorvMetricIK&) = default;
  lmStatus init(const CorvMetricIKWkPtr& i_weakPtr);

private:
  CorvConfigSpaceShPtr m_commandSpace;
  CorvConfigSpaceShPtr m_targetSpace;
};
