#include "validation/orvValidatorDPSampler.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "kinematics/orvConfig.h"
#include "paths/orvDirectPath.h"

#include <cmath>

LUM_DESCRIBE(CorvValidatorDPSampler)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space, const CorvValidatorConstShPtr& i_configValidator, "
                  "double i_samplingLength)",
                  &Self::create);
}

const std::string CorvValidatorDPSampler::DEFAULT_NAME("orvane.core.dp-sampler");

namespace
{
bool isSamplingLength(double i_length)
{
  return std::isfinite(i_length) && i_length > 0.0;
}
} // namespace

CorvValidatorDPSampler::CorvValidatorDPSampler(const CorvConfigSpaceShPtr& i_space,
                                               const CorvValidatorConstShPtr& i_configValidator,
                                               double i_samplingLength)
  : CorvValidator(i_space, DEFAULT_NAME), m_samplingLength(i_samplingLength), m_configValidator(i_configValidator)
{
}

CorvValidatorDPSampler::~CorvValidatorDPSampler() = default;

lmStatus CorvValidatorDPSampler::init(const CorvValidatorDPSamplerWkPtr& i_weakPtr)
{
  const lmStatus status = CorvValidator::init(i_weakPtr);
  return status.failed() || isSamplingLength(m_samplingLength) ? status : lmStatus(-1);
}

CorvValidatorDPSamplerShPtr CorvValidatorDPSampler::create(const CorvConfigSpaceShPtr& i_space,
                                                           const CorvValidatorConstShPtr& i_configValidator,
                                                           double i_samplingLength)
{
  return lumCreate<CorvValidatorDPSampler>(i_space, i_configValidator, i_samplingLength);
}

CorvValidatorDPSamplerShPtr CorvValidatorDPSampler::createCopy(const CorvValidatorDPSamplerConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorDPSampler::clone() const
{
  return createCopy(self());
}

lmStatus CorvValidatorDPSampler::samplingLength(double i_length)
{
  if (!isSamplingLength(i_length))
    return -1;
  m_samplingLength = i_length;
  return lmStatus();
}

bool CorvValidatorDPSampler::isSampleValid(const CorvConfig& i_config, const ClumParameterMapConstShPtr& i_params) const
{
  return m_configValidator ? m_configValidator->validate(i_config, i_params) : i_config.validate(i_params);
}

bool CorvValidatorDPSampler::doValidateDirectPath(const CorvDirectPath& i_path,
                                                  const ClumParameterMapConstShPtr& i_params,
                                                  const CorvValidationReportConstShPtr&,
                                                  CorvValidationReportShPtr&) const
{
  const double length = i_path.length();
  if (!std::isfinite(length))
    return false;
  CorvConfig config(i_path.configSpace());
  // Counted, so that a step too small to be seen beside the distance does not stand still.
  double d = 0.0;
  for (double count = 1.0; d < length; ++count)
  {
    if (i_path.getConfigAtDistance(d, config).failed())
    {
      ClumLogManager::addError(__FILE__, __LINE__,
                               "Assertion failed: ( ((unsigned int)0) == (i_path.getConfigAtDistance(d, "
                               "config)).code() )");
      return false;
    }
    if (!isSampleValid(config, i_params))
      return false;
    d = count * m_samplingLength;
  }
  CorvConfig end(i_path.configSpace());
  if (i_path.getConfigAtEnd(end).failed())
  {
    ClumLogManager::addError(__FILE__, __LINE__,
                             "Assertion failed: ( ((unsigned int)0) == (i_path.getConfigAtEnd(end)).code() )");
    return false;
  }
  return isSampleValid(end, i_params);
}

void CorvValidatorDPSampler::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvValidator::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_samplingLength, "samplingLength");
  i_coder->encodeObjectShPtr(m_configValidator, "configValidator");
}

lmStatus CorvValidatorDPSampler::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvValidator::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_samplingLength = i_coder->decodeDouble("samplingLength");
  m_configValidator = i_coder->decode<CorvValidator>("configValidator");
  return isSamplingLength(m_samplingLength) ? status : lmStatus(-1);
}
