#include "paths/orvSMCurve.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvDof.h"

LUM_DESCRIBE(CorvSMCurve)
{
}

CorvSMCurve::CorvSMCurve(double i_steeringRadius, const CorvDofConstShPtr& i_xDof, const CorvDofConstShPtr& i_yDof,
                         const CorvDofConstShPtr& i_thetaDof)
  : m_steeringRadius(i_steeringRadius), m_xDof(i_xDof), m_yDof(i_yDof), m_thetaDof(i_thetaDof)
{
}

CorvSMCurve::~CorvSMCurve() = default;

lmStatus CorvSMCurve::init(const CorvSMCurveWkPtr& i_weakPtr)
{
  return CorvSteeringMethod::init(i_weakPtr);
}

void CorvSMCurve::steeringRadius(double i_radius)
{
  m_steeringRadius = i_radius;
}

double CorvSMCurve::steeringRadius() const
{
  return m_steeringRadius;
}

void CorvSMCurve::dofX(const CorvDofConstShPtr& i_dof)
{
  m_xDof = i_dof;
}

CorvDofConstShPtr CorvSMCurve::dofX() const
{
  return m_xDof;
}

void CorvSMCurve::dofY(const CorvDofConstShPtr& i_dof)
{
  m_yDof = i_dof;
}

CorvDofConstShPtr CorvSMCurve::dofY() const
{
  return m_yDof;
}

void CorvSMCurve::dofTheta(const CorvDofConstShPtr& i_dof)
{
  m_thetaDof = i_dof;
}

CorvDofConstShPtr CorvSMCurve::dofTheta() const
{
  return m_thetaDof;
}

bool CorvSMCurve::operator==(const CorvSteeringMethod& i_other) const
{
  const auto* other = dynamic_cast<const CorvSMCurve*>(&i_other);
  return other && classObject() == i_other.classObject() && m_steeringRadius == other->m_steeringRadius &&
         m_xDof == other->m_xDof && m_yDof == other->m_yDof && m_thetaDof == other->m_thetaDof;
}

void CorvSMCurve::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvSteeringMethod::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_steeringRadius, "steeringRadius");
  i_coder->encodeObjectShPtr(m_xDof, "xDof");
  i_coder->encodeObjectShPtr(m_yDof, "yDof");
  i_coder->encodeObjectShPtr(m_thetaDof, "thetaDof");
}

lmStatus CorvSMCurve::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvSteeringMethod::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_steeringRadius = i_coder->decodeDouble("steeringRadius");
  m_xDof = i_coder->decode<CorvDof>("xDof");
  m_yDof = i_coder->decode<CorvDof>("yDof");
  m_thetaDof = i_coder->decode<CorvDof>("thetaDof");
  return lmStatus();
}
