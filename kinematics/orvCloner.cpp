#include "kinematics/orvCloner.h"

#include "kinematics/orvClonableGeometryFilter.h"

CorvClonerShPtr CorvCloner::create()
{
  return lumCreate<CorvCloner>();
}

lmStatus CorvCloner::init(const CorvClonerWkPtr& i_weakPtr)
{
  const lmStatus status = ClumCloner::init(i_weakPtr);
  if (status.succeeded())
    addNonClonableFilter(CorvClonableGeometryFilter());
  return status;
}

ClumCodableShPtr CorvCloner::decodeObject(const std::string& i_key)
{
  return ClumMemoryCoder::decodeObject(i_key);
}
