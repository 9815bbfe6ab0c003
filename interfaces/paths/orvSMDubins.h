#pragma once

#include "paths/orvSMCurve.h"

/// The shortest motion of a car that only goes forward: at most three arcs and lines (Dubins 1957).
class LUM_API CorvSMDubins : public CorvSMCurve
{
  LUM_CONCRETE(CorvSMDubins, CorvSMCurve);

public:
  ~CorvSMDubins() override;
  static CorvSMDubinsShPtr create(double i_steeringRadius, const CorvDofConstShPtr& i_xDof,
                                  const CorvDofConstShPtr& i_yDof, const CorvDofConstShPtr& i_thetaDof);
  static CorvSMDubinsShPtr createCopy(const CorvSMDubinsConstShPtr& i_objectToCopy);
  CorvSteeringMethodShPtr clone() const override;

  /// @return null as `CorvDPDubins::create`.
  CorvDirectPathShPtr makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const override;
  bool isOriented(const CorvConfigSpaceConstShPtr& i_space) const override;

protected:
  CorvSMDubins() = default;
  using CorvSMCurve::CorvSMCurve;
  CorvSMDubins(const CorvSMDubins&) = default;
  lmStatus init(const CorvSMDubinsWkPtr& i_weakPtr);
};
