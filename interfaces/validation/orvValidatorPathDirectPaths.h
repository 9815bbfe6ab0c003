#pragma once

#include "validation/orvValidator.h"

/// A path is valid if each of its direct paths is.
class LUM_API CorvValidatorPathDirectPaths : public CorvValidator
{
  LUM_CONCRETE(CorvValidatorPathDirectPaths, CorvValidator);

public:
  static const std::string DEFAULT_NAME;

  ~CorvValidatorPathDirectPaths() override;
  /// @param i_directPathValidator null for the validators of the path's space.
  static CorvValidatorPathDirectPathsShPtr
  create(const CorvConfigSpaceShPtr& i_space, const CorvValidatorShPtr& i_directPathValidator = CorvValidatorShPtr());
  static CorvValidatorPathDirectPathsShPtr createCopy(const CorvValidatorPathDirectPathsConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  const CorvValidatorShPtr& directPathValidator() const { return m_directPathValidator; }
  void directPathValidator(const CorvValidatorShPtr& i_validator) { m_directPathValidator = i_validator; }
  /// If true, the direct paths after an invalid one are judged too.
  bool isExhaustive() const { return m_isExhaustive; }
  void isExhaustive(bool i_isExhaustive) { m_isExhaustive = i_isExhaustive; }

  void pushAttributes() override;
  void popAttributes() override;
  bool doValidatePath(const CorvPath& i_path, const ClumParameterMapConstShPtr& i_params,
                      const CorvValidationReportConstShPtr& i_report,
                      CorvValidationReportShPtr& o_report) const override;
  /// True: the direct paths' own reports answer, so a second call costs little and follows them.
  bool shouldRevalidatePath(const CorvPath& i_path, const ClumParameterMapConstShPtr& i_params,
                            const CorvValidationReportConstShPtr& i_report) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvValidatorPathDirectPaths() = default;
  CorvValidatorPathDirectPaths(const CorvConfigSpaceShPtr& i_space, const CorvValidatorShPtr& i_directPathValidator);
  CorvValidatorPathDirectPaths(const CorvValidatorPathDirectPaths&) = default;
  lmStatus init(const CorvValidatorPathDirectPathsWkPtr& i_weakPtr);

private:
  CorvValidatorShPtr m_directPathValidator;
  bool m_isExhaustive = false;
};
