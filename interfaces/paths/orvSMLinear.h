#pragma once

#include "paths/orvSteeringMethod.h"

/// Moves all dofs at once, proportionally, unbounded rotations the short way.
class LUM_API CorvSMLinear : public CorvSteeringMethod
{
  LUM_CONCRETE(CorvSMLinear, CorvSteeringMethod);

public:
  ~CorvSMLinear() override;
  static CorvSMLinearShPtr create(bool i_oriented = false);
  static CorvSMLinearShPtr createCopy(const CorvSMLinearConstShPtr& i_objectToCopy);
  CorvSteeringMethodShPtr clone() const override;

  /// @return null if an unbounded rotation is half a turn apart: there is no short way.
  CorvDirectPathShPtr makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const override;
  bool isOriented(const CorvConfigSpaceConstShPtr& i_space) const override;
  bool operator==(const CorvSteeringMethod& i_other) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvSMLinear() = default;
  explicit CorvSMLinear(bool i_oriented);
  CorvSMLinear(const CorvSMLinear&) = default;
  lmStatus init(const CorvSMLinearWkPtr& i_weakPtr);

private:
  bool m_oriented = false;
};
