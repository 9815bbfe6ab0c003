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

  static const void* kindOfModel();
  /// @return null if the shape has no triangle or reaches too far for the kernel.
  static ClumCollisionModelConstShPtr create(const ClumSweptTriangles& i_shape);

  const CProximityTree& tree() const { return m_tree; }
  double sweep() const { return m_sweep; }
  double excess() const { return m_excess; }
  std::size_t countTriangles() const { return m_places.size(); }
  /// Where a triangle of the shape lies in the packets.
  std::uint32_t place(unsigned int i_triangle) const { return m_places[i_triangle]; }
  unsigned int triangleAt(std::uint32_t i_place) const { return m_packets[i_place >> 2].id[i_place & 3u]; }
  void corners(std::uint32_t i_place, ClumVect3 o_corners[3]) const;
  const std::vector<CPart>& parts() const { return m_parts; }
  /// No two points of a closed part are farther apart.
  double solidSize() const { return m_solidSize; }
  bool hasSolid() const { return m_solidSize > 0.0; }
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
  bool isInside(const ClumVect3& i_point) const;
  /// How far the triangles reach along a direction.
  double support(const ClumVect3& i_direction) const;
  /// What the model takes of memory.
  std::size_t countBytes() const;

private:
  explicit CProximityModel(const ClumSweptTriangles& i_shape);
  void findBounds(const ClumSweptTriangles& i_shape);
  void buildTree(const ClumSweptTriangles& i_shape);
  void findParts(const ClumSweptTriangles& i_shape);

  std::vector<CProximityNode> m_nodes;
  std::vector<CProximityBox> m_boxes;
  std::vector<CProximityPacket> m_packets;
  std::vector<std::uint32_t> m_places;         ///< of the triangles
  std::vector<std::uint32_t> m_partOfTriangle; ///< empty if there is one part
  std::vector<CPart> m_parts;
  std::vector<float> m_partPoints[3]; ///< the coordinates of the parts' points
  ClumVect3 m_low;
  ClumVect3 m_high;
  CProximityTree m_tree = {};
  double m_sweep = 0.0;
  double m_excess = 0.0;
  double m_solidSize = 0.0;
};

/// The kernels that this machine can run, the fastest last.
using TProximityKernels = boost::container::small_vector<const CProximityKernel*, 3>;
LUM_API TProximityKernels lumProximityKernels();
/// The one in use: at first the fastest.
LUM_API const CProximityKernel& lumProximityKernel();
LUM_API void lumUseProximityKernel(const CProximityKernel& i_kernel);
