#include "constraints/orvConstraintComposite.h"

#include "foundation/lumAssert.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumMat.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDof.h"
#include "validation/orvValidatorSet.h"

LUM_DESCRIBE(CorvConstraintComposite)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space)", &Self::create);
}

namespace
{
/// Empty, or nothing but one composite.
bool holdsCompositeAtMost(const CorvValidatorSet& i_constraints)
{
  if (i_constraints.count() == 0)
    return true;
  const CorvValidatorShPtr only = i_constraints.at(0);
  return i_constraints.count() == 1 && dynamic_cast<const CorvConstraintComposite*>(only.get());
}
} // namespace

CorvConstraintCompositeShPtr CorvConstraintComposite::create(const CorvConfigSpaceShPtr& i_space)
{
  return lumCreate<CorvConstraintComposite>(i_space);
}

CorvConstraintCompositeShPtr
CorvConstraintComposite::createCopy(const CorvConstraintCompositeConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvConstraintComposite::clone() const
{
  return createCopy(self());
}

CorvConstraintComposite::CorvConstraintComposite(const CorvConfigSpaceShPtr& i_space)
  : CorvConstraint(i_space, "orvane.core.constraint-composite")
{
}

CorvConstraintComposite::~CorvConstraintComposite() = default;

lmStatus CorvConstraintComposite::init(const CorvConstraintCompositeWkPtr& i_weakPtr)
{
  return CorvConstraint::init(i_weakPtr);
}

bool CorvConstraintComposite::doesUseReports() const
{
  return false;
}

bool CorvConstraintComposite::doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                                               const CorvValidationReportConstShPtr&, CorvValidationReportShPtr&) const
{
  const bool walksDofs = canWalkDofs(i_cfg.space());
  if ((walksDofs ? i_cfg.walkDofs() : i_cfg.pushSpace()).failed())
    return true;
  bool isApplied = true;
  do
    isApplied = i_cfg.space()->constraints()->validate(i_cfg, i_params);
  while (isApplied && (walksDofs ? i_cfg.nextDof() : i_cfg.nextSubspace()).succeeded());
  if (walksDofs)
    i_cfg.endWalk();
  else
    i_cfg.popSpace();
  return isApplied;
}

lmStatus CorvConstraintComposite::doApply(CorvConfig&, const ClumParameterMapConstShPtr&) const
{
  LUM_ASSERT(false);
  return -1;
}

void CorvConstraintComposite::getTransitivity(std::vector<CorvConfigSpaceShPtr>& o_input,
                                              std::vector<CorvConfigSpaceShPtr>& o_output) const
{
  o_input.clear();
  o_output.clear();
  std::vector<CorvConfigSpaceShPtr> produced;
  const CorvConfigSpace* space = unwrappedSpace();
  for (unsigned int rank = 0; space && rank < space->countSubspaces(); ++rank)
  {
    std::vector<CorvConfigSpaceShPtr> inputs;
    std::vector<CorvConfigSpaceShPtr> outputs;
    const CorvValidatorSetShPtr set = space->subspace(rank)->constraints();
    if (!set->isActivated())
      continue;
    set->getTransitivity(inputs, outputs);
    CorvConfigSpace::merge(o_input, inputs);
    CorvConfigSpace::merge(o_output, outputs);
    CorvConfigSpace::subtract(outputs, inputs);
    CorvConfigSpace::merge(produced, outputs);
  }
  CorvConfigSpace::subtract(o_input, produced);
}

bool CorvConstraintComposite::isImplicit() const
{
  const CorvConfigSpace* space = unwrappedSpace();
  for (unsigned int rank = 0; space && rank < space->countSubspaces(); ++rank)
    if (!space->subspace(rank)->constraints()->isImplicit())
      return false;
  return true;
}

lmStatus CorvConstraintComposite::getLipschitzMatrix(ClumMat&, const CorvDomainConstShPtr&) const
{
  ClumLogManager::addError("CorvConstraintComposite::getLipschitzMatrix: not implemented");
  return -1;
}

bool CorvConstraintComposite::canFlattenConstraints(const CorvConfigSpace& i_space)
{
  if (dynamic_cast<const CorvDof*>(&i_space))
    return true;
  const CorvConfigSpace& space = i_space.unwrapped();
  if (!holdsCompositeAtMost(*space.constraints()))
    return false;
  for (unsigned int rank = 0; rank < space.countSubspaces(); ++rank)
    if (!canFlattenConstraints(*space.subspace(rank)))
      return false;
  return true;
}

bool CorvConstraintComposite::canWalkDofs(const CorvConfigSpaceShPtr& i_space) const
{
  const unsigned int version = i_space->version();
  if (version != m_walkedVersion || m_walkedSpace.lock() != i_space)
  {
    m_canWalkDofs = canFlattenConstraints(*i_space);
    m_walkedSpace = i_space;
    m_walkedVersion = version;
  }
  return m_canWalkDofs;
}
