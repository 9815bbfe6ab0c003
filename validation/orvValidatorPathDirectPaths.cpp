#include "validation/orvValidatorPathDirectPaths.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
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
  : CorvValidatorPathBase(i_space, DEFAULT_NAME, i_directPathValidator)
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

bool CorvValidatorPathDirectPaths::doValidatePath(const CorvPath& i_path, const ClumParameterMapConstShPtr& i_params,
                                                  const CorvValidationReportConstShPtr&,
                                                  CorvValidationReportShPtr& o_report) const
{
  static const ClumStringKey s_exhaustiveKey("orvane.core.validator.path.direct-paths.exhaustive");
  const CorvConfigSpaceShPtr space = i_path.configSpace();
  const CorvValidatorShPtr& own = directPathValidator();
  const CorvValidatorShPtr validator = own ? own : (space ? space->directPathValidators() : CorvValidatorSetShPtr());
  if (!validator)
    return false;
  const bool isExhaustiveNow = i_params ? i_params->boolValue(s_exhaustiveKey, isExhaustive()) : isExhaustive();
  const bool isValid = areDirectPathsValid(i_path, *validator, i_params, isExhaustiveNow);
  o_report = CorvValidationReport::create();
  return isValid;
}
