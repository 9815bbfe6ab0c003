#pragma once

#include "metrics/orvRandomWalk.h"

/// Moves nothing.
class LUM_API CorvRWIdentity : public CorvRandomWalk
{
  LUM_CONST_CONCRETE(CorvRWIdentity, CorvRandomWalk);

public:
  ~CorvRWIdentity() override;
  static CorvRWIdentityConstShPtr create();
  static CorvRWIdentityConstShPtr createCopy(const CorvRWIdentityConstShPtr& i_objectToCopy);
  CorvRandomWalkConstShPtr clone() const override;
  void step(double i_size, CorvConfig& io_cfg) const override;

protected:
  CorvRWIdentity() = default;
  CorvRWIdentity(const CorvRWIdentity&) = default;
  lmStatus init(const CorvRWIdentityWkPtr& i_weakPtr);
};
