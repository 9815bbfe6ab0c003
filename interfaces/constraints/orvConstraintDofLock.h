#pragma once

#include "constraints/orvConstraint.h"

/// Pins the one dof of its space to a value.
class LUM_API CorvConstraintDofLock : public CorvConstraint
{
  LUM_CONCRETE(CorvConstraintDofLock, CorvConstraint);

public:
  /// "orvane.core.constraint-dof-lock"
  static const std::string& defaultName();

  ~CorvConstraintDofLock() override;
  /// @return null if the space is null or has not exactly one dof.
  static CorvConstraintDofLockShPtr create(const CorvConfigSpaceShPtr& i_space, double i_lockValue);
  static CorvConstraintDofLockShPtr createCopy(const CorvConstraintDofLockConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  using CorvConstraint::doApply;
  using CorvConstraint::getTransitivity;
  bool doesUseReports() const override;
  lmStatus doApply(CorvConfig& io_config, const ClumParameterMapConstShPtr& i_params) const override;
  void getTransitivity(std::vector<CorvConfigSpaceShPtr>& o_input,
                       std::vector<CorvConfigSpaceShPtr>& o_output) const override;

  double value() const { return m_lockValue; }
  void value(double i_value);

protected:
  CorvConstraintDofLock() = default;
  CorvConstraintDofLock(const CorvConfigSpaceShPtr& i_space, double i_lockValue);
  CorvConstraintDofLock(const CorvConstraintDofLock&) = default;
  lmStatus init(const CorvConstraintDofLockWkPtr& i_weakPtr);

private:
  double m_lockValue = 0.0;
};
