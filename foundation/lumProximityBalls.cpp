#include "foundation/lumProximityBalls.h"

#include "foundation/lumProximityModel.h"
#include "foundation/lumTriangleDistance.h"

#include <cmath>

namespace
{
constexpr unsigned int BALL_STEPS = 6; ///< to shrink one until it fits
constexpr double BALL_ACCURACY = 0.1;  ///< of its radius
/// What a radius is told less by, in parts of the model's: for the rounding of the ball to single precision.
constexpr double BALL_SLACK = 1e-6;
constexpr double BALL_LEAST_RADIUS = 1e-12;
/// A ball serves for all points of the surface that are so many radii from its centre.
constexpr double BALL_REACH = 1.25;
/// So many of the last balls are looked at for that.
constexpr std::size_t BALL_MEMORY = 8;
/// Of the balls under a box, a large one counts the more the nearer it is to the box's centre.
constexpr double BALL_ASIDE = 0.125;

ClumVect3 vectorOf(const float i_numbers[3])
{
  return ClumVect3(i_numbers[0], i_numbers[1], i_numbers[2]);
}

bool isPointNeverPierced(const double*, const double*)
{
  return false;
}

double pointCornersDistance(const double i_row[9], const double i_lane[9])
{
  // The point is the one of the two that has equal corners.
  const bool isRow = i_row[0] == i_row[3] && i_row[1] == i_row[4] && i_row[2] == i_row[5];
  const double *point = isRow ? i_row : i_lane, *other = isRow ? i_lane : i_row;
  const ClumVect3 corners[3] = {ClumVect3(other[0], other[1], other[2]), ClumVect3(other[3], other[4], other[5]),
                                ClumVect3(other[6], other[7], other[8])};
  return lumPointTriangleDistance(ClumVect3(point[0], point[1], point[2]), corners);
}

class CBallFinder
{
public:
  CBallFinder(const CProximityModel& i_model, std::uint32_t i_countNodes, std::vector<CProximityBalls>& o_nodeBalls,
              std::vector<CProximityBall>& o_balls)
    : m_model(i_model), m_tree(i_model.tree()), m_nodeBalls(o_nodeBalls), m_balls(o_balls)
  {
    const CProximityNode& last = m_tree.nodes[i_countNodes - 1];
    CProximityBalls none = {};
    for (float& radius : none.radius)
      radius = PROXIMITY_NO_BALL;
    m_nodeBalls.assign(i_countNodes, none);
    m_balls.assign(last.firstBox + last.countBoxes, CProximityBall{{0.0f, 0.0f, 0.0f}, PROXIMITY_NO_BALL});
    for (unsigned int k = 0; k < 3; ++k)
      m_pointBox.axes[k][k] = 1.0f;
    m_pointBox.child = PROXIMITY_LEAF;
    m_pointTree.boxes = &m_pointBox;
    m_pointTree.packets = &m_pointPacket;
    m_query.a = &m_tree;
    m_query.b = &m_pointTree;
    m_query.rotation[0] = m_query.rotation[4] = m_query.rotation[8] = 1.0;
    m_query.share = 1.0 - BALL_ACCURACY;
    m_query.hintA = m_query.hintB = PROXIMITY_NONE;
    m_query.isPierced = &isPointNeverPierced;
    m_query.distance = &pointCornersDistance;
  }

  /// Nodes come after the ones that they are under.
  void run()
  {
    for (std::uint32_t node = static_cast<std::uint32_t>(m_nodeBalls.size()); node-- > 0;)
      for (std::uint32_t k = 0; k < m_tree.nodes[node].countBoxes; ++k)
      {
        const std::uint32_t rank = m_tree.nodes[node].firstBox + k;
        const CProximityBox& box = m_tree.boxes[rank];
        const bool hasBallsBelow = (box.child & PROXIMITY_LEAF) == 0 && box.child < m_nodeBalls.size();
        const CProximityBall ball = m_balls[rank] = hasBallsBelow ? chosenBelow(box) : ballAt(leafNear(box));
        for (unsigned int c = 0; c < 3; ++c)
          m_nodeBalls[node].center[c][k] = ball.center[c];
        m_nodeBalls[node].radius[k] = ball.radius;
      }
  }

private:
  CProximityBall chosenBelow(const CProximityBox& i_box) const
  {
    const CProximityNode& node = m_tree.nodes[i_box.child];
    const ClumVect3 center = vectorOf(i_box.center);
    std::uint32_t best = node.firstBox;
    double bestScore = -1e300;
    for (std::uint32_t rank = node.firstBox; rank < node.firstBox + node.countBoxes; ++rank)
    {
      const CProximityBall& ball = m_balls[rank];
      const double score = ball.radius - BALL_ASIDE * (vectorOf(ball.center) - center).norm();
      if (score > bestScore)
      {
        bestScore = score;
        best = rank;
      }
    }
    return m_balls[best];
  }

  /// A leaf near the centre of a box.
  std::uint32_t leafNear(const CProximityBox& i_box) const
  {
    const ClumVect3 center = vectorOf(i_box.center);
    std::uint32_t child = i_box.child;
    while (!(child & PROXIMITY_LEAF))
    {
      const CProximityNode& node = m_tree.nodes[child];
      double nearest = 1e300;
      for (std::uint32_t rank = node.firstBox; rank < node.firstBox + node.countBoxes; ++rank)
      {
        const double square = (vectorOf(m_tree.boxes[rank].center) - center).squaredNorm();
        if (square < nearest)
        {
          nearest = square;
          child = m_tree.boxes[rank].child;
        }
      }
    }
    return child;
  }

  /// One that touches the surface at the first triangle of a leaf, or that corner.
  CProximityBall ballAt(std::uint32_t i_leaf)
  {
    const std::uint32_t packet = i_leaf & PROXIMITY_PACKET_MASK, lane = (i_leaf >> PROXIMITY_FIRST_SHIFT) & 3u;
    const std::uint32_t place = 4 * packet + lane;
    ClumVect3 corners[3];
    m_model.corners(place, corners);
    const CProximityModel::CPart& part = m_model.partAt(place);
    if (part.isClosed && m_model.areSolidsSealed())
    {
      const ClumVect3 onSurface = (corners[0] + corners[1] + corners[2]) / 3.0;
      const auto& n = m_tree.packets[packet].normal;
      const ClumVect3 inward = ClumVect3(n[0][lane], n[1][lane], n[2][lane]) * -part.sign;
      CProximityBall ball;
      if (isServed(onSurface, ball) || fit(onSurface, inward, ball) ||
          (!part.isOriented && fit(onSurface, -inward, ball)))
        return ball;
    }
    return rounded(corners[0], 0.0);
  }

  /// Less what rounding moves the centre by.
  CProximityBall rounded(const ClumVect3& i_center, double i_radius) const
  {
    const double radius = i_radius + m_model.sweep() - (i_radius > 0.0 ? BALL_SLACK * m_tree.radius : 0.0);
    return {{static_cast<float>(i_center.x()), static_cast<float>(i_center.y()), static_cast<float>(i_center.z())},
            radius > BALL_LEAST_RADIUS ? static_cast<float>(radius * (1.0 - BALL_SLACK)) : PROXIMITY_NO_BALL};
  }

  bool isServed(const ClumVect3& i_onSurface, CProximityBall& o_ball) const
  {
    for (std::size_t i = m_found.size(); i-- > 0 && i + BALL_MEMORY >= m_found.size();)
      if ((vectorOf(m_found[i].center) - i_onSurface).norm() <= BALL_REACH * m_found[i].radius)
      {
        o_ball = m_found[i];
        return true;
      }
    return false;
  }

  /// Shrinks a ball that touches the surface until no triangle reaches into it.
  /// @return false if none was found that lies in the solid.
  bool fit(const ClumVect3& i_onSurface, const ClumVect3& i_inward, CProximityBall& o_ball)
  {
    // None in the model is larger than half of the box is thick.
    double radius = m_tree.boxes->axes[2][3], free = 0.0;
    ClumVect3 center;
    for (unsigned int step = 0; step < BALL_STEPS && radius > 2.0 * BALL_SLACK * m_tree.radius; ++step)
    {
      center = i_onSurface + i_inward * radius;
      const CProximityAnswer answer = nearest(center, radius);
      free = answer.lower;
      if (!(answer.best < radius * (1.0 - BALL_ACCURACY)))
        break;
      // The ball through both points that has its centre on the same line.
      ClumVect3 corners[3], onTriangle, same;
      const ClumVect3 point[3] = {center, center, center};
      m_model.corners(answer.placeA, corners);
      lumTriangleDistance(corners, point, onTriangle, same);
      const ClumVect3 across = onTriangle - i_onSurface;
      const double height = i_inward.scalarProduct(across);
      if (!(height > 0.0))
        break;
      radius = across.squaredNorm() / (2.0 * height);
    }
    if (!(free > 2.0 * BALL_SLACK * m_tree.radius) || !m_model.isInside(center))
      return false;
    o_ball = rounded(center, free);
    m_found.push_back(o_ball);
    return true;
  }

  /// A bound of the distance from the surface that is as good as asked for, up to a cap.
  CProximityAnswer nearest(const ClumVect3& i_point, double i_cap)
  {
    for (unsigned int k = 0; k < 3; ++k)
      m_query.translation[k] = i_point[k];
    m_query.size = m_tree.radius + i_point.norm();
    m_query.cap = i_cap;
    CProximityAnswer answer;
    lumProximityKernel().distance(m_query, answer);
    return answer;
  }

  const CProximityModel& m_model;
  const CProximityTree& m_tree;
  std::vector<CProximityBalls>& m_nodeBalls;
  std::vector<CProximityBall>& m_balls;
  std::vector<CProximityBall> m_found;
  CProximityTree m_pointTree = {}; ///< a point as a model
  CProximityBox m_pointBox = {};
  CProximityPacket m_pointPacket = {};
  CProximityQuery m_query = {};
};
} // namespace

void lumFindProximityBalls(const CProximityModel& i_model, std::uint32_t i_countNodes,
                           std::vector<CProximityBalls>& o_nodeBalls, std::vector<CProximityBall>& o_balls)
{
  if (i_countNodes > 0)
    CBallFinder(i_model, i_countNodes, o_nodeBalls, o_balls).run();
}
