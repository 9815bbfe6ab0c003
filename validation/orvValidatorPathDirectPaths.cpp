#include "validation/orvValidatorPathDirectPaths.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "validation/orvValidationReport.h"
#include "validation/orvValidatorSet.h"

LUM_DESCRIBE(CorvValidatorPathDirectPaths)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space, const CorvValidatorShPtr& i_directPathValidator)",
                  &Self::create);
}

const std::string CorvValidatorPathDirectPaths::DEFAULT_NAME("orvane.core.path-collision");

CorvValidatorPathDirectPaths::CorvValidatorPathDirectPaths(const CorvConfigSpaceShPtr& i_space,
                                                           const CorvValidatorShPtr& i_directPathValidator)
  : CorvValidator(i_space, DEFAULT_NAME), m_directPathValidator(i_directPathValidator)
{
}

CorvValidatorPathDirectPaths::~CorvValidatorPathDirectPaths() = default;

lmStatus CorvValidatorPathDirectPaths::init(const CorvValidatorPathDirectPathsWkPtr& i_weakPtr)
{
  return CorvValidator::init(i_weakPtr);
}

CorvValidatorPathDirectPathsShPtr CorvValidatorPathDirectPaths::create(const CorvConfigSpaceShPtr& i_space,
                                                                       const CorvValidatorShPtr& i_directPathValidator)
{
  return lumCreate<CorvValidatorPathDirectPaths>(i_space, i_directPathValidator);
}

CorvValidatorPathDirectPathsShPtr
CorvValidatorPathDirectPaths::createCopy(const CorvValidatorPathDirectPathsConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorPathDirectPaths::clone() const
{
  return createCopy(self());
}

void CorvValidatorPathDirectPaths::pushAttributes()
{
  if (m_directPathValidator)
    m_directPathValidator->pushAttributes();
}

void CorvValidatorPathDirectPaths::popAttributes()
{
  if (m_directPathValidator)
    m_directPathValidator->popAttributes();
}

bool CorvValidatorPathDirectPaths::doValidatePath(const CorvPath& i_path, const ClumParameterMapConstShPtr& i_params,
                                                  const CorvValidationReportConstShPtr&,
                                                  CorvValidationReportShPtr& o_report) const
{
  static const ClumStringKey s_exhaustiveKey("orvane.core.validator.path.direct-paths.exhaustive");
  const CorvConfigSpaceShPtr space = i_path.configSpace();
  const CorvValidatorShPtr validator =
    m_directPathValidator ? m_directPathValidator : (space ? space->directPathValidators() : CorvValidatorSetShPtr());
  if (!validator)
    return false;
  const bool isExhaustive = i_params ? i_params->boolValue(s_exhaustiveKey, m_isExhaustive) : m_isExhaustive;
  bool isValid = true;
  for (unsigned int i = 0; i < i_path.countDirectPaths() && (isValid || isExhaustive); ++i)
  {
    const CorvDirectPathConstShPtr directPath = i_path.directPath(i);
    validator->validate(*directPath, i_params);
    isValid = directPath->isValid() && isValid;
  }
  o_report = CorvValidationReport::create();
  return isValid;
}

bool CorvValidatorPathDirectPaths::shouldRevalidatePath(const CorvPath&, const ClumParameterMapConstShPtr&,
                                                        const CorvValidationReportConstShPtr&) const
{
  return true;
}

void CorvValidatorPathDirectPaths::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvValidator::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_directPathValidator, "dpValidator");
  i_coder->encodeBool(m_isExhaustive, "isExhaustive");
}

lmStatus CorvValidatorPathDirectPaths::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvValidator::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_directPathValidator = i_coder->decode<CorvValidator>("dpValidator");
  m_isExhaustive = i_coder->decodeBool("isExhaustive");
  return lmStatus();
}
