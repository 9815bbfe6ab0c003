#include "paths/orvSMReedsNShepp.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvDof.h"
#include "paths/orvDPReedsNShepp.h"

LUM_DESCRIBE(CorvSMReedsNShepp)
{
  i_class.creates("(double i_steeringRadius, const CorvDofConstShPtr& i_xDof, const CorvDofConstShPtr& i_yDof, "
                  "const CorvDofConstShPtr& i_thetaDof)",
                  &Self::create);
}

CorvSMReedsNShepp::~CorvSMReedsNShepp() = default;

lmStatus CorvSMReedsNShepp::init(const CorvSMReedsNSheppWkPtr& i_weakPtr)
{
  return CorvSMCurve::init(i_weakPtr);
}

CorvSMReedsNSheppShPtr CorvSMReedsNShepp::create(double i_steeringRadius, const CorvDofConstShPtr& i_xDof,
                                                 const CorvDofConstShPtr& i_yDof, const CorvDofConstShPtr& i_thetaDof)
{
  return lumCreate<CorvSMReedsNShepp>(i_steeringRadius, i_xDof, i_yDof, i_thetaDof);
}

CorvSMReedsNSheppShPtr CorvSMReedsNShepp::createCopy(const CorvSMReedsNSheppConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvSteeringMethodShPtr CorvSMReedsNShepp::clone() const
{
  return createCopy(self());
}

CorvDirectPathShPtr CorvSMReedsNShepp::makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const
{
  return CorvDPReedsNShepp::create(i_start, i_end, self());
}

bool CorvSMReedsNShepp::isOriented(const CorvConfigSpaceConstShPtr&) const
{
  return false;
}
