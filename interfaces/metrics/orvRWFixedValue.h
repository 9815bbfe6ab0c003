#pragma once

#include "metrics/orvRandomWalk.h"

/// Puts dof 0 to a fixed value, whatever the size. Walks with different values count as equal.
class LUM_API CorvRWFixedValue : public CorvRandomWalk
{
  LUM_CONST_CONCRETE(CorvRWFixedValue, CorvRandomWalk);

public:
  ~CorvRWFixedValue() override;
  static CorvRWFixedValueConstShPtr create(double i_fixedValue = 0.);
  static CorvRWFixedValueConstShPtr createCopy(const CorvRWFixedValueConstShPtr& i_objectToCopy);
  CorvRandomWalkConstShPtr clone() const override;
  void step(double i_size, CorvConfig& io_cfg) const override;
  double fixedValue() const { return m_fixedValue; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvRWFixedValue() = default;
  explicit CorvRWFixedValue(double i_fixedValue);
  CorvRWFixedValue(const CorvRWFixedValue&) = default;
  lmStatus init(const CorvRWFixedValueWkPtr& i_weakPtr);

private:
  double m_fixedValue = 0.0;
};
