#pragma once

#include "roadmaps/orvDiffusionShooter.h"

/// Shoots into the whole space. The deviation is not used.
class LUM_API CorvShooterConfigSpace : public CorvDiffusionShooter
{
  LUM_CONCRETE(CorvShooterConfigSpace, CorvDiffusionShooter);

public:
  static CorvShooterConfigSpaceShPtr create();
  static CorvShooterConfigSpaceShPtr createCopy(const CorvShooterConfigSpaceConstShPtr& i_objectToCopy);
  ~CorvShooterConfigSpace() override;

  lmStatus shoot(const CorvNodeShPtr& i_node, EDiffusionNodeType i_type, double i_standardDeviation, TTrace& io_trace,
                 CorvConfig& o_config) override;

protected:
  CorvShooterConfigSpace() = default;
  CorvShooterConfigSpace(const CorvShooterConfigSpace&) = default;
  lmStatus init(const CorvShooterConfigSpaceWkPtr& i_weakPtr);
};
