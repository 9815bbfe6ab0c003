#include "foundation/lumBox.h"
#include "foundation/lumNotification.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumObjectFilter.h"
#include "foundation/lumPRNGGameRand.h"
#include "kinematics/orvBodyLumScene.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJointAnchor.h"
#include "kinematics/orvJointFreeFlyer.h"
#include "kinematics/orvJointPlan.h"
#include "kinematics/orvJointRotation.h"
#include "kinematics/orvJointTranslation.h"
#include "kinematics/orvKERotate.h"
#include "kinematics/orvKETranslate.h"
#include "support/devices.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
ClumMat4 shifted(double i_x, double i_y, double i_z)
{
  ClumMat4 frame;
  frame.translate(i_x, i_y, i_z);
  return frame;
}

ClumMat4 turnedAndShifted(double i_angle, double i_x, double i_y, double i_z)
{
  ClumMat4 frame;
  frame.rotate(ClumVect3(1.0, 2.0, -1.0), i_angle);
  frame.setTranslation(ClumVect3(i_x, i_y, i_z));
  return frame;
}

double largestDifference(const ClumMat4& i_a, const ClumMat4& i_b)
{
  double largest = 0.0;
  for (unsigned int i = 0; i < 16; ++i)
    largest = std::max(largest, std::fabs(i_a.data()[i] - i_b.data()[i]));
  return largest;
}

/// Writes down what one object or several announce.
struct ChangeLog
{
  std::vector<std::string> lines;

  void will(const ShPtr<const ClumNotification>& i_notification) { note("will ", i_notification); }
  void did(const ShPtr<const ClumNotification>& i_notification) { note("did ", i_notification); }
  void note(const char* i_word, const ShPtr<const ClumNotification>& i_notification)
  {
    lines.push_back(i_word + i_notification->stringValue(ClumObject::ELEMENT_NAME_KEY));
  }
  std::vector<std::string> take()
  {
    std::vector<std::string> taken;
    taken.swap(lines);
    return taken;
  }
};

ShPtr<ChangeLog> listenTo(const ClumObject& i_object)
{
  const ShPtr<ChangeLog> log(new ChangeLog);
  const ClumNotificatorShPtr from = i_object.objectNotificator();
  for (unsigned int id : {ClumObject::WILL_CHANGE_PROPERTY, ClumObject::WILL_CHANGE_COLLECTION})
    EXPECT_TRUE(from->subscribe(id, log, log.get(), &ChangeLog::will).succeeded());
  for (unsigned int id : {ClumObject::DID_CHANGE_PROPERTY, ClumObject::DID_CHANGE_COLLECTION})
    EXPECT_TRUE(from->subscribe(id, log, log.get(), &ChangeLog::did).succeeded());
  return log;
}

std::vector<CorvDofShPtr> dofsOf(const CorvConfigSpaceShPtr& i_space)
{
  std::vector<CorvDofShPtr> dofs;
  EXPECT_TRUE(i_space->getDofs(dofs).succeeded());
  return dofs;
}
} // namespace

TEST(CorvJoint, FramesFollowTheProductOfEffects)
{
  const ClumMat4 rootFrame = turnedAndShifted(0.7, 1.0, 2.0, 3.0), childFrame = turnedAndShifted(-1.1, 0.0, 4.0, 1.0);
  const CorvJointShPtr root = CorvJointRotation::create(rootFrame, ClumMat4::Z_AXIS);
  const CorvJointShPtr child = CorvJointTranslation::create(childFrame, ClumMat4::INVERSE_X_AXIS);
  ASSERT_TRUE(root->addJoint(child).succeeded());
  const CorvConfig config(CorvConfigSpaceShPtr(root->configSpace()), {0.4, 0.9});
  ASSERT_TRUE(root->setCurrentConfig(config).succeeded());

  ClumMat4 turn;
  turn.rotate(0.0, 0.0, 1.0, 0.4);
  const ClumMat4 rootNow = rootFrame * turn;
  const ClumMat4 childNow = rootNow * rootFrame.inverse() * childFrame * shifted(-0.9, 0.0, 0.0);
  EXPECT_LT(largestDifference(root->currentPosition(), rootNow), 1e-13);
  EXPECT_LT(largestDifference(child->currentPosition(), childNow), 1e-13);
  EXPECT_LT(largestDifference(child->currentTransform() * child->initialPosition(), childNow), 1e-13);

  ClumMat4 elsewhere;
  ASSERT_TRUE(root->getJointPosition(child, config, shifted(0.0, 0.0, 5.0), elsewhere).succeeded());
  EXPECT_LT(largestDifference(elsewhere, shifted(0.0, 0.0, 5.0) * childNow), 1e-13);
  CorvConfigShPtr read;
  ASSERT_TRUE(root->getCurrentConfig(read).succeeded());
  EXPECT_EQ(read->dofValues(), (std::vector<double>{0.4, 0.9}));
  EXPECT_TRUE(root->setCurrentConfig(CorvConfig(CorvConfigSpaceShPtr(child->configSpace()))).failed());
}

TEST(CorvJoint, AValueGivenAtCreationMovesTheJointFromItsInitialFrame)
{
  const ClumMat4 frame = turnedAndShifted(0.3, 1.0, 0.0, 2.0);
  const CorvJointRotationShPtr joint = CorvJointRotation::create(0.8, frame, ClumMat4::Y_AXIS);
  ClumMat4 turn;
  turn.rotate(0.0, 1.0, 0.0, 0.8);
  EXPECT_LT(largestDifference(joint->initialPosition(), frame), 1e-14);
  EXPECT_LT(largestDifference(joint->currentPosition(), frame * turn), 1e-14);
  EXPECT_LT((joint->rotationAxis() - frame.axis(ClumMat4::Y_AXIS)).norm(), 1e-14);
  ASSERT_TRUE(joint->setCurrentConfig(CorvConfig(CorvConfigSpaceShPtr(joint->configSpace()))).succeeded());
  EXPECT_LT(largestDifference(joint->currentPosition(), frame), 1e-14);
  EXPECT_EQ(CorvJointRotation::create(frame, ClumMat4::X_AXIS)->currentPosition(), frame);

  const CorvJointRotationShPtr placed =
    CorvJointRotation::create(ClumVect3(1.0, 2.0, 3.0), ClumVect3(0.0, 3.0, 4.0), ClumMat4::INVERSE_Z_AXIS);
  EXPECT_LT((placed->rotationAxis() - ClumVect3(0.0, 0.6, 0.8)).norm(), 1e-14);
  placed->setCurrentRotationAxis(ClumVect3(1.0, 0.0, 0.0));
  EXPECT_LT((placed->rotationAxis() - ClumVect3(1.0, 0.0, 0.0)).norm(), 1e-14);
  EXPECT_EQ(placed->currentPosition().translation(), ClumVect3(1.0, 2.0, 3.0));
  ClumVect3 hint;
  ASSERT_TRUE(placed->getAxisHint(0, hint).succeeded());
  EXPECT_NEAR(std::fabs(hint.x()), 1.0, 1e-12);

  EXPECT_FALSE(CorvJoint::create(CorvKinematicalEffectShPtr(), ClumMat4()));
  EXPECT_FALSE(CorvJoint::create(CorvKERotateX::create(), std::vector<double>(2, 0.0), ClumMat4()));
  EXPECT_FALSE(CorvJointTranslation::create(ClumMat4(), static_cast<ClumMat4::EBaseVector>(9)));
}

TEST(CorvJoint, SettingAFrameMovesTheZeroAndLeavesTheJointsBeyond)
{
  const CorvDeviceShPtr arm = planarArm(3);
  const CorvJointShPtr root = arm->rootJoint(), middle = root->childJoint(0), last = middle->childJoint(0);
  const CorvConfig bent(arm, {0.3, -0.8, 1.1});
  ASSERT_TRUE(arm->setCurrentConfig(bent).succeeded());
  const ClumMat4 lastBefore = last->currentPosition();
  const ClumMat4 wanted = turnedAndShifted(0.2, 5.0, 1.0, -2.0);
  const unsigned int version = arm->version();
  middle->setCurrentPosition(wanted);
  EXPECT_EQ(middle->currentPosition(), wanted);
  EXPECT_EQ(last->currentPosition(), lastBefore);
  EXPECT_GT(arm->version(), version);
  CorvConfig read;
  ASSERT_TRUE(arm->getCurrentConfig(read).succeeded());
  EXPECT_EQ(read.dofValues(), bent.dofValues());
  ASSERT_TRUE(arm->setCurrentConfig(bent).succeeded());
  EXPECT_LT(largestDifference(middle->currentPosition(), wanted), 1e-13);
  EXPECT_LT(largestDifference(last->currentPosition(), lastBefore), 1e-13);

  const ClumMat4 between = middle->currentPosition().inverse() * last->currentPosition();
  middle->setCurrentRigidPosition(ClumMat4());
  EXPECT_EQ(middle->currentPosition(), ClumMat4());
  EXPECT_LT(largestDifference(last->currentPosition(), between), 1e-13);
  ASSERT_TRUE(arm->setCurrentConfig(bent).succeeded());
  EXPECT_LT(largestDifference(last->currentPosition(), between), 1e-13);
  EXPECT_LT(largestDifference(last->attachedBody()->absolutePosition(), last->currentPosition()), 1e-13);
}

TEST(CorvJoint, RefusedEditsLeaveTheTreeAsItWas)
{
  const CorvJointShPtr root = CorvJointAnchor::create(), child = CorvJointAnchor::create();
  const CorvJointShPtr other = CorvJointAnchor::create();
  EXPECT_EQ(root->addJoint(CorvJointShPtr()), CorvJoint::NULL_JOINT_ERROR);
  EXPECT_EQ(root->addJoint(root), CorvJoint::KINEMATICAL_LOOP_ATTEMPT_ERROR);
  ASSERT_TRUE(root->insertJoint(child, 0).succeeded());
  EXPECT_EQ(child->addJoint(root), CorvJoint::KINEMATICAL_LOOP_ATTEMPT_ERROR);
  EXPECT_EQ(other->addJoint(child), CorvJoint::JOINT_ALREADY_HAS_PARENT_ERROR);
  EXPECT_EQ(root->insertJoint(other, 2), CorvJoint::INVALID_CHILDREN_RANK_ERROR);
  EXPECT_TRUE(root->insertJoint(other, 1).succeeded());
  EXPECT_TRUE(root->removeJoint(other).succeeded());
  EXPECT_TRUE(root->removeJoint(other).failed());

  // An effect whose space lies in another joint already makes the rebuilding of the space fail.
  const CorvKinematicalEffectShPtr taken = CorvKERotateX::create();
  const CorvJointShPtr holder = CorvJoint::create(taken, ClumMat4());
  const CorvJointShPtr turning = CorvJointRotation::create(ClumMat4(), ClumMat4::X_AXIS);
  const std::vector<CorvDofShPtr> dofs = dofsOf(turning->configSpace());
  EXPECT_EQ(turning->setKinematicalEffect(taken), CorvJoint::REBUILD_CONFIG_SPACE_ERROR);
  EXPECT_EQ(turning->customSubspace(holder->configSpace()).code(), lmStatus::SUCCESS);
  EXPECT_EQ(turning->addJoint(holder), CorvJoint::REBUILD_CONFIG_SPACE_ERROR);
  EXPECT_EQ(turning->countChildJoints(), 0u);
  EXPECT_FALSE(holder->parentJoint());
  EXPECT_TRUE(turning->customSubspace(CorvConfigSpaceShPtr()).succeeded());
  EXPECT_EQ(turning->setKinematicalEffect(CorvJointPlan::create(ClumMat4())->kinematicalEffect()),
            CorvJoint::INCOMPATIBLE_KINEMATICAL_EFFECT_ERROR);
  EXPECT_EQ(dofsOf(turning->configSpace()), dofs);

  root->lockKinematicalChain();
  EXPECT_EQ(root->addJoint(CorvJointAnchor::create()), CorvJoint::LOCKED_KINEMATICAL_CHAIN_ERROR);
  EXPECT_EQ(child->addJoint(CorvJointAnchor::create()), CorvJoint::LOCKED_KINEMATICAL_CHAIN_ERROR);
  EXPECT_EQ(root->removeJoint(child), CorvJoint::LOCKED_KINEMATICAL_CHAIN_ERROR);
  EXPECT_EQ(root->countChildJoints(), 1u);
}

TEST(CorvJoint, GeometriesAreCheckedInOrderAndBelongToOneJoint)
{
  const CorvDeviceShPtr arm = planarArm(2);
  const CorvJointShPtr first = arm->rootJoint(), second = first->childJoint(0);
  const ClumGeometryShPtr obstacle = ClumBox::create(1.0, 1.0, 1.0), fresh = ClumBox::create(1.0, 1.0, 1.0);
  ASSERT_TRUE(arm->addObstacleGeometry(obstacle).succeeded());
  EXPECT_EQ(first->addMobileGeometry(ClumGeometryShPtr()), CorvJoint::NULL_GEOMETRY_ERROR);
  EXPECT_EQ(first->addMobileGeometry(first->mobileGeometry(0)), CorvJoint::MOBILE_ALREADY_IN_COLLECTION_ERROR);
  EXPECT_EQ(second->addMobileGeometry(first->mobileGeometry(0)), CorvJoint::MOBILE_MOBILE_CONFLICT_ERROR);
  EXPECT_EQ(first->addMobileGeometry(obstacle), CorvJoint::MOBILE_OBSTACLE_CONFLICT_ERROR);
  EXPECT_EQ(first->insertMobileGeometry(fresh, 2), CorvJoint::MOBILE_OUT_OF_RANGE_ERROR);
  const CorvJointShPtr stranger = CorvJointAnchor::create();
  ASSERT_TRUE(stranger->addMobileGeometry(fresh).succeeded());
  EXPECT_EQ(first->addMobileGeometry(fresh), CorvJoint::MOBILE_ALREADY_CONTROLLED_ERROR);
  EXPECT_EQ(first->countMobileGeometries(), 1u);
  EXPECT_EQ(first->removeMobileGeometry(fresh), CorvJoint::MOBILE_NOT_IN_COLLECTION_ERROR);

  const ClumGeometryShPtr own = first->mobileGeometry(0);
  const ClumMat4 ownFrame = first->mobileGeometryRelativePosition(0);
  EXPECT_TRUE(first->mobileGeometries({ClumBox::create(1.0, 1.0, 1.0), obstacle}).failed());
  ASSERT_EQ(first->countMobileGeometries(), 1u);
  EXPECT_EQ(first->mobileGeometry(0), own);
  EXPECT_LT(largestDifference(first->mobileGeometryRelativePosition(0), ownFrame), 1e-15);

  ASSERT_TRUE(stranger->removeMobileGeometry(fresh).succeeded());
  EXPECT_TRUE(first->addMobileGeometry(fresh).succeeded());
  arm->collisionToolkit(ClumCollisionToolkitShPtr());
  EXPECT_EQ(second->addMobileGeometry(ClumBox::create(1.0, 1.0, 1.0)), CorvJoint::COLLISION_TOOLKIT_ERROR);

  // A subtree that brings a geometry of the tree is refused as a whole.
  const CorvJointShPtr loose = CorvJointAnchor::create(), leaf = CorvJointAnchor::create();
  ASSERT_TRUE(loose->addJoint(leaf).succeeded());
  const CorvBodyLumSceneShPtr body = CorvBodyLumScene::create(own, ClumMat4());
  EXPECT_TRUE(leaf->setAttachedBody(body).failed());
  EXPECT_FALSE(body->joint());
  EXPECT_FALSE(leaf->attachedBody());
}

TEST(CorvJoint, NotificationsEncloseTheChangeInReverseOrder)
{
  const CorvJointShPtr root = CorvJointRotation::create(ClumMat4(), ClumMat4::Z_AXIS);
  const CorvJointShPtr child = CorvJointAnchor::create();
  ASSERT_TRUE(root->addJoint(child).succeeded());
  const ShPtr<ChangeLog> log = listenTo(*root);
  ASSERT_TRUE(child->objectNotificator()
                ->subscribe(ClumObject::DID_CHANGE_PROPERTY, log, log.get(), &ChangeLog::did)
                .succeeded());
  ASSERT_TRUE(root->setCurrentConfig(CorvConfig(CorvConfigSpaceShPtr(root->configSpace()), {1.0})).succeeded());
  EXPECT_EQ(log->take(),
            (std::vector<std::string>{"will currentPosition", "will currentRigidPosition", "did currentRigidPosition",
                                      "did currentPosition", "did currentRigidPosition", "did currentPosition"}));
  const unsigned int version = root->version(), structure = root->structuralVersion();
  ASSERT_TRUE(root->addJoint(CorvJointAnchor::create()).succeeded());
  const std::vector<std::string> lines = log->take();
  ASSERT_GE(lines.size(), 6u);
  EXPECT_EQ(lines.front(), "will childJoints");
  EXPECT_EQ(lines.back(), "did childJoints");
  EXPECT_EQ(
    std::vector<std::string>(lines.end() - 5, lines.end() - 1),
    (std::vector<std::string>{"will version", "will structuralVersion", "did structuralVersion", "did version"}));
  EXPECT_GT(root->version(), version);
  EXPECT_EQ(root->structuralVersion(), structure + 1);
  EXPECT_EQ(child->structuralVersion(), 0u);
}

TEST(CorvJoint, SweepIsNeverExceededByASampledPlacing)
{
  const ClumPRNGShPtr random = ClumPRNGGameRand::create();
  random->seed(5u);
  const CorvJointShPtr root = CorvJointRotation::create(ClumMat4(), ClumMat4::Z_AXIS);
  const CorvJointShPtr slide = CorvJointTranslation::create(shifted(1.0, 0.0, 0.0), ClumMat4::X_AXIS);
  const CorvJointShPtr hand = CorvJointFreeFlyer::create(shifted(1.5, 0.0, 0.0));
  ASSERT_TRUE(slide->dof(0)->boundWithin(-3.0, 2.0).succeeded());
  for (unsigned int k = 0; k < 3; ++k)
    ASSERT_TRUE(hand->dof(k)->boundWithin(-0.5, 0.25).succeeded());
  const ClumGeometryShPtr box = ClumBox::create(1.0, 0.2, 0.2);
  box->position(shifted(2.0, 0.0, 0.0));
  ASSERT_TRUE(hand->addMobileGeometry(box).succeeded());
  ASSERT_TRUE(root->addJoint(slide).succeeded());
  ASSERT_TRUE(slide->addJoint(hand).succeeded());
  const double sweep = root->maxSweep();
  double farthest = 0.0;
  for (unsigned int i = 0; i < 4000; ++i)
  {
    std::vector<double> values = {0.0, random->random(-3.0, 2.0)};
    for (unsigned int k = 0; k < 6; ++k)
      values.push_back(k < 3 ? random->random(-0.5, 0.25) : random->random(-3.0, 3.0));
    std::vector<ClumMat4> frames;
    ASSERT_TRUE(
      root->getBodyMatVector(CorvConfig(CorvConfigSpaceShPtr(root->configSpace()), values), ClumMat4(), frames)
        .succeeded());
    farthest = std::max(farthest, (frames[0] * ClumPoint3(1.0, 0.1, 0.1)).toVect3().norm());
  }
  EXPECT_GE(sweep, farthest);
  EXPECT_LT(sweep, 1.5 * farthest);

  ASSERT_TRUE(slide->dof(0)->boundWithin(-30.0, 2.0).succeeded());
  EXPECT_GT(root->maxSweep(), sweep + 20.0);
  hand->minMaxSweep(500.0);
  EXPECT_EQ(hand->maxSweep(), 500.0);

  // Joints that are each other's virtual children: the walk ends, and each counts the other.
  const CorvJointShPtr a = CorvJointAnchor::create(), b = CorvJointAnchor::create();
  b->setCurrentPosition(shifted(7.0, 0.0, 0.0));
  ASSERT_TRUE(a->addVirtualChild(b).succeeded());
  ASSERT_TRUE(b->addVirtualChild(a).succeeded());
  EXPECT_TRUE(a->addVirtualChild(b).failed());
  EXPECT_NEAR(a->maxSweep(), 7.0, 1e-12);
  ASSERT_TRUE(a->removeVirtualChild(b).succeeded());
  EXPECT_EQ(a->maxSweep(), 0.0);
}

TEST(CorvJoint, DofsOfTheSubtreeStandInTheOrderCustomEffectChildren)
{
  const CorvJointShPtr root = CorvJointPlan::create(ClumMat4());
  const CorvJointShPtr first = CorvJointRotation::create(ClumMat4(), ClumMat4::X_AXIS);
  const CorvJointShPtr second = CorvJointRotation::create(ClumMat4(), ClumMat4::Y_AXIS);
  const CorvDofShPtr custom = CorvDof::create(false);
  ASSERT_TRUE(root->addJoint(second).succeeded());
  ASSERT_TRUE(root->insertJoint(first, 0).succeeded());
  ASSERT_TRUE(root->customSubspace(custom).succeeded());
  EXPECT_EQ(dofsOf(root->configSpace()), (std::vector<CorvDofShPtr>{custom, root->dof(0), root->dof(1), root->dof(2),
                                                                    first->dof(0), second->dof(0)}));
  ASSERT_TRUE(
    root->setCurrentConfig(CorvConfig(CorvConfigSpaceShPtr(root->configSpace()), {9.0, 1.0, 2.0, 0.5, 0.25, -0.25}))
      .succeeded());
  EXPECT_EQ(root->currentEffectDofValues(), (std::vector<double>{1.0, 2.0, 0.5}));
  EXPECT_EQ(second->currentEffectDofValues(), std::vector<double>{-0.25});
  root->isLocked(true);
  EXPECT_TRUE(custom->isLocked() && root->dof(2)->isLocked() && root->isLocked());
  EXPECT_FALSE(first->isLocked());
}

TEST(CorvJoint, CopyHasItsOwnTreeAndSpace)
{
  const CorvJointShPtr root = CorvJointFreeFlyer::create(1.0, 2.0, 3.0, 0.1, 0.2, 0.3, ClumMat4());
  const CorvJointRotationShPtr child = CorvJointRotation::create(shifted(1.0, 0.0, 0.0), ClumMat4::INVERSE_Y_AXIS);
  ASSERT_TRUE(root->addJoint(child).succeeded());
  const CorvJointShPtr copy = root->clone();
  ASSERT_TRUE(boost::dynamic_pointer_cast<CorvJointFreeFlyer>(copy));
  ASSERT_EQ(copy->countChildJoints(), 1u);
  EXPECT_EQ(copy->childJoint(0)->parentJoint(), copy);
  EXPECT_TRUE(*copy == *root);
  EXPECT_EQ(copy->countDofsInTree(), 7u);
  EXPECT_NE(copy->dof(0), root->dof(0));
  const CorvJointRotationShPtr copiedChild = boost::dynamic_pointer_cast<CorvJointRotation>(copy->childJoint(0));
  ASSERT_TRUE(copiedChild);
  EXPECT_EQ(copiedChild->baseVector(), ClumMat4::INVERSE_Y_AXIS);
  const CorvConfig config(CorvConfigSpaceShPtr(copy->configSpace()), {5.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1.0});
  ASSERT_TRUE(copy->setCurrentConfig(config).succeeded());
  EXPECT_FALSE(*copy == *root);
}

TEST(CorvJoint, RigidlyLinkedJointsAreThoseBehindJointsWithoutDofs)
{
  const CorvJointShPtr moving = CorvJointPlan::create(ClumMat4()), plate = CorvJointAnchor::create();
  const CorvJointShPtr tip = CorvJointAnchor::create(), hinge = CorvJointRotation::create(ClumMat4(), ClumMat4::Z_AXIS);
  const CorvJointShPtr far = CorvJointAnchor::create();
  ASSERT_TRUE(moving->addJoint(plate).succeeded());
  ASSERT_TRUE(plate->addJoint(tip).succeeded());
  ASSERT_TRUE(plate->addJoint(hinge).succeeded());
  const ClumObjectFilterShPtr isBelowPlate = plate->makeChildFilter();
  EXPECT_TRUE(isBelowPlate->accepts(*tip) && isBelowPlate->accepts(*hinge));
  EXPECT_FALSE(isBelowPlate->accepts(*plate) || isBelowPlate->accepts(*moving) || isBelowPlate->accepts(*far));
  EXPECT_FALSE(isBelowPlate->accepts(*hinge->dof(0)));
  tip->linkedJoint(far);
  std::vector<CorvJointShPtr> linked;
  tip->getRigidlyLinkedJoints(linked);
  EXPECT_EQ(linked, (std::vector<CorvJointShPtr>{tip, plate, far, moving}));
  EXPECT_FALSE(tip->hasLinkedBody());
  ASSERT_TRUE(moving->addMobileGeometry(ClumBox::create(1.0, 1.0, 1.0)).succeeded());
  EXPECT_TRUE(tip->hasLinkedBody());
  EXPECT_FALSE(hinge->hasLinkedBody());
}
