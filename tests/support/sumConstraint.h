#pragma once

#include "constraints/orvConstraint.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDof.h"

LUM_HANDLES(SumConstraint)

/// A constraint for tests: each output dof of the active variant becomes the sum of its inputs, plus 10 for each step
/// of the partial variant.
class SumConstraint : public CorvConstraint
{
  LUM_UNREFLECTED(SumConstraint, CorvConstraint);

public:
  struct Variant
  {
    std::vector<CorvConfigSpaceShPtr> inputs;
    std::vector<CorvConfigSpaceShPtr> outputs;
    unsigned int partialVariants = 1;
  };

  static SumConstraintShPtr create(const CorvConfigSpaceShPtr& i_space, const std::string& i_name,
                                   const std::vector<Variant>& i_variants, bool i_isImplicit = false)
  {
    return lumCreate<SumConstraint>(i_space, i_name, i_variants, i_isImplicit);
  }
  CorvValidatorShPtr clone() const override { return lumCreateCopy<SumConstraint>(self()); }

  using CorvConstraint::doApply;
  using CorvConstraint::getTransitivity;
  lmStatus doApply(unsigned int i_variant, unsigned int i_partialVariant, CorvConfig& io_config,
                   const ClumParameterMapConstShPtr&) const override
  {
    ++applications;
    if (fails)
      return -1;
    double sum = 10.0 * i_partialVariant;
    for (const CorvConfigSpaceShPtr& input : m_variants[i_variant].inputs)
      sum += io_config.dofValue(rankOf(input));
    for (const CorvConfigSpaceShPtr& output : m_variants[i_variant].outputs)
      io_config.dofValue(rankOf(output), sum);
    return lmStatus();
  }
  void getTransitivity(unsigned int i_variant, std::vector<CorvConfigSpaceShPtr>& o_inputs,
                       std::vector<CorvConfigSpaceShPtr>& o_outputs) const override
  {
    o_inputs = m_variants[i_variant].inputs;
    o_outputs = m_variants[i_variant].outputs;
  }
  unsigned int countVariants() const override { return static_cast<unsigned int>(m_variants.size()); }
  unsigned int countPartialVariants(unsigned int i_variant) const override
  {
    return m_variants[i_variant].partialVariants;
  }
  bool isImplicit() const override { return m_isImplicit; }

  bool fails = false;
  mutable int applications = 0;

protected:
  SumConstraint(const CorvConfigSpaceShPtr& i_space, const std::string& i_name, const std::vector<Variant>& i_variants,
                bool i_isImplicit)
    : CorvConstraint(i_space, i_name), m_variants(i_variants), m_isImplicit(i_isImplicit)
  {
  }
  SumConstraint(const SumConstraint&) = default;
  lmStatus init(const SumConstraintWkPtr& i_weakPtr) { return CorvConstraint::init(i_weakPtr); }

private:
  unsigned int rankOf(const CorvConfigSpaceShPtr& i_dof) const
  {
    unsigned int rank = ~0u;
    configSpace()->getFirstDofRankOfSubspace(i_dof, rank);
    return rank;
  }

  std::vector<Variant> m_variants;
  bool m_isImplicit;
};
