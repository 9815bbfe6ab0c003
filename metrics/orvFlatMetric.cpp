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
#include <cstring>
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

/// Two numbers that are computed with at once. Written out, since a compiler that sees how short the loops are takes
/// them apart instead.
using TDoublePair __attribute__((vector_size(16))) = double;
using TMaskPair __attribute__((vector_size(16))) = std::int64_t;

inline TDoublePair loadPair(const double* i_numbers)
{
  TDoublePair pair;
  std::memcpy(&pair, i_numbers, sizeof pair);
  return pair;
}

inline TDoublePair twice(double i_number)
{
  return TDoublePair{i_number, i_number};
}

/// The number where the mask is set, 0 elsewhere.
inline TDoublePair where(TMaskPair i_mask, double i_number)
{
  return reinterpret_cast<TDoublePair>(i_mask & reinterpret_cast<TMaskPair>(twice(i_number)));
}

/// @param i_turn to be taken off the differences.
inline void addSquaredColumn(double i_value, double i_turn, double i_scale, const double* i_column,
                             std::size_t i_pairCount, TDoublePair* io_squared)
{
  const TDoublePair value = twice(i_value), turn = twice(i_turn), scale = twice(i_scale);
  for (std::size_t i = 0; i < i_pairCount; ++i)
  {
    const TDoublePair d = (loadPair(i_column + 2 * i) - value - turn) * scale;
    io_squared[i] += d * d;
  }
}

/// Of differences within two turns: what is taken off them is exact, as is a remainder.
inline void addSquaredCircularColumn(double i_value, double i_scale, const double* i_column, std::size_t i_pairCount,
                                     TDoublePair* io_squared)
{
  constexpr double PI = ClumGeometryUtilities::PI;
  const TDoublePair value = twice(i_value), scale = twice(i_scale);
  for (std::size_t i = 0; i < i_pairCount; ++i)
  {
    const TDoublePair difference = loadPair(i_column + 2 * i) - value;
    const TDoublePair angle =
      difference - (where(difference >= 2.0 * PI, 2.0 * PI) - where(difference <= -2.0 * PI, 2.0 * PI));
    const TDoublePair d = (angle - (where(angle >= PI, 2.0 * PI) - where(angle < -PI, 2.0 * PI))) * scale;
    io_squared[i] += d * d;
  }
}

/// @param i_from, i_to what all differences lie between.
void addSquaredAngles(double i_value, double i_from, double i_to, double i_scale, const double* i_column,
                      std::size_t i_pairCount, TDoublePair* io_squared)
{
  constexpr double PI = ClumGeometryUtilities::PI;
  // Within half a turn from a multiple of the full one, a circular difference is a plain one less that multiple.
  if (i_from >= -PI && i_to < PI)
    addSquaredColumn(i_value, 0.0, i_scale, i_column, i_pairCount, io_squared);
  else if (i_from >= PI && i_to < 3.0 * PI)
    addSquaredColumn(i_value, 2.0 * PI, i_scale, i_column, i_pairCount, io_squared);
  else if (i_from >= -3.0 * PI && i_to < -PI)
    addSquaredColumn(i_value, -2.0 * PI, i_scale, i_column, i_pairCount, io_squared);
  else if (i_from > -4.0 * PI && i_to < 4.0 * PI)
    addSquaredCircularColumn(i_value, i_scale, i_column, i_pairCount, io_squared);
  else
    for (std::size_t i = 0; i < 2 * i_pairCount; ++i)
      io_squared[i / 2][i % 2] += flatSquaredDofDistance(true, i_scale, i_value, i_column[i]);
}

bool areAllBeyond(const TDoublePair* i_squared, std::size_t i_pairCount, double i_limit)
{
  TMaskPair areBeyond = TMaskPair{-1, -1};
  for (std::size_t i = 0; i < i_pairCount; ++i)
    areBeyond &= i_squared[i] > i_limit;
  return (areBeyond[0] & areBeyond[1]) != 0;
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

bool CorvFlatForm::squaredDistancesOfBlock(const double* i_point, const double* i_block, const double* i_box,
                                           unsigned int i_count, double i_limit, double* o_squared) const
{
  const std::size_t pairCount = (i_count + 1) / 2;
  TDoublePair squared[BLOCK_SIZE / 2] = {};
  // Sums only grow, so that half of the columns often tell enough.
  const std::size_t half = m_entries.size() / 2;
  for (std::size_t e = 0; e < m_entries.size(); ++e)
  {
    if (e == half && e > 0 && areAllBeyond(squared, pairCount, i_limit))
      return false;
    const CEntry& entry = m_entries[e];
    const double value = i_point[entry.place];
    const double* const column = i_block + entry.place * BLOCK_SIZE;
    const double* const box = i_box + entry.place * BOXES_SIZE;
    if (entry.kind == CIRCULAR)
      addSquaredAngles(value, box[0] - value, box[2] - value, entry.scale, column, pairCount, squared);
    else
      addSquaredColumn(value, 0.0, entry.scale, column, pairCount, squared);
  }
  std::memcpy(o_squared, squared, pairCount * sizeof squared[0]);
  return !areAllBeyond(squared, pairCount, i_limit);
}

/// With a half turn and more between a value and the far end of a box the way round is the shorter one. A difference of
/// more than a full turn comes out as nothing, which is no more than it can be.
void CorvFlatForm::squaredDistancesToBoxes(const double* i_point, const double* i_boxes, double* o_squared) const
{
  constexpr double NO_TURN = std::numeric_limits<double>::infinity();
  const TDoublePair none = {};
  TDoublePair squared = {};
  for (const CEntry& entry : m_entries)
  {
    const TDoublePair value = twice(i_point[entry.place]);
    const double* const boxes = i_boxes + entry.place * BOXES_SIZE;
    const double turn = entry.kind == CIRCULAR ? 2.0 * ClumGeometryUtilities::PI : NO_TURN;
    const TDoublePair below = loadPair(boxes) - value;
    const TDoublePair above = value - loadPair(boxes + 2);
    const TDoublePair direct = below > above ? below : above;
    const TDoublePair around = (below < above ? below : above) + turn;
    const TDoublePair gap = around < direct ? around : direct;
    const TDoublePair d = (gap > none ? gap : none) * entry.scale;
    squared += d * d;
  }
  std::memcpy(o_squared, &squared, sizeof squared);
}

unsigned int CorvFlatForm::longestSide(const double* i_box) const
{
  unsigned int longest = 0;
  double length = 0.0;
  for (const CEntry& entry : m_entries)
  {
    const double* const box = i_box + entry.place * BOXES_SIZE;
    const double side = (box[2] - box[0]) * std::fabs(entry.scale);
    if (side > length)
    {
      length = side;
      longest = entry.place;
    }
  }
  return longest;
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
