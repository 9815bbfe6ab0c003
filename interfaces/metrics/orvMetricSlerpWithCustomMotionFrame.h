#pragma once

#include "metrics/orvMetric.h"

/// The distance of poses of a free-flyer that turns about a frame of the client's choice.
///
/// A configuration has twelve values: six for that frame, relative to the joint, and six for the pose. The frame of the
/// configuration that is gone to decides, so the distance is not symmetric. What cannot be computed is at distance 0.
///
/// It holds the effect, and so must not be the metric of the effect's own space.
class LUM_API CorvMetricSlerpWithCustomMotionFrame : public CorvMetric
{
  LUM_CONCRETE(CorvMetricSlerpWithCustomMotionFrame, CorvMetric);

public:
  ~CorvMetricSlerpWithCustomMotionFrame() override;
  /// @param i_joint gives the kinematical effect, of six dofs. @param i_randomWalk if null, a `CorvRWComposite`.
  static CorvMetricSlerpWithCustomMotionFrameShPtr
  create(const CorvJointShPtr& i_joint, const CorvRandomWalkConstShPtr& i_randomWalk = CorvRandomWalkConstShPtr(),
         const std::string& i_type = "orvane.core.metric.slerp-with-custom-motion-frame");
  static CorvMetricSlerpWithCustomMotionFrameShPtr
  createCopy(const CorvMetricSlerpWithCustomMotionFrameConstShPtr& i_objectToCopy);
  CorvMetricShPtr clone() const override;

  const CorvKinematicalEffectShPtr& kinematicalEffect() const { return m_kinematicalEffect; }

  double distance(const CorvConfig& i_a, const CorvConfig& i_b) const override;

  bool operator==(const CorvMetric& i_other) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvMetricSlerpWithCustomMotionFrame() = default;
  CorvMetricSlerpWithCustomMotionFrame(const CorvJointShPtr& i_joint, const CorvRandomWalkConstShPtr& i_randomWalk,
                                       const std::string& i_type);
  CorvMetricSlerpWithCustomMotionFrame(const CorvMetricSlerpWithCustomMotionFrame&) = default;
  lmStatus init(const CorvMetricSlerpWithCustomMotionFrameWkPtr& i_weakPtr);

private:
  lmStatus matrixOfConfig(const CorvConfig& i_cfg, ClumMat4& o_matrix) const;
  lmStatus jointToFrameTransformation(const CorvConfig& i_cfg, ClumMat4& o_matrix) const;
  lmStatus distanceToFrame(const CorvConfig& i_cfg, double& o_distance) const;

  CorvKinematicalEffectShPtr m_kinematicalEffect;
};
