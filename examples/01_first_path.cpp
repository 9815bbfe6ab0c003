// Carries a hook from one side of a wall to the other. Lengths are in millimetres, angles in radians.
#include "foundation/lumMesh.h"
#include "foundation/lumMeshReader.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJointFreeFlyer.h"
#include "paths/orvPath.h"
#include "planners/orvPathPlanner.h"
#include "roadmaps/orvLinkerStandard.h"
#include "roadmaps/orvRoadmap.h"
#include "roadmaps/orvSamplingBuilder.h"
#include "validation/orvValidatorDPCollision.h"
#include "validation/orvValidatorSet.h"

#include <cstdio>

int main()
{
  ClumMeshReader::CResult hook, wall;
  if (ClumMeshReader::read(ORVANE_EXAMPLE_DATA "/hook.obj", hook).failed() ||
      ClumMeshReader::read(ORVANE_EXAMPLE_DATA "/wall.stl", wall).failed())
    return std::fprintf(stderr, "%s%s\n", hook.error.c_str(), wall.error.c_str()), 2;

  const CorvDeviceShPtr device = CorvDevice::create();
  const CorvJointShPtr joint = CorvJointFreeFlyer::create(ClumMat4());
  device->setRootJoint(joint);
  joint->addMobileGeometry(hook.mesh);
  device->addObstacleGeometry(wall.mesh);
  for (unsigned int axis = 0; axis < 3; ++axis)
    joint->dof(axis)->boundWithin(-500.0, 500.0);
  CorvValidatorDPCollision::setPenetration(device->directPathValidators(), 0.0); // no contact at all

  const CorvConfig start(device, {-200.0, 0.0, 0.0, 0.0, 0.0, 0.0}); // x, y, z, rx, ry, rz
  const CorvConfig goal(device, {200.0, 0.0, 0.0, 0.0, 0.0, 0.0});
  const CorvSamplingBuilderShPtr builder = CorvSamplingBuilder::create(CorvRoadmap::create(device));
  builder->linker(CorvLinkerStandard::create());
  CorvPathShPtr path;
  const lmStatus status = builder->asPlanner()->plan(start, goal, path);
  if (status.failed())
    return std::fprintf(stderr, "no path: %s\n", status.description().c_str()), 1;
  std::printf("path of length %.1f, %u straight motions\n", path->length(), path->countDirectPaths());
  return 0;
}
