#pragma once

#include "validation/orvReportCollision.h"
#include "validation/orvValidatorDPCollision.h"

#include <cstdint>

/// How a direct path was tested for collision.
class LUM_API CorvReportDPCollision : public CorvReportCollision
{
  LUM_UNREFLECTED(CorvReportDPCollision, CorvReportCollision);

public:
  /// The state of the world and the kind of question, by which the report is outdated.
  struct CStamps
  {
    unsigned int device = 0;
    unsigned int bodies = 0;
    std::uint64_t scene = 0;
    bool testStart = true;
    bool testGoal = true;
    bool testsSelfCollision = true;
    bool isJudged = true;  ///< false if the judge of configurations was switched off
    bool isDecided = true; ///< false if the test gave up before it could tell
  };

  ~CorvReportDPCollision() override;
  static CorvReportDPCollisionShPtr create();
  static CorvReportDPCollisionShPtr createCopy(const CorvReportDPCollisionConstShPtr& i_objectToCopy);
  CorvValidationReportShPtr clone() const override;

  double penetration() const { return m_penetration; }
  void penetration(double i_penetration) { m_penetration = i_penetration; }
  CorvValidatorDPCollision::EAlgorithm algorithm() const { return m_algorithm; }
  void algorithm(CorvValidatorDPCollision::EAlgorithm i_algorithm) { m_algorithm = i_algorithm; }
  /// Of the direct path when it was tested.
  double length() const { return m_length; }
  void length(double i_length) { m_length = i_length; }
  const CStamps& stamps() const { return m_stamps; }
  void stamps(const CStamps& i_stamps) { m_stamps = i_stamps; }

protected:
  CorvReportDPCollision() = default;
  CorvReportDPCollision(const CorvReportDPCollision&) = default;
  lmStatus init(const CorvReportDPCollisionWkPtr& i_weakPtr);

private:
  double m_penetration = 0.0;
  CorvValidatorDPCollision::EAlgorithm m_algorithm = CorvValidatorDPCollision::DICHOTOMY;
  double m_length = 0.0;
  CStamps m_stamps;
};
