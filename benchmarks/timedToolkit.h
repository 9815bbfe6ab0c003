#pragma once

#include "foundation/lumCollisionToolkit.h"

LUM_HANDLES(CTimedToolkit)

/// Hands every query on to another toolkit and sums up the time that it takes there. For one thread.
class CTimedToolkit : public ClumCollisionToolkit
{
  LUM_UNREFLECTED(CTimedToolkit, ClumCollisionToolkit);

public:
  /// @param i_inner not null.
  static CTimedToolkitShPtr create(const ClumCollisionToolkitShPtr& i_inner);
  ClumCollisionToolkitShPtr clone() const override;

  /// Spent in queries so far.
  double seconds() const { return m_seconds; }

  const void* kind() const override;
  ClumCollisionModelConstShPtr makeModel(const ClumLeafGeometry& i_leaf) const override;
  ClumCollisionModelConstShPtr makeJoinedModel(const std::vector<ClumPlacedLeaf>& i_leaves) const override;

protected:
  explicit CTimedToolkit(const ClumCollisionToolkitShPtr& i_inner);
  lmStatus init(const CTimedToolkitWkPtr& i_weakPtr);

  bool doAreTouching(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                     const ClumMat4& i_poseB, ClumTrianglePair* io_pair) const override;
  void doBoundedDistance(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                         const ClumMat4& i_poseB, double i_cap, double i_relativeAccuracy, double i_stopBelow,
                         const ClumDistanceResult* i_hint, bool i_wantsPoints,
                         ClumDistanceResult& o_result) const override;
  lmStatus doPenetration(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                         const ClumMat4& i_poseB, double& o_depth, ClumVect3& o_direction) const override;

private:
  ClumCollisionToolkitShPtr m_inner;
  mutable double m_seconds = 0.0;
};
