#pragma once

#include "options.h"

#include "foundation/handles.h"
#include "kinematics/handles.h"
#include "kinematics/orvConfig.h"

#include <string>
#include <vector>

/// A free-flying part among obstacles, ready to be planned for.
class PlanScene
{
public:
  /// Reads the meshes and builds the device. @return false with one line in `o_error`.
  bool load(const PlanOptions& i_options, std::string& o_error);

  const CorvDeviceShPtr& device() const { return m_device; }
  const CorvConfigSpaceShPtr& space() const { return m_space; }
  const CorvConfig& start() const { return m_start; }
  const CorvConfig& goal() const { return m_goal; }
  const ClumMeshShPtr& part() const { return m_part; }
  const std::vector<ClumMeshShPtr>& obstacles() const { return m_obstacles; }
  /// What is worth telling of the files read: triangles that were dropped.
  const std::vector<std::string>& notes() const { return m_notes; }

  /// The largest distance of a point of the part from its origin.
  double partRadius() const { return m_partRadius; }
  /// The smallest side of the part's bounding box.
  double partThickness() const { return m_partThickness; }
  /// The diagonal of the bounds.
  double extent() const { return m_extent; }

  /// What is wrong with a configuration: one line a finding, none if it is valid.
  std::vector<std::string> faultsOf(const CorvConfig& i_config) const;

private:
  bool loadMesh(const std::string& i_path, ClumMeshShPtr& o_mesh, std::string& o_error);
  void measurePart();
  bool checkMagnitudes(const PlanOptions& i_options, std::string& o_error) const;
  bool buildDevice(const PlanOptions& i_options, std::string& o_error);
  bool makeEnds(const PlanOptions& i_options, std::string& o_error);
  std::string contactWith(std::size_t i_obstacle, const ClumMat4& i_pose) const;

  ClumMeshShPtr m_part;
  std::vector<ClumMeshShPtr> m_obstacles;
  std::vector<std::string> m_obstacleNames;
  std::vector<std::string> m_notes;
  CorvDeviceShPtr m_device;
  CorvConfigSpaceShPtr m_space;
  CorvConfig m_start;
  CorvConfig m_goal;
  double m_partRadius = 0.0;
  double m_partThickness = 0.0;
  double m_extent = 0.0;
};
