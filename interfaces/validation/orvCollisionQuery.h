#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"
#include "kinematics/handles.h"

#include <vector>

class ClumStringKey;

/// What a collision validation of a configuration is asked for: the parameters of one call, read once.
///
/// A proof of a motion, which asks about many configurations, puts one record into its parameters and refreshes `needs`
/// before each question. Without a record the validator reads the single keys. A report keeps the record that it was
/// made with, so that it can be told whether it answers another question.
struct LUM_API CorvCollisionQuery
{
  /// How much is found out about the distance of a pair.
  enum EMethod
  {
    NO_DISTANCE = 0,
    ESTIMATED_DISTANCE = 1,
    EXACT_DISTANCE = 2,
    DISTANCE_WITH_TOLERANCE = 3,
    PENETRATION_DISTANCE = 4
  };

  /// Relative error of the distances of which only a lower bound is needed.
  static constexpr double BOUND_ACCURACY = 0.2;

  int distanceMode = 0;   ///< 0: touching or not; 1, 2: by comparison with thresholds, without or with tolerances
  int comparisonMode = 0; ///< 1 refuses a distance under the threshold, 2 one above it
  int method = NO_DISTANCE;
  double precision = 0.0; ///< absolute error allowed to the distances
  double toleranceModifier = 0.0;
  bool hasToleranceModifier = false;
  bool toleranceActivation = false;
  bool hasToleranceActivation = false;
  double distanceModifier = 0.0;  ///< added to what is reported in distance mode
  std::vector<double> thresholds; ///< by body rank, NaN where unset; empty if none is set
  int specificBody = -1;
  int pointsMode = 0; ///< not 0: report the nearest points
  bool reportsMaxAllowableDistances = false;
  bool testsSelfCollision = true; ///< pairs of two moving bodies

  /// The proof's own part, for one device. What is added to a clear distance to give the length that a body may move;
  /// taken off the distances first if `isExact`, so that the sum stays under the truth.
  const CorvDevice* device = nullptr;
  double slack = 0.0;
  bool isExact = false;
  bool isBoundEnough = false; ///< lower bounds of `BOUND_ACCURACY` will do, whatever the method
  bool isCapped = false;      ///< of a report's query: there were needs
  /// By body, the longest allowance that is of use; empty for no limit.
  std::vector<double> needs;

  /// Under this key a parameter map carries a record, as a pointer that it does not own.
  static const ClumStringKey& parameterKey();
  /// The record in the parameters, if it is for the device; null otherwise.
  static const CorvCollisionQuery* in(const ClumParameterMapConstShPtr& i_params, const CorvDevice* i_device);

  bool wantsDistances() const { return reportsMaxAllowableDistances || method != NO_DISTANCE || distanceMode != 0; }
  bool isProof() const { return device != nullptr; }
  /// True if the other query's answer, as far as thresholds and modes go, is the same.
  bool hasSameThresholds(const CorvCollisionQuery& i_other) const;
  /// True if a report that keeps this query says the same of the other one.
  bool isSameQuestion(const CorvCollisionQuery& i_other) const;
};
