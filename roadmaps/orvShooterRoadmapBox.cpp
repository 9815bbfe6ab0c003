#include "roadmaps/orvShooterRoadmapBox.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvUtility.h"
#include "metrics/orvMetricRevolute.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvNode.h"

LUM_DESCRIBE(CorvShooterRoadmapBox)
{
  i_class.creates("()", &Self::create);
}

namespace
{
lmStatus shooterBoxOf(const CorvConnectedComponent& i_component, CorvDiffusionShooter::EDiffusionNodeType i_type,
                      CorvConnectedComponent::TBox& o_box)
{
  switch (i_type)
  {
  case CorvDiffusionShooter::DIFFUSE_FROM: return i_component.outBoundingBox(o_box);
  case CorvDiffusionShooter::DIFFUSE_TO: return i_component.inBoundingBox(o_box);
  case CorvDiffusionShooter::DIFFUSE_BOTH: return i_component.inoutBoundingBox(o_box);
  }
  return lmStatus(lmStatus::FAILURE);
}
} // namespace

CorvShooterRoadmapBoxShPtr CorvShooterRoadmapBox::create()
{
  return lumCreate<CorvShooterRoadmapBox>();
}

CorvShooterRoadmapBoxShPtr CorvShooterRoadmapBox::createCopy(const CorvShooterRoadmapBoxConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvShooterRoadmapBox::~CorvShooterRoadmapBox() = default;

lmStatus CorvShooterRoadmapBox::init(const CorvShooterRoadmapBoxWkPtr& i_weakPtr)
{
  return CorvDiffusionShooter::init(i_weakPtr);
}

lmStatus CorvShooterRoadmapBox::shoot(const CorvNodeShPtr& i_node, EDiffusionNodeType i_type,
                                      double i_standardDeviation, TTrace&, CorvConfig& o_config)
{
  const CorvConnectedComponentShPtr component = i_node ? i_node->connectedComponent() : CorvConnectedComponentShPtr();
  if (!(i_standardDeviation > 0.0) || !component)
    return lmStatus(lmStatus::FAILURE);
  lmStatus status = shooterBoxOf(*component, i_type, m_box);
  if (status.failed())
    return status;
  const CorvConfigSpaceShPtr space = i_node->config().space();
  m_values.resize(m_box.size());
  for (unsigned int rank = 0; rank < m_box.size(); ++rank)
  {
    m_values[rank] = CorvUtility::random(m_box[rank].first, m_box[rank].second);
    if (space->isDofCircular(rank))
      m_values[rank] = CorvMetricRevolute::limitAngle(m_values[rank]);
  }
  status = o_config.setDofValues(m_values);
  if (status.succeeded())
    o_config.randomStep(i_standardDeviation);
  return status;
}
