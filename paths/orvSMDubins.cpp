#include "paths/orvSMDubins.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvDof.h"
#include "paths/orvDPDubins.h"

LUM_DESCRIBE(CorvSMDubins)
{
  i_class.creates("(double i_steeringRadius, const CorvDofConstShPtr& i_xDof, const CorvDofConstShPtr& i_yDof, "
                  "const CorvDofConstShPtr& i_thetaDof)",
                  &Self::create);
}

CorvSMDubins::~CorvSMDubins() = default;

lmStatus CorvSMDubins::init(const CorvSMDubinsWkPtr& i_weakPtr)
{
  return CorvSMCurve::init(i_weakPtr);
}

CorvSMDubinsShPtr CorvSMDubins::create(double i_steeringRadius, const CorvDofConstShPtr& i_xDof,
                                       const CorvDofConstShPtr& i_yDof, const CorvDofConstShPtr& i_thetaDof)
{
  return lumCreate<CorvSMDubins>(i_steeringRadius, i_xDof, i_yDof, i_thetaDof);
}

CorvSMDubinsShPtr CorvSMDubins::createCopy(const CorvSMDubinsConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvSteeringMethodShPtr CorvSMDubins::clone() const
{
  return createCopy(self());
}

CorvDirectPathShPtr CorvSMDubins::makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const
{
  return CorvDPDubins::create(i_start, i_end, self());
}

bool CorvSMDubins::isOriented(const CorvConfigSpaceConstShPtr&) const
{
  return true;
}
