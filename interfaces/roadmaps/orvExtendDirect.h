#pragma once

#include "roadmaps/orvExtendMethod.h"

#include <atomic>

/// Keeps the valid part of the direct path.
///
/// With restriction bounds, a length is drawn between them first, and only that much of the direct path is tested. The
/// test goes progressively from the stable end, which itself is taken for valid. What is kept has a valid report.
class LUM_API CorvExtendDirect : public CorvExtendMethod
{
  LUM_CONCRETE(CorvExtendDirect, CorvExtendMethod);

public:
  static CorvExtendDirectShPtr create();
  ~CorvExtendDirect() override;

  /// Path lengths; negative for no restriction, as at first. @return -1, with no change, for NaN, for an upper bound
  /// below the lower one, or for one that is negative alone.
  lmStatus restrictionBounds(double i_lower, double i_upper);
  double lowerRestrictionBound() const { return m_lowerRestrictionBound; }
  double upperRestrictionBound() const { return m_upperRestrictionBound; }

  /// Extensions of the process, for benchmarks.
  static unsigned int extensionCount() { return s_extensionCount; }
  static void resetExtensionCount() { s_extensionCount = 0; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvExtendDirect();
  lmStatus init(const CorvExtendDirectWkPtr& i_weakPtr);

  using CorvExtendMethod::doPlan;
  lmStatus doPlan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                  const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path) override;

private:
  CorvDirectPathConstShPtr restricted(const CorvDirectPathConstShPtr& i_directPath, bool i_fromStart) const;

  double m_lowerRestrictionBound = -1.0;
  double m_upperRestrictionBound = -1.0;
  ClumParameterMapShPtr m_testParameters; ///< of the validation, on the parameters of the plan at hand

  static std::atomic<unsigned int> s_extensionCount;
};
