#pragma once

#include "foundation/lumCodable.h"
#include "metrics/handles.h"

/// How a single number is drawn for a given size. The size is the standard deviation of what is drawn, the mean is 0.
/// Distributions carry no data and are shared as constants.
class LUM_API CorvRandomDistribution : public ClumCodable
{
  LUM_CONST_ABSTRACT(CorvRandomDistribution, ClumCodable);

public:
  ~CorvRandomDistribution() override;
  virtual CorvRandomDistributionConstShPtr clone() const = 0;
  /// Draws a number from the library's one generator.
  virtual double shoot(double i_size) const = 0;
  /// Distributions of one class are equal.
  virtual bool operator==(const CorvRandomDistribution& i_other) const;

protected:
  CorvRandomDistribution() = default;
  CorvRandomDistribution(const CorvRandomDistribution&) = default;
  lmStatus init(const CorvRandomDistributionWkPtr& i_weakPtr);
};
