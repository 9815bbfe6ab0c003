#include "foundation/lumCone.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumShapeCircle.h"

LUM_DESCRIBE(ClumCone)
{
  i_class.creates("(double i_radius, double i_height)", &Self::create);
}

ClumCone::~ClumCone() = default;

ClumConeShPtr ClumCone::create(double i_radius, double i_height)
{
  return lumCreate<ClumCone>(i_radius, i_height);
}

ClumConeShPtr ClumCone::createCopy(const ClumConeConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumGeometryShPtr ClumCone::clone() const
{
  return createCopy(self());
}

void ClumCone::getSweptTriangles(ClumSweptTriangles& o_shape) const
{
  const unsigned int n = LUM_CIRCLE_SIDES;
  o_shape = ClumSweptTriangles();
  lumAppendCircumscribed(radius(), -0.5 * height(), n, o_shape.vertices);
  o_shape.vertices.emplace_back(0.0, 0.0, -0.5 * height());
  o_shape.vertices.emplace_back(0.0, 0.0, 0.5 * height());
  for (unsigned int i = 0; i < n; ++i)
  {
    const unsigned int j = (i + 1) % n;
    o_shape.triangles.push_back({i, j, n + 1});
    o_shape.triangles.push_back({n, j, i});
  }
  o_shape.excess = lumCircumscribedExcess(radius(), n);
}

void ClumCone::makeEnclosure(std::vector<ClumPoint3>& o_points, double& o_radius) const
{
  lumAppendCircumscribed(radius(), -0.5 * height(), LUM_ENCLOSURE_SIDES, o_points);
  o_points.emplace_back(0.0, 0.0, 0.5 * height());
  o_radius = 0.0;
}
