#include "meshArm.h"

#include "support/meshes.h"

#include "foundation/lumParameterMap.h"
#include "foundation/lumScene.h"
#include "foundation/lumTime.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJointRotation.h"
#include "planners/orvBuilderPlanner.h"
#include "planners/orvPathPlannerDelegate.h"
#include "roadmaps/orvExtendDirect.h"
#include "roadmaps/orvLinkerKeepValidPart.h"
#include "roadmaps/orvMultiDiffusingBuilder.h"
#include "roadmaps/orvRatingShortestComponent.h"
#include "roadmaps/orvRoadmap.h"
#include "roadmaps/orvShooterRoadmapBox.h"
#include "validation/orvValidatorDPCollision.h"
#include "validation/orvValidatorSet.h"

#include <vector>

namespace
{
constexpr double PENETRATION = 1.0;
/// Random step and longest motion, in radians.
constexpr double DEVIATION = 1.5;
constexpr double EXTENSION = 1.2;

const std::vector<double> START = {-0.41, 0.75, 1.75, -0.50, -0.92, 0.33};
const std::vector<double> GOAL = {0.37, 0.33, 1.43, 0.86, -0.29, -0.91};

ClumMat4 at(double i_x, double i_y, double i_z)
{
  ClumMat4 frame;
  frame.translate(i_x, i_y, i_z);
  return frame;
}

/// A joint with its link, both told in world coordinates for the arm standing upright.
CorvJointShPtr axis(double i_height, const ClumVect3& i_direction, double i_range, const ClumMeshShPtr& i_link,
                    double i_linkHeight)
{
  const CorvJointShPtr joint = CorvJointRotation::create(ClumVect3(0.0, 0.0, i_height), i_direction, ClumMat4::Z_AXIS);
  joint->dof(0)->boundWithin(-i_range, i_range);
  const ClumMeshShPtr link = refined(*i_link, FINE);
  link->position(at(0.0, 0.0, i_linkHeight));
  joint->addMobileGeometry(link);
  return joint;
}

void addBoard(const CorvDeviceShPtr& i_device, const ClumMat4& i_middle, double i_sizeX, double i_sizeY, double i_sizeZ)
{
  const ClumMeshShPtr board = refined(*boxMesh(i_sizeX, i_sizeY, i_sizeZ), FINE);
  board->position(i_middle);
  i_device->addObstacleGeometry(board);
}

class StepLimit : public CorvPathPlannerDelegate
{
public:
  explicit StepLimit(unsigned int i_steps) : m_left(i_steps) {}
  bool plannerShouldStopPlanning(const CorvPathPlannerShPtr& i_planner) override
  {
    return m_left-- == 0 || CorvPathPlannerDelegate::plannerShouldStopPlanning(i_planner);
  }

private:
  unsigned int m_left;
};
} // namespace

CorvDeviceShPtr meshArmAtShelf()
{
  const ClumVect3 y(0.0, 1.0, 0.0), z(0.0, 0.0, 1.0);
  const std::vector<CorvJointShPtr> joints = {axis(100.0, z, 2.9, cylinderMesh(110.0, 240.0, 40), 220.0),
                                              axis(400.0, y, 1.9, cylinderMesh(60.0, 600.0, 40), 650.0),
                                              axis(900.0, y, 2.6, cylinderMesh(45.0, 130.0, 40), 950.0),
                                              axis(1000.0, z, 3.1, cylinderMesh(40.0, 300.0, 40), 1165.0),
                                              axis(1350.0, y, 2.1, cylinderMesh(35.0, 120.0, 40), 1380.0),
                                              axis(1430.0, z, 3.1, boxMesh(60.0, 120.0, 60.0), 1460.0)};
  const ClumMeshShPtr carried = refined(*boxMesh(140.0, 200.0, 120.0), FINE);
  carried->position(at(0.0, 0.0, 1551.0));
  joints.back()->addMobileGeometry(carried);
  for (unsigned int i = 0; i + 1 < joints.size(); ++i)
    joints[i]->addJoint(joints[i + 1]);
  const CorvDeviceShPtr device = CorvDevice::create();
  device->setRootJoint(joints.front());
  for (unsigned int i = 0; i < joints.size(); ++i)
    for (unsigned int j = i + 2; j < joints.size(); ++j)
      device->innerCollisionScene()->addTestParameters(joints[i]->mobileGroup(), joints[j]->mobileGroup(),
                                                       ClumScene::REFUSE_EXISTING_TEST);
  for (const double height : {200.0, 600.0, 1000.0})
    addBoard(device, at(800.0, 0.0, height), 320.0, 1020.0, 20.0);
  for (const double side : {-500.0, 0.0, 500.0})
    addBoard(device, at(800.0, side, 500.0), 320.0, 20.0, 1000.0);
  addBoard(device, at(965.0, 0.0, 500.0), 10.0, 1020.0, 1020.0);
  addBoard(device, at(400.0, 0.0, -15.0), 1400.0, 1400.0, 20.0);
  return device;
}

double planMeshArm(const CorvDeviceShPtr& i_arm, unsigned int i_maxSteps)
{
  const CorvConfigSpaceShPtr space = i_arm->configSpace();
  const CorvConfig start(i_arm, START), goal(i_arm, GOAL);
  bool isColliding = false;
  start.isColliding(isColliding); // makes the models
  CorvValidatorDPCollision::setPenetration(space->directPathValidators(), PENETRATION);
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  parameters->setDouble("orvane.core.shooter.standard-deviation", DEVIATION)
    .setInt("orvane.core.linker-standard.nearest-node-count", 1)
    .setBool("orvane.core.builder-planner.force-path-on-failure", false);
  const CorvExtendDirectShPtr extendMethod = CorvExtendDirect::create();
  extendMethod->restrictionBounds(EXTENSION, EXTENSION);
  const CorvMultiDiffusingBuilderShPtr builder = CorvMultiDiffusingBuilder::create(CorvRoadmap::create(i_arm));
  builder->extendMethod(extendMethod);
  builder->diffusionShooter(CorvShooterRoadmapBox::create());
  builder->linker(CorvLinkerKeepValidPart::create());
  builder->rating(CorvRatingShortestComponent::create());
  builder->addDiffusionSpot(start, CorvMultiDiffusingBuilder::START_LIKE);
  builder->addDiffusionSpot(goal, CorvMultiDiffusingBuilder::GOAL_LIKE);
  const CorvBuilderPlannerShPtr planner = CorvBuilderPlanner::create(builder);
  planner->addDelegate(ShPtr<StepLimit>(new StepLimit(i_maxSteps)));
  CorvPathShPtr found;
  ClumTime stopwatch;
  stopwatch.start();
  planner->plan(start, goal, parameters, found);
  return stopwatch.elapsedTime();
}
