#include "manifolds/orvManifoldUnion.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvUtility.h"

#include <algorithm>
#include <limits>

LUM_DESCRIBE(CorvManifoldUnion)
{
  i_class.creates("(const CorvConfigSpaceShPtr & i_ambientSpace)", &Self::create);
}

CorvManifoldUnionShPtr CorvManifoldUnion::create(const CorvConfigSpaceShPtr& i_ambientSpace)
{
  return lumCreate<CorvManifoldUnion>(i_ambientSpace);
}

CorvManifoldUnionShPtr CorvManifoldUnion::createCopy(const CorvManifoldUnionConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvManifoldUnion::CorvManifoldUnion(const CorvConfigSpaceShPtr& i_ambientSpace) : m_ambientSpace(i_ambientSpace)
{
}

CorvManifoldUnion::~CorvManifoldUnion()
{
}

lmStatus CorvManifoldUnion::init(const CorvManifoldUnionWkPtr& i_weakPtr)
{
  const lmStatus status = CorvManifold::init(i_weakPtr);
  return status.failed() || m_ambientSpace ? status : lmStatus(-1);
}

void CorvManifoldUnion::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvManifold::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_ambientSpace, "ambientSpace");
  i_coder->encodeObjects(m_manifolds, "manifolds");
}

lmStatus CorvManifoldUnion::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvManifold::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_ambientSpace = i_coder->decode<CorvConfigSpace>("ambientSpace");
  i_coder->decodeObjects("manifolds", m_manifolds);
  const bool isWhole = std::find(m_manifolds.begin(), m_manifolds.end(), CorvManifoldConstShPtr()) == m_manifolds.end();
  return m_ambientSpace && isWhole ? status : lmStatus(-1);
}

lmStatus CorvManifoldUnion::addManifold(const CorvManifoldConstShPtr& i_manifold)
{
  if (!i_manifold || i_manifold.get() == this || i_manifold->ambientSpace() != m_ambientSpace ||
      std::find(m_manifolds.begin(), m_manifolds.end(), i_manifold) != m_manifolds.end())
    return lmStatus(-1);
  m_manifolds.push_back(i_manifold);
  return lmStatus();
}

lmStatus CorvManifoldUnion::removeManifold(const CorvManifoldConstShPtr& i_manifold)
{
  const auto at = std::find(m_manifolds.begin(), m_manifolds.end(), i_manifold);
  if (at == m_manifolds.end())
    return lmStatus(-1);
  m_manifolds.erase(at);
  return lmStatus();
}

CorvManifoldConstShPtr CorvManifoldUnion::manifold(unsigned int i_rank) const
{
  return i_rank < m_manifolds.size() ? m_manifolds[i_rank] : CorvManifoldConstShPtr();
}

CorvManifoldShPtr CorvManifoldUnion::clone() const
{
  return createCopy(self());
}

unsigned int CorvManifoldUnion::dimension() const
{
  unsigned int largest = 0;
  for (const CorvManifoldConstShPtr& member : m_manifolds)
    largest = std::max(largest, member->dimension());
  return largest;
}

unsigned int CorvManifoldUnion::cardinality() const
{
  unsigned int sum = 0;
  for (const CorvManifoldConstShPtr& member : m_manifolds)
    sum = sumCardinalities(sum, member->cardinality());
  return sum;
}

void CorvManifoldUnion::getAmbientBounds(unsigned int i_dof, double& o_min, double& o_max) const
{
  o_min = std::numeric_limits<double>::infinity();
  o_max = -o_min;
  for (const CorvManifoldConstShPtr& member : m_manifolds)
  {
    double low = 0.0;
    double high = 0.0;
    member->getAmbientBounds(i_dof, low, high);
    o_min = std::min(o_min, low);
    o_max = std::max(o_max, high);
  }
}

/// The period belongs to the dof: all members give the same.
void CorvManifoldUnion::getOrbitPeriod(unsigned int i_dof, double& o_period) const
{
  o_period = std::numeric_limits<double>::infinity();
  if (!m_manifolds.empty())
    m_manifolds.front()->getOrbitPeriod(i_dof, o_period);
}

CorvManifoldConstShPtr CorvManifoldUnion::drawMember() const
{
  return m_manifolds.empty() ? CorvManifoldConstShPtr()
                             : m_manifolds[CorvUtility::random(0, static_cast<int>(m_manifolds.size()) - 1)];
}

lmStatus CorvManifoldUnion::makeRandomStep(CorvConfig& io_cfg, double i_step) const
{
  const CorvManifoldConstShPtr member = drawMember();
  return member ? member->makeRandomStep(io_cfg, i_step) : lmStatus(-1);
}

lmStatus CorvManifoldUnion::getRandomElement(CorvConfig& o_cfg) const
{
  const CorvManifoldConstShPtr member = drawMember();
  return member ? member->getRandomElement(o_cfg) : lmStatus(-1);
}

lmStatus CorvManifoldUnion::getRandomValidElement(CorvConfig& o_cfg,
                                                  const ClumParameterMapConstShPtr& i_parameters) const
{
  const CorvManifoldConstShPtr member = drawMember();
  return member ? member->getRandomValidElement(o_cfg, i_parameters) : lmStatus(-1);
}

lmStatus CorvManifoldUnion::getCountableElement(unsigned int i_rank, CorvConfig& o_cfg) const
{
  unsigned int rank = i_rank;
  for (const CorvManifoldConstShPtr& member : m_manifolds)
  {
    const unsigned int count = member->cardinality();
    if (count > MAX_FINITE_CARDINALITY)
      return lmStatus(-1);
    if (rank < count)
      return member->getCountableElement(rank, o_cfg);
    rank -= count;
  }
  return lmStatus(-1);
}

bool CorvManifoldUnion::isElement(const CorvConfig& i_cfg) const
{
  return std::any_of(m_manifolds.begin(), m_manifolds.end(),
                     [&](const CorvManifoldConstShPtr& member) { return member->isElement(i_cfg); });
}

bool CorvManifoldUnion::areConnected(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return std::any_of(m_manifolds.begin(), m_manifolds.end(),
                     [&](const CorvManifoldConstShPtr& member) { return member->areConnected(i_a, i_b); });
}

bool CorvManifoldUnion::isValidElement(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_parameters) const
{
  return std::any_of(m_manifolds.begin(), m_manifolds.end(),
                     [&](const CorvManifoldConstShPtr& member) { return member->isValidElement(i_cfg, i_parameters); });
}

lmStatus CorvManifoldUnion::project(const CorvConfig& i_cfg, CorvConfig& o_cfg) const
{
  double best = std::numeric_limits<double>::infinity();
  CorvConfig nearest;
  for (const CorvManifoldConstShPtr& member : m_manifolds)
  {
    CorvConfig projection;
    if (member->project(i_cfg, projection).failed())
      continue;
    const double distance = i_cfg.distanceTo(projection);
    if (distance < best)
    {
      best = distance;
      nearest = projection;
    }
  }
  if (best == std::numeric_limits<double>::infinity())
    return lmStatus(-1);
  o_cfg = nearest;
  return lmStatus();
}
