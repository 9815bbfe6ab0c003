#include "foundation/lumTurnedSolid.h"

#include "foundation/lumCoder.h"

ClumTurnedSolid::~ClumTurnedSolid() = default;

lmStatus ClumTurnedSolid::init(const ClumTurnedSolidWkPtr& i_weakPtr)
{
  const lmStatus status = ClumLeafGeometry::init(i_weakPtr);
  if (status.failed())
    return status;
  return areSizesSound() ? status : lmStatus(lmStatus::FAILURE);
}

bool ClumTurnedSolid::areSizesSound() const
{
  const bool hasHeight = m_hasBalls ? m_height >= 0.0 : m_height > 0.0;
  return std::isfinite(m_radius + m_height) && m_radius > 0.0 && hasHeight;
}

void ClumTurnedSolid::getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const
{
  o_highest = ClumPoint3(m_radius, m_radius, 0.5 * m_height + (m_hasBalls ? m_radius : 0.0));
  o_lowest = ClumPoint3(-o_highest.toVect3());
}

void ClumTurnedSolid::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumLeafGeometry::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_radius, "radius");
  i_coder->encodeDouble(m_height, "height");
}

lmStatus ClumTurnedSolid::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumLeafGeometry::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_radius = i_coder->decodeDouble("radius");
  m_height = i_coder->decodeDouble("height");
  return areSizesSound() ? status : lmStatus(lmStatus::FAILURE);
}
