#include "paths/orvSMSequence.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "metrics/orvMetricManhattan.h"
#include "paths/orvDPSequence.h"

LUM_DESCRIBE(CorvSMSequence)
{
  i_class.creates("()", &Self::create);
}

CorvSMSequence::~CorvSMSequence() = default;

lmStatus CorvSMSequence::init(const CorvSMSequenceWkPtr& i_weakPtr)
{
  metric(CorvMetricManhattan::create());
  return CorvSteeringMethod::init(i_weakPtr);
}

CorvSMSequenceShPtr CorvSMSequence::create()
{
  return lumCreate<CorvSMSequence>();
}

CorvSMSequenceShPtr CorvSMSequence::createCopy(const CorvSMSequenceConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvSteeringMethodShPtr CorvSMSequence::clone() const
{
  return createCopy(self());
}

namespace
{
/// The motion of one sub-space. Where its method has chosen ends of its own, they are written back.
CorvDirectPathShPtr makeSequenceChild(const CorvConfigSpaceShPtr& i_subspace, CorvConfig& io_start, CorvConfig& io_end)
{
  const CorvSteeringMethodShPtr& method = i_subspace->steeringMethod();
  if (!method)
    return CorvDirectPathShPtr();
  CorvConfig start = io_start.restrict(i_subspace);
  CorvConfig end = io_end.restrict(i_subspace);
  start.isSelfValidationEnabled(false);
  end.isSelfValidationEnabled(false);
  const CorvDirectPathShPtr child = method->makeDirectPath(start, end);
  if (child && !method->isConservative(i_subspace))
  {
    io_start.inject(child->startConfiguration());
    io_end.inject(child->endConfiguration());
  }
  return child;
}
} // namespace

CorvDirectPathShPtr CorvSMSequence::makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const
{
  const CorvConfigSpaceShPtr& whole = i_start.space();
  if (!whole || whole != i_end.space())
    return CorvDirectPathShPtr();
  const CorvConfigSpace& space = whole->unwrapped();
  CorvConfig start(i_start);
  CorvConfig end(i_end);
  std::vector<CorvDirectPathShPtr> children;
  for (unsigned int i = 0; i < space.countSubspaces(); ++i)
    children.push_back(makeSequenceChild(space.subspace(i), start, end));
  return CorvDPSequence::create(start, end, children, self());
}

bool CorvSMSequence::isOriented(const CorvConfigSpaceConstShPtr& i_space) const
{
  if (!i_space)
    return false;
  const CorvConfigSpace& space = i_space->unwrapped();
  for (unsigned int i = 0; i < space.countSubspaces(); ++i)
  {
    const CorvConfigSpaceShPtr subspace = space.subspace(i);
    if (subspace->steeringMethod() && subspace->steeringMethod()->isOriented(subspace))
      return true;
  }
  return false;
}

bool CorvSMSequence::operator==(const CorvSteeringMethod& i_other) const
{
  return dynamic_cast<const CorvSMSequence*>(&i_other) != nullptr;
}
