#include "metrics/orvRWIdentity.h"

#include "foundation/lumDescribe.h"

LUM_DESCRIBE(CorvRWIdentity)
{
  i_class.creates("()", &Self::create);
}

CorvRWIdentity::~CorvRWIdentity() = default;

lmStatus CorvRWIdentity::init(const CorvRWIdentityWkPtr& i_weakPtr)
{
  return CorvRandomWalk::init(i_weakPtr);
}

CorvRWIdentityConstShPtr CorvRWIdentity::create()
{
  return lumCreate<CorvRWIdentity>();
}

CorvRWIdentityConstShPtr CorvRWIdentity::createCopy(const CorvRWIdentityConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvRandomWalkConstShPtr CorvRWIdentity::clone() const
{
  return createCopy(self());
}

void CorvRWIdentity::step(double, CorvConfig&) const
{
}
