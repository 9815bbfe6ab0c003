#pragma once

#include "foundation/lumCollisionToolkit.h"

/// The toolkit that stands on a proximity kernel of the library's own, and the default.
///
/// Every shape is a set of triangles swept by a ball. They lie in packets of four under a tree of oriented boxes, eight
/// to a node; boxes are held and measured in single precision and rounded outward, triangles in double precision. The
/// kernel runs on the widest registers that the machine has and that it knows; the answers are the same to the bit on
/// all. Every lower bound has a slack for rounding taken off, 1e-11 of the size of the pair. See docs/proximity.md.
///
/// Shapes of which the coordinates reach beyond 1e14 are refused.
class LUM_API ClumProximityCollisionToolkit : public ClumCollisionToolkit
{
  LUM_CONCRETE(ClumProximityCollisionToolkit, ClumCollisionToolkit);

public:
  ~ClumProximityCollisionToolkit() override;
  static ClumProximityCollisionToolkitShPtr create();
  static ClumProximityCollisionToolkitShPtr createCopy(const ClumProximityCollisionToolkitConstShPtr& i_objectToCopy);
  ClumCollisionToolkitShPtr clone() const override;

  const void* kind() const override;
  ClumCollisionModelConstShPtr makeModel(const ClumLeafGeometry& i_leaf) const override;
  ClumCollisionModelConstShPtr makeJoinedModel(const std::vector<ClumPlacedLeaf>& i_leaves) const override;

protected:
  ClumProximityCollisionToolkit() = default;
  ClumProximityCollisionToolkit(const ClumProximityCollisionToolkit& i_other) = default;
  lmStatus init(const ClumProximityCollisionToolkitWkPtr& i_weakPtr);

  bool doAreTouching(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                     const ClumMat4& i_poseB, ClumTrianglePair* io_pair) const override;
  void doBoundedDistance(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                         const ClumMat4& i_poseB, double i_cap, double i_relativeAccuracy, double i_stopBelow,
                         const ClumDistanceResult* i_hint, bool i_wantsPoints,
                         ClumDistanceResult& o_result) const override;
  /// Told for every pair. The way out is the shortest along some directions; where the surfaces meet it is made
  /// shorter.
  lmStatus doPenetration(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                         const ClumMat4& i_poseB, double& o_depth, ClumVect3& o_direction) const override;
};
