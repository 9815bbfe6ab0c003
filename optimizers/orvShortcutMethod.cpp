#include "optimizers/orvShortcutMethod.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"

LUM_DESCRIBE(CorvShortcutMethod)
{
}

namespace
{
/// The number of the bisecting algorithm among those of the collision validator of direct paths.
constexpr int BISECTING_ALGORITHM = 2;
} // namespace

CorvShortcutMethod::~CorvShortcutMethod() = default;

ClumParameterMapConstShPtr CorvShortcutMethod::validationParameters(const ClumParameterMapConstShPtr& i_parameters)
{
  static const ClumStringKey s_algorithmKey("orvane.core.validator.dp.collision.algorithm");
  const ClumParameterMapShPtr parameters = ClumParameterMap::createWithBase(i_parameters);
  parameters->setInt(s_algorithmKey, BISECTING_ALGORITHM);
  return parameters;
}
