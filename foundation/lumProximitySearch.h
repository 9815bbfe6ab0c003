// No include guard: each source of the proximity kernel includes this once, after it has defined `TFloats`, eight
// numbers in single precision, and `TDoubles` with `TMask`, four in double precision.

#define LUM_PROXIMITY_INLINE __attribute__((always_inline)) inline

namespace
{
constexpr float PROXIMITY_LARGEST = 3.4e38f;
constexpr float PROXIMITY_SMALLEST = 1e-37f;
constexpr double PROXIMITY_FAR = 1e300;

/// What is taken off a distance of two boxes, in parts of the size of the pair: see docs/proximity.md.
constexpr double PROXIMITY_BOX_SLACK = 0x1p-17;
constexpr double PROXIMITY_BOX_SHARE = 1.0 + 0x1p-18;
/// Two triangles are apart for certain if a plane keeps them apart by so much, in parts of the size of the pair.
constexpr double PROXIMITY_SURE_GAP = 1e-13;
constexpr double PROXIMITY_SURE_SLAB = 1e-14;
/// Edges of which the square of the sine is less are nearly parallel.
constexpr double PROXIMITY_PARALLEL = 1e-8;

/// A leaf is large beside a box if it is so many times as long.
constexpr float PROXIMITY_LARGE_LEAF = 4.0f;

/// Where shapes collide, one of the first pairs of triangles that are measured mostly does: so many rows are looked at
/// for that before anything else.
constexpr unsigned int PROXIMITY_TRIALS = 4;

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

  void move(double io_point[3]) const
  {
    const double x = io_point[0], y = io_point[1], z = io_point[2];
    for (int r = 0; r < 3; ++r)
      io_point[r] = ((rotation[3 * r] * x + rotation[3 * r + 1] * y) + rotation[3 * r + 2] * z) + translation[r];
  }

  LUM_PROXIMITY_INLINE void place(const CProximityTree& i_tree, std::uint32_t i_slot, CPlacedBox& o_box) const
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

/// Compares a box with the eight of a node, along the faces' normals of all. What is negative is no gap.
///
/// The sums are written as trees: what counts is how long the longest chain of operations is.
struct CBoxGaps
{
  TFloats childOffset[3], childGap[3]; ///< along the axes of the eight: of the centre, and the gap
  TFloats boxOffset[3], boxGap[3];     ///< along the axes of the one
  TFloats square;                      ///< of the distance of the centres

  LUM_PROXIMITY_INLINE CBoxGaps(const CProximityNode& i_node, const CPlacedBox& i_box)
  {
    const TFloats dx = TFloats(i_node.center[0]) - TFloats(i_box.center[0]);
    const TFloats dy = TFloats(i_node.center[1]) - TFloats(i_box.center[1]);
    const TFloats dz = TFloats(i_node.center[2]) - TFloats(i_box.center[2]);
    square = (dx * dx + dy * dy) + dz * dz;
    TFloats reach[3];
    for (int i = 0; i < 3; ++i)
    {
      const float* axis = i_box.axes[i];
      boxOffset[i] = magnitude((dx * TFloats(axis[0]) + dy * TFloats(axis[1])) + dz * TFloats(axis[2]));
      reach[i] = TFloats(i_box.half[i]);
    }
    for (int j = 0; j < 3; ++j)
    {
      const TFloats bx(i_node.axes[j][0]), by(i_node.axes[j][1]), bz(i_node.axes[j][2]);
      const TFloats half(i_node.half[j]);
      childOffset[j] = magnitude((bx * dx + by * dy) + bz * dz);
      TFloats shares[3];
      for (int i = 0; i < 3; ++i)
      {
        const float* axis = i_box.axes[i];
        const TFloats cosine = magnitude((bx * TFloats(axis[0]) + by * TFloats(axis[1])) + bz * TFloats(axis[2]));
        shares[i] = cosine * TFloats(i_box.half[i]);
        reach[i] = reach[i] + cosine * half;
      }
      childGap[j] = (childOffset[j] - half) - ((shares[0] + shares[1]) + shares[2]);
    }
    for (int i = 0; i < 3; ++i)
      boxGap[i] = boxOffset[i] - reach[i];
  }

  LUM_PROXIMITY_INLINE TFloats largest() const
  {
    return larger(larger(larger(childGap[0], childGap[1]), larger(childGap[2], boxGap[0])),
                  larger(boxGap[1], boxGap[2]));
  }
};

/// Of a box and the one around another in its frame.
LUM_PROXIMITY_INLINE TFloats squareOfGaps(const TFloats i_gaps[3])
{
  const TFloats zero(0.0f);
  const TFloats x = larger(i_gaps[0], zero), y = larger(i_gaps[1], zero), z = larger(i_gaps[2], zero);
  return (x * x + y * y) + z * z;
}

/// The squares of lower bounds of the distances, before the slack; for boxes that nothing parts, minus the depth at
/// which they overlap at least.
LUM_PROXIMITY_INLINE TFloats distanceKeys(const CProximityNode& i_node, const CPlacedBox& i_box)
{
  const CBoxGaps gaps(i_node, i_box);
  const TFloats zero(0.0f);
  // Between planes across the line of the centres.
  TFloats along = gaps.square;
  for (int k = 0; k < 3; ++k)
    along = along - (gaps.childOffset[k] * TFloats(i_node.half[k]) + gaps.boxOffset[k] * TFloats(i_box.half[k]));
  along = larger(along, zero);
  const TFloats alongSquare = along * along / larger(gaps.square, TFloats(PROXIMITY_SMALLEST));
  const TFloats best = larger(larger(squareOfGaps(gaps.childGap), squareOfGaps(gaps.boxGap)), alongSquare);
  return pick(best, zero, best, gaps.largest());
}

/// Where the question is only whether there is a contact: the largest gaps.
LUM_PROXIMITY_INLINE TFloats contactKeys(const CProximityNode& i_node, const CPlacedBox& i_box)
{
  return CBoxGaps(i_node, i_box).largest();
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

/// The squares of the distances of a point from four triangles.
inline TDoubles pointSquares(const TVectors& i_point, const TVectors i_corners[3], const TVectors& i_normal)
{
  TDoubles nearest(PROXIMITY_FAR);
  TMask isOver = dot(i_normal, i_normal) > TDoubles(0.0);
  for (int k = 0; k < 3; ++k)
  {
    const TVectors edge = i_corners[(k + 1) % 3] - i_corners[k], offset = i_point - i_corners[k];
    const TVectors gap = offset - edge * toUnit(dot(offset, edge) * inverse(dot(edge, edge)));
    nearest = smaller(nearest, dot(gap, gap));
    isOver = isOver & (dot(cross(i_normal, edge), offset) > TDoubles(0.0));
  }
  const TDoubles height = dot(i_normal, i_point - i_corners[0]);
  return select(isOver, height * height, nearest);
}

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

/// Two boxes that may have something near between them. The two slots are kept as one number, since a number that is
/// read in other pieces than it was written holds the machine up.
struct CProximityTask
{
  float key;
  std::uint64_t slots;

  std::uint32_t a() const { return static_cast<std::uint32_t>(slots); }
  std::uint32_t b() const { return static_cast<std::uint32_t>(slots >> 32); }
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
    {
      placePacket(m_query.hintB >> 2);
      measureRow(m_query.hintA >> 2, m_query.hintA & 3u, m_query.hintB >> 2, TDoubles(-PROXIMITY_FAR));
    }
    CProximityTask task = {-PROXIMITY_LARGEST, 0};
    put(task);
    while (m_best > m_query.stop && pop(task))
    {
      if (isLeafPair(task))
        measureLeaves(task);
      else
        split(task);
    }
    o_answer.best = m_best < PROXIMITY_FAR ? m_best : __builtin_inf();
    o_answer.lower = IS_CONTACT ? 0.0 : lowerBound(m_best > m_query.stop ? PROXIMITY_LARGEST : task.key);
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
        left = m_keys[i] < left ? m_keys[i] : left;
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

  void put(const CProximityTask& i_task)
  {
    m_keys[m_countTasks] = i_task.key;
    m_slots[m_countTasks++] = i_task.slots;
  }

  bool pop(CProximityTask& o_task)
  {
    while (m_countTasks > 0)
    {
      o_task.key = m_keys[--m_countTasks];
      o_task.slots = m_slots[m_countTasks];
      if (o_task.key < m_threshold)
        return true;
      m_passedKey = o_task.key < m_passedKey ? o_task.key : m_passedKey;
    }
    return false;
  }

  bool isLeafPair(const CProximityTask& i_task) const
  {
    return (child(m_query.a, i_task.a()) & child(m_query.b, i_task.b()) & PROXIMITY_LEAF) != 0;
  }

  /// Which of the two boxes of a task gives way to its eight children: the larger one.
  struct CSplit
  {
    bool isOfA;
    std::uint32_t rank; ///< of the node
  };
  CSplit chooseSplit(const CProximityTask& i_task) const
  {
    const std::uint32_t a = child(m_query.a, i_task.a()), b = child(m_query.b, i_task.b());
    const bool isOfA =
      (b & PROXIMITY_LEAF) || (!(a & PROXIMITY_LEAF) && size(m_query.a, i_task.a()) > size(m_query.b, i_task.b()));
    return {isOfA, isOfA ? a : b};
  }

  LUM_PROXIMITY_INLINE TFloats keysOf(const CProximityTask& i_task, const CSplit& i_split) const
  {
    CPlacedBox box;
    if (i_split.isOfA)
      m_toA.place(m_query.b, i_task.b(), box);
    else
      m_toB.place(m_query.a, i_task.a(), box);
    const CProximityNode& node = (i_split.isOfA ? m_query.a : m_query.b).nodes[i_split.rank];
    return IS_CONTACT ? contactKeys(node, box) : distanceKeys(node, box);
  }

  void split(const CProximityTask& i_task)
  {
    const CSplit choice = chooseSplit(i_task);
    TFloats keys = keysOf(i_task, choice);
    const std::uint32_t other = choice.isOfA ? child(m_query.b, i_task.b()) : child(m_query.a, i_task.a());
    if (other & PROXIMITY_LEAF)
    {
      const float leafSize = choice.isOfA ? size(m_query.b, i_task.b()) : size(m_query.a, i_task.a());
      if (leafSize > PROXIMITY_LARGE_LEAF * (choice.isOfA ? size(m_query.a, i_task.a()) : size(m_query.b, i_task.b())))
        keys = keysToTriangles(choice, other, keys);
    }
    push(i_task, choice, keys);
  }

  /// The box of a few large triangles is mostly empty: raises the keys to what keeps the balls around the eight boxes
  /// from the triangles themselves.
  TFloats keysToTriangles(const CSplit& i_split, std::uint32_t i_leaf, const TFloats& i_keys)
  {
    const std::uint32_t rank = i_leaf & PROXIMITY_PACKET_MASK;
    TVectors corners[3], normal;
    if (i_split.isOfA)
    {
      placePacket(rank);
      for (int k = 0; k < 3; ++k)
        corners[k] = m_placed.corners[k];
      normal = m_placed.normal;
    }
    else
    {
      const CProximityPacket& packet = m_query.a.packets[rank];
      for (int k = 0; k < 3; ++k)
        corners[k] = {TDoubles(packet.corners[k][0]), TDoubles(packet.corners[k][1]), TDoubles(packet.corners[k][2])};
      normal = {TDoubles(packet.normal[0]), TDoubles(packet.normal[1]), TDoubles(packet.normal[2])};
    }
    const CProximityNode& node = (i_split.isOfA ? m_query.a : m_query.b).nodes[i_split.rank];
    alignas(32) float keys[8];
    i_keys.store(keys);
    for (unsigned int lanes = lanesBelow(i_keys, TFloats(m_threshold)); lanes; lanes &= lanes - 1u)
    {
      const unsigned int lane = static_cast<unsigned int>(__builtin_ctz(lanes));
      double center[3] = {node.center[0][lane], node.center[1][lane], node.center[2][lane]};
      if (!i_split.isOfA)
        m_toA.move(center);
      alignas(32) double squares[4];
      pointSquares(all(center), corners, normal).store(squares);
      double square = squares[0];
      for (int k = 1; k < 4; ++k)
        square = squares[k] < square ? squares[k] : square;
      const double x = node.half[0][lane], y = node.half[1][lane], z = node.half[2][lane];
      const double gap = __builtin_sqrt(square) - __builtin_sqrt((x * x + y * y) + z * z);
      const float key = static_cast<float>(IS_CONTACT ? gap : gap * gap);
      keys[lane] = gap > 0.0 && key > keys[lane] ? key : keys[lane];
    }
    return TFloats(keys);
  }

  /// Puts what is near enough of a split task on the stack, the nearest on top.
  void push(const CProximityTask& i_task, const CSplit& i_split, const TFloats& i_keys)
  {
    const TFloats threshold(m_threshold);
    const unsigned int lanes = lanesBelow(i_keys, threshold);
    if (!IS_CONTACT)
      m_passedKeys = smaller(m_passedKeys, pick(threshold, i_keys, TFloats(PROXIMITY_LARGEST), i_keys));
    if (lanes == 0)
      return;
    // The order is found without a branch, since nobody could guess it; what is not near enough ends up behind.
    alignas(32) float values[8];
    alignas(32) int ranks[8];
    i_keys.store(values);
    storeRanks(pick(threshold, i_keys, i_keys, TFloats(-PROXIMITY_LARGEST)), ranks);
    const std::uint64_t slot = 8 * static_cast<std::uint64_t>(i_split.rank);
    const std::uint64_t step = i_split.isOfA ? 1 : std::uint64_t(1) << 32;
    const std::uint64_t first =
      i_split.isOfA ? (i_task.slots & 0xffffffff00000000u) + slot : (i_task.slots & 0xffffffffu) + (slot << 32);
    for (unsigned int lane = 0; lane < 8; ++lane)
    {
      const unsigned int at = m_countTasks + static_cast<unsigned int>(ranks[lane]);
      m_keys[at] = values[lane];
      m_slots[at] = first + lane * step;
    }
    const unsigned int count = static_cast<unsigned int>(__builtin_popcount(lanes));
    m_countTasks += count;
  }

  void placePacket(std::uint32_t i_rank)
  {
    if (m_placed.rank != i_rank)
      m_placed.place(m_query.b.packets[i_rank], i_rank, m_toA);
  }

  void measureLeaves(const CProximityTask& i_task)
  {
    const std::uint32_t a = child(m_query.a, i_task.a());
    const std::uint32_t packetA = a & PROXIMITY_PACKET_MASK;
    const std::uint32_t packetB = child(m_query.b, i_task.b()) & PROXIMITY_PACKET_MASK;
    const unsigned int first = (a >> PROXIMITY_FIRST_SHIFT) & 3u, count = ((a >> PROXIMITY_COUNT_SHIFT) & 3u) + 1u;
    placePacket(packetB);
    // Between planes across the line of the boxes' centres.
    double line[3];
    const double length = centerLine(i_task, line);
    const TDoubles scale(length > 0.0 ? 1.0 / length : 0.0), bound(length > 0.0 ? m_bound * length : PROXIMITY_FAR);
    const CProximityPacket& packet = m_query.a.packets[packetA];
    const TVectors direction = all(line);
    TVectors corners[3];
    for (int k = 0; k < 3; ++k)
      corners[k] = {TDoubles(packet.corners[k][0]), TDoubles(packet.corners[k][1]), TDoubles(packet.corners[k][2])};
    const TDoubles farthest =
      larger(larger(dot(direction, corners[0]), dot(direction, corners[1])), dot(direction, corners[2]));
    const TDoubles nearest = smaller(smaller(dot(direction, m_placed.corners[0]), dot(direction, m_placed.corners[1])),
                                     dot(direction, m_placed.corners[2]));
    alignas(32) double reach[4];
    farthest.store(reach);
    for (unsigned int i = first; i < first + count && m_best > m_query.stop; ++i)
    {
      const TDoubles gap = nearest - TDoubles(reach[i]);
      if ((gap < bound).any())
        measureRow(packetA, i, packetB, gap * scale);
      else
        m_passedGaps = smaller(m_passedGaps, gap * scale);
    }
  }

  /// The vector from the centre of a box of a to that of one of b. @return its length.
  double centerLine(const CProximityTask& i_task, double o_line[3]) const
  {
    const CProximityNode& nodeA = m_query.a.nodes[i_task.a() >> 3];
    const CProximityNode& nodeB = m_query.b.nodes[i_task.b() >> 3];
    const unsigned int laneA = i_task.a() & 7u, laneB = i_task.b() & 7u;
    const double x = nodeB.center[0][laneB], y = nodeB.center[1][laneB], z = nodeB.center[2][laneB];
    for (int r = 0; r < 3; ++r)
    {
      const double* row = m_toA.rotation + 3 * r;
      o_line[r] = ((row[0] * x + row[1] * y) + row[2] * z) + m_toA.translation[r] - nodeA.center[r][laneA];
    }
    return __builtin_sqrt((o_line[0] * o_line[0] + o_line[1] * o_line[1]) + o_line[2] * o_line[2]);
  }

  /// @param i_gap what the triangles are known to be apart.
  void measureRow(std::uint32_t i_packetA, unsigned int i_lane, std::uint32_t i_packetB, const TDoubles& i_gap)
  {
    const TDoubles bound(m_bound);
    const CProximityPacket& packet = m_query.a.packets[i_packetA];
    CProximityRow row;
    row.load(packet, i_lane);
    CProximityHeights onRow, onLanes;
    onRow.measure(row.normal, row.corners[0], m_placed.corners);
    onLanes.measure(m_placed.normal, m_placed.corners[0], row.corners);
    const TDoubles gap = larger(larger(onRow.gap, onLanes.gap), i_gap);
    const TMask isNear = gap < bound;
    m_passedGaps = smaller(m_passedGaps, select(isNear, TDoubles(PROXIMITY_FAR), gap));
    if (!isNear.any())
      return;
    const unsigned int doubtful = (isNear & (gap < TDoubles(m_sureGap))).lanes();
    if (doubtful && m_trials < PROXIMITY_TRIALS)
    {
      ++m_trials;
      if (isPierced(doubtful, packet, i_lane, i_packetA, i_packetB))
        return;
    }
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

  /// Looks for a contact beyond doubt among some of the pairs of a row.
  bool isPierced(unsigned int i_lanes, const CProximityPacket& i_packet, unsigned int i_lane, std::uint32_t i_packetA,
                 std::uint32_t i_packetB)
  {
    CPairOfCorners corners(i_packet, i_lane, m_placed);
    for (unsigned int l = 0; l < 4; ++l)
    {
      if (!(i_lanes >> l & 1u))
        continue;
      corners.take(l);
      if (!m_query.isPierced(corners.row, corners.lane))
        continue;
      improve(0.0, 4 * i_packetA + i_lane, 4 * i_packetB + l);
      return true;
    }
    return false;
  }

  /// Pairs of which nothing was found to keep them apart: they touch, or nearly so.
  void settle(const TMask& i_isApart, const CProximityPacket& i_packet, unsigned int i_lane, double io_squares[4]) const
  {
    const unsigned int apart = i_isApart.lanes();
    CPairOfCorners corners(i_packet, i_lane, m_placed);
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
  CPlacedPacket m_placed;
  unsigned int m_countTasks = 0;
  unsigned int m_trials = 0;          ///< rows of which a contact was looked for first
  float m_keys[PROXIMITY_STACK_SIZE]; ///< of the tasks that wait
  std::uint64_t m_slots[PROXIMITY_STACK_SIZE];
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
  CPlacedBox box = {};
  for (int k = 0; k < 3; ++k)
  {
    box.center[k] = static_cast<float>(k == 0 ? i_from[0] + 0.5 * i_length : i_from[k]);
    box.axes[k][k] = 1.0f;
  }
  box.half[0] = static_cast<float>(0.5 * i_length);
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
      const std::uint32_t child = node.child[__builtin_ctz(lanes)];
      if (child & PROXIMITY_LEAF)
        i_visit(io_data, child);
      else
        stack[count++] = child;
    }
  }
}
} // namespace
