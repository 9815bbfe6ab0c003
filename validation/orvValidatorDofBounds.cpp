#include "validation/orvValidatorDofBounds.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "paths/orvDirectPath.h"

#include <algorithm>
#include <cmath>

LUM_DESCRIBE(CorvValidatorDofBounds)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space, double i_minValue, double i_maxValue)", &Self::create);
}

const std::string CorvValidatorDofBounds::DEFAULT_NAME("orvane.core.validator-dof-bounds");

CorvValidatorDofBounds::CorvValidatorDofBounds(const CorvConfigSpaceShPtr& i_space, double i_minValue,
                                               double i_maxValue)
  : CorvConfigValidator(i_space, DEFAULT_NAME), m_minValue(i_minValue), m_maxValue(i_maxValue)
{
}

CorvValidatorDofBounds::~CorvValidatorDofBounds() = default;

lmStatus CorvValidatorDofBounds::init(const CorvValidatorDofBoundsWkPtr& i_weakPtr)
{
  return CorvConfigValidator::init(i_weakPtr);
}

CorvValidatorDofBoundsShPtr CorvValidatorDofBounds::create(const CorvConfigSpaceShPtr& i_space, double i_minValue,
                                                           double i_maxValue)
{
  return lumCreate<CorvValidatorDofBounds>(i_space, i_minValue, i_maxValue);
}

CorvValidatorDofBoundsShPtr CorvValidatorDofBounds::createCopy(const CorvValidatorDofBoundsConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorDofBounds::clone() const
{
  return createCopy(self());
}

void CorvValidatorDofBounds::minValue(double i_value)
{
  if (i_value == m_minValue)
    return;
  m_minValue = i_value;
  didChange();
}

void CorvValidatorDofBounds::maxValue(double i_value)
{
  if (i_value == m_maxValue)
    return;
  m_maxValue = i_value;
  didChange();
}

bool CorvValidatorDofBounds::doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr&,
                                              const CorvValidationReportConstShPtr&, CorvValidationReportShPtr&) const
{
  const double value = i_cfg.dofValue(0);
  return m_minValue <= value && value <= m_maxValue;
}

lmStatus CorvValidatorDofBounds::validMotion(const CorvDirectPath& i_dp, double i_param, const CorvConfig& i_cfg,
                                             CorvAbstractPath::EDirection i_direction,
                                             const ClumParameterMapConstShPtr&, double& o_bound, bool& o_exact) const
{
  if (i_direction != CorvAbstractPath::FORWARD && i_direction != CorvAbstractPath::BACKWARD)
  {
    LUM_ASSERT(false);
    return -1;
  }
  const CorvConfigSpace* space = unwrappedSpace();
  const CorvConfigSpaceShPtr pathSpace = i_dp.configSpace();
  unsigned int rank = 0;
  if (!space || !pathSpace || pathSpace->getFirstDofRankOfSubspace(*space, rank).failed())
    return -1;
  const double end = i_direction == CorvAbstractPath::FORWARD ? i_dp.length() : 0.0;
  std::vector<double> maxDofSpeeds;
  i_dp.maxAbsoluteDerivative(i_dp.publicToPrivateDistance(i_param), i_dp.publicToPrivateDistance(end), maxDofSpeeds);
  CorvConfig maxDofSpeedsCfg(pathSpace);
  maxDofSpeedsCfg.isSelfValidationEnabled(false);
  LUM_ASSERT_SUCCESS(maxDofSpeedsCfg.setDofValues(maxDofSpeeds));
  const double speed = maxDofSpeeds.size() == pathSpace->size() ? maxDofSpeedsCfg.dofValue(rank) : -1.0;
  if (!(speed >= 0.0))
    return -1;
  // Inside a walk the configuration shows this dof alone.
  const bool isRestricted = i_cfg.space() && &i_cfg.space()->unwrapped() == space;
  const double value = i_cfg.dofValue(isRestricted ? 0 : rank);
  const double margin = std::max(0.0, std::min(value - m_minValue, m_maxValue - value));
  const double rest = std::fabs(end - i_param);
  const bool staysInside = speed * rest <= margin;
  o_bound = staysInside ? rest : std::min(rest, margin / speed * (1.0 - 1e-12));
  o_exact = staysInside;
  return lmStatus();
}

void CorvValidatorDofBounds::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvConfigValidator::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_minValue, "minValue");
  i_coder->encodeDouble(m_maxValue, "maxValue");
}

lmStatus CorvValidatorDofBounds::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvConfigValidator::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_minValue = i_coder->decodeDouble("minValue");
  m_maxValue = i_coder->decodeDouble("maxValue");
  return lmStatus();
}
