#pragma once

#include "foundation/lumLeafGeometry.h"

/// The solid convex hull of some points.
class LUM_API ClumConvex : public ClumLeafGeometry
{
  LUM_CONCRETE(ClumConvex, ClumLeafGeometry);

public:
  using TTriangle = ClumSweptTriangles::TTriangle;

  ~ClumConvex() override;
  /// @return null if a coordinate is not finite, or if the points lie in one plane.
  static ClumConvexShPtr create(const std::vector<ClumPoint3>& i_points);
  static ClumConvexShPtr createCopy(const ClumConvexConstShPtr& i_objectToCopy);
  ClumGeometryShPtr clone() const override;

  /// The corners of the hull, and its faces, which turn counter-clockwise seen from outside.
  const std::vector<ClumPoint3>& vertices() const;
  const std::vector<TTriangle>& triangles() const;

  void getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const override;
  void getSweptTriangles(ClumSweptTriangles& o_shape) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumConvex();
  ClumConvex(const ClumConvex& i_other) = default;
  lmStatus init(const ClumConvexWkPtr& i_weakPtr, const std::vector<ClumPoint3>& i_points);
  lmStatus init(const ClumConvexWkPtr& i_weakPtr);

private:
  struct CHull;

  ShPtr<const CHull> m_hull; ///< shared by all copies
};
