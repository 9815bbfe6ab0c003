#pragma once

#include "validation/orvCollisionQuery.h"
#include "validation/orvValidator.h"

#include <atomic>
#include <cstdint>

/// What the collision validators share: one name, so that a configuration has one collision report, one vocabulary of
/// parameters, and the bound on motion that a report gives.
///
/// A distance validator refuses by comparing a measured distance with a threshold, any other by touching.
class LUM_API CorvValidatorCfgCollisionBase : public CorvConfigValidator
{
  LUM_ABSTRACT(CorvValidatorCfgCollisionBase, CorvConfigValidator);

public:
  static const std::string VALIDATOR_NAME;

  ~CorvValidatorCfgCollisionBase() override;

  bool isDistanceValidator() const { return m_isDistanceValidator; }
  void isDistanceValidator(bool i_isDistanceValidator);

  /// The largest tolerance of the device's bodies. A body that fails makes the status a failure; the others count.
  virtual lmStatus getMaximumTolerance(const CorvDeviceShPtr& i_device, double& o_tolerance) const;
  virtual int defaultDistanceMode() const;
  virtual int defaultComparisonMode() const;

  using CorvValidator::validMotion;
  /// Reads the allowances in the configuration's report. Fails for an invalid configuration, and at penetration 0 where
  /// no distance above the sag is known.
  lmStatus validMotion(const CorvDirectPath& i_dp, double i_param, const CorvConfig& i_cfg,
                       CorvAbstractPath::EDirection i_direction, const ClumParameterMapConstShPtr& i_params,
                       double& o_bound, bool& o_exact) const override;
  bool shouldRevalidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                              const CorvValidationReportConstShPtr& i_report) const override;

  /// The parameters of a call as a record.
  CorvCollisionQuery makeQuery(const ClumParameterMapConstShPtr& i_params) const;

  /// A number that moves with the shapes, the obstacles' positions and the tests; compared for equality only.
  virtual std::uint64_t sceneStamp() const;
  /// Called before the configurations of a motion are asked about: what was remembered from earlier questions, which
  /// may change a bound within its accuracy, is forgotten, so that a proof does not depend on what was asked before.
  virtual void willTestMotion() const;
  /// The sum of the versions of the device's bodies.
  static unsigned int bodiesVersionSum(const CorvDevice& i_device);
  /// The tolerance of a body in a call: its own with what the parameters say.
  static void getTolerance(const CorvBody& i_body, const CorvCollisionQuery& i_query, double& o_modifier,
                           bool& o_activation);

  /// Configurations tested and distance or contact queries put to the toolkit since the start of the process.
  static unsigned long countTests() { return s_countTests; }
  static unsigned long countQueries() { return s_countQueries; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvValidatorCfgCollisionBase() = default;
  CorvValidatorCfgCollisionBase(const CorvConfigSpaceShPtr& i_space, bool i_isDistanceValidator);
  CorvValidatorCfgCollisionBase(const CorvValidatorCfgCollisionBase&) = default;
  lmStatus init(const CorvValidatorCfgCollisionBaseWkPtr& i_weakPtr);

  /// True if another validation of the same device, on the validation space, judges the configuration.
  /// @param i_device that of this validator.
  bool isJudgedElsewhere(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                         const CorvDevice* i_device) const;

  static std::atomic<unsigned long> s_countTests;
  static std::atomic<unsigned long> s_countQueries;

private:
  bool isOutdated(const CorvReportCfgCollision& i_report, const CorvCollisionQuery& i_query,
                  const CorvDevice& i_device) const;
  bool absorbTolerances(const CorvConfig& i_cfg, const CorvReportCfgCollision& i_report,
                        const CorvCollisionQuery& i_query, const CorvDevice& i_device) const;

  bool m_isDistanceValidator = false;
};
