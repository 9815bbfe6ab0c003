#include "foundation/lumMemoryCoder.h"
#include "kinematics/orvCSGroup.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvJointRotation.h"
#include "kinematics/orvJointTranslation.h"
#include "support/composites.h"
#include "support/logCapture.h"
#include "validation/orvValidationReport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

// Configurations that follow the edits of their space.

namespace
{
using Values = std::vector<double>;

/// What a configuration must read, kept beside it: the dofs that it was last read on, and their values.
struct FollowedConfig
{
  FollowedConfig(const CorvConfigSpaceShPtr& i_space, std::mt19937& io_random) : config(i_space)
  {
    i_space->getDofs(dofs);
    for (std::size_t rank = 0; rank < dofs.size(); ++rank)
      values.push_back(static_cast<double>(io_random() % 1000) + 1.0);
    EXPECT_TRUE(config.setDofValues(values).succeeded());
  }

  /// By the rule itself: a dof keeps its value, a new one takes what stood at its rank, or 0.
  void follow(const CorvConfigSpaceShPtr& i_space)
  {
    std::vector<CorvDofShPtr> newDofs;
    i_space->getDofs(newDofs);
    Values newValues;
    for (std::size_t rank = 0; rank < newDofs.size(); ++rank)
    {
      const auto found = std::find(dofs.begin(), dofs.end(), newDofs[rank]);
      const std::size_t from = found == dofs.end() ? rank : static_cast<std::size_t>(found - dofs.begin());
      newValues.push_back(from < values.size() ? values[from] : 0.0);
    }
    dofs.swap(newDofs);
    values.swap(newValues);
  }

  CorvConfig config;
  std::vector<CorvDofShPtr> dofs;
  Values values;
};

/// Reads some of the configurations, each after edits of its own number, and all of them at the end.
template <class EDIT>
void expectToFollow(const CorvConfigSpaceShPtr& i_space, std::mt19937& io_random, const EDIT& i_edit)
{
  std::vector<FollowedConfig> followed(6, FollowedConfig(i_space, io_random));
  const auto check = [&](FollowedConfig& io_one)
  {
    io_one.follow(i_space);
    EXPECT_EQ(io_one.config.dofValues(), io_one.values);
  };
  for (int step = 0; step < 40; ++step)
  {
    i_edit();
    for (FollowedConfig& one : followed)
      if (io_random() % 4 == 0)
        check(one);
    if (io_random() % 8 == 0)
      followed.emplace_back(i_space, io_random);
  }
  std::for_each(followed.begin(), followed.end(), check);
}
} // namespace

TEST(CorvConfigConversion, ValuesFollowTheirDofsThroughEditsOfATree)
{
  for (unsigned int seed = 0; seed < 20; ++seed)
  {
    std::mt19937 random(seed);
    const CorvConfigSpaceShPtr root = compositeOfSize(3);
    std::vector<CorvConfigSpaceShPtr> composites(1, root);
    std::vector<CorvConfigSpaceShPtr> spare;
    expectToFollow(root, random,
                   [&]
                   {
                     const CorvConfigSpaceShPtr place = composites[random() % composites.size()];
                     const unsigned int count = place->countSubspaces();
                     const unsigned int kind = random() % 8;
                     if (kind < 3 && count > 0)
                     {
                       spare.push_back(place->subspace(random() % count));
                       ASSERT_TRUE(place->removeSubspace(spare.back()).succeeded());
                       return;
                     }
                     CorvConfigSpaceShPtr added = CorvDof::create(false);
                     if (kind < 5 && !spare.empty())
                     {
                       // What was taken out comes back, perhaps elsewhere; a tree of its own is not put into itself.
                       added = spare.back();
                       spare.pop_back();
                       if (added->includes(place))
                         return;
                     }
                     else if (kind == 5)
                     {
                       added = compositeOfSize(2);
                       composites.push_back(added);
                     }
                     ASSERT_TRUE(place->insertSubspace(added, random() % (count + 1)).succeeded());
                   });
  }
}

TEST(CorvConfigConversion, ValuesFollowTheirDofsThroughEditsOfADevice)
{
  for (unsigned int seed = 0; seed < 10; ++seed)
  {
    std::mt19937 random(seed);
    const CorvDeviceShPtr device = CorvDevice::create();
    device->rootJoint(CorvJointTranslation::create(ClumMat4(), ClumMat4::X_AXIS));
    expectToFollow(device->configSpace(), random,
                   [&]
                   {
                     const CorvJointShPtr place = device->joint(random() % device->countJoints());
                     const unsigned int count = place->countChildJoints();
                     if (random() % 3 == 0 && count > 0)
                       ASSERT_TRUE(place->removeJoint(place->childJoint(random() % count)).succeeded());
                     else if (random() % 5 == 0)
                       ASSERT_TRUE(device->addExtraDof(CorvDof::create(true)).succeeded());
                     else
                       ASSERT_TRUE(
                         place->addJoint(CorvJointTranslation::create(ClumMat4(), ClumMat4::Z_AXIS)).succeeded());
                   });
  }
}

TEST(CorvConfigConversion, ValueThatWasNotReadSinceManyEditsStillFindsItsDofs)
{
  const CorvCSCompositeShPtr space = compositeOfSize(1);
  const CorvDofShPtr kept = space->dof(0);
  const CorvConfig old(space, Values{5});
  std::vector<CorvConfig> copies;
  for (int edit = 0; edit < 200; ++edit)
  {
    ASSERT_TRUE(space->insertSubspace(CorvDof::create(false), 0).succeeded());
    copies.push_back(old);
  }
  unsigned int rank = 0;
  ASSERT_TRUE(space->getFirstDofRankOfSubspace(kept, rank).succeeded());
  for (const CorvConfig& copy : copies)
    EXPECT_EQ(copy.dofValue(rank), 5.0);
  EXPECT_EQ(copies[7], old);
}

TEST(CorvConfigConversion, DecodedValuesAreHeldAgainstTheirSpace)
{
  const CorvCSCompositeShPtr space = compositeOfSize(3);
  const auto decoded = [&](unsigned int i_version, const Values& i_values)
  {
    const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
    coder->pin(space.get());
    coder->encodeObjectShPtr(space, "c/configSpace");
    coder->encodeUnsignedInt(i_version, "c/spaceVersion");
    coder->encodeUnsignedInt(i_version, "c/validationSpaceVersion");
    coder->encodeUnsignedInt(3, "c/nbSubspaces");
    coder->encodeDoubleVector(i_values, "c/dofValues");
    return CorvConfig(*coder, "c");
  };
  const unsigned int version = space->version();
  const CorvConfig good = decoded(version, Values{1, 2, 3});
  const CorvConfig copy(good);
  EXPECT_EQ(good, CorvConfig(space, Values{1, 2, 3}));
  EXPECT_TRUE(good.isValid());

  // A file whose values do not fit the version that it tells, by their number or because there is no such version.
  const LogCapture log;
  for (const CorvConfig& bad : {decoded(version, Values{1, 2}), decoded(version, Values{1, 2, 3, 4}),
                                decoded(version, Values()), decoded(0, Values{1, 2, 3})})
  {
    EXPECT_FALSE(bad.beginPtr());
    EXPECT_FALSE(bad.isValid());
    EXPECT_FALSE(bad.isValidFor("orvane.core.config.convert"));
    EXPECT_NE(bad, good);
    EXPECT_FALSE(bad.isEquivalent(good));
    EXPECT_FALSE(CorvConfig::canonically_equal_to()(bad, good));
    const CorvConfig same(bad);
    EXPECT_EQ(same, bad);
    Values values;
    EXPECT_TRUE(bad.getDofValues(values).failed());
    CorvConfig target(bad);
    EXPECT_TRUE(target.convert(compositeOfSize(3)).failed());
    EXPECT_EQ(target.space(), space);
  }

  // An old version converts, also in a copy that was made before.
  const CorvConfig old = decoded(version, Values{7, 8, 9});
  ASSERT_TRUE(space->removeSubspace(1u).succeeded());
  EXPECT_EQ(old.dofValues(), (Values{7, 9}));
  EXPECT_EQ(copy.dofValues(), (Values{1, 3}));
}

TEST(CorvConfigConversion, WritingWhatWasReadChangesNothing)
{
  const CorvCSCompositeShPtr space = compositeOfSize(2);
  const CorvConfig original(space, Values{1, 2});
  const auto written = [&](const CorvConfig& i_config)
  {
    const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
    i_config.encodeValueWithCoder(*coder, "c");
    return coder;
  };
  // Validated, with a validation that is out of date after a conversion, and validated again.
  EXPECT_TRUE(original.isValid());
  for (const bool grows : {false, true, false})
  {
    if (grows)
    {
      ASSERT_TRUE(space->appendSubspace(CorvDof::create(false)).succeeded());
    }
    const ClumMemoryCoderShPtr first = written(original);
    const CorvConfig read(*first, "c");
    const CorvConfig copy(read);
    EXPECT_TRUE(written(read)->hasEqualContent(*written(original)));
    EXPECT_TRUE(written(copy)->hasEqualContent(*written(original)));
    EXPECT_EQ(read, original);
    EXPECT_TRUE(read.isValid() && original.isValid());
  }
}

TEST(CorvConfigConversion, FailureStaysVisibleAsAReport)
{
  const CorvCSCompositeShPtr space = compositeOfSize(2);
  // A version that was never read cannot be converted from; validating anew keeps the report on that.
  const ClumMemoryCoderShPtr broken = ClumMemoryCoder::create();
  broken->pin(space.get());
  broken->encodeObjectShPtr(space, "c/configSpace");
  broken->encodeUnsignedInt(4711, "c/spaceVersion");
  broken->encodeUnsignedInt(4711, "c/validationSpaceVersion");
  broken->encodeUnsignedInt(2, "c/nbSubspaces");
  broken->encodeDoubleVector(Values{3, 4}, "c/dofValues");
  const LogCapture log;
  const CorvConfig config(*broken, "c");
  EXPECT_FALSE(config.beginPtr());
  for (int time = 0; time < 2; ++time)
  {
    EXPECT_FALSE(config.isValid());
    ASSERT_TRUE(config.report("orvane.core.config.convert"));
    EXPECT_FALSE(config.report("orvane.core.config.convert")->isValid());
    space->invalidateCache();
  }
}

TEST(CorvConfigConversion, GroupFollowsTheTreesThatItIsMadeOf)
{
  const CorvCSCompositeShPtr left = compositeOfSize(1), right = compositeOfSize(2);
  const CorvCSGroupShPtr group = CorvCSGroup::create("test.group");
  ASSERT_TRUE(group->appendSubspace(left).succeeded() && group->appendSubspace(right).succeeded());
  const CorvConfig config(group, Values{1, 2, 3});
  ASSERT_TRUE(left->insertSubspace(CorvDof::create(false), 0).succeeded());
  EXPECT_EQ(config.dofValues(), (Values{1, 1, 2, 3}));
  ASSERT_TRUE(right->removeSubspace(0u).succeeded());
  EXPECT_EQ(config.dofValues(), (Values{1, 1, 3}));
  EXPECT_EQ(config.restrict(right).dofValues(), Values{3});
}
