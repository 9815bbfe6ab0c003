#pragma once

#include "metrics/orvMetric.h"

/// A distance of two poses of a rigid body: those that a joint's kinematical effect gives to two configurations.
///
/// The joint is held weakly. What cannot be computed is at distance 0.
class LUM_API CorvMetricSolid : public CorvMetric
{
  LUM_ABSTRACT(CorvMetricSolid, CorvMetric);

public:
  ~CorvMetricSolid() override;

  CorvJointShPtr joint() const;
  void joint(const CorvJointShPtr& i_joint);
  /// The joint's `maxSweep()`, 0 without a joint.
  double lever() const;

  double distance(const CorvConfig& i_a, const CorvConfig& i_b) const override;

  /// Gives the joint of a space, or of its device's root, to the space's metric and to those of its sub-spaces.
  static void repairSpace(const CorvConfigSpaceShPtr& i_space);

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  virtual double solidDistance(const ClumMat4& i_a, const ClumMat4& i_b) const = 0;

protected:
  CorvMetricSolid() = default;
  CorvMetricSolid(const CorvJointShPtr& i_joint, const CorvRandomWalkConstShPtr& i_randomWalk,
                  const std::string& i_type);
  CorvMetricSolid(const CorvMetricSolid&) = default;
  lmStatus init(const CorvMetricSolidWkPtr& i_weakPtr);

private:
  CorvJointWkPtr m_joint;
};
