#include "validation/orvValidatorDPTurnJump.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDof.h"
#include "paths/orvDirectPath.h"

#include <algorithm>
#include <cmath>

LUM_DESCRIBE(CorvValidatorDPTurnJump)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space, const std::string& i_name)", &Self::create);
}

const std::string CorvValidatorDPTurnJump::DEFAULT_NAME("orvane.next.dp-turn-jump");

namespace
{
/// Of path length, between two samples.
constexpr double TURN_JUMP_STEP = 30.0;
} // namespace

CorvValidatorDPTurnJump::CorvValidatorDPTurnJump(const CorvConfigSpaceShPtr& i_space, const std::string& i_name)
  : CorvValidator(i_space, i_name)
{
}

CorvValidatorDPTurnJump::~CorvValidatorDPTurnJump() = default;

lmStatus CorvValidatorDPTurnJump::init(const CorvValidatorDPTurnJumpWkPtr& i_weakPtr)
{
  return CorvValidator::init(i_weakPtr);
}

CorvValidatorDPTurnJumpShPtr CorvValidatorDPTurnJump::create(const CorvConfigSpaceShPtr& i_space,
                                                             const std::string& i_name)
{
  return lumCreate<CorvValidatorDPTurnJump>(i_space, i_name);
}

CorvValidatorDPTurnJumpShPtr
CorvValidatorDPTurnJump::createCopy(const CorvValidatorDPTurnJumpConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorDPTurnJump::clone() const
{
  return createCopy(self());
}

const std::vector<unsigned int>& CorvValidatorDPTurnJump::watchedDofs(const CorvConfigSpace& i_space) const
{
  if (m_watchedVersion == i_space.version())
    return m_watchedDofs;
  m_watchedDofs.clear();
  for (unsigned int rank = 0; i_space.hasComputedDofs() && rank < i_space.size(); ++rank)
  {
    const CorvDofShPtr dof = i_space.dof(rank);
    if (dof->isRevolute() && dof->isBounded() && i_space.isDofComputed(rank))
      m_watchedDofs.push_back(rank);
  }
  m_watchedVersion = i_space.version();
  return m_watchedDofs;
}

bool CorvValidatorDPTurnJump::doValidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr&,
                                                   const CorvValidationReportConstShPtr&,
                                                   CorvValidationReportShPtr&) const
{
  static const double s_limit = 1.5 * ClumGeometryUtilities::PI;
  const CorvConfigSpace* space = unwrappedSpace();
  if (!space || watchedDofs(*space).empty())
    return true;

  CorvConfig previous = i_dp.startConfiguration();
  CorvConfig config = previous;
  const double length = i_dp.length();
  if (!std::isfinite(length))
    return false;
  double distance = 0.0;
  do
  {
    distance = std::min(distance + TURN_JUMP_STEP, length);
    if (i_dp.getConfigAtDistance(distance, config).failed())
      return false;
    for (const unsigned int rank : m_watchedDofs)
      if (std::fabs(config.dofValue(rank) - previous.dofValue(rank)) >= s_limit)
        return false;
    previous = config;
  } while (distance < length);
  return true;
}
