// No include guard: each source of the proximity kernel includes this once, after it has defined `TFloats`, eight
// numbers in single precision, and `TDoubles` with `TMask`, four in double precision.

#include "foundation/lumProximityBoxes.h"
#include "foundation/lumProximityTriangles.h"

namespace
{
/// What is taken off a distance of two boxes, in parts of the size of the pair: see docs/proximity.md.
constexpr double PROXIMITY_BOX_SLACK = 0x1p-17;
constexpr double PROXIMITY_BOX_SHARE = 1.0 + 0x1p-18;
/// Two triangles are apart for certain if a plane keeps them apart by so much, in parts of the size of the pair.
constexpr double PROXIMITY_SURE_GAP = 1e-13;
constexpr double PROXIMITY_SURE_SLAB = 1e-14;
constexpr double PROXIMITY_SURE_VOLUME = 1e-14;
/// Planes along edges are looked for if the square of the bound is less than so many times that of the longest edge:
/// triangles that are small for their distance are seldom parted by one that is nearly across.
constexpr double PROXIMITY_PLANES = 4.0;
/// Edges of which the square of the sine is less are nearly parallel.
constexpr double PROXIMITY_PARALLEL = 1e-8;

/// A leaf is large beside a box if it is so many times as long.
constexpr float PROXIMITY_LARGE_LEAF = 4.0f;
/// Beyond its corners, a large leaf is measured by its edges if the bound is more than such a part of its size.
constexpr double PROXIMITY_WIDE = 0.0625;
/// In parts of the size of the pair: the direction of a shorter edge is not known well enough.
constexpr double PROXIMITY_LEAST_EDGE = 1e-8;

/// Where shapes collide, one of the first pairs of triangles that are measured mostly does: so many rows are looked at
/// for that before anything else.
constexpr unsigned int PROXIMITY_TRIALS = 4;

/// Two boxes that may have something near between them.
struct CProximityTask
{
  float key;
  unsigned int side;          ///< the tree of the first box: 0 for a, 1 for b
  const CProximityBox* box;   ///< of the node that was opened last
  const CProximityBox* other; ///< of the other tree
};

/// Boxes of a node that wait, each with the same one of the other tree.
struct alignas(64) CProximityGroup
{
  float keys[8];
  const CProximityBox* boxes;
  const CProximityBox* other;
  unsigned int side;
  unsigned int lanes; ///< those that wait
};

/// @tparam IS_CONTACT all that is wanted is whether something is as near as the cap.
template <bool IS_CONTACT>
class CProximitySearch
{
public:
  explicit CProximitySearch(const CProximityQuery& i_query)
    : m_query(i_query), m_bound(i_query.cap), m_best(PROXIMITY_FAR), m_bestSquare(PROXIMITY_FAR)
  {
    const double* t = i_query.translation;
    m_slack = PROXIMITY_BOX_SLACK * i_query.size;
    m_sureGap = PROXIMITY_SURE_GAP * i_query.size;
    m_sureSlab = PROXIMITY_SURE_SLAB * i_query.size * i_query.size;
    m_sureVolume = PROXIMITY_SURE_VOLUME * i_query.size;
    m_leastEdge = PROXIMITY_LEAST_EDGE * i_query.size;
    CProximityMove &toA = m_moves[0], &toB = m_moves[1];
    toA.rotation = toB.rotation = i_query.rotation;
    toA.row = toB.column = 3;
    toA.column = toB.row = 1;
    for (int r = 0; r < 3; ++r)
    {
      toA.translation[r] = t[r];
      toB.translation[r] = -((toB.entry(r, 0) * t[0] + toB.entry(r, 1) * t[1]) + toB.entry(r, 2) * t[2]);
    }
    float rounded[9];
    for (int k = 0; k < 9; ++k)
      rounded[k] = static_cast<float>(i_query.rotation[k]);
    const float* m = rounded;
    toA.set(TQuad(m[0], m[3], m[6]), TQuad(m[1], m[4], m[7]), TQuad(m[2], m[5], m[8]));
    toB.set(TQuad(m[0], m[1], m[2]), TQuad(m[3], m[4], m[5]), TQuad(m[6], m[7], m[8]));
    m_trees[0] = i_query.a;
    m_trees[1] = i_query.b;
    setThreshold();
  }

  void run(CProximityAnswer& o_answer)
  {
    if (m_query.hintA != PROXIMITY_NONE && m_query.hintB != PROXIMITY_NONE)
    {
      placePacket(0, m_query.hintB >> 2);
      measureRow(0, m_query.hintA >> 2, m_query.hintA & 3u, TDoubles(-PROXIMITY_FAR));
    }
    CProximityTask task = {-PROXIMITY_LARGEST, 0, m_query.a->boxes, m_query.b->boxes};
    bool isGoingOn = m_best > m_query.stop;
    while (isGoingOn)
    {
      if ((task.box->child & task.other->child & PROXIMITY_LEAF) == 0)
        isGoingOn = split(task) || pop(task);
      else
      {
        measureLeaves(task);
        isGoingOn = m_best > m_query.stop && pop(task);
      }
    }
    o_answer.best = m_best < PROXIMITY_FAR ? m_best : __builtin_inf();
    o_answer.lower = IS_CONTACT ? 0.0 : lowerBound(m_best > m_query.stop ? PROXIMITY_LARGEST : task.key);
    o_answer.placeA = m_placeA;
    o_answer.placeB = m_placeB;
  }

private:
  double distanceOfKey(float i_key) const
  {
    return i_key > 0.0f ? __builtin_sqrt(static_cast<double>(i_key)) / PROXIMITY_BOX_SHARE - m_slack : 0.0;
  }

  /// What was passed over is neither nearer than its key nor than the bound of that time, which has only sunk since;
  /// what a search that was stopped has left is not nearer than its keys.
  double lowerBound(float i_lastKey) const
  {
    alignas(32) double gaps[4];
    m_passedGaps.store(gaps);
    const float key = first(least(m_passedKeys));
    double passed = distanceOfKey(key < m_passedKey ? key : m_passedKey);
    for (int k = 0; k < 4; ++k)
      passed = gaps[k] < passed ? gaps[k] : passed;
    double lower = passed > m_bound ? passed : m_bound;
    if (!(m_best > m_query.stop))
    {
      float left = i_lastKey;
      for (unsigned int i = 0; i < m_countGroups; ++i)
      {
        const float nearest = first(least(only(TFloats(m_groups[i].keys), m_groups[i].lanes)));
        left = nearest < left ? nearest : left;
      }
      lower = distanceOfKey(left) < lower ? distanceOfKey(left) : lower;
    }
    return m_best < lower ? m_best : lower;
  }

  void setThreshold()
  {
    const double reach = (m_bound + m_slack) * PROXIMITY_BOX_SHARE;
    const double square = IS_CONTACT ? reach : reach * reach;
    m_threshold = square < PROXIMITY_LARGEST ? static_cast<float>(square) : PROXIMITY_LARGEST;
  }

  bool pop(CProximityTask& o_task)
  {
    while (m_countGroups > 0)
    {
      CProximityGroup& group = m_groups[m_countGroups - 1];
      const TFloats keys = only(TFloats(group.keys), group.lanes), nearest = least(keys);
      const float key = first(nearest);
      if (!(key < m_threshold))
      {
        m_passedKey = key < m_passedKey ? key : m_passedKey;
        --m_countGroups;
        continue;
      }
      const unsigned int lanes = lanesOf(keys, nearest), lane = static_cast<unsigned int>(__builtin_ctz(lanes));
      o_task = {key, group.side, group.boxes + lane, group.other};
      group.lanes &= ~(lanes & (0u - lanes));
      m_countGroups -= group.lanes == 0;
      return true;
    }
    return false;
  }

  /// Opens the larger of the two boxes. The nearest of the eight pairs becomes the task, the others that are near
  /// enough wait. @return false if there is none.
  LUM_PROXIMITY_INLINE bool split(CProximityTask& io_task)
  {
    const std::uint32_t child = io_task.box->child, otherChild = io_task.other->child;
    const bool isFirst =
      (otherChild & PROXIMITY_LEAF) || (!(child & PROXIMITY_LEAF) && size(*io_task.box) > size(*io_task.other));
    const unsigned int side = isFirst ? io_task.side : 1u - io_task.side;
    const CProximityBox& opened = isFirst ? *io_task.box : *io_task.other;
    const CProximityBox& placed = isFirst ? *io_task.other : *io_task.box;
    const CProximityNode& node = m_trees[side]->nodes[isFirst ? child : otherChild];
    const CProximityBox* boxes = m_trees[side]->boxes + node.firstBox;
    if (IS_CONTACT && meetBalls(side, isFirst ? child : otherChild, placed))
      return false;
    const CPlacedBox box = m_moves[side].placed(placed);
    TFloats keys = IS_CONTACT ? contactKeys(node, box) : distanceKeys(node, box);
    const TFloats threshold(m_threshold);
    unsigned int near = lanesBelow(keys, threshold);
    if ((placed.child & PROXIMITY_LEAF) && size(placed) > PROXIMITY_LARGE_LEAF * size(opened) && near != 0)
    {
      keys = keysToTriangles(side, node, placed.child, m_bound > PROXIMITY_WIDE * size(placed), keys);
      near = lanesBelow(keys, threshold);
    }
    if (!IS_CONTACT)
      m_passedKeys = smaller(m_passedKeys, pick(threshold, keys, TFloats(PROXIMITY_LARGEST), keys));
    if (near == 0)
      return false;
    const TFloats nearest = least(keys);
    const unsigned int lanes = lanesOf(keys, nearest), lane = static_cast<unsigned int>(__builtin_ctz(lanes));
    const unsigned int rest = near & ~(lanes & (0u - lanes));
    io_task = {first(nearest), side, boxes + lane, &placed};
    CProximityGroup& group = m_groups[m_countGroups];
    keys.store(group.keys);
    group.boxes = boxes;
    group.other = &placed;
    group.side = side;
    group.lanes = rest;
    m_countGroups += rest != 0;
    return true;
  }

  /// Whether a ball of a node overlaps that of a box of the other tree: if so, the search is over.
  LUM_PROXIMITY_INLINE bool meetBalls(unsigned int i_side, std::uint32_t i_node, const CProximityBox& i_placed)
  {
    const CProximityTree &tree = *m_trees[i_side], &other = *m_trees[1 - i_side];
    const std::size_t rank = static_cast<std::size_t>(&i_placed - other.boxes);
    if (i_node >= tree.countNodeBalls || rank >= other.countBalls)
      return false;
    const CProximityBall& ball = other.balls[rank];
    if (!doOverlap(tree.nodeBalls[i_node], spreadVector(m_moves[i_side].moved(ball.center)),
                   TFloats(ball.radius - static_cast<float>(m_slack))))
      return false;
    m_best = 0.0;
    m_placeA = m_placeB = PROXIMITY_NONE;
    m_countGroups = 0;
    return true;
  }

  static float size(const CProximityBox& i_box) { return (i_box.axes[0][3] + i_box.axes[1][3]) + i_box.axes[2][3]; }

  /// The box of a few large triangles is mostly empty: raises the keys to what keeps the balls around the eight boxes
  /// from the triangles themselves.
  /// @param i_isWide what is of interest is so far that much of it lies beyond the corners.
  TFloats keysToTriangles(unsigned int i_side, const CProximityNode& i_node, std::uint32_t i_leaf, bool i_isWide,
                          const TFloats& i_keys)
  {
    placePacket(i_side, i_leaf & PROXIMITY_PACKET_MASK);
    CPlacedPacket& placed = m_placed[i_side];
    if (!placed.hasPlanes)
      placed.makePlanes(m_leastEdge);
    const unsigned int begin = (i_leaf >> PROXIMITY_FIRST_SHIFT) & 3u, end = begin + countOf(i_leaf);
    const TWideVectors centers = {TFloats(i_node.center[0]), TFloats(i_node.center[1]), TFloats(i_node.center[2])};
    TFloats square(PROXIMITY_LARGEST);
    if (!i_isWide)
      for (unsigned int lane = begin; lane < end; ++lane)
        square = smaller(square, widePlaneSquares(centers, placed.planes, lane));
    else
    {
      if (!placed.hasMiddles)
        placed.makeMiddles(m_leastEdge);
      for (unsigned int lane = begin; lane < end; ++lane)
        square = smaller(square, wideTriangleSquares(centers, placed.planes, placed.middles, placed.halves, lane));
    }
    const TFloats x(i_node.half[0]), y(i_node.half[1]), z(i_node.half[2]);
    const TFloats gap = squareRoot(square) - squareRoot((x * x + y * y) + z * z);
    return larger(i_keys, pick(gap, TFloats(0.0f), IS_CONTACT ? gap : gap * gap, i_keys));
  }

  /// Brings a packet of the other tree to where it stands for one of `i_side`.
  void placePacket(unsigned int i_side, std::uint32_t i_rank)
  {
    if (m_placed[i_side].rank != i_rank)
      m_placed[i_side].place(m_trees[1 - i_side]->packets[i_rank], i_rank, m_moves[i_side]);
  }

  /// Measures the triangles of the smaller leaf one by one, each against all of the other.
  void measureLeaves(const CProximityTask& i_task)
  {
    const CProximityBox* boxes[2] = {i_task.box, i_task.other};
    const CProximityBox &boxA = *boxes[i_task.side], &boxB = *boxes[1 - i_task.side];
    const unsigned int side = countOf(boxB.child) < countOf(boxA.child) ? 1 : 0;
    const CProximityBox &rows = side == 0 ? boxA : boxB, &lanes = side == 0 ? boxB : boxA;
    const std::uint32_t packetRank = rows.child & PROXIMITY_PACKET_MASK;
    const unsigned int first = (rows.child >> PROXIMITY_FIRST_SHIFT) & 3u, count = countOf(rows.child);
    placePacket(side, lanes.child & PROXIMITY_PACKET_MASK);
    if (IS_CONTACT)
    {
      for (unsigned int i = first; i < first + count && m_best > m_query.stop; ++i)
        measureRow(side, packetRank, i, TDoubles(-PROXIMITY_FAR));
      return;
    }
    // Between planes across the line of the boxes' centres.
    double line[3];
    const double length = centerLine(side, rows, lanes, line);
    const TDoubles scale(length > 0.0 ? 1.0 / length : 0.0), bound(length > 0.0 ? m_bound * length : PROXIMITY_FAR);
    const CProximityPacket& packet = m_trees[side]->packets[packetRank];
    const CPlacedPacket& placed = m_placed[side];
    const TVectors direction = all(line);
    TVectors corners[3];
    for (int k = 0; k < 3; ++k)
      corners[k] = {TDoubles(packet.corners[k][0]), TDoubles(packet.corners[k][1]), TDoubles(packet.corners[k][2])};
    const TDoubles farthest =
      larger(larger(dot(direction, corners[0]), dot(direction, corners[1])), dot(direction, corners[2]));
    const TDoubles nearest = smaller(smaller(dot(direction, placed.corners[0]), dot(direction, placed.corners[1])),
                                     dot(direction, placed.corners[2]));
    alignas(32) double reach[4];
    farthest.store(reach);
    for (unsigned int i = first; i < first + count && m_best > m_query.stop; ++i)
    {
      const TDoubles gap = nearest - TDoubles(reach[i]);
      if ((gap < bound).any())
        measureRow(side, packetRank, i, gap * scale);
      else
        m_passedGaps = smaller(m_passedGaps, gap * scale);
    }
  }

  static unsigned int countOf(std::uint32_t i_leaf) { return ((i_leaf >> PROXIMITY_COUNT_SHIFT) & 3u) + 1u; }

  /// The vector from the centre of a box of `i_side` to that of one of the other. @return its length.
  double centerLine(unsigned int i_side, const CProximityBox& i_own, const CProximityBox& i_other,
                    double o_line[3]) const
  {
    const CProximityMove& move = m_moves[i_side];
    const double x = i_other.center[0], y = i_other.center[1], z = i_other.center[2];
    for (int r = 0; r < 3; ++r)
    {
      o_line[r] =
        ((move.entry(r, 0) * x + move.entry(r, 1) * y) + move.entry(r, 2) * z) + move.translation[r] - i_own.center[r];
    }
    return __builtin_sqrt((o_line[0] * o_line[0] + o_line[1] * o_line[1]) + o_line[2] * o_line[2]);
  }

  /// A triangle of `i_side` against the packet of the other that is placed there.
  /// @param i_gap what the triangles are known to be apart.
  void measureRow(unsigned int i_side, std::uint32_t i_packet, unsigned int i_lane, const TDoubles& i_gap)
  {
    const TDoubles bound(m_bound);
    const CProximityPacket& packet = m_trees[i_side]->packets[i_packet];
    CPlacedPacket& placed = m_placed[i_side];
    CProximityRow row;
    row.load(packet, i_lane);
    CProximityHeights onRow, onLanes;
    onRow.measure(row.normal, row.corners[0], placed.corners);
    onLanes.measure(placed.normal, placed.corners[0], row.corners);
    const TDoubles gap = larger(larger(onRow.gap, onLanes.gap), i_gap);
    const TMask isNear = gap < bound;
    m_passedGaps = smaller(m_passedGaps, select(isNear, TDoubles(PROXIMITY_FAR), gap));
    if (!isNear.any())
      return;
    if (!placed.hasEdges)
      placed.makeEdges();
    if (IS_CONTACT || (m_trials < PROXIMITY_TRIALS && (gap < TDoubles(m_sureGap)).any()))
    {
      ++m_trials;
      const CProximityVolumes<true> volumes(row, onRow, placed, onLanes, m_bound, m_sureVolume, m_sureGap);
      if (const unsigned int pierced = volumes.arePierced.lanes())
      {
        improve(i_side, 0.0, 4 * i_packet + i_lane, static_cast<unsigned int>(__builtin_ctz(pierced)));
        return;
      }
      if (IS_CONTACT && (isNear & volumes.areApart).lanes() == isNear.lanes())
        return;
    }
    if (!IS_CONTACT && (TDoubles(m_bound * m_bound) < placed.longest * TDoubles(PROXIMITY_PLANES)).any())
    {
      const CProximityVolumes<false> volumes(row, onRow, placed, onLanes, m_bound, m_sureVolume, m_sureGap);
      if ((isNear & volumes.areApart).lanes() == isNear.lanes())
      {
        m_passedGaps = smaller(m_passedGaps, bound);
        return;
      }
    }
    if (!placed.hasInverses)
      placed.makeInverses();
    const TVectors edges[3] = {row.corners[1] - row.corners[0], row.corners[2] - row.corners[1],
                               row.corners[0] - row.corners[2]};
    TMask isApart = gap > TDoubles(m_sureGap);
    TDoubles square = edgeSquares(row, edges, placed, isApart);
    square = smaller(square, onRow.overFace(row.normal, row.corners, edges, placed.corners));
    square = smaller(square, onLanes.overFace(placed.normal, placed.corners, placed.edges, row.corners));
    alignas(32) double squares[4];
    square.store(squares);
    if (!isApart.all())
      settle(isApart, packet, i_lane, placed, squares);
    for (unsigned int k = 0; k < 4; ++k)
      if (squares[k] < m_bestSquare)
        improve(i_side, squares[k], 4 * i_packet + i_lane, k);
  }

  /// The squared distances of the edges. Marks the pairs that the slab between two edges keeps apart.
  TDoubles edgeSquares(const CProximityRow& i_row, const TVectors i_edges[3], const CPlacedPacket& i_placed,
                       TMask& io_isApart) const
  {
    const bool areAllApart = io_isApart.all();
    // A point or a segment is told by its first edge.
    const bool isThin = (dot(i_edges[1], i_edges[1]) > TDoubles(0.0)).none();
    TDoubles nearest(PROXIMITY_FAR);
    for (int i = 0; i < (isThin ? 1 : 3); ++i)
    {
      const TVectors& d = i_edges[i];
      const TDoubles dd = dot(d, d);
      const TDoubles inverseDd = inverse(dd);
      for (int j = 0; j < 3; ++j)
      {
        const TVectors& e = i_placed.edges[j];
        const TVectors r = i_placed.corners[j] - i_row.corners[i];
        const TDoubles& ee = i_placed.squares[j];
        const TDoubles rd = dot(r, d), re = dot(r, e), de = dot(d, e);
        const TDoubles product = dd * ee, determinant = product - de * de;
        TDoubles s = toUnit((rd * ee - re * de) / determinant);
        const TMask isParallel = determinant < product * TDoubles(PROXIMITY_PARALLEL);
        if (isParallel.any())
        {
          // Cross products keep the digits that the difference loses.
          const TVectors n = cross(d, e);
          s = select(isParallel, toUnit(dot(cross(r, e), n) / dot(n, n)), s);
        }
        const TDoubles t = toUnit((s * de - re) * i_placed.inverses[j]);
        s = toUnit((t * de + rd) * inverseDd);
        const TVectors onD = d * s, onE = e * t;
        const TVectors gap = r + onE - onD;
        const TDoubles square = dot(gap, gap);
        nearest = smaller(nearest, square);
        if (areAllApart)
          continue;
        // How far the third corners reach into the slab between the two points.
        const TDoubles zero(0.0);
        const TDoubles above = dot((i_row.corners[(i + 2) % 3] - i_row.corners[i]) - onD, gap);
        const TDoubles below = dot((i_placed.corners[(j + 2) % 3] - i_placed.corners[j]) - onE, gap);
        io_isApart = io_isApart | ((square - larger(above, zero)) + smaller(below, zero) > TDoubles(m_sureSlab));
      }
    }
    return nearest;
  }

  /// A row and one of the packet's triangles, for the functions that take them one by one.
  struct CPairOfCorners
  {
    double row[9];
    double lanes[9][4];
    double lane[9];

    CPairOfCorners(const CProximityPacket& i_packet, unsigned int i_lane, const CPlacedPacket& i_placed)
    {
      for (int k = 0; k < 9; ++k)
        row[k] = i_packet.corners[k / 3][k % 3][i_lane];
      for (int k = 0; k < 3; ++k)
      {
        i_placed.corners[k].x.storeAnywhere(lanes[3 * k]);
        i_placed.corners[k].y.storeAnywhere(lanes[3 * k + 1]);
        i_placed.corners[k].z.storeAnywhere(lanes[3 * k + 2]);
      }
    }
    void take(unsigned int i_lane)
    {
      for (int k = 0; k < 9; ++k)
        lane[k] = lanes[k][i_lane];
    }
  };

  /// Pairs of which nothing was found to keep them apart: they touch, or nearly so.
  void settle(const TMask& i_isApart, const CProximityPacket& i_packet, unsigned int i_lane,
              const CPlacedPacket& i_placed, double io_squares[4]) const
  {
    const unsigned int apart = i_isApart.lanes();
    CPairOfCorners corners(i_packet, i_lane, i_placed);
    for (unsigned int l = 0; l < 4; ++l)
    {
      if (apart >> l & 1u)
        continue;
      corners.take(l);
      const double distance =
        m_query.isPierced(corners.row, corners.lane) ? 0.0 : m_query.distance(corners.row, corners.lane);
      io_squares[l] = distance * distance;
    }
  }

  /// @param i_lane of the packet that is placed.
  void improve(unsigned int i_side, double i_square, std::uint32_t i_place, unsigned int i_lane)
  {
    const std::uint32_t otherPlace = 4 * m_placed[i_side].rank + i_lane;
    m_bestSquare = i_square;
    m_best = __builtin_sqrt(i_square);
    m_placeA = i_side == 0 ? i_place : otherPlace;
    m_placeB = i_side == 0 ? otherPlace : i_place;
    const double bound = m_query.sweep + (m_best - m_query.sweep) * m_query.share;
    if (bound < m_bound)
    {
      m_bound = bound > 0.0 ? bound : 0.0;
      setThreshold();
    }
  }

  const CProximityQuery& m_query;
  CProximityMove m_moves[2]; ///< to a, and to b
  const CProximityTree* m_trees[2];
  double m_slack; ///< of distances of boxes
  double m_sureGap;
  double m_sureSlab;
  double m_sureVolume;
  double m_leastEdge;
  double m_bound; ///< what is not nearer is passed over
  double m_best;
  double m_bestSquare;
  float m_threshold;                       ///< for the keys of boxes
  TFloats m_passedKeys{PROXIMITY_LARGEST}; ///< the least of what was passed over, lane by lane
  TDoubles m_passedGaps{PROXIMITY_FAR};
  float m_passedKey = PROXIMITY_LARGEST;
  std::uint32_t m_placeA = PROXIMITY_NONE;
  std::uint32_t m_placeB = PROXIMITY_NONE;
  CPlacedPacket m_placed[2]; ///< of b in the frame of a, and the other way round
  unsigned int m_countGroups = 0;
  unsigned int m_trials = 0; ///< rows of which a contact was looked for first
  CProximityGroup m_groups[2 * PROXIMITY_MAX_DEPTH];
};

void proximityDistance(const CProximityQuery& i_query, CProximityAnswer& o_answer)
{
  CProximitySearch<false> search(i_query);
  search.run(o_answer);
}

void proximityContact(const CProximityQuery& i_query, CProximityAnswer& o_answer)
{
  CProximitySearch<true> search(i_query);
  search.run(o_answer);
}

void proximityRay(const CProximityTree& i_tree, const double i_from[3], double i_length, TProximityVisit i_visit,
                  void* io_data)
{
  CProximityBox along = {};
  for (int k = 0; k < 3; ++k)
  {
    along.center[k] = static_cast<float>(k == 0 ? i_from[0] + 0.5 * i_length : i_from[k]);
    along.axes[k][k] = 1.0f;
  }
  along.axes[0][3] = static_cast<float>(0.5 * i_length);
  const CPlacedBox box = {
    TQuad(along.center), {TQuad(along.axes[0]), TQuad(along.axes[1]), TQuad(along.axes[2])}, along};
  const double slack = PROXIMITY_BOX_SLACK * (i_tree.radius + 2.0 * i_length);
  const TFloats threshold(static_cast<float>(slack));
  std::uint32_t stack[PROXIMITY_STACK_SIZE];
  unsigned int count = 1;
  stack[0] = 0;
  while (count > 0)
  {
    const std::uint32_t rank = stack[--count];
    const CProximityNode& node = i_tree.nodes[rank];
    unsigned int lanes = lanesBelow(contactKeys(node, box), threshold);
    for (; lanes; lanes &= lanes - 1u)
    {
      const std::uint32_t child = i_tree.boxes[node.firstBox + static_cast<unsigned int>(__builtin_ctz(lanes))].child;
      if (child & PROXIMITY_LEAF)
        i_visit(io_data, child);
      else
        stack[count++] = child;
    }
  }
}
} // namespace
