#pragma once

#include "foundation/lumExport.h"
#include "foundation/lumLeafGeometry.h"

#include <cstddef>
#include <vector>

/// The connected parts of a triangle set, and which of them bound a volume.
///
/// Triangles are connected by edges of equal corners, compared by coordinates. A part bounds a volume if each of its
/// edges belongs to an even number of its triangles, seams included.
class LUM_API ClumSolids
{
public:
  struct CPart
  {
    bool isClosed = true;    ///< bounds a volume, as found or as told
    bool isSealed = true;    ///< as found
    bool isOriented = true;  ///< every edge is run through as often forward as backward
    int sign = 1;            ///< -1 if the triangles are to be taken as turned inside out
    unsigned int vertex = 0; ///< one of its vertices
  };

  explicit ClumSolids(const ClumSweptTriangles& i_shape);

  const std::vector<CPart>& parts() const { return m_parts; }
  /// The part of a triangle.
  std::size_t part(std::size_t i_triangle) const { return m_partOfTriangle[i_triangle]; }
  bool isClosed() const;
  bool hasSolid() const;

private:
  void findParts(const ClumSweptTriangles& i_shape);
  void turnOutward(const ClumSweptTriangles& i_shape);

  std::vector<CPart> m_parts;
  std::vector<std::size_t> m_partOfTriangle;
};

/// The sign of the area that an edge makes with a point in the plane of y and z, the same for an edge and its reverse
/// but for the sign.
inline double lumRaySide(const ClumVect3& i_point, const ClumVect3& i_low, const ClumVect3& i_high)
{
  return (i_high.y() - i_low.y()) * (i_point.z() - i_low.z()) - (i_high.z() - i_low.z()) * (i_point.y() - i_low.y());
}

/// Tells whether a triangle is crossed by the ray from a point along +x, and which way.
///
/// Whether the ray's line meets the triangle is decided from signs that neighbours share, so that the crossings of a
/// closed surface always add up; only points at rounding distance from the triangle can be told wrong.
/// @return 1 if the triangle turns counter-clockwise seen against the ray, -1 if clockwise, 0 if it is not crossed.
inline int lumRayCrossing(const ClumVect3& i_point, const ClumVect3 i_corners[3])
{
  int turn = 0;
  unsigned int countEnds = 0;
  double y[2] = {0.0, 0.0}, x[2] = {0.0, 0.0};
  for (unsigned int k = 0; k < 3 && countEnds < 2; ++k)
  {
    const ClumVect3& from = i_corners[k];
    const ClumVect3& to = i_corners[(k + 1) % 3];
    const bool isUpward = from.z() <= i_point.z() && to.z() > i_point.z();
    if (!isUpward && !(to.z() <= i_point.z() && from.z() > i_point.z()))
      continue;
    const ClumVect3& low = isUpward ? from : to;
    const ClumVect3& high = isUpward ? to : from;
    // The point is on the side of smaller y of the upward edge.
    if (lumRaySide(i_point, low, high) > 0.0)
      turn += isUpward ? 1 : -1;
    const double s = (i_point.z() - low.z()) / (high.z() - low.z());
    y[countEnds] = low.y() + s * (high.y() - low.y());
    x[countEnds++] = low.x() + s * (high.x() - low.x());
  }
  if (turn == 0 || countEnds < 2)
    return 0;
  const double width = y[1] - y[0];
  const double t = width != 0.0 ? std::fmin(1.0, std::fmax(0.0, (i_point.y() - y[0]) / width)) : 0.5;
  return x[0] + t * (x[1] - x[0]) > i_point.x() ? turn : 0;
}
