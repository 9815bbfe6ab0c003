#include "foundation/lumCapsule.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"

LUM_DESCRIBE(ClumCapsule)
{
  i_class.creates("(double i_radius, double i_height)", &Self::create);
}

ClumCapsule::ClumCapsule(double i_radius, double i_height) : m_radius(i_radius), m_height(i_height)
{
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

lmStatus ClumCapsule::init(const ClumCapsuleWkPtr& i_weakPtr)
{
  const lmStatus status = ClumLeafGeometry::init(i_weakPtr);
  if (status.failed())
    return status;
  return areSizesSound() ? status : lmStatus(lmStatus::FAILURE);
}

bool ClumCapsule::areSizesSound() const
{
  return std::isfinite(m_radius + m_height) && m_radius > 0.0 && m_height >= 0.0;
}

void ClumCapsule::getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const
{
  o_highest = ClumPoint3(m_radius, m_radius, 0.5 * m_height + m_radius);
  o_lowest = ClumPoint3(-o_highest.toVect3());
}

void ClumCapsule::getSweptTriangles(ClumSweptTriangles& o_shape) const
{
  o_shape = ClumSweptTriangles();
  o_shape.vertices = {ClumPoint3(0.0, 0.0, -0.5 * m_height), ClumPoint3(0.0, 0.0, 0.5 * m_height)};
  o_shape.triangles = {{0, 1, 1}};
  o_shape.radius = m_radius;
}

void ClumCapsule::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumLeafGeometry::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_radius, "radius");
  i_coder->encodeDouble(m_height, "height");
}

lmStatus ClumCapsule::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumLeafGeometry::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_radius = i_coder->decodeDouble("radius");
  m_height = i_coder->decodeDouble("height");
  return areSizesSound() ? status : lmStatus(lmStatus::FAILURE);
}
