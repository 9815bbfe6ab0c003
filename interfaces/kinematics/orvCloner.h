#pragma once

#include "foundation/lumCloner.h"
#include "kinematics/handles.h"

/// The cloner of devices and config spaces: geometries are shared by original and copy, but for those that belong to a
/// scene's inner working (see `CorvClonableGeometryFilter`).
class LUM_API CorvCloner : public ClumCloner
{
  LUM_UNREFLECTED(CorvCloner, ClumCloner);

public:
  ~CorvCloner() override = default;
  static CorvClonerShPtr create();

  ClumCodableShPtr decodeObject(const std::string& i_key) override;

protected:
  CorvCloner() = default;
  lmStatus init(const CorvClonerWkPtr& i_weakPtr);
};
