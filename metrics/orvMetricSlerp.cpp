#include "metrics/orvMetricSlerp.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumMat4.h"
#include "metrics/orvRDGaussian.h"
#include "metrics/orvRWSlerp.h"
#include "metrics/orvSolidJoint.h"

LUM_DESCRIBE(CorvMetricSlerp)
{
  i_class.creates(
    "(const CorvJointShPtr& i_joint, const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)",
    &Self::create);
}

CorvMetricSlerp::CorvMetricSlerp(const CorvJointShPtr& i_joint, const CorvRandomWalkConstShPtr& i_randomWalk,
                                 const std::string& i_type)
  : CorvMetricSolid(i_joint,
                    i_randomWalk ? i_randomWalk
                                 : CorvRandomWalkConstShPtr(CorvRWSlerp::create(i_joint, CorvRDGaussian::create())),
                    i_type)
{
}

CorvMetricSlerp::~CorvMetricSlerp() = default;

lmStatus CorvMetricSlerp::init(const CorvMetricSlerpWkPtr& i_weakPtr)
{
  return CorvMetricSolid::init(i_weakPtr);
}

CorvMetricSlerpShPtr CorvMetricSlerp::create(const CorvJointShPtr& i_joint,
                                             const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)
{
  return lumCreate<CorvMetricSlerp>(i_joint, i_randomWalk, i_type);
}

CorvMetricSlerpShPtr CorvMetricSlerp::createCopy(const CorvMetricSlerpConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMetricShPtr CorvMetricSlerp::clone() const
{
  return createCopy(self());
}

bool CorvMetricSlerp::operator==(const CorvMetric& i_other) const
{
  return dynamic_cast<const CorvMetricSlerp*>(&i_other) && CorvMetric::operator==(i_other);
}

double CorvMetricSlerp::solidDistance(const ClumMat4& i_a, const ClumMat4& i_b) const
{
  double a[SOLID_POINT_SIZE], b[SOLID_POINT_SIZE];
  orvPointOfPose(i_a, a);
  orvPointOfPose(i_b, b);
  return orvDistanceOfPoints(a, b, lever() * ROTATION_SCALE);
}
