#include "paths/orvSMLinearWithDiscreteEnds.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "metrics/orvMetricEuclidean.h"
#include "paths/orvDPLinear.h"
#include "paths/orvPathValues.h"

#include <cmath>

LUM_DESCRIBE(CorvSMLinearWithDiscreteEnds)
{
  i_class.creates("(double i_step, double i_offset)", &Self::create);
}

CorvSMLinearWithDiscreteEnds::CorvSMLinearWithDiscreteEnds(double i_step, double i_offset)
  : m_step(i_step), m_offset(i_offset)
{
}

CorvSMLinearWithDiscreteEnds::~CorvSMLinearWithDiscreteEnds() = default;

lmStatus CorvSMLinearWithDiscreteEnds::init(const CorvSMLinearWithDiscreteEndsWkPtr& i_weakPtr)
{
  metric(CorvMetricEuclidean::create());
  const lmStatus status = CorvSteeringMethod::init(i_weakPtr);
  if (status.failed() || isStepUsable())
    return status;
  ClumLogManager::addError("CorvSMLinearWithDiscreteEnds must have positive step.");
  return lmStatus(lmStatus::FAILURE);
}

CorvSMLinearWithDiscreteEndsShPtr CorvSMLinearWithDiscreteEnds::create(double i_step, double i_offset)
{
  return lumCreate<CorvSMLinearWithDiscreteEnds>(i_step, i_offset);
}

CorvSMLinearWithDiscreteEndsShPtr
CorvSMLinearWithDiscreteEnds::createCopy(const CorvSMLinearWithDiscreteEndsConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvSteeringMethodShPtr CorvSMLinearWithDiscreteEnds::clone() const
{
  return createCopy(self());
}

bool CorvSMLinearWithDiscreteEnds::isStepUsable() const
{
  return m_step >= 0.0 && std::isfinite(m_step) && std::isfinite(m_offset);
}

CorvConfig CorvSMLinearWithDiscreteEnds::rounded(const CorvConfig& i_cfg) const
{
  CorvConfig result(i_cfg);
  if (m_step == 0.0 || !i_cfg.space())
    return result;
  std::vector<double> values = i_cfg.dofValues();
  for (double& value : values)
    value = std::floor((value - m_offset) / m_step + 0.5) * m_step + m_offset;
  orvWriteAllValues(result, values.data(), static_cast<unsigned int>(values.size()));
  return result;
}

CorvDirectPathShPtr CorvSMLinearWithDiscreteEnds::makeDirectPath(const CorvConfig& i_start,
                                                                 const CorvConfig& i_end) const
{
  return CorvDPLinear::create(rounded(i_start), rounded(i_end), self());
}

bool CorvSMLinearWithDiscreteEnds::isOriented(const CorvConfigSpaceConstShPtr&) const
{
  return false;
}

bool CorvSMLinearWithDiscreteEnds::isConservative(const CorvConfigSpaceConstShPtr&) const
{
  return false;
}

bool CorvSMLinearWithDiscreteEnds::operator==(const CorvSteeringMethod& i_other) const
{
  const auto* other = dynamic_cast<const CorvSMLinearWithDiscreteEnds*>(&i_other);
  return other && m_step == other->m_step && m_offset == other->m_offset;
}

void CorvSMLinearWithDiscreteEnds::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvSteeringMethod::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_step, "step");
  i_coder->encodeDouble(m_offset, "offset");
}

lmStatus CorvSMLinearWithDiscreteEnds::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvSteeringMethod::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_step = i_coder->decodeDouble("step");
  m_offset = i_coder->decodeDouble("offset");
  return isStepUsable() ? lmStatus() : lmStatus(lmStatus::FAILURE);
}

bool CorvSMLinearWithDiscreteEnds::isThreadSafe(const CorvConfigSpaceShPtr&) const
{
  return true;
}
