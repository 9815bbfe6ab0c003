#pragma once

#include "metrics/orvRandomDistribution.h"

/// The normal distribution.
class LUM_API CorvRDGaussian : public CorvRandomDistribution
{
  LUM_CONST_CONCRETE(CorvRDGaussian, CorvRandomDistribution);

public:
  ~CorvRDGaussian() override;
  static CorvRDGaussianConstShPtr create();
  static CorvRDGaussianConstShPtr createCopy(const CorvRDGaussianConstShPtr& i_objectToCopy);
  CorvRandomDistributionConstShPtr clone() const override;
  double shoot(double i_size) const override;

protected:
  CorvRDGaussian() = default;
  CorvRDGaussian(const CorvRDGaussian&) = default;
  lmStatus init(const CorvRDGaussianWkPtr& i_weakPtr);
};
