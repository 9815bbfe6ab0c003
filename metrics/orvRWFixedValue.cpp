#include "metrics/orvRWFixedValue.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "metrics/orvRDGaussian.h"

LUM_DESCRIBE(CorvRWFixedValue)
{
  i_class.creates("(double i_fixedValue)", &Self::create);
}

CorvRWFixedValue::CorvRWFixedValue(double i_fixedValue)
  : CorvRandomWalk(CorvRDGaussian::create()), m_fixedValue(i_fixedValue)
{
}

CorvRWFixedValue::~CorvRWFixedValue() = default;

lmStatus CorvRWFixedValue::init(const CorvRWFixedValueWkPtr& i_weakPtr)
{
  return CorvRandomWalk::init(i_weakPtr);
}

CorvRWFixedValueConstShPtr CorvRWFixedValue::create(double i_fixedValue)
{
  return lumCreate<CorvRWFixedValue>(i_fixedValue);
}

CorvRWFixedValueConstShPtr CorvRWFixedValue::createCopy(const CorvRWFixedValueConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvRandomWalkConstShPtr CorvRWFixedValue::clone() const
{
  return createCopy(self());
}

void CorvRWFixedValue::step(double, CorvConfig& io_cfg) const
{
  if (io_cfg.size() > 0)
    io_cfg.dofValue(0, m_fixedValue);
}

void CorvRWFixedValue::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvRandomWalk::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_fixedValue, "fixedValue");
}

lmStatus CorvRWFixedValue::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvRandomWalk::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_fixedValue = i_coder->decodeDouble("fixedValue");
  return lmStatus();
}
