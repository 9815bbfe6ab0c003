// No include guard: each source of the proximity kernel includes this once, after it has defined `TFloats`, eight
// numbers in single precision, and `TDoubles` with `TMask`, four in double precision.

namespace
{
constexpr float PROXIMITY_LARGEST = 3.4e38f;
constexpr double PROXIMITY_FAR = 1e300;

/// What is taken off a distance of two boxes, in parts of the size of the pair: see docs/proximity.md.
constexpr double PROXIMITY_BOX_SLACK = 0x1p-19;
constexpr double PROXIMITY_BOX_SHARE = 1.0 + 0x1p-18;
/// Two triangles are apart for certain if a plane keeps them apart by so much, in parts of the size of the pair.
constexpr double PROXIMITY_SURE_GAP = 1e-13;
constexpr double PROXIMITY_SURE_SLAB = 1e-14;
/// Edges of which the square of the sine is less are nearly parallel.
constexpr double PROXIMITY_PARALLEL = 1e-8;

struct TVectors
{
  TDoubles x, y, z;
};

inline TVectors operator+(const TVectors& a, const TVectors& b)
{
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline TVectors operator-(const TVectors& a, const TVectors& b)
{
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline TVectors operator*(const TVectors& a, const TDoubles& f)
{
  return {a.x * f, a.y * f, a.z * f};
}
inline TDoubles dot(const TVectors& a, const TVectors& b)
{
  return (a.x * b.x + a.y * b.y) + a.z * b.z;
}
inline TVectors cross(const TVectors& a, const TVectors& b)
{
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline TVectors all(const double* v)
{
  return {TDoubles(v[0]), TDoubles(v[1]), TDoubles(v[2])};
}
inline TVectors select(const TMask& m, const TVectors& a, const TVectors& b)
{
  return {select(m, a.x, b.x), select(m, a.y, b.y), select(m, a.z, b.z)};
}
inline TDoubles toUnit(const TDoubles& v)
{
  return smaller(larger(v, TDoubles(0.0)), TDoubles(1.0));
}
/// 0 where the number is 0.
inline TDoubles inverse(const TDoubles& v)
{
  return select(v > TDoubles(0.0), TDoubles(1.0) / v, TDoubles(0.0));
}

/// A box in the frame of the other model.
struct CPlacedBox
{
  float center[3];
  float axes[3][3];
  float half[3];
};

/// The motion from one model's frame to the other's.
struct CProximityMove
{
  double rotation[9];
  double translation[3];
  float turn[9];
  float shift[3];

  void set()
  {
    for (int k = 0; k < 9; ++k)
      turn[k] = static_cast<float>(rotation[k]);
    for (int k = 0; k < 3; ++k)
      shift[k] = static_cast<float>(translation[k]);
  }

  void place(const CProximityTree& i_tree, std::uint32_t i_slot, CPlacedBox& o_box) const
  {
    const CProximityNode& node = i_tree.nodes[i_slot >> 3];
    const unsigned int lane = i_slot & 7u;
    const float x = node.center[0][lane], y = node.center[1][lane], z = node.center[2][lane];
    for (int r = 0; r < 3; ++r)
      o_box.center[r] = ((turn[3 * r] * x + turn[3 * r + 1] * y) + turn[3 * r + 2] * z) + shift[r];
    for (int i = 0; i < 3; ++i)
    {
      const float ax = node.axes[i][0][lane], ay = node.axes[i][1][lane], az = node.axes[i][2][lane];
      for (int r = 0; r < 3; ++r)
        o_box.axes[i][r] = (turn[3 * r] * ax + turn[3 * r + 1] * ay) + turn[3 * r + 2] * az;
      o_box.half[i] = node.half[i][lane];
    }
  }
};

/// Compares a box with the eight of a node. A key is the square of a lower bound of the distance, before the slack; for
/// boxes of which neither has a face between them it is minus the depth at which they overlap at least.
inline TFloats boxKeys(const CProximityNode& i_node, const CPlacedBox& i_box)
{
  const TFloats zero(0.0f);
  const TFloats dx = TFloats(i_node.center[0]) - TFloats(i_box.center[0]);
  const TFloats dy = TFloats(i_node.center[1]) - TFloats(i_box.center[1]);
  const TFloats dz = TFloats(i_node.center[2]) - TFloats(i_box.center[2]);
  TFloats reach[3] = {TFloats(i_box.half[0]), TFloats(i_box.half[1]), TFloats(i_box.half[2])};
  TFloats largest(-PROXIMITY_LARGEST), childSquare = zero, boxSquare = zero;
  for (int j = 0; j < 3; ++j)
  {
    const TFloats bx(i_node.axes[j][0]), by(i_node.axes[j][1]), bz(i_node.axes[j][2]);
    const TFloats half(i_node.half[j]);
    TFloats gap = magnitude((bx * dx + by * dy) + bz * dz) - half;
    for (int i = 0; i < 3; ++i)
    {
      const float* axis = i_box.axes[i];
      const TFloats cosine = magnitude((bx * TFloats(axis[0]) + by * TFloats(axis[1])) + bz * TFloats(axis[2]));
      gap = gap - cosine * TFloats(i_box.half[i]);
      reach[i] = reach[i] + cosine * half;
    }
    largest = larger(largest, gap);
    const TFloats apart = larger(gap, zero);
    childSquare = childSquare + apart * apart;
  }
  for (int i = 0; i < 3; ++i)
  {
    const float* axis = i_box.axes[i];
    const TFloats gap = magnitude((dx * TFloats(axis[0]) + dy * TFloats(axis[1])) + dz * TFloats(axis[2])) - reach[i];
    largest = larger(largest, gap);
    const TFloats apart = larger(gap, zero);
    boxSquare = boxSquare + apart * apart;
  }
  return pick(largest, zero, larger(childSquare, boxSquare), largest);
}

/// A packet of b in the frame of a.
struct CPlacedPacket
{
  std::uint32_t rank = PROXIMITY_NONE;
  bool hasEdges = false;
  TVectors corners[3];
  TVectors normal;
  TVectors edges[3];
  TDoubles squares[3];  ///< of the edges' lengths
  TDoubles inverses[3]; ///< of these squares

  void place(const CProximityPacket& i_packet, std::uint32_t i_rank, const CProximityMove& i_move)
  {
    rank = i_rank;
    hasEdges = false;
    const double* m = i_move.rotation;
    const double* t = i_move.translation;
    for (int k = 0; k < 3; ++k)
    {
      const TDoubles x(i_packet.corners[k][0]), y(i_packet.corners[k][1]), z(i_packet.corners[k][2]);
      corners[k].x = ((x * TDoubles(m[0]) + y * TDoubles(m[1])) + z * TDoubles(m[2])) + TDoubles(t[0]);
      corners[k].y = ((x * TDoubles(m[3]) + y * TDoubles(m[4])) + z * TDoubles(m[5])) + TDoubles(t[1]);
      corners[k].z = ((x * TDoubles(m[6]) + y * TDoubles(m[7])) + z * TDoubles(m[8])) + TDoubles(t[2]);
    }
    const TDoubles x(i_packet.normal[0]), y(i_packet.normal[1]), z(i_packet.normal[2]);
    normal.x = (x * TDoubles(m[0]) + y * TDoubles(m[1])) + z * TDoubles(m[2]);
    normal.y = (x * TDoubles(m[3]) + y * TDoubles(m[4])) + z * TDoubles(m[5]);
    normal.z = (x * TDoubles(m[6]) + y * TDoubles(m[7])) + z * TDoubles(m[8]);
  }

  void makeEdges()
  {
    hasEdges = true;
    for (int k = 0; k < 3; ++k)
    {
      edges[k] = corners[(k + 1) % 3] - corners[k];
      squares[k] = dot(edges[k], edges[k]);
      inverses[k] = inverse(squares[k]);
    }
  }
};

/// A triangle of a, against the four of a packet.
struct CProximityRow
{
  TVectors corners[3];
  TVectors normal;

  void load(const CProximityPacket& i_packet, unsigned int i_lane)
  {
    for (int k = 0; k < 3; ++k)
      corners[k] = {TDoubles(i_packet.corners[k][0][i_lane]), TDoubles(i_packet.corners[k][1][i_lane]),
                    TDoubles(i_packet.corners[k][2][i_lane])};
    normal = {TDoubles(i_packet.normal[0][i_lane]), TDoubles(i_packet.normal[1][i_lane]),
              TDoubles(i_packet.normal[2][i_lane])};
  }
};

/// The corners of one triangle against the plane of another.
struct CProximityHeights
{
  TDoubles values[3];
  TDoubles gap; ///< of the nearest corner, if all lie on one side; otherwise not positive

  void measure(const TVectors& i_normal, const TVectors& i_origin, const TVectors i_corners[3])
  {
    for (int k = 0; k < 3; ++k)
      values[k] = dot(i_normal, i_corners[k] - i_origin);
    const TDoubles lowest = smaller(smaller(values[0], values[1]), values[2]);
    const TDoubles highest = larger(larger(values[0], values[1]), values[2]);
    gap = larger(lowest, TDoubles(0.0) - highest);
  }

  /// The square of the gap where the nearest corner lies over the face, otherwise a large number.
  TDoubles overFace(const TVectors& i_normal, const TVectors i_face[3], const TVectors i_edges[3],
                    const TVectors i_corners[3]) const
  {
    const TDoubles h0 = magnitude(values[0]), h1 = magnitude(values[1]), h2 = magnitude(values[2]);
    const TMask isSecond = h1 < h0;
    const TVectors two = select(isSecond, i_corners[1], i_corners[0]);
    const TVectors corner = select(h2 < smaller(h0, h1), i_corners[2], two);
    TMask isOver = gap > TDoubles(0.0);
    for (int k = 0; k < 3; ++k)
      isOver = isOver & (dot(cross(i_normal, i_edges[k]), corner - i_face[k]) > TDoubles(0.0));
    return select(isOver, gap * gap, TDoubles(PROXIMITY_FAR));
  }
};

struct CProximityTask
{
  float key;
  std::uint32_t a;
  std::uint32_t b;
};

class CProximitySearch
{
public:
  explicit CProximitySearch(const CProximityQuery& i_query)
    : m_query(i_query), m_bound(i_query.cap), m_best(PROXIMITY_FAR), m_bestSquare(PROXIMITY_FAR)
  {
    const double* t = i_query.translation;
    const double size = i_query.a.radius + i_query.b.radius + __builtin_sqrt((t[0] * t[0] + t[1] * t[1]) + t[2] * t[2]);
    m_slack = PROXIMITY_BOX_SLACK * size;
    m_sureGap = PROXIMITY_SURE_GAP * size;
    m_sureSlab = PROXIMITY_SURE_SLAB * size * size;
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c)
      {
        m_toA.rotation[3 * r + c] = i_query.rotation[3 * r + c];
        m_toB.rotation[3 * r + c] = i_query.rotation[3 * c + r];
      }
    for (int r = 0; r < 3; ++r)
    {
      m_toA.translation[r] = t[r];
      const double* row = m_toB.rotation + 3 * r;
      m_toB.translation[r] = -((row[0] * t[0] + row[1] * t[1]) + row[2] * t[2]);
    }
    m_toA.set();
    m_toB.set();
    setThreshold();
  }

  void run(CProximityAnswer& o_answer)
  {
    if (m_query.hintA != PROXIMITY_NONE && m_query.hintB != PROXIMITY_NONE)
      measureRow(m_query.hintA >> 2, m_query.hintA & 3u, m_query.hintB >> 2);
    CProximityTask task = {-PROXIMITY_LARGEST, 0, 0};
    while (m_best > m_query.stop)
    {
      const std::uint32_t a = child(m_query.a, task.a), b = child(m_query.b, task.b);
      if (a & b & PROXIMITY_LEAF)
        measureLeaves(a, b);
      else if (split(task, a, b))
        continue;
      if (m_best <= m_query.stop || !pop(task))
        break;
    }
    o_answer.best = m_best < PROXIMITY_FAR ? m_best : __builtin_inf();
    o_answer.lower = lowerBound(task.key);
    o_answer.placeA = m_placeA;
    o_answer.placeB = m_placeB;
  }

private:
  static std::uint32_t child(const CProximityTree& i_tree, std::uint32_t i_slot)
  {
    return i_tree.nodes[i_slot >> 3].child[i_slot & 7u];
  }
  static float size(const CProximityTree& i_tree, std::uint32_t i_slot)
  {
    return i_tree.nodes[i_slot >> 3].half[0][i_slot & 7u];
  }

  double distanceOfKey(float i_key) const
  {
    return i_key > 0.0f ? __builtin_sqrt(static_cast<double>(i_key)) / PROXIMITY_BOX_SHARE - m_slack : 0.0;
  }

  /// What was passed over is neither nearer than its key nor than the bound of that time, which has only sunk since;
  /// what a search that was stopped has left is not nearer than its keys.
  double lowerBound(float i_lastKey) const
  {
    alignas(32) float keys[8];
    alignas(32) double gaps[4];
    m_passedKeys.store(keys);
    m_passedGaps.store(gaps);
    float key = m_passedKey;
    for (int k = 0; k < 8; ++k)
      key = keys[k] < key ? keys[k] : key;
    double passed = distanceOfKey(key);
    for (int k = 0; k < 4; ++k)
      passed = gaps[k] < passed ? gaps[k] : passed;
    double lower = passed > m_bound ? passed : m_bound;
    if (!(m_best > m_query.stop))
    {
      float left = i_lastKey;
      for (unsigned int i = 0; i < m_countTasks; ++i)
        left = m_stack[i].key < left ? m_stack[i].key : left;
      lower = distanceOfKey(left) < lower ? distanceOfKey(left) : lower;
    }
    return m_best < lower ? m_best : lower;
  }

  void setThreshold()
  {
    const double reach = (m_bound + m_slack) * PROXIMITY_BOX_SHARE;
    const double square = reach * reach;
    m_threshold = square < PROXIMITY_LARGEST ? static_cast<float>(square) : PROXIMITY_LARGEST;
  }

  bool pop(CProximityTask& o_task)
  {
    while (m_countTasks > 0)
    {
      o_task = m_stack[--m_countTasks];
      if (o_task.key < m_threshold)
        return true;
      m_passedKey = o_task.key < m_passedKey ? o_task.key : m_passedKey;
    }
    o_task.key = PROXIMITY_LARGEST;
    return false;
  }

  /// Splits the larger one of the two boxes. @return false if no pair is left of it, otherwise the nearest in
  /// `io_task`.
  bool split(CProximityTask& io_task, std::uint32_t i_a, std::uint32_t i_b)
  {
    const bool splitsA =
      (i_b & PROXIMITY_LEAF) || (!(i_a & PROXIMITY_LEAF) && size(m_query.a, io_task.a) > size(m_query.b, io_task.b));
    const std::uint32_t rank = splitsA ? i_a : i_b;
    const CProximityNode& node = (splitsA ? m_query.a : m_query.b).nodes[rank];
    if (splitsA)
      place(m_toA, m_query.b, io_task.b, 1);
    else
      place(m_toB, m_query.a, io_task.a, 0);
    const TFloats keys = boxKeys(node, m_placedBox);
    const TFloats threshold(m_threshold);
    unsigned int lanes = lanesBelow(keys, threshold);
    m_passedKeys = smaller(m_passedKeys, pick(threshold, keys, TFloats(PROXIMITY_LARGEST), keys));
    if (lanes == 0)
      return false;
    alignas(32) float values[8];
    keys.store(values);
    CProximityTask* tasks = m_stack + m_countTasks;
    unsigned int count = 0;
    for (; lanes; lanes &= lanes - 1u)
    {
      const unsigned int lane = static_cast<unsigned int>(__builtin_ctz(lanes));
      const float key = values[lane];
      unsigned int at = count++;
      for (; at > 0 && tasks[at - 1].key < key; --at)
        tasks[at] = tasks[at - 1];
      tasks[at].key = key;
      tasks[at].a = splitsA ? 8 * rank + lane : io_task.a;
      tasks[at].b = splitsA ? io_task.b : 8 * rank + lane;
    }
    m_countTasks += count - 1;
    io_task = tasks[count - 1];
    return true;
  }

  void place(const CProximityMove& i_move, const CProximityTree& i_tree, std::uint32_t i_slot, std::uint32_t i_side)
  {
    const std::uint32_t name = 2 * i_slot + i_side;
    if (name != m_placedName)
      i_move.place(i_tree, i_slot, m_placedBox);
    m_placedName = name;
  }

  void measureLeaves(std::uint32_t i_a, std::uint32_t i_b)
  {
    const std::uint32_t packetA = i_a & PROXIMITY_PACKET_MASK;
    const unsigned int first = (i_a >> PROXIMITY_FIRST_SHIFT) & 3u, count = ((i_a >> PROXIMITY_COUNT_SHIFT) & 3u) + 1u;
    for (unsigned int i = first; i < first + count && m_best > m_query.stop; ++i)
      measureRow(packetA, i, i_b & PROXIMITY_PACKET_MASK);
  }

  void measureRow(std::uint32_t i_packetA, unsigned int i_lane, std::uint32_t i_packetB)
  {
    if (m_placed.rank != i_packetB)
      m_placed.place(m_query.b.packets[i_packetB], i_packetB, m_toA);
    const CProximityPacket& packet = m_query.a.packets[i_packetA];
    CProximityRow row;
    row.load(packet, i_lane);
    CProximityHeights onRow, onLanes;
    onRow.measure(row.normal, row.corners[0], m_placed.corners);
    onLanes.measure(m_placed.normal, m_placed.corners[0], row.corners);
    const TDoubles gap = larger(onRow.gap, onLanes.gap);
    const TMask isNear = gap < TDoubles(m_bound);
    m_passedGaps = smaller(m_passedGaps, select(isNear, TDoubles(PROXIMITY_FAR), gap));
    if (!isNear.any())
      return;
    if (!m_placed.hasEdges)
      m_placed.makeEdges();
    const TVectors edges[3] = {row.corners[1] - row.corners[0], row.corners[2] - row.corners[1],
                               row.corners[0] - row.corners[2]};
    TMask isApart = gap > TDoubles(m_sureGap);
    TDoubles square = edgeSquares(row, edges, isApart);
    square = smaller(square, onRow.overFace(row.normal, row.corners, edges, m_placed.corners));
    square = smaller(square, onLanes.overFace(m_placed.normal, m_placed.corners, m_placed.edges, row.corners));
    alignas(32) double squares[4];
    square.store(squares);
    if (!isApart.all())
      settle(isApart, packet, i_lane, squares);
    for (unsigned int k = 0; k < 4; ++k)
      if (squares[k] < m_bestSquare)
        improve(squares[k], 4 * i_packetA + i_lane, 4 * i_packetB + k);
  }

  /// The squared distances of the edges. Marks the pairs that the slab between two edges keeps apart.
  TDoubles edgeSquares(const CProximityRow& i_row, const TVectors i_edges[3], TMask& io_isApart) const
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
        const TVectors& e = m_placed.edges[j];
        const TVectors r = m_placed.corners[j] - i_row.corners[i];
        const TDoubles& ee = m_placed.squares[j];
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
        const TDoubles t = toUnit((s * de - re) * m_placed.inverses[j]);
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
        const TDoubles below = dot((m_placed.corners[(j + 2) % 3] - m_placed.corners[j]) - onE, gap);
        io_isApart = io_isApart | ((square - larger(above, zero)) + smaller(below, zero) > TDoubles(m_sureSlab));
      }
    }
    return nearest;
  }

  /// Pairs of which nothing was found to keep them apart: they touch, or nearly so.
  void settle(const TMask& i_isApart, const CProximityPacket& i_packet, unsigned int i_lane, double io_squares[4]) const
  {
    const unsigned int apart = i_isApart.lanes();
    alignas(32) double lanes[9][4];
    for (int k = 0; k < 3; ++k)
    {
      m_placed.corners[k].x.store(lanes[3 * k]);
      m_placed.corners[k].y.store(lanes[3 * k + 1]);
      m_placed.corners[k].z.store(lanes[3 * k + 2]);
    }
    double row[9], lane[9];
    for (int k = 0; k < 9; ++k)
      row[k] = i_packet.corners[k / 3][k % 3][i_lane];
    for (unsigned int l = 0; l < 4; ++l)
    {
      if (apart >> l & 1u)
        continue;
      for (int k = 0; k < 9; ++k)
        lane[k] = lanes[k][l];
      const double distance = m_query.settle(row, lane);
      io_squares[l] = distance * distance;
    }
  }

  void improve(double i_square, std::uint32_t i_placeA, std::uint32_t i_placeB)
  {
    m_bestSquare = i_square;
    m_best = __builtin_sqrt(i_square);
    m_placeA = i_placeA;
    m_placeB = i_placeB;
    const double bound = m_query.sweep + (m_best - m_query.sweep) * m_query.share;
    if (bound < m_bound)
    {
      m_bound = bound > 0.0 ? bound : 0.0;
      setThreshold();
    }
  }

  const CProximityQuery& m_query;
  CProximityMove m_toA; ///< from b to a
  CProximityMove m_toB;
  double m_slack; ///< of distances of boxes
  double m_sureGap;
  double m_sureSlab;
  double m_bound; ///< what is not nearer is passed over
  double m_best;
  double m_bestSquare;
  float m_threshold;                       ///< for the keys of boxes
  TFloats m_passedKeys{PROXIMITY_LARGEST}; ///< the least of what was passed over, lane by lane
  TDoubles m_passedGaps{PROXIMITY_FAR};
  float m_passedKey = PROXIMITY_LARGEST;
  std::uint32_t m_placeA = PROXIMITY_NONE;
  std::uint32_t m_placeB = PROXIMITY_NONE;
  std::uint32_t m_placedName = PROXIMITY_NONE;
  CPlacedBox m_placedBox;
  CPlacedPacket m_placed;
  unsigned int m_countTasks = 0;
  CProximityTask m_stack[PROXIMITY_STACK_SIZE];
};

void proximityDistance(const CProximityQuery& i_query, CProximityAnswer& o_answer)
{
  CProximitySearch search(i_query);
  search.run(o_answer);
}

void proximityRay(const CProximityTree& i_tree, const double i_from[3], double i_length, TProximityVisit i_visit,
                  void* io_data)
{
  CPlacedBox box = {};
  for (int k = 0; k < 3; ++k)
  {
    box.center[k] = static_cast<float>(k == 0 ? i_from[0] + 0.5 * i_length : i_from[k]);
    box.axes[k][k] = 1.0f;
  }
  box.half[0] = static_cast<float>(0.5 * i_length);
  const double slack = PROXIMITY_BOX_SLACK * (i_tree.radius + 2.0 * i_length);
  const TFloats threshold(static_cast<float>(slack * slack));
  std::uint32_t stack[PROXIMITY_STACK_SIZE];
  unsigned int count = 1;
  stack[0] = 0;
  while (count > 0)
  {
    const std::uint32_t rank = stack[--count];
    const CProximityNode& node = i_tree.nodes[rank];
    unsigned int lanes = lanesBelow(boxKeys(node, box), threshold);
    for (; lanes; lanes &= lanes - 1u)
    {
      const std::uint32_t child = node.child[__builtin_ctz(lanes)];
      if (child & PROXIMITY_LEAF)
        i_visit(io_data, child);
      else
        stack[count++] = child;
    }
  }
}
} // namespace
