#pragma once

#include "foundation/lumObjectFilter.h"
#include "kinematics/handles.h"

/// Names the geometries that a copy shares with its original.
///
/// These are all geometries but for those that exist on behalf of one scene or of one other geometry: extractor
/// geometries, instances, and adapters of collections that stand in a scene.
class LUM_API CorvClonableGeometryFilter : public ClumObjectFilter
{
public:
  bool accepts(const ClumObject& i_object) const override;
  ClumObjectFilterShPtr clone() const override;
};
