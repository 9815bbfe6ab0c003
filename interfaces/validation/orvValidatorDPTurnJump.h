#pragma once

#include "validation/orvValidator.h"

/// Finds jumps of computed joints: along a direct path, sampled every 30 units of length, no revolute bounded dof that
/// a constraint computes may change by three quarters of a turn between two samples.
class LUM_API CorvValidatorDPTurnJump : public CorvValidator
{
  LUM_CONCRETE(CorvValidatorDPTurnJump, CorvValidator);

public:
  static const std::string DEFAULT_NAME;

  ~CorvValidatorDPTurnJump() override;
  static CorvValidatorDPTurnJumpShPtr create(const CorvConfigSpaceShPtr& i_space,
                                             const std::string& i_name = DEFAULT_NAME);
  static CorvValidatorDPTurnJumpShPtr createCopy(const CorvValidatorDPTurnJumpConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  bool doValidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr& i_params,
                            const CorvValidationReportConstShPtr& i_report,
                            CorvValidationReportShPtr& o_report) const override;

protected:
  CorvValidatorDPTurnJump() = default;
  CorvValidatorDPTurnJump(const CorvConfigSpaceShPtr& i_space, const std::string& i_name);
  CorvValidatorDPTurnJump(const CorvValidatorDPTurnJump&) = default;
  lmStatus init(const CorvValidatorDPTurnJumpWkPtr& i_weakPtr);

private:
  const std::vector<unsigned int>& watchedDofs(const CorvConfigSpace& i_space) const;

  mutable std::vector<unsigned int> m_watchedDofs; ///< ranks
  mutable unsigned int m_watchedVersion = 0;       ///< of the space that the ranks belong to, 0 for none
};
