#include "validation/orvValidatorSet.h"

#include "constraints/orvConstraint.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumMat.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"

#include <algorithm>
#include <limits>

LUM_DESCRIBE(CorvValidatorSet)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space)", &Self::create);
}

namespace
{
const char* const VALIDATOR_SET_NAME = "orvane.core.set";

/// True if a validator is the given set, or a set with it in it at any depth.
bool isSetWithin(const CorvValidator& i_validator, const CorvValidatorSet& i_set)
{
  if (&i_validator == &i_set)
    return true;
  const CorvValidatorSet* outer = dynamic_cast<const CorvValidatorSet*>(&i_validator);
  for (unsigned int rank = 0; outer && rank < outer->count(); ++rank)
    if (isSetWithin(*outer->at(rank), i_set))
      return true;
  return false;
}
} // namespace

LUM_HANDLES(CEmptyValidatorSet)

/// The set behind `emptySet()`.
class CEmptyValidatorSet : public CorvValidatorSet
{
  LUM_UNREFLECTED(CEmptyValidatorSet, CorvValidatorSet);

public:
  static CEmptyValidatorSetShPtr create() { return lumCreate<CEmptyValidatorSet>(); }
  bool doesRequireSpace() const override { return false; }

protected:
  CEmptyValidatorSet() : CorvValidatorSet(CorvConfigSpaceShPtr()) {}
  lmStatus init(const CEmptyValidatorSetWkPtr& i_weakPtr) { return CorvValidatorSet::init(i_weakPtr); }
  bool canTakeMembers() const override { return false; }
};

CorvValidatorSet::CorvValidatorSet() : m_sequence(new TValidators)
{
}

CorvValidatorSet::CorvValidatorSet(const CorvConfigSpaceShPtr& i_space)
  : CorvValidator(i_space, VALIDATOR_SET_NAME), m_sequence(new TValidators)
{
}

CorvValidatorSet::CorvValidatorSet(const CorvValidatorSet& i_other) = default;

CorvValidatorSet::~CorvValidatorSet() = default;

lmStatus CorvValidatorSet::init(const CorvValidatorSetWkPtr& i_weakPtr)
{
  return CorvValidator::init(i_weakPtr);
}

CorvValidatorSetShPtr CorvValidatorSet::create(const CorvConfigSpaceShPtr& i_space)
{
  return lumCreate<CorvValidatorSet>(i_space);
}

CorvValidatorSetShPtr CorvValidatorSet::createCopy(const CorvValidatorSetConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorSet::clone() const
{
  return createCopy(self());
}

const CorvValidatorSetShPtr& CorvValidatorSet::emptySet()
{
  static const CorvValidatorSetShPtr s_emptySet = CEmptyValidatorSet::create();
  return s_emptySet;
}

bool CorvValidatorSet::canTakeMembers() const
{
  return true;
}

lmStatus CorvValidatorSet::checkAddition(const CorvValidatorShPtr& i_validator) const
{
  if (!canTakeMembers())
    return -1;
  if (!i_validator)
  {
    ClumLogManager::addError("CorvValidatorSet::add(): cannot add a null validator to the set.");
    return -1;
  }
  if (isSetWithin(*i_validator, *this))
  {
    ClumLogManager::addError("CorvValidatorSet::add(): a set cannot be a member of itself.");
    return -1;
  }
  if (validatorNamed(i_validator->name(), true))
  {
    ClumLogManager::addError("CorvValidatorSet::add(): a validator named '" + i_validator->name() +
                             "' is already in the set.");
    return -1;
  }
  const CorvConfigSpace* space = unwrappedSpace();
  if (space != i_validator->unwrappedSpace())
  {
    ClumLogManager::addError("CorvValidatorSet::add(): spaces don't match.");
    return -1;
  }
  const CorvConstraintShPtr constraint = boost::dynamic_pointer_cast<CorvConstraint>(i_validator);
  if (constraint && constraint->isActivated() && space && !space->canAddActiveConstraint(constraint))
  {
    ClumLogManager::addError("CorvValidatorSet::add(): cannot add constraint because of a transitivity issue.");
    return -1;
  }
  return lmStatus();
}

void CorvValidatorSet::refreshSequence()
{
  m_sequence.reset(new TValidators(m_validators));
}

void CorvValidatorSet::insert(const CorvValidatorShPtr& i_validator, unsigned int i_rank)
{
  m_validators.insert(m_validators.begin() + i_rank, i_validator);
  refreshSequence();
  isActivated(true);
  i_validator->didAddToConfigSpace();
}

lmStatus CorvValidatorSet::rankOf(const CorvValidatorConstShPtr& i_validator, unsigned int& o_rank) const
{
  const auto found = std::find(m_validators.begin(), m_validators.end(), i_validator);
  if (found == m_validators.end())
    return -1;
  o_rank = static_cast<unsigned int>(found - m_validators.begin());
  return lmStatus();
}

lmStatus CorvValidatorSet::add(const CorvValidatorShPtr& i_validator)
{
  const lmStatus status = checkAddition(i_validator);
  if (status.succeeded())
    insert(i_validator, count());
  return status;
}

lmStatus CorvValidatorSet::addBefore(const CorvValidatorShPtr& i_validator, const CorvValidatorConstShPtr& i_next)
{
  unsigned int rank = 0;
  lmStatus status = checkAddition(i_validator);
  if (status.succeeded())
    status = rankOf(i_next, rank);
  if (status.succeeded())
    insert(i_validator, rank);
  return status;
}

lmStatus CorvValidatorSet::addAfter(const CorvValidatorShPtr& i_validator, const CorvValidatorConstShPtr& i_previous)
{
  unsigned int rank = 0;
  lmStatus status = checkAddition(i_validator);
  if (status.succeeded())
    status = rankOf(i_previous, rank);
  if (status.succeeded())
    insert(i_validator, rank + 1);
  return status;
}

lmStatus CorvValidatorSet::remove(const CorvValidatorShPtr& i_validator)
{
  unsigned int rank = 0;
  const lmStatus status = rankOf(i_validator, rank);
  if (status.failed())
    return status;
  const CorvValidatorShPtr removed = m_validators[rank];
  removed->willRemoveFromConfigSpace();
  m_validators.erase(std::remove(m_validators.begin(), m_validators.end(), removed), m_validators.end());
  refreshSequence();
  didChange();
  return status;
}

void CorvValidatorSet::clear()
{
  const TSequence members = m_sequence;
  for (const CorvValidatorShPtr& validator : *members)
    validator->willRemoveFromConfigSpace();
  m_validators.clear();
  refreshSequence();
  didChange();
}

CorvValidatorShPtr CorvValidatorSet::at(unsigned int i_rank) const
{
  return i_rank < m_validators.size() ? m_validators[i_rank] : CorvValidatorShPtr();
}

void CorvValidatorSet::getEmbeddedValidators(std::vector<CorvValidatorShPtr>& o_validators) const
{
  for (const CorvValidatorShPtr& validator : m_validators)
    validator->getEmbeddedValidators(o_validators);
}

void CorvValidatorSet::pushAttributes()
{
  for (const CorvValidatorShPtr& validator : m_validators)
    validator->pushAttributes();
}

void CorvValidatorSet::popAttributes()
{
  for (const CorvValidatorShPtr& validator : m_validators)
    validator->popAttributes();
}

CorvValidatorShPtr CorvValidatorSet::validatorNamed(const std::string& i_name, bool i_deep) const
{
  for (const CorvValidatorShPtr& validator : m_validators)
  {
    if (!i_deep && validator->name() == i_name)
      return validator;
    if (i_deep)
      if (CorvValidatorShPtr found = validator->validatorNamed(i_name, true))
        return found;
  }
  return CorvValidatorShPtr();
}

unsigned int CorvValidatorSet::deepCount() const
{
  unsigned int total = 0;
  for (const CorvValidatorShPtr& validator : m_validators)
    total += validator->deepCount();
  return total;
}

CorvValidatorShPtr CorvValidatorSet::deepAt(unsigned int i_rank) const
{
  unsigned int rest = i_rank;
  for (const CorvValidatorShPtr& validator : m_validators)
  {
    const unsigned int leaves = validator->deepCount();
    if (rest < leaves)
      return validator->deepAt(rest);
    rest -= leaves;
  }
  return CorvValidatorShPtr();
}

bool CorvValidatorSet::doesUseReports() const
{
  return false;
}

bool CorvValidatorSet::doValidate(const CorvValidable& i_validable, const ClumParameterMapConstShPtr& i_params) const
{
  const TSequence members = m_sequence;
  for (const CorvValidatorShPtr& validator : *members)
    if (!validator->validate(i_validable, i_params))
      return false;
  return true;
}

bool CorvValidatorSet::doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                                        const CorvValidationReportConstShPtr&, CorvValidationReportShPtr&) const
{
  const CorvConfigSpaceShPtr space = i_cfg.configSpace();
  if (space && space->configValidators().get() == this)
    return i_cfg.isValidItself() && space->applyValidatorsOn(i_cfg, i_params);
  return doValidate(i_cfg, i_params);
}

bool CorvValidatorSet::doValidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr& i_params,
                                            const CorvValidationReportConstShPtr&, CorvValidationReportShPtr&) const
{
  return doValidate(i_dp, i_params);
}

bool CorvValidatorSet::doValidatePath(const CorvPath& i_path, const ClumParameterMapConstShPtr& i_params,
                                      const CorvValidationReportConstShPtr&, CorvValidationReportShPtr&) const
{
  return doValidate(i_path, i_params);
}

lmStatus CorvValidatorSet::validMotion(const CorvDirectPath& i_dp, double i_param, const CorvConfig& i_cfg,
                                       CorvAbstractPath::EDirection i_direction,
                                       const ClumParameterMapConstShPtr& i_params, double& o_bound, bool& o_exact) const
{
  double bound = std::numeric_limits<double>::infinity();
  bool isExact = true;
  const TSequence members = m_sequence;
  for (const CorvValidatorShPtr& validator : *members)
  {
    double memberBound = 0.0;
    bool isMemberExact = true;
    const lmStatus status =
      validator->validMotion(i_dp, i_param, i_cfg, i_direction, i_params, memberBound, isMemberExact);
    isExact = isExact && isMemberExact;
    if (status.failed())
    {
      o_exact = isExact;
      return status;
    }
    bound = std::min(bound, memberBound);
  }
  o_exact = isExact;
  o_bound = bound;
  return lmStatus();
}

void CorvValidatorSet::getTransitivity(std::vector<CorvConfigSpaceShPtr>& o_input,
                                       std::vector<CorvConfigSpaceShPtr>& o_output) const
{
  o_input.clear();
  o_output.clear();
  std::vector<CorvConfigSpaceShPtr> produced;
  for (const CorvValidatorShPtr& validator : m_validators)
  {
    if (!validator->isActivated())
      continue;
    std::vector<CorvConfigSpaceShPtr> input;
    std::vector<CorvConfigSpaceShPtr> output;
    validator->getTransitivity(input, output);
    CorvConfigSpace::merge(o_output, output);
    CorvConfigSpace::merge(o_input, input);
    CorvConfigSpace::subtract(output, input);
    CorvConfigSpace::merge(produced, output);
  }
  CorvConfigSpace::subtract(o_input, produced);
}

bool CorvValidatorSet::isImplicit() const
{
  return std::any_of(m_validators.begin(), m_validators.end(),
                     [](const CorvValidatorShPtr& i_validator)
                     { return i_validator->isActivated() && i_validator->isImplicit(); });
}

lmStatus CorvValidatorSet::getLipschitzMatrix(ClumMat&, const CorvDomainConstShPtr&) const
{
  ClumLogManager::addError("CorvValidatorSet::getLipschitzMatrix: not implemented");
  return -1;
}

void CorvValidatorSet::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvValidator::encodeWithCoder(i_coder);
  i_coder->encodeObjects(m_validators, "validators");
}

lmStatus CorvValidatorSet::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvValidator::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  i_coder->decodeObjects("validators", m_validators);
  const auto firstNull = std::remove(m_validators.begin(), m_validators.end(), CorvValidatorShPtr());
  if (firstNull != m_validators.end())
    ClumLogManager::addWarning("CorvValidatorSet: a member could not be decoded and is left out.");
  m_validators.erase(firstNull, m_validators.end());
  refreshSequence();
  return lmStatus();
}
