#pragma once

#include "foundation/lumMat4.h"
#include "foundation/lumProximityModel.h"

struct ClumDistanceResult;

/// Two placed models of the proximity toolkit, seen in the coordinates of the first, and the questions about them.
///
/// Distances are those of the bare triangles: a swept shape's are shorter by `sweep()`.
class LUM_API CProximityPair
{
public:
  /// @param i_a of the proximity toolkit, as `i_b`. All must outlive the pair.
  CProximityPair(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                 const ClumMat4& i_poseB);

  const CProximityModel& a() const { return m_a; }
  const CProximityModel& b() const { return m_b; }
  double sweep() const { return m_sweep; }
  /// Between the centres.
  double length() const { return m_length; }
  /// By how much a distance may be told wrong.
  double slack() const { return m_slack; }
  /// A distance of the triangles that is a contact.
  double reach() const { return m_sweep + m_slack; }
  /// A lower bound for the swept shapes from their enclosing balls.
  double ballGap() const { return m_length - m_a.radius() - m_b.radius(); }
  /// A better one for long shapes: from the box around either and the other's ball, and from the segments in both.
  double enclosureGap() const;
  /// Whether one of these proves that nothing touches.
  bool isApart() const;
  /// Of the second, in the coordinates of the first.
  ClumVect3 translation() const
  {
    return ClumVect3(m_query.translation[0], m_query.translation[1], m_query.translation[2]);
  }
  ClumVect3 toA(const ClumVect3& i_point) const { return turnToA(i_point) + translation(); }
  ClumVect3 toB(const ClumVect3& i_point) const { return turnToB(i_point - translation()); }
  ClumVect3 turnToA(const ClumVect3& i_vector) const
  {
    const double* r = m_query.rotation;
    return ClumVect3(r[0] * i_vector.x() + r[1] * i_vector.y() + r[2] * i_vector.z(),
                     r[3] * i_vector.x() + r[4] * i_vector.y() + r[5] * i_vector.z(),
                     r[6] * i_vector.x() + r[7] * i_vector.y() + r[8] * i_vector.z());
  }
  ClumVect3 turnToB(const ClumVect3& i_vector) const
  {
    const double* r = m_query.rotation;
    return ClumVect3(r[0] * i_vector.x() + r[3] * i_vector.y() + r[6] * i_vector.z(),
                     r[1] * i_vector.x() + r[4] * i_vector.y() + r[7] * i_vector.z(),
                     r[2] * i_vector.x() + r[5] * i_vector.y() + r[8] * i_vector.z());
  }

  /// Moves the second, in the coordinates of the first.
  void moveTo(const ClumVect3& i_translation);
  /// Where a search begins; ranks beyond the triangles are passed over.
  void hint(unsigned int i_triangleA, unsigned int i_triangleB);
  void hint(const CProximityAnswer& i_answer);

  CProximityAnswer search(double i_cap, double i_share, double i_stop);
  /// Looks for triangles within `reach()`.
  CProximityAnswer searchContact();
  bool areTouching();
  /// True if some part of one lies inside a closed part of the other, given that the surfaces are apart.
  bool isNested() const;

  /// Writes the two nearest triangles, if any were found.
  void writeTriangles(const CProximityAnswer& i_answer, ClumDistanceResult& o_result) const;
  /// Writes the two nearest points of the swept shapes in world coordinates.
  void writePoints(const CProximityAnswer& i_answer, ClumDistanceResult& o_result) const;
  /// @return the distance of the two triangles found.
  double nearestPoints(const CProximityAnswer& i_answer, ClumVect3& o_onA, ClumVect3& o_onB) const;

private:
  double coreGap() const;
  bool haveCores() const { return m_a.hasCore() && m_b.hasCore(); }
  bool isFar() const;
  bool isSecondInFirst() const;
  bool isFirstInSecond() const;

  const CProximityModel& m_a;
  const CProximityModel& m_b;
  const ClumMat4& m_poseA;
  CProximityQuery m_query;
  double m_sweep; ///< of both together
  double m_length;
  double m_slack;
};
