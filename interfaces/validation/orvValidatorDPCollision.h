#pragma once

#include "validation/orvValidator.h"

#include <atomic>
#include <memory>

/// Proves a direct path free of collision, from distances at a few configurations and the bound on the bodies' motion.
///
/// A configuration whose bodies have clearances covers the stretch of the path on which no body can move farther than
/// its own. Only what is left uncovered is asked about again. At penetration 0 the proof is exact: a path that is
/// called free has no contact anywhere. At a positive penetration each configuration covers that much more, so a
/// contact thinner than that may be missed.
///
/// `DICHOTOMY` halves what is uncovered, breadth first, and finds collisions early. The progressive algorithms go from
/// one end and leave marks on the path: how far it is proved, and where it collides. A test that runs out of time or
/// samples, or that makes no more headway, counts as colliding, without a collision mark.
class LUM_API CorvValidatorDPCollision : public CorvValidator
{
  LUM_CONCRETE(CorvValidatorDPCollision, CorvValidator);

public:
  enum EAlgorithm
  {
    PROGRESSIVE_FORWARD,
    PROGRESSIVE_BACKWARD,
    DICHOTOMY
  };

  static const std::string DEFAULT_NAME;

  ~CorvValidatorDPCollision() override;
  /// @param i_cfgValidator null for the configurations' own validators.
  /// @return null, with a log entry, for a negative penetration or a configuration validator of another space.
  static CorvValidatorDPCollisionShPtr create(const CorvConfigSpaceShPtr& i_space,
                                              const CorvValidatorConstShPtr& i_cfgValidator, double i_penetration,
                                              EAlgorithm i_algorithm = DICHOTOMY);
  static CorvValidatorDPCollisionShPtr createCopy(const CorvValidatorDPCollisionConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  /// The penetration of the first validator of this class that is embedded in the given one.
  /// @return -1 if there is none, or for a negative value.
  static lmStatus setPenetration(const CorvValidatorShPtr& i_validator, double i_penetration);
  static lmStatus getPenetration(const CorvValidatorShPtr& i_validator, double& o_penetration);

  /// Names of the marks that a test leaves on the direct path.
  static const std::string& minParamMark();
  static const std::string& maxParamMark();
  static const std::string& collisionMark();
  /// Direct paths tested, and configurations tested for them, since the start of the process.
  static unsigned long countTests() { return s_countTests; }
  static unsigned long countTestedConfigs() { return s_countTestedConfigs; }

  bool testStart() const { return m_testStart; }
  void testStart(bool i_test) { m_testStart = i_test; }
  bool testGoal() const { return m_testGoal; }
  void testGoal(bool i_test) { m_testGoal = i_test; }
  double penetration() const { return m_penetration; }
  /// @return -1, without a change, for a negative value.
  lmStatus penetration(double i_penetration);
  EAlgorithm algorithm() const { return m_algorithm; }
  void algorithm(EAlgorithm i_algorithm) { m_algorithm = i_algorithm; }
  const CorvValidatorConstShPtr& cfgValidator() const { return m_cfgValidator; }
  void cfgValidator(const CorvValidatorConstShPtr& i_validator) { m_cfgValidator = i_validator; }
  /// Seconds after which a test gives up; negative for never.
  double timeout() const { return m_timeout; }
  void timeout(double i_seconds) { m_timeout = i_seconds; }
  /// Configurations after which a test gives up; 0 for never.
  unsigned int sampleout() const { return m_sampleout; }
  void sampleout(unsigned int i_count) { m_sampleout = i_count; }
  double exactDistancePrecision() const { return m_exactDistancePrecision; }
  void exactDistancePrecision(double i_precision) { m_exactDistancePrecision = i_precision; }
  /// At penetration 0, the clearance that a configuration must have beyond its computed distance.
  double zeroPenetrationSag() const { return m_zeroPenetrationSag; }
  void zeroPenetrationSag(double i_sag) { m_zeroPenetrationSag = i_sag; }
  bool alwaysUseExactDistance() const { return m_alwaysUseExactDistance; }
  void alwaysUseExactDistance(bool i_always) { m_alwaysUseExactDistance = i_always; }

  /// The part of a tested direct path that is proved free, with a valid report: the whole of a valid path; of an
  /// invalid one what a progressive test has proved, less `i_margin` of length at the side of the collision.
  /// @return null if nothing is proved, or what is left is too short.
  CorvDirectPathShPtr extractValidPart(const CorvDirectPathConstShPtr& i_dp, double i_margin = 0.0) const;
  /// Validates with `cfgValidator`, or by the configuration's own validators.
  bool validateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params) const;

  void pushAttributes() override;
  void popAttributes() override;
  bool doValidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr& i_params,
                            const CorvValidationReportConstShPtr& i_report,
                            CorvValidationReportShPtr& o_report) const override;
  bool shouldRevalidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr& i_params,
                                  const CorvValidationReportConstShPtr& i_report) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvValidatorDPCollision();
  CorvValidatorDPCollision(const CorvConfigSpaceShPtr& i_space, const CorvValidatorConstShPtr& i_cfgValidator,
                           double i_penetration, EAlgorithm i_algorithm);
  CorvValidatorDPCollision(const CorvValidatorDPCollision&) = default;
  lmStatus init(const CorvValidatorDPCollisionWkPtr& i_weakPtr);

private:
  struct CSettings;
  struct CScratch;
  class CTest;
  /// Not copied with the validator.
  struct CScratchHolder
  {
    CScratchHolder();
    CScratchHolder(const CScratchHolder& i_other);
    ~CScratchHolder();
    std::unique_ptr<CScratch> kept;
  };
  struct CAttributes
  {
    bool testStart;
    bool testGoal;
    double penetration;
    EAlgorithm algorithm;
    CorvValidatorConstShPtr cfgValidator;
  };

  CSettings readSettings(const ClumParameterMapConstShPtr& i_params) const;
  bool isJudgedElsewhere(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr& i_params) const;
  CorvReportDPCollisionShPtr makeReport(const CorvDirectPath& i_dp, const CSettings& i_settings,
                                        const CorvValidatorCfgCollisionBase* i_collision) const;
  bool haveTolerancesChanged(const CorvReportDPCollision& i_report, const CorvReportDPCollision& i_now) const;

  bool m_testStart = true;
  bool m_testGoal = true;
  double m_penetration = 0.0;
  EAlgorithm m_algorithm = DICHOTOMY;
  CorvValidatorConstShPtr m_cfgValidator;
  double m_timeout = -1.0;
  unsigned int m_sampleout = 0;
  double m_exactDistancePrecision = 0.2;
  double m_zeroPenetrationSag = 1e-4;
  bool m_alwaysUseExactDistance = false;
  std::vector<CAttributes> m_savedAttributes;
  mutable CScratchHolder m_scratch;

  static std::atomic<unsigned long> s_countTests;
  static std::atomic<unsigned long> s_countTestedConfigs;
};
