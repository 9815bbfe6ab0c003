#include "kinematics/orvDof.h"

#include "constraints/orvConstraintDofLock.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "kinematics/orvConfig.h"
#include "metrics/orvMetricAbsolute.h"
#include "metrics/orvMetricRevolute.h"
#include "metrics/orvMetricScale.h"
#include "metrics/orvRDGaussian.h"
#include "metrics/orvRWLinearDof.h"
#include "paths/orvSMLinear.h"
#include "validation/orvValidatorDofBounds.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>
#include <cmath>
#include <limits>

LUM_DESCRIBE(CorvDof)
{
  i_class.creates("(bool i_revolute)", &Self::create);
  i_class.property<bool>("isBounded", &Self::isBounded, &Self::isBounded);
  i_class.property<bool>("isLocked", &Self::isLocked, &Self::isLocked);
  i_class.property<bool>("isRevolute", &Self::isRevolute, &Self::isRevolute);
  i_class.property<double>("lockedValue", &Self::lockedValue, &Self::lockedValue);
  i_class.property<double>("lowerBound", &Self::lowerBound);
  i_class.property<double>("upperBound", &Self::upperBound);
  i_class.property<double>("weightMultiplier", &Self::weightMultiplier, &Self::weightMultiplier);
  i_class.method("lmStatus", "bounds", "(double i_lower, double i_upper)", "", &Self::bounds, "SetBounds");
}

namespace
{
const char* const REVOLUTE_SCALE_TYPE = "orvane.core.metric.scale.revolute";
const char* const MULTIPLIER_SCALE_TYPE = "orvane.core.metric.scale.weight-multiplier";
const char* const USER_SCALE_TYPE = "orvane.core.metric.scale.user-weight";

double& revoluteScaler()
{
  static double s_revoluteWeightScaler = 0.5;
  return s_revoluteWeightScaler;
}

CorvMetricShPtr scaledMetric(const CorvMetricShPtr& i_metric, double i_scale, const char* i_type)
{
  const CorvMetricScaleShPtr scaled = CorvMetricScale::create(i_metric, i_type);
  scaled->scale(i_scale);
  return scaled;
}

/// True for a metric that a dof made for itself: scales of its own around an absolute or circular metric.
bool isDofMetric(const CorvMetricShPtr& i_metric)
{
  CorvMetricShPtr metric = i_metric;
  while (const auto scale = boost::dynamic_pointer_cast<CorvMetricScale>(metric))
  {
    const std::string& type = scale->decoratorType();
    if (type != REVOLUTE_SCALE_TYPE && type != MULTIPLIER_SCALE_TYPE && type != USER_SCALE_TYPE)
      return false;
    metric = scale->decoratedMetric();
  }
  return boost::dynamic_pointer_cast<CorvMetricAbsolute>(metric) ||
         boost::dynamic_pointer_cast<CorvMetricRevolute>(metric);
}

bool isMemberOf(const CorvValidatorSet& i_set, const CorvValidatorConstShPtr& i_validator)
{
  for (unsigned int rank = 0; rank < i_set.count(); ++rank)
    if (i_set.at(rank) == i_validator)
      return true;
  return false;
}

/// The first member of a class, or null.
template <class X>
ShPtr<X> firstMember(const CorvValidatorSet& i_set)
{
  for (unsigned int rank = 0; rank < i_set.count(); ++rank)
    if (const ShPtr<X> found = boost::dynamic_pointer_cast<X>(i_set.at(rank)))
      return found;
  return ShPtr<X>();
}
} // namespace

CorvDofShPtr CorvDof::create(bool i_revolute)
{
  return lumCreate<CorvDof>(i_revolute);
}

CorvDofShPtr CorvDof::createCopy(const CorvDofConstShPtr& i_objectToCopy)
{
  return boost::dynamic_pointer_cast<CorvDof>(CorvConfigSpace::createCopy(i_objectToCopy));
}

CorvDof::CorvDof() = default;

CorvDof::CorvDof(bool i_revolute) : CorvConfigSpace("orvane.core.config-space.dof"), m_isRevolute(i_revolute)
{
  initialSteeringMethod(CorvSMLinear::create());
}

CorvDof::~CorvDof() = default;

lmStatus CorvDof::init(const CorvDofWkPtr& i_weakPtr)
{
  updateMetric();
  const lmStatus status = CorvConfigSpace::init(i_weakPtr);
  if (status.failed())
    return status;
  return metric() && metric()->randomWalk() ? lmStatus() : lmStatus(-1);
}

void CorvDof::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvConfigSpace::encodeWithCoder(i_coder);
  i_coder->encodeBool(m_isRevolute, "revolute");
  i_coder->encodeDouble(m_tolerance, "tolerance");
  i_coder->encodeBool(m_isBounded, "bounded");
  i_coder->encodeDouble(m_lowerBound, "min");
  i_coder->encodeDouble(m_upperBound, "max");
  i_coder->encodeBool(m_isLocked, "locked");
  i_coder->encodeDouble(m_lockedValue, "lockedValue");
}

lmStatus CorvDof::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvConfigSpace::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_isRevolute = i_coder->decodeBool("revolute");
  m_tolerance = i_coder->decodeDouble("tolerance");
  m_isBounded = i_coder->decodeBool("bounded");
  m_lowerBound = i_coder->decodeDouble("min");
  m_upperBound = i_coder->decodeDouble("max");
  m_isLocked = i_coder->decodeBool("locked");
  m_lockedValue = i_coder->decodeDouble("lockedValue");
  return m_lowerBound <= m_upperBound ? lmStatus() : lmStatus(-1);
}

unsigned int CorvDof::size() const
{
  return 1;
}

CorvDofShPtr CorvDof::dof(unsigned int i_rank) const
{
  if (i_rank == 0)
    return self();
  ClumLogManager::addError(__FILE__, __LINE__, "A dof was asked for a dof that it does not have.");
  return CorvDofShPtr();
}

lmStatus CorvDof::getDofs(std::vector<CorvDofShPtr>& o_dofs) const
{
  o_dofs.assign(1, self());
  return lmStatus();
}

bool CorvDof::operator==(const CorvConfigSpace& i_other) const
{
  const CorvDof* other = dynamic_cast<const CorvDof*>(&i_other);
  if (!other || m_isRevolute != other->m_isRevolute || m_isBounded != other->m_isBounded ||
      m_lowerBound != other->m_lowerBound || m_upperBound != other->m_upperBound || m_tolerance != other->m_tolerance)
    return false;
  return CorvConfigSpace::operator==(i_other);
}

void CorvDof::isRevolute(bool i_isRevolute)
{
  if (i_isRevolute == m_isRevolute)
    return;
  notifyPropertyWillChange("isRevolute");
  m_isRevolute = i_isRevolute;
  updateMetric();
  invalidateCache();
  notifyPropertyDidChange("isRevolute");
}

void CorvDof::isBounded(bool i_isBounded)
{
  if (i_isBounded == m_isBounded)
    return;
  notifyPropertyWillChange("isBounded");
  m_isBounded = i_isBounded;
  updateBounds();
  updateMetric();
  invalidateCache();
  notifyPropertyDidChange("isBounded");
}

void CorvDof::isLocked(bool i_isLocked)
{
  if (i_isLocked == m_isLocked)
    return;
  notifyPropertyWillChange("isLocked");
  m_isLocked = i_isLocked;
  updateLock();
  invalidateCache();
  notifyPropertyDidChange("isLocked");
}

lmStatus CorvDof::bounds(double i_lower, double i_upper)
{
  if (!(i_lower <= i_upper))
    return -1;
  if (i_lower == m_lowerBound && i_upper == m_upperBound)
    return lmStatus();
  notifyPropertyWillChange("lowerBound");
  notifyPropertyWillChange("upperBound");
  m_lowerBound = i_lower;
  m_upperBound = i_upper;
  updateBounds();
  invalidateCache();
  notifyPropertyDidChange("upperBound");
  notifyPropertyDidChange("lowerBound");
  return lmStatus();
}

lmStatus CorvDof::boundWithin(double i_lower, double i_upper)
{
  const lmStatus status = bounds(i_lower, i_upper);
  if (status.succeeded())
    isBounded(true);
  return status;
}

void CorvDof::lockedValue(double i_value)
{
  if (i_value == m_lockedValue)
    return;
  notifyPropertyWillChange("lockedValue");
  m_lockedValue = i_value;
  updateLock();
  invalidateCache();
  notifyPropertyDidChange("lockedValue");
}

void CorvDof::lockAt(double i_value)
{
  lockedValue(i_value);
  isLocked(true);
}

bool CorvDof::isConstant() const
{
  return m_isLocked || (m_isBounded && m_lowerBound == m_upperBound);
}

lmStatus CorvDof::getConstantValue(double& o_value) const
{
  if (!isConstant())
    return -1;
  o_value = m_isLocked ? m_lockedValue : m_lowerBound;
  return lmStatus();
}

double CorvDof::distance(double i_a, double i_b) const
{
  double scale = 0.0;
  if (!metric())
    return std::numeric_limits<double>::infinity();
  if (metric()->isScaledCircular(scale))
    return scale * std::fabs(CorvMetricRevolute::circularDistance(i_a, i_b));
  if (metric()->isScaledAbsolute(scale))
    return scale * std::fabs(i_a - i_b);
  CorvConfig a(self(), std::vector<double>(1, i_a));
  CorvConfig b(self(), std::vector<double>(1, i_b));
  a.isSelfValidationEnabled(false);
  b.isSelfValidationEnabled(false);
  return metric()->distance(a, b);
}

bool CorvDof::equivalentValues(double i_a, double i_b) const
{
  const double difference = distance(i_a, i_b);
  if (m_tolerance >= difference)
    return true;
  const double reference = i_a != 0.0 ? i_a : i_b;
  return m_tolerance >= (reference == 0.0 ? 0.0 : difference / std::fabs(reference));
}

CorvValidatorDofBoundsShPtr CorvDof::boundsValidator() const
{
  if (!m_boundsValidator)
    m_boundsValidator = firstMember<CorvValidatorDofBounds>(*spaceConfigValidators());
  if (!m_boundsValidator)
    m_boundsValidator = CorvValidatorDofBounds::create(self(), m_lowerBound, m_upperBound);
  return m_boundsValidator;
}

CorvConstraintDofLockShPtr CorvDof::lockConstraint() const
{
  if (!m_lockConstraint)
    m_lockConstraint = firstMember<CorvConstraintDofLock>(*spaceConstraints());
  if (!m_lockConstraint)
    m_lockConstraint = CorvConstraintDofLock::create(self(), m_lockedValue);
  return m_lockConstraint;
}

void CorvDof::updateBounds()
{
  const CorvValidatorSetShPtr set = spaceConfigValidators();
  if (!m_isBounded)
  {
    if (const auto validator = firstMember<CorvValidatorDofBounds>(*set))
      set->remove(validator);
    return;
  }
  const CorvValidatorDofBoundsShPtr validator = boundsValidator();
  if (!validator->isActivated())
    validator->isActivated(true);
  validator->minValue(m_lowerBound);
  validator->maxValue(m_upperBound);
  if (!isMemberOf(*set, validator))
    set->add(validator);
}

void CorvDof::updateLock()
{
  const CorvValidatorSetShPtr set = spaceConstraints();
  if (!m_isLocked)
  {
    if (const auto lock = firstMember<CorvConstraintDofLock>(*set))
      set->remove(lock);
    return;
  }
  const CorvConstraintDofLockShPtr lock = lockConstraint();
  if (!lock->isActivated())
    lock->isActivated(true);
  lock->value(m_lockedValue);
  if (!isMemberOf(*set, lock))
    set->add(lock);
}

// A metric that a client put in place is left alone.
void CorvDof::updateMetric()
{
  if (metric() && !isDofMetric(metric()))
    return;
  const CorvRandomWalkConstShPtr walk =
    metric() ? metric()->randomWalk() : CorvRandomWalkConstShPtr(CorvRWLinearDof::create(CorvRDGaussian::create()));
  CorvMetricShPtr made;
  if (m_isRevolute && !m_isBounded)
    made = CorvMetricRevolute::create(walk);
  else
    made = CorvMetricAbsolute::create(walk);
  if (m_isRevolute)
    made = scaledMetric(made, revoluteWeightScaler(), REVOLUTE_SCALE_TYPE);
  for (const char* type : {MULTIPLIER_SCALE_TYPE, USER_SCALE_TYPE})
    if (scaleOfType(type) != 1.0)
      made = scaledMetric(made, scaleOfType(type), type);
  initialMetric(made);
}

double CorvDof::scaleOfType(const std::string& i_type) const
{
  const auto found =
    metric() ? boost::dynamic_pointer_cast<CorvMetricScale>(metric()->find(i_type)) : CorvMetricScaleShPtr();
  return found ? found->scale() : 1.0;
}

// Metrics may be shared with other spaces, so the dof's own is changed on a copy.
void CorvDof::setScaleOfType(const std::string& i_type, double i_scale)
{
  if (!metric())
    return;
  CorvMetricShPtr changed = metric()->clone();
  if (const auto found = boost::dynamic_pointer_cast<CorvMetricScale>(changed->find(i_type)))
    found->scale(i_scale);
  else
    changed = scaledMetric(changed, i_scale, i_type.c_str());
  metric(changed);
}

double CorvDof::weightMultiplier() const
{
  return scaleOfType(MULTIPLIER_SCALE_TYPE);
}

void CorvDof::weightMultiplier(double i_multiplier)
{
  if (i_multiplier == weightMultiplier())
    return;
  notifyPropertyWillChange("weightMultiplier");
  setScaleOfType(MULTIPLIER_SCALE_TYPE, i_multiplier);
  notifyPropertyDidChange("weightMultiplier");
}

double CorvDof::userWeightScaler() const
{
  return scaleOfType(USER_SCALE_TYPE);
}

void CorvDof::userWeightScaler(double i_scaler)
{
  if (i_scaler != userWeightScaler())
    setScaleOfType(USER_SCALE_TYPE, i_scaler);
}

double CorvDof::weight() const
{
  double product = 1.0;
  CorvMetricShPtr current = metric();
  while (const auto decorator = boost::dynamic_pointer_cast<CorvMetricDecorator>(current))
  {
    if (const auto scale = boost::dynamic_pointer_cast<CorvMetricScale>(current))
      product *= scale->scale();
    current = decorator->decoratedMetric();
  }
  return product;
}

double CorvDof::revoluteWeightScaler()
{
  return revoluteScaler();
}

void CorvDof::revoluteWeightScaler(double i_scaler)
{
  revoluteScaler() = i_scaler;
}
