#include "foundation/lumCylinder.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumShapeCircle.h"

LUM_DESCRIBE(ClumCylinder)
{
  i_class.creates("(double i_radius, double i_height)", &Self::create);
}

ClumCylinder::~ClumCylinder() = default;

ClumCylinderShPtr ClumCylinder::create(double i_radius, double i_height)
{
  return lumCreate<ClumCylinder>(i_radius, i_height);
}

ClumCylinderShPtr ClumCylinder::createCopy(const ClumCylinderConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumGeometryShPtr ClumCylinder::clone() const
{
  return createCopy(self());
}

void ClumCylinder::getSweptTriangles(ClumSweptTriangles& o_shape) const
{
  const unsigned int n = LUM_CIRCLE_SIDES;
  o_shape = ClumSweptTriangles();
  lumAppendCircumscribed(radius(), -0.5 * height(), n, o_shape.vertices);
  lumAppendCircumscribed(radius(), 0.5 * height(), n, o_shape.vertices);
  o_shape.vertices.emplace_back(0.0, 0.0, -0.5 * height());
  o_shape.vertices.emplace_back(0.0, 0.0, 0.5 * height());
  for (unsigned int i = 0; i < n; ++i)
  {
    const unsigned int j = (i + 1) % n;
    o_shape.triangles.push_back({i, j, n + j});
    o_shape.triangles.push_back({i, n + j, n + i});
    o_shape.triangles.push_back({2 * n, j, i});
    o_shape.triangles.push_back({2 * n + 1, n + i, n + j});
  }
  o_shape.excess = lumCircumscribedExcess(radius(), n);
}

void ClumCylinder::makeEnclosure(std::vector<ClumPoint3>& o_points, double& o_radius) const
{
  lumAppendCircumscribed(radius(), -0.5 * height(), LUM_ENCLOSURE_SIDES, o_points);
  lumAppendCircumscribed(radius(), 0.5 * height(), LUM_ENCLOSURE_SIDES, o_points);
  o_radius = 0.0;
}
