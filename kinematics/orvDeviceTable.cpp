#include "kinematics/orvDeviceTable.h"

#include "foundation/lumMath.h"
#include "kinematics/orvBody.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvJoint.h"
#include "kinematics/orvKEFreeFlyer.h"
#include "kinematics/orvKEPlan.h"
#include "kinematics/orvKERotate.h"
#include "kinematics/orvKERotateTaitBryant.h"
#include "kinematics/orvKERotateXY.h"
#include "kinematics/orvKETranslate.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <typeinfo>

namespace
{
/// More points than this are replaced by the corners of a box around them.
constexpr unsigned int MAX_ENCLOSING_POINTS = 24;
/// The bound is taken larger by this factor, which covers the rounding of its evaluation.
constexpr double DISPLACEMENT_SAFETY = 1.0 + 1e-9;
/// Added to a lever for each unit of distance of the body from the joint and of the joint from the world's origin:
/// covers the rounding of frames, points and axes.
constexpr double LEVER_ROUNDING = 1e-12;
constexpr unsigned int MAX_NEWTON_STEPS = 4;
/// Newton's steps end once one gains less than this part.
constexpr double NEWTON_GAIN = 1e-3;
/// A chord is shorter than its arc by less than a 24th of the angle's square, so up to this angle the slope at zero
/// gives what the bound itself would to within the gain above. The slope is on the safe side.
constexpr double SMALL_TURN = 0.15;
/// Up to this angle that is so to within a part in a hundred, too little to look further than the slope where another
/// bound is known.
constexpr double MODERATE_TURN = 0.5;
constexpr double QUARTER_TURN = 1.57079632679489661923;

/// True if the object is of one of the classes itself: a class derived from them may do something else.
template <class... CLASSES>
bool isEffectExactly(const CorvKinematicalEffect& i_effect)
{
  return ((typeid(i_effect) == typeid(CLASSES)) || ...);
}

/// Multiplies by a rotation about a base vector on the right.
void turnFrame(ClumMat4& io_frame, unsigned int i_axis, double i_angle)
{
  double s, c;
  lumSinCos(i_angle, s, c);
  double* first = io_frame.data() + 4 * ((i_axis + 1) % 3);
  double* second = io_frame.data() + 4 * ((i_axis + 2) % 3);
  for (unsigned int r = 0; r < 3; ++r)
  {
    const double a = first[r], b = second[r];
    first[r] = c * a + s * b;
    second[r] = c * b - s * a;
  }
}

/// Multiplies by a translation on the right.
void shiftFrame(ClumMat4& io_frame, const ClumVect3& i_shift)
{
  io_frame.setTranslation(io_frame.translation() + io_frame * i_shift);
}

constexpr ClumMat4::EBaseVector BASE_VECTORS[3] = {ClumMat4::X_AXIS, ClumMat4::Y_AXIS, ClumMat4::Z_AXIS};

/// Multiplies by the rotations about x, y and z, noting each axis where it stands when its turn comes.
void turnFrameByAngles(ClumMat4& io_frame, const double* i_angles, unsigned int i_count, ClumVect3* o_axes)
{
  for (unsigned int i = 0; i < i_count; ++i)
  {
    o_axes[i] = io_frame.axis(BASE_VECTORS[i]);
    turnFrame(io_frame, i, i_angles[i]);
  }
}

/// A chord of the unit circle: at least 2·sin(min(angle, pi) / 2), too long by at most 7e-10 of itself. As a function
/// of the angle it never falls and is concave. @param o_slope its derivative.
///
/// Two more terms than a sine needs here are left out: the partial sum of its series that ends in y^13 lies above it,
/// and is concave up to a quarter turn.
double chordOfTurn(double i_angle, double& o_slope)
{
  const double y = std::min(0.5 * i_angle, QUARTER_TURN);
  const double z = y * y;
  const double sine =
    y *
    (1.0 + z * (-1.0 / 6.0 +
                z * (1.0 / 120.0 +
                     z * (-1.0 / 5040.0 + z * (1.0 / 362880.0 + z * (-1.0 / 39916800.0 + z * (1.0 / 6227020800.0)))))));
  const double cosine =
    1.0 +
    z * (-1.0 / 2.0 + z * (1.0 / 24.0 + z * (-1.0 / 720.0 +
                                             z * (1.0 / 40320.0 + z * (-1.0 / 3628800.0 + z * (1.0 / 479001600.0))))));
  o_slope = y < QUARTER_TURN ? cosine : 0.0;
  return 2.0 * sine;
}

constexpr double INFINITE_SPEED = std::numeric_limits<double>::infinity();

/// False for an allowance that does not limit.
bool isLimit(double i_allowance)
{
  return !(std::isinf(i_allowance) && i_allowance > 0.0);
}

/// Keeps the numbers. @return true if they were the ones kept before.
bool isKept(const double* i_numbers, std::vector<double>& io_kept)
{
  if (io_kept.empty() || std::memcmp(i_numbers, io_kept.data(), io_kept.size() * sizeof(double)) == 0)
    return true;
  std::copy(i_numbers, i_numbers + io_kept.size(), io_kept.begin());
  return false;
}

/// The direction in the coordinates of a frame.
ClumVect3 turnedBack(const ClumMat4& i_frame, const ClumVect3& i_direction)
{
  return ClumVect3(i_frame.axis(ClumMat4::X_AXIS).scalarProduct(i_direction),
                   i_frame.axis(ClumMat4::Y_AXIS).scalarProduct(i_direction),
                   i_frame.axis(ClumMat4::Z_AXIS).scalarProduct(i_direction));
}
} // namespace

CorvDeviceTable::CorvDeviceTable(const CorvJointConstShPtr& i_root, const CorvConfigSpace& i_space)
  : m_values(i_space.size()), m_rates(i_space.size()), m_speeds(i_space.size())
{
  if (i_root)
    addJoint(*i_root, -1, i_space);
  m_frames.resize(m_joints.size());
  m_motions.resize(m_joints.size());
  m_bounds.resize(m_bodies.size());
  for (std::size_t j = 0; j < m_joints.size(); ++j)
    m_motions[j].countTurns = m_joints[j].countTurns;
}

void CorvDeviceTable::addJoint(const CorvJoint& i_joint, int i_parent, const CorvConfigSpace& i_space)
{
  const unsigned int rank = static_cast<unsigned int>(m_joints.size());
  CJointRow row;
  row.parent = i_parent;
  row.effect = i_joint.kinematicalEffect();
  row.countDofs = row.effect->configSpace()->size();
  row.firstDof = 0;
  const CorvJointConstShPtr parent = i_parent < 0 ? CorvJointConstShPtr() : i_joint.parentJoint();
  row.fixed = parent ? parent->initialPosition().inverse() * i_joint.initialPosition() : i_joint.initialPosition();
  if (row.countDofs > 0 && i_space.getFirstDofRankOfSubspace(*row.effect->configSpace(), row.firstDof).failed())
  {
    ClumMat4 effect;
    i_joint.computeEffect(i_joint.currentEffectDofValues(), effect);
    row.fixed *= effect;
    row.countDofs = 0;
  }
  row.mover = row.countDofs > 0 ? static_cast<int>(rank) : i_parent < 0 ? -1 : m_joints[i_parent].mover;
  row.isFixedIdentity = row.fixed == ClumMat4::IDENTITY;
  setKind(row);
  m_hasOtherEffects = m_hasOtherEffects || row.kind == OTHER;
  m_joints.push_back(row);
  if (i_joint.attachedBody())
    addBody(*i_joint.attachedBody(), rank);
  for (unsigned int c = 0; c < i_joint.countChildJoints(); ++c)
    addJoint(*i_joint.childJoint(c), static_cast<int>(rank), i_space);
}

void CorvDeviceTable::setKind(CJointRow& io_row)
{
  const CorvKinematicalEffect& effect = *io_row.effect;
  io_row.axis = 0;
  io_row.sign = 1.0;
  io_row.countTurns = 0;
  if (io_row.countDofs == 0)
    io_row.kind = FIXED;
  else if (isEffectExactly<CorvKERotateX, CorvKERotateY, CorvKERotateZ, CorvKERotateInverseX, CorvKERotateInverseY,
                           CorvKERotateInverseZ>(effect))
  {
    const CorvKERotateAxis& rotation = static_cast<const CorvKERotateAxis&>(effect);
    io_row.kind = ROTATION;
    io_row.countTurns = 1;
    io_row.axis = rotation.axis();
    io_row.sign = rotation.sign();
  }
  else if (isEffectExactly<CorvKETranslateX, CorvKETranslateY, CorvKETranslateZ, CorvKETranslateInverseX,
                           CorvKETranslateInverseY, CorvKETranslateInverseZ>(effect))
  {
    const CorvKETranslateAxis& translation = static_cast<const CorvKETranslateAxis&>(effect);
    io_row.kind = TRANSLATION;
    io_row.axis = translation.axis();
    io_row.sign = translation.sign();
  }
  else if (isEffectExactly<CorvKERotateXY>(effect))
  {
    io_row.kind = DOUBLE_ROTATION;
    io_row.countTurns = 2;
  }
  else if (isEffectExactly<CorvKERotateTaitBryant>(effect))
  {
    io_row.kind = THREE_ROTATIONS;
    io_row.countTurns = 3;
  }
  else if (isEffectExactly<CorvKEPlan>(effect))
  {
    io_row.kind = PLANE;
    io_row.countTurns = 1;
  }
  else if (isEffectExactly<CorvKEFreeFlyer>(effect))
  {
    io_row.kind = FREE;
    io_row.countTurns = 3;
  }
  else
    io_row.kind = OTHER;
}

void CorvDeviceTable::addBody(const CorvBody& i_body, unsigned int i_joint)
{
  CBodyRow row;
  row.joint = i_joint;
  row.mover = m_joints[i_joint].mover;
  row.relative = i_body.relativePosition();
  row.isFixedIdentity = row.relative == ClumMat4::IDENTITY;
  if (i_body.configSpace()->size() > 0)
    m_hasRigidBodies = false;
  setPoints(i_body, row);
  addTerms(row);
  m_bodies.push_back(std::move(row));
}

/// Gathers the centres of the enclosing balls by radius; too many become the corners of their box. Those in the same
/// places are kept once.
void CorvDeviceTable::setPoints(const CorvBody& i_body, CBodyRow& o_row)
{
  std::vector<CorvBody::CEnclosingBall> balls;
  i_body.getEnclosingBalls(balls);
  std::map<double, std::vector<ClumPoint3>> byRadius;
  for (const CorvBody::CEnclosingBall& ball : balls)
  {
    std::vector<ClumPoint3>& points = byRadius[ball.radius];
    if (std::find(points.begin(), points.end(), ball.center) == points.end())
      points.push_back(ball.center);
  }
  if (balls.size() > MAX_ENCLOSING_POINTS)
  {
    ClumPoint3 low = balls[0].center, high = low;
    for (const CorvBody::CEnclosingBall& ball : balls)
      for (unsigned int k = 0; k < 3; ++k)
      {
        low[k] = std::min(low[k], ball.center[k] - ball.radius);
        high[k] = std::max(high[k], ball.center[k] + ball.radius);
      }
    byRadius.clear();
    for (unsigned int corner = 0; corner < 8; ++corner)
      byRadius[0.0].emplace_back(corner & 1 ? high.x() : low.x(), corner & 2 ? high.y() : low.y(),
                                 corner & 4 ? high.z() : low.z());
  }
  ClumMat4 frame = o_row.relative;
  for (int j = static_cast<int>(o_row.joint); j >= 0 && j != o_row.mover; j = m_joints[j].parent)
    frame = m_joints[j].fixed * frame;
  for (const auto& [radius, points] : byRadius)
  {
    const std::size_t first = o_row.points.size(), count = (points.size() + 3) / 4;
    CPointGroup group{static_cast<unsigned int>(first), static_cast<unsigned int>(count), radius, 0.0};
    o_row.points.resize(first + count);
    for (std::size_t i = 0; i < 4 * count; ++i)
    {
      const ClumPoint3 placed = frame * points[std::min(i, points.size() - 1)];
      CPointPack& pack = o_row.points[first + i / 4];
      pack.x[i % 4] = placed.x();
      pack.y[i % 4] = placed.y();
      pack.z[i % 4] = placed.z();
      group.reach = std::max(group.reach, placed.toVect3().norm());
    }
    o_row.groups.push_back(group);
  }
}

/// One term for each joint on the way to the root that turns the body.
void CorvDeviceTable::addTerms(CBodyRow& io_body)
{
  io_body.firstTerm = static_cast<unsigned int>(m_terms.size());
  for (int j = io_body.points.empty() ? -1 : io_body.mover; j >= 0;)
  {
    const CJointRow& row = m_joints[j];
    CTerm term{static_cast<unsigned int>(j), j == io_body.mover, row.countTurns, false, {0.0, 0.0, 0.0}, 0.0};
    if (term.isOwn)
      setOwnLevers(io_body, row, term);
    m_terms.push_back(term);
    const int parent = m_joints[j].parent;
    j = parent < 0 ? -1 : m_joints[parent].mover;
  }
  io_body.countTerms = static_cast<unsigned int>(m_terms.size()) - io_body.firstTerm;
}

void CorvDeviceTable::computeJointPositions(const double* i_values, std::vector<ClumMat4>& o_positions) const
{
  place(i_values);
  o_positions = m_frames;
}

void CorvDeviceTable::computeBodyPositions(const double* i_values, std::vector<ClumMat4>& o_positions) const
{
  place(i_values);
  o_positions.resize(m_bodies.size());
  for (std::size_t b = 0; b < m_bodies.size(); ++b)
  {
    const CBodyRow& body = m_bodies[b];
    o_positions[b] = body.isFixedIdentity ? m_frames[body.joint] : m_frames[body.joint] * body.relative;
  }
}

/// Sets all frames, and the axes of the turns.
void CorvDeviceTable::place(const double* i_values) const
{
  if (isKept(i_values, m_values) && m_isPlaced && !m_hasOtherEffects)
    return;
  m_isPlaced = true;
  for (CTerm& term : m_terms)
    term.isCurrent = false;
  forgetBounds();
  for (std::size_t j = 0; j < m_joints.size(); ++j)
  {
    const CJointRow& row = m_joints[j];
    if (row.parent < 0)
      m_frames[j] = row.fixed;
    else
      m_frames[j] = row.isFixedIdentity ? m_frames[row.parent] : m_frames[row.parent] * row.fixed;
    applyEffect(row, i_values + row.firstDof, m_frames[j], m_motions[j]);
  }
}

void CorvDeviceTable::forgetBounds() const
{
  for (CBound& bound : m_bounds)
    bound.isCurrent = false;
}

/// Multiplies a frame by an effect on the right. @param io_motion takes the axes and ways of it.
void CorvDeviceTable::applyEffect(const CJointRow& i_row, const double* i_values, ClumMat4& io_frame,
                                  CMotion& io_motion)
{
  ClumVect3* const axes = io_motion.axes;
  if (i_row.kind == PLANE || i_row.kind == FREE)
    for (unsigned int i = 0; i < 3; ++i)
      io_motion.ways[i] = io_frame.axis(BASE_VECTORS[i]);
  switch (i_row.kind)
  {
  case FIXED: break;
  case ROTATION:
    axes[0] = io_frame.axis(static_cast<ClumMat4::EBaseVector>(i_row.axis));
    turnFrame(io_frame, i_row.axis, i_row.sign * i_values[0]);
    break;
  case TRANSLATION:
    io_frame.setTranslation(io_frame.translation() +
                            io_frame.axis(static_cast<ClumMat4::EBaseVector>(i_row.axis)) * (i_row.sign * i_values[0]));
    break;
  case DOUBLE_ROTATION: turnFrameByAngles(io_frame, i_values, 2, axes); break;
  case THREE_ROTATIONS: turnFrameByAngles(io_frame, i_values, 3, axes); break;
  case PLANE:
    shiftFrame(io_frame, ClumVect3(i_values[0], i_values[1], 0.0));
    axes[0] = io_motion.ways[2];
    turnFrame(io_frame, 2, i_values[2]);
    break;
  case FREE:
    shiftFrame(io_frame, ClumVect3(i_values[0], i_values[1], i_values[2]));
    turnFrameByAngles(io_frame, i_values + 3, 3, axes);
    break;
  case OTHER:
  {
    ClumMat4 effect;
    if (i_row.effect->forward(i_values, effect).succeeded())
      io_frame *= effect;
    break;
  }
  }
}

/// Places the joints and sets their motions. @return -1 where no bound is known.
lmStatus CorvDeviceTable::prepare(const CStart& i_start) const
{
  if (!m_hasRigidBodies)
    return lmStatus::FAILURE;
  if (!isKept(i_start.rates, m_rates) || i_start.isStraight != m_isStraight || !m_hasRates || m_hasOtherEffects)
  {
    m_hasRates = false;
    m_isStraight = i_start.isStraight;
    forgetBounds();
    std::transform(m_rates.begin(), m_rates.end(), m_speeds.begin(), [](double i_rate) { return std::fabs(i_rate); });
    for (std::size_t j = 0; j < m_joints.size(); ++j)
      if (setRates(m_joints[j], m_speeds.data() + m_joints[j].firstDof, m_motions[j]).failed())
        return lmStatus::FAILURE;
    m_hasRates = true;
    m_advance = -1.0;
    m_fastestTurn = 0.0;
    for (const CMotion& motion : m_motions)
    {
      m_fastestTurn = std::max(m_fastestTurn, motion.whole.rate);
      for (unsigned int i = 0; i < motion.countTurns; ++i)
        m_fastestTurn = std::max(m_fastestTurn, motion.turns[i].rate);
    }
  }
  place(i_start.values);
  return lmStatus();
}

/// The longest advance at which no body exceeds its allowance.
double CorvDeviceTable::longestAdvance(const double* i_allowances, double i_rest) const
{
  double advance = i_rest;
  for (std::size_t b = 0; b < m_bodies.size(); ++b)
    if (isLimit(i_allowances[b]))
      advance = std::min(advance, bodyAdvance(std::max(i_allowances[b], 0.0), m_bodies[b], boundOf(b), advance));
  return advance;
}

double CorvDeviceTable::advanceWithin(const CStart& i_start, const double* i_allowances, double i_rest) const
{
  return prepare(i_start).succeeded() ? longestAdvance(i_allowances, i_rest) : 0.0;
}

double CorvDeviceTable::advance(const CStart& i_start, double* io_allowances, double i_rest) const
{
  const double advance = advanceWithin(i_start, io_allowances, i_rest);
  setAdvance(advance);
  for (std::size_t b = 0; b < m_bodies.size(); ++b)
  {
    if (!isLimit(io_allowances[b]))
      continue;
    const CBound& bound = boundOf(b);
    double slope;
    const double moved = std::min(displacement(m_bodies[b], bound, slope), speedBound(bound, advance));
    io_allowances[b] = std::max(0.0, io_allowances[b] - moved);
  }
  return advance;
}

void CorvDeviceTable::displacements(const CStart& i_start, double i_rest, double* o_moved) const
{
  if (prepare(i_start).failed())
  {
    std::fill(o_moved, o_moved + m_bodies.size(), std::numeric_limits<double>::infinity());
    return;
  }
  for (std::size_t b = 0; b < m_bodies.size(); ++b)
  {
    const CBound& bound = boundOf(b);
    const double moved = speedBound(bound, i_rest);
    if (areTurnsBelow(moved < INFINITE_SPEED ? MODERATE_TURN : SMALL_TURN, i_rest))
    {
      o_moved[b] = std::min(moved, bound.slopeAtZero * i_rest);
      continue;
    }
    setAdvance(i_rest);
    double slope;
    o_moved[b] = std::min(moved, displacement(m_bodies[b], bound, slope));
  }
}

/// Sets all of a motion but its axes.
lmStatus CorvDeviceTable::setRates(const CJointRow& i_row, const double* i_rates, CMotion& io_motion)
{
  io_motion.isMoving = false;
  io_motion.linear = 0.0;
  io_motion.hasWhole = false;
  io_motion.whole.rate = 0.0;
  const double* angular = i_rates;
  switch (i_row.kind)
  {
  case FIXED: return lmStatus();
  case ROTATION: break;
  case TRANSLATION: io_motion.linear = i_rates[0]; break;
  case DOUBLE_ROTATION: break;
  case THREE_ROTATIONS: break;
  case PLANE:
    io_motion.linear = std::sqrt(i_rates[0] * i_rates[0] + i_rates[1] * i_rates[1]);
    angular = i_rates + 2;
    break;
  case FREE:
    io_motion.linear = std::sqrt(i_rates[0] * i_rates[0] + i_rates[1] * i_rates[1] + i_rates[2] * i_rates[2]);
    angular = i_rates + 3;
    break;
  case OTHER:
    if (i_row.effect->forwardVelocity(i_rates, io_motion.linear, io_motion.whole.rate).failed())
      return lmStatus::FAILURE;
    io_motion.hasWhole = io_motion.whole.rate > 0.0;
    break;
  }
  for (unsigned int i = 0; i < io_motion.countTurns; ++i)
    io_motion.turns[i].rate = angular[i];
  if (io_motion.countTurns > 1)
  {
    const double aligned = io_motion.countTurns > 2 ? angular[0] + angular[2] : angular[0];
    io_motion.whole.rate = std::sqrt(angular[1] * angular[1] + aligned * aligned);
    io_motion.hasWhole = true;
  }
  io_motion.isMoving =
    io_motion.linear > 0.0 || io_motion.whole.rate > 0.0 || (io_motion.countTurns > 0 && io_motion.turns[0].rate > 0.0);
  return lmStatus();
}

/// Brings the levers of a body's terms to the placing, where its joints move.
void CorvDeviceTable::setLevers(const CBodyRow& i_body) const
{
  for (unsigned int t = i_body.firstTerm; t < i_body.firstTerm + i_body.countTerms; ++t)
  {
    CTerm& term = m_terms[t];
    if (term.isCurrent || !m_motions[term.joint].isMoving)
      continue;
    setTermLevers(i_body, term);
    term.isCurrent = true;
  }
}

/// The largest distances of the body, as it stands, from the axes and the origin of a joint, in the frame of the body's
/// mover, in which its points stand still.
void CorvDeviceTable::setTermLevers(const CBodyRow& i_body, CTerm& io_term) const
{
  const CMotion& motion = m_motions[io_term.joint];
  const ClumMat4& home = m_frames[i_body.mover];
  ClumVect3 axes[3];
  for (unsigned int i = 0; i < io_term.countVarying; ++i)
    axes[i] = turnedBack(home, motion.axes[i]);
  if (io_term.countVarying == 0 && (io_term.isOwn || !motion.hasWhole))
    return;
  if (io_term.isOwn)
    return measureLevers(i_body, ClumPoint3(), axes, 0, io_term.countVarying, 0.0, io_term);
  const ClumVect3 place = m_frames[io_term.joint].translation(), homePlace = home.translation();
  const ClumPoint3 origin(turnedBack(home, place - homePlace));
  measureLevers(i_body, origin, axes, 0, io_term.countVarying, place.norm() + homePlace.norm(), io_term);
}

/// What the configuration does not change of the levers of the joint that carries the body: its last turn and its
/// origin stand still in its frame.
void CorvDeviceTable::setOwnLevers(const CBodyRow& i_body, const CJointRow& i_mover, CTerm& o_term)
{
  ClumVect3 axes[3];
  if (i_mover.countTurns > 0)
  {
    const unsigned int last = i_mover.countTurns - 1;
    const unsigned int lastAxis = i_mover.kind == ROTATION ? i_mover.axis : i_mover.kind == DOUBLE_ROTATION ? 1u : 2u;
    axes[last][lastAxis] = 1.0;
    o_term.countVarying = last;
  }
  measureLevers(i_body, ClumPoint3(), axes, o_term.countVarying, i_mover.countTurns, 0.0, o_term);
}

/// The distance of the farthest point from an origin.
double CorvDeviceTable::largestReach(const CPointPack* i_begin, const CPointPack* i_end, const ClumPoint3& i_origin)
{
  double squares[4] = {0.0, 0.0, 0.0, 0.0};
  for (const CPointPack* pack = i_begin; pack != i_end; ++pack)
    for (unsigned int i = 0; i < 4; ++i)
    {
      const double x = pack->x[i] - i_origin.x(), y = pack->y[i] - i_origin.y(), z = pack->z[i] - i_origin.z();
      const double square = x * x + y * y + z * z;
      squares[i] = square > squares[i] ? square : squares[i];
    }
  return std::sqrt(std::max(std::max(squares[0], squares[1]), std::max(squares[2], squares[3])));
}

/// The largest length of shift + turn x p over the points.
double CorvDeviceTable::largestSpeed(const CPointPack* i_begin, const CPointPack* i_end, const ClumVect3& i_shift,
                                     const ClumVect3& i_turn)
{
  const double a = i_turn.x(), b = i_turn.y(), c = i_turn.z();
  double squares[4] = {0.0, 0.0, 0.0, 0.0};
  for (const CPointPack* pack = i_begin; pack != i_end; ++pack)
    for (unsigned int i = 0; i < 4; ++i)
    {
      const double x = i_shift.x() + (b * pack->z[i] - c * pack->y[i]);
      const double y = i_shift.y() + (c * pack->x[i] - a * pack->z[i]);
      const double z = i_shift.z() + (a * pack->y[i] - b * pack->x[i]);
      const double square = x * x + y * y + z * z;
      squares[i] = square > squares[i] ? square : squares[i];
    }
  return std::sqrt(std::max(std::max(squares[0], squares[1]), std::max(squares[2], squares[3])));
}

/// Sets the levers of the turns from `i_first` up to before `i_last`, and the whole lever.
/// @param i_height the size of the coordinates that origin and axes were computed from.
void CorvDeviceTable::measureLevers(const CBodyRow& i_body, const ClumPoint3& i_origin, const ClumVect3* i_axes,
                                    unsigned int i_first, unsigned int i_last, double i_height, CTerm& o_term)
{
  double levers[3] = {0.0, 0.0, 0.0};
  double whole = 0.0;
  for (const CPointGroup& group : i_body.groups)
  {
    const CPointPack* const begin = i_body.points.data() + group.first;
    const CPointPack* const end = begin + group.count;
    const double reach = o_term.isOwn ? group.reach : largestReach(begin, end, i_origin);
    const double margin = group.radius + LEVER_ROUNDING * (reach + i_height);
    whole = std::max(whole, reach + margin);
    for (unsigned int i = i_first; i < i_last; ++i)
    {
      // The distance from an axis is the speed of turning about it at the rate 1.
      const double lever = largestSpeed(begin, end, i_origin.toVect3() * i_axes[i], i_axes[i]);
      levers[i] = std::max(levers[i], lever + margin);
    }
  }
  std::copy(levers + i_first, levers + i_last, o_term.levers + i_first);
  o_term.wholeLever = whole;
}

/// The bound at the placing and the rates at hand.
const CorvDeviceTable::CBound& CorvDeviceTable::boundOf(std::size_t i_body) const
{
  CBound& bound = m_bounds[i_body];
  if (bound.isCurrent)
    return bound;
  const CBodyRow& body = m_bodies[i_body];
  setLevers(body);
  bound = CBound{true, 0.0, 0.0, INFINITE_SPEED, 0.0};
  for (unsigned int t = body.firstTerm; t < body.firstTerm + body.countTerms; ++t)
  {
    const CMotion& motion = m_motions[m_terms[t].joint];
    bound.linear += motion.linear;
    if (motion.isMoving)
      bound.slopeAtZero += slopeAtZero(m_terms[t]);
  }
  bound.slopeAtZero = (bound.slopeAtZero + bound.linear) * DISPLACEMENT_SAFETY;
  if (m_isStraight && body.countTerms > 0)
    setSpeed(body, bound);
  return bound;
}

/// Sets the speed of the body's fastest point, and by how much the way may be longer than that for each square of the
/// advance.
///
/// The joints' turns and translations are screws that act one after the other, the one at the tip first. Turning by an
/// angle leaves the tangent by at most half its square times the lever, and turns what was moved before by at most the
/// angle times its length.
void CorvDeviceTable::setSpeed(const CBodyRow& i_body, CBound& io_bound) const
{
  const ClumVect3 place = m_frames[i_body.mover].translation();
  ClumVect3 shift, turn;
  double moved = 0.0, growth = 0.0, doubt = 0.0;
  for (unsigned int t = i_body.firstTerm; t < i_body.firstTerm + i_body.countTerms; ++t)
  {
    const CTerm& term = m_terms[t];
    const CMotion& motion = m_motions[term.joint];
    if (!motion.isMoving)
      continue;
    if (m_joints[term.joint].kind == OTHER)
      return;
    const double height = term.isOwn ? 0.0 : place.norm() + m_frames[term.joint].translation().norm();
    for (unsigned int i = motion.countTurns; i-- > 0;)
    {
      const double rate = motion.turns[i].rate;
      growth += rate * (0.5 * rate * term.levers[i] + moved);
      moved += rate * term.levers[i];
      doubt += rate * height;
    }
    moved += motion.linear;
    addVelocity(term, place, shift, turn);
  }
  const ClumMat4& home = m_frames[i_body.mover];
  shift = turnedBack(home, shift);
  turn = turnedBack(home, turn);
  double speed = 0.0;
  for (const CPointGroup& group : i_body.groups)
  {
    const CPointPack* const begin = i_body.points.data() + group.first;
    speed = std::max(speed, largestSpeed(begin, begin + group.count, shift, turn) + group.radius * turn.norm());
  }
  io_bound.speed = (speed + LEVER_ROUNDING * (moved + doubt)) * DISPLACEMENT_SAFETY;
  io_bound.growth = growth * DISPLACEMENT_SAFETY;
}

/// Adds what a joint does to a point that is fixed to the body and stands at a place, and to the body's turning.
void CorvDeviceTable::addVelocity(const CTerm& i_term, const ClumVect3& i_place, ClumVect3& io_shift,
                                  ClumVect3& io_turn) const
{
  const CJointRow& row = m_joints[i_term.joint];
  const CMotion& motion = m_motions[i_term.joint];
  const double* rates = m_rates.data() + row.firstDof;
  if (row.kind == TRANSLATION)
    io_shift += m_frames[i_term.joint].axis(static_cast<ClumMat4::EBaseVector>(row.axis)) * (row.sign * rates[0]);
  const unsigned int countWays = row.kind == FREE ? 3 : row.kind == PLANE ? 2 : 0;
  for (unsigned int i = 0; i < countWays; ++i)
    io_shift += motion.ways[i] * rates[i];
  ClumVect3 turn;
  for (unsigned int i = 0; i < motion.countTurns; ++i)
    turn += motion.axes[i] * (row.sign * rates[countWays + i]);
  if (!i_term.isOwn)
    io_shift += turn * (i_place - m_frames[i_term.joint].translation());
  io_turn += turn;
}

double CorvDeviceTable::speedBound(const CBound& i_bound, double i_advance)
{
  return i_bound.speed < INFINITE_SPEED ? (i_bound.speed + i_bound.growth * i_advance) * i_advance : INFINITE_SPEED;
}

/// An advance at which that does not exceed an allowance, the longest there is but for rounding.
double CorvDeviceTable::advanceAtSpeed(const CBound& i_bound, double i_allowance)
{
  const double root = std::sqrt(i_bound.speed * i_bound.speed + 4.0 * i_bound.growth * i_allowance);
  const double advance = 2.0 * i_allowance / (i_bound.speed + root) * (1.0 - 1e-14);
  return speedBound(i_bound, advance) <= i_allowance ? advance : 0.0;
}

double CorvDeviceTable::slopeAtZero(const CTerm& i_term) const
{
  const CMotion& motion = m_motions[i_term.joint];
  double slope = 0.0;
  for (unsigned int i = 0; i < motion.countTurns; ++i)
    slope += i_term.levers[i] * motion.turns[i].rate;
  const double whole = i_term.wholeLever * motion.whole.rate;
  return motion.countTurns == 0 || (motion.hasWhole && whole < slope) ? whole : slope;
}

/// Brings the chords of all turns to an advance.
void CorvDeviceTable::setAdvance(double i_advance) const
{
  if (m_advance == i_advance)
    return;
  m_advance = i_advance;
  const auto set = [i_advance](CTurn& io_turn)
  {
    io_turn.chord = chordOfTurn(io_turn.rate * i_advance, io_turn.slope);
    io_turn.slope *= io_turn.rate;
  };
  for (CMotion& motion : m_motions)
    if (motion.isMoving)
    {
      for (unsigned int i = 0; i < motion.countTurns; ++i)
        set(motion.turns[i]);
      if (motion.hasWhole)
        set(motion.whole);
    }
}

bool CorvDeviceTable::areTurnsBelow(double i_angle, double i_advance) const
{
  return m_fastestTurn * i_advance <= i_angle;
}

/// The bound at the advance set last, and its slope there.
double CorvDeviceTable::displacement(const CBodyRow& i_body, const CBound& i_bound, double& o_slope) const
{
  double sum = i_bound.linear * m_advance;
  o_slope = i_bound.linear;
  for (unsigned int t = i_body.firstTerm; t < i_body.firstTerm + i_body.countTerms; ++t)
  {
    const CTerm& term = m_terms[t];
    const CMotion& motion = m_motions[term.joint];
    if (!motion.isMoving)
      continue;
    double moved = 0.0, slope = 0.0;
    for (unsigned int i = 0; i < motion.countTurns; ++i)
    {
      moved += term.levers[i] * motion.turns[i].chord;
      slope += term.levers[i] * motion.turns[i].slope;
    }
    if (motion.hasWhole && (motion.countTurns == 0 || term.wholeLever * motion.whole.chord < moved))
    {
      moved = term.wholeLever * motion.whole.chord;
      slope = term.wholeLever * motion.whole.slope;
    }
    sum += moved;
    o_slope += slope;
  }
  o_slope *= DISPLACEMENT_SAFETY;
  return sum * DISPLACEMENT_SAFETY;
}

/// The longest advance found, up to `i_longest`, at which one of the bounds does not exceed an allowance. The joints'
/// own bound is concave and 0 at 0, so Newton's steps from below never overshoot.
double CorvDeviceTable::bodyAdvance(double i_allowance, const CBodyRow& i_body, const CBound& i_bound,
                                    double i_longest) const
{
  if (i_bound.slopeAtZero * i_longest <= i_allowance || speedBound(i_bound, i_longest) <= i_allowance)
    return i_longest;
  const double byJoints = std::min(i_longest, i_allowance / i_bound.slopeAtZero);
  const double together = std::min(i_longest, advanceAtSpeed(i_bound, i_allowance));
  if (areTurnsBelow(SMALL_TURN, i_longest) || (together > byJoints && areTurnsBelow(MODERATE_TURN, together)))
    return std::max(byJoints, together);
  setAdvance(i_longest);
  double slope;
  if (displacement(i_body, i_bound, slope) <= i_allowance)
    return i_longest;
  double advance = byJoints;
  for (unsigned int step = 0; step < MAX_NEWTON_STEPS && advance > 0.0; ++step)
  {
    setAdvance(advance);
    const double moved = displacement(i_body, i_bound, slope);
    if (moved >= i_allowance || slope <= 0.0)
      break;
    const double gain = (i_allowance - moved) / slope;
    if (advance + gain >= i_longest)
      break;
    advance += gain;
    if (gain < NEWTON_GAIN * advance)
      break;
  }
  return std::max(advance, together);
}
