#include "foundation/lumCapsule.h"

#include "foundation/lumDescribe.h"

LUM_DESCRIBE(ClumCapsule)
{
  i_class.creates("(double i_radius, double i_height)", &Self::create);
}

ClumCapsule::~ClumCapsule() = default;

ClumCapsuleShPtr ClumCapsule::create(double i_radius, double i_height)
{
  return lumCreate<ClumCapsule>(i_radius, i_height);
}

ClumCapsuleShPtr ClumCapsule::createCopy(const ClumCapsuleConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumGeometryShPtr ClumCapsule::clone() const
{
  return createCopy(self());
}

void ClumCapsule::getSweptTriangles(ClumSweptTriangles& o_shape) const
{
  o_shape = ClumSweptTriangles();
  o_shape.vertices = {ClumPoint3(0.0, 0.0, -0.5 * height()), ClumPoint3(0.0, 0.0, 0.5 * height())};
  o_shape.triangles = {{0, 1, 1}};
  o_shape.radius = radius();
}
