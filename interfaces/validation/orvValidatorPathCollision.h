#pragma once

#include "validation/orvValidatorPathBase.h"

/// A path is free of collision, up to a penetration, if each of its direct paths is.
class LUM_API CorvValidatorPathCollision : public CorvValidatorPathBase
{
  LUM_CONCRETE(CorvValidatorPathCollision, CorvValidator);

public:
  /// The name of `CorvValidatorPathDirectPaths` too: a path has one such report.
  static const std::string DEFAULT_NAME;

  ~CorvValidatorPathCollision() override;
  /// @param i_directPathValidator null for one that is made when it is needed. @return null for a negative penetration.
  static CorvValidatorPathCollisionShPtr create(const CorvConfigSpaceShPtr& i_space, double i_penetration = 0.0,
                                                const CorvValidatorShPtr& i_directPathValidator = CorvValidatorShPtr());
  static CorvValidatorPathCollisionShPtr createCopy(const CorvValidatorPathCollisionConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  double penetration() const { return m_penetration; }
  /// @return -1, without a change, for a negative value.
  lmStatus penetration(double i_penetration);
  /// The one that was set; otherwise a `CorvValidatorDPCollision` of this penetration, made on first need.
  const CorvValidatorShPtr& directPathValidator() const;
  using CorvValidatorPathBase::directPathValidator;

  void pushAttributes() override;
  void popAttributes() override;
  bool doValidatePath(const CorvPath& i_path, const ClumParameterMapConstShPtr& i_params,
                      const CorvValidationReportConstShPtr& i_report,
                      CorvValidationReportShPtr& o_report) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvValidatorPathCollision() = default;
  CorvValidatorPathCollision(const CorvConfigSpaceShPtr& i_space, double i_penetration,
                             const CorvValidatorShPtr& i_directPathValidator);
  CorvValidatorPathCollision(const CorvValidatorPathCollision&) = default;
  lmStatus init(const CorvValidatorPathCollisionWkPtr& i_weakPtr);

private:
  double m_penetration = 0.0;
  mutable CorvValidatorShPtr m_ownValidator; ///< made for the penetration at hand, where none was set
};
