#include "metrics/orvSolidJoint.h"

#include "foundation/lumMat4.h"
#include "foundation/lumMath.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvJoint.h"
#include "kinematics/orvKinematicalEffect.h"

#include <algorithm>
#include <cmath>

lmStatus orvPoseOfSolid(const CorvJoint& i_joint, const CorvConfig& i_cfg, ClumMat4& o_pose)
{
  const CorvKinematicalEffectShPtr& effect = i_joint.kinematicalEffect();
  if (!effect || effect->configSpace()->size() != i_cfg.size())
    return lmStatus(lmStatus::FAILURE);
  return effect->forward(i_cfg.beginPtr(), o_pose);
}

void orvPointOfPose(const ClumMat4& i_pose, double* o_point)
{
  for (unsigned int i = 0; i < 3; ++i)
    o_point[i] = i_pose(i, 3);
  double* q = o_point + 3;
  // Divide by the largest component: at least one half. Index 0 is the scalar part.
  const double trace = i_pose(0, 0) + i_pose(1, 1) + i_pose(2, 2);
  unsigned int i = 0;
  for (unsigned int k = 1; k < 3; ++k)
    if (i_pose(k, k) > i_pose(i, i))
      i = k;
  const unsigned int j = (i + 1) % 3, k = (i + 2) % 3;
  const bool isScalarLargest = trace >= i_pose(i, i);
  const double fourfold = isScalarLargest ? 1.0 + trace : 1.0 + i_pose(i, i) - i_pose(j, j) - i_pose(k, k);
  const double largest = 0.5 * std::sqrt(fourfold);
  const double inverse = 0.25 / largest;
  if (isScalarLargest)
  {
    q[0] = largest;
    q[1] = (i_pose(2, 1) - i_pose(1, 2)) * inverse;
    q[2] = (i_pose(0, 2) - i_pose(2, 0)) * inverse;
    q[3] = (i_pose(1, 0) - i_pose(0, 1)) * inverse;
    return;
  }
  q[0] = (i_pose(k, j) - i_pose(j, k)) * inverse;
  q[1 + i] = largest;
  q[1 + j] = (i_pose(j, i) + i_pose(i, j)) * inverse;
  q[1 + k] = (i_pose(k, i) + i_pose(i, k)) * inverse;
}

double orvDistanceOfPoints(const double* i_a, const double* i_b, double i_turnScale)
{
  const double x = i_b[0] - i_a[0], y = i_b[1] - i_a[1], z = i_b[2] - i_a[2];
  double chordSquared = 0.0, otherChordSquared = 0.0;
  for (unsigned int i = 3; i < SOLID_POINT_SIZE; ++i)
  {
    chordSquared += (i_b[i] - i_a[i]) * (i_b[i] - i_a[i]);
    otherChordSquared += (i_b[i] + i_a[i]) * (i_b[i] + i_a[i]);
  }
  // Quaternions of a turn by t lie t/2 apart on the sphere; the chord is precise for small and for large turns.
  const double chord = std::sqrt(std::min(chordSquared, otherChordSquared));
  const double turn = i_turnScale * 4.0 * lumAsin(std::min(0.5 * chord, 1.0));
  return std::sqrt(x * x + y * y + z * z + turn * turn);
}

CorvJointShPtr orvJointOfSpace(const CorvConfigSpace& i_space)
{
  if (const CorvJointShPtr joint = i_space.joint())
    return joint;
  const CorvDeviceShPtr device = i_space.device();
  return device ? device->rootJoint() : CorvJointShPtr();
}
