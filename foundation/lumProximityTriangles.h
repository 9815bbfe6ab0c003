// No include guard: a part of lumProximitySearch.h.

namespace
{
inline TVectors all(const double* v)
{
  return {TDoubles(v[0]), TDoubles(v[1]), TDoubles(v[2])};
}
inline TVectors select(const TMask& m, const TVectors& a, const TVectors& b)
{
  return {select(m, a.x, b.x), select(m, a.y, b.y), select(m, a.z, b.z)};
}
constexpr double PROXIMITY_FAR = 1e300;

/// 0 where the number is 0.
inline TDoubles inverse(const TDoubles& v)
{
  return select(v > TDoubles(0.0), TDoubles(1.0) / v, TDoubles(0.0));
}

/// A packet in the frame of the other tree.
struct CPlacedPacket
{
  std::uint32_t rank = PROXIMITY_NONE;
  bool hasEdges = false;
  bool hasInverses = false;
  bool hasPlanes = false;
  bool hasMiddles = false;
  TVectors corners[3];
  TVectors normal;
  TVectors edges[3];
  TDoubles squares[3];  ///< of the edges' lengths
  TDoubles longest;     ///< of the squares
  TVectors across;      ///< normals that are not of unit length
  TDoubles inverses[3]; ///< of these squares
  /// Direction and offset, triangle by triangle, of the face's plane and of those upright on the edges, outwards.
  float planes[4][4][4];
  float middles[3][4][4]; ///< of the planes across the edges in their middles
  float halves[3][4];     ///< of the edges' lengths

  void place(const CProximityPacket& i_packet, std::uint32_t i_rank, const CProximityMove& i_move)
  {
    rank = i_rank;
    hasEdges = hasInverses = hasPlanes = hasMiddles = false;
    for (int k = 0; k < 3; ++k)
    {
      const TDoubles x(i_packet.corners[k][0]), y(i_packet.corners[k][1]), z(i_packet.corners[k][2]);
      corners[k] = turned(i_move, x, y, z) + all(i_move.translation);
    }
    normal = turned(i_move, TDoubles(i_packet.normal[0]), TDoubles(i_packet.normal[1]), TDoubles(i_packet.normal[2]));
  }

  void makeEdges()
  {
    hasEdges = true;
    for (int k = 0; k < 3; ++k)
    {
      edges[k] = corners[(k + 1) % 3] - corners[k];
      squares[k] = dot(edges[k], edges[k]);
    }
    across = cross(edges[0], edges[1]);
    longest = larger(larger(squares[0], squares[1]), squares[2]);
  }
  void makeInverses()
  {
    hasInverses = true;
    for (int k = 0; k < 3; ++k)
      inverses[k] = inverse(squares[k]);
  }
  /// @param i_least edges that are shorter have no plane.
  void makePlanes(double i_least)
  {
    if (!hasEdges)
      makeEdges();
    hasPlanes = true;
    writePlane(normal, corners[0], planes[0]);
    for (int k = 0; k < 3; ++k)
      writePlane(cross(edges[k], normal) * shareOf(k, i_least), corners[k], planes[k + 1]);
  }
  void makeMiddles(double i_least)
  {
    if (!hasEdges)
      makeEdges();
    hasMiddles = true;
    const TDoubles half(0.5);
    for (int k = 0; k < 3; ++k)
    {
      writePlane(edges[k] * shareOf(k, i_least), corners[k] + edges[k] * half, middles[k]);
      writeNumbers(squareRoot(squares[k]) * half, halves[k]);
    }
  }

private:
  TDoubles shareOf(int i_edge, double i_least) const
  {
    const TDoubles& square = squares[i_edge];
    return select(square > TDoubles(i_least * i_least), TDoubles(1.0) / squareRoot(square), TDoubles(0.0));
  }
  static TVectors turned(const CProximityMove& i_move, const TDoubles& x, const TDoubles& y, const TDoubles& z)
  {
    const auto row = [&](int r) {
      return (x * TDoubles(i_move.entry(r, 0)) + y * TDoubles(i_move.entry(r, 1))) + z * TDoubles(i_move.entry(r, 2));
    };
    return {row(0), row(1), row(2)};
  }
  static void writePlane(const TVectors& i_direction, const TVectors& i_point, float o_plane[4][4])
  {
    writeNumbers(i_direction.x, o_plane[0]);
    writeNumbers(i_direction.y, o_plane[1]);
    writeNumbers(i_direction.z, o_plane[2]);
    writeNumbers(dot(i_direction, i_point), o_plane[3]);
  }
  static void writeNumbers(const TDoubles& i_numbers, float o_numbers[4])
  {
    alignas(32) double lanes[4];
    i_numbers.store(lanes);
    for (int l = 0; l < 4; ++l)
      o_numbers[l] = static_cast<float>(lanes[l]);
  }
};

/// A triangle, against the four of a packet.
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

  /// Whether an edge surely runs from one side to the other.
  TMask isCrossed(int i_edge, double i_doubt) const
  {
    const TDoubles from = values[i_edge], to = values[(i_edge + 1) % 3];
    return (smaller(from, to) < TDoubles(-i_doubt)) & (larger(from, to) > TDoubles(i_doubt));
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

/// What the volumes of pairs of edges tell about a row: which of the four triangles its own surely pierces, or they it,
/// and which a plane along two edges surely keeps away.
/// @tparam IS_CONTACT the piercing is asked for. Otherwise the planes are measured more sharply.
template <bool IS_CONTACT>
struct CProximityVolumes
{
  TMask arePierced;
  TMask areApart;

  /// @param i_bound a plane counts if it keeps them apart by so much.
  /// @param i_doubt by so much, times the square of the longest edge, volumes may be wrong.
  /// @param i_height by so much heights may be.
  CProximityVolumes(const CProximityRow& i_row, const CProximityHeights& i_onRow, const CPlacedPacket& i_placed,
                    const CProximityHeights& i_onLanes, double i_bound, double i_doubt, double i_height)
  {
    const TDoubles zero(0.0), square(i_bound * i_bound);
    const TVectors edges[3] = {i_row.corners[1] - i_row.corners[0], i_row.corners[2] - i_row.corners[1],
                               i_row.corners[0] - i_row.corners[2]};
    const TVectors across = cross(edges[0], edges[1]);
    const TDoubles squares[3] = {dot(edges[0], edges[0]), dot(edges[1], edges[1]), dot(edges[2], edges[2])};
    const TDoubles longest = larger(larger(squares[0], squares[1]), larger(squares[2], i_placed.longest));
    const TDoubles doubt = longest * TDoubles(i_doubt), negative = zero - doubt;
    // How far the third corners reach beyond the edges.
    TDoubles rowLow[3], rowHigh[3];
    for (int j = 0; j < 3; ++j)
    {
      const TDoubles third = zero - dot(i_placed.edges[j], across);
      rowLow[j] = smaller(third, zero);
      rowHigh[j] = larger(third, zero);
    }
    TDoubles lows[3], highs[3], farthest(-PROXIMITY_FAR);
    arePierced = areApart = zero > zero;
    for (int i = 0; i < 3; ++i)
    {
      const TDoubles third = dot(edges[i], i_placed.across);
      const TDoubles low = smaller(third, zero), high = larger(third, zero);
      TDoubles volumes[3];
      for (int j = 0; j < 3; ++j)
      {
        const TVectors offset = i_placed.corners[j] - i_row.corners[i], normal = cross(edges[i], i_placed.edges[j]);
        volumes[j] = dot(normal, offset);
        const TDoubles apart = larger((volumes[j] + low) - rowHigh[j], (rowLow[j] - volumes[j]) - high);
        if (!IS_CONTACT)
        {
          const TDoubles sure = larger(apart - doubt, zero);
          areApart = areApart | (sure * sure > square * dot(normal, normal));
          continue;
        }
        farthest = larger(farthest, apart);
        lows[j] = i == 0 ? volumes[j] : smaller(lows[j], volumes[j]);
        highs[j] = i == 0 ? volumes[j] : larger(highs[j], volumes[j]);
      }
      if (!IS_CONTACT)
        continue;
      const TDoubles lowest = smaller(smaller(volumes[0], volumes[1]), volumes[2]);
      const TDoubles highest = larger(larger(volumes[0], volumes[1]), volumes[2]);
      arePierced = arePierced | (((lowest > doubt) | (highest < negative)) & i_onLanes.isCrossed(i, i_height));
    }
    if (!IS_CONTACT)
      return;
    for (int j = 0; j < 3; ++j)
      arePierced = arePierced | (((lows[j] > doubt) | (highs[j] < negative)) & i_onRow.isCrossed(j, i_height));
    areApart = farthest > longest * TDoubles(i_bound) + doubt;
  }
};
} // namespace
