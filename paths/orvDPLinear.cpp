#include "paths/orvDPLinear.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDof.h"
#include "metrics/orvMetricRevolute.h"
#include "paths/orvPathValues.h"
#include "paths/orvPathVisitor.h"

#include <cmath>

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
}

CorvDPLinear::~CorvDPLinear() = default;

lmStatus CorvDPLinear::init(const CorvDPLinearWkPtr& i_weakPtr)
{
  const lmStatus status = CorvDirectPath::init(i_weakPtr);
  if (status.failed())
    return status;
  return hasHalfTurn() ? lmStatus(lmStatus::FAILURE) : lmStatus();
}

lmStatus CorvDPLinear::init(const CorvDPLinearWkPtr& i_weakPtr, const CorvDPLinearConstShPtr&)
{
  return CorvDirectPath::init(i_weakPtr);
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

const CorvDPLinear::TDofMotions& CorvDPLinear::dofMotions() const
{
  const CorvConfigSpace& space = *privateStart().space();
  const unsigned int version = space.version();
  if (m_motionVersion == version)
    return m_dofMotions;
  m_dofMotions.clear();
  for (unsigned int i = 0; i < space.size(); ++i)
  {
    const CorvDofShPtr dof = space.dof(i);
    m_dofMotions.push_back(dof->isRevolute() && !dof->isBounded() ? CIRCULAR : STRAIGHT);
  }
  m_motionVersion = version;
  return m_dofMotions;
}

bool CorvDPLinear::hasHalfTurn() const
{
  const CorvConfigSpace& space = *privateStart().space();
  const double* start = privateStart().beginPtr();
  const double* end = privateEnd().beginPtr();
  const TDofMotions& motions = dofMotions();
  const double limit = ClumGeometryUtilities::PI - s_halfTurnTolerance;
  for (unsigned int i = 0; i < motions.size(); ++i)
    if (motions[i] == CIRCULAR && std::fabs(CorvMetricRevolute::circularDistance(start[i], end[i])) > limit &&
        !space.isDofPassive(i))
      return true;
  return false;
}

double CorvDPLinear::computePrivateLength() const
{
  return privateStart().distanceTo(privateEnd());
}

void CorvDPLinear::interpolate(double i_distance, CorvConfig& io_cfg) const
{
  const CorvConfigSpace& space = *privateStart().space();
  const double* start = privateStart().beginPtr();
  const double* end = privateEnd().beginPtr();
  const TDofMotions& motions = dofMotions();
  const unsigned int count = static_cast<unsigned int>(motions.size());
  const double whole = privateLength();
  const double t = whole > 0.0 ? i_distance / whole : 0.0;
  // Passive dofs begin where the path begins, whatever the configuration held before.
  const bool hasPassiveDofs = space.hasPassiveDofs();
  boost::container::small_vector<double, 16> values(start, start + count);
  for (unsigned int i = 0; i < count; ++i)
    if (!hasPassiveDofs || !space.isDofPassive(i))
      values[i] = motions[i] == CIRCULAR ? start[i] + CorvMetricRevolute::circularDistance(start[i], end[i]) * t
                                         : (1.0 - t) * start[i] + t * end[i];
  if (io_cfg.size() != count)
    io_cfg = privateStart();
  orvWriteAllValues(io_cfg, values.data(), count);
}

void CorvDPLinear::maxAbsoluteDerivative(double, double, std::vector<double>& o_derivatives) const
{
  const double* start = privateStart().beginPtr();
  const double* end = privateEnd().beginPtr();
  const TDofMotions& motions = dofMotions();
  const double whole = privateLength();
  o_derivatives.resize(motions.size());
  for (unsigned int i = 0; i < motions.size(); ++i)
  {
    const double way =
      std::fabs(motions[i] == CIRCULAR ? CorvMetricRevolute::circularDistance(start[i], end[i]) : end[i] - start[i]);
    o_derivatives[i] = way == 0.0 ? 0.0 : way / whole;
  }
}

void CorvDPLinear::describe(const CorvPathVisitorShPtr& i_visitor) const
{
  if (i_visitor)
    i_visitor->executeLinearDirectPath(self());
}
