#pragma once

#include "paths/orvSteeringMethod.h"

/// Steers a car in the plane: three dofs x, y and theta of a larger space, and a smallest turning circle.
///
/// A car heads along (cos theta, sin theta). All other dofs must be the same at both ends of a motion.
class LUM_API CorvSMCurve : public CorvSteeringMethod
{
  LUM_ABSTRACT(CorvSMCurve, CorvSteeringMethod);

public:
  ~CorvSMCurve() override;

  /// The radius of the smallest turning circle. A radius that is not above 0 makes every motion fail.
  virtual void steeringRadius(double i_radius);
  virtual double steeringRadius() const;
  virtual void dofX(const CorvDofConstShPtr& i_dof);
  virtual CorvDofConstShPtr dofX() const;
  virtual void dofY(const CorvDofConstShPtr& i_dof);
  virtual CorvDofConstShPtr dofY() const;
  virtual void dofTheta(const CorvDofConstShPtr& i_dof);
  virtual CorvDofConstShPtr dofTheta() const;

  /// The same radius and the very same dofs.
  bool operator==(const CorvSteeringMethod& i_other) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvSMCurve() = default;
  CorvSMCurve(double i_steeringRadius, const CorvDofConstShPtr& i_xDof, const CorvDofConstShPtr& i_yDof,
              const CorvDofConstShPtr& i_thetaDof);
  CorvSMCurve(const CorvSMCurve&) = default;
  lmStatus init(const CorvSMCurveWkPtr& i_weakPtr);

private:
  double m_steeringRadius = 0.0;
  CorvDofConstShPtr m_xDof;
  CorvDofConstShPtr m_yDof;
  CorvDofConstShPtr m_thetaDof;
};
