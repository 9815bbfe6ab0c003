#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

/// A nearest-neighbour index: a cover tree of base 2 that grows by insertion and has no removal.
///
/// A record of level l stands for the radius 2^l: a child of level l - 1 lies within 2^l of its parent. Each child
/// entry carries its distance to the parent and the distance of its farthest descendant, so that most of a tree is
/// ruled out by the triangle inequality without measuring. (Beygelzimer, Kakade and Langford, "Cover trees for nearest
/// neighbor", 2006.)
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
    DUPLICATE, ///< an element at distance 0 stands there already: of the two the one that precedes is kept
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
      addRecord(i_element, i_query, NONE, ROOT_LEVEL);
      return INSERTED;
    }
    const DISTANCE distance = measure(i_query, 0);
    if (!std::isfinite(distance))
      return UNDEFINED;
    if (distance == 0)
      return keepOneOf(0, i_element, i_query);

    CPlace place;
    if (distance > std::ldexp(DISTANCE(1), m_records.front().level))
    {
      m_records.front().level = ceilLog2(distance);
      place = CPlace{0, m_records.front().level, distance};
    }
    else
    {
      const EInsertion found = findParent(i_query, distance, place);
      if (found != INSERTED)
        return found == DUPLICATE ? keepOneOf(place.parent, i_element, i_query) : found;
    }
    attach(i_element, i_query, place);
    return INSERTED;
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
    unsigned int parent;
    int level;
    std::vector<CChild> children; ///< by descending level
  };

  /// A record on the way down: its children from `next` on are still to come.
  struct CCover
  {
    unsigned int rank;
    unsigned int next;
    DISTANCE distance;
  };

  /// Where a new record goes: below `parent`, at `level` - 1.
  struct CPlace
  {
    unsigned int parent = NONE;
    int level = 0;
    DISTANCE distance = 0;
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

  void addRecord(const ELEMENT& i_element, const TQuery& i_query, unsigned int i_parent, int i_level)
  {
    m_metric.add(i_element, i_query);
    m_records.push_back(CRecord{i_element, i_parent, i_level, {}});
  }

  /// Walks down with the records that cover the query, level by level; levels at which nothing is met are leapt over.
  /// The deepest level at which some record still covers the query gives the place: below the nearest such record.
  EInsertion findParent(const TQuery& i_query, DISTANCE i_rootDistance, CPlace& o_place)
  {
    m_cover.assign(1, CCover{0, 0, i_rootDistance});
    for (int level = m_records.front().level; !m_cover.empty();)
    {
      const CCover nearest = *std::min_element(
        m_cover.begin(), m_cover.end(), [](const CCover& a, const CCover& b) { return a.distance < b.distance; });
      const bool isCovered = nearest.distance <= std::ldexp(DISTANCE(1), level);
      int childLevel = 0;
      const bool hasChildren = nextChildLevel(childLevel);
      if (!hasChildren || childLevel < level - 1)
      {
        const int lowest = hasChildren ? childLevel + 2 : std::numeric_limits<int>::min();
        if (isCovered)
          o_place = CPlace{nearest.rank, std::max(ceilLog2(nearest.distance), lowest), nearest.distance};
        if (!hasChildren)
          break;
        dropFartherThan(std::ldexp(DISTANCE(1), lowest));
        level = childLevel + 1;
        continue;
      }
      if (isCovered)
        o_place = CPlace{nearest.rank, level, nearest.distance};
      const EInsertion met = meetChildren(i_query, level, o_place.parent);
      if (met != INSERTED)
        return met;
      --level;
    }
    return INSERTED;
  }

  bool nextChildLevel(int& o_level) const
  {
    bool isFound = false;
    for (const CCover& cover : m_cover)
    {
      const std::vector<CChild>& children = m_records[cover.rank].children;
      if (cover.next < children.size() && (!isFound || children[cover.next].level > o_level))
      {
        o_level = children[cover.next].level;
        isFound = true;
      }
    }
    return isFound;
  }

  void dropFartherThan(DISTANCE i_radius)
  {
    m_cover.erase(
      std::remove_if(m_cover.begin(), m_cover.end(), [&](const CCover& cover) { return cover.distance > i_radius; }),
      m_cover.end());
  }

  /// Replaces the covering records of a level by those among them and their children of the next level that are within
  /// the level's radius.
  /// @param o_twin the record at distance 0, if there is one.
  EInsertion meetChildren(const TQuery& i_query, int i_level, unsigned int& o_twin)
  {
    const DISTANCE radius = std::ldexp(DISTANCE(1), i_level);
    m_met.clear();
    for (CCover& cover : m_cover)
    {
      const std::vector<CChild>& children = m_records[cover.rank].children;
      for (; cover.next < children.size() && children[cover.next].level == i_level - 1; ++cover.next)
      {
        const CChild& child = children[cover.next];
        const DISTANCE slack = SLACK * (cover.distance + child.parentDistance);
        if (std::fabs(cover.distance - child.parentDistance) > radius + slack)
          continue;
        const DISTANCE distance = measure(i_query, child.rank);
        if (!std::isfinite(distance))
          return UNDEFINED;
        if (distance == 0)
        {
          o_twin = child.rank;
          return DUPLICATE;
        }
        if (distance <= radius)
          m_met.push_back(CCover{child.rank, 0, distance});
      }
    }
    dropFartherThan(radius);
    m_cover.insert(m_cover.end(), m_met.begin(), m_met.end());
    return INSERTED;
  }

  EInsertion keepOneOf(unsigned int i_rank, const ELEMENT& i_element, const TQuery& i_query)
  {
    if (m_metric.precedes(i_element, m_records[i_rank].element))
    {
      m_records[i_rank].element = i_element;
      m_metric.replace(i_rank, i_element, i_query);
    }
    return DUPLICATE;
  }

  void attach(const ELEMENT& i_element, const TQuery& i_query, const CPlace& i_place)
  {
    const CChild child{i_place.distance, 0, size(), i_place.level - 1};
    std::vector<CChild>& siblings = m_records[i_place.parent].children;
    const auto at = std::upper_bound(siblings.begin(), siblings.end(), child,
                                     [](const CChild& a, const CChild& b) { return a.level > b.level; });
    siblings.insert(at, child);
    growRadii(i_query, i_place);
    addRecord(i_element, i_query, i_place.parent, child.level);
  }

  void growRadii(const TQuery& i_query, const CPlace& i_place)
  {
    for (unsigned int rank = i_place.parent; rank != 0; rank = m_records[rank].parent)
    {
      const CRecord& record = m_records[rank];
      std::vector<CChild>& siblings = m_records[record.parent].children;
      auto entry = std::lower_bound(siblings.begin(), siblings.end(), record.level,
                                    [](const CChild& child, int level) { return child.level > level; });
      while (entry->rank != rank)
        ++entry;
      entry->radius = std::max(entry->radius, measure(i_query, rank));
    }
    m_rootRadius = std::max(m_rootRadius, measure(i_query, 0));
  }

  void visit(const TQuery& i_query, unsigned int i_rank, DISTANCE i_radius, CBest& io_best) const
  {
    const DISTANCE squared = m_metric.squaredDistance(i_query, i_rank);
    const DISTANCE distance = std::sqrt(squared);
    if (distance <= io_best.distance && isBetter(i_rank, squared, io_best))
      io_best = CBest{i_rank, squared, distance};
    const DISTANCE lower = distance - i_radius - SLACK * (distance + i_radius);
    if (lower > io_best.distance || m_records[i_rank].children.empty())
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
  std::vector<CCover> m_cover;          ///< scratch of an insertion
  std::vector<CCover> m_met;            ///< scratch of an insertion
  mutable std::vector<CPending> m_heap; ///< scratch of a query
};
