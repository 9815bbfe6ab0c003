#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"
#include "foundation/lumMat4.h"

#include <cstdint>
#include <vector>

/// Which pairs of placed shapes can matter, nearest first.
///
/// A shape belongs to a body, which moves, or stands still. Each has a ball and a box along the axes, which follow it;
/// the shapes that stand still lie in a tree of boxes, eight to a node, one tree for every set of them that some moving
/// shape is tested with. Bounds come from these volumes, which are held in single precision and rounded outward: a pair
/// is never nearer than its bound.
///
/// A walk asks for one configuration. Each body has a limit: pairs of it with what stands still that are farther apart
/// are passed over, whole branches of the tree at once, and `unseen` says beyond which distance they are. The limits
/// may be lowered between two pairs, as soon as what is known of a body settles what it can use. Pairs of two bodies
/// are entered one by one. The order depends on the shapes alone, and nothing is allocated once a walk of that size was
/// made.
class LUM_API ClumBroadPhase
{
public:
  static constexpr unsigned int NO_BODY = ~0u;

  struct CCandidate
  {
    double lower; ///< of the pair's distance; negative if the volumes overlap
    unsigned int pair;
  };

  // The scene, told once. Shapes and pairs are numbered in the order in which they are added.
  /// @param i_body `NO_BODY` for a shape that stands still.
  unsigned int addShape(const ClumCollisionModel& i_model, const ClumLeafGeometry& i_leaf, unsigned int i_body);
  unsigned int addPair(unsigned int i_first, unsigned int i_second);
  /// To be called when all is added and what stands still is placed; pairs of two such shapes are never found.
  void build();

  unsigned int countShapes() const { return static_cast<unsigned int>(m_shapes.size()); }
  unsigned int countPairs() const { return static_cast<unsigned int>(m_pairs.size()); }
  unsigned int firstOf(unsigned int i_pair) const { return m_pairs[i_pair].first; }
  unsigned int secondOf(unsigned int i_pair) const { return m_pairs[i_pair].second; }
  unsigned int bodyOf(unsigned int i_shape) const { return m_shapes[i_shape].body; }
  /// The shapes that move, and the pairs of two of them, in the order of addition.
  const std::vector<unsigned int>& movingShapes() const { return m_movingShapes; }
  const std::vector<unsigned int>& movingPairs() const { return m_movingPairs; }

  void place(unsigned int i_shape, const ClumMat4& i_pose);
  const ClumMat4& pose(unsigned int i_shape) const { return m_shapes[i_shape].pose; }
  /// A lower bound of the distance of a pair as placed, negative if the balls overlap.
  double lowerBound(unsigned int i_pair) const;

  // A walk.
  /// @param i_countBodies all bodies start without a limit.
  void begin(unsigned int i_countBodies);
  double limit(unsigned int i_body) const { return m_bodies[i_body].limit; }
  void limit(unsigned int i_body, double i_limit);
  /// Takes all pairs of a moving shape with what stands still into the walk.
  void follow(unsigned int i_shape);
  void enter(unsigned int i_pair, double i_lower);
  /// @return false if no pair within the limits is left.
  bool next(CCandidate& o_candidate);
  /// What was passed over of a body is at least so far; infinite if nothing was.
  double unseen(unsigned int i_body) const { return m_bodies[i_body].unseen; }

private:
  static constexpr unsigned int FANOUT = 8;
  static constexpr unsigned int NO_SHAPE = ~0u;
  static constexpr unsigned int NO_TREE = ~0u;

  struct CVolume
  {
    float low[3];
    float high[3];
  };
  struct CShape
  {
    ClumMat4 pose;
    ClumPoint3 boxCenter; ///< in its own coordinates, as `halfSize`
    ClumVect3 halfSize;
    ClumPoint3 ballCenter;
    float center[3]; ///< of the ball, placed
    float reach;     ///< its radius, and what rounding may have moved it
    CVolume volume;  ///< placed
    double radius;
    unsigned int body;
    unsigned int tree;      ///< of a moving shape, the rank of its tree; `NO_TREE` if it has none
    unsigned int firstPair; ///< and of its first pair in `m_rowPairs`
  };
  struct CPair
  {
    unsigned int first;
    unsigned int second;
  };
  struct CNode
  {
    float low[3][FANOUT];
    float high[3][FANOUT];
    float ballCenter[3][FANOUT]; ///< of the items
    float ballReach[FANOUT];
    unsigned int children[FANOUT]; ///< ranks of nodes or, at the bottom, of items
    unsigned int count;
    bool isBottom;
  };
  /// The shapes that stand still which some moving shapes are tested with, and a tree over them.
  struct CTree
  {
    std::vector<unsigned int> shapes;
    unsigned int root;
  };
  struct CBody
  {
    double limit;
    double unseen;
    float reach; ///< the limit, rounded up
  };
  /// Branches or pairs that wait and came together: a heap of entries. Of what moves against what stands still, they
  /// are passed over together too.
  struct CRun
  {
    unsigned int shape; ///< that moves; `NO_SHAPE` for pairs that were entered
    std::size_t begin;
    std::size_t end;
  };
  /// A bound in the upper half, so that entries are in its order, and in the lower half the rank of a run, of a pair
  /// that was entered, or of a child, as in `CNode::children`.
  using TEntry = std::uint64_t;

  unsigned int treeOver(std::vector<unsigned int>& io_shapes);
  float middleOf(const CTree& i_tree, unsigned int i_item, unsigned int i_axis) const;
  void sortAcross(const CTree& i_tree, std::vector<unsigned int>& io_items, std::size_t i_begin,
                  std::size_t i_end) const;
  void cut(const CTree& i_tree, std::vector<unsigned int>& io_items, std::size_t i_begin, std::size_t i_end,
           std::size_t i_countParts, std::vector<std::size_t>& io_ends) const;
  unsigned int makeNode(const CTree& i_tree, std::vector<unsigned int>& io_items, std::size_t i_begin,
                        std::size_t i_end);
  CVolume volumeOf(const CTree& i_tree, const std::vector<unsigned int>& i_items, std::size_t i_begin,
                   std::size_t i_end) const;
  void expand(unsigned int i_shape, unsigned int i_node);
  void passOver(unsigned int i_body, double i_lower);
  void closeRun(unsigned int i_shape);
  unsigned int pairOf(unsigned int i_shape, unsigned int i_item) const;

  std::vector<CShape> m_shapes;
  std::vector<CPair> m_pairs;
  std::vector<unsigned int> m_movingShapes;
  std::vector<unsigned int> m_movingPairs;
  std::vector<CTree> m_trees;
  std::vector<CNode> m_nodes;
  std::vector<unsigned int> m_rowPairs;
  std::vector<CBody> m_bodies;
  std::vector<TEntry> m_entries;
  std::vector<CRun> m_runs;
  std::vector<TEntry> m_nearest; ///< a heap of the runs in which something waits
  std::size_t m_runBegin = 0;    ///< of the entries that are in no run yet
};
