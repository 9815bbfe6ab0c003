#pragma once

#include "validation/orvValidator.h"

/// A validator that computes: it sets some dofs of a configuration, its outputs, from others, its inputs.
///
/// A configuration validates itself by running the constraints of its space in the order of their dependencies. A
/// constraint may have several discrete solutions, its variants, of which one is active, and each variant several
/// partial ones that a client switches on and off. To apply a constraint exactly one partial variant of the active
/// variant must be on. A configuration that some other variant reaches only by a partial variant that is off is
/// refused: so a client forbids a branch of solutions.
///
/// `doApply` keeps no state, but it writes into the configuration, which belongs to one thread at a time.
class LUM_API CorvConstraint : public CorvValidator
{
  LUM_ABSTRACT(CorvConstraint, CorvValidator);

public:
  /// One list of bits for each variant: which of its partial variants may be used.
  using TPartialVariantState = std::vector<std::vector<bool>>;

  ~CorvConstraint() override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  bool doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                        const CorvValidationReportConstShPtr& i_report,
                        CorvValidationReportShPtr& o_report) const override;
  /// Always true: a constraint is there to be applied, not to be answered for.
  bool shouldRevalidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                              const CorvValidationReportConstShPtr& i_report) const override;
  /// Inputs and outputs of the active variant.
  void getTransitivity(std::vector<CorvConfigSpaceShPtr>& o_input,
                       std::vector<CorvConfigSpaceShPtr>& o_output) const override;
  bool isImplicit() const override;
  /// Without inputs, a matrix of no rows with a column for each output; otherwise a subclass must know.
  lmStatus getLipschitzMatrix(ClumMat& o_matrix, const CorvDomainConstShPtr& i_domain) const override;

  /// The computation. A failure makes the configuration invalid and leaves it as far as it was written.
  virtual lmStatus doApply(unsigned int i_variant, unsigned int i_partialVariant, CorvConfig& io_config,
                           const ClumParameterMapConstShPtr& i_params) const;
  /// By the active variant and its one partial variant that is on.
  virtual lmStatus doApply(CorvConfig& io_config, const ClumParameterMapConstShPtr& i_params) const;
  virtual void getTransitivity(unsigned int i_variant, std::vector<CorvConfigSpaceShPtr>& o_inputSpaces,
                               std::vector<CorvConfigSpaceShPtr>& o_outputSpaces) const;
  virtual unsigned int countVariants() const;
  virtual unsigned int countPartialVariants(unsigned int i_variant) const;

  unsigned int variant() const { return m_variant; }
  void variant(unsigned int i_variant);
  /// A locked variant is left alone when variants are adjusted.
  bool isVariantLocked() const { return m_isVariantLocked; }
  void isVariantLocked(bool i_isLocked) { m_isVariantLocked = i_isLocked; }

  bool isPartialVariantActivated(unsigned int i_variant, unsigned int i_partialVariant) const;
  void isPartialVariantActivated(unsigned int i_variant, unsigned int i_partialVariant, bool i_isActivated);
  unsigned int countActivatedPartialVariants(unsigned int i_variant) const;
  /// @return -1 unless exactly one is on.
  lmStatus getActivatedPartialVariant(unsigned int i_variant, unsigned int& o_partialVariant) const;
  /// Switches this one on and the others of the variant off. @return -1 if it does not exist.
  lmStatus setActivatedPartialVariant(unsigned int i_variant, unsigned int i_partialVariant);
  const TPartialVariantState& getPartialVariantState() const;
  void setPartialVariantState(const TPartialVariantState& i_state);
  /// Switches off what is off in the argument.
  void intersectPartialVariantState(const TPartialVariantState& i_state);
  /// True if every variant has a partial variant that is on.
  bool arePartialVariantsWellDefined() const;

  /// Orders constraints so that each comes after those whose outputs it depends on.
  /// @param i_variants the variant of each for this question; empty for those that are active.
  /// @return -1 if the dependencies have a cycle.
  static lmStatus sortByDependency(const std::vector<CorvConstraintShPtr>& i_constraints,
                                   const std::vector<unsigned int>& i_variants,
                                   std::vector<CorvConstraintShPtr>& o_sorted);
  /// Looks for variants with which the constraints can be ordered: the present ones first, locked ones fixed.
  /// @return -1 if there are none.
  static lmStatus suggestVariants(const std::vector<CorvConstraintShPtr>& i_constraints,
                                  std::vector<unsigned int>& o_variants);

protected:
  CorvConstraint();
  CorvConstraint(const CorvConfigSpaceShPtr& i_space, const std::string& i_name);
  CorvConstraint(const CorvConstraint&) = default;
  lmStatus init(const CorvConstraintWkPtr& i_weakPtr);

private:
  void updatePartialVariantActivation() const;
  bool isReachedByVariant(unsigned int i_variant, const CorvConfig& i_cfg,
                          const ClumParameterMapConstShPtr& i_params) const;

  unsigned int m_variant = 0;
  bool m_isVariantLocked = false;
  mutable TPartialVariantState m_partialVariantActivation;
};
