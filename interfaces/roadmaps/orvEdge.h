#pragma once

#include "foundation/lumCodable.h"
#include "paths/handles.h"
#include "roadmaps/handles.h"

#include <cstdint>

/// An oriented link between two nodes of a roadmap: one direct path. It says nothing about the way back.
///
/// The edge holds its direct path; roadmap and nodes are known weakly.
class LUM_API CorvEdge : public ClumObject
{
  LUM_CONCRETE(CorvEdge, ClumObject);

public:
  /// Orders edges by their creation.
  struct CSerialLess
  {
    bool operator()(const CorvEdgeConstShPtr& i_a, const CorvEdgeConstShPtr& i_b) const
    {
      return (i_a ? i_a->serial() : 0) < (i_b ? i_b->serial() : 0);
    }
  };

  /// @return null for a null direct path.
  static CorvEdgeShPtr create(const CorvDirectPathConstShPtr& i_directPath);
  CorvEdge(const CorvEdge&) = delete;
  CorvEdge& operator=(const CorvEdge&) = delete;
  ~CorvEdge() override;

  const CorvDirectPathConstShPtr& directPath() const { return m_directPath; }
  std::uint64_t serial() const { return m_serial; }

  CorvRoadmapShPtr roadmap() const { return m_roadmap.lock(); }
  void roadmap(const CorvRoadmapShPtr& i_roadmap) { m_roadmap = i_roadmap; }
  CorvNodeShPtr startNode() const { return m_startNode.lock(); }
  void startNode(const CorvNodeShPtr& i_node) { m_startNode = i_node; }
  CorvNodeShPtr endNode() const { return m_endNode.lock(); }
  void endNode(const CorvNodeShPtr& i_node) { m_endNode = i_node; }

  /// Forgets roadmap and nodes, and keeps the direct path.
  void detach();

  /// The number of edges, capped at `i_limit`, of the longest branch that begins with this edge and leaves its start
  /// node behind. A branch that comes back to a node it has been through ends there.
  unsigned int longestBranch(unsigned int i_limit) const;

  /// What the shortest-path search pays for this edge: the distance between the nodes' configurations, not the length
  /// of the direct path.
  virtual double cost() const;

protected:
  CorvEdge();
  explicit CorvEdge(const CorvDirectPathConstShPtr& i_directPath);
  lmStatus init(const CorvEdgeWkPtr& i_weakPtr);

private:
  CorvRoadmapWkPtr m_roadmap;
  CorvDirectPathConstShPtr m_directPath;
  CorvNodeWkPtr m_startNode;
  CorvNodeWkPtr m_endNode;
  std::uint64_t m_serial;
};

/// Makes the edges of a roadmap. Derive from it to put your own edge class in.
class LUM_API CorvEdgeFactory : public ClumCodable
{
  LUM_CONCRETE(CorvEdgeFactory, ClumCodable);

public:
  static CorvEdgeFactoryShPtr create();
  /// The one factory of the process that is used where none is given.
  static CorvEdgeFactoryShPtr defaultFactory();
  ~CorvEdgeFactory() override;

  virtual CorvEdgeShPtr makeEdge(const CorvDirectPathConstShPtr& i_directPath) const;

protected:
  CorvEdgeFactory() = default;
  CorvEdgeFactory(const CorvEdgeFactory&) = default;
  lmStatus init(const CorvEdgeFactoryWkPtr& i_weakPtr);
};
