#pragma once

#include "metrics/orvRandomWalk.h"

#include <vector>

/// The composed walk of a space as one flat list: what `CorvRWComposite`, the scales and the joint sweeps of the
/// space's metrics come to. Most entries are a single draw and an addition.
///
/// A cache stands for one version of its space and one revision of the metrics: `check` tells.
class LUM_API CorvRWCache : public CorvRandomWalk
{
  LUM_CONST_CONCRETE(CorvRWCache, CorvRandomWalk);

public:
  ~CorvRWCache() override;
  /// @return null, with a log entry, if `i_space` is null.
  static CorvRWCacheConstShPtr create(const CorvConfigSpaceConstShPtr& i_space);
  static CorvRWCacheConstShPtr createCopy(const CorvRWCacheConstShPtr& i_objectToCopy);
  CorvRandomWalkConstShPtr clone() const override;
  void step(double i_size, CorvConfig& io_cfg) const override;

  /// True if the list was made for this very space as it stands, or for what it wraps.
  bool check(const CorvConfigSpace& i_space) const;

protected:
  CorvRWCache() = default;
  explicit CorvRWCache(const CorvConfigSpaceConstShPtr& i_space);
  CorvRWCache(const CorvRWCache&) = default;
  lmStatus init(const CorvRWCacheWkPtr& i_weakPtr);

private:
  struct CEntry
  {
    CorvConfigSpaceWkPtr space; ///< of an entry that steps by its metric
    unsigned int rank;
    CorvMetricWkPtr metric;
    CorvRandomDistributionConstShPtr distribution; ///< not null: the dof is moved by a draw, without the metric
    double scale;
  };

  /// A factor that a joint gives, which no revision tells.
  struct CSweep
  {
    CorvMetricJointSweepWkPtr metric;
    double scale;
  };

  void stepEntry(const CEntry& i_entry, double i_size, CorvConfig& io_cfg) const;
  void addSubspaces(const CorvConfigSpace& i_space, unsigned int i_firstRank, double i_factor);
  void add(const CorvConfigSpaceShPtr& i_space, unsigned int i_firstRank, const CorvMetricShPtr& i_metric,
           double i_factor);
  void addSweep(const CorvConfigSpaceShPtr& i_space, unsigned int i_firstRank, const CorvMetricJointSweepShPtr& i_sweep,
                double i_factor);
  void addLeaf(const CorvConfigSpaceShPtr& i_space, unsigned int i_firstRank, const CorvMetricShPtr& i_metric,
               double i_factor);

  CorvConfigSpaceConstWkPtr m_space;
  unsigned int m_version = 0;
  unsigned int m_revision = 0;
  const CorvConfigSpace* m_spaceAddress = nullptr; ///< meaningful while `m_space` lives
  bool m_isComposed = false;                       ///< false: the one step is that of the metric's walk
  std::vector<CEntry> m_entries;
  std::vector<CSweep> m_sweeps;
};
