#pragma once

#include "paths/orvSteeringMethod.h"

/// Moves a free-flying body straight, while it turns by the shortest rotation. Other dofs of the space go straight.
class LUM_API CorvSMSlerp : public CorvSteeringMethod
{
  LUM_CONCRETE(CorvSMSlerp, CorvSteeringMethod);

public:
  ~CorvSMSlerp() override;
  static CorvSMSlerpShPtr create();
  static CorvSMSlerpShPtr createCopy(const CorvSMSlerpConstShPtr& i_objectToCopy);
  CorvSteeringMethodShPtr clone() const override;

  /// @return null as `CorvDPSlerp::create`.
  CorvDirectPathShPtr makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const override;
  bool isOriented(const CorvConfigSpaceConstShPtr& i_space) const override;
  bool operator==(const CorvSteeringMethod& i_other) const override;

protected:
  CorvSMSlerp() = default;
  CorvSMSlerp(const CorvSMSlerp&) = default;
  lmStatus init(const CorvSMSlerpWkPtr& i_weakPtr);
};
