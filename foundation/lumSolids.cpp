#include "foundation/lumSolids.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <tuple>

namespace
{
/// How many corners of a part are looked at to tell a hollow.
constexpr std::size_t SOLID_SAMPLES = 64;

/// The rank, for each vertex, of the first vertex of the same coordinates.
std::vector<unsigned int> weldedRanks(const std::vector<ClumPoint3>& i_vertices)
{
  const auto key = [&](unsigned int i)
  { return std::make_tuple(i_vertices[i].x(), i_vertices[i].y(), i_vertices[i].z(), i); };
  std::vector<unsigned int> order(i_vertices.size());
  std::iota(order.begin(), order.end(), 0u);
  std::sort(order.begin(), order.end(), [&](unsigned int a, unsigned int b) { return key(a) < key(b); });
  std::vector<unsigned int> welded(i_vertices.size());
  for (std::size_t i = 0; i < order.size(); ++i)
    welded[order[i]] = i > 0 && i_vertices[order[i]] == i_vertices[order[i - 1]] ? welded[order[i - 1]] : order[i];
  return welded;
}

/// Disjoint sets with path halving; the smaller rank leads.
class CSolidSets
{
public:
  explicit CSolidSets(std::size_t i_count) : m_leaders(i_count) { std::iota(m_leaders.begin(), m_leaders.end(), 0u); }
  std::size_t leader(std::size_t i_rank)
  {
    while (m_leaders[i_rank] != i_rank)
      i_rank = m_leaders[i_rank] = m_leaders[m_leaders[i_rank]];
    return i_rank;
  }
  void join(std::size_t i_a, std::size_t i_b)
  {
    const std::size_t a = leader(i_a), b = leader(i_b);
    m_leaders[std::max(a, b)] = std::min(a, b);
  }

private:
  std::vector<std::size_t> m_leaders;
};

struct CSolidEdge
{
  unsigned int low;
  unsigned int high;
  std::uint32_t triangle;
  bool isForward; ///< from low to high
};

/// Calls back with every edge of the triangles, then of the seams.
template <class CALL>
void forEachSolidEdge(const ClumSweptTriangles& i_shape, const std::vector<unsigned int>& i_welded, CALL i_call)
{
  const std::size_t count = i_shape.triangles.size();
  for (std::size_t i = 0; i < count + i_shape.seams.size(); ++i)
  {
    const ClumSweptTriangles::TTriangle& t = i < count ? i_shape.triangles[i] : i_shape.seams[i - count];
    for (unsigned int k = 0; k < 3; ++k)
    {
      const unsigned int from = i_welded[t[k]], to = i_welded[t[(k + 1) % 3]];
      if (from != to)
        i_call(CSolidEdge{std::min(from, to), std::max(from, to), static_cast<std::uint32_t>(i), from < to});
    }
  }
}

/// The edges by their vertices: few leave from a vertex, so they are dealt out by the first before they are sorted.
std::vector<CSolidEdge> sortedSolidEdges(const ClumSweptTriangles& i_shape)
{
  const std::vector<unsigned int> welded = weldedRanks(i_shape.vertices);
  std::vector<std::uint32_t> ends(i_shape.vertices.size() + 1, 0);
  forEachSolidEdge(i_shape, welded, [&](const CSolidEdge& edge) { ++ends[edge.low + 1]; });
  std::partial_sum(ends.begin(), ends.end(), ends.begin());
  std::vector<CSolidEdge> edges(ends.back());
  forEachSolidEdge(i_shape, welded, [&](const CSolidEdge& edge) { edges[ends[edge.low]++] = edge; });
  std::uint32_t begin = 0;
  for (std::size_t vertex = 0; vertex + 1 < ends.size(); begin = ends[vertex++])
    std::sort(edges.begin() + begin, edges.begin() + ends[vertex],
              [](const CSolidEdge& a, const CSolidEdge& b)
              { return a.high < b.high || (a.high == b.high && a.triangle < b.triangle); });
  return edges;
}

void solidCorners(const ClumSweptTriangles& i_shape, std::size_t i_triangle, ClumVect3 o_corners[3])
{
  for (unsigned int k = 0; k < 3; ++k)
    o_corners[k] = i_shape.vertices[i_shape.triangles[i_triangle][k]].toVect3();
}
} // namespace

ClumSolids::ClumSolids(const ClumSweptTriangles& i_shape)
{
  findParts(i_shape);
  for (CPart& part : m_parts)
    part.isSealed = part.isClosed;
  if (i_shape.solidity != ClumSweptTriangles::SOLID_IF_CLOSED)
    for (CPart& part : m_parts)
      part.isClosed = i_shape.solidity == ClumSweptTriangles::SOLID;
  turnOutward(i_shape);
}

bool ClumSolids::isClosed() const
{
  return std::all_of(m_parts.begin(), m_parts.end(), [](const CPart& part) { return part.isClosed; });
}

bool ClumSolids::hasSolid() const
{
  return std::any_of(m_parts.begin(), m_parts.end(), [](const CPart& part) { return part.isClosed; });
}

void ClumSolids::findParts(const ClumSweptTriangles& i_shape)
{
  const std::size_t countTriangles = i_shape.triangles.size();
  const std::vector<CSolidEdge> edges = sortedSolidEdges(i_shape);
  const auto isSame = [](const CSolidEdge& a, const CSolidEdge& b) { return a.low == b.low && a.high == b.high; };
  CSolidSets sets(countTriangles + i_shape.seams.size());
  for (std::size_t i = 1; i < edges.size(); ++i)
    if (isSame(edges[i - 1], edges[i]))
      sets.join(edges[i - 1].triangle, edges[i].triangle);

  // Parts are numbered by their first triangle; a set of seams alone is no part.
  constexpr std::size_t NO_PART = ~std::size_t(0);
  std::vector<std::size_t> rankOfLeader(countTriangles + i_shape.seams.size(), NO_PART);
  m_partOfTriangle.resize(countTriangles);
  for (std::size_t i = 0; i < countTriangles; ++i)
  {
    std::size_t& rank = rankOfLeader[sets.leader(i)];
    if (rank == NO_PART)
    {
      rank = m_parts.size();
      m_parts.emplace_back();
      m_parts.back().vertex = i_shape.triangles[i][0];
    }
    m_partOfTriangle[i] = rank;
  }

  for (std::size_t begin = 0, end; begin < edges.size(); begin = end)
  {
    int balance = 0;
    for (end = begin; end < edges.size() && isSame(edges[begin], edges[end]); ++end)
      balance += edges[end].isForward ? 1 : -1;
    const std::size_t rank = rankOfLeader[sets.leader(edges[begin].triangle)];
    if (rank == NO_PART)
      continue;
    CPart& part = m_parts[rank];
    part.isClosed = part.isClosed && (end - begin) % 2 == 0;
    part.isOriented = part.isOriented && balance == 0;
  }
  // A single triangle, which may be a point or a segment, bounds nothing.
  std::vector<std::size_t> counts(m_parts.size(), 0);
  for (const std::size_t part : m_partOfTriangle)
    ++counts[part];
  for (std::size_t i = 0; i < m_parts.size(); ++i)
    m_parts[i].isClosed = m_parts[i].isClosed && counts[i] > 1;
}

/// A part that is turned inside out is a hollow within another part, or else a solid that was written the wrong way.
void ClumSolids::turnOutward(const ClumSweptTriangles& i_shape)
{
  std::vector<double> volumes(m_parts.size(), 0.0);
  ClumVect3 corners[3];
  const ClumVect3 origin = i_shape.vertices.empty() ? ClumVect3() : i_shape.vertices[0].toVect3();
  for (std::size_t i = 0; i < m_partOfTriangle.size(); ++i)
  {
    solidCorners(i_shape, i, corners);
    volumes[m_partOfTriangle[i]] += (corners[0] - origin).scalarProduct((corners[1] - origin) * (corners[2] - origin));
  }
  const auto isBounding = [&](std::size_t p, double i_sign)
  { return m_parts[p].isClosed && m_parts[p].isOriented && volumes[p] * i_sign > 0.0; };
  const auto isOutside = [&](const ClumVect3& i_point)
  {
    int winding = 0;
    for (std::size_t i = 0; i < m_partOfTriangle.size(); ++i)
      if (isBounding(m_partOfTriangle[i], 1.0))
      {
        solidCorners(i_shape, i, corners);
        winding += lumRayCrossing(i_point, corners);
      }
    return winding <= 0;
  };
  for (std::size_t p = 0; p < m_parts.size(); ++p)
  {
    if (!isBounding(p, -1.0))
      continue;
    std::vector<std::size_t> triangles;
    for (std::size_t i = 0; i < m_partOfTriangle.size(); ++i)
      if (m_partOfTriangle[i] == p)
        triangles.push_back(i);
    const std::size_t step = 1 + triangles.size() / SOLID_SAMPLES;
    for (std::size_t i = 0; i < triangles.size() && m_parts[p].sign > 0; i += step)
      if (isOutside(i_shape.vertices[i_shape.triangles[triangles[i]][0]].toVect3()))
        m_parts[p].sign = -1;
  }
}
