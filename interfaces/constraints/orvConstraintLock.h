#pragma once

#include "constraints/orvConstraint.h"

/// Pins each locked dof of its space to that dof's locked value.
class LUM_API CorvConstraintLock : public CorvConstraint
{
  LUM_CONCRETE(CorvConstraintLock, CorvConstraint);

public:
  ~CorvConstraintLock() override;
  static CorvConstraintLockShPtr create(const CorvConfigSpaceShPtr& i_space);
  static CorvConstraintLockShPtr createCopy(const CorvConstraintLockConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  using CorvConstraint::doApply;
  using CorvConstraint::getTransitivity;
  lmStatus doApply(CorvConfig& io_config, const ClumParameterMapConstShPtr& i_params) const override;
  void getTransitivity(std::vector<CorvConfigSpaceShPtr>& o_input,
                       std::vector<CorvConfigSpaceShPtr>& o_output) const override;

protected:
  CorvConstraintLock() = default;
  explicit CorvConstraintLock(const CorvConfigSpaceShPtr& i_space);
  CorvConstraintLock(const CorvConstraintLock&) = default;
  lmStatus init(const CorvConstraintLockWkPtr& i_weakPtr);
};
