// What a config space does with its constraints and configuration validators.

#include "constraints/orvConstraintComposite.h"
#include "constraints/orvConstraintDofLock.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpaceCaches.h"
#include "kinematics/orvDof.h"
#include "validation/orvValidatorCfgComposite.h"
#include "validation/orvValidatorDofBounds.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>
#include <typeinfo>

namespace
{
using TConstraints = std::vector<CorvConstraintShPtr>;

void flattenConstraints(const CorvConfigSpace& i_space, TConstraints& io_flat);

void flattenConstraint(const CorvValidatorShPtr& i_validator, const CorvConfigSpace& i_space, TConstraints& io_flat)
{
  if (!i_validator->isActivated())
    return;
  if (const CorvValidatorSet* set = dynamic_cast<const CorvValidatorSet*>(i_validator.get()))
  {
    for (unsigned int rank = 0; rank < set->count(); ++rank)
      flattenConstraint(set->at(rank), i_space, io_flat);
  }
  else if (dynamic_cast<const CorvConstraintComposite*>(i_validator.get()))
  {
    for (unsigned int rank = 0; rank < i_space.countSubspaces(); ++rank)
      flattenConstraints(*i_space.subspace(rank), io_flat);
  }
  else if (const CorvConstraintShPtr constraint = boost::dynamic_pointer_cast<CorvConstraint>(i_validator))
  {
    if (std::find(io_flat.begin(), io_flat.end(), constraint) == io_flat.end())
      io_flat.push_back(constraint);
  }
}

void flattenConstraints(const CorvConfigSpace& i_space, TConstraints& io_flat)
{
  flattenConstraint(i_space.constraints(), i_space.unwrapped(), io_flat);
}

void flattenValidators(const CorvConfigSpace& i_space, std::vector<CorvValidatorShPtr>& io_flat);

void flattenValidator(const CorvValidatorShPtr& i_validator, const CorvConfigSpace& i_space,
                      std::vector<CorvValidatorShPtr>& io_flat)
{
  const CorvValidatorSet* set = dynamic_cast<const CorvValidatorSet*>(i_validator.get());
  const bool isComposite = dynamic_cast<const CorvValidatorCfgComposite*>(i_validator.get()) != nullptr;
  if (!set && !isComposite)
    io_flat.push_back(i_validator);
  else if (!i_validator->isActivated())
    return;
  else if (set)
  {
    for (unsigned int rank = 0; rank < set->count(); ++rank)
      flattenValidator(set->at(rank), i_space, io_flat);
  }
  else
  {
    for (unsigned int rank = 0; rank < i_space.countSubspaces(); ++rank)
      flattenValidators(*i_space.subspace(rank), io_flat);
  }
}

void flattenValidators(const CorvConfigSpace& i_space, std::vector<CorvValidatorShPtr>& io_flat)
{
  flattenValidator(i_space.configValidators(), i_space.unwrapped(), io_flat);
}

/// A report on bounds outlives neither a refusal that no longer holds nor a new one: its validator must be called.
bool hasBoundsReport(const CorvConfig& i_cfg)
{
  if (!i_cfg.hasReports())
    return false;
  std::string name;
  for (unsigned int rank = 0; i_cfg.report(rank, name, true); ++rank)
    if (name == CorvValidatorDofBounds::DEFAULT_NAME)
      return true;
  return false;
}

/// True for the lock that a locked dof keeps: it comes and goes with the dof's own state.
bool isOwnLock(const CorvConstraint& i_constraint)
{
  const CorvDof* dof = dynamic_cast<const CorvDof*>(i_constraint.unwrappedSpace());
  return dof && dof->isLocked() && dof->lockConstraint().get() == &i_constraint;
}

/// The validator set in force in the constraint's space, if the constraint is a member.
CorvValidatorSetShPtr setThatHolds(const CorvConstraintShPtr& i_constraint)
{
  const CorvConfigSpace* space = i_constraint->unwrappedSpace();
  const CorvValidatorSetShPtr set = space ? space->constraints() : CorvValidatorSetShPtr();
  for (unsigned int rank = 0; set && rank < set->count(); ++rank)
    if (set->at(rank) == i_constraint)
      return set;
  return CorvValidatorSetShPtr();
}

std::vector<unsigned int> applyVariants(const TConstraints& i_constraints, const std::vector<unsigned int>& i_variants)
{
  std::vector<unsigned int> old;
  for (std::size_t rank = 0; rank < i_constraints.size(); ++rank)
  {
    old.push_back(i_constraints[rank]->variant());
    if (old.back() != i_variants[rank])
      i_constraints[rank]->variant(i_variants[rank]);
  }
  return old;
}
} // namespace

const ShPtr<const CorvConfigSpace::CConstraintCache>& CorvConfigSpace::constraintCache() const
{
  if (m_wrapped)
    return m_wrapped->constraintCache();
  if (m_constraintCache)
    return m_constraintCache;
  const ShPtr<CConstraintCache> cache(new CConstraintCache);
  flattenConstraints(*this, cache->flat);
  if (CorvConstraint::sortByDependency(cache->flat, std::vector<unsigned int>(), cache->sorted).failed())
  {
    ClumLogManager::addError(
      "Unable to sort constraints. Constraint dependencies don't form a directed acyclical graph.");
    cache->sorted = cache->flat;
  }
  for (const CorvConstraintShPtr& constraint : cache->sorted)
  {
    CConstraintCache::CStep step;
    step.constraint = constraint;
    const CorvConfigSpace* space = constraint->unwrappedSpace();
    if (!space || getFirstDofRankOfSubspace(*space, step.rank).failed())
      continue;
    const CorvConstraint& judged = *constraint;
    if (typeid(judged) == typeid(CorvConstraintDofLock) && constraint->countActivatedPartialVariants(0) == 1)
    {
      step.isDofLock = true;
      step.value = static_cast<const CorvConstraintDofLock&>(judged).value();
    }
    cache->steps.push_back(step);
  }
  return m_constraintCache = cache;
}

void CorvConfigSpace::updatePassiveSpaceDataInCache() const
{
  std::vector<CorvDofShPtr> dofs;
  getDofs(dofs);
  m_dofFlags.assign(dofs.size(), 0);
  for (std::size_t rank = 0; rank < dofs.size(); ++rank)
    if (dofs[rank]->isRevolute() && !dofs[rank]->isBounded())
      m_dofFlags[rank] |= CIRCULAR;

  const auto mark = [this](const TSpaces& i_spaces, EDofFlag i_flag)
  {
    for (const CorvConfigSpaceShPtr& space : i_spaces)
      for (unsigned int dofRank = 0; dofRank < space->size(); ++dofRank)
      {
        unsigned int rank = 0;
        if (getFirstDofRankOfSubspace(space->dof(dofRank), rank).succeeded())
          m_dofFlags[rank] |= i_flag;
      }
  };
  const ShPtr<const CConstraintCache> cache = constraintCache();
  for (const CorvConstraintShPtr& constraint : cache->flat)
  {
    TSpaces inputs;
    TSpaces outputs;
    constraint->getTransitivity(inputs, outputs);
    mark(outputs, COMPUTED);
    subtract(outputs, inputs);
    mark(outputs, PASSIVE);
  }
  m_allDofFlags = 0;
  for (const unsigned char flags : m_dofFlags)
    m_allDofFlags |= flags;
  m_isPassiveDataValid = true;
}

lmStatus CorvConfigSpace::getSortedFlatConstraints(std::vector<CorvConstraintShPtr>& o_constraints) const
{
  o_constraints = constraintCache()->sorted;
  return lmStatus();
}

bool CorvConfigSpace::canAddActiveConstraint(const CorvConstraintShPtr& i_constraint) const
{
  if (!i_constraint || i_constraint->unwrappedSpace() != &unwrapped())
    return false;
  TConstraints constraints = constraintCache()->sorted;
  if (dynamic_cast<const CorvConstraintComposite*>(i_constraint.get()))
    flattenConstraint(i_constraint, unwrapped(), constraints);
  else
    constraints.push_back(i_constraint);
  TConstraints sorted;
  return CorvConstraint::sortByDependency(constraints, std::vector<unsigned int>(), sorted).succeeded();
}

lmStatus CorvConfigSpace::addConstraintByAdjustingVariants(const CorvConstraintShPtr& i_constraint,
                                                           const CorvValidatorSetShPtr& i_set)
{
  if (!i_constraint)
  {
    ClumLogManager::addError("Unable to add a null constraint.");
    return -1;
  }
  TConstraints constraints = root()->constraintCache()->sorted;
  constraints.push_back(i_constraint);
  std::vector<unsigned int> variants;
  if (CorvConstraint::suggestVariants(constraints, variants).failed())
  {
    ClumLogManager::addError("No admissible variant combination could be found.");
    return -1;
  }
  return applyVariantsAndAdd(constraints, variants, i_constraint, i_set);
}

lmStatus CorvConfigSpace::applyVariantsAndAdd(const std::vector<CorvConstraintShPtr>& i_constraints,
                                              const std::vector<unsigned int>& i_variants,
                                              const CorvConstraintShPtr& i_constraint,
                                              const CorvValidatorSetShPtr& i_set)
{
  const std::vector<unsigned int> old = applyVariants(i_constraints, i_variants);
  const lmStatus status = i_set ? i_set->add(i_constraint) : lmStatus(-1);
  if (status.succeeded())
    return status;
  ClumLogManager::addError("An admissible variant combination was found but constraint addition failed.");
  applyVariants(i_constraints, old);
  return status;
}

lmStatus CorvConfigSpace::setConstraintVariantsForWriting(const CorvDofShPtr& i_dof)
{
  const CorvConstraintDofLockShPtr lock =
    i_dof ? CorvConstraintDofLock::create(i_dof, i_dof->lockedValue()) : CorvConstraintDofLockShPtr();
  if (!lock)
    return -1;
  TConstraints constraints = root()->constraintCache()->sorted;
  const CorvConstraintShPtr ownLock = i_dof->isLocked() ? i_dof->lockConstraint() : CorvConstraintDofLockShPtr();
  constraints.erase(std::remove(constraints.begin(), constraints.end(), ownLock), constraints.end());
  constraints.push_back(lock);
  std::vector<unsigned int> variants;
  if (CorvConstraint::suggestVariants(constraints, variants).failed())
  {
    ClumLogManager::addError("No admissible variant combination could be found.");
    return -1;
  }
  constraints.pop_back();
  variants.pop_back();
  applyVariants(constraints, variants);
  return lmStatus();
}

// In the order of dependencies, so that what a constraint reads is decided when its turn comes.
void CorvConfigSpace::markTransitivelyLocked(std::vector<bool>& o_isLocked,
                                             std::vector<CorvConstraintShPtr>& o_constraints) const
{
  std::vector<CorvDofShPtr> dofs;
  getDofs(dofs);
  o_isLocked.clear();
  o_constraints.clear();
  for (const CorvDofShPtr& dof : dofs)
    o_isLocked.push_back(dof->isLocked());

  const auto visitDofs = [this](const TSpaces& i_spaces, const auto& i_visit)
  {
    for (const CorvConfigSpaceShPtr& space : i_spaces)
      for (unsigned int dofRank = 0; dofRank < space->size(); ++dofRank)
      {
        unsigned int rank = 0;
        const bool isHere = getFirstDofRankOfSubspace(space->dof(dofRank), rank).succeeded();
        i_visit(isHere, rank);
      }
  };
  const ShPtr<const CConstraintCache> cache = constraintCache();
  for (const CorvConstraintShPtr& constraint : cache->sorted)
  {
    TSpaces inputs;
    TSpaces outputs;
    constraint->getTransitivity(inputs, outputs);
    bool isDecided = !outputs.empty();
    visitDofs(inputs,
              [&](bool i_isHere, unsigned int i_rank) { isDecided = isDecided && i_isHere && o_isLocked[i_rank]; });
    if (!isDecided)
      continue;
    o_constraints.push_back(constraint);
    visitDofs(outputs,
              [&](bool i_isHere, unsigned int i_rank)
              {
                if (i_isHere)
                  o_isLocked[i_rank] = true;
              });
  }
}

bool CorvConfigSpace::isSubspaceTransitivelyLocked(const CorvConfigSpaceConstShPtr& i_subspace) const
{
  unsigned int first = 0;
  if (getFirstDofRankOfSubspace(i_subspace, first).failed())
    return false;
  std::vector<bool> isLocked;
  TConstraints constraints;
  markTransitivelyLocked(isLocked, constraints);
  const auto begin = isLocked.begin() + first;
  return std::all_of(begin, begin + i_subspace->size(), [](bool i_isLocked) { return i_isLocked; });
}

void CorvConfigSpace::getTransitivelyLockedSubspaces(TSpaces& o_subspaces) const
{
  TConstraints constraints;
  getTransitivelyLockedSubspacesAndAssociatedConstraints(o_subspaces, constraints);
}

void CorvConfigSpace::getTransitivelyLockedSubspacesAndAssociatedConstraints(
  TSpaces& o_subspaces, std::vector<CorvConstraintShPtr>& o_constraints) const
{
  std::vector<bool> isLocked;
  markTransitivelyLocked(isLocked, o_constraints);
  o_subspaces.clear();
  for (unsigned int rank = 0; rank < isLocked.size(); ++rank)
    if (isLocked[rank])
      o_subspaces.push_back(dof(rank));
}

// What the space's dofs depend on: from the last constraint to the first, its outputs make place for its inputs.
void CorvConfigSpace::getControllingSpacesOfSubspaces(const TSpaces& i_subspaces, TSpaces& o_spaces) const
{
  TSpaces spaces;
  merge(spaces, i_subspaces);
  const ShPtr<const CConstraintCache> cache = constraintCache();
  for (auto constraint = cache->sorted.rbegin(); constraint != cache->sorted.rend(); ++constraint)
  {
    TSpaces inputs;
    TSpaces outputs;
    (*constraint)->getTransitivity(inputs, outputs);
    if (!intersect(spaces, outputs))
      continue;
    subtract(outputs, inputs);
    subtract(spaces, outputs);
    merge(spaces, inputs);
  }
  o_spaces.swap(spaces);
}

void CorvConfigSpace::getControllingSpaces(TSpaces& o_spaces) const
{
  getControllingSpacesOfSubspaces(TSpaces(1, self()), o_spaces);
}

lmStatus CorvConfigSpace::lockConstantDofs()
{
  TSpaces lockedDofs;
  TConstraints constraints;
  getTransitivelyLockedSubspacesAndAssociatedConstraints(lockedDofs, constraints);
  const CorvConfig values(self());
  if (!values.isValidItself() || !values.beginPtr())
    return -1;
  const auto isKept = [](const CorvConstraintShPtr& i_constraint) { return isOwnLock(*i_constraint); };
  constraints.erase(std::remove_if(constraints.begin(), constraints.end(), isKept), constraints.end());
  for (const CorvConstraintShPtr& constraint : constraints)
    if (!setThatHolds(constraint))
      return -1;

  std::vector<std::pair<CorvDofShPtr, double>> locks;
  for (const CorvConfigSpaceShPtr& space : lockedDofs)
  {
    const CorvDofShPtr lockedDof = space->dof(0);
    unsigned int rank = 0;
    if (!lockedDof->isLocked() && getFirstDofRankOfSubspace(lockedDof, rank).succeeded())
      locks.emplace_back(lockedDof, values.beginPtr()[rank]);
  }
  lmStatus status;
  for (const CorvConstraintShPtr& constraint : constraints)
    if (setThatHolds(constraint)->remove(constraint).failed())
      status = -1;
  for (const auto& [lockedDof, value] : locks)
    lockedDof->lockAt(value);
  return status;
}

bool CorvConfigSpace::applyConstraintsOn(CorvConfig& io_cfg, const ClumParameterMapConstShPtr& i_params) const
{
  if (constraintCache()->steps.empty())
    return true;
  // Applying a constraint may drop the cache.
  const ShPtr<const CConstraintCache> cache = constraintCache();
  for (const CConstraintCache::CStep& step : cache->steps)
  {
    if (step.isDofLock)
    {
      io_cfg.dofValue(step.rank, step.value);
      continue;
    }
    const CorvConfigSpaceShPtr watched = step.constraint->configSpace();
    if (!watched)
      return false;
    io_cfg.pushFrame(watched, step.rank);
    const bool isApplied = step.constraint->validate(io_cfg, i_params);
    io_cfg.popFrame();
    if (!isApplied)
      return false;
  }
  return true;
}

const ShPtr<const CorvConfigSpace::CValidatorCache>& CorvConfigSpace::validatorCache() const
{
  if (m_wrapped)
    return m_wrapped->validatorCache();
  if (m_validatorCache)
    return m_validatorCache;
  // Validators that are added on demand come first, since each addition drops the cache.
  std::vector<CorvValidatorShPtr> validators;
  flattenValidators(*this, validators);
  const ShPtr<CValidatorCache> cache(new CValidatorCache);
  for (const CorvValidatorShPtr& validator : validators)
  {
    CValidatorCache::CStep step;
    step.validator = validator;
    const CorvConfigSpace* space = validator->unwrappedSpace();
    if (space && getFirstDofRankOfSubspace(*space, step.rank).failed())
      continue;
    const CorvValidator& judge = *validator;
    if (space && typeid(judge) == typeid(CorvValidatorDofBounds) && judge.isActivated() && !judge.pool())
    {
      step.isDofBounds = true;
      step.lowerBound = static_cast<const CorvValidatorDofBounds&>(judge).minValue();
      step.upperBound = static_cast<const CorvValidatorDofBounds&>(judge).maxValue();
    }
    cache->steps.push_back(step);
  }
  return m_validatorCache = cache;
}

bool CorvConfigSpace::applyValidatorsOn(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params) const
{
  const ShPtr<const CValidatorCache> cache = validatorCache();
  if (cache->steps.empty())
    return true;
  const bool isPlain = i_cfg.isValidItself() && !hasBoundsReport(i_cfg);
  const double* values = isPlain ? i_cfg.beginPtr() : nullptr;
  const auto needsCall = [values](const CValidatorCache::CStep& i_step)
  {
    return !i_step.isDofBounds || !values ||
           !(values[i_step.rank] >= i_step.lowerBound && values[i_step.rank] <= i_step.upperBound);
  };
  const auto first = std::find_if(cache->steps.begin(), cache->steps.end(), needsCall);
  if (first == cache->steps.end())
    return true;

  // The caller's parameters, with this space as that of the outermost validation unless they name one. The scratch map
  // is taken out for the time of the call, so that a nested call makes one of its own.
  const ClumStringKey& key = CorvValidator::validationSpaceParameterKey();
  ClumParameterMapShPtr scratch;
  if (!i_params || !i_params->hasPointer(key))
  {
    scratch.swap(m_validationParams);
    if (!scratch)
      scratch = ClumParameterMap::create();
    scratch->setPointer(key, const_cast<CorvConfigSpace*>(this));
    scratch->setBase(i_params);
  }
  const ClumParameterMapConstShPtr params = scratch ? ClumParameterMapConstShPtr(scratch) : i_params;
  bool isValid = true;
  for (auto step = first; isValid && step != cache->steps.end(); ++step)
    if (needsCall(*step))
      isValid = runValidator(*step->validator, step->rank, i_cfg, params);
  if (scratch)
  {
    scratch->setBase(ClumParameterMapConstShPtr());
    m_validationParams.swap(scratch);
  }
  return isValid;
}

bool CorvConfigSpace::runValidator(const CorvValidator& i_validator, unsigned int i_rank, const CorvConfig& i_cfg,
                                   const ClumParameterMapConstShPtr& i_params) const
{
  if (i_cfg.space() && i_validator.watches(*i_cfg.space()))
    return i_validator.validate(i_cfg, i_params);
  const CorvConfigSpaceShPtr space = i_validator.configSpace();
  if (!space || space == i_cfg.space())
    return i_validator.validate(i_cfg, i_params);
  i_cfg.pushFrame(space, i_rank);
  const bool isValid = i_validator.validate(i_cfg, i_params);
  i_cfg.popFrame();
  return isValid;
}
