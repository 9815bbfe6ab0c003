#include "foundation/lumEnclosure.h"

#include <algorithm>
#include <limits>

namespace
{
constexpr std::size_t ENCLOSURE_FEW = 32;

struct CEnclosurePlane
{
  ClumVect3 normal; ///< unit
  double offset;
};

/// The supporting planes of the points, moved outward by `i_margin`.
std::vector<CEnclosurePlane> enclosurePlanes(const std::vector<ClumPoint3>& i_points, double i_margin)
{
  std::vector<CEnclosurePlane> planes;
  for (int x = -1; x <= 1; ++x)
    for (int y = -1; y <= 1; ++y)
      for (int z = -1; z <= 1; ++z)
      {
        if (x == 0 && y == 0 && z == 0)
          continue;
        const ClumVect3 normal = ClumVect3(x, y, z).normalized();
        double offset = -std::numeric_limits<double>::infinity();
        for (const ClumPoint3& point : i_points)
          offset = std::max(offset, normal.scalarProduct(point.toVect3()));
        planes.push_back({normal, offset + i_margin});
      }
  return planes;
}

/// The corner of three planes. @return false if they are not well apart in direction.
bool enclosureCorner(const CEnclosurePlane& i_a, const CEnclosurePlane& i_b, const CEnclosurePlane& i_c,
                     ClumPoint3& o_corner)
{
  const ClumVect3 bc = i_b.normal * i_c.normal;
  const double determinant = i_a.normal.scalarProduct(bc);
  if (std::fabs(determinant) < 1e-6)
    return false;
  const ClumVect3 sum =
    bc * i_a.offset + (i_c.normal * i_a.normal) * i_b.offset + (i_a.normal * i_b.normal) * i_c.offset;
  o_corner = ClumPoint3(sum / determinant);
  return true;
}

double enclosureSize(const std::vector<ClumPoint3>& i_points)
{
  double size = 0.0;
  for (const ClumPoint3& point : i_points)
    for (unsigned int k = 0; k < 3; ++k)
      size = std::max(size, std::fabs(point[k]));
  return size;
}

void addCornerIfNew(const ClumPoint3& i_corner, double i_tolerance, std::vector<ClumPoint3>& io_corners)
{
  for (const ClumPoint3& corner : io_corners)
    if (corner.distanceFrom(i_corner) <= i_tolerance)
      return;
  io_corners.push_back(i_corner);
}
} // namespace

std::vector<ClumPoint3> lumEnclosingPoints(const std::vector<ClumPoint3>& i_points)
{
  if (i_points.size() <= ENCLOSURE_FEW)
    return i_points;
  // Corners that fall together are merged; the margin is larger than what that may cut off.
  const double size = enclosureSize(i_points);
  const double margin = 1e-6 * size;
  const std::vector<CEnclosurePlane> planes = enclosurePlanes(i_points, margin);
  std::vector<ClumPoint3> corners;
  for (std::size_t a = 0; a < planes.size(); ++a)
    for (std::size_t b = a + 1; b < planes.size(); ++b)
      for (std::size_t c = b + 1; c < planes.size(); ++c)
      {
        ClumPoint3 corner;
        if (!enclosureCorner(planes[a], planes[b], planes[c], corner))
          continue;
        const bool isInside =
          std::all_of(planes.begin(), planes.end(),
                      [&](const CEnclosurePlane& plane)
                      { return plane.normal.scalarProduct(corner.toVect3()) <= plane.offset + 1e-10 * size; });
        if (isInside)
          addCornerIfNew(corner, 0.1 * margin, corners);
      }
  return corners;
}
