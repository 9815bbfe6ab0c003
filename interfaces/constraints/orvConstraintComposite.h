#pragma once

#include "constraints/orvConstraint.h"

/// Stands in a space for the constraints of its sub-spaces, and runs them when the space's set is run.
class LUM_API CorvConstraintComposite : public CorvConstraint
{
  LUM_CONCRETE(CorvConstraintComposite, CorvConstraint);

public:
  ~CorvConstraintComposite() override;
  static CorvConstraintCompositeShPtr create(const CorvConfigSpaceShPtr& i_space);
  static CorvConstraintCompositeShPtr createCopy(const CorvConstraintCompositeConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  using CorvConstraint::doApply;
  using CorvConstraint::getTransitivity;
  bool doesUseReports() const override;
  bool doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                        const CorvValidationReportConstShPtr& i_report,
                        CorvValidationReportShPtr& o_report) const override;
  /// A composite computes nothing by itself: logs and fails.
  lmStatus doApply(CorvConfig& io_config, const ClumParameterMapConstShPtr& i_params) const override;
  /// Those of the sub-spaces' sets together; what one produces and another reads is no input.
  void getTransitivity(std::vector<CorvConfigSpaceShPtr>& o_input,
                       std::vector<CorvConfigSpaceShPtr>& o_output) const override;
  bool isImplicit() const override;
  lmStatus getLipschitzMatrix(ClumMat& o_matrix, const CorvDomainConstShPtr& i_domain) const override;

  /// True if walking the dofs one by one serves as well as descending through the sub-spaces: below the space no set of
  /// constraints holds anything but one composite, save at the dofs.
  static bool canFlattenConstraints(const CorvConfigSpace& i_space);

protected:
  CorvConstraintComposite() = default;
  explicit CorvConstraintComposite(const CorvConfigSpaceShPtr& i_space);
  CorvConstraintComposite(const CorvConstraintComposite&) = default;
  lmStatus init(const CorvConstraintCompositeWkPtr& i_weakPtr);

private:
  bool canWalkDofs(const CorvConfigSpaceShPtr& i_space) const;

  mutable CorvConfigSpaceWkPtr m_walkedSpace; ///< for which `m_canWalkDofs` was found, at `m_walkedVersion`
  mutable unsigned int m_walkedVersion = 0;
  mutable bool m_canWalkDofs = false;
};
