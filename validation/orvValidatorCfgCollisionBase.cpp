#include "validation/orvValidatorCfgCollisionBase.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "paths/orvDirectPath.h"
#include "validation/orvReportCfgCollision.h"

#include <algorithm>
#include <cmath>
#include <limits>

LUM_DESCRIBE(CorvValidatorCfgCollisionBase)
{
}

const std::string CorvValidatorCfgCollisionBase::VALIDATOR_NAME("orvane.core.cfg-collision");
std::atomic<unsigned long> CorvValidatorCfgCollisionBase::s_countTests{0};
std::atomic<unsigned long> CorvValidatorCfgCollisionBase::s_countQueries{0};

namespace
{
/// At penetration 0 a motion bound needs distances above this.
constexpr double VALID_MOTION_SAG = 1e-4;
/// For the rounding between a need and the allowance that was cut to it.
constexpr double SAME_NEED = 1.0 - 1e-9;

ClumStringKey cfgCollisionKey(const char* i_name)
{
  return ClumStringKey(std::string("orvane.core.validator.cfg.collision.") + i_name);
}

struct CCfgCollisionKeys
{
  ClumStringKey distanceMode = cfgCollisionKey("distance-mode");
  ClumStringKey comparisonMode = cfgCollisionKey("distance-comparison-mode");
  ClumStringKey method = cfgCollisionKey("method");
  ClumStringKey precision = cfgCollisionKey("precision");
  ClumStringKey toleranceModifier = cfgCollisionKey("tolerance-modifier");
  ClumStringKey toleranceActivation = cfgCollisionKey("tolerance-activation");
  ClumStringKey distanceModifier = cfgCollisionKey("distance-modifier");
  ClumStringKey specificBody = cfgCollisionKey("specific-body");
  ClumStringKey reportsMaxAllowable = cfgCollisionKey("report-max-allowable-distances");
  ClumStringKey pointsMode = cfgCollisionKey("report-distance-points-mode");
  ClumStringKey selfCollision = cfgCollisionKey("autocol-activation");
  ClumStringKey penetration = "orvane.core.validator.dp.collision.penetration";
};

const CCfgCollisionKeys& cfgCollisionKeys()
{
  static const CCfgCollisionKeys s_keys;
  return s_keys;
}

std::vector<double> readThresholds(const ClumParameterMap& i_params, unsigned int i_countBodies)
{
  std::vector<double> thresholds;
  for (unsigned int body = 0; body < i_countBodies; ++body)
  {
    const ClumStringKey key = cfgCollisionKey(("distance-threshold-" + std::to_string(body)).c_str());
    if (!i_params.hasDouble(key))
      continue;
    thresholds.resize(i_countBodies, std::numeric_limits<double>::quiet_NaN());
    thresholds[body] = i_params.doubleValue(key, 0.0);
  }
  return thresholds;
}

/// True if the distances of the report are as good as the query wants them.
bool areDistancesGoodEnough(const CorvReportCfgCollision& i_report, const CorvCollisionQuery& i_query)
{
  const CorvCollisionQuery& made = i_report.query();
  if (!i_query.isProof())
  {
    const bool wantsExact = i_query.method >= CorvCollisionQuery::EXACT_DISTANCE;
    const bool isExact = !made.isBoundEnough && made.method >= CorvCollisionQuery::EXACT_DISTANCE;
    return !made.isCapped && (!wantsExact || (isExact && made.precision <= i_query.precision));
  }
  if (!made.isProof() || made.slack != i_query.slack || made.isExact != i_query.isExact ||
      (made.isBoundEnough && !i_query.isBoundEnough))
    return false;
  for (unsigned int i = 0; i < i_report.countAllowances(); ++i)
  {
    const bool isEnough = i < i_query.needs.size() && i_report.allowance(i) >= i_query.needs[i] * SAME_NEED;
    if (i_report.isAllowanceCapped(i) && !isEnough)
      return false;
  }
  return true;
}
} // namespace

CorvValidatorCfgCollisionBase::CorvValidatorCfgCollisionBase(const CorvConfigSpaceShPtr& i_space,
                                                             bool i_isDistanceValidator)
  : CorvConfigValidator(i_space, VALIDATOR_NAME), m_isDistanceValidator(i_isDistanceValidator)
{
}

CorvValidatorCfgCollisionBase::~CorvValidatorCfgCollisionBase() = default;

lmStatus CorvValidatorCfgCollisionBase::init(const CorvValidatorCfgCollisionBaseWkPtr& i_weakPtr)
{
  return CorvConfigValidator::init(i_weakPtr);
}

void CorvValidatorCfgCollisionBase::isDistanceValidator(bool i_isDistanceValidator)
{
  if (i_isDistanceValidator == m_isDistanceValidator)
    return;
  m_isDistanceValidator = i_isDistanceValidator;
  didChange();
}

lmStatus CorvValidatorCfgCollisionBase::getMaximumTolerance(const CorvDeviceShPtr& i_device, double& o_tolerance) const
{
  if (!i_device)
    return -1;
  lmStatus status;
  o_tolerance = 0.0;
  for (const CorvBodyShPtr& body : i_device->bodyVector())
  {
    double tolerance = 0.0;
    const lmStatus bodyStatus = body->getMaximumTolerance(tolerance);
    if (bodyStatus.succeeded())
      o_tolerance = std::max(o_tolerance, tolerance);
    else
      status = bodyStatus;
  }
  return status;
}

int CorvValidatorCfgCollisionBase::defaultDistanceMode() const
{
  return m_isDistanceValidator ? 1 : 0;
}

int CorvValidatorCfgCollisionBase::defaultComparisonMode() const
{
  return m_isDistanceValidator ? 1 : 0;
}

CorvCollisionQuery CorvValidatorCfgCollisionBase::makeQuery(const ClumParameterMapConstShPtr& i_params) const
{
  CorvCollisionQuery query;
  query.distanceMode = defaultDistanceMode();
  query.comparisonMode = defaultComparisonMode();
  if (i_params && !i_params->holdsOnlyPointer(validationSpaceParameterKey()))
  {
    const CCfgCollisionKeys& keys = cfgCollisionKeys();
    query.distanceMode = i_params->intValue(keys.distanceMode, query.distanceMode);
    query.comparisonMode = i_params->intValue(keys.comparisonMode, query.comparisonMode);
    query.method = i_params->intValue(keys.method, query.method);
    query.precision = i_params->doubleValue(keys.precision, 0.0);
    if (query.distanceMode == 0)
    {
      query.hasToleranceModifier = i_params->getDouble(keys.toleranceModifier, query.toleranceModifier).succeeded();
      query.hasToleranceActivation = i_params->getBool(keys.toleranceActivation, query.toleranceActivation).succeeded();
    }
    query.specificBody = i_params->intValue(keys.specificBody, query.specificBody);
    query.reportsMaxAllowableDistances = i_params->boolValue(keys.reportsMaxAllowable, false);
    query.pointsMode = i_params->intValue(keys.pointsMode, 0);
    query.testsSelfCollision = i_params->boolValue(keys.selfCollision, true);
  }
  if (query.distanceMode == 1)
    query.method = CorvCollisionQuery::EXACT_DISTANCE;
  else if (query.distanceMode != 0)
    query.method = CorvCollisionQuery::DISTANCE_WITH_TOLERANCE;
  if (query.distanceMode != 0 && i_params)
  {
    const CorvDeviceShPtr owner = device();
    query.distanceModifier = i_params->doubleValue(cfgCollisionKeys().distanceModifier, 0.0);
    query.thresholds = readThresholds(*i_params, owner ? owner->countBodies() : 0);
  }
  return query;
}

std::uint64_t CorvValidatorCfgCollisionBase::sceneStamp() const
{
  return 0;
}

void CorvValidatorCfgCollisionBase::willTestMotion() const
{
}

unsigned int CorvValidatorCfgCollisionBase::bodiesVersionSum(const CorvDevice& i_device)
{
  unsigned int sum = 0;
  for (const CorvBodyShPtr& body : i_device.bodyVector())
    sum += body->version();
  return sum;
}

void CorvValidatorCfgCollisionBase::getTolerance(const CorvBody& i_body, const CorvCollisionQuery& i_query,
                                                 double& o_modifier, bool& o_activation)
{
  double modifier = 0.0;
  bool activation = false;
  if (i_body.getToleranceModifier(modifier).failed())
    modifier = 0.0;
  if (i_body.getToleranceActivation(activation).failed())
    activation = false;
  o_modifier = i_query.hasToleranceModifier ? modifier + i_query.toleranceModifier : modifier;
  o_activation = i_query.hasToleranceActivation ? i_query.toleranceActivation : activation;
}

bool CorvValidatorCfgCollisionBase::isJudgedElsewhere(const CorvConfig& i_cfg,
                                                      const ClumParameterMapConstShPtr& i_params,
                                                      const CorvDevice* i_device) const
{
  const CorvConfigSpaceShPtr& space = i_cfg.space();
  if (!space)
    return false;
  const CorvConfigSpace* validationSpace = unwrappedValidationSpace(i_params);
  if (!validationSpace)
    validationSpace = &space->root()->unwrapped();
  if (validationSpace == &space->unwrapped())
    return false;
  // A space above that is no device's tests nothing itself: then this validator is the one that does.
  const CorvDeviceShPtr owner = validationSpace->device();
  if (!owner || owner.get() != i_device)
    return false;
  const CorvValidatorCfgCollisionBaseShPtr validator = owner->collisionValidator();
  return validator && validator->isActivated();
}

bool CorvValidatorCfgCollisionBase::isOutdated(const CorvReportCfgCollision& i_report,
                                               const CorvCollisionQuery& i_query, const CorvDevice& i_device) const
{
  const CorvReportCfgCollision::CStamps& stamps = i_report.stamps();
  return stamps.device != i_device.version() || stamps.bodies != bodiesVersionSum(i_device) ||
         stamps.scene != sceneStamp() || i_report.specificBody() != i_query.specificBody ||
         i_report.query().testsSelfCollision != i_query.testsSelfCollision ||
         !i_report.query().hasSameThresholds(i_query);
}

bool CorvValidatorCfgCollisionBase::shouldRevalidateConfig(const CorvConfig& i_cfg,
                                                           const ClumParameterMapConstShPtr& i_params,
                                                           const CorvValidationReportConstShPtr& i_report) const
{
  const CorvReportCfgCollision* report = dynamic_cast<const CorvReportCfgCollision*>(i_report.get());
  const CorvDevice* owner = bareDevice();
  if (!report || !owner)
    return true;
  const CorvCollisionQuery* record = CorvCollisionQuery::in(i_params, owner);
  const CorvCollisionQuery query = record ? CorvCollisionQuery() : makeQuery(i_params);
  const CorvCollisionQuery& asked = record ? *record : query;
  if (isOutdated(*report, asked, *owner))
    return true;
  const bool wantsMore = report->isValid() && asked.wantsDistances() &&
                         ((report->countDistances() == 0 && report->countToleranceModifiers() != 0) ||
                          !areDistancesGoodEnough(*report, asked));
  const bool lacksPoints = report->isValid() && asked.pointsMode != 0 && report->query().pointsMode == 0;
  return wantsMore || lacksPoints || !absorbTolerances(i_cfg, *report, asked, *owner);
}

bool CorvValidatorCfgCollisionBase::absorbTolerances(const CorvConfig& i_cfg, const CorvReportCfgCollision& i_report,
                                                     const CorvCollisionQuery& i_query,
                                                     const CorvDevice& i_device) const
{
  const std::vector<CorvBodyShPtr>& bodies = i_device.bodyVector();
  const unsigned int first = i_query.specificBody >= 0 ? static_cast<unsigned int>(i_query.specificBody) : 0;
  const unsigned int count = i_query.specificBody >= 0 ? 1 : static_cast<unsigned int>(bodies.size());
  if (i_report.countToleranceModifiers() != count || i_report.countToleranceActivations() != count ||
      first + count > bodies.size())
    return false;
  const auto modifierOf = [&](unsigned int i_rank, bool& o_isActive)
  {
    double modifier = 0.0;
    getTolerance(*bodies[first + i_rank], i_query, modifier, o_isActive);
    return modifier;
  };
  double growth = 0.0;
  for (unsigned int i = 0; i < count; ++i)
  {
    bool isActive = false;
    const double change = modifierOf(i, isActive) - i_report.toleranceModifier(i);
    if (isActive != i_report.toleranceActivation(i) || (isActive && !i_report.isValid() && change < 0.0))
      return false;
    if (isActive)
      growth = std::max(growth, change);
  }
  if (!i_report.isValid() || !(growth > 0.0))
    return true;

  // Every clearance may have lost as much as the largest growth. Copies share the old report: it stays as it is.
  const CorvReportCfgCollisionShPtr corrected = CorvReportCfgCollision::createCopy(i_report.self());
  corrected->shrinkDistances(growth);
  bool isStillClear = corrected->countDistances() > 0;
  for (unsigned int i = 0; i < corrected->countDistances(); ++i)
    isStillClear = isStillClear && corrected->distance(i) > 0.0;
  for (unsigned int i = 0; i < corrected->countAllowances(); ++i)
    isStillClear = isStillClear && corrected->allowance(i) > 0.0;
  if (!isStillClear || i_report.query().pointsMode != 0)
    return false;
  for (unsigned int i = 0; i < count; ++i)
  {
    bool isActive = false;
    corrected->changeToleranceModifier(i, std::max(modifierOf(i, isActive), i_report.toleranceModifier(i)));
  }
  i_cfg.setKeyedReport(nameKey(), corrected, i_cfg.configSpace());
  return true;
}

lmStatus CorvValidatorCfgCollisionBase::validMotion(const CorvDirectPath& i_dp, double i_param, const CorvConfig& i_cfg,
                                                    CorvAbstractPath::EDirection i_direction,
                                                    const ClumParameterMapConstShPtr& i_params, double& o_bound,
                                                    bool& o_exact) const
{
  const CorvDeviceShPtr owner = device();
  if (!owner || !i_cfg.isValid())
    return -1;
  const double penetration = i_params ? i_params->doubleValue(cfgCollisionKeys().penetration, 0.0) : 0.0;
  const CorvValidationReportConstShPtr stored = upToDateReportFrom(i_cfg, i_params);
  const CorvReportCfgCollision* report = dynamic_cast<const CorvReportCfgCollision*>(stored.get());
  const bool hasAllowances = report && report->countAllowances() == owner->countBodies();
  if (penetration == 0.0)
  {
    if (!hasAllowances || report->countDistances() == 0)
      return -1;
    for (unsigned int i = 0; i < report->countDistances(); ++i)
      if (!(report->distance(i) > VALID_MOTION_SAG))
        return -1;
  }
  std::vector<double> lengths(owner->countBodies(), 2.0 * penetration);
  if (hasAllowances)
  {
    // What the report itself allows beyond the distance is taken off; two bodies share what is added instead.
    const double removed = report->query().isExact ? 0.0 : report->query().slack;
    const double added = report->sharesDistances() ? penetration : 2.0 * penetration;
    for (unsigned int i = 0; i < lengths.size(); ++i)
      lengths[i] = std::max(0.0, report->allowance(i) - removed + added);
  }
  double goal = i_param;
  bool hitsEnd = false;
  const lmStatus status = i_dp._boundedMoveByBodyWithConfig(i_param, i_cfg, i_direction, goal, hitsEnd, lengths);
  if (status.failed())
    return status;
  o_bound = std::fabs(goal - i_param);
  o_exact = hitsEnd;
  return status;
}

void CorvValidatorCfgCollisionBase::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvConfigValidator::encodeWithCoder(i_coder);
  i_coder->encodeBool(m_isDistanceValidator, "isDistanceValidator");
}

lmStatus CorvValidatorCfgCollisionBase::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvConfigValidator::initWithCoder(i_coder, i_self);
  if (status.succeeded())
    m_isDistanceValidator = i_coder->decodeBool("isDistanceValidator");
  return status;
}
