#include "manifolds/orvPointManifold.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDof.h"

#include <limits>

LUM_DESCRIBE(CorvPointManifold)
{
  i_class.creates("(const CorvConfig & i_config, const CorvConfigSpaceShPtr & i_ambientSpace)", &Self::create);
}

CorvPointManifoldShPtr CorvPointManifold::create(const CorvConfig& i_config, const CorvConfigSpaceShPtr& i_ambientSpace)
{
  return lumCreate<CorvPointManifold>(i_config, i_ambientSpace);
}

CorvPointManifoldShPtr CorvPointManifold::createCopy(const CorvPointManifoldConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvPointManifold::CorvPointManifold(const CorvConfig& i_config, const CorvConfigSpaceShPtr& i_ambientSpace)
  : m_config(i_config), m_ambientSpace(i_ambientSpace)
{
}

CorvPointManifold::~CorvPointManifold()
{
}

lmStatus CorvPointManifold::init(const CorvPointManifoldWkPtr& i_weakPtr)
{
  const lmStatus status = CorvManifold::init(i_weakPtr);
  return status.failed() || (m_ambientSpace && m_config.space()) ? status : lmStatus(-1);
}

void CorvPointManifold::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvManifold::encodeWithCoder(i_coder);
  m_config.encodeValueWithCoder(*i_coder, "config");
  i_coder->encodeObjectShPtr(m_ambientSpace, "ambientSpace");
}

lmStatus CorvPointManifold::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvManifold::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_config = CorvConfig(i_coder, "config");
  m_ambientSpace = i_coder->decode<CorvConfigSpace>("ambientSpace");
  return m_ambientSpace && m_config.hasSoundValues() ? status : lmStatus(-1);
}

CorvManifoldShPtr CorvPointManifold::clone() const
{
  return createCopy(self());
}

lmStatus CorvPointManifold::getPoint(CorvConfig& o_cfg) const
{
  CorvConfig point = m_config;
  const lmStatus status = point.space() == m_ambientSpace ? lmStatus() : point.convert(m_ambientSpace);
  if (status.succeeded())
    o_cfg = point;
  return status;
}

void CorvPointManifold::getAmbientBounds(unsigned int i_dof, double& o_min, double& o_max) const
{
  CorvConfig point;
  const bool isKnown = getPoint(point).succeeded() && i_dof < point.size();
  o_min = isKnown ? point.dofValue(i_dof) : -std::numeric_limits<double>::infinity();
  o_max = isKnown ? o_min : std::numeric_limits<double>::infinity();
}

void CorvPointManifold::getOrbitPeriod(unsigned int i_dof, double& o_period) const
{
  const CorvDofShPtr dof = i_dof < m_ambientSpace->size() ? m_ambientSpace->dof(i_dof) : CorvDofShPtr();
  const bool isAngle = dof && dof->isRevolute() && !dof->isBounded();
  o_period = isAngle ? 2.0 * ClumGeometryUtilities::PI : std::numeric_limits<double>::infinity();
}

lmStatus CorvPointManifold::makeRandomStep(CorvConfig& io_cfg, double) const
{
  return getPoint(io_cfg);
}

lmStatus CorvPointManifold::getRandomElement(CorvConfig& o_cfg) const
{
  return getPoint(o_cfg);
}

lmStatus CorvPointManifold::getRandomValidElement(CorvConfig& o_cfg,
                                                  const ClumParameterMapConstShPtr& i_parameters) const
{
  const lmStatus status = getPoint(o_cfg);
  return status.failed() || o_cfg.validate(i_parameters) ? status : lmStatus(-1);
}

lmStatus CorvPointManifold::getCountableElement(unsigned int i_rank, CorvConfig& o_cfg) const
{
  return i_rank == 0 ? getPoint(o_cfg) : lmStatus(-1);
}

bool CorvPointManifold::isElement(const CorvConfig& i_cfg) const
{
  if (m_config.space() == m_ambientSpace)
    return i_cfg.isEquivalent(m_config);
  CorvConfig point;
  return getPoint(point).succeeded() && i_cfg.isEquivalent(point);
}

bool CorvPointManifold::areConnected(const CorvConfig& i_a, const CorvConfig& i_b) const
{
  return isElement(i_a) && isElement(i_b);
}

bool CorvPointManifold::isValidElement(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_parameters) const
{
  return isElement(i_cfg) && i_cfg.validate(i_parameters);
}

lmStatus CorvPointManifold::project(const CorvConfig&, CorvConfig& o_cfg) const
{
  return getPoint(o_cfg);
}
