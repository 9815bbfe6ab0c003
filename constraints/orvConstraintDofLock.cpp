#include "constraints/orvConstraintDofLock.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDof.h"

LUM_DESCRIBE(CorvConstraintDofLock)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space, double i_lockValue)", &Self::create);
}

const std::string& CorvConstraintDofLock::defaultName()
{
  static const std::string s_name("orvane.core.constraint-dof-lock");
  return s_name;
}

CorvConstraintDofLockShPtr CorvConstraintDofLock::create(const CorvConfigSpaceShPtr& i_space, double i_lockValue)
{
  return lumCreate<CorvConstraintDofLock>(i_space, i_lockValue);
}

CorvConstraintDofLockShPtr CorvConstraintDofLock::createCopy(const CorvConstraintDofLockConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvConstraintDofLock::clone() const
{
  return createCopy(self());
}

CorvConstraintDofLock::CorvConstraintDofLock(const CorvConfigSpaceShPtr& i_space, double i_lockValue)
  : CorvConstraint(i_space, defaultName()), m_lockValue(i_lockValue)
{
}

CorvConstraintDofLock::~CorvConstraintDofLock() = default;

lmStatus CorvConstraintDofLock::init(const CorvConstraintDofLockWkPtr& i_weakPtr)
{
  const lmStatus status = CorvConstraint::init(i_weakPtr);
  if (status.failed())
    return status;
  return unwrappedSpace()->size() == 1 ? lmStatus() : lmStatus(-1);
}

void CorvConstraintDofLock::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvConstraint::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_lockValue, "lockValue");
}

lmStatus CorvConstraintDofLock::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvConstraint::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_lockValue = i_coder->decodeDouble("lockValue");
  return lmStatus();
}

bool CorvConstraintDofLock::doesUseReports() const
{
  return false;
}

// The configuration itself knows what a write to a passive dof may do.
lmStatus CorvConstraintDofLock::doApply(CorvConfig& io_config, const ClumParameterMapConstShPtr&) const
{
  io_config.dofValue(0, m_lockValue);
  return lmStatus();
}

void CorvConstraintDofLock::getTransitivity(std::vector<CorvConfigSpaceShPtr>& o_input,
                                            std::vector<CorvConfigSpaceShPtr>& o_output) const
{
  o_input.clear();
  o_output.clear();
  const CorvConfigSpace* space = unwrappedSpace();
  if (space && space->size() != 0)
    o_output.push_back(space->dof(0));
}

void CorvConstraintDofLock::value(double i_value)
{
  if (i_value == m_lockValue)
    return;
  m_lockValue = i_value;
  didChange();
}
