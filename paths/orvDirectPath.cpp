#include "paths/orvDirectPath.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumStringKey.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "paths/orvPathVisitor.h"
#include "paths/orvSteeringMethod.h"
#include "validation/orvValidator.h"
#include "validation/orvValidatorSet.h"

#include <boost/container/small_vector.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

LUM_DESCRIBE(CorvDirectPath)
{
  i_class.property<CorvSteeringMethodShPtr>("steeringMethod", &Self::steeringMethod);
}

/// What is made on first use.
struct CorvDirectPath::CExtras
{
  struct CMark
  {
    ClumStringKey name;
    double distance; ///< private; NaN while the mark has but a configuration
    CorvConfigConstShPtr config;
  };

  CorvConfig start; ///< the public start of a cut, if `hasStart`
  CorvConfig end;
  bool hasStart = false;
  bool hasEnd = false;
  boost::container::small_vector<CMark, 2> marks;

  CMark* find(const std::string& i_mark)
  {
    for (CMark& mark : marks)
      if (mark.name.text() == i_mark)
        return &mark;
    return nullptr;
  }
  CMark& findOrAdd(const std::string& i_mark)
  {
    CMark* const found = find(i_mark);
    return found ? *found
                 : marks.emplace_back(CMark{i_mark, std::numeric_limits<double>::quiet_NaN(), CorvConfigConstShPtr()});
  }
};

namespace
{
double g_minimumDirectPathLength = 1e-7;
} // namespace

CorvDirectPath::CorvDirectPath() = default;

CorvDirectPath::CorvDirectPath(const CorvConfig& i_start, const CorvConfig& i_end,
                               const CorvSteeringMethodShPtr& i_steeringMethod)
  : m_start(i_start), m_end(i_end), m_steeringMethod(i_steeringMethod)
{
}

CorvDirectPath::CorvDirectPath(const CorvDirectPath& i_other)
  : CorvAbstractPath(i_other), CorvValidable(i_other), m_start(i_other.m_start), m_end(i_other.m_end),
    m_steeringMethod(i_other.m_steeringMethod), m_cutStart(i_other.m_cutStart), m_cutEnd(i_other.m_cutEnd),
    m_privateLength(i_other.m_privateLength), m_reversed(i_other.m_reversed),
    m_hasConstantRates(i_other.m_hasConstantRates)
{
  if (i_other.m_extras)
    m_extras.reset(new CExtras(*i_other.m_extras));
}

CorvDirectPath::~CorvDirectPath() = default;

lmStatus CorvDirectPath::init(const CorvDirectPathWkPtr& i_weakPtr)
{
  const lmStatus status = CorvAbstractPath::init(i_weakPtr);
  if (status.failed())
    return status;
  if (!m_steeringMethod || !m_start.space() || m_start.space() != m_end.space())
    return lmStatus(lmStatus::FAILURE);
  return lmStatus();
}

CorvDirectPathShPtr CorvDirectPath::createCopy(const CorvDirectPathConstShPtr& i_objectToCopy)
{
  return i_objectToCopy ? boost::dynamic_pointer_cast<CorvDirectPath>(i_objectToCopy->clone()) : CorvDirectPathShPtr();
}

double CorvDirectPath::minimumLength()
{
  return g_minimumDirectPathLength;
}

void CorvDirectPath::minimumLength(double i_length)
{
  g_minimumDirectPathLength = i_length;
}

namespace
{
/// A copy on which an edit has run, null if it fails.
template <class EDIT>
CorvDirectPathShPtr editedDirectPathCopy(const CorvDirectPathConstShPtr& i_path, const EDIT& i_edit)
{
  const CorvDirectPathShPtr copy = CorvDirectPath::createCopy(i_path);
  return copy && i_edit(*copy).succeeded() ? copy : CorvDirectPathShPtr();
}

/// True if a part between two public distances is long enough to be a path. False for NaN.
bool canExtract(const CorvDirectPath& i_path, double i_from, double i_to)
{
  return CorvDirectPath::minimumLength() < std::min(i_to, i_path.length()) - std::max(i_from, 0.0);
}
} // namespace

CorvDirectPathShPtr CorvDirectPath::remake(const CorvDirectPath& i_path, const CorvConfig& i_start,
                                           const CorvConfig& i_end)
{
  return i_path.m_steeringMethod->makeDirectPath(i_start, i_end);
}

CorvDirectPathShPtr CorvDirectPath::createByExtracting(const CorvDirectPathConstShPtr& i_path, double i_from,
                                                       double i_to)
{
  if (!i_path || !canExtract(*i_path, i_from, i_to))
    return CorvDirectPathShPtr();
  if (i_path->isConservative())
    return editedDirectPathCopy(i_path, [&](CorvDirectPath& io_path) { return io_path.extract(i_from, i_to); });
  const CorvConfigShPtr from = i_path->configAtDistance(i_from);
  const CorvConfigShPtr to = i_path->configAtDistance(i_to);
  return from && to ? remake(*i_path, *from, *to) : CorvDirectPathShPtr();
}

CorvDirectPathShPtr CorvDirectPath::createByExtractingFrom(const CorvDirectPathConstShPtr& i_path, double i_from)
{
  if (!i_path || !canExtract(*i_path, i_from, i_path->length()))
    return CorvDirectPathShPtr();
  if (i_path->isConservative())
    return editedDirectPathCopy(i_path, [&](CorvDirectPath& io_path) { return io_path.extractFrom(i_from); });
  const CorvConfigShPtr from = i_path->configAtDistance(i_from);
  return from ? remake(*i_path, *from, i_path->endConfiguration()) : CorvDirectPathShPtr();
}

CorvDirectPathShPtr CorvDirectPath::createByExtractingTo(const CorvDirectPathConstShPtr& i_path, double i_to)
{
  if (!i_path || !canExtract(*i_path, 0.0, i_to))
    return CorvDirectPathShPtr();
  if (i_path->isConservative())
    return editedDirectPathCopy(i_path, [&](CorvDirectPath& io_path) { return io_path.extractTo(i_to); });
  const CorvConfigShPtr to = i_path->configAtDistance(i_to);
  return to ? remake(*i_path, i_path->startConfiguration(), *to) : CorvDirectPathShPtr();
}

CorvDirectPathShPtr CorvDirectPath::createByExtractingFromMark(const CorvDirectPathConstShPtr& i_path,
                                                               const std::string& i_mark)
{
  double distance = 0.0;
  CorvConfigConstShPtr from;
  if (!i_path || getMarkedPlace(*i_path, i_mark, distance, from).failed() ||
      !canExtract(*i_path, distance, i_path->length()))
    return CorvDirectPathShPtr();
  if (i_path->isConservative())
    return editedDirectPathCopy(i_path, [&](CorvDirectPath& io_path) { return io_path.extractFromMark(i_mark); });
  if (i_path->getMarkConfig(i_mark, from).failed())
    return CorvDirectPathShPtr();
  return remake(*i_path, *from, i_path->endConfiguration());
}

CorvDirectPathShPtr CorvDirectPath::createByExtractingToMark(const CorvDirectPathConstShPtr& i_path,
                                                             const std::string& i_mark)
{
  double distance = 0.0;
  CorvConfigConstShPtr to;
  if (!i_path || getMarkedPlace(*i_path, i_mark, distance, to).failed() || !canExtract(*i_path, 0.0, distance))
    return CorvDirectPathShPtr();
  if (i_path->isConservative())
    return editedDirectPathCopy(i_path, [&](CorvDirectPath& io_path) { return io_path.extractToMark(i_mark); });
  if (i_path->getMarkConfig(i_mark, to).failed())
    return CorvDirectPathShPtr();
  return remake(*i_path, i_path->startConfiguration(), *to);
}

CorvDirectPathShPtr CorvDirectPath::createReversed(const CorvDirectPathConstShPtr& i_path)
{
  if (!i_path)
    return CorvDirectPathShPtr();
  if (i_path->isConservative())
    return editedDirectPathCopy(i_path, [](CorvDirectPath& io_path) { return io_path.reverse(); });
  return remake(*i_path, i_path->endConfiguration(), i_path->startConfiguration());
}

CorvDirectPathShPtr CorvDirectPath::createByConvertingToSpace(const CorvDirectPathConstShPtr& i_path,
                                                              const CorvConfigSpaceShPtr& i_space)
{
  return editedDirectPathCopy(i_path, [&](CorvDirectPath& io_path) { return io_path.convert(i_space); });
}

double CorvDirectPath::privateLength() const
{
  if (m_privateLength < 0.0)
    m_privateLength = computePrivateLength();
  return m_privateLength;
}

double CorvDirectPath::length() const
{
  return privateLength() - m_cutStart - m_cutEnd;
}

double CorvDirectPath::publicToPrivateDistance(double i_distance) const
{
  const double whole = privateLength();
  // The ends of the window are the same places, to the bit, whichever way it is read.
  const double low = m_cutStart, high = whole - m_cutEnd;
  if (!(i_distance > 0.0))
    return std::max(0.0, std::min(m_reversed ? high : low, whole));
  if (i_distance >= length())
    return std::max(0.0, std::min(m_reversed ? low : high, whole));
  const double distance = m_reversed ? whole - (m_cutEnd + i_distance) : m_cutStart + i_distance;
  return std::max(0.0, std::min(distance, whole));
}

double CorvDirectPath::privateToPublicDistance(double i_distance) const
{
  return m_reversed ? privateLength() - (m_cutEnd + i_distance) : i_distance - m_cutStart;
}

CorvDirectPath::CExtras& CorvDirectPath::extras() const
{
  if (!m_extras)
    m_extras.reset(new CExtras);
  return *m_extras;
}

const CorvConfig& CorvDirectPath::startConfiguration() const
{
  if (isStartUncut())
    return publicStart();
  CExtras& cached = extras();
  if (!cached.hasStart)
  {
    cached.start = m_start;
    interpolate(publicToPrivateDistance(0.0), cached.start);
    cached.hasStart = true;
  }
  return cached.start;
}

const CorvConfig& CorvDirectPath::endConfiguration() const
{
  if (isEndUncut())
    return publicEnd();
  CExtras& cached = extras();
  if (!cached.hasEnd)
  {
    cached.end = m_start;
    interpolate(publicToPrivateDistance(length()), cached.end);
    cached.hasEnd = true;
  }
  return cached.end;
}

const CorvConfig& CorvDirectPath::firstConfiguration(EDirection i_direction) const
{
  LUM_ASSERT(i_direction == FORWARD || i_direction == BACKWARD);
  return i_direction == BACKWARD ? endConfiguration() : startConfiguration();
}

const CorvConfig& CorvDirectPath::lastConfiguration(EDirection i_direction) const
{
  LUM_ASSERT(i_direction == FORWARD || i_direction == BACKWARD);
  return i_direction == BACKWARD ? startConfiguration() : endConfiguration();
}

lmStatus CorvDirectPath::getConfigAtDistance(double i_distance, CorvConfig& io_cfg) const
{
  if (!(i_distance > 0.0))
    io_cfg = startConfiguration();
  else if (i_distance >= length())
    io_cfg = endConfiguration();
  else
    interpolate(publicToPrivateDistance(i_distance), io_cfg);
  return lmStatus();
}

lmStatus CorvDirectPath::getConfigAtParam(double i_param, CorvConfig& io_cfg) const
{
  return CorvDirectPath::getConfigAtDistance(length() * i_param, io_cfg);
}

lmStatus CorvDirectPath::getConfigAtStart(CorvConfig& io_cfg) const
{
  io_cfg = startConfiguration();
  return lmStatus();
}

lmStatus CorvDirectPath::getConfigAtEnd(CorvConfig& io_cfg) const
{
  io_cfg = endConfiguration();
  return lmStatus();
}

CorvDeviceShPtr CorvDirectPath::device() const
{
  return m_start.space() ? m_start.space()->device() : CorvDeviceShPtr();
}

CorvConfigSpaceShPtr CorvDirectPath::configSpace() const
{
  return m_start.space();
}

bool CorvDirectPath::isOriented() const
{
  return m_steeringMethod->isOriented(m_start.space());
}

bool CorvDirectPath::getStraightVelocity(std::vector<double>&) const
{
  return false;
}

bool CorvDirectPath::isConservative() const
{
  return m_steeringMethod->isConservative(m_start.space());
}

void CorvDirectPath::describe(const CorvPathVisitorShPtr& i_visitor) const
{
  if (i_visitor)
    i_visitor->executeDirectPath(self());
}

lmStatus CorvDirectPath::boundedMoveByBody(double i_tStart, EDirection i_direction, double& o_tGoal, bool& o_hitsEnd,
                                           std::vector<double>& io_maxDistances) const
{
  CorvConfig cfg(m_start.space());
  const lmStatus status = getConfigAtDistance(i_tStart, cfg);
  if (status.failed())
    return status;
  return _boundedMoveByBodyWithConfig(i_tStart, cfg, i_direction, o_tGoal, o_hitsEnd, io_maxDistances);
}

lmStatus CorvDirectPath::_boundedMoveByBodyWithConfig(double i_t, const CorvConfig& i_cfgAtT, EDirection i_direction,
                                                      double& o_tGoal, bool& o_hitsEnd,
                                                      std::vector<double>& io_maxDistances) const
{
  const CorvDeviceShPtr moved = device();
  if (!moved || (i_direction != FORWARD && i_direction != BACKWARD))
    return lmStatus(lmStatus::FAILURE);
  const bool isForward = i_direction == FORWARD;
  const double whole = length();
  const double t = i_t > 0.0 ? std::min(i_t, whole) : 0.0;
  thread_local std::vector<double> s_derivatives;
  maxAbsoluteDerivative(publicToPrivateDistance(t), publicToPrivateDistance(isForward ? whole : 0.0), s_derivatives);
  double advance = 0.0;
  const lmStatus status = moved->boundedMove(i_cfgAtT, lastConfiguration(i_direction), isForward ? whole - t : t,
                                             s_derivatives, io_maxDistances, advance, o_hitsEnd);
  if (status.failed())
    return status;
  if (isForward)
    o_tGoal = o_hitsEnd ? whole : std::min(t + advance, whole);
  else
    o_tGoal = o_hitsEnd ? 0.0 : std::max(t - advance, 0.0);
  return lmStatus();
}

void CorvDirectPath::forgetStart()
{
  if (m_extras)
    m_extras->hasStart = false;
}

void CorvDirectPath::forgetEnd()
{
  if (m_extras)
    m_extras->hasEnd = false;
}

lmStatus CorvDirectPath::extractFrom(double i_from)
{
  if (!canExtract(*this, i_from, length()))
    return lmStatus(lmStatus::FAILURE);
  // A cut at the start itself moves nothing: the cached start keeps its bits.
  if (i_from > 0.0)
  {
    const double place = publicToPrivateDistance(i_from);
    (m_reversed ? m_cutEnd : m_cutStart) = m_reversed ? privateLength() - place : place;
    forgetStart();
  }
  notify(DID_CHANGE);
  return lmStatus();
}

lmStatus CorvDirectPath::extractTo(double i_to)
{
  if (!canExtract(*this, 0.0, i_to))
    return lmStatus(lmStatus::FAILURE);
  if (i_to < length())
  {
    const double place = publicToPrivateDistance(i_to);
    (m_reversed ? m_cutStart : m_cutEnd) = m_reversed ? place : privateLength() - place;
    forgetEnd();
  }
  notify(DID_CHANGE);
  return lmStatus();
}

lmStatus CorvDirectPath::extract(double i_from, double i_to)
{
  lmStatus status = extractTo(i_to);
  if (status.succeeded())
    status = extractFrom(i_from);
  if (status.succeeded())
    notify(DID_CHANGE);
  return status;
}

lmStatus CorvDirectPath::reverse()
{
  if (isOriented())
    return lmStatus(lmStatus::FAILURE);
  if (m_extras)
  {
    std::swap(m_extras->start, m_extras->end);
    std::swap(m_extras->hasStart, m_extras->hasEnd);
  }
  m_reversed = !m_reversed;
  notify(DID_CHANGE);
  return lmStatus();
}

void CorvDirectPath::deviceVersionChanged()
{
}

lmStatus CorvDirectPath::convert(const CorvConfigSpaceShPtr& i_space)
{
  const double lengthBefore = privateLength();
  lmStatus status = m_start.convert(i_space);
  if (status.succeeded())
    status = m_end.convert(i_space);
  if (status.succeeded() && m_extras && m_extras->hasStart)
    status = m_extras->start.convert(i_space);
  if (status.succeeded() && m_extras && m_extras->hasEnd)
    status = m_extras->end.convert(i_space);
  m_privateLength = -1.0;
  if (status.failed())
    return status;
  if (lengthBefore > 0.0)
    stretchPlaces(privateLength() / lengthBefore);
  if (!m_extras)
    return lmStatus();
  for (CExtras::CMark& mark : m_extras->marks)
  {
    if (!mark.config)
      continue;
    const CorvConfigShPtr converted = CorvConfig::create(*mark.config);
    status = converted->convert(i_space);
    if (status.failed())
      return status;
    mark.config = converted;
  }
  return lmStatus();
}

void CorvDirectPath::stretchPlaces(double i_factor)
{
  if (i_factor == 1.0)
    return;
  m_cutStart *= i_factor;
  m_cutEnd *= i_factor;
  if (m_extras)
    for (CExtras::CMark& mark : m_extras->marks)
      mark.distance *= i_factor;
}

void CorvDirectPath::setMark(const std::string& i_mark, double i_distance) const
{
  extras().findOrAdd(i_mark).distance = publicToPrivateDistance(i_distance);
}

lmStatus CorvDirectPath::getMarkDistance(const std::string& i_mark, double& o_distance) const
{
  if (!hasMark(i_mark))
    return lmStatus(lmStatus::FAILURE);
  o_distance = privateToPublicDistance(m_extras->find(i_mark)->distance);
  return lmStatus();
}

bool CorvDirectPath::hasMark(const std::string& i_mark) const
{
  const CExtras::CMark* const mark = m_extras ? m_extras->find(i_mark) : nullptr;
  return mark && !std::isnan(mark->distance);
}

lmStatus CorvDirectPath::deleteMark(const std::string& i_mark) const
{
  if (!hasMark(i_mark))
    return lmStatus(lmStatus::FAILURE);
  m_extras->marks.erase(m_extras->marks.begin() + (m_extras->find(i_mark) - m_extras->marks.data()));
  return lmStatus();
}

void CorvDirectPath::clearMarks() const
{
  if (m_extras)
    m_extras->marks.clear();
}

void CorvDirectPath::setMarkConfig(const std::string& i_mark, const CorvConfig& i_cfg) const
{
  extras().findOrAdd(i_mark).config = CorvConfig::create(i_cfg);
}

lmStatus CorvDirectPath::getMarkConfig(const std::string& i_mark, CorvConfigConstShPtr& o_cfg) const
{
  double distance = 0.0;
  CorvConfigConstShPtr kept;
  const lmStatus known = getMarkedPlace(*this, i_mark, distance, kept);
  if (!kept && known.succeeded())
  {
    kept = configAtDistance(distance);
    extras().findOrAdd(i_mark).config = kept;
  }
  if (!kept)
    return lmStatus(lmStatus::FAILURE);
  o_cfg = kept;
  return lmStatus();
}

lmStatus CorvDirectPath::getMarkedPlace(const CorvDirectPath& i_path, const std::string& i_mark, double& o_distance,
                                        CorvConfigConstShPtr& o_cfg)
{
  if (const CExtras::CMark* const mark = i_path.m_extras ? i_path.m_extras->find(i_mark) : nullptr)
    o_cfg = mark->config;
  return i_path.getMarkDistance(i_mark, o_distance);
}

lmStatus CorvDirectPath::extractFromMark(const std::string& i_mark)
{
  double distance = 0.0;
  CorvConfigConstShPtr cfg;
  lmStatus status = getMarkedPlace(*this, i_mark, distance, cfg);
  if (status.succeeded())
    status = extractFrom(distance);
  if (status.succeeded() && cfg)
  {
    extras().start = *cfg;
    extras().hasStart = true;
  }
  return status;
}

lmStatus CorvDirectPath::extractToMark(const std::string& i_mark)
{
  double distance = 0.0;
  CorvConfigConstShPtr cfg;
  lmStatus status = getMarkedPlace(*this, i_mark, distance, cfg);
  if (status.succeeded())
    status = extractTo(distance);
  if (status.succeeded() && cfg)
  {
    extras().end = *cfg;
    extras().hasEnd = true;
  }
  return status;
}

bool CorvDirectPath::validateWithPenetration(double i_penetration) const
{
  static const ClumStringKey s_penetrationKey("orvane.core.validator.dp.collision.penetration");
  const ClumParameterMapShPtr params = ClumParameterMap::create();
  params->setDouble(s_penetrationKey, i_penetration);
  return validate(params);
}

void CorvDirectPath::didUnvalidate() const
{
  m_start.unvalidate();
  m_end.unvalidate();
  if (!m_extras)
    return;
  clearMarks();
  m_extras->hasStart = false;
  m_extras->hasEnd = false;
  m_extras->start.unvalidate();
  m_extras->end.unvalidate();
}

bool CorvDirectPath::needsRevalidationWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params,
                                           const CorvValidationReportConstShPtr& i_report) const
{
  return i_validator.shouldRevalidateDirectPath(*this, i_params, i_report);
}

CorvValidatorShPtr CorvDirectPath::designatedValidator() const
{
  return m_start.space() ? m_start.space()->directPathValidators() : CorvValidatorSetShPtr();
}

bool CorvDirectPath::doValidateWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params,
                                    const CorvValidationReportConstShPtr& i_report, CorvValidationReportShPtr& o_report)
{
  return i_validator.doValidateDirectPath(*this, i_params, i_report, o_report);
}

void CorvDirectPath::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvAbstractPath::encodeWithCoder(i_coder);
  m_start.encodeValueWithCoder(*i_coder, "m_start");
  m_end.encodeValueWithCoder(*i_coder, "m_end");
  i_coder->encodeObjectShPtr(m_steeringMethod, "m_steeringMethod");
  i_coder->encodeBool(m_reversed, "m_reversed");
  i_coder->encodeDouble(m_cutStart, "m_cutStart");
  i_coder->encodeDouble(m_cutEnd, "m_cutEnd");
}

lmStatus CorvDirectPath::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvAbstractPath::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_start = CorvConfig(i_coder, "m_start");
  m_end = CorvConfig(i_coder, "m_end");
  m_steeringMethod = i_coder->decode<CorvSteeringMethod>("m_steeringMethod");
  m_reversed = i_coder->decodeBool("m_reversed");
  m_cutStart = i_coder->decodeDouble("m_cutStart");
  m_cutEnd = i_coder->decodeDouble("m_cutEnd");
  m_privateLength = -1.0;
  m_extras.reset();
  const bool areCutsUsable =
    m_cutStart >= 0.0 && m_cutEnd >= 0.0 && std::isfinite(m_cutStart) && std::isfinite(m_cutEnd);
  const bool areEndsUsable = m_start.space() == m_end.space() && m_start.hasSoundValues() && m_end.hasSoundValues();
  return m_steeringMethod && areEndsUsable && areCutsUsable ? lmStatus() : lmStatus(lmStatus::FAILURE);
}
