#pragma once

#include "foundation/lumCodable.h"

#include <cstdint>

/// How a pair of geometries is tested. One object may serve many pairs.
///
/// A test with an active tolerance holds as a contact what is nearer than the tolerance. Every setter sends the
/// property notifications and moves `stamp`, a process-wide growing number that is compared for equality only.
class LUM_API ClumTestParameters : public ClumMutableCodable
{
  LUM_CONCRETE(ClumTestParameters, ClumMutableCodable);

public:
  ~ClumTestParameters() override;
  static ClumTestParametersShPtr create();
  static ClumTestParametersShPtr createCopy(const ClumTestParametersConstShPtr& i_objectToCopy);
  virtual ClumTestParametersShPtr clone() const;

  /// Whether the pair is tested at all; at first true.
  bool activation() const { return m_activation; }
  void activation(bool i_activation);
  /// Whether the tolerance counts; at first true.
  bool toleranceActivation() const { return m_toleranceActivation; }
  void toleranceActivation(bool i_activation);
  /// At first 0; negative values allow that much overlap only where the toolkit measures penetration.
  double tolerance() const { return m_tolerance; }
  void tolerance(double i_tolerance);
  /// The error that a reported distance may have; at first 0, as exact as the toolkit is.
  double precision() const { return m_precision; }
  void precision(double i_precision);
  /// The depth up to which an overlap may go unnoticed along a motion; at first 0.
  double penetration() const { return m_penetration; }
  void penetration(double i_penetration);

  bool hasSameValues(const ClumTestParameters& i_other) const;
  std::uint64_t stamp() const { return m_stamp; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumTestParameters();
  ClumTestParameters(const ClumTestParameters& i_other);
  lmStatus init(const ClumTestParametersWkPtr& i_weakPtr);

private:
  template <class T>
  void set(const char* i_name, T& io_field, T i_value);

  bool m_activation = true;
  bool m_toleranceActivation = true;
  double m_tolerance = 0.0;
  double m_precision = 0.0;
  double m_penetration = 0.0;
  std::uint64_t m_stamp;
};
