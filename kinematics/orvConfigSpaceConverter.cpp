#include "kinematics/orvConfigSpaceConverter.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"

LUM_DESCRIBE(CorvConfigSpaceConverter)
{
}

CorvConfigSpaceConverter::CorvConfigSpaceConverter(const std::set<std::string>& i_supportedTypes)
  : m_supportedTypes(i_supportedTypes)
{
}

CorvConfigSpaceConverter::~CorvConfigSpaceConverter() = default;

lmStatus CorvConfigSpaceConverter::init(const CorvConfigSpaceConverterWkPtr& i_weakPtr)
{
  return ClumObject::init(i_weakPtr);
}

lmStatus CorvConfigSpaceConverter::convert(const CorvConfig& i_from, CorvConfig& o_to) const
{
  const auto isServed = [this](const CorvConfigSpaceShPtr& i_space)
  { return i_space && m_supportedTypes.count(i_space->type()) != 0; };
  return isServed(i_from.space()) && isServed(o_to.space()) ? doConvert(i_from, o_to) : lmStatus(-1);
}
