#include "paths/orvDPLinear.h"

#include "foundation/lumDescribe.h"
#include "paths/orvPathVisitor.h"
#include "paths/orvStraightMotion.h"

LUM_DESCRIBE(CorvDPLinear)
{
  i_class.creates(
    "(const CorvConfig& i_start, const CorvConfig& i_end, const CorvSteeringMethodShPtr& i_steeringMethod)",
    &Self::create);
}

const double CorvDPLinear::s_halfTurnTolerance = 1e-7;

CorvDPLinear::CorvDPLinear(const CorvConfig& i_start, const CorvConfig& i_end,
                           const CorvSteeringMethodShPtr& i_steeringMethod)
  : CorvDirectPath(i_start, i_end, i_steeringMethod)
{
  hasConstantRates(true);
}

CorvDPLinear::CorvDPLinear()
{
  hasConstantRates(true);
}

CorvDPLinear::~CorvDPLinear() = default;

lmStatus CorvDPLinear::init(const CorvDPLinearWkPtr& i_weakPtr)
{
  const lmStatus status = CorvDirectPath::init(i_weakPtr);
  if (status.failed())
    return status;
  return canConnect(privateStart(), privateEnd()) ? lmStatus() : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvDPLinear::init(const CorvDPLinearWkPtr& i_weakPtr, const CorvDPLinearConstShPtr&)
{
  return CorvDirectPath::init(i_weakPtr);
}

bool CorvDPLinear::canConnect(const CorvConfig& i_start, const CorvConfig& i_end)
{
  return !orvHasHalfTurn(i_start, i_end, s_halfTurnTolerance);
}

CorvDPLinearShPtr CorvDPLinear::create(const CorvConfig& i_start, const CorvConfig& i_end,
                                       const CorvSteeringMethodShPtr& i_steeringMethod)
{
  return lumCreate<CorvDPLinear>(i_start, i_end, i_steeringMethod);
}

CorvDPLinearShPtr CorvDPLinear::createCopy(const CorvDPLinearConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvAbstractPathShPtr CorvDPLinear::clone() const
{
  return createCopy(self());
}

double CorvDPLinear::computePrivateLength() const
{
  return privateStart().distanceTo(privateEnd());
}

void CorvDPLinear::interpolate(double i_distance, CorvConfig& io_cfg) const
{
  const double whole = privateLength();
  orvInterpolateStraight(privateStart(), privateEnd(), whole > 0.0 ? i_distance / whole : 0.0, io_cfg);
}

void CorvDPLinear::maxAbsoluteDerivative(double, double, std::vector<double>& o_derivatives) const
{
  orvComputeStraightRates(privateStart(), privateEnd(), privateLength(), o_derivatives);
}

bool CorvDPLinear::getStraightVelocity(std::vector<double>& o_velocity) const
{
  const double length = privateLength();
  return orvGetStraightVelocity(privateStart(), privateEnd(), isReversed() ? -length : length, o_velocity);
}

void CorvDPLinear::describe(const CorvPathVisitorShPtr& i_visitor) const
{
  if (i_visitor)
    i_visitor->executeLinearDirectPath(self());
}
