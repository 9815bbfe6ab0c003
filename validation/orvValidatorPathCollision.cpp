#include "validation/orvValidatorPathCollision.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "paths/orvPath.h"
#include "validation/orvReportPathCollision.h"
#include "validation/orvValidatorDPCollision.h"

LUM_DESCRIBE(CorvValidatorPathCollision)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space, double i_penetration, "
                  "const CorvValidatorShPtr& i_directPathValidator)",
                  &Self::create);
}

const std::string CorvValidatorPathCollision::DEFAULT_NAME("orvane.core.path-collision");

CorvValidatorPathCollision::CorvValidatorPathCollision(const CorvConfigSpaceShPtr& i_space, double i_penetration,
                                                       const CorvValidatorShPtr& i_directPathValidator)
  : CorvValidatorPathBase(i_space, DEFAULT_NAME, i_directPathValidator), m_penetration(i_penetration)
{
}

CorvValidatorPathCollision::~CorvValidatorPathCollision() = default;

lmStatus CorvValidatorPathCollision::init(const CorvValidatorPathCollisionWkPtr& i_weakPtr)
{
  const lmStatus status = CorvValidator::init(i_weakPtr);
  return status.failed() || m_penetration >= 0.0 ? status : lmStatus(-1);
}

CorvValidatorPathCollisionShPtr CorvValidatorPathCollision::create(const CorvConfigSpaceShPtr& i_space,
                                                                   double i_penetration,
                                                                   const CorvValidatorShPtr& i_directPathValidator)
{
  return lumCreate<CorvValidatorPathCollision>(i_space, i_penetration, i_directPathValidator);
}

CorvValidatorPathCollisionShPtr
CorvValidatorPathCollision::createCopy(const CorvValidatorPathCollisionConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorPathCollision::clone() const
{
  return createCopy(self());
}

lmStatus CorvValidatorPathCollision::penetration(double i_penetration)
{
  if (!(i_penetration >= 0.0))
    return -1;
  m_penetration = i_penetration;
  m_ownValidator.reset();
  return lmStatus();
}

const CorvValidatorShPtr& CorvValidatorPathCollision::directPathValidator() const
{
  if (const CorvValidatorShPtr& given = CorvValidatorPathBase::directPathValidator())
    return given;
  if (!m_ownValidator)
    m_ownValidator = CorvValidatorDPCollision::create(configSpace(), CorvValidatorConstShPtr(), m_penetration);
  return m_ownValidator;
}

void CorvValidatorPathCollision::pushAttributes()
{
  if (const CorvValidatorShPtr validator = directPathValidator())
    validator->pushAttributes();
}

void CorvValidatorPathCollision::popAttributes()
{
  if (const CorvValidatorShPtr validator = directPathValidator())
    validator->popAttributes();
}

bool CorvValidatorPathCollision::doValidatePath(const CorvPath& i_path, const ClumParameterMapConstShPtr& i_params,
                                                const CorvValidationReportConstShPtr&,
                                                CorvValidationReportShPtr& o_report) const
{
  static const ClumStringKey s_penetrationKey("orvane.core.validator.dp.collision.penetration");
  const CorvValidatorShPtr validator = directPathValidator();
  if (!validator)
    return false;
  const ClumParameterMapShPtr params = ClumParameterMap::createWithBase(i_params);
  if (m_penetration > 0.0)
    params->setDouble(s_penetrationKey, m_penetration);
  const bool isValid = areDirectPathsValid(i_path, *validator, params, isExhaustive());
  const CorvReportPathCollisionShPtr report = CorvReportPathCollision::create();
  report->penetration(m_penetration);
  o_report = report;
  return isValid;
}

void CorvValidatorPathCollision::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvValidatorPathBase::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_penetration, "penetration");
}

lmStatus CorvValidatorPathCollision::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvValidatorPathBase::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_penetration = i_coder->decodeDouble("penetration");
  return m_penetration >= 0.0 ? status : lmStatus(-1);
}
