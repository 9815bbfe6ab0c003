#pragma once

#include "paths/orvSteeringMethod.h"

/// Straight motions between ends rounded to a grid: each value to the nearest `offset + k * step`.
///
/// The ends of a motion are those of the grid, not those that were asked for; so a part of a motion is made anew, with
/// rounded ends of its own.
class LUM_API CorvSMLinearWithDiscreteEnds : public CorvSteeringMethod
{
  LUM_CONCRETE(CorvSMLinearWithDiscreteEnds, CorvSteeringMethod);

public:
  ~CorvSMLinearWithDiscreteEnds() override;
  /// @param i_step 0 for no rounding. @return null, with a log entry, if it is negative or not a finite number.
  static CorvSMLinearWithDiscreteEndsShPtr create(double i_step, double i_offset = 0);
  static CorvSMLinearWithDiscreteEndsShPtr createCopy(const CorvSMLinearWithDiscreteEndsConstShPtr& i_objectToCopy);
  CorvSteeringMethodShPtr clone() const override;

  double step() const { return m_step; }
  double offset() const { return m_offset; }

  /// @return a `CorvDPLinear` between the rounded ends, or null where that cannot be made.
  CorvDirectPathShPtr makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const override;
  bool isOriented(const CorvConfigSpaceConstShPtr& i_space) const override;
  bool isConservative(const CorvConfigSpaceConstShPtr& i_space) const override;
  bool operator==(const CorvSteeringMethod& i_other) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  virtual bool isThreadSafe(const CorvConfigSpaceShPtr& i_space) const;

protected:
  CorvSMLinearWithDiscreteEnds() = default;
  CorvSMLinearWithDiscreteEnds(double i_step, double i_offset);
  CorvSMLinearWithDiscreteEnds(const CorvSMLinearWithDiscreteEnds&) = default;
  lmStatus init(const CorvSMLinearWithDiscreteEndsWkPtr& i_weakPtr);

private:
  bool isStepUsable() const;
  CorvConfig rounded(const CorvConfig& i_cfg) const;

  double m_step = 0.0;
  double m_offset = 0.0;
};
