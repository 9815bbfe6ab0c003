#pragma once

#include "paths/orvSMCurve.h"

/// The shortest motion of a car that goes forward and backward: at most five arcs and lines (Reeds and Shepp 1990).
class LUM_API CorvSMReedsNShepp : public CorvSMCurve
{
  LUM_CONCRETE(CorvSMReedsNShepp, CorvSMCurve);

public:
  ~CorvSMReedsNShepp() override;
  static CorvSMReedsNSheppShPtr create(double i_steeringRadius, const CorvDofConstShPtr& i_xDof,
                                       const CorvDofConstShPtr& i_yDof, const CorvDofConstShPtr& i_thetaDof);
  static CorvSMReedsNSheppShPtr createCopy(const CorvSMReedsNSheppConstShPtr& i_objectToCopy);
  CorvSteeringMethodShPtr clone() const override;

  /// @return null as `CorvDPReedsNShepp::create`.
  CorvDirectPathShPtr makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const override;
  bool isOriented(const CorvConfigSpaceConstShPtr& i_space) const override;

protected:
  CorvSMReedsNShepp() = default;
  using CorvSMCurve::CorvSMCurve;
  CorvSMReedsNShepp(const CorvSMReedsNShepp&) = default;
  lmStatus init(const CorvSMReedsNSheppWkPtr& i_weakPtr);
};
