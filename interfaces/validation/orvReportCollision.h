#pragma once

#include "validation/orvValidationReport.h"

#include <boost/container/small_vector.hpp>

/// What collision reports share: which bodies were tested and with which tolerances.
class LUM_API CorvReportCollision : public CorvValidationReport
{
  LUM_CONCRETE(CorvReportCollision, CorvValidationReport);

public:
  static constexpr int NO_SPECIFIC_BODY = -1;

  ~CorvReportCollision() override;
  static CorvReportCollisionShPtr create();
  static CorvReportCollisionShPtr createCopy(const CorvReportCollisionConstShPtr& i_objectToCopy);
  CorvValidationReportShPtr clone() const override;

  /// The rank of the only body that was tested, or `NO_SPECIFIC_BODY`.
  int specificBody() const { return m_specificBody; }
  void specificBody(int i_rank);

  /// One entry for each tested body.
  void appendToleranceModifier(double i_modifier) { m_toleranceModifiers.push_back(i_modifier); }
  double toleranceModifier(unsigned int i_rank) const;
  unsigned int countToleranceModifiers() const { return static_cast<unsigned int>(m_toleranceModifiers.size()); }
  void appendToleranceActivation(bool i_isActive) { m_toleranceActivations.push_back(i_isActive); }
  bool toleranceActivation(unsigned int i_rank) const;
  unsigned int countToleranceActivations() const { return static_cast<unsigned int>(m_toleranceActivations.size()); }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvReportCollision() = default;
  CorvReportCollision(const CorvReportCollision&) = default;
  lmStatus init(const CorvReportCollisionWkPtr& i_weakPtr);

  /// For a corrected copy of a report.
  void changeToleranceModifier(unsigned int i_rank, double i_modifier) { m_toleranceModifiers[i_rank] = i_modifier; }
  void clearTolerances()
  {
    m_toleranceModifiers.clear();
    m_toleranceActivations.clear();
  }

private:
  int m_specificBody = NO_SPECIFIC_BODY;
  boost::container::small_vector<double, 2> m_toleranceModifiers;
  boost::container::small_vector<bool, 2> m_toleranceActivations;
};
