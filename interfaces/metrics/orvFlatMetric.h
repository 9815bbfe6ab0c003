#pragma once

#include "foundation/lumExport.h"
#include "kinematics/handles.h"
#include "metrics/handles.h"

#include <vector>

/// A composed metric laid out flat for one version of one space: what `CorvMetricEuclidean` and `CorvMetricManhattan`
/// share. Dofs whose metric is a scaled absolute or circular difference become numbers; the others stay with their
/// metric and two scratch configurations.
///
/// Copies start empty. Not for two threads at a time.
class LUM_API CorvFlatMetric
{
public:
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

  /// @return false if some metric must be called or may change by itself.
  bool getEntries(std::vector<CEntry>& o_entries) const;
  /// Squared distance of two value arrays by entries that `getEntries` gave.
  static double squaredDistance(const std::vector<CEntry>& i_entries, const double* i_a, const double* i_b);

private:
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

  CorvConfigSpaceConstWkPtr m_space;
  const CorvConfigSpace* m_spaceAddress = nullptr; ///< meaningful while `m_space` lives
  unsigned int m_version = 0;
  unsigned int m_revision = 0;
  std::vector<CEntry> m_entries;
  mutable std::vector<COther> m_others;
  std::vector<CSweep> m_sweeps; ///< the factors that joints give, which no revision tells
};
