#include "scene.h"

#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumMesh.h"
#include "foundation/lumMeshReader.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJointFreeFlyer.h"
#include "kinematics/orvKinematicalEffect.h"
#include "metrics/orvMetricEuclidean.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace
{
/// Weight of a turn by one radian, as a part of the part's radius.
constexpr double TURN_WEIGHT = 0.35;

/// Beyond these, rounding in a coordinate is no longer small against the part.
constexpr double LARGEST_COORDINATE = 1e9; ///< as a multiple of the part's radius
constexpr double LARGEST_ANGLE = 1e6;

std::string formatted(const char* i_format, double i_value)
{
  char text[64];
  std::snprintf(text, sizeof text, i_format, i_value);
  return text;
}

std::string fileName(const std::string& i_path)
{
  return i_path.substr(i_path.find_last_of('/') + 1);
}

std::vector<double> valuesOf(const std::array<double, 6>& i_pose)
{
  return {i_pose.begin(), i_pose.end()};
}
} // namespace

bool PlanScene::load(const PlanOptions& i_options, std::string& o_error)
{
  if (!loadMesh(i_options.part, m_part, o_error))
    return false;
  for (const std::string& path : i_options.obstacles)
  {
    ClumMeshShPtr obstacle;
    if (!loadMesh(path, obstacle, o_error))
      return false;
    m_obstacles.push_back(obstacle);
    m_obstacleNames.push_back(fileName(path));
  }
  measurePart();
  return checkMagnitudes(i_options, o_error) && buildDevice(i_options, o_error) && makeEnds(i_options, o_error);
}

bool PlanScene::loadMesh(const std::string& i_path, ClumMeshShPtr& o_mesh, std::string& o_error)
{
  ClumMeshReader::CResult result;
  if (ClumMeshReader::read(i_path, result).failed())
  {
    o_error = result.error;
    return false;
  }
  if (result.zeroAreaTriangles + result.duplicateTriangles > 0)
    m_notes.push_back(fileName(i_path) + ": dropped " + std::to_string(result.zeroAreaTriangles) +
                      " triangles without area and " + std::to_string(result.duplicateTriangles) + " duplicates");
  o_mesh = result.mesh;
  return true;
}

void PlanScene::measurePart()
{
  ClumPoint3 low, high;
  m_part->getBoundingBox(low, high);
  m_partThickness = std::min({high[0] - low[0], high[1] - low[1], high[2] - low[2]});
  for (const ClumPoint3& vertex : m_part->vertices())
    m_partRadius = std::max(m_partRadius, vertex.distanceFrom(ClumPoint3(0.0, 0.0, 0.0)));
}

bool PlanScene::checkMagnitudes(const PlanOptions& i_options, std::string& o_error) const
{
  for (const double bound : i_options.bounds)
    if (std::fabs(bound) > LARGEST_COORDINATE * m_partRadius)
    {
      o_error = formatted("--bounds: %g is too large", bound) + formatted(" for a part of radius %g", m_partRadius);
      return false;
    }
  for (const auto& [name, pose] : {std::pair("start", i_options.start), std::pair("goal", i_options.goal)})
    for (int axis = 3; axis < 6; ++axis)
      if (std::fabs(pose[axis]) > LARGEST_ANGLE)
      {
        o_error = std::string("--") + name + formatted(": the angle %g", pose[axis]) +
                  formatted(" exceeds %g radians", LARGEST_ANGLE);
        return false;
      }
  return true;
}

bool PlanScene::buildDevice(const PlanOptions& i_options, std::string& o_error)
{
  m_device = CorvDevice::create();
  const CorvJointFreeFlyerShPtr joint = CorvJointFreeFlyer::create(ClumMat4());
  lmStatus status = m_device->setRootJoint(joint);
  if (status.succeeded())
    status = joint->addMobileGeometry(m_part);
  for (const ClumMeshShPtr& obstacle : m_obstacles)
    if (status.succeeded())
      status = m_device->addObstacleGeometry(obstacle);
  for (unsigned int axis = 0; axis < 3 && status.succeeded(); ++axis)
    status = joint->dof(axis)->boundWithin(i_options.bounds[axis], i_options.bounds[axis + 3]);
  // Distances in the coordinates in which the motions are straight; a turn counts as what it moves the part.
  joint->kinematicalEffect()->configSpace()->metric(CorvMetricEuclidean::create());
  for (unsigned int axis = 3; axis < 6; ++axis)
    joint->dof(axis)->weightMultiplier(TURN_WEIGHT * m_partRadius / joint->dof(axis)->weight());
  if (status.failed())
  {
    o_error = "cannot build the scene: " + status.description();
    return false;
  }
  double squared = 0.0;
  for (int axis = 0; axis < 3; ++axis)
    squared +=
      (i_options.bounds[axis + 3] - i_options.bounds[axis]) * (i_options.bounds[axis + 3] - i_options.bounds[axis]);
  m_extent = std::sqrt(squared);
  m_space = m_device->configSpace();
  return true;
}

bool PlanScene::makeEnds(const PlanOptions& i_options, std::string& o_error)
{
  static const char* const s_axes = "xyz";
  for (const auto& [name, pose] : {std::pair("start", i_options.start), std::pair("goal", i_options.goal)})
    for (int axis = 0; axis < 3; ++axis)
      if (pose[axis] < i_options.bounds[axis] || pose[axis] > i_options.bounds[axis + 3])
      {
        o_error = std::string("--") + name + ": " + s_axes[axis] + formatted(" = %g", pose[axis]) +
                  formatted(" lies outside the bounds [%g, ", i_options.bounds[axis]) +
                  formatted("%g]", i_options.bounds[axis + 3]);
        return false;
      }
  m_start = CorvConfig(m_space, valuesOf(i_options.start));
  m_goal = CorvConfig(m_space, valuesOf(i_options.goal));
  return true;
}

std::vector<std::string> PlanScene::faultsOf(const CorvConfig& i_config) const
{
  std::vector<std::string> faults;
  const CorvConfig config = i_config;
  if (config.validate(ClumParameterMapConstShPtr()))
    return faults;
  std::vector<ClumMat4> poses;
  if (m_device->computeBodyPositions(config, poses).succeeded() && !poses.empty())
    for (std::size_t i = 0; i < m_obstacles.size(); ++i)
    {
      const std::string contact = contactWith(i, poses[0]);
      if (!contact.empty())
        faults.push_back(contact);
    }
  if (faults.empty())
    faults.push_back("the configuration is refused by its validators");
  return faults;
}

std::string PlanScene::contactWith(std::size_t i_obstacle, const ClumMat4& i_pose) const
{
  const ClumCollisionToolkit& toolkit = *m_device->collisionToolkit();
  const ClumCollisionModelConstShPtr part = m_part->collisionModel(toolkit);
  const ClumCollisionModelConstShPtr obstacle = m_obstacles[i_obstacle]->collisionModel(toolkit);
  if (!part || !obstacle || !toolkit.areTouching(*part, i_pose, *obstacle, ClumMat4()))
    return std::string();
  std::string text = "the part touches " + m_obstacleNames[i_obstacle];
  // The way out is told for the part, which is asked about second.
  double depth = 0.0;
  ClumVect3 wayOut;
  if (toolkit.penetration(*obstacle, ClumMat4(), *part, i_pose, depth, wayOut).succeeded())
    text += formatted(", at most %g deep: it gets clear along (", depth) + formatted("%.3g, ", wayOut.x()) +
            formatted("%.3g, ", wayOut.y()) + formatted("%.3g)", wayOut.z());
  return text;
}
