// No include guard: a part of lumProximitySearch.h.

#define LUM_PROXIMITY_INLINE __attribute__((always_inline)) inline

namespace
{
/// Squares are not divided by less.
constexpr float PROXIMITY_SMALLEST = 1e-37f;

/// Vectors, lane by lane.
template <class T>
struct TVectorsOf
{
  T x, y, z;
};
using TVectors = TVectorsOf<TDoubles>;
using TWideVectors = TVectorsOf<TFloats>;

template <class T>
inline TVectorsOf<T> operator+(const TVectorsOf<T>& a, const TVectorsOf<T>& b)
{
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
template <class T>
inline TVectorsOf<T> operator-(const TVectorsOf<T>& a, const TVectorsOf<T>& b)
{
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
template <class T>
inline TVectorsOf<T> operator*(const TVectorsOf<T>& a, const T& f)
{
  return {a.x * f, a.y * f, a.z * f};
}
template <class T>
inline T dot(const TVectorsOf<T>& a, const TVectorsOf<T>& b)
{
  return (a.x * b.x + a.y * b.y) + a.z * b.z;
}
template <class T>
inline TVectorsOf<T> cross(const TVectorsOf<T>& a, const TVectorsOf<T>& b)
{
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
/// Between 0 and 1.
template <class T>
inline T toUnit(const T& v)
{
  return smaller(larger(v, T(0.0f)), T(1.0f));
}
LUM_PROXIMITY_INLINE TWideVectors spreadVector(const TQuad& a)
{
  return {spread<0>(a), spread<1>(a), spread<2>(a)};
}

/// A box in the frame of the other model.
struct CPlacedBox
{
  TQuad center;
  TQuad axes[3];
  const CProximityBox& box; ///< where the halves are
};

/// The motion from one model's frame to the other's.
struct CProximityMove
{
  const double* rotation; ///< nine numbers, by rows or by columns
  int row;                ///< from one row to the next
  int column;
  double translation[3];
  TQuad columns[3];
  TQuad shift;

  LUM_PROXIMITY_INLINE void set(const TQuad& i_x, const TQuad& i_y, const TQuad& i_z)
  {
    columns[0] = i_x;
    columns[1] = i_y;
    columns[2] = i_z;
    shift =
      TQuad(static_cast<float>(translation[0]), static_cast<float>(translation[1]), static_cast<float>(translation[2]));
  }

  double entry(int i_row, int i_column) const { return rotation[i_row * row + i_column * column]; }
  LUM_PROXIMITY_INLINE TQuad turned(const float i_vector[3]) const
  {
    return (columns[0] * TQuad(i_vector[0]) + columns[1] * TQuad(i_vector[1])) + columns[2] * TQuad(i_vector[2]);
  }
  LUM_PROXIMITY_INLINE TQuad moved(const float i_point[3]) const { return turned(i_point) + shift; }
  LUM_PROXIMITY_INLINE CPlacedBox placed(const CProximityBox& i_box) const
  {
    return {moved(i_box.center), {turned(i_box.axes[0]), turned(i_box.axes[1]), turned(i_box.axes[2])}, i_box};
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
    const TWideVectors centers = {TFloats(i_node.center[0]), TFloats(i_node.center[1]), TFloats(i_node.center[2])};
    const TWideVectors d = centers - spreadVector(i_box.center);
    square = dot(d, d);
    TWideVectors axes[3];
    TFloats half[3], reach[3];
    for (int i = 0; i < 3; ++i)
    {
      axes[i] = spreadVector(i_box.axes[i]);
      boxOffset[i] = magnitude(dot(d, axes[i]));
      reach[i] = half[i] = TFloats(i_box.box.axes[i][3]);
    }
    for (int j = 0; j < 3; ++j)
    {
      const TWideVectors axis = {TFloats(i_node.axes[j][0]), TFloats(i_node.axes[j][1]), TFloats(i_node.axes[j][2])};
      const TFloats childHalf(i_node.half[j]);
      childOffset[j] = magnitude(dot(axis, d));
      TFloats shares[3];
      for (int i = 0; i < 3; ++i)
      {
        const TFloats cosine = magnitude(dot(axis, axes[i]));
        shares[i] = cosine * half[i];
        reach[i] = reach[i] + cosine * childHalf;
      }
      childGap[j] = (childOffset[j] - childHalf) - ((shares[0] + shares[1]) + shares[2]);
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
    along = along - (gaps.childOffset[k] * TFloats(i_node.half[k]) + gaps.boxOffset[k] * TFloats(i_box.box.axes[k][3]));
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

/// Whether one of eight balls overlaps another one.
/// @param i_radius of that, less what rounding may take of the distances.
LUM_PROXIMITY_INLINE bool doOverlap(const CProximityBalls& i_balls, const TWideVectors& i_center,
                                    const TFloats& i_radius)
{
  const TWideVectors centers = {TFloats(i_balls.center[0]), TFloats(i_balls.center[1]), TFloats(i_balls.center[2])};
  const TWideVectors d = centers - i_center;
  const TFloats reach = larger(TFloats(i_balls.radius) + i_radius, TFloats(0.0f));
  return lanesBelow(dot(d, d), reach * reach) != 0;
}

/// Eight points along one of the directions that a placed packet keeps of a triangle, from its offset.
LUM_PROXIMITY_INLINE TFloats wideOffsets(const TWideVectors& i_points, const float i_plane[4][4], unsigned int i_lane)
{
  const TWideVectors direction = {TFloats(i_plane[0][i_lane]), TFloats(i_plane[1][i_lane]),
                                  TFloats(i_plane[2][i_lane])};
  return dot(direction, i_points) - TFloats(i_plane[3][i_lane]);
}

/// The squares of lower bounds of the distances of eight points from a triangle of a placed packet: of the height, and,
/// beside the face, of the way in its plane to the farthest of the planes that stand upright on the edges.
LUM_PROXIMITY_INLINE TFloats widePlaneSquares(const TWideVectors& i_points, const float i_planes[4][4][4],
                                              unsigned int i_lane)
{
  TFloats beside(0.0f);
  for (int k = 1; k < 4; ++k)
    beside = larger(beside, wideOffsets(i_points, i_planes[k], i_lane));
  const TFloats height = wideOffsets(i_points, i_planes[0], i_lane);
  return height * height + beside * beside;
}

/// The same, but with the way to the nearest of the edges: the distances themselves.
/// @param i_middles across the edges in their middles.
/// @param i_halves of the edges' lengths.
LUM_PROXIMITY_INLINE TFloats wideTriangleSquares(const TWideVectors& i_points, const float i_planes[4][4][4],
                                                 const float i_middles[3][4][4], const float i_halves[3][4],
                                                 unsigned int i_lane)
{
  const TFloats zero(0.0f), height = wideOffsets(i_points, i_planes[0], i_lane);
  TFloats farthest(-PROXIMITY_LARGEST), nearest(PROXIMITY_LARGEST);
  for (int k = 0; k < 3; ++k)
  {
    const TFloats beside = wideOffsets(i_points, i_planes[1 + k], i_lane);
    const TFloats along = magnitude(wideOffsets(i_points, i_middles[k], i_lane));
    const TFloats beyond = larger(along - TFloats(i_halves[k][i_lane]), zero);
    farthest = larger(farthest, beside);
    nearest = smaller(nearest, beside * beside + beyond * beyond);
  }
  return height * height + pick(farthest, zero, nearest, zero);
}
} // namespace
