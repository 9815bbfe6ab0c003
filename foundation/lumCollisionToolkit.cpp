#include "foundation/lumCollisionToolkit.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumProximityCollisionToolkit.h"

#include <limits>

LUM_DESCRIBE(ClumCollisionToolkit)
{
}
LUM_STATUS_CODE(ClumCollisionToolkit, PENETRATION_UNSUPPORTED_ERROR, 10150,
                "The collision toolkit cannot tell the penetration of these shapes.");

ClumCollisionModel::~ClumCollisionModel() = default;

ClumCollisionToolkit::ClumCollisionToolkit(const ClumCollisionToolkit& i_other) : ClumMutableCodable(i_other)
{
}

ClumCollisionToolkit::~ClumCollisionToolkit() = default;

lmStatus ClumCollisionToolkit::init(const ClumCollisionToolkitWkPtr& i_weakPtr)
{
  return ClumMutableCodable::init(i_weakPtr);
}

const ClumCollisionToolkitShPtr& ClumCollisionToolkit::defaultCollisionToolkit()
{
  static const ClumCollisionToolkitShPtr s_default = ClumProximityCollisionToolkit::create();
  return s_default;
}

bool ClumCollisionToolkit::canAsk(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                                  const ClumMat4& i_poseB) const
{
  m_countQueries.fetch_add(1, std::memory_order_relaxed);
  // A sum of finite terms times 0 is 0; anything else in it gives NaN. Four sums, so that none waits for the other.
  double sums[4] = {};
  for (unsigned int i = 0; i < 16; i += 4)
    for (unsigned int k = 0; k < 4; ++k)
      sums[k] += 0.0 * i_poseA.data()[i + k] + 0.0 * i_poseB.data()[i + k];
  return (sums[0] + sums[1]) + (sums[2] + sums[3]) == 0.0 && i_a.kind() == kind() && i_b.kind() == kind();
}

bool ClumCollisionToolkit::areTouching(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                       const ClumCollisionModel& i_b, const ClumMat4& i_poseB,
                                       ClumTrianglePair* io_pair) const
{
  return !canAsk(i_a, i_poseA, i_b, i_poseB) || doAreTouching(i_a, i_poseA, i_b, i_poseB, io_pair);
}

ClumDistanceResult ClumCollisionToolkit::boundedDistance(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                                         const ClumCollisionModel& i_b, const ClumMat4& i_poseB,
                                                         double i_cap, double i_relativeAccuracy, double i_stopBelow,
                                                         const ClumDistanceResult* i_hint, bool i_wantsPoints) const
{
  ClumDistanceResult result;
  if (canAsk(i_a, i_poseA, i_b, i_poseB))
    doBoundedDistance(i_a, i_poseA, i_b, i_poseB, i_cap, i_relativeAccuracy, i_stopBelow, i_hint, i_wantsPoints,
                      result);
  return result;
}

ClumDistanceResult ClumCollisionToolkit::exactDistance(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                                       const ClumCollisionModel& i_b, const ClumMat4& i_poseB,
                                                       const ClumDistanceResult* i_hint) const
{
  return boundedDistance(i_a, i_poseA, i_b, i_poseB, std::numeric_limits<double>::infinity(), 0.0, 0.0, i_hint);
}

lmStatus ClumCollisionToolkit::penetration(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                           const ClumCollisionModel& i_b, const ClumMat4& i_poseB, double& o_depth,
                                           ClumVect3& o_direction) const
{
  if (!canAsk(i_a, i_poseA, i_b, i_poseB))
    return PENETRATION_UNSUPPORTED_ERROR;
  return doPenetration(i_a, i_poseA, i_b, i_poseB, o_depth, o_direction);
}
