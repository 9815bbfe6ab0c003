#pragma once

#include "foundation/lumCollisionModel.h"
#include "foundation/lumProximityKernel.h"
#include "foundation/lumVect3.h"

#include <boost/container/small_vector.hpp>

#include <cstddef>
#include <vector>

class ClumSolids;
struct ClumSweptTriangles;

/// A shape as the proximity toolkit keeps it: the triangles around the centre of their bounding box, and their tree.
///
/// So coordinates are as precise as the shape is small, wherever it stands in its own frame. `center()` takes a point
/// of the model back to the shape's frame by addition.
class LUM_API CProximityModel : public ClumCollisionModel
{
public:
  /// A connected part of the surface.
  struct CPart
  {
    ClumVect3 point;         ///< of the part
    double reach = 0.0;      ///< distance of the part's farthest point from that point
    bool isClosed = false;   ///< bounds a volume
    bool isOriented = false; ///< its triangles turn the same way
    int sign = 1;            ///< -1 if they are to be taken as turned inside out
  };

  /// An oriented box.
  struct CAround
  {
    double center[3];
    double axes[3][3];
    double half[3];
  };

  /// A segment; all triangles lie within `radius` of it.
  struct CCore
  {
    ClumVect3 center;
    ClumVect3 axis;
    double half = 0.0;
    double radius = 0.0;
  };

  static const void* kindOfModel();
  /// @return null if the shape has no triangle or reaches too far for the kernel.
  static ClumCollisionModelConstShPtr create(const ClumSweptTriangles& i_shape);

  const CProximityTree& tree() const { return m_tree; }
  /// The box around all triangles, with axes that are orthonormal only to single precision.
  const CAround& around() const { return m_around; }
  /// Of a shape that is several times as long as thick; others have none.
  bool hasCore() const { return m_core.half > 0.0; }
  const CCore& core() const { return m_core; }
  double sweep() const { return m_sweep; }
  double excess() const { return m_excess; }
  std::size_t countTriangles() const { return m_places.size(); }
  /// Where a triangle of the shape lies in the packets.
  std::uint32_t place(unsigned int i_triangle) const { return m_places[i_triangle]; }
  unsigned int triangleAt(std::uint32_t i_place) const { return m_packets[i_place >> 2].id[i_place & 3u]; }
  void corners(std::uint32_t i_place, ClumVect3 o_corners[3]) const;
  const std::vector<CPart>& parts() const { return m_parts; }
  /// Of a triangle.
  const CPart& partAt(std::uint32_t i_place) const
  {
    return m_parts[m_partOfTriangle.empty() ? 0 : m_partOfTriangle[triangleAt(i_place)]];
  }
  /// No two points of a closed part are farther apart.
  double solidSize() const { return m_solidSize; }
  bool hasSolid() const { return m_solidSize > 0.0; }
  /// False if a part counts as closed that has a gap: where it ends is not told by its triangles then.
  bool areSolidsSealed() const { return m_areSolidsSealed; }
  /// True if a part of this model lies inside a closed part of the other, given that the surfaces are apart.
  /// @param i_center gives that of the other, in this model's coordinates.
  /// @param i_move takes a point of this model to the other's coordinates.
  template <class CENTER, class MOVE>
  bool hasPartInside(const CProximityModel& i_other, CENTER i_center, MOVE i_move) const
  {
    const auto isPartInside = [&](const CPart& i_part)
    { return i_part.reach <= i_other.m_solidSize && i_other.isInside(i_move(i_part.point)); };
    if (m_parts.size() == 1)
      return isPartInside(m_parts[0]);
    const CNearBall ball = nearBall(i_center(), i_other.m_tree.radius);
    for (std::size_t i = 0; (i = nextPartNear(ball, i)) < m_parts.size(); ++i)
      if (isPartInside(m_parts[i]))
        return true;
    return false;
  }
  /// In single precision, with room for its rounding.
  struct CNearBall
  {
    float x, y, z, square;
  };
  CNearBall nearBall(const ClumVect3& i_center, double i_radius) const;
  /// The first part from a rank on of which the point may lie in the ball; the number of parts if there is none.
  std::size_t nextPartNear(const CNearBall& i_ball, std::size_t i_from) const;
  /// True if the point, in the model's coordinates, lies inside of a closed part. A point of the surface may get either
  /// answer.
  bool isInside(const ClumVect3& i_point) const { return isInBounds(i_point) && isSurrounded(i_point); }
  /// How far the triangles reach along a direction.
  double support(const ClumVect3& i_direction) const;
  /// What the model takes of memory.
  std::size_t countBytes() const;

private:
  explicit CProximityModel(const ClumSweptTriangles& i_shape);
  void findBounds(const ClumSweptTriangles& i_shape);
  /// @return how many nodes have large parts under them: they come first.
  std::uint32_t buildTree(const ClumSweptTriangles& i_shape);
  bool isInBounds(const ClumVect3& i_point) const
  {
    return i_point.x() >= m_low.x() && i_point.x() <= m_high.x() && i_point.y() >= m_low.y() &&
           i_point.y() <= m_high.y() && i_point.z() >= m_low.z() && i_point.z() <= m_high.z();
  }
  bool isSurrounded(const ClumVect3& i_point) const;
  void findCore();
  void findParts(const ClumSweptTriangles& i_shape);

  std::vector<CProximityNode> m_nodes;
  std::vector<CProximityBox> m_boxes;
  std::vector<CProximityPacket> m_packets;
  std::vector<CProximityBalls> m_nodeBalls;
  std::vector<CProximityBall> m_balls;
  std::vector<std::uint32_t> m_places;         ///< of the triangles
  std::vector<std::uint32_t> m_partOfTriangle; ///< empty if there is one part
  std::vector<CPart> m_parts;
  std::vector<float> m_partPoints[3]; ///< the coordinates of the parts' points
  ClumVect3 m_low;
  ClumVect3 m_high;
  CProximityTree m_tree = {};
  CAround m_around = {};
  CCore m_core;
  double m_sweep = 0.0;
  double m_excess = 0.0;
  double m_solidSize = 0.0;
  bool m_areSolidsSealed = true;
};

/// The kernels that this machine can run, the fastest last.
using TProximityKernels = boost::container::small_vector<const CProximityKernel*, 3>;
LUM_API TProximityKernels lumProximityKernels();
/// The one in use: at first the fastest.
LUM_API const CProximityKernel& lumProximityKernel();
LUM_API void lumUseProximityKernel(const CProximityKernel& i_kernel);
