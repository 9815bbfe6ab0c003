#pragma once

#include "foundation/lumCoverTree.h"
#include "kinematics/orvConfig.h"
#include "metrics/orvFlatMetric.h"
#include "roadmaps/nodeBlocks.h"
#include "roadmaps/orvNode.h"

#include <memory>
#include <vector>

/// The nodes of a component, found by nearness on the metric that their space had when the index was made.
///
/// If the metric measures dof by dof the nodes are kept as points in blocks below a tree of boxes. Otherwise they are
/// in a cover tree, which needs no more of a metric than its laws; there points are kept in one array if the metric has
/// a flat form, and if not the metric is called on the configurations. All give the bits that the metric gives.
///
/// The component keeps the nodes.
class CorvNodeIndex
{
public:
  /// @return null if nodes of the space cannot be indexed: no metric, or an oriented steering method, with which a
  /// distance may depend on the direction.
  static std::unique_ptr<CorvNodeIndex> create(const CorvConfigSpaceShPtr& i_space);

  /// True as long as the space measures as it did when the index was made.
  bool isCurrent(const CorvConfigSpace& i_space) const;
  /// Of nodes at the very same place the first made one is found.
  /// @return false, the index being of no more use, if a distance was infinite, undefined or not the same both ways.
  bool insert(const CorvNodeShPtr& i_node);
  /// The nearest node among those not farther than the bound, or null.
  CorvNodeShPtr nearest(const CorvConfig& i_config, double i_bound) const;
  std::size_t memorySize() const;

private:
  struct CQuery
  {
    const CorvConfig& config;
    const double* point; ///< null without a flat form
  };

  /// Distances between nodes and configurations.
  class CNodeMetric
  {
  public:
    using TQuery = CQuery;

    void add(const CorvNodeShPtr& i_node, const CQuery& i_query);
    void replace(unsigned int i_rank, const CorvNodeShPtr& i_node, const CQuery& i_query);
    double squaredDistance(const CQuery& i_query, unsigned int i_rank) const;
    bool precedes(const CorvNodeShPtr& i_a, const CorvNodeShPtr& i_b) const { return i_a->serial() < i_b->serial(); }
    std::size_t allocatedBytes() const;

    CorvMetricConstShPtr metric;
    bool isFlat = false;
    CorvFlatForm form;

  private:
    std::vector<double> m_points;             ///< of a flat form: the nodes' points, one after the other
    std::vector<const CorvConfig*> m_configs; ///< without a flat form: of the nodes that the tree holds
  };

  explicit CorvNodeIndex(CNodeMetric i_metric);
  bool insertInTree(const CorvNodeShPtr& i_node);
  bool insertInBlocks(const CorvNode& i_node);
  /// Good until the next one: the point lies in a scratch buffer.
  CQuery queryFrom(const CorvConfig& i_config) const;
  bool isMeasuredAlikeBothWays(const CorvNode& i_node) const;

  ClumCoverTree<CorvNodeShPtr, CNodeMetric, double> m_tree;
  std::unique_ptr<CorvNodeBlocks> m_blocks; ///< in place of the tree, which then stays empty
  mutable std::vector<double> m_queryPoint;
  unsigned int m_version = 0;
  mutable unsigned int m_metricRevision = 0;
};
