#include "kinematics/orvKEEuclideanPath.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJointFreeFlyer.h"
#include "kinematics/orvKEPath.h"
#include "metrics/orvMetricEuclidean.h"
#include "paths/orvPath.h"
#include "paths/orvSMSlerp.h"

LUM_DESCRIBE(CorvKEEuclideanPath)
{
  using TCreate = CorvKEEuclideanPathShPtr (*)(const std::vector<ClumMat4>&, const std::string&);
  i_class.creates("(const std::vector<ClumMat4>& i_positions, const std::string& i_type)",
                  static_cast<TCreate>(&Self::create));
  i_class.property<CorvPathConstShPtr>("path", &Self::path, &Self::path);
}

CorvKEEuclideanPath::CorvKEEuclideanPath(const std::string& i_type)
  : CorvKinematicalEffect(CorvDof::create(false), i_type)
{
}

CorvKEEuclideanPath::CorvKEEuclideanPath(const CorvKEEuclideanPath& i_other)
  : CorvKinematicalEffect(i_other), m_KEPath(CorvKEPath::createCopy(i_other.m_KEPath))
{
}

CorvKEEuclideanPath::~CorvKEEuclideanPath() = default;

namespace
{
/// A device of one free-flying joint, steered by the shortest rotation, whose distances count an angle as a length.
CorvDeviceShPtr makeFrameCarrier()
{
  const CorvDeviceShPtr device = CorvDevice::create();
  const CorvJointFreeFlyerShPtr joint = CorvJointFreeFlyer::create(ClumMat4::IDENTITY);
  joint->kinematicalEffect()->configSpace()->metric(CorvMetricEuclidean::create());
  if (device->rootJoint(joint).failed())
    return CorvDeviceShPtr();
  device->steeringMethod(CorvSMSlerp::create());
  return device;
}

CorvPathShPtr makeFramePath(const CorvDeviceShPtr& i_device, const std::vector<ClumMat4>& i_positions)
{
  const CorvPathShPtr path = CorvPath::create(i_device);
  std::vector<double> values;
  for (const ClumMat4& position : i_positions)
  {
    CorvConfig cfg(path->configSpace());
    ClumGeometryUtilities::matrixToBryant(position, values);
    if (cfg.setDofValues(values).failed() || path->addConfiguration(cfg).failed())
      return CorvPathShPtr();
  }
  return path->isEmpty() ? CorvPathShPtr() : path;
}
} // namespace

lmStatus CorvKEEuclideanPath::init(const CorvKEEuclideanPathWkPtr& i_weakPtr, const std::vector<ClumMat4>& i_positions)
{
  const lmStatus status = CorvKinematicalEffect::init(i_weakPtr);
  if (status.failed())
    return status;
  const CorvDeviceShPtr device = makeFrameCarrier();
  const CorvPathShPtr path = device ? makeFramePath(device, i_positions) : CorvPathShPtr();
  if (!path)
    return lmStatus(-1);
  m_KEPath = CorvKEPath::create(path, device->rootJoint(), device, type());
  const CorvDofShPtr dof = configSpace()->dof(0);
  dof->boundWithin(0.0, 1.0);
  dof->metric(CorvKEPathMetric::create(path->length()));
  return lmStatus(m_KEPath && configSpace()->size() == 1 ? 0 : -1);
}

lmStatus CorvKEEuclideanPath::init(const CorvKEEuclideanPathWkPtr& i_weakPtr,
                                   const CorvKEEuclideanPathConstShPtr& i_source)
{
  return CorvKinematicalEffect::init(i_weakPtr, i_source);
}

CorvKEEuclideanPathShPtr CorvKEEuclideanPath::create(const std::vector<ClumMat4>& i_positions)
{
  return create(i_positions, CorvKEPath::TYPE);
}

CorvKEEuclideanPathShPtr CorvKEEuclideanPath::create(const std::vector<ClumMat4>& i_positions,
                                                     const std::string& i_type)
{
  return lumCreateWith<CorvKEEuclideanPath>(lumConstruct(i_type), i_positions);
}

CorvKEEuclideanPathShPtr CorvKEEuclideanPath::createCopy(const CorvKEEuclideanPathConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvKinematicalEffectShPtr CorvKEEuclideanPath::clone() const
{
  return createCopy(self());
}

std::vector<ClumMat4> CorvKEEuclideanPath::mat4List() const
{
  const CorvPathConstShPtr held = path();
  std::vector<ClumMat4> frames(held ? held->countConfigurations() : 0u);
  for (unsigned int i = 0; i < frames.size(); ++i)
    ClumGeometryUtilities::bryantToMatrix(held->configuration(i).beginPtr(), frames[i]);
  return frames;
}

CorvPathConstShPtr CorvKEEuclideanPath::path() const
{
  return m_KEPath ? m_KEPath->path() : CorvPathConstShPtr();
}

lmStatus CorvKEEuclideanPath::path(const CorvPathConstShPtr& i_path)
{
  if (!i_path || !m_KEPath || i_path->isEmpty() || !path() || i_path->configSpace() != path()->configSpace())
    return lmStatus(-1);
  if (i_path == path())
    return lmStatus();
  notifyPropertyWillChange("path");
  m_KEPath->path(i_path);
  if (const auto metric = boost::dynamic_pointer_cast<CorvKEPathMetric>(configSpace()->metric()))
    metric->pathLength(i_path->length());
  notifyPropertyDidChange("path");
  return lmStatus();
}

lmStatus CorvKEEuclideanPath::forward(const double* i_values, ClumMat4& o_mat) const
{
  return m_KEPath ? m_KEPath->forward(i_values, o_mat) : lmStatus(-1);
}

lmStatus CorvKEEuclideanPath::inverse(const ClumMat4&, double*) const
{
  return lmStatus(-1);
}

lmStatus CorvKEEuclideanPath::forwardDerivate(const double*, unsigned int, ClumMat4&) const
{
  return lmStatus(-1);
}

lmStatus CorvKEEuclideanPath::forwardSecondDerivate(const double*, unsigned int, unsigned int, ClumMat4&) const
{
  return lmStatus(-1);
}

lmStatus CorvKEEuclideanPath::forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const
{
  return m_KEPath ? m_KEPath->forwardVelocity(i_velocities, o_linear, o_angular) : lmStatus(-1);
}

lmStatus CorvKEEuclideanPath::inverseVelocity(double, double, double, double, const ClumVect3&,
                                              std::vector<double>&) const
{
  return lmStatus(-1);
}

bool CorvKEEuclideanPath::operator==(const CorvKinematicalEffect& i_other) const
{
  const auto* other = dynamic_cast<const CorvKEEuclideanPath*>(&i_other);
  return other && CorvKinematicalEffect::operator==(i_other) && mat4List() == other->mat4List();
}

void CorvKEEuclideanPath::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvKinematicalEffect::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_KEPath, "KEPath");
}

lmStatus CorvKEEuclideanPath::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvKinematicalEffect::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_KEPath = i_coder->decode<CorvKEPath>("KEPath");
  const bool isUsable = m_KEPath && boost::dynamic_pointer_cast<CorvDof>(configSpace());
  return lmStatus(isUsable ? lmStatus::SUCCESS : lmStatus::FAILURE);
}
