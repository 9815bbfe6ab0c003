#include "foundation/lumTriangleDistance.h"

#include <algorithm>
#include <limits>

namespace
{
constexpr double SLIVER_RATIO = 3e-8;

double clampedToUnit(double i_value)
{
  return i_value > 0.0 ? (i_value < 1.0 ? i_value : 1.0) : 0.0;
}

/// The nearest points p + s d and q + t e of two segments, s and t in [0, 1]; a segment may be a point. The unclamped s
/// comes from cross products, which keep their digits where the segments are nearly parallel.
void nearestOnSegments(const ClumVect3& i_p, const ClumVect3& i_d, const ClumVect3& i_q, const ClumVect3& i_e,
                       ClumVect3& o_onP, ClumVect3& o_onQ)
{
  const ClumVect3 r = i_q - i_p;
  const double dd = i_d.squaredNorm(), ee = i_e.squaredNorm(), de = i_d.scalarProduct(i_e);
  const ClumVect3 n = i_d * i_e;
  const double nn = n.squaredNorm();
  double s = nn > 0.0 ? clampedToUnit((r * i_e).scalarProduct(n) / nn) : 0.0;
  double t = 0.0;
  const double back = ee > 0.0 ? (s * de - r.scalarProduct(i_e)) / ee : 0.0;
  t = clampedToUnit(back);
  if (t != back || ee == 0.0 || nn == 0.0)
    s = dd > 0.0 ? clampedToUnit((t * de + r.scalarProduct(i_d)) / dd) : 0.0;
  o_onP = i_p + i_d * s;
  o_onQ = i_q + i_e * t;
}

/// What the corners of one triangle say about the face of the other.
struct CFaceAnswer
{
  bool isApart = false;   ///< all corners lie strictly on one side
  bool isNearest = false; ///< and the nearest of them lies over the face: the two points below are the answer
  double distance = 0.0;
  ClumVect3 onFace;
  ClumVect3 corner;
};

CFaceAnswer cornersAgainstFace(const ClumVect3 i_face[3], const ClumVect3 i_edges[3], const ClumVect3 i_corners[3])
{
  CFaceAnswer answer;
  const ClumVect3 normal = i_edges[0] * i_edges[1];
  const double nn = normal.squaredNorm();
  const double longest = std::max({i_edges[0].squaredNorm(), i_edges[1].squaredNorm(), i_edges[2].squaredNorm()});
  if (!(nn > SLIVER_RATIO * SLIVER_RATIO * longest * longest))
    return answer;
  double heights[3];
  for (unsigned int k = 0; k < 3; ++k)
    heights[k] = normal.scalarProduct(i_corners[k] - i_face[0]);
  const bool isAbove = heights[0] > 0.0 && heights[1] > 0.0 && heights[2] > 0.0;
  const bool isBelow = heights[0] < 0.0 && heights[1] < 0.0 && heights[2] < 0.0;
  if (!isAbove && !isBelow)
    return answer;
  answer.isApart = true;
  unsigned int nearest = 0;
  for (unsigned int k = 1; k < 3; ++k)
    if (std::fabs(heights[k]) < std::fabs(heights[nearest]))
      nearest = k;
  const ClumVect3& corner = i_corners[nearest];
  for (unsigned int k = 0; k < 3; ++k)
    if (!((normal * i_edges[k]).scalarProduct(corner - i_face[k]) > 0.0))
      return answer;
  answer.isNearest = true;
  answer.corner = corner;
  answer.onFace = corner - normal * (heights[nearest] / nn);
  answer.distance = std::fabs(heights[nearest]) / std::sqrt(nn);
  return answer;
}
} // namespace

double lumTriangleDistance(const ClumVect3 i_s[3], const ClumVect3 i_t[3], ClumVect3& o_onS, ClumVect3& o_onT)
{
  const ClumVect3 sEdges[3] = {i_s[1] - i_s[0], i_s[2] - i_s[1], i_s[0] - i_s[2]};
  const ClumVect3 tEdges[3] = {i_t[1] - i_t[0], i_t[2] - i_t[1], i_t[0] - i_t[2]};
  double best = std::numeric_limits<double>::infinity();
  bool isApart = false;
  for (unsigned int i = 0; i < 3; ++i)
    for (unsigned int j = 0; j < 3; ++j)
    {
      ClumVect3 p, q;
      nearestOnSegments(i_s[i], sEdges[i], i_t[j], tEdges[j], p, q);
      const ClumVect3 gap = q - p;
      const double squared = gap.squaredNorm();
      if (squared >= best)
        continue;
      best = squared;
      o_onS = p;
      o_onT = q;
      // How far the third corners reach into the slab between the two points.
      const double a = (i_s[(i + 2) % 3] - p).scalarProduct(gap);
      const double b = (i_t[(j + 2) % 3] - q).scalarProduct(gap);
      if (a <= 0.0 && b >= 0.0)
        return std::sqrt(squared);
      isApart = isApart || squared - std::max(a, 0.0) + std::min(b, 0.0) > 0.0;
    }

  const CFaceAnswer onS = cornersAgainstFace(i_s, sEdges, i_t);
  const CFaceAnswer onT = cornersAgainstFace(i_t, tEdges, i_s);
  double distance = std::sqrt(best);
  if (onS.isNearest && onS.distance < distance)
  {
    distance = onS.distance;
    o_onS = onS.onFace;
    o_onT = onS.corner;
  }
  if (onT.isNearest && onT.distance < distance)
  {
    distance = onT.distance;
    o_onS = onT.corner;
    o_onT = onT.onFace;
  }
  return isApart || onS.isApart || onT.isApart ? distance : 0.0;
}

double lumPointTriangleDistance(const ClumVect3& i_point, const ClumVect3 i_triangle[3])
{
  const ClumVect3 edges[3] = {i_triangle[1] - i_triangle[0], i_triangle[2] - i_triangle[1],
                              i_triangle[0] - i_triangle[2]};
  const ClumVect3 normal = edges[0] * edges[1];
  const double nn = normal.squaredNorm();
  double longest = 0.0, nearest = std::numeric_limits<double>::infinity();
  bool isOverFace = true;
  for (unsigned int k = 0; k < 3; ++k)
  {
    const ClumVect3 offset = i_point - i_triangle[k];
    const double ee = edges[k].squaredNorm();
    const double share = ee > 0.0 ? clampedToUnit(offset.scalarProduct(edges[k]) / ee) : 0.0;
    nearest = std::min(nearest, (offset - edges[k] * share).squaredNorm());
    longest = std::max(longest, ee);
    isOverFace = isOverFace && (edges[k] * offset).scalarProduct(normal) > 0.0;
  }
  if (isOverFace && nn > SLIVER_RATIO * SLIVER_RATIO * longest * longest)
    return std::fabs(normal.scalarProduct(i_point - i_triangle[0])) / std::sqrt(nn);
  return std::sqrt(nearest);
}

double lumTriangleUncertainty(const ClumVect3 i_corners[3])
{
  const ClumVect3 a = i_corners[1] - i_corners[0], b = i_corners[2] - i_corners[1], c = i_corners[0] - i_corners[2];
  const double longest = std::sqrt(std::max({a.squaredNorm(), b.squaredNorm(), c.squaredNorm()}));
  if (!(longest > 0.0))
    return 0.0;
  const double height = (a * b).norm() / longest;
  // Rounding tilts the normal of a thin triangle by about eps * length / height.
  const double tilt = 1e-15 * longest;
  return height > SLIVER_RATIO * longest ? tilt * longest / height : height;
}
