#pragma once

#include "validation/orvValidatorPathBase.h"

/// A path is valid if each of its direct paths is.
class LUM_API CorvValidatorPathDirectPaths : public CorvValidatorPathBase
{
  LUM_CONCRETE(CorvValidatorPathDirectPaths, CorvValidator);

public:
  static const std::string DEFAULT_NAME;

  ~CorvValidatorPathDirectPaths() override;
  /// @param i_directPathValidator null for the validators of the path's space.
  static CorvValidatorPathDirectPathsShPtr
  create(const CorvConfigSpaceShPtr& i_space, const CorvValidatorShPtr& i_directPathValidator = CorvValidatorShPtr());
  static CorvValidatorPathDirectPathsShPtr createCopy(const CorvValidatorPathDirectPathsConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  bool doValidatePath(const CorvPath& i_path, const ClumParameterMapConstShPtr& i_params,
                      const CorvValidationReportConstShPtr& i_report,
                      CorvValidationReportShPtr& o_report) const override;

protected:
  CorvValidatorPathDirectPaths() = default;
  CorvValidatorPathDirectPaths(const CorvConfigSpaceShPtr& i_space, const CorvValidatorShPtr& i_directPathValidator);
  CorvValidatorPathDirectPaths(const CorvValidatorPathDirectPaths&) = default;
  lmStatus init(const CorvValidatorPathDirectPathsWkPtr& i_weakPtr);
};
