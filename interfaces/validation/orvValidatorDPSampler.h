#pragma once

#include "validation/orvValidator.h"

/// Judges configurations of a direct path at a fixed step of length, and its end. Nothing is known between them.
class LUM_API CorvValidatorDPSampler : public CorvValidator
{
  LUM_CONCRETE(CorvValidatorDPSampler, CorvValidator);

public:
  static const std::string DEFAULT_NAME;

  ~CorvValidatorDPSampler() override;
  /// @param i_configValidator null for the configurations' own validators.
  /// @return null for a step that is not above 0.
  static CorvValidatorDPSamplerShPtr create(const CorvConfigSpaceShPtr& i_space,
                                            const CorvValidatorConstShPtr& i_configValidator,
                                            double i_samplingLength = 5.0);
  static CorvValidatorDPSamplerShPtr createCopy(const CorvValidatorDPSamplerConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  double samplingLength() const { return m_samplingLength; }
  /// @return -1, without a change, for a step that is not above 0.
  lmStatus samplingLength(double i_length);
  const CorvValidatorConstShPtr& configValidator() const { return m_configValidator; }
  void configValidator(const CorvValidatorConstShPtr& i_validator) { m_configValidator = i_validator; }

  bool doValidateDirectPath(const CorvDirectPath& i_path, const ClumParameterMapConstShPtr& i_params,
                            const CorvValidationReportConstShPtr& i_report,
                            CorvValidationReportShPtr& o_report) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvValidatorDPSampler() = default;
  CorvValidatorDPSampler(const CorvConfigSpaceShPtr& i_space, const CorvValidatorConstShPtr& i_configValidator,
                         double i_samplingLength);
  CorvValidatorDPSampler(const CorvValidatorDPSampler&) = default;
  lmStatus init(const CorvValidatorDPSamplerWkPtr& i_weakPtr);

private:
  bool isSampleValid(const CorvConfig& i_config, const ClumParameterMapConstShPtr& i_params) const;

  double m_samplingLength = 5.0;
  CorvValidatorConstShPtr m_configValidator;
};
