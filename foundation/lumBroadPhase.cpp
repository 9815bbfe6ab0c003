#include "foundation/lumBroadPhase.h"

#include "foundation/lumCollisionModel.h"
#include "foundation/lumLeafGeometry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>

namespace
{
constexpr double UNBOUNDED = std::numeric_limits<double>::infinity();
/// Of the coordinates' magnitude, for the rounding of a placed volume.
constexpr double VOLUME_ROUNDING = 1e-12;
/// For the rounding of a gap, its square and the root.
constexpr double GAP_ROUNDING = 1.0 - 1e-14;
/// Marks an item among the children of a node.
constexpr unsigned int ITEM = 0x80000000u;

/// A heap of the standard library has the largest on top.
struct CNearestOnTop
{
  template <class ENTRY>
  bool operator()(const ENTRY& i_a, const ENTRY& i_b) const
  {
    return i_b < i_a;
  }
};
} // namespace

bool ClumBroadPhase::CEntry::operator<(const CEntry& i_other) const
{
  if (lower != i_other.lower)
    return lower < i_other.lower;
  return shape != i_other.shape ? shape < i_other.shape : rank < i_other.rank;
}

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
  shape.rounding = 0.0;
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

double ClumBroadPhase::middleOf(const CTree& i_tree, unsigned int i_item, unsigned int i_axis) const
{
  const CVolume& volume = m_shapes[i_tree.shapes[i_item]].volume;
  const double sum = volume.low[i_axis] + volume.high[i_axis];
  return std::isfinite(sum) ? sum : 0.0;
}

/// Sorts some items along the side on which their middles are the farthest apart.
void ClumBroadPhase::sortAcross(const CTree& i_tree, std::vector<unsigned int>& io_items, std::size_t i_begin,
                                std::size_t i_end) const
{
  const auto from = io_items.begin() + static_cast<std::ptrdiff_t>(i_begin);
  const auto to = io_items.begin() + static_cast<std::ptrdiff_t>(i_end);
  unsigned int axis = 0;
  double longest = -1.0;
  for (unsigned int k = 0; k < 3; ++k)
  {
    double low = UNBOUNDED, high = -UNBOUNDED;
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
              const double a = middleOf(i_tree, i_a, axis), b = middleOf(i_tree, i_b, axis);
              return a < b || (a == b && i_a < i_b);
            });
}

/// Halves the items three times, or gives each a place of its own if they are few.
unsigned int ClumBroadPhase::makeNode(const CTree& i_tree, std::vector<unsigned int>& io_items, std::size_t i_begin,
                                      std::size_t i_end)
{
  std::vector<std::size_t> cuts = {i_begin, i_end};
  const bool isBottom = i_end - i_begin <= FANOUT;
  if (isBottom)
  {
    cuts.resize(i_end - i_begin + 1);
    std::iota(cuts.begin(), cuts.end(), i_begin);
  }
  while (cuts.size() < FANOUT + 1 && !isBottom)
  {
    std::vector<std::size_t> finer = {i_begin};
    for (std::size_t part = 0; part + 1 < cuts.size(); ++part)
    {
      sortAcross(i_tree, io_items, cuts[part], cuts[part + 1]);
      finer.push_back(cuts[part] + (cuts[part + 1] - cuts[part]) / 2);
      finer.push_back(cuts[part + 1]);
    }
    cuts.swap(finer);
  }

  CNode node = {};
  node.count = static_cast<unsigned int>(cuts.size()) - 1;
  for (unsigned int child = 0; child < node.count; ++child)
  {
    const CVolume volume = volumeOf(i_tree, io_items, cuts[child], cuts[child + 1]);
    for (unsigned int k = 0; k < 3; ++k)
    {
      node.low[k][child] = volume.low[k];
      node.high[k][child] = volume.high[k];
    }
    node.children[child] =
      isBottom ? io_items[cuts[child]] | ITEM : makeNode(i_tree, io_items, cuts[child], cuts[child + 1]);
  }
  m_nodes.push_back(node);
  return static_cast<unsigned int>(m_nodes.size()) - 1;
}

void ClumBroadPhase::place(unsigned int i_shape, const ClumMat4& i_pose)
{
  CShape& shape = m_shapes[i_shape];
  shape.pose = i_pose;
  shape.center = i_pose * shape.ballCenter;
  const ClumPoint3 middle = i_pose * shape.boxCenter;
  const double* m = i_pose.data();
  const double coordinates = std::fabs(shape.boxCenter.x()) + std::fabs(shape.boxCenter.y()) +
                             std::fabs(shape.boxCenter.z()) + std::fabs(m[12]) + std::fabs(m[13]) + std::fabs(m[14]);
  shape.rounding = VOLUME_ROUNDING * (coordinates + 2.0 * shape.radius);
  for (unsigned int k = 0; k < 3; ++k)
  {
    const double half = std::fabs(m[k]) * shape.halfSize.x() + std::fabs(m[4 + k]) * shape.halfSize.y() +
                        std::fabs(m[8 + k]) * shape.halfSize.z() + shape.rounding;
    shape.volume.low[k] = middle[k] - half;
    shape.volume.high[k] = middle[k] + half;
    if (!std::isfinite(middle[k]) || !std::isfinite(half))
    {
      shape.volume.low[k] = -UNBOUNDED;
      shape.volume.high[k] = UNBOUNDED;
    }
  }
}

double ClumBroadPhase::ballBound(const CShape& i_a, const CShape& i_b) const
{
  const double between = i_a.center.distanceFrom(i_b.center);
  const double bound = between * GAP_ROUNDING - (i_a.radius + i_b.radius + i_a.rounding + i_b.rounding);
  return bound == bound ? bound : -UNBOUNDED;
}

double ClumBroadPhase::lowerBound(unsigned int i_pair) const
{
  const CShape& a = m_shapes[m_pairs[i_pair].first];
  const CShape& b = m_shapes[m_pairs[i_pair].second];
  double square = 0.0;
  for (unsigned int k = 0; k < 3; ++k)
  {
    const double below = a.volume.low[k] - b.volume.high[k], above = b.volume.low[k] - a.volume.high[k];
    const double gap = below > above ? below : above;
    square += gap > 0.0 ? gap * gap : 0.0;
  }
  const double ball = ballBound(a, b);
  return square > 0.0 ? std::max(ball, std::sqrt(square) * GAP_ROUNDING) : ball;
}

// A walk.

void ClumBroadPhase::begin(unsigned int i_countBodies)
{
  m_bodies.assign(i_countBodies, {UNBOUNDED, UNBOUNDED});
  m_entries.clear();
  m_isHeap = false;
}

void ClumBroadPhase::push(const CEntry& i_entry)
{
  m_entries.push_back(i_entry);
  if (m_isHeap)
    std::push_heap(m_entries.begin(), m_entries.end(), CNearestOnTop());
}

void ClumBroadPhase::follow(unsigned int i_shape)
{
  const unsigned int tree = m_shapes[i_shape].tree;
  if (tree != NO_TREE)
    expand(i_shape, m_trees[tree].root);
}

void ClumBroadPhase::enter(unsigned int i_pair, double i_lower)
{
  push({i_lower, NO_SHAPE, i_pair});
}

/// Takes the children of a node that are within the limit into the walk, those that overlap the shape at once.
void ClumBroadPhase::expand(unsigned int i_shape, unsigned int i_node)
{
  const CNode& node = m_nodes[i_node];
  const CShape& shape = m_shapes[i_shape];
  double squares[FANOUT] = {};
  for (unsigned int k = 0; k < 3; ++k)
    for (unsigned int child = 0; child < FANOUT; ++child)
    {
      const double below = shape.volume.low[k] - node.high[k][child];
      const double above = node.low[k][child] - shape.volume.high[k];
      double gap = below > above ? below : above;
      gap = gap > 0.0 ? gap : 0.0;
      squares[child] += gap * gap;
    }

  CBody& body = m_bodies[shape.body];
  const double limitSquare = body.limit * body.limit;
  double passed = UNBOUNDED;
  for (unsigned int child = 0; child < node.count; ++child)
  {
    const unsigned int rank = node.children[child];
    double lower = squares[child] > 0.0 ? std::sqrt(squares[child]) * GAP_ROUNDING : 0.0;
    if (squares[child] > limitSquare)
      passed = std::min(passed, lower);
    else if (rank & ITEM)
    {
      const double ball = ballBound(shape, m_shapes[m_trees[shape.tree].shapes[rank & ~ITEM]]);
      lower = lower > 0.0 && !(ball > lower) ? lower : ball;
      if (lower > body.limit)
        passed = std::min(passed, lower);
      else
        push({lower, i_shape, rank});
    }
    else if (lower > 0.0)
      push({lower, i_shape, rank});
    else
      expand(i_shape, rank);
  }
  body.unseen = std::min(body.unseen, passed);
}

bool ClumBroadPhase::next(CCandidate& o_candidate)
{
  if (!m_isHeap)
    std::make_heap(m_entries.begin(), m_entries.end(), CNearestOnTop());
  m_isHeap = true;
  while (!m_entries.empty())
  {
    const CEntry entry = m_entries.front();
    std::pop_heap(m_entries.begin(), m_entries.end(), CNearestOnTop());
    m_entries.pop_back();
    if (entry.shape == NO_SHAPE)
    {
      o_candidate = {entry.lower, entry.rank};
      return true;
    }
    CBody& body = m_bodies[bodyOf(entry.shape)];
    if (entry.lower > body.limit)
      body.unseen = std::min(body.unseen, entry.lower);
    else if (entry.rank & ITEM)
    {
      o_candidate = {entry.lower, m_rowPairs[m_shapes[entry.shape].firstPair + (entry.rank & ~ITEM)]};
      return true;
    }
    else
      expand(entry.shape, entry.rank);
  }
  return false;
}
