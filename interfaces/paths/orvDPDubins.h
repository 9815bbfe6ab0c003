#pragma once

#include "paths/orvDPCurve.h"

/// The motion of `CorvSMDubins`.
///
/// Words 1 to 6: L R L, R L R, L S L, L S R, R S L, R S R, all forward.
/// Of words of equal length the first is taken.
class LUM_API CorvDPDubins : public CorvDPCurve
{
  LUM_CONCRETE(CorvDPDubins, CorvDPCurve);

public:
  ~CorvDPDubins() override;
  /// @return null in the cases that `CorvDPCurve::init` refuses.
  static CorvDPDubinsShPtr create(const CorvConfig& i_start, const CorvConfig& i_end,
                                  const CorvSMCurveShPtr& i_steeringMethod);
  static CorvDPDubinsShPtr createCopy(const CorvDPDubinsConstShPtr& i_objectToCopy);
  CorvAbstractPathShPtr clone() const override;

  double computeParams(const CCurveCoordinates& i_start, const CCurveCoordinates& i_end, int& o_word, double& o_t,
                       double& o_u, double& o_v) const override;
  lmStatus createCurvesWithParams(int i_word, double i_t, double i_u, double i_v, const CCurveCoordinates& i_start,
                                  double i_radius, std::vector<CCurve>& o_curves) const override;

protected:
  CorvDPDubins() = default;
  using CorvDPCurve::CorvDPCurve;
  CorvDPDubins(const CorvDPDubins&) = default;
  lmStatus init(const CorvDPDubinsWkPtr& i_weakPtr);

private:
  static const std::vector<CWord>& words();
};
