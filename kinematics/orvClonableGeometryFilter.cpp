#include "kinematics/orvClonableGeometryFilter.h"

#include "foundation/lumCollectionAdapterGeometry.h"
#include "foundation/lumInstance.h"
#include "foundation/lumSceneExtractorGeometry.h"

bool CorvClonableGeometryFilter::accepts(const ClumObject& i_object) const
{
  if (!dynamic_cast<const ClumGeometry*>(&i_object) || dynamic_cast<const ClumSceneExtractorGeometry*>(&i_object) ||
      dynamic_cast<const ClumInstance*>(&i_object))
    return false;
  const auto* adapter = dynamic_cast<const ClumCollectionAdapterGeometry*>(&i_object);
  return !adapter || !adapter->scene();
}

ClumObjectFilterShPtr CorvClonableGeometryFilter::clone() const
{
  return ClumObjectFilterShPtr(new CorvClonableGeometryFilter(*this));
}
