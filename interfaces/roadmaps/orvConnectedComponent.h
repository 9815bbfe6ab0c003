#pragma once

#include "foundation/lumObject.h"
#include "kinematics/handles.h"
#include "metrics/handles.h"
#include "roadmaps/handles.h"
#include "roadmaps/orvLinkedIterator.h"

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <utility>
#include <vector>

struct CorvComponentCell;
class CorvNodeIndex;

/// A strongly connected set of nodes of a roadmap: inside it every node can reach every other.
///
/// Components know the transitive closure of the relation of reaching: every component from which this one can be
/// reached and every one that it can reach, itself excepted. So reachability is asked of a list and never walked for.
/// The nodes are held here; roadmap and other components are known weakly. A component lives from `create` until a
/// merge replaces it or the roadmap removes it, after which its `roadmap()` is null.
///
/// Nearest nodes are found by a linear scan of up to nine nodes and through an index from ten on: a tree of boxes over
/// packed points where the metric allows it, a cover tree elsewhere. The index is built on the metric that the space
/// has at that time; if the space gets another metric or another version, it is dropped, and the next `addNode` builds a
/// new one. It is not used for a metric that gives infinite or undefined distances, nor for spaces with an oriented
/// steering method. Scan and index give the same node to the last bit: among nodes at equal distance the one that was
/// created first.
///
/// The operations that change a component are called by `CorvRoadmap` only. One thread at a time.
class LUM_API CorvConnectedComponent
{
public:
  /// Another component in a closure list.
  struct CLink
  {
    std::uint64_t serial; ///< the lists are sorted by it
    CorvConnectedComponentWkPtr component;

    CorvConnectedComponentShPtr lock() const { return component.lock(); }
  };

  /// Orders components by their creation.
  struct CSerialLess
  {
    bool operator()(const CorvConnectedComponentShPtr& i_a, const CorvConnectedComponentShPtr& i_b) const
    {
      return i_a->serial() < i_b->serial();
    }
  };

  /// (low, high) of each dof.
  using TBox = std::vector<std::pair<double, double>>;
  using TNodeList = std::list<CorvNodeShPtr>;
  using TNodeIterator = TNodeList::const_iterator;
  using TComponentIterator = std::vector<CLink>::const_iterator;
  using TLinkedNodeIterator = CorvLinkedIterator<CorvNodeShPtr, CorvConnectedComponentConstShPtr>;
  using TNodesByDistance = std::multimap<double, CorvNodeShPtr>;

  static CorvConnectedComponentShPtr create(const CorvRoadmapShPtr& i_roadmap);
  CorvConnectedComponent(const CorvConnectedComponent&) = delete;
  CorvConnectedComponent& operator=(const CorvConnectedComponent&) = delete;
  virtual ~CorvConnectedComponent();

  CorvConnectedComponentShPtr self() const { return m_self.lock(); }
  CorvRoadmapShPtr roadmap() const { return m_roadmap.lock(); }
  void roadmap(const CorvRoadmapShPtr& i_roadmap) { m_roadmap = i_roadmap; }
  std::uint64_t serial() const { return m_serial; }

  unsigned int countNodes() const { return static_cast<unsigned int>(m_nodes.size()); }
  unsigned int countTransitiveInComponents() const { return static_cast<unsigned int>(m_inComponents.size()); }
  unsigned int countTransitiveOutComponents() const { return static_cast<unsigned int>(m_outComponents.size()); }
  /// Nodes of all components of the in (out) list: this component's own are not counted.
  unsigned int countTransitiveInNodes() const;
  unsigned int countTransitiveOutNodes() const;
  bool hasTransitiveOutComponent(const CorvConnectedComponentConstShPtr& i_component) const;

  TNodeIterator beginNodeIterator() const { return m_nodes.begin(); }
  TNodeIterator endNodeIterator() const { return m_nodes.end(); }
  TComponentIterator beginInComponentIterator() const { return m_inComponents.begin(); }
  TComponentIterator endInComponentIterator() const { return m_inComponents.end(); }
  TComponentIterator beginOutComponentIterator() const { return m_outComponents.begin(); }
  TComponentIterator endOutComponentIterator() const { return m_outComponents.end(); }

  /// The nodes of the in-components, of the out-components, of either with this component's own behind them, of all.
  TLinkedNodeIterator beginInNodeIterator() const { return linkedNodes(true, false, false); }
  TLinkedNodeIterator endInNodeIterator() const { return TLinkedNodeIterator(); }
  TLinkedNodeIterator beginOutNodeIterator() const { return linkedNodes(false, true, false); }
  TLinkedNodeIterator endOutNodeIterator() const { return TLinkedNodeIterator(); }
  TLinkedNodeIterator beginReachingNodeIterator() const { return linkedNodes(true, false, true); }
  TLinkedNodeIterator endReachingNodeIterator() const { return TLinkedNodeIterator(); }
  TLinkedNodeIterator beginReachableNodeIterator() const { return linkedNodes(false, true, true); }
  TLinkedNodeIterator endReachableNodeIterator() const { return TLinkedNodeIterator(); }
  TLinkedNodeIterator beginConnectedNodeIterator() const { return linkedNodes(true, true, true); }
  TLinkedNodeIterator endConnectedNodeIterator() const { return TLinkedNodeIterator(); }

  /// The box of this component's nodes, and united with those of its in list, its out list, both. The interval of an
  /// angle without bounds may reach over the wrap point; wider than pi it is (-pi, pi).
  /// @return -1 if there is no node, or if a component has a box of another dimension; `o_box` is then left alone.
  lmStatus boundingBox(TBox& o_box) const;
  lmStatus inBoundingBox(TBox& o_box) const;
  lmStatus outBoundingBox(TBox& o_box) const;
  lmStatus inoutBoundingBox(TBox& o_box) const;

  /// Sums of the direct paths' lengths: of the edges inside this component; of all edges that arrive at a node that
  /// reaches this component; of all edges that leave a node that it reaches. A two-way link counts twice.
  /// `removeDeadEnd` leaves them as they were.
  double length() const { return m_length; }
  double reachingLength() const;
  double reachableLength() const;

  /// Debugging: recompute by a walk and compare.
  bool checkTransitiveInvariant() const;
  bool checkReachableLengthInvariant() const;
  bool checkReachingLengthInvariant() const;

  /// The node nearest to a configuration; null without a node. With a metric other than the space's own all nodes are
  /// scanned.
  CorvNodeShPtr nearestNode(const CorvConfig& i_config) const;
  CorvNodeShPtr nearestNode(const CorvConfig& i_config, const CorvMetricConstShPtr& i_metric) const;
  /// The same among this component and those of both lists, of the out list, of the in list. A later component wins
  /// only if its node is strictly nearer.
  CorvNodeShPtr nearestConnectedNode(const CorvConfig& i_config) const;
  CorvNodeShPtr nearestConnectedNode(const CorvConfig& i_config, const CorvMetricConstShPtr& i_metric) const;
  CorvNodeShPtr nearestReachableNode(const CorvConfig& i_config) const;
  CorvNodeShPtr nearestReachableNode(const CorvConfig& i_config, const CorvMetricConstShPtr& i_metric) const;
  CorvNodeShPtr nearestReachingNode(const CorvConfig& i_config) const;
  CorvNodeShPtr nearestReachingNode(const CorvConfig& i_config, const CorvMetricConstShPtr& i_metric) const;
  /// The node within `CorvConfig::isEquivalent` of the configuration that `nearestNode` would give; null if that is
  /// not equivalent. Costs little for a configuration far from the nodes.
  CorvNodeShPtr equivalentNode(const CorvConfig& i_config) const;

  /// The `i_count` nearest nodes together with every node nearer than `i_maxDistance`, by a linear scan. Nodes whose
  /// configuration equals `i_config` are left out.
  TNodesByDistance nearestNodes(const CorvConfig& i_config, double i_maxDistance, unsigned int i_count) const;
  TNodesByDistance nearestNodes(const CorvConfig& i_config, double i_maxDistance, unsigned int i_count,
                                const CorvMetricConstShPtr& i_metric) const;
  /// The same over this component and its out (in) list, by ascending distance. A node below the distance limit may
  /// stand in the result twice.
  std::vector<CorvNodeShPtr> nearestReachableNodes(const CorvConfig& i_config, double i_maxDistance,
                                                   unsigned int i_count) const;
  std::vector<CorvNodeShPtr> nearestReachableNodes(const CorvConfig& i_config, double i_maxDistance,
                                                   unsigned int i_count, const CorvMetricConstShPtr& i_metric) const;
  std::vector<CorvNodeShPtr> nearestReachingNodes(const CorvConfig& i_config, double i_maxDistance,
                                                  unsigned int i_count) const;
  std::vector<CorvNodeShPtr> nearestReachingNodes(const CorvConfig& i_config, double i_maxDistance,
                                                  unsigned int i_count, const CorvMetricConstShPtr& i_metric) const;

  /// The shortest gap from what this component reaches to what reaches the other one, with the two nodes at its ends.
  /// @return 0, both nodes null, if this component reaches the other (or is it).
  double minDistanceTo(const CorvConnectedComponentConstShPtr& i_component, CorvNodeShPtr& o_from,
                       CorvNodeShPtr& o_to) const;
  double minDistanceTo(const CorvConnectedComponentConstShPtr& i_component, const CorvMetricConstShPtr& i_metric,
                       CorvNodeShPtr& o_from, CorvNodeShPtr& o_to) const;
  /// The distance between a configuration and the nearest node that this component reaches, that reaches it, either.
  /// @return plus infinity, the node null, without such a node.
  double minDistanceTo(const CorvConfig& i_config, CorvNodeShPtr& o_node) const;
  double minDistanceTo(const CorvConfig& i_config, const CorvMetricConstShPtr& i_metric, CorvNodeShPtr& o_node) const;
  double minDistanceFrom(const CorvConfig& i_config, CorvNodeShPtr& o_node) const;
  double minDistanceFrom(const CorvConfig& i_config, const CorvMetricConstShPtr& i_metric, CorvNodeShPtr& o_node) const;
  double minDistanceToOrFrom(const CorvConfig& i_config, CorvNodeShPtr& o_node) const;
  double minDistanceToOrFrom(const CorvConfig& i_config, const CorvMetricConstShPtr& i_metric,
                             CorvNodeShPtr& o_node) const;

  /// True while nearest queries go through the index.
  bool hasCoverTree() const { return static_cast<bool>(m_index); }
  /// Bytes of the index, the nodes' coordinates included: 105 to 130 a node in six dofs, 116 for 100,000 nodes. 0
  /// without one.
  std::size_t coverTreeMemorySize() const;

  // What follows changes the component, and is called by `CorvRoadmap` only.

  void addNode(const CorvNodeShPtr& i_node);
  /// Joins a node without edges to `i_connectedNode` of this component by two edges: `i_edgeOut` goes to the isolated
  /// node. Its own component leaves the roadmap. No closure changes.
  void addIsolatedNode(const CorvNodeShPtr& i_connectedNode, const CorvNodeShPtr& i_isolatedNode,
                       const CorvEdgeShPtr& i_edgeOut, const CorvEdgeShPtr& i_edgeIn);
  /// Take a node out of component and roadmap without any notice. A component that becomes empty leaves the roadmap.
  /// @return -1 if the node is not isolated (no dead end), or not in this component and its roadmap.
  lmStatus removeIsolated(const CorvNodeShPtr& i_node);
  lmStatus removeDeadEnd(const CorvNodeShPtr& i_node);

  /// Tell of an edge inside a component; between two, the first of which reaches the second already; between two that
  /// had no order; and against the order, which makes one component of all those on a way from `i_from` to `i_to`.
  static void addInnerConnection(const CorvConnectedComponentShPtr& i_component, const CorvEdgeShPtr& i_edge);
  static void addConnection(const CorvConnectedComponentShPtr& i_from, const CorvConnectedComponentShPtr& i_to,
                            const CorvEdgeShPtr& i_edge);
  static void connect(const CorvConnectedComponentShPtr& i_from, const CorvConnectedComponentShPtr& i_to,
                      const CorvEdgeShPtr& i_edge);
  /// @param i_edge goes from a node of `i_to` to one of `i_from`, which reaches `i_to` already.
  static void merge(const CorvConnectedComponentShPtr& i_from, const CorvConnectedComponentShPtr& i_to,
                    const CorvEdgeShPtr& i_edge, CorvConnectedComponentShPtr& o_merged);

protected:
  explicit CorvConnectedComponent(const CorvRoadmapShPtr& i_roadmap);
  lmStatus init(const CorvConnectedComponentWkPtr& i_weakPtr);

private:
  friend class LumAccess;
  friend class CorvNode;
  using TLinks = std::vector<CLink>;
  using TComponents = std::vector<CorvConnectedComponentShPtr>;

  static const unsigned int s_minSizeForCoverTree;

  TLinkedNodeIterator linkedNodes(bool i_in, bool i_out, bool i_own) const;
  CLink link() const;
  static unsigned int countNodesOf(const TLinks& i_links);
  static bool contains(const TLinks& i_links, const CorvConnectedComponent& i_component);
  static void uniteLinks(TLinks& io_links, const CorvConnectedComponent& i_component, const TLinks& i_behind);
  static void eraseDeadLinks(TLinks& io_links);
  static void eraseLink(TLinks& io_links, const CorvConnectedComponent& i_component);

  lmStatus uniteBoxes(bool i_in, bool i_out, TBox& o_box) const;
  void updateBoundingBox(const CorvNode& i_node);
  void recomputeBoundingBox();

  CorvMetricConstShPtr spaceMetric() const;
  bool isSpaceMetric(const CorvMetricConstShPtr& i_metric) const { return i_metric == spaceMetric(); }
  bool isIndexCurrent() const;
  void updateIndex(const CorvNodeShPtr& i_newNode);
  void makeIndex();
  void enterIndex(const CorvNodeShPtr& i_node);
  CorvNodeShPtr scanNearest(const CorvConfig& i_config, const CorvMetric* i_metric) const;
  CorvNodeShPtr nearestOf(const CorvConfig& i_config, const CorvMetricConstShPtr& i_metric, bool i_in,
                          bool i_out) const;
  TNodesByDistance scanNearestNodes(const CorvConfig& i_config, double i_maxDistance, unsigned int i_count,
                                    const CorvMetric* i_metric) const;
  std::vector<CorvNodeShPtr> foldNearestNodes(const CorvConfig& i_config, double i_maxDistance, unsigned int i_count,
                                              const CorvMetric* i_metric, const TLinks& i_others) const;
  double minGapTo(const CorvConnectedComponent& i_component, const CorvMetricConstShPtr& i_metric,
                  CorvNodeShPtr& o_from, CorvNodeShPtr& o_to) const;

  bool holds(const CorvNodeShPtr& i_node) const;
  lmStatus removeFromRoadmap(const CorvNodeShPtr& i_node);
  void addReachableLength(double i_length) const;
  void addReachingLength(double i_length) const;
  template <class OPERATION>
  static void forEach(const TLinks& i_links, OPERATION i_operation);
  static void correctLengthsBeforeConnecting(const CorvConnectedComponentShPtr& i_from,
                                             const CorvConnectedComponentShPtr& i_to);
  TComponents takeClosures(const CorvConnectedComponentShPtr& i_from, const CorvConnectedComponentShPtr& i_to);
  void relinkNeighbours(const CorvConnectedComponentShPtr& i_self);
  void takeLengths(const TComponents& i_parts, const CorvConnectedComponent& i_largest, double i_edgeLength);
  void takeIndex(const TComponents& i_parts);
  void takeNodes(const TComponents& i_parts, const CorvConnectedComponent& i_largest);

  CorvConnectedComponentWkPtr m_self;
  CorvRoadmapWkPtr m_roadmap;
  TNodeList m_nodes;
  TLinks m_inComponents;
  TLinks m_outComponents;
  TBox m_box;
  double m_length = 0.0;
  mutable double m_reachingLength = 0.0;  ///< negative: to be computed when asked for
  mutable double m_reachableLength = 0.0; ///< negative: to be computed when asked for
  double m_incomingEdgesLength = 0.0;
  double m_outgoingEdgesLength = 0.0;
  mutable std::unique_ptr<CorvNodeIndex> m_index;
  std::size_t m_minSizeForIndex;                  ///< raised when the metric turns out not to be fit for one
  ShPtr<CorvComponentCell> m_cell;                ///< what the nodes hold instead of the component
  std::uint64_t m_serial;
};
