#include "metrics/orvRWComposite.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "metrics/orvMetric.h"

LUM_DESCRIBE(CorvRWComposite)
{
  i_class.creates("()", &Self::create);
}

CorvRWComposite::~CorvRWComposite() = default;

lmStatus CorvRWComposite::init(const CorvRWCompositeWkPtr& i_weakPtr)
{
  return CorvRandomWalk::init(i_weakPtr);
}

CorvRWCompositeConstShPtr CorvRWComposite::create()
{
  return lumCreate<CorvRWComposite>();
}

CorvRWCompositeConstShPtr CorvRWComposite::createCopy(const CorvRWCompositeConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvRandomWalkConstShPtr CorvRWComposite::clone() const
{
  return createCopy(self());
}

void CorvRWComposite::step(double i_size, CorvConfig& io_cfg) const
{
  io_cfg.beginChange();
  if (io_cfg.pushSpace().succeeded())
  {
    do
    {
      if (const CorvMetricShPtr metric = io_cfg.space()->metric())
        metric->randomStep(io_cfg, i_size, io_cfg);
    } while (io_cfg.nextSubspace().succeeded());
    io_cfg.popSpace();
  }
  io_cfg.endChange();
}
