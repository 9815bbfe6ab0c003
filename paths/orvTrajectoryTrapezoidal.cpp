#include "paths/orvTrajectoryTrapezoidal.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "paths/orvDPTrapezoidal.h"
#include "paths/orvPath.h"

LUM_DESCRIBE(CorvTrajectoryTrapezoidal)
{
  i_class.creates("(const CorvPathShPtr& i_path)", &Self::create);
}

CorvTrajectoryTrapezoidal::CorvTrajectoryTrapezoidal(const CorvPathShPtr& i_path) : m_path(i_path)
{
}

CorvTrajectoryTrapezoidal::CorvTrajectoryTrapezoidal(const CorvTrajectoryTrapezoidal& i_other)
  : CorvTrajectory(i_other), m_path(CorvPath::createCopy(i_other.m_path))
{
}

CorvTrajectoryTrapezoidal::~CorvTrajectoryTrapezoidal() = default;

lmStatus CorvTrajectoryTrapezoidal::init(const CorvTrajectoryTrapezoidalWkPtr& i_weakPtr)
{
  const lmStatus status = CorvTrajectory::init(i_weakPtr);
  if (status.failed())
    return status;
  for (unsigned int i = 0; m_path && i < m_path->countDirectPaths(); ++i)
    if (!boost::dynamic_pointer_cast<const CorvDPTrapezoidal>(m_path->directPath(i)))
      return lmStatus(lmStatus::FAILURE);
  return lmStatus(m_path ? lmStatus::SUCCESS : lmStatus::FAILURE);
}

CorvTrajectoryTrapezoidalShPtr CorvTrajectoryTrapezoidal::create(const CorvPathShPtr& i_path)
{
  return lumCreate<CorvTrajectoryTrapezoidal>(i_path);
}

CorvTrajectoryTrapezoidalShPtr
CorvTrajectoryTrapezoidal::createCopy(const CorvTrajectoryTrapezoidalConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvTrajectoryTrapezoidalShPtr CorvTrajectoryTrapezoidal::clone() const
{
  return createCopy(self());
}

double CorvTrajectoryTrapezoidal::duration() const
{
  return m_path->length();
}

lmStatus CorvTrajectoryTrapezoidal::getJointPositionsAtTime(double i_time, std::vector<ClumMat4>& o_positions) const
{
  const CorvConfigShPtr cfg = m_path->configAtDistance(i_time);
  return cfg ? cfg->getJointMatVector(o_positions) : lmStatus(lmStatus::FAILURE);
}

/// The motion that is under way at a time, which becomes that within it; null if there is none.
CorvDPTrapezoidalConstShPtr CorvTrajectoryTrapezoidal::motionAtTime(double& io_time) const
{
  for (unsigned int i = 0; io_time >= 0.0 && i < m_path->countDirectPaths(); ++i)
  {
    const CorvDirectPathConstShPtr directPath = m_path->directPath(i);
    if (io_time < directPath->length())
      return boost::dynamic_pointer_cast<const CorvDPTrapezoidal>(directPath);
    io_time -= directPath->length();
  }
  return CorvDPTrapezoidalConstShPtr();
}

lmStatus CorvTrajectoryTrapezoidal::getDofsVelocityAtTime(double i_time, std::vector<double>& o_velocities) const
{
  const CorvDPTrapezoidalConstShPtr motion = motionAtTime(i_time);
  return motion ? motion->getDofsVelocityAtTime(i_time, o_velocities) : lmStatus(lmStatus::FAILURE);
}

lmStatus CorvTrajectoryTrapezoidal::getDofsAccelerationAtTime(double i_time, std::vector<double>& o_accelerations) const
{
  const CorvDPTrapezoidalConstShPtr motion = motionAtTime(i_time);
  return motion ? motion->getDofsAccelerationAtTime(i_time, o_accelerations) : lmStatus(lmStatus::FAILURE);
}

void CorvTrajectoryTrapezoidal::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvTrajectory::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_path, "path");
}

lmStatus CorvTrajectoryTrapezoidal::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvTrajectory::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_path = i_coder->decode<CorvPath>("path");
  return lmStatus(m_path ? lmStatus::SUCCESS : lmStatus::FAILURE);
}
