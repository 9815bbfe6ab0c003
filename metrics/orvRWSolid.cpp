#include "metrics/orvRWSolid.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvJoint.h"
#include "kinematics/orvKinematicalEffect.h"
#include "metrics/orvMetric.h"
#include "metrics/orvSolidJoint.h"

LUM_DESCRIBE(CorvRWSolid)
{
}

CorvRWSolid::CorvRWSolid(const CorvJointShPtr& i_joint, const CorvRandomDistributionConstShPtr& i_distribution)
  : CorvRandomWalk(i_distribution), m_joint(i_joint)
{
}

CorvRWSolid::~CorvRWSolid() = default;

lmStatus CorvRWSolid::init(const CorvRWSolidWkPtr& i_weakPtr)
{
  return CorvRandomWalk::init(i_weakPtr);
}

CorvJointShPtr CorvRWSolid::joint() const
{
  return m_joint.lock();
}

void CorvRWSolid::joint(const CorvJointShPtr& i_joint)
{
  m_joint = i_joint;
}

double CorvRWSolid::lever() const
{
  const CorvJointShPtr held = joint();
  return held ? held->maxSweep() : 0.0;
}

void CorvRWSolid::step(double i_size, CorvConfig& io_cfg) const
{
  const CorvJointShPtr held = joint();
  ClumMat4 pose;
  if (!held || orvPoseOfSolid(*held, io_cfg, pose).failed())
    return;
  stepSolid(i_size, pose);
  std::vector<double> values(io_cfg.size());
  if (held->kinematicalEffect()->inverse(pose, values.data()).succeeded())
    io_cfg.setDofValues(values);
}

void CorvRWSolid::repairSpace(const CorvConfigSpaceShPtr& i_space)
{
  orvForEachSpaceWithJoint(i_space,
                           [](const CorvConfigSpace& i_subspace, const CorvJointShPtr& i_joint)
                           {
                             const CorvMetricShPtr metric = i_subspace.metric();
                             const auto solid = boost::dynamic_pointer_cast<const CorvRWSolid>(
                               metric ? metric->randomWalk() : CorvRandomWalkConstShPtr());
                             if (solid)
                               boost::const_pointer_cast<CorvRWSolid>(solid)->joint(i_joint);
                           });
}

void CorvRWSolid::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvRandomWalk::encodeWithCoder(i_coder);
  i_coder->encodeWeakObjectWkPtr(m_joint, "joint");
}

lmStatus CorvRWSolid::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvRandomWalk::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_joint = i_coder->decodeWeak<CorvJoint>("joint");
  return lmStatus();
}
