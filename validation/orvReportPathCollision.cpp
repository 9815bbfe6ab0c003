#include "validation/orvReportPathCollision.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"

LUM_DESCRIBE(CorvReportPathCollision)
{
  i_class.creates("()", &Self::create);
  i_class.property<double>("penetration", &Self::penetration, &Self::penetration);
}

CorvReportPathCollision::~CorvReportPathCollision() = default;

lmStatus CorvReportPathCollision::init(const CorvReportPathCollisionWkPtr& i_weakPtr)
{
  return CorvValidationReport::init(i_weakPtr);
}

CorvReportPathCollisionShPtr CorvReportPathCollision::create()
{
  return lumCreate<CorvReportPathCollision>();
}

CorvReportPathCollisionShPtr
CorvReportPathCollision::createCopy(const CorvReportPathCollisionConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidationReportShPtr CorvReportPathCollision::clone() const
{
  return createCopy(self());
}

void CorvReportPathCollision::penetration(double i_penetration)
{
  if (i_penetration == m_penetration)
    return;
  notifyPropertyWillChange("penetration");
  m_penetration = i_penetration;
  notifyPropertyDidChange("penetration");
}

void CorvReportPathCollision::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvValidationReport::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_penetration, "penetration");
}

lmStatus CorvReportPathCollision::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvValidationReport::initWithCoder(i_coder, i_self);
  if (status.succeeded())
    m_penetration = i_coder->decodeDouble("penetration");
  return status;
}
