#pragma once

#include "roadmaps/orvMultiDiffusingBuilder.h"

/// Rates a tree by its length: the shortest is the best.
class LUM_API CorvRatingShortestComponent : public CorvMultiDiffusingBuilderRating
{
  LUM_CONCRETE(CorvRatingShortestComponent, CorvMultiDiffusingBuilderRating);

public:
  static CorvRatingShortestComponentShPtr create();
  static CorvRatingShortestComponentShPtr createCopy(const CorvRatingShortestComponentConstShPtr& i_objectToCopy);
  CorvMultiDiffusingBuilderRatingShPtr clone() const override;
  ~CorvRatingShortestComponent() override;

  lmStatus getRating(const CorvMonoDiffusingBuilderShPtr& i_builder, double& o_rating) const override;

protected:
  CorvRatingShortestComponent() = default;
  CorvRatingShortestComponent(const CorvRatingShortestComponent&) = default;
  lmStatus init(const CorvRatingShortestComponentWkPtr& i_weakPtr);
};
