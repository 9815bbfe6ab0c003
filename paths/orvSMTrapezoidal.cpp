#include "paths/orvSMTrapezoidal.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "paths/orvDPTrapezoidal.h"

LUM_DESCRIBE(CorvSMTrapezoidal)
{
  i_class.creates("(const std::vector<double>& i_maxVelocities, const std::vector<double>& i_maxAccelerations)",
                  &Self::create);
}

CorvSMTrapezoidal::CorvSMTrapezoidal(const std::vector<double>& i_maxVelocities,
                                     const std::vector<double>& i_maxAccelerations)
  : m_maxVelocities(i_maxVelocities), m_maxAccelerations(i_maxAccelerations)
{
}

CorvSMTrapezoidal::~CorvSMTrapezoidal() = default;

lmStatus CorvSMTrapezoidal::init(const CorvSMTrapezoidalWkPtr& i_weakPtr)
{
  return CorvSteeringMethod::init(i_weakPtr);
}

CorvSMTrapezoidalShPtr CorvSMTrapezoidal::create(const std::vector<double>& i_maxVelocities,
                                                 const std::vector<double>& i_maxAccelerations)
{
  return lumCreate<CorvSMTrapezoidal>(i_maxVelocities, i_maxAccelerations);
}

CorvSMTrapezoidalShPtr CorvSMTrapezoidal::createCopy(const CorvSMTrapezoidalConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvSteeringMethodShPtr CorvSMTrapezoidal::clone() const
{
  return createCopy(self());
}

CorvDirectPathShPtr CorvSMTrapezoidal::makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const
{
  return CorvDPTrapezoidal::create(i_start, i_end, self());
}

bool CorvSMTrapezoidal::isOriented(const CorvConfigSpaceConstShPtr&) const
{
  return false;
}

bool CorvSMTrapezoidal::operator==(const CorvSteeringMethod& i_other) const
{
  const auto* other = dynamic_cast<const CorvSMTrapezoidal*>(&i_other);
  return other && m_maxVelocities == other->m_maxVelocities && m_maxAccelerations == other->m_maxAccelerations;
}

void CorvSMTrapezoidal::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvSteeringMethod::encodeWithCoder(i_coder);
  i_coder->encodeDoubleVector(m_maxAccelerations, "accelerations");
  i_coder->encodeDoubleVector(m_maxVelocities, "velocities");
}

lmStatus CorvSMTrapezoidal::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvSteeringMethod::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  i_coder->decodeDoubleVector("accelerations", m_maxAccelerations);
  i_coder->decodeDoubleVector("velocities", m_maxVelocities);
  return lmStatus();
}
