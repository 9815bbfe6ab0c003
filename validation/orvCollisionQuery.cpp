#include "validation/orvCollisionQuery.h"

#include "foundation/lumParameterMap.h"

#include <cmath>

const ClumStringKey& CorvCollisionQuery::parameterKey()
{
  static const ClumStringKey s_key("orvane.core.validator.cfg.collision.query");
  return s_key;
}

const CorvCollisionQuery* CorvCollisionQuery::in(const ClumParameterMapConstShPtr& i_params, const CorvDevice* i_device)
{
  void* record = nullptr;
  if (!i_params || i_params->getPointer(parameterKey(), record).failed() || !record)
    return nullptr;
  const CorvCollisionQuery* query = static_cast<const CorvCollisionQuery*>(record);
  return query->device == i_device ? query : nullptr;
}

bool CorvCollisionQuery::hasSameThresholds(const CorvCollisionQuery& i_other) const
{
  if (distanceMode != i_other.distanceMode || thresholds.size() != i_other.thresholds.size())
    return false;
  if (distanceMode != 0 && (comparisonMode != i_other.comparisonMode || distanceModifier != i_other.distanceModifier))
    return false;
  for (std::size_t i = 0; i < thresholds.size(); ++i)
    if (thresholds[i] != i_other.thresholds[i] && !(std::isnan(thresholds[i]) && std::isnan(i_other.thresholds[i])))
      return false;
  return true;
}

bool CorvCollisionQuery::isSameQuestion(const CorvCollisionQuery& i_other) const
{
  return method == i_other.method && precision == i_other.precision && specificBody == i_other.specificBody &&
         pointsMode == i_other.pointsMode && testsSelfCollision == i_other.testsSelfCollision &&
         reportsMaxAllowableDistances == i_other.reportsMaxAllowableDistances &&
         hasToleranceModifier == i_other.hasToleranceModifier && toleranceModifier == i_other.toleranceModifier &&
         hasToleranceActivation == i_other.hasToleranceActivation &&
         toleranceActivation == i_other.toleranceActivation && device == i_other.device && slack == i_other.slack &&
         isExact == i_other.isExact && isBoundEnough == i_other.isBoundEnough &&
         isCapped == (i_other.isCapped || !i_other.needs.empty()) && hasSameThresholds(i_other);
}
