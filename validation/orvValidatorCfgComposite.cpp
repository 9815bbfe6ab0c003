#include "validation/orvValidatorCfgComposite.h"

#include "foundation/lumDescribe.h"
#include "paths/orvDirectPath.h"
#include "validation/orvSubspaceWalk.h"

#include <algorithm>
#include <limits>

LUM_DESCRIBE(CorvValidatorCfgComposite)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space)", &Self::create);
}

const std::string CorvValidatorCfgComposite::DEFAULT_NAME("orvane.core.validator-cfg-composite");

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

bool CorvValidatorCfgComposite::canWalkDofs(const CorvConfigSpaceShPtr& i_space) const
{
  const unsigned int version = i_space->version();
  if (version != m_cachedVersion || m_cachedSpace.lock() != i_space)
  {
    m_canWalkDofs =
      orvSubspaceWalk::canFlatten<CorvValidatorCfgComposite>(*i_space, &CorvConfigSpace::configValidators);
    m_cachedVersion = version;
    m_cachedSpace = i_space;
  }
  return m_canWalkDofs;
}

bool CorvValidatorCfgComposite::doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                                                 const CorvValidationReportConstShPtr&,
                                                 CorvValidationReportShPtr&) const
{
  return orvSubspaceWalk::forEachPart(i_cfg, canWalkDofs(i_cfg.space()),
                                      [&] { return i_cfg.space()->configValidators()->validate(i_cfg, i_params); });
}

lmStatus CorvValidatorCfgComposite::validMotion(const CorvDirectPath& i_dp, double i_param, const CorvConfig& i_cfg,
                                                CorvAbstractPath::EDirection i_direction,
                                                const ClumParameterMapConstShPtr& i_params, double& o_bound,
                                                bool& o_exact) const
{
  double bound = std::numeric_limits<double>::infinity();
  bool isExact = true;
  lmStatus status;
  const auto boundPart = [&]
  {
    double partBound = std::numeric_limits<double>::infinity();
    bool isPartExact = true;
    status = i_cfg.space()->configValidators()->validMotion(i_dp, i_param, i_cfg, i_direction, i_params, partBound,
                                                            isPartExact);
    isExact = isExact && isPartExact;
    bound = std::min(bound, partBound);
    return status.succeeded();
  };
  if (!orvSubspaceWalk::forEachPart(i_cfg, canWalkDofs(i_cfg.space()), boundPart))
    return status;
  o_bound = bound;
  o_exact = isExact;
  return status;
}
