#pragma once

#include "kinematics/orvConfig.h"
#include "paths/handles.h"

#include <ostream>
#include <string>
#include <vector>

/// One kind of path that the suite in pathSuiteTest.cpp is run on: every direct path and every path class has at least
/// one. It is added by one line at namespace scope of any test file of this folder:
///
///     const PathKindEntry s_dubins(PathKind("DubinsCurve", makeDubins));
///     const PathKindEntry s_ramp(PathKind("TrapezoidalMotion", makeTrapezoidal).withPartsMadeAnew(1e-9));
///
/// `make` gives a new, uncut path between random ends, in a space (or on a device) of its own, all draws taken from
/// `CorvUtility`; null where there is no such motion, but not as a rule. A kind whose space has a device is also tested
/// for its bounded moves, and converted after a joint was added behind the last one; one without a device, whose space
/// is a composite, after a dof was appended.
///
/// What the suite holds every kind to: ends to the bit; parts and reversals against the whole; marks; rates against
/// dense sampling; bounded moves against sampled displacements; coding; conversion; values that do not depend on what a
/// configuration held before.
struct PathKind
{
  using TMake = CorvAbstractPathShPtr (*)();
  using TGap = double (*)(const CorvConfig&, const CorvConfig&);

  /// @param i_name letters and digits only.
  PathKind(const std::string& i_name, TMake i_make);

  /// Parts are motions of their own, not windows on the whole: only their ends are those of the whole, within `i_gap`.
  PathKind& withPartsMadeAnew(double i_gap);
  /// Parts follow the whole, but have no marks, and no configuration is handed on to them.
  PathKind& withPartsThatForget();
  /// For a kind that has no `maxAbsoluteDerivative`, and so no bounded moves.
  PathKind& withoutRates();
  /// For a kind that has rates, but no bounded moves.
  PathKind& withoutBoundedMoves();
  /// How far apart two configurations are, where the largest difference of a dof does not tell.
  PathKind& withGap(TGap i_gap);

  std::string name;
  TMake make;
  TGap gap;
  bool hasWindows = true;
  bool keepsMarks = true;
  bool hasRates = true;
  bool hasBoundedMoves = true;
  double endGap = 1e-9; ///< of the ends of a part
};

/// How a test names a kind.
inline void PrintTo(const PathKind& i_kind, std::ostream* o_text)
{
  *o_text << i_kind.name;
}

/// The kinds that have been added.
std::vector<PathKind>& pathKinds();

struct PathKindEntry
{
  explicit PathKindEntry(const PathKind& i_kind) { pathKinds().push_back(i_kind); }
};

/// The largest difference of a dof; that of an unbounded rotation is taken the short way round.
double largestDofGap(const CorvConfig& i_a, const CorvConfig& i_b);
