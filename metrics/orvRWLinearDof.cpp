#include "metrics/orvRWLinearDof.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "metrics/orvRDGaussian.h"

LUM_DESCRIBE(CorvRWLinearDof)
{
  i_class.creates("(const CorvRandomDistributionConstShPtr& i_distribution)",
                  static_cast<CorvRWLinearDofConstShPtr (*)(const CorvRandomDistributionConstShPtr&)>(&Self::create));
}

CorvRWLinearDof::CorvRWLinearDof(const CorvRandomDistributionConstShPtr& i_distribution)
  : CorvRandomWalk(i_distribution)
{
}

CorvRWLinearDof::~CorvRWLinearDof() = default;

lmStatus CorvRWLinearDof::init(const CorvRWLinearDofWkPtr& i_weakPtr)
{
  return CorvRandomWalk::init(i_weakPtr);
}

CorvRWLinearDofConstShPtr CorvRWLinearDof::create()
{
  return create(CorvRDGaussian::create());
}

CorvRWLinearDofConstShPtr CorvRWLinearDof::create(const CorvRandomDistributionConstShPtr& i_distribution)
{
  return lumCreate<CorvRWLinearDof>(i_distribution);
}

CorvRWLinearDofConstShPtr CorvRWLinearDof::createCopy(const CorvRWLinearDofConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvRandomWalkConstShPtr CorvRWLinearDof::clone() const
{
  return createCopy(self());
}

void CorvRWLinearDof::step(double i_size, CorvConfig& io_cfg) const
{
  if (distribution() && io_cfg.size() > 0)
    io_cfg.dofValue(0, io_cfg.dofValue(0) + distribution()->shoot(i_size));
}
