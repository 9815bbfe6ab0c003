#pragma once

#include "foundation/lumLeafGeometry.h"
#include "foundation/lumMat4.h"

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <utility>
#include <vector>

// Slow and plain answers in extended precision, against which the collision toolkits are tested. They are written for
// any type of number: `long double` for everyday shapes, `Exact` for degenerate ones.

namespace oracle
{
using Real = long double;
#ifdef __SIZEOF_FLOAT128__
__extension__ typedef __float128 Exact;
#else
using Exact = long double;
#endif

template <class R>
R root(R i_x)
{
  // A Newton step doubles the digits of the built-in root.
  const R y = static_cast<R>(std::sqrt(static_cast<Real>(i_x)));
  return std::is_same<R, Real>::value || !(y > 0) ? y : (y + i_x / y) / 2;
}

template <class R>
R absolute(R i_x)
{
  return i_x < 0 ? -i_x : i_x;
}

template <class R>
struct BasicVector
{
  R x = 0, y = 0, z = 0;
  BasicVector() = default;
  BasicVector(R i_x, R i_y, R i_z) : x(i_x), y(i_y), z(i_z) {}
  explicit BasicVector(const ClumVect3& i_v) : x(i_v.x()), y(i_v.y()), z(i_v.z()) {}
  BasicVector operator+(const BasicVector& o) const { return {x + o.x, y + o.y, z + o.z}; }
  BasicVector operator-(const BasicVector& o) const { return {x - o.x, y - o.y, z - o.z}; }
  BasicVector operator*(R f) const { return {x * f, y * f, z * f}; }
  R dot(const BasicVector& o) const { return x * o.x + y * o.y + z * o.z; }
  BasicVector cross(const BasicVector& o) const { return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x}; }
  R norm() const { return root(dot(*this)); }
};

template <class R>
struct BasicTriangle
{
  BasicVector<R> corners[3];
};

using Vector = BasicVector<Real>;
using Triangle = BasicTriangle<Real>;

/// Keeps a parameter from being deduced, so that it may be given in braces.
template <class T>
struct Same
{
  using type = T;
};
template <class R>
using AlsoVector = typename Same<BasicVector<R>>::type;
template <class R>
using AlsoTriangle = typename Same<BasicTriangle<R>>::type;

// Squares of distances, so that roots are drawn once.

template <class R>
R pointSegmentSquare(const BasicVector<R>& i_p, const AlsoVector<R>& i_a, const AlsoVector<R>& i_b)
{
  const BasicVector<R> ab = i_b - i_a, ap = i_p - i_a;
  const R along = ap.dot(ab), length = ab.dot(ab);
  const BasicVector<R> rest = along <= 0 ? ap : along >= length ? i_p - i_b : ap - ab * (along / length);
  return rest.dot(rest);
}

/// To the face, if the point projects into it; infinite otherwise.
template <class R>
R pointFaceSquare(const BasicVector<R>& i_p, const AlsoTriangle<R>& i_t)
{
  const BasicVector<R>* c = i_t.corners;
  const BasicVector<R> n = (c[1] - c[0]).cross(c[2] - c[0]);
  for (int k = 0; k < 3; ++k)
    if (n.cross(c[(k + 1) % 3] - c[k]).dot(i_p - c[k]) < 0)
      return R(HUGE_VALL);
  const R nn = n.dot(n), height = n.dot(i_p - c[0]);
  return nn > 0 ? height * height / nn : R(HUGE_VALL);
}

/// Of the insides of two segments, if the feet of the lines lie within; infinite otherwise.
template <class R>
R insideSegmentsSquare(const BasicVector<R>& i_a, const AlsoVector<R>& i_b, const AlsoVector<R>& i_c,
                       const AlsoVector<R>& i_d)
{
  const BasicVector<R> u = i_b - i_a, v = i_d - i_c, r = i_c - i_a, n = u.cross(v);
  const R nn = n.dot(n);
  const R s = r.cross(v).dot(n), t = r.cross(u).dot(n);
  if (!(nn > 0) || s < 0 || s > nn || t < 0 || t > nn)
    return R(HUGE_VALL);
  const R height = r.dot(n);
  return height * height / nn;
}

template <class R>
R pointSegment(const BasicVector<R>& i_p, const AlsoVector<R>& i_a, const AlsoVector<R>& i_b)
{
  return root(pointSegmentSquare(i_p, i_a, i_b));
}

template <class R>
R pointTriangle(const BasicVector<R>& i_p, const AlsoTriangle<R>& i_t)
{
  R best = pointFaceSquare(i_p, i_t);
  for (int k = 0; k < 3; ++k)
    best = std::min(best, pointSegmentSquare(i_p, i_t.corners[k], i_t.corners[(k + 1) % 3]));
  return root(best);
}

/// True if the segment pierces the triangle's inside.
template <class R>
bool pierces(const BasicVector<R>& i_a, const AlsoVector<R>& i_b, const AlsoTriangle<R>& i_t)
{
  const BasicVector<R>* c = i_t.corners;
  const BasicVector<R> n = (c[1] - c[0]).cross(c[2] - c[0]);
  const R ha = n.dot(i_a - c[0]), hb = n.dot(i_b - c[0]);
  if ((ha > 0 && hb > 0) || (ha < 0 && hb < 0) || ha == hb)
    return false;
  const BasicVector<R> x = i_a + (i_b - i_a) * (ha / (ha - hb));
  for (int k = 0; k < 3; ++k)
    if (n.cross(c[(k + 1) % 3] - c[k]).dot(x - c[k]) < 0)
      return false;
  return true;
}

/// Corners against edges and faces, edges against edges, and 0 where an edge pierces a face.
template <class R>
R triangleTriangle(const BasicTriangle<R>& i_s, const AlsoTriangle<R>& i_t)
{
  const BasicVector<R>*s = i_s.corners, *t = i_t.corners;
  R best = R(HUGE_VALL);
  for (int i = 0; i < 3; ++i)
  {
    if (pierces(s[i], s[(i + 1) % 3], i_t) || pierces(t[i], t[(i + 1) % 3], i_s))
      return 0;
    best = std::min({best, pointFaceSquare(s[i], i_t), pointFaceSquare(t[i], i_s)});
    for (int j = 0; j < 3; ++j)
      best =
        std::min({best, pointSegmentSquare(s[i], t[j], t[(j + 1) % 3]), pointSegmentSquare(t[i], s[j], s[(j + 1) % 3]),
                  insideSegmentsSquare(s[i], s[(i + 1) % 3], t[j], t[(j + 1) % 3])});
  }
  return root(best);
}

template <class R>
std::vector<BasicTriangle<R>> placedAs(const ClumLeafGeometry& i_leaf, const ClumMat4& i_pose)
{
  ClumSweptTriangles shape;
  i_leaf.getSweptTriangles(shape);
  std::vector<BasicTriangle<R>> triangles;
  for (const auto& t : shape.triangles)
  {
    BasicTriangle<R> triangle;
    for (int k = 0; k < 3; ++k)
    {
      const ClumPoint3& p = shape.vertices[t[k]];
      R x[3];
      for (unsigned int r = 0; r < 3; ++r)
        x[r] = R(i_pose(r, 0)) * p.x() + R(i_pose(r, 1)) * p.y() + R(i_pose(r, 2)) * p.z() + i_pose(r, 3);
      triangle.corners[k] = BasicVector<R>(x[0], x[1], x[2]);
    }
    triangles.push_back(triangle);
  }
  return triangles;
}

inline std::vector<Triangle> placed(const ClumLeafGeometry& i_leaf, const ClumMat4& i_pose)
{
  return placedAs<Real>(i_leaf, i_pose);
}

/// A ball around each triangle.
template <class R>
std::vector<std::pair<BasicVector<R>, R>> ballsOf(const std::vector<BasicTriangle<R>>& i_triangles)
{
  std::vector<std::pair<BasicVector<R>, R>> balls;
  for (const BasicTriangle<R>& t : i_triangles)
  {
    const BasicVector<R> center = (t.corners[0] + t.corners[1] + t.corners[2]) * (R(1) / 3);
    R radius = 0;
    for (const BasicVector<R>& corner : t.corners)
      radius = std::max(radius, (corner - center).norm());
    balls.emplace_back(center, radius);
  }
  return balls;
}

/// The distance of two surfaces, over all pairs of triangles but those whose balls are farther apart than what was
/// found.
template <class R>
R surfaceDistance(const std::vector<BasicTriangle<R>>& i_a,
                  const typename Same<std::vector<BasicTriangle<R>>>::type& i_b)
{
  const auto ballsA = ballsOf(i_a), ballsB = ballsOf<R>(i_b);
  const auto gap = [&](std::size_t i, std::size_t j)
  { return (ballsA[i].first - ballsB[j].first).norm() - ballsA[i].second - ballsB[j].second; };
  // A good start makes most pairs short.
  R nearest = R(HUGE_VALL), best = R(HUGE_VALL);
  std::vector<R> gaps;
  for (std::size_t i = 0; i < i_a.size(); ++i)
    for (std::size_t j = 0; j < i_b.size(); ++j)
    {
      gaps.push_back(gap(i, j));
      if (gaps.back() < nearest)
      {
        nearest = gaps.back();
        best = std::min(best, triangleTriangle(i_a[i], i_b[j]));
      }
    }
  for (std::size_t k = 0; k < gaps.size() && best > 0; ++k)
    if (gaps[k] <= best * (1 + R(1e-9)) + R(1e-9) * ballsA[0].second)
      best = std::min(best, triangleTriangle(i_a[k / i_b.size()], i_b[k % i_b.size()]));
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
