#pragma once

#include "validation/orvValidationReport.h"

/// With which penetration a path was tested for collision.
class LUM_API CorvReportPathCollision : public CorvValidationReport
{
  LUM_CONCRETE(CorvReportPathCollision, CorvValidationReport);

public:
  ~CorvReportPathCollision() override;
  static CorvReportPathCollisionShPtr create();
  static CorvReportPathCollisionShPtr createCopy(const CorvReportPathCollisionConstShPtr& i_objectToCopy);
  CorvValidationReportShPtr clone() const override;

  double penetration() const { return m_penetration; }
  void penetration(double i_penetration);

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvReportPathCollision() = default;
  CorvReportPathCollision(const CorvReportPathCollision&) = default;
  lmStatus init(const CorvReportPathCollisionWkPtr& i_weakPtr);

private:
  double m_penetration = 0.0;
};
