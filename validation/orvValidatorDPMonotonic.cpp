#include "validation/orvValidatorDPMonotonic.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "paths/orvDirectPath.h"

LUM_DESCRIBE(CorvValidatorDPMonotonic)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space, unsigned int i_dofIndex, EEvolutionProfile i_profile)",
                  &Self::create);
  i_class.property<unsigned int>("dofIndex", &Self::dofIndex, &Self::dofIndex);
  i_class.property<Self::EEvolutionProfile>("evolutionProfile", &Self::evolutionProfile, &Self::evolutionProfile);
  i_class.enumeration("EEvolutionProfile", "INCREASING = 0, DECREASING = 1, NOT_INCREASING = 2, NOT_DECREASING = 4");
}

const std::string CorvValidatorDPMonotonic::DEFAULT_NAME("orvane.core.dp-monotonic");

CorvValidatorDPMonotonic::CorvValidatorDPMonotonic(const CorvConfigSpaceShPtr& i_space, unsigned int i_dofIndex,
                                                   EEvolutionProfile i_profile)
  : CorvValidator(i_space, DEFAULT_NAME), m_dofIndex(i_dofIndex), m_evolutionProfile(i_profile)
{
}

CorvValidatorDPMonotonic::~CorvValidatorDPMonotonic() = default;

lmStatus CorvValidatorDPMonotonic::init(const CorvValidatorDPMonotonicWkPtr& i_weakPtr)
{
  return CorvValidator::init(i_weakPtr);
}

CorvValidatorDPMonotonicShPtr CorvValidatorDPMonotonic::create(const CorvConfigSpaceShPtr& i_space,
                                                               unsigned int i_dofIndex, EEvolutionProfile i_profile)
{
  return lumCreate<CorvValidatorDPMonotonic>(i_space, i_dofIndex, i_profile);
}

CorvValidatorDPMonotonicShPtr
CorvValidatorDPMonotonic::createCopy(const CorvValidatorDPMonotonicConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorDPMonotonic::clone() const
{
  return createCopy(self());
}

void CorvValidatorDPMonotonic::dofIndex(unsigned int i_index)
{
  if (i_index == m_dofIndex)
    return;
  notifyPropertyWillChange("dofIndex");
  m_dofIndex = i_index;
  didChange();
  notifyPropertyDidChange("dofIndex");
}

void CorvValidatorDPMonotonic::evolutionProfile(EEvolutionProfile i_profile)
{
  if (i_profile == m_evolutionProfile)
    return;
  notifyPropertyWillChange("evolutionProfile");
  m_evolutionProfile = i_profile;
  didChange();
  notifyPropertyDidChange("evolutionProfile");
}

bool CorvValidatorDPMonotonic::doValidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr&,
                                                    const CorvValidationReportConstShPtr&,
                                                    CorvValidationReportShPtr&) const
{
  const CorvConfig& start = i_dp.startConfiguration();
  const CorvConfig& end = i_dp.endConfiguration();
  if (m_dofIndex >= start.size() || m_dofIndex >= end.size())
    return false;
  const double s = start.dofValue(m_dofIndex), e = end.dofValue(m_dofIndex);
  const int profile = m_evolutionProfile;
  if (profile == INCREASING)
    return e > s;
  if (profile & NOT_DECREASING)
    return e >= s;
  if (profile == DECREASING)
    return s > e;
  if ((profile & 3) == 3)
    return s >= e;
  LUM_ASSERT(false);
  return false;
}

void CorvValidatorDPMonotonic::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvValidator::encodeWithCoder(i_coder);
  i_coder->encodeUnsignedInt(m_dofIndex, "dofIndex");
  i_coder->encodeInt(m_evolutionProfile, "evolutionProfile");
}

lmStatus CorvValidatorDPMonotonic::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvValidator::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_dofIndex = i_coder->decodeUnsignedInt("dofIndex");
  const int profile = i_coder->decodeInt("evolutionProfile");
  if (profile < 0 || profile > 7)
    return -1;
  m_evolutionProfile = static_cast<EEvolutionProfile>(profile);
  return status;
}
