#include "foundation/lumValue.h"

#include "foundation/lumObject.h"

ClumObjectConstShPtr ClumValue::getConstObject() const
{
  if (type() == OBJECT)
    return get<ClumObjectShPtr>();
  return get<ClumObjectConstShPtr>();
}

ShPtr<const void> ClumValue::asConstVoid() const
{
  if (type() == VOID)
    return get<ShPtr<void>>();
  return get<ShPtr<const void>>();
}
