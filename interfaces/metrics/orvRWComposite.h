#pragma once

#include "metrics/orvRandomWalk.h"

/// Steps each sub-space by its own metric, all with the same size: weights act through the scales of these metrics.
class LUM_API CorvRWComposite : public CorvRandomWalk
{
  LUM_CONST_CONCRETE(CorvRWComposite, CorvRandomWalk);

public:
  ~CorvRWComposite() override;
  static CorvRWCompositeConstShPtr create();
  static CorvRWCompositeConstShPtr createCopy(const CorvRWCompositeConstShPtr& i_objectToCopy);
  CorvRandomWalkConstShPtr clone() const override;
  void step(double i_size, CorvConfig& io_cfg) const override;

protected:
  CorvRWComposite() = default;
  CorvRWComposite(const CorvRWComposite&) = default;
  lmStatus init(const CorvRWCompositeWkPtr& i_weakPtr);
};
