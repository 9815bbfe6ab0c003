#include "foundation/lumCodable.h"

#include "foundation/lumCloner.h"
#include "foundation/lumDescribe.h"

LUM_DESCRIBE(ClumCodable)
{
}
LUM_DESCRIBE(ClumMutableCodable)
{
}

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

ClumCodableShPtr ClumCodable::cloneByCoding() const
{
  const ClumClonerShPtr cloner = ClumCloner::create();
  cloner->encodeObject(this, "object");
  return cloner->decodeObject("object");
}

ClumCodableShPtr ClumCodable::cloneByCodingWithPinnedObjects(const std::vector<ClumCodableConstShPtr>& i_pinned) const
{
  const ClumClonerShPtr cloner = ClumCloner::create();
  for (const ClumCodableConstShPtr& pinned : i_pinned)
    if (pinned.get() != this)
      cloner->pin(pinned.get());
  cloner->encodeObject(this, "object");
  return cloner->decodeObject("object");
}

bool ClumCodable::equalByCoding(const ClumCodable& i_other) const
{
  if (this == &i_other)
    return true;
  const ClumMemoryCoderShPtr own = ClumMemoryCoder::create(), other = ClumMemoryCoder::create();
  return own->encodeObject(this, "object").succeeded() && other->encodeObject(&i_other, "object").succeeded() &&
         own->hasEqualContent(*other);
}

lmStatus ClumMutableCodable::init(const ClumMutableCodableWkPtr& i_weakPtr)
{
  return ClumCodable::init(i_weakPtr);
}
