#pragma once

#include "foundation/lumCodable.h"
#include "kinematics/handles.h"
#include "validation/handles.h"

/// A hook that stores the results of a validator elsewhere than on what was asked about.
class LUM_API CorvValidationPool : public ClumCodable
{
  LUM_ABSTRACT(CorvValidationPool, ClumCodable);

public:
  ~CorvValidationPool() override;

  /// The validable on which the result for `i_validable` is stored.
  virtual const CorvValidable& targetOf(const CorvValidable& i_validable) = 0;
  /// Called after the validation of a target, with what was asked about.
  virtual void didValidate(const CorvValidable& i_validable, const CorvValidable& i_target) = 0;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvValidationPool() = default;
  CorvValidationPool(const CorvValidationPool&) = default;
  lmStatus init(const CorvValidationPoolWkPtr& i_weakPtr);
};
