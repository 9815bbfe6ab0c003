#include "validation/orvReportCollision.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"

LUM_DESCRIBE(CorvReportCollision)
{
  i_class.creates("()", &Self::create);
  i_class.property<int>("specificBody", &Self::specificBody, &Self::specificBody);
}

CorvReportCollision::~CorvReportCollision() = default;

lmStatus CorvReportCollision::init(const CorvReportCollisionWkPtr& i_weakPtr)
{
  return CorvValidationReport::init(i_weakPtr);
}

CorvReportCollisionShPtr CorvReportCollision::create()
{
  return lumCreate<CorvReportCollision>();
}

CorvReportCollisionShPtr CorvReportCollision::createCopy(const CorvReportCollisionConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidationReportShPtr CorvReportCollision::clone() const
{
  return createCopy(self());
}

void CorvReportCollision::specificBody(int i_rank)
{
  if (i_rank == m_specificBody)
    return;
  notifyPropertyWillChange("specificBody");
  m_specificBody = i_rank;
  notifyPropertyDidChange("specificBody");
}

double CorvReportCollision::toleranceModifier(unsigned int i_rank) const
{
  return i_rank < m_toleranceModifiers.size() ? m_toleranceModifiers[i_rank] : 0.0;
}

bool CorvReportCollision::toleranceActivation(unsigned int i_rank) const
{
  return i_rank < m_toleranceActivations.size() && m_toleranceActivations[i_rank];
}

void CorvReportCollision::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvValidationReport::encodeWithCoder(i_coder);
  i_coder->encodeInt(m_specificBody, "specificBody");
  i_coder->encodeDoubleVector({m_toleranceModifiers.begin(), m_toleranceModifiers.end()}, "toleranceModifiers");
  i_coder->encodeBoolVector({m_toleranceActivations.begin(), m_toleranceActivations.end()}, "toleranceActivations");
}

lmStatus CorvReportCollision::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvValidationReport::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_specificBody = i_coder->decodeInt("specificBody");
  std::vector<double> modifiers;
  std::vector<bool> activations;
  i_coder->decodeDoubleVector("toleranceModifiers", modifiers);
  i_coder->decodeBoolVector("toleranceActivations", activations);
  m_toleranceModifiers.assign(modifiers.begin(), modifiers.end());
  m_toleranceActivations.assign(activations.begin(), activations.end());
  return lmStatus();
}
