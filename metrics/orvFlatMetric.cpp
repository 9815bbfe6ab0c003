#include "metrics/orvFlatMetric.h"

#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvJoint.h"
#include "kinematics/orvKinematicalEffect.h"
#include "metrics/orvMetricJointSweep.h"
#include "metrics/orvMetricRevolute.h"
#include "metrics/orvMetricSlerp.h"
#include "metrics/orvSolidJoint.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

/// A sub-space whose metric has to be called, with the two configurations to call it with.
struct CorvFlatMetric::COther
{
  COther(const CorvConfigSpaceShPtr& i_space, unsigned int i_rank)
    : rank(i_rank), count(i_space->size()), metric(i_space->metric()),
      solid(dynamic_cast<const CorvMetricSolid*>(metric.get())), a(i_space), b(i_space)
  {
    a.isSelfValidationEnabled(false);
    b.isSelfValidationEnabled(false);
  }

  double squaredDistance(const double* i_a, const double* i_b)
  {
    double d = 0.0;
    if (getSolidDistance(i_a, i_b, d))
      return d * d;
    return load(i_a, i_b) ? metric->squaredDistance(a, b) : 0.0;
  }

  double distance(const double* i_a, const double* i_b)
  {
    double d = 0.0;
    if (getSolidDistance(i_a, i_b, d))
      return d;
    return load(i_a, i_b) ? metric->distance(a, b) : 0.0;
  }

  /// A solid metric needs no configurations. @return false if it is none, or cannot tell.
  bool getSolidDistance(const double* i_a, const double* i_b, double& o_distance) const
  {
    const CorvJointShPtr joint = solid ? solid->joint() : CorvJointShPtr();
    if (!joint || joint->kinematicalEffect()->configSpace()->size() != count)
      return false;
    if (std::equal(i_a + rank, i_a + rank + count, i_b + rank))
      return true;
    const CorvKinematicalEffect& effect = *joint->kinematicalEffect();
    ClumMat4 poseA, poseB;
    if (effect.forward(i_a + rank, poseA).failed() || effect.forward(i_b + rank, poseB).failed())
      return false;
    o_distance = solid->solidDistance(poseA, poseB);
    return true;
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
  const CorvMetricSolid* solid; ///< the metric if it is one, or null
  CorvConfig a;
  CorvConfig b;
};

struct CorvFlatMetric::CSweep
{
  CorvMetricJointSweepConstShPtr metric;
  double scale;
};

struct CorvFlatForm::CSolid
{
  CorvMetricSlerpConstShPtr metric;
  CorvKinematicalEffectConstShPtr effect;
  double lever;
};

namespace
{
inline double flatDofDistance(bool i_isCircular, double i_scale, double i_a, double i_b)
{
  return i_isCircular ? i_scale * std::fabs(CorvMetricRevolute::circularDistance(i_a, i_b))
                      : std::fabs(i_b - i_a) * i_scale;
}

/// Equal values are not measured, so that an infinite factor does not come out as not a number.
inline double flatSquaredDofDistance(bool i_isCircular, double i_scale, double i_a, double i_b)
{
  if (i_a == i_b)
    return 0.0;
  const double d = flatDofDistance(i_isCircular, i_scale, i_a, i_b);
  return d * d;
}

// The loops have no branches, so that the compiler makes vector instructions of them.

inline void addSquaredColumn(double i_value, double i_scale, const double* i_column, double* io_squared)
{
  for (unsigned int i = 0; i < CorvFlatForm::BLOCK_SIZE; ++i)
  {
    const double d = std::fabs(i_column[i] - i_value) * i_scale;
    io_squared[i] += d * d;
  }
}

inline void addSquaredCircularColumn(double i_value, double i_scale, const double* i_column, double* io_squared)
{
  constexpr double PI = ClumGeometryUtilities::PI;
  double squared[CorvFlatForm::BLOCK_SIZE];
  std::int64_t isAnyFar = 0; // more than a full turn apart
  for (unsigned int i = 0; i < CorvFlatForm::BLOCK_SIZE; ++i)
  {
    const double difference = i_column[i] - i_value;
    const double turn = (difference >= PI ? 2.0 * PI : 0.0) - (difference < -PI ? 2.0 * PI : 0.0);
    const double d = i_scale * std::fabs(difference - turn);
    squared[i] = d * d;
    isAnyFar |= std::fabs(difference) < 2.0 * PI ? 0 : 1;
  }
  for (unsigned int i = 0; isAnyFar != 0 && i < CorvFlatForm::BLOCK_SIZE; ++i)
    squared[i] = flatSquaredDofDistance(true, i_scale, i_value, i_column[i]);
  for (unsigned int i = 0; i < CorvFlatForm::BLOCK_SIZE; ++i)
    io_squared[i] += squared[i];
}
} // namespace

CorvFlatForm::CorvFlatForm() = default;
CorvFlatForm::CorvFlatForm(const CorvFlatForm& i_other) = default;
CorvFlatForm& CorvFlatForm::operator=(const CorvFlatForm& i_other) = default;
CorvFlatForm::~CorvFlatForm() = default;

void CorvFlatForm::makePoint(const double* i_values, double* o_point) const
{
  for (const CEntry& entry : m_entries)
  {
    if (entry.kind != SOLID)
    {
      o_point[entry.place] = i_values[entry.rank];
      continue;
    }
    ClumMat4 pose;
    m_solids[entry.solid].effect->forward(i_values + entry.rank, pose);
    orvPointOfPose(pose, o_point + entry.place);
  }
}

double CorvFlatForm::squaredDistance(const double* i_pointA, const double* i_pointB) const
{
  double total = 0.0;
  for (const CEntry& entry : m_entries)
  {
    const double* a = i_pointA + entry.place;
    const double* b = i_pointB + entry.place;
    if (entry.kind != SOLID)
    {
      total += flatSquaredDofDistance(entry.kind == CIRCULAR, entry.scale, *a, *b);
      continue;
    }
    const double d = orvDistanceOfPoints(a, b, entry.scale);
    total += d * d;
  }
  return total;
}

bool CorvFlatForm::canMeasureBlocks() const
{
  return std::all_of(m_entries.begin(), m_entries.end(),
                     [](const CEntry& i_entry) { return i_entry.kind != SOLID && std::isfinite(i_entry.scale); });
}

bool CorvFlatForm::squaredDistancesOfBlock(const double* i_point, const double* i_block, double i_limit,
                                           double* o_squared) const
{
  constexpr std::int64_t FEW = 8; // so many are measured to the end one by one
  std::fill_n(o_squared, BLOCK_SIZE, 0.0);
  for (std::size_t rank = 0; rank < m_entries.size(); ++rank)
  {
    const CEntry& entry = m_entries[rank];
    const double* column = i_block + entry.place * BLOCK_SIZE;
    if (entry.kind == CIRCULAR)
      addSquaredCircularColumn(i_point[entry.place], entry.scale, column, o_squared);
    else
      addSquaredColumn(i_point[entry.place], entry.scale, column, o_squared);
    std::int64_t countWithin = 0;
    for (unsigned int i = 0; i < BLOCK_SIZE; ++i)
      countWithin += o_squared[i] > i_limit ? 0 : 1;
    if (countWithin == 0)
      return false;
    if (countWithin <= FEW && rank + 1 < m_entries.size())
    {
      finishSquaredDistances(i_point, i_block, rank + 1, i_limit, o_squared);
      break;
    }
  }
  return true;
}

/// Adds what is left, from an entry on, to the points that are still within the limit; the others become infinite.
void CorvFlatForm::finishSquaredDistances(const double* i_point, const double* i_block, std::size_t i_first,
                                          double i_limit, double* io_squared) const
{
  for (unsigned int i = 0; i < BLOCK_SIZE; ++i)
  {
    if (io_squared[i] > i_limit)
    {
      io_squared[i] = std::numeric_limits<double>::infinity();
      continue;
    }
    for (std::size_t rank = i_first; rank < m_entries.size(); ++rank)
    {
      const CEntry& entry = m_entries[rank];
      io_squared[i] += flatSquaredDofDistance(entry.kind == CIRCULAR, entry.scale, i_point[entry.place],
                                              i_block[entry.place * BLOCK_SIZE + i]);
    }
  }
}

bool CorvFlatForm::isCurrent() const
{
  return std::all_of(m_solids.begin(), m_solids.end(),
                     [](const CSolid& i_solid)
                     {
                       const CorvJointShPtr joint = i_solid.metric->joint();
                       return joint && joint->kinematicalEffect() == i_solid.effect &&
                              joint->maxSweep() == i_solid.lever;
                     });
}

bool CorvFlatForm::operator==(const CorvFlatForm& i_other) const
{
  return std::equal(m_entries.begin(), m_entries.end(), i_other.m_entries.begin(), i_other.m_entries.end(),
                    [](const CEntry& i_a, const CEntry& i_b)
                    { return i_a.kind == i_b.kind && i_a.rank == i_b.rank && i_a.scale == i_b.scale; }) &&
         std::equal(m_solids.begin(), m_solids.end(), i_other.m_solids.begin(), i_other.m_solids.end(),
                    [](const CSolid& i_a, const CSolid& i_b) { return i_a.effect == i_b.effect; });
}

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

double CorvFlatMetric::dofDistance(const CEntry& i_entry, double i_a, double i_b)
{
  return i_a == i_b ? 0.0 : flatDofDistance(i_entry.kind == CIRCULAR, i_entry.scale, i_a, i_b);
}

double CorvFlatMetric::squaredDistance(const double* i_a, const double* i_b) const
{
  double total = 0.0;
  for (const CEntry& entry : m_entries)
  {
    if (entry.kind != OTHER)
      total += flatSquaredDofDistance(entry.kind == CIRCULAR, entry.scale, i_a[entry.rank], i_b[entry.rank]);
    else
      total += m_others[entry.other].squaredDistance(i_a, i_b);
  }
  return total;
}

double CorvFlatMetric::sumOfDistances(const double* i_a, const double* i_b) const
{
  double total = 0.0;
  for (const CEntry& entry : m_entries)
  {
    if (entry.kind != OTHER)
      total += dofDistance(entry, i_a[entry.rank], i_b[entry.rank]);
    else
      total += m_others[entry.other].distance(i_a, i_b);
  }
  return total;
}

bool CorvFlatMetric::getForm(CorvFlatForm& o_form) const
{
  o_form = CorvFlatForm();
  CorvFlatForm form;
  for (const CEntry& entry : m_entries)
  {
    CorvFlatForm::CEntry numbers = {entry.kind == CIRCULAR ? CorvFlatForm::CIRCULAR : CorvFlatForm::ABSOLUTE,
                                    entry.rank, form.m_pointSize, entry.scale, 0};
    form.m_pointSize += 1;
    if (entry.kind == OTHER)
    {
      const auto slerp = boost::dynamic_pointer_cast<const CorvMetricSlerp>(m_others[entry.other].metric);
      const CorvJointShPtr joint = slerp ? slerp->joint() : CorvJointShPtr();
      if (!joint || joint->kinematicalEffect()->configSpace()->size() != m_others[entry.other].count)
        return false;
      numbers.kind = CorvFlatForm::SOLID;
      numbers.scale = slerp->lever() * CorvMetricSlerp::ROTATION_SCALE;
      numbers.solid = static_cast<unsigned int>(form.m_solids.size());
      form.m_solids.push_back({slerp, joint->kinematicalEffect(), slerp->lever()});
      form.m_pointSize += SOLID_POINT_SIZE - 1;
    }
    form.m_entries.push_back(numbers);
  }
  if (!m_sweeps.empty())
    return false;
  o_form = form;
  return true;
}
