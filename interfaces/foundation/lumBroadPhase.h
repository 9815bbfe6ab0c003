#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"
#include "foundation/lumMat4.h"

#include <cstdint>
#include <vector>

/// Which pairs of placed shapes can matter, nearest first.
///
/// A shape belongs to a body, which moves, or stands still. Each has a box along the axes and a ball, which follow it;
/// the shapes that stand still lie in a tree, one for every set of them that some moving shape is tested with. The
/// space that they take up is cut into cells, each with a list of what is near: a shape that has nothing near costs one
/// look. For what lies beyond the lists, a node knows, for each slab of the space across each axis, which of its up to
/// 256 children begin before it and which end behind it: six rows of bits tell which children a box meets. Bounds come
/// from these volumes, which are held in single precision and rounded outward: a pair is never nearer than its bound.
///
/// A walk asks for one configuration. Each body has a limit: pairs of it with what stands still that are farther apart
/// are passed over, and `unseen` says beyond which distance they are. The limits may be lowered between two pairs, as
/// soon as what is known of a body settles what it can use. Pairs of two bodies are entered one by one. The order
/// depends on the shapes alone, and nothing is allocated once a walk of that size was made.
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
  /// @param i_frame of the shape in its body, or in the world if it stands still.
  unsigned int addShape(const ClumCollisionModel& i_model, const ClumLeafGeometry& i_leaf, unsigned int i_body,
                        const ClumMat4& i_frame);
  unsigned int addPair(unsigned int i_first, unsigned int i_second);
  /// To be called when all is added; pairs of two shapes that stand still are never found.
  void build();

  unsigned int countShapes() const { return static_cast<unsigned int>(m_shapes.size()); }
  unsigned int countPairs() const { return static_cast<unsigned int>(m_pairs.size()); }
  unsigned int firstOf(unsigned int i_pair) const { return m_pairs[i_pair].first; }
  unsigned int secondOf(unsigned int i_pair) const { return m_pairs[i_pair].second; }
  unsigned int bodyOf(unsigned int i_shape) const { return m_shapes[i_shape].body; }
  /// The pairs of two shapes that move, in the order of addition.
  const std::vector<unsigned int>& movingPairs() const { return m_movingPairs; }

  /// @param i_positions of the bodies in the world. They are read where they stand, up to the next call.
  void place(const ClumMat4* i_positions);
  const ClumMat4& pose(unsigned int i_shape);
  /// A lower bound of the distance of a pair as placed, negative if the balls overlap.
  double lowerBound(unsigned int i_pair);

  // A walk.
  /// @param i_countBodies all bodies start without a limit.
  void begin(unsigned int i_countBodies);
  double limit(unsigned int i_body) const { return m_bodies[i_body].limit; }
  void limit(unsigned int i_body, double i_limit)
  {
    m_bodies[i_body].limit = i_limit;
    m_bodies[i_body].reach = static_cast<float>(i_limit) * REACH_ROUNDING;
  }
  /// Takes all pairs of what moves, or of one body, with what stands still into the walk.
  void follow();
  void follow(unsigned int i_body);
  void enter(unsigned int i_pair, double i_lower);
  /// @return false if no pair within the limits is left.
  bool next(CCandidate& o_candidate);
  /// What was passed over of a body is at least so far; infinite if nothing was.
  double unseen(unsigned int i_body) const
  {
    const CBody& body = m_bodies[i_body];
    return body.isPassedOver && body.limit < body.unseen ? body.limit : body.unseen;
  }

private:
  static constexpr unsigned int FANOUT = 256;
  static constexpr unsigned int WORD = 64; ///< bits
  static constexpr unsigned int NO_SHAPE = ~0u;
  static constexpr unsigned int BEYOND = ~0u;
  static constexpr unsigned int NO_TREE = ~0u;
  /// For the rounding of a distance and of a box that is made larger by it, in single precision.
  static constexpr float REACH_ROUNDING = 1.0f + 2e-6f;

  /// The last places of the corners mean nothing.
  struct CVolume
  {
    float low[4];
    float high[4];
    float ball[4]; ///< centre and radius
  };
  struct CShape
  {
    CVolume volume;        ///< placed
    std::uint64_t ballAge; ///< the age at which the ball was placed
    std::uint64_t boxAge;
    std::uint64_t poseAge;
    unsigned int body;
    unsigned int tree;      ///< of a moving shape, the rank of its tree; `NO_TREE` if it has none
    unsigned int firstPair; ///< added to the rank of an item, the place of the pair in `m_rowPairs`
  };
  /// What a shape is in its own coordinates, and where these are.
  struct CFrame
  {
    ClumMat4 frame;   ///< in its body or, if it stands still, in the world
    ClumMat4 pose;    ///< of a moving shape whose frame is not that of its body
    double center[4]; ///< of the ball, in the body or the world
    float boxCenter[3];
    float halfSize[3];
    float radius;  ///< of the ball
    float reach;   ///< the radius, and what turning may add to it
    bool isFramed; ///< its frame is not that of its body
  };
  /// A moving shape that is tested with something that stands still.
  struct CFollower
  {
    alignas(16) double center[6]; ///< of its ball in the body, each coordinate twice
    unsigned int shape;
    unsigned int body;
    unsigned int tree;
    float reach;
  };
  /// A follower with something near, where it is.
  struct CNear
  {
    float center[4];
    std::size_t firstListed; ///< of the cell in which its ball's centre lies
    unsigned int follower;
  };
  struct CPair
  {
    unsigned int first;
    unsigned int second;
  };
  /// A bit for each child of a node.
  using TMarks = std::uint64_t[FANOUT / WORD];
  struct CNode
  {
    float origin[4];         ///< of the slabs, along each axis
    float scale[4];          ///< slabs to a unit of length
    std::size_t rows;        ///< the place of its rows of bits in `m_rows`
    unsigned int firstChild; ///< ranks of nodes or, at the bottom, of items
    unsigned int countWords; ///< of a row
    TMarks all;              ///< its children
    bool isBottom;
  };
  /// A cube, with the items that are nearer to it than the farthest that is told of, in the order of their bounds.
  struct CCell
  {
    float clearance; ///< of the nearest item
    unsigned int firstListed;
  };
  struct CListed
  {
    float lower; ///< a bound of the distance from any point of the cell
    unsigned int item;
  };
  struct CEntered
  {
    unsigned int cell; ///< among those of the tree
    CListed listed;
  };
  /// Cubes that the space which some items take up is cut into. No item is nearer to a point outside than to the point
  /// of the cubes that is nearest to it.
  struct CCells
  {
    float origin[4];   ///< along each axis
    float scale[4];    ///< cells to a unit of length
    float last[4];     ///< rank of the last
    int counts[3];     ///< along each axis
    float farthest;    ///< what is farther than this is in no list; negative if there are no cells
    float rounding;    ///< of a point within
    std::size_t first; ///< the place in `m_cells`
  };
  /// The shapes that stand still which some moving shapes are tested with, and a tree over them.
  struct CTree
  {
    std::vector<unsigned int> shapes; ///< in the order of addition
    std::vector<unsigned int> ranks;  ///< among these, of the items
    unsigned int firstItem;
    unsigned int root;
    float spacing; ///< how far to look first
    CCells cells;
  };
  struct CBody
  {
    double limit;
    double unseen;             ///< by the bounds of single pairs
    float reach;               ///< what is farther than this by single precision is beyond the limit
    unsigned int isPassedOver; ///< something is beyond the limit
  };
  /// An item that may be within the limit and, in the upper half, the moving shape.
  using TFound = std::uint64_t;
  /// What waits: a pair, or all that is farther than the bound.
  struct CWaiting
  {
    unsigned int pair;  ///< `BEYOND` for all that is farther
    unsigned int shape; ///< that moves; `NO_SHAPE` for pairs that were entered
    unsigned int body;  ///< of the shape
  };
  /// A bound in the upper half, so that entries are in its order, and in the lower half the rank of what waits.
  using TEntry = std::uint64_t;

  unsigned int treeOver(const std::vector<unsigned int>& i_shapes);
  bool cutIntoCells(const CTree& i_tree, CCells& o_cells) const;
  void makeCells(CTree& io_tree);
  void enterNear(const CCells& i_cells, unsigned int i_item, std::vector<CEntered>& io_entered) const;
  void sortLists(const CCells& i_cells, const std::vector<CEntered>& i_entered);
  const CVolume& placeBall(unsigned int i_shape);
  const CVolume& placeBall(unsigned int i_shape, const float* i_center);
  const CVolume& volumeOf(unsigned int i_shape);
  const CVolume& still(const CTree& i_tree, unsigned int i_rank) const;
  CVolume boxAround(const CTree& i_tree, std::size_t i_begin, std::size_t i_end) const;
  float middleOf(const CTree& i_tree, unsigned int i_rank, unsigned int i_axis) const;
  void sortAcross(CTree& io_tree, std::size_t i_begin, std::size_t i_end) const;
  void cut(CTree& io_tree, std::size_t i_begin, std::size_t i_end, std::size_t i_countParts,
           std::vector<std::size_t>& io_ends) const;
  CNode makeNode(CTree& io_tree, std::size_t i_begin, std::size_t i_end);
  void makeRows(CNode& io_node, const std::vector<CVolume>& i_children);
  static float gapBetween(const CVolume& i_a, const CVolume& i_b);
  static bool findCell(const CCells& i_cells, const float* i_point, std::size_t& o_rank);
  float firstLook(const CTree& i_tree, const float* i_ball) const;
  std::size_t findNear(std::size_t i_begin, std::size_t i_end);
  void findItems(std::size_t i_count);
  void makeRoomFor(std::size_t i_count);
  void look(unsigned int i_shape, float i_from);
  bool gather(unsigned int i_shape, unsigned int i_node, float i_from, float i_to);
  bool gatherMarked(unsigned int i_shape, const CNode& i_node, const TMarks& i_marks, float i_from, float i_to);
  bool markNear(const float* i_ball, float i_distance, const CNode& i_node, TMarks& o_marks) const;
  void takeFound();
  void passOver(unsigned int i_body) { m_bodies[i_body].isPassedOver = 1; }
  void passOver(unsigned int i_body, double i_lower);
  void wait(float i_lower, unsigned int i_pair, unsigned int i_shape);
  void orderFresh();
  void sortByBounds();

  std::vector<CShape> m_shapes;
  std::vector<CFrame> m_frames; ///< of the shapes
  std::vector<CPair> m_pairs;
  std::vector<CFollower> m_followers;
  std::vector<unsigned int> m_movingPairs;
  std::vector<CTree> m_trees;
  std::vector<CNode> m_nodes;
  std::vector<std::uint64_t> m_rows;
  std::vector<CCell> m_cells; ///< of all trees
  std::vector<CListed> m_listed;
  std::vector<CVolume> m_items; ///< of all trees, in the order in which their nodes hold them
  std::vector<unsigned int> m_rowPairs;
  std::vector<CBody> m_bodies;
  std::vector<CNear> m_near;
  std::vector<TFound> m_found;
  std::size_t m_countFound = 0; ///< of them, those that count
  std::vector<CWaiting> m_waiting;
  std::vector<TEntry> m_fresh;  ///< in no order yet
  std::vector<TEntry> m_sorted; ///< in order from `m_next` on
  std::vector<TEntry> m_late;   ///< a heap of what came while some was left there
  std::size_t m_next = 0;
  const ClumMat4* m_positions = nullptr; ///< of the bodies
  std::uint64_t m_age = 0;               ///< counts the calls of `place`
};
