#include "paths/orvDPComposite.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDof.h"
#include "metrics/orvMetricRevolute.h"
#include "paths/orvDPLinear.h"
#include "paths/orvPathValues.h"
#include "paths/orvPathVisitor.h"
#include "paths/orvSMLinear.h"
#include "paths/orvStraightMotion.h"

#include <algorithm>
#include <cmath>
#include <limits>

LUM_DESCRIBE(CorvDPComposite)
{
  i_class.creates("(const CorvConfig& i_start, const CorvConfig& i_end, const std::vector<CorvDirectPathShPtr>& "
                  "i_directPaths, const CorvSteeringMethodShPtr& i_steeringMethod)",
                  &Self::create);
}

CorvDPComposite::CorvDPComposite(const CorvConfig& i_start, const CorvConfig& i_end,
                                 const std::vector<CorvDirectPathShPtr>& i_directPaths,
                                 const CorvSteeringMethodShPtr& i_steeringMethod)
  : CorvDirectPath(i_start, i_end, i_steeringMethod), m_directPaths(i_directPaths)
{
  hasConstantRates(true);
}

CorvDPComposite::CorvDPComposite(const CorvDPComposite& i_other)
  : CorvDirectPath(i_other), m_kind(i_other.isStraight() ? STRAIGHT : GENERAL)
{
  if (m_kind == STRAIGHT)
    return;
  m_directPaths.resize(i_other.m_directPaths.size());
  for (unsigned int i = 0; i < m_directPaths.size(); ++i)
    m_directPaths[i] = CorvDirectPath::createCopy(i_other.m_directPaths[i]);
}

CorvDPComposite::CorvDPComposite()
{
  hasConstantRates(true);
}

CorvDPComposite::~CorvDPComposite() = default;

lmStatus CorvDPComposite::init(const CorvDPCompositeWkPtr& i_weakPtr)
{
  return CorvDirectPath::init(i_weakPtr);
}

CorvDPCompositeShPtr CorvDPComposite::create(const CorvConfig& i_start, const CorvConfig& i_end,
                                             const std::vector<CorvDirectPathShPtr>& i_directPaths,
                                             const CorvSteeringMethodShPtr& i_steeringMethod)
{
  return lumCreate<CorvDPComposite>(i_start, i_end, i_directPaths, i_steeringMethod);
}

CorvDPCompositeShPtr CorvDPComposite::createStraight(const CorvConfig& i_start, const CorvConfig& i_end,
                                                     const CorvSteeringMethodShPtr& i_steeringMethod)
{
  if (!CorvDPLinear::canConnect(i_start, i_end))
    return CorvDPCompositeShPtr();
  const CorvDPCompositeShPtr path =
    lumCreate<CorvDPComposite>(i_start, i_end, std::vector<CorvDirectPathShPtr>(), i_steeringMethod);
  if (path)
    path->m_kind = STRAIGHT;
  return path;
}

CorvDPCompositeShPtr CorvDPComposite::createCopy(const CorvDPCompositeConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvAbstractPathShPtr CorvDPComposite::clone() const
{
  return createCopy(self());
}

CorvDirectPathConstShPtr CorvDPComposite::directPath(unsigned int i_rank) const
{
  return i_rank < directPaths().size() ? m_directPaths[i_rank] : CorvDirectPathShPtr();
}

const std::vector<CorvDirectPathShPtr>& CorvDPComposite::directPaths() const
{
  if (m_directPaths.empty() && isStraight())
    m_directPaths.push_back(CorvDPLinear::create(privateStart(), privateEnd(), CorvSMLinear::create(false)));
  return m_directPaths;
}

bool CorvDPComposite::isStraight() const
{
  if (m_kind == UNKNOWN)
    m_kind = hasOnlyStraightChild() ? STRAIGHT : GENERAL;
  return m_kind == STRAIGHT;
}

bool CorvDPComposite::hasOnlyStraightChild() const
{
  const CorvDPLinear* child = m_directPaths.size() == 1 ? dynamic_cast<CorvDPLinear*>(m_directPaths[0].get()) : nullptr;
  return child && child->configSpace() == privateStart().space() && child->startConfiguration() == privateStart() &&
         child->endConfiguration() == privateEnd();
}

double CorvDPComposite::computePrivateLength() const
{
  return privateStart().distanceTo(privateEnd());
}

bool CorvDPComposite::isMovingChild(const CorvDirectPathShPtr& i_child) const
{
  const CorvConfigSpace& space = *privateStart().space();
  return i_child && !(space.hasPassiveDofs() && space.isSubspaceFullyPassive(i_child->configSpace()));
}

void CorvDPComposite::interpolate(double i_distance, CorvConfig& io_cfg) const
{
  const double whole = privateLength();
  const double param = whole > 0.0 ? i_distance / whole : 0.0;
  if (isStraight())
  {
    orvInterpolateStraight(privateStart(), privateEnd(), param, io_cfg);
    return;
  }
  const CorvConfigSpace& space = *privateStart().space();
  const unsigned int count = privateStart().size();
  const double* start = privateStart().beginPtr();
  boost::container::small_vector<double, 16> values(start, start + count);
  for (const CorvDirectPathShPtr& child : m_directPaths)
  {
    if (!isMovingChild(child))
      continue;
    unsigned int rank = 0;
    CorvConfig cfg(child->privateStart());
    LUM_ASSERT_SUCCESS(space.getFirstDofRankOfSubspace(*cfg.space(), rank));
    LUM_ASSERT_SUCCESS(child->getConfigAtParam(param, cfg));
    if (rank + cfg.size() <= count)
      std::copy_n(cfg.beginPtr(), cfg.size(), values.begin() + rank);
  }
  if (io_cfg.size() != count)
    io_cfg = privateStart();
  orvWriteAllValues(io_cfg, values.data(), count);
}

double CorvDPComposite::computeMaxAbsoluteDerivativeForPassiveDof(double, double, unsigned int i_dof) const
{
  const double whole = privateLength();
  if (whole <= 0.0)
    return 0.0;
  const CorvDofShPtr dof = privateStart().space()->dof(i_dof);
  const double start = privateStart().beginPtr()[i_dof];
  const double end = privateEnd().beginPtr()[i_dof];
  const bool isCircular = dof->isRevolute() && !dof->isBounded();
  return std::fabs(isCircular ? CorvMetricRevolute::circularDistance(start, end) : end - start) / whole;
}

void CorvDPComposite::maxAbsoluteDerivative(double i_from, double i_to, std::vector<double>& o_derivatives) const
{
  if (isStraight())
  {
    orvComputeStraightRates(privateStart(), privateEnd(), privateLength(), o_derivatives);
    return;
  }
  const CorvConfigSpace& space = *privateStart().space();
  o_derivatives.resize(privateStart().size());
  unsigned int rank = 0;
  const auto fillPassive = [&](unsigned int i_end)
  {
    for (; rank < i_end; ++rank)
      o_derivatives[rank] = computeMaxAbsoluteDerivativeForPassiveDof(i_from, i_to, rank);
  };
  std::vector<double> childDerivatives;
  for (const CorvDirectPathShPtr& child : m_directPaths)
  {
    unsigned int childRank = 0;
    if (!child || space.getFirstDofRankOfSubspace(*child->configSpace(), childRank).failed())
      continue;
    fillPassive(childRank);
    fillChildDerivatives(*child, childRank, childDerivatives);
    std::copy(childDerivatives.begin(), childDerivatives.end(), o_derivatives.begin() + childRank);
    rank = childRank + static_cast<unsigned int>(childDerivatives.size());
  }
  fillPassive(static_cast<unsigned int>(o_derivatives.size()));
}

bool CorvDPComposite::getStraightVelocity(std::vector<double>& o_velocity) const
{
  const double length = isReversed() ? -privateLength() : privateLength();
  if (isStraight())
    return orvGetStraightVelocity(privateStart(), privateEnd(), length, o_velocity);
  if (orvMovesPassiveDof(privateStart(), privateEnd()))
    return false;
  // What no child moves stands still.
  o_velocity.assign(privateStart().size(), 0.0);
  std::vector<double> childVelocity;
  for (const CorvDirectPathShPtr& child : m_directPaths)
    if (isMovingChild(child) && !addChildVelocity(*child, child->length() / length, childVelocity, o_velocity))
      return false;
  return true;
}

/// @param i_stretch of the child's length to that of all. @param o_scratch for the child's own velocity.
bool CorvDPComposite::addChildVelocity(const CorvDirectPath& i_child, double i_stretch, std::vector<double>& o_scratch,
                                       std::vector<double>& io_velocity) const
{
  unsigned int rank = 0;
  const CorvConfigSpace& space = *privateStart().space();
  if (!i_child.getStraightVelocity(o_scratch) ||
      space.getFirstDofRankOfSubspace(*i_child.configSpace(), rank).failed() ||
      rank + o_scratch.size() > io_velocity.size())
    return false;
  for (std::size_t i = 0; i < o_scratch.size(); ++i)
    io_velocity[rank + i] = o_scratch[i] * i_stretch;
  return true;
}

void CorvDPComposite::fillChildDerivatives(const CorvDirectPath& i_child, unsigned int i_rank,
                                           std::vector<double>& io_derivatives) const
{
  const double childLength = i_child.length();
  const double whole = privateLength();
  if (childLength == 0.0)
  {
    // A child that moves without a length jumps: no rate is large enough.
    const unsigned int count = i_child.privateStart().size();
    const double* start = privateStart().beginPtr() + i_rank;
    const double* end = privateEnd().beginPtr() + i_rank;
    io_derivatives.resize(count);
    for (unsigned int i = 0; i < count; ++i)
      io_derivatives[i] = start[i] == end[i] ? 0.0 : std::numeric_limits<double>::infinity();
    return;
  }
  i_child.maxAbsoluteDerivative(0.0, childLength, io_derivatives);
  const double stretch = childLength / whole;
  if (stretch != 1.0)
    for (double& rate : io_derivatives)
      rate = rate == 0.0 ? 0.0 : rate * stretch;
}

lmStatus CorvDPComposite::convert(const CorvConfigSpaceShPtr& i_space)
{
  if (isStraight())
    m_directPaths.clear();
  std::vector<CorvDirectPathShPtr> converted;
  lmStatus status = orvConvertChildren(*configSpace(), i_space, m_directPaths, converted);
  if (status.succeeded())
    status = CorvDirectPath::convert(i_space);
  if (status.succeeded())
    m_directPaths.swap(converted);
  else
    ClumLogManager::addError("CorvDPComposite::convert() failed. Direct path may have been left in an invalid state.");
  return status;
}

CorvDirectPathConstShPtr CorvDPComposite::childInWindow(const CorvDirectPathShPtr& i_child) const
{
  const double childLength = i_child->length();
  const double whole = privateLength();
  CorvDirectPathConstShPtr part = i_child;
  if (!isWindowWhole() && childLength > 0.0 && whole > 0.0)
    part = CorvDirectPath::createByExtracting(i_child, childLength * cutStart() / whole,
                                              childLength * (1.0 - cutEnd() / whole));
  return isReversed() ? CorvDirectPath::createReversed(part) : part;
}

void CorvDPComposite::describe(const CorvPathVisitorShPtr& i_visitor) const
{
  if (!i_visitor)
    return;
  const CorvDPCompositeConstShPtr me = self();
  i_visitor->beginCompositeDirectPath(me);
  for (const CorvDirectPathShPtr& child : directPaths())
    if (isMovingChild(child))
      if (const CorvDirectPathConstShPtr part = childInWindow(child))
        part->describe(i_visitor);
  i_visitor->endCompositeDirectPath(me);
}

void CorvDPComposite::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvDirectPath::encodeWithCoder(i_coder);
  i_coder->encodeObjects(directPaths(), "m_directPaths");
}

lmStatus CorvDPComposite::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvDirectPath::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  i_coder->decodeObjects("m_directPaths", m_directPaths);
  m_kind = UNKNOWN;
  return lmStatus();
}
