#pragma once

#include "validation/orvValidator.h"

/// An ordered set of validators with different names, itself a validator: valid if every member says so.
///
/// Members are asked in the order in which they were added, up to the first refusal, so the cheap ones go first and
/// collision goes last. The set writes no report; its members do. A validation under way sees the members as they were
/// when it began.
class LUM_API CorvValidatorSet : public CorvValidator
{
  LUM_CONCRETE(CorvValidatorSet, CorvValidator);

public:
  using TValidators = std::vector<CorvValidatorShPtr>;

  ~CorvValidatorSet() override;
  static CorvValidatorSetShPtr create(const CorvConfigSpaceShPtr& i_space);
  /// The copy shares the members.
  static CorvValidatorSetShPtr createCopy(const CorvValidatorSetConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;
  /// The one shared set without members and without a space, that refuses every addition.
  static const CorvValidatorSetShPtr& emptySet();

  /// Adds a member and activates the set. Fails, with a log entry and no change, for null, for a name that is already
  /// in the set at any depth, for a validator of another space, and for a constraint that the space cannot take.
  lmStatus add(const CorvValidatorShPtr& i_validator);
  /// The same next to a member. @return -1 also if the neighbour is not in the set.
  lmStatus addBefore(const CorvValidatorShPtr& i_validator, const CorvValidatorConstShPtr& i_next);
  lmStatus addAfter(const CorvValidatorShPtr& i_validator, const CorvValidatorConstShPtr& i_previous);
  /// @return -1 if the validator is not a direct member.
  lmStatus remove(const CorvValidatorShPtr& i_validator);
  void clear();
  unsigned int count() const { return static_cast<unsigned int>(m_validators.size()); }
  /// @return null past the end.
  CorvValidatorShPtr at(unsigned int i_rank) const;

  void getEmbeddedValidators(std::vector<CorvValidatorShPtr>& o_validators) const override;
  void pushAttributes() override;
  void popAttributes() override;
  CorvValidatorShPtr validatorNamed(const std::string& i_name, bool i_deep) const override;
  unsigned int deepCount() const override;
  CorvValidatorShPtr deepAt(unsigned int i_rank) const override;
  bool doesUseReports() const override;
  bool doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                        const CorvValidationReportConstShPtr& i_report,
                        CorvValidationReportShPtr& o_report) const override;
  bool doValidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr& i_params,
                            const CorvValidationReportConstShPtr& i_report,
                            CorvValidationReportShPtr& o_report) const override;
  bool doValidatePath(const CorvPath& i_path, const ClumParameterMapConstShPtr& i_params,
                      const CorvValidationReportConstShPtr& i_report,
                      CorvValidationReportShPtr& o_report) const override;
  using CorvValidator::validMotion;
  /// The smallest bound of the members, +infinity without one.
  lmStatus validMotion(const CorvDirectPath& i_dp, double i_param, const CorvConfig& i_cfg,
                       CorvAbstractPath::EDirection i_direction, const ClumParameterMapConstShPtr& i_params,
                       double& o_bound, bool& o_exact) const override;
  void getTransitivity(std::vector<CorvConfigSpaceShPtr>& o_input,
                       std::vector<CorvConfigSpaceShPtr>& o_output) const override;
  bool isImplicit() const override;
  lmStatus getLipschitzMatrix(ClumMat& o_matrix, const CorvDomainConstShPtr& i_domain) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvValidatorSet();
  explicit CorvValidatorSet(const CorvConfigSpaceShPtr& i_space);
  CorvValidatorSet(const CorvValidatorSet& i_other);
  lmStatus init(const CorvValidatorSetWkPtr& i_weakPtr);

  /// False in the shared empty set.
  virtual bool canTakeMembers() const;

private:
  using TSequence = ShPtr<const TValidators>;

  bool doValidate(const CorvValidable& i_validable, const ClumParameterMapConstShPtr& i_params) const;
  lmStatus checkAddition(const CorvValidatorShPtr& i_validator) const;
  void insert(const CorvValidatorShPtr& i_validator, unsigned int i_rank);
  lmStatus rankOf(const CorvValidatorConstShPtr& i_validator, unsigned int& o_rank) const;
  void refreshSequence();

  TValidators m_validators;
  TSequence m_sequence; ///< what iterations hold on to; replaced, never changed
};
