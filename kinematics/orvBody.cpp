#include "kinematics/orvBody.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvCSVoid.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvJoint.h"
#include "validation/orvValidatorCfgCollisionBase.h"

LUM_DESCRIBE(CorvBody)
{
  i_class.property<ClumMat4>("absolutePosition", &Self::absolutePosition, &Self::absolutePosition);
}

CorvBody::~CorvBody() = default;

CorvBody::CorvBody(const CorvBody& i_other)
  : ClumMutableCodable(i_other), m_relativePosition(i_other.m_relativePosition),
    m_absolutePosition(i_other.m_relativePosition)
{
}

lmStatus CorvBody::init(const CorvBodyWkPtr& i_weakPtr)
{
  return ClumMutableCodable::init(i_weakPtr);
}

CorvJointShPtr CorvBody::joint() const
{
  return m_joint.lock();
}

void CorvBody::jointWkPtr(const CorvJointWkPtr& i_joint)
{
  m_joint = i_joint;
}

void CorvBody::relativePosition(const ClumMat4& i_position)
{
  m_relativePosition = i_position;
  updateAbsolutePosition();
  didChange();
}

void CorvBody::updateRelativePosition()
{
  const CorvJointShPtr holder = joint();
  m_relativePosition = holder ? holder->currentPosition().inverse() * m_absolutePosition : m_absolutePosition;
  m_relativePosition.repair();
  didChange();
}

void CorvBody::absolutePosition(const ClumMat4& i_position)
{
  if (i_position == m_absolutePosition)
    return;
  notifyPropertyWillChange("absolutePosition");
  m_absolutePosition = i_position;
  updateRelativePosition();
  placeBody(m_absolutePosition);
  notifyPropertyDidChange("absolutePosition");
}

void CorvBody::updateAbsolutePosition()
{
  const CorvJointShPtr holder = joint();
  notifyPropertyWillChange("absolutePosition");
  m_absolutePosition = holder ? holder->currentPosition() * m_relativePosition : m_relativePosition;
  m_absolutePosition.repair();
  placeBody(m_absolutePosition);
  notifyPropertyDidChange("absolutePosition");
}

void CorvBody::place(const ClumMat4& i_position)
{
  placeBody(i_position);
}

lmStatus CorvBody::setCurrentConfig(const CorvConfig&)
{
  return lmStatus::FAILURE;
}

CorvConfigSpaceShPtr CorvBody::configSpace() const
{
  return CorvCSVoid::nullSpace();
}

lmStatus CorvBody::forwardVelocity(const double*, double&) const
{
  return lmStatus::FAILURE;
}

lmStatus CorvBody::forwardVelocity(const std::vector<double>& i_velocities, double& o_velocity) const
{
  return i_velocities.size() == configSpace()->size() ? forwardVelocity(i_velocities.data(), o_velocity)
                                                      : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvBody::forwardVelocity(const CorvConfig& i_velocities, double& o_velocity) const
{
  return i_velocities.size() == configSpace()->size() ? forwardVelocity(i_velocities.beginPtr(), o_velocity)
                                                      : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvBody::inverseVelocity(double, double, double, std::vector<double>&) const
{
  return lmStatus::FAILURE;
}

bool CorvBody::canCheckCollisions() const
{
  return true;
}

bool CorvBody::isColliding(const CCollisionAnalysisParameters&, double&) const
{
  LUM_ASSERT(false);
  return false;
}

lmStatus CorvBody::measureDistance(double, double&, ClumPoint3&, ClumPoint3&) const
{
  return lmStatus::FAILURE;
}

lmStatus CorvBody::getEstimatedDistance(double& o_distance) const
{
  if (!canCheckCollisions())
    return lmStatus::FAILURE;
  isColliding(CCollisionAnalysisParameters(ESTIMATED_DISTANCE), o_distance);
  return lmStatus();
}

lmStatus CorvBody::getExactDistance(double& o_distance, double i_precision) const
{
  if (!canCheckCollisions())
    return lmStatus::FAILURE;
  isColliding(CCollisionAnalysisParameters(EXACT_DISTANCE, i_precision), o_distance);
  return lmStatus();
}

lmStatus CorvBody::getMaximumTolerance(double&) const
{
  return lmStatus::FAILURE;
}

lmStatus CorvBody::getToleranceActivation(bool&) const
{
  return lmStatus::FAILURE;
}

lmStatus CorvBody::setToleranceActivation(bool)
{
  return lmStatus::FAILURE;
}

lmStatus CorvBody::getToleranceModifier(double&) const
{
  return lmStatus::FAILURE;
}

lmStatus CorvBody::setToleranceModifier(double)
{
  return lmStatus::FAILURE;
}

lmStatus CorvBody::pushToleranceModifier(double i_modifier)
{
  double current = 0.0;
  lmStatus status = getToleranceModifier(current);
  if (status.succeeded())
    status = setToleranceModifier(current + i_modifier);
  if (status.succeeded())
    m_savedModifiers.push_back(current);
  return status;
}

lmStatus CorvBody::popToleranceModifier()
{
  if (m_savedModifiers.empty())
    return lmStatus::FAILURE;
  const lmStatus status = setToleranceModifier(m_savedModifiers.back());
  m_savedModifiers.pop_back();
  return status;
}

lmStatus CorvBody::pushToleranceActivation(bool i_activation)
{
  bool current = false;
  lmStatus status = getToleranceActivation(current);
  if (status.succeeded())
    status = setToleranceActivation(i_activation);
  if (status.succeeded())
    m_savedActivations.push_back(current);
  return status;
}

lmStatus CorvBody::popToleranceActivation()
{
  if (m_savedActivations.empty())
    return lmStatus::FAILURE;
  const lmStatus status = setToleranceActivation(m_savedActivations.back());
  m_savedActivations.pop_back();
  return status;
}

bool CorvBody::operator==(const CorvBody& i_other) const
{
  return m_relativePosition == i_other.m_relativePosition;
}

double CorvBody::getMicroElement(double) const
{
  return 0.0;
}

double CorvBody::getMicroElementMinSize() const
{
  return 0.0;
}

CorvValidatorCfgCollisionBaseShPtr CorvBody::makeValidator(const CorvConfigSpaceShPtr&) const
{
  return CorvValidatorCfgCollisionBaseShPtr();
}

void CorvBody::getEnclosingBalls(std::vector<CEnclosingBall>&) const
{
}

void CorvBody::didChange()
{
  ++m_version;
  if (const CorvJointShPtr holder = joint())
    holder->didChange();
}

void CorvBody::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumMutableCodable::encodeWithCoder(i_coder);
  i_coder->encodeWeakObjectWkPtr(m_joint, "joint");
  i_coder->encodeMat4(m_relativePosition, "relativePosition");
  i_coder->encodeMat4(m_absolutePosition, "absolutePosition");
  i_coder->encodeUnsignedInt(m_version, "version");
}

lmStatus CorvBody::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_joint = i_coder->decodeWeak<CorvJoint>("joint");
  m_relativePosition = i_coder->decodeMat4("relativePosition");
  m_absolutePosition = i_coder->decodeMat4("absolutePosition");
  m_version = i_coder->decodeUnsignedInt("version");
  return status;
}
