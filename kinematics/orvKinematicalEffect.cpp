#include "kinematics/orvKinematicalEffect.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDof.h"

LUM_DESCRIBE(CorvKinematicalEffect)
{
  i_class.property<CorvConfigSpaceShPtr>("configSpace", &Self::configSpace);
}

namespace
{
/// The values of a vector; never null, so that an effect without dofs takes an empty vector.
const double* effectValues(const std::vector<double>& i_values)
{
  static const double s_none = 0.0;
  return i_values.empty() ? &s_none : i_values.data();
}

const double* effectValues(const CorvConfig& i_cfg)
{
  static const double s_none = 0.0;
  return i_cfg.size() == 0 ? &s_none : i_cfg.beginPtr();
}
} // namespace

CorvKinematicalEffect::CorvKinematicalEffect(const CorvConfigSpaceShPtr& i_configSpace, const std::string& i_type)
  : m_type(i_type), m_configSpace(i_configSpace)
{
}

CorvKinematicalEffect::~CorvKinematicalEffect() = default;

lmStatus CorvKinematicalEffect::init(const CorvKinematicalEffectWkPtr& i_weakPtr)
{
  const lmStatus status = ClumMutableCodable::init(i_weakPtr);
  if (status.failed())
    return status;
  return m_type.empty() || !m_configSpace ? lmStatus(-1) : lmStatus();
}

lmStatus CorvKinematicalEffect::init(const CorvKinematicalEffectWkPtr& i_weakPtr,
                                     const CorvKinematicalEffectConstShPtr& i_source)
{
  m_configSpace = i_source->configSpace() ? i_source->configSpace()->clone() : CorvConfigSpaceShPtr();
  return init(i_weakPtr);
}

CorvConfigSpaceShPtr CorvKinematicalEffect::makeSpaceOfDofs(const std::vector<bool>& i_areRevolute,
                                                            const std::string& i_type)
{
  const CorvCSCompositeShPtr space = CorvCSComposite::create(i_type);
  for (bool isRevolute : i_areRevolute)
    if (!space || space->appendSubspace(CorvDof::create(isRevolute)).failed())
      return CorvConfigSpaceShPtr();
  return space;
}

bool CorvKinematicalEffect::hasSize(std::size_t i_count) const
{
  return m_configSpace && m_configSpace->size() == i_count;
}

bool CorvKinematicalEffect::hasSizeOf(const CorvKinematicalEffect& i_other) const
{
  return i_other.m_configSpace && hasSize(i_other.m_configSpace->size());
}

bool CorvKinematicalEffect::operator==(const CorvKinematicalEffect& i_other) const
{
  if (m_type != i_other.m_type || !m_configSpace != !i_other.m_configSpace)
    return false;
  return m_configSpace == i_other.m_configSpace || *m_configSpace == *i_other.m_configSpace;
}

ClumMat4 CorvKinematicalEffect::forward(const std::vector<double>& i_values) const
{
  ClumMat4 mat;
  forward(i_values, mat);
  return mat;
}

lmStatus CorvKinematicalEffect::forward(const std::vector<double>& i_values, ClumMat4& o_mat) const
{
  return hasSize(i_values.size()) ? forward(effectValues(i_values), o_mat) : lmStatus(-1);
}

lmStatus CorvKinematicalEffect::forward(const CorvConfig& i_cfg, ClumMat4& o_mat) const
{
  return hasSize(i_cfg.size()) ? forward(effectValues(i_cfg), o_mat) : lmStatus(-1);
}

std::vector<double> CorvKinematicalEffect::inverse(const ClumMat4& i_mat) const
{
  std::vector<double> values;
  inverse(i_mat, values);
  return values;
}

lmStatus CorvKinematicalEffect::inverse(const ClumMat4& i_mat, std::vector<double>& o_values) const
{
  if (!m_configSpace)
    return lmStatus(-1);
  // One more than needed, so that there is an address without dofs too.
  const unsigned int size = m_configSpace->size();
  std::vector<double> values(size + 1, 0.0);
  const lmStatus status = inverse(i_mat, values.data());
  if (status.failed())
    return status;
  values.resize(size);
  o_values.swap(values);
  return status;
}

lmStatus CorvKinematicalEffect::inverse(const ClumMat4& i_mat, CorvConfig& o_cfg) const
{
  if (!hasSize(o_cfg.size()))
    return lmStatus(-1);
  std::vector<double> values;
  const lmStatus status = inverse(i_mat, values);
  return status.failed() ? status : o_cfg.setDofValues(values);
}

lmStatus CorvKinematicalEffect::forwardDerivate(const std::vector<double>& i_values, unsigned int i_rank,
                                                ClumMat4& o_mat) const
{
  return hasSize(i_values.size()) ? forwardDerivate(effectValues(i_values), i_rank, o_mat) : lmStatus(-1);
}

lmStatus CorvKinematicalEffect::forwardDerivate(const CorvConfig& i_cfg, unsigned int i_rank, ClumMat4& o_mat) const
{
  return hasSize(i_cfg.size()) ? forwardDerivate(effectValues(i_cfg), i_rank, o_mat) : lmStatus(-1);
}

lmStatus CorvKinematicalEffect::forwardSecondDerivate(const std::vector<double>& i_values, unsigned int i_rank1,
                                                      unsigned int i_rank2, ClumMat4& o_mat) const
{
  return hasSize(i_values.size()) ? forwardSecondDerivate(effectValues(i_values), i_rank1, i_rank2, o_mat)
                                  : lmStatus(-1);
}

lmStatus CorvKinematicalEffect::forwardSecondDerivate(const CorvConfig& i_cfg, unsigned int i_rank1,
                                                      unsigned int i_rank2, ClumMat4& o_mat) const
{
  return hasSize(i_cfg.size()) ? forwardSecondDerivate(effectValues(i_cfg), i_rank1, i_rank2, o_mat) : lmStatus(-1);
}

lmStatus CorvKinematicalEffect::forwardVelocity(const std::vector<double>& i_velocities, double& o_linear,
                                                double& o_angular) const
{
  return hasSize(i_velocities.size()) ? forwardVelocity(effectValues(i_velocities), o_linear, o_angular) : lmStatus(-1);
}

lmStatus CorvKinematicalEffect::forwardVelocity(const CorvConfig& i_velocities, double& o_linear,
                                                double& o_angular) const
{
  return hasSize(i_velocities.size()) ? forwardVelocity(effectValues(i_velocities), o_linear, o_angular) : lmStatus(-1);
}

lmStatus CorvKinematicalEffect::getAxisHint(const CorvConfig& i_cfg, unsigned int i_rank, ClumVect3& o_axis) const
{
  ClumMat4 derivative, frame;
  lmStatus status = forwardDerivate(i_cfg, i_rank, derivative);
  if (status.succeeded())
    status = forward(i_cfg, frame);
  if (status.failed())
    return status;
  // The derivative times the inverse frame is a screw: the cross product matrix of the axis, and a translation.
  const ClumMat4 screw = derivative * frame.inverse();
  const ClumVect3 rotation(screw(2, 1), screw(0, 2), screw(1, 0));
  const ClumVect3 axis = rotation.squaredNorm() > 0.0 ? rotation : screw.translation();
  if (axis.squaredNorm() == 0.0)
    return lmStatus(-1);
  o_axis = axis.normalized();
  return lmStatus();
}

void CorvKinematicalEffect::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumMutableCodable::encodeWithCoder(i_coder);
  i_coder->encodeString(m_type, "type");
  i_coder->encodeObjectShPtr(m_configSpace, "configSpace");
}

lmStatus CorvKinematicalEffect::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_type = i_coder->decodeString("type");
  m_configSpace = i_coder->decode<CorvConfigSpace>("configSpace");
  return m_configSpace ? lmStatus() : lmStatus(-1);
}
