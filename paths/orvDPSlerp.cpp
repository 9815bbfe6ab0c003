#include "paths/orvDPSlerp.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMath.h"
#include "kinematics/orvDof.h"
#include "metrics/orvMetricRevolute.h"
#include "paths/orvPathValues.h"
#include "paths/orvSteeringMethod.h"

#include <algorithm>
#include <cmath>
#include <limits>

LUM_DESCRIBE(CorvDPSlerp)
{
  i_class.creates(
    "(const CorvConfig& i_start, const CorvConfig& i_end, const CorvSteeringMethodShPtr& i_steeringMethod)",
    &Self::create);
}

const double CorvDPSlerp::s_halfTurnTolerance = 1e-7;

namespace
{
/// Vectors of a plane that are shorter, or closer to one line, than this are so by rounding.
constexpr double SLERP_ROUNDING = 1e-14;
/// A half angle below which its sine is the angle itself.
constexpr double SLERP_SMALL_ANGLE = 1e-8;
/// A squared radius below which the angle of a plane is not known well enough to tell axes by.
constexpr double SLERP_NEAR_LOCK = 1e-12;
/// Relative rounding of rates, and how near the summit of ry's rate counts as on it.
constexpr double SLERP_RATE_ROUNDING = 1e-15;
constexpr double SLERP_SUMMIT_SLACK = 1e-6;
/// A sine of an angle between names of a frame below which the axes of the rotations are the same lines.
constexpr double SLERP_SAME_AXES = 1e-9;

double slerpCross(const double* i_a, const double* i_b)
{
  return i_a[0] * i_b[1] - i_a[1] * i_b[0];
}

double slerpDot(const double* i_a, const double* i_b)
{
  return i_a[0] * i_b[0] + i_a[1] * i_b[1];
}
} // namespace

CorvDPSlerp::CorvDPSlerp(const CorvConfig& i_start, const CorvConfig& i_end,
                         const CorvSteeringMethodShPtr& i_steeringMethod)
  : CorvDPSolidMotion(i_start, i_end, i_steeringMethod)
{
}

CorvDPSlerp::~CorvDPSlerp() = default;

lmStatus CorvDPSlerp::init(const CorvDPSlerpWkPtr& i_weakPtr)
{
  const lmStatus status = CorvDPSolidMotion::init(i_weakPtr);
  if (status.failed())
    return status;
  const CorvConfigSpace& space = *privateStart().space();
  for (unsigned int i = 0; i < space.size(); ++i)
    if (isAngleOfSolid(i) && space.isDofPassive(i))
      return lmStatus(lmStatus::FAILURE);
  return lmStatus(hasHalfTurn() || breaksABoundedRotation() ? lmStatus::FAILURE : lmStatus::SUCCESS);
}

lmStatus CorvDPSlerp::init(const CorvDPSlerpWkPtr& i_weakPtr, const CorvDPSlerpConstShPtr&)
{
  return CorvDPSolidMotion::init(i_weakPtr);
}

CorvDPSlerpShPtr CorvDPSlerp::create(const CorvConfig& i_start, const CorvConfig& i_end,
                                     const CorvSteeringMethodShPtr& i_steeringMethod)
{
  return lumCreate<CorvDPSlerp>(i_start, i_end, i_steeringMethod);
}

CorvDPSlerpShPtr CorvDPSlerp::createCopy(const CorvDPSlerpConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvAbstractPathShPtr CorvDPSlerp::clone() const
{
  return createCopy(self());
}

unsigned int CorvDPSlerp::solidRank() const
{
  motion();
  return m_solidRank;
}

const CorvDPSlerp::CMotion& CorvDPSlerp::motion() const
{
  const CorvConfigSpace& space = *privateStart().space();
  const unsigned int version = space.version();
  if (m_motionVersion == version)
    return m_motion;
  m_motion = CMotion();
  if (getRankOfSolid(space, m_solidRank).succeeded())
    fillMotion(privateStart().beginPtr() + m_solidRank, privateEnd().beginPtr() + m_solidRank, m_motion);
  else
    m_solidRank = space.size(); // the solid is gone: what is left goes straight
  m_motionVersion = version;
  return m_motion;
}

void CorvDPSlerp::startPlane(double i_angle, double i_radius, CPlane& o_plane)
{
  double sine, cosine;
  lumSinCos(i_angle, sine, cosine);
  o_plane.angle = i_angle;
  o_plane.radius = i_radius;
  o_plane.start[0] = i_radius * cosine;
  o_plane.start[1] = i_radius * sine;
}

void CorvDPSlerp::finishPlane(double i_momentScale, CPlane& io_plane)
{
  const double startLength = std::fabs(io_plane.radius);
  const double endLength = std::sqrt(slerpDot(io_plane.end, io_plane.end));
  const double moment = slerpCross(io_plane.start, io_plane.end);
  io_plane.isStraight = true;
  if (startLength < SLERP_ROUNDING)
  {
    // The start has no angle of its own: the motion has the angle of the end.
    io_plane.angle = endLength < SLERP_ROUNDING ? io_plane.angle : lumAtan2(io_plane.end[1], io_plane.end[0]);
    io_plane.straightEnd = endLength;
  }
  else if (std::fabs(moment) <= SLERP_ROUNDING * std::max(startLength * endLength, startLength * SLERP_ROUNDING))
    io_plane.straightEnd = slerpDot(io_plane.start, io_plane.end) / io_plane.radius;
  else
  {
    io_plane.isStraight = false;
    io_plane.moment = i_momentScale * moment;
  }
}

/// With half angles A, B, C the quaternion w, x, y, z of Rx(a)·Ry(b)·Rz(c) has
/// (w + y, x + z) = (cos B + sin B)·(cos(A + C), sin(A + C)) and (w - y, x - z) = (cos B - sin B)·(cos(A - C), sin(A -
/// C)), so that a spherical interpolation is one of two vectors in each of two planes (Shoemake 1985 for the weights).
void CorvDPSlerp::fillMotion(const double* i_start, const double* i_end, CMotion& o_motion)
{
  CPlane* const planes[] = {&o_motion.sum, &o_motion.difference};
  double sine, cosine, endSine, endCosine;
  lumSinCos(0.5 * i_start[4], sine, cosine);
  lumSinCos(0.5 * i_end[4], endSine, endCosine);
  double product = 0.0;
  for (int k = 0; k < 2; ++k)
  {
    const double sign = k == 0 ? 1.0 : -1.0;
    CPlane end;
    startPlane(0.5 * (i_end[3] + sign * i_end[5]), endCosine + sign * endSine, end);
    startPlane(0.5 * (i_start[3] + sign * i_start[5]), cosine + sign * sine, *planes[k]);
    std::copy(end.start, end.start + 2, planes[k]->end);
    product += slerpDot(planes[k]->start, planes[k]->end);
  }
  double squaredChord = 0.0;
  for (CPlane* plane : planes)
    for (int i = 0; i < 2; ++i)
    {
      // Of the two quaternions of the end the nearer one.
      plane->end[i] = product < 0.0 ? -plane->end[i] : plane->end[i];
      squaredChord += 0.5 * (plane->end[i] - plane->start[i]) * (plane->end[i] - plane->start[i]);
    }
  o_motion.halfAngle = 2.0 * lumAsin(std::min(1.0, 0.5 * std::sqrt(squaredChord)));
  o_motion.sineOfHalf = lumSin(o_motion.halfAngle);
  o_motion.startB = 0.5 * i_start[4];
  for (CPlane* plane : planes)
    finishPlane(o_motion.halfAngle < SLERP_SMALL_ANGLE ? 1.0 : o_motion.halfAngle / o_motion.sineOfHalf, *plane);
  double first[3], last[3];
  anglesAt(o_motion, 0.0, first);
  anglesAt(o_motion, 1.0, last);
  o_motion.isStartRenamed = std::fabs(lumSin(first[0] - i_start[3])) > SLERP_SAME_AXES;
  o_motion.isEndRenamed = std::fabs(lumSin(last[0] - i_end[3])) > SLERP_SAME_AXES;
}

void CorvDPSlerp::weights(const CMotion& i_motion, double i_param, double& o_start, double& o_end)
{
  const bool isSmall = i_motion.halfAngle < SLERP_SMALL_ANGLE;
  o_start = isSmall ? 1.0 - i_param : lumSin((1.0 - i_param) * i_motion.halfAngle) / i_motion.sineOfHalf;
  o_end = isSmall ? i_param : lumSin(i_param * i_motion.halfAngle) / i_motion.sineOfHalf;
}

void CorvDPSlerp::polarAt(const CPlane& i_plane, double i_startWeight, double i_endWeight, double& o_angle,
                          double& o_radius)
{
  o_angle = i_plane.angle;
  o_radius = i_startWeight * i_plane.radius + i_endWeight * i_plane.straightEnd;
  if (i_plane.isStraight)
    return;
  // A sum of two vectors with positive weights lies within half a turn of the first: its angle goes on without a jump.
  const double sum[] = {i_startWeight * i_plane.start[0] + i_endWeight * i_plane.end[0],
                        i_startWeight * i_plane.start[1] + i_endWeight * i_plane.end[1]};
  o_angle += lumAtan2(slerpCross(i_plane.start, sum), slerpDot(i_plane.start, sum));
  o_radius = std::copysign(std::sqrt(slerpDot(sum, sum)), i_plane.radius);
}

void CorvDPSlerp::anglesAt(const CMotion& i_motion, double i_param, double* o_angles)
{
  double startWeight, endWeight, sumAngle, sumRadius, differenceAngle, differenceRadius, sine, cosine;
  weights(i_motion, i_param, startWeight, endWeight);
  polarAt(i_motion.sum, startWeight, endWeight, sumAngle, sumRadius);
  polarAt(i_motion.difference, startWeight, endWeight, differenceAngle, differenceRadius);
  lumSinCos(i_motion.startB, sine, cosine);
  // Half of ry, as a turn from where it starts.
  const double x = sumRadius + differenceRadius, y = sumRadius - differenceRadius;
  o_angles[0] = sumAngle + differenceAngle;
  o_angles[1] = 2.0 * (i_motion.startB + lumAtan2(y * cosine - x * sine, x * cosine + y * sine));
  o_angles[2] = sumAngle - differenceAngle;
}

bool CorvDPSlerp::isAngleOfSolid(unsigned int i_rank) const
{
  const unsigned int first = solidRank() + 3;
  return i_rank >= first && i_rank < first + 3;
}

double CorvDPSlerp::differenceOf(unsigned int i_rank) const
{
  const CorvDofShPtr dof = privateStart().space()->dof(i_rank);
  const double start = privateStart().beginPtr()[i_rank], end = privateEnd().beginPtr()[i_rank];
  return dof->isRevolute() && !dof->isBounded() ? CorvMetricRevolute::circularDistance(start, end) : end - start;
}

bool CorvDPSlerp::hasHalfTurn() const
{
  const double limit = ClumGeometryUtilities::PI - s_halfTurnTolerance;
  if (2.0 * motion().halfAngle > limit)
    return true;
  const CorvConfigSpace& space = *privateStart().space();
  for (unsigned int i = 0; i < space.size(); ++i)
  {
    const CorvDofShPtr dof = space.dof(i);
    if (!isAngleOfSolid(i) && dof->isRevolute() && !dof->isBounded() && !space.isDofPassive(i) &&
        std::fabs(differenceOf(i)) > limit)
      return true;
  }
  return false;
}

bool CorvDPSlerp::breaksABoundedRotation() const
{
  const CorvConfigSpace& space = *privateStart().space();
  const unsigned int first = solidRank() + 3;
  double last[3];
  anglesAt(motion(), 1.0, last);
  for (unsigned int i = 0; i < 3; ++i)
    if (space.dof(first + i)->isBounded() && std::fabs(last[i] - privateEnd().beginPtr()[first + i]) > 1e-6)
      return true;
  return false;
}

double CorvDPSlerp::computePrivateLength() const
{
  return privateStart().distanceTo(privateEnd());
}

void CorvDPSlerp::interpolate(double i_distance, CorvConfig& io_cfg) const
{
  const CorvConfigSpace& space = *privateStart().space();
  const unsigned int count = space.size();
  const double whole = privateLength();
  const double t = whole > 0.0 ? i_distance / whole : 0.0;
  const double* start = privateStart().beginPtr();
  const unsigned int solid = solidRank();
  boost::container::small_vector<double, 16> values(start, start + count);
  // Passive dofs begin where the path begins.
  for (unsigned int i = 0; i < count; ++i)
    if (!isAngleOfSolid(i) && !space.isDofPassive(i))
      values[i] = start[i] + differenceOf(i) * t;
  if (solid < count)
    anglesAt(motion(), t, values.data() + solid + 3);
  if (io_cfg.size() != count)
    io_cfg = privateStart();
  orvWriteAllValues(io_cfg, values.data(), count);
}

namespace
{
double slerpSpeed(double i_way, double i_length)
{
  return i_way == 0.0 ? 0.0 : i_way / i_length;
}
} // namespace

double CorvDPSlerp::linearSpeed() const
{
  const unsigned int solid = solidRank();
  if (solid >= privateStart().size())
    return std::numeric_limits<double>::infinity();
  const double* start = privateStart().beginPtr() + solid;
  const double* end = privateEnd().beginPtr() + solid;
  const ClumVect3 way(end[0] - start[0], end[1] - start[1], end[2] - start[2]);
  return slerpSpeed(way.norm(), privateLength());
}

double CorvDPSlerp::angularSpeed() const
{
  return slerpSpeed(2.0 * motion().halfAngle, privateLength());
}

/// The vector by which a plane's motion is start·cos(x) + side·sin(x), x from 0 to half of the rotation.
void CorvDPSlerp::sideOf(const CPlane& i_plane, double i_halfAngle, double* o_side)
{
  double sine, cosine;
  lumSinCos(i_halfAngle, sine, cosine);
  for (int i = 0; i < 2; ++i)
    o_side[i] = i_halfAngle < SLERP_SMALL_ANGLE
                  ? (i_plane.end[i] - i_plane.start[i]) / std::max(i_halfAngle, std::numeric_limits<double>::min())
                  : (i_plane.end[i] - cosine * i_plane.start[i]) / sine;
}

/// The ends of an interval, and where the radii turn inside of it: at most four places.
unsigned int CorvDPSlerp::placesOfExtremes(const CMotion& i_motion, double i_from, double i_to, double* o_places)
{
  double side[2];
  sideOf(i_motion.sum, i_motion.halfAngle, side);
  o_places[0] = i_from * i_motion.halfAngle;
  o_places[1] = i_to * i_motion.halfAngle;
  unsigned int count = 2;
  const double* start = i_motion.sum.start;
  const double turning = 0.5 * lumAtan2(2.0 * slerpDot(start, side), slerpDot(start, start) - slerpDot(side, side));
  for (int k = -1; k <= 1 && count < 4; ++k)
  {
    const double place = turning + 0.5 * k * ClumGeometryUtilities::PI;
    if (place > o_places[0] && place < o_places[1])
      o_places[count++] = place;
  }
  return count;
}

/// The largest rate of ry, given the largest at the places of extremes.
double CorvDPSlerp::steepestInside(const CMotion& i_motion, double i_lowest, double i_highest, double i_atPlaces)
{
  const double f = i_motion.sum.moment + i_motion.difference.moment;
  const double g = i_motion.sum.moment - i_motion.difference.moment;
  const double larger = std::max(std::fabs(f), std::fabs(g)), smaller = std::min(std::fabs(f), std::fabs(g));
  // Without moments ry alone turns, all along at the full speed.
  const double summit = larger > 0.0 ? std::copysign(smaller / larger, f * g) : i_lowest;
  if (summit <= i_lowest - SLERP_SUMMIT_SLACK || summit >= i_highest + SLERP_SUMMIT_SLACK)
    return i_atPlaces;
  const double squaredSpeed = 4.0 * i_motion.halfAngle * i_motion.halfAngle;
  return std::sqrt(std::max(0.0, squaredSpeed - larger * larger) + SLERP_RATE_ROUNDING * squaredSpeed);
}

/// With K and L the moments of the two planes and s = sin ry, the radii squared are 1 + s and 1 - s, and
///   rx' = K / (1 + s) + L / (1 - s),   rz' = K / (1 + s) - L / (1 - s),
///   ry'^2 = w^2 - (f^2 + g^2 - 2 f g s) / (1 - s^2),   f = K + L, g = K - L, w the rate of the rotation.
/// |rx'| and |rz'| have no maximum inside a range of s; |ry'| has one, where s is f / g or g / f. So the rates at the
/// ends of the interval, and where s turns, are enough.
void CorvDPSlerp::angleRates(const CMotion& i_motion, double i_from, double i_to, double* o_rates)
{
  const CPlane& sum = i_motion.sum;
  const CPlane& difference = i_motion.difference;
  const double h = i_motion.halfAngle, speed = 2.0 * h;
  double sumSide[2], differenceSide[2], places[4];
  sideOf(sum, h, sumSide);
  sideOf(difference, h, differenceSide);
  const unsigned int count = placesOfExtremes(i_motion, i_from, i_to, places);
  double lowest = 1.0, highest = -1.0, steepest = 0.0, least = 2.0, rx = 0.0, rz = 0.0;
  for (unsigned int k = 0; k < count; ++k)
  {
    double sine, cosine, p[2], q[2], pRate[2];
    lumSinCos(places[k], sine, cosine);
    for (int i = 0; i < 2; ++i)
    {
      p[i] = cosine * sum.start[i] + sine * sumSide[i];
      q[i] = cosine * difference.start[i] + sine * differenceSide[i];
      pRate[i] = h * (cosine * sumSide[i] - sine * sum.start[i]);
    }
    const double plus = slerpDot(p, p), minus = slerpDot(q, q);
    const double first = sum.isStraight ? 0.0 : sum.moment / plus;
    const double second = difference.isStraight ? 0.0 : difference.moment / minus;
    const double slack =
      SLERP_RATE_ROUNDING * speed * ((sum.isStraight ? 0.0 : 1.0 / plus) + (difference.isStraight ? 0.0 : 1.0 / minus));
    rx = std::max(rx, std::fabs(first + second) + slack);
    rz = std::max(rz, std::fabs(first - second) + slack);
    const double slope = 2.0 * std::fabs(slerpDot(p, pRate)) + 4.0 * SLERP_RATE_ROUNDING * speed;
    const double cosineOfB = std::max(std::sqrt(plus * minus), std::numeric_limits<double>::min());
    steepest = std::max(steepest, std::min(speed, slope / cosineOfB));
    lowest = std::min(lowest, 0.5 * (plus - minus));
    highest = std::max(highest, 0.5 * (plus - minus));
    // On a line the angle is known at the lock too.
    least = std::min({least, sum.isStraight ? least : plus, difference.isStraight ? least : minus});
  }
  const bool isRenamed = (i_motion.isStartRenamed && i_from <= 0.0) || (i_motion.isEndRenamed && i_to >= 1.0);
  const double floorRate = isRenamed || least < SLERP_NEAR_LOCK ? speed : 0.0;
  o_rates[0] = std::max(rx, floorRate) * (1.0 + 1e-9);
  o_rates[1] = std::max(steepestInside(i_motion, lowest, highest, steepest), floorRate) * (1.0 + 1e-9);
  o_rates[2] = rz * (1.0 + 1e-9);
}

void CorvDPSlerp::maxAbsoluteDerivative(double i_from, double i_to, std::vector<double>& o_derivatives) const
{
  const unsigned int count = privateStart().space()->size();
  const unsigned int solid = solidRank();
  const double whole = privateLength();
  o_derivatives.resize(count);
  for (unsigned int i = 0; i < count; ++i)
    o_derivatives[i] = slerpSpeed(std::fabs(differenceOf(i)), whole);
  if (solid >= count)
    return;
  double rates[3] = {0.0, 0.0, 0.0};
  const double low = whole > 0.0 ? std::max(0.0, std::min(i_from, i_to) / whole) : 0.0;
  const double high = whole > 0.0 ? std::min(1.0, std::max(i_from, i_to) / whole) : 1.0;
  if (motion().halfAngle > 0.0)
    angleRates(motion(), low, high, rates);
  for (unsigned int i = 0; i < 3; ++i)
    o_derivatives[solid + 3 + i] = slerpSpeed(rates[i], whole);
}

lmStatus CorvDPSlerp::convert(const CorvConfigSpaceShPtr& i_space)
{
  unsigned int rank = 0;
  if (!i_space || getRankOfSolid(*i_space, rank).failed())
    return lmStatus(lmStatus::FAILURE);
  m_motionVersion = 0;
  return CorvDPSolidMotion::convert(i_space);
}
