#include "foundation/lumProximityTree.h"

#include "foundation/lumTriangleDistance.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace
{
constexpr unsigned int TREE_LEAF = 4;           ///< triangles
constexpr unsigned int TREE_BINS = 12;          ///< into which the triangles are sorted to find a cut
constexpr unsigned int TREE_FREE_DEPTH = 36;    ///< of cuts: deeper down, every cut halves
constexpr unsigned int TREE_SAMPLES = 256;      ///< triangles that are looked at to choose a frame
constexpr unsigned int TREE_CUT_SAMPLES = 4096; ///< and to choose where to cut
constexpr double TREE_LEAF_CUT = 0.85;          ///< a leaf is cut if that lessens its cost so much
constexpr double TREE_THICKNESS = 4.0;          ///< what thickness adds to the cost of a leaf
constexpr std::uint32_t TREE_LARGE = 128;       ///< a part of more triangles may be large
constexpr std::uint32_t TREE_LARGE_SHARE = 32;  ///< if it is so large a share of all, too
constexpr double TREE_OUTWARD = 1.0 + 0x1p-22;
constexpr double TREE_INFINITY = std::numeric_limits<double>::infinity();

struct CTreeAxes
{
  ClumVect3 axes[3];
};

struct CTreeRange
{
  double low[3] = {TREE_INFINITY, TREE_INFINITY, TREE_INFINITY};
  double high[3] = {-TREE_INFINITY, -TREE_INFINITY, -TREE_INFINITY};

  void add(const CTreeRange& i_other)
  {
    for (unsigned int k = 0; k < 3; ++k)
    {
      low[k] = std::min(low[k], i_other.low[k]);
      high[k] = std::max(high[k], i_other.high[k]);
    }
  }
  double twiceMiddle(unsigned int i_axis) const { return low[i_axis] + high[i_axis]; }
  /// Half of the box's surface; 0 for none.
  double surface() const
  {
    const double x = high[0] - low[0], y = high[1] - low[1], z = high[2] - low[2];
    return x >= 0.0 ? x * y + y * z + z * x : 0.0;
  }
  /// What the box of a leaf costs: the more the thicker it is, since then much that lies in it is far from its
  /// triangles.
  double leafCost() const
  {
    const double x = high[0] - low[0], y = high[1] - low[1], z = high[2] - low[2];
    return surface() + (x >= 0.0 ? TREE_THICKNESS * std::min({x, y, z}) * std::max({x, y, z}) : 0.0);
  }
};

/// A part of the triangles, before eight are gathered.
struct CTreePart
{
  std::uint32_t first = 0;
  std::uint32_t count = 0;
  std::uint32_t child = 0; ///< the first of two; 0 for a leaf
  double surface = 0.0;
  CTreeAxes frame;
  CTreeRange range; ///< in the frame; empty if only some of the triangles were looked at
};

/// A part, and the box of which it is the child.
struct CTreeSlot
{
  std::uint32_t part;
  std::uint32_t box;
};

/// Turns a symmetric matrix (xx, yy, zz, xy, yz, zx) to its main axes by Jacobi's method.
CTreeAxes mainAxes(const double i_matrix[6])
{
  double m[3][3] = {{i_matrix[0], i_matrix[3], i_matrix[5]},
                    {i_matrix[3], i_matrix[1], i_matrix[4]},
                    {i_matrix[5], i_matrix[4], i_matrix[2]}};
  double v[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  const double size = m[0][0] + m[1][1] + m[2][2];
  for (unsigned int sweep = 0; sweep < 12; ++sweep)
  {
    if (!(std::fabs(m[0][1]) + std::fabs(m[1][2]) + std::fabs(m[0][2]) > 1e-6 * size))
      break;
    for (unsigned int turn = 0; turn < 3; ++turn)
    {
      const unsigned int p = turn == 2 ? 1 : 0, q = turn == 0 ? 1 : 2, r = 3 - p - q;
      if (m[p][q] == 0.0)
        continue;
      const double theta = (m[q][q] - m[p][p]) / (2.0 * m[p][q]);
      const double t = (theta >= 0.0 ? 1.0 : -1.0) / (std::fabs(theta) + std::sqrt(theta * theta + 1.0));
      const double c = 1.0 / std::sqrt(t * t + 1.0), s = t * c;
      m[p][p] -= t * m[p][q];
      m[q][q] += t * m[p][q];
      m[p][q] = m[q][p] = 0.0;
      const double rp = m[r][p], rq = m[r][q];
      m[r][p] = m[p][r] = c * rp - s * rq;
      m[r][q] = m[q][r] = s * rp + c * rq;
      for (auto& row : v)
      {
        const double vp = row[p], vq = row[q];
        row[p] = c * vp - s * vq;
        row[q] = s * vp + c * vq;
      }
    }
  }
  CTreeAxes frame;
  for (unsigned int k = 0; k < 3; ++k)
    frame.axes[k] = ClumVect3(v[0][k], v[1][k], v[2][k]).normalized();
  return frame;
}

/// The frame of an edge, and of the plane that it makes with another.
bool edgeFrame(const ClumVect3& i_edge, const ClumVect3& i_other, CTreeAxes& o_frame)
{
  const ClumVect3 normal = i_edge * i_other;
  if (!(normal.norm() > 1e-6 * i_edge.norm() * i_other.norm()))
    return false;
  o_frame.axes[0] = i_edge.normalized();
  o_frame.axes[2] = normal.normalized();
  o_frame.axes[1] = o_frame.axes[2] * o_frame.axes[0];
  return true;
}

class CTreeBuilder
{
public:
  CTreeBuilder(const std::vector<ClumVect3>& i_corners, std::vector<CProximityNode>& o_nodes,
               std::vector<CProximityBox>& o_boxes, std::vector<CProximityPacket>& o_packets,
               std::vector<std::uint32_t>& o_places)
    : m_corners(i_corners), m_nodes(o_nodes), m_boxes(o_boxes), m_packets(o_packets), m_places(o_places)
  {
  }

  /// @return how many nodes have large parts under them.
  std::uint32_t build()
  {
    const std::uint32_t count = static_cast<std::uint32_t>(m_corners.size() / 3);
    m_order.resize(count);
    for (std::uint32_t i = 0; i < count; ++i)
      m_order[i] = i;
    m_ranges.reserve(count);
    m_aside.reserve(count);
    weigh();
    m_places.resize(count);
    m_parts.emplace_back();
    m_parts[0].count = count;
    cut(0, 0);
    addNode(1);
    writeBox(0, 0, m_parts[0]);
    m_large = std::max(TREE_LARGE, count / TREE_LARGE_SHARE);
    gatherAll();
    m_nodes.shrink_to_fit();
    m_boxes.shrink_to_fit();
    m_packets.shrink_to_fit();
    return m_countLargeNodes;
  }

private:
  const ClumVect3* triangle(std::uint32_t i_at) const { return &m_corners[3 * m_order[i_at]]; }

  /// The areas of the triangles, twice. Those without area count a little, so that there is always a frame.
  void weigh()
  {
    m_weights.reserve(m_corners.size() / 3);
    for (std::size_t i = 0; i < m_corners.size(); i += 3)
    {
      const ClumVect3 edge = m_corners[i + 1] - m_corners[i], other = m_corners[i + 2] - m_corners[i];
      m_weights.push_back((edge * other).norm() + 1e-9 * (edge.squaredNorm() + other.squaredNorm()));
    }
  }
  static std::uint32_t stepFor(const CTreePart& i_part, unsigned int i_samples) { return 1 + i_part.count / i_samples; }

  // Cuts.

  void cut(std::uint32_t i_part, unsigned int i_depth)
  {
    fit(m_parts[i_part]);
    const std::uint32_t first = m_parts[i_part].first, count = m_parts[i_part].count;
    const std::uint32_t half = count > 1 ? findCut(m_parts[i_part], i_depth) : 0;
    if (half == 0)
      return;
    const std::uint32_t child = static_cast<std::uint32_t>(m_parts.size());
    m_parts[i_part].child = child;
    m_parts.resize(child + 2);
    m_parts[child].first = first;
    m_parts[child].count = half;
    m_parts[child + 1].first = first + half;
    m_parts[child + 1].count = count - half;
    cut(child, i_depth + 1);
    cut(child + 1, i_depth + 1);
  }

  /// Looks for a frame in which the box is small.
  void fit(CTreePart& io_part)
  {
    double matrix[6];
    spread(io_part, matrix);
    std::vector<CTreeAxes>& frames = m_frames;
    frames.assign(1, mainAxes(matrix));
    frames.push_back({{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}});
    addTriangleFrames(io_part, frames);
    // Of many triangles, some will do to tell the frames apart.
    const std::uint32_t step = stepFor(io_part, TREE_SAMPLES);
    io_part.surface = TREE_INFINITY;
    for (const CTreeAxes& frame : frames)
    {
      // What is a little better only for rounding is not better.
      const double limit = io_part.surface * (1.0 - 1e-6);
      const CTreeRange range = rangeOf(io_part, frame, step, limit);
      if (range.surface() < limit)
      {
        io_part.surface = range.surface();
        io_part.frame = frame;
        io_part.range = range;
      }
    }
    if (step > 1)
      io_part.range = CTreeRange();
  }

  /// Of every so manieth triangle; once the surface is found to reach a limit, no more are looked at.
  CTreeRange rangeOf(const CTreePart& i_part, const CTreeAxes& i_frame, std::uint32_t i_step,
                     double i_limit = TREE_INFINITY) const
  {
    constexpr std::uint32_t LOOK = 4;
    CTreeRange range;
    const std::uint32_t end = i_part.first + i_part.count;
    for (std::uint32_t i = i_part.first; i < end;)
    {
      for (std::uint32_t k = 0; k < LOOK && i < end; ++k, i += i_step)
        range.add(rangeIn(i_frame, triangle(i)));
      if (range.surface() >= i_limit)
        break;
    }
    return range;
  }

  /// The second moments of the surface about its centre.
  void spread(const CTreePart& i_part, double o_matrix[6]) const
  {
    double weight = 0.0, sum[3] = {0, 0, 0}, products[6] = {0, 0, 0, 0, 0, 0};
    const ClumVect3 origin = triangle(i_part.first)[0];
    const std::uint32_t step = stepFor(i_part, TREE_CUT_SAMPLES);
    for (std::uint32_t i = i_part.first; i < i_part.first + i_part.count; i += step)
    {
      const ClumVect3* t = triangle(i);
      const ClumVect3 a = t[0] - origin, b = t[1] - origin, c = t[2] - origin, s = a + b + c;
      const double w = m_weights[m_order[i]];
      weight += w;
      for (unsigned int k = 0; k < 3; ++k)
        sum[k] += w * s[k];
      for (unsigned int k = 0; k < 3; ++k)
      {
        const unsigned int l = (k + 1) % 3;
        products[k] += w * (s[k] * s[k] + a[k] * a[k] + b[k] * b[k] + c[k] * c[k]);
        products[3 + k] += w * (s[k] * s[l] + a[k] * a[l] + b[k] * b[l] + c[k] * c[l]);
      }
    }
    const double inverse = weight > 0.0 ? 1.0 / weight : 0.0;
    for (unsigned int k = 0; k < 3; ++k)
    {
      const unsigned int l = (k + 1) % 3;
      o_matrix[k] = products[k] * inverse / 12.0 - sum[k] * sum[k] * inverse * inverse / 9.0;
      o_matrix[3 + k] = products[3 + k] * inverse / 12.0 - sum[k] * sum[l] * inverse * inverse / 9.0;
    }
  }

  /// Frames of the largest triangle: along each of its edges.
  void addTriangleFrames(const CTreePart& i_part, std::vector<CTreeAxes>& io_frames) const
  {
    std::uint32_t largest = i_part.first;
    const std::uint32_t step = stepFor(i_part, TREE_CUT_SAMPLES);
    for (std::uint32_t i = i_part.first; i < i_part.first + i_part.count; i += step)
      if (m_weights[m_order[i]] > m_weights[m_order[largest]])
        largest = i;
    const ClumVect3* t = triangle(largest);
    CTreeAxes frame;
    for (unsigned int k = 0; k < 3; ++k)
      if (edgeFrame(t[(k + 1) % 3] - t[k], t[(k + 2) % 3] - t[k], frame))
        io_frames.push_back(frame);
  }

  static CTreeRange rangeIn(const CTreeAxes& i_frame, const ClumVect3* i_corners)
  {
    CTreeRange range;
    for (unsigned int k = 0; k < 3; ++k)
    {
      const double a = i_frame.axes[k].scalarProduct(i_corners[0]), b = i_frame.axes[k].scalarProduct(i_corners[1]);
      const double c = i_frame.axes[k].scalarProduct(i_corners[2]);
      range.low[k] = std::min(std::min(a, b), c);
      range.high[k] = std::max(std::max(a, b), c);
    }
    return range;
  }

  struct CChoice
  {
    double cost = TREE_INFINITY;
    unsigned int axis = 0;
    unsigned int bin = 0; ///< the last that comes first
    double low = 0.0;
    double scale = 0.0;
  };

  /// Sorts the triangles of a part into two and returns how many come first; 0 if the part is to be a leaf.
  std::uint32_t findCut(CTreePart& io_part, unsigned int i_depth)
  {
    // Of many triangles, some will do to tell where to cut.
    const std::uint32_t step = i_depth < TREE_FREE_DEPTH ? stepFor(io_part, TREE_CUT_SAMPLES) : 1;
    CTreeRange whole, middles;
    findRanges(io_part, step, whole, middles);
    if (step == 1)
      io_part.range = whole;
    CChoice best;
    if (i_depth < TREE_FREE_DEPTH)
      tryAxes(middles, best);
    if (io_part.count <= TREE_LEAF)
    {
      if (!(best.cost < TREE_LEAF_CUT * whole.leafCost()))
        return 0;
    }
    else if (!(best.cost < TREE_INFINITY))
    {
      findRanges(io_part, 1, whole, middles);
      return halve(io_part, middles.high[0] - middles.low[0] >= middles.high[1] - middles.low[1] ? 0 : 1);
    }
    return part(io_part, step == 1, best);
  }

  /// Sorts the triangles of a part by a cut, those of either side in their order. @return how many come first.
  std::uint32_t part(const CTreePart& i_part, bool i_hasRanges, const CChoice& i_cut)
  {
    const ClumVect3& axis = i_part.frame.axes[i_cut.axis];
    std::uint32_t* order = &m_order[i_part.first];
    std::uint32_t countFirst = 0;
    m_aside.clear();
    for (std::uint32_t i = 0; i < i_part.count; ++i)
    {
      const std::uint32_t rank = order[i];
      const double at = i_hasRanges ? m_ranges[i].twiceMiddle(i_cut.axis) : twiceMiddle(axis, &m_corners[3 * rank]);
      if (binOf(at, i_cut) <= i_cut.bin)
        order[countFirst++] = rank;
      else
        m_aside.push_back(rank);
    }
    std::copy(m_aside.begin(), m_aside.end(), order + countFirst);
    return countFirst;
  }

  /// Of every so manieth triangle.
  void findRanges(const CTreePart& i_part, std::uint32_t i_step, CTreeRange& o_whole, CTreeRange& o_middles)
  {
    o_whole = o_middles = CTreeRange();
    m_ranges.clear();
    for (std::uint32_t i = i_part.first; i < i_part.first + i_part.count; i += i_step)
    {
      const CTreeRange range = rangeIn(i_part.frame, triangle(i));
      m_ranges.push_back(range);
      o_whole.add(range);
      for (unsigned int k = 0; k < 3; ++k)
      {
        o_middles.low[k] = std::min(o_middles.low[k], range.twiceMiddle(k));
        o_middles.high[k] = std::max(o_middles.high[k], range.twiceMiddle(k));
      }
    }
  }

  static double twiceMiddle(const ClumVect3& i_axis, const ClumVect3* i_corners)
  {
    const double a = i_axis.scalarProduct(i_corners[0]), b = i_axis.scalarProduct(i_corners[1]);
    const double c = i_axis.scalarProduct(i_corners[2]);
    return std::min(std::min(a, b), c) + std::max(std::max(a, b), c);
  }

  static unsigned int binOf(double i_twiceMiddle, const CChoice& i_choice)
  {
    const double at = (i_twiceMiddle - i_choice.low) * i_choice.scale;
    return at > 0.0 ? static_cast<unsigned int>(std::min(at, TREE_BINS - 1.0)) : 0;
  }

  /// The cost of a cut is the sum of the surfaces, each times the packets under it.
  void tryAxes(const CTreeRange& i_middles, CChoice& io_best) const
  {
    CTreeRange ranges[3][TREE_BINS];
    std::uint32_t counts[3][TREE_BINS] = {};
    CChoice choices[3];
    for (unsigned int k = 0; k < 3; ++k)
    {
      choices[k].axis = k;
      choices[k].low = i_middles.low[k];
      choices[k].scale = TREE_BINS / (i_middles.high[k] - i_middles.low[k]);
    }
    for (const CTreeRange& range : m_ranges)
      for (unsigned int k = 0; k < 3; ++k)
      {
        const unsigned int bin = binOf(range.twiceMiddle(k), choices[k]);
        ranges[k][bin].add(range);
        ++counts[k][bin];
      }
    for (unsigned int k = 0; k < 3; ++k)
      if (std::isfinite(choices[k].scale) && i_middles.high[k] > i_middles.low[k])
        tryAxis(choices[k], ranges[k], counts[k], io_best);
  }

  static void tryAxis(CChoice i_choice, const CTreeRange i_ranges[TREE_BINS], const std::uint32_t i_counts[TREE_BINS],
                      CChoice& io_best)
  {
    // To cut behind an empty bin is to cut before it.
    double costs[TREE_BINS] = {}, cost = TREE_INFINITY;
    CTreeRange sum;
    std::uint32_t count = 0;
    for (unsigned int bin = TREE_BINS - 1; bin > 0; --bin)
    {
      if (i_counts[bin] > 0)
      {
        sum.add(i_ranges[bin]);
        count += i_counts[bin];
        cost = partCost(sum, count);
      }
      costs[bin - 1] = cost;
    }
    sum = CTreeRange();
    count = 0;
    for (unsigned int bin = 0; bin + 1 < TREE_BINS; ++bin)
    {
      if (i_counts[bin] == 0)
        continue;
      sum.add(i_ranges[bin]);
      count += i_counts[bin];
      i_choice.cost = partCost(sum, count) + costs[bin];
      i_choice.bin = bin;
      if (i_choice.cost < io_best.cost)
        io_best = i_choice;
    }
  }

  static double partCost(const CTreeRange& i_range, std::uint32_t i_count)
  {
    return i_count < TREE_LEAF ? i_range.leafCost() : i_range.surface() * ((i_count + TREE_LEAF - 1) / TREE_LEAF);
  }

  /// By the ranges of all triangles of the part.
  std::uint32_t halve(const CTreePart& i_part, unsigned int i_axis)
  {
    std::vector<std::pair<double, std::uint32_t>> places;
    for (std::uint32_t i = 0; i < i_part.count; ++i)
      places.emplace_back(m_ranges[i].twiceMiddle(i_axis), m_order[i_part.first + i]);
    std::sort(places.begin(), places.end());
    for (std::uint32_t i = 0; i < i_part.count; ++i)
      m_order[i_part.first + i] = places[i].second;
    return i_part.count / 2;
  }

  // Nodes.

  /// Writes the large parts, level by level, so that their nodes and boxes come first, then all under them.
  void gatherAll()
  {
    std::vector<CTreeSlot> slots = {{0, 0}}, rest;
    for (std::size_t i = 0; i < slots.size(); ++i)
    {
      const CTreeSlot slot = slots[i];
      if (m_parts[slot.part].child == 0 || m_parts[slot.part].count <= m_large)
      {
        rest.push_back(slot);
        continue;
      }
      m_boxes[slot.box].child = gatherNode(slot.part, slots);
    }
    m_countLargeNodes = static_cast<std::uint32_t>(m_nodes.size());
    for (const CTreeSlot& slot : rest)
      m_boxes[slot.box].child = gather(slot.part);
  }

  /// Writes a part as a leaf, or as a node with all under it. @return the child.
  std::uint32_t gather(std::uint32_t i_part)
  {
    if (m_parts[i_part].child == 0)
      return writeLeaf(m_parts[i_part]);
    std::vector<CTreeSlot> slots;
    const std::uint32_t rank = gatherNode(i_part, slots);
    for (const CTreeSlot& slot : slots)
    {
      const std::uint32_t child = gather(slot.part);
      m_boxes[slot.box].child = child;
    }
    return rank;
  }

  /// Writes a node, with boxes that have no child yet. @return its rank.
  std::uint32_t gatherNode(std::uint32_t i_part, std::vector<CTreeSlot>& io_slots)
  {
    std::uint32_t members[8] = {m_parts[i_part].child, m_parts[i_part].child + 1};
    unsigned int count = 2;
    while (count < 8)
    {
      // The largest one that can be cut gives way to its two.
      unsigned int largest = count;
      for (unsigned int k = 0; k < count; ++k)
        if (m_parts[members[k]].child != 0 &&
            (largest == count || m_parts[members[k]].surface > m_parts[members[largest]].surface))
          largest = k;
      if (largest == count)
        break;
      const std::uint32_t child = m_parts[members[largest]].child;
      members[largest] = child;
      members[count++] = child + 1;
    }
    const std::uint32_t rank = addNode(count), firstBox = m_nodes[rank].firstBox;
    for (unsigned int k = 0; k < count; ++k)
    {
      writeBox(rank, k, m_parts[members[k]]);
      io_slots.push_back({members[k], firstBox + k});
    }
    return rank;
  }

  /// @return its rank.
  std::uint32_t addNode(unsigned int i_countBoxes)
  {
    CProximityNode node = {};
    // What is not used is far outside of everything: no key of it is ever below a threshold.
    for (auto& halves : node.half)
      for (float& half : halves)
        half = -1e30f;
    node.firstBox = static_cast<std::uint32_t>(m_boxes.size());
    node.countBoxes = i_countBoxes;
    m_nodes.push_back(node);
    m_boxes.resize(m_boxes.size() + i_countBoxes);
    return static_cast<std::uint32_t>(m_nodes.size() - 1);
  }

  void writeBox(std::uint32_t i_node, unsigned int i_lane, const CTreePart& i_part)
  {
    const CTreeRange range =
      i_part.range.low[0] <= i_part.range.high[0] ? i_part.range : rangeOf(i_part, i_part.frame, 1);
    std::array<unsigned int, 3> order = {0, 1, 2};
    std::sort(order.begin(), order.end(),
              [&](unsigned int a, unsigned int b)
              {
                const double sizeA = range.high[a] - range.low[a], sizeB = range.high[b] - range.low[b];
                return sizeA > sizeB || (sizeA == sizeB && a < b);
              });
    ClumVect3 middle;
    for (unsigned int k = 0; k < 3; ++k)
      middle += i_part.frame.axes[k] * (0.5 * (range.low[k] + range.high[k]));
    // The box is what its numbers in single precision say, so the halves are measured with these.
    CProximityBox box = {};
    CTreeAxes rounded;
    ClumVect3 center;
    for (unsigned int c = 0; c < 3; ++c)
    {
      box.center[c] = static_cast<float>(middle[c]);
      center[c] = box.center[c];
      for (unsigned int k = 0; k < 3; ++k)
      {
        box.axes[k][c] = static_cast<float>(i_part.frame.axes[order[k]][c]);
        rounded.axes[k][c] = box.axes[k][c];
      }
    }
    double half[3] = {0.0, 0.0, 0.0};
    for (std::uint32_t i = i_part.first; i < i_part.first + i_part.count; ++i)
      for (unsigned int v = 0; v < 3; ++v)
        for (unsigned int k = 0; k < 3; ++k)
          half[k] = std::max(half[k], std::fabs(rounded.axes[k].scalarProduct(triangle(i)[v] - center)));
    for (unsigned int k = 0; k < 3; ++k)
      box.axes[k][3] = static_cast<float>(half[k] * TREE_OUTWARD);
    enter(box, i_node, i_lane);
  }

  void enter(const CProximityBox& i_box, std::uint32_t i_node, unsigned int i_lane)
  {
    CProximityNode& node = m_nodes[i_node];
    m_boxes[node.firstBox + i_lane] = i_box;
    for (unsigned int k = 0; k < 3; ++k)
    {
      node.center[k][i_lane] = i_box.center[k];
      node.half[k][i_lane] = i_box.axes[k][3];
      for (unsigned int c = 0; c < 3; ++c)
        node.axes[k][c][i_lane] = i_box.axes[k][c];
    }
  }

  std::uint32_t writeLeaf(const CTreePart& i_part)
  {
    if (m_packets.empty() || m_filled + i_part.count > TREE_LEAF)
    {
      m_packets.emplace_back();
      m_filled = 0;
    }
    const std::uint32_t packet = static_cast<std::uint32_t>(m_packets.size() - 1);
    const std::uint32_t child =
      PROXIMITY_LEAF | (i_part.count - 1) << PROXIMITY_COUNT_SHIFT | m_filled << PROXIMITY_FIRST_SHIFT | packet;
    for (std::uint32_t i = i_part.first; i < i_part.first + i_part.count; ++i)
    {
      m_places[m_order[i]] = 4 * packet + m_filled;
      writeTriangle(m_packets[packet], m_filled, m_order[i]);
      // The lanes behind are filled too: those that stay free repeat a triangle.
      for (std::uint32_t lane = m_filled + 1; lane < TREE_LEAF; ++lane)
        repeatTriangle(m_packets[packet], m_filled, lane);
      ++m_filled;
    }
    return child;
  }

  static void repeatTriangle(CProximityPacket& io_packet, std::uint32_t i_from, std::uint32_t i_to)
  {
    for (unsigned int c = 0; c < 3; ++c)
    {
      for (auto& corner : io_packet.corners)
        corner[c][i_to] = corner[c][i_from];
      io_packet.normal[c][i_to] = io_packet.normal[c][i_from];
    }
    io_packet.id[i_to] = io_packet.id[i_from];
  }

  void writeTriangle(CProximityPacket& o_packet, std::uint32_t i_lane, std::uint32_t i_triangle) const
  {
    const ClumVect3* corners = &m_corners[3 * i_triangle];
    const ClumVect3 normal = lumTriangleNormal(corners);
    for (unsigned int c = 0; c < 3; ++c)
    {
      for (unsigned int v = 0; v < 3; ++v)
        o_packet.corners[v][c][i_lane] = corners[v][c];
      o_packet.normal[c][i_lane] = normal[c];
    }
    o_packet.id[i_lane] = i_triangle;
  }

  const std::vector<ClumVect3>& m_corners;
  std::vector<CProximityNode>& m_nodes;
  std::vector<CProximityBox>& m_boxes;
  std::vector<CProximityPacket>& m_packets;
  std::vector<std::uint32_t>& m_places;
  std::vector<std::uint32_t> m_order;
  std::vector<double> m_weights; ///< of the triangles
  std::vector<CTreeRange>
    m_ranges; ///< of the part that is being cut in its frame: of those triangles that are looked at
  std::vector<std::uint32_t> m_aside;
  std::vector<CTreePart> m_parts;
  std::vector<CTreeAxes> m_frames;
  std::uint32_t m_filled = 0; ///< lanes of the last packet
  std::uint32_t m_large = 0;  ///< parts of more triangles are
  std::uint32_t m_countLargeNodes = 0;
};
} // namespace

std::uint32_t lumBuildProximityTree(const std::vector<ClumVect3>& i_corners, std::vector<CProximityNode>& o_nodes,
                                    std::vector<CProximityBox>& o_boxes, std::vector<CProximityPacket>& o_packets,
                                    std::vector<std::uint32_t>& o_places)
{
  return CTreeBuilder(i_corners, o_nodes, o_boxes, o_packets, o_places).build();
}
