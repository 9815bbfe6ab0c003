#include "validation/orvValidatorPathBase.h"

#include "foundation/lumCoder.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"

CorvValidatorPathBase::CorvValidatorPathBase(const CorvConfigSpaceShPtr& i_space, const std::string& i_name,
                                             const CorvValidatorShPtr& i_directPathValidator)
  : CorvValidator(i_space, i_name), m_directPathValidator(i_directPathValidator)
{
}

void CorvValidatorPathBase::pushAttributes()
{
  if (m_directPathValidator)
    m_directPathValidator->pushAttributes();
}

void CorvValidatorPathBase::popAttributes()
{
  if (m_directPathValidator)
    m_directPathValidator->popAttributes();
}

bool CorvValidatorPathBase::areDirectPathsValid(const CorvPath& i_path, const CorvValidator& i_validator,
                                                const ClumParameterMapConstShPtr& i_params, bool i_isExhaustive)
{
  bool areValid = true;
  for (unsigned int i = 0; i < i_path.countDirectPaths() && (areValid || i_isExhaustive); ++i)
  {
    const CorvDirectPathConstShPtr directPath = i_path.directPath(i);
    i_validator.validate(*directPath, i_params);
    areValid = directPath->isValid() && areValid;
  }
  return areValid;
}

bool CorvValidatorPathBase::shouldRevalidatePath(const CorvPath&, const ClumParameterMapConstShPtr&,
                                                 const CorvValidationReportConstShPtr&) const
{
  return true;
}

void CorvValidatorPathBase::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvValidator::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_directPathValidator, "dpValidator");
  i_coder->encodeBool(m_isExhaustive, "isExhaustive");
}

lmStatus CorvValidatorPathBase::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvValidator::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_directPathValidator = i_coder->decode<CorvValidator>("dpValidator");
  m_isExhaustive = i_coder->decodeBool("isExhaustive");
  return status;
}
