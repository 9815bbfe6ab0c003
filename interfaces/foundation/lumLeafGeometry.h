#pragma once

#include "foundation/lumGeometry.h"
#include "foundation/lumPoint3.h"

#include <array>

/// A shape told as the set of all points within `radius` of some triangles and, where these close a volume, of that
/// volume. A point or a segment is a triangle with equal corners.
struct ClumSweptTriangles
{
  using TTriangle = std::array<unsigned int, 3>;

  /// What bounds a volume: the closed parts, as found, or as somebody says who knows.
  enum ESolidity : int
  {
    SOLID_IF_CLOSED = 0,
    SURFACE = 1, ///< nothing
    SOLID = 2    ///< every part; what lies inside is told by how often a ray crosses it
  };

  std::vector<ClumPoint3> vertices;
  std::vector<TTriangle> triangles;
  /// Triangles without area. They bound nothing, but without them a closed surface may look open.
  std::vector<TTriangle> seams;
  double radius = 0.0;
  /// The shape told may reach beyond the true one, by no more than this.
  double excess = 0.0;
  ESolidity solidity = SOLID_IF_CLOSED;
};

/// A shape without members: the form in which geometry meets the collision toolkit.
///
/// The shape of a leaf never changes after it was made; only its position does. So all copies of a leaf share one
/// collision model, made on first need, and one enclosure.
class LUM_API ClumLeafGeometry : public ClumGeometry
{
  LUM_ABSTRACT(ClumLeafGeometry, ClumGeometry);

public:
  ~ClumLeafGeometry() override;

  bool hasCapability(ECapability i_capability) const override;

  /// The smallest axis-parallel box around the shape, in the leaf's own coordinates.
  virtual void getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const = 0;
  /// The shape as triangles swept by a ball, in the leaf's own coordinates.
  virtual void getSweptTriangles(ClumSweptTriangles& o_shape) const = 0;

  /// The shape lies within `enclosingRadius()` of the convex hull of these few points (own coordinates). So the largest
  /// distance of the shape from any point or line is at most that of one of them, plus the radius.
  const std::vector<ClumPoint3>& enclosingPoints() const;
  double enclosingRadius() const;

  /// The model of this shape for the toolkit; null if the toolkit can make none. May be called by several threads.
  ClumCollisionModelConstShPtr collisionModel(const ClumCollisionToolkit& i_toolkit) const;

protected:
  ClumLeafGeometry();
  ClumLeafGeometry(const ClumLeafGeometry& i_other) = default;
  lmStatus init(const ClumLeafGeometryWkPtr& i_weakPtr);
  void appendLeaves(const ClumMat4& i_frame, std::vector<ClumPlacedLeaf>& io_leaves) const override;

  /// Fills the points and radius of the enclosure; here from `getSweptTriangles`.
  virtual void makeEnclosure(std::vector<ClumPoint3>& o_points, double& o_radius) const;

private:
  struct CShared;
  const CShared& enclosure() const;

  ShPtr<CShared> m_shared; ///< of all copies of this leaf
};
