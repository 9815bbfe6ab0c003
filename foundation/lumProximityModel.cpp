#include "foundation/lumProximityModel.h"

#include "foundation/lumLeafGeometry.h"
#include "foundation/lumProximityBalls.h"
#include "foundation/lumProximityTree.h"
#include "foundation/lumSolids.h"

#include <boost/container/small_vector.hpp>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>

namespace
{
constexpr double MODEL_LARGEST = 1e14;
constexpr double MODEL_RADIUS_SLACK = 1.0 + 1e-12;
/// A shape is long if its box is so many times as long as thick.
constexpr double MODEL_LONG = 2.0;

const char s_proximityKind = 0;

const CProximityKernel* fastestProximityKernel()
{
  return lumProximityKernels().back();
}

std::atomic<const CProximityKernel*>& usedProximityKernel()
{
  static std::atomic<const CProximityKernel*> s_used{fastestProximityKernel()};
  return s_used;
}

/// What the ray from a point crosses, added up over the leaves that it may meet.
struct CModelCrossings
{
  const CProximityPacket* packets;
  const std::vector<CProximityModel::CPart>& parts;
  const std::vector<std::uint32_t>& partOfTriangle;
  ClumVect3 point;
  int winding = 0;
  boost::container::small_vector<std::uint32_t, 8> oddParts;

  void addLeaf(std::uint32_t i_leaf)
  {
    const CProximityPacket& packet = packets[i_leaf & PROXIMITY_PACKET_MASK];
    const unsigned int first = (i_leaf >> PROXIMITY_FIRST_SHIFT) & 3u;
    const unsigned int count = ((i_leaf >> PROXIMITY_COUNT_SHIFT) & 3u) + 1u;
    for (unsigned int lane = first; lane < first + count; ++lane)
      add(packet, lane);
  }

  void add(const CProximityPacket& i_packet, unsigned int i_lane)
  {
    const std::uint32_t rank = partOfTriangle.empty() ? 0 : partOfTriangle[i_packet.id[i_lane]];
    const CProximityModel::CPart& part = parts[rank];
    if (!part.isClosed)
      return;
    ClumVect3 corners[3];
    for (unsigned int k = 0; k < 3; ++k)
      corners[k].setValue(i_packet.corners[k][0][i_lane], i_packet.corners[k][1][i_lane],
                          i_packet.corners[k][2][i_lane]);
    const int crossing = lumRayCrossing(point, corners);
    if (crossing == 0)
      return;
    if (part.isOriented)
    {
      winding += crossing * part.sign;
      return;
    }
    const auto found = std::find(oddParts.begin(), oddParts.end(), rank);
    if (found == oddParts.end())
      oddParts.push_back(rank);
    else
      oddParts.erase(found);
  }

  static void visit(void* io_data, std::uint32_t i_leaf) { static_cast<CModelCrossings*>(io_data)->addLeaf(i_leaf); }
};
} // namespace

const void* CProximityModel::kindOfModel()
{
  return &s_proximityKind;
}

ClumCollisionModelConstShPtr CProximityModel::create(const ClumSweptTriangles& i_shape)
{
  if (i_shape.triangles.empty() || !(i_shape.radius <= MODEL_LARGEST))
    return ClumCollisionModelConstShPtr();
  for (const ClumPoint3& vertex : i_shape.vertices)
    for (unsigned int k = 0; k < 3; ++k)
      if (!(std::fabs(vertex[k]) <= MODEL_LARGEST))
        return ClumCollisionModelConstShPtr();
  return ClumCollisionModelConstShPtr(new CProximityModel(i_shape));
}

CProximityModel::CProximityModel(const ClumSweptTriangles& i_shape) : ClumCollisionModel(kindOfModel())
{
  m_sweep = i_shape.radius;
  m_excess = i_shape.excess;
  findBounds(i_shape);
  const std::uint32_t countNodeBalls = buildTree(i_shape);
  findCore();
  findParts(i_shape);
  lumFindProximityBalls(*this, countNodeBalls, m_nodeBalls, m_balls);
  m_tree.nodeBalls = m_nodeBalls.data();
  m_tree.balls = m_balls.data();
  m_tree.countNodeBalls = static_cast<std::uint32_t>(m_nodeBalls.size());
  m_tree.countBalls = static_cast<std::uint32_t>(m_balls.size());
}

void CProximityModel::findBounds(const ClumSweptTriangles& i_shape)
{
  const double infinity = std::numeric_limits<double>::infinity();
  ClumVect3 low(infinity, infinity, infinity), high(-infinity, -infinity, -infinity);
  const auto forEachCorner = [&](auto i_function)
  {
    for (const ClumSweptTriangles::TTriangle& triangle : i_shape.triangles)
      for (const unsigned int vertex : triangle)
        i_function(i_shape.vertices[vertex].toVect3());
  };
  forEachCorner(
    [&](const ClumVect3& corner)
    {
      for (unsigned int k = 0; k < 3; ++k)
      {
        low[k] = std::min(low[k], corner[k]);
        high[k] = std::max(high[k], corner[k]);
      }
    });
  const ClumVect3 center = low + (high - low) * 0.5;
  double radius = 0.0;
  forEachCorner([&](const ClumVect3& corner) { radius = std::max(radius, (corner - center).squaredNorm()); });
  m_center = ClumPoint3(center);
  m_low = low - center;
  m_high = high - center;
  m_tree.radius = std::sqrt(radius) * MODEL_RADIUS_SLACK;
  m_radius = m_tree.radius + m_sweep;
}

std::uint32_t CProximityModel::buildTree(const ClumSweptTriangles& i_shape)
{
  const ClumVect3 center = m_center.toVect3();
  std::vector<ClumVect3> corners;
  corners.reserve(3 * i_shape.triangles.size());
  for (const ClumSweptTriangles::TTriangle& triangle : i_shape.triangles)
    for (const unsigned int vertex : triangle)
      corners.push_back(i_shape.vertices[vertex].toVect3() - center);
  const std::uint32_t countLargeNodes = lumBuildProximityTree(corners, m_nodes, m_boxes, m_packets, m_places);
  m_tree.nodes = m_nodes.data();
  m_tree.boxes = m_boxes.data();
  m_tree.packets = m_packets.data();
  const CProximityBox& box = m_boxes[0];
  for (unsigned int k = 0; k < 3; ++k)
  {
    m_around.center[k] = box.center[k];
    m_around.half[k] = box.axes[k][3];
    for (unsigned int c = 0; c < 3; ++c)
      m_around.axes[k][c] = box.axes[k][c];
  }
  return countLargeNodes;
}

void CProximityModel::findCore()
{
  const double* half = m_around.half;
  const ClumVect3 axis = ClumVect3(m_around.axes[0][0], m_around.axes[0][1], m_around.axes[0][2]).normalized();
  if (!(half[0] > MODEL_LONG * std::sqrt(half[1] * half[1] + half[2] * half[2])))
    return;
  const ClumVect3 center(m_around.center[0], m_around.center[1], m_around.center[2]);
  double length = 0.0, square = 0.0;
  for (const CProximityPacket& packet : m_packets)
    for (unsigned int lane = 0; lane < 4; ++lane)
      for (const auto& corner : packet.corners)
      {
        const ClumVect3 offset = ClumVect3(corner[0][lane], corner[1][lane], corner[2][lane]) - center;
        const double along = axis.scalarProduct(offset);
        length = std::max(length, std::fabs(along));
        square = std::max(square, (offset - axis * along).squaredNorm());
      }
  m_core = {center, axis, length * MODEL_RADIUS_SLACK, std::sqrt(square) * MODEL_RADIUS_SLACK};
}

void CProximityModel::findParts(const ClumSweptTriangles& i_shape)
{
  const ClumSolids solids(i_shape);
  const ClumVect3 center = m_center.toVect3();
  for (const ClumSolids::CPart& part : solids.parts())
    m_parts.push_back(
      {i_shape.vertices[part.vertex].toVect3() - center, 0.0, part.isClosed, part.isOriented, part.sign});
  std::vector<ClumVect3> lows(m_parts.size()), highs(m_parts.size());
  for (std::size_t i = 0; i < m_parts.size(); ++i)
    lows[i] = highs[i] = m_parts[i].point;
  for (std::size_t i = 0; i < i_shape.triangles.size(); ++i)
    for (const unsigned int vertex : i_shape.triangles[i])
    {
      const std::size_t rank = solids.part(i);
      const ClumVect3 corner = i_shape.vertices[vertex].toVect3() - center;
      m_parts[rank].reach = std::max(m_parts[rank].reach, (corner - m_parts[rank].point).norm());
      for (unsigned int k = 0; k < 3; ++k)
      {
        lows[rank][k] = std::min(lows[rank][k], corner[k]);
        highs[rank][k] = std::max(highs[rank][k], corner[k]);
      }
    }
  for (std::size_t i = 0; i < m_parts.size(); ++i)
  {
    m_areSolidsSealed = m_areSolidsSealed && (!m_parts[i].isClosed || solids.parts()[i].isSealed);
    if (m_parts[i].isClosed)
      m_solidSize =
        std::max(m_solidSize, std::min(2.0 * m_parts[i].reach, (highs[i] - lows[i]).norm()) * MODEL_RADIUS_SLACK);
    for (unsigned int k = 0; k < 3; ++k)
      m_partPoints[k].push_back(static_cast<float>(m_parts[i].point[k]));
  }
  if (m_parts.size() > 1)
    for (std::size_t i = 0; i < i_shape.triangles.size(); ++i)
      m_partOfTriangle.push_back(static_cast<std::uint32_t>(solids.part(i)));
  m_partOfTriangle.shrink_to_fit();
}

void CProximityModel::corners(std::uint32_t i_place, ClumVect3 o_corners[3]) const
{
  const CProximityPacket& packet = m_packets[i_place >> 2];
  const unsigned int lane = i_place & 3u;
  for (unsigned int k = 0; k < 3; ++k)
    o_corners[k].setValue(packet.corners[k][0][lane], packet.corners[k][1][lane], packet.corners[k][2][lane]);
}

bool CProximityModel::isSurrounded(const ClumVect3& i_point) const
{
  CModelCrossings crossings = {m_packets.data(), m_parts, m_partOfTriangle, i_point, 0, {}};
  lumProximityKernel().ray(m_tree, i_point.data(), m_high.x() - i_point.x(), &CModelCrossings::visit, &crossings);
  return crossings.winding != 0 || !crossings.oddParts.empty();
}

CProximityModel::CNearBall CProximityModel::nearBall(const ClumVect3& i_center, double i_radius) const
{
  const double size = std::fabs(i_center.x()) + std::fabs(i_center.y()) + std::fabs(i_center.z());
  const double reach = i_radius + 1e-6 * (i_radius + m_radius + size);
  return {static_cast<float>(i_center.x()), static_cast<float>(i_center.y()), static_cast<float>(i_center.z()),
          static_cast<float>(reach * reach * (1.0 + 1e-6))};
}

std::size_t CProximityModel::nextPartNear(const CNearBall& i_ball, std::size_t i_from) const
{
  constexpr std::size_t BLOCK = 16;
  const float *xs = m_partPoints[0].data(), *ys = m_partPoints[1].data(), *zs = m_partPoints[2].data();
  const CNearBall ball = i_ball;
  const auto isNear = [=](std::size_t i)
  {
    const float x = xs[i] - ball.x, y = ys[i] - ball.y, z = zs[i] - ball.z;
    return !(x * x + y * y + z * z > ball.square);
  };
  const std::size_t count = m_parts.size();
  std::size_t i = i_from;
  while (i < count)
  {
    // Mostly none of a block is.
    if (i % BLOCK == 0 && i + BLOCK <= count)
    {
      int countNear = 0;
      for (std::size_t k = i; k < i + BLOCK; ++k)
        countNear += isNear(k);
      if (countNear == 0)
      {
        i += BLOCK;
        continue;
      }
    }
    if (isNear(i))
      return i;
    ++i;
  }
  return count;
}

double CProximityModel::support(const ClumVect3& i_direction) const
{
  double farthest = -std::numeric_limits<double>::infinity();
  for (const CProximityPacket& packet : m_packets)
    for (unsigned int lane = 0; lane < 4; ++lane)
      for (const auto& corner : packet.corners)
        farthest = std::max(farthest, i_direction.x() * corner[0][lane] + i_direction.y() * corner[1][lane] +
                                        i_direction.z() * corner[2][lane]);
  return farthest;
}

std::size_t CProximityModel::countBytes() const
{
  return sizeof *this + m_nodeBalls.capacity() * sizeof(CProximityBalls) + m_balls.capacity() * sizeof(CProximityBall) +
         m_nodes.capacity() * sizeof(CProximityNode) + m_boxes.capacity() * sizeof(CProximityBox) +
         m_packets.capacity() * sizeof(CProximityPacket) + m_places.capacity() * sizeof(std::uint32_t) +
         m_partOfTriangle.capacity() * sizeof(std::uint32_t) + m_parts.capacity() * (sizeof(CPart) + 3 * sizeof(float));
}

TProximityKernels lumProximityKernels()
{
  TProximityKernels kernels = {&g_proximityPortable};
#ifdef LUM_PROXIMITY_X86
  kernels.push_back(&g_proximitySse2);
  if (__builtin_cpu_supports("avx2"))
    kernels.push_back(&g_proximityAvx2);
#endif
  return kernels;
}

const CProximityKernel& lumProximityKernel()
{
  return *usedProximityKernel().load(std::memory_order_relaxed);
}

void lumUseProximityKernel(const CProximityKernel& i_kernel)
{
  usedProximityKernel().store(&i_kernel, std::memory_order_relaxed);
}
