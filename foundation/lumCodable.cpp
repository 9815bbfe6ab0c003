#include "foundation/lumCodable.h"

#include "foundation/lumDescribe.h"

LUM_DESCRIBE(ClumCodable) {}
LUM_DESCRIBE(ClumMutableCodable) {}

lmStatus ClumCodable::init(const ClumCodableWkPtr& i_weakPtr)
{
  return ClumObject::init(i_weakPtr);
}

void ClumCodable::encodeWithCoder(const ClumCoderShPtr&) const
{
}

lmStatus ClumCodable::initWithCoder(const ClumCoderShPtr&, const ClumCodableShPtr& i_self)
{
  return ClumObject::init(ClumObjectWkPtr(i_self));
}

void ClumCodable::awake()
{
}

lmStatus ClumMutableCodable::init(const ClumMutableCodableWkPtr& i_weakPtr)
{
  return ClumCodable::init(i_weakPtr);
}
