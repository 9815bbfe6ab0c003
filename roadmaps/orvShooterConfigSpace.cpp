#include "roadmaps/orvShooterConfigSpace.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"

LUM_DESCRIBE(CorvShooterConfigSpace)
{
  i_class.creates("()", &Self::create);
}

CorvShooterConfigSpaceShPtr CorvShooterConfigSpace::create()
{
  return lumCreate<CorvShooterConfigSpace>();
}

CorvShooterConfigSpaceShPtr CorvShooterConfigSpace::createCopy(const CorvShooterConfigSpaceConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvShooterConfigSpace::~CorvShooterConfigSpace() = default;

lmStatus CorvShooterConfigSpace::init(const CorvShooterConfigSpaceWkPtr& i_weakPtr)
{
  return CorvDiffusionShooter::init(i_weakPtr);
}

lmStatus CorvShooterConfigSpace::shoot(const CorvNodeShPtr&, EDiffusionNodeType, double, TTrace&, CorvConfig& o_config)
{
  o_config.randomize();
  return lmStatus();
}
