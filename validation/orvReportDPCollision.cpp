#include "validation/orvReportDPCollision.h"

CorvReportDPCollision::~CorvReportDPCollision() = default;

lmStatus CorvReportDPCollision::init(const CorvReportDPCollisionWkPtr& i_weakPtr)
{
  return CorvReportCollision::init(i_weakPtr);
}

CorvReportDPCollisionShPtr CorvReportDPCollision::create()
{
  return lumCreate<CorvReportDPCollision>();
}

CorvReportDPCollisionShPtr CorvReportDPCollision::createCopy(const CorvReportDPCollisionConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidationReportShPtr CorvReportDPCollision::clone() const
{
  return createCopy(self());
}
