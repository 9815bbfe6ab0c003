#pragma once

#include "validation/orvValidator.h"

/// Judges, in a space made of others, the restriction of a direct path to each sub-space by that space's validators.
/// Reports of the restrictions are put on the direct path, each under its sub-space.
class LUM_API CorvValidatorDPComposite : public CorvValidator
{
  LUM_CONCRETE(CorvValidatorDPComposite, CorvValidator);

public:
  static const std::string DEFAULT_NAME;

  ~CorvValidatorDPComposite() override;
  static CorvValidatorDPCompositeShPtr create(const CorvConfigSpaceShPtr& i_space);
  static CorvValidatorDPCompositeShPtr createCopy(const CorvValidatorDPCompositeConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  bool doValidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr& i_params,
                            const CorvValidationReportConstShPtr& i_report,
                            CorvValidationReportShPtr& o_report) const override;
  /// True: the validators of the sub-spaces decide whether their reports still hold.
  bool shouldRevalidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr& i_params,
                                  const CorvValidationReportConstShPtr& i_report) const override;

protected:
  CorvValidatorDPComposite() = default;
  explicit CorvValidatorDPComposite(const CorvConfigSpaceShPtr& i_space);
  CorvValidatorDPComposite(const CorvValidatorDPComposite&) = default;
  lmStatus init(const CorvValidatorDPCompositeWkPtr& i_weakPtr);

private:
  void updateJudgedSubspaces(const CorvConfigSpace& i_space) const;

  mutable std::vector<CorvConfigSpaceWkPtr> m_judgedSubspaces; ///< those with direct path validators
  mutable unsigned int m_version = 0;                          ///< of the space that the list belongs to, 0 for none
};
