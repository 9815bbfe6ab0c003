#include "foundation/lumDescribe.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvUtility.h"
#include "paths/orvPath.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvExtendDirect.h"
#include "roadmaps/orvLinkerStandard.h"
#include "roadmaps/orvMonoDiffusingBuilder.h"
#include "roadmaps/orvRoadmap.h"
#include "roadmaps/orvShooterConfigSpace.h"
#include "roadmaps/orvShooterRoadmapBox.h"
#include "support/discWorld.h"
#include "support/logCapture.h"

#include <gtest/gtest.h>

#include <algorithm>

LUM_HANDLES(ScriptedShooter)

/// Shoots at the given targets in turn and notes the feedback.
class ScriptedShooter : public CorvDiffusionShooter
{
  LUM_CONCRETE(ScriptedShooter, CorvDiffusionShooter);

public:
  static ScriptedShooterShPtr create(const std::vector<CorvConfig>& i_targets)
  {
    const ScriptedShooterShPtr shooter = lumCreate<ScriptedShooter>();
    shooter->targets = i_targets;
    return shooter;
  }
  void reset() override { next = 0; }
  lmStatus shoot(const CorvNodeShPtr&, EDiffusionNodeType, double, TTrace& io_trace, CorvConfig& o_config) override
  {
    if (next == targets.size())
      return -1;
    io_trace.push_back(ClumValue(static_cast<int>(next)));
    o_config = targets[next++];
    return lmStatus();
  }
  void shootWasUseful(const CorvNodeShPtr&, EDiffusionNodeType i_type, const CorvNodeShPtr&, TTrace& io_trace) override
  {
    useful.push_back(io_trace.back().asInt());
    types.push_back(i_type);
    io_trace.pop_back();
  }
  void shootWasUseless(const CorvNodeShPtr&, EDiffusionNodeType i_type, TTrace& io_trace) override
  {
    useless.push_back(io_trace.back().asInt());
    types.push_back(i_type);
    io_trace.pop_back();
  }

  std::vector<CorvConfig> targets;
  std::size_t next = 0;
  std::vector<int> useful, useless, types;

protected:
  ScriptedShooter() = default;
  lmStatus init(const ScriptedShooterWkPtr& i_weakPtr) { return CorvDiffusionShooter::init(i_weakPtr); }
};

LUM_DESCRIBE(ScriptedShooter)
{
}

namespace
{
const ClumStringKey s_shooterDeviation("orvane.core.shooter.standard-deviation");
const ClumStringKey s_rootHintPath("orvane.core.builder.hint-path");

void stepTree(CorvMonoDiffusingBuilder& io_builder, unsigned int i_count)
{
  bool shouldContinue = true;
  for (unsigned int step = 0; step < i_count; ++step)
    ASSERT_TRUE(io_builder.continueBuild(shouldContinue).succeeded() && shouldContinue);
}

void equipTree(CorvMonoDiffusingBuilder& io_builder, const CorvDiffusionShooterShPtr& i_shooter)
{
  io_builder.diffusionShooter(i_shooter);
  io_builder.extendMethod(CorvExtendDirect::create());
}

struct ExplorationListener
{
  std::vector<CorvConfig> heard;
  void hear(const ShPtr<const ClumNotification>& i_notification)
  {
    const ShPtr<const void> config = i_notification->value(CorvBuilder::CONFIG_KEY).asConstVoid();
    heard.push_back(*static_cast<const CorvConfig*>(config.get()));
  }
};
} // namespace

TEST(CorvShooterRoadmapBox, ShootsAroundTheTree)
{
  CorvUtility::randomSeed(1);
  const DiscWorld world;
  const CorvNodeShPtr node = CorvNode::create(world.at(5.0, 5.0));
  CorvConfig shot(world.space);
  CorvDiffusionShooter::TTrace trace;
  const CorvShooterRoadmapBoxShPtr box = CorvShooterRoadmapBox::create();
  const auto unknownType = static_cast<CorvDiffusionShooter::EDiffusionNodeType>(3);
  EXPECT_TRUE(box->shoot(node, CorvDiffusionShooter::DIFFUSE_FROM, 0.1, trace, shot).failed()); // in no roadmap
  world.roadmap->addNode(node);
  EXPECT_TRUE(box->shoot(node, CorvDiffusionShooter::DIFFUSE_FROM, 0.0, trace, shot).failed());
  EXPECT_TRUE(box->shoot(node, unknownType, 0.1, trace, shot).failed());
  const CorvShooterConfigSpaceShPtr everywhere = CorvShooterConfigSpace::create();
  EXPECT_TRUE(everywhere->shoot(node, CorvDiffusionShooter::DIFFUSE_TO, 0.0, trace, shot).succeeded());

  double farthest = 0.0;
  for (int count = 0; count < 200; ++count)
  {
    EXPECT_TRUE(box->shoot(node, CorvDiffusionShooter::DIFFUSE_BOTH, 0.1, trace, shot).succeeded());
    farthest = std::max(farthest, node->config().distanceTo(shot));
  }
  EXPECT_GT(farthest, 0.05); // the deviation alone moves the shots away from a single node
  EXPECT_LT(farthest, 1.0);

  world.roadmap->addNode(CorvNode::create(world.at(1.0, 5.0)));
  CorvLinkerStandard::create()->link(CorvLinker::LINK_BOTH, node);
  double leftmost = 5.0;
  for (int count = 0; count < 100; ++count)
  {
    box->shoot(node, CorvDiffusionShooter::DIFFUSE_FROM, 0.01, trace, shot);
    leftmost = std::min(leftmost, shot.dofValue(0));
    EXPECT_NEAR(shot.dofValue(1), 5.0, 0.1);
  }
  EXPECT_LT(leftmost, 2.0);
}

TEST(CorvMonoDiffusingBuilder, RefusesToStartWithoutWhatItNeeds)
{
  const DiscWorld world(DiscWorld::Discs(), false, 0.0);
  const CorvMonoDiffusingBuilderShPtr builder = CorvMonoDiffusingBuilder::create(world.roadmap);
  EXPECT_FALSE(CorvMonoDiffusingBuilder::create(CorvRoadmapShPtr()));
  const auto isRefusedWith = [&](const char* i_text)
  {
    const LogCapture log;
    return builder->startBuild(ClumParameterMapConstShPtr()).failed() && log.contains(i_text);
  };
  EXPECT_TRUE(isRefusedWith("Mono diffusing builder cannot start diffusion. Extend method required."));
  builder->extendMethod(CorvExtendDirect::create());
  EXPECT_TRUE(isRefusedWith("Mono diffusing builder cannot start diffusion. Shooter required."));
  builder->diffusionShooter(CorvShooterRoadmapBox::create());
  builder->doesUseHintPath(true);
  EXPECT_TRUE(isRefusedWith("Mono diffusing builder cannot find hint path."));
  builder->doesUseHintPath(false);
  EXPECT_TRUE(isRefusedWith("Mono diffusing builder cannot start diffusion. Diffusion configuration required."));
  builder->setDiffusionConfiguration(world.at(1.0, 1.0));
  EXPECT_TRUE(isRefusedWith("Standard deviation must be specified by user in zero penetration mode."));
  EXPECT_TRUE(isRefusedWith("Mono diffusing builder cannot start diffusion. Standard deviation required."));

  builder->doesUseHintPath(true);
  builder->diffusionType(CorvMonoDiffusingBuilder::DIFFUSION_TO);
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  const CorvPathConstShPtr hint = CorvPath::createWithDirectPath(world.at(1.0, 1.0), world.at(4.0, 2.0));
  parameters->setDouble(s_shooterDeviation, 1.0).setConstShPtr(s_rootHintPath, hint);
  EXPECT_TRUE(builder->startBuild(parameters).succeeded());
  EXPECT_EQ(builder->diffusionConfiguration(), world.at(4.0, 2.0));
}

TEST(CorvMonoDiffusingBuilder, SettlesItsParametersInAMapOfItsOwn)
{
  const DiscWorld world(DiscWorld::Discs(), false, 0.05);
  const CorvMonoDiffusingBuilderShPtr builder = CorvMonoDiffusingBuilder::createFrom(world.roadmap, world.at(1.0, 1.0));
  equipTree(*builder, CorvShooterRoadmapBox::create());
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  const LogCapture log;
  ASSERT_TRUE(builder->startBuild(parameters).succeeded());
  EXPECT_TRUE(log.contains("Builder using penetration 0.05 present in validator."));
  EXPECT_EQ(log.count(), 1u);
  EXPECT_DOUBLE_EQ(builder->buildParameters()->doubleValue(s_shooterDeviation, 0.0), 20.0 * 0.05);
  EXPECT_TRUE(parameters->empty());
  builder->abortBuild();
  bool shouldContinue = true;
  EXPECT_TRUE(builder->continueBuild(shouldContinue).succeeded());
  EXPECT_FALSE(shouldContinue);
  EXPECT_FALSE(builder->buildParameters());
}

TEST(CorvMonoDiffusingBuilder, GrowsFromOrTowardsItsRootAndTellsTheShooter)
{
  for (const bool isFrom : {true, false})
  {
    const DiscWorld world({{5.0, 1.0, 1.0}}, true);
    const CorvConfig root = world.at(1.0, 1.0);
    const CorvMonoDiffusingBuilderShPtr builder = isFrom ? CorvMonoDiffusingBuilder::createFrom(world.roadmap, root)
                                                         : CorvMonoDiffusingBuilder::createTo(world.roadmap, root);
    // Blocked halfway, free, no motion at all, and inside of the box.
    const ScriptedShooterShPtr shooter =
      ScriptedShooter::create({world.at(9.0, 1.0), world.at(1.0, 9.0), root, world.at(2.0, 5.0)});
    equipTree(*builder, shooter);
    builder->linker(CorvLinkerShPtr());
    const ShPtr<ExplorationListener> listener(new ExplorationListener);
    builder->objectNotificator()->subscribe(CorvBuilder::WILL_EXPLORE_TOWARDS, listener, listener.get(),
                                            &ExplorationListener::hear);
    ASSERT_TRUE(builder->startBuild(ClumParameterMapConstShPtr()).succeeded());
    EXPECT_EQ(builder->failSuccessRatio(), 0.0);
    stepTree(*builder, 5); // in the last, the shooter has nothing left

    EXPECT_EQ(listener->heard, shooter->targets);
    EXPECT_EQ(shooter->useful, (std::vector<int>{0, 1, 3}));
    EXPECT_EQ(shooter->useless, std::vector<int>{2});
    EXPECT_EQ(shooter->types, std::vector<int>(4, isFrom ? 1 : 0));
    EXPECT_EQ(builder->countFruitlessShots(), 1u);
    double difficulty = -1.0;
    EXPECT_DOUBLE_EQ(builder->failSuccessRatio(), 1.0 / 3.0); // only the last node did not widen the tree
    EXPECT_TRUE(builder->computeDifficulty(difficulty).succeeded());
    EXPECT_DOUBLE_EQ(difficulty, 0.25);
    EXPECT_TRUE(builder->computeCompletion(difficulty).failed());

    EXPECT_TRUE(world.isSound(*world.roadmap));
    ASSERT_EQ(world.roadmap->countNodes(), 4u);
    const CorvNodeShPtr rootNode = builder->diffusionNode();
    EXPECT_EQ(isFrom ? rootNode->countInEdges() : rootNode->countOutEdges(), 0u);
    for (unsigned int rank = 0; rank < 4; ++rank)
      EXPECT_TRUE(isFrom ? world.roadmap->pathExists(rootNode, world.roadmap->node(rank))
                         : world.roadmap->pathExists(world.roadmap->node(rank), rootNode));
    EXPECT_NEAR(world.roadmap->node(1)->config().dofValue(0), 3.99, 1e-9);
    EXPECT_EQ(world.roadmap->node(2)->config(), world.at(1.0, 9.0));
  }
}

TEST(CorvMonoDiffusingBuilder, LinksEverySoManyNewNodesAndOutlivesAClearedRoadmap)
{
  const DiscWorld world;
  const CorvMonoDiffusingBuilderShPtr builder = CorvMonoDiffusingBuilder::createFrom(world.roadmap, world.at(0.0, 0.0));
  std::vector<CorvConfig> targets;
  for (int count = 1; count <= 9; ++count)
    targets.push_back(world.at(0.0, count));
  equipTree(*builder, ScriptedShooter::create(targets));
  const ClumParameterMapShPtr parameters = ClumParameterMap::create();
  parameters->setInt("orvane.core.builder.mono-diffusing.link-interval", 3);
  ASSERT_TRUE(builder->startBuild(parameters).succeeded());
  for (const double place : {9.0, 8.0})
  {
    world.roadmap->addNode(CorvNode::create(world.at(place, place)));
    stepTree(*builder, 3);
    EXPECT_EQ(world.roadmap->countConnectedComponents(), 2u);
    stepTree(*builder, 1);
    EXPECT_EQ(world.roadmap->countConnectedComponents(), 1u);
  }
  world.roadmap->clear();
  stepTree(*builder, 1);
  ASSERT_EQ(world.roadmap->countNodes(), 2u);
  EXPECT_EQ(world.roadmap->node(0)->config(), world.at(0.0, 0.0));
}
