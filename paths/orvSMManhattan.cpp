#include "paths/orvSMManhattan.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "metrics/orvMetricManhattan.h"
#include "paths/orvDPManhattan.h"

LUM_DESCRIBE(CorvSMManhattan)
{
  i_class.creates("()", &Self::create);
}

CorvSMManhattan::~CorvSMManhattan() = default;

lmStatus CorvSMManhattan::init(const CorvSMManhattanWkPtr& i_weakPtr)
{
  metric(CorvMetricManhattan::create());
  return CorvSteeringMethod::init(i_weakPtr);
}

CorvSMManhattanShPtr CorvSMManhattan::create()
{
  return lumCreate<CorvSMManhattan>();
}

CorvSMManhattanShPtr CorvSMManhattan::createCopy(const CorvSMManhattanConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvSteeringMethodShPtr CorvSMManhattan::clone() const
{
  return createCopy(self());
}

CorvDirectPathShPtr CorvSMManhattan::makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const
{
  return CorvDPManhattan::create(i_start, i_end, m_doesRandomizeDofOrder, self());
}

bool CorvSMManhattan::isOriented(const CorvConfigSpaceConstShPtr&) const
{
  return true;
}

bool CorvSMManhattan::operator==(const CorvSteeringMethod& i_other) const
{
  const auto* other = dynamic_cast<const CorvSMManhattan*>(&i_other);
  return other && m_doesRandomizeDofOrder == other->m_doesRandomizeDofOrder;
}

void CorvSMManhattan::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvSteeringMethod::encodeWithCoder(i_coder);
  i_coder->encodeBool(m_doesRandomizeDofOrder, "doesRandomizeDofOrder");
}

lmStatus CorvSMManhattan::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvSteeringMethod::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_doesRandomizeDofOrder = i_coder->decodeBool("doesRandomizeDofOrder");
  return lmStatus();
}
