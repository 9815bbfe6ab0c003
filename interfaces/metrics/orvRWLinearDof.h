#pragma once

#include "metrics/orvRandomWalk.h"

/// Adds a draw of the distribution to dof 0. No bound is applied: validators judge where the step leads.
class LUM_API CorvRWLinearDof : public CorvRandomWalk
{
  LUM_CONST_CONCRETE(CorvRWLinearDof, CorvRandomWalk);

public:
  ~CorvRWLinearDof() override;
  /// With a Gaussian distribution.
  static CorvRWLinearDofConstShPtr create();
  static CorvRWLinearDofConstShPtr create(const CorvRandomDistributionConstShPtr& i_distribution);
  static CorvRWLinearDofConstShPtr createCopy(const CorvRWLinearDofConstShPtr& i_objectToCopy);
  CorvRandomWalkConstShPtr clone() const override;
  void step(double i_size, CorvConfig& io_cfg) const override;

protected:
  CorvRWLinearDof() = default;
  explicit CorvRWLinearDof(const CorvRandomDistributionConstShPtr& i_distribution);
  CorvRWLinearDof(const CorvRWLinearDof&) = default;
  lmStatus init(const CorvRWLinearDofWkPtr& i_weakPtr);
};
