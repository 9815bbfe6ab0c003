#include "metrics/orvMetricJointSweep.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvJoint.h"

LUM_DESCRIBE(CorvMetricJointSweep)
{
  i_class.creates(
    "(const CorvJointShPtr& i_joint, const CorvMetricShPtr& i_decoratedMetric, const std::string& i_type)",
    &Self::create);
}

CorvMetricJointSweep::CorvMetricJointSweep(const CorvJointShPtr& i_joint, const CorvMetricShPtr& i_decoratedMetric,
                                           const std::string& i_type)
  : CorvMetricDecorator(i_decoratedMetric, i_type), m_joint(i_joint)
{
}

CorvMetricJointSweep::~CorvMetricJointSweep() = default;

lmStatus CorvMetricJointSweep::init(const CorvMetricJointSweepWkPtr& i_weakPtr)
{
  return CorvMetricDecorator::init(i_weakPtr);
}

CorvMetricJointSweepShPtr CorvMetricJointSweep::create(const CorvJointShPtr& i_joint,
                                                       const CorvMetricShPtr& i_decoratedMetric,
                                                       const std::string& i_type)
{
  return lumCreate<CorvMetricJointSweep>(i_joint, i_decoratedMetric, i_type);
}

CorvMetricJointSweepShPtr CorvMetricJointSweep::createCopy(const CorvMetricJointSweepConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMetricShPtr CorvMetricJointSweep::clone() const
{
  return createCopy(self());
}

CorvJointShPtr CorvMetricJointSweep::joint() const
{
  return m_joint.lock();
}

void CorvMetricJointSweep::joint(const CorvJointShPtr& i_joint)
{
  m_joint = i_joint;
  raiseRevision();
}

double CorvMetricJointSweep::scale() const
{
  const CorvJointShPtr held = joint();
  return held ? held->maxSweep() : 0.0;
}

double CorvMetricJointSweep::distance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return decoratedMetric()->distance(i_a, i_b) * scale();
}

double CorvMetricJointSweep::squaredDistance(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return scaledSquaredDistance(i_a, i_b, scale());
}

double CorvMetricJointSweep::distanceForSorting(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return decoratedMetric()->distanceForSorting(i_a, i_b);
}

void CorvMetricJointSweep::randomStep(const CorvConfig& i_from, double i_step, CorvConfig& o_config) const
{
  scaledRandomStep(i_from, i_step, scale(), o_config);
}

bool CorvMetricJointSweep::isScaledAbsolute(double& o_scale) const
{
  return isScaledAbsoluteBy(scale(), o_scale);
}

bool CorvMetricJointSweep::isScaledCircular(double& o_scale) const
{
  return isScaledCircularBy(scale(), o_scale);
}

bool CorvMetricJointSweep::operator==(const CorvMetric& i_other) const
{
  return dynamic_cast<const CorvMetricJointSweep*>(&i_other) && CorvMetricDecorator::operator==(i_other);
}

namespace
{
void giveJointToSweeps(const CorvConfigSpace& i_space, const CorvJointShPtr& i_joint)
{
  for (unsigned int i = 0; i < i_space.countSubspaces(); ++i)
    giveJointToSweeps(*i_space.subspace(i), i_joint);
  CorvMetricShPtr metric = i_space.metric();
  while (const auto decorator = boost::dynamic_pointer_cast<CorvMetricDecorator>(metric))
  {
    if (const auto sweep = boost::dynamic_pointer_cast<CorvMetricJointSweep>(decorator))
      sweep->joint(i_joint);
    metric = decorator->decoratedMetric();
  }
}
} // namespace

void CorvMetricJointSweep::repairJoint(const CorvJointShPtr& i_joint)
{
  if (i_joint && i_joint->configSpace())
    giveJointToSweeps(*i_joint->configSpace(), i_joint);
}

void CorvMetricJointSweep::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvMetricDecorator::encodeWithCoder(i_coder);
  i_coder->encodeWeakObjectWkPtr(m_joint, "joint");
}

lmStatus CorvMetricJointSweep::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvMetricDecorator::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_joint = i_coder->decodeWeak<CorvJoint>("joint");
  return lmStatus();
}
