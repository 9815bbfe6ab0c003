#include "kinematics/orvKEPath.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJoint.h"
#include "paths/orvDPSolidMotion.h"
#include "paths/orvPath.h"

#include <algorithm>
#include <cmath>

LUM_DESCRIBE(CorvKEPath)
{
  i_class.creates("(const CorvPathConstShPtr& i_path, const CorvJointConstShPtr& i_joint, const CorvDeviceConstShPtr& "
                  "i_device, const std::string& i_type)",
                  &Self::create);
}

CorvKEPath::CorvKEPath(const CorvPathConstShPtr& i_path, const CorvJointConstShPtr& i_joint,
                       const CorvDeviceConstShPtr& i_device, const std::string& i_type)
  : CorvKinematicalEffect(CorvDof::create(false), i_type), m_path(i_path), m_joint(i_joint), m_device(i_device)
{
}

CorvKEPath::~CorvKEPath() = default;

lmStatus CorvKEPath::init(const CorvKEPathWkPtr& i_weakPtr)
{
  const lmStatus status = CorvKinematicalEffect::init(i_weakPtr);
  if (status.succeeded())
    updateDofLimits();
  return status;
}

lmStatus CorvKEPath::init(const CorvKEPathWkPtr& i_weakPtr, const CorvKEPathConstShPtr& i_source)
{
  return CorvKinematicalEffect::init(i_weakPtr, i_source);
}

CorvKEPathShPtr CorvKEPath::create(const CorvPathConstShPtr& i_path, const CorvJointConstShPtr& i_joint,
                                   const CorvDeviceConstShPtr& i_device, const std::string& i_type)
{
  return lumCreate<CorvKEPath>(i_path, i_joint, i_device, i_type);
}

CorvKEPathShPtr CorvKEPath::createCopy(const CorvKEPathConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvKinematicalEffectShPtr CorvKEPath::clone() const
{
  return createCopy(self());
}

void CorvKEPath::path(const CorvPathConstShPtr& i_path)
{
  m_path = i_path;
  updateDofLimits();
}

void CorvKEPath::joint(const CorvJointConstShPtr& i_joint)
{
  m_joint = i_joint;
  updateDofLimits();
}

void CorvKEPath::device(const CorvDeviceConstShPtr& i_device)
{
  m_device = i_device;
  updateDofLimits();
}

void CorvKEPath::updateDofLimits()
{
  m_isVelocityCacheValid = false;
  const CorvDofShPtr dof = configSpace()->dof(0);
  dof->boundWithin(0.0, 1.0);
  const double pathLength = m_path ? m_path->length() : 1.0;
  if (const auto metric = boost::dynamic_pointer_cast<CKEPathMetric>(dof->metric()))
    metric->pathLength(pathLength);
  else
    dof->metric(CKEPathMetric::create(pathLength));
}

lmStatus CorvKEPath::forward(const double* i_values, ClumMat4& o_mat) const
{
  if (!i_values || !m_path || !m_device || !m_joint)
    return lmStatus(-1);
  CorvConfig cfg(m_path->configSpace());
  const lmStatus status = m_path->getConfigAtParam(i_values[0], cfg);
  return status.failed() ? status : m_device->getJointPosition(m_joint, cfg, o_mat);
}

lmStatus CorvKEPath::inverse(const ClumMat4&, double*) const
{
  return lmStatus(-1);
}

lmStatus CorvKEPath::forwardDerivate(const double*, unsigned int, ClumMat4&) const
{
  return lmStatus(-1);
}

lmStatus CorvKEPath::forwardSecondDerivate(const double*, unsigned int, unsigned int, ClumMat4&) const
{
  return lmStatus(-1);
}

lmStatus CorvKEPath::inverseVelocity(double, double, double, double, const ClumVect3&, std::vector<double>&) const
{
  return lmStatus(-1);
}

lmStatus CorvKEPath::forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const
{
  if (!i_velocities)
    return lmStatus(-1);
  const lmStatus status = m_isVelocityCacheValid ? lmStatus() : initVelocityCacheValues();
  if (status.failed())
    return status;
  const double speed = std::fabs(i_velocities[0]);
  o_linear = speed == 0.0 ? 0.0 : m_linearVelocity * speed;
  o_angular = speed == 0.0 ? 0.0 : m_angularVelocity * speed;
  return status;
}

lmStatus CorvKEPath::initVelocityCacheValues() const
{
  if (!m_path || !m_device || !m_joint)
    return lmStatus(-1);
  const double pathLength = m_path->length();
  double linear = 0.0, angular = 0.0;
  for (unsigned int i = 0; i < m_path->countDirectPaths(); ++i)
  {
    double linearSpeed = 0.0, angularSpeed = 0.0;
    const lmStatus status = getSpeedsOn(*m_path->directPath(i), linearSpeed, angularSpeed);
    if (status.failed())
      return status;
    linear = std::max(linear, linearSpeed);
    angular = std::max(angular, angularSpeed);
  }
  m_linearVelocity = linear == 0.0 ? 0.0 : linear * pathLength * (1.0 + 1e-9);
  m_angularVelocity = angular == 0.0 ? 0.0 : angular * pathLength * (1.0 + 1e-9);
  m_isVelocityCacheValid = true;
  return lmStatus();
}

/// True if the joint is the solid that the path moves, and stands on nothing that moves.
bool CorvKEPath::isMovedAsSolidBy(const CorvDirectPath& i_directPath) const
{
  unsigned int rank = 0, effectRank = 0;
  const CorvConfigSpaceShPtr effectSpace = m_joint->kinematicalEffect()->configSpace();
  return dynamic_cast<const CorvDPSolidMotion*>(&i_directPath) && !m_joint->parentJoint() && effectSpace->size() == 6 &&
         CorvDPSolidMotion::getRankOfSolid(*i_directPath.configSpace(), rank).succeeded() &&
         i_directPath.configSpace()->getFirstDofRankOfSubspace(effectSpace, effectRank).succeeded() &&
         rank == effectRank;
}

/// Speeds of a joint's effect, with respect to the distance along the path.
lmStatus CorvKEPath::getEffectSpeeds(const CorvJoint& i_joint, const CorvDirectPath& i_directPath,
                                     const std::vector<double>& i_rates, double& o_linear, double& o_angular) const
{
  const CorvKinematicalEffectShPtr& effect = i_joint.kinematicalEffect();
  const CorvConfigSpace& space = *i_directPath.configSpace();
  const unsigned int size = effect->configSpace()->size();
  o_linear = o_angular = 0.0;
  if (size == 0)
    return lmStatus();
  unsigned int first = 0;
  if (space.getFirstDofRankOfSubspace(effect->configSpace(), first).failed())
    return lmStatus(-1);
  for (unsigned int i = first; i < first + size; ++i)
    if (space.isDofComputed(i) && !space.isSubspaceTransitivelyLocked(space.dof(i)))
      return lmStatus(-1);
  return effect->forwardVelocity(i_rates.data() + first, o_linear, o_angular);
}

/// With the joints from the root down to the effect's joint, the origin of the last one moves by each joint's linear
/// speed, and by its angular speed times the way from its own origin, which is at most the sum of the ways from origin
/// to origin that follow. Such a way is that of a fixed offset and of the next effect's translation: on a stretch of
/// length L it is at most the mean of those at its ends and of what the translation goes in L.
lmStatus CorvKEPath::getSpeedsOn(const CorvDirectPath& i_directPath, double& o_linear, double& o_angular) const
{
  o_linear = o_angular = 0.0;
  const double stretch = i_directPath.length();
  if (stretch <= 0.0 && i_directPath.startConfiguration().isEquivalent(i_directPath.endConfiguration()))
    return lmStatus();
  if (isMovedAsSolidBy(i_directPath))
  {
    const auto& motion = static_cast<const CorvDPSolidMotion&>(i_directPath);
    o_linear = motion.linearSpeed();
    o_angular = motion.angularSpeed();
    return lmStatus();
  }
  std::vector<double> rates;
  i_directPath.maxAbsoluteDerivative(i_directPath.publicToPrivateDistance(0.0),
                                     i_directPath.publicToPrivateDistance(stretch), rates);
  double lever = 0.0;
  ClumMat4 outerStart, outerEnd;
  double outerLinear = 0.0;
  for (CorvJointConstShPtr at = m_joint; at; at = at->parentJoint())
  {
    ClumMat4 start, end;
    lmStatus status = m_device->getJointPosition(at, i_directPath.startConfiguration(), start);
    if (status.succeeded())
      status = m_device->getJointPosition(at, i_directPath.endConfiguration(), end);
    double linear = 0.0, angular = 0.0;
    if (status.succeeded())
      status = getEffectSpeeds(*at, i_directPath, rates, linear, angular);
    if (status.failed())
      return status;
    if (at != m_joint)
      lever += 0.5 * ((outerStart.translation() - start.translation()).norm() +
                      (outerEnd.translation() - end.translation()).norm() +
                      (outerLinear == 0.0 ? 0.0 : outerLinear * stretch));
    o_linear += linear + (lever == 0.0 || angular == 0.0 ? 0.0 : angular * lever);
    o_angular += angular;
    outerStart = start;
    outerEnd = end;
    outerLinear = linear;
  }
  return lmStatus();
}

bool CorvKEPath::operator==(const CorvKinematicalEffect& i_other) const
{
  const auto* other = dynamic_cast<const CorvKEPath*>(&i_other);
  return other && CorvKinematicalEffect::operator==(i_other) && m_path == other->m_path && m_joint == other->m_joint &&
         m_device == other->m_device;
}

void CorvKEPath::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvKinematicalEffect::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_path, "path");
  i_coder->encodeObjectShPtr(m_joint, "joint");
  i_coder->encodeObjectShPtr(m_device, "device");
}

lmStatus CorvKEPath::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvKinematicalEffect::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_path = i_coder->decode<CorvPath>("path");
  m_joint = i_coder->decode<CorvJoint>("joint");
  m_device = i_coder->decode<CorvDevice>("device");
  m_isVelocityCacheValid = false;
  return configSpace()->size() == 1 ? status : lmStatus(-1);
}
