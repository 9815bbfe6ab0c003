#pragma once

#include "foundation/lumStatus.h"
#include "kinematics/orvConfigSpace.h"

/// What the solid metric and the solid walk have in common: the way from a configuration of a joint to its pose.

/// @return failure if the configuration has not the dofs of the joint's kinematical effect.
lmStatus orvPoseOfSolid(const CorvJoint& i_joint, const CorvConfig& i_cfg, ClumMat4& o_pose);

/// A pose as seven numbers: the translation, then a unit quaternion of either sign.
constexpr unsigned int SOLID_POINT_SIZE = 7;
void orvPointOfPose(const ClumMat4& i_pose, double* o_point);
/// Translation and angle between two such points, the angle times `i_turnScale`.
double orvDistanceOfPoints(const double* i_a, const double* i_b, double i_turnScale);

/// The joint of a space, or the root joint of its device; null if it has neither.
CorvJointShPtr orvJointOfSpace(const CorvConfigSpace& i_space);

/// Calls `i_function(space, joint)` for a space and all that lies in it, the deepest first.
template <class FUNCTION>
void orvForEachSpaceWithJoint(const CorvConfigSpaceShPtr& i_space, const FUNCTION& i_function)
{
  if (!i_space)
    return;
  for (unsigned int i = 0; i < i_space->countSubspaces(); ++i)
    orvForEachSpaceWithJoint(i_space->subspace(i), i_function);
  if (const CorvJointShPtr joint = orvJointOfSpace(*i_space))
    i_function(*i_space, joint);
}
