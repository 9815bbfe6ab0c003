#include "foundation/lumFCLCollisionToolkit.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumJoinedTriangles.h"
#include "foundation/lumLeafGeometry.h"
#include "foundation/lumSolids.h"
#include "foundation/lumTriangleDistance.h"

#include <boost/container/small_vector.hpp>
#include <fcl/geometry/bvh/BVH_model.h>
#include <fcl/math/bv/OBB.h>
#include <fcl/math/bv/RSS.h>

#include <algorithm>
#include <limits>

LUM_DESCRIBE(ClumFCLCollisionToolkit)
{
  i_class.creates("()", &Self::create);
}

namespace
{
using TFclMatrix = fcl::Matrix3d;
using TFclVector = fcl::Vector3d;

constexpr double FCL_INFINITY = std::numeric_limits<double>::infinity();
/// What is taken off a distance for rounding, in parts of the sizes involved, and of how far the poses reach.
constexpr double FCL_SIZE_SLACK = 1e-11;
constexpr double FCL_POSE_SLACK = 1e-15;
constexpr std::size_t FCL_MAX_CONVEX_TRIANGLES = 1100;

TFclVector toFcl(const ClumVect3& i_vector)
{
  return TFclVector(i_vector.x(), i_vector.y(), i_vector.z());
}

/// A node of a tree: the rank of the first of two adjacent children, or minus 1 minus the rank of a triangle.
template <class VOLUME>
struct CFclNode
{
  VOLUME volume;
  double size;
  int child;

  bool isLeaf() const { return child < 0; }
  std::size_t triangle() const { return static_cast<std::size_t>(-child - 1); }
};
using CFclBallNode = CFclNode<fcl::RSSd>;
using CFclBoxNode = CFclNode<fcl::OBBd>;

struct CFclBall
{
  ClumVect3 center;
  double radius;
};

/// An axis-parallel box around the triangles of a node.
struct CFclRange
{
  ClumVect3 low{FCL_INFINITY, FCL_INFINITY, FCL_INFINITY};
  ClumVect3 high{-FCL_INFINITY, -FCL_INFINITY, -FCL_INFINITY};

  void add(const ClumVect3& i_point)
  {
    for (unsigned int k = 0; k < 3; ++k)
    {
      low[k] = std::min(low[k], i_point[k]);
      high[k] = std::max(high[k], i_point[k]);
    }
  }
  /// True if the ray from the point along +x may meet the box.
  bool isOnRay(const ClumVect3& i_point) const
  {
    return i_point.x() <= high.x() && i_point.y() >= low.y() && i_point.y() <= high.y() && i_point.z() >= low.z() &&
           i_point.z() <= high.z();
  }
};

const char s_fclKind = 0;

/// A shape as this toolkit keeps it. Coordinates are the leaf's own.
class CFclModel : public ClumCollisionModel
{
public:
  explicit CFclModel(const ClumSweptTriangles& i_shape) : ClumCollisionModel(&s_fclKind), m_solids(i_shape)
  {
    for (const ClumSweptTriangles::TTriangle& triangle : i_shape.triangles)
      for (const unsigned int vertex : triangle)
        m_corners.push_back(i_shape.vertices[vertex].toVect3());
    for (const ClumSolids::CPart& part : m_solids.parts())
      m_partPoints.push_back(i_shape.vertices[part.vertex].toVect3());
    m_sweep = i_shape.radius;
    m_excess = i_shape.excess;
    m_hasSolid = m_solids.hasSolid();
    measure();
    buildTree(i_shape, m_balls);
    buildTree(i_shape, m_boxes);
    holdTriangles(m_balls);
    holdTriangles(m_boxes);
    makeBallsAround();
    makeRanges();
    m_isConvex = findConvex();
  }

  std::size_t countTriangles() const { return m_corners.size() / 3; }
  const ClumVect3* triangle(std::size_t i_rank) const { return &m_corners[3 * i_rank]; }
  const std::vector<CFclBallNode>& balls() const { return m_balls; }
  /// A plain ball around the triangles of a ball node.
  const CFclBall& ballAround(int i_rank) const { return m_ballsAround[i_rank]; }
  const std::vector<CFclBoxNode>& boxes() const { return m_boxes; }
  double sweep() const { return m_sweep; }
  double excess() const { return m_excess; }
  double extent() const { return m_extent; }
  double uncertainty() const { return m_uncertainty; }
  bool hasSolid() const { return m_hasSolid; }
  bool isConvex() const { return m_isConvex; }
  /// A point of each connected part.
  const std::vector<ClumVect3>& partPoints() const { return m_partPoints; }

  /// True if the point lies inside of a closed part. A point of the surface itself may get either answer.
  bool isInside(const ClumVect3& i_point) const
  {
    int winding = 0;
    boost::container::small_vector<std::size_t, 8> oddParts;
    boost::container::small_vector<int, 128> stack;
    stack.push_back(0);
    while (!stack.empty())
    {
      const int rank = stack.back();
      stack.pop_back();
      if (!m_ranges[rank].isOnRay(i_point))
        continue;
      const CFclBoxNode& node = m_boxes[rank];
      if (node.isLeaf())
        addCrossing(i_point, node.triangle(), winding, oddParts);
      else
      {
        stack.push_back(node.child);
        stack.push_back(node.child + 1);
      }
    }
    return winding != 0 || !oddParts.empty();
  }

private:
  template <class LIST>
  void addCrossing(const ClumVect3& i_point, std::size_t i_triangle, int& io_winding, LIST& io_oddParts) const
  {
    const std::size_t rank = m_solids.part(i_triangle);
    const ClumSolids::CPart& part = m_solids.parts()[rank];
    if (!part.isClosed)
      return;
    const int crossing = lumRayCrossing(i_point, triangle(i_triangle));
    if (crossing == 0)
      return;
    if (part.isOriented)
    {
      io_winding += crossing * part.sign;
      return;
    }
    const auto found = std::find(io_oddParts.begin(), io_oddParts.end(), rank);
    if (found == io_oddParts.end())
      io_oddParts.push_back(rank);
    else
      io_oddParts.erase(found);
  }

  void measure()
  {
    CFclRange range;
    for (const ClumVect3& corner : m_corners)
    {
      range.add(corner);
      m_extent = std::max(m_extent, corner.norm() + m_sweep);
    }
    const ClumVect3 center = (range.low + range.high) * 0.5;
    for (const ClumVect3& corner : m_corners)
      m_radius = std::max(m_radius, (corner - center).norm() + m_sweep);
    m_center = ClumPoint3(center);
    m_radius *= 1.0 + FCL_SIZE_SLACK;
    for (std::size_t i = 0; i < countTriangles(); ++i)
      m_uncertainty = std::max(m_uncertainty, lumTriangleUncertainty(triangle(i)));
  }

  template <class VOLUME>
  void buildTree(const ClumSweptTriangles& i_shape, std::vector<CFclNode<VOLUME>>& o_nodes)
  {
    if (countTriangles() == 1)
    {
      o_nodes.push_back({VOLUME(), 0.0, -1});
      wrapTriangle(o_nodes[0].volume);
      o_nodes[0].size = o_nodes[0].volume.size();
      return;
    }
    std::vector<TFclVector> vertices;
    for (const ClumPoint3& vertex : i_shape.vertices)
      vertices.push_back(toFcl(vertex.toVect3()));
    std::vector<fcl::Triangle> triangles;
    for (const ClumSweptTriangles::TTriangle& triangle : i_shape.triangles)
      triangles.emplace_back(triangle[0], triangle[1], triangle[2]);
    fcl::BVHModel<VOLUME> tree;
    tree.beginModel(static_cast<int>(triangles.size()), static_cast<int>(vertices.size()));
    tree.addSubModel(vertices, triangles);
    tree.endModel();
    for (int i = 0; i < tree.getNumBVs(); ++i)
    {
      const fcl::BVNode<VOLUME>& node = tree.getBV(i);
      o_nodes.push_back({node.bv, node.bv.size(), node.isLeaf() ? -node.primitiveId() - 1 : node.leftChild()});
    }
  }

  /// The volumes of a single triangle are not left to FCL, whose fit needs some area.
  void firstTriangleFrame(TFclMatrix& o_axes) const
  {
    ClumMat4 frame;
    frame.setAsFrameWithBaseVectorAxis(ClumMat4::X_AXIS, m_corners[1] - m_corners[0]);
    for (unsigned int r = 0; r < 3; ++r)
      for (unsigned int c = 0; c < 3; ++c)
        o_axes(r, c) = frame(r, c);
  }
  void wrapTriangle(fcl::RSSd& o_volume) const
  {
    firstTriangleFrame(o_volume.axis);
    o_volume.To = toFcl(m_corners[0]);
    o_volume.l[0] = (m_corners[1] - m_corners[0]).norm();
    o_volume.l[1] = 0.0;
    o_volume.r = 0.0;
  }
  void wrapTriangle(fcl::OBBd& o_volume) const
  {
    firstTriangleFrame(o_volume.axis);
    o_volume.To = toFcl((m_corners[0] + m_corners[1]) * 0.5);
    o_volume.extent.setZero();
  }

  /// Grows a volume where a point sticks out of it.
  static void hold(fcl::RSSd& io_volume, const TFclVector& i_point)
  {
    TFclVector local = io_volume.axis.transpose() * (i_point - io_volume.To);
    for (unsigned int k = 0; k < 2; ++k)
      local[k] -= std::min(std::max(local[k], 0.0), io_volume.l[k]);
    io_volume.r = std::max(io_volume.r, local.norm());
  }
  static void hold(fcl::OBBd& io_volume, const TFclVector& i_point)
  {
    const TFclVector local = io_volume.axis.transpose() * (i_point - io_volume.To);
    io_volume.extent = io_volume.extent.cwiseMax(local.cwiseAbs());
  }

  /// Calls the function with each node's rank and each corner of the triangles that the node holds.
  template <class VOLUME, class FUNCTION>
  void forEachCorner(const std::vector<CFclNode<VOLUME>>& i_nodes, FUNCTION i_function) const
  {
    std::vector<int> parents(i_nodes.size(), -1);
    std::vector<int> leaves(countTriangles(), 0);
    for (int i = 0; i < static_cast<int>(i_nodes.size()); ++i)
    {
      const CFclNode<VOLUME>& node = i_nodes[i];
      if (node.isLeaf())
        leaves[node.triangle()] = i;
      else
        parents[node.child] = parents[node.child + 1] = i;
    }
    for (std::size_t i = 0; i < countTriangles(); ++i)
      for (int rank = leaves[i]; rank >= 0; rank = parents[rank])
        for (unsigned int k = 0; k < 3; ++k)
          i_function(rank, triangle(i)[k]);
  }

  /// Makes sure that every node holds all of its triangles.
  template <class VOLUME>
  void holdTriangles(std::vector<CFclNode<VOLUME>>& io_nodes) const
  {
    forEachCorner(io_nodes,
                  [&](int i_rank, const ClumVect3& i_corner) { hold(io_nodes[i_rank].volume, toFcl(i_corner)); });
  }

  void makeBallsAround()
  {
    for (const CFclBallNode& node : m_balls)
    {
      const TFclVector center = node.volume.To + 0.5 * (node.volume.axis.col(0) * node.volume.l[0] +
                                                        node.volume.axis.col(1) * node.volume.l[1]);
      m_ballsAround.push_back({ClumVect3(center[0], center[1], center[2]), 0.0});
    }
    forEachCorner(m_balls,
                  [this](int i_rank, const ClumVect3& i_corner)
                  {
                    CFclBall& ball = m_ballsAround[i_rank];
                    ball.radius = std::max(ball.radius, (i_corner - ball.center).norm());
                  });
  }

  /// Children stand behind their parents.
  void makeRanges()
  {
    m_ranges.resize(m_boxes.size());
    for (std::size_t i = m_boxes.size(); i-- > 0;)
      if (m_boxes[i].isLeaf())
        for (unsigned int k = 0; k < 3; ++k)
          m_ranges[i].add(triangle(m_boxes[i].triangle())[k]);
      else
        for (int child : {m_boxes[i].child, m_boxes[i].child + 1})
        {
          m_ranges[i].add(m_ranges[child].low);
          m_ranges[i].add(m_ranges[child].high);
        }
  }

  /// True for a point, a segment, and a small closed surface that lies behind the plane of each of its triangles.
  bool findConvex() const
  {
    if (countTriangles() == 1)
      return true;
    if (m_solids.parts().size() != 1 || !m_hasSolid || countTriangles() > FCL_MAX_CONVEX_TRIANGLES)
      return false;
    for (std::size_t i = 0; i < countTriangles(); ++i)
    {
      const ClumVect3* face = triangle(i);
      const ClumVect3 normal = ((face[1] - face[0]) * (face[2] - face[0])).normalized() * m_solids.parts()[0].sign;
      for (const ClumVect3& corner : m_corners)
        if (normal.scalarProduct(corner - face[0]) > 1e-9 * m_extent)
          return false;
    }
    return true;
  }

  std::vector<ClumVect3> m_corners; ///< three of each triangle
  std::vector<CFclBallNode> m_balls;
  std::vector<CFclBall> m_ballsAround; ///< of the ball nodes
  std::vector<CFclBoxNode> m_boxes;
  std::vector<CFclRange> m_ranges; ///< of the box nodes
  ClumSolids m_solids;
  std::vector<ClumVect3> m_partPoints;
  double m_sweep = 0.0;
  double m_excess = 0.0;
  double m_extent = 0.0;      ///< distance of the farthest point from the origin
  double m_uncertainty = 0.0; ///< of distances to the thinnest triangle
  bool m_hasSolid = false;
  bool m_isConvex = false;
};

/// Two placed models, seen in the coordinates of the first.
struct CFclPair
{
  CFclPair(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
           const ClumMat4& i_poseB)
    : a(static_cast<const CFclModel&>(i_a)), b(static_cast<const CFclModel&>(i_b)), poseA(i_poseA), poseB(i_poseB),
      relative(i_poseA.inverse() * i_poseB), sweep(a.sweep() + b.sweep())
  {
    for (unsigned int c = 0; c < 3; ++c)
      for (unsigned int r = 0; r < 3; ++r)
        rotation(r, c) = relative(r, c);
    const ClumVect3 offset = relative.translation();
    translation = toFcl(offset);
    slack = FCL_SIZE_SLACK * (a.extent() + b.extent() + offset.norm()) +
            FCL_POSE_SLACK * (poseA.translation().norm() + poseB.translation().norm()) + a.uncertainty() +
            b.uncertainty();
  }

  /// A lower bound from the enclosing balls.
  double ballGap() const { return (relative * b.center() - a.center()).norm() - a.radius() - b.radius(); }

  double distance(const CFclBallNode& i_a, const CFclBallNode& i_b) const
  {
    const fcl::RSSd& va = i_a.volume;
    const fcl::RSSd& vb = i_b.volume;
    const TFclMatrix turned = va.axis.transpose() * (rotation * vb.axis);
    const TFclVector moved = va.axis.transpose() * (rotation * vb.To + translation - va.To);
    return std::max(0.0, fcl::rectDistance(turned, moved, va.l, vb.l) - va.r - vb.r);
  }

  bool overlap(const CFclBoxNode& i_a, const CFclBoxNode& i_b) const
  {
    const fcl::OBBd& va = i_a.volume;
    const fcl::OBBd& vb = i_b.volume;
    const TFclMatrix turned = va.axis.transpose() * (rotation * vb.axis);
    const TFclVector moved = va.axis.transpose() * (rotation * vb.To + translation - va.To);
    const TFclVector grown = va.extent.array() + (sweep + slack);
    return !fcl::obbDisjoint(turned, moved, grown, vb.extent);
  }

  /// The corners of a triangle of b.
  void placed(std::size_t i_triangle, ClumVect3 o_corners[3]) const
  {
    for (unsigned int k = 0; k < 3; ++k)
      o_corners[k] = relative * b.triangle(i_triangle)[k] + relative.translation();
  }

  /// True if some part of one lies inside a closed part of the other, given that the surfaces are apart.
  bool isNested() const
  {
    if (a.hasSolid())
      for (const ClumVect3& point : b.partPoints())
        if (a.isInside(relative * point + relative.translation()))
          return true;
    if (!b.hasSolid())
      return false;
    const ClumMat4 back = relative.inverse();
    for (const ClumVect3& point : a.partPoints())
      if (b.isInside(back * point + back.translation()))
        return true;
    return false;
  }

  const CFclModel& a;
  const CFclModel& b;
  const ClumMat4& poseA;
  const ClumMat4& poseB;
  ClumMat4 relative; ///< the frame of b in a's coordinates
  TFclMatrix rotation;
  TFclVector translation;
  double sweep; ///< of both together
  double slack;
};

/// Splits the larger of two nodes: calls the function with the ranks of the two pairs that come of it.
template <class NODE, class FUNCTION>
void splitFclPair(const std::vector<NODE>& i_a, const std::vector<NODE>& i_b, int i_rankA, int i_rankB,
                  FUNCTION i_function)
{
  const NODE& a = i_a[i_rankA];
  const NODE& b = i_b[i_rankB];
  if (b.isLeaf() || (!a.isLeaf() && a.size > b.size))
    i_function(a.child, i_rankB, a.child + 1, i_rankB);
  else
    i_function(i_rankA, b.child, i_rankA, b.child + 1);
}

/// Looks for the two nearest triangles, the nearest volumes first, and passes over what cannot better the answer.
///
/// All distances are those of the inner triangles, without the sweep.
class CFclDistanceSearch
{
public:
  CFclDistanceSearch(const CFclPair& i_pair, double i_cap, double i_accuracy, double i_stopBelow)
    : m_pair(i_pair), m_cap(i_cap + i_pair.sweep), m_share(1.0 - i_accuracy),
      m_stop(i_stopBelow + i_pair.sweep + i_pair.slack), m_bound(m_cap)
  {
  }

  void tryTriangles(unsigned int i_a, unsigned int i_b)
  {
    if (i_a < m_pair.a.countTriangles() && i_b < m_pair.b.countTriangles())
      measure(i_a, i_b);
  }

  /// @param i_rootDistance that of the two root volumes.
  void run(double i_rootDistance)
  {
    CTask task = {i_rootDistance, 0, 0};
    while (m_best > m_stop)
    {
      const CFclBallNode& a = m_pair.a.balls()[task.a];
      const CFclBallNode& b = m_pair.b.balls()[task.b];
      if (task.distance >= m_bound)
        m_passedOver = std::min(m_passedOver, task.distance);
      else if (a.isLeaf() && b.isLeaf())
        measure(static_cast<unsigned int>(a.triangle()), static_cast<unsigned int>(b.triangle()));
      else
      {
        task = split(task);
        continue;
      }
      if (m_stack.empty())
        return;
      task = m_stack.back();
      m_stack.pop_back();
    }
    m_passedOver = std::min(m_passedOver, task.distance);
    for (const CTask& left : m_stack)
      m_passedOver = std::min(m_passedOver, left.distance);
  }

  bool isContact() const { return m_best <= m_pair.sweep + m_pair.slack; }
  double lower() const { return std::min(m_best, m_passedOver); }
  double best() const { return m_best; }
  /// From the point found on a to that on b, in the coordinates of a.
  ClumVect3 direction() const { return (m_onB - m_onA).normalized(); }

  /// Writes the two points of the swept shapes, in world coordinates.
  void writePoints(ClumDistanceResult& o_result) const
  {
    if (m_best == FCL_INFINITY)
      return;
    o_result.hasTriangles = o_result.hasPoints = true;
    o_result.triangleA = m_triangleA;
    o_result.triangleB = m_triangleB;
    o_result.pointA = m_pair.poseA * ClumPoint3(m_onA + direction() * m_pair.a.sweep());
    o_result.pointB = m_pair.poseA * ClumPoint3(m_onB - direction() * m_pair.b.sweep());
  }

private:
  struct CTask
  {
    double distance;
    int a;
    int b;
  };

  /// @return the nearer of the two pairs; the other waits, or is passed over.
  CTask split(const CTask& i_task)
  {
    CTask nearer = i_task, farther = i_task;
    splitFclPair(m_pair.a.balls(), m_pair.b.balls(), i_task.a, i_task.b,
                 [&](int a1, int b1, int a2, int b2)
                 {
                   nearer = {distance(a1, b1, i_task.distance), a1, b1};
                   farther = {distance(a2, b2, i_task.distance), a2, b2};
                 });
    if (farther.distance < nearer.distance)
      std::swap(nearer, farther);
    if (farther.distance < m_bound)
      m_stack.push_back(farther);
    else
      m_passedOver = std::min(m_passedOver, farther.distance);
    return nearer;
  }

  /// A lower bound for two nodes.
  /// @param i_known a bound that holds for them already.
  double distance(int i_a, int i_b, double i_known)
  {
    const CFclBallNode& a = m_pair.a.balls()[i_a];
    const CFclBallNode& b = m_pair.b.balls()[i_b];
    double known = i_known;
    // Volumes hold a large triangle badly: what is left of the other side is measured against the triangle itself.
    if (a.isLeaf() || b.isLeaf())
      known = std::max(known, a.isLeaf() ? gapToTriangleOfA(a.triangle(), i_b) : gapToTriangleOfB(i_a, b.triangle()));
    if (known >= m_bound || (a.isLeaf() && b.isLeaf()))
      return known;
    return std::max(known, m_pair.distance(a, b));
  }

  double gapToTriangleOfA(std::size_t i_triangle, int i_b) const
  {
    const CFclBall& ball = m_pair.b.ballAround(i_b);
    const ClumVect3 center = m_pair.relative * ball.center + m_pair.relative.translation();
    return lumPointTriangleDistance(center, m_pair.a.triangle(i_triangle)) - ball.radius;
  }

  double gapToTriangleOfB(int i_a, std::size_t i_triangle)
  {
    const CFclBall& ball = m_pair.a.ballAround(i_a);
    return lumPointTriangleDistance(ball.center, placed(i_triangle)) - ball.radius;
  }

  /// The corners of a triangle of b in the coordinates of a.
  const ClumVect3* placed(std::size_t i_triangle)
  {
    if (i_triangle != m_placedTriangle)
      m_pair.placed(i_triangle, m_placed);
    m_placedTriangle = i_triangle;
    return m_placed;
  }

  void measure(unsigned int i_a, unsigned int i_b)
  {
    ClumVect3 onA, onB;
    const double found = lumTriangleDistance(m_pair.a.triangle(i_a), placed(i_b), onA, onB);
    if (found >= m_best)
      return;
    m_best = found;
    m_onA = onA;
    m_onB = onB;
    m_triangleA = i_a;
    m_triangleB = i_b;
    m_bound = std::min(m_cap, m_pair.sweep + (found - m_pair.sweep) * m_share);
  }

  const CFclPair& m_pair;
  double m_cap;
  double m_share;
  double m_stop;  ///< a distance with which the search ends
  double m_bound; ///< what is not nearer is passed over
  double m_best = FCL_INFINITY;
  double m_passedOver = FCL_INFINITY;
  ClumVect3 m_onA, m_onB; ///< in the coordinates of a
  unsigned int m_triangleA = 0, m_triangleB = 0;
  std::size_t m_placedTriangle = std::numeric_limits<std::size_t>::max();
  ClumVect3 m_placed[3]; ///< the corners of that triangle of b, in the coordinates of a
  boost::container::small_vector<CTask, 128> m_stack;
};

/// True if all corners lie farther than `i_margin` on one side of the triangle's plane.
bool areFclCornersBeyond(const ClumVect3 i_face[3], const ClumVect3 i_corners[3], double i_margin)
{
  const ClumVect3 normal = (i_face[1] - i_face[0]) * (i_face[2] - i_face[0]);
  const double margin = i_margin * normal.norm();
  double heights[3];
  for (unsigned int k = 0; k < 3; ++k)
    heights[k] = normal.scalarProduct(i_corners[k] - i_face[0]);
  return std::min({heights[0], heights[1], heights[2]}) > margin ||
         std::max({heights[0], heights[1], heights[2]}) < -margin;
}

bool areFclTrianglesTouching(const CFclPair& i_pair, std::size_t i_a, std::size_t i_b)
{
  ClumVect3 corners[3], onA, onB;
  i_pair.placed(i_b, corners);
  const double reach = i_pair.sweep + i_pair.slack;
  const ClumVect3* face = i_pair.a.triangle(i_a);
  if (areFclCornersBeyond(face, corners, reach) || areFclCornersBeyond(corners, face, reach))
    return false;
  return lumTriangleDistance(face, corners, onA, onB) <= reach;
}

bool areFclSurfacesTouching(const CFclPair& i_pair, ClumTrianglePair* io_touching)
{
  if (io_touching && io_touching->a < i_pair.a.countTriangles() && io_touching->b < i_pair.b.countTriangles() &&
      areFclTrianglesTouching(i_pair, io_touching->a, io_touching->b))
    return true;
  const std::vector<CFclBoxNode>& boxesA = i_pair.a.boxes();
  const std::vector<CFclBoxNode>& boxesB = i_pair.b.boxes();
  boost::container::small_vector<std::pair<int, int>, 128> stack;
  stack.push_back({0, 0});
  while (!stack.empty())
  {
    const auto [a, b] = stack.back();
    stack.pop_back();
    if (!i_pair.overlap(boxesA[a], boxesB[b]))
      continue;
    if (boxesA[a].isLeaf() && boxesB[b].isLeaf())
    {
      const ClumTrianglePair met = {static_cast<unsigned int>(boxesA[a].triangle()),
                                    static_cast<unsigned int>(boxesB[b].triangle())};
      if (!areFclTrianglesTouching(i_pair, met.a, met.b))
        continue;
      if (io_touching)
        *io_touching = met;
      return true;
    }
    splitFclPair(boxesA, boxesB, a, b,
                 [&](int a1, int b1, int a2, int b2)
                 {
                   stack.push_back({a2, b2});
                   stack.push_back({a1, b1});
                 });
  }
  return false;
}
} // namespace

ClumFCLCollisionToolkit::~ClumFCLCollisionToolkit() = default;

ClumFCLCollisionToolkitShPtr ClumFCLCollisionToolkit::create()
{
  return lumCreate<ClumFCLCollisionToolkit>();
}

ClumFCLCollisionToolkitShPtr
ClumFCLCollisionToolkit::createCopy(const ClumFCLCollisionToolkitConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumCollisionToolkitShPtr ClumFCLCollisionToolkit::clone() const
{
  return createCopy(self());
}

lmStatus ClumFCLCollisionToolkit::init(const ClumFCLCollisionToolkitWkPtr& i_weakPtr)
{
  return ClumCollisionToolkit::init(i_weakPtr);
}

const void* ClumFCLCollisionToolkit::kind() const
{
  return &s_fclKind;
}

ClumCollisionModelConstShPtr ClumFCLCollisionToolkit::makeModel(const ClumLeafGeometry& i_leaf) const
{
  ClumSweptTriangles shape;
  i_leaf.getSweptTriangles(shape);
  return shape.triangles.empty() ? ClumCollisionModelConstShPtr() : ClumCollisionModelConstShPtr(new CFclModel(shape));
}

ClumCollisionModelConstShPtr ClumFCLCollisionToolkit::makeJoinedModel(const std::vector<ClumPlacedLeaf>& i_leaves) const
{
  ClumSweptTriangles joined;
  return lumJoinSweptTriangles(i_leaves, joined) ? ClumCollisionModelConstShPtr(new CFclModel(joined))
                                                 : ClumCollisionModelConstShPtr();
}

bool ClumFCLCollisionToolkit::doAreTouching(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                            const ClumCollisionModel& i_b, const ClumMat4& i_poseB,
                                            ClumTrianglePair* io_pair) const
{
  const CFclPair pair(i_a, i_poseA, i_b, i_poseB);
  if (pair.ballGap() > pair.slack)
    return false;
  return areFclSurfacesTouching(pair, io_pair) || pair.isNested();
}

void ClumFCLCollisionToolkit::doBoundedDistance(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                                const ClumCollisionModel& i_b, const ClumMat4& i_poseB, double i_cap,
                                                double i_relativeAccuracy, double i_stopBelow,
                                                const ClumDistanceResult* i_hint, bool,
                                                ClumDistanceResult& o_result) const
{
  const CFclPair pair(i_a, i_poseA, i_b, i_poseB);
  const double gap = pair.ballGap() - pair.slack;
  if (gap >= i_cap && gap > 0.0)
  {
    o_result.lower = gap;
    o_result.upper = FCL_INFINITY;
    return;
  }
  CFclDistanceSearch search(pair, i_cap, i_relativeAccuracy, std::max(i_stopBelow, 0.0));
  if (i_hint && i_hint->hasTriangles)
    search.tryTriangles(i_hint->triangleA, i_hint->triangleB);
  const double rootDistance = pair.distance(pair.a.balls()[0], pair.b.balls()[0]);
  search.run(rootDistance);
  search.writePoints(o_result);
  const bool isContact = search.isContact() || (rootDistance <= pair.slack && pair.isNested());
  o_result.lower = isContact ? 0.0 : std::max({0.0, gap, search.lower() - pair.sweep - pair.slack});
  o_result.upper = isContact ? 0.0 : search.best() - pair.sweep + pair.a.excess() + pair.b.excess();
}

lmStatus ClumFCLCollisionToolkit::doPenetration(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                                const ClumCollisionModel& i_b, const ClumMat4& i_poseB, double& o_depth,
                                                ClumVect3& o_direction) const
{
  const CFclPair pair(i_a, i_poseA, i_b, i_poseB);
  CFclDistanceSearch search(pair, FCL_INFINITY, 0.0, 0.0);
  search.run(pair.distance(pair.a.balls()[0], pair.b.balls()[0]));
  const bool isNested = pair.isNested();
  if (!search.isContact() && !isNested)
  {
    o_depth = 0.0;
    o_direction = ClumVect3();
    return lmStatus();
  }
  if (!pair.a.isConvex() || !pair.b.isConvex() || isNested)
    return PENETRATION_UNSUPPORTED_ERROR;
  // The search stops at any contact: go on to the nearest points of the inner shapes.
  CFclDistanceSearch inner(pair, FCL_INFINITY, 0.0, -FCL_INFINITY);
  inner.run(0.0);
  if (inner.best() <= pair.slack)
    return PENETRATION_UNSUPPORTED_ERROR;
  o_depth = std::max(0.0, pair.sweep - inner.best());
  o_direction = i_poseA * inner.direction();
  return lmStatus();
}
