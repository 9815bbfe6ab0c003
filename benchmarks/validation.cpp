#include "harness.h"

#include "foundation/lumCollisionModel.h"
#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumFCLCollisionToolkit.h"
#include "foundation/lumMat4.h"
#include "foundation/lumMesh.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumProximityCollisionToolkit.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvUtility.h"
#include "paths/orvDirectPath.h"
#include "paths/orvSteeringMethod.h"
#include "support/devices.h"
#include "support/meshes.h"
#include "validation/orvValidatorDPCollision.h"
#include "validation/orvValidatorSet.h"

#include <chrono>
#include <cmath>

namespace
{
struct PartInClutter
{
  ClumMeshShPtr part = torusKnot(2, 3, 1.0, 0.1, 125, 20); // 5,000 triangles
  ClumMeshShPtr obstacle = clutter(7, 60, 12.0);
  CorvDeviceShPtr device = freeFlyer(part);
  CorvConfigSpaceShPtr space;

  PartInClutter()
  {
    device->addObstacleGeometry(obstacle);
    space = device->configSpace();
  }

  /// A configuration that the collision test accepts, or refuses, as asked.
  CorvConfig configuration(bool i_isFree) const
  {
    CorvConfig config(space);
    bool isColliding = !i_isFree;
    do
    {
      config.randomize();
      config.isColliding(isColliding);
    } while (isColliding == i_isFree);
    return config;
  }
};

void benchmarkConfiguration(const std::string& i_name, const ClumCollisionToolkitShPtr& i_toolkit)
{
  CorvUtility::randomSeed(3);
  const PartInClutter scene;
  scene.device->collisionToolkit(i_toolkit);
  std::vector<CorvConfig> configs;
  std::vector<ClumMat4> poses, pose;
  for (int i = 0; i < 200; ++i)
  {
    configs.push_back(scene.configuration(i % 2 == 0));
    scene.device->computeBodyPositions(configs.back(), pose);
    poses.push_back(pose[0]);
  }
  const ClumCollisionToolkit& toolkit = *scene.device->collisionToolkit();
  const ClumCollisionModelConstShPtr part = scene.part->collisionModel(toolkit);
  const ClumCollisionModelConstShPtr obstacle = scene.obstacle->collisionModel(toolkit);
  const Comparison validation = compare(
    [&]
    {
      for (const CorvConfig& config : configs)
      {
        config.unvalidate();
        keep(config.validate(ClumParameterMapConstShPtr()));
      }
    },
    [&]
    {
      for (const ClumMat4& placed : poses)
        keep(toolkit.areTouching(*part, placed, *obstacle, ClumMat4()));
    });
  report("validating a configuration, part of 5,000 triangles / the placed query alone, " + i_name, validation.ratio(),
         "at most 1.1");
}

void benchmarkConfigurations()
{
  benchmarkConfiguration("FCL", ClumFCLCollisionToolkit::create());
  benchmarkConfiguration("own kernel", ClumProximityCollisionToolkit::create());
}

double secondsOf(const std::function<void()>& i_work)
{
  const auto begin = std::chrono::steady_clock::now();
  i_work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// Tests samples from the start on, up to the first collision. @return their number.
unsigned int sampleMotion(const CorvDirectPath& i_motion, unsigned int i_samples)
{
  CorvConfig sample(i_motion.configSpace());
  bool isColliding = false;
  unsigned int s = 0;
  for (; s <= i_samples && !isColliding; ++s)
  {
    i_motion.getConfigAtParam(static_cast<double>(s) / i_samples, sample);
    sample.isColliding(isColliding);
  }
  return s;
}

/// Collision queries for the same verdicts: a proof against samples at the step that a 1 % thick contact needs.
void benchmarkProof()
{
  CorvUtility::randomSeed(5);
  const PartInClutter scene;
  const ClumCollisionToolkit& toolkit = *scene.device->collisionToolkit();
  CorvValidatorDPCollision::setPenetration(scene.space->directPathValidators(), 0.0);
  std::uint64_t proofQueries = 0, sampleQueries = 0;
  double proofSeconds = 0.0, sampleSeconds = 0.0;
  unsigned int freeMotions = 0;
  for (int i = 0; i < 60; ++i)
  {
    const CorvConfig start = scene.configuration(true), end = scene.configuration(true);
    const CorvDirectPathShPtr motion = scene.space->steeringMethod()->makeDirectPath(start, end);
    if (!motion)
      continue;
    const std::uint64_t before = toolkit.countQueries();
    bool isFree = false;
    proofSeconds += secondsOf([&] { isFree = motion->validate(ClumParameterMapConstShPtr()); });
    proofQueries += toolkit.countQueries() - before;
    freeMotions += isFree;
    // The part's tube is 0.2 thick and 1.5 large: a sample each 0.002 of travel sees what is 1 % of that thick.
    const unsigned int samples = static_cast<unsigned int>(std::ceil(motion->length() / 0.002));
    sampleSeconds += secondsOf([&] { sampleQueries += sampleMotion(*motion, samples); });
  }
  report("queries of dense sampling / queries of the proof, 60 motions (" + std::to_string(freeMotions) + " free)",
         static_cast<double>(sampleQueries) / proofQueries, "above 1");
  report("time of dense sampling / time of the proof, the same motions", sampleSeconds / proofSeconds, "above 1");
}

const Section s_configuration("validation", benchmarkConfigurations);
const Section s_proof("proof", benchmarkProof);
} // namespace
