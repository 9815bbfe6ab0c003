#include "validation/orvReportCfgDof.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"

LUM_DESCRIBE(CorvReportCfgDof)
{
  i_class.creates("()", &Self::create);
}

CorvReportCfgDof::~CorvReportCfgDof() = default;

lmStatus CorvReportCfgDof::init(const CorvReportCfgDofWkPtr& i_weakPtr)
{
  return CorvValidationReport::init(i_weakPtr);
}

CorvReportCfgDofShPtr CorvReportCfgDof::create()
{
  return lumCreate<CorvReportCfgDof>();
}

CorvReportCfgDofShPtr CorvReportCfgDof::createCopy(const CorvReportCfgDofConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidationReportShPtr CorvReportCfgDof::clone() const
{
  return createCopy(self());
}

void CorvReportCfgDof::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvValidationReport::encodeWithCoder(i_coder);
  i_coder->encodeBoolVector(m_dofs, "dofs");
}

lmStatus CorvReportCfgDof::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvValidationReport::initWithCoder(i_coder, i_self);
  if (status.succeeded())
    i_coder->decodeBoolVector("dofs", m_dofs);
  return status;
}
