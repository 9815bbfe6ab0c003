#include "validation/orvValidatorCfg6DofSingularity.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJoint.h"

#include <cmath>
#include <limits>

LUM_DESCRIBE(CorvValidatorCfg6DofSingularity)
{
  using TCreateOnArm = CorvValidatorCfg6DofSingularityShPtr (*)(const CorvDeviceShPtr&, double, double, double);
  i_class.creates("(const CorvDeviceShPtr& i_arm, double i_j5MinAllowedValue, double i_j5MaxAllowedValue, "
                  "double i_j5SingularityValue)",
                  static_cast<TCreateOnArm>(&Self::create));
}

const double CorvValidatorCfg6DofSingularity::DEFAULT_MIN_ALLOWED_VALUE = 5.0 * (ClumGeometryUtilities::PI / 180.0);
const double CorvValidatorCfg6DofSingularity::DEFAULT_MAX_ALLOWED_VALUE = std::numeric_limits<double>::infinity();

namespace
{
const char* const SINGULARITY_VALIDATOR_NAME = "orvane.core.cfg-6dofsingularity";

CorvJointShPtr firstChildOf(const CorvJointShPtr& i_joint)
{
  return i_joint->countChildJoints() == 0 ? CorvJointShPtr() : i_joint->childJoint(0);
}

/// The dof of the fifth axis of an arm; null unless five joints of one dof each follow each other.
CorvDofShPtr fifthAxisOf(const CorvDevice& i_arm)
{
  CorvJointShPtr joint = i_arm.rootJoint();
  while (joint && joint->countDofs() == 0)
    joint = firstChildOf(joint);
  for (int axis = 1; joint && joint->countDofs() == 1; ++axis, joint = firstChildOf(joint))
    if (axis == 5)
      return joint->dof(0);
  return CorvDofShPtr();
}
} // namespace

CorvValidatorCfg6DofSingularityShPtr CorvValidatorCfg6DofSingularity::create(const CorvDeviceShPtr& i_arm,
                                                                             double i_j5MinAllowedValue,
                                                                             double i_j5MaxAllowedValue,
                                                                             double i_j5SingularityValue)
{
  const CorvDofShPtr axis = i_arm ? fifthAxisOf(*i_arm) : CorvDofShPtr();
  unsigned int rank = 0;
  if (!axis || i_arm->getRankOfDof(axis, rank).failed())
    return CorvValidatorCfg6DofSingularityShPtr();
  return create(i_arm->configSpace(), rank, i_j5MinAllowedValue, i_j5MaxAllowedValue, i_j5SingularityValue);
}

CorvValidatorCfg6DofSingularityShPtr CorvValidatorCfg6DofSingularity::create(const CorvConfigSpaceShPtr& i_space,
                                                                             unsigned int i_j5Dof,
                                                                             double i_j5MinAllowedValue,
                                                                             double i_j5MaxAllowedValue,
                                                                             double i_j5SingularityValue)
{
  return lumCreate<CorvValidatorCfg6DofSingularity>(i_space, i_j5Dof, i_j5MinAllowedValue, i_j5MaxAllowedValue,
                                                    i_j5SingularityValue);
}

CorvValidatorCfg6DofSingularityShPtr
CorvValidatorCfg6DofSingularity::create(const CorvConfigSpaceShPtr& i_space,
                                        const std::vector<unsigned int>& i_actifDofs, double i_j5MinAllowedValue,
                                        double i_j5MaxAllowedValue, double i_j5SingularityValue)
{
  if (i_actifDofs.size() < 5)
    return CorvValidatorCfg6DofSingularityShPtr();
  return create(i_space, i_actifDofs[4], i_j5MinAllowedValue, i_j5MaxAllowedValue, i_j5SingularityValue);
}

CorvValidatorCfg6DofSingularityShPtr
CorvValidatorCfg6DofSingularity::createCopy(const CorvValidatorCfg6DofSingularityConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorCfg6DofSingularity::clone() const
{
  return createCopy(self());
}

CorvValidatorCfg6DofSingularity::CorvValidatorCfg6DofSingularity()
  : m_j5MinAllowedValue(DEFAULT_MIN_ALLOWED_VALUE), m_j5MaxAllowedValue(DEFAULT_MAX_ALLOWED_VALUE)
{
}

CorvValidatorCfg6DofSingularity::CorvValidatorCfg6DofSingularity(const CorvConfigSpaceShPtr& i_space,
                                                                 unsigned int i_j5Dof, double i_j5MinAllowedValue,
                                                                 double i_j5MaxAllowedValue,
                                                                 double i_j5SingularityValue)
  : CorvConfigValidator(i_space, SINGULARITY_VALIDATOR_NAME), m_j5Dof(i_j5Dof),
    m_j5MinAllowedValue(i_j5MinAllowedValue), m_j5MaxAllowedValue(i_j5MaxAllowedValue),
    m_j5SingularityValue(i_j5SingularityValue)
{
}

CorvValidatorCfg6DofSingularity::~CorvValidatorCfg6DofSingularity() = default;

lmStatus CorvValidatorCfg6DofSingularity::init(const CorvValidatorCfg6DofSingularityWkPtr& i_weakPtr)
{
  const lmStatus status = CorvConfigValidator::init(i_weakPtr);
  if (status.failed())
    return status;
  return m_j5Dof < unwrappedSpace()->size() ? lmStatus() : lmStatus(-1);
}

void CorvValidatorCfg6DofSingularity::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvConfigValidator::encodeWithCoder(i_coder);
  i_coder->encodeUnsignedInt(m_j5Dof, "j5Dof");
  i_coder->encodeDouble(m_j5MinAllowedValue, "j5MinAllowedValue");
  i_coder->encodeDouble(m_j5MaxAllowedValue, "j5MaxAllowedValue");
  i_coder->encodeDouble(m_j5SingularityValue, "j5SingularityValue");
}

lmStatus CorvValidatorCfg6DofSingularity::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvConfigValidator::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_j5Dof = i_coder->decodeUnsignedInt("j5Dof");
  m_j5MinAllowedValue = i_coder->decodeDouble("j5MinAllowedValue");
  m_j5MaxAllowedValue = i_coder->decodeDouble("j5MaxAllowedValue");
  m_j5SingularityValue = i_coder->decodeDouble("j5SingularityValue");
  return status;
}

bool CorvValidatorCfg6DofSingularity::doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr&,
                                                       const CorvValidationReportConstShPtr&,
                                                       CorvValidationReportShPtr&) const
{
  if (m_j5Dof >= i_cfg.size())
    return false;
  const double deviation = std::fabs(i_cfg.dofValue(m_j5Dof) - m_j5SingularityValue);
  return deviation >= m_j5MinAllowedValue && (!std::isfinite(m_j5MaxAllowedValue) || deviation <= m_j5MaxAllowedValue);
}
