#pragma once

#include "validation/orvValidator.h"

/// What the validators that judge a path by its direct paths have alike.
class LUM_API CorvValidatorPathBase : public CorvValidator
{
public:
  const CorvValidatorShPtr& directPathValidator() const { return m_directPathValidator; }
  void directPathValidator(const CorvValidatorShPtr& i_validator) { m_directPathValidator = i_validator; }
  /// If true, the direct paths after an invalid one are judged too.
  bool isExhaustive() const { return m_isExhaustive; }
  void isExhaustive(bool i_isExhaustive) { m_isExhaustive = i_isExhaustive; }

  void pushAttributes() override;
  void popAttributes() override;
  /// True: the direct paths' own reports answer, so a second call costs little and follows them.
  bool shouldRevalidatePath(const CorvPath& i_path, const ClumParameterMapConstShPtr& i_params,
                            const CorvValidationReportConstShPtr& i_report) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvValidatorPathBase() = default;
  CorvValidatorPathBase(const CorvConfigSpaceShPtr& i_space, const std::string& i_name,
                        const CorvValidatorShPtr& i_directPathValidator);
  CorvValidatorPathBase(const CorvValidatorPathBase&) = default;

  static bool areDirectPathsValid(const CorvPath& i_path, const CorvValidator& i_validator,
                                  const ClumParameterMapConstShPtr& i_params, bool i_isExhaustive);

private:
  CorvValidatorShPtr m_directPathValidator;
  bool m_isExhaustive = false;
};
