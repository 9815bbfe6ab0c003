#include "roadmaps/orvRatingShortestComponent.h"

#include "foundation/lumDescribe.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvNode.h"

LUM_DESCRIBE(CorvRatingShortestComponent)
{
  i_class.creates("()", &Self::create);
}

CorvRatingShortestComponentShPtr CorvRatingShortestComponent::create()
{
  return lumCreate<CorvRatingShortestComponent>();
}

CorvRatingShortestComponentShPtr
CorvRatingShortestComponent::createCopy(const CorvRatingShortestComponentConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvMultiDiffusingBuilderRatingShPtr CorvRatingShortestComponent::clone() const
{
  return createCopy(self());
}

CorvRatingShortestComponent::~CorvRatingShortestComponent() = default;

lmStatus CorvRatingShortestComponent::init(const CorvRatingShortestComponentWkPtr& i_weakPtr)
{
  return CorvMultiDiffusingBuilderRating::init(i_weakPtr);
}

lmStatus CorvRatingShortestComponent::getRating(const CorvMonoDiffusingBuilderShPtr& i_builder, double& o_rating) const
{
  const CorvNodeShPtr root = i_builder ? i_builder->diffusionNode() : CorvNodeShPtr();
  const CorvConnectedComponentShPtr component = root ? root->connectedComponent() : CorvConnectedComponentShPtr();
  if (!component)
    return lmStatus(lmStatus::FAILURE);
  const bool isFrom = i_builder->diffusionType() == CorvMonoDiffusingBuilder::DIFFUSION_FROM;
  o_rating = isFrom ? component->reachableLength() : component->reachingLength();
  return lmStatus();
}
