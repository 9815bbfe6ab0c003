#include "paths/orvDPTrapezoidal.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumLogManager.h"
#include "kinematics/orvDof.h"
#include "metrics/orvMetricRevolute.h"
#include "paths/orvPathValues.h"
#include "paths/orvSMTrapezoidal.h"

#include <algorithm>
#include <cmath>
#include <limits>

LUM_DESCRIBE(CorvDPTrapezoidal)
{
  i_class.creates(
    "(const CorvConfig& i_start, const CorvConfig& i_end, const CorvSMTrapezoidalShPtr& i_steeringMethod)",
    &Self::create);
}

const double CorvDPTrapezoidal::s_halfTurnTolerance = 1e-7;

CorvDPTrapezoidal::CorvDPTrapezoidal(const CorvConfig& i_start, const CorvConfig& i_end,
                                     const CorvSMTrapezoidalShPtr& i_steeringMethod)
  : CorvDirectPath(i_start, i_end, i_steeringMethod), m_SMTrapezoidal(i_steeringMethod), m_startConfig(i_start),
    m_endConfig(i_end)
{
}

CorvDPTrapezoidal::~CorvDPTrapezoidal() = default;

lmStatus CorvDPTrapezoidal::init(const CorvDPTrapezoidalWkPtr& i_weakPtr)
{
  lmStatus status = CorvDirectPath::init(i_weakPtr);
  if (status.succeeded())
    status = checkLimits();
  return status.succeeded() ? computeProfiles() : status;
}

CorvDPTrapezoidalShPtr CorvDPTrapezoidal::create(const CorvConfig& i_start, const CorvConfig& i_end,
                                                 const CorvSMTrapezoidalShPtr& i_steeringMethod)
{
  return lumCreate<CorvDPTrapezoidal>(i_start, i_end, i_steeringMethod);
}

CorvDPTrapezoidalShPtr CorvDPTrapezoidal::createCopy(const CorvDPTrapezoidalConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvAbstractPathShPtr CorvDPTrapezoidal::clone() const
{
  return createCopy(self());
}

namespace
{
lmStatus refusedTrapezoid(const char* i_message)
{
  ClumLogManager::addError(__FILE__, __LINE__, i_message);
  return lmStatus(lmStatus::FAILURE);
}
} // namespace

lmStatus CorvDPTrapezoidal::checkLimits() const
{
  const CorvConfigSpace& space = *configSpace();
  const std::vector<double>& velocities = m_SMTrapezoidal->maxVelocities();
  const std::vector<double>& accelerations = m_SMTrapezoidal->maxAccelerations();
  if (velocities.size() != space.size() || accelerations.size() != space.size())
    return lmStatus(lmStatus::FAILURE);
  std::vector<double> differences;
  getDifferences(differences);
  for (unsigned int i = 0; i < space.size(); ++i)
  {
    const CorvDofShPtr dof = space.dof(i);
    if (dof->isRevolute() && !dof->isBounded() && !space.isDofPassive(i) && velocities[i] != 0.0 &&
        std::fabs(differences[i]) > ClumGeometryUtilities::PI - s_halfTurnTolerance)
      return refusedTrapezoid("CorvDPTrapezoidal::init: Half turn is forbidden for actif revolute joint");
    if (!(velocities[i] >= 0.0))
      return refusedTrapezoid("CorvDPTrapezoidal::init: Maximum velocity can not be a negative");
    if (!(accelerations[i] >= 0.0))
      return refusedTrapezoid("CorvDPTrapezoidal::init: Maximum acceleration can not be negative");
    if (accelerations[i] == 0.0 && velocities[i] != 0.0)
      return refusedTrapezoid("CorvDPTrapezoidal::init: Maximum acceleration can not be nul");
  }
  return lmStatus();
}

void CorvDPTrapezoidal::getDifferences(std::vector<double>& o_differences) const
{
  const CorvConfigSpace& space = *configSpace();
  const double* start = m_startConfig.beginPtr();
  const double* end = m_endConfig.beginPtr();
  o_differences.resize(space.size());
  for (unsigned int i = 0; i < space.size(); ++i)
  {
    const CorvDofShPtr dof = space.dof(i);
    const bool isCircular = dof->isRevolute() && !dof->isBounded();
    o_differences[i] = isCircular ? CorvMetricRevolute::circularDistance(start[i], end[i]) : end[i] - start[i];
  }
}

void CorvDPTrapezoidal::profileOfRest()
{
  m_tAcc = m_tVc = m_tTot = m_tAccPir = m_lbdaAcc = m_lbdaPMax = m_lbdaSMax = 0.0;
}

lmStatus CorvDPTrapezoidal::computeProfiles()
{
  const CorvConfigSpace& space = *configSpace();
  const std::vector<double>& velocities = m_SMTrapezoidal->maxVelocities();
  const std::vector<double>& accelerations = m_SMTrapezoidal->maxAccelerations();
  if (velocities.size() != space.size() || accelerations.size() != space.size())
    return lmStatus(lmStatus::FAILURE);
  std::vector<double> differences;
  getDifferences(differences);
  const double infinity = std::numeric_limits<double>::infinity();
  double rate = infinity, acceleration = infinity;
  bool isAtRest = true;
  for (unsigned int i = 0; i < space.size(); ++i)
  {
    const double way = std::fabs(differences[i]);
    if (space.isDofPassive(i) || way == 0.0)
      continue;
    isAtRest = false;
    if (velocities[i] == 0.0 || accelerations[i] == 0.0)
      continue;
    rate = std::min(rate, velocities[i] / way);
    acceleration = std::min(acceleration, accelerations[i] / way);
  }
  profileOfRest();
  if (isAtRest)
    return lmStatus();
  if (rate == infinity && acceleration == infinity)
    return refusedTrapezoid("CorvDPTrapezoidal::computeProfiles: Velocity or acceleration is not bounded by any Dof.");
  m_lbdaPMax = rate;
  m_lbdaSMax = acceleration;
  m_tAcc = rate / acceleration;
  m_tAccPir = std::sqrt(1.0 / acceleration);
  if (!isProfileTrapezoidal())
  {
    m_tTot = 2.0 * m_tAccPir;
    return lmStatus();
  }
  m_lbdaAcc = 0.5 * m_tAcc * m_tAcc * m_lbdaSMax;
  m_tVc = (1.0 - 2.0 * m_lbdaAcc) / m_lbdaPMax;
  m_tTot = 2.0 * m_tAcc + m_tVc;
  return lmStatus();
}

double CorvDPTrapezoidal::rampTime() const
{
  return isProfileTrapezoidal() ? m_tAcc : m_tAccPir;
}

double CorvDPTrapezoidal::maxProgressRate() const
{
  return isProfileTrapezoidal() ? m_lbdaPMax : std::sqrt(m_lbdaSMax);
}

double CorvDPTrapezoidal::progressAt(double i_time) const
{
  const double ramp = rampTime();
  if (i_time <= ramp)
    return 0.5 * m_lbdaSMax * i_time * i_time;
  if (i_time <= m_tTot - ramp)
    return (i_time - m_tAcc) * m_lbdaPMax + m_lbdaAcc;
  return 1.0 - 0.5 * m_lbdaSMax * (m_tTot - i_time) * (m_tTot - i_time);
}

double CorvDPTrapezoidal::length() const
{
  return m_tTot;
}

double CorvDPTrapezoidal::privateLength() const
{
  return m_tTot;
}

double CorvDPTrapezoidal::computePrivateLength() const
{
  LUM_ASSERT(false);
  return m_tTot;
}

void CorvDPTrapezoidal::interpolate(double i_distance, CorvConfig& io_cfg) const
{
  LUM_ASSERT(false);
  getConfigAtDistance(i_distance, io_cfg);
}

lmStatus CorvDPTrapezoidal::getConfigAtDistance(double i_time, CorvConfig& io_cfg) const
{
  if (!(i_time > 0.0) || i_time >= m_tTot)
  {
    io_cfg = i_time > 0.0 ? m_endConfig : m_startConfig;
    return lmStatus();
  }
  const CorvConfigSpace& space = *configSpace();
  std::vector<double> values;
  getDifferences(values);
  const double* start = m_startConfig.beginPtr();
  const double progress = progressAt(i_time);
  for (unsigned int i = 0; i < values.size(); ++i)
    values[i] = space.isDofPassive(i) ? start[i] : start[i] + values[i] * progress;
  if (io_cfg.size() != values.size())
    io_cfg = m_startConfig;
  orvWriteAllValues(io_cfg, values.data(), static_cast<unsigned int>(values.size()));
  return lmStatus();
}

lmStatus CorvDPTrapezoidal::getConfigAtParam(double i_param, CorvConfig& io_cfg) const
{
  return getConfigAtDistance(m_tTot * i_param, io_cfg);
}

const CorvConfig& CorvDPTrapezoidal::startConfiguration() const
{
  return m_startConfig;
}

const CorvConfig& CorvDPTrapezoidal::endConfiguration() const
{
  return m_endConfig;
}

lmStatus CorvDPTrapezoidal::replaceEnds(const CorvConfig& i_start, const CorvConfig& i_end)
{
  const CorvConfig oldStart = m_startConfig, oldEnd = m_endConfig;
  const CorvConfig start = i_start, end = i_end;
  m_startConfig = start;
  m_endConfig = end;
  const lmStatus status = computeProfiles();
  if (status.failed())
  {
    m_startConfig = oldStart;
    m_endConfig = oldEnd;
    computeProfiles();
    return status;
  }
  clearMarks();
  notify(DID_CHANGE);
  return status;
}

lmStatus CorvDPTrapezoidal::extract(double i_from, double i_to)
{
  // Of a NaN nothing is taken.
  const double from = i_from < 0.0 ? 0.0 : i_from, to = i_to > m_tTot ? m_tTot : i_to;
  if (!(minimumLength() < to - from))
    return lmStatus(lmStatus::FAILURE);
  CorvConfig start(configSpace()), end(configSpace());
  lmStatus status = getConfigAtDistance(from, start);
  if (status.succeeded())
    status = getConfigAtDistance(to, end);
  return status.succeeded() ? replaceEnds(start, end) : status;
}

lmStatus CorvDPTrapezoidal::extractFrom(double i_from)
{
  return extract(i_from, m_tTot);
}

lmStatus CorvDPTrapezoidal::extractTo(double i_to)
{
  return extract(0.0, i_to);
}

lmStatus CorvDPTrapezoidal::reverse()
{
  return isOriented() ? lmStatus(lmStatus::FAILURE) : replaceEnds(m_endConfig, m_startConfig);
}

lmStatus CorvDPTrapezoidal::convert(const CorvConfigSpaceShPtr& i_space)
{
  lmStatus status = CorvDirectPath::convert(i_space);
  if (status.succeeded())
    status = m_startConfig.convert(i_space);
  if (status.succeeded())
    status = m_endConfig.convert(i_space);
  return status;
}

void CorvDPTrapezoidal::didUnvalidate() const
{
  CorvDirectPath::didUnvalidate();
  m_startConfig.unvalidate();
  m_endConfig.unvalidate();
}

lmStatus CorvDPTrapezoidal::scaledDifferences(double i_scale, std::vector<double>& o_values) const
{
  const CorvConfigSpace& space = *configSpace();
  getDifferences(o_values);
  for (unsigned int i = 0; i < o_values.size(); ++i)
    o_values[i] = space.isDofPassive(i) || o_values[i] == 0.0 ? 0.0 : o_values[i] * i_scale;
  return lmStatus();
}

void CorvDPTrapezoidal::maxAbsoluteDerivative(double, double, std::vector<double>& o_derivatives) const
{
  getDifferences(o_derivatives);
  const double rate = maxProgressRate();
  for (double& way : o_derivatives)
    way = way == 0.0 ? 0.0 : std::fabs(way) * rate;
}

lmStatus CorvDPTrapezoidal::getDofsVelocityAtTime(double i_time, std::vector<double>& o_velocities) const
{
  if (!(i_time >= 0.0 && i_time < m_tTot))
    return lmStatus(lmStatus::FAILURE);
  const double ramp = rampTime();
  const double part = std::min({1.0, i_time / ramp, (m_tTot - i_time) / ramp});
  return scaledDifferences(part / (m_tVc + ramp), o_velocities);
}

lmStatus CorvDPTrapezoidal::getDofsAccelerationAtTime(double i_time, std::vector<double>& o_accelerations) const
{
  if (!(i_time >= 0.0 && i_time < m_tTot))
    return lmStatus(lmStatus::FAILURE);
  const double ramp = rampTime();
  const double sense = i_time < ramp ? 1.0 : i_time < m_tTot - ramp ? 0.0 : -1.0;
  return scaledDifferences(sense / (ramp * (m_tVc + ramp)), o_accelerations);
}

void CorvDPTrapezoidal::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvDirectPath::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_tAcc, "tAcc");
  i_coder->encodeDouble(m_tVc, "tVc");
  i_coder->encodeDouble(m_tTot, "tTot");
  i_coder->encodeDouble(m_tAccPir, "tAccPir");
  i_coder->encodeDouble(m_lbdaAcc, "lbdaAcc");
  i_coder->encodeDouble(m_lbdaPMax, "lbdaPMax");
  i_coder->encodeDouble(m_lbdaSMax, "lbdaSMax");
  i_coder->encodeObjectShPtr(m_SMTrapezoidal, "SMTrapezoidal");
  m_startConfig.encodeValueWithCoder(*i_coder, "startConfig");
  m_endConfig.encodeValueWithCoder(*i_coder, "endConfig");
}

lmStatus CorvDPTrapezoidal::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvDirectPath::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_tAcc = i_coder->decodeDouble("tAcc");
  m_tVc = i_coder->decodeDouble("tVc");
  m_tTot = i_coder->decodeDouble("tTot");
  m_tAccPir = i_coder->decodeDouble("tAccPir");
  m_lbdaAcc = i_coder->decodeDouble("lbdaAcc");
  m_lbdaPMax = i_coder->decodeDouble("lbdaPMax");
  m_lbdaSMax = i_coder->decodeDouble("lbdaSMax");
  m_SMTrapezoidal = i_coder->decode<CorvSMTrapezoidal>("SMTrapezoidal");
  m_startConfig = CorvConfig(i_coder, "startConfig");
  m_endConfig = CorvConfig(i_coder, "endConfig");
  const bool areEndsUsable = m_startConfig.space() == configSpace() && m_startConfig.hasSoundValues() &&
                             m_endConfig.space() == configSpace() && m_endConfig.hasSoundValues();
  const bool areTimesUsable = std::isfinite(m_tTot) && m_tTot >= 0.0 && m_lbdaSMax >= 0.0;
  const bool isUsable = m_SMTrapezoidal && areEndsUsable && areTimesUsable && isWindowWhole() && !isReversed();
  return lmStatus(isUsable ? lmStatus::SUCCESS : lmStatus::FAILURE);
}
