#include "metrics/orvMetricSolid.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvJoint.h"
#include "metrics/orvMetricDecorator.h"
#include "metrics/orvSolidJoint.h"

LUM_DESCRIBE(CorvMetricSolid)
{
}

CorvMetricSolid::CorvMetricSolid(const CorvJointShPtr& i_joint, const CorvRandomWalkConstShPtr& i_randomWalk,
                                 const std::string& i_type)
  : CorvMetric(i_type, i_randomWalk), m_joint(i_joint)
{
}

CorvMetricSolid::~CorvMetricSolid() = default;

lmStatus CorvMetricSolid::init(const CorvMetricSolidWkPtr& i_weakPtr)
{
  return CorvMetric::init(i_weakPtr);
}

CorvJointShPtr CorvMetricSolid::joint() const
{
  return m_joint.lock();
}

void CorvMetricSolid::joint(const CorvJointShPtr& i_joint)
{
  m_joint = i_joint;
  raiseRevision();
}

double CorvMetricSolid::lever() const
{
  const CorvJointShPtr held = joint();
  return held ? held->maxSweep() : 0.0;
}

double CorvMetricSolid::distance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  const CorvJointShPtr held = joint();
  ClumMat4 a, b;
  if (!held || orvPoseOfSolid(*held, i_a, a).failed() || orvPoseOfSolid(*held, i_b, b).failed())
    return 0.0;
  return solidDistance(a, b);
}

void CorvMetricSolid::repairSpace(const CorvConfigSpaceShPtr& i_space)
{
  orvForEachSpaceWithJoint(i_space,
                           [](const CorvConfigSpace& i_subspace, const CorvJointShPtr& i_joint)
                           {
                             CorvMetricShPtr metric = i_subspace.metric();
                             while (const auto decorator = boost::dynamic_pointer_cast<CorvMetricDecorator>(metric))
                               metric = decorator->decoratedMetric();
                             if (const auto solid = boost::dynamic_pointer_cast<CorvMetricSolid>(metric))
                               solid->joint(i_joint);
                           });
}

void CorvMetricSolid::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvMetric::encodeWithCoder(i_coder);
  i_coder->encodeWeakObjectWkPtr(m_joint, "joint");
}

lmStatus CorvMetricSolid::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvMetric::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_joint = i_coder->decodeWeak<CorvJoint>("joint");
  return lmStatus();
}
