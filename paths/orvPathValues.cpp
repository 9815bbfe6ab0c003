#include "paths/orvPathValues.h"

#include "foundation/lumAssert.h"
#include "kinematics/orvConfigSpace.h"
#include "paths/orvDirectPath.h"

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

lmStatus orvConvertChildren(const CorvConfigSpace& i_from, const CorvConfigSpaceShPtr& i_to,
                            const std::vector<CorvDirectPathShPtr>& i_children,
                            std::vector<CorvDirectPathShPtr>& o_converted)
{
  if (!i_to)
    return lmStatus(lmStatus::FAILURE);
  o_converted.assign(i_children.size(), CorvDirectPathShPtr());
  for (unsigned int i = 0; i < i_children.size(); ++i)
  {
    if (!i_children[i])
      continue;
    std::vector<unsigned int> position;
    const lmStatus status = i_from.getPositionOfSubspace(i_children[i]->configSpace(), position);
    if (status.failed())
      return status;
    o_converted[i] = CorvDirectPath::createByConvertingToSpace(i_children[i], i_to->getSubspaceAtPosition(position));
    if (!o_converted[i])
      return lmStatus(lmStatus::FAILURE);
  }
  return lmStatus();
}
