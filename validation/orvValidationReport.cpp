#include "validation/orvValidationReport.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvConfigSpace.h"

LUM_DESCRIBE(CorvValidationReport)
{
  i_class.creates("()", &Self::create);
  i_class.property<bool>("isValid", &Self::isValid, &Self::isValid);
  i_class.property<CorvConfigSpaceShPtr>("space", &Self::space, &Self::space);
}

CorvValidationReport::~CorvValidationReport() = default;

lmStatus CorvValidationReport::init(const CorvValidationReportWkPtr& i_weakPtr)
{
  return ClumMutableCodable::init(i_weakPtr);
}

CorvValidationReportShPtr CorvValidationReport::create()
{
  return lumCreate<CorvValidationReport>();
}

CorvValidationReportShPtr CorvValidationReport::createCopy(const CorvValidationReportConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidationReportShPtr CorvValidationReport::clone() const
{
  return createCopy(self());
}

void CorvValidationReport::isValid(bool i_isValid)
{
  if (i_isValid == m_isValid)
    return;
  notifyPropertyWillChange("isValid");
  m_isValid = i_isValid;
  notifyPropertyDidChange("isValid");
}

void CorvValidationReport::space(const CorvConfigSpaceShPtr& i_space)
{
  if (i_space == m_space.lock())
    return;
  notifyPropertyWillChange("space");
  m_space = i_space;
  notifyPropertyDidChange("space");
}

void CorvValidationReport::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumMutableCodable::encodeWithCoder(i_coder);
  i_coder->encodeBool(m_isValid, "validity");
  i_coder->encodeWeakObjectWkPtr(m_space, "space");
}

lmStatus CorvValidationReport::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_isValid = i_coder->decodeBool("validity");
  m_space = i_coder->decodeWeak<CorvConfigSpace>("space");
  return lmStatus();
}
