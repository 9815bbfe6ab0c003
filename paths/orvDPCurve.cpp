#include "paths/orvDPCurve.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMath.h"
#include "foundation/lumMemoryCoder.h"
#include "kinematics/orvDof.h"
#include "metrics/orvMetricRevolute.h"
#include "paths/orvPathValues.h"
#include "paths/orvSMCurve.h"

#include <boost/container/small_vector.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

LUM_DESCRIBE(CorvDPCurve)
{
}

const double CorvDPCurve::s_halfTurnTolerance = 1e-7;

namespace
{
constexpr double CURVE_PI = ClumGeometryUtilities::PI;
/// What counts as no turn, and how far from the goal a word may end, on the unit circle.
constexpr double CURVE_TOLERANCE = 1e-6;
/// How far other dofs may be apart at the ends.
constexpr double CURVE_DOF_TOLERANCE = 1e-10;
/// Words whose lengths differ by less are equal: many families of words have the same length by nature.
constexpr double CURVE_TIE = 1e-11;
constexpr double CURVE_NO_WORD = std::numeric_limits<double>::infinity();

double curveSense(CorvDPCurve::CCurve::EDirection i_direction)
{
  return i_direction == CorvDPCurve::CCurve::FORWARD ? 1.0 : -1.0;
}

/// How much a curve turns the heading by a length; 0 on a line.
double curveTurn(const CorvDPCurve::CCurve& i_curve, double i_length)
{
  if (i_curve.type == CorvDPCurve::CCurve::STRAIGHT_LINE)
    return 0.0;
  const double angle = curveSense(i_curve.direction) * i_length / i_curve.radius;
  return i_curve.type == CorvDPCurve::CCurve::LEFT_TURN ? angle : -angle;
}
} // namespace

CorvDPCurve::CorvDPCurve(const CorvConfig& i_start, const CorvConfig& i_end, const CorvSMCurveShPtr& i_steeringMethod)
  : CorvDirectPath(i_start, i_end, i_steeringMethod), m_SMCurve(i_steeringMethod), m_startConfig(i_start),
    m_endConfig(i_end)
{
}

CorvDPCurve::~CorvDPCurve() = default;

lmStatus CorvDPCurve::init(const CorvDPCurveWkPtr& i_weakPtr)
{
  lmStatus status = CorvDirectPath::init(i_weakPtr);
  if (status.succeeded())
    status = checkDofs();
  if (status.failed() || !m_curves.empty())
    return status;
  return createCurves(curveCoordinatesFromConfig(m_startConfig), curveCoordinatesFromConfig(m_endConfig),
                      m_SMCurve->steeringRadius(), m_curves);
}

lmStatus CorvDPCurve::getDofRanks(unsigned int* o_ranks) const
{
  const CorvDofConstShPtr dofs[] = {m_SMCurve->dofX(), m_SMCurve->dofY(), m_SMCurve->dofTheta()};
  for (unsigned int i = 0; i < 3; ++i)
    if (!dofs[i] || configSpace()->getFirstDofRankOfSubspace(*dofs[i], o_ranks[i]).failed())
      return lmStatus(lmStatus::FAILURE);
  return lmStatus();
}

lmStatus CorvDPCurve::checkDofs() const
{
  const lmStatus failure(lmStatus::FAILURE);
  const CorvConfigSpace& space = *configSpace();
  unsigned int ranks[3];
  if (!(m_SMCurve->steeringRadius() > 0.0) || !std::isfinite(m_SMCurve->steeringRadius()) ||
      getDofRanks(ranks).failed())
    return failure;
  const CorvDofConstShPtr theta = m_SMCurve->dofTheta();
  if (m_SMCurve->dofX()->isRevolute() || m_SMCurve->dofY()->isRevolute() || !theta->isRevolute())
    return failure;
  const double* start = m_startConfig.beginPtr();
  const double* end = m_endConfig.beginPtr();
  for (unsigned int i = 0; i < space.size(); ++i)
  {
    const bool isSteered = std::find(ranks, ranks + 3, i) != ranks + 3;
    const CorvDofShPtr dof = space.dof(i);
    const bool isCircular = dof->isRevolute() && !dof->isBounded();
    const double way =
      std::fabs(isCircular ? CorvMetricRevolute::circularDistance(start[i], end[i]) : end[i] - start[i]);
    if (isSteered ? space.isDofPassive(i) : !space.isDofPassive(i) && !(way <= CURVE_DOF_TOLERANCE))
      return failure;
    if (i == ranks[2] && isCircular && way > CURVE_PI - s_halfTurnTolerance)
      return failure;
  }
  return lmStatus();
}

lmStatus CorvDPCurve::getCurve(unsigned int i_rank, CCurve& o_curve) const
{
  if (i_rank >= m_curves.size())
    return lmStatus(lmStatus::FAILURE);
  o_curve = m_curves[i_rank];
  return lmStatus();
}

CorvDPCurve::CCurveCoordinates CorvDPCurve::curveCoordinatesFromConfig(const CorvConfig& i_cfg) const
{
  unsigned int ranks[3];
  const lmStatus status = getDofRanks(ranks);
  LUM_ASSERT_SUCCESS(status);
  const double* values = i_cfg.beginPtr();
  return status.failed() || !values ? CCurveCoordinates()
                                    : CCurveCoordinates(values[ranks[0]], values[ranks[1]], values[ranks[2]]);
}

CorvConfig CorvDPCurve::configFromCurveCoordinates(const CCurveCoordinates& i_coordinates) const
{
  unsigned int ranks[3];
  const lmStatus status = getDofRanks(ranks);
  LUM_ASSERT_SUCCESS(status);
  if (status.failed())
    return m_startConfig;
  const double* start = privateStart().beginPtr();
  const unsigned int count = configSpace()->size();
  boost::container::small_vector<double, 16> values(start, start + count);
  values[ranks[0]] = i_coordinates.x();
  values[ranks[1]] = i_coordinates.y();
  values[ranks[2]] = i_coordinates.theta();
  CorvConfig cfg(configSpace());
  orvWriteAllValues(cfg, values.data(), count);
  return cfg;
}

double CorvDPCurve::length() const
{
  return computePrivateLength();
}

double CorvDPCurve::privateLength() const
{
  return computePrivateLength();
}

double CorvDPCurve::computePrivateLength() const
{
  double sum = 0.0;
  for (const CCurve& curve : m_curves)
    sum += curve.length;
  return sum;
}

const CorvConfig& CorvDPCurve::startConfiguration() const
{
  return m_startConfig;
}

const CorvConfig& CorvDPCurve::endConfiguration() const
{
  return m_endConfig;
}

lmStatus CorvDPCurve::replaceEnds(const CorvConfig& i_start, const CorvConfig& i_end)
{
  std::vector<CCurve> curves;
  const lmStatus status = createCurves(curveCoordinatesFromConfig(i_start), curveCoordinatesFromConfig(i_end),
                                       m_SMCurve->steeringRadius(), curves);
  if (status.failed())
    return status;
  // The arguments may be the present ends, in the other order.
  const CorvConfig start = i_start;
  m_endConfig = i_end;
  m_startConfig = start;
  m_curves.swap(curves);
  unvalidate();
  notify(DID_CHANGE);
  return lmStatus();
}

lmStatus CorvDPCurve::extractFrom(double i_from)
{
  if (!(minimumLength() < length() - i_from))
    return lmStatus(lmStatus::FAILURE);
  CorvConfig start(configSpace());
  const lmStatus status = getConfigAtDistance(i_from, start);
  if (status.failed() || start.isEquivalent(m_endConfig))
    return lmStatus(lmStatus::FAILURE);
  return replaceEnds(start, m_endConfig);
}

lmStatus CorvDPCurve::extractTo(double i_to)
{
  if (!(minimumLength() < i_to))
    return lmStatus(lmStatus::FAILURE);
  CorvConfig end(configSpace());
  const lmStatus status = getConfigAtDistance(i_to, end);
  if (status.failed() || end.isEquivalent(m_startConfig))
    return lmStatus(lmStatus::FAILURE);
  return replaceEnds(m_startConfig, end);
}

lmStatus CorvDPCurve::reverse()
{
  return isOriented() ? lmStatus(lmStatus::FAILURE) : replaceEnds(m_endConfig, m_startConfig);
}

lmStatus CorvDPCurve::convert(const CorvConfigSpaceShPtr& i_space)
{
  lmStatus status = CorvDirectPath::convert(i_space);
  if (status.succeeded())
    status = m_startConfig.convert(i_space);
  if (status.succeeded())
    status = m_endConfig.convert(i_space);
  return status;
}

void CorvDPCurve::didUnvalidate() const
{
  CorvDirectPath::didUnvalidate();
  m_startConfig.unvalidate();
  m_endConfig.unvalidate();
}

CorvDPCurve::CCurveCoordinates CorvDPCurve::coordinatesOnCurve(const CCurve& i_curve, double i_distance)
{
  const CCurveCoordinates& start = i_curve.startCoord;
  const CCurveCoordinates& end = i_curve.endCoord;
  if (i_curve.type == CCurve::STRAIGHT_LINE)
  {
    const double s = i_curve.length > 0.0 ? i_distance / i_curve.length : 0.0;
    return {(1.0 - s) * start.x() + s * end.x(), (1.0 - s) * start.y() + s * end.y(), start.theta()};
  }
  const double theta = start.theta() + curveTurn(i_curve, i_distance);
  const double side = i_curve.type == CCurve::LEFT_TURN ? i_curve.radius : -i_curve.radius;
  double sine, cosine;
  lumSinCos(theta, sine, cosine);
  return {i_curve.centerX + side * sine, i_curve.centerY - side * cosine, theta};
}

void CorvDPCurve::interpolate(double i_distance, CorvConfig& io_cfg) const
{
  double begin = 0.0;
  std::size_t k = 0;
  while (k + 1 < m_curves.size() && begin + m_curves[k].length < i_distance)
    begin += m_curves[k++].length;
  CCurveCoordinates place = coordinatesOnCurve(m_curves[k], std::min(i_distance - begin, m_curves[k].length));
  // A word may miss the goal by a little. That is spread along the way, so that the path arrives without a jump.
  const double whole = length();
  const double part = whole > 0.0 ? i_distance / whole : 0.0;
  const CCurveCoordinates goal = curveCoordinatesFromConfig(m_endConfig);
  const CCurveCoordinates& last = m_curves.back().endCoord;
  place.x(place.x() + part * (goal.x() - last.x()));
  place.y(place.y() + part * (goal.y() - last.y()));
  place.theta(CorvMetricRevolute::limitAngle(place.theta() +
                                             part * CorvMetricRevolute::circularDistance(last.theta(), goal.theta())));
  io_cfg = configFromCurveCoordinates(place);
}

void CorvDPCurve::maxAbsoluteDerivative(double i_from, double i_to, std::vector<double>& o_derivatives) const
{
  const double low = std::min(i_from, i_to), high = std::max(i_from, i_to);
  double rates[3] = {0.0, 0.0, 0.0};
  double begin = 0.0;
  for (const CCurve& curve : m_curves)
  {
    const double end = begin + curve.length;
    if (curve.length > 0.0 && end >= low && begin <= high)
    {
      const bool isLine = curve.type == CCurve::STRAIGHT_LINE;
      rates[0] = std::max(rates[0], isLine ? std::fabs(curve.endCoord.x() - curve.startCoord.x()) / curve.length : 1.0);
      rates[1] = std::max(rates[1], isLine ? std::fabs(curve.endCoord.y() - curve.startCoord.y()) / curve.length : 1.0);
      rates[2] = std::max(rates[2], isLine ? 0.0 : 1.0 / curve.radius);
    }
    begin = end;
  }
  // What `interpolate` spreads along the way.
  const double whole = length();
  const CCurveCoordinates goal = curveCoordinatesFromConfig(m_endConfig);
  const CCurveCoordinates& last = m_curves.back().endCoord;
  const double misses[] = {goal.x() - last.x(), goal.y() - last.y(),
                           CorvMetricRevolute::circularDistance(last.theta(), goal.theta())};
  unsigned int ranks[3];
  const lmStatus status = getDofRanks(ranks);
  LUM_ASSERT_SUCCESS(status);
  o_derivatives.assign(configSpace()->size(), status.failed() ? CURVE_NO_WORD : 0.0);
  for (unsigned int i = 0; i < 3 && status.succeeded(); ++i)
    o_derivatives[ranks[i]] = rates[i] + (misses[i] == 0.0 ? 0.0 : std::fabs(misses[i]) / whole);
}

lmStatus CorvDPCurve::createCurves(const CCurveCoordinates& i_start, const CCurveCoordinates& i_end, double i_radius,
                                   std::vector<CCurve>& o_curves) const
{
  const auto onUnitCircle = [i_radius](const CCurveCoordinates& i_place)
  { return CCurveCoordinates(i_place.x() / i_radius, i_place.y() / i_radius, i_place.theta()); };
  const auto scaled = [i_radius](const CCurveCoordinates& i_place)
  { return CCurveCoordinates(i_place.x() * i_radius, i_place.y() * i_radius, i_place.theta()); };
  int word = 0;
  double t = 0.0, u = 0.0, v = 0.0;
  const CCurveCoordinates start = onUnitCircle(i_start);
  if (!std::isfinite(computeParams(start, onUnitCircle(i_end), word, t, u, v)))
    return lmStatus(lmStatus::FAILURE);
  o_curves.clear();
  const lmStatus status = createCurvesWithParams(word, t, u, v, start, 1.0, o_curves);
  for (CCurve& curve : o_curves)
  {
    curve.startCoord = scaled(curve.startCoord);
    curve.endCoord = scaled(curve.endCoord);
    curve.centerX *= i_radius;
    curve.centerY *= i_radius;
    curve.length *= i_radius;
    curve.radius = i_radius;
  }
  return status;
}

CorvDPCurve::CCurve CorvDPCurve::createCurve(CCurve::EType i_type, CCurve::EDirection i_direction, double i_length,
                                             CCurveCoordinates& io_coordinates, double i_radius)
{
  CCurve curve(io_coordinates, io_coordinates, 0.0, 0.0, i_length, i_radius, i_direction, i_type);
  double sine, cosine;
  lumSinCos(io_coordinates.theta(), sine, cosine);
  if (i_type == CCurve::STRAIGHT_LINE)
  {
    const double way = curveSense(i_direction) * i_length;
    curve.endCoord.x(io_coordinates.x() + way * cosine);
    curve.endCoord.y(io_coordinates.y() + way * sine);
  }
  else
  {
    const double side = i_type == CCurve::LEFT_TURN ? i_radius : -i_radius;
    curve.centerX = io_coordinates.x() - side * sine;
    curve.centerY = io_coordinates.y() + side * cosine;
    if (i_length > 0.0)
      curve.endCoord = coordinatesOnCurve(curve, i_length);
    curve.endCoord.theta(s_mod2pi(curve.endCoord.theta()));
  }
  io_coordinates = curve.endCoord;
  return curve;
}

lmStatus CorvDPCurve::appendWord(const CWord& i_word, double i_t, double i_u, double i_v,
                                 const CCurveCoordinates& i_start, double i_radius, std::vector<CCurve>& o_curves)
{
  const double lengths[] = {i_t, i_u, i_v, 0.5 * CURVE_PI * i_radius};
  CCurveCoordinates place = i_start;
  for (unsigned int i = 0; i < i_word.count; ++i)
  {
    const CWordCurve& curve = i_word.curves[i];
    o_curves.push_back(createCurve(curve.type, curve.direction, lengths[curve.parameter], place, i_radius));
  }
  return lmStatus();
}

CorvDPCurve::CGoals CorvDPCurve::goalsFrom(const CCurveCoordinates& i_start, const CCurveCoordinates& i_end)
{
  const double dx = i_end.x() - i_start.x(), dy = i_end.y() - i_start.y();
  double sine, cosine, turnSine, turnCosine;
  lumSinCos(i_start.theta(), sine, cosine);
  const double x = cosine * dx + sine * dy, y = cosine * dy - sine * dx;
  const double phi = CorvMetricRevolute::limitAngle(i_end.theta() - i_start.theta());
  lumSinCos(phi, turnSine, turnCosine);
  // A reflection at the start's heading turns over y, phi and the sine.
  const auto makeGoal = [&](double i_side)
  {
    const double leftX = x - i_side * turnSine, leftY = i_side * y + turnCosine - 1.0;
    const double rightX = x + i_side * turnSine, rightY = i_side * y - turnCosine - 1.0;
    CGoal goal;
    goal.phi = i_side * phi;
    goal.leftRadius = std::sqrt(leftX * leftX + leftY * leftY);
    goal.leftAngle = lumAtan2(leftY, leftX);
    goal.rightRadius = std::sqrt(rightX * rightX + rightY * rightY);
    goal.rightAngle = lumAtan2(rightY, rightX);
    return goal;
  };
  // With time turned x and phi are turned over: the centres are mirrored.
  const auto flipped = [](CGoal i_goal)
  {
    i_goal.phi = -i_goal.phi;
    i_goal.leftAngle = CURVE_PI - i_goal.leftAngle;
    i_goal.rightAngle = CURVE_PI - i_goal.rightAngle;
    return i_goal;
  };
  CGoals goals;
  goals.base = makeGoal(1.0);
  goals.reflection = makeGoal(-1.0);
  goals.timeFlip = flipped(goals.base);
  goals.both = flipped(goals.reflection);
  return goals;
}

bool CorvDPCurve::leadsTo(const CWord& i_word, double i_t, double i_u, double i_v, const CGoal& i_goal)
{
  // Along the word, from the origin: where it ends, seen as the centre of the circle on its left.
  const double lengths[] = {i_t, i_u, i_v, 0.5 * CURVE_PI};
  double x = 0.0, y = 0.0, theta = 0.0, sine = 0.0, cosine = 1.0;
  for (unsigned int i = 0; i < i_word.count; ++i)
  {
    const CWordCurve& curve = i_word.curves[i];
    const double way = curveSense(curve.direction) * lengths[curve.parameter];
    if (curve.type == CCurve::STRAIGHT_LINE)
    {
      x += way * cosine;
      y += way * sine;
      continue;
    }
    const double side = curve.type == CCurve::LEFT_TURN ? 1.0 : -1.0;
    x -= side * sine;
    y += side * cosine;
    theta += side * way;
    lumSinCos(theta, sine, cosine);
    x += side * sine;
    y -= side * cosine;
  }
  double goalSine, goalCosine;
  lumSinCos(i_goal.leftAngle, goalSine, goalCosine);
  const double missX = x - sine - i_goal.leftRadius * goalCosine;
  const double missY = y + cosine - 1.0 - i_goal.leftRadius * goalSine;
  const double missTheta = CorvMetricRevolute::circularDistance(theta, i_goal.phi);
  // A parameter that was taken for 0 turns the rest of the way by up to the tolerance.
  const double tolerance = 3.0 * CURVE_TOLERANCE;
  const double reach = tolerance * std::max(1.0, i_goal.leftRadius);
  return std::fabs(missX) <= reach && std::fabs(missY) <= reach && std::fabs(missTheta) <= tolerance;
}

void CorvDPCurve::tryWord(int i_rank, const CWord& i_word, TWordSolver i_solver, const CGoal& i_image,
                          const CGoal& i_goal, CBest& io_best)
{
  double t = 0.0, u = 0.0, v = 0.0;
  const double wordLength = i_solver(i_image, t, u, v);
  const bool isShorter = io_best.word == 0 ? wordLength < CURVE_NO_WORD : wordLength < io_best.length - CURVE_TIE;
  if (isShorter && leadsTo(i_word, t, u, v, i_goal))
    io_best = {i_rank, wordLength, t, u, v};
}

double CorvDPCurve::s_mod2pi(double i_angle)
{
  const double whole = 2.0 * CURVE_PI;
  const double rest = std::fabs(i_angle) < whole ? i_angle : std::fmod(i_angle, whole);
  return rest < 0.0 ? rest + whole : rest;
}

double CorvDPCurve::s_mod2pi_approx(double i_angle)
{
  const double whole = 2.0 * CURVE_PI;
  const double rest = std::fabs(i_angle) < whole ? i_angle : std::fmod(i_angle, whole);
  const double positive = rest < CURVE_TOLERANCE ? rest + whole : rest;
  return positive > whole - CURVE_TOLERANCE ? 0.0 : positive;
}

// The centre of the circle on the left of a pose (z, h) is z + i·e^(ih), on the right z - i·e^(ih). A word is a chain
// of such centres: from a left to a right circle at the heading h the centre moves by -2i·e^(ih), back by 2i·e^(ih),
// along a line of length u by u·e^(ih). The sum of these steps is the place of the goal's centre, in polar coordinates
// (radius, angle); its radius gives u, its angle t, and the headings give v.

double CorvDPCurve::ccc(const CGoal& i_goal, double& o_t, double& o_u, double& o_v)
{
  if (i_goal.leftRadius > 4.0)
    return CURVE_NO_WORD;
  o_u = s_mod2pi(2.0 * lumAsin(0.25 * i_goal.leftRadius));
  if (o_u < CURVE_PI)
    o_u = s_mod2pi_approx(2.0 * CURVE_PI - o_u);
  o_t = s_mod2pi_approx(o_u == 0.0 ? i_goal.phi : i_goal.leftAngle + 0.5 * o_u);
  o_v = o_u == 0.0 ? 0.0 : s_mod2pi_approx(i_goal.phi - o_t + o_u);
  return o_t + o_u + o_v;
}

double CorvDPCurve::csca(const CGoal& i_goal, double& o_t, double& o_u, double& o_v)
{
  const bool isOnTheSpot = i_goal.leftRadius < CURVE_TOLERANCE;
  o_u = isOnTheSpot ? 0.0 : i_goal.leftRadius;
  o_t = s_mod2pi_approx(isOnTheSpot ? i_goal.phi : i_goal.leftAngle);
  o_v = isOnTheSpot ? 0.0 : s_mod2pi_approx(i_goal.phi - o_t);
  return o_t + o_u + o_v;
}

double CorvDPCurve::cscb(const CGoal& i_goal, double& o_t, double& o_u, double& o_v)
{
  if (i_goal.rightRadius < 2.0)
    return CURVE_NO_WORD;
  const double u = std::sqrt(i_goal.rightRadius * i_goal.rightRadius - 4.0);
  o_u = u < CURVE_TOLERANCE ? 0.0 : u;
  o_t = s_mod2pi_approx(i_goal.rightAngle + lumAtan2(2.0, o_u));
  o_v = s_mod2pi_approx(o_t - i_goal.phi);
  return o_t + o_u + o_v;
}

double CorvDPCurve::c_c_c(const CGoal& i_goal, double& o_t, double& o_u, double& o_v)
{
  if (i_goal.leftRadius > 4.0)
    return CURVE_NO_WORD;
  o_u = s_mod2pi_approx(2.0 * lumAsin(0.25 * i_goal.leftRadius));
  o_t = s_mod2pi_approx(i_goal.leftAngle - 0.5 * o_u - CURVE_PI);
  o_v = s_mod2pi_approx(i_goal.phi - o_t - o_u);
  return o_t + o_u + o_v;
}

double CorvDPCurve::c_cc(const CGoal& i_goal, double& o_t, double& o_u, double& o_v)
{
  if (i_goal.leftRadius > 4.0)
    return CURVE_NO_WORD;
  o_u = s_mod2pi_approx(2.0 * lumAsin(0.25 * i_goal.leftRadius));
  o_t = s_mod2pi_approx(i_goal.leftAngle - 0.5 * o_u - CURVE_PI);
  o_v = s_mod2pi_approx(o_t + o_u - i_goal.phi);
  return o_t + o_u + o_v;
}

double CorvDPCurve::cc_c(const CGoal& i_goal, double& o_t, double& o_u, double& o_v)
{
  if (i_goal.leftRadius > 4.0)
    return CURVE_NO_WORD;
  o_u = s_mod2pi_approx(2.0 * lumAsin(0.25 * i_goal.leftRadius));
  o_t = s_mod2pi_approx(i_goal.leftAngle + 0.5 * o_u);
  o_v = s_mod2pi_approx(o_t - o_u - i_goal.phi);
  return o_t + o_u + o_v;
}

double CorvDPCurve::ccu_cuc(const CGoal& i_goal, double& o_t, double& o_u, double& o_v)
{
  const double cosine = 0.25 * (2.0 + i_goal.rightRadius);
  if (cosine > 1.0)
    return CURVE_NO_WORD;
  o_u = s_mod2pi_approx(lumAcos(cosine));
  o_t = s_mod2pi_approx(i_goal.rightAngle + 0.5 * CURVE_PI + o_u);
  o_v = s_mod2pi_approx(i_goal.phi - o_t + 2.0 * o_u);
  return o_t + 2.0 * o_u + o_v;
}

double CorvDPCurve::c_cucu_c(const CGoal& i_goal, double& o_t, double& o_u, double& o_v)
{
  const double cosine = (20.0 - i_goal.rightRadius * i_goal.rightRadius) / 16.0;
  if (cosine < 0.0 || cosine > 1.0)
    return CURVE_NO_WORD;
  const double sine = std::sqrt((1.0 - cosine) * (1.0 + cosine));
  o_u = s_mod2pi_approx(lumAcos(cosine));
  o_t = s_mod2pi_approx(i_goal.rightAngle + 0.5 * CURVE_PI + lumAtan2(sine, 2.0 - cosine));
  o_v = s_mod2pi_approx(o_t - i_goal.phi);
  return o_t + 2.0 * o_u + o_v;
}

double CorvDPCurve::c_c2sca(const CGoal& i_goal, double& o_t, double& o_u, double& o_v)
{
  o_u = i_goal.leftRadius < 2.0 ? -1.0 : std::sqrt(i_goal.leftRadius * i_goal.leftRadius - 4.0) - 2.0;
  if (o_u < 0.0)
    return CURVE_NO_WORD;
  o_t = s_mod2pi_approx(i_goal.leftAngle - lumAtan2(-2.0 - o_u, -2.0));
  o_v = s_mod2pi_approx(o_t + 0.5 * CURVE_PI - i_goal.phi);
  return o_t + o_u + o_v + 0.5 * CURVE_PI;
}

double CorvDPCurve::c_c2scb(const CGoal& i_goal, double& o_t, double& o_u, double& o_v)
{
  o_u = i_goal.rightRadius - 2.0;
  if (o_u < 0.0)
    return CURVE_NO_WORD;
  o_t = s_mod2pi_approx(i_goal.rightAngle + 0.5 * CURVE_PI);
  o_v = s_mod2pi_approx(i_goal.phi - o_t - 0.5 * CURVE_PI);
  return o_t + o_u + o_v + 0.5 * CURVE_PI;
}

double CorvDPCurve::c_c2sc2_c(const CGoal& i_goal, double& o_t, double& o_u, double& o_v)
{
  o_u = i_goal.rightRadius < 2.0 ? -1.0 : std::sqrt(i_goal.rightRadius * i_goal.rightRadius - 4.0) - 4.0;
  if (o_u < 0.0)
    return CURVE_NO_WORD;
  o_t = s_mod2pi_approx(i_goal.rightAngle - lumAtan2(-4.0 - o_u, -2.0));
  o_v = s_mod2pi_approx(o_t - i_goal.phi);
  return o_t + o_u + o_v + CURVE_PI;
}

double CorvDPCurve::csc2_ca(const CGoal& i_goal, double& o_t, double& o_u, double& o_v)
{
  o_u = i_goal.leftRadius < 2.0 ? -1.0 : std::sqrt(i_goal.leftRadius * i_goal.leftRadius - 4.0) - 2.0;
  if (o_u < 0.0)
    return CURVE_NO_WORD;
  o_t = s_mod2pi_approx(i_goal.leftAngle + lumAtan2(2.0, o_u + 2.0));
  o_v = s_mod2pi_approx(o_t - 0.5 * CURVE_PI - i_goal.phi);
  return o_t + o_u + o_v + 0.5 * CURVE_PI;
}

double CorvDPCurve::csc2_cb(const CGoal& i_goal, double& o_t, double& o_u, double& o_v)
{
  o_u = i_goal.rightRadius - 2.0;
  if (o_u < 0.0)
    return CURVE_NO_WORD;
  o_t = s_mod2pi_approx(i_goal.rightAngle);
  o_v = s_mod2pi_approx(i_goal.phi - o_t - 0.5 * CURVE_PI);
  return o_t + o_u + o_v + 0.5 * CURVE_PI;
}

void CorvDPCurve::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  // In memory the configurations share their space with the copy: then the dofs are shared too.
  if (const auto memory = boost::dynamic_pointer_cast<ClumMemoryCoder>(i_coder))
    for (const CorvDofConstShPtr& dof : {m_SMCurve->dofX(), m_SMCurve->dofY(), m_SMCurve->dofTheta()})
      memory->pin(dof.get());
  CorvDirectPath::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_SMCurve, "m_SMCurve");
  i_coder->beginVectorEncoding("m_curves");
  for (const CCurve& curve : m_curves)
  {
    i_coder->encodeDouble(curve.startCoord.x(), "m_curves.startCoord.x");
    i_coder->encodeDouble(curve.startCoord.y(), "m_curves.startCoord.y");
    i_coder->encodeDouble(curve.startCoord.theta(), "m_curves.startCoord.theta");
    i_coder->encodeDouble(curve.endCoord.x(), "m_curves.endCoord.x");
    i_coder->encodeDouble(curve.endCoord.y(), "m_curves.endCoord.y");
    i_coder->encodeDouble(curve.endCoord.theta(), "m_curves.endCoord.theta");
    i_coder->encodeDouble(curve.centerX, "m_curves.centerX");
    i_coder->encodeDouble(curve.centerY, "m_curves.centerY");
    i_coder->encodeDouble(curve.radius, "m_curves.radius");
    i_coder->encodeDouble(curve.length, "m_curves.length");
    i_coder->encodeInt(curve.type, "m_curves.type");
    i_coder->encodeInt(curve.direction, "m_curves.direction");
  }
  i_coder->endVectorEncoding();
  m_startConfig.encodeValueWithCoder(*i_coder, "m_startConfig");
  m_endConfig.encodeValueWithCoder(*i_coder, "m_endConfig");
}

namespace
{
CorvDPCurve::CCurve decodedCurve(ClumCoder& i_coder)
{
  CorvDPCurve::CCurve curve;
  curve.startCoord.x(i_coder.decodeDouble("m_curves.startCoord.x"));
  curve.startCoord.y(i_coder.decodeDouble("m_curves.startCoord.y"));
  curve.startCoord.theta(i_coder.decodeDouble("m_curves.startCoord.theta"));
  curve.endCoord.x(i_coder.decodeDouble("m_curves.endCoord.x"));
  curve.endCoord.y(i_coder.decodeDouble("m_curves.endCoord.y"));
  curve.endCoord.theta(i_coder.decodeDouble("m_curves.endCoord.theta"));
  curve.centerX = i_coder.decodeDouble("m_curves.centerX");
  curve.centerY = i_coder.decodeDouble("m_curves.centerY");
  curve.radius = i_coder.decodeDouble("m_curves.radius");
  curve.length = i_coder.decodeDouble("m_curves.length");
  const int type = i_coder.decodeInt("m_curves.type");
  const int direction = i_coder.decodeInt("m_curves.direction");
  curve.type = type == 0   ? CorvDPCurve::CCurve::LEFT_TURN
               : type == 1 ? CorvDPCurve::CCurve::RIGHT_TURN
                           : CorvDPCurve::CCurve::STRAIGHT_LINE;
  curve.direction = direction == 0 ? CorvDPCurve::CCurve::FORWARD : CorvDPCurve::CCurve::BACKWARD;
  return curve;
}

bool isUsableCurve(const CorvDPCurve::CCurve& i_curve)
{
  const double values[] = {i_curve.startCoord.x(), i_curve.startCoord.y(), i_curve.startCoord.theta(),
                           i_curve.endCoord.x(),   i_curve.endCoord.y(),   i_curve.endCoord.theta(),
                           i_curve.centerX,        i_curve.centerY};
  return std::all_of(std::begin(values), std::end(values), [](double i_value) { return std::isfinite(i_value); }) &&
         std::isfinite(i_curve.length) && i_curve.length >= 0.0 && std::isfinite(i_curve.radius) &&
         i_curve.radius > 0.0;
}
} // namespace

lmStatus CorvDPCurve::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvDirectPath::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_SMCurve = i_coder->decode<CorvSMCurve>("m_SMCurve");
  bool isUsable = static_cast<bool>(m_SMCurve);
  m_curves.clear();
  i_coder->beginVectorDecoding("m_curves");
  while (i_coder->canContinueVectorDecoding())
  {
    m_curves.push_back(decodedCurve(*i_coder));
    isUsable = isUsable && isUsableCurve(m_curves.back());
  }
  i_coder->endVectorDecoding();
  m_startConfig = CorvConfig(i_coder, "m_startConfig");
  m_endConfig = CorvConfig(i_coder, "m_endConfig");
  unsigned int ranks[3];
  const bool areEndsUsable = m_startConfig.space() == configSpace() && m_startConfig.hasSoundValues() &&
                             m_endConfig.space() == configSpace() && m_endConfig.hasSoundValues();
  isUsable = isUsable && areEndsUsable && isWindowWhole() && !isReversed() && !m_curves.empty() &&
             getDofRanks(ranks).succeeded();
  return lmStatus(isUsable ? lmStatus::SUCCESS : lmStatus::FAILURE);
}
