#include "validation/orvValidatorCfgComposite.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "paths/orvDirectPath.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>
#include <limits>

LUM_DESCRIBE(CorvValidatorCfgComposite)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space)", &Self::create);
}

const std::string CorvValidatorCfgComposite::DEFAULT_NAME("orvane.core.validator-cfg-composite");

namespace
{
/// True if the space and all below it have no validators but composites.
bool canFlattenValidators(const CorvConfigSpace& i_space)
{
  if (i_space.countSubspaces() == 0)
    return i_space.size() <= 1;
  const CorvValidatorSetShPtr& validators = i_space.configValidators();
  const bool isTransparent =
    validators->count() == 0 ||
    (validators->count() == 1 && boost::dynamic_pointer_cast<CorvValidatorCfgComposite>(validators->at(0)));
  for (unsigned int i = 0; isTransparent && i < i_space.countSubspaces(); ++i)
    if (!canFlattenValidators(*i_space.subspace(i)))
      return false;
  return isTransparent;
}

/// A walk of a configuration over the parts of its space: its dofs or its direct sub-spaces, not those of a wrapper.
class CCompositeWalk
{
public:
  CCompositeWalk(const CorvConfig& i_cfg, bool i_walksDofs) : m_cfg(i_cfg), m_walksDofs(i_walksDofs)
  {
    const CorvConfigSpaceShPtr space = i_cfg.configSpace();
    if (space && &space->unwrapped() != space.get())
      m_isUnwrapped = i_cfg.pushRestriction(space->subspace(0)).succeeded();
    m_isWalking = (m_walksDofs ? i_cfg.walkDofs() : i_cfg.pushSpace()).succeeded();
  }
  ~CCompositeWalk()
  {
    if (m_isWalking)
      m_walksDofs ? m_cfg.endWalk() : m_cfg.popSpace();
    if (m_isUnwrapped)
      m_cfg.popRestriction();
  }
  CCompositeWalk(const CCompositeWalk&) = delete;
  CCompositeWalk& operator=(const CCompositeWalk&) = delete;

  bool isWalking() const { return m_isWalking; }
  bool next() const { return (m_walksDofs ? m_cfg.nextDof() : m_cfg.nextSubspace()).succeeded(); }

private:
  const CorvConfig& m_cfg;
  bool m_walksDofs;
  bool m_isUnwrapped = false;
  bool m_isWalking = false;
};
} // namespace

CorvValidatorCfgComposite::CorvValidatorCfgComposite(const CorvConfigSpaceShPtr& i_space)
  : CorvConfigValidator(i_space, DEFAULT_NAME)
{
}

CorvValidatorCfgComposite::~CorvValidatorCfgComposite() = default;

lmStatus CorvValidatorCfgComposite::init(const CorvValidatorCfgCompositeWkPtr& i_weakPtr)
{
  return CorvConfigValidator::init(i_weakPtr);
}

CorvValidatorCfgCompositeShPtr CorvValidatorCfgComposite::create(const CorvConfigSpaceShPtr& i_space)
{
  return lumCreate<CorvValidatorCfgComposite>(i_space);
}

CorvValidatorCfgCompositeShPtr
CorvValidatorCfgComposite::createCopy(const CorvValidatorCfgCompositeConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorCfgComposite::clone() const
{
  return createCopy(self());
}

bool CorvValidatorCfgComposite::canWalkDofs(const CorvConfigSpaceConstShPtr& i_space) const
{
  const CorvConfigSpace& space = i_space->unwrapped();
  if (m_cachedVersion == space.version() && m_cachedSpace.lock() == i_space)
    return m_canWalkDofs;
  m_canWalkDofs = canFlattenValidators(space);
  m_cachedVersion = space.version();
  m_cachedSpace = i_space;
  return m_canWalkDofs;
}

bool CorvValidatorCfgComposite::doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                                                 const CorvValidationReportConstShPtr&,
                                                 CorvValidationReportShPtr&) const
{
  const CCompositeWalk walk(i_cfg, canWalkDofs(i_cfg.configSpace()));
  if (!walk.isWalking())
    return true;
  bool isValid = true;
  do
    isValid = i_cfg.configSpace()->configValidators()->validate(i_cfg, i_params);
  while (isValid && walk.next());
  return isValid;
}

lmStatus CorvValidatorCfgComposite::validMotion(const CorvDirectPath& i_dp, double i_param, const CorvConfig& i_cfg,
                                                CorvAbstractPath::EDirection i_direction,
                                                const ClumParameterMapConstShPtr& i_params, double& o_bound,
                                                bool& o_exact) const
{
  double bound = std::numeric_limits<double>::infinity();
  bool isExact = true;
  lmStatus status;
  const CCompositeWalk walk(i_cfg, canWalkDofs(i_cfg.configSpace()));
  bool goesOn = walk.isWalking();
  while (goesOn && status.succeeded())
  {
    double subspaceBound = std::numeric_limits<double>::infinity();
    bool isSubspaceExact = true;
    status = i_cfg.configSpace()->configValidators()->validMotion(i_dp, i_param, i_cfg, i_direction, i_params,
                                                                  subspaceBound, isSubspaceExact);
    isExact = isExact && isSubspaceExact;
    bound = std::min(bound, subspaceBound);
    goesOn = walk.next();
  }
  if (status.failed())
    return status;
  o_bound = bound;
  o_exact = isExact;
  return status;
}
