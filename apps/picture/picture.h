#pragma once

#include "foundation/handles.h"
#include "foundation/lumMat4.h"

#include <array>
#include <string>
#include <vector>

/// Draws a scene as a shaded SVG: obstacles in grey, the moving bodies at poses along a path in a colour that runs
/// from start to goal, the nearer the lighter. The view is the one, of a few, from which most of the motion is seen.
class Picture
{
public:
  void addObstacle(const ClumGeometry& i_geometry, const ClumMat4& i_position);
  /// @param i_along where on the path the pose stands, 0 to 1.
  void addPose(const ClumGeometry& i_geometry, const ClumMat4& i_position, double i_along);
  /// The track of a point along the path.
  void addTrackPoint(const ClumMat4& i_position);

  /// The SVG text, `i_width` pixels wide.
  std::string svg(int i_width = 1000);

private:
  struct Triangle
  {
    std::array<std::array<double, 3>, 3> corners;
    double along; ///< negative for an obstacle
  };

  /// Cuts long triangles, so that they can be put in order by depth.
  void refine();
  bool cutLongestEdge(std::size_t i_triangle, double i_longestSquared);
  void add(const ClumGeometry& i_geometry, const ClumMat4& i_position, double i_along);

  std::vector<Triangle> m_triangles;
  std::vector<std::array<double, 3>> m_track;

  friend class PictureView;
};
