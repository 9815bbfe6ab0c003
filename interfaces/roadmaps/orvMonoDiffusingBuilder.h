#pragma once

#include "kinematics/orvConfig.h"
#include "roadmaps/orvBuilder.h"
#include "roadmaps/orvDiffusionShooter.h"

/// Grows one tree from one root: a shooter says where to go, the nearest node of the tree is extended that way as far
/// as the extend method gets, and the linker ties new nodes to other components.
///
/// Of diffusion type 0 the tree grows away from its root, of type 1 backwards to it: then its edges point at the root.
/// The builder never ends by itself. If the root leaves the roadmap, it is made again. Parameters:
/// "orvane.core.shooter.standard-deviation" (double), the size of random steps, 20 penetrations if absent;
/// "orvane.core.builder.mono-diffusing.link-interval" (int, 0), new nodes that go by between link attempts;
/// "orvane.core.builder.hint-path" (a const `CorvPath`), from which the root is taken if `doesUseHintPath`;
/// "orvane.core.linker-standard.link-node-strategy" (int), by distance if absent.
class LUM_API CorvMonoDiffusingBuilder : public CorvBuilder
{
  LUM_CONCRETE(CorvMonoDiffusingBuilder, CorvBuilder);

public:
  enum EDiffusionType
  {
    DIFFUSION_FROM = 0,
    DIFFUSION_TO = 1
  };

  /// @return null without a roadmap.
  static CorvMonoDiffusingBuilderShPtr create(const CorvRoadmapShPtr& i_roadmap);
  static CorvMonoDiffusingBuilderShPtr createFrom(const CorvRoadmapShPtr& i_roadmap, const CorvConfig& i_config);
  static CorvMonoDiffusingBuilderShPtr createTo(const CorvRoadmapShPtr& i_roadmap, const CorvConfig& i_config);
  /// An idle builder on the same roadmap, with copies of shooter and extend method.
  static CorvMonoDiffusingBuilderShPtr createCopy(const CorvMonoDiffusingBuilderConstShPtr& i_objectToCopy);
  ~CorvMonoDiffusingBuilder() override;

  const CorvDiffusionShooterShPtr& diffusionShooter() const { return m_diffusionShooter; }
  void diffusionShooter(const CorvDiffusionShooterShPtr& i_shooter) { m_diffusionShooter = i_shooter; }
  virtual const CorvPathPlannerShPtr& extendMethod() const { return m_extendMethod; }
  void extendMethod(const CorvPathPlannerShPtr& i_extendMethod) { m_extendMethod = i_extendMethod; }
  /// Without a space until one is set.
  const CorvConfig& diffusionConfiguration() const { return m_diffusionConfiguration; }
  void setDiffusionConfiguration(const CorvConfig& i_config);
  EDiffusionType diffusionType() const { return m_diffusionType; }
  void diffusionType(EDiffusionType i_type) { m_diffusionType = i_type; }
  bool doesUseHintPath() const { return m_doesUseHintPath; }
  void doesUseHintPath(bool i_does) { m_doesUseHintPath = i_does; }

  /// The root, added to the roadmap if it is not there. @return null if the roadmap refuses it.
  CorvNodeShPtr diffusionNode();
  /// Of the last hundreds of extensions: those that did not widen the tree's box over all. 0 before the first.
  double failSuccessRatio() const;
  /// Shots since the last one that gave a node, in this run.
  unsigned int countFruitlessShots() const { return m_fruitlessShots; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvMonoDiffusingBuilder();
  explicit CorvMonoDiffusingBuilder(const CorvRoadmapShPtr& i_roadmap);
  CorvMonoDiffusingBuilder(const CorvMonoDiffusingBuilder& i_other);
  lmStatus init(const CorvMonoDiffusingBuilderWkPtr& i_weakPtr);
  lmStatus init(const CorvMonoDiffusingBuilderWkPtr& i_weakPtr, const CorvMonoDiffusingBuilderConstShPtr& i_source);

  /// One shot with its extension. @return the last new node, or null.
  virtual CorvNodeShPtr diffuse(const ClumParameterMapConstShPtr& i_parameters);
  /// The node of the tree that is nearest to a configuration.
  virtual CorvNodeShPtr chooseExtendedNode(const CorvConfig& i_config);
  /// Extends a node towards a configuration.
  /// @param o_hasWidened true if the box of the tree grew.
  /// @return the last new node, or null.
  virtual CorvNodeShPtr extend(const CorvNodeShPtr& i_node, const CorvConfig& i_config,
                               const ClumParameterMapConstShPtr& i_parameters, bool& o_hasWidened);
  virtual void statAccountForSuccess(const ClumParameterMapConstShPtr& i_parameters);
  virtual void statAccountForFailure(const ClumParameterMapConstShPtr& i_parameters);
  /// @return -1, with an error in the log, at penetration 0.
  virtual lmStatus defaultStandardDeviationOfShooter(const ClumParameterMapConstShPtr& i_parameters,
                                                     double& o_deviation) const;

  lmStatus doStartBuild(const ClumParameterMapShPtr& io_parameters) override;
  lmStatus doContinueBuild(bool& o_shouldContinue) override;
  lmStatus doFinishBuild() override;
  /// Cannot tell.
  lmStatus doComputeCompletion(double& o_completion) const override;
  /// From 0 to 1/2: 1 - 1 / (1 + `failSuccessRatio`).
  lmStatus doComputeDifficulty(double& o_difficulty) const override;

private:
  using TBox = std::vector<std::pair<double, double>>;
  static const unsigned int s_periodCount = 10;
  static const unsigned int s_triesOfPeriod = 100;

  lmStatus readHintPath(const ClumParameterMapConstShPtr& i_parameters);
  CorvPathShPtr planExtension(const CorvNodeShPtr& i_node, const CorvConfig& i_config,
                              const ClumParameterMapConstShPtr& i_parameters);
  CorvNodeShPtr addExtension(const CorvNodeShPtr& i_node, const CorvPath& i_path);
  CorvNodeShPtr addDirectPath(const CorvNodeShPtr& i_node, const CorvDirectPathConstShPtr& i_directPath);
  void getTreeBox(const CorvNodeShPtr& i_node, TBox& o_box) const;
  bool hasWidened(const TBox& i_before, const TBox& i_after) const;
  void clearStatistics();
  void accountForTry(bool i_isFailure);
  void notifyWillExplore(const CorvConfig& i_target) const;

  CorvDiffusionShooterShPtr m_diffusionShooter;
  CorvPathPlannerShPtr m_extendMethod;
  CorvConfig m_diffusionConfiguration;
  EDiffusionType m_diffusionType = DIFFUSION_FROM;
  unsigned int m_nodesSinceLink = 0;
  bool m_doesUseHintPath = false;
  CorvNodeShPtr m_diffusionNode;
  unsigned int m_tries[s_periodCount] = {}; ///< of each of the last periods
  unsigned int m_failures[s_periodCount] = {};
  unsigned int m_period = 0; ///< the one that is being counted
  unsigned int m_fruitlessShots = 0;

  // Scratch of a step.
  CorvDiffusionShooter::TTrace m_trace;
  TBox m_boxBefore;
  TBox m_boxAfter;
};
