#include "foundation/lumProximityCollisionToolkit.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumLeafGeometry.h"
#include "foundation/lumJoinedTriangles.h"
#include "foundation/lumProximityPair.h"
#include "foundation/lumProximityPenetration.h"

#include <algorithm>
#include <limits>

LUM_DESCRIBE(ClumProximityCollisionToolkit)
{
  i_class.creates("()", &Self::create);
}

namespace
{
constexpr double PROXIMITY_INFINITY = std::numeric_limits<double>::infinity();
/// Beyond this distance, in parts of the radii, the centres tell enough.
constexpr double PROXIMITY_REMOTE_RATIO = 1e12;
} // namespace

ClumProximityCollisionToolkit::~ClumProximityCollisionToolkit() = default;

ClumProximityCollisionToolkitShPtr ClumProximityCollisionToolkit::create()
{
  return lumCreate<ClumProximityCollisionToolkit>();
}

ClumProximityCollisionToolkitShPtr
ClumProximityCollisionToolkit::createCopy(const ClumProximityCollisionToolkitConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumCollisionToolkitShPtr ClumProximityCollisionToolkit::clone() const
{
  return createCopy(self());
}

lmStatus ClumProximityCollisionToolkit::init(const ClumProximityCollisionToolkitWkPtr& i_weakPtr)
{
  return ClumCollisionToolkit::init(i_weakPtr);
}

const void* ClumProximityCollisionToolkit::kind() const
{
  return CProximityModel::kindOfModel();
}

ClumCollisionModelConstShPtr ClumProximityCollisionToolkit::makeModel(const ClumLeafGeometry& i_leaf) const
{
  ClumSweptTriangles shape;
  i_leaf.getSweptTriangles(shape);
  return CProximityModel::create(shape);
}

ClumCollisionModelConstShPtr
ClumProximityCollisionToolkit::makeJoinedModel(const std::vector<ClumPlacedLeaf>& i_leaves) const
{
  ClumSweptTriangles joined;
  return lumJoinSweptTriangles(i_leaves, joined) ? CProximityModel::create(joined) : ClumCollisionModelConstShPtr();
}

bool ClumProximityCollisionToolkit::doAreTouching(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                                  const ClumCollisionModel& i_b, const ClumMat4& i_poseB,
                                                  ClumTrianglePair* io_pair) const
{
  CProximityPair pair(i_a, i_poseA, i_b, i_poseB);
  if (pair.isApart())
    return false;
  if (io_pair)
    pair.hint(io_pair->a, io_pair->b);
  const CProximityAnswer answer = pair.searchContact();
  const bool isMeeting = answer.best <= pair.reach();
  if (io_pair && answer.placeA != PROXIMITY_NONE && isMeeting)
    *io_pair = {pair.a().triangleAt(answer.placeA), pair.b().triangleAt(answer.placeB)};
  return isMeeting || pair.isNested();
}

void ClumProximityCollisionToolkit::doBoundedDistance(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                                      const ClumCollisionModel& i_b, const ClumMat4& i_poseB,
                                                      double i_cap, double i_relativeAccuracy, double i_stopBelow,
                                                      const ClumDistanceResult* i_hint, bool i_wantsPoints,
                                                      ClumDistanceResult& o_result) const
{
  CProximityPair pair(i_a, i_poseA, i_b, i_poseB);
  double gap = pair.ballGap() - pair.slack();
  if (gap < i_cap && i_cap < PROXIMITY_INFINITY)
    gap = std::max(gap, pair.enclosureGap() - pair.slack());
  const bool isRemote = pair.length() > PROXIMITY_REMOTE_RATIO * (pair.a().radius() + pair.b().radius());
  if (gap > 0.0 && (gap >= i_cap || isRemote))
  {
    o_result.lower = gap;
    o_result.upper =
      isRemote ? pair.length() + pair.a().radius() + pair.b().radius() + pair.slack() : PROXIMITY_INFINITY;
    return;
  }
  if (i_hint && i_hint->hasTriangles)
    pair.hint(i_hint->triangleA, i_hint->triangleB);
  const CProximityAnswer answer =
    pair.search(i_cap + pair.sweep(), 1.0 - i_relativeAccuracy, std::max(i_stopBelow, 0.0) + pair.reach());
  const bool isContact = answer.best <= pair.reach() || (gap <= 0.0 && pair.isNested());
  pair.writeTriangles(answer, o_result);
  if (i_wantsPoints && o_result.hasTriangles)
    pair.writePoints(answer, o_result);
  o_result.lower = isContact ? 0.0 : std::max({0.0, gap, answer.lower - pair.sweep() - pair.slack()});
  o_result.upper = isContact ? 0.0 : answer.best - pair.sweep() + pair.a().excess() + pair.b().excess();
}

lmStatus ClumProximityCollisionToolkit::doPenetration(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                                      const ClumCollisionModel& i_b, const ClumMat4& i_poseB,
                                                      double& o_depth, ClumVect3& o_direction) const
{
  CProximityPair pair(i_a, i_poseA, i_b, i_poseB);
  ClumVect3 way;
  o_depth = pair.areTouching() ? lumProximityWayOut(pair, way) : 0.0;
  o_direction = i_poseA * way;
  return lmStatus();
}
