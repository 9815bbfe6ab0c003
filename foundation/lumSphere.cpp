#include "foundation/lumSphere.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"

LUM_DESCRIBE(ClumSphere)
{
  i_class.creates("(double i_radius)", &Self::create);
}

ClumSphere::ClumSphere(double i_radius) : m_radius(i_radius)
{
}

ClumSphere::~ClumSphere() = default;

ClumSphereShPtr ClumSphere::create(double i_radius)
{
  return lumCreate<ClumSphere>(i_radius);
}

ClumSphereShPtr ClumSphere::createCopy(const ClumSphereConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumGeometryShPtr ClumSphere::clone() const
{
  return createCopy(self());
}

lmStatus ClumSphere::init(const ClumSphereWkPtr& i_weakPtr)
{
  const lmStatus status = ClumLeafGeometry::init(i_weakPtr);
  if (status.failed())
    return status;
  return areSizesSound() ? status : lmStatus(lmStatus::FAILURE);
}

bool ClumSphere::areSizesSound() const
{
  return std::isfinite(m_radius) && m_radius > 0.0;
}

void ClumSphere::getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const
{
  o_highest = ClumPoint3(m_radius, m_radius, m_radius);
  o_lowest = ClumPoint3(-o_highest.toVect3());
}

void ClumSphere::getSweptTriangles(ClumSweptTriangles& o_shape) const
{
  o_shape = ClumSweptTriangles();
  o_shape.vertices.emplace_back();
  o_shape.triangles = {{0, 0, 0}};
  o_shape.radius = m_radius;
}

void ClumSphere::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumLeafGeometry::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_radius, "radius");
}

lmStatus ClumSphere::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumLeafGeometry::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_radius = i_coder->decodeDouble("radius");
  return areSizesSound() ? status : lmStatus(lmStatus::FAILURE);
}
