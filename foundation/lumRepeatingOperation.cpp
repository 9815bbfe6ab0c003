#include "foundation/lumRepeatingOperation.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"

LUM_DESCRIBE(ClumRepeatingOperation)
{
}

lmStatus ClumRepeatingOperation::init(const ClumRepeatingOperationWkPtr& i_weakPtr)
{
  const lmStatus status = ClumOperation::init(i_weakPtr);
  return status.failed() || (m_operation && m_count > 0) ? status : lmStatus(lmStatus::FAILURE);
}

ClumOperation::EThreadSafety ClumRepeatingOperation::threadSafety() const
{
  return m_operation->threadSafety();
}

ClumOperationShPtr ClumRepeatingOperation::simplify() const
{
  return m_count == 1 && customParameters()->empty() ? m_operation->simplify() : ClumOperationShPtr(self());
}

void ClumRepeatingOperation::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumOperation::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_operation, "operation");
  i_coder->encodeUnsignedInt(m_count, "count");
}

lmStatus ClumRepeatingOperation::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumOperation::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_operation = i_coder->decode<ClumOperation>("operation");
  m_count = i_coder->decodeUnsignedInt("count");
  return m_operation && m_count > 0 ? status : lmStatus(lmStatus::FAILURE);
}

lmStatus ClumRepeatingOperation::doStart(const ClumParameterMapShPtr&)
{
  m_done = 0;
  return lmStatus();
}

lmStatus ClumRepeatingOperation::doFinish(const ClumParameterMapShPtr&)
{
  return stop(m_operation);
}
