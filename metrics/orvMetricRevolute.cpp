#include "metrics/orvMetricRevolute.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvConfig.h"
#include "metrics/orvRWLinearDof.h"

#include <cmath>

LUM_DESCRIBE(CorvMetricRevolute)
{
  i_class.creates(
    "(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)",
    static_cast<CorvMetricRevoluteShPtr (*)(const CorvRandomWalkConstShPtr&, const std::string&)>(&Self::create));
}

CorvMetricRevolute::CorvMetricRevolute(const CorvRandomWalkConstShPtr& i_randomWalk, const std::string& i_type)
  : CorvMetric(i_type, i_randomWalk)
{
}

CorvMetricRevolute::~CorvMetricRevolute() = default;

lmStatus CorvMetricRevolute::init(const CorvMetricRevoluteWkPtr& i_weakPtr)
{
  return CorvMetric::init(i_weakPtr);
}

CorvMetricRevoluteShPtr CorvMetricRevolute::create()
{
  return create(CorvRWLinearDof::create());
}

CorvMetricRevoluteShPtr CorvMetricRevolute::create(const CorvRandomWalkConstShPtr& i_randomWalk,
                                                   const std::string& i_type)
{
  return lumCreate<CorvMetricRevolute>(i_randomWalk, i_type);
}

CorvMetricRevoluteShPtr CorvMetricRevolute::createCopy(const CorvMetricRevoluteConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMetricShPtr CorvMetricRevolute::clone() const
{
  return createCopy(self());
}

double CorvMetricRevolute::circularDistance(double i_from, double i_to)
{
  return limitAngle(i_to - i_from);
}

double CorvMetricRevolute::limitAngle(double i_angle)
{
  constexpr double PI = ClumGeometryUtilities::PI;
  // What lies within the range is its own remainder: the division is for the others.
  if (i_angle >= -PI && i_angle < PI)
    return i_angle;
  const double angle = std::fmod(i_angle, 2.0 * PI);
  if (angle >= PI)
    return angle - 2.0 * PI;
  return angle < -PI ? angle + 2.0 * PI : angle;
}

double CorvMetricRevolute::distance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return std::fabs(circularDistance(i_a.dofValue(0), i_b.dofValue(0)));
}

bool CorvMetricRevolute::isScaledCircular(double& o_scale) const
{
  o_scale = 1.0;
  return true;
}

bool CorvMetricRevolute::operator==(const CorvMetric& i_other) const
{
  return dynamic_cast<const CorvMetricRevolute*>(&i_other) && CorvMetric::operator==(i_other);
}
