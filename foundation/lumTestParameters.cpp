#include "foundation/lumTestParameters.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumStamp.h"

#include <cmath>

LUM_DESCRIBE(ClumTestParameters)
{
  i_class.creates("()", &Self::create);
  i_class.property<bool>("activation", &Self::activation, &Self::activation);
  i_class.property<bool>("toleranceActivation", &Self::toleranceActivation, &Self::toleranceActivation);
  i_class.property<double>("tolerance", &Self::tolerance, &Self::tolerance);
  i_class.property<double>("precision", &Self::precision, &Self::precision);
  i_class.property<double>("penetration", &Self::penetration, &Self::penetration);
}

ClumTestParameters::ClumTestParameters() : m_stamp(lumNextStamp())
{
}

ClumTestParameters::ClumTestParameters(const ClumTestParameters& i_other)
  : ClumMutableCodable(i_other), m_activation(i_other.m_activation),
    m_toleranceActivation(i_other.m_toleranceActivation), m_tolerance(i_other.m_tolerance),
    m_precision(i_other.m_precision), m_penetration(i_other.m_penetration), m_stamp(lumNextStamp())
{
}

ClumTestParameters::~ClumTestParameters() = default;

ClumTestParametersShPtr ClumTestParameters::create()
{
  return lumCreate<ClumTestParameters>();
}

ClumTestParametersShPtr ClumTestParameters::createCopy(const ClumTestParametersConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumTestParametersShPtr ClumTestParameters::clone() const
{
  return createCopy(self());
}

lmStatus ClumTestParameters::init(const ClumTestParametersWkPtr& i_weakPtr)
{
  return ClumMutableCodable::init(i_weakPtr);
}

template <class T>
void ClumTestParameters::set(const char* i_name, T& io_field, T i_value)
{
  if (i_value == io_field)
    return;
  notifyPropertyWillChange(i_name);
  io_field = i_value;
  m_stamp = lumNextStamp();
  notifyPropertyDidChange(i_name);
}

void ClumTestParameters::activation(bool i_activation)
{
  set("activation", m_activation, i_activation);
}

void ClumTestParameters::toleranceActivation(bool i_activation)
{
  set("toleranceActivation", m_toleranceActivation, i_activation);
}

void ClumTestParameters::tolerance(double i_tolerance)
{
  set("tolerance", m_tolerance, i_tolerance);
}

void ClumTestParameters::precision(double i_precision)
{
  set("precision", m_precision, i_precision);
}

void ClumTestParameters::penetration(double i_penetration)
{
  set("penetration", m_penetration, i_penetration);
}

bool ClumTestParameters::hasSameValues(const ClumTestParameters& i_other) const
{
  return m_activation == i_other.m_activation && m_toleranceActivation == i_other.m_toleranceActivation &&
         m_tolerance == i_other.m_tolerance && m_precision == i_other.m_precision &&
         m_penetration == i_other.m_penetration;
}

void ClumTestParameters::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumMutableCodable::encodeWithCoder(i_coder);
  i_coder->encodeBool(m_activation, "activation");
  i_coder->encodeBool(m_toleranceActivation, "toleranceActivation");
  i_coder->encodeDouble(m_tolerance, "tolerance");
  i_coder->encodeDouble(m_precision, "precision");
  i_coder->encodeDouble(m_penetration, "penetration");
}

lmStatus ClumTestParameters::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_activation = i_coder->decodeBool("activation");
  m_toleranceActivation = i_coder->decodeBool("toleranceActivation");
  m_tolerance = i_coder->decodeDouble("tolerance");
  m_precision = i_coder->decodeDouble("precision");
  m_penetration = i_coder->decodeDouble("penetration");
  return std::isfinite(m_tolerance + m_precision + m_penetration) ? status : lmStatus(lmStatus::FAILURE);
}
