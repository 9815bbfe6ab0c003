#include "validation/orvReportCfgCollision.h"

CorvReportCfgCollision::~CorvReportCfgCollision() = default;

lmStatus CorvReportCfgCollision::init(const CorvReportCfgCollisionWkPtr& i_weakPtr)
{
  return CorvReportCollision::init(i_weakPtr);
}

CorvReportCfgCollisionShPtr CorvReportCfgCollision::create()
{
  return lumCreate<CorvReportCfgCollision>();
}

CorvReportCfgCollisionShPtr CorvReportCfgCollision::createCopy(const CorvReportCfgCollisionConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidationReportShPtr CorvReportCfgCollision::clone() const
{
  return createCopy(self());
}

void CorvReportCfgCollision::clear()
{
  clearTolerances();
  space(CorvConfigSpaceShPtr());
  isValid(true);
  specificBody(NO_SPECIFIC_BODY);
  m_sharesDistances = false;
  m_distances.clear();
  m_allowances.clear();
  m_contact.reset();
}

void CorvReportCfgCollision::appendDistance(double i_distance)
{
  m_distances.push_back(i_distance);
}

double CorvReportCfgCollision::distance(unsigned int i_rank) const
{
  return i_rank < m_distances.size() ? m_distances[i_rank] : 0.0;
}

void CorvReportCfgCollision::offsetDistance(unsigned int i_rank, double i_delta)
{
  if (i_rank < m_distances.size())
    m_distances[i_rank] += i_delta;
}

double CorvReportCfgCollision::allowance(unsigned int i_rank) const
{
  return i_rank < m_allowances.size() ? m_allowances[i_rank].value : 0.0;
}

bool CorvReportCfgCollision::isAllowanceCapped(unsigned int i_rank) const
{
  return i_rank < m_allowances.size() && m_allowances[i_rank].isCapped;
}

void CorvReportCfgCollision::shrinkDistances(double i_growth)
{
  for (double& distance : m_distances)
    distance -= i_growth;
  for (CAllowance& allowance : m_allowances)
    allowance.value -= i_growth;
}

CorvBody::CCollisionAnalysisParameters CorvReportCfgCollision::analysisParameters() const
{
  unsigned int fields = CorvBody::METHOD_FIELD | CorvBody::PRECISION_FIELD | CorvBody::POSITION_FIELD;
  if (m_query.hasToleranceModifier)
    fields |= CorvBody::MODIFIER_FIELD;
  if (m_query.hasToleranceActivation)
    fields |= CorvBody::ACTIVATION_FIELD;
  return CorvBody::CCollisionAnalysisParameters(
    static_cast<CorvBody::EDistanceComputationMethod>(m_query.method), m_query.precision, ClumMat4(),
    m_query.toleranceModifier, m_query.toleranceActivation, static_cast<CorvBody::EDataFieldFlags>(fields));
}

void CorvReportCfgCollision::query(const CorvCollisionQuery& i_query)
{
  m_query.distanceMode = i_query.distanceMode;
  m_query.comparisonMode = i_query.comparisonMode;
  m_query.method = i_query.method;
  m_query.precision = i_query.precision;
  m_query.toleranceModifier = i_query.toleranceModifier;
  m_query.hasToleranceModifier = i_query.hasToleranceModifier;
  m_query.toleranceActivation = i_query.toleranceActivation;
  m_query.hasToleranceActivation = i_query.hasToleranceActivation;
  m_query.distanceModifier = i_query.distanceModifier;
  m_query.thresholds = i_query.thresholds;
  m_query.specificBody = i_query.specificBody;
  m_query.pointsMode = i_query.pointsMode;
  m_query.reportsMaxAllowableDistances = i_query.reportsMaxAllowableDistances;
  m_query.testsSelfCollision = i_query.testsSelfCollision;
  m_query.device = i_query.device;
  m_query.slack = i_query.slack;
  m_query.isExact = i_query.isExact;
  m_query.isBoundEnough = i_query.isBoundEnough;
  m_query.isCapped = !i_query.needs.empty();
  m_query.needs.clear();
}

CorvReportCfgCollisionPoints::~CorvReportCfgCollisionPoints() = default;

lmStatus CorvReportCfgCollisionPoints::init(const CorvReportCfgCollisionPointsWkPtr& i_weakPtr)
{
  return CorvReportCfgCollision::init(i_weakPtr);
}

CorvReportCfgCollisionPointsShPtr CorvReportCfgCollisionPoints::create()
{
  return lumCreate<CorvReportCfgCollisionPoints>();
}

CorvReportCfgCollisionPointsShPtr
CorvReportCfgCollisionPoints::createCopy(const CorvReportCfgCollisionPointsConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidationReportShPtr CorvReportCfgCollisionPoints::clone() const
{
  return createCopy(self());
}
