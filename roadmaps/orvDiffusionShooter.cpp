#include "roadmaps/orvDiffusionShooter.h"

#include "foundation/lumDescribe.h"

LUM_DESCRIBE(CorvDiffusionShooter)
{
}

CorvDiffusionShooter::~CorvDiffusionShooter() = default;

lmStatus CorvDiffusionShooter::init(const CorvDiffusionShooterWkPtr& i_weakPtr)
{
  return ClumCodable::init(i_weakPtr);
}

void CorvDiffusionShooter::reset()
{
}

void CorvDiffusionShooter::shootWasUseful(const CorvNodeShPtr&, EDiffusionNodeType, const CorvNodeShPtr&, TTrace&)
{
}

void CorvDiffusionShooter::shootWasUseless(const CorvNodeShPtr&, EDiffusionNodeType, TTrace&)
{
}
