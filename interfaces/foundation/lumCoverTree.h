#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

/// A nearest-neighbour index: a cover tree of base 2 that grows by insertion and has no removal.
///
/// A record of level l stands for the radius 2^l: a child of level l - 1 lies within 2^l of its parent. (Beygelzimer,
/// Kakade and Langford, "Cover trees for nearest neighbor", 2006.) An insertion follows the nearest covering child down
/// instead of all covering records of a level: the tree may hang a little worse, but an insertion costs a hundredth.
/// (Izbicki and Shelton, "Faster cover trees", 2015.) Each child entry carries its distance to the parent and the
/// distance of its farthest descendant, so that most of a tree is ruled out by the triangle inequality without
/// measuring.
///
/// `METRIC` holds what is measured, by rank of insertion:
///
///     using TQuery = ...;                                                    // what is measured from
///     void add(const ELEMENT&, const TQuery&);                               // the element takes the next rank
///     void replace(unsigned int i_rank, const ELEMENT&, const TQuery&);      // by one at distance 0
///     DISTANCE squaredDistance(const TQuery&, unsigned int i_rank) const;
///     bool precedes(const ELEMENT&, const ELEMENT&) const;                   // who wins among equal distances
///     std::size_t allocatedBytes() const;
///
/// It must be symmetric and keep the triangle inequality. Queries use scratch memory of the tree: one thread at a time.
template <class ELEMENT, class METRIC, class DISTANCE>
class ClumCoverTree
{
public:
  using TQuery = typename METRIC::TQuery;

  enum EInsertion
  {
    INSERTED,
    DUPLICATE, ///< an element at distance 0 was met: of the two the one that precedes is kept
    UNDEFINED  ///< a distance was infinite or not a number: the tree is as it was
  };

  explicit ClumCoverTree(METRIC i_metric) : m_metric(std::move(i_metric)) {}

  unsigned int size() const { return static_cast<unsigned int>(m_records.size()); }
  METRIC& metric() { return m_metric; }
  const METRIC& metric() const { return m_metric; }
  const ELEMENT& root() const { return m_records.front().element; }

  /// @param i_query measures from the element.
  EInsertion insert(const ELEMENT& i_element, const TQuery& i_query)
  {
    if (m_records.empty())
    {
      addRecord(i_element, i_query, ROOT_LEVEL);
      return INSERTED;
    }
    const EInsertion found = walkDown(i_query);
    if (found == DUPLICATE)
      keepOneOf(m_way.back().rank, i_element, i_query);
    if (found == INSERTED)
      attach(i_element, i_query);
    return found;
  }

  /// The nearest element among those not farther than `i_bound`; null if there is none.
  const ELEMENT* nearest(const TQuery& i_query, DISTANCE i_bound = std::numeric_limits<DISTANCE>::infinity()) const
  {
    if (m_records.empty())
      return nullptr;
    CBest best{NONE, std::numeric_limits<DISTANCE>::infinity(), i_bound};
    m_heap.clear();
    visit(i_query, 0, m_rootRadius, best);
    while (!m_heap.empty())
    {
      std::pop_heap(m_heap.begin(), m_heap.end());
      const CPending pending = m_heap.back();
      m_heap.pop_back();
      if (pending.lower > best.distance)
        break;
      visitChildren(i_query, pending, best);
    }
    return best.rank == NONE ? nullptr : &m_records[best.rank].element;
  }

  /// Bytes held beside the object itself.
  std::size_t allocatedBytes() const
  {
    std::size_t bytes = m_records.capacity() * sizeof(CRecord) + m_metric.allocatedBytes();
    for (const CRecord& record : m_records)
      bytes += record.children.capacity() * sizeof(CChild);
    return bytes;
  }

private:
  static constexpr unsigned int NONE = ~0u;
  static constexpr int ROOT_LEVEL = -500; ///< of a lone root: below any real distance
  /// What a difference of computed distances may be wrong by, as a part of the distances.
  static constexpr DISTANCE SLACK = DISTANCE(1e-12);

  struct CChild
  {
    DISTANCE parentDistance;
    DISTANCE radius; ///< distance of the farthest descendant
    unsigned int rank;
    int level;
  };

  struct CRecord
  {
    ELEMENT element;
    int level;
    std::vector<CChild> children;
  };

  /// A record on the way down, and its place among its parent's children.
  struct CStep
  {
    unsigned int rank;
    unsigned int place;
    DISTANCE distance;
  };

  struct CPending
  {
    DISTANCE lower; ///< no descendant is nearer
    DISTANCE distance;
    unsigned int rank;
    bool operator<(const CPending& i_other) const { return lower > i_other.lower; }
  };

  struct CBest
  {
    unsigned int rank;
    DISTANCE squared;
    DISTANCE distance; ///< the bound until a record is found
  };

  DISTANCE measure(const TQuery& i_query, unsigned int i_rank) const
  {
    return std::sqrt(m_metric.squaredDistance(i_query, i_rank));
  }

  /// The smallest l with `i_distance` <= 2^l.
  static int ceilLog2(DISTANCE i_distance)
  {
    int exponent = 0;
    return std::frexp(i_distance, &exponent) == DISTANCE(0.5) ? exponent - 1 : exponent;
  }

  void addRecord(const ELEMENT& i_element, const TQuery& i_query, int i_level)
  {
    m_metric.add(i_element, i_query);
    m_records.push_back(CRecord{i_element, i_level, {}});
  }

  /// Follows, from the root on, the nearest child that covers the query. The last record of the way becomes the parent.
  EInsertion walkDown(const TQuery& i_query)
  {
    const DISTANCE distance = measure(i_query, 0);
    m_way.assign(1, CStep{0, 0, distance});
    if (!std::isfinite(distance))
      return UNDEFINED;
    if (distance == 0)
      return DUPLICATE;
    if (distance > std::ldexp(DISTANCE(1), m_records.front().level))
    {
      m_records.front().level = ceilLog2(distance);
      return INSERTED;
    }
    CStep next;
    while (findCoveringChild(i_query, m_way.back(), next))
    {
      if (!std::isfinite(next.distance))
        return UNDEFINED;
      m_way.push_back(next);
      if (next.distance == 0)
        return DUPLICATE;
    }
    return INSERTED;
  }

  /// The nearest child within whose radius the query lies, or one whose distance is undefined.
  bool findCoveringChild(const TQuery& i_query, const CStep& i_parent, CStep& o_child) const
  {
    const std::vector<CChild>& children = m_records[i_parent.rank].children;
    bool isFound = false;
    for (unsigned int i = 0; i < children.size(); ++i)
    {
      const CChild& child = children[i];
      const DISTANCE radius = std::ldexp(DISTANCE(1), child.level);
      const DISTANCE reach = isFound ? std::min(radius, o_child.distance) : radius;
      const DISTANCE slack = SLACK * (i_parent.distance + child.parentDistance);
      if (std::fabs(i_parent.distance - child.parentDistance) > reach + slack)
        continue;
      const DISTANCE distance = measure(i_query, child.rank);
      if (distance > radius && std::isfinite(distance))
        continue;
      if (isFound && distance >= o_child.distance)
        continue;
      o_child = CStep{child.rank, i, distance};
      isFound = true;
      if (!std::isfinite(distance))
        break;
    }
    return isFound;
  }

  void keepOneOf(unsigned int i_rank, const ELEMENT& i_element, const TQuery& i_query)
  {
    if (m_metric.precedes(i_element, m_records[i_rank].element))
    {
      m_records[i_rank].element = i_element;
      m_metric.replace(i_rank, i_element, i_query);
    }
  }

  /// Hangs the element below the last record of the way, all of which it becomes a descendant of.
  void attach(const ELEMENT& i_element, const TQuery& i_query)
  {
    const CStep& parent = m_way.back();
    const int level = ceilLog2(parent.distance) - 1;
    m_records[parent.rank].children.push_back(CChild{parent.distance, 0, size(), level});
    m_rootRadius = std::max(m_rootRadius, m_way.front().distance);
    for (std::size_t i = 1; i < m_way.size(); ++i)
    {
      CChild& entry = m_records[m_way[i - 1].rank].children[m_way[i].place];
      entry.radius = std::max(entry.radius, m_way[i].distance);
    }
    addRecord(i_element, i_query, level);
  }

  /// @param i_radius of the descendants; 0 if there are none, for no descendant lies at the place of its ancestor.
  void visit(const TQuery& i_query, unsigned int i_rank, DISTANCE i_radius, CBest& io_best) const
  {
    const DISTANCE squared = m_metric.squaredDistance(i_query, i_rank);
    if (i_radius == 0 && squared > io_best.squared)
      return;
    const DISTANCE distance = std::sqrt(squared);
    if (distance <= io_best.distance && isBetter(i_rank, squared, io_best))
      io_best = CBest{i_rank, squared, distance};
    const DISTANCE lower = distance - i_radius - SLACK * (distance + i_radius);
    if (i_radius == 0 || lower > io_best.distance)
      return;
    m_heap.push_back(CPending{lower, distance, i_rank});
    std::push_heap(m_heap.begin(), m_heap.end());
  }

  bool isBetter(unsigned int i_rank, DISTANCE i_squared, const CBest& i_best) const
  {
    if (i_squared != i_best.squared || i_best.rank == NONE)
      return i_squared < i_best.squared;
    return m_metric.precedes(m_records[i_rank].element, m_records[i_best.rank].element);
  }

  void visitChildren(const TQuery& i_query, const CPending& i_parent, CBest& io_best) const
  {
    for (const CChild& child : m_records[i_parent.rank].children)
    {
      const DISTANCE slack = SLACK * (i_parent.distance + child.parentDistance + child.radius);
      if (std::fabs(i_parent.distance - child.parentDistance) - child.radius <= io_best.distance + slack)
        visit(i_query, child.rank, child.radius, io_best);
    }
  }

  METRIC m_metric;
  std::vector<CRecord> m_records; ///< the root first; a rank here is the rank in the metric
  DISTANCE m_rootRadius = 0;
  std::vector<CStep> m_way;             ///< scratch of an insertion
  mutable std::vector<CPending> m_heap; ///< scratch of a query
};
