#include "metrics/orvMetricSlerpWithCustomMotionFrame.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvJoint.h"
#include "kinematics/orvKinematicalEffect.h"
#include "metrics/orvMetricSlerp.h"
#include "metrics/orvRWComposite.h"

#include <cmath>

LUM_DESCRIBE(CorvMetricSlerpWithCustomMotionFrame)
{
  i_class.creates(
    "(const CorvJointShPtr& i_joint, const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)",
    &Self::create);
}

namespace
{
/// Values of the motion frame, then as many of the pose.
constexpr unsigned int MOTION_FRAME_SIZE = 6;

double lengthOfVector(double i_x, double i_y, double i_z)
{
  return std::sqrt(i_x * i_x + i_y * i_y + i_z * i_z);
}
} // namespace

CorvMetricSlerpWithCustomMotionFrame::CorvMetricSlerpWithCustomMotionFrame(const CorvJointShPtr& i_joint,
                                                                           const CorvRandomWalkConstShPtr& i_randomWalk,
                                                                           const std::string& i_type)
  : CorvMetric(i_type, i_randomWalk ? i_randomWalk : CorvRandomWalkConstShPtr(CorvRWComposite::create())),
    m_kinematicalEffect(i_joint ? i_joint->kinematicalEffect() : CorvKinematicalEffectShPtr())
{
}

CorvMetricSlerpWithCustomMotionFrame::~CorvMetricSlerpWithCustomMotionFrame() = default;

lmStatus CorvMetricSlerpWithCustomMotionFrame::init(const CorvMetricSlerpWithCustomMotionFrameWkPtr& i_weakPtr)
{
  return CorvMetric::init(i_weakPtr);
}

CorvMetricSlerpWithCustomMotionFrameShPtr
CorvMetricSlerpWithCustomMotionFrame::create(const CorvJointShPtr& i_joint,
                                             const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)
{
  return lumCreate<CorvMetricSlerpWithCustomMotionFrame>(i_joint, i_randomWalk, i_type);
}

CorvMetricSlerpWithCustomMotionFrameShPtr
CorvMetricSlerpWithCustomMotionFrame::createCopy(const CorvMetricSlerpWithCustomMotionFrameConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMetricShPtr CorvMetricSlerpWithCustomMotionFrame::clone() const
{
  return createCopy(self());
}

double CorvMetricSlerpWithCustomMotionFrame::distance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  ClumMat4 a, b, frame;
  double distanceToTheFrame = 0.0;
  if (matrixOfConfig(i_a, a).failed() || matrixOfConfig(i_b, b).failed() ||
      jointToFrameTransformation(i_b, frame).failed() || distanceToFrame(i_b, distanceToTheFrame).failed())
    return 0.0;
  const ClumVect3 shift = (frame.inverse() * a.inverse() * b * frame).translation();
  const double angle = ClumGeometryUtilities::slerpAngle(a, b);
  const double turn = CorvMetricSlerp::ROTATION_SCALE * angle;
  const double way = distanceToTheFrame * angle + lengthOfVector(shift.x(), shift.y(), shift.z());
  return std::sqrt(turn * turn + way * way);
}

/// The pose: of the last six values if there are twelve.
lmStatus CorvMetricSlerpWithCustomMotionFrame::matrixOfConfig(const CorvConfig& i_cfg, ClumMat4& o_matrix) const
{
  const double* values = i_cfg.beginPtr();
  const unsigned int count = i_cfg.size();
  const bool isTwofold = count == 2 * MOTION_FRAME_SIZE;
  if (!m_kinematicalEffect || !values || (!isTwofold && count != MOTION_FRAME_SIZE) ||
      m_kinematicalEffect->configSpace()->size() != MOTION_FRAME_SIZE)
    return lmStatus(lmStatus::FAILURE);
  return m_kinematicalEffect->forward(isTwofold ? values + MOTION_FRAME_SIZE : values, o_matrix);
}

/// The motion frame, relative to the joint.
lmStatus CorvMetricSlerpWithCustomMotionFrame::jointToFrameTransformation(const CorvConfig& i_cfg,
                                                                          ClumMat4& o_matrix) const
{
  const double* values = i_cfg.beginPtr();
  if (!m_kinematicalEffect || !values || i_cfg.size() != 2 * MOTION_FRAME_SIZE)
    return lmStatus(lmStatus::FAILURE);
  return m_kinematicalEffect->forward(values, o_matrix);
}

lmStatus CorvMetricSlerpWithCustomMotionFrame::distanceToFrame(const CorvConfig& i_cfg, double& o_distance) const
{
  const double* values = i_cfg.beginPtr();
  if (!values || i_cfg.size() < 3)
    return lmStatus(lmStatus::FAILURE);
  o_distance = lengthOfVector(values[0], values[1], values[2]);
  return lmStatus();
}

bool CorvMetricSlerpWithCustomMotionFrame::operator==(const CorvMetric& i_other) const
{
  return dynamic_cast<const CorvMetricSlerpWithCustomMotionFrame*>(&i_other) && CorvMetric::operator==(i_other);
}

void CorvMetricSlerpWithCustomMotionFrame::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvMetric::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_kinematicalEffect, "kinematicalEffect");
}

lmStatus CorvMetricSlerpWithCustomMotionFrame::initWithCoder(const ClumCoderShPtr& i_coder,
                                                             const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvMetric::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_kinematicalEffect = i_coder->decode<CorvKinematicalEffect>("kinematicalEffect");
  return lmStatus();
}
