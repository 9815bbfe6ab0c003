#pragma once

#include "paths/orvSteeringMethod.h"

/// Steers each direct sub-space by its own steering method, one after the other, in their order.
class LUM_API CorvSMSequence : public CorvSteeringMethod
{
  LUM_CONCRETE(CorvSMSequence, CorvSteeringMethod);

public:
  ~CorvSMSequence() override;
  static CorvSMSequenceShPtr create();
  static CorvSMSequenceShPtr createCopy(const CorvSMSequenceConstShPtr& i_objectToCopy);
  CorvSteeringMethodShPtr clone() const override;

  /// @return a `CorvDPSequence`, or null if the configurations are of two spaces or some sub-space has no motion.
  CorvDirectPathShPtr makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const override;
  bool isOriented(const CorvConfigSpaceConstShPtr& i_space) const override;
  bool operator==(const CorvSteeringMethod& i_other) const override;

protected:
  CorvSMSequence() = default;
  CorvSMSequence(const CorvSMSequence&) = default;
  lmStatus init(const CorvSMSequenceWkPtr& i_weakPtr);
};
