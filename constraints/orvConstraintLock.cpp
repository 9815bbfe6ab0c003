#include "constraints/orvConstraintLock.h"

#include "foundation/lumAssert.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDof.h"

LUM_DESCRIBE(CorvConstraintLock)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space)", &Self::create);
}

CorvConstraintLockShPtr CorvConstraintLock::create(const CorvConfigSpaceShPtr& i_space)
{
  return lumCreate<CorvConstraintLock>(i_space);
}

CorvConstraintLockShPtr CorvConstraintLock::createCopy(const CorvConstraintLockConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvConstraintLock::clone() const
{
  return createCopy(self());
}

CorvConstraintLock::CorvConstraintLock(const CorvConfigSpaceShPtr& i_space)
  : CorvConstraint(i_space, "orvane.core.constraint-lock")
{
}

CorvConstraintLock::~CorvConstraintLock() = default;

lmStatus CorvConstraintLock::init(const CorvConstraintLockWkPtr& i_weakPtr)
{
  return CorvConstraint::init(i_weakPtr);
}

lmStatus CorvConstraintLock::doApply(CorvConfig& io_config, const ClumParameterMapConstShPtr&) const
{
  std::vector<CorvDofShPtr> dofs;
  LUM_ASSERT_SUCCESS(configSpace()->getDofs(dofs));
  for (unsigned int rank = 0; rank < dofs.size(); ++rank)
    if (dofs[rank]->isLocked())
      io_config.dofValue(rank, dofs[rank]->lockedValue());
  return lmStatus();
}

void CorvConstraintLock::getTransitivity(std::vector<CorvConfigSpaceShPtr>& o_input,
                                         std::vector<CorvConfigSpaceShPtr>& o_output) const
{
  o_input.clear();
  o_output.clear();
  const CorvConfigSpace* space = unwrappedSpace();
  for (unsigned int rank = 0; space && rank < space->size(); ++rank)
    if (space->dof(rank)->isLocked())
      o_output.push_back(space->dof(rank));
}
