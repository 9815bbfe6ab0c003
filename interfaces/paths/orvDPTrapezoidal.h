#pragma once

#include "paths/orvDirectPath.h"

/// A straight motion from rest to rest whose distance is time.
///
/// All dofs share one progress from 0 to 1, with a ramp up, a stretch at constant speed and a ramp down; the stretch is
/// empty where the way is too short for the largest speed. A cut or a reversal replaces an end, and the piece starts
/// and stops at rest again: its times are not those of the motion that it was cut from. So the window of the base stays
/// whole, and edits drop the marks. Passive dofs keep the value of the start.
///
/// The length is 0 if nothing moves, and if no acceleration limits the motion.
class LUM_API CorvDPTrapezoidal : public CorvDirectPath
{
  LUM_CONCRETE(CorvDPTrapezoidal, CorvDirectPath);

public:
  ~CorvDPTrapezoidal() override;
  /// @return null, with a log entry, for limits that are negative or of the wrong number, an acceleration of 0 where
  /// the velocity is not, a motion that no dof limits, and an active unbounded rotation that is half a turn apart.
  static CorvDPTrapezoidalShPtr create(const CorvConfig& i_start, const CorvConfig& i_end,
                                       const CorvSMTrapezoidalShPtr& i_steeringMethod);
  static CorvDPTrapezoidalShPtr createCopy(const CorvDPTrapezoidalConstShPtr& i_objectToCopy);
  CorvAbstractPathShPtr clone() const override;

  double length() const override;
  lmStatus getConfigAtDistance(double i_time, CorvConfig& io_cfg) const override;
  lmStatus getConfigAtParam(double i_param, CorvConfig& io_cfg) const override;
  const CorvConfig& startConfiguration() const override;
  const CorvConfig& endConfiguration() const override;
  lmStatus extractFrom(double i_from) override;
  lmStatus extractTo(double i_to) override;
  lmStatus extract(double i_from, double i_to) override;
  lmStatus reverse() override;
  lmStatus convert(const CorvConfigSpaceShPtr& i_space) override;
  /// The largest rates of the whole motion, whatever the interval.
  void maxAbsoluteDerivative(double i_from, double i_to, std::vector<double>& o_derivatives) const override;
  void didUnvalidate() const override;

  /// The velocity, or acceleration, of each dof. @return -1 for a time that is negative or not below the length.
  lmStatus getDofsVelocityAtTime(double i_time, std::vector<double>& o_velocities) const;
  lmStatus getDofsAccelerationAtTime(double i_time, std::vector<double>& o_accelerations) const;
  /// True if the motion reaches its largest speed and keeps it for a while.
  bool isProfileTrapezoidal() const { return m_tAcc < m_tAccPir; }
  /// The time of the ramp, and the largest rate and acceleration of the progress.
  double rampTime() const;
  double maxProgressRate() const;
  double maxProgressAcceleration() const { return m_lbdaSMax; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvDPTrapezoidal() = default;
  CorvDPTrapezoidal(const CorvConfig& i_start, const CorvConfig& i_end, const CorvSMTrapezoidalShPtr& i_steeringMethod);
  CorvDPTrapezoidal(const CorvDPTrapezoidal&) = default;
  lmStatus init(const CorvDPTrapezoidalWkPtr& i_weakPtr);

  /// Not to be called: raises an assertion.
  void interpolate(double i_distance, CorvConfig& io_cfg) const override;
  double computePrivateLength() const override;
  double privateLength() const override;

private:
  static const double s_halfTurnTolerance;

  lmStatus checkLimits() const;
  lmStatus computeProfiles();
  void profileOfRest();
  void getDifferences(std::vector<double>& o_differences) const;
  double progressAt(double i_time) const;
  lmStatus scaledDifferences(double i_scale, std::vector<double>& o_values) const;
  lmStatus replaceEnds(const CorvConfig& i_start, const CorvConfig& i_end);

  double m_tAcc = 0.0;
  double m_tVc = 0.0;
  double m_tTot = 0.0;
  double m_tAccPir = 0.0;
  double m_lbdaAcc = 0.0;
  double m_lbdaPMax = 0.0;
  double m_lbdaSMax = 0.0;
  CorvSMTrapezoidalShPtr m_SMTrapezoidal;
  CorvConfig m_startConfig;
  CorvConfig m_endConfig;
};
