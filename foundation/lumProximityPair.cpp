#include "foundation/lumProximityPair.h"

#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumProximityFar.h"
#include "foundation/lumTriangleDistance.h"

#include <algorithm>
#include <cmath>

namespace
{
/// What is taken off a distance for rounding, in parts of the sizes involved, and of how far the poses reach.
constexpr double PROXIMITY_SIZE_SLACK = 1e-11;
constexpr double PROXIMITY_POSE_SLACK = 4e-15;
/// Beyond this distance of the centres, in parts of the radii, the far search is used.
constexpr double PROXIMITY_FAR_RATIO = 1024.0;

struct CPairOfTriangles
{
  ClumVect3 s[3];
  ClumVect3 t[3];

  CPairOfTriangles(const double i_row[9], const double i_lane[9])
  {
    for (unsigned int k = 0; k < 3; ++k)
    {
      s[k].setValue(i_row[3 * k], i_row[3 * k + 1], i_row[3 * k + 2]);
      t[k].setValue(i_lane[3 * k], i_lane[3 * k + 1], i_lane[3 * k + 2]);
    }
  }
};

/// Not less than the length, and quicker.
double sumOfCoordinates(const ClumVect3& i_vector)
{
  return std::fabs(i_vector.x()) + std::fabs(i_vector.y()) + std::fabs(i_vector.z());
}

/// A box in single precision has axes that are orthonormal to so much.
constexpr double PROXIMITY_AXES_SHARE = 1.0 + 1e-6;

/// The square of the distance of a point from the box around all triangles of a model, as its axes measure it.
double squareFromBox(const CProximityModel::CAround& i_box, const ClumVect3& i_point)
{
  const double x = i_point.x() - i_box.center[0], y = i_point.y() - i_box.center[1], z = i_point.z() - i_box.center[2];
  double gaps[3];
  for (unsigned int k = 0; k < 3; ++k)
  {
    const double* axis = i_box.axes[k];
    gaps[k] = std::max(0.0, std::fabs(x * axis[0] + y * axis[1] + z * axis[2]) - i_box.half[k]);
  }
  return gaps[0] * gaps[0] + gaps[1] * gaps[1] + gaps[2] * gaps[2];
}

/// A lower bound of that distance.
double distanceFromBox(const CProximityModel& i_model, const ClumVect3& i_point)
{
  return std::sqrt(squareFromBox(i_model.around(), i_point)) / PROXIMITY_AXES_SHARE;
}

/// Whether that bound is more than a limit.
bool isBeyondBox(const CProximityModel& i_model, const ClumVect3& i_point, double i_limit)
{
  const double limit = i_limit * PROXIMITY_AXES_SHARE;
  return squareFromBox(i_model.around(), i_point) > limit * limit;
}

bool arePairCornersPierced(const double i_row[9], const double i_lane[9])
{
  const CPairOfTriangles pair(i_row, i_lane);
  return lumAreSurelyPierced(pair.s, pair.t);
}

double pairCornersDistance(const double i_row[9], const double i_lane[9])
{
  const CPairOfTriangles pair(i_row, i_lane);
  return lumSureTriangleDistance(pair.s, pair.t);
}
} // namespace

CProximityPair::CProximityPair(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                               const ClumMat4& i_poseB)
  : m_a(static_cast<const CProximityModel&>(i_a)), m_b(static_cast<const CProximityModel&>(i_b)), m_poseA(i_poseA),
    m_sweep(m_a.sweep() + m_b.sweep())
{
  m_query.a = &m_a.tree();
  m_query.b = &m_b.tree();
  for (unsigned int r = 0; r < 3; ++r)
    for (unsigned int c = 0; c < 3; ++c)
      m_query.rotation[3 * r + c] =
        i_poseA(0, r) * i_poseB(0, c) + i_poseA(1, r) * i_poseB(1, c) + i_poseA(2, r) * i_poseB(2, c);
  const ClumVect3 turnedA = i_poseA * m_a.center().toVect3(), turnedB = i_poseB * m_b.center().toVect3();
  const ClumVect3 placeA = i_poseA.translation(), placeB = i_poseB.translation();
  const ClumVect3 offset = (placeB - placeA) + (turnedB - turnedA);
  moveTo(ClumVect3(i_poseA.xAxis().scalarProduct(offset), i_poseA.axis(ClumMat4::Y_AXIS).scalarProduct(offset),
                   i_poseA.axis(ClumMat4::Z_AXIS).scalarProduct(offset)));
  m_slack = PROXIMITY_SIZE_SLACK * (m_a.radius() + m_b.radius() + m_length) +
            PROXIMITY_POSE_SLACK * ((sumOfCoordinates(placeA) + sumOfCoordinates(placeB)) +
                                    (sumOfCoordinates(turnedA) + sumOfCoordinates(turnedB)));
  m_query.sweep = m_sweep;
  m_query.hintA = m_query.hintB = PROXIMITY_NONE;
  m_query.isPierced = &arePairCornersPierced;
  m_query.distance = &pairCornersDistance;
}

double CProximityPair::enclosureGap() const
{
  const double gap = std::max(distanceFromBox(m_a, translation()) - m_b.radius() - m_a.sweep(),
                              distanceFromBox(m_b, toB(ClumVect3())) - m_a.radius() - m_b.sweep());
  return haveCores() ? std::max(gap, coreGap()) : gap;
}

void CProximityPair::moveTo(const ClumVect3& i_translation)
{
  for (unsigned int k = 0; k < 3; ++k)
    m_query.translation[k] = i_translation[k];
  m_length = i_translation.norm();
  m_query.size = m_a.tree().radius + m_b.tree().radius + m_length;
}

void CProximityPair::hint(unsigned int i_triangleA, unsigned int i_triangleB)
{
  if (i_triangleA >= m_a.countTriangles() || i_triangleB >= m_b.countTriangles())
    return;
  m_query.hintA = m_a.place(i_triangleA);
  m_query.hintB = m_b.place(i_triangleB);
}

void CProximityPair::hint(const CProximityAnswer& i_answer)
{
  m_query.hintA = i_answer.placeA;
  m_query.hintB = i_answer.placeB;
}

CProximityAnswer CProximityPair::search(double i_cap, double i_share, double i_stop)
{
  m_query.cap = i_cap;
  m_query.share = i_share;
  m_query.stop = i_stop;
  CProximityAnswer answer;
  if (isFar())
    lumProximityFarDistance(m_query, answer);
  else
    lumProximityKernel().distance(m_query, answer);
  return answer;
}

CProximityAnswer CProximityPair::searchContact()
{
  if (isFar())
    return search(reach(), 1.0, reach());
  m_query.cap = m_query.stop = reach();
  m_query.share = 1.0;
  CProximityAnswer answer;
  lumProximityKernel().contact(m_query, answer);
  return answer;
}

bool CProximityPair::isFar() const
{
  return m_length > PROXIMITY_FAR_RATIO * (m_a.tree().radius + m_b.tree().radius);
}

bool CProximityPair::areTouching()
{
  return !isApart() && (searchContact().best <= reach() || isNested());
}

double CProximityPair::coreGap() const
{
  const CProximityModel::CCore &a = m_a.core(), &b = m_b.core();
  const ClumVect3 axisB = turnToA(b.axis), between = toA(b.center) - a.center;
  const auto clamped = [](double i_value, double i_half) { return std::max(-i_half, std::min(i_value, i_half)); };
  const double cosine = a.axis.scalarProduct(axisB), alongA = a.axis.scalarProduct(between);
  const double alongB = axisB.scalarProduct(between), square = 1.0 - cosine * cosine;
  const double s = square > 1e-9 ? clamped((alongA - cosine * alongB) / square, a.half) : 0.0;
  const double t = clamped(cosine * s - alongB, b.half);
  const ClumVect3 gap = between + axisB * t - a.axis * clamped(alongA + cosine * t, a.half);
  const double length = gap.norm();
  // Whether or not these are the nearest points, what the planes across the line between them tell is sound.
  return length > 0.0 ? (gap.scalarProduct(between) - a.half * std::fabs(gap.scalarProduct(a.axis)) -
                         b.half * std::fabs(gap.scalarProduct(axisB))) /
                            length -
                          (a.radius + b.radius + m_sweep)
                      : -m_length;
}

bool CProximityPair::isApart() const
{
  return ballGap() > m_slack || (haveCores() && coreGap() > m_slack) ||
         isBeyondBox(m_a, translation(), m_b.radius() + m_a.sweep() + m_slack) ||
         isBeyondBox(m_b, toB(ClumVect3()), m_a.radius() + m_b.sweep() + m_slack);
}

bool CProximityPair::isNested() const
{
  return (m_a.hasSolid() && isSecondInFirst()) || (m_b.hasSolid() && isFirstInSecond());
}

// A part that lies inside is not longer than what it lies in.

bool CProximityPair::isSecondInFirst() const
{
  return m_b.hasPartInside(
    m_a, [this] { return toB(ClumVect3()); }, [this](const ClumVect3& i_point) { return toA(i_point); });
}

bool CProximityPair::isFirstInSecond() const
{
  return m_a.hasPartInside(
    m_b, [this] { return translation(); }, [this](const ClumVect3& i_point) { return toB(i_point); });
}

void CProximityPair::writeTriangles(const CProximityAnswer& i_answer, ClumDistanceResult& o_result) const
{
  if (i_answer.placeA == PROXIMITY_NONE)
    return;
  o_result.hasTriangles = true;
  o_result.triangleA = m_a.triangleAt(i_answer.placeA);
  o_result.triangleB = m_b.triangleAt(i_answer.placeB);
}

void CProximityPair::writePoints(const CProximityAnswer& i_answer, ClumDistanceResult& o_result) const
{
  ClumVect3 onA, onB;
  nearestPoints(i_answer, onA, onB);
  const ClumVect3 direction = (onB - onA).normalized(), center = m_a.center().toVect3();
  o_result.hasPoints = true;
  o_result.pointA = m_poseA * ClumPoint3(center + (onA + direction * m_a.sweep()));
  o_result.pointB = m_poseA * ClumPoint3(center + (onB - direction * m_b.sweep()));
}

double CProximityPair::nearestPoints(const CProximityAnswer& i_answer, ClumVect3& o_onA, ClumVect3& o_onB) const
{
  ClumVect3 s[3], t[3];
  m_a.corners(i_answer.placeA, s);
  m_b.corners(i_answer.placeB, t);
  for (ClumVect3& corner : t)
    corner = toA(corner);
  return lumTriangleDistance(s, t, o_onA, o_onB);
}
