#include "paths/orvDPSolidMotion.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvDof.h"
#include "paths/orvPathVisitor.h"

LUM_DESCRIBE(CorvDPSolidMotion)
{
}

CorvDPSolidMotion::CorvDPSolidMotion(const CorvConfig& i_start, const CorvConfig& i_end,
                                     const CorvSteeringMethodShPtr& i_steeringMethod)
  : CorvDirectPath(i_start, i_end, i_steeringMethod)
{
}

CorvDPSolidMotion::~CorvDPSolidMotion() = default;

lmStatus CorvDPSolidMotion::init(const CorvDPSolidMotionWkPtr& i_weakPtr)
{
  const lmStatus status = CorvDirectPath::init(i_weakPtr);
  unsigned int rank = 0;
  return status.failed() ? status : getRankOfSolid(*privateStart().space(), rank);
}

lmStatus CorvDPSolidMotion::getRankOfSolid(const CorvConfigSpace& i_space, unsigned int& o_rank)
{
  unsigned int count = 0;
  for (unsigned int i = 0; i < i_space.size(); ++i)
  {
    const CorvDofShPtr dof = i_space.dof(i);
    const CorvConfigSpaceShPtr group = dof->parent();
    if (!group || group->type() != "orvane.core.config-space.free-flyer" || group->size() != 6 || group->dof(0) != dof)
      continue;
    o_rank = i;
    ++count;
  }
  return lmStatus(count == 1 ? lmStatus::SUCCESS : lmStatus::FAILURE);
}

void CorvDPSolidMotion::describe(const CorvPathVisitorShPtr& i_visitor) const
{
  if (i_visitor)
    i_visitor->executeSlerpDirectPath(self());
}

lmStatus CorvDPSolidMotion::getFrameAtDistance(double i_distance, ClumMat4& o_frame) const
{
  CorvConfig cfg(configSpace());
  unsigned int rank = 0;
  lmStatus status = getConfigAtDistance(i_distance, cfg);
  if (status.succeeded())
    status = getRankOfSolid(*cfg.space(), rank);
  if (status.succeeded())
    ClumGeometryUtilities::bryantToMatrix(cfg.beginPtr() + rank, o_frame);
  return status;
}
