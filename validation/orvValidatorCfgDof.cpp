#include "validation/orvValidatorCfgDof.h"

#include "foundation/lumAssert.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDof.h"
#include "validation/orvReportCfgDof.h"

LUM_DESCRIBE(CorvValidatorCfgDof)
{
}

LUM_DESCRIBE(CorvValidatorCfgBounds)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space)", &Self::create);
}

LUM_DESCRIBE(CorvValidatorCfgLock)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space)", &Self::create);
}

CorvValidatorCfgDof::CorvValidatorCfgDof() = default;

CorvValidatorCfgDof::CorvValidatorCfgDof(const CorvConfigSpaceShPtr& i_space, const std::string& i_name)
  : CorvConfigValidator(i_space, i_name)
{
}

CorvValidatorCfgDof::CorvValidatorCfgDof(const CorvValidatorCfgDof& i_other) : CorvConfigValidator(i_other)
{
}

CorvValidatorCfgDof::~CorvValidatorCfgDof() = default;

lmStatus CorvValidatorCfgDof::init(const CorvValidatorCfgDofWkPtr& i_weakPtr)
{
  return CorvConfigValidator::init(i_weakPtr);
}

void CorvValidatorCfgDof::updateDofs() const
{
  const CorvConfigSpace* space = unwrappedSpace();
  if (!space || m_version == space->version())
    return;
  std::vector<CorvDofShPtr> dofs;
  LUM_ASSERT_SUCCESS(configSpace()->getDofs(dofs));
  const CorvReportCfgDofShPtr allValid = CorvReportCfgDof::create();
  for (std::size_t i = 0; i < dofs.size(); ++i)
    allValid->appendDof(true);
  m_dofs.swap(dofs);
  m_allValid = allValid;
  m_version = space->version();
}

bool CorvValidatorCfgDof::doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr&,
                                           const CorvValidationReportConstShPtr&,
                                           CorvValidationReportShPtr& o_report) const
{
  updateDofs();
  // The bulk read brings computed values up to date.
  const double* values = i_cfg.beginPtr();
  if (m_dofs.size() != i_cfg.size() || (!values && !m_dofs.empty()))
    return false;
  std::size_t firstRefused = 0;
  while (firstRefused < m_dofs.size() && doValidateDof(m_dofs[firstRefused], values[firstRefused]))
    ++firstRefused;
  if (firstRefused == m_dofs.size())
  {
    o_report = m_allValid;
    return true;
  }
  const CorvReportCfgDofShPtr report = CorvReportCfgDof::create();
  for (std::size_t i = 0; i < m_dofs.size(); ++i)
    report->appendDof(i < firstRefused || (i > firstRefused && doValidateDof(m_dofs[i], values[i])));
  o_report = report;
  return false;
}

CorvValidatorCfgBounds::CorvValidatorCfgBounds(const CorvConfigSpaceShPtr& i_space)
  : CorvValidatorCfgDof(i_space, "orvane.core.cfg-bounds")
{
}

CorvValidatorCfgBounds::~CorvValidatorCfgBounds() = default;

lmStatus CorvValidatorCfgBounds::init(const CorvValidatorCfgBoundsWkPtr& i_weakPtr)
{
  return CorvValidatorCfgDof::init(i_weakPtr);
}

CorvValidatorCfgBoundsShPtr CorvValidatorCfgBounds::create(const CorvConfigSpaceShPtr& i_space)
{
  return lumCreate<CorvValidatorCfgBounds>(i_space);
}

CorvValidatorCfgBoundsShPtr CorvValidatorCfgBounds::createCopy(const CorvValidatorCfgBoundsConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorCfgBounds::clone() const
{
  return createCopy(self());
}

bool CorvValidatorCfgBounds::doValidateDof(const CorvDofConstShPtr& i_dof, double i_value) const
{
  if (!i_dof->isBounded() || (i_dof->vmin() <= i_value && i_value <= i_dof->vmax()))
    return true;
  return i_dof->equivalentValues(i_value, i_dof->vmin()) || i_dof->equivalentValues(i_value, i_dof->vmax());
}

CorvValidatorCfgLock::CorvValidatorCfgLock(const CorvConfigSpaceShPtr& i_space)
  : CorvValidatorCfgDof(i_space, "orvane.core.cfg-lock")
{
}

CorvValidatorCfgLock::~CorvValidatorCfgLock() = default;

lmStatus CorvValidatorCfgLock::init(const CorvValidatorCfgLockWkPtr& i_weakPtr)
{
  return CorvValidatorCfgDof::init(i_weakPtr);
}

CorvValidatorCfgLockShPtr CorvValidatorCfgLock::create(const CorvConfigSpaceShPtr& i_space)
{
  return lumCreate<CorvValidatorCfgLock>(i_space);
}

CorvValidatorCfgLockShPtr CorvValidatorCfgLock::createCopy(const CorvValidatorCfgLockConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorCfgLock::clone() const
{
  return createCopy(self());
}

bool CorvValidatorCfgLock::doValidateDof(const CorvDofConstShPtr& i_dof, double i_value) const
{
  return !i_dof->isLocked() || i_dof->equivalentValues(i_value, i_dof->lockedValue());
}
