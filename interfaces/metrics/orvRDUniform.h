#pragma once

#include "metrics/orvRandomDistribution.h"

/// The uniform distribution over `[-sqrt(3) * size, sqrt(3) * size]`.
class LUM_API CorvRDUniform : public CorvRandomDistribution
{
  LUM_CONST_CONCRETE(CorvRDUniform, CorvRandomDistribution);

public:
  ~CorvRDUniform() override;
  static CorvRDUniformConstShPtr create();
  static CorvRDUniformConstShPtr createCopy(const CorvRDUniformConstShPtr& i_objectToCopy);
  CorvRandomDistributionConstShPtr clone() const override;
  double shoot(double i_size) const override;

protected:
  CorvRDUniform() = default;
  CorvRDUniform(const CorvRDUniform&) = default;
  lmStatus init(const CorvRDUniformWkPtr& i_weakPtr);
};
