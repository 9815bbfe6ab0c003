#include "constraints/orvConstraintComposite.h"

#include "foundation/lumAssert.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumMat.h"
#include "validation/orvSubspaceWalk.h"

LUM_DESCRIBE(CorvConstraintComposite)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space)", &Self::create);
}

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
  return orvSubspaceWalk::forEachPart(i_cfg, canWalkDofs(i_cfg.space()),
                                      [&] { return i_cfg.space()->constraints()->validate(i_cfg, i_params); });
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
  return orvSubspaceWalk::canFlatten<CorvConstraintComposite>(i_space, &CorvConfigSpace::constraints);
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
