#pragma once

#include "foundation/lumLeafGeometry.h"
#include "foundation/lumMat4.h"

#include <algorithm>
#include <cmath>
#include <vector>

// Slow and plain answers in long double, against which the collision toolkit is tested.

namespace oracle
{
using Real = long double;

struct Vector
{
  Real x = 0, y = 0, z = 0;
  Vector() = default;
  Vector(Real i_x, Real i_y, Real i_z) : x(i_x), y(i_y), z(i_z) {}
  explicit Vector(const ClumVect3& i_v) : x(i_v.x()), y(i_v.y()), z(i_v.z()) {}
  Vector operator+(const Vector& o) const { return {x + o.x, y + o.y, z + o.z}; }
  Vector operator-(const Vector& o) const { return {x - o.x, y - o.y, z - o.z}; }
  Vector operator*(Real f) const { return {x * f, y * f, z * f}; }
  Real dot(const Vector& o) const { return x * o.x + y * o.y + z * o.z; }
  Vector cross(const Vector& o) const { return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x}; }
  Real norm() const { return std::sqrt(dot(*this)); }
};

struct Triangle
{
  Vector corners[3];
};

inline Real pointSegment(const Vector& i_p, const Vector& i_a, const Vector& i_b)
{
  const Vector ab = i_b - i_a;
  const Real length = ab.dot(ab);
  const Real t = length > 0 ? std::clamp<Real>((i_p - i_a).dot(ab) / length, 0, 1) : 0;
  return (i_p - (i_a + ab * t)).norm();
}

/// Distance of a point from a triangle: over the face if it projects into it, else to the edges.
inline Real pointTriangle(const Vector& i_p, const Triangle& i_t)
{
  const Vector* c = i_t.corners;
  Real best = std::min({pointSegment(i_p, c[0], c[1]), pointSegment(i_p, c[1], c[2]), pointSegment(i_p, c[2], c[0])});
  const Vector n = (c[1] - c[0]).cross(c[2] - c[0]);
  if (n.norm() == 0)
    return best;
  for (int k = 0; k < 3; ++k)
    if (n.cross(c[(k + 1) % 3] - c[k]).dot(i_p - c[k]) < 0)
      return best;
  return std::min(best, std::fabs(n.dot(i_p - c[0])) / n.norm());
}

/// The least of the four end distances and, where both feet lie within, the distance of the lines.
inline Real segmentSegment(const Vector& i_a, const Vector& i_b, const Vector& i_c, const Vector& i_d)
{
  Real best = std::min({pointSegment(i_a, i_c, i_d), pointSegment(i_b, i_c, i_d), pointSegment(i_c, i_a, i_b),
                        pointSegment(i_d, i_a, i_b)});
  const Vector u = i_b - i_a, v = i_d - i_c, r = i_c - i_a, n = u.cross(v);
  const Real nn = n.dot(n);
  if (nn == 0)
    return best;
  const Real s = r.cross(v).dot(n) / nn, t = r.cross(u).dot(n) / nn;
  if (s < 0 || s > 1 || t < 0 || t > 1)
    return best;
  return std::min(best, std::fabs(r.dot(n)) / std::sqrt(nn));
}

/// True if the segment pierces the triangle's inside.
inline bool pierces(const Vector& i_a, const Vector& i_b, const Triangle& i_t)
{
  const Vector* c = i_t.corners;
  const Vector n = (c[1] - c[0]).cross(c[2] - c[0]);
  const Real ha = n.dot(i_a - c[0]), hb = n.dot(i_b - c[0]);
  if (ha * hb > 0 || ha == hb)
    return false;
  const Vector x = i_a + (i_b - i_a) * (ha / (ha - hb));
  for (int k = 0; k < 3; ++k)
    if (n.cross(c[(k + 1) % 3] - c[k]).dot(x - c[k]) < 0)
      return false;
  return true;
}

inline Real triangleTriangle(const Triangle& i_s, const Triangle& i_t)
{
  Real best = pointTriangle(i_s.corners[0], i_t);
  for (int i = 0; i < 3; ++i)
  {
    const Vector& a = i_s.corners[i];
    const Vector& b = i_s.corners[(i + 1) % 3];
    best = std::min({best, pointTriangle(a, i_t), pointTriangle(i_t.corners[i], i_s)});
    if (pierces(a, b, i_t) || pierces(i_t.corners[i], i_t.corners[(i + 1) % 3], i_s))
      return 0;
    for (int j = 0; j < 3; ++j)
      best = std::min(best, segmentSegment(a, b, i_t.corners[j], i_t.corners[(j + 1) % 3]));
  }
  return best;
}

inline std::vector<Triangle> placed(const ClumLeafGeometry& i_leaf, const ClumMat4& i_pose)
{
  ClumSweptTriangles shape;
  i_leaf.getSweptTriangles(shape);
  std::vector<Triangle> triangles;
  for (const auto& t : shape.triangles)
  {
    Triangle triangle;
    for (int k = 0; k < 3; ++k)
    {
      const ClumPoint3& p = shape.vertices[t[k]];
      Real x[3];
      for (unsigned int r = 0; r < 3; ++r)
        x[r] = Real(i_pose(r, 0)) * p.x() + Real(i_pose(r, 1)) * p.y() + Real(i_pose(r, 2)) * p.z() + i_pose(r, 3);
      triangle.corners[k] = Vector(x[0], x[1], x[2]);
    }
    triangles.push_back(triangle);
  }
  return triangles;
}

/// The distance of two surfaces, over all pairs of triangles.
inline Real surfaceDistance(const std::vector<Triangle>& i_a, const std::vector<Triangle>& i_b)
{
  Real best = HUGE_VALL;
  for (const Triangle& s : i_a)
    for (const Triangle& t : i_b)
      best = std::min(best, triangleTriangle(s, t));
  return best;
}

/// How often a closed surface winds around a point, from the solid angles of its triangles
/// (van Oosterom and Strackee, 1983).
inline Real winding(const std::vector<Triangle>& i_surface, const Vector& i_point)
{
  Real sum = 0;
  for (const Triangle& triangle : i_surface)
  {
    const Vector a = triangle.corners[0] - i_point, b = triangle.corners[1] - i_point,
                 c = triangle.corners[2] - i_point;
    const Real la = a.norm(), lb = b.norm(), lc = c.norm();
    sum += 2 * std::atan2(a.dot(b.cross(c)), la * lb * lc + a.dot(b) * lc + b.dot(c) * la + c.dot(a) * lb);
  }
  return sum / (4 * 3.14159265358979323846264338327950288L);
}
} // namespace oracle
