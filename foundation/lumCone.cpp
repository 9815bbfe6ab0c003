#include "foundation/lumCone.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumShapeCircle.h"

LUM_DESCRIBE(ClumCone)
{
  i_class.creates("(double i_radius, double i_height)", &Self::create);
}

ClumCone::ClumCone(double i_radius, double i_height) : m_radius(i_radius), m_height(i_height)
{
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

lmStatus ClumCone::init(const ClumConeWkPtr& i_weakPtr)
{
  const lmStatus status = ClumLeafGeometry::init(i_weakPtr);
  if (status.failed())
    return status;
  return areSizesSound() ? status : lmStatus(lmStatus::FAILURE);
}

bool ClumCone::areSizesSound() const
{
  return std::isfinite(m_radius + m_height) && m_radius > 0.0 && m_height > 0.0;
}

void ClumCone::getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const
{
  o_highest = ClumPoint3(m_radius, m_radius, 0.5 * m_height);
  o_lowest = ClumPoint3(-o_highest.toVect3());
}

void ClumCone::getSweptTriangles(ClumSweptTriangles& o_shape) const
{
  const unsigned int n = LUM_CIRCLE_SIDES;
  o_shape = ClumSweptTriangles();
  lumAppendCircumscribed(m_radius, -0.5 * m_height, n, o_shape.vertices);
  o_shape.vertices.emplace_back(0.0, 0.0, -0.5 * m_height);
  o_shape.vertices.emplace_back(0.0, 0.0, 0.5 * m_height);
  for (unsigned int i = 0; i < n; ++i)
  {
    const unsigned int j = (i + 1) % n;
    o_shape.triangles.push_back({i, j, n + 1});
    o_shape.triangles.push_back({n, j, i});
  }
  o_shape.excess = lumCircumscribedExcess(m_radius, n);
}

void ClumCone::makeEnclosure(std::vector<ClumPoint3>& o_points, double& o_radius) const
{
  lumAppendCircumscribed(m_radius, -0.5 * m_height, LUM_ENCLOSURE_SIDES, o_points);
  o_points.emplace_back(0.0, 0.0, 0.5 * m_height);
  o_radius = 0.0;
}

void ClumCone::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumLeafGeometry::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_radius, "radius");
  i_coder->encodeDouble(m_height, "height");
}

lmStatus ClumCone::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumLeafGeometry::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_radius = i_coder->decodeDouble("radius");
  m_height = i_coder->decodeDouble("height");
  return areSizesSound() ? status : lmStatus(lmStatus::FAILURE);
}
