#include "support/devices.h"

#include "foundation/lumBox.h"
#include "foundation/lumCapsule.h"
#include "foundation/lumScene.h"
#include "kinematics/orvBodyLumScene.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJointAnchor.h"
#include "kinematics/orvJointFreeFlyer.h"
#include "kinematics/orvJointRotation.h"

#include <gtest/gtest.h>

namespace
{
constexpr double HALF_TURN = 3.14159265358979323846;

ClumMat4 at(double i_x, double i_y, double i_z)
{
  ClumMat4 frame;
  frame.translate(i_x, i_y, i_z);
  return frame;
}

void addGeometryAt(const CorvJointShPtr& i_joint, const ClumGeometryShPtr& i_geometry, const ClumMat4& i_position)
{
  i_geometry->position(i_position);
  EXPECT_TRUE(i_joint->addMobileGeometry(i_geometry).succeeded());
}

CorvDeviceShPtr deviceOf(const CorvJointShPtr& i_root)
{
  const CorvDeviceShPtr device = CorvDevice::create();
  EXPECT_TRUE(device->setRootJoint(i_root).succeeded());
  return device;
}

CorvJointShPtr boundedFlyer(const ClumGeometryShPtr& i_geometry)
{
  const CorvJointShPtr joint = CorvJointFreeFlyer::create(ClumMat4());
  for (unsigned int k = 0; k < 3; ++k)
    EXPECT_TRUE(joint->dof(k)->boundWithin(-10.0, 10.0).succeeded());
  EXPECT_TRUE(joint->addMobileGeometry(i_geometry).succeeded());
  return joint;
}

/// A rotation at a height of the upright arm.
CorvJointShPtr armAxis(double i_height, ClumMat4::EBaseVector i_axis, double i_range)
{
  const CorvJointShPtr joint = CorvJointRotation::create(at(0.0, 0.0, i_height), i_axis);
  EXPECT_TRUE(joint->dof(0)->boundWithin(-i_range, i_range).succeeded());
  return joint;
}
} // namespace

CorvDeviceShPtr planarArm(unsigned int i_count)
{
  CorvJointShPtr root, last;
  for (unsigned int i = 0; i < i_count; ++i)
  {
    const CorvJointShPtr joint = CorvJointRotation::create(at(i, 0.0, 0.0), ClumMat4::Z_AXIS);
    addGeometryAt(joint, ClumBox::create(1.0, 0.1, 0.1), at(i + 0.5, 0.0, 0.0));
    if (last)
      EXPECT_TRUE(last->addJoint(joint).succeeded());
    else
      root = joint;
    last = joint;
  }
  return deviceOf(root);
}

CorvDeviceShPtr freeFlyer(const ClumGeometryShPtr& i_geometry)
{
  return deviceOf(boundedFlyer(i_geometry));
}

CorvDeviceShPtr sixAxisArm()
{
  const CorvJointShPtr base = armAxis(0.2, ClumMat4::Z_AXIS, HALF_TURN);
  addGeometryAt(base, ClumBox::create(0.3, 0.3, 0.2), at(0.0, 0.0, 0.3));
  const CorvJointShPtr shoulder = armAxis(0.4, ClumMat4::Y_AXIS, 2.0);
  addGeometryAt(shoulder, ClumCapsule::create(0.08, 0.7), at(0.0, 0.0, 0.75));
  const CorvJointShPtr elbow = armAxis(1.1, ClumMat4::Y_AXIS, 2.5);
  addGeometryAt(elbow, ClumCapsule::create(0.06, 0.3), at(0.0, 0.0, 1.25));
  const CorvJointShPtr roll = armAxis(1.4, ClumMat4::Z_AXIS, HALF_TURN);
  addGeometryAt(roll, ClumCapsule::create(0.05, 0.3), at(0.0, 0.0, 1.55));
  const CorvJointShPtr bend = armAxis(1.7, ClumMat4::Y_AXIS, 2.0);
  addGeometryAt(bend, ClumCapsule::create(0.05, 0.1), at(0.0, 0.0, 1.75));
  const CorvJointShPtr flange = armAxis(1.8, ClumMat4::Z_AXIS, HALF_TURN);
  addGeometryAt(flange, ClumBox::create(0.2, 0.08, 0.15), at(0.0, 0.0, 1.9));
  const CorvJointShPtr chain[] = {base, shoulder, elbow, roll, bend, flange};
  for (unsigned int i = 0; i + 1 < 6; ++i)
    EXPECT_TRUE(chain[i]->addJoint(chain[i + 1]).succeeded());
  return deviceOf(base);
}

CorvDeviceShPtr freeFlyers(const std::vector<ClumGeometryShPtr>& i_geometries)
{
  const CorvJointShPtr root = CorvJointAnchor::create();
  for (const ClumGeometryShPtr& geometry : i_geometries)
    EXPECT_TRUE(root->addJoint(boundedFlyer(geometry)).succeeded());
  return deviceOf(root);
}

CorvDeviceShPtr twoFreeFlyers(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second)
{
  const CorvDeviceShPtr device = freeFlyers({i_first, i_second});
  EXPECT_TRUE(addSelfTest(device, 0, 1).succeeded());
  return device;
}

lmStatus addSelfTest(const CorvDeviceShPtr& i_device, unsigned int i_first, unsigned int i_second)
{
  const auto groupOf = [&](unsigned int i_rank)
  { return boost::static_pointer_cast<CorvBodyLumScene>(i_device->body(i_rank))->mobileGroup(); };
  return i_device->innerCollisionScene()->addTestParameters(groupOf(i_first), groupOf(i_second),
                                                            ClumScene::KEEP_EXISTING_TEST);
}
