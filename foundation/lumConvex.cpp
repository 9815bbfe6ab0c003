#include "foundation/lumConvex.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

LUM_DESCRIBE(ClumConvex)
{
}

struct ClumConvex::CHull
{
  std::vector<ClumPoint3> vertices;
  std::vector<TTriangle> triangles;
  double slack = 0.0; ///< no point given lies farther outside of the faces
};

namespace
{
using TConvexFace = ClumConvex::TTriangle;

/// Builds a hull point by point: the faces that see a point give way to a fan over their rim.
class CConvexBuilder
{
public:
  explicit CConvexBuilder(const std::vector<ClumPoint3>& i_points) : m_points(i_points)
  {
    for (const ClumPoint3& point : m_points)
      m_size = std::max(m_size, point.distanceFrom(m_points[0]));
  }

  /// @return false if the points lie in one plane, to within 1e-9 of their extent.
  bool build()
  {
    if (!makeTetrahedron())
      return false;
    for (unsigned int i = 0; i < m_points.size(); ++i)
      addPoint(i);
    return true;
  }

  const std::vector<TConvexFace>& faces() const { return m_faces; }

  /// How far the farthest point lies outside of a face.
  double residual() const
  {
    double residual = 0.0;
    for (const TConvexFace& face : m_faces)
      for (const ClumPoint3& point : m_points)
        residual = std::max(residual, height(face, point));
    return residual;
  }

private:
  double height(const TConvexFace& i_face, const ClumPoint3& i_point) const
  {
    const ClumPoint3& a = m_points[i_face[0]];
    const ClumVect3 normal = (m_points[i_face[1]] - a) * (m_points[i_face[2]] - a);
    return normal.normalized().scalarProduct(i_point - a);
  }

  template <class MEASURE>
  unsigned int farthest(MEASURE i_measure) const
  {
    unsigned int best = 0;
    for (unsigned int i = 1; i < m_points.size(); ++i)
      if (i_measure(m_points[i]) > i_measure(m_points[best]))
        best = i;
    return best;
  }

  bool makeTetrahedron()
  {
    const unsigned int a = farthest([](const ClumPoint3& p) { return -p.x(); });
    const ClumPoint3 pa = m_points[a];
    const unsigned int b = farthest([&](const ClumPoint3& p) { return p.distanceFrom(pa); });
    const ClumVect3 ab = (m_points[b] - pa).normalized();
    const unsigned int c = farthest([&](const ClumPoint3& p) { return (ab * (p - pa)).norm(); });
    const ClumVect3 normal = (ab * (m_points[c] - pa)).normalized();
    const unsigned int d = farthest([&](const ClumPoint3& p) { return std::fabs(normal.scalarProduct(p - pa)); });
    const double side = normal.scalarProduct(m_points[d] - pa);
    if (!(std::fabs(side) > 1e-9 * m_size))
      return false;
    const unsigned int e = side < 0.0 ? b : c, f = side < 0.0 ? c : b;
    m_faces = {{a, e, f}, {a, d, e}, {e, d, f}, {f, d, a}};
    return true;
  }

  void addPoint(unsigned int i_point)
  {
    std::vector<TConvexFace> kept;
    std::set<std::pair<unsigned int, unsigned int>> rim;
    for (const TConvexFace& face : m_faces)
    {
      if (height(face, m_points[i_point]) <= 1e-11 * m_size)
      {
        kept.push_back(face);
        continue;
      }
      for (unsigned int k = 0; k < 3; ++k)
        if (rim.erase({face[(k + 1) % 3], face[k]}) == 0)
          rim.insert({face[k], face[(k + 1) % 3]});
    }
    for (const auto& edge : rim)
      kept.push_back({edge.first, edge.second, i_point});
    m_faces.swap(kept);
  }

  const std::vector<ClumPoint3>& m_points;
  std::vector<TConvexFace> m_faces;
  double m_size = 0.0;
};

/// True if the faces close a body without holes that turns outward nowhere by more than the slack: at each edge the
/// corner beyond lies behind the face, and a closed surface that is convex everywhere at close is so as a whole.
bool isConvexHull(const std::vector<ClumPoint3>& i_vertices, const std::vector<TConvexFace>& i_faces, double i_slack)
{
  std::map<std::pair<unsigned int, unsigned int>, unsigned int> corners; // beyond each edge, by its direction
  std::vector<bool> isUsed(i_vertices.size(), false);
  for (const TConvexFace& face : i_faces)
    for (unsigned int k = 0; k < 3; ++k)
    {
      const bool isNew = face[k] < i_vertices.size() &&
                         corners.emplace(std::make_pair(face[k], face[(k + 1) % 3]), face[(k + 2) % 3]).second;
      if (!isNew)
        return false;
      isUsed[face[k]] = true;
    }
  for (const ClumPoint3& vertex : i_vertices)
    if (!std::isfinite(vertex.x()) || !std::isfinite(vertex.y()) || !std::isfinite(vertex.z()))
      return false;
  for (const TConvexFace& face : i_faces)
  {
    const ClumPoint3& a = i_vertices[face[0]];
    const ClumVect3 normal = ((i_vertices[face[1]] - a) * (i_vertices[face[2]] - a)).normalized();
    for (unsigned int k = 0; k < 3; ++k)
    {
      const auto beyond = corners.find({face[(k + 1) % 3], face[k]});
      if (beyond == corners.end() || !(normal.scalarProduct(i_vertices[beyond->second] - a) <= i_slack))
        return false;
    }
  }
  // Euler's formula for one body without a hole: V + F = E + 2, and 2E = 3F in a surface that is closed.
  const bool isWhole = std::find(isUsed.begin(), isUsed.end(), false) == isUsed.end();
  return isWhole && 2 * i_vertices.size() == i_faces.size() + 4;
}
} // namespace

ClumConvex::ClumConvex() : m_hull(new CHull)
{
}

ClumConvex::~ClumConvex() = default;

ClumConvexShPtr ClumConvex::create(const std::vector<ClumPoint3>& i_points)
{
  return lumCreateWith<ClumConvex>(lumConstruct(), i_points);
}

ClumConvexShPtr ClumConvex::createCopy(const ClumConvexConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumGeometryShPtr ClumConvex::clone() const
{
  return createCopy(self());
}

lmStatus ClumConvex::init(const ClumConvexWkPtr& i_weakPtr)
{
  return ClumLeafGeometry::init(i_weakPtr);
}

lmStatus ClumConvex::init(const ClumConvexWkPtr& i_weakPtr, const std::vector<ClumPoint3>& i_points)
{
  const lmStatus status = init(i_weakPtr);
  if (status.failed())
    return status;
  for (const ClumPoint3& point : i_points)
    if (!std::isfinite(point.x()) || !std::isfinite(point.y()) || !std::isfinite(point.z()))
      return lmStatus::FAILURE;
  if (i_points.size() < 4)
    return lmStatus::FAILURE;
  CConvexBuilder builder(i_points);
  if (!builder.build())
    return lmStatus::FAILURE;

  const ShPtr<CHull> hull(new CHull);
  std::vector<unsigned int> ranks(i_points.size(), ~0u);
  for (TTriangle face : builder.faces())
  {
    for (unsigned int& vertex : face)
    {
      if (ranks[vertex] == ~0u)
      {
        ranks[vertex] = static_cast<unsigned int>(hull->vertices.size());
        hull->vertices.push_back(i_points[vertex]);
      }
      vertex = ranks[vertex];
    }
    hull->triangles.push_back(face);
  }
  hull->slack = builder.residual();
  m_hull = hull;
  return status;
}

const std::vector<ClumPoint3>& ClumConvex::vertices() const
{
  return m_hull->vertices;
}

const std::vector<ClumConvex::TTriangle>& ClumConvex::triangles() const
{
  return m_hull->triangles;
}

void ClumConvex::getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const
{
  o_lowest = o_highest = m_hull->vertices.empty() ? ClumPoint3() : m_hull->vertices[0];
  for (const ClumPoint3& vertex : m_hull->vertices)
    for (unsigned int k = 0; k < 3; ++k)
    {
      o_lowest[k] = std::min(o_lowest[k], vertex[k]);
      o_highest[k] = std::max(o_highest[k], vertex[k]);
    }
}

void ClumConvex::getSweptTriangles(ClumSweptTriangles& o_shape) const
{
  o_shape = ClumSweptTriangles();
  o_shape.vertices = m_hull->vertices;
  o_shape.triangles = m_hull->triangles;
  o_shape.radius = m_hull->slack;
  o_shape.excess = m_hull->slack;
}

void ClumConvex::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumLeafGeometry::encodeWithCoder(i_coder);
  std::vector<double> coordinates;
  for (const ClumPoint3& vertex : m_hull->vertices)
    coordinates.insert(coordinates.end(), {vertex.x(), vertex.y(), vertex.z()});
  std::vector<unsigned int> ranks;
  for (const TTriangle& triangle : m_hull->triangles)
    ranks.insert(ranks.end(), triangle.begin(), triangle.end());
  i_coder->encodeDoubleVector(coordinates, "vertices");
  i_coder->encodeUnsignedIntVector(ranks, "triangles");
  i_coder->encodeDouble(m_hull->slack, "slack");
}

lmStatus ClumConvex::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumLeafGeometry::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  std::vector<double> coordinates;
  std::vector<unsigned int> ranks;
  i_coder->decodeDoubleVector("vertices", coordinates);
  i_coder->decodeUnsignedIntVector("triangles", ranks);
  const ShPtr<CHull> hull(new CHull);
  hull->slack = i_coder->decodeDouble("slack");
  for (std::size_t i = 0; i + 2 < coordinates.size(); i += 3)
    hull->vertices.emplace_back(coordinates[i], coordinates[i + 1], coordinates[i + 2]);
  for (std::size_t i = 0; i + 2 < ranks.size(); i += 3)
    hull->triangles.push_back({ranks[i], ranks[i + 1], ranks[i + 2]});
  const bool isSound = coordinates.size() % 3 == 0 && ranks.size() % 3 == 0 && std::isfinite(hull->slack) &&
                       hull->slack >= 0.0 && isConvexHull(hull->vertices, hull->triangles, hull->slack);
  if (!isSound)
    return lmStatus::FAILURE;
  m_hull = hull;
  return status;
}
