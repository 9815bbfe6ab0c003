#pragma once

#include "foundation/lumAtomicStackSafeSize.h"
#include "foundation/lumObject.h"
#include "kinematics/handles.h"
#include "paths/handles.h"
#include "roadmaps/handles.h"
#include "roadmaps/orvEdge.h"
#include "roadmaps/orvNode.h"
#include "validation/handles.h"

#include <cstddef>
#include <list>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

class CorvConfig;

/// An oriented graph of configurations of one configuration space.
///
/// A builder grows it, a planner searches it, and it outlives both. Every edge is added through one gate that keeps
/// true which components reach which. Its invariants: all configurations and direct paths are of the roadmap's space;
/// an edge's direct path starts and ends at configurations equivalent to those of its nodes; no edge leads from a node
/// to itself; no two nodes have equivalent configurations. A change that would break one is refused with -1 and leaves
/// the roadmap as it was.
///
/// Changes are told to an optional notificator. One thread at a time.
///
/// A node in six dofs costs 640 bytes for itself, its place in its component and the cover tree (384 of them are
/// `sizeof(CorvNode)`), and about 70 for its place in the roadmap's list and hash. With the two-way link that ties it
/// to the others, two edges with a direct path each, it is 2.5 kB. Measured on 100,000 nodes.
class LUM_API CorvRoadmap
{
public:
  using TNodeSet = std::set<CorvNodeShPtr, CorvNode::CSerialLess>;
  using TEdgeSet = std::set<CorvEdgeShPtr, CorvEdge::CSerialLess>;
  using TEdgeList = std::list<CorvEdgeShPtr>;

  static const unsigned int DID_ADD_NODE;
  static const unsigned int DID_ADD_EDGE;
  static const unsigned int DID_REMOVE_NODE;
  static const unsigned int DID_REMOVE_EDGE;
  static const unsigned int DID_REMOVE_ALL_NODES_AND_EDGES;
  /// The keys under which a notification carries its object.
  static const std::string NODE_KEY;
  static const std::string EDGE_KEY;

  /// @return null for a null space.
  static CorvRoadmapShPtr create(const CorvConfigSpaceShPtr& i_configSpace);
  /// A roadmap on the device's configuration space. @return null for a null device.
  static CorvRoadmapShPtr create(const CorvDeviceShPtr& i_device);
  CorvRoadmap(const CorvRoadmap&) = delete;
  CorvRoadmap& operator=(const CorvRoadmap&) = delete;
  virtual ~CorvRoadmap();

  CorvRoadmapShPtr self() const { return m_self.lock(); }
  const CorvConfigSpaceShPtr& configSpace() const { return m_configSpace; }
  /// The device of the space, or null.
  CorvDeviceShPtr device() const;
  const ClumNotificatorShPtr& notificator() const { return m_notificator; }
  /// A null notificator stops all notices.
  void notificator(const ClumNotificatorShPtr& i_notificator) { m_notificator = i_notificator; }

  unsigned int countNodes() const { return m_nodes.size(); }
  const CorvNodeShPtr& node(unsigned int i_rank) const { return m_nodes[i_rank]; }
  bool containsNode(const CorvNodeConstShPtr& i_node) const;
  unsigned int countConnectedComponents() const { return static_cast<unsigned int>(m_components.size()); }
  /// @return null out of range.
  CorvConnectedComponentShPtr connectedComponent(unsigned int i_rank) const;
  /// @return -1 out of range.
  lmStatus getConnectedComponent(unsigned int i_rank, CorvConnectedComponentShPtr& o_component) const;
  bool containsConnectedComponent(const CorvConnectedComponentConstShPtr& i_component) const;
  unsigned int countEdges() const { return m_edgeCount; }
  /// The node with exactly this configuration, or null.
  CorvNodeShPtr nodeWithConfig(const CorvConfig& i_config) const;
  /// A node with an equivalent configuration, or null.
  CorvNodeShPtr nodeWithEquivalentConfig(const CorvConfig& i_config) const;

  /// The node becomes a component of its own.
  /// @return -1 for a null node, one that has a roadmap, or a configuration of another space or equivalent to a node's.
  lmStatus addNode(const CorvNodeShPtr& i_node);
  /// @return -1 for a null argument, equal nodes, nodes that are not of this roadmap, an edge that has a roadmap, or a
  /// direct path of another space or that does not lead from the start node's to the end node's configuration.
  lmStatus addEdge(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end, const CorvEdgeShPtr& i_edge);
  /// Adds an edge each way. Cheap if one of the nodes has no edge yet.
  lmStatus addDoubleEdge(const CorvNodeShPtr& i_a, const CorvNodeShPtr& i_b, const CorvEdgeShPtr& i_edgeAB,
                         const CorvEdgeShPtr& i_edgeBA);
  /// Isolated nodes and dead ends go quickly and without a notice; for the others see `removeNodesAndEdges`.
  lmStatus removeNode(const CorvNodeShPtr& i_node);
  lmStatus removeEdge(const CorvEdgeShPtr& i_edge);
  /// Removes nodes, their edges and further edges. All components that have to do with them are taken apart and built
  /// anew from what stays, so that surviving nodes lose their place in the list.
  /// @return -1, with a warning, if one of them is not in this roadmap.
  lmStatus removeNodesAndEdges(const TNodeSet& i_nodes, const TEdgeSet& i_edges);
  /// The last step of all removals: removes a node without a component. No notice is sent.
  /// @return -1 if the node is null, not in this roadmap, or has a component or an edge.
  lmStatus removeUnrelatedNode(const CorvNodeShPtr& i_node);
  void clear();

  /// For components only.
  void addConnectedComponent(const CorvConnectedComponentShPtr& i_component);
  void removeConnectedComponent(const CorvConnectedComponentShPtr& i_component);

  /// True if both nodes are of this roadmap and the start reaches the goal. Nothing is walked.
  bool pathExists(const CorvNodeConstShPtr& i_start, const CorvNodeConstShPtr& i_goal) const;
  /// A*: the path of least cost. @param io_path filled, or made if null; left alone if there is none.
  /// @param o_edges the edges of the path in order, put before what stands there.
  /// @return false if there is no path.
  bool findPath(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_goal, CorvPathShPtr& io_path,
                TEdgeList& o_edges) const;
  /// The same over the edges that the validator accepts. A direct path that was tested before is tested again only if
  /// its report is out of date.
  bool findValidPath(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_goal, const CorvValidatorShPtr& i_validator,
                     const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& io_path, TEdgeList& o_edges) const;
  /// The path from start to goal, with one unvalidated direct path over the shortest gap if there is none.
  /// @return -1, `io_path` left alone, if a node is not in this roadmap or no direct path leads over the gap.
  lmStatus forcePath(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_goal, CorvPathShPtr& io_path) const;
  lmStatus forcePath(const CorvConfig& i_start, const CorvConfig& i_goal, CorvPathShPtr& io_path) const;

  /// Mark the configurations of all nodes (direct paths of all edges) as needing validation.
  void unvalidateNodes() const;
  void unvalidateEdges() const;

protected:
  explicit CorvRoadmap(const CorvConfigSpaceShPtr& i_configSpace);
  lmStatus init(const CorvRoadmapWkPtr& i_weakPtr);

private:
  friend class LumAccess;
  class CSearch;
  struct CTouched;

  CorvNodeShPtr equivalentNode(const CorvConfig& i_config, std::size_t i_hash) const;
  void insertNode(const CorvNodeShPtr& i_node, std::size_t i_hash);
  bool canAddEdge(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end, const CorvEdgeShPtr& i_edge) const;
  void insertEdge(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_end, const CorvEdgeShPtr& i_edge);
  void updateConnectivity(const CorvEdgeShPtr& i_edge);
  void joinIsolated(const CorvNodeShPtr& i_connected, const CorvNodeShPtr& i_isolated, const CorvEdgeShPtr& i_edgeOut,
                    const CorvEdgeShPtr& i_edgeIn);
  lmStatus checkRemoval(const TNodeSet& i_nodes, const TEdgeSet& i_edges, TEdgeSet& o_edges) const;
  void collectTouched(const TNodeSet& i_nodes, const TEdgeSet& i_edges, CTouched& o_touched) const;
  void takeApart(const CTouched& i_touched);
  void rebuild(const CTouched& i_touched);
  void eraseDroppedComponents();
  void dropHashEntry(const CorvNodeShPtr& i_node);
  bool search(const CorvNodeShPtr& i_start, const CorvNodeShPtr& i_goal, const CorvValidatorShPtr& i_validator,
              const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& io_path, TEdgeList& o_edges) const;
  void notifyNode(unsigned int i_id, const CorvNodeShPtr& i_node) const;
  void notifyEdge(unsigned int i_id, const CorvEdgeShPtr& i_edge) const;

  CorvRoadmapWkPtr m_self;
  CorvConfigSpaceShPtr m_configSpace;
  ClumAtomicStackSafeSize<CorvNodeShPtr> m_nodes;
  std::unordered_multimap<std::size_t, CorvNodeShPtr> m_nodesByHash; ///< by the canonical hash of the configuration
  std::vector<CorvConnectedComponentShPtr> m_components;
  ClumNotificatorShPtr m_notificator;
  unsigned int m_edgeCount = 0;
  bool m_isRebuilding = false; ///< dropped components stay listed until the end

  friend class CorvConnectedComponent;
};
