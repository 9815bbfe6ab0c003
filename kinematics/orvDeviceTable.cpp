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
constexpr double HALF_TURN = 3.14159265358979323846;

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

/// Multiplies by the three rotations about x, y and z, noting each axis where it stands when its turn comes.
template <class TURN>
void turnFrameThrice(ClumMat4& io_frame, const double* i_angles, unsigned int i_count, TURN* o_turns)
{
  static constexpr ClumMat4::EBaseVector AXES[3] = {ClumMat4::X_AXIS, ClumMat4::Y_AXIS, ClumMat4::Z_AXIS};
  for (unsigned int i = 0; i < i_count; ++i)
  {
    if (o_turns)
      o_turns[i].axis = io_frame.axis(AXES[i]);
    turnFrame(io_frame, i, i_angles[i]);
  }
}
} // namespace

CorvDeviceTable::CorvDeviceTable(const CorvJointConstShPtr& i_root, const CorvConfigSpace& i_space)
{
  if (i_root)
    addJoint(*i_root, -1, i_space);
  m_frames.resize(m_joints.size());
  m_motions.resize(m_joints.size());
  m_bounds.resize(m_bodies.size());
  std::size_t countTerms = 0, countPoints = 0;
  for (const CBodyRow& body : m_bodies)
  {
    for (int j = m_joints[body.joint].mover; j >= 0;
         j = m_joints[j].parent < 0 ? -1 : m_joints[m_joints[j].parent].mover)
      ++countTerms;
    countPoints = std::max(countPoints, body.points.size());
  }
  m_terms.resize(countTerms);
  m_points.resize(countPoints);
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
  if (io_row.countDofs == 0)
    io_row.kind = FIXED;
  else if (isEffectExactly<CorvKERotateX, CorvKERotateY, CorvKERotateZ, CorvKERotateInverseX, CorvKERotateInverseY,
                           CorvKERotateInverseZ>(effect))
  {
    const CorvKERotateAxis& rotation = static_cast<const CorvKERotateAxis&>(effect);
    io_row.kind = ROTATION;
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
    io_row.kind = DOUBLE_ROTATION;
  else if (isEffectExactly<CorvKERotateTaitBryant>(effect))
    io_row.kind = THREE_ROTATIONS;
  else if (isEffectExactly<CorvKEPlan>(effect))
    io_row.kind = PLANE;
  else if (isEffectExactly<CorvKEFreeFlyer>(effect))
    io_row.kind = FREE;
  else
    io_row.kind = OTHER;
}

void CorvDeviceTable::addBody(const CorvBody& i_body, unsigned int i_joint)
{
  CBodyRow row;
  row.joint = i_joint;
  row.relative = i_body.relativePosition();
  row.isFixedIdentity = row.relative == ClumMat4::IDENTITY;
  if (i_body.configSpace()->size() > 0)
    m_hasRigidBodies = false;
  setPoints(i_body, row);
  m_bodies.push_back(std::move(row));
}

/// Gathers the centres of the enclosing balls by radius; too many become the corners of their box.
void CorvDeviceTable::setPoints(const CorvBody& i_body, CBodyRow& o_row)
{
  std::vector<CorvBody::CEnclosingBall> balls;
  i_body.getEnclosingBalls(balls);
  std::map<double, std::vector<ClumPoint3>> byRadius;
  for (const CorvBody::CEnclosingBall& ball : balls)
    byRadius[ball.radius].push_back(ball.center);
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
  for (const auto& [radius, points] : byRadius)
  {
    o_row.groups.push_back(
      CPointGroup{static_cast<unsigned int>(o_row.points.size()), static_cast<unsigned int>(points.size()), radius});
    o_row.points.insert(o_row.points.end(), points.begin(), points.end());
  }
}

void CorvDeviceTable::computeJointPositions(const double* i_values, std::vector<ClumMat4>& o_positions) const
{
  o_positions.resize(m_joints.size());
  place(i_values, o_positions.data(), false);
}

void CorvDeviceTable::computeBodyPositions(const double* i_values, std::vector<ClumMat4>& o_positions) const
{
  place(i_values, m_frames.data(), false);
  o_positions.resize(m_bodies.size());
  for (std::size_t b = 0; b < m_bodies.size(); ++b)
  {
    const CBodyRow& body = m_bodies[b];
    o_positions[b] = body.isFixedIdentity ? m_frames[body.joint] : m_frames[body.joint] * body.relative;
  }
}

void CorvDeviceTable::place(const double* i_values, ClumMat4* o_frames, bool i_withAxes) const
{
  for (std::size_t j = 0; j < m_joints.size(); ++j)
  {
    const CJointRow& row = m_joints[j];
    if (row.parent < 0)
      o_frames[j] = row.fixed;
    else
      o_frames[j] = row.isFixedIdentity ? o_frames[row.parent] : o_frames[row.parent] * row.fixed;
    applyEffect(row, i_values + row.firstDof, o_frames[j], i_withAxes ? m_motions[j].turns : nullptr);
  }
}

/// Multiplies a frame by an effect on the right. @param o_turns null, or takes the axes of rotation.
void CorvDeviceTable::applyEffect(const CJointRow& i_row, const double* i_values, ClumMat4& io_frame, CTurn* o_turns)
{
  switch (i_row.kind)
  {
  case FIXED: break;
  case ROTATION:
    if (o_turns)
      o_turns[0].axis = io_frame.axis(static_cast<ClumMat4::EBaseVector>(i_row.axis));
    turnFrame(io_frame, i_row.axis, i_row.sign * i_values[0]);
    break;
  case TRANSLATION:
    io_frame.setTranslation(io_frame.translation() +
                            io_frame.axis(static_cast<ClumMat4::EBaseVector>(i_row.axis)) * (i_row.sign * i_values[0]));
    break;
  case DOUBLE_ROTATION: turnFrameThrice(io_frame, i_values, 2, o_turns); break;
  case THREE_ROTATIONS: turnFrameThrice(io_frame, i_values, 3, o_turns); break;
  case PLANE:
    shiftFrame(io_frame, ClumVect3(i_values[0], i_values[1], 0.0));
    if (o_turns)
      o_turns[0].axis = io_frame.axis(ClumMat4::Z_AXIS);
    turnFrame(io_frame, 2, i_values[2]);
    break;
  case FREE:
    shiftFrame(io_frame, ClumVect3(i_values[0], i_values[1], i_values[2]));
    turnFrameThrice(io_frame, i_values + 3, 3, o_turns);
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

lmStatus CorvDeviceTable::boundedMove(const double* i_values, const double* i_rates, double i_rest,
                                      double* io_maxDistances, double& o_advance) const
{
  if (!m_hasRigidBodies)
    return lmStatus::FAILURE;
  for (std::size_t j = 0; j < m_joints.size(); ++j)
    if (setRates(m_joints[j], i_rates + m_joints[j].firstDof, m_motions[j]).failed())
      return lmStatus::FAILURE;
  place(i_values, m_frames.data(), true);

  const double infinity = std::numeric_limits<double>::infinity();
  unsigned int countTerms = 0;
  double advance = i_rest;
  setAdvance(advance);
  for (std::size_t b = 0; b < m_bodies.size(); ++b)
  {
    CBound& bound = m_bounds[b];
    bound = CBound{0.0, 0.0, countTerms, 0};
    if (m_bodies[b].points.empty() || io_maxDistances[b] == infinity)
      continue;
    makeBound(m_bodies[b], bound);
    countTerms += bound.countTerms;
    advance = std::min(advance, advanceWithin(std::max(io_maxDistances[b], 0.0), bound, advance));
  }

  setAdvance(advance);
  for (std::size_t b = 0; b < m_bodies.size(); ++b)
  {
    double slope;
    if (m_bounds[b].slopeAtZero > 0.0)
      io_maxDistances[b] = std::max(0.0, io_maxDistances[b] - displacement(m_bounds[b], slope));
  }
  o_advance = advance;
  return lmStatus();
}

/// Sets all of a motion but its axes.
lmStatus CorvDeviceTable::setRates(const CJointRow& i_row, const double* i_rates, CMotion& io_motion)
{
  io_motion.isMoving = false;
  io_motion.linear = 0.0;
  io_motion.countTurns = 0;
  io_motion.hasWhole = false;
  io_motion.whole.rate = 0.0;
  const double* angular = i_rates;
  switch (i_row.kind)
  {
  case FIXED: return lmStatus();
  case ROTATION: io_motion.countTurns = 1; break;
  case TRANSLATION: io_motion.linear = i_rates[0]; break;
  case DOUBLE_ROTATION: io_motion.countTurns = 2; break;
  case THREE_ROTATIONS: io_motion.countTurns = 3; break;
  case PLANE:
    io_motion.linear = std::sqrt(i_rates[0] * i_rates[0] + i_rates[1] * i_rates[1]);
    io_motion.countTurns = 1;
    angular = i_rates + 2;
    break;
  case FREE:
    io_motion.linear = std::sqrt(i_rates[0] * i_rates[0] + i_rates[1] * i_rates[1] + i_rates[2] * i_rates[2]);
    io_motion.countTurns = 3;
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

/// Collects what moves a body, with today's levers.
void CorvDeviceTable::makeBound(const CBodyRow& i_body, CBound& o_bound) const
{
  const ClumMat4 frame = i_body.isFixedIdentity ? m_frames[i_body.joint] : m_frames[i_body.joint] * i_body.relative;
  for (std::size_t p = 0; p < i_body.points.size(); ++p)
    m_points[p] = frame * i_body.points[p];
  for (int j = m_joints[i_body.joint].mover; j >= 0;)
  {
    const CMotion& motion = m_motions[j];
    o_bound.linear += motion.linear;
    if (motion.isMoving && (motion.countTurns > 0 || motion.hasWhole))
    {
      CTerm& term = m_terms[o_bound.firstTerm + o_bound.countTerms++];
      term.joint = static_cast<unsigned int>(j);
      setLevers(i_body, term);
      o_bound.slopeAtZero += slopeAtZero(term);
    }
    const int parent = m_joints[j].parent;
    j = parent < 0 ? -1 : m_joints[parent].mover;
  }
  o_bound.slopeAtZero = (o_bound.slopeAtZero + o_bound.linear) * DISPLACEMENT_SAFETY;
}

/// The largest distances of the body, as it stands, from the axes and the origin of a joint.
void CorvDeviceTable::setLevers(const CBodyRow& i_body, CTerm& io_term) const
{
  const CMotion& motion = m_motions[io_term.joint];
  const ClumPoint3 origin(m_frames[io_term.joint].translation());
  double levers[3] = {0.0, 0.0, 0.0};
  double whole = 0.0;
  const double height = origin.toVect3().norm();
  for (const CPointGroup& group : i_body.groups)
  {
    double squares[3] = {0.0, 0.0, 0.0};
    double squaredReach = 0.0;
    for (unsigned int p = group.first; p < group.first + group.count; ++p)
    {
      const ClumVect3 arm = m_points[p] - origin;
      squaredReach = std::max(squaredReach, arm.squaredNorm());
      for (unsigned int i = 0; i < motion.countTurns; ++i)
        squares[i] = std::max(squares[i], (arm * motion.turns[i].axis).squaredNorm());
    }
    const double reach = std::sqrt(squaredReach);
    const double margin = group.radius + LEVER_ROUNDING * (reach + height);
    whole = std::max(whole, reach + margin);
    for (unsigned int i = 0; i < motion.countTurns; ++i)
      levers[i] = std::max(levers[i], std::sqrt(squares[i]) + margin);
  }
  std::copy(levers, levers + 3, io_term.levers);
  io_term.wholeLever = whole;
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

/// Brings the sines of all turns to an advance.
void CorvDeviceTable::setAdvance(double i_advance) const
{
  m_advance = i_advance;
  const auto set = [i_advance](CTurn& io_turn)
  {
    const double angle = io_turn.rate * i_advance;
    double cosine = 0.0;
    io_turn.sine = 2.0;
    if (angle < HALF_TURN)
    {
      lumSinCos(0.5 * angle, io_turn.sine, cosine);
      io_turn.sine *= 2.0;
    }
    io_turn.slope = io_turn.rate * cosine;
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

/// The bound at the advance set last, and its slope there.
double CorvDeviceTable::displacement(const CBound& i_bound, double& o_slope) const
{
  double sum = i_bound.linear * m_advance;
  o_slope = i_bound.linear;
  for (unsigned int t = i_bound.firstTerm; t < i_bound.firstTerm + i_bound.countTerms; ++t)
  {
    const CTerm& term = m_terms[t];
    const CMotion& motion = m_motions[term.joint];
    double moved = 0.0, slope = 0.0;
    for (unsigned int i = 0; i < motion.countTurns; ++i)
    {
      moved += term.levers[i] * motion.turns[i].sine;
      slope += term.levers[i] * motion.turns[i].slope;
    }
    if (motion.hasWhole && (motion.countTurns == 0 || term.wholeLever * motion.whole.sine < moved))
    {
      moved = term.wholeLever * motion.whole.sine;
      slope = term.wholeLever * motion.whole.slope;
    }
    sum += moved;
    o_slope += slope;
  }
  o_slope *= DISPLACEMENT_SAFETY;
  return sum * DISPLACEMENT_SAFETY;
}

/// The longest advance found, up to `i_longest`, at which the bound does not exceed an allowance. The bound is concave
/// and 0 at 0, so Newton's steps from below never overshoot.
double CorvDeviceTable::advanceWithin(double i_allowance, const CBound& i_bound, double i_longest) const
{
  if (i_bound.slopeAtZero * i_longest <= i_allowance)
    return i_longest;
  if (m_advance != i_longest)
    setAdvance(i_longest);
  double slope;
  if (displacement(i_bound, slope) <= i_allowance)
    return i_longest;
  double advance = std::min(i_longest, i_allowance / i_bound.slopeAtZero);
  for (unsigned int step = 0; step < MAX_NEWTON_STEPS && advance > 0.0; ++step)
  {
    setAdvance(advance);
    const double moved = displacement(i_bound, slope);
    if (moved >= i_allowance || slope <= 0.0)
      break;
    const double gain = (i_allowance - moved) / slope;
    if (advance + gain >= i_longest)
      break;
    advance += gain;
    if (gain < NEWTON_GAIN * advance)
      break;
  }
  return advance;
}
