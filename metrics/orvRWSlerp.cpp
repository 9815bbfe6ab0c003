#include "metrics/orvRWSlerp.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMat4.h"
#include "foundation/lumMath.h"
#include "kinematics/orvUtility.h"
#include "metrics/orvMetricSlerp.h"
#include "metrics/orvRDGaussian.h"

#include <cmath>

LUM_DESCRIBE(CorvRWSlerp)
{
  i_class.creates(
    "(const CorvJointShPtr& i_joint, const CorvRandomDistributionConstShPtr& i_distribution)",
    static_cast<CorvRWSlerpConstShPtr (*)(const CorvJointShPtr&, const CorvRandomDistributionConstShPtr&)>(
      &Self::create));
}

namespace
{
/// A direction drawn uniformly: a slice of the sphere has an area in proportion to its height.
ClumVect3 shootUniformSpherePoint()
{
  const double z = CorvUtility::random(-1.0, 1.0);
  const double phi = CorvUtility::random(0.0, 2.0 * ClumGeometryUtilities::PI);
  const double radius = std::sqrt(1.0 - z * z);
  return ClumVect3(radius * lumCos(phi), radius * lumSin(phi), z);
}
} // namespace

CorvRWSlerp::CorvRWSlerp(const CorvJointShPtr& i_joint, const CorvRandomDistributionConstShPtr& i_distribution)
  : CorvRWSolid(i_joint, i_distribution)
{
}

CorvRWSlerp::~CorvRWSlerp() = default;

lmStatus CorvRWSlerp::init(const CorvRWSlerpWkPtr& i_weakPtr)
{
  return CorvRWSolid::init(i_weakPtr);
}

CorvRWSlerpConstShPtr CorvRWSlerp::create(const CorvJointShPtr& i_joint)
{
  return create(i_joint, CorvRDGaussian::create());
}

CorvRWSlerpConstShPtr CorvRWSlerp::create(const CorvJointShPtr& i_joint,
                                          const CorvRandomDistributionConstShPtr& i_distribution)
{
  return lumCreate<CorvRWSlerp>(i_joint, i_distribution);
}

CorvRWSlerpConstShPtr CorvRWSlerp::createCopy(const CorvRWSlerpConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvRandomWalkConstShPtr CorvRWSlerp::clone() const
{
  return createCopy(self());
}

void CorvRWSlerp::stepSolid(double i_size, ClumMat4& io_pose) const
{
  const ClumVect3 axis = shootUniformSpherePoint();
  const double scaledLever = lever() * CorvMetricSlerp::ROTATION_SCALE;
  if (scaledLever == 0.0 || !distribution())
    return;
  ClumMat4 step;
  step.rotate(axis, distribution()->shoot(i_size / scaledLever));
  for (unsigned int i = 0; i < 3; ++i)
    step(i, 3) += distribution()->shoot(i_size);
  io_pose = io_pose * step;
}
