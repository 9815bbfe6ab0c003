#include "paths/orvPathValues.h"

#include "foundation/lumAssert.h"
#include "kinematics/orvConfigSpace.h"

void orvWriteAllValues(CorvConfig& io_cfg, const double* i_values, unsigned int i_count)
{
  if (!io_cfg.space()->hasPassiveDofs())
  {
    LUM_ASSERT_SUCCESS(io_cfg.setDofValues(i_values, i_count));
    return;
  }
  // Passive dofs can be written only while the configuration does not look after itself, and then without a notice.
  const bool wasEnabled = io_cfg.isSelfValidationEnabled();
  io_cfg.isSelfValidationEnabled(false);
  LUM_ASSERT_SUCCESS(io_cfg.setDofValues(i_values, i_count));
  io_cfg.isSelfValidationEnabled(wasEnabled);
  io_cfg.didChange();
}
