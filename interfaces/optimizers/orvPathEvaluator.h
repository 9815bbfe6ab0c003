#pragma once

#include "foundation/lumCodable.h"
#include "optimizers/handles.h"
#include "paths/handles.h"

/// Tells what a path costs: the smaller, the better. Handled as const.
class LUM_API CorvPathEvaluator : public ClumCodable
{
  LUM_CONST_ABSTRACT(CorvPathEvaluator, ClumCodable);

public:
  ~CorvPathEvaluator() override;

  /// @param i_path never null.
  virtual double operator()(const CorvPathConstShPtr& i_path) const = 0;

protected:
  CorvPathEvaluator() = default;
  CorvPathEvaluator(const CorvPathEvaluator&) = default;
  lmStatus init(const WkPtr<CorvPathEvaluator>& i_weakPtr) { return ClumCodable::init(i_weakPtr); }
};
