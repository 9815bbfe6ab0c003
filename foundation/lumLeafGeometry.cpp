#include "foundation/lumLeafGeometry.h"

#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumEnclosure.h"

#include <algorithm>
#include <mutex>

LUM_DESCRIBE(ClumLeafGeometry)
{
}

/// What all copies of a leaf have in common: made on first need, under the lock.
struct ClumLeafGeometry::CShared
{
  std::mutex mutex;
  bool hasEnclosure = false;
  std::vector<ClumPoint3> points;
  double radius = 0.0;
  std::vector<ClumCollisionModelConstShPtr> models;
};

ClumLeafGeometry::ClumLeafGeometry() : m_shared(new CShared)
{
}

ClumLeafGeometry::~ClumLeafGeometry() = default;

lmStatus ClumLeafGeometry::init(const ClumLeafGeometryWkPtr& i_weakPtr)
{
  return ClumGeometry::init(i_weakPtr);
}

bool ClumLeafGeometry::hasCapability(ECapability i_capability) const
{
  return i_capability == COLLISION_CAPABILITY;
}

void ClumLeafGeometry::appendLeaves(const ClumMat4& i_frame, std::vector<ClumPlacedLeaf>& io_leaves) const
{
  io_leaves.push_back({self(), i_frame});
}

void ClumLeafGeometry::makeEnclosure(std::vector<ClumPoint3>& o_points, double& o_radius) const
{
  ClumSweptTriangles shape;
  getSweptTriangles(shape);
  o_radius = shape.radius;
  // Only the corners of triangles count, each once.
  std::vector<bool> isUsed(shape.vertices.size(), false);
  std::vector<ClumPoint3> corners;
  for (const ClumSweptTriangles::TTriangle& triangle : shape.triangles)
    for (const unsigned int vertex : triangle)
      if (!isUsed[vertex])
      {
        isUsed[vertex] = true;
        corners.push_back(shape.vertices[vertex]);
      }
  o_points = lumEnclosingPoints(corners);
}

const ClumLeafGeometry::CShared& ClumLeafGeometry::enclosure() const
{
  const std::lock_guard<std::mutex> lock(m_shared->mutex);
  if (!m_shared->hasEnclosure)
  {
    makeEnclosure(m_shared->points, m_shared->radius);
    m_shared->hasEnclosure = true;
  }
  return *m_shared;
}

const std::vector<ClumPoint3>& ClumLeafGeometry::enclosingPoints() const
{
  return enclosure().points;
}

double ClumLeafGeometry::enclosingRadius() const
{
  return enclosure().radius;
}

ClumCollisionModelConstShPtr ClumLeafGeometry::collisionModel(const ClumCollisionToolkit& i_toolkit) const
{
  const std::lock_guard<std::mutex> lock(m_shared->mutex);
  for (const ClumCollisionModelConstShPtr& model : m_shared->models)
    if (model->kind() == i_toolkit.kind())
      return model;
  const ClumCollisionModelConstShPtr made = i_toolkit.makeModel(*this);
  if (made)
    m_shared->models.push_back(made);
  return made;
}
