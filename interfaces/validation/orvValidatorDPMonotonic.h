#pragma once

#include "validation/orvValidator.h"

/// Wants one dof to evolve one way between the ends of a direct path. What it does between them is not looked at.
///
/// Of the profile's bits the value NOT_INCREASING alone names no test and refuses every path; 3 asks for a value that
/// does not increase.
class LUM_API CorvValidatorDPMonotonic : public CorvValidator
{
  LUM_CONCRETE(CorvValidatorDPMonotonic, CorvValidator);

public:
  enum EEvolutionProfile
  {
    INCREASING = 0,
    DECREASING = 1,
    NOT_INCREASING = 2,
    NOT_DECREASING = 4
  };

  static const std::string DEFAULT_NAME;

  ~CorvValidatorDPMonotonic() override;
  static CorvValidatorDPMonotonicShPtr create(const CorvConfigSpaceShPtr& i_space, unsigned int i_dofIndex,
                                              EEvolutionProfile i_profile);
  static CorvValidatorDPMonotonicShPtr createCopy(const CorvValidatorDPMonotonicConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  /// The rank of the dof in the paths' space.
  unsigned int dofIndex() const { return m_dofIndex; }
  void dofIndex(unsigned int i_index);
  EEvolutionProfile evolutionProfile() const { return m_evolutionProfile; }
  void evolutionProfile(EEvolutionProfile i_profile);

  bool doValidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr& i_params,
                            const CorvValidationReportConstShPtr& i_report,
                            CorvValidationReportShPtr& o_report) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvValidatorDPMonotonic() = default;
  CorvValidatorDPMonotonic(const CorvConfigSpaceShPtr& i_space, unsigned int i_dofIndex, EEvolutionProfile i_profile);
  CorvValidatorDPMonotonic(const CorvValidatorDPMonotonic&) = default;
  lmStatus init(const CorvValidatorDPMonotonicWkPtr& i_weakPtr);

private:
  unsigned int m_dofIndex = 0;
  EEvolutionProfile m_evolutionProfile = INCREASING;
};
