#pragma once

#include "validation/orvValidator.h"

/// Applies, in a space made of others, the configuration validators of each sub-space to its part of the configuration.
class LUM_API CorvValidatorCfgComposite : public CorvConfigValidator
{
  LUM_CONCRETE(CorvValidatorCfgComposite, CorvConfigValidator);

public:
  static const std::string DEFAULT_NAME;

  ~CorvValidatorCfgComposite() override;
  static CorvValidatorCfgCompositeShPtr create(const CorvConfigSpaceShPtr& i_space);
  static CorvValidatorCfgCompositeShPtr createCopy(const CorvValidatorCfgCompositeConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  bool doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                        const CorvValidationReportConstShPtr& i_report,
                        CorvValidationReportShPtr& o_report) const override;
  using CorvValidator::validMotion;
  /// The smallest bound of the sub-spaces' validators, +infinity without one.
  lmStatus validMotion(const CorvDirectPath& i_dp, double i_param, const CorvConfig& i_cfg,
                       CorvAbstractPath::EDirection i_direction, const ClumParameterMapConstShPtr& i_params,
                       double& o_bound, bool& o_exact) const override;

protected:
  CorvValidatorCfgComposite() = default;
  explicit CorvValidatorCfgComposite(const CorvConfigSpaceShPtr& i_space);
  CorvValidatorCfgComposite(const CorvValidatorCfgComposite&) = default;
  lmStatus init(const CorvValidatorCfgCompositeWkPtr& i_weakPtr);

private:
  /// True if nothing but the dofs has validators of its own, so that the flat walk over the dofs reaches them all.
  bool canWalkDofs(const CorvConfigSpaceShPtr& i_space) const;

  mutable CorvConfigSpaceWkPtr m_cachedSpace;
  mutable unsigned int m_cachedVersion = 0;
  mutable bool m_canWalkDofs = false;
};
