#pragma once

#include "foundation/lumLeafGeometry.h"

/// A set of triangles that never changes, shared by all copies of the mesh.
///
/// Each connected part of which every edge belongs to an even number of triangles bounds a volume, and what lies
/// inside it collides with it; a part with a border is a bare surface. Triangles without area and repeated triangles
/// are dropped when the mesh is made.
class LUM_API ClumMesh : public ClumLeafGeometry
{
  LUM_CONCRETE(ClumMesh, ClumLeafGeometry);

public:
  using TTriangle = ClumSweptTriangles::TTriangle;
  using ESolidity = ClumSweptTriangles::ESolidity;

  /// What was left out of the triangles given.
  struct CDropped
  {
    unsigned int zeroArea = 0;
    unsigned int duplicates = 0;
  };

  ~ClumMesh() override;
  /// @param i_triangles ranks of vertices.
  /// @param i_solidity overrides what is found out of the parts.
  /// @return null if a vertex is not finite, a rank is beyond the vertices, or no triangle is left.
  static ClumMeshShPtr create(const std::vector<ClumPoint3>& i_vertices, const std::vector<TTriangle>& i_triangles,
                              ESolidity i_solidity = ClumSweptTriangles::SOLID_IF_CLOSED);
  static ClumMeshShPtr createCopy(const ClumMeshConstShPtr& i_objectToCopy);
  ClumGeometryShPtr clone() const override;

  const std::vector<ClumPoint3>& vertices() const;
  const std::vector<TTriangle>& triangles() const;
  const CDropped& dropped() const;
  /// True if every connected part bounds a volume, or is said to.
  bool isClosed() const;
  ESolidity solidity() const;

  void getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const override;
  void getSweptTriangles(ClumSweptTriangles& o_shape) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumMesh();
  ClumMesh(const ClumMesh& i_other) = default;
  lmStatus init(const ClumMeshWkPtr& i_weakPtr);
  lmStatus init(const ClumMeshWkPtr& i_weakPtr, const std::vector<ClumPoint3>& i_vertices,
                const std::vector<TTriangle>& i_triangles, ESolidity i_solidity);
  lmStatus init(const ClumMeshWkPtr& i_weakPtr, const ClumMeshConstShPtr& i_source);

private:
  struct CData;
  static ShPtr<const CData> makeData(const std::vector<ClumPoint3>& i_vertices,
                                     const std::vector<TTriangle>& i_triangles, ESolidity i_solidity);

  ShPtr<const CData> m_data;
};
