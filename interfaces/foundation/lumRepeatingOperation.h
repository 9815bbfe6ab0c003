#pragma once

#include "foundation/lumOperation.h"

/// What operations have in common that run another one several times: the operation and how often it may run.
class LUM_API ClumRepeatingOperation : public ClumOperation
{
  LUM_ABSTRACT(ClumRepeatingOperation, ClumOperation);

public:
  const ClumOperationShPtr& operation() const { return m_operation; }
  unsigned int count() const { return m_count; }

  /// Safe if the operation is.
  EThreadSafety threadSafety() const override;
  /// A single run is the operation itself.
  ClumOperationShPtr simplify() const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumRepeatingOperation() = default;
  ClumRepeatingOperation(const ClumOperationShPtr& i_operation, unsigned int i_count)
    : m_operation(i_operation), m_count(i_count)
  {
  }
  /// Fails without an operation and for a count of 0.
  lmStatus init(const ClumRepeatingOperationWkPtr& i_weakPtr);

  lmStatus doStart(const ClumParameterMapShPtr& o_output) override;
  lmStatus doFinish(const ClumParameterMapShPtr& o_output) override;

  unsigned int countDone() const { return m_done; }
  void noteDone() { ++m_done; }

private:
  ClumOperationShPtr m_operation;
  unsigned int m_count = 0;
  unsigned int m_done = 0; ///< runs that have ended
};
