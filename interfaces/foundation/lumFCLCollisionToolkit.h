#pragma once

#include "foundation/lumCollisionToolkit.h"

/// The toolkit that stands on FCL's bounding volumes.
///
/// Distances run over trees of rectangle-swept spheres, contacts over trees of oriented boxes, which FCL builds and
/// measures. The pairs of triangles at the leaves are measured here: FCL's own routine loses digits on small triangles
/// and misses touching ones. Every lower bound has a slack for rounding taken off, 1e-11 of the size of the pair.
///
/// Penetration is told for two convex shapes of which the inner ones (a ball's centre, a capsule's segment) are apart.
class LUM_API ClumFCLCollisionToolkit : public ClumCollisionToolkit
{
  LUM_CONCRETE(ClumFCLCollisionToolkit, ClumCollisionToolkit);

public:
  ~ClumFCLCollisionToolkit() override;
  static ClumFCLCollisionToolkitShPtr create();
  static ClumFCLCollisionToolkitShPtr createCopy(const ClumFCLCollisionToolkitConstShPtr& i_objectToCopy);
  ClumCollisionToolkitShPtr clone() const override;

  const void* kind() const override;
  ClumCollisionModelConstShPtr makeModel(const ClumLeafGeometry& i_leaf) const override;
  ClumCollisionModelConstShPtr makeJoinedModel(const std::vector<ClumPlacedLeaf>& i_leaves) const override;

protected:
  ClumFCLCollisionToolkit() = default;
  ClumFCLCollisionToolkit(const ClumFCLCollisionToolkit& i_other) = default;
  lmStatus init(const ClumFCLCollisionToolkitWkPtr& i_weakPtr);

  bool doAreTouching(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                     const ClumMat4& i_poseB, ClumTrianglePair* io_pair) const override;
  void doBoundedDistance(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                         const ClumMat4& i_poseB, double i_cap, double i_relativeAccuracy, double i_stopBelow,
                         const ClumDistanceResult* i_hint, bool i_wantsPoints,
                         ClumDistanceResult& o_result) const override;
  lmStatus doPenetration(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                         const ClumMat4& i_poseB, double& o_depth, ClumVect3& o_direction) const override;
};
