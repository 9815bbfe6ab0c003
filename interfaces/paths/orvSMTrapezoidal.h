#pragma once

#include "paths/orvSteeringMethod.h"

#include <vector>

/// Moves all dofs along a straight line, as fast as the largest velocity and acceleration of each allow.
///
/// The limits are one value a dof, in its unit by time; an infinite one does not limit.
class LUM_API CorvSMTrapezoidal : public CorvSteeringMethod
{
  LUM_CONCRETE(CorvSMTrapezoidal, CorvSteeringMethod);

public:
  ~CorvSMTrapezoidal() override;
  static CorvSMTrapezoidalShPtr create(const std::vector<double>& i_maxVelocities,
                                       const std::vector<double>& i_maxAccelerations);
  static CorvSMTrapezoidalShPtr createCopy(const CorvSMTrapezoidalConstShPtr& i_objectToCopy);
  CorvSteeringMethodShPtr clone() const override;

  const std::vector<double>& maxVelocities() const { return m_maxVelocities; }
  void maxVelocities(const std::vector<double>& i_velocities) { m_maxVelocities = i_velocities; }
  const std::vector<double>& maxAccelerations() const { return m_maxAccelerations; }
  void maxAccelerations(const std::vector<double>& i_accelerations) { m_maxAccelerations = i_accelerations; }

  /// @return null as `CorvDPTrapezoidal::create`.
  CorvDirectPathShPtr makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const override;
  bool isOriented(const CorvConfigSpaceConstShPtr& i_space) const override;
  /// Equal limits.
  bool operator==(const CorvSteeringMethod& i_other) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvSMTrapezoidal() = default;
  CorvSMTrapezoidal(const std::vector<double>& i_maxVelocities, const std::vector<double>& i_maxAccelerations);
  CorvSMTrapezoidal(const CorvSMTrapezoidal&) = default;
  lmStatus init(const CorvSMTrapezoidalWkPtr& i_weakPtr);

private:
  std::vector<double> m_maxVelocities;
  std::vector<double> m_maxAccelerations;
};
