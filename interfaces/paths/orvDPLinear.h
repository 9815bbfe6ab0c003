#pragma once

#include "paths/orvDirectPath.h"

/// The straight motion of `CorvSMLinear`.
///
/// Its length is that of the space's metric. An unbounded rotation goes the short way from the start's value, without
/// being folded back, so that it may pass pi; a bounded one goes straight. Passive dofs follow their constraints.
class LUM_API CorvDPLinear : public CorvDirectPath
{
  LUM_CONCRETE(CorvDPLinear, CorvDirectPath);

public:
  ~CorvDPLinear() override;
  /// False if an active unbounded rotation is half a turn apart, within 1e-7.
  static bool canConnect(const CorvConfig& i_start, const CorvConfig& i_end);
  /// @return null if it cannot connect the two.
  static CorvDPLinearShPtr create(const CorvConfig& i_start, const CorvConfig& i_end,
                                  const CorvSteeringMethodShPtr& i_steeringMethod);
  static CorvDPLinearShPtr createCopy(const CorvDPLinearConstShPtr& i_objectToCopy);
  CorvAbstractPathShPtr clone() const override;

  void describe(const CorvPathVisitorShPtr& i_visitor) const override;
  /// The constant rates of all dofs, passive ones at their average; infinite where a dof moves and the length is 0.
  void maxAbsoluteDerivative(double i_from, double i_to, std::vector<double>& o_derivatives) const override;
  bool getStraightVelocity(std::vector<double>& o_velocity) const override;

protected:
  CorvDPLinear();
  CorvDPLinear(const CorvConfig& i_start, const CorvConfig& i_end, const CorvSteeringMethodShPtr& i_steeringMethod);
  CorvDPLinear(const CorvDPLinear&) = default;
  lmStatus init(const CorvDPLinearWkPtr& i_weakPtr);
  lmStatus init(const CorvDPLinearWkPtr& i_weakPtr, const CorvDPLinearConstShPtr& i_source);

  void interpolate(double i_distance, CorvConfig& io_cfg) const override;
  double computePrivateLength() const override;

private:
  static const double s_halfTurnTolerance;
};
