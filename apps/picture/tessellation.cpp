#include "tessellation.h"

#include "foundation/lumGeometry.h"
#include "foundation/lumLeafGeometry.h"

#include <cmath>

namespace
{
using Corners = std::array<ClumPoint3, 3>;

constexpr int AROUND = 20; ///< facets around a rounded shape
constexpr int ALONG = 6;   ///< facets from its pole to its equator

/// Two unit vectors that complete a unit vector to a right-handed frame.
void completeFrame(const ClumVect3& i_axis, ClumVect3& o_u, ClumVect3& o_v)
{
  const ClumVect3 other = std::fabs(i_axis[0]) < 0.9 ? ClumVect3(1.0, 0.0, 0.0) : ClumVect3(0.0, 1.0, 0.0);
  o_u = (i_axis * other).normalized();
  o_v = i_axis * o_u;
}

/// The surface of the points within a radius of a segment, which may be a point.
void appendCapsule(const ClumPoint3& i_from, const ClumPoint3& i_to, double i_radius, std::vector<Corners>& io_corners)
{
  const ClumVect3 along(i_to[0] - i_from[0], i_to[1] - i_from[1], i_to[2] - i_from[2]);
  const double length = along.norm();
  const ClumVect3 axis = length > 0.0 ? along / length : ClumVect3(0.0, 0.0, 1.0);
  ClumVect3 u, v;
  completeFrame(axis, u, v);
  const auto point = [&](int i_ring, int i_sector)
  {
    // Rings 0 to ALONG lie on the cap of `i_from`, the others on that of `i_to`.
    const bool isFirst = i_ring <= ALONG;
    const double polar = (isFirst ? i_ring : i_ring - 1) * M_PI / (2 * ALONG);
    const double turn = 2.0 * M_PI * i_sector / AROUND;
    const ClumVect3 offset =
      u * (std::sin(polar) * std::cos(turn)) + v * (std::sin(polar) * std::sin(turn)) + axis * -std::cos(polar);
    const ClumPoint3& centre = isFirst ? i_from : i_to;
    return ClumPoint3(centre[0] + i_radius * offset[0], centre[1] + i_radius * offset[1],
                      centre[2] + i_radius * offset[2]);
  };
  for (int ring = 0; ring <= 2 * ALONG; ++ring)
    for (int sector = 0; sector < AROUND; ++sector)
    {
      io_corners.push_back({point(ring, sector), point(ring, sector + 1), point(ring + 1, sector)});
      io_corners.push_back({point(ring, sector + 1), point(ring + 1, sector + 1), point(ring + 1, sector)});
    }
}

void appendLeaf(const ClumPlacedLeaf& i_placed, std::vector<Corners>& io_corners)
{
  ClumSweptTriangles shape;
  i_placed.leaf->getSweptTriangles(shape);
  for (const ClumSweptTriangles::TTriangle& triangle : shape.triangles)
  {
    const Corners corners = {i_placed.frame * shape.vertices[triangle[0]], i_placed.frame * shape.vertices[triangle[1]],
                             i_placed.frame * shape.vertices[triangle[2]]};
    if (shape.radius > 0.0)
      appendCapsule(corners[0], triangle[1] != triangle[0] ? corners[1] : corners[2], shape.radius, io_corners);
    else
      io_corners.push_back(corners);
  }
}
} // namespace

std::vector<Corners> tessellate(const ClumGeometry& i_geometry)
{
  std::vector<ClumPlacedLeaf> leaves;
  i_geometry.getLeaves(leaves);
  std::vector<Corners> corners;
  for (const ClumPlacedLeaf& leaf : leaves)
    appendLeaf(leaf, corners);
  return corners;
}
