#include "paths/orvDPRestriction.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvConfigSpace.h"
#include "paths/orvSteeringMethod.h"

#include <limits>

LUM_DESCRIBE(CorvDPRestriction)
{
  i_class.creates("(const CorvDirectPathShPtr& i_directPath, const CorvConfigSpaceShPtr& i_space)", &Self::create);
}

namespace
{
CorvConfig restrictedPathEnd(const CorvDirectPathShPtr& i_path, const CorvConfigSpaceShPtr& i_space,
                             CorvAbstractPath::EDirection i_direction)
{
  return i_path && i_space ? i_path->lastConfiguration(i_direction).restrict(i_space) : CorvConfig();
}
} // namespace

CorvDPRestriction::CorvDPRestriction(const CorvDirectPathShPtr& i_directPath, const CorvConfigSpaceShPtr& i_space)
  : CorvDirectPath(restrictedPathEnd(i_directPath, i_space, BACKWARD),
                   restrictedPathEnd(i_directPath, i_space, FORWARD),
                   i_directPath ? i_directPath->steeringMethod() : CorvSteeringMethodShPtr()),
    m_directPath(i_directPath), m_restrictionSpace(i_space)
{
}

CorvDPRestriction::CorvDPRestriction(const CorvDPRestriction& i_other)
  : CorvDirectPath(i_other), m_directPath(CorvDirectPath::createCopy(i_other.m_directPath)),
    m_restrictionSpace(i_other.m_restrictionSpace)
{
}

CorvDPRestriction::~CorvDPRestriction() = default;

lmStatus CorvDPRestriction::init(const CorvDPRestrictionWkPtr& i_weakPtr)
{
  return m_directPath && m_restrictionSpace ? CorvDirectPath::init(i_weakPtr) : lmStatus(lmStatus::FAILURE);
}

CorvDPRestrictionShPtr CorvDPRestriction::create(const CorvDirectPathShPtr& i_directPath,
                                                 const CorvConfigSpaceShPtr& i_space)
{
  return lumCreate<CorvDPRestriction>(i_directPath, i_space);
}

CorvDPRestrictionShPtr CorvDPRestriction::createCopy(const CorvDPRestrictionConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvAbstractPathShPtr CorvDPRestriction::clone() const
{
  return createCopy(self());
}

double CorvDPRestriction::computePrivateLength() const
{
  return m_directPath->length();
}

void CorvDPRestriction::interpolate(double i_distance, CorvConfig& io_cfg) const
{
  CorvConfig cfg(m_directPath->configSpace());
  LUM_ASSERT_SUCCESS(m_directPath->getConfigAtDistance(i_distance, cfg));
  io_cfg = cfg.restrict(io_cfg.space() ? io_cfg.space() : m_restrictionSpace);
}

void CorvDPRestriction::maxAbsoluteDerivative(double, double, std::vector<double>& o_derivatives) const
{
  LUM_ASSERT(false);
  o_derivatives.assign(m_restrictionSpace->size(), std::numeric_limits<double>::infinity());
}

lmStatus CorvDPRestriction::convert(const CorvConfigSpaceShPtr& i_space)
{
  privateLength(); // of the wrapped path as it is: the base takes it for the length before
  const CorvConfigSpaceShPtr whole = m_directPath->configSpace();
  const CorvDirectPathShPtr converted = i_space && whole->includes(i_space)
                                          ? CorvDirectPath::createByConvertingToSpace(m_directPath, whole)
                                          : CorvDirectPathShPtr();
  if (!converted)
    return lmStatus(lmStatus::FAILURE);
  m_directPath = converted;
  m_restrictionSpace = i_space;
  return CorvDirectPath::convert(i_space);
}

void CorvDPRestriction::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvDirectPath::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_directPath, "directPath");
  i_coder->encodeObjectShPtr(m_restrictionSpace, "restrictionSpace");
}

lmStatus CorvDPRestriction::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvDirectPath::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_directPath = i_coder->decode<CorvDirectPath>("directPath");
  m_restrictionSpace = i_coder->decode<CorvConfigSpace>("restrictionSpace");
  return m_directPath && m_restrictionSpace ? lmStatus() : lmStatus(lmStatus::FAILURE);
}
