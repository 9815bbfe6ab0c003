#pragma once

#include "foundation/lumCodable.h"
#include "kinematics/handles.h"
#include "metrics/handles.h"

/// How a configuration is stirred by a step of a given size, a standard deviation in the unit of the metric.
///
/// Walks never change after they are made, but for a joint reference, and are shared as constants. A walk that cannot
/// act leaves the configuration as it is.
class LUM_API CorvRandomWalk : public ClumCodable
{
  LUM_CONST_ABSTRACT(CorvRandomWalk, ClumCodable);

public:
  ~CorvRandomWalk() override;
  virtual CorvRandomWalkConstShPtr clone() const = 0;
  virtual void step(double i_size, CorvConfig& io_cfg) const = 0;
  /// True for walks of one class whose distributions are equal.
  virtual bool operator==(const CorvRandomWalk& i_other) const;
  bool operator!=(const CorvRandomWalk& i_other) const { return !(*this == i_other); }

  /// May be null.
  const CorvRandomDistributionConstShPtr& distribution() const { return m_distribution; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvRandomWalk() = default;
  explicit CorvRandomWalk(const CorvRandomDistributionConstShPtr& i_distribution);
  CorvRandomWalk(const CorvRandomWalk&) = default;
  lmStatus init(const CorvRandomWalkWkPtr& i_weakPtr);

private:
  CorvRandomDistributionConstShPtr m_distribution;
};
