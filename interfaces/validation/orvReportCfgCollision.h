#pragma once

#include "foundation/handles.h"
#include "foundation/lumPoint3.h"
#include "kinematics/orvBody.h"
#include "validation/orvCollisionQuery.h"
#include "validation/orvReportCollision.h"

#include <cstdint>
#include <utility>
#include <vector>

/// What a collision validator found at a configuration.
///
/// `distance(i)` is a lower bound of the clearance of tested body i, net of the tolerances in force. Beside it stands
/// an allowance: how far the body may move, all other bodies moving by theirs, before anything can touch. An obstacle's
/// distance is the body's alone; two moving bodies share the distance between them.
///
/// The report keeps what it was made with (the query and the versions of the world), by which it is told whether it
/// answers another question. Distances are there only if nothing touches and if they were asked for.
class LUM_API CorvReportCfgCollision : public CorvReportCollision
{
  LUM_UNREFLECTED(CorvReportCfgCollision, CorvReportCollision);

public:
  /// The state of the world in which a report was made.
  struct CStamps
  {
    unsigned int device = 0;
    unsigned int bodies = 0; ///< sum of the bodies' versions
    std::uint64_t scene = 0; ///< of the shapes, the obstacles' positions, the tests and their parameters
    bool operator==(const CStamps& i_other) const
    {
      return device == i_other.device && bodies == i_other.bodies && scene == i_other.scene;
    }
  };

  /// What touches: a body, and a geometry that stands still or another body.
  struct CContact
  {
    int body = -1;
    int otherBody = -1;              ///< -1 for an obstacle
    ClumGeometryConstWkPtr geometry; ///< of the first body
    ClumGeometryConstWkPtr otherGeometry;
  };

  ~CorvReportCfgCollision() override;
  static CorvReportCfgCollisionShPtr create();
  static CorvReportCfgCollisionShPtr createCopy(const CorvReportCfgCollisionConstShPtr& i_objectToCopy);
  CorvValidationReportShPtr clone() const override;

  void appendDistance(double i_distance);
  double distance(unsigned int i_rank) const;
  unsigned int countDistances() const { return static_cast<unsigned int>(m_distances.size()); }
  /// For a corrected copy of a report.
  void offsetDistance(unsigned int i_rank, double i_delta);
  using CorvReportCollision::changeToleranceModifier;

  /// The allowance of a tested body, the slack of the query included; 0 past the end.
  double allowance(unsigned int i_rank) const;
  bool isAllowanceCapped(unsigned int i_rank) const;
  unsigned int countAllowances() const { return static_cast<unsigned int>(m_allowances.size()); }
  /// @param i_isCapped true if only the query's need limited the value.
  void appendAllowance(double i_allowance, bool i_isCapped) { m_allowances.push_back({i_allowance, i_isCapped}); }

  /// True if two moving bodies were tested against each other, so that allowances share distances.
  bool sharesDistances() const { return m_sharesDistances; }
  void sharesDistances(bool i_shares) { m_sharesDistances = i_shares; }
  /// Takes what a grown tolerance takes off every distance and allowance; for a corrected copy of a report.
  void shrinkDistances(double i_growth);

  bool reportsMaxAllowableDistances() const { return m_query.reportsMaxAllowableDistances; }
  unsigned int deviceVersion() const { return m_stamps.device; }
  void deviceVersion(unsigned int i_version) { m_stamps.device = i_version; }
  unsigned int bodiesVersionSum() const { return m_stamps.bodies; }
  void bodiesVersionSum(unsigned int i_sum) { m_stamps.bodies = i_sum; }
  CorvBody::CCollisionAnalysisParameters analysisParameters() const;

  const CStamps& stamps() const { return m_stamps; }
  void stamps(const CStamps& i_stamps) { m_stamps = i_stamps; }
  const CorvCollisionQuery& query() const { return m_query; }
  /// Keeps the query but for its needs.
  void query(const CorvCollisionQuery& i_query);
  /// What touches; null if nothing does.
  const CContact* contact() const { return m_contact.get(); }
  void contact(const CContact& i_contact) { m_contact.reset(new CContact(i_contact)); }
  /// Makes the report what `create` gives, for one that nobody else holds.
  void clear();

protected:
  CorvReportCfgCollision() = default;
  CorvReportCfgCollision(const CorvReportCfgCollision&) = default;
  lmStatus init(const CorvReportCfgCollisionWkPtr& i_weakPtr);

private:
  struct CAllowance
  {
    double value;
    bool isCapped;
  };

  bool m_sharesDistances = false;
  CStamps m_stamps;
  CorvCollisionQuery m_query;
  std::vector<double> m_distances;
  std::vector<CAllowance> m_allowances;
  ShPtr<const CContact> m_contact;
};

/// The same with the nearest points of each tested body and what is nearest to it, in the world's frame.
class LUM_API CorvReportCfgCollisionPoints : public CorvReportCfgCollision
{
  LUM_UNREFLECTED(CorvReportCfgCollisionPoints, CorvReportCfgCollision);

public:
  using TPoints = std::pair<ClumPoint3, ClumPoint3>;

  ~CorvReportCfgCollisionPoints() override;
  static CorvReportCfgCollisionPointsShPtr create();
  static CorvReportCfgCollisionPointsShPtr createCopy(const CorvReportCfgCollisionPointsConstShPtr& i_objectToCopy);
  CorvValidationReportShPtr clone() const override;

  /// @param i_onBody the point on the body; i_onOther on what is nearest to it.
  void appendPoints(const ClumPoint3& i_onBody, const ClumPoint3& i_onOther)
  {
    m_points.emplace_back(i_onBody, i_onOther);
  }
  unsigned int countPoints() const { return static_cast<unsigned int>(m_points.size()); }
  const TPoints& points(unsigned int i_rank) const { return m_points[i_rank]; }

protected:
  CorvReportCfgCollisionPoints() = default;
  CorvReportCfgCollisionPoints(const CorvReportCfgCollisionPoints&) = default;
  lmStatus init(const CorvReportCfgCollisionPointsWkPtr& i_weakPtr);

private:
  std::vector<TPoints> m_points;
};
