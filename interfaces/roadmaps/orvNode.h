#pragma once

#include "foundation/lumAtomicStackSafeSize.h"
#include "foundation/lumCodable.h"
#include "kinematics/orvConfig.h"
#include "roadmaps/handles.h"

#include <cstdint>

struct CorvComponentCell;

/// A configuration in a roadmap, with the edges that arrive at it and leave it.
///
/// The node holds its edges; roadmap, component and the edges' other ends are known weakly, so that the graph is free
/// of cycles. The configuration never changes after creation. Edges keep the order of their arrival; an index into them
/// is good until the next removal. A node belongs to at most one roadmap, and in it to exactly one component: only the
/// roadmap and its components change these links.
class LUM_API CorvNode : public ClumObject
{
  LUM_CONCRETE(CorvNode, ClumObject);

public:
  /// Scratch of the shortest-path search.
  struct CSearchData
  {
    enum EStatus
    {
      UNSEEN = 0,
      OPEN = 1,
      CLOSED = 2
    };

    EStatus status = UNSEEN;
    double h = 0.0;           ///< estimate of the cost to the goal
    double g = 0.0;           ///< cost from the start
    CorvEdgeWkPtr reachedBy;  ///< the edge by which the node was reached
    std::uint64_t search = 0; ///< the search that wrote the record: to any other search the node is unseen
  };

  /// Orders nodes by their creation, the one order of nodes that repeats from run to run.
  struct CSerialLess
  {
    bool operator()(const CorvNodeConstShPtr& i_a, const CorvNodeConstShPtr& i_b) const
    {
      return (i_a ? i_a->serial() : 0) < (i_b ? i_b->serial() : 0);
    }
  };

  static CorvNodeShPtr create(const CorvConfig& i_config);
  CorvNode(const CorvNode&) = delete;
  CorvNode& operator=(const CorvNode&) = delete;
  ~CorvNode() override;

  const CorvConfig& config() const { return m_config; }
  /// Rank of this node among all nodes ever made in the process.
  std::uint64_t serial() const { return m_serial; }

  /// Null while the node belongs to no roadmap.
  CorvRoadmapShPtr roadmap() const { return m_roadmap.lock(); }
  void roadmap(const CorvRoadmapShPtr& i_roadmap) { m_roadmap = i_roadmap; }
  CorvConnectedComponentShPtr connectedComponent() const;
  void connectedComponent(const CorvConnectedComponentShPtr& i_component);

  unsigned int countInEdges() const { return m_inEdges.size(); }
  unsigned int countOutEdges() const { return m_outEdges.size(); }
  const CorvEdgeShPtr& inEdge(unsigned int i_rank) const { return m_inEdges[i_rank]; }
  const CorvEdgeShPtr& outEdge(unsigned int i_rank) const { return m_outEdges[i_rank]; }

  /// Make this node the end (start) node of the edge and append it. Component and lengths are not told: a roadmap's
  /// edges are added by `CorvRoadmap::addEdge`.
  void addInEdge(const CorvEdgeShPtr& i_edge);
  void addOutEdge(const CorvEdgeShPtr& i_edge);
  /// Clear the edge's end (start) node and take it off this node. Nothing happens if the edge is not there.
  void removeInEdge(const CorvEdgeShPtr& i_edge);
  void removeOutEdge(const CorvEdgeShPtr& i_edge);
  /// Forgets roadmap, component and edges, and has the edges forget their ends.
  void detach();

  bool isIsolated() const { return m_inEdges.empty() && m_outEdges.empty(); }
  bool isCrossing() const { return m_inEdges.size() >= 3 && m_outEdges.size() >= 3; }
  /// True if the node hangs on a single two-way link.
  bool isDeadEnd() const;
  /// True if the node is the tip of a chain that ends in a crossing from which at least two other branches go on for
  /// twice as long.
  bool isShortDeadEnd() const;

  /// Number of other nodes from which this one can be reached, and that it can reach. 0 without a component.
  unsigned int countTransitiveInNodes() const;
  unsigned int countTransitiveOutNodes() const;
  /// True if this node reaches the other one, which is so for itself.
  bool hasTransitiveOutNode(const CorvNodeConstShPtr& i_node) const;

  /// A search writes here on a const roadmap.
  CSearchData& searchData() const { return m_searchData; }

  /// Bytes of this node: itself and the blocks of its edge lists. The handle counts, the edges and what the
  /// configuration's space holds are not in it.
  std::size_t memorySize() const;

protected:
  CorvNode();
  explicit CorvNode(const CorvConfig& i_config);
  lmStatus init(const CorvNodeWkPtr& i_weakPtr);

private:
  using TEdges = ClumAtomicStackSafeSize<CorvEdgeShPtr>;

  CorvRoadmapWkPtr m_roadmap;
  CorvConfig m_config;
  mutable ShPtr<CorvComponentCell> m_componentCell; ///< leads to the component, shared with its other nodes
  TEdges m_inEdges;
  TEdges m_outEdges;
  std::uint64_t m_serial;
  mutable CSearchData m_searchData;
};

/// Makes the nodes of a roadmap. Derive from it to put your own node class in.
class LUM_API CorvNodeFactory : public ClumCodable
{
  LUM_CONCRETE(CorvNodeFactory, ClumCodable);

public:
  static CorvNodeFactoryShPtr create();
  /// The one factory of the process that is used where none is given.
  static CorvNodeFactoryShPtr defaultFactory();
  ~CorvNodeFactory() override;

  virtual CorvNodeShPtr makeNode(const CorvConfig& i_config) const;

protected:
  CorvNodeFactory() = default;
  CorvNodeFactory(const CorvNodeFactory&) = default;
  lmStatus init(const CorvNodeFactoryWkPtr& i_weakPtr);
};
