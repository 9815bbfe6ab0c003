// A six-axis arm carries a box from one shelf compartment into another.
//
// `main`, at the end, has the steps; the functions before it show, in the same order, how each is done.
// Lengths are in millimetres, angles in radians. Usage: 02_six_axis_shelf [TABLE.csv [PICTURE.svg [SEED]]]

#include "picture.h"

#include "foundation/lumBox.h"
#include "foundation/lumCapsule.h"
#include "foundation/lumCylinder.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumScene.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJointRotation.h"
#include "kinematics/orvUtility.h"
#include "optimizers/orvAdaptiveShortcutOptimizer.h"
#include "optimizers/orvRandomOptimizer.h"
#include "paths/orvPath.h"
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

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace
{
// Joint values with the box in the lower right compartment and in the upper left one, seen from the arm.
const std::vector<double> START = {-0.41, 0.75, 1.75, -0.50, -0.92, 0.33};
const std::vector<double> GOAL = {0.37, 0.33, 1.43, 0.86, -0.29, -0.91};

/// A motion counts as free if the arm nowhere gets deeper than this into anything. At 0 no contact at all is allowed;
/// the proof of a motion that slides along a surface then takes very many samples.
const double PENETRATION = 1.0;

const unsigned int MAX_STEPS = 20000;

/// An operation that fails says so in its status. Here every failure is fatal.
void require(const lmStatus& i_status, const char* i_what)
{
  if (i_status.succeeded())
    return;
  std::fprintf(stderr, "cannot %s: %s\n", i_what, i_status.description().c_str());
  std::exit(2);
}

ClumMat4 at(double i_x, double i_y, double i_z)
{
  ClumMat4 frame;
  frame.translate(i_x, i_y, i_z);
  return frame;
}

// Step 1: the device. ------------------------------------------------------------------------------------------------

/// A joint with its link. Everything is told in world coordinates for the arm standing upright, which is how it stands
/// when all joint values are 0: neither joints nor links have frames to be computed by hand.
CorvJointShPtr axis(double i_height, const ClumVect3& i_direction, double i_range, const ClumGeometryShPtr& i_link,
                    double i_linkHeight)
{
  // The frame's z axis is the axis of rotation and points along the direction.
  const CorvJointShPtr joint = CorvJointRotation::create(ClumVect3(0.0, 0.0, i_height), i_direction, ClumMat4::Z_AXIS);
  require(joint->dof(0)->boundWithin(-i_range, i_range), "bound a joint");
  // A geometry is added where it stands.
  i_link->position(at(0.0, 0.0, i_linkHeight));
  require(joint->addMobileGeometry(i_link), "add a link");
  return joint;
}

CorvDeviceShPtr makeArm()
{
  const ClumVect3 y(0.0, 1.0, 0.0), z(0.0, 0.0, 1.0);
  const std::vector<CorvJointShPtr> joints = {
    axis(100.0, z, 2.9, ClumCylinder::create(110.0, 240.0), 220.0),    // base
    axis(400.0, y, 1.9, ClumCapsule::create(60.0, 500.0), 650.0),      // shoulder, upper arm
    axis(900.0, y, 2.6, ClumCapsule::create(45.0, 60.0), 950.0),       // elbow
    axis(1000.0, z, 3.1, ClumCapsule::create(40.0, 230.0), 1165.0),    // roll, forearm
    axis(1350.0, y, 2.1, ClumCapsule::create(35.0, 60.0), 1380.0),     // wrist
    axis(1430.0, z, 3.1, ClumBox::create(60.0, 120.0, 60.0), 1460.0)}; // flange, gripper
  const ClumBoxShPtr carried = ClumBox::create(140.0, 200.0, 120.0);
  carried->position(at(0.0, 0.0, 1551.0));
  require(joints.back()->addMobileGeometry(carried), "add the carried box");

  for (unsigned int i = 0; i + 1 < joints.size(); ++i)
    require(joints[i]->addJoint(joints[i + 1]), "add a joint");
  const CorvDeviceShPtr device = CorvDevice::create();
  require(device->setRootJoint(joints.front()), "set the root joint");

  // Each body is tested against the obstacles by itself. Tests between bodies are for the client to choose: here all
  // pairs but neighbours, which touch by design.
  for (unsigned int i = 0; i < joints.size(); ++i)
    for (unsigned int j = i + 2; j < joints.size(); ++j)
      require(device->innerCollisionScene()->addTestParameters(joints[i]->mobileGroup(), joints[j]->mobileGroup(),
                                                               ClumScene::REFUSE_EXISTING_TEST),
              "add a test between two bodies");
  return device;
}

// Step 2: the obstacles. ---------------------------------------------------------------------------------------------

void addBoard(const CorvDeviceShPtr& i_device, const ClumMat4& i_middle, double i_sizeX, double i_sizeY, double i_sizeZ)
{
  const ClumBoxShPtr board = ClumBox::create(i_sizeX, i_sizeY, i_sizeZ);
  board->position(i_middle);
  require(i_device->addObstacleGeometry(board), "add a board");
}

/// Two by two compartments, open towards the arm, on a floor.
void addShelf(const CorvDeviceShPtr& i_device)
{
  for (const double height : {200.0, 600.0, 1000.0})
    addBoard(i_device, at(800.0, 0.0, height), 320.0, 1020.0, 20.0);
  for (const double side : {-500.0, 0.0, 500.0})
    addBoard(i_device, at(800.0, side, 500.0), 320.0, 20.0, 1000.0);
  addBoard(i_device, at(965.0, 0.0, 500.0), 10.0, 1020.0, 1020.0);
  addBoard(i_device, at(400.0, 0.0, -15.0), 1400.0, 1400.0, 20.0);
}

// Step 3: start and goal. --------------------------------------------------------------------------------------------

/// A configuration is validated by its space: bounds, collision, and what else a client has added. Its reports tell
/// which validator refused it.
bool isValid(const CorvConfig& i_config, const char* i_name)
{
  if (i_config.validate(ClumParameterMapConstShPtr()))
    return true;
  bool isColliding = false;
  require(i_config.isColliding(isColliding), "test for collision");
  std::fprintf(stderr, "the %s is invalid: %s\n", i_name, isColliding ? "it collides" : "it is out of bounds");
  return false;
}

// Step 4: the search. ------------------------------------------------------------------------------------------------

/// Planners search until somebody stops them: a delegate is asked between all steps.
class StepLimit : public CorvPathPlannerDelegate
{
public:
  bool plannerShouldStopPlanning(const CorvPathPlannerShPtr& i_planner) override
  {
    return ++steps > MAX_STEPS || CorvPathPlannerDelegate::plannerShouldStopPlanning(i_planner);
  }

  unsigned int steps = 0;
};

/// Two trees grow towards each other, one from the start and one from the goal.
CorvMultiDiffusingBuilderShPtr makeBuilder(const CorvRoadmapShPtr& i_roadmap, const CorvConfig& i_start,
                                           const CorvConfig& i_goal, double i_longestMotion)
{
  // How a tree gets from a node towards a shot: straight, as far as is free, and no farther than the longest motion.
  // Motions are kept short against the space: a long one that ends at an obstacle teaches no more than a short one and
  // costs more to prove.
  const CorvExtendDirectShPtr extendMethod = CorvExtendDirect::create();
  require(extendMethod->restrictionBounds(i_longestMotion, i_longestMotion), "restrict the extension");

  const CorvMultiDiffusingBuilderShPtr builder = CorvMultiDiffusingBuilder::create(i_roadmap);
  builder->extendMethod(extendMethod);
  builder->diffusionShooter(CorvShooterRoadmapBox::create()); // where to go: around what has been reached
  builder->linker(CorvLinkerKeepValidPart::create());         // ties new nodes to the other tree
  builder->rating(CorvRatingShortestComponent::create());     // the smaller tree grows first
  require(builder->addDiffusionSpot(i_start, CorvMultiDiffusingBuilder::START_LIKE), "add the start");
  require(builder->addDiffusionSpot(i_goal, CorvMultiDiffusingBuilder::GOAL_LIKE), "add the goal");
  return builder;
}

/// The space's metric says how large it is: the distance between its lowest and highest corner.
double extentOf(const CorvConfigSpaceShPtr& i_space)
{
  CorvConfig lowest(i_space), highest(i_space);
  for (unsigned int rank = 0; rank < i_space->size(); ++rank)
  {
    lowest.dofValue(rank, i_space->dof(rank)->lowerBound());
    highest.dofValue(rank, i_space->dof(rank)->upperBound());
  }
  return lowest.distanceTo(highest);
}

// Step 5: the optimisation. ------------------------------------------------------------------------------------------

/// Shortens by bisection and rounded corners, then by random cuts while they still gain.
CorvPathShPtr shortened(const CorvPathShPtr& i_path, const ClumParameterMapShPtr& i_parameters)
{
  const CorvRandomOptimizerShPtr random = CorvRandomOptimizer::create();
  random->maxNbLoop(3);
  const CorvAdaptiveShortcutOptimizerShPtr optimizer = CorvAdaptiveShortcutOptimizer::create();
  optimizer->postOptimizer(random);
  optimizer->maxNbLoop(10);
  optimizer->minGainStop(0.01);
  CorvPathShPtr result;
  require(optimizer->plan(i_path, CorvPathPlanner::STABLE_ENDS, i_parameters, result), "optimise the path");
  return result;
}

// Step 6: the use of the path. ---------------------------------------------------------------------------------------

std::FILE* openFile(const char* i_name)
{
  std::FILE* file = std::fopen(i_name, "w");
  if (!file)
  {
    std::perror(i_name);
    std::exit(2);
  }
  return file;
}

/// Samples the path by distance: one line a sample, with all joint values.
void writeTable(const CorvPath& i_path, const char* i_name)
{
  std::FILE* file = openFile(i_name);
  std::fprintf(file, "distance,q1,q2,q3,q4,q5,q6\n");
  const unsigned int count = 200;
  CorvConfig config(i_path.configSpace());
  for (unsigned int i = 0; i <= count; ++i)
  {
    const double distance = i_path.length() * i / count;
    require(i_path.getConfigAtDistance(distance, config), "sample the path");
    std::fprintf(file, "%.9g", distance);
    for (const double value : config.dofValues())
      std::fprintf(file, ",%.9g", value);
    std::fprintf(file, "\n");
  }
  std::fclose(file);
}

/// Moves the device along the path; its geometries follow.
void writePicture(const CorvDeviceShPtr& i_device, const CorvPath& i_path, const char* i_name)
{
  Picture picture;
  for (unsigned int rank = 0; rank < i_device->countObstacleGeometries(); ++rank)
    picture.addObstacle(*i_device->obstacleGeometry(rank), i_device->obstacleGeometry(rank)->position());
  const unsigned int poseCount = 5, trackCount = 100, mobileCount = i_device->countMobileGeometries();
  CorvConfig config(i_path.configSpace());
  for (unsigned int i = 0; i <= trackCount; ++i)
  {
    const double along = static_cast<double>(i) / trackCount;
    require(i_path.getConfigAtDistance(i_path.length() * along, config), "sample the path");
    require(i_device->setCurrentConfig(config), "move the device");
    picture.addTrackPoint(i_device->mobileGeometry(mobileCount - 1)->position());
    // The base, rank 0, turns on the spot: it is drawn once.
    if (i % (trackCount / (poseCount - 1)) == 0)
      for (unsigned int rank = i == 0 ? 0 : 1; rank < mobileCount; ++rank)
        picture.addPose(*i_device->mobileGeometry(rank), i_device->mobileGeometry(rank)->position(), along);
  }
  std::FILE* file = openFile(i_name);
  std::fputs(picture.svg().c_str(), file);
  std::fclose(file);
}
} // namespace

int main(int i_count, char** i_arguments)
{
  // The same seed gives the same path, on every machine.
  CorvUtility::randomSeed(i_count > 3 ? static_cast<unsigned int>(std::atoi(i_arguments[3])) : 1);

  // Steps 1 and 2: the device and its obstacles.
  const CorvDeviceShPtr device = makeArm();
  addShelf(device);

  // Step 3: start and goal.
  const CorvConfig start(device, START), goal(device, GOAL);
  const bool isStartValid = isValid(start, "start"), isGoalValid = isValid(goal, "goal");
  if (!isStartValid || !isGoalValid)
    return 1;

  // Step 4: the search. The parameters are the size of random steps, how many nodes of the other tree a new node is
  // linked with, and that a search without success gives no path rather than one that is not valid.
  const CorvConfigSpaceShPtr space = device->configSpace();
  const double extent = extentOf(space);
  require(CorvValidatorDPCollision::setPenetration(space->directPathValidators(), PENETRATION), "set the penetration");
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  parameters->setDouble("orvane.core.shooter.standard-deviation", 0.2 * extent)
    .setInt("orvane.core.linker-standard.nearest-node-count", 1)
    .setBool("orvane.core.builder-planner.force-path-on-failure", false);
  const CorvRoadmapShPtr roadmap = CorvRoadmap::create(device);
  const CorvBuilderPlannerShPtr planner = CorvBuilderPlanner::create(makeBuilder(roadmap, start, goal, 0.15 * extent));
  const ShPtr<StepLimit> limit(new StepLimit);
  planner->addDelegate(limit);
  CorvPathShPtr found;
  const bool isSolved = planner->plan(start, goal, parameters, found).succeeded();
  if (isSolved)
    std::printf("solved: yes, proved to a penetration of %g\n", PENETRATION);
  else
    std::printf("solved: no\n");
  std::printf("search: %u steps, %u nodes, %u edges, %lu motions tested\n", limit->steps, roadmap->countNodes(),
              roadmap->countEdges(), CorvValidatorDPCollision::countTests());
  if (!isSolved)
    return 1;

  // Step 5: the optimisation.
  const CorvPathShPtr path = shortened(found, parameters);
  std::printf("path length: %g found, %g shortened\n", found->length(), path->length());

  // Step 6: the path is used.
  if (i_count > 1)
  {
    writeTable(*path, i_arguments[1]);
    std::printf("joint values along the path: %s\n", i_arguments[1]);
  }
  if (i_count > 2)
  {
    writePicture(device, *path, i_arguments[2]);
    std::printf("picture: %s\n", i_arguments[2]);
  }
  return 0;
}
