#include "foundation/lumBox.h"
#include "foundation/lumMat.h"
#include "foundation/lumNotification.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumPRNGGameRand.h"
#include "foundation/lumScene.h"
#include "foundation/lumTestParameters.h"
#include "kinematics/orvBodyLumScene.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJointAnchor.h"
#include "kinematics/orvJointBallAndSocket.h"
#include "kinematics/orvJointDoubleRotation.h"
#include "kinematics/orvJointFreeFlyer.h"
#include "kinematics/orvJointPlan.h"
#include "kinematics/orvJointRotation.h"
#include "kinematics/orvJointTranslation.h"
#include "support/devices.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
ClumMat4 screwFrame(double i_angle, double i_x, double i_y, double i_z)
{
  ClumMat4 frame;
  frame.rotate(ClumVect3(-1.0, 0.5, 2.0), i_angle);
  frame.setTranslation(ClumVect3(i_x, i_y, i_z));
  return frame;
}

double frameDifference(const ClumMat4& i_a, const ClumMat4& i_b)
{
  double largest = 0.0;
  for (unsigned int i = 0; i < 16; ++i)
    largest = std::max(largest, std::fabs(i_a.data()[i] - i_b.data()[i]));
  return largest;
}

/// A tree with every kind of joint and a branch; two bodies.
CorvDeviceShPtr deviceOfAllJoints()
{
  const CorvJointShPtr root = CorvJointFreeFlyer::create(screwFrame(0.3, 1.0, 0.0, 0.0));
  const CorvJointShPtr chain[] = {CorvJointRotation::create(screwFrame(1.0, 0.0, 1.0, 0.0), ClumMat4::INVERSE_X_AXIS),
                                  CorvJointTranslation::create(screwFrame(-0.4, 0.0, 0.0, 2.0), ClumMat4::Y_AXIS),
                                  CorvJointAnchor::create(), CorvJointPlan::create(screwFrame(2.0, 1.0, 1.0, 1.0)),
                                  CorvJointBallAndSocket::create(screwFrame(0.9, 2.0, 1.0, 1.0))};
  CorvJointShPtr last = root;
  for (const CorvJointShPtr& joint : chain)
  {
    EXPECT_TRUE(last->addJoint(joint).succeeded());
    last = joint;
  }
  const CorvJointShPtr branch = CorvJointDoubleRotation::create(screwFrame(0.1, -1.0, 0.0, 0.0));
  EXPECT_TRUE(chain[0]->addJoint(branch).succeeded());
  EXPECT_TRUE(last->addMobileGeometry(ClumBox::create(1.0, 1.0, 1.0)).succeeded());
  EXPECT_TRUE(branch->setAttachedBody(CorvBodyLumScene::create(), screwFrame(0.7, 0.1, 0.2, 0.3)).succeeded());
  const CorvDeviceShPtr device = CorvDevice::create();
  EXPECT_TRUE(device->setRootJoint(root).succeeded());
  return device;
}

std::vector<double> drawValues(const ClumPRNGShPtr& i_random, unsigned int i_count)
{
  std::vector<double> values;
  for (unsigned int k = 0; k < i_count; ++k)
    values.push_back(i_random->random(-2.5, 2.5));
  return values;
}

ClumPRNGShPtr seededRandom(unsigned int i_seed)
{
  const ClumPRNGShPtr random = ClumPRNGGameRand::create();
  random->seed(i_seed);
  return random;
}

struct DeviceListener
{
  std::vector<std::string> lines;
  void will(const ShPtr<const ClumNotification>& i_notification)
  {
    lines.push_back("will " + i_notification->stringValue(ClumObject::ELEMENT_NAME_KEY));
  }
  void did(const ShPtr<const ClumNotification>& i_notification)
  {
    lines.push_back("did " + i_notification->stringValue(ClumObject::ELEMENT_NAME_KEY));
  }
};
} // namespace

TEST(CorvDevice, FlatTableTreeAndMovedDeviceGiveTheSameFrames)
{
  const CorvDeviceShPtr device = deviceOfAllJoints();
  const ClumPRNGShPtr random = seededRandom(3u);
  ASSERT_EQ(device->countDofs(), 6u + 1u + 1u + 3u + 3u + 2u);
  ASSERT_EQ(device->countBodies(), 2u);
  std::vector<ClumMat4> bodies, joints;
  for (unsigned int trial = 0; trial < 50; ++trial)
  {
    const CorvConfig config(device, drawValues(random, device->countDofs()));
    ASSERT_TRUE(device->computeBodyPositions(config, bodies).succeeded());
    ASSERT_TRUE(device->computeJointPositions(config, joints).succeeded());
    for (unsigned int j = 0; j < device->countJoints(); ++j)
    {
      ClumMat4 position;
      ASSERT_TRUE(device->getJointPosition(device->joint(j), config, position).succeeded());
      EXPECT_LT(frameDifference(joints[j], position), 1e-12);
    }
    ASSERT_TRUE(device->setCurrentConfig(config).succeeded());
    for (unsigned int b = 0; b < 2; ++b)
      EXPECT_LT(frameDifference(bodies[b], device->body(b)->absolutePosition()), 1e-12);
    for (unsigned int j = 0; j < device->countJoints(); ++j)
      EXPECT_LT(frameDifference(joints[j], device->joint(j)->currentPosition()), 1e-12);
  }
  const ClumMat4* before = bodies.data();
  ASSERT_TRUE(device->computeBodyPositions(CorvConfig(device), bodies).succeeded());
  EXPECT_EQ(bodies.data(), before);
  EXPECT_TRUE(device->computeBodyPositions(CorvConfig(planarArm(1)), bodies).failed());
}

TEST(CorvDevice, JacobianIsTheDerivativeOfPointAndFrame)
{
  const CorvDeviceShPtr device = deviceOfAllJoints();
  const std::vector<double> values = drawValues(seededRandom(8u), device->countDofs());
  const CorvConfig config(device, values);
  const double h = 1e-6;
  for (unsigned int j = 0; j < device->countJoints(); ++j)
  {
    const CorvJointShPtr joint = device->joint(j);
    ClumMat4 here;
    ASSERT_TRUE(device->getJointPosition(joint, config, here).succeeded());
    const ClumPoint3 own(0.4, -0.7, 1.2);
    ClumMat jacobian;
    ASSERT_TRUE(device->computeJacobian(config, here * own, joint, jacobian).succeeded());
    ASSERT_EQ(jacobian.width(), device->countDofs());
    for (unsigned int k = 0; k < values.size(); ++k)
    {
      ClumMat4 frames[2];
      for (unsigned int side = 0; side < 2; ++side)
      {
        std::vector<double> moved = values;
        moved[k] += side ? h : -h;
        ASSERT_TRUE(device->getJointPosition(joint, CorvConfig(device, moved), frames[side]).succeeded());
      }
      const ClumVect3 velocity = (frames[1] * own - frames[0] * own) / (2.0 * h);
      const ClumMat4 turn = (frames[1] + frames[0] * -1.0) * (1.0 / (2.0 * h)) * here.inverse();
      for (unsigned int r = 0; r < 3; ++r)
        EXPECT_NEAR(jacobian(r, k), velocity[r], 1e-7);
      EXPECT_NEAR(jacobian(3, k), turn(2, 1), 1e-7);
      EXPECT_NEAR(jacobian(4, k), turn(0, 2), 1e-7);
      EXPECT_NEAR(jacobian(5, k), turn(1, 0), 1e-7);
    }
  }
  ClumMat untouched;
  const lmStatus status = device->computeJacobian(config, ClumPoint3(), CorvJointAnchor::create(), untouched);
  EXPECT_EQ(status, CorvDevice::JOINT_NOT_FOUND_ERROR);
  EXPECT_TRUE(status.hasCode(CorvDevice::INVALID_JOINT_RANK_ERROR));
}

TEST(CorvDevice, CurrentConfigIsTakenWholeWiderOrInPart)
{
  const CorvDeviceShPtr arm = planarArm(3);
  const CorvDofShPtr extra = CorvDof::create(false);
  ASSERT_TRUE(arm->addExtraDof(extra).succeeded());
  EXPECT_EQ(arm->dof(0), extra);
  EXPECT_TRUE(arm->addExtraDof(extra).failed());
  ASSERT_TRUE(arm->setCurrentConfig(CorvConfig(arm, {7.0, 0.1, 0.2, 0.3})).succeeded());
  CorvConfig read;
  ASSERT_TRUE(arm->getCurrentConfig(read).succeeded());
  EXPECT_EQ(read.dofValues(), (std::vector<double>{7.0, 0.1, 0.2, 0.3}));
  EXPECT_EQ(read.space(), arm->configSpace());

  const CorvConfigSpaceShPtr part = arm->joint(1)->configSpace();
  ASSERT_TRUE(arm->setCurrentConfig(CorvConfig(part, {0.5, 0.6})).succeeded());
  ASSERT_TRUE(arm->getCurrentConfig(read).succeeded());
  EXPECT_EQ(read.dofValues(), (std::vector<double>{7.0, 0.1, 0.5, 0.6}));

  const CorvDeviceShPtr other = planarArm(4);
  const CorvCSCompositeShPtr both = CorvCSComposite::create("both");
  ASSERT_TRUE(both->appendSubspace(other->configSpace()).succeeded());
  EXPECT_TRUE(arm->setCurrentConfig(CorvConfig(other)).failed());
  EXPECT_TRUE(arm->setCurrentConfig(CorvConfig(CorvConfigSpaceShPtr(both))).failed());
  ASSERT_TRUE(both->appendSubspace(arm->configSpace()).succeeded());
  const CorvConfig wide(CorvConfigSpaceShPtr(both), {9.0, 9.0, 9.0, 9.0, 1.0, 2.0, 3.0, 4.0});
  ASSERT_TRUE(arm->setCurrentConfig(wide).succeeded());
  ASSERT_TRUE(arm->getCurrentConfig(read).succeeded());
  EXPECT_EQ(read.dofValues(), (std::vector<double>{1.0, 2.0, 3.0, 4.0}));

  // A joint that moves alone is read back; a joint that comes later starts at its own value.
  ASSERT_TRUE(arm->joint(2)
                ->setCurrentConfig(CorvConfig(CorvConfigSpaceShPtr(arm->joint(2)->configSpace()), {-1.0}))
                .succeeded());
  ASSERT_TRUE(arm->getCurrentConfig(read).succeeded());
  EXPECT_EQ(read.dofValues(), (std::vector<double>{1.0, 2.0, 3.0, -1.0}));
  ASSERT_TRUE(arm->joint(0)->addJoint(CorvJointTranslation::create(0.25, ClumMat4(), ClumMat4::X_AXIS)).succeeded());
  ASSERT_TRUE(arm->getCurrentConfig(read).succeeded());
  EXPECT_EQ(read.dofValues(), (std::vector<double>{1.0, 2.0, 3.0, -1.0, 0.25}));

  const CorvDeviceShPtr bare = CorvDevice::create();
  ASSERT_TRUE(bare->addExtraDof(CorvDof::create(false)).succeeded());
  EXPECT_EQ(bare->countDofs(), 1u);
  EXPECT_TRUE(bare->setCurrentConfig(CorvConfig(bare, {2.0})).succeeded());
  ASSERT_TRUE(bare->removeExtraDof(bare->extraDof(0)).succeeded());
  EXPECT_EQ(bare->countDofs(), 0u);
}

TEST(CorvDevice, RootJointIsRefusedWithTheCodeOfTheFirstReason)
{
  const CorvDeviceShPtr device = planarArm(1), other = planarArm(1);
  const CorvJointShPtr before = device->rootJoint();
  const unsigned int version = device->version();
  EXPECT_EQ(device->setRootJoint(other->rootJoint()), CorvDevice::ALREADY_IN_A_KINEMATICAL_CHAIN_ERROR);
  const lmStatus added = device->rootJoint()->addJoint(other->rootJoint());
  EXPECT_EQ(added, CorvJoint::JOINT_ADDING_CHECK_ERROR);
  EXPECT_TRUE(added.hasCode(CorvDevice::ALREADY_IN_A_KINEMATICAL_CHAIN_ERROR));

  const ClumGeometryShPtr obstacle = ClumBox::create(1.0, 1.0, 1.0), shared = ClumBox::create(1.0, 1.0, 1.0);
  const CorvJointShPtr joint = CorvJointAnchor::create();
  ASSERT_TRUE(joint->addMobileGeometry(obstacle).succeeded());
  ASSERT_TRUE(device->addObstacleGeometry(obstacle).succeeded());
  EXPECT_EQ(device->setRootJoint(joint), CorvDevice::DEVICE_MOBILE_OBSTACLE_CONFLICT_ERROR);
  EXPECT_TRUE(before->addJoint(joint).hasCode(CorvDevice::DEVICE_MOBILE_OBSTACLE_CONFLICT_ERROR));
  ASSERT_TRUE(joint->mobileGeometries({shared}).succeeded());
  ASSERT_TRUE(device->innerCollisionScene()->addGeometry(shared).succeeded());
  EXPECT_EQ(device->setRootJoint(joint), CorvDevice::MOBILE_ALREADY_IN_SCENE_ERROR);
  EXPECT_FALSE(device->canSetRootJoint(joint));
  EXPECT_EQ(device->rootJoint(), before);
  EXPECT_EQ(device->countJoints(), 1u);

  ASSERT_TRUE(device->innerCollisionScene()->removeGeometry(shared).succeeded());
  ASSERT_TRUE(device->setRootJoint(joint).succeeded());
  EXPECT_GT(device->version(), version);
  EXPECT_EQ(joint->device(), device);
  EXPECT_FALSE(before->device());
  EXPECT_FALSE(before->mobileGroup());
  device->lockKinematicalChain();
  EXPECT_EQ(device->setRootJoint(CorvJointShPtr()), CorvDevice::LOCKED_KINEMATICAL_CHAIN_ERROR);
  EXPECT_EQ(joint->addJoint(CorvJointAnchor::create()), CorvJoint::LOCKED_KINEMATICAL_CHAIN_ERROR);
}

TEST(CorvDevice, ObstaclesAreCheckedInOrderAndTestedAgainstEveryGroup)
{
  const CorvDeviceShPtr device = planarArm(2);
  const ClumSceneShPtr scene = device->innerCollisionScene();
  const ClumGeometryShPtr obstacle = ClumBox::create(1.0, 1.0, 1.0);
  EXPECT_EQ(device->addObstacleGeometry(ClumGeometryShPtr()), CorvDevice::NULL_OBSTACLE_ERROR);
  EXPECT_EQ(device->addObstacleGeometry(device->mobileGeometry(1)), CorvDevice::OBSTACLE_MOBILE_CONFLICT_ERROR);
  EXPECT_EQ(device->insertObstacleGeometry(obstacle, 1), CorvDevice::OBSTACLE_OUT_OF_RANGE);
  const unsigned int version = device->version();
  ASSERT_TRUE(device->addObstacleGeometry(obstacle).succeeded());
  EXPECT_GT(device->version(), version);
  EXPECT_EQ(device->addObstacleGeometry(obstacle), CorvDevice::OBSTACLE_ALREADY_IN_COLLECTION_ERROR);
  const ClumGeometryShPtr stray = ClumBox::create(1.0, 1.0, 1.0);
  ASSERT_TRUE(scene->addGeometry(stray).succeeded());
  EXPECT_EQ(device->addObstacleGeometry(stray), CorvDevice::OBSTACLE_ALREADY_IN_SCENE_ERROR);
  EXPECT_EQ(device->joint(0)->addMobileGeometry(stray), CorvJoint::MOBILE_ALREADY_IN_SCENE_ERROR);

  ASSERT_EQ(scene->testPairs().size(), 2u);
  EXPECT_EQ(device->obstacleGroup()->countMembers(), 1u);
  for (unsigned int j = 0; j < 2; ++j)
    EXPECT_TRUE(scene->testParameters(device->joint(j)->mobileGroup(), device->obstacleGroup()));
  EXPECT_FALSE(scene->testParameters(device->joint(0)->mobileGroup(), device->joint(1)->mobileGroup()));

  // A body that gets its first geometry late.
  const ClumTestParametersShPtr parameters = ClumTestParameters::create();
  parameters->tolerance(0.25);
  device->defaultTestParameters(parameters);
  const CorvJointShPtr late = CorvJointAnchor::create();
  ASSERT_TRUE(device->joint(1)->addJoint(late).succeeded());
  EXPECT_FALSE(late->mobileGroup());
  ASSERT_TRUE(late->addMobileGeometry(ClumBox::create(1.0, 1.0, 1.0)).succeeded());
  const ClumTestParametersShPtr test = scene->testParameters(late->mobileGroup(), device->obstacleGroup());
  ASSERT_TRUE(test);
  EXPECT_EQ(test->tolerance(), 0.25);
  ASSERT_TRUE(device->joint(1)->removeJoint(late).succeeded());
  EXPECT_EQ(scene->testPairs().size(), 2u);
  EXPECT_FALSE(late->mobileGroup());
  EXPECT_TRUE(device->removeObstacleGeometry(obstacle).succeeded());
  EXPECT_TRUE(device->removeObstacleGeometry(obstacle).failed());
}

TEST(CorvDevice, ChangesOfTheTreeAreAnnouncedInOrderAndReverse)
{
  const CorvDeviceShPtr device = CorvDevice::create();
  const ShPtr<DeviceListener> listener(new DeviceListener);
  const ClumNotificatorShPtr notificator = device->objectNotificator();
  for (unsigned int id : {ClumObject::WILL_CHANGE_PROPERTY, ClumObject::WILL_CHANGE_COLLECTION})
    ASSERT_TRUE(notificator->subscribe(id, listener, listener.get(), &DeviceListener::will).succeeded());
  for (unsigned int id : {ClumObject::DID_CHANGE_PROPERTY, ClumObject::DID_CHANGE_COLLECTION})
    ASSERT_TRUE(notificator->subscribe(id, listener, listener.get(), &DeviceListener::did).succeeded());
  const CorvJointShPtr root = CorvJointAnchor::create();
  ASSERT_TRUE(device->setRootJoint(root).succeeded());
  EXPECT_EQ(listener->lines, (std::vector<std::string>{
                               "will version", "will joints", "will bodies", "will mobileGeometries", "will dofs",
                               "will rootJoint", "will collisionScene", "did collisionScene", "did rootJoint",
                               "did dofs", "did mobileGeometries", "did bodies", "did joints", "did version"}));
  listener->lines.clear();
  unsigned int version = device->version();
  ASSERT_TRUE(root->addVirtualChild(CorvJointAnchor::create()).succeeded());
  EXPECT_EQ(listener->lines, (std::vector<std::string>{"will version", "did version"}));
  EXPECT_EQ(device->version(), version + 1);

  // The version never comes back to an old value, whatever joins and leaves.
  version = device->version();
  for (unsigned int i = 0; i < 3; ++i)
  {
    ASSERT_TRUE(device->setRootJoint(i % 2 == 0 ? CorvJointShPtr() : root).succeeded());
    EXPECT_GT(device->version(), version);
    version = device->version();
  }
  listener->lines.clear();
  root->minMaxSweep(1.0);
  ASSERT_TRUE(root->addJoint(CorvJointAnchor::create()).succeeded());
  EXPECT_TRUE(listener->lines.empty());
}

TEST(CorvDevice, CopyMovesAloneAndKeepsItsTests)
{
  const CorvDeviceShPtr device = twoFreeFlyers(ClumBox::create(1.0, 1.0, 1.0), ClumBox::create(1.0, 1.0, 1.0));
  ASSERT_TRUE(device->addObstacleGeometry(ClumBox::create(1.0, 1.0, 1.0)).succeeded());
  const CorvDeviceShPtr sharing = device->clone(), apart = device->cloneWithGeometries();
  ASSERT_TRUE(sharing && apart);
  EXPECT_TRUE(sharing->equalByCoding(*device));
  EXPECT_TRUE(apart->equalByCoding(*device));
  for (const CorvDeviceShPtr& copy : {sharing, apart})
  {
    ASSERT_EQ(copy->countDofs(), 12u);
    EXPECT_NE(copy->dof(0), device->dof(0));
    EXPECT_EQ(copy->joint(1)->device(), copy);
    EXPECT_EQ(copy->configSpace()->device(), copy);
    EXPECT_EQ(copy->innerCollisionScene()->testPairs().size(), 3u);
    EXPECT_NE(copy->joint(1)->mobileGroup(), device->joint(1)->mobileGroup());
    const CorvConfig config(copy, std::vector<double>(12, 0.5));
    ASSERT_TRUE(copy->setCurrentConfig(config).succeeded());
    EXPECT_EQ(device->joint(1)->currentPosition(), ClumMat4());
    const unsigned int version = copy->version();
    copy->joint(2)->setCurrentPosition(screwFrame(1.0, 1.0, 1.0, 1.0));
    EXPECT_GT(copy->version(), version);
  }
  EXPECT_EQ(device->clone()->mobileGeometry(0), device->mobileGeometry(0));
  EXPECT_NE(device->cloneWithGeometries()->mobileGeometry(0), device->mobileGeometry(0));
}

TEST(CorvDevice, GoesWithItsLastHandleAndFreesItsGeometries)
{
  const ClumGeometryShPtr box = ClumBox::create(1.0, 1.0, 1.0);
  CorvDeviceShPtr device = freeFlyer(box);
  CorvConfigSpaceShPtr space = device->configSpace();
  EXPECT_TRUE(device->collisionValidator());
  EXPECT_FALSE(device->collisionTest());
  const CorvDeviceWkPtr watched = device;
  const CorvJointWkPtr watchedJoint = device->rootJoint();
  device.reset();
  EXPECT_EQ(space->device(), watched.lock());
  ASSERT_TRUE(watched.lock());
  ASSERT_TRUE(watched.lock()->setRootJoint(CorvJointShPtr()).succeeded());
  EXPECT_FALSE(watchedJoint.lock());
  EXPECT_TRUE(box->canTakeExclusivePositionControl());
  space.reset();
  EXPECT_FALSE(watched.lock());
}

TEST(CorvDevice, CollisionValidatorComesWithTheFirstBodyAndTests)
{
  const CorvDeviceShPtr device = CorvDevice::create();
  EXPECT_FALSE(device->collisionValidator());
  const CorvJointShPtr root = CorvJointFreeFlyer::create(ClumMat4());
  ASSERT_TRUE(device->setRootJoint(root).succeeded());
  EXPECT_FALSE(device->collisionValidator());
  ASSERT_TRUE(root->addMobileGeometry(ClumBox::create(1.0, 1.0, 1.0)).succeeded());
  EXPECT_TRUE(device->collisionValidator());
  const ClumGeometryShPtr obstacle = ClumBox::create(1.0, 1.0, 1.0);
  obstacle->position(screwFrame(0.0, 3.0, 0.0, 0.0));
  ASSERT_TRUE(device->addObstacleGeometry(obstacle).succeeded());
  EXPECT_TRUE(device->canCheckCollisions());
  EXPECT_FALSE(device->collisionTest());
  ASSERT_TRUE(device->setCurrentConfig(CorvConfig(device, {2.2, 0.0, 0.0, 0.0, 0.0, 0.0})).succeeded());
  EXPECT_TRUE(device->collisionTest());
  obstacle->position(screwFrame(0.0, -3.0, 0.0, 0.0));
  EXPECT_FALSE(device->collisionTest());
}
