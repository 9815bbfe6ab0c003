#include "foundation/lumBroadPhase.h"

#include "foundation/lumCollisionModel.h"
#include "foundation/lumLeafGeometry.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <numeric>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace
{
/// To a node, across each axis.
constexpr int SLABS = 64;
constexpr double UNBOUNDED = std::numeric_limits<double>::infinity();
constexpr float FAR = std::numeric_limits<float>::infinity();
/// Of a shape's own coordinates, for turning them in single precision.
constexpr double TURN_ROUNDING = 2e-6;
/// Of its place, which is added in double precision and rounded, as is a box made larger.
constexpr double PLACE_ROUNDING = 2e-7;
/// For the rounding of a gap, its square, the root and what is taken off it, in single precision.
constexpr float GAP_ROUNDING = 1.0f - 1e-6f;
/// A distance within which nothing was looked at.
constexpr float NOWHERE = -1.0f;
/// For what is nowhere.
constexpr std::size_t NOT_LISTED = ~std::size_t(0);
/// The age of what was not placed yet.
constexpr std::uint64_t NEVER = ~std::uint64_t(0);
/// As many entries are sorted by counting.
constexpr std::size_t ENOUGH_FOR_COUNTING = 128;
/// As many items are measured one by one.
constexpr std::size_t FEW = 4;
/// To an item; and to all trees.
constexpr double CELLS_PER_ITEM = 48.0;
constexpr std::size_t MOST_CELLS = 1u << 15;
/// Each try makes the cells as much smaller.
constexpr double SMALLER_CELLS = 0.9;
/// The rank of a cell has so many digits in single precision that its rounding is small beside it.
constexpr double MOST_CELLS_ALONG = 256.0;
/// So many cells away, items are in no list any more.
constexpr double CELLS_AWAY = 3.0;
/// For each cell. Where items lie so close, or overlap so much, that lists are longer, they are of no use.
constexpr double MOST_LISTED = 64.0;
/// Of the spacing of the items, how far to look first beyond the nearest, and at least.
constexpr float FIRST_LOOK = 0.75f;
constexpr float LEAST_LOOK = 0.1f;
/// Of a cell, what is added to its sides, since the rank of a cell is found by rounding.
constexpr double CELL_ROUNDING = 1e-4;
/// Coordinates beyond this have no squares in single precision.
constexpr double LARGEST_COORDINATE = 1e18;

/// Four numbers at once, on any machine; each operation is rounded by itself, so all machines give the same.
typedef float TLanes __attribute__((vector_size(16)));
typedef double TDoubles __attribute__((vector_size(16)));
typedef int TRanks __attribute__((vector_size(16)));
typedef std::uint64_t TWords __attribute__((vector_size(16)));

TWords wordsAt(const std::uint64_t* i_words)
{
  TWords words;
  std::memcpy(&words, i_words, sizeof words);
  return words;
}

TLanes lanesAt(const float* i_values)
{
  TLanes lanes;
  std::memcpy(&lanes, i_values, sizeof lanes);
  return lanes;
}

TLanes lanesOf(float i_value)
{
  return TLanes{i_value, i_value, i_value, i_value};
}

/// The second where one is no number.
TLanes largerLanes(TLanes i_a, TLanes i_b)
{
#ifdef __SSE2__
  return _mm_max_ps(i_a, i_b);
#else
  return i_a > i_b ? i_a : i_b;
#endif
}

TLanes smallerLanes(TLanes i_a, TLanes i_b)
{
#ifdef __SSE2__
  return _mm_min_ps(i_a, i_b);
#else
  return i_a < i_b ? i_a : i_b;
#endif
}

TLanes rootsOf(TLanes i_squares)
{
#ifdef __SSE2__
  return _mm_sqrt_ps(i_squares);
#else
  return TLanes{std::sqrt(i_squares[0]), std::sqrt(i_squares[1]), std::sqrt(i_squares[2]), std::sqrt(i_squares[3])};
#endif
}

TLanes absoluteLanes(TLanes i_lanes)
{
  const TRanks bits = reinterpret_cast<TRanks>(i_lanes) & 0x7fffffff;
  return reinterpret_cast<TLanes>(bits);
}

TDoubles doublesAt(const double* i_values)
{
  TDoubles doubles;
  std::memcpy(&doubles, i_values, sizeof doubles);
  return doubles;
}

/// Four doubles, rounded.
TLanes rounded(TDoubles i_first, TDoubles i_last)
{
#ifdef __SSE2__
  return _mm_movelh_ps(_mm_cvtpd_ps(i_first), _mm_cvtpd_ps(i_last));
#else
  return TLanes{float(i_first[0]), float(i_first[1]), float(i_last[0]), float(i_last[1])};
#endif
}

bool areFinite(TLanes i_lanes)
{
  const TLanes zeros = i_lanes - i_lanes;
#ifdef __SSE2__
  return _mm_movemask_ps(_mm_cmpunord_ps(zeros, zeros)) == 0;
#else
  return zeros[0] + zeros[1] + zeros[2] + zeros[3] == 0.0f;
#endif
}

/// Three doubles and a fourth, rounded.
TLanes columnAt(const double* i_column)
{
#ifdef __SSE2__
  return _mm_movelh_ps(_mm_cvtpd_ps(_mm_loadu_pd(i_column)), _mm_cvtpd_ps(_mm_loadu_pd(i_column + 2)));
#else
  return TLanes{float(i_column[0]), float(i_column[1]), float(i_column[2]), float(i_column[3])};
#endif
}

/// Adds a column of doubles, of which the sum has the precision until it is rounded.
TLanes movedBy(const double* i_column, TLanes i_lanes)
{
#ifdef __SSE2__
  const __m128d first = _mm_add_pd(_mm_loadu_pd(i_column), _mm_cvtps_pd(i_lanes));
  const __m128d last = _mm_add_pd(_mm_loadu_pd(i_column + 2), _mm_cvtps_pd(_mm_movehl_ps(i_lanes, i_lanes)));
  return _mm_movelh_ps(_mm_cvtpd_ps(first), _mm_cvtpd_ps(last));
#else
  return TLanes{float(i_column[0] + i_lanes[0]), float(i_column[1] + i_lanes[1]), float(i_column[2] + i_lanes[2]),
                float(i_column[3] + i_lanes[3])};
#endif
}

void store(float* o_numbers, TLanes i_lanes)
{
  std::memcpy(o_numbers, &i_lanes, sizeof i_lanes);
}

/// An entry of what waits: the bits of a float, changed so that they have its order, above a rank.
std::uint64_t entryOf(float i_lower, std::size_t i_rank)
{
  std::uint32_t bits = 0;
  std::memcpy(&bits, &i_lower, sizeof bits);
  bits = bits & 0x80000000u ? ~bits : bits | 0x80000000u;
  return static_cast<std::uint64_t>(bits) << 32 | i_rank;
}

float lowerOf(std::uint64_t i_entry)
{
  std::uint32_t bits = static_cast<std::uint32_t>(i_entry >> 32);
  bits = bits & 0x80000000u ? bits & 0x7fffffffu : ~bits;
  float lower = 0.0f;
  std::memcpy(&lower, &bits, sizeof lower);
  return lower;
}

std::uint32_t rankOf(std::uint64_t i_entry)
{
  return static_cast<std::uint32_t>(i_entry);
}

std::uint64_t foundOf(unsigned int i_shape, unsigned int i_item)
{
  return static_cast<std::uint64_t>(i_shape) << 32 | i_item;
}

unsigned int shapeOf(std::uint64_t i_found)
{
  return static_cast<unsigned int>(i_found >> 32);
}

unsigned int itemOf(std::uint64_t i_found)
{
  return static_cast<unsigned int>(i_found);
}

/// A float that is not above.
float floatBelow(double i_value)
{
  const float value = static_cast<float>(i_value);
  return value > i_value ? std::nextafter(value, -FAR) : value;
}

using TNearestOnTop = std::greater<std::uint64_t>;
} // namespace

// The scene.

unsigned int ClumBroadPhase::addShape(const ClumCollisionModel& i_model, const ClumLeafGeometry& i_leaf,
                                      unsigned int i_body, const ClumMat4& i_frame)
{
  ClumPoint3 lowest, highest;
  i_leaf.getBoundingBox(lowest, highest);
  CFrame frame;
  double magnitude = 2.0 * i_model.radius();
  for (unsigned int k = 0; k < 3; ++k)
  {
    const double boxCenter = 0.5 * (lowest[k] + highest[k]);
    frame.halfSize[k] = static_cast<float>(0.5 * (highest[k] - lowest[k]));
    frame.boxCenter[k] = static_cast<float>(boxCenter);
    magnitude += std::fabs(boxCenter);
  }
  frame.frame = i_frame;
  frame.isFramed = i_frame != ClumMat4::IDENTITY;
  const ClumPoint3 center = i_frame * i_model.center();
  for (unsigned int k = 0; k < 3; ++k)
    frame.center[k] = center[k];
  frame.center[3] = 0.0;
  frame.radius = static_cast<float>(i_model.radius());
  frame.reach = static_cast<float>(i_model.radius() + TURN_ROUNDING * magnitude);
  m_frames.push_back(frame);
  m_shapes.push_back({{}, NEVER, NEVER, NEVER, i_body, NO_TREE, 0});
  return countShapes() - 1;
}

unsigned int ClumBroadPhase::addPair(unsigned int i_first, unsigned int i_second)
{
  m_pairs.push_back({i_first, i_second});
  if (bodyOf(i_first) != NO_BODY && bodyOf(i_second) != NO_BODY)
    m_movingPairs.push_back(countPairs() - 1);
  return countPairs() - 1;
}

void ClumBroadPhase::build()
{
  // The pairs of each moving shape with what stands still, as (still shape, pair).
  std::vector<std::vector<std::pair<unsigned int, unsigned int>>> rows(m_shapes.size());
  for (unsigned int i = 0; i < m_pairs.size(); ++i)
  {
    const bool isFirstStill = bodyOf(m_pairs[i].first) == NO_BODY;
    const unsigned int still = isFirstStill ? m_pairs[i].first : m_pairs[i].second;
    const unsigned int moving = isFirstStill ? m_pairs[i].second : m_pairs[i].first;
    if (bodyOf(still) == NO_BODY && bodyOf(moving) != NO_BODY)
      rows[moving].emplace_back(still, i);
  }
  for (unsigned int shape = 0; shape < countShapes(); ++shape)
    if (bodyOf(shape) == NO_BODY)
      volumeOf(shape);
  m_followers.clear();
  m_cells.clear();
  m_listed.clear();
  m_trees.clear();
  m_nodes.clear();
  m_rows.clear();
  m_items.clear();
  m_rowPairs.clear();
  std::map<std::vector<unsigned int>, unsigned int> known;
  for (unsigned int moving = 0; moving < countShapes(); ++moving)
  {
    std::sort(rows[moving].begin(), rows[moving].end());
    std::vector<unsigned int> stills;
    for (const auto& [still, pair] : rows[moving])
      stills.push_back(still);
    if (stills.empty())
      continue;
    const auto found = known.find(stills);
    CShape& shape = m_shapes[moving];
    shape.tree = found != known.end() ? found->second : known[stills] = treeOver(stills);
    shape.firstPair = static_cast<unsigned int>(m_rowPairs.size()) - m_trees[shape.tree].firstItem;
    for (const unsigned int rank : m_trees[shape.tree].ranks)
      m_rowPairs.push_back(rows[moving][rank].second);
    const double* const center = m_frames[moving].center;
    m_followers.push_back({{center[0], center[0], center[1], center[1], center[2], center[2]},
                           moving,
                           shape.body,
                           shape.tree,
                           m_frames[moving].reach});
  }
}

unsigned int ClumBroadPhase::treeOver(const std::vector<unsigned int>& i_shapes)
{
  CTree tree;
  tree.shapes = i_shapes;
  tree.ranks.resize(i_shapes.size());
  std::iota(tree.ranks.begin(), tree.ranks.end(), 0u);
  tree.firstItem = static_cast<unsigned int>(m_items.size());
  const CNode root = makeNode(tree, 0, tree.ranks.size());
  tree.root = static_cast<unsigned int>(m_nodes.size());
  m_nodes.push_back(root);
  for (const unsigned int rank : tree.ranks)
    m_items.push_back(still(tree, rank));

  // Half the side of the cells, if as many filled a cube over it all.
  float longest = 0.0f;
  for (unsigned int k = 0; k < 3; ++k)
    longest = std::max(longest, root.scale[k] > 0.0f ? SLABS / root.scale[k] : 0.0f);
  unsigned int side = 1;
  while (std::size_t(side) * side * side < i_shapes.size())
    ++side;
  tree.spacing = longest > 0.0f ? 0.5f * longest / static_cast<float>(side) : FAR;
  makeCells(tree);
  m_trees.push_back(tree);
  return static_cast<unsigned int>(m_trees.size()) - 1;
}

const ClumBroadPhase::CVolume& ClumBroadPhase::still(const CTree& i_tree, unsigned int i_rank) const
{
  return m_shapes[i_tree.shapes[i_rank]].volume;
}

ClumBroadPhase::CVolume ClumBroadPhase::boxAround(const CTree& i_tree, std::size_t i_begin, std::size_t i_end) const
{
  CVolume volume = still(i_tree, i_tree.ranks[i_begin]);
  for (std::size_t i = i_begin + 1; i < i_end; ++i)
  {
    const CVolume& other = still(i_tree, i_tree.ranks[i]);
    for (unsigned int k = 0; k < 3; ++k)
    {
      volume.low[k] = std::min(volume.low[k], other.low[k]);
      volume.high[k] = std::max(volume.high[k], other.high[k]);
    }
  }
  return volume;
}

/// Cuts the space that the items take up into cubes. @return false if they would be of no use.
bool ClumBroadPhase::cutIntoCells(const CTree& i_tree, CCells& o_cells) const
{
  const CVolume bounds = boxAround(i_tree, 0, i_tree.ranks.size());
  double extent[3], longest = 0.0, away = 0.0;
  for (unsigned int k = 0; k < 3; ++k)
  {
    extent[k] = double(bounds.high[k]) - bounds.low[k];
    longest = std::max(longest, extent[k]);
    away += std::max(std::fabs(bounds.low[k]), std::fabs(bounds.high[k]));
  }
  if (i_tree.ranks.size() <= FEW || !(longest > 0.0) || !(away < LARGEST_COORDINATE))
    return false;
  const auto countAlong = [&](unsigned int i_axis, double i_size) { return std::floor(extent[i_axis] / i_size) + 1.0; };
  const auto count = [&](double i_size)
  { return countAlong(0, i_size) * countAlong(1, i_size) * countAlong(2, i_size); };
  const double left = static_cast<double>(MOST_CELLS - m_cells.size());
  const double most = std::min(left, CELLS_PER_ITEM * static_cast<double>(i_tree.ranks.size()));
  double size = longest;
  while (count(SMALLER_CELLS * size) <= most && longest < MOST_CELLS_ALONG * SMALLER_CELLS * size)
    size *= SMALLER_CELLS;
  for (unsigned int k = 0; k < 3; ++k)
  {
    o_cells.origin[k] = bounds.low[k];
    o_cells.scale[k] = static_cast<float>(1.0 / size);
    o_cells.counts[k] = static_cast<int>(countAlong(k, size));
    o_cells.last[k] = static_cast<float>(o_cells.counts[k] - 1);
  }
  o_cells.farthest = static_cast<float>(CELLS_AWAY * size);
  o_cells.rounding = static_cast<float>(PLACE_ROUNDING * away);
  o_cells.first = m_cells.size();
  double countListed = 0.0;
  for (const unsigned int rank : i_tree.ranks)
  {
    double near = 1.0;
    for (unsigned int k = 0; k < 3; ++k)
      near *= std::min<double>(o_cells.counts[k],
                               (still(i_tree, rank).high[k] - still(i_tree, rank).low[k]) / size + 2.0 * CELLS_AWAY);
    countListed += near;
  }
  return count(size) <= left && countListed <= MOST_LISTED * count(size);
}

/// Makes the cells of a tree, each with a list of the items that are near.
void ClumBroadPhase::makeCells(CTree& io_tree)
{
  CCells cells = {};
  const bool areOfUse = cutIntoCells(io_tree, cells);
  io_tree.cells = cells;
  if (!areOfUse)
  {
    io_tree.cells.farthest = NOWHERE;
    return;
  }
  std::vector<CEntered> entered;
  for (unsigned int item = 0; item < io_tree.ranks.size(); ++item)
    enterNear(cells, io_tree.firstItem + item, entered);
  sortLists(cells, entered);
}

/// Enters an item for each of the cells that are near it.
void ClumBroadPhase::enterNear(const CCells& i_cells, unsigned int i_item, std::vector<CEntered>& io_entered) const
{
  const CVolume& item = m_items[i_item];
  // The squares of the gaps to the box and to the centre of the ball, by axis and cell.
  std::vector<double> boxGaps[3], centerGaps[3];
  unsigned int from[3];
  for (unsigned int k = 0; k < 3; ++k)
  {
    const double size = 1.0 / i_cells.scale[k];
    const auto rankOfCell = [&](double i_at)
    {
      const double rank = std::floor((i_at - i_cells.origin[k]) / size);
      return static_cast<unsigned int>(std::min(std::max(rank, 0.0), double(i_cells.last[k])));
    };
    from[k] = rankOfCell(item.low[k] - i_cells.farthest - size);
    const unsigned int to = rankOfCell(item.high[k] + i_cells.farthest + size);
    for (unsigned int cell = from[k]; cell <= to; ++cell)
    {
      const double low = i_cells.origin[k] + (cell - CELL_ROUNDING) * size;
      const double high = i_cells.origin[k] + (cell + 1.0 + CELL_ROUNDING) * size;
      const double boxGap = std::max({0.0, item.low[k] - high, low - item.high[k]});
      const double centerGap = std::max({0.0, item.ball[k] - high, low - item.ball[k]});
      boxGaps[k].push_back(boxGap * boxGap);
      centerGaps[k].push_back(centerGap * centerGap);
    }
  }
  // What is beyond needs no more than squares.
  const double farthest = i_cells.farthest * double(REACH_ROUNDING) + 2.0 * i_cells.rounding;
  const double farthestBall = (farthest + item.ball[3]) * (farthest + item.ball[3]);
  for (unsigned int z = 0; z < boxGaps[2].size(); ++z)
    for (unsigned int y = 0; y < boxGaps[1].size(); ++y)
    {
      const double boxGap = boxGaps[2][z] + boxGaps[1][y], centerGap = centerGaps[2][z] + centerGaps[1][y];
      const unsigned int row = (from[2] + z) * i_cells.counts[1] + from[1] + y;
      for (unsigned int x = 0; x < boxGaps[0].size(); ++x)
      {
        const double box = boxGap + boxGaps[0][x], center = centerGap + centerGaps[0][x];
        if (box > farthest * farthest || center > farthestBall)
          continue;
        const double distance = std::max(std::sqrt(box), std::sqrt(center) - item.ball[3]);
        const float lower = static_cast<float>((distance - i_cells.rounding) * GAP_ROUNDING);
        if (lower < i_cells.farthest)
          io_entered.push_back({row * i_cells.counts[0] + from[0] + x, {lower, i_item}});
      }
    }
}

/// Deals what was entered out to the lists of the cells, each in the order of its bounds.
void ClumBroadPhase::sortLists(const CCells& i_cells, const std::vector<CEntered>& i_entered)
{
  // They are read two at a time.
  const CListed end = {i_cells.farthest, i_entered.empty() ? 0 : i_entered.front().listed.item};
  constexpr std::size_t ENDS = 2;
  const std::size_t count = static_cast<std::size_t>(i_cells.counts[0]) * i_cells.counts[1] * i_cells.counts[2];
  std::vector<std::size_t> places(count + 1, ENDS);
  for (const CEntered& entered : i_entered)
    ++places[entered.cell];
  std::size_t place = m_listed.size();
  for (std::size_t& next : places)
  {
    const std::size_t length = next;
    next = place;
    place += length;
  }
  m_listed.resize(places.back(), end);
  std::vector<std::size_t> next(places.begin(), places.end() - 1);
  for (const CEntered& entered : i_entered)
    m_listed[next[entered.cell]++] = entered.listed;
  for (std::size_t cell = 0; cell < count; ++cell)
  {
    CListed* const list = m_listed.data() + places[cell];
    std::sort(list, m_listed.data() + next[cell],
              [](const CListed& i_a, const CListed& i_b)
              { return i_a.lower < i_b.lower || (i_a.lower == i_b.lower && i_a.item < i_b.item); });
    m_cells.push_back({list->lower, static_cast<unsigned int>(places[cell])});
  }
}

float ClumBroadPhase::middleOf(const CTree& i_tree, unsigned int i_rank, unsigned int i_axis) const
{
  const CVolume& volume = still(i_tree, i_rank);
  const float sum = volume.low[i_axis] + volume.high[i_axis];
  return std::isfinite(sum) ? sum : 0.0f;
}

/// Sorts some items along the side on which their middles are the farthest apart.
void ClumBroadPhase::sortAcross(CTree& io_tree, std::size_t i_begin, std::size_t i_end) const
{
  const auto from = io_tree.ranks.begin() + static_cast<std::ptrdiff_t>(i_begin);
  const auto to = io_tree.ranks.begin() + static_cast<std::ptrdiff_t>(i_end);
  unsigned int axis = 0;
  float longest = -1.0f;
  for (unsigned int k = 0; k < 3; ++k)
  {
    float low = std::numeric_limits<float>::max(), high = -low;
    for (auto item = from; item != to; ++item)
    {
      low = std::min(low, middleOf(io_tree, *item, k));
      high = std::max(high, middleOf(io_tree, *item, k));
    }
    if (high - low > longest)
    {
      longest = high - low;
      axis = k;
    }
  }
  std::sort(from, to,
            [&](unsigned int i_a, unsigned int i_b)
            {
              const float a = middleOf(io_tree, i_a, axis), b = middleOf(io_tree, i_b, axis);
              return a < b || (a == b && i_a < i_b);
            });
}

/// Cuts a range of items into parts of about the same size, each across its longest side.
void ClumBroadPhase::cut(CTree& io_tree, std::size_t i_begin, std::size_t i_end, std::size_t i_countParts,
                         std::vector<std::size_t>& io_ends) const
{
  if (i_countParts == 1)
    return io_ends.push_back(i_end);
  sortAcross(io_tree, i_begin, i_end);
  const std::size_t low = i_countParts / 2;
  const std::size_t middle = i_begin + (i_end - i_begin) * low / i_countParts;
  cut(io_tree, i_begin, middle, low, io_ends);
  cut(io_tree, middle, i_end, i_countParts - low, io_ends);
}

/// A node over some items, with all below it; those at the bottom hold the items, lie at one depth and are filled as
/// evenly as can be.
ClumBroadPhase::CNode ClumBroadPhase::makeNode(CTree& io_tree, std::size_t i_begin, std::size_t i_end)
{
  const std::size_t count = i_end - i_begin;
  CNode node = {};
  node.isBottom = count <= FANOUT;
  std::vector<CVolume> volumes;
  if (node.isBottom)
  {
    node.firstChild = io_tree.firstItem + static_cast<unsigned int>(i_begin);
    for (std::size_t i = i_begin; i < i_end; ++i)
      volumes.push_back(still(io_tree, io_tree.ranks[i]));
  }
  else
  {
    std::size_t part = FANOUT;
    while (part * FANOUT < count)
      part *= FANOUT;
    std::vector<std::size_t> cuts = {i_begin};
    cut(io_tree, i_begin, i_end, (count + part - 1) / part, cuts);
    std::vector<CNode> children;
    for (std::size_t child = 0; child + 1 < cuts.size(); ++child)
    {
      children.push_back(makeNode(io_tree, cuts[child], cuts[child + 1]));
      volumes.push_back(boxAround(io_tree, cuts[child], cuts[child + 1]));
    }
    node.firstChild = static_cast<unsigned int>(m_nodes.size());
    m_nodes.insert(m_nodes.end(), children.begin(), children.end());
  }
  makeRows(node, volumes);
  return node;
}

namespace
{
/// Ranks of the slabs in which something begins; the first where that cannot be told. They rise with what is rounded.
TRanks firstSlabs(TLanes i_low, TLanes i_origin, TLanes i_scale)
{
  const TLanes at = largerLanes((i_low - i_origin) * i_scale, lanesOf(0.0f));
  return __builtin_convertvector(smallerLanes(at, lanesOf(SLABS - 1.0f)), TRanks);
}

/// Those in which it ends; the last where that cannot be told.
TRanks lastSlabs(TLanes i_high, TLanes i_origin, TLanes i_scale)
{
  const TLanes at = smallerLanes((i_high - i_origin) * i_scale, lanesOf(SLABS - 1.0f));
  return __builtin_convertvector(largerLanes(at, lanesOf(0.0f)), TRanks);
}
} // namespace

/// Of each axis, for each slab, a row of bits for the children that begin in it or before, and then for those that end
/// in it or behind.
void ClumBroadPhase::makeRows(CNode& io_node, const std::vector<CVolume>& i_children)
{
  for (unsigned int k = 0; k < 3; ++k)
  {
    float low = FAR, high = -FAR;
    for (const CVolume& child : i_children)
    {
      low = std::isfinite(child.low[k]) ? std::min(low, child.low[k]) : low;
      high = std::isfinite(child.high[k]) ? std::max(high, child.high[k]) : high;
    }
    io_node.origin[k] = low < high ? low : 0.0f;
    io_node.scale[k] = low < high ? SLABS / (high - low) : 0.0f;
  }
  io_node.rows = m_rows.size();
  const std::size_t words = 2 * ((i_children.size() + 2 * WORD - 1) / (2 * WORD));
  io_node.countWords = static_cast<unsigned int>(words);
  m_rows.resize(m_rows.size() + 6 * SLABS * words);
  const TLanes origin = lanesAt(io_node.origin), scale = lanesAt(io_node.scale);
  for (std::size_t child = 0; child < i_children.size(); ++child)
  {
    const TRanks low = firstSlabs(lanesAt(i_children[child].low), origin, scale);
    const TRanks high = lastSlabs(lanesAt(i_children[child].high), origin, scale);
    const std::uint64_t bit = std::uint64_t(1) << child % WORD;
    io_node.all[child / WORD] |= bit;
    for (unsigned int k = 0; k < 3; ++k)
    {
      std::uint64_t* rows = m_rows.data() + io_node.rows + k * SLABS * words + child / WORD;
      for (int slab = low[k]; slab < SLABS; ++slab)
        rows[slab * words] |= bit;
      rows += 3 * SLABS * words;
      for (int slab = 0; slab <= high[k]; ++slab)
        rows[slab * words] |= bit;
    }
  }
}

namespace
{
TLanes combinedColumns(const double* i_pose, const float* i_by)
{
  return lanesOf(i_by[0]) * columnAt(i_pose) + lanesOf(i_by[1]) * columnAt(i_pose + 4) +
         lanesOf(i_by[2]) * columnAt(i_pose + 8);
}

/// A point where a frame puts it, computed in double precision and rounded.
/// @param i_point with each coordinate twice.
TLanes placedPoint(const double* i_pose, const double* i_point)
{
  const TDoubles x = doublesAt(i_point), y = doublesAt(i_point + 2), z = doublesAt(i_point + 4);
  return rounded(x * doublesAt(i_pose) + y * doublesAt(i_pose + 4) + z * doublesAt(i_pose + 8) + doublesAt(i_pose + 12),
                 x * doublesAt(i_pose + 2) + y * doublesAt(i_pose + 6) + z * doublesAt(i_pose + 10) +
                   doublesAt(i_pose + 14));
}
} // namespace

void ClumBroadPhase::place(const ClumMat4* i_positions)
{
  m_positions = i_positions;
  ++m_age;
}

const ClumMat4& ClumBroadPhase::pose(unsigned int i_shape)
{
  CShape& shape = m_shapes[i_shape];
  CFrame& frame = m_frames[i_shape];
  if (shape.body == NO_BODY)
    return frame.frame;
  if (!frame.isFramed)
    return m_positions[shape.body];
  if (shape.poseAge != m_age)
  {
    frame.pose = m_positions[shape.body] * frame.frame;
    shape.poseAge = m_age;
  }
  return frame.pose;
}

/// The volume as placed, of which only the ball counts.
inline const ClumBroadPhase::CVolume& ClumBroadPhase::placeBall(unsigned int i_shape, const float* i_center)
{
  CShape& shape = m_shapes[i_shape];
  const float reach = m_frames[i_shape].reach;
  TLanes ball = lanesAt(i_center);
  const TLanes absolute = absoluteLanes(ball);
  const float distance = absolute[0] + absolute[1] + absolute[2];
  ball[3] = reach + static_cast<float>(PLACE_ROUNDING) * distance;
  if (!(reach + distance < LARGEST_COORDINATE))
    ball = TLanes{0.0f, 0.0f, 0.0f, FAR};
  store(shape.volume.ball, ball);
  shape.ballAge = m_age;
  return shape.volume;
}

const ClumBroadPhase::CVolume& ClumBroadPhase::placeBall(unsigned int i_shape)
{
  const CShape& shape = m_shapes[i_shape];
  if (shape.ballAge == m_age)
    return shape.volume;
  const ClumMat4& position = shape.body == NO_BODY ? ClumMat4::IDENTITY : m_positions[shape.body];
  const double* const local = m_frames[i_shape].center;
  const double center[] = {local[0], local[0], local[1], local[1], local[2], local[2]};
  float placed[4];
  store(placed, placedPoint(position.data(), center));
  return placeBall(i_shape, placed);
}

/// The volume as placed, its box within that of the ball.
const ClumBroadPhase::CVolume& ClumBroadPhase::volumeOf(unsigned int i_shape)
{
  CShape& shape = m_shapes[i_shape];
  CVolume& volume = shape.volume;
  if (shape.boxAge == m_age || (shape.body == NO_BODY && shape.boxAge != NEVER))
    return volume;
  placeBall(i_shape);
  shape.boxAge = m_age;
  const TLanes ball = lanesAt(volume.ball), reach = lanesOf(volume.ball[3]);
  TLanes low = ball - reach, high = ball + reach;
  if (volume.ball[3] < FAR)
  {
    const CFrame& frame = m_frames[i_shape];
    const double* m = pose(i_shape).data();
    const TLanes middle = combinedColumns(m, frame.boxCenter);
    const TLanes half = lanesOf(frame.halfSize[0]) * absoluteLanes(columnAt(m)) +
                        lanesOf(frame.halfSize[1]) * absoluteLanes(columnAt(m + 4)) +
                        lanesOf(frame.halfSize[2]) * absoluteLanes(columnAt(m + 8)) +
                        lanesOf(volume.ball[3] - frame.radius);
    low = largerLanes(low, movedBy(m + 12, middle - half));
    high = smallerLanes(high, movedBy(m + 12, middle + half));
  }
  store(volume.low, low);
  store(volume.high, high);
  return volume;
}

/// A lower bound of the distance: what is between the boxes or the balls, or, if the boxes meet, the balls' overlap.
inline float ClumBroadPhase::gapBetween(const CVolume& i_a, const CVolume& i_b)
{
  const TLanes below = lanesAt(i_a.low) - lanesAt(i_b.high), above = lanesAt(i_b.low) - lanesAt(i_a.high);
  const TLanes gap = largerLanes(largerLanes(below, above), lanesOf(0.0f));
  const TLanes step = lanesAt(i_a.ball) - lanesAt(i_b.ball);
  const TLanes gaps = gap * gap, steps = step * step;
  const float box = gaps[0] + gaps[1] + gaps[2];
  const TLanes roots = rootsOf(TLanes{steps[0] + steps[1] + steps[2], box, 0.0f, 0.0f}) * lanesOf(GAP_ROUNDING);
  const float ball = roots[0] - (i_a.ball[3] + i_b.ball[3]) * (2.0f - GAP_ROUNDING);
  return box > 0.0f ? std::max(ball, roots[1]) : ball;
}

double ClumBroadPhase::lowerBound(unsigned int i_pair)
{
  return gapBetween(volumeOf(m_pairs[i_pair].first), volumeOf(m_pairs[i_pair].second));
}

// A walk.

void ClumBroadPhase::begin(unsigned int i_countBodies)
{
  m_bodies.assign(i_countBodies, {UNBOUNDED, UNBOUNDED, FAR, 0});
  m_waiting.clear();
  m_fresh.clear();
  m_sorted.clear();
  m_late.clear();
  m_next = 0;
}

inline void ClumBroadPhase::wait(float i_lower, unsigned int i_pair, unsigned int i_shape)
{
  m_fresh.push_back(entryOf(i_lower, m_waiting.size()));
  m_waiting.push_back({i_pair, i_shape, i_shape == NO_SHAPE ? NO_BODY : bodyOf(i_shape)});
}

void ClumBroadPhase::enter(unsigned int i_pair, double i_lower)
{
  wait(floatBelow(i_lower), i_pair, NO_SHAPE);
}

void ClumBroadPhase::passOver(unsigned int i_body, double i_lower)
{
  m_bodies[i_body].unseen = std::min(m_bodies[i_body].unseen, i_lower);
}

/// Marks the children that a ball made larger by a distance may meet. @return false if there are none.
inline bool ClumBroadPhase::markNear(const float* i_ball, float i_distance, const CNode& i_node, TMarks& o_marks) const
{
  const TLanes origin = lanesAt(i_node.origin), scale = lanesAt(i_node.scale);
  const TLanes center = lanesAt(i_ball), reach = lanesOf(i_ball[3] + i_distance);
  const TRanks low = firstSlabs(center - reach, origin, scale);
  const TRanks high = lastSlabs(center + reach, origin, scale);
  const std::size_t words = i_node.countWords;
  const std::uint64_t* const rows = m_rows.data() + i_node.rows;
  const auto row = [=](int i_side, int i_slab)
  { return rows + static_cast<unsigned int>(i_side * SLABS + i_slab) * words; };
  const std::uint64_t *const beginX = row(0, high[0]), *const beginY = row(1, high[1]), *const beginZ = row(2, high[2]);
  const std::uint64_t *const endX = row(3, low[0]), *const endY = row(4, low[1]), *const endZ = row(5, low[2]);
  TWords any = {};
  for (std::size_t word = 0; word < words; word += 2)
  {
    const TWords marks = wordsAt(beginX + word) & wordsAt(beginY + word) & wordsAt(beginZ + word) &
                         wordsAt(endX + word) & wordsAt(endY + word) & wordsAt(endZ + word);
    std::memcpy(o_marks + word, &marks, sizeof marks);
    any |= marks;
  }
  return (any[0] | any[1]) != 0;
}

namespace
{
/// False if balls alone show that their shapes are farther apart than a distance.
/// @param i_reach the radius of the first, and the distance.
bool areBallsWithin(TLanes i_center, float i_reach, const float* i_ball)
{
  const TLanes step = i_center - lanesAt(i_ball), steps = step * step;
  const float reach = i_reach + i_ball[3];
  return (steps[0] + steps[1] + steps[2]) * (GAP_ROUNDING * GAP_ROUNDING) <= reach * reach;
}
} // namespace

/// Makes room for so much that may be found.
inline void ClumBroadPhase::makeRoomFor(std::size_t i_count)
{
  if (m_found.size() < m_countFound + i_count)
    m_found.resize(2 * (m_countFound + i_count));
}

/// Lets what was found wait, or passes it over.
void ClumBroadPhase::takeFound()
{
  const TFound* const end = m_found.data() + m_countFound;
  for (const TFound* found = m_found.data(); found != end;)
  {
    const unsigned int rank = shapeOf(*found);
    const CVolume& volume = volumeOf(rank);
    const CShape& shape = m_shapes[rank];
    const CVolume* const items = m_items.data();
    const unsigned int* const pairs = m_rowPairs.data();
    const float reach = m_bodies[shape.body].reach;
    float nearest = FAR; // of what is beyond the limit
    for (; found != end && shapeOf(*found) == rank; ++found)
    {
      const unsigned int item = itemOf(*found);
      const float lower = gapBetween(volume, items[item]);
      if (lower > reach)
        nearest = std::min(nearest, lower);
      else
        wait(lower, pairs[shape.firstPair + item], rank);
    }
    passOver(shape.body, nearest);
  }
  m_countFound = 0;
}

/// Lets the items that are within one distance, and not within another, wait. @return true if none is farther.
inline bool ClumBroadPhase::gather(unsigned int i_shape, unsigned int i_node, float i_from, float i_to)
{
  TMarks marks;
  return markNear(m_shapes[i_shape].volume.ball, i_to, m_nodes[i_node], marks) &&
         gatherMarked(i_shape, m_nodes[i_node], marks, i_from, i_to);
}

bool ClumBroadPhase::gatherMarked(unsigned int i_shape, const CNode& i_node, const TMarks& i_marks, float i_from,
                                  float i_to)
{
  TMarks done = {};
  if (i_from >= 0.0f)
    markNear(m_shapes[i_shape].volume.ball, i_from, i_node, done);
  makeRoomFor(FANOUT);
  const CShape& shape = m_shapes[i_shape];
  const TLanes ball = lanesAt(shape.volume.ball);
  const float reach = shape.volume.ball[3] + m_bodies[shape.body].reach;
  TFound* found = m_found.data() + m_countFound;
  bool isAll = true, isSomeApart = false;
  for (unsigned int word = 0; word < i_node.countWords; ++word)
  {
    isAll = isAll && i_marks[word] == i_node.all[word];
    for (std::uint64_t left = i_node.isBottom ? i_marks[word] & ~done[word] : i_marks[word]; left != 0;
         left &= left - 1)
    {
      const unsigned int child = i_node.firstChild + word * WORD + static_cast<unsigned int>(__builtin_ctzll(left));
      if (!i_node.isBottom)
      {
        const bool isNew = (left & -left & done[word]) == 0;
        isAll = gather(i_shape, child, isNew ? NOWHERE : i_from, i_to) && isAll;
        continue;
      }
      // What counts can hardly be foretold: no branch depends on it.
      const bool isWithin = reach == FAR || areBallsWithin(ball, reach, m_items[child].ball);
      *found = foundOf(i_shape, child);
      found += isWithin;
      isSomeApart |= !isWithin;
    }
  }
  if (i_node.isBottom)
    m_countFound = static_cast<std::size_t>(found - m_found.data());
  if (isSomeApart)
    passOver(shape.body);
  return isAll;
}

/// Looks around a shape, beyond a distance up to which it has been done already.
void ClumBroadPhase::look(unsigned int i_shape, float i_from)
{
  const CShape& shape = m_shapes[i_shape];
  const CBody& body = m_bodies[shape.body];
  const CTree& tree = m_trees[shape.tree];
  placeBall(i_shape);
  if (tree.ranks.size() <= FEW)
  {
    makeRoomFor(FEW);
    for (unsigned int item = 0; item < tree.ranks.size(); ++item)
      m_found[m_countFound++] = foundOf(i_shape, tree.firstItem + item);
    return;
  }
  const float to = i_from < 0.0f ? firstLook(tree, shape.volume.ball) : 2.0f * i_from;
  const bool isLast = !(to * REACH_ROUNDING < body.reach);
  const float from = i_from * REACH_ROUNDING;
  const bool isAll = gather(i_shape, tree.root, from, isLast ? body.reach : to * REACH_ROUNDING);
  if (!isAll && isLast)
    passOver(shape.body);
  else if (!isAll)
    wait(to, BEYOND, i_shape);
}

/// Finds the cell that is nearest to a point. @return false for a point that is nowhere.
inline bool ClumBroadPhase::findCell(const CCells& i_cells, const float* i_point, std::size_t& o_rank)
{
  const TLanes at = (lanesAt(i_point) - lanesAt(i_cells.origin)) * lanesAt(i_cells.scale);
  const TLanes inside = smallerLanes(largerLanes(at, lanesOf(0.0f)), lanesAt(i_cells.last));
  const TRanks ranks = __builtin_convertvector(inside, TRanks);
  o_rank = static_cast<unsigned int>((ranks[2] * i_cells.counts[1] + ranks[1]) * i_cells.counts[0] + ranks[0]);
  return areFinite(at);
}

/// Enters in `m_near` those of some followers, all of one tree, that have something near. @return how many there are.
std::size_t ClumBroadPhase::findNear(std::size_t i_begin, std::size_t i_end)
{
  const CCells cells = m_trees[m_followers[i_begin].tree].cells;
  const CCell* const firstCell = m_cells.data() + cells.first;
  const CFollower* const followers = m_followers.data();
  const ClumMat4* const positions = m_positions;
  CBody* const bodies = m_bodies.data();
  CNear* near = m_near.data();
  for (std::size_t i = i_begin; i < i_end; ++i)
  {
    const CFollower& follower = followers[i];
    CBody& body = bodies[follower.body];
    float center[4];
    store(center, placedPoint(positions[follower.body].data(), follower.center));
    std::size_t rank = 0;
    const bool isSomewhere = findCell(cells, center, rank);
    const CCell& cell = firstCell[rank];
    // What is near can hardly be foretold: no branch depends on it.
    const bool isNear = !(cell.clearance > follower.reach + body.reach) | !isSomewhere;
    std::memcpy(near->center, center, sizeof center);
    near->firstListed = isSomewhere ? cell.firstListed : NOT_LISTED;
    near->follower = static_cast<unsigned int>(i);
    near += isNear;
    body.isPassedOver |= !isNear;
  }
  return static_cast<std::size_t>(near - m_near.data());
}

/// How far to look first where there is no limit: so far that what is nearest is likely to be found.
inline float ClumBroadPhase::firstLook(const CTree& i_tree, const float* i_ball) const
{
  std::size_t rank = 0;
  if (!(i_tree.cells.farthest > 0.0f) || !findCell(i_tree.cells, i_ball, rank))
    return i_tree.spacing;
  const float nearest = m_cells[i_tree.cells.first + rank].clearance - i_ball[3];
  return std::max(nearest + FIRST_LOOK * i_tree.spacing, LEAST_LOOK * i_tree.spacing);
}

/// Finds, for what is near, the items that may be within the limits: by the list of its cell if that reaches as far.
void ClumBroadPhase::findItems(std::size_t i_count)
{
  for (const CNear* near = m_near.data(); near != m_near.data() + i_count; ++near)
  {
    const CFollower& follower = m_followers[near->follower];
    const CTree& tree = m_trees[follower.tree];
    CBody& body = m_bodies[follower.body];
    const float reach = follower.reach + body.reach;
    if (!(reach < tree.cells.farthest) || near->firstListed == NOT_LISTED)
    {
      look(follower.shape, NOWHERE);
      continue;
    }
    const std::size_t countItems = tree.ranks.size();
    makeRoomFor(countItems + 1);
    TFound* const first = m_found.data() + m_countFound;
    TFound* found = first;
    const CVolume* const items = m_items.data();
    const TLanes center = lanesAt(near->center);
    const float ballReach = reach + tree.cells.rounding;
    const CListed* listed = m_listed.data() + near->firstListed;
    do
      for (const CListed* const end = listed + 2; listed < end; ++listed)
      {
        *found = foundOf(follower.shape, listed->item);
        const bool isNear = areBallsWithin(center, ballReach, items[listed->item].ball);
        found += isNear & (listed->lower <= reach);
      }
    while (listed->lower <= reach);
    const std::size_t count = static_cast<std::size_t>(found - first);
    m_countFound += count;
    body.isPassedOver |= count < countItems;
  }
}

void ClumBroadPhase::follow()
{
  m_near.resize(m_followers.size());
  for (std::size_t begin = 0, end = 0; begin < m_followers.size(); begin = end)
  {
    const unsigned int tree = m_followers[begin].tree;
    while (end < m_followers.size() && m_followers[end].tree == tree)
      ++end;
    // Limits are mostly alike.
    if (m_bodies[m_followers[begin].body].reach < m_trees[tree].cells.farthest)
      findItems(findNear(begin, end));
    else
      for (std::size_t i = begin; i < end; ++i)
        look(m_followers[i].shape, NOWHERE);
  }
  takeFound();
}

void ClumBroadPhase::follow(unsigned int i_body)
{
  for (const CFollower& follower : m_followers)
    if (follower.body == i_body)
      look(follower.shape, NOWHERE);
  takeFound();
}

/// Sorts what is fresh, or, while some of what was sorted is left, puts it into a heap beside that.
void ClumBroadPhase::orderFresh()
{
  if (m_next < m_sorted.size())
    for (const TEntry entry : m_fresh)
    {
      m_late.push_back(entry);
      std::push_heap(m_late.begin(), m_late.end(), TNearestOnTop());
    }
  else
  {
    if (m_fresh.size() < ENOUGH_FOR_COUNTING)
      std::sort(m_fresh.begin(), m_fresh.end());
    else
      sortByBounds();
    m_sorted.swap(m_fresh);
    m_fresh.reserve(m_sorted.capacity()); // for walks to come
    m_next = 0;
  }
  m_fresh.clear();
}

/// Sorts what is fresh by counting, 8 bits of the bounds at a time. Ranks are in order already, and stay so.
void ClumBroadPhase::sortByBounds()
{
  std::uint32_t counts[4][256] = {};
  for (const TEntry entry : m_fresh)
    for (unsigned int pass = 0; pass < 4; ++pass)
      ++counts[pass][entry >> (32 + 8 * pass) & 0xff];
  m_sorted.resize(m_fresh.size());
  for (unsigned int pass = 0; pass < 4; ++pass)
  {
    std::uint32_t begin = 0;
    for (std::uint32_t& count : counts[pass])
    {
      const std::uint32_t end = begin + count;
      count = begin;
      begin = end;
    }
    for (const TEntry entry : m_fresh)
      m_sorted[counts[pass][entry >> (32 + 8 * pass) & 0xff]++] = entry;
    m_sorted.swap(m_fresh);
  }
}

bool ClumBroadPhase::next(CCandidate& o_candidate)
{
  for (;;)
  {
    if (!m_fresh.empty())
      orderFresh();
    const bool isLate = !m_late.empty() && (m_next == m_sorted.size() || m_late.front() < m_sorted[m_next]);
    if (!isLate && m_next == m_sorted.size())
      return false;
    const TEntry entry = isLate ? m_late.front() : m_sorted[m_next++];
    if (isLate)
    {
      std::pop_heap(m_late.begin(), m_late.end(), TNearestOnTop());
      m_late.pop_back();
    }
    const CWaiting waiting = m_waiting[rankOf(entry)];
    const float lower = lowerOf(entry);
    if (waiting.body != NO_BODY && lower > limit(waiting.body))
      passOver(waiting.body);
    else if (waiting.pair == BEYOND)
    {
      look(waiting.shape, lower);
      takeFound();
    }
    else
    {
      o_candidate = {lower, waiting.pair};
      return true;
    }
  }
}
