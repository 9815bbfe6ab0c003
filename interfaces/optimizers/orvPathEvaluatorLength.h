#pragma once

#include "optimizers/orvPathEvaluator.h"

/// The length of a path, and a small charge for each direct path, so that among equal lengths the shorter chain wins.
class LUM_API CorvPathEvaluatorLength : public CorvPathEvaluator
{
  LUM_CONST_CONCRETE(CorvPathEvaluatorLength, CorvPathEvaluator);

public:
  ~CorvPathEvaluatorLength() override;
  /// With a charge of twice `CorvPathOptimizer::COST_EPSILON`.
  static CorvPathEvaluatorLengthShPtr create();
  static CorvPathEvaluatorLengthShPtr create(double i_costPerDirectPath);

  double costPerDirectPath() const { return m_costPerDirectPath; }
  double operator()(const CorvPathConstShPtr& i_path) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvPathEvaluatorLength() = default;
  explicit CorvPathEvaluatorLength(double i_costPerDirectPath) : m_costPerDirectPath(i_costPerDirectPath) {}

private:
  double m_costPerDirectPath = 0.0;
};
