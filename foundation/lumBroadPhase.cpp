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
constexpr double UNBOUNDED = std::numeric_limits<double>::infinity();
constexpr float FAR = std::numeric_limits<float>::infinity();
/// Of the coordinates' magnitude, for the rounding of a placed volume to single precision.
constexpr double VOLUME_ROUNDING = 1.2e-7;
/// For the rounding of a gap, its square, the root and what is taken off it, in single precision.
constexpr float GAP_ROUNDING = 1.0f - 1e-6f;
/// Coordinates beyond this have no squares in single precision.
constexpr double LARGEST_COORDINATE = 1e18;
/// Marks an item among the children of a node that wait.
constexpr unsigned int ITEM = 0x80000000u;

/// Four numbers at once, on any machine; each operation is rounded by itself, so all machines give the same.
typedef float TLanes __attribute__((vector_size(16)));

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

TLanes largerLanes(TLanes i_a, TLanes i_b)
{
  return i_a > i_b ? i_a : i_b;
}

TLanes rootsOf(TLanes i_squares)
{
#ifdef __SSE2__
  return _mm_sqrt_ps(i_squares);
#else
  return TLanes{std::sqrt(i_squares[0]), std::sqrt(i_squares[1]), std::sqrt(i_squares[2]), std::sqrt(i_squares[3])};
#endif
}

/// A bit for each lane that is not above the limit.
unsigned int lanesWithin(TLanes i_lanes, float i_limit)
{
#ifdef __SSE2__
  return static_cast<unsigned int>(_mm_movemask_ps(_mm_cmple_ps(i_lanes, lanesOf(i_limit))));
#else
  unsigned int bits = 0;
  for (unsigned int i = 0; i < 4; ++i)
    bits |= i_lanes[i] <= i_limit ? 1u << i : 0u;
  return bits;
#endif
}

/// The next float that is not above, and not below.
float floatBelow(double i_value)
{
  const float value = static_cast<float>(i_value);
  return value > i_value ? std::nextafter(value, -FAR) : value;
}

float floatAbove(double i_value)
{
  return -floatBelow(-i_value);
}

/// An entry of the heaps: the bits of a float, changed so that they have its order, above a rank.
std::uint64_t entryOf(float i_lower, std::uint32_t i_rank)
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

using TNearestOnTop = std::greater<std::uint64_t>;
} // namespace

// The scene.

unsigned int ClumBroadPhase::addShape(const ClumCollisionModel& i_model, const ClumLeafGeometry& i_leaf,
                                      unsigned int i_body)
{
  ClumPoint3 lowest, highest;
  i_leaf.getBoundingBox(lowest, highest);
  CShape shape;
  shape.halfSize = (highest - lowest) * 0.5;
  shape.boxCenter = lowest + shape.halfSize;
  shape.ballCenter = i_model.center();
  shape.radius = i_model.radius();
  shape.body = i_body;
  shape.tree = NO_TREE;
  shape.firstPair = 0;
  m_shapes.push_back(shape);
  const unsigned int rank = countShapes() - 1;
  if (i_body != NO_BODY)
    m_movingShapes.push_back(rank);
  place(rank, ClumMat4());
  return rank;
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
  m_trees.clear();
  m_nodes.clear();
  m_rowPairs.clear();
  std::map<std::vector<unsigned int>, unsigned int> known;
  for (const unsigned int moving : m_movingShapes)
  {
    std::sort(rows[moving].begin(), rows[moving].end());
    std::vector<unsigned int> stills;
    m_shapes[moving].firstPair = static_cast<unsigned int>(m_rowPairs.size());
    for (const auto& [still, pair] : rows[moving])
    {
      stills.push_back(still);
      m_rowPairs.push_back(pair);
    }
    if (stills.empty())
      continue;
    const auto found = known.find(stills);
    m_shapes[moving].tree = found != known.end() ? found->second : known[stills] = treeOver(stills);
  }
}

unsigned int ClumBroadPhase::treeOver(std::vector<unsigned int>& io_shapes)
{
  CTree tree;
  tree.shapes = io_shapes;
  std::vector<unsigned int> items(io_shapes.size());
  std::iota(items.begin(), items.end(), 0u);
  tree.root = makeNode(tree, items, 0, items.size());
  m_trees.push_back(tree);
  return static_cast<unsigned int>(m_trees.size()) - 1;
}

ClumBroadPhase::CVolume ClumBroadPhase::volumeOf(const CTree& i_tree, const std::vector<unsigned int>& i_items,
                                                 std::size_t i_begin, std::size_t i_end) const
{
  CVolume volume = m_shapes[i_tree.shapes[i_items[i_begin]]].volume;
  for (std::size_t i = i_begin + 1; i < i_end; ++i)
  {
    const CVolume& other = m_shapes[i_tree.shapes[i_items[i]]].volume;
    for (unsigned int k = 0; k < 3; ++k)
    {
      volume.low[k] = std::min(volume.low[k], other.low[k]);
      volume.high[k] = std::max(volume.high[k], other.high[k]);
    }
  }
  return volume;
}

float ClumBroadPhase::middleOf(const CTree& i_tree, unsigned int i_item, unsigned int i_axis) const
{
  const CVolume& volume = m_shapes[i_tree.shapes[i_item]].volume;
  const float sum = volume.low[i_axis] + volume.high[i_axis];
  return std::isfinite(sum) ? sum : 0.0f;
}

/// Sorts some items along the side on which their middles are the farthest apart.
void ClumBroadPhase::sortAcross(const CTree& i_tree, std::vector<unsigned int>& io_items, std::size_t i_begin,
                                std::size_t i_end) const
{
  const auto from = io_items.begin() + static_cast<std::ptrdiff_t>(i_begin);
  const auto to = io_items.begin() + static_cast<std::ptrdiff_t>(i_end);
  unsigned int axis = 0;
  float longest = -1.0f;
  for (unsigned int k = 0; k < 3; ++k)
  {
    float low = std::numeric_limits<float>::max(), high = -low;
    for (auto item = from; item != to; ++item)
    {
      low = std::min(low, middleOf(i_tree, *item, k));
      high = std::max(high, middleOf(i_tree, *item, k));
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
              const float a = middleOf(i_tree, i_a, axis), b = middleOf(i_tree, i_b, axis);
              return a < b || (a == b && i_a < i_b);
            });
}

/// Cuts a range of items into parts of about the same size, each across its longest side.
void ClumBroadPhase::cut(const CTree& i_tree, std::vector<unsigned int>& io_items, std::size_t i_begin,
                         std::size_t i_end, std::size_t i_countParts, std::vector<std::size_t>& io_ends) const
{
  if (i_countParts == 1)
    return io_ends.push_back(i_end);
  sortAcross(i_tree, io_items, i_begin, i_end);
  const std::size_t low = i_countParts / 2;
  const std::size_t middle = i_begin + (i_end - i_begin) * low / i_countParts;
  cut(i_tree, io_items, i_begin, middle, low, io_ends);
  cut(i_tree, io_items, middle, i_end, i_countParts - low, io_ends);
}

/// The nodes at the bottom hold items; all lie at one depth and are filled as evenly as can be.
unsigned int ClumBroadPhase::makeNode(const CTree& i_tree, std::vector<unsigned int>& io_items, std::size_t i_begin,
                                      std::size_t i_end)
{
  const std::size_t count = i_end - i_begin;
  const bool isBottom = count <= FANOUT;
  std::size_t part = 1;
  while (part * FANOUT < count)
    part *= FANOUT;
  std::vector<std::size_t> cuts = {i_begin};
  cut(i_tree, io_items, i_begin, i_end, (count + part - 1) / part, cuts);

  CNode node = {};
  for (unsigned int k = 0; k < 3; ++k)
  {
    std::fill(std::begin(node.low[k]), std::end(node.low[k]), FAR);
    std::fill(std::begin(node.high[k]), std::end(node.high[k]), -FAR);
  }
  node.isBottom = isBottom;
  node.count = static_cast<unsigned int>(cuts.size()) - 1;
  for (unsigned int child = 0; child < node.count; ++child)
  {
    const CVolume volume = volumeOf(i_tree, io_items, cuts[child], cuts[child + 1]);
    const CShape& item = m_shapes[i_tree.shapes[io_items[cuts[child]]]];
    for (unsigned int k = 0; k < 3; ++k)
    {
      node.low[k][child] = volume.low[k];
      node.high[k][child] = volume.high[k];
      node.ballCenter[k][child] = item.center[k];
    }
    node.ballReach[child] = item.reach;
    node.children[child] = isBottom ? io_items[cuts[child]] : makeNode(i_tree, io_items, cuts[child], cuts[child + 1]);
  }
  m_nodes.push_back(node);
  return static_cast<unsigned int>(m_nodes.size()) - 1;
}

void ClumBroadPhase::place(unsigned int i_shape, const ClumMat4& i_pose)
{
  CShape& shape = m_shapes[i_shape];
  shape.pose = i_pose;
  const ClumPoint3 center = i_pose * shape.ballCenter;
  const ClumPoint3 middle = i_pose * shape.boxCenter;
  const double* m = i_pose.data();
  double magnitude = 2.0 * shape.radius;
  for (unsigned int k = 0; k < 3; ++k)
    magnitude += std::fabs(shape.boxCenter[k]) + std::fabs(m[12 + k]);
  const bool isAnywhere = !(magnitude < LARGEST_COORDINATE);
  const double rounding = VOLUME_ROUNDING * magnitude;
  for (unsigned int k = 0; k < 3; ++k)
  {
    const double half = std::fabs(m[k]) * shape.halfSize[0] + std::fabs(m[4 + k]) * shape.halfSize[1] +
                        std::fabs(m[8 + k]) * shape.halfSize[2] + rounding;
    const bool isKnown = !isAnywhere && std::fabs(middle[k]) + half < LARGEST_COORDINATE;
    shape.volume.low[k] = static_cast<float>(isKnown ? middle[k] - half : -UNBOUNDED);
    shape.volume.high[k] = static_cast<float>(isKnown ? middle[k] + half : UNBOUNDED);
    shape.center[k] = static_cast<float>(isKnown ? center[k] : 0.0);
  }
  shape.reach = static_cast<float>(isAnywhere ? UNBOUNDED : shape.radius * (1.0 + VOLUME_ROUNDING) + 2.0 * rounding);
}

double ClumBroadPhase::lowerBound(unsigned int i_pair) const
{
  const CShape& a = m_shapes[m_pairs[i_pair].first];
  const CShape& b = m_shapes[m_pairs[i_pair].second];
  double gaps = 0.0, between = 0.0;
  for (unsigned int k = 0; k < 3; ++k)
  {
    const double below = double(a.volume.low[k]) - b.volume.high[k], above = double(b.volume.low[k]) - a.volume.high[k];
    const double gap = std::max({below, above, 0.0});
    const double step = double(a.center[k]) - b.center[k];
    gaps += gap * gap;
    between += step * step;
  }
  const double ball = std::sqrt(between) * GAP_ROUNDING - (double(a.reach) + b.reach);
  return gaps > 0.0 ? std::max(ball, std::sqrt(gaps) * GAP_ROUNDING) : ball;
}

// A walk.

void ClumBroadPhase::begin(unsigned int i_countBodies)
{
  m_bodies.assign(i_countBodies, {UNBOUNDED, UNBOUNDED, FAR});
  m_entries.clear();
  m_runs.clear();
  m_nearest.clear();
  m_runBegin = 0;
}

void ClumBroadPhase::limit(unsigned int i_body, double i_limit)
{
  m_bodies[i_body].limit = i_limit;
  m_bodies[i_body].reach = floatAbove(i_limit);
}

/// Makes a run of the entries that came since the last one.
void ClumBroadPhase::closeRun(unsigned int i_shape)
{
  const auto begin = m_entries.begin() + static_cast<std::ptrdiff_t>(m_runBegin);
  if (begin == m_entries.end())
    return;
  std::make_heap(begin, m_entries.end(), TNearestOnTop());
  m_nearest.push_back(entryOf(lowerOf(*begin), static_cast<std::uint32_t>(m_runs.size())));
  std::push_heap(m_nearest.begin(), m_nearest.end(), TNearestOnTop());
  m_runs.push_back({i_shape, m_runBegin, m_entries.size()});
  m_runBegin = m_entries.size();
}

void ClumBroadPhase::follow(unsigned int i_shape)
{
  closeRun(NO_SHAPE);
  const unsigned int tree = m_shapes[i_shape].tree;
  if (tree != NO_TREE)
    expand(i_shape, m_trees[tree].root);
  closeRun(i_shape);
}

void ClumBroadPhase::enter(unsigned int i_pair, double i_lower)
{
  m_entries.push_back(entryOf(floatBelow(i_lower), i_pair));
}

void ClumBroadPhase::passOver(unsigned int i_body, double i_lower)
{
  m_bodies[i_body].unseen = std::min(m_bodies[i_body].unseen, i_lower);
}

/// Takes the children of a node that are within the limit into the walk. A branch waits only while there is no limit.
void ClumBroadPhase::expand(unsigned int i_shape, unsigned int i_node)
{
  const CNode& node = m_nodes[i_node];
  const CShape& shape = m_shapes[i_shape];
  const float limit = m_bodies[shape.body].reach;
  const TLanes none = lanesOf(0.0f), limits = lanesOf(limit), far = lanesOf(FAR);
  TLanes passed = far;
  float lowers[FANOUT];
  unsigned int within = 0;
  for (unsigned int half = 0; half < FANOUT; half += 4)
  {
    TLanes gaps = none, steps = none;
    for (unsigned int k = 0; k < 3; ++k)
    {
      const TLanes below = lanesOf(shape.volume.low[k]) - lanesAt(node.high[k] + half);
      const TLanes above = lanesAt(node.low[k] + half) - lanesOf(shape.volume.high[k]);
      const TLanes gap = largerLanes(largerLanes(below, above), none);
      const TLanes step = lanesOf(shape.center[k]) - lanesAt(node.ballCenter[k] + half);
      gaps += gap * gap;
      steps += step * step;
    }
    TLanes lower = rootsOf(gaps) * lanesOf(GAP_ROUNDING);
    if (node.isBottom)
    {
      const TLanes reach = lanesOf(shape.reach) + lanesAt(node.ballReach + half);
      const TLanes ball = rootsOf(steps) * lanesOf(GAP_ROUNDING) - reach * lanesOf(2.0f - GAP_ROUNDING);
      lower = lower > none ? largerLanes(ball, lower) : ball;
    }
    const TLanes beyond = lower > limits ? lower : far;
    passed = beyond < passed ? beyond : passed;
    within |= lanesWithin(lower, limit) << half;
    std::memcpy(lowers + half, &lower, sizeof lower);
  }
  // Places without a child are infinitely far: they are within only where there is no limit.
  passOver(shape.body, std::min(std::min(passed[0], passed[1]), std::min(passed[2], passed[3])));
  within &= (1u << node.count) - 1u;
  for (; within != 0; within &= within - 1)
  {
    const unsigned int child = static_cast<unsigned int>(__builtin_ctz(within));
    if (node.isBottom)
      m_entries.push_back(entryOf(lowers[child], node.children[child] | ITEM));
    else if (lowers[child] > 0.0f && limit == FAR)
      m_entries.push_back(entryOf(lowers[child], node.children[child]));
    else
      expand(i_shape, node.children[child]);
  }
}

unsigned int ClumBroadPhase::pairOf(unsigned int i_shape, unsigned int i_item) const
{
  return m_rowPairs[m_shapes[i_shape].firstPair + i_item];
}

bool ClumBroadPhase::next(CCandidate& o_candidate)
{
  closeRun(NO_SHAPE);
  while (!m_nearest.empty())
  {
    const TEntry top = m_nearest.front();
    CRun& run = m_runs[rankOf(top)];
    const unsigned int shape = run.shape;
    std::pop_heap(m_nearest.begin(), m_nearest.end(), TNearestOnTop());
    m_nearest.pop_back();
    if (shape != NO_SHAPE && lowerOf(top) > limit(bodyOf(shape)))
    {
      passOver(bodyOf(shape), lowerOf(top));
      continue;
    }
    const auto begin = m_entries.begin() + static_cast<std::ptrdiff_t>(run.begin);
    const TEntry entry = *begin;
    std::pop_heap(begin, m_entries.begin() + static_cast<std::ptrdiff_t>(run.end), TNearestOnTop());
    if (--run.end != run.begin)
    {
      m_nearest.push_back(entryOf(lowerOf(*begin), rankOf(top)));
      std::push_heap(m_nearest.begin(), m_nearest.end(), TNearestOnTop());
    }
    if (shape == NO_SHAPE || (rankOf(entry) & ITEM))
    {
      const unsigned int rank = rankOf(entry) & ~ITEM;
      o_candidate = {lowerOf(entry), shape == NO_SHAPE ? rank : pairOf(shape, rank)};
      return true;
    }
    expand(shape, rankOf(entry));
    closeRun(shape);
  }
  return false;
}
