#pragma once

#include "validation/orvValidator.h"

/// A check of each dof's value by itself. The report tells the verdict on every dof, also after a refusal.
///
/// The dofs are read flat, once per version of the space. A configuration whose dofs all pass gets one report that all
/// such configurations share.
class LUM_API CorvValidatorCfgDof : public CorvConfigValidator
{
  LUM_ABSTRACT(CorvValidatorCfgDof, CorvConfigValidator);

public:
  ~CorvValidatorCfgDof() override;

  virtual bool doValidateDof(const CorvDofConstShPtr& i_dof, double i_value) const = 0;

  bool doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                        const CorvValidationReportConstShPtr& i_report,
                        CorvValidationReportShPtr& o_report) const override;

protected:
  CorvValidatorCfgDof();
  CorvValidatorCfgDof(const CorvConfigSpaceShPtr& i_space, const std::string& i_name);
  CorvValidatorCfgDof(const CorvValidatorCfgDof& i_other);
  lmStatus init(const CorvValidatorCfgDofWkPtr& i_weakPtr);

private:
  void updateDofs() const;

  mutable std::vector<CorvDofShPtr> m_dofs;
  mutable CorvReportCfgDofShPtr m_allValid; ///< shared by every configuration that passes
  mutable unsigned int m_version = 0;       ///< of the space that the two were made for, 0 for none
};

/// Refuses a bounded dof outside of its bounds. At the border the dof's own equivalence of values decides.
class LUM_API CorvValidatorCfgBounds : public CorvValidatorCfgDof
{
  LUM_CONCRETE(CorvValidatorCfgBounds, CorvValidatorCfgDof);

public:
  ~CorvValidatorCfgBounds() override;
  static CorvValidatorCfgBoundsShPtr create(const CorvConfigSpaceShPtr& i_space);
  static CorvValidatorCfgBoundsShPtr createCopy(const CorvValidatorCfgBoundsConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;
  bool doValidateDof(const CorvDofConstShPtr& i_dof, double i_value) const override;

protected:
  CorvValidatorCfgBounds() = default;
  explicit CorvValidatorCfgBounds(const CorvConfigSpaceShPtr& i_space);
  CorvValidatorCfgBounds(const CorvValidatorCfgBounds&) = default;
  lmStatus init(const CorvValidatorCfgBoundsWkPtr& i_weakPtr);
};

/// Refuses a locked dof that is away from its locked value.
class LUM_API CorvValidatorCfgLock : public CorvValidatorCfgDof
{
  LUM_CONCRETE(CorvValidatorCfgLock, CorvValidatorCfgDof);

public:
  ~CorvValidatorCfgLock() override;
  static CorvValidatorCfgLockShPtr create(const CorvConfigSpaceShPtr& i_space);
  static CorvValidatorCfgLockShPtr createCopy(const CorvValidatorCfgLockConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;
  bool doValidateDof(const CorvDofConstShPtr& i_dof, double i_value) const override;

protected:
  CorvValidatorCfgLock() = default;
  explicit CorvValidatorCfgLock(const CorvConfigSpaceShPtr& i_space);
  CorvValidatorCfgLock(const CorvValidatorCfgLock&) = default;
  lmStatus init(const CorvValidatorCfgLockWkPtr& i_weakPtr);
};
