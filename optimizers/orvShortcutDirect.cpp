#include "optimizers/orvShortcutDirect.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "paths/orvSteeringMethod.h"

LUM_DESCRIBE(CorvShortcutDirect)
{
  i_class.creates("()", &Self::create);
}

CorvShortcutDirect::~CorvShortcutDirect() = default;

CorvShortcutDirectShPtr CorvShortcutDirect::create()
{
  return lumCreate<CorvShortcutDirect>();
}

lmStatus CorvShortcutDirect::doPlan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>&,
                                    const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path)
{
  const unsigned int count = i_inputPath->countDirectPaths();
  const CorvSteeringMethodShPtr steering = i_inputPath->configSpace()->steeringMethod();
  if (count < 2 || !steering)
    return lmStatus(-1);
  const CorvDirectPathShPtr direct =
    steering->makeDirectPath(i_inputPath->configuration(0), i_inputPath->configuration(count));
  if (!direct || !direct->validate(validationParameters(i_parameters)))
    return lmStatus(-1);
  o_path = CorvPath::createWithDirectPath(direct);
  return o_path ? lmStatus() : lmStatus(-1);
}
