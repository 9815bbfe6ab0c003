#pragma once

#include "paths/orvDPCurve.h"

/// The motion of `CorvSMReedsNShepp`.
///
/// Words 1 to 48, in twelve groups of a word with its images under a change of direction and of side.
/// Of words of equal length the first is taken.
class LUM_API CorvDPReedsNShepp : public CorvDPCurve
{
  LUM_CONCRETE(CorvDPReedsNShepp, CorvDPCurve);

public:
  ~CorvDPReedsNShepp() override;
  /// @return null in the cases that `CorvDPCurve::init` refuses.
  static CorvDPReedsNSheppShPtr create(const CorvConfig& i_start, const CorvConfig& i_end,
                                       const CorvSMCurveShPtr& i_steeringMethod);
  static CorvDPReedsNSheppShPtr createCopy(const CorvDPReedsNSheppConstShPtr& i_objectToCopy);
  CorvAbstractPathShPtr clone() const override;

  double computeParams(const CCurveCoordinates& i_start, const CCurveCoordinates& i_end, int& o_word, double& o_t,
                       double& o_u, double& o_v) const override;
  lmStatus createCurvesWithParams(int i_word, double i_t, double i_u, double i_v, const CCurveCoordinates& i_start,
                                  double i_radius, std::vector<CCurve>& o_curves) const override;

protected:
  CorvDPReedsNShepp() = default;
  using CorvDPCurve::CorvDPCurve;
  CorvDPReedsNShepp(const CorvDPReedsNShepp&) = default;
  lmStatus init(const CorvDPReedsNSheppWkPtr& i_weakPtr);

private:
  static const std::vector<CWord>& words();
};
