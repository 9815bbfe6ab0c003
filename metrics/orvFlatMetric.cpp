#include "metrics/orvFlatMetric.h"

#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "metrics/orvMetricJointSweep.h"
#include "metrics/orvMetricRevolute.h"

#include <algorithm>
#include <cmath>

/// A sub-space whose metric has to be called, with the two configurations to call it with.
struct CorvFlatMetric::COther
{
  COther(const CorvConfigSpaceShPtr& i_space, unsigned int i_rank)
    : rank(i_rank), count(i_space->size()), metric(i_space->metric()), a(i_space), b(i_space)
  {
    a.isSelfValidationEnabled(false);
    b.isSelfValidationEnabled(false);
  }

  /// @return false, nothing loaded, if the values do not differ.
  bool load(const double* i_a, const double* i_b)
  {
    if (std::equal(i_a + rank, i_a + rank + count, i_b + rank))
      return false;
    a.setDofValues(i_a + rank, count);
    b.setDofValues(i_b + rank, count);
    return true;
  }

  unsigned int rank;
  unsigned int count;
  CorvMetricShPtr metric;
  CorvConfig a;
  CorvConfig b;
};

struct CorvFlatMetric::CSweep
{
  CorvMetricJointSweepConstShPtr metric;
  double scale;
};

namespace
{
/// Distance of one dof by an entry that is not OTHER.
inline double flatDofDistance(const CorvFlatMetric::CEntry& i_entry, double i_a, double i_b)
{
  if (i_entry.kind == CorvFlatMetric::ABSOLUTE)
    return std::fabs(i_b - i_a) * i_entry.scale;
  return i_entry.scale * std::fabs(CorvMetricRevolute::circularDistance(i_a, i_b));
}

inline double flatSquaredDofDistance(const CorvFlatMetric::CEntry& i_entry, const double* i_a, const double* i_b)
{
  const double a = i_a[i_entry.rank];
  const double b = i_b[i_entry.rank];
  if (a == b)
    return 0.0;
  const double d = flatDofDistance(i_entry, a, b);
  return d * d;
}
} // namespace

CorvFlatMetric::CorvFlatMetric() = default;
CorvFlatMetric::CorvFlatMetric(const CorvFlatMetric&)
{
}
CorvFlatMetric::~CorvFlatMetric() = default;

CorvFlatMetric& CorvFlatMetric::operator=(const CorvFlatMetric&)
{
  m_spaceAddress = nullptr;
  return *this;
}

bool CorvFlatMetric::isCurrent(const CorvConfigSpace& i_space) const
{
  const CorvConfigSpace& space = i_space.unwrapped();
  return m_spaceAddress == &space && m_version == space.version() && m_revision == CorvMetric::revision() &&
         !m_space.expired() && (m_sweeps.empty() || areSweepsCurrent());
}

bool CorvFlatMetric::areSweepsCurrent() const
{
  return std::all_of(m_sweeps.begin(), m_sweeps.end(),
                     [](const CSweep& i_sweep) { return i_sweep.metric->scale() == i_sweep.scale; });
}

void CorvFlatMetric::build(const CorvConfigSpace& i_space, const CorvMetric& i_owner, const char* i_family)
{
  m_entries.clear();
  m_others.clear();
  m_sweeps.clear();
  const CorvConfigSpace& space = i_space.unwrapped();
  addSubspaces(space, 0, i_owner, i_family);
  m_space = space.self();
  m_spaceAddress = &space;
  m_version = space.version();
  m_revision = CorvMetric::revision();
}

void CorvFlatMetric::addSubspaces(const CorvConfigSpace& i_space, unsigned int i_firstRank, const CorvMetric& i_owner,
                                  const char* i_family)
{
  unsigned int rank = i_firstRank;
  const unsigned int count = i_space.countSubspaces();
  for (unsigned int i = 0; i < count; ++i)
  {
    const CorvConfigSpaceShPtr subspace = i_space.subspace(i);
    add(subspace, rank, i_owner, i_family);
    rank += subspace->size();
  }
}

void CorvFlatMetric::add(const CorvConfigSpaceShPtr& i_space, unsigned int i_firstRank, const CorvMetric& i_owner,
                         const char* i_family)
{
  const CorvMetricShPtr metric = i_space->metric();
  const unsigned int count = i_space->size();
  if (!metric || count == 0)
    return;
  if (metric.get() == &i_owner || metric->type() == i_family)
  {
    addSubspaces(i_space->unwrapped(), i_firstRank, i_owner, i_family);
    return;
  }
  CEntry entry = {OTHER, i_firstRank, 1.0, 0};
  const bool isAbsolute = count == 1 && metric->isScaledAbsolute(entry.scale);
  const bool isCircular = count == 1 && metric->isScaledCircular(entry.scale);
  if (isAbsolute || isCircular)
  {
    entry.kind = isAbsolute ? ABSOLUTE : CIRCULAR;
    watchSweeps(metric);
  }
  else
  {
    entry.other = static_cast<unsigned int>(m_others.size());
    m_others.emplace_back(i_space, i_firstRank);
  }
  m_entries.push_back(entry);
}

void CorvFlatMetric::watchSweeps(const CorvMetricShPtr& i_metric)
{
  CorvMetricDecoratorShPtr decorator = boost::dynamic_pointer_cast<CorvMetricDecorator>(i_metric);
  while (decorator)
  {
    if (const auto sweep = boost::dynamic_pointer_cast<CorvMetricJointSweep>(decorator))
      m_sweeps.push_back({sweep, sweep->scale()});
    decorator = boost::dynamic_pointer_cast<CorvMetricDecorator>(decorator->decoratedMetric());
  }
}

double CorvFlatMetric::squaredDistance(const double* i_a, const double* i_b) const
{
  if (m_others.empty())
    return squaredDistance(m_entries, i_a, i_b);
  double total = 0.0;
  for (const CEntry& entry : m_entries)
  {
    if (entry.kind != OTHER)
      total += flatSquaredDofDistance(entry, i_a, i_b);
    else if (COther& other = m_others[entry.other]; other.load(i_a, i_b))
      total += other.metric->squaredDistance(other.a, other.b);
  }
  return total;
}

double CorvFlatMetric::sumOfDistances(const double* i_a, const double* i_b) const
{
  double total = 0.0;
  for (const CEntry& entry : m_entries)
  {
    if (entry.kind != OTHER)
    {
      const double a = i_a[entry.rank];
      const double b = i_b[entry.rank];
      total += a == b ? 0.0 : flatDofDistance(entry, a, b);
    }
    else if (COther& other = m_others[entry.other]; other.load(i_a, i_b))
      total += other.metric->distance(other.a, other.b);
  }
  return total;
}

bool CorvFlatMetric::getEntries(std::vector<CEntry>& o_entries) const
{
  o_entries.clear();
  if (!m_others.empty() || !m_sweeps.empty())
    return false;
  o_entries = m_entries;
  return true;
}

double CorvFlatMetric::squaredDistance(const std::vector<CEntry>& i_entries, const double* i_a, const double* i_b)
{
  double total = 0.0;
  for (const CEntry& entry : i_entries)
    total += flatSquaredDofDistance(entry, i_a, i_b);
  return total;
}
