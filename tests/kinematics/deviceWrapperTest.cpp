#include "constraints/orvConstraintDofLock.h"
#include "kinematics/orvCSDeviceWrapper.h"
#include "kinematics/orvCSGroup.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "support/logCapture.h"
#include "support/composites.h"
#include "support/sumConstraint.h"
#include "validation/orvValidationReport.h"
#include "validation/orvValidatorSet.h"

#include <gtest/gtest.h>

namespace
{
using Values = std::vector<double>;

/// A device of extra dofs only: its internal space and its wrapper.
struct DofDevice
{
  explicit DofDevice(unsigned int i_count) : device(CorvDevice::create())
  {
    for (unsigned int rank = 0; rank < i_count; ++rank)
      EXPECT_TRUE(device->addExtraDof(CorvDof::create(false)).succeeded());
    inner = device->internalConfigSpace();
    wrapper = device->configSpace();
  }

  CorvDeviceShPtr device;
  CorvConfigSpaceShPtr inner;
  CorvConfigSpaceShPtr wrapper;
};
} // namespace

TEST(CorvCSDeviceWrapper, StandsForTheInternalSpace)
{
  const DofDevice two(2);
  EXPECT_NE(two.wrapper, two.inner);
  EXPECT_EQ(&two.wrapper->unwrapped(), two.inner.get());
  EXPECT_EQ(two.inner->parent(), two.wrapper);
  EXPECT_EQ(two.wrapper->countSubspaces(), 1u);
  EXPECT_EQ(two.wrapper->subspace(0), two.inner);
  EXPECT_EQ(two.wrapper->device(), two.device);
  EXPECT_EQ(two.wrapper->metric(), two.inner->metric());
  EXPECT_EQ(two.wrapper->configValidators(), two.inner->configValidators());
  EXPECT_TRUE(two.inner->includes(two.wrapper) && two.wrapper->includes(two.inner));
  unsigned int rank = 7;
  EXPECT_TRUE(two.inner->getFirstDofRankOfSubspace(two.wrapper, rank).succeeded());
  EXPECT_EQ(rank, 0u);

  // Sets that are pushed on one are in force on both.
  ASSERT_TRUE(two.wrapper->pushConstraints().succeeded());
  EXPECT_EQ(two.wrapper->constraints(), two.inner->constraints());
  EXPECT_NE(two.inner->constraints(), two.device->constraints());
  ASSERT_TRUE(two.wrapper->popConstraints().succeeded());
  EXPECT_EQ(two.inner->constraints(), two.device->constraints());

  // There is one wrapper at a time, and it goes with its last holder.
  const LogCapture log;
  EXPECT_FALSE(CorvCSDeviceWrapper::create(two.device, "test.second"));
  EXPECT_TRUE(
    log.contains("Unable to create a CorvCSDeviceWrapper instance for a device space that already has a parent."));
  EXPECT_FALSE(CorvCSDeviceWrapper::create(CorvDeviceShPtr(), "test.null"));
  const CorvCSGroupShPtr group = CorvCSGroup::create("test.group");
  ASSERT_TRUE(group->appendSubspace(two.wrapper).succeeded());
  EXPECT_EQ(CorvConfig(group, Values{1, 2}).restrict(two.inner).dofValues(), (Values{1, 2}));
}

TEST(CorvCSDeviceWrapper, NothingOfTheDeviceKeepsIt)
{
  CorvConfigSpaceWkPtr wrapper;
  CorvDeviceWkPtr device;
  {
    DofDevice two(2);
    wrapper = two.wrapper;
    device = two.device;
    two.inner->dof(0)->lockAt(1.0);
    two.inner->dof(1)->boundWithin(-1, 1);
    CorvConfig inside(two.wrapper, Values{0, 3});
    EXPECT_FALSE(inside.validate(ClumParameterMapConstShPtr()));
    ASSERT_TRUE(inside.changeSpaceWithoutInvalidation(two.inner).succeeded());
    EXPECT_TRUE(two.device->setCurrentConfig(inside).succeeded());
    CorvConfig current;
    EXPECT_TRUE(two.device->getCurrentConfig(current).succeeded());
    two.wrapper.reset();
    EXPECT_EQ(current.space(), wrapper.lock());
    current = CorvConfig();
    EXPECT_TRUE(wrapper.expired());
    EXPECT_NE(two.device->configSpace(), CorvConfigSpaceShPtr());
  }
  EXPECT_TRUE(device.expired());
}

TEST(CorvCSDeviceWrapper, ConfigurationMovesBetweenTheTwoSpaces)
{
  const DofDevice three(3);
  const CorvConfigSpaceShPtr x = three.inner->dof(0);
  const SumConstraintShPtr sum = SumConstraint::create(three.wrapper, "sum", {{{x}, {three.inner->dof(2)}}});
  ASSERT_TRUE(three.device->constraints()->add(sum).succeeded());
  EXPECT_TRUE(three.wrapper->isDofPassive(2) && three.inner->isDofPassive(2));

  CorvConfig outside(three.wrapper, Values{4, 5, 0});
  CorvConfig inside(three.inner, Values{4, 5, 0});
  EXPECT_EQ(outside.dofValues(), (Values{4, 5, 4}));
  EXPECT_EQ(inside.dofValues(), (Values{4, 5, 4}));
  EXPECT_NE(outside, inside);
  const int applications = sum->applications;

  // Verdicts and reports survive a change of the name only.
  const CorvValidationReportShPtr report = CorvValidationReport::create();
  report->isValid(false);
  outside.setReport("test", report);
  ASSERT_TRUE(outside.changeSpaceWithoutInvalidation(three.inner).succeeded());
  EXPECT_EQ(outside.report("test"), report);
  EXPECT_FALSE(outside.isValid());
  EXPECT_EQ(outside, inside);
  EXPECT_EQ(sum->applications, applications);
  EXPECT_TRUE(outside.changeSpaceWithoutInvalidation(compositeOfSize(3)).failed());
  EXPECT_EQ(outside.space(), three.inner);
  ASSERT_TRUE(outside.convert(three.wrapper).succeeded());
  EXPECT_EQ(outside.dofValues(), (Values{4, 5, 4}));
  EXPECT_FALSE(outside.report("test"));

  // A dof more: both convert, whoever raised the version.
  ASSERT_TRUE(three.device->addExtraDof(CorvDof::create(false)).succeeded());
  EXPECT_EQ(outside.dofValues(), (Values{4, 5, 4, 0}));
  EXPECT_EQ(inside.dofValues(), (Values{4, 5, 4, 0}));
  ASSERT_TRUE(inside.pushRestriction(three.wrapper).succeeded());
  EXPECT_EQ(inside.space(), three.wrapper);
  inside.popRestriction();
  ASSERT_TRUE(outside.pushSpace().succeeded());
  EXPECT_EQ(outside.space(), x) << "the walk goes through the sub-spaces of the internal space";
  outside.popSpace();
}
