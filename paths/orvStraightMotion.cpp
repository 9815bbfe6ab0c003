#include "paths/orvStraightMotion.h"

#include "foundation/lumGeometryUtilities.h"
#include "kinematics/orvConfigSpace.h"
#include "metrics/orvMetricRevolute.h"
#include "paths/orvPathValues.h"

#include <boost/container/small_vector.hpp>

#include <cmath>

double orvWayOfDof(const CorvConfigSpace& i_space, unsigned int i_rank, double i_start, double i_end)
{
  return i_space.isDofCircular(i_rank) ? CorvMetricRevolute::circularDistance(i_start, i_end) : i_end - i_start;
}

double orvStraightValue(const CorvConfigSpace& i_space, unsigned int i_rank, double i_start, double i_end,
                        double i_param)
{
  return i_space.isDofCircular(i_rank) ? i_start + CorvMetricRevolute::circularDistance(i_start, i_end) * i_param
                                       : (1.0 - i_param) * i_start + i_param * i_end;
}

bool orvHasHalfTurn(const CorvConfig& i_start, const CorvConfig& i_end, double i_tolerance)
{
  const CorvConfigSpace& space = *i_start.space();
  const double* start = i_start.beginPtr();
  const double* end = i_end.beginPtr();
  const unsigned int count = i_start.size();
  const double limit = ClumGeometryUtilities::PI - i_tolerance;
  for (unsigned int i = 0; i < count; ++i)
    if (space.isDofCircular(i) && std::fabs(CorvMetricRevolute::circularDistance(start[i], end[i])) > limit &&
        !space.isDofPassive(i))
      return true;
  return false;
}

void orvInterpolateStraight(const CorvConfig& i_start, const CorvConfig& i_end, double i_param, CorvConfig& io_cfg)
{
  const CorvConfigSpace& space = *i_start.space();
  const double* start = i_start.beginPtr();
  const double* end = i_end.beginPtr();
  const unsigned int count = i_start.size();
  boost::container::small_vector<double, 16> values(start, start + count);
  for (unsigned int i = 0; i < count; ++i)
    if (!space.isDofPassive(i))
      values[i] = orvStraightValue(space, i, start[i], end[i], i_param);
  if (io_cfg.size() != count)
    io_cfg = i_start;
  orvWriteAllValues(io_cfg, values.data(), count);
}

namespace
{
double straightRate(const CorvConfigSpace& i_space, unsigned int i_rank, double i_start, double i_end, double i_length)
{
  const double way = orvWayOfDof(i_space, i_rank, i_start, i_end);
  return way == 0.0 ? 0.0 : way / i_length;
}
} // namespace

void orvComputeStraightRates(const CorvConfig& i_start, const CorvConfig& i_end, double i_length,
                             std::vector<double>& o_rates)
{
  const CorvConfigSpace& space = *i_start.space();
  const double* start = i_start.beginPtr();
  const double* end = i_end.beginPtr();
  o_rates.resize(i_start.size());
  for (unsigned int i = 0; i < o_rates.size(); ++i)
    o_rates[i] = std::fabs(straightRate(space, i, start[i], end[i], i_length));
}

bool orvMovesPassiveDof(const CorvConfig& i_start, const CorvConfig& i_end)
{
  const CorvConfigSpace& space = *i_start.space();
  const double* start = i_start.beginPtr();
  const double* end = i_end.beginPtr();
  const unsigned int count = i_start.size();
  for (unsigned int i = 0; i < count; ++i)
    if (start[i] != end[i] && space.isDofPassive(i))
      return true;
  return false;
}

bool orvGetStraightVelocity(const CorvConfig& i_start, const CorvConfig& i_end, double i_length,
                            std::vector<double>& o_velocity)
{
  if (orvMovesPassiveDof(i_start, i_end))
    return false;
  const CorvConfigSpace& space = *i_start.space();
  const double* start = i_start.beginPtr();
  const double* end = i_end.beginPtr();
  o_velocity.resize(i_start.size());
  for (unsigned int i = 0; i < o_velocity.size(); ++i)
    o_velocity[i] = straightRate(space, i, start[i], end[i], i_length);
  return true;
}
