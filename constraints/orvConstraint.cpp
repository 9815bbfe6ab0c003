#include "constraints/orvConstraint.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumMat.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "validation/orvValidationReport.h"

#include <algorithm>

LUM_DESCRIBE(CorvConstraint)
{
}

namespace
{
/// What a constraint reads and writes by one of its variants, made ready for the tests of dependency.
struct ConstraintFlow
{
  CorvConfigSpace::TSpaces inputs;
  CorvConfigSpace::TSpaces outputs;
  CorvConfigSpace::TSpaces onlyRead;    ///< inputs - outputs
  CorvConfigSpace::TSpaces onlyWritten; ///< outputs - inputs
  bool isImplicit = false;
};

ConstraintFlow flowOf(const CorvConstraint& i_constraint, unsigned int i_variant)
{
  ConstraintFlow flow;
  i_constraint.getTransitivity(i_variant, flow.inputs, flow.outputs);
  flow.onlyRead = flow.inputs;
  CorvConfigSpace::subtract(flow.onlyRead, flow.outputs);
  flow.onlyWritten = flow.outputs;
  CorvConfigSpace::subtract(flow.onlyWritten, flow.inputs);
  flow.isImplicit = i_constraint.isImplicit();
  return flow;
}

/// Depth-first walk over the constraints with three colours: not seen, on the way, done.
class ConstraintSort
{
public:
  explicit ConstraintSort(const std::vector<const ConstraintFlow*>& i_flows)
    : m_flows(i_flows), m_colours(i_flows.size(), WHITE)
  {
  }

  /// @param o_order ranks, writers before their readers. @return false if there is a cycle.
  bool run(std::vector<std::size_t>& o_order)
  {
    for (std::size_t rank = 0; rank < m_flows.size(); ++rank)
      if (m_colours[rank] == WHITE && !visit(rank))
        return false;
    o_order.assign(m_finished.rbegin(), m_finished.rend());
    return true;
  }

private:
  enum EColour
  {
    WHITE,
    GREY,
    BLACK
  };

  bool mustPrecede(std::size_t i_first, std::size_t i_second) const
  {
    const ConstraintFlow& first = *m_flows[i_first];
    const ConstraintFlow& second = *m_flows[i_second];
    if (i_first == i_second)
      return !first.isImplicit && CorvConfigSpace::intersect(first.inputs, first.outputs);
    return CorvConfigSpace::intersect(first.onlyWritten, second.onlyWritten) ||
           CorvConfigSpace::intersect(first.onlyWritten, second.onlyRead);
  }

  bool visit(std::size_t i_rank)
  {
    if (m_colours[i_rank] == BLACK)
      return true;
    m_colours[i_rank] = GREY;
    for (std::size_t other = 0; other < m_flows.size(); ++other)
      if (mustPrecede(i_rank, other) && (m_colours[other] == GREY || !visit(other)))
        return false;
    m_colours[i_rank] = BLACK;
    m_finished.push_back(i_rank);
    return true;
  }

  const std::vector<const ConstraintFlow*>& m_flows;
  std::vector<EColour> m_colours;
  std::vector<std::size_t> m_finished;
};

/// Tries the combinations of variants: of each constraint the present one first, of a locked one no other.
class VariantSearch
{
public:
  explicit VariantSearch(const std::vector<CorvConstraintShPtr>& i_constraints)
  {
    for (const CorvConstraintShPtr& constraint : i_constraints)
    {
      std::vector<CChoice> choices(1, choice(*constraint, constraint->variant()));
      for (unsigned int variant = 0; !constraint->isVariantLocked() && variant < constraint->countVariants(); ++variant)
        if (variant != constraint->variant())
          choices.push_back(choice(*constraint, variant));
      m_choices.push_back(choices);
    }
  }

  bool run(std::vector<unsigned int>& o_variants)
  {
    std::vector<const ConstraintFlow*> flows;
    std::vector<unsigned int> variants;
    if (!extend(flows, variants))
      return false;
    o_variants = variants;
    return true;
  }

private:
  struct CChoice
  {
    unsigned int variant;
    ConstraintFlow flow;
  };

  static CChoice choice(const CorvConstraint& i_constraint, unsigned int i_variant)
  {
    return CChoice{i_variant, flowOf(i_constraint, i_variant)};
  }

  bool extend(std::vector<const ConstraintFlow*>& io_flows, std::vector<unsigned int>& io_variants) const
  {
    std::vector<std::size_t> order;
    if (io_flows.size() == m_choices.size())
      return ConstraintSort(io_flows).run(order);
    for (const CChoice& next : m_choices[io_flows.size()])
    {
      io_flows.push_back(&next.flow);
      io_variants.push_back(next.variant);
      if (extend(io_flows, io_variants))
        return true;
      io_flows.pop_back();
      io_variants.pop_back();
    }
    return false;
  }

  std::vector<std::vector<CChoice>> m_choices;
};
} // namespace

CorvConstraint::CorvConstraint() = default;

CorvConstraint::CorvConstraint(const CorvConfigSpaceShPtr& i_space, const std::string& i_name)
  : CorvValidator(i_space, i_name)
{
}

CorvConstraint::~CorvConstraint() = default;

lmStatus CorvConstraint::init(const CorvConstraintWkPtr& i_weakPtr)
{
  return CorvValidator::init(i_weakPtr);
}

void CorvConstraint::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvValidator::encodeWithCoder(i_coder);
  updatePartialVariantActivation();
  i_coder->encodeUnsignedInt(m_variant, "variant");
  i_coder->encodeBool(m_isVariantLocked, "isVariantLocked");
  i_coder->beginVectorEncoding("partialVariantActivation");
  for (const std::vector<bool>& bits : m_partialVariantActivation)
    i_coder->encodeBoolVector(bits, "bits");
  i_coder->endVectorEncoding();
}

lmStatus CorvConstraint::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvValidator::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_variant = i_coder->decodeUnsignedInt("variant");
  m_isVariantLocked = i_coder->decodeBool("isVariantLocked");
  m_partialVariantActivation.clear();
  i_coder->beginVectorDecoding("partialVariantActivation");
  while (i_coder->canContinueVectorDecoding())
  {
    std::vector<bool> bits;
    i_coder->decodeBoolVector("bits", bits);
    m_partialVariantActivation.push_back(bits);
  }
  i_coder->endVectorDecoding();
  return lmStatus();
}

// Validation of a configuration is what computes its dofs, so a const configuration is written here.
bool CorvConstraint::doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                                      const CorvValidationReportConstShPtr&, CorvValidationReportShPtr& o_report) const
{
  if (doesUseReports())
    o_report = CorvValidationReport::create();
  if (countActivatedPartialVariants(m_variant) != 1)
  {
    ClumLogManager::addInfo("Cannot apply a constraint with more than one active partial variant.");
    return false;
  }
  if (doApply(const_cast<CorvConfig&>(i_cfg), i_params).failed())
    return false;
  const unsigned int count = countVariants();
  for (unsigned int other = 0; other < count; ++other)
    if (other != m_variant && !isReachedByVariant(other, i_cfg, i_params))
      return false;
  return true;
}

// True if the configuration could come from a partial variant of the variant that is on. One that cannot be applied
// says nothing against it.
bool CorvConstraint::isReachedByVariant(unsigned int i_variant, const CorvConfig& i_cfg,
                                        const ClumParameterMapConstShPtr& i_params) const
{
  const unsigned int activated = countActivatedPartialVariants(i_variant);
  const unsigned int count = countPartialVariants(i_variant);
  if (activated == 0 || activated == count)
    return activated != 0;
  for (unsigned int partial = 0; partial < count; ++partial)
  {
    if (!isPartialVariantActivated(i_variant, partial))
      continue;
    CorvConfig copy(i_cfg);
    copy.isSelfValidationEnabled(false);
    if (doApply(i_variant, partial, copy, i_params).failed() || copy.isEquivalent(i_cfg))
      return true;
  }
  return false;
}

bool CorvConstraint::shouldRevalidateConfig(const CorvConfig&, const ClumParameterMapConstShPtr&,
                                            const CorvValidationReportConstShPtr&) const
{
  return true;
}

void CorvConstraint::getTransitivity(std::vector<CorvConfigSpaceShPtr>& o_input,
                                     std::vector<CorvConfigSpaceShPtr>& o_output) const
{
  getTransitivity(m_variant, o_input, o_output);
}

bool CorvConstraint::isImplicit() const
{
  return false;
}

lmStatus CorvConstraint::getLipschitzMatrix(ClumMat& o_matrix, const CorvDomainConstShPtr&) const
{
  std::vector<CorvConfigSpaceShPtr> inputs;
  std::vector<CorvConfigSpaceShPtr> outputs;
  getTransitivity(inputs, outputs);
  if (!inputs.empty())
    return -1;
  o_matrix = ClumMat(0, static_cast<unsigned int>(outputs.size()));
  return lmStatus();
}

lmStatus CorvConstraint::doApply(unsigned int, unsigned int, CorvConfig& io_config,
                                 const ClumParameterMapConstShPtr& i_params) const
{
  return doApply(io_config, i_params);
}

lmStatus CorvConstraint::doApply(CorvConfig& io_config, const ClumParameterMapConstShPtr& i_params) const
{
  unsigned int partial = 0;
  const lmStatus status = getActivatedPartialVariant(m_variant, partial);
  return status.failed() ? status : doApply(m_variant, partial, io_config, i_params);
}

void CorvConstraint::getTransitivity(unsigned int, std::vector<CorvConfigSpaceShPtr>& o_inputSpaces,
                                     std::vector<CorvConfigSpaceShPtr>& o_outputSpaces) const
{
  getTransitivity(o_inputSpaces, o_outputSpaces);
}

unsigned int CorvConstraint::countVariants() const
{
  return 1;
}

unsigned int CorvConstraint::countPartialVariants(unsigned int) const
{
  return 1;
}

void CorvConstraint::variant(unsigned int i_variant)
{
  m_variant = i_variant;
  didChange();
}

void CorvConstraint::updatePartialVariantActivation() const
{
  m_partialVariantActivation.resize(countVariants());
  for (unsigned int rank = 0; rank < m_partialVariantActivation.size(); ++rank)
    m_partialVariantActivation[rank].resize(countPartialVariants(rank), true);
}

bool CorvConstraint::isPartialVariantActivated(unsigned int i_variant, unsigned int i_partialVariant) const
{
  updatePartialVariantActivation();
  return i_variant < m_partialVariantActivation.size() &&
         i_partialVariant < m_partialVariantActivation[i_variant].size() &&
         m_partialVariantActivation[i_variant][i_partialVariant];
}

void CorvConstraint::isPartialVariantActivated(unsigned int i_variant, unsigned int i_partialVariant,
                                               bool i_isActivated)
{
  updatePartialVariantActivation();
  if (i_variant >= m_partialVariantActivation.size() ||
      i_partialVariant >= m_partialVariantActivation[i_variant].size())
  {
    ClumLogManager::addError(__FILE__, __LINE__, "A constraint has no such partial variant.");
    return;
  }
  m_partialVariantActivation[i_variant][i_partialVariant] = i_isActivated;
  didChange();
}

unsigned int CorvConstraint::countActivatedPartialVariants(unsigned int i_variant) const
{
  updatePartialVariantActivation();
  if (i_variant >= m_partialVariantActivation.size())
    return 0;
  const std::vector<bool>& bits = m_partialVariantActivation[i_variant];
  return static_cast<unsigned int>(std::count(bits.begin(), bits.end(), true));
}

lmStatus CorvConstraint::getActivatedPartialVariant(unsigned int i_variant, unsigned int& o_partialVariant) const
{
  if (countActivatedPartialVariants(i_variant) != 1)
    return -1;
  const std::vector<bool>& bits = m_partialVariantActivation[i_variant];
  o_partialVariant = static_cast<unsigned int>(std::find(bits.begin(), bits.end(), true) - bits.begin());
  return lmStatus();
}

lmStatus CorvConstraint::setActivatedPartialVariant(unsigned int i_variant, unsigned int i_partialVariant)
{
  updatePartialVariantActivation();
  if (i_variant >= m_partialVariantActivation.size() ||
      i_partialVariant >= m_partialVariantActivation[i_variant].size())
    return -1;
  std::vector<bool>& bits = m_partialVariantActivation[i_variant];
  bits.assign(bits.size(), false);
  bits[i_partialVariant] = true;
  didChange();
  return lmStatus();
}

const CorvConstraint::TPartialVariantState& CorvConstraint::getPartialVariantState() const
{
  updatePartialVariantActivation();
  return m_partialVariantActivation;
}

void CorvConstraint::setPartialVariantState(const TPartialVariantState& i_state)
{
  m_partialVariantActivation = i_state;
  updatePartialVariantActivation();
  didChange();
}

void CorvConstraint::intersectPartialVariantState(const TPartialVariantState& i_state)
{
  updatePartialVariantActivation();
  for (std::size_t rank = 0; rank < std::min(i_state.size(), m_partialVariantActivation.size()); ++rank)
  {
    std::vector<bool>& bits = m_partialVariantActivation[rank];
    for (std::size_t bit = 0; bit < std::min(bits.size(), i_state[rank].size()); ++bit)
      bits[bit] = bits[bit] && i_state[rank][bit];
  }
  didChange();
}

bool CorvConstraint::arePartialVariantsWellDefined() const
{
  updatePartialVariantActivation();
  return std::all_of(m_partialVariantActivation.begin(), m_partialVariantActivation.end(),
                     [](const std::vector<bool>& i_bits)
                     { return std::find(i_bits.begin(), i_bits.end(), true) != i_bits.end(); });
}

lmStatus CorvConstraint::sortByDependency(const std::vector<CorvConstraintShPtr>& i_constraints,
                                          const std::vector<unsigned int>& i_variants,
                                          std::vector<CorvConstraintShPtr>& o_sorted)
{
  if (!i_variants.empty() && i_variants.size() != i_constraints.size())
    return -1;
  std::vector<ConstraintFlow> flows;
  for (std::size_t rank = 0; rank < i_constraints.size(); ++rank)
    flows.push_back(
      flowOf(*i_constraints[rank], i_variants.empty() ? i_constraints[rank]->variant() : i_variants[rank]));
  std::vector<const ConstraintFlow*> pointers;
  for (const ConstraintFlow& flow : flows)
    pointers.push_back(&flow);
  std::vector<std::size_t> order;
  if (!ConstraintSort(pointers).run(order))
    return -1;
  std::vector<CorvConstraintShPtr> sorted;
  for (const std::size_t rank : order)
    sorted.push_back(i_constraints[rank]);
  o_sorted.swap(sorted);
  return lmStatus();
}

lmStatus CorvConstraint::suggestVariants(const std::vector<CorvConstraintShPtr>& i_constraints,
                                         std::vector<unsigned int>& o_variants)
{
  return VariantSearch(i_constraints).run(o_variants) ? lmStatus() : lmStatus(-1);
}
