#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumLeafGeometry.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumScene.h"
#include "kinematics/orvBodyLumScene.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvUtility.h"
#include "paths/orvDirectPath.h"
#include "paths/orvSteeringMethod.h"
#include "support/devices.h"
#include "support/meshes.h"
#include "validation/orvValidatorCfgCollisionBase.h"
#include "validation/orvValidatorDPCollision.h"

#include <gtest/gtest.h>

namespace
{
using EAlgorithm = CorvValidatorDPCollision::EAlgorithm;
constexpr EAlgorithm ALGORITHMS[] = {CorvValidatorDPCollision::DICHOTOMY, CorvValidatorDPCollision::PROGRESSIVE_FORWARD,
                                     CorvValidatorDPCollision::PROGRESSIVE_BACKWARD};

/// Looks for contact at evenly spaced configurations of a path, by moving the device and asking every pair of leaves.
class DenseSampler
{
public:
  explicit DenseSampler(const CorvDeviceShPtr& i_device) : m_device(i_device)
  {
    for (const CorvBodyShPtr& body : i_device->bodyVector())
    {
      m_leaves.emplace_back();
      boost::static_pointer_cast<CorvBodyLumScene>(body)->mobileGroup()->getLeaves(m_leaves.back());
    }
    m_device->obstacleGroup()->getLeaves(m_obstacles);
  }

  bool findsContact(const CorvDirectPath& i_path, unsigned int i_countSamples) const
  {
    CorvConfig config(m_device);
    for (unsigned int i = 0; i < i_countSamples; ++i)
    {
      EXPECT_TRUE(i_path.getConfigAtDistance(i_path.length() * i / (i_countSamples - 1), config).succeeded());
      EXPECT_TRUE(m_device->setCurrentConfig(config).succeeded());
      if (isTouching())
        return true;
    }
    return false;
  }

private:
  bool isTouching() const
  {
    for (unsigned int i = 0; i < m_leaves.size(); ++i)
    {
      const ClumMat4 pose = m_device->body(i)->absolutePosition();
      if (areTouching(m_leaves[i], pose, m_obstacles, m_device->obstacleGroup()->position()))
        return true;
      for (unsigned int k = 0; k < i && m_testsBodies; ++k)
        if (areTouching(m_leaves[i], pose, m_leaves[k], m_device->body(k)->absolutePosition()))
          return true;
    }
    return false;
  }

  static bool areTouching(const std::vector<ClumPlacedLeaf>& i_a, const ClumMat4& i_poseA,
                          const std::vector<ClumPlacedLeaf>& i_b, const ClumMat4& i_poseB)
  {
    const ClumCollisionToolkit& toolkit = *ClumCollisionToolkit::defaultCollisionToolkit();
    for (const ClumPlacedLeaf& a : i_a)
      for (const ClumPlacedLeaf& b : i_b)
        if (toolkit.areTouching(*a.leaf->collisionModel(toolkit), i_poseA * a.frame, *b.leaf->collisionModel(toolkit),
                                i_poseB * b.frame))
          return true;
    return false;
  }

public:
  bool m_testsBodies = false;

private:
  CorvDeviceShPtr m_device;
  std::vector<std::vector<ClumPlacedLeaf>> m_leaves;
  std::vector<ClumPlacedLeaf> m_obstacles;
};

CorvDirectPathShPtr randomMotion(const CorvConfigSpaceShPtr& i_space, double i_area, double i_step, double i_turn)
{
  CorvConfig start(i_space);
  CorvConfig end(i_space);
  for (unsigned int i = 0; i < i_space->size(); ++i)
  {
    const CorvDofShPtr dof = i_space->dof(i);
    const double range = dof->isRevolute() ? 3.0 : i_area;
    const double step = dof->isRevolute() ? i_turn : i_step;
    const bool isBounded = dof->isBounded();
    const double from = isBounded ? std::min(std::max(CorvUtility::random(-range, range), dof->vmin()), dof->vmax())
                                  : CorvUtility::random(-range, range);
    double to = from + CorvUtility::random(-step, step);
    if (isBounded)
      to = std::min(std::max(to, dof->vmin()), dof->vmax());
    start.dofValue(i, from);
    end.dofValue(i, to);
  }
  return i_space->steeringMethod()->makeDirectPath(start, end);
}

/// @return the number of motions that were proved free.
unsigned int expectSoundProofs(const CorvDeviceShPtr& i_device, unsigned int i_countMotions, double i_area,
                               double i_step, double i_turn, bool i_testsBodies = false)
{
  const CorvConfigSpaceShPtr space = i_device->configSpace();
  DenseSampler sampler(i_device);
  sampler.m_testsBodies = i_testsBodies;
  unsigned int countFree = 0;
  unsigned int countFreeSamples = 0;
  for (unsigned int i = 0; i < i_countMotions; ++i)
  {
    const CorvDirectPathShPtr path = randomMotion(space, i_area, i_step, i_turn);
    unsigned int countProofs = 0;
    for (const EAlgorithm algorithm : ALGORITHMS)
    {
      const CorvValidatorDPCollisionShPtr validator =
        CorvValidatorDPCollision::create(space, CorvValidatorConstShPtr(), 0.0, algorithm);
      const CorvDirectPathShPtr fresh =
        space->steeringMethod()->makeDirectPath(path->startConfiguration(), path->endConfiguration());
      countProofs += validator->validate(*fresh) && fresh->isValid();
    }
    countFree += countProofs == 3;
    // Free by one algorithm is enough: none may be wrong.
    if (countProofs != 0 && sampler.findsContact(*path, 1000))
      ADD_FAILURE() << "motion " << i << " was proved free by " << countProofs << " algorithms and has a contact";
    else if (countProofs == 0)
      countFreeSamples += !sampler.findsContact(*path, 100);
  }
  // A proof that refuses everything is sound too: most of what is free must be proved free.
  EXPECT_LT(countFreeSamples, 0.1 * countFree);
  return countFree;
}
} // namespace

TEST(MotionProof, FreeFlyingLongPartInClutterNeverTouchesWhereItIsProvedFree)
{
  CorvUtility::randomSeed(20);
  const CorvDeviceShPtr device = freeFlyer(longBar(3.0, 0.2));
  ASSERT_TRUE(device->addObstacleGeometry(clutter(7, 90, 12.0)).succeeded());
  EXPECT_GT(expectSoundProofs(device, 600, 6.0, 0.5, 1.0), 200u);
}

TEST(MotionProof, PartAmongNeedlesNeverTouchesWhereItIsProvedFree)
{
  // Contacts are short here, and translations are bounded tightly: a proof that reaches too far misses some.
  CorvUtility::randomSeed(23);
  std::vector<ClumPlacedLeaf> needles;
  for (unsigned int i = 0; i < 30; ++i)
  {
    ClumMat4 place;
    ClumMat4 turn;
    place.translate(CorvUtility::random(-3.0, 3.0), CorvUtility::random(-3.0, 3.0), CorvUtility::random(-3.0, 3.0));
    turn.rotate(0.0, 1.0, CorvUtility::random(-1.0, 1.0), CorvUtility::random(0.0, 3.0));
    needles.push_back({boxMesh(4.0, 0.02, 0.02), place * turn});
  }
  const CorvDeviceShPtr device = freeFlyer(boxMesh(0.05, 0.05, 0.05));
  ASSERT_TRUE(device->addObstacleGeometry(joined(needles)).succeeded());
  EXPECT_GT(expectSoundProofs(device, 600, 3.0, 3.0, 0.2), 200u);
}

TEST(MotionProof, ArmInClutterNeverTouchesWhereItIsProvedFree)
{
  CorvUtility::randomSeed(21);
  const CorvDeviceShPtr device = sixAxisArm();
  ClumMat4 above;
  above.translate(0.0, 0.0, 1.0);
  ASSERT_TRUE(device->addObstacleGeometry(moved(*clutter(10, 36, 3.0), above)).succeeded());
  EXPECT_GT(expectSoundProofs(device, 300, 0.0, 0.0, 0.6), 50u);
}

TEST(MotionProof, TwoMovingBodiesNeverTouchWhereTheyAreProvedFree)
{
  CorvUtility::randomSeed(22);
  const CorvDeviceShPtr device = twoFreeFlyers(longBar(2.0, 0.2), lPart(1.0, 1.5, 0.2));
  ASSERT_TRUE(device->addObstacleGeometry(clutter(11, 6, 4.0)).succeeded());
  EXPECT_GT(expectSoundProofs(device, 300, 1.0, 0.6, 1.0, true), 80u);
  const CorvDeviceShPtr thin = twoFreeFlyers(boxMesh(2.0, 0.03, 0.03), boxMesh(0.03, 0.03, 2.0));
  EXPECT_GT(expectSoundProofs(thin, 400, 1.5, 3.0, 0.2, true), 80u);
}
