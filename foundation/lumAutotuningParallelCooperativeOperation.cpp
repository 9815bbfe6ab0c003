#include "foundation/lumAutotuningParallelCooperativeOperation.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumNotificator.h"

#include <algorithm>

LUM_DESCRIBE(ClumAutotuningParallelCooperativeOperation)
{
  i_class.creates("(const ClumNotificatorShPtr& i_notificator, unsigned int i_signal)", &Self::create);
}

namespace
{
const unsigned int s_stepsOfTuning = 100;
const double s_smallestTunedWeight = 0.1;
} // namespace

ClumAutotuningParallelCooperativeOperationShPtr
ClumAutotuningParallelCooperativeOperation::create(const ClumNotificatorShPtr& i_notificator, unsigned int i_signal)
{
  return i_notificator ? lumCreate<ClumAutotuningParallelCooperativeOperation>(i_notificator, i_signal)
                       : ClumAutotuningParallelCooperativeOperationShPtr();
}

lmStatus
ClumAutotuningParallelCooperativeOperation::init(const ClumAutotuningParallelCooperativeOperationWkPtr& i_weakPtr)
{
  return ClumParallelCooperativeOperation::init(i_weakPtr);
}

void ClumAutotuningParallelCooperativeOperation::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumParallelCooperativeOperation::encodeWithCoder(i_coder);
  i_coder->encodeSharedPointer(ShPtr<void>(m_notificator), "notificator");
  i_coder->encodeUnsignedInt(m_signal, "signal");
}

lmStatus ClumAutotuningParallelCooperativeOperation::initWithCoder(const ClumCoderShPtr& i_coder,
                                                                   const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumParallelCooperativeOperation::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_notificator = boost::static_pointer_cast<ClumNotificator>(i_coder->decodeSharedPointer("notificator"));
  m_signal = i_coder->decodeUnsignedInt("signal");
  return status;
}

lmStatus ClumAutotuningParallelCooperativeOperation::stepMember(const ClumOperationShPtr& i_operation, bool& o_finished)
{
  const unsigned int before = m_receivedSignals;
  const lmStatus status = ClumParallelCooperativeOperation::stepMember(i_operation, o_finished);
  CRecord& record = recordOf(i_operation);
  record.steps += 1.0;
  record.signals += m_receivedSignals - before;
  if (++m_stepsSinceTuning >= s_stepsOfTuning)
    tune();
  return status;
}

ClumParallelOperationShPtr ClumAutotuningParallelCooperativeOperation::makeFlat() const
{
  return ClumParallelOperationShPtr();
}

lmStatus ClumAutotuningParallelCooperativeOperation::doStart(const ClumParameterMapShPtr& o_output)
{
  m_records.clear();
  m_stepsSinceTuning = 0;
  for (unsigned int rank = 0; rank < countOperations(); ++rank)
    weightOf(rank, 1.0);
  if (m_notificator)
    LUM_ASSERT_SUCCESS(m_notificator->subscribe(m_signal, self(), this, &Self::didReceiveSignal));
  return ClumParallelCooperativeOperation::doStart(o_output);
}

lmStatus ClumAutotuningParallelCooperativeOperation::doFinish(const ClumParameterMapShPtr& o_output)
{
  if (m_notificator)
    m_notificator->unsubscribe(m_signal, this);
  m_records.clear();
  return ClumParallelCooperativeOperation::doFinish(o_output);
}

ClumAutotuningParallelCooperativeOperation::CRecord&
ClumAutotuningParallelCooperativeOperation::recordOf(const ClumOperationShPtr& i_operation)
{
  const auto at = std::find_if(m_records.begin(), m_records.end(),
                               [&](const CRecord& i_record) { return i_record.operation.lock() == i_operation; });
  if (at != m_records.end())
    return *at;
  m_records.emplace_back();
  m_records.back().operation = i_operation;
  return m_records.back();
}

void ClumAutotuningParallelCooperativeOperation::tune()
{
  m_stepsSinceTuning = 0;
  double best = 0.0;
  for (const CRecord& record : m_records)
    best = std::max(best, record.signals / record.steps);
  if (best <= 0.0)
    return;
  for (CRecord& record : m_records)
  {
    const unsigned int rank = rankOf(record.operation.lock());
    if (rank != countOperations())
      weightOf(rank, std::max(record.signals / record.steps / best, s_smallestTunedWeight));
    record.steps *= 0.5;
    record.signals *= 0.5;
  }
}

void ClumAutotuningParallelCooperativeOperation::didReceiveSignal(const ShPtr<const ClumNotification>&)
{
  ++m_receivedSignals;
}
