#pragma once

#include "validation/orvValidator.h"

/// A range check of a space of one dof, both ends inside. A bounded dof keeps one among its own validators.
class LUM_API CorvValidatorDofBounds : public CorvConfigValidator
{
  LUM_CONCRETE(CorvValidatorDofBounds, CorvConfigValidator);

public:
  static const std::string DEFAULT_NAME;

  ~CorvValidatorDofBounds() override;
  static CorvValidatorDofBoundsShPtr create(const CorvConfigSpaceShPtr& i_space, double i_minValue, double i_maxValue);
  static CorvValidatorDofBoundsShPtr createCopy(const CorvValidatorDofBoundsConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  double minValue() const { return m_minValue; }
  /// Each setter invalidates the space if the value changes.
  void minValue(double i_value);
  double maxValue() const { return m_maxValue; }
  void maxValue(double i_value);

  bool doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                        const CorvValidationReportConstShPtr& i_report,
                        CorvValidationReportShPtr& o_report) const override;
  using CorvValidator::validMotion;
  /// The length after which the dof could be at its nearer bound at its greatest rate. Never past the bound.
  lmStatus validMotion(const CorvDirectPath& i_dp, double i_param, const CorvConfig& i_cfg,
                       CorvAbstractPath::EDirection i_direction, const ClumParameterMapConstShPtr& i_params,
                       double& o_bound, bool& o_exact) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvValidatorDofBounds() = default;
  CorvValidatorDofBounds(const CorvConfigSpaceShPtr& i_space, double i_minValue, double i_maxValue);
  CorvValidatorDofBounds(const CorvValidatorDofBounds&) = default;
  lmStatus init(const CorvValidatorDofBoundsWkPtr& i_weakPtr);

private:
  double m_minValue = 0.0;
  double m_maxValue = 0.0;
};
