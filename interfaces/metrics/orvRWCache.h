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

  /// True if the list was made for this very space as it stands.
  bool check(const CorvConfigSpace& i_space) const;

protected:
  CorvRWCache() = default;
  explicit CorvRWCache(const CorvConfigSpaceConstShPtr& i_space);
  CorvRWCache(const CorvRWCache&) = default;
  lmStatus init(const CorvRWCacheWkPtr& i_weakPtr);

private:
  struct CEntry
  {
    CorvConfigSpaceShPtr space; ///< null in the entry that stands for the whole space
    unsigned int rank;
    CorvMetricShPtr metric;
    CorvRandomDistributionConstShPtr distribution; ///< not null: the dof is moved by a draw, without the metric
    double scale;
  };

  void addSubspaces(const CorvConfigSpace& i_space, unsigned int i_firstRank, double i_factor);
  void add(const CorvConfigSpaceShPtr& i_space, unsigned int i_firstRank, const CorvMetricShPtr& i_metric,
           double i_factor);
  void addLeaf(const CorvConfigSpaceShPtr& i_space, unsigned int i_firstRank, const CorvMetricShPtr& i_metric,
               double i_factor);

  CorvConfigSpaceConstWkPtr m_space;
  unsigned int m_version = 0;
  unsigned int m_revision = 0;
  std::vector<CEntry> m_entries;
  std::vector<std::pair<CorvMetricJointSweepConstShPtr, double>> m_sweeps;
};
