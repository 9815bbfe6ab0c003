#pragma once

#include "foundation/lumExport.h"
#include "kinematics/handles.h"
#include "metrics/handles.h"

#include <cstddef>
#include <vector>

/// A metric as numbers: configurations become points, and distances need no configuration, space or metric any more.
///
/// It holds as long as the version of the space and `CorvMetric::revision()` stand and `isCurrent()` is true.
class LUM_API CorvFlatForm
{
public:
  CorvFlatForm();
  CorvFlatForm(const CorvFlatForm& i_other);
  CorvFlatForm& operator=(const CorvFlatForm& i_other);
  ~CorvFlatForm();

  unsigned int pointSize() const { return m_pointSize; }
  /// @param i_values of all dofs of the space. @param o_point `pointSize()` numbers.
  void makePoint(const double* i_values, double* o_point) const;
  /// The bits that the metric's own `squaredDistance` gives for the configurations.
  double squaredDistance(const double* i_pointA, const double* i_pointB) const;
  /// Points in a block, its numbers in columns: number k of point i stands at `k * BLOCK_SIZE + i`. They are measured
  /// many at a time. Only where all numbers are absolute or circular differences with finite factors.
  static constexpr unsigned int BLOCK_SIZE = 16;
  bool canMeasureBlocks() const;
  /// The bits of `squaredDistance` for the first `i_count` points of a block.
  /// @param i_box that holds the points, one of two: see `squaredDistancesToBoxes`.
  /// @param o_squared `BLOCK_SIZE` numbers.
  /// @return false if all are above the limit; what is written then means nothing.
  bool squaredDistancesOfBlock(const double* i_point, const double* i_block, const double* i_box, unsigned int i_count,
                               double i_limit, double* o_squared) const;
  /// How near the points of two boxes may be: for each box a number that `squaredDistance` does not fall below for any
  /// point in it. The bound is computed by the same steps as a distance, none of which changes the order of two
  /// numbers, so that rounding does no harm.
  /// @param i_boxes for each number of a point the low ends of both boxes, then the high ends of both.
  void squaredDistancesToBoxes(const double* i_point, const double* i_boxes, double* o_squared) const;
  /// The numbers that two boxes have for each number of a point; those of one box are two apart.
  static constexpr unsigned int BOXES_SIZE = 4;
  /// The number along which one of two boxes is longest, as the metric measures.
  unsigned int longestSide(const double* i_box) const;
  /// False once a joint that gives a factor is gone or gives another one.
  bool isCurrent() const;
  /// True if both measure alike.
  bool operator==(const CorvFlatForm& i_other) const;

private:
  friend class CorvFlatMetric;
  enum EKind
  {
    ABSOLUTE,
    CIRCULAR,
    SOLID ///< the distance of two poses, as `CorvMetricSlerp` has it
  };
  struct CEntry
  {
    EKind kind;
    unsigned int rank;  ///< of the first dof
    unsigned int place; ///< of the first number in a point
    double scale;       ///< factor of the difference, or of the turn
    unsigned int solid; ///< of a SOLID entry
  };
  struct CSolid;

  std::vector<CEntry> m_entries;
  std::vector<CSolid> m_solids;
  unsigned int m_pointSize = 0;
};

/// A composed metric laid out flat for one version of one space: what `CorvMetricEuclidean` and `CorvMetricManhattan`
/// share. Dofs whose metric is a scaled absolute or circular difference become numbers; the others stay with their
/// metric and two scratch configurations.
///
/// Copies start empty. Not for two threads at a time.
class LUM_API CorvFlatMetric
{
public:
  CorvFlatMetric();
  CorvFlatMetric(const CorvFlatMetric& i_other);
  CorvFlatMetric& operator=(const CorvFlatMetric& i_other);
  ~CorvFlatMetric();

  /// Brings the list up to date for a space. Costs three comparisons when it is.
  /// @param i_owner the composed metric; sub-spaces whose metric is it, or has the type `i_family`, are opened.
  void update(const CorvConfigSpace& i_space, const CorvMetric& i_owner, const char* i_family)
  {
    if (!isCurrent(i_space))
      build(i_space, i_owner, i_family);
  }

  double squaredDistance(const double* i_a, const double* i_b) const;
  double sumOfDistances(const double* i_a, const double* i_b) const;

  /// @return false, with an empty form, if some sub-space's metric has none.
  bool getForm(CorvFlatForm& o_form) const;

private:
  enum EKind
  {
    ABSOLUTE,
    CIRCULAR,
    OTHER
  };
  struct CEntry
  {
    EKind kind;
    unsigned int rank;  ///< the first dof
    double scale;       ///< factor of the difference
    unsigned int other; ///< of an OTHER entry: its place among the metrics that have to be called
  };
  struct COther;
  struct CSweep;

  bool isCurrent(const CorvConfigSpace& i_space) const;
  void build(const CorvConfigSpace& i_space, const CorvMetric& i_owner, const char* i_family);
  void addSubspaces(const CorvConfigSpace& i_space, unsigned int i_firstRank, const CorvMetric& i_owner,
                    const char* i_family);
  void add(const CorvConfigSpaceShPtr& i_space, unsigned int i_firstRank, const CorvMetric& i_owner,
           const char* i_family);
  void watchSweeps(const CorvMetricShPtr& i_metric);
  bool areSweepsCurrent() const;
  static double dofDistance(const CEntry& i_entry, double i_a, double i_b);

  CorvConfigSpaceConstWkPtr m_space;
  const CorvConfigSpace* m_spaceAddress = nullptr; ///< meaningful while `m_space` lives
  unsigned int m_version = 0;
  unsigned int m_revision = 0;
  std::vector<CEntry> m_entries;
  mutable std::vector<COther> m_others;
  std::vector<CSweep> m_sweeps; ///< the factors that joints give, which no revision tells
};
