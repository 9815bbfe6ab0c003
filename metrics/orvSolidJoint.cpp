#include "metrics/orvSolidJoint.h"

#include "foundation/lumMat4.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvJoint.h"
#include "kinematics/orvKinematicalEffect.h"

lmStatus orvPoseOfSolid(const CorvJoint& i_joint, const CorvConfig& i_cfg, ClumMat4& o_pose)
{
  const CorvKinematicalEffectShPtr& effect = i_joint.kinematicalEffect();
  if (!effect || effect->configSpace()->size() != i_cfg.size())
    return lmStatus(lmStatus::FAILURE);
  return effect->forward(i_cfg.beginPtr(), o_pose);
}

CorvJointShPtr orvJointOfSpace(const CorvConfigSpace& i_space)
{
  if (const CorvJointShPtr joint = i_space.joint())
    return joint;
  const CorvDeviceShPtr device = i_space.device();
  return device ? device->rootJoint() : CorvJointShPtr();
}
