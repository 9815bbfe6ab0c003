#include "kinematics/orvCSVoid.h"

#include "foundation/lumDescribe.h"
#include "metrics/orvMetricIntrinsinc.h"
#include "validation/orvValidatorSet.h"

LUM_DESCRIBE(CorvCSVoid)
{
  i_class.creates("(const std::string& i_type)", &Self::create);
}

CorvCSVoidShPtr CorvCSVoid::create(const std::string& i_type)
{
  return lumCreate<CorvCSVoid>(i_type);
}

CorvCSVoidShPtr CorvCSVoid::createCopy(const CorvCSVoidConstShPtr& i_objectToCopy)
{
  return boost::dynamic_pointer_cast<CorvCSVoid>(CorvConfigSpace::createCopy(i_objectToCopy));
}

const CorvCSVoidShPtr& CorvCSVoid::nullSpace()
{
  static const CorvCSVoidShPtr s_nullSpace = create();
  return s_nullSpace;
}

CorvCSVoid::CorvCSVoid(const std::string& i_type) : CorvConfigSpace(i_type)
{
}

CorvCSVoid::~CorvCSVoid() = default;

lmStatus CorvCSVoid::init(const CorvCSVoidWkPtr& i_weakPtr)
{
  return CorvConfigSpace::init(i_weakPtr);
}

unsigned int CorvCSVoid::size() const
{
  return 0;
}

bool CorvCSVoid::operator==(const CorvConfigSpace& i_other) const
{
  return dynamic_cast<const CorvCSVoid*>(&i_other) && CorvConfigSpace::operator==(i_other);
}

CorvValidatorSetShPtr CorvCSVoid::makeValidatorSet() const
{
  return CorvValidatorSet::emptySet();
}

// One metric for all void spaces.
const CorvMetricShPtr& CorvCSVoid::spaceMetric() const
{
  static const CorvMetricShPtr s_metric = CorvMetricIntrinsinc::create();
  return s_metric;
}
