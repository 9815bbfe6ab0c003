#pragma once

#include "validation/orvValidator.h"

#include <vector>

/// Keeps the fifth axis of a six-axis arm away from its stretched position, where the wrist is singular.
///
/// A configuration is valid if the fifth axis is at least the smallest allowed angle, and at most the greatest if that
/// is finite, away from the singular value.
class LUM_API CorvValidatorCfg6DofSingularity : public CorvConfigValidator
{
  LUM_CONCRETE(CorvValidatorCfg6DofSingularity, CorvConfigValidator);

public:
  /// Five degrees, the smallest allowed angle unless told otherwise.
  static const double DEFAULT_MIN_ALLOWED_VALUE;
  /// Infinity, the greatest one.
  static const double DEFAULT_MAX_ALLOWED_VALUE;

  ~CorvValidatorCfg6DofSingularity() override;
  /// For an arm whose joints follow each other as first children; joints without a dof at the root are its base.
  /// @return null unless five joints of one dof each follow.
  static CorvValidatorCfg6DofSingularityShPtr create(const CorvDeviceShPtr& i_arm,
                                                     double i_j5MinAllowedValue = DEFAULT_MIN_ALLOWED_VALUE,
                                                     double i_j5MaxAllowedValue = DEFAULT_MAX_ALLOWED_VALUE,
                                                     double i_j5SingularityValue = 0.0);
  /// @param i_j5Dof the rank of the fifth axis' dof. @return null if the space does not have it.
  static CorvValidatorCfg6DofSingularityShPtr create(const CorvConfigSpaceShPtr& i_space, unsigned int i_j5Dof,
                                                     double i_j5MinAllowedValue = DEFAULT_MIN_ALLOWED_VALUE,
                                                     double i_j5MaxAllowedValue = DEFAULT_MAX_ALLOWED_VALUE,
                                                     double i_j5SingularityValue = 0.0);
  /// @param i_actifDofs the ranks of the axes' dofs in order; the fifth is taken. @return null if there are fewer.
  static CorvValidatorCfg6DofSingularityShPtr create(const CorvConfigSpaceShPtr& i_space,
                                                     const std::vector<unsigned int>& i_actifDofs,
                                                     double i_j5MinAllowedValue = DEFAULT_MIN_ALLOWED_VALUE,
                                                     double i_j5MaxAllowedValue = DEFAULT_MAX_ALLOWED_VALUE,
                                                     double i_j5SingularityValue = 0.0);
  static CorvValidatorCfg6DofSingularityShPtr
  createCopy(const CorvValidatorCfg6DofSingularityConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  unsigned int j5Dof() const { return m_j5Dof; }
  double j5MinAllowedValue() const { return m_j5MinAllowedValue; }
  double j5MaxAllowedValue() const { return m_j5MaxAllowedValue; }
  double j5SingularityValue() const { return m_j5SingularityValue; }

  bool doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                        const CorvValidationReportConstShPtr& i_report,
                        CorvValidationReportShPtr& o_report) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvValidatorCfg6DofSingularity();
  CorvValidatorCfg6DofSingularity(const CorvConfigSpaceShPtr& i_space, unsigned int i_j5Dof, double i_j5MinAllowedValue,
                                  double i_j5MaxAllowedValue, double i_j5SingularityValue);
  CorvValidatorCfg6DofSingularity(const CorvValidatorCfg6DofSingularity&) = default;
  lmStatus init(const CorvValidatorCfg6DofSingularityWkPtr& i_weakPtr);

private:
  unsigned int m_j5Dof = 0;
  double m_j5MinAllowedValue;
  double m_j5MaxAllowedValue;
  double m_j5SingularityValue = 0.0;
};
