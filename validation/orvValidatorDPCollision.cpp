#include "validation/orvValidatorDPCollision.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumTime.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvMotionBound.h"
#include "paths/orvDirectPath.h"
#include "validation/orvReportCfgCollision.h"
#include "validation/orvReportDPCollision.h"
#include "validation/orvValidatorCfgCollisionBase.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>
#include <cmath>

LUM_DESCRIBE(CorvValidatorDPCollision)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space, const CorvValidatorConstShPtr& i_cfgValidator, "
                  "double i_penetration, EAlgorithm i_algorithm)",
                  &Self::create);
  i_class.enumeration("EAlgorithm", "PROGRESSIVE_FORWARD, PROGRESSIVE_BACKWARD, DICHOTOMY");
}

const std::string CorvValidatorDPCollision::DEFAULT_NAME("orvane.core.dp-collision");
std::atomic<unsigned long> CorvValidatorDPCollision::s_countTests{0};
std::atomic<unsigned long> CorvValidatorDPCollision::s_countTestedConfigs{0};

namespace
{
/// On what is asked for, so that an allowance that is found to be enough also proves to be.
constexpr double NEED_FACTOR = 1.0 + 1e-6;
/// Of the length: a sample that covers less makes no headway.
constexpr double LEAST_ADVANCE = 1e-12;
/// Of the length: a mark nearer to the end than this is not set.
constexpr double MARK_MARGIN = 1e-8;

/// Of the stretch that a sample proves clear before a collision, the part that is kept; and of the length, the least
/// that is worth a sample.
constexpr double RETREAT = 0.9;
constexpr double LEAST_RETREAT = 0.01;

struct CDPCollisionKeys
{
  ClumStringKey penetration = "orvane.core.validator.dp.collision.penetration";
  ClumStringKey algorithm = "orvane.core.validator.dp.collision.algorithm";
  ClumStringKey testStart = "orvane.core.validator.dp.collision.test-start";
  ClumStringKey testGoal = "orvane.core.validator.dp.collision.test-goal";
  ClumStringKey specificBody = "orvane.core.validator.cfg.collision.specific-body";
  ClumStringKey selfCollision = "orvane.core.validator.cfg.collision.autocol-activation";
  ClumStringKey toleranceModifier = "orvane.core.validator.cfg.collision.tolerance-modifier";
  ClumStringKey toleranceActivation = "orvane.core.validator.cfg.collision.tolerance-activation";
  ClumStringKey reportsMaxAllowable = "orvane.core.validator.cfg.collision.report-max-allowable-distances";
  ClumStringKey method = "orvane.core.validator.cfg.collision.method";
  ClumStringKey precision = "orvane.core.validator.cfg.collision.precision";
};

const CDPCollisionKeys& dpCollisionKeys()
{
  static const CDPCollisionKeys s_keys;
  return s_keys;
}

const char* const ALGORITHM_TEXTS[] = {"PROGRESSIVE_FORWARD", "PROGRESSIVE_BACKWARD", "DICHOTOMY"};

CorvValidatorDPCollisionShPtr findEmbeddedDPCollision(const CorvValidatorShPtr& i_validator)
{
  std::vector<CorvValidatorShPtr> embedded;
  if (i_validator)
    i_validator->getEmbeddedValidators(embedded);
  for (const CorvValidatorShPtr& validator : embedded)
    if (CorvValidatorDPCollisionShPtr found = boost::dynamic_pointer_cast<CorvValidatorDPCollision>(validator))
      return found;
  return CorvValidatorDPCollisionShPtr();
}

/// The collision validator that judges the configurations of a space, or null.
CorvValidatorCfgCollisionBaseConstShPtr findCfgCollision(const CorvValidatorConstShPtr& i_cfgValidator,
                                                         const CorvConfigSpaceShPtr& i_space)
{
  const CorvValidatorConstShPtr judge =
    i_cfgValidator || !i_space ? i_cfgValidator : CorvValidatorConstShPtr(i_space->configValidators());
  return judge ? boost::dynamic_pointer_cast<const CorvValidatorCfgCollisionBase>(
                   judge->validatorNamed(CorvValidatorCfgCollisionBase::VALIDATOR_NAME, true))
               : CorvValidatorCfgCollisionBaseConstShPtr();
}
} // namespace

/// What one call asks for: the fields with what the parameters override.
struct CorvValidatorDPCollision::CSettings
{
  double penetration = 0.0;
  int algorithm = DICHOTOMY;
  bool testStart = true;
  bool testGoal = true;
  int specificBody = -1;
  CorvCollisionQuery tolerances; ///< of it, the tolerance and self-collision fields
};

/// Memory for one test, kept by the validator from one to the next.
struct CorvValidatorDPCollision::CScratch
{
  struct CInterval
  {
    double from;
    double to;
  };

  /// What the report of a configuration tells of how far its bodies may move.
  struct CStand
  {
    bool areShared = false;         ///< two bodies share what they may move
    std::vector<double> allowances; ///< by body; empty if no more than the penetration is known
  };

  ClumParameterMapShPtr params = ClumParameterMap::create();
  CorvCollisionQuery query;
  CorvMotionBound motion;
  CStand stand;
  CStand validStand;
  std::vector<double> rates;
  std::vector<double> allowances;
  std::vector<CInterval> intervals;

  /// Takes away what one test asked for.
  void reset()
  {
    const CDPCollisionKeys& keys = dpCollisionKeys();
    LUM_ASSERT_SUCCESS(params->setBase(ClumParameterMapConstShPtr()));
    params->remove(keys.method).remove(keys.precision).remove(CorvCollisionQuery::parameterKey());
    query.device = nullptr;
    query.needs.clear();
  }
};

CorvValidatorDPCollision::CScratchHolder::CScratchHolder() = default;
CorvValidatorDPCollision::CScratchHolder::CScratchHolder(const CScratchHolder&)
{
}
CorvValidatorDPCollision::CScratchHolder::~CScratchHolder() = default;

/// One test of one direct path.
class CorvValidatorDPCollision::CTest
{
public:
  CTest(const CorvValidatorDPCollision& i_validator, const CorvDirectPath& i_dp, const CSettings& i_settings,
        const ClumParameterMapConstShPtr& i_params, const CorvDeviceShPtr& i_ownDevice,
        const CorvValidatorCfgCollisionBaseConstShPtr& i_collision, CScratch& io_scratch)
    : m_validator(i_validator), m_dp(i_dp), m_settings(i_settings), m_length(i_dp.length()), m_device(i_dp.device()),
      m_collision(i_collision), m_params(io_scratch.params), m_query(io_scratch.query), m_config(i_dp.configSpace()),
      m_motion(io_scratch.motion), m_stand(io_scratch.stand), m_validStand(io_scratch.validStand),
      m_rates(io_scratch.rates), m_allowances(io_scratch.allowances), m_intervals(io_scratch.intervals)
  {
    if (!m_device)
      m_device = i_ownDevice;
    m_rates.clear();
    makeParameters(i_params);
    if (m_collision)
      m_collision->willTestMotion();
    if (i_validator.m_timeout >= 0.0)
      m_stopwatch.start();
  }

  void run()
  {
    if (!(m_length > 0.0) || std::isinf(m_length))
      testWithoutLength();
    else if (m_settings.algorithm == DICHOTOMY)
      testDichotomic();
    else if (m_settings.algorithm == PROGRESSIVE_FORWARD || m_settings.algorithm == PROGRESSIVE_BACKWARD)
      testProgressive(m_settings.algorithm == PROGRESSIVE_FORWARD);
    else
      m_status = -1;
    if (m_hasNoBound)
      sample();
  }

  const lmStatus& status() const { return m_status; }
  bool isColliding() const { return m_isColliding || m_status.failed(); }
  bool isDecided() const { return m_isDecided && m_status.succeeded(); }
  /// Where it collides and up to where it is proved, negative if unknown.
  double collisionParam() const { return m_collisionParam; }
  double validParam() const { return m_validParam; }

  void setMarks() const
  {
    const bool isForward = m_settings.algorithm == PROGRESSIVE_FORWARD;
    const bool isBackward = m_settings.algorithm == PROGRESSIVE_BACKWARD;
    if (m_status.succeeded() && isForward && m_validParam >= 0.0 && m_validParam < (1.0 - MARK_MARGIN) * m_length)
      setMark(maxParamMark(), m_validParam, m_validConfig);
    if (m_status.succeeded() && isBackward && m_validParam > MARK_MARGIN * m_length)
      setMark(minParamMark(), m_validParam, m_validConfig);
    if (m_isColliding && m_collisionParam >= 0.0)
      setMark(collisionMark(), m_collisionParam, m_collisionConfig);
  }

private:
  using CInterval = CScratch::CInterval;
  using CStand = CScratch::CStand;

  void setMark(const std::string& i_mark, double i_param, const CorvConfig& i_config) const
  {
    m_dp.setMark(i_mark, i_param);
    m_dp.setMarkConfig(i_mark, i_config);
  }

  bool isExact() const { return m_settings.penetration == 0.0; }
  double slack() const { return isExact() ? m_validator.m_zeroPenetrationSag : m_settings.penetration; }

  void makeParameters(const ClumParameterMapConstShPtr& i_params)
  {
    const CDPCollisionKeys& keys = dpCollisionKeys();
    LUM_ASSERT_SUCCESS(m_params->setBase(i_params));
    m_params->setBool(keys.reportsMaxAllowable, true);
    if (isExact() || m_validator.m_alwaysUseExactDistance)
      m_params->setInt(keys.method, CorvCollisionQuery::EXACT_DISTANCE)
        .setDouble(keys.precision, m_validator.m_exactDistancePrecision);
    const CorvDevice* collisionDevice = m_collision ? m_collision->bareDevice() : nullptr;
    if (!collisionDevice || collisionDevice != m_device.get())
      return;
    std::vector<double> needs;
    needs.swap(m_query.needs);
    m_query = m_collision->makeQuery(m_params);
    m_query.needs.swap(needs);
    m_query.device = m_device.get();
    m_query.slack = slack();
    m_query.isExact = isExact();
    m_query.isBoundEnough = !m_validator.m_alwaysUseExactDistance;
    m_params->setPointer(CorvCollisionQuery::parameterKey(), &m_query);
  }

  // Questions about configurations.

  /// Makes `m_motion` the bound on motions from a configuration on the stretch between two distances.
  bool bindMotion(const CorvConfig& i_config, double i_from, double i_to)
  {
    if (!m_device)
      return false;
    if (m_rates.empty())
      m_isStraight = m_dp.getStraightVelocity(m_rates);
    if (m_isStraight)
      return m_motion.setStraight(*m_device, i_config, m_rates).succeeded();
    if (m_rates.empty() || !m_dp.hasConstantRates())
      m_dp.maxAbsoluteDerivative(m_dp.publicToPrivateDistance(i_from), m_dp.publicToPrivateDistance(i_to), m_rates);
    return m_motion.set(*m_device, i_config, m_rates).succeeded();
  }

  /// Tells the collision layer how far each body can move at all on the stretch from `i_from` to `i_to` around `i_t`.
  void setNeeds(const CorvConfig& i_config, double i_t, double i_from, double i_to)
  {
    m_isBound = bindMotion(i_config, i_from, i_to);
    m_query.needs.clear();
    if (!m_query.isProof() || !m_isBound)
      return;
    m_query.needs.resize(m_motion.countBodies());
    m_motion.displacements(std::max(i_t - i_from, i_to - i_t), m_query.needs.data());
    for (double& need : m_query.needs)
      need *= NEED_FACTOR;
  }

  /// The report that a configuration has; it may be outdated. Null also where it is looked for elsewhere.
  CorvValidationReportConstShPtr storedReport(const CorvConfig& i_config) const
  {
    return m_collision && !m_collision->pool() ? i_config.keyedReport(m_collision->nameKey())
                                               : CorvValidationReportConstShPtr();
  }

  /// Judges a configuration and takes what its report tells.
  void validate(const CorvConfig& i_config)
  {
    ++s_countTestedConfigs;
    const CorvValidationReportConstShPtr old = storedReport(i_config);
    m_validator.validateConfig(i_config, m_params);
    const CorvValidationReportConstShPtr stored = storedReport(i_config);
    const CorvReportCfgCollision* report =
      stored != old ? dynamic_cast<const CorvReportCfgCollision*>(stored.get()) : nullptr;
    if (report && report->query().isSameQuestion(m_query))
      readStand(report);
    else
      readStand(i_config);
  }

  /// Takes what is known of an end that is not judged. It is measured before, if that was not done and can be.
  void measure(const CorvConfig& i_config)
  {
    if (readStand(i_config) || !m_query.isProof())
      return;
    ++s_countTestedConfigs;
    m_collision->validate(i_config, m_params);
    readStand(i_config);
  }

  /// Takes what the report of a configuration tells, if it answers the question at hand. @return false otherwise.
  bool readStand(const CorvConfig& i_config)
  {
    const CorvValidationReportConstShPtr stored =
      m_collision ? m_collision->upToDateReportFrom(i_config, m_params) : CorvValidationReportConstShPtr();
    readStand(dynamic_cast<const CorvReportCfgCollision*>(stored.get()));
    return stored != nullptr;
  }

  /// @param i_report up to date, or null.
  void readStand(const CorvReportCfgCollision* i_report)
  {
    m_stand.allowances.clear();
    m_isClear = i_report && isExact() && areDistancesClear(*i_report);
    const bool hasAllowances =
      i_report && m_query.isProof() && i_report->isValid() && i_report->countAllowances() == m_device->countBodies();
    if (!hasAllowances)
      return;
    m_stand.areShared = i_report->sharesDistances();
    for (unsigned int i = 0; i < i_report->countAllowances(); ++i)
      m_stand.allowances.push_back(i_report->allowance(i));
  }

  bool areDistancesClear(const CorvReportCfgCollision& i_report) const
  {
    for (unsigned int i = 0; i < i_report.countDistances(); ++i)
      if (!(i_report.distance(i) > m_validator.m_zeroPenetrationSag))
        return false;
    return i_report.countDistances() > 0;
  }

  /// At penetration 0 a configuration must be proved clear by distances.
  bool isConfigValid(const CorvConfig& i_config) const
  {
    return i_config.isValid() && (!isExact() || m_isClear || (m_device && m_device->countBodies() == 0));
  }

  /// How far the path is free from `i_t`, where the configuration at hand is, towards `i_target`. Notes the lack of a
  /// bound. @param i_extra added to the penetration; two bodies that move towards each other share it.
  double reach(double i_t, const CorvConfig& i_config, double i_target, double i_extra = 0.0)
  {
    if (i_t == i_target || !canGoOn())
      return i_t;
    if (!m_dp.hasConstantRates())
      m_isBound = bindMotion(i_config, i_t, i_target);
    if (m_isBound)
      return cover(i_t, m_stand, i_target, i_extra);
    m_hasNoBound = true;
    return i_t;
  }

  /// The same for what is told of the configuration that `m_motion` starts at.
  double cover(double i_t, const CStand& i_stand, double i_target, double i_extra)
  {
    m_allowances.assign(m_motion.countBodies(), isExact() ? 0.0 : m_settings.penetration + i_extra);
    const double extra = i_stand.areShared ? 0.5 * i_extra : i_extra;
    for (std::size_t i = 0; i < i_stand.allowances.size(); ++i)
      m_allowances[i] = std::max(0.0, i_stand.allowances[i] + extra);
    const double rest = std::fabs(i_target - i_t);
    const double advance = m_motion.advanceWithin(m_allowances.data(), rest);
    if (advance == rest)
      return i_target;
    return i_target > i_t ? i_t + advance : i_t - advance;
  }

  // The course of the test.

  bool canGoOn() const { return !m_isColliding && !m_hasNoBound && m_status.succeeded(); }

  void collideAt(double i_param, const CorvConfig& i_config)
  {
    m_isColliding = true;
    m_collisionParam = i_param;
    m_collisionConfig = i_config;
  }

  void giveUp()
  {
    m_isColliding = true;
    m_isDecided = false;
  }

  bool isTimeOver() const { return m_validator.m_timeout >= 0.0 && m_stopwatch.elapsedTime() >= m_validator.m_timeout; }
  bool areSamplesOver() const { return m_validator.m_sampleout != 0 && m_samples >= m_validator.m_sampleout; }
  void checkTime()
  {
    if (canGoOn() && isTimeOver())
      giveUp();
  }

  /// Judges an end of the path, or only measures it.
  void testEnd(double i_t, const CorvConfig& i_config, bool i_isJudged, double i_from, double i_to)
  {
    setNeeds(i_config, i_t, i_from, i_to);
    if (!i_isJudged)
      return measure(i_config);
    validate(i_config);
    if (!i_config.isValid())
      collideAt(i_t, i_config);
    else
      checkTime();
  }

  /// Judges the configuration at a distance inside of the path, which is then `m_config`.
  void testSample(double i_t, double i_from, double i_to)
  {
    const lmStatus status = m_dp.getConfigAtDistance(i_t, m_config);
    if (status.failed())
    {
      m_status = status;
      return;
    }
    setNeeds(m_config, i_t, i_from, i_to);
    validate(m_config);
    ++m_samples;
    if (!isConfigValid(m_config))
      collideAt(i_t, m_config);
  }

  void testWithoutLength()
  {
    const CorvConfig& start = m_dp.startConfiguration();
    const CorvConfig& end = m_dp.endConfiguration();
    if (!(m_length >= 0.0) || std::isinf(m_length) || start.dofValues() != end.dofValues())
      return giveUp();
    if (m_settings.testStart)
      testEnd(0.0, start, true, 0.0, 0.0);
    if (m_settings.testGoal && canGoOn())
      testEnd(m_length, end, true, 0.0, 0.0);
  }

  void testDichotomic()
  {
    const CorvConfig& start = m_dp.startConfiguration();
    testEnd(0.0, start, m_settings.testStart, 0.0, m_length);
    const double low = reach(0.0, start, m_length);
    if (!canGoOn())
      return;
    const CorvConfig& end = m_dp.endConfiguration();
    if (low >= m_length)
    {
      if (m_settings.testGoal)
        testEnd(m_length, end, true, m_length, m_length);
      return;
    }
    testEnd(m_length, end, m_settings.testGoal, low, m_length);
    const double high = reach(m_length, end, low);
    if (canGoOn() && low < high)
      bisect(low, high);
  }

  /// Covers an interval, breadth first, by samples in the middle of what is uncovered.
  void bisect(double i_from, double i_to)
  {
    m_intervals.assign(1, {i_from, i_to});
    for (std::size_t front = 0; front < m_intervals.size(); ++front)
    {
      const CInterval interval = m_intervals[front];
      const double middle = 0.5 * (interval.from + interval.to);
      if (areSamplesOver() || !(interval.from < middle && middle < interval.to))
        return giveUp();
      testSample(middle, interval.from, interval.to);
      checkTime();
      const double back = reach(middle, m_config, interval.from);
      const double ahead = reach(middle, m_config, interval.to);
      if (!canGoOn())
        return;
      if (!(ahead - back > LEAST_ADVANCE * m_length))
        return giveUp();
      if (interval.from < back)
        m_intervals.push_back({interval.from, back});
      if (ahead < interval.to)
        m_intervals.push_back({ahead, interval.to});
    }
  }

  /// From one end to the other. Each step is as long as the clearance and twice the penetration allow; where the covers
  /// of two samples, each with one penetration, do not meet, what lies between is covered first.
  void testProgressive(bool i_isForward)
  {
    const double last = i_isForward ? m_length : 0.0;
    const bool testsFirst = i_isForward ? m_settings.testStart : m_settings.testGoal;
    const bool testsLast = i_isForward ? m_settings.testGoal : m_settings.testStart;
    const CorvConfig& lastConfig = i_isForward ? m_dp.endConfiguration() : m_dp.startConfiguration();
    double t = m_length - last;
    {
      const CorvConfig& firstConfig = i_isForward ? m_dp.startConfiguration() : m_dp.endConfiguration();
      testEnd(t, firstConfig, testsFirst, 0.0, m_length);
      if (m_isColliding && m_collisionParam >= 0.0)
        return;
      m_config = firstConfig;
    }
    keepValid(t);
    while (canGoOn() && t != last)
    {
      const double covered = reach(t, m_config, last);
      double next = isExact() ? covered : reach(t, m_config, last, m_settings.penetration);
      if (next == last && covered != last && !testsLast)
        next = covered;
      if (!canGoOn() || !makesHeadway(t, next))
        return;
      const bool isLast = next == last;
      advanceTo(next, covered, last, testsLast, lastConfig);
      if (m_isColliding && m_collisionParam >= 0.0)
        retreat(t, last, covered);
      if (!canGoOn())
        return;
      t = next;
      keepValid(t);
      if (!isLast && (isTimeOver() || areSamplesOver()))
        return giveUp();
    }
  }

  /// Takes the configuration at hand for the last good one.
  void keepValid(double i_t)
  {
    m_validParam = i_t;
    m_validConfig = m_config;
    m_validStand = m_stand;
  }

  /// Judges what a step leads to, which is then `m_config`, and covers what is between the two samples.
  void advanceTo(double i_next, double i_covered, double i_last, bool i_testsLast, const CorvConfig& i_lastConfig)
  {
    const bool isForward = i_last > 0.0;
    const double from = isForward ? i_covered : i_last;
    const double to = isForward ? i_last : i_covered;
    if (i_next != i_last)
      testSample(i_next, std::min(from, i_next), std::max(to, i_next));
    else if (i_testsLast)
      testEnd(i_last, i_lastConfig, true, from, to);
    if (!canGoOn())
      return;
    if (i_next == i_last)
    {
      m_config = i_lastConfig;
      if (!i_testsLast)
      {
        setNeeds(m_config, i_next, from, to);
        readStand(m_config);
      }
    }
    closeGap(i_covered, i_next, isForward);
  }

  /// After a collision: what the last good sample proves is worth having, so a sample before the end of that is taken
  /// for the last good one.
  void retreat(double i_t, double i_last, double i_covered)
  {
    if (!bindMotion(m_validConfig, i_t, i_last))
      return;
    const double clear = isExact() ? i_covered : cover(i_t, m_validStand, i_last, -m_settings.penetration);
    const double param = i_t + RETREAT * (clear - i_t);
    if (!(std::fabs(param - i_t) > LEAST_RETREAT * m_length) || m_dp.getConfigAtDistance(param, m_config).failed())
      return;
    setNeeds(m_config, param, 0.0, m_length);
    validate(m_config);
    if (isConfigValid(m_config))
      keepValid(param);
  }

  bool makesHeadway(double i_t, double i_next)
  {
    if (std::fabs(i_next - i_t) > LEAST_ADVANCE * m_length)
      return true;
    giveUp();
    return false;
  }

  /// Covers what lies between the cover of the sample before, up to `i_covered`, and that of the one at `i_next`.
  void closeGap(double i_covered, double i_next, bool i_isForward)
  {
    if (i_covered == i_next)
      return;
    const double back = reach(i_next, m_config, i_covered);
    if (!canGoOn() || back == i_covered)
      return;
    // The samples in the gap take the place of the one at hand.
    const CorvConfig nextConfig = m_config;
    const CStand nextStand = m_stand;
    bisect(i_isForward ? i_covered : back, i_isForward ? back : i_covered);
    m_config = nextConfig;
    m_stand = nextStand;
    m_isBound = bindMotion(m_config, 0.0, m_length);
  }

  /// Where nothing bounds the motion of the bodies: samples a penetration apart. That proves nothing between them.
  void sample()
  {
    m_hasNoBound = false;
    m_validParam = -1.0;
    if (isExact() || !(m_length > 0.0))
      return giveUp();
    const double count = std::ceil(m_length / m_settings.penetration);
    for (double i = m_settings.testStart ? 0.0 : 1.0; canGoOn() && i <= (m_settings.testGoal ? count : count - 1.0);
         ++i)
    {
      if (areSamplesOver() || isTimeOver())
        return giveUp();
      testSample(i < count ? m_length * (i / count) : m_length, 0.0, m_length);
    }
  }

  const CorvValidatorDPCollision& m_validator;
  const CorvDirectPath& m_dp;
  const CSettings& m_settings;
  double m_length;
  CorvDeviceShPtr m_device;
  CorvValidatorCfgCollisionBaseConstShPtr m_collision;
  const ClumParameterMapShPtr& m_params;
  CorvCollisionQuery& m_query;
  ClumTime m_stopwatch;
  unsigned int m_samples = 0;

  lmStatus m_status;
  bool m_isColliding = false;
  bool m_isDecided = true;
  bool m_hasNoBound = false;
  double m_collisionParam = -1.0;
  double m_validParam = -1.0;
  CorvConfig m_collisionConfig;
  CorvConfig m_validConfig;

  CorvConfig m_config;       ///< at the sample
  CorvMotionBound& m_motion; ///< from it
  bool m_isBound = false;    ///< the bound is known
  bool m_isStraight = false; ///< the rates are the velocities of a straight motion
  CStand& m_stand;           ///< at it
  bool m_isClear = false;    ///< it has distances, all of them beyond the sag
  CStand& m_validStand;
  std::vector<double>& m_rates;
  std::vector<double>& m_allowances;
  std::vector<CInterval>& m_intervals;
};

CorvValidatorDPCollision::CorvValidatorDPCollision() = default;

CorvValidatorDPCollision::CorvValidatorDPCollision(const CorvConfigSpaceShPtr& i_space,
                                                   const CorvValidatorConstShPtr& i_cfgValidator, double i_penetration,
                                                   EAlgorithm i_algorithm)
  : CorvValidator(i_space, DEFAULT_NAME), m_penetration(i_penetration), m_algorithm(i_algorithm),
    m_cfgValidator(i_cfgValidator)
{
}

CorvValidatorDPCollision::~CorvValidatorDPCollision() = default;

lmStatus CorvValidatorDPCollision::init(const CorvValidatorDPCollisionWkPtr& i_weakPtr)
{
  const lmStatus status = CorvValidator::init(i_weakPtr);
  if (status.failed())
    return status;
  if (!(m_penetration >= 0.0))
  {
    ClumLogManager::addError("Cannot create CorvValidatorDPCollision with negative penetration.");
    return -1;
  }
  if (m_cfgValidator && m_cfgValidator->unwrappedSpace() != unwrappedSpace())
  {
    ClumLogManager::addError("CorvValidatorDPCollision config validator cannot work on another space.");
    return -1;
  }
  return lmStatus();
}

CorvValidatorDPCollisionShPtr CorvValidatorDPCollision::create(const CorvConfigSpaceShPtr& i_space,
                                                               const CorvValidatorConstShPtr& i_cfgValidator,
                                                               double i_penetration, EAlgorithm i_algorithm)
{
  return lumCreate<CorvValidatorDPCollision>(i_space, i_cfgValidator, i_penetration, i_algorithm);
}

CorvValidatorDPCollisionShPtr
CorvValidatorDPCollision::createCopy(const CorvValidatorDPCollisionConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorDPCollision::clone() const
{
  return createCopy(self());
}

lmStatus CorvValidatorDPCollision::setPenetration(const CorvValidatorShPtr& i_validator, double i_penetration)
{
  const CorvValidatorDPCollisionShPtr validator = findEmbeddedDPCollision(i_validator);
  return validator ? validator->penetration(i_penetration) : lmStatus(-1);
}

lmStatus CorvValidatorDPCollision::getPenetration(const CorvValidatorShPtr& i_validator, double& o_penetration)
{
  const CorvValidatorDPCollisionShPtr validator = findEmbeddedDPCollision(i_validator);
  if (!validator)
    return -1;
  o_penetration = validator->penetration();
  return lmStatus();
}

const std::string& CorvValidatorDPCollision::minParamMark()
{
  static const std::string s_mark("orvane.core.min-param");
  return s_mark;
}

const std::string& CorvValidatorDPCollision::maxParamMark()
{
  static const std::string s_mark("orvane.core.max-param");
  return s_mark;
}

const std::string& CorvValidatorDPCollision::collisionMark()
{
  static const std::string s_mark("orvane.core.collision");
  return s_mark;
}

lmStatus CorvValidatorDPCollision::penetration(double i_penetration)
{
  if (!(i_penetration >= 0.0))
    return -1;
  m_penetration = i_penetration;
  return lmStatus();
}

CorvDirectPathShPtr CorvValidatorDPCollision::extractValidPart(const CorvDirectPathConstShPtr& i_dp,
                                                               double i_margin) const
{
  const CorvReportDPCollisionConstShPtr report =
    i_dp ? boost::dynamic_pointer_cast<const CorvReportDPCollision>(i_dp->keyedReport(nameKey()))
         : CorvReportDPCollisionConstShPtr();
  if (!report)
    return CorvDirectPathShPtr();
  if (report->isValid())
    return CorvDirectPath::createCopy(i_dp);

  CorvDirectPathShPtr part;
  double proved = 0.0;
  if (i_dp->getMarkDistance(maxParamMark(), proved).succeeded())
    part = i_margin > 0.0 ? CorvDirectPath::createByExtractingTo(i_dp, proved - i_margin)
                          : CorvDirectPath::createByExtractingToMark(i_dp, maxParamMark());
  else if (i_dp->getMarkDistance(minParamMark(), proved).succeeded())
    part = i_margin > 0.0 ? CorvDirectPath::createByExtractingFrom(i_dp, proved + i_margin)
                          : CorvDirectPath::createByExtractingFromMark(i_dp, minParamMark());
  if (!part)
    return part;
  if (!i_dp->isConservative())
    return validate(*part) ? part : CorvDirectPathShPtr();
  const CorvReportDPCollisionShPtr fresh = CorvReportDPCollision::createCopy(report);
  CorvReportDPCollision::CStamps stamps = report->stamps();
  stamps.isDecided = true;
  fresh->stamps(stamps);
  fresh->length(part->length());
  fresh->isValid(true);
  part->setKeyedReport(nameKey(), fresh, part->configSpace());
  return part;
}

bool CorvValidatorDPCollision::validateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params) const
{
  return m_cfgValidator ? m_cfgValidator->validate(i_cfg, i_params) : i_cfg.validate(i_params);
}

void CorvValidatorDPCollision::pushAttributes()
{
  m_savedAttributes.push_back({m_testStart, m_testGoal, m_penetration, m_algorithm, m_cfgValidator});
}

void CorvValidatorDPCollision::popAttributes()
{
  if (m_savedAttributes.empty())
    return;
  const CAttributes& saved = m_savedAttributes.back();
  m_testStart = saved.testStart;
  m_testGoal = saved.testGoal;
  m_penetration = saved.penetration;
  m_algorithm = saved.algorithm;
  m_cfgValidator = saved.cfgValidator;
  m_savedAttributes.pop_back();
}

CorvValidatorDPCollision::CSettings
CorvValidatorDPCollision::readSettings(const ClumParameterMapConstShPtr& i_params) const
{
  CSettings settings;
  settings.penetration = m_penetration;
  settings.algorithm = m_algorithm;
  settings.testStart = m_testStart;
  settings.testGoal = m_testGoal;
  if (!i_params || i_params->holdsOnlyPointer(validationSpaceParameterKey()))
    return settings;
  const CDPCollisionKeys& keys = dpCollisionKeys();
  settings.penetration = i_params->doubleValue(keys.penetration, m_penetration);
  settings.algorithm = i_params->intValue(keys.algorithm, m_algorithm);
  settings.testStart = i_params->boolValue(keys.testStart, m_testStart);
  settings.testGoal = i_params->boolValue(keys.testGoal, m_testGoal);
  settings.specificBody = i_params->intValue(keys.specificBody, -1);
  CorvCollisionQuery& tolerances = settings.tolerances;
  tolerances.testsSelfCollision = i_params->boolValue(keys.selfCollision, true);
  tolerances.hasToleranceModifier =
    i_params->getDouble(keys.toleranceModifier, tolerances.toleranceModifier).succeeded();
  tolerances.hasToleranceActivation =
    i_params->getBool(keys.toleranceActivation, tolerances.toleranceActivation).succeeded();
  return settings;
}

bool CorvValidatorDPCollision::isJudgedElsewhere(const CorvDirectPath& i_dp,
                                                 const ClumParameterMapConstShPtr& i_params) const
{
  const CorvConfigSpaceShPtr space = i_dp.configSpace();
  const CorvConfigSpace* validationSpace = unwrappedValidationSpace(i_params);
  if (!validationSpace)
    validationSpace = &space->root()->unwrapped();
  if (validationSpace == &space->unwrapped())
    return false;
  const CorvDeviceShPtr owner = validationSpace->device();
  if (!owner || owner != device())
    return false;
  const CorvValidatorCfgCollisionBaseShPtr validator = owner->collisionValidator();
  return validator && validator->isActivated();
}

bool CorvValidatorDPCollision::doValidateDirectPath(const CorvDirectPath& i_dp,
                                                    const ClumParameterMapConstShPtr& i_params,
                                                    const CorvValidationReportConstShPtr&,
                                                    CorvValidationReportShPtr& o_report) const
{
  if (isJudgedElsewhere(i_dp, i_params))
    return true;
  const CSettings settings = readSettings(i_params);
  if (!(settings.penetration >= 0.0))
  {
    ClumLogManager::addError("CorvValidatorDPCollision: a negative penetration proves nothing.");
    return false;
  }
  for (const std::string* mark : {&minParamMark(), &maxParamMark(), &collisionMark()})
    if (i_dp.hasMark(*mark))
      i_dp.deleteMark(*mark);

  // The scratch is taken out for the time of the test: a test within it makes one of its own.
  std::unique_ptr<CScratch> scratch = std::move(m_scratch.kept);
  if (!scratch)
    scratch.reset(new CScratch);
  const CorvValidatorCfgCollisionBaseConstShPtr collision = findCfgCollision(m_cfgValidator, i_dp.configSpace());
  bool isFree = false, isDecided = false;
  {
    CTest test(*this, i_dp, settings, i_params, device(), collision, *scratch);
    test.run();
    test.setMarks();
    isFree = !test.isColliding();
    isDecided = test.isDecided();
  }
  scratch->reset();
  m_scratch.kept = std::move(scratch);
  ++s_countTests;
  const CorvReportDPCollisionShPtr report = makeReport(i_dp, settings, collision.get());
  CorvReportDPCollision::CStamps stamps = report->stamps();
  stamps.isDecided = isDecided;
  report->stamps(stamps);
  o_report = report;
  return isFree;
}

CorvReportDPCollisionShPtr CorvValidatorDPCollision::makeReport(const CorvDirectPath& i_dp, const CSettings& i_settings,
                                                                const CorvValidatorCfgCollisionBase* i_collision) const
{
  const CorvReportDPCollisionShPtr report = CorvReportDPCollision::create();
  report->penetration(i_settings.penetration);
  report->algorithm(static_cast<EAlgorithm>(i_settings.algorithm));
  report->length(i_dp.length());
  report->specificBody(i_settings.specificBody);
  CorvReportDPCollision::CStamps stamps;
  stamps.testStart = i_settings.testStart;
  stamps.testGoal = i_settings.testGoal;
  stamps.testsSelfCollision = i_settings.tolerances.testsSelfCollision;
  stamps.isJudged = (!i_collision || i_collision->isActivated()) && (!m_cfgValidator || m_cfgValidator->isActivated());
  if (const CorvDeviceShPtr owner = device())
  {
    stamps.device = owner->version();
    stamps.bodies = CorvValidatorCfgCollisionBase::bodiesVersionSum(*owner);
    stamps.scene = i_collision ? i_collision->sceneStamp() : 0;
    const std::vector<CorvBodyShPtr>& bodies = owner->bodyVector();
    for (unsigned int i = 0; i < bodies.size(); ++i)
    {
      if (i_settings.specificBody >= 0 && i_settings.specificBody != static_cast<int>(i))
        continue;
      double modifier = 0.0;
      bool isActive = false;
      CorvValidatorCfgCollisionBase::getTolerance(*bodies[i], i_settings.tolerances, modifier, isActive);
      report->appendToleranceModifier(modifier);
      report->appendToleranceActivation(isActive);
    }
  }
  report->stamps(stamps);
  return report;
}

bool CorvValidatorDPCollision::haveTolerancesChanged(const CorvReportDPCollision& i_report,
                                                     const CorvReportDPCollision& i_now) const
{
  if (i_report.countToleranceModifiers() != i_now.countToleranceModifiers())
    return true;
  for (unsigned int i = 0; i < i_now.countToleranceModifiers(); ++i)
  {
    if (i_report.toleranceActivation(i) != i_now.toleranceActivation(i))
      return true;
    const double growth = i_now.toleranceModifier(i) - i_report.toleranceModifier(i);
    if (i_now.toleranceActivation(i) && (i_report.isValid() ? growth > 0.0 : growth < 0.0))
      return true;
  }
  return false;
}

bool CorvValidatorDPCollision::shouldRevalidateDirectPath(const CorvDirectPath& i_dp,
                                                          const ClumParameterMapConstShPtr& i_params,
                                                          const CorvValidationReportConstShPtr& i_report) const
{
  const CorvReportDPCollision* report = dynamic_cast<const CorvReportDPCollision*>(i_report.get());
  if (!report)
    return true;
  const CSettings settings = readSettings(i_params);
  const CorvReportDPCollisionConstShPtr now =
    makeReport(i_dp, settings, findCfgCollision(m_cfgValidator, i_dp.configSpace()).get());
  const CorvReportDPCollision::CStamps& made = report->stamps();
  const CorvReportDPCollision::CStamps& asked = now->stamps();
  if (!made.isDecided || made.device != asked.device || made.bodies != asked.bodies || made.scene != asked.scene ||
      made.testsSelfCollision != asked.testsSelfCollision || made.isJudged != asked.isJudged ||
      report->specificBody() != settings.specificBody)
    return true;
  if (report->isValid())
  {
    const bool testsMore = (asked.testStart && !made.testStart) || (asked.testGoal && !made.testGoal);
    return report->penetration() > settings.penetration || testsMore || haveTolerancesChanged(*report, *now);
  }
  const bool testsLess = (made.testStart && !asked.testStart) || (made.testGoal && !asked.testGoal);
  const bool lacksMarks = settings.algorithm != DICHOTOMY && report->algorithm() == DICHOTOMY;
  const bool isFinerThanAsked = settings.algorithm != DICHOTOMY && report->penetration() > settings.penetration;
  return settings.penetration > report->penetration() || testsLess || lacksMarks || isFinerThanAsked ||
         report->length() > i_dp.length() || haveTolerancesChanged(*report, *now);
}

void CorvValidatorDPCollision::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvValidator::encodeWithCoder(i_coder);
  i_coder->encodeBool(m_testStart, "testStart");
  i_coder->encodeBool(m_testGoal, "testGoal");
  i_coder->encodeDouble(m_penetration, "penetration");
  i_coder->encodeString(ALGORITHM_TEXTS[m_algorithm], "algorithm");
  i_coder->encodeObjectShPtr(m_cfgValidator, "cfgValidator");
  i_coder->encodeDouble(m_timeout, "timeout");
  i_coder->encodeUnsignedInt(m_sampleout, "sampleout");
  i_coder->encodeDouble(m_exactDistancePrecision, "exactDistancePrecision");
  i_coder->encodeDouble(m_zeroPenetrationSag, "zeroPenetrationSag");
  i_coder->encodeBool(m_alwaysUseExactDistance, "alwaysUseExactDistance");
}

lmStatus CorvValidatorDPCollision::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvValidator::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_testStart = i_coder->decodeBool("testStart");
  m_testGoal = i_coder->decodeBool("testGoal");
  m_penetration = i_coder->decodeDouble("penetration");
  const std::string algorithm = i_coder->decodeString("algorithm");
  const auto text = std::find(std::begin(ALGORITHM_TEXTS), std::end(ALGORITHM_TEXTS), algorithm);
  if (text == std::end(ALGORITHM_TEXTS))
    return -1;
  m_algorithm = static_cast<EAlgorithm>(text - std::begin(ALGORITHM_TEXTS));
  m_cfgValidator = i_coder->decode<CorvValidator>("cfgValidator");
  m_timeout = i_coder->decodeDouble("timeout");
  m_sampleout = i_coder->decodeUnsignedInt("sampleout");
  m_exactDistancePrecision = i_coder->decodeDouble("exactDistancePrecision");
  m_zeroPenetrationSag = i_coder->decodeDouble("zeroPenetrationSag");
  m_alwaysUseExactDistance = i_coder->decodeBool("alwaysUseExactDistance");
  const bool areAtLeastZero = m_penetration >= 0.0 && m_exactDistancePrecision >= 0.0 && m_zeroPenetrationSag >= 0.0;
  const bool areFinite = std::isfinite(m_penetration + m_exactDistancePrecision + m_zeroPenetrationSag);
  return areAtLeastZero && areFinite ? lmStatus() : lmStatus(-1);
}
