#include "paths/orvPathVisitor.h"

#include "foundation/lumDescribe.h"

LUM_DESCRIBE(CorvPathVisitor)
{
}

CorvPathVisitor::~CorvPathVisitor() = default;

lmStatus CorvPathVisitor::init(const CorvPathVisitorWkPtr& i_weakPtr)
{
  return ClumObject::init(i_weakPtr);
}
