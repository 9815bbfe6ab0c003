#pragma once

#include "metrics/orvRandomDistribution.h"

/// Minus or plus the size, with equal chance.
class LUM_API CorvRDDiscrete : public CorvRandomDistribution
{
  LUM_CONST_CONCRETE(CorvRDDiscrete, CorvRandomDistribution);

public:
  ~CorvRDDiscrete() override;
  static CorvRDDiscreteConstShPtr create();
  static CorvRDDiscreteConstShPtr createCopy(const CorvRDDiscreteConstShPtr& i_objectToCopy);
  CorvRandomDistributionConstShPtr clone() const override;
  double shoot(double i_size) const override;

protected:
  CorvRDDiscrete() = default;
  CorvRDDiscrete(const CorvRDDiscrete&) = default;
  lmStatus init(const CorvRDDiscreteWkPtr& i_weakPtr);
};
