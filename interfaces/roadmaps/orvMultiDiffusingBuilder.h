#pragma once

#include "manifolds/handles.h"
#include "roadmaps/orvBuilder.h"
#include "roadmaps/orvMonoDiffusingBuilder.h"

/// Rates the trees of a multi diffusing builder: a smaller rating is better.
class LUM_API CorvMultiDiffusingBuilderRating : public ClumCodable
{
  LUM_ABSTRACT(CorvMultiDiffusingBuilderRating, ClumCodable);

public:
  ~CorvMultiDiffusingBuilderRating() override;
  virtual CorvMultiDiffusingBuilderRatingShPtr clone() const = 0;
  virtual lmStatus getRating(const CorvMonoDiffusingBuilderShPtr& i_builder, double& o_rating) const = 0;

protected:
  CorvMultiDiffusingBuilderRating() = default;
  CorvMultiDiffusingBuilderRating(const CorvMultiDiffusingBuilderRating&) = default;
  lmStatus init(const CorvMultiDiffusingBuilderRatingWkPtr& i_weakPtr);
};

/// Runs many trees side by side on one roadmap, and steers which of them may grow.
///
/// Its elementary builders, copies of the prototype, are the members of a cooperative parallel. Before each round: of
/// trees of one type that have grown together only the first stays; of each type only the best rated tree is active;
/// a type whose ratings sum up to more than its threshold pauses until the other has caught up; and what the manifolds
/// offer becomes new roots. A tree whose last 500 shots gave no node is turned away from as long as its type has a
/// better one. A manifold of known cardinality offers each element once; any other offers a random valid element as
/// long as there is no root of its type.
///
/// The builder does not end by itself, and a round without an active tree is an empty step. With `doesUseHintPath`,
/// the configurations of "orvane.core.builder.hint-path" become roots.
class LUM_API CorvMultiDiffusingBuilder : public CorvBuilder
{
  LUM_CONCRETE(CorvMultiDiffusingBuilder, CorvBuilder);

public:
  using Rating = CorvMultiDiffusingBuilderRating;
  enum EDiffusionSpotType
  {
    START_LIKE = 0, ///< a tree that grows away from its root
    GOAL_LIKE = 1   ///< a tree that grows towards its root
  };

  /// @return null without a roadmap.
  static CorvMultiDiffusingBuilderShPtr create(const CorvRoadmapShPtr& i_roadmap);
  /// An idle builder on the same roadmap with copies of the elementary builders.
  static CorvMultiDiffusingBuilderShPtr createCopy(const CorvMultiDiffusingBuilderConstShPtr& i_objectToCopy);
  ~CorvMultiDiffusingBuilder() override;

  /// Adds a root, unless it is there. In a running builder its tree joins at once.
  lmStatus addDiffusionSpot(const CorvConfig& i_config, EDiffusionSpotType i_type);
  lmStatus addDiffusionSpot(const CorvConfig& i_config, EDiffusionSpotType i_type,
                            CorvMonoDiffusingBuilderShPtr& o_builder);
  unsigned int countDiffusionSpots(EDiffusionSpotType i_type) const;
  /// @return -1 out of range.
  lmStatus getDiffusionSpot(EDiffusionSpotType i_type, unsigned int i_rank, CorvConfig& o_config) const;
  bool isDiffusionSpotOfType(const CorvConfig& i_config, EDiffusionSpotType i_type) const;
  unsigned int countElementaryBuilders() const;
  /// @param i_rank below `countElementaryBuilders()`.
  CorvMonoDiffusingBuilderShPtr elementaryBuilder(unsigned int i_rank) const;
  const ClumParallelCooperativeOperationShPtr& parallelOperation() const { return m_parallelOperation; }

  const CorvMonoDiffusingBuilderShPtr& prototype() const { return m_prototype; }
  /// @return -1 for null or one on another roadmap.
  lmStatus prototype(const CorvMonoDiffusingBuilderShPtr& i_prototype);
  const CorvMultiDiffusingBuilderRatingShPtr& rating() const { return m_rating; }
  /// With a null rating all trees are active.
  void rating(const CorvMultiDiffusingBuilderRatingShPtr& i_rating) { m_rating = i_rating; }
  bool doesUseHintPath() const { return m_doesUseHintPath; }
  void doesUseHintPath(bool i_does) { m_doesUseHintPath = i_does; }
  const CorvManifoldConstShPtr& startLikeManifold() const { return m_manifolds[START_LIKE]; }
  const CorvManifoldConstShPtr& goalLikeManifold() const { return m_manifolds[GOAL_LIKE]; }
  void startLikeManifold(const CorvManifoldConstShPtr& i_manifold) { m_manifolds[START_LIKE] = i_manifold; }
  void goalLikeManifold(const CorvManifoldConstShPtr& i_manifold) { m_manifolds[GOAL_LIKE] = i_manifold; }

  // Of the prototype; the setters reach the elementary builders too.
  const CorvDiffusionShooterShPtr& diffusionShooter() const;
  void diffusionShooter(const CorvDiffusionShooterShPtr& i_shooter);
  virtual const CorvPathPlannerShPtr& extendMethod() const;
  void extendMethod(const CorvPathPlannerShPtr& i_extendMethod);
  using CorvBuilder::linker;
  void linker(const CorvLinkerShPtr& i_linker);

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvMultiDiffusingBuilder() = default;
  explicit CorvMultiDiffusingBuilder(const CorvRoadmapShPtr& i_roadmap) : CorvBuilder(i_roadmap) {}
  CorvMultiDiffusingBuilder(const CorvMultiDiffusingBuilder& i_other);
  lmStatus init(const CorvMultiDiffusingBuilderWkPtr& i_weakPtr);
  lmStatus init(const CorvMultiDiffusingBuilderWkPtr& i_weakPtr, const CorvMultiDiffusingBuilderConstShPtr& i_source);

  virtual ClumParallelCooperativeOperationShPtr makeParallelOperation() const;

  lmStatus doStartBuild(const ClumParameterMapShPtr& io_parameters) override;
  lmStatus doContinueBuild(bool& o_shouldContinue) override;
  lmStatus doFinishBuild() override;
  lmStatus doStepDelegate(bool& o_finished) override;
  lmStatus doComputeCompletion(double& o_completion) const override;

private:
  struct CStanding;

  lmStatus addHintPathSpots(const ClumParameterMapConstShPtr& i_parameters);
  void addHintPathSpot(const CorvPath& i_path, unsigned int i_rank, EDiffusionSpotType i_type);
  void removeRedundantSpots();
  void steer();
  CStanding standingOf(EDiffusionSpotType i_type) const;
  void choosePauses(const CStanding i_standings[2], bool o_isPaused[2]);
  void seedSpots(EDiffusionSpotType i_type);
  void seedSpot(const CorvConfig& i_element, EDiffusionSpotType i_type);

  CorvMonoDiffusingBuilderShPtr m_prototype;
  CorvMultiDiffusingBuilderRatingShPtr m_rating;
  bool m_doesUseHintPath = false;
  CorvManifoldConstShPtr m_manifolds[2];
  ClumParallelCooperativeOperationShPtr m_parallelOperation;
  double m_thresholds[2] = {0.0, 0.0};     ///< sums of ratings above which a type pauses
  unsigned int m_seededCounts[2] = {0, 0}; ///< elements of the manifolds that were offered in this run
  std::vector<CorvConnectedComponentShPtr> m_seenComponents[2]; ///< scratch of a round
};
