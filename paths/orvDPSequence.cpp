#include "paths/orvDPSequence.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvConfigSpace.h"
#include "paths/orvPathValues.h"
#include "paths/orvPathVisitor.h"
#include "paths/orvSteeringMethod.h"

#include <algorithm>
#include <limits>

LUM_DESCRIBE(CorvDPSequence)
{
  i_class.creates("(const CorvConfig& i_start, const CorvConfig& i_end, const std::vector<CorvDirectPathShPtr>& "
                  "i_directPaths, const CorvSteeringMethodShPtr& i_steeringMethod)",
                  &Self::create);
}

CorvDPSequence::CorvDPSequence(const CorvConfig& i_start, const CorvConfig& i_end,
                               const std::vector<CorvDirectPathShPtr>& i_directPaths,
                               const CorvSteeringMethodShPtr& i_steeringMethod)
  : CorvDirectPath(i_start, i_end, i_steeringMethod), m_directPaths(i_directPaths)
{
}

CorvDPSequence::CorvDPSequence(const CorvDPSequence& i_other)
  : CorvDirectPath(i_other), m_directPaths(i_other.m_directPaths.size())
{
  for (unsigned int i = 0; i < m_directPaths.size(); ++i)
    m_directPaths[i] = CorvDirectPath::createCopy(i_other.m_directPaths[i]);
}

CorvDPSequence::~CorvDPSequence() = default;

lmStatus CorvDPSequence::init(const CorvDPSequenceWkPtr& i_weakPtr)
{
  const lmStatus status = CorvDirectPath::init(i_weakPtr);
  return status.failed() ? status : checkChildren();
}

lmStatus CorvDPSequence::checkChildren() const
{
  const CorvConfigSpaceShPtr space = configSpace();
  const bool isUsable = std::all_of(m_directPaths.begin(), m_directPaths.end(),
                                    [&](const CorvDirectPathShPtr& i_child)
                                    { return i_child && space && space->includes(i_child->configSpace()); });
  return isUsable ? lmStatus() : lmStatus(lmStatus::FAILURE);
}

CorvDPSequenceShPtr CorvDPSequence::create(const CorvConfig& i_start, const CorvConfig& i_end,
                                           const std::vector<CorvDirectPathShPtr>& i_directPaths,
                                           const CorvSteeringMethodShPtr& i_steeringMethod)
{
  return lumCreate<CorvDPSequence>(i_start, i_end, i_directPaths, i_steeringMethod);
}

CorvDPSequenceShPtr CorvDPSequence::createCopy(const CorvDPSequenceConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvAbstractPathShPtr CorvDPSequence::clone() const
{
  return createCopy(self());
}

CorvDirectPathConstShPtr CorvDPSequence::directPath(unsigned int i_rank) const
{
  return i_rank < m_directPaths.size() ? m_directPaths[i_rank] : CorvDirectPathShPtr();
}

double CorvDPSequence::computePrivateLength() const
{
  double total = 0.0;
  for (const CorvDirectPathShPtr& child : m_directPaths)
    total += child->length();
  return total;
}

void CorvDPSequence::interpolate(double i_distance, CorvConfig& io_cfg) const
{
  const CorvConfigSpace& space = *privateStart().space();
  const unsigned int count = privateStart().size();
  const double* start = privateStart().beginPtr();
  // Sub-spaces without a motion, and what passive dofs begin with: as the path begins.
  boost::container::small_vector<double, 16> values(start, start + count);
  double rest = i_distance;
  for (const CorvDirectPathShPtr& child : m_directPaths)
  {
    const double childLength = child->length();
    CorvConfig cfg(rest >= childLength ? child->endConfiguration() : child->startConfiguration());
    if (rest > 0.0 && rest < childLength)
      LUM_ASSERT_SUCCESS(child->getConfigAtDistance(rest, cfg));
    unsigned int rank = 0;
    LUM_ASSERT_SUCCESS(space.getFirstDofRankOfSubspace(*cfg.space(), rank));
    if (rank + cfg.size() <= count)
      std::copy_n(cfg.beginPtr(), cfg.size(), values.begin() + rank);
    rest -= childLength;
  }
  if (io_cfg.size() != count)
    io_cfg = privateStart();
  orvWriteAllValues(io_cfg, values.data(), count);
}

namespace
{
/// No rate is large enough for a child that changes without a length.
void fillJumpingRates(const CorvDirectPath& i_child, std::vector<double>& o_rates)
{
  const double* start = i_child.startConfiguration().beginPtr();
  const double* end = i_child.endConfiguration().beginPtr();
  for (unsigned int i = 0; i < o_rates.size(); ++i)
    o_rates[i] = start[i] == end[i] ? 0.0 : std::numeric_limits<double>::infinity();
}
} // namespace

void CorvDPSequence::maxAbsoluteDerivative(double i_from, double i_to, std::vector<double>& o_derivatives) const
{
  const CorvConfigSpace& space = *privateStart().space();
  o_derivatives.assign(privateStart().size(), 0.0);
  // Wide enough for the rounding of the lengths that are taken off.
  const double slack = 1e-12 * privateLength();
  double low = std::min(i_from, i_to) - slack;
  double high = std::max(i_from, i_to) + slack;
  std::vector<double> rates;
  for (const CorvDirectPathShPtr& child : m_directPaths)
  {
    const double childLength = child->length();
    unsigned int rank = 0;
    const bool isMoving = childLength >= low && high >= 0.0;
    if (isMoving && space.getFirstDofRankOfSubspace(child->configSpace(), rank).succeeded())
    {
      rates.assign(child->startConfiguration().size(), 0.0);
      if (childLength == 0.0)
        fillJumpingRates(*child, rates);
      else
        child->maxAbsoluteDerivative(child->publicToPrivateDistance(low), child->publicToPrivateDistance(high), rates);
      if (rank + rates.size() <= o_derivatives.size())
        std::copy(rates.begin(), rates.end(), o_derivatives.begin() + rank);
    }
    low -= childLength;
    high -= childLength;
  }
}

lmStatus CorvDPSequence::convert(const CorvConfigSpaceShPtr& i_space)
{
  privateLength(); // of the children as they are: the base takes it for the length before
  std::vector<CorvDirectPathShPtr> converted;
  lmStatus status = orvConvertChildren(*configSpace(), i_space, m_directPaths, converted);
  if (status.succeeded())
  {
    m_directPaths.swap(converted);
    status = CorvDirectPath::convert(i_space);
  }
  if (status.failed())
    ClumLogManager::addError("CorvDPSequence::convert() failed. Direct path may have been left in an invalid state.");
  return status;
}

/// @param i_offset the private distance at which the child begins. @return null if too little of it is left.
CorvDirectPathConstShPtr CorvDPSequence::childInWindow(const CorvDirectPathShPtr& i_child, double i_offset) const
{
  const double childLength = i_child->length();
  const double from = std::max(cutStart() - i_offset, 0.0);
  const double to = std::min(privateLength() - cutEnd() - i_offset, childLength);
  CorvDirectPathConstShPtr part = i_child;
  if (from > 0.0 || (cutEnd() > 0.0 && to < childLength))
    part = CorvDirectPath::createByExtracting(i_child, from, to);
  return isReversed() ? CorvDirectPath::createReversed(part) : part;
}

void CorvDPSequence::describe(const CorvPathVisitorShPtr& i_visitor) const
{
  if (!i_visitor)
    return;
  std::vector<CorvDirectPathConstShPtr> parts;
  double offset = 0.0;
  for (const CorvDirectPathShPtr& child : m_directPaths)
  {
    parts.push_back(childInWindow(child, offset));
    offset += child->length();
  }
  if (isReversed())
    std::reverse(parts.begin(), parts.end());
  const CorvDPSequenceConstShPtr me = self();
  i_visitor->beginSequenceDirectPath(me);
  for (const CorvDirectPathConstShPtr& part : parts)
    if (part)
      part->describe(i_visitor);
  i_visitor->endSequenceDirectPath(me);
}

void CorvDPSequence::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvDirectPath::encodeWithCoder(i_coder);
  i_coder->encodeObjects(m_directPaths, "m_directPaths");
}

lmStatus CorvDPSequence::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvDirectPath::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  i_coder->decodeObjects("m_directPaths", m_directPaths);
  return checkChildren();
}
