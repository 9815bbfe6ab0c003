#include "foundation/lumMesh.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumSolids.h"

#include <algorithm>
#include <limits>
#include <numeric>

LUM_DESCRIBE(ClumMesh)
{
}

struct ClumMesh::CData
{
  ClumSweptTriangles shape;
  CDropped dropped;
  bool isClosed = false;
  ClumPoint3 lowest;
  ClumPoint3 highest;
};

namespace
{
using TMeshTriangle = ClumMesh::TTriangle;

/// True if the three corners lie on a line, to within rounding of their coordinates.
bool hasZeroArea(const ClumPoint3& i_a, const ClumPoint3& i_b, const ClumPoint3& i_c)
{
  const ClumVect3 ab = i_b - i_a, ac = i_c - i_a, bc = i_c - i_b;
  const double longest = std::sqrt(std::max({ab.squaredNorm(), ac.squaredNorm(), bc.squaredNorm()}));
  double magnitude = 0.0;
  for (const ClumPoint3* point : {&i_a, &i_b, &i_c})
    for (unsigned int k = 0; k < 3; ++k)
      magnitude = std::max(magnitude, std::fabs((*point)[k]));
  const double height = longest > 0.0 ? (ab * ac).norm() / longest : 0.0;
  return height <= 4.0 * std::numeric_limits<double>::epsilon() * magnitude;
}

/// The corners by coordinates, in an order that does not depend on how the triangle was written.
std::array<std::array<double, 3>, 3> meshTriangleKey(const std::vector<ClumPoint3>& i_vertices,
                                                     const TMeshTriangle& i_triangle)
{
  std::array<std::array<double, 3>, 3> key;
  for (unsigned int k = 0; k < 3; ++k)
    for (unsigned int c = 0; c < 3; ++c)
      key[k][c] = i_vertices[i_triangle[k]][c];
  std::sort(key.begin(), key.end());
  return key;
}

/// Removes repeated triangles, keeping the first of each and the order. @return how many went.
unsigned int dropMeshDuplicates(const std::vector<ClumPoint3>& i_vertices, std::vector<TMeshTriangle>& io_triangles)
{
  std::vector<std::pair<std::array<std::array<double, 3>, 3>, std::size_t>> keys;
  for (std::size_t i = 0; i < io_triangles.size(); ++i)
    keys.emplace_back(meshTriangleKey(i_vertices, io_triangles[i]), i);
  std::sort(keys.begin(), keys.end());
  std::vector<bool> isKept(io_triangles.size(), true);
  for (std::size_t i = 1; i < keys.size(); ++i)
    if (keys[i].first == keys[i - 1].first)
      isKept[keys[i].second] = false;
  std::vector<TMeshTriangle> kept;
  for (std::size_t i = 0; i < io_triangles.size(); ++i)
    if (isKept[i])
      kept.push_back(io_triangles[i]);
  const std::size_t count = io_triangles.size() - kept.size();
  io_triangles.swap(kept);
  return static_cast<unsigned int>(count);
}

bool areMeshInputsSound(const std::vector<ClumPoint3>& i_vertices, const std::vector<TMeshTriangle>& i_triangles)
{
  for (const ClumPoint3& vertex : i_vertices)
    if (!std::isfinite(vertex.x()) || !std::isfinite(vertex.y()) || !std::isfinite(vertex.z()))
      return false;
  for (const TMeshTriangle& triangle : i_triangles)
    for (const unsigned int rank : triangle)
      if (rank >= i_vertices.size())
        return false;
  return true;
}
} // namespace

ClumMesh::ClumMesh() : m_data(new CData)
{
}

ClumMesh::~ClumMesh() = default;

ClumMeshShPtr ClumMesh::create(const std::vector<ClumPoint3>& i_vertices, const std::vector<TTriangle>& i_triangles,
                               ESolidity i_solidity)
{
  return lumCreateWith<ClumMesh>(lumConstruct(), i_vertices, i_triangles, i_solidity);
}

ClumMeshShPtr ClumMesh::createCopy(const ClumMeshConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumGeometryShPtr ClumMesh::clone() const
{
  return createCopy(self());
}

ShPtr<const ClumMesh::CData> ClumMesh::makeData(const std::vector<ClumPoint3>& i_vertices,
                                                const std::vector<TTriangle>& i_triangles, ESolidity i_solidity)
{
  if (!areMeshInputsSound(i_vertices, i_triangles))
    return ShPtr<const CData>();
  const ShPtr<CData> data(new CData);
  ClumSweptTriangles& shape = data->shape;
  shape.vertices = i_vertices;
  shape.solidity = i_solidity;
  for (const TTriangle& triangle : i_triangles)
  {
    const bool isSeam = hasZeroArea(i_vertices[triangle[0]], i_vertices[triangle[1]], i_vertices[triangle[2]]);
    (isSeam ? shape.seams : shape.triangles).push_back(triangle);
  }
  data->dropped.zeroArea = static_cast<unsigned int>(shape.seams.size());
  data->dropped.duplicates = dropMeshDuplicates(shape.vertices, shape.triangles);
  if (shape.triangles.empty())
    return ShPtr<const CData>();
  data->isClosed = ClumSolids(shape).isClosed();
  data->lowest = data->highest = shape.vertices[shape.triangles[0][0]];
  for (const TTriangle& triangle : shape.triangles)
    for (const unsigned int rank : triangle)
      for (unsigned int k = 0; k < 3; ++k)
      {
        data->lowest[k] = std::min(data->lowest[k], shape.vertices[rank][k]);
        data->highest[k] = std::max(data->highest[k], shape.vertices[rank][k]);
      }
  return data;
}

lmStatus ClumMesh::init(const ClumMeshWkPtr& i_weakPtr)
{
  return ClumLeafGeometry::init(i_weakPtr);
}

lmStatus ClumMesh::init(const ClumMeshWkPtr& i_weakPtr, const std::vector<ClumPoint3>& i_vertices,
                        const std::vector<TTriangle>& i_triangles, ESolidity i_solidity)
{
  const lmStatus status = init(i_weakPtr);
  if (status.failed())
    return status;
  m_data = makeData(i_vertices, i_triangles, i_solidity);
  return m_data ? status : lmStatus(lmStatus::FAILURE);
}

lmStatus ClumMesh::init(const ClumMeshWkPtr& i_weakPtr, const ClumMeshConstShPtr&)
{
  return init(i_weakPtr);
}

const std::vector<ClumPoint3>& ClumMesh::vertices() const
{
  return m_data->shape.vertices;
}

const std::vector<ClumMesh::TTriangle>& ClumMesh::triangles() const
{
  return m_data->shape.triangles;
}

const ClumMesh::CDropped& ClumMesh::dropped() const
{
  return m_data->dropped;
}

bool ClumMesh::isClosed() const
{
  return m_data->isClosed;
}

ClumMesh::ESolidity ClumMesh::solidity() const
{
  return m_data->shape.solidity;
}

void ClumMesh::getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const
{
  o_lowest = m_data->lowest;
  o_highest = m_data->highest;
}

void ClumMesh::getSweptTriangles(ClumSweptTriangles& o_shape) const
{
  o_shape = m_data->shape;
}

void ClumMesh::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumLeafGeometry::encodeWithCoder(i_coder);
  std::vector<double> coordinates;
  for (const ClumPoint3& vertex : vertices())
    coordinates.insert(coordinates.end(), {vertex.x(), vertex.y(), vertex.z()});
  std::vector<unsigned int> ranks;
  for (const std::vector<TTriangle>* list : {&m_data->shape.triangles, &m_data->shape.seams})
    for (const TTriangle& triangle : *list)
      ranks.insert(ranks.end(), triangle.begin(), triangle.end());
  i_coder->encodeDoubleVector(coordinates, "vertices");
  i_coder->encodeUnsignedIntVector(ranks, "triangles");
  if (solidity() != ClumSweptTriangles::SOLID_IF_CLOSED)
    i_coder->encodeInt(solidity(), "solidity");
}

lmStatus ClumMesh::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumLeafGeometry::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  std::vector<double> coordinates;
  std::vector<unsigned int> ranks;
  i_coder->decodeDoubleVector("vertices", coordinates);
  i_coder->decodeUnsignedIntVector("triangles", ranks);
  std::vector<ClumPoint3> vertices;
  for (std::size_t i = 0; i + 2 < coordinates.size(); i += 3)
    vertices.emplace_back(coordinates[i], coordinates[i + 1], coordinates[i + 2]);
  std::vector<TTriangle> triangles;
  for (std::size_t i = 0; i + 2 < ranks.size(); i += 3)
    triangles.push_back({ranks[i], ranks[i + 1], ranks[i + 2]});
  const int solidity = i_coder->hasKey("solidity") ? i_coder->decodeInt("solidity") : 0;
  if (solidity < ClumSweptTriangles::SOLID_IF_CLOSED || solidity > ClumSweptTriangles::SOLID)
    return lmStatus::FAILURE;
  m_data = makeData(vertices, triangles, static_cast<ESolidity>(solidity));
  const bool isWhole = coordinates.size() % 3 == 0 && ranks.size() % 3 == 0;
  return m_data && isWhole ? status : lmStatus(lmStatus::FAILURE);
}
