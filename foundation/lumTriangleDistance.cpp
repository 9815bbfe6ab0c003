#include "foundation/lumTriangleDistance.h"

#include "foundation/lumDoubleDouble.h"

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
using TSureNumber = ClumDoubleDouble;
constexpr double SURE_THIN_RATIO = 1e-12;
constexpr double SURE_VOLUME = 1e-14;

struct CSureVector
{
  TSureNumber x, y, z;

  CSureVector() = default;
  CSureVector(const TSureNumber& i_x, const TSureNumber& i_y, const TSureNumber& i_z) : x(i_x), y(i_y), z(i_z) {}
  explicit CSureVector(const ClumVect3& i_vector) : x(i_vector.x()), y(i_vector.y()), z(i_vector.z()) {}
  CSureVector operator+(const CSureVector& o) const { return {x + o.x, y + o.y, z + o.z}; }
  CSureVector operator-(const CSureVector& o) const { return {x - o.x, y - o.y, z - o.z}; }
  CSureVector operator*(const TSureNumber& f) const { return {x * f, y * f, z * f}; }
  TSureNumber dot(const CSureVector& o) const { return x * o.x + y * o.y + z * o.z; }
  CSureVector cross(const CSureVector& o) const { return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x}; }
};

struct CSureTriangle
{
  CSureVector corners[3];
  CSureVector edges[3];

  explicit CSureTriangle(const ClumVect3 i_corners[3])
  {
    for (unsigned int k = 0; k < 3; ++k)
      corners[k] = CSureVector(i_corners[k]);
    for (unsigned int k = 0; k < 3; ++k)
      edges[k] = corners[(k + 1) % 3] - corners[k];
  }
};

TSureNumber sureShare(const TSureNumber& i_part, const TSureNumber& i_whole)
{
  if (!(i_whole > 0.0) || !(i_part > 0.0))
    return 0.0;
  return i_part < i_whole ? i_part / i_whole : TSureNumber(1.0);
}

/// The nine pairs of edges: the least square of their distances. Tells whether one of them keeps the triangles apart.
TSureNumber sureEdgeSquare(const CSureTriangle& i_s, const CSureTriangle& i_t, bool& io_isApart)
{
  TSureNumber best = std::numeric_limits<double>::infinity();
  for (unsigned int i = 0; i < 3; ++i)
    for (unsigned int j = 0; j < 3; ++j)
    {
      const CSureVector& d = i_s.edges[i];
      const CSureVector& e = i_t.edges[j];
      const CSureVector r = i_t.corners[j] - i_s.corners[i];
      const TSureNumber dd = d.dot(d), ee = e.dot(e), de = d.dot(e), rd = r.dot(d), re = r.dot(e);
      TSureNumber s = sureShare(rd * ee - re * de, dd * ee - de * de);
      const TSureNumber t = sureShare(s * de - re, ee);
      s = sureShare(t * de + rd, dd);
      const CSureVector onD = d * s, onE = e * t, gap = r + onE - onD;
      const TSureNumber square = gap.dot(gap);
      if (square < best)
        best = square;
      const TSureNumber above = (i_s.corners[(i + 2) % 3] - i_s.corners[i] - onD).dot(gap);
      const TSureNumber below = (i_t.corners[(j + 2) % 3] - i_t.corners[j] - onE).dot(gap);
      TSureNumber between = square;
      if (above > 0.0)
        between = between - above;
      if (below < 0.0)
        between = between + below;
      io_isApart = io_isApart || between > 0.0;
    }
  return best;
}

/// The corners of one triangle over the face of the other: lowers the least square where the nearest corner is over it.
void sureFaceSquare(const CSureTriangle& i_face, const CSureTriangle& i_other, bool& io_isApart, TSureNumber& io_square)
{
  const CSureVector normal = i_face.edges[0].cross(i_face.edges[1]);
  const TSureNumber nn = normal.dot(normal);
  if (!(nn > 0.0))
    return;
  unsigned int nearest = 0, countAbove = 0, countBelow = 0;
  TSureNumber heights[3];
  for (unsigned int k = 0; k < 3; ++k)
  {
    heights[k] = normal.dot(i_other.corners[k] - i_face.corners[0]);
    countAbove += heights[k] > 0.0;
    countBelow += heights[k] < 0.0;
    if (heights[k] * heights[k] < heights[nearest] * heights[nearest])
      nearest = k;
  }
  if (countAbove != 3 && countBelow != 3)
    return;
  io_isApart = true;
  for (unsigned int k = 0; k < 3; ++k)
    if (!(normal.cross(i_face.edges[k]).dot(i_other.corners[nearest] - i_face.corners[k]) > 0.0))
      return;
  const TSureNumber square = heights[nearest] * heights[nearest] / nn;
  if (square < io_square)
    io_square = square;
}

/// True if an edge of one runs through the face of the other, by more than rounding could feign.
bool isSurelyPierced(const ClumVect3 i_face[3], const ClumVect3 i_other[3])
{
  double reach = 0.0;
  for (unsigned int k = 0; k < 3; ++k)
    for (unsigned int c = 0; c < 3; ++c)
      reach = std::max({reach, std::fabs(i_face[k][c]), std::fabs(i_other[k][c])});
  const double doubt = SURE_VOLUME * reach * reach * reach;
  const ClumVect3 normal = (i_face[1] - i_face[0]) * (i_face[2] - i_face[0]);
  for (unsigned int k = 0; k < 3; ++k)
  {
    const ClumVect3& from = i_other[k];
    const ClumVect3& to = i_other[(k + 1) % 3];
    const double sides[2] = {normal.scalarProduct(from - i_face[0]), normal.scalarProduct(to - i_face[0])};
    if (!(std::min(sides[0], sides[1]) < -doubt && std::max(sides[0], sides[1]) > doubt))
      continue;
    double lowest = std::numeric_limits<double>::infinity(), highest = -lowest;
    for (unsigned int c = 0; c < 3; ++c)
    {
      const double volume = (to - from).scalarProduct((i_face[c] - from) * (i_face[(c + 1) % 3] - from));
      lowest = std::min(lowest, volume);
      highest = std::max(highest, volume);
    }
    if (lowest > doubt || highest < -doubt)
      return true;
  }
  return false;
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

bool lumAreSurelyPierced(const ClumVect3 i_s[3], const ClumVect3 i_t[3])
{
  return isSurelyPierced(i_s, i_t) || isSurelyPierced(i_t, i_s);
}

double lumSureTriangleDistance(const ClumVect3 i_s[3], const ClumVect3 i_t[3])
{
  const CSureTriangle s(i_s), t(i_t);
  bool isApart = false;
  TSureNumber square = sureEdgeSquare(s, t, isApart);
  sureFaceSquare(s, t, isApart, square);
  sureFaceSquare(t, s, isApart, square);
  return isApart ? std::sqrt(std::max(0.0, square.value())) : 0.0;
}

ClumVect3 lumTriangleNormal(const ClumVect3 i_corners[3])
{
  const CSureTriangle triangle(i_corners);
  const CSureVector sure = triangle.edges[0].cross(triangle.edges[1]);
  const ClumVect3 normal(sure.x.value(), sure.y.value(), sure.z.value());
  double longest = 0.0;
  for (const CSureVector& edge : triangle.edges)
    longest = std::max(longest, edge.dot(edge).value());
  return normal.norm() > SURE_THIN_RATIO * longest ? normal.normalized() : ClumVect3();
}
