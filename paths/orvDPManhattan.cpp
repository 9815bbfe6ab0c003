#include "paths/orvDPManhattan.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDof.h"
#include "paths/orvPathValues.h"
#include "paths/orvPathVisitor.h"
#include "paths/orvSMLinear.h"
#include "paths/orvStraightMotion.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

LUM_DESCRIBE(CorvDPManhattan)
{
  i_class.creates("(const CorvConfig& i_start, const CorvConfig& i_end, bool i_randomize, const "
                  "CorvSteeringMethodShPtr& i_steeringMethod)",
                  &Self::create);
}

const double CorvDPManhattan::s_halfTurnTolerance = 1e-7;

namespace
{
/// Drops what is no rank below the count or stands twice, and puts the missing ranks last.
void completeDofOrder(unsigned int i_count, std::vector<unsigned int>& io_order)
{
  std::vector<bool> isKnown(i_count, false);
  std::vector<unsigned int> order;
  const auto add = [&](unsigned int i_rank)
  {
    if (i_rank >= i_count || isKnown[i_rank])
      return;
    isKnown[i_rank] = true;
    order.push_back(i_rank);
  };
  for (const unsigned int rank : io_order)
    add(rank);
  for (unsigned int rank = 0; rank < i_count; ++rank)
    add(rank);
  io_order.swap(order);
}

/// The order of the same dofs in a space where they may have other ranks.
std::vector<unsigned int> followDofs(const std::vector<unsigned int>& i_order, const std::vector<CorvDofWkPtr>& i_dofs,
                                     const CorvConfigSpace& i_space)
{
  std::vector<unsigned int> order;
  for (const unsigned int rank : i_order)
  {
    const CorvDofShPtr dof = rank < i_dofs.size() ? i_dofs[rank].lock() : CorvDofShPtr();
    unsigned int newRank = 0;
    if (dof && i_space.getFirstDofRankOfSubspace(*dof, newRank).succeeded())
      order.push_back(newRank);
  }
  completeDofOrder(i_space.size(), order);
  return order;
}
} // namespace

CorvDPManhattan::CorvDPManhattan(const CorvConfig& i_start, const CorvConfig& i_end, bool i_randomize,
                                 const CorvSteeringMethodShPtr& i_steeringMethod)
  : CorvDirectPath(i_start, i_end, i_steeringMethod)
{
  completeDofOrder(i_start.size(), m_dofOrder);
  if (!i_randomize)
    return;
  for (unsigned int i = 1; i < m_dofOrder.size(); ++i)
    std::swap(m_dofOrder[i], m_dofOrder[static_cast<unsigned int>(std::rand()) % (i + 1)]);
}

CorvDPManhattan::~CorvDPManhattan() = default;

lmStatus CorvDPManhattan::init(const CorvDPManhattanWkPtr& i_weakPtr)
{
  const lmStatus status = CorvDirectPath::init(i_weakPtr);
  if (status.failed())
    return status;
  return !device() || hasHalfTurn() ? lmStatus(lmStatus::FAILURE) : lmStatus();
}

lmStatus CorvDPManhattan::init(const CorvDPManhattanWkPtr& i_weakPtr, const CorvDPManhattanConstShPtr&)
{
  return CorvDirectPath::init(i_weakPtr);
}

CorvDPManhattanShPtr CorvDPManhattan::create(const CorvConfig& i_start, const CorvConfig& i_end, bool i_randomize,
                                             const CorvSteeringMethodShPtr& i_steeringMethod)
{
  return lumCreate<CorvDPManhattan>(i_start, i_end, i_randomize, i_steeringMethod);
}

CorvDPManhattanShPtr CorvDPManhattan::createCopy(const CorvDPManhattanConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvAbstractPathShPtr CorvDPManhattan::clone() const
{
  return createCopy(self());
}

/// Passive dofs count here.
bool CorvDPManhattan::hasHalfTurn() const
{
  const CorvConfigSpace& space = *configSpace();
  for (unsigned int rank = 0; rank < space.size(); ++rank)
    if (space.isDofCircular(rank) && std::fabs(dofWay(rank)) > ClumGeometryUtilities::PI - s_halfTurnTolerance)
      return true;
  return false;
}

/// The order at the space's present version: a configuration converts itself, and its order goes with it.
const std::vector<unsigned int>& CorvDPManhattan::dofOrder() const
{
  const CorvConfigSpace& space = *privateStart().space();
  const unsigned int version = space.version();
  if (m_orderVersion == version)
    return m_dofOrder;
  std::vector<CorvDofWkPtr> dofs;
  if (m_orderVersion != 0 && space.getDofsAtVersion(m_orderVersion, dofs).succeeded())
    m_dofOrder = followDofs(m_dofOrder, dofs, space);
  else
    completeDofOrder(space.size(), m_dofOrder);
  m_orderVersion = version;
  return m_dofOrder;
}

/// The signed way of a dof from the private start to the private end.
double CorvDPManhattan::dofWay(unsigned int i_rank) const
{
  return orvWayOfDof(*configSpace(), i_rank, privateStart().beginPtr()[i_rank], privateEnd().beginPtr()[i_rank]);
}

/// A dof that its metric does not measure takes no part of the length.
double CorvDPManhattan::dofLength(unsigned int i_rank) const
{
  const CorvDofShPtr dof = configSpace()->dof(i_rank);
  const double part = dof->distance(privateStart().beginPtr()[i_rank], privateEnd().beginPtr()[i_rank]);
  return std::isfinite(part) ? part : 0.0;
}

double CorvDPManhattan::computePrivateLength() const
{
  double total = 0.0;
  for (const unsigned int rank : dofOrder())
    total += dofLength(rank);
  return total;
}

void CorvDPManhattan::interpolate(double i_distance, CorvConfig& io_cfg) const
{
  const CorvConfigSpace& space = *configSpace();
  const double* start = privateStart().beginPtr();
  const double* end = privateEnd().beginPtr();
  // Passive dofs begin where the path begins, whatever the configuration held before.
  const bool hasPassiveDofs = space.hasPassiveDofs();
  const unsigned int count = privateStart().size();
  boost::container::small_vector<double, 16> values(start, start + count);
  double rest = i_distance;
  for (const unsigned int rank : dofOrder())
  {
    if (!(rest > 0.0))
      break;
    const double part = dofLength(rank);
    const bool isWhole = rest >= part;
    if (!hasPassiveDofs || !space.isDofPassive(rank))
      values[rank] = isWhole ? end[rank] : orvStraightValue(space, rank, start[rank], end[rank], rest / part);
    rest -= part;
  }
  if (io_cfg.size() != count)
    io_cfg = privateStart();
  orvWriteAllValues(io_cfg, values.data(), count);
}

void CorvDPManhattan::maxAbsoluteDerivative(double, double, std::vector<double>& o_derivatives) const
{
  o_derivatives.resize(configSpace()->size());
  for (unsigned int rank = 0; rank < o_derivatives.size(); ++rank)
  {
    const double way = std::fabs(dofWay(rank));
    const double part = dofLength(rank);
    // Without a length the dof jumps.
    o_derivatives[rank] = way == 0.0 ? 0.0 : part == 0.0 ? std::numeric_limits<double>::infinity() : way / part;
  }
}

lmStatus CorvDPManhattan::reverse()
{
  m_isReversed = !m_isReversed;
  return CorvDirectPath::reverse();
}

lmStatus CorvDPManhattan::convert(const CorvConfigSpaceShPtr& i_space)
{
  privateLength(); // in the order as it is: the base takes it for the length before
  const CorvConfigSpaceShPtr before = configSpace();
  const std::vector<unsigned int> order = dofOrder();
  std::vector<CorvDofWkPtr> dofs;
  LUM_ASSERT_SUCCESS(before->getDofsAtVersion(m_orderVersion, dofs));
  if (i_space)
  {
    m_dofOrder = followDofs(order, dofs, *i_space);
    m_orderVersion = i_space->version();
  }
  const lmStatus status = CorvDirectPath::convert(i_space);
  if (status.succeeded() || configSpace() == i_space)
    return status;
  m_dofOrder = order;
  m_orderVersion = before->version();
  return status;
}

void CorvDPManhattan::retrievePrivateMotionOrder(std::vector<unsigned int>& o_order) const
{
  o_order = dofOrder();
}

void CorvDPManhattan::retrieveDofMotionOrder(std::vector<unsigned int>& o_order) const
{
  retrievePrivateMotionOrder(o_order);
  if (m_isReversed)
    std::reverse(o_order.begin(), o_order.end());
}

bool CorvDPManhattan::goLeft(unsigned int i_dof, double i_delta) const
{
  const CorvDofShPtr dof = configSpace()->dof(i_dof);
  if (!dof || !dof->isRevolute())
    return i_delta < 0.0;
  return i_delta > 0.0 ? i_delta > ClumGeometryUtilities::PI : i_delta > -ClumGeometryUtilities::PI;
}

void CorvDPManhattan::describe(const CorvPathVisitorShPtr& i_visitor) const
{
  if (!i_visitor)
    return;
  const CorvSMLinearShPtr method = CorvSMLinear::create(false);
  std::vector<unsigned int> order;
  retrieveDofMotionOrder(order);
  CorvConfig current(startConfiguration());
  for (const unsigned int rank : order)
  {
    CorvConfig next(current);
    next.dofValue(rank, endConfiguration().dofValue(rank));
    if (const CorvDirectPathShPtr motion = method->makeDirectPath(current, next))
      i_visitor->executeLinearDirectPath(motion);
    current = next;
  }
}

void CorvDPManhattan::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvDirectPath::encodeWithCoder(i_coder);
  i_coder->encodeUnsignedIntVector(dofOrder(), "m_dofOrder");
  i_coder->encodeBool(m_isReversed, "m_isReversed");
}

lmStatus CorvDPManhattan::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvDirectPath::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  i_coder->decodeUnsignedIntVector("m_dofOrder", m_dofOrder);
  m_isReversed = i_coder->decodeBool("m_isReversed");
  m_orderVersion = 0;
  return lmStatus();
}
