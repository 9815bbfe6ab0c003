#include "timedToolkit.h"

#include "foundation/lumDescribe.h"

#include <chrono>

namespace
{
/// Adds the time of its life to a sum.
class CTimedCall
{
public:
  explicit CTimedCall(double& io_seconds) : m_seconds(io_seconds), m_begin(std::chrono::steady_clock::now()) {}
  ~CTimedCall() { m_seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count(); }
  CTimedCall(const CTimedCall&) = delete;
  CTimedCall& operator=(const CTimedCall&) = delete;

private:
  double& m_seconds;
  std::chrono::steady_clock::time_point m_begin;
};
} // namespace

CTimedToolkit::CTimedToolkit(const ClumCollisionToolkitShPtr& i_inner) : m_inner(i_inner)
{
}

lmStatus CTimedToolkit::init(const CTimedToolkitWkPtr& i_weakPtr)
{
  return ClumCollisionToolkit::init(i_weakPtr);
}

CTimedToolkitShPtr CTimedToolkit::create(const ClumCollisionToolkitShPtr& i_inner)
{
  return lumCreate<CTimedToolkit>(i_inner);
}

ClumCollisionToolkitShPtr CTimedToolkit::clone() const
{
  return create(m_inner->clone());
}

const void* CTimedToolkit::kind() const
{
  return m_inner->kind();
}

ClumCollisionModelConstShPtr CTimedToolkit::makeModel(const ClumLeafGeometry& i_leaf) const
{
  return m_inner->makeModel(i_leaf);
}

ClumCollisionModelConstShPtr CTimedToolkit::makeJoinedModel(const std::vector<ClumPlacedLeaf>& i_leaves) const
{
  return m_inner->makeJoinedModel(i_leaves);
}

bool CTimedToolkit::doAreTouching(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                                  const ClumMat4& i_poseB, ClumTrianglePair* io_pair) const
{
  const CTimedCall call(m_seconds);
  return m_inner->areTouching(i_a, i_poseA, i_b, i_poseB, io_pair);
}

void CTimedToolkit::doBoundedDistance(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                      const ClumCollisionModel& i_b, const ClumMat4& i_poseB, double i_cap,
                                      double i_relativeAccuracy, double i_stopBelow, const ClumDistanceResult* i_hint,
                                      bool i_wantsPoints, ClumDistanceResult& o_result) const
{
  const CTimedCall call(m_seconds);
  o_result =
    m_inner->boundedDistance(i_a, i_poseA, i_b, i_poseB, i_cap, i_relativeAccuracy, i_stopBelow, i_hint, i_wantsPoints);
}

lmStatus CTimedToolkit::doPenetration(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                      const ClumCollisionModel& i_b, const ClumMat4& i_poseB, double& o_depth,
                                      ClumVect3& o_direction) const
{
  const CTimedCall call(m_seconds);
  return m_inner->penetration(i_a, i_poseA, i_b, i_poseB, o_depth, o_direction);
}
