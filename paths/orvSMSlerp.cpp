#include "paths/orvSMSlerp.h"

#include "foundation/lumDescribe.h"
#include "metrics/orvMetricEuclidean.h"
#include "paths/orvDPSlerp.h"

LUM_DESCRIBE(CorvSMSlerp)
{
  i_class.creates("()", &Self::create);
}

CorvSMSlerp::~CorvSMSlerp() = default;

lmStatus CorvSMSlerp::init(const CorvSMSlerpWkPtr& i_weakPtr)
{
  metric(CorvMetricEuclidean::create());
  return CorvSteeringMethod::init(i_weakPtr);
}

CorvSMSlerpShPtr CorvSMSlerp::create()
{
  return lumCreate<CorvSMSlerp>();
}

CorvSMSlerpShPtr CorvSMSlerp::createCopy(const CorvSMSlerpConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvSteeringMethodShPtr CorvSMSlerp::clone() const
{
  return createCopy(self());
}

CorvDirectPathShPtr CorvSMSlerp::makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const
{
  return CorvDPSlerp::create(i_start, i_end, self());
}

bool CorvSMSlerp::isOriented(const CorvConfigSpaceConstShPtr&) const
{
  return false;
}

bool CorvSMSlerp::operator==(const CorvSteeringMethod& i_other) const
{
  return dynamic_cast<const CorvSMSlerp*>(&i_other) != nullptr;
}
