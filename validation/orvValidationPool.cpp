#include "validation/orvValidationPool.h"

#include "foundation/lumDescribe.h"

LUM_DESCRIBE(CorvValidationPool)
{
}

CorvValidationPool::~CorvValidationPool() = default;

lmStatus CorvValidationPool::init(const CorvValidationPoolWkPtr& i_weakPtr)
{
  return ClumCodable::init(i_weakPtr);
}

void CorvValidationPool::encodeWithCoder(const ClumCoderShPtr&) const
{
}

lmStatus CorvValidationPool::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  return ClumCodable::initWithCoder(i_coder, i_self);
}
