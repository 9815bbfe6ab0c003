// How a config space takes over what judges and computes in another one.

#include "constraints/orvConstraintDofLock.h"
#include "foundation/lumAssert.h"
#include "foundation/lumClass.h"
#include "kinematics/orvCloner.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvConfigSpaceCaches.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJoint.h"
#include "validation/orvValidatorDofBounds.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>

/// One merge: the two spaces without their wrappers, and for each space of the source its partner in the target.
struct CorvConfigSpace::CMerge
{
  CMerge(const CorvConfigSpaceShPtr& i_target, const CorvConfigSpaceShPtr& i_source)
    : target(i_target), source(i_source)
  {
  }

  lmStatus run();

private:
  lmStatus matchDofs();
  void pairSpaces(const CorvConfigSpaceShPtr& i_source, const CorvConfigSpaceShPtr& i_target);
  CorvConfigSpaceShPtr spaceOfDofs(unsigned int i_first, unsigned int i_count) const;
  CorvConfigSpaceShPtr partnerOf(const CorvConfigSpace& i_space) const;
  void showPartners(ClumMemoryCoder& io_coder) const;
  template <class X>
  static void showPartner(const ShPtr<X>& i_source, const ShPtr<X>& i_target, ClumMemoryCoder& io_coder);
  template <class X>
  ShPtr<X> cloneOf(const X& i_judge, const CorvConfigSpaceShPtr& i_partner) const;

  lmStatus mergeConstraint(const CorvConstraint& i_constraint);
  lmStatus takeOverVariants(CorvConstraint& io_clone, const CorvConstraintShPtr& i_conflicting, bool& o_areEqual) const;
  lmStatus addConstraint(const CorvConstraintShPtr& i_clone, const CorvConfigSpaceShPtr& i_partner);
  lmStatus mergeLock(const CorvConstraintDofLock& i_lock);
  lmStatus mergeValidator(const CorvValidator& i_validator);
  lmStatus mergeBounds(const CorvDof& i_source, const CorvDofShPtr& i_target);
  lmStatus lockAtBound(const CorvDofShPtr& i_dof, double i_value);

  CorvConfigSpaceShPtr target;
  CorvConfigSpaceShPtr source;
  std::vector<CorvDofShPtr> targetDofs;
  std::vector<CorvDofShPtr> sourceDofs;
  std::vector<std::pair<CorvConfigSpaceShPtr, CorvConfigSpaceShPtr>> partners;
};

namespace
{
lmStatus mergeFailure(const std::string& i_text)
{
  ClumLogManager::addError(i_text);
  return -1;
}

lmStatus mergeFailure(const char* i_kind, const ClumObject& i_object, const char* i_reason)
{
  return mergeFailure("When merging " + std::string(i_kind) + " of class " + i_object.classObject()->name() + ": " +
                      i_reason);
}

/// True if the constraints of the whole tree can still be put in order with one more.
bool canRootTake(const CorvConfigSpace& i_space, const CorvConstraintShPtr& i_constraint)
{
  std::vector<CorvConstraintShPtr> constraints;
  std::vector<CorvConstraintShPtr> sorted;
  i_space.root()->getSortedFlatConstraints(constraints);
  constraints.push_back(i_constraint);
  return CorvConstraint::sortByDependency(constraints, std::vector<unsigned int>(), sorted).succeeded();
}
} // namespace

lmStatus CorvConfigSpace::mergeClonedValidatorsAndConstraintsFrom(const CorvConfigSpaceConstShPtr& i_source)
{
  if (!i_source)
    return -1;
  if (&i_source->unwrapped() == &unwrapped())
    return lmStatus();
  return CMerge(unwrapped().self(), i_source->unwrapped().self()).run();
}

lmStatus CorvConfigSpace::CMerge::run()
{
  lmStatus status = matchDofs();
  if (status.failed())
    return status;
  pairSpaces(source, target);

  // The source's lists stay as they are while the target changes.
  const ShPtr<const CConstraintCache> constraints = source->constraintCache();
  const ShPtr<const CValidatorCache> validators = source->validatorCache();
  std::vector<const CorvConstraintDofLock*> locks;
  for (const CorvConstraintShPtr& constraint : constraints->flat)
  {
    const auto* lock = dynamic_cast<const CorvConstraintDofLock*>(constraint.get());
    if (lock && lock->name() == CorvConstraintDofLock::defaultName())
      locks.push_back(lock);
    else if ((status = mergeConstraint(*constraint)).failed())
      return status;
  }
  // What cannot be decided yet stays open.
  target->lockConstantDofs();
  for (const CorvConstraintDofLock* lock : locks)
    if ((status = mergeLock(*lock)).failed())
      return status;
  for (const CValidatorCache::CStep& step : validators->steps)
    if ((status = mergeValidator(*step.validator)).failed())
      return status;
  for (std::size_t rank = 0; rank < sourceDofs.size(); ++rank)
    if ((status = mergeBounds(*sourceDofs[rank], targetDofs[rank])).failed())
      return status;
  return lmStatus();
}

lmStatus CorvConfigSpace::CMerge::matchDofs()
{
  source->getDofs(sourceDofs);
  target->getDofs(targetDofs);
  if (sourceDofs.size() != targetDofs.size())
    return mergeFailure("Cannot merge space validators and constraints of spaces with different numbers of dofs.");
  const auto isSameKind = [](const CorvDofShPtr& i_a, const CorvDofShPtr& i_b)
  { return i_a->isRevolute() == i_b->isRevolute(); };
  if (!std::equal(sourceDofs.begin(), sourceDofs.end(), targetDofs.begin(), isSameKind))
    return mergeFailure("Cannot mix periodic and non-periodic dofs when merging space validators and constraints.");
  return lmStatus();
}

// As far down as the two trees have one shape; below, the spaces that hold the same dofs are partners.
void CorvConfigSpace::CMerge::pairSpaces(const CorvConfigSpaceShPtr& i_source, const CorvConfigSpaceShPtr& i_target)
{
  if (i_target)
    partners.emplace_back(i_source, i_target);
  const CorvConfigSpace& from = i_source->unwrapped();
  const CorvConfigSpace* to = i_target ? &i_target->unwrapped() : nullptr;
  if (&from != i_source.get())
    partners.emplace_back(from.self(), to ? to->self() : CorvConfigSpaceShPtr());
  const unsigned int count = from.countSubspaces();
  for (unsigned int rank = 0; rank < count; ++rank)
  {
    const CorvConfigSpaceShPtr part = from.subspace(rank);
    unsigned int first = 0;
    source->getFirstDofRankOfSubspace(*part, first);
    CorvConfigSpaceShPtr partner = to && to->countSubspaces() == count ? to->subspace(rank) : CorvConfigSpaceShPtr();
    unsigned int partnerFirst = 0;
    if (!partner || partner->size() != part->size() ||
        target->getFirstDofRankOfSubspace(*partner, partnerFirst).failed() || partnerFirst != first ||
        (part->countSubspaces() == 0) != (partner->countSubspaces() == 0))
      partner = spaceOfDofs(first, part->size());
    pairSpaces(part, partner);
  }
}

// The dof itself for a single one. Null if no space holds just these dofs.
CorvConfigSpaceShPtr CorvConfigSpace::CMerge::spaceOfDofs(unsigned int i_first, unsigned int i_count) const
{
  if (i_count == 1)
    return targetDofs[i_first];
  CorvConfigSpaceShPtr space = target;
  unsigned int first = 0;
  while (space && (first != i_first || space->size() != i_count))
  {
    const CorvConfigSpace& outer = space->unwrapped();
    space.reset();
    for (unsigned int rank = 0; !space && rank < outer.countSubspaces(); ++rank)
    {
      const CorvConfigSpaceShPtr part = outer.subspace(rank);
      if (target->getFirstDofRankOfSubspace(*part, first).succeeded() && first <= i_first &&
          i_first + i_count <= first + part->size())
        space = part;
    }
  }
  return space;
}

CorvConfigSpaceShPtr CorvConfigSpace::CMerge::partnerOf(const CorvConfigSpace& i_space) const
{
  for (const auto& [from, to] : partners)
    if (from.get() == &i_space)
      return to;
  return CorvConfigSpaceShPtr();
}

// What has no partner passes as it is.
template <class X>
void CorvConfigSpace::CMerge::showPartner(const ShPtr<X>& i_source, const ShPtr<X>& i_target, ClumMemoryCoder& io_coder)
{
  if (i_source && i_target)
    io_coder.setDecoded(i_source.get(), i_target.get());
  else if (i_source)
    io_coder.pin(i_source.get());
}

void CorvConfigSpace::CMerge::showPartners(ClumMemoryCoder& io_coder) const
{
  for (const auto& [from, to] : partners)
  {
    showPartner(from, to, io_coder);
    showPartner(from->joint(), to ? to->joint() : CorvJointShPtr(), io_coder);
    showPartner(from->device(), to ? to->device() : CorvDeviceShPtr(), io_coder);
  }
}

// A copy whose references into the source lead to the target instead. Null if the class cannot be copied by coding.
template <class X>
ShPtr<X> CorvConfigSpace::CMerge::cloneOf(const X& i_judge, const CorvConfigSpaceShPtr& i_partner) const
{
  const CorvClonerShPtr cloner = CorvCloner::create();
  showPartners(*cloner);
  if (cloner->encodeObject(&i_judge, "object").failed())
    return ShPtr<X>();
  const ShPtr<X> clone = boost::dynamic_pointer_cast<X>(cloner->decodeObject("object"));
  if (clone)
    clone->watch(i_partner);
  return clone;
}

lmStatus CorvConfigSpace::CMerge::mergeConstraint(const CorvConstraint& i_constraint)
{
  const char* const otherError = "merge error not due to a name or transitivity conflict.";
  const CorvConfigSpace* space = i_constraint.unwrappedSpace();
  const CorvConfigSpaceShPtr partner = space ? partnerOf(*space) : CorvConfigSpaceShPtr();
  const CorvConstraintShPtr clone = partner ? cloneOf(i_constraint, partner) : CorvConstraintShPtr();
  if (!clone)
    return mergeFailure("constraint", i_constraint, otherError);
  const CorvConstraintShPtr conflictingConstraint =
    boost::dynamic_pointer_cast<CorvConstraint>(partner->constraints()->validatorNamed(clone->name(), true));
  if (conflictingConstraint)
  {
    bool areEqual = false;
    if (takeOverVariants(*clone, conflictingConstraint, areEqual).failed())
      return mergeFailure("constraint", i_constraint, "partial variant conflict unsolved.");
    // Another constraint under the same name is none to be replaced: the name stays taken.
    if (areEqual)
      LUM_ASSERT_SUCCESS(conflictingConstraint->configSpace()->constraints()->remove(conflictingConstraint));
  }
  return addConstraint(clone, partner);
}

// The source's variant holds, and of partial variants those that both have on.
lmStatus CorvConfigSpace::CMerge::takeOverVariants(CorvConstraint& io_clone, const CorvConstraintShPtr& i_conflicting,
                                                   bool& o_areEqual) const
{
  if (i_conflicting->variant() == io_clone.variant())
    io_clone.intersectPartialVariantState(i_conflicting->getPartialVariantState());
  if (!io_clone.arePartialVariantsWellDefined())
    return -1;
  const CorvConstraintShPtr aligned = boost::dynamic_pointer_cast<CorvConstraint>(i_conflicting->clone());
  aligned->variant(io_clone.variant());
  aligned->setPartialVariantState(io_clone.getPartialVariantState());
  aligned->isActivated(true);
  io_clone.isVariantLocked(io_clone.isVariantLocked() || aligned->isVariantLocked());
  aligned->isVariantLocked(io_clone.isVariantLocked());
  o_areEqual = aligned->equalByCoding(io_clone);
  return lmStatus();
}

lmStatus CorvConfigSpace::CMerge::addConstraint(const CorvConstraintShPtr& i_clone,
                                                const CorvConfigSpaceShPtr& i_partner)
{
  const CorvValidatorSetShPtr set = i_partner->constraints();
  if (!i_partner->canAddActiveConstraint(i_clone) || !canRootTake(*i_partner, i_clone))
  {
    return i_partner->addConstraintByAdjustingVariants(i_clone, set).succeeded()
             ? lmStatus()
             : mergeFailure("constraint", *i_clone, "transitivity conflict unsolved.");
  }
  const bool isNameTaken = static_cast<bool>(set->validatorNamed(i_clone->name(), true));
  if (set->add(i_clone).succeeded())
    return lmStatus();
  return mergeFailure("constraint", *i_clone,
                      isNameTaken ? "name conflict unsolved."
                                  : "merge error not due to a name or transitivity conflict.");
}

lmStatus CorvConfigSpace::CMerge::mergeLock(const CorvConstraintDofLock& i_lock)
{
  unsigned int rank = 0;
  if (source->getFirstDofRankOfSubspace(*i_lock.unwrappedSpace(), rank).failed())
    return -1;
  const CorvDofShPtr& dof = targetDofs[rank];
  if (dof->isLocked())
  {
    return dof->equivalentValues(dof->lockedValue(), i_lock.value())
             ? lmStatus()
             : mergeFailure(
                 "When merging lock constraint: conflict could not be solved because of different lock values.");
  }
  if (target->setConstraintVariantsForWriting(dof).failed())
    return mergeFailure("When merging lock constraint: conflict could not be solved because constraints prevent from "
                        "locking dof.");
  dof->lockAt(i_lock.value());
  target->lockConstantDofs();
  return lmStatus();
}

// An equal validator of the same name does already what the clone would do.
lmStatus CorvConfigSpace::CMerge::mergeValidator(const CorvValidator& i_validator)
{
  if (dynamic_cast<const CorvValidatorDofBounds*>(&i_validator))
    return lmStatus();
  const char* const otherError = "merge error not due to a name conflict.";
  const CorvConfigSpace* space = i_validator.unwrappedSpace();
  const CorvConfigSpaceShPtr partner = space ? partnerOf(*space) : target;
  const CorvValidatorShPtr clone = partner ? cloneOf(i_validator, partner) : CorvValidatorShPtr();
  if (!clone)
    return mergeFailure("validator", i_validator, otherError);
  const CorvValidatorSetShPtr set = partner->configValidators();
  const CorvValidatorShPtr conflictingValidator = set->validatorNamed(clone->name(), true);
  if (conflictingValidator && conflictingValidator->equalByCoding(*clone))
    return lmStatus();
  if (set->add(clone).succeeded())
    return lmStatus();
  return mergeFailure("validator", i_validator, conflictingValidator ? "name conflict unsolved." : otherError);
}

lmStatus CorvConfigSpace::CMerge::mergeBounds(const CorvDof& i_source, const CorvDofShPtr& i_target)
{
  if (!i_source.isBounded())
    return lmStatus();
  if (!i_target->isBounded())
    return i_target->boundWithin(i_source.vmin(), i_source.vmax());
  if (i_target->vmin() > i_source.vmax() || i_source.vmin() > i_target->vmax())
    return mergeFailure(
      "When merging bounds validator: conflict could not be solved because of non-intersecting bounds.");
  const double low = std::max(i_source.vmin(), i_target->vmin());
  const double high = std::min(i_source.vmax(), i_target->vmax());
  const lmStatus status = i_target->bounds(low, high);
  return status.failed() || low != high ? status : lockAtBound(i_target, low);
}

lmStatus CorvConfigSpace::CMerge::lockAtBound(const CorvDofShPtr& i_dof, double i_value)
{
  ClumLogManager::addInfo("When merging bounds validator: locking dof with equal bounds.");
  const bool isLockedElsewhere = i_dof->isLocked() && !i_dof->equivalentValues(i_dof->lockedValue(), i_value);
  if (isLockedElsewhere || target->setConstraintVariantsForWriting(i_dof).failed())
    return mergeFailure("When merging bounds validator: constraints prevent from locking dof with equal bounds.");
  i_dof->lockAt(i_value);
  return lmStatus();
}
