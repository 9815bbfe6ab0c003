#pragma once

#include "kinematics/orvConfigSpace.h"

/// The space without dofs. Nothing can be added to its sets, and every distance in it is 0.
class LUM_API CorvCSVoid : public CorvConfigSpace
{
  LUM_CONCRETE(CorvCSVoid, CorvConfigSpace);

public:
  ~CorvCSVoid() override;
  static CorvCSVoidShPtr create(const std::string& i_type = "orvane.core.config-space.void");
  static CorvCSVoidShPtr createCopy(const CorvCSVoidConstShPtr& i_objectToCopy);
  /// The one void space that stands wherever a space without dofs is needed.
  static const CorvCSVoidShPtr& nullSpace();

  unsigned int size() const override;
  bool operator==(const CorvConfigSpace& i_other) const override;
  CorvValidatorSetShPtr makeValidatorSet() const override;

protected:
  CorvCSVoid() = default;
  explicit CorvCSVoid(const std::string& i_type);
  lmStatus init(const CorvCSVoidWkPtr& i_weakPtr);

  const CorvMetricShPtr& spaceMetric() const override;
};
