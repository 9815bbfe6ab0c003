#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDof.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "paths/orvSteeringMethod.h"
#include "support/logCapture.h"
#include "support/samples.h"
#include "validation/orvReportCfgDof.h"
#include "validation/orvValidationPool.h"
#include "validation/orvValidationReport.h"
#include "validation/orvValidatorCfgComposite.h"
#include "validation/orvValidatorCfgDof.h"
#include "validation/orvValidatorDofBounds.h"
#include "validation/orvValidatorPathDirectPaths.h"
#include "validation/orvValidatorSet.h"

#include <cmath>
#include <gtest/gtest.h>

LUM_HANDLES(ProbeValidator)
LUM_HANDLES(ProbePool)

/// Says what it is told to say, and counts how often it is asked.
class ProbeValidator : public CorvConfigValidator
{
  LUM_UNREFLECTED(ProbeValidator, CorvConfigValidator);

public:
  static ProbeValidatorShPtr create(const CorvConfigSpaceShPtr& i_space, const std::string& i_name)
  {
    return lumCreate<ProbeValidator>(i_space, i_name);
  }
  CorvValidatorShPtr clone() const override { return lumCreateCopy<ProbeValidator>(self()); }
  bool doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                        const CorvValidationReportConstShPtr&, CorvValidationReportShPtr& o_report) const override
  {
    ++calls;
    seenSpace = unwrappedValidationSpace(i_params);
    if (makesReport)
      o_report = CorvValidationReport::create();
    if (!nestsItself || depth > 0)
      return verdict;
    ++depth;
    validate(i_cfg, ClumParameterMapConstShPtr());
    --depth;
    return unwrappedValidationSpace(i_params) == seenSpace && i_params->boolValue("probe.flag", false);
  }
  bool shouldRevalidateConfig(const CorvConfig&, const ClumParameterMapConstShPtr&,
                              const CorvValidationReportConstShPtr&) const override
  {
    return isStale;
  }
  lmStatus validMotion(const CorvDirectPath&, double, const CorvConfig&, CorvAbstractPath::EDirection,
                       const ClumParameterMapConstShPtr&, double& o_bound, bool& o_exact) const override
  {
    o_bound = bound;
    o_exact = isExact;
    return bound < 0.0 ? -1 : 0;
  }
  void didAddToConfigSpace() override { ++additions; }
  void willRemoveFromConfigSpace() override { ++removals; }

  bool verdict = true;
  bool makesReport = false;
  bool isStale = false;
  bool isExact = true;
  double bound = 1.0;
  int additions = 0;
  int removals = 0;
  bool nestsItself = false;
  mutable int depth = 0;
  mutable int calls = 0;
  mutable const CorvConfigSpace* seenSpace = nullptr;

protected:
  ProbeValidator(const CorvConfigSpaceShPtr& i_space, const std::string& i_name) : CorvConfigValidator(i_space, i_name)
  {
  }
  lmStatus init(const ProbeValidatorWkPtr& i_weakPtr) { return CorvConfigValidator::init(i_weakPtr); }
};

/// Stores every result on one configuration.
class ProbePool : public CorvValidationPool
{
  LUM_UNREFLECTED(ProbePool, CorvValidationPool);

public:
  explicit ProbePool(const CorvConfig& i_target) : target(i_target) {}
  const CorvValidable& targetOf(const CorvValidable&) override { return target; }
  void didValidate(const CorvValidable& i_validable, const CorvValidable&) override { asked = &i_validable; }

  CorvConfig target;
  const CorvValidable* asked = nullptr;
};

namespace
{
class ValidatorFrame : public testing::Test
{
protected:
  ValidatorFrame() : space(sampleSpace()), probe(ProbeValidator::create(space, "probe")), config(space) {}

  CorvConfigSpaceShPtr space;
  ProbeValidatorShPtr probe;
  CorvConfig config;
};

CorvDirectPathShPtr straight(const CorvConfigSpaceShPtr& i_space, double i_x, double i_y)
{
  return i_space->steeringMethod()->makeDirectPath(CorvConfig(i_space), CorvConfig(i_space, {i_x, i_y}));
}
} // namespace

TEST_F(ValidatorFrame, NeedsANameAndASpace)
{
  LogCapture log;
  EXPECT_FALSE(ProbeValidator::create(space, ""));
  EXPECT_TRUE(log.contains("Cannot create a validator without a name."));
  EXPECT_FALSE(ProbeValidator::create(CorvConfigSpaceShPtr(), "probe"));
  EXPECT_TRUE(log.contains("Cannot create a validator without a space."));
}

TEST_F(ValidatorFrame, ReportAnswersUntilItIsStaleOrTheConfigurationChanges)
{
  probe->verdict = false;
  EXPECT_FALSE(probe->validate(config));
  EXPECT_FALSE(config.isValid());
  ASSERT_TRUE(config.report("probe"));
  EXPECT_FALSE(config.report("probe")->isValid());
  probe->verdict = true;
  EXPECT_FALSE(probe->validate(config));
  EXPECT_EQ(probe->calls, 1);

  probe->isStale = true;
  EXPECT_FALSE(probe->upToDateReportFrom(config));
  EXPECT_TRUE(probe->validate(config));
  EXPECT_EQ(probe->calls, 2);
  EXPECT_FALSE(config.report("probe")); // a valid result without a report leaves no trace

  probe->isStale = false;
  probe->makesReport = true;
  EXPECT_TRUE(probe->validate(config));
  EXPECT_TRUE(probe->validate(config));
  EXPECT_EQ(probe->calls, 3);
  EXPECT_TRUE(probe->upToDateReportFrom(config));
  config.dofValue(0, 1.0);
  EXPECT_FALSE(config.report("probe"));
  EXPECT_TRUE(probe->validate(config));
  EXPECT_EQ(probe->calls, 4);
}

TEST_F(ValidatorFrame, DeactivatedPassesAndDropsItsReport)
{
  probe->verdict = false;
  EXPECT_FALSE(probe->validate(config));
  const unsigned int version = space->version();
  probe->isActivated(false);
  EXPECT_GT(space->version(), version);
  CorvConfig other(space);
  other.setReport("probe", CorvValidationReport::create());
  EXPECT_TRUE(probe->validate(other));
  EXPECT_FALSE(other.report("probe"));
  EXPECT_EQ(probe->calls, 1);
}

TEST_F(ValidatorFrame, ForeignSpaceIsWarnedAboutAndJudgedByItsOwnValidators)
{
  const CorvConfigSpaceShPtr foreign = sampleSpace();
  const ProbeValidatorShPtr judge = ProbeValidator::create(foreign, "judge");
  judge->verdict = false;
  ASSERT_TRUE(foreign->configValidators()->add(judge).succeeded());
  LogCapture log;
  EXPECT_FALSE(probe->validate(CorvConfig(foreign)));
  EXPECT_EQ(log.count(), 1u);
  EXPECT_TRUE(log.contains("Spaces of validable and validator don't match."));
  EXPECT_EQ(probe->calls, 0);
  EXPECT_EQ(judge->calls, 1);
}

TEST_F(ValidatorFrame, OutermostValidatorNamesTheSpaceAndANestedCallLeavesTheParametersAlone)
{
  const ClumParameterMapShPtr params = ClumParameterMap::create();
  params->setBool("probe.flag", true);
  EXPECT_TRUE(probe->validate(config, params));
  EXPECT_EQ(probe->seenSpace, space.get());
  EXPECT_FALSE(params->hasPointer("orvane.next.validation-space"));
  probe->nestsItself = true;
  EXPECT_TRUE(probe->validate(config, params));
  EXPECT_EQ(probe->calls, 3);
}

TEST_F(ValidatorFrame, PoolStoresElsewhere)
{
  const ShPtr<ProbePool> pool(new ProbePool(CorvConfig(space)));
  probe->pool(pool);
  probe->verdict = false;
  EXPECT_FALSE(probe->validate(config));
  EXPECT_EQ(pool->asked, &config);
  EXPECT_FALSE(config.report("probe"));
  EXPECT_TRUE(pool->target.report("probe"));
  EXPECT_TRUE(probe->upToDateReportFrom(config));
}

TEST_F(ValidatorFrame, WrongKindOfValidableIsLoggedAndInvalid)
{
  LogCapture log;
  const CorvDirectPathShPtr path = straight(space, 1.0, 0.0);
  EXPECT_FALSE(probe->validate(*path));
  EXPECT_TRUE(log.contains("Assertion failed: false"));
}

TEST_F(ValidatorFrame, SetKeepsOrderRefusesAndTellsItsMembers)
{
  const CorvValidatorSetShPtr set = CorvValidatorSet::create(space);
  const ProbeValidatorShPtr first = ProbeValidator::create(space, "first");
  const ProbeValidatorShPtr last = ProbeValidator::create(space, "last");
  EXPECT_TRUE(set->add(probe).succeeded());
  EXPECT_TRUE(set->addBefore(first, probe).succeeded());
  EXPECT_TRUE(set->addAfter(last, probe).succeeded());
  EXPECT_EQ(set->at(0), first);
  EXPECT_EQ(set->at(1), probe);
  EXPECT_EQ(set->at(2), last);
  EXPECT_FALSE(set->at(3));
  EXPECT_EQ(last->additions, 1);
  EXPECT_EQ(set->deepCount(), 3u);

  LogCapture log;
  const auto expectRefused = [&](const CorvValidatorShPtr& i_validator, const std::string& i_message)
  {
    const unsigned int version = space->version();
    EXPECT_TRUE(set->add(i_validator).failed());
    EXPECT_TRUE(log.contains(i_message)) << i_message;
    EXPECT_EQ(set->count(), 3u);
    EXPECT_EQ(space->version(), version);
  };
  expectRefused(CorvValidatorShPtr(), "CorvValidatorSet::add(): cannot add a null validator to the set.");
  expectRefused(ProbeValidator::create(space, "last"),
                "CorvValidatorSet::add(): a validator named 'last' is already in the set.");
  expectRefused(ProbeValidator::create(sampleSpace(), "other"), "CorvValidatorSet::add(): spaces don't match.");
  EXPECT_TRUE(set->addBefore(ProbeValidator::create(space, "new"), ProbeValidator::create(space, "gone")).failed());
  EXPECT_TRUE(set->remove(ProbeValidator::create(space, "last")).failed());
  EXPECT_EQ(set->count(), 3u);

  set->isActivated(false);
  EXPECT_TRUE(set->add(ProbeValidator::create(space, "fourth")).succeeded());
  EXPECT_TRUE(set->isActivated());
  EXPECT_TRUE(set->remove(last).succeeded());
  EXPECT_EQ(last->removals, 1);
  set->clear();
  EXPECT_EQ(set->count(), 0u);
  EXPECT_EQ(probe->removals, 1);
}

TEST_F(ValidatorFrame, NestedSetIsSearchedOnlyInDepth)
{
  const CorvValidatorSetShPtr inner = CorvValidatorSet::create(space);
  const CorvValidatorSetShPtr outer = CorvValidatorSet::create(space);
  ASSERT_TRUE(inner->add(probe).succeeded());
  ASSERT_TRUE(outer->add(ProbeValidator::create(space, "leaf")).succeeded());
  ASSERT_TRUE(outer->add(inner).succeeded());
  EXPECT_EQ(outer->validatorNamed("probe", true), probe);
  EXPECT_FALSE(outer->validatorNamed("probe", false));
  EXPECT_EQ(outer->deepCount(), 2u);
  EXPECT_EQ(outer->deepAt(1), probe);
  EXPECT_FALSE(outer->deepAt(2));
  LogCapture log;
  EXPECT_TRUE(outer->add(ProbeValidator::create(space, "probe")).failed());
  EXPECT_EQ(outer->count(), 2u);
  EXPECT_TRUE(CorvValidatorSet::emptySet()->add(probe).failed());
  EXPECT_TRUE(CorvValidatorSet::emptySet()->validate(config));
}

TEST_F(ValidatorFrame, SetStopsAtTheFirstRefusal)
{
  const CorvValidatorSetShPtr set = CorvValidatorSet::create(space);
  EXPECT_TRUE(set->validate(config));
  const ProbeValidatorShPtr second = ProbeValidator::create(space, "second");
  ASSERT_TRUE(set->add(probe).succeeded());
  ASSERT_TRUE(set->add(second).succeeded());
  EXPECT_TRUE(set->validate(config));
  probe->verdict = false;
  EXPECT_FALSE(set->validate(config));
  EXPECT_EQ(second->calls, 1);
  EXPECT_EQ(config.countReports(false), 1u);
}

TEST_F(ValidatorFrame, SetBoundsMotionByTheNearestMember)
{
  const CorvValidatorSetShPtr set = CorvValidatorSet::create(space);
  const CorvDirectPathShPtr path = straight(space, 5.0, 0.0);
  double bound = 0.0;
  bool isExact = false;
  EXPECT_TRUE(
    set->validMotion(*path, 0.0, CorvAbstractPath::FORWARD, ClumParameterMapConstShPtr(), bound, isExact).succeeded());
  EXPECT_TRUE(std::isinf(bound));
  EXPECT_TRUE(isExact);

  const ProbeValidatorShPtr near = ProbeValidator::create(space, "near");
  near->bound = 0.5;
  near->isExact = false;
  ASSERT_TRUE(set->add(probe).succeeded());
  ASSERT_TRUE(set->add(near).succeeded());
  EXPECT_TRUE(
    set->validMotion(*path, 0.0, CorvAbstractPath::FORWARD, ClumParameterMapConstShPtr(), bound, isExact).succeeded());
  EXPECT_EQ(bound, 0.5);
  EXPECT_FALSE(isExact);
  near->bound = -1.0;
  bound = 7.0;
  EXPECT_TRUE(
    set->validMotion(*path, 0.0, CorvAbstractPath::FORWARD, ClumParameterMapConstShPtr(), bound, isExact).failed());
  EXPECT_EQ(bound, 7.0);
}

TEST_F(ValidatorFrame, DofReportsHaveOneEntryADof)
{
  const CorvValidatorCfgBoundsShPtr bounds = CorvValidatorCfgBounds::create(space);
  const auto dofsOf = [&](double i_x, double i_y)
  {
    const CorvConfig checked(space, {i_x, i_y});
    const bool isValid = bounds->validate(checked);
    const CorvReportCfgDofConstShPtr report =
      boost::dynamic_pointer_cast<const CorvReportCfgDof>(checked.report("orvane.core.cfg-bounds"));
    EXPECT_TRUE(report && report->countDofs() == 2 && report->isValid() == isValid);
    return report ? std::make_pair(report->isDofValid(0), report->isDofValid(1)) : std::make_pair(false, false);
  };
  EXPECT_EQ(dofsOf(0.0, 0.0), std::make_pair(true, true));
  EXPECT_EQ(dofsOf(11.0, -12.0), std::make_pair(false, false));
  EXPECT_EQ(dofsOf(11.0, 3.0), std::make_pair(false, true));
  EXPECT_EQ(dofsOf(3.0, 10.0 + 1e-7), std::make_pair(true, true)); // equivalent to its bound

  space->dof(1)->isBounded(false);
  EXPECT_EQ(dofsOf(0.0, 50.0), std::make_pair(true, true));
  const CorvValidatorCfgLockShPtr lock = CorvValidatorCfgLock::create(space);
  space->dof(0)->lockAt(2.0);
  EXPECT_TRUE(lock->validate(CorvConfig(space, {2.0, 1.0})));
}

TEST_F(ValidatorFrame, DofBoundsAreInclusiveAndTheirMotionNeverLeavesThem)
{
  const CorvDofShPtr dof = CorvDof::create(false);
  const CorvValidatorDofBoundsShPtr bounds = CorvValidatorDofBounds::create(dof, -1.0, 3.0);
  EXPECT_TRUE(bounds->validate(CorvConfig(dof, {-1.0})));
  EXPECT_TRUE(bounds->validate(CorvConfig(dof, {3.0})));
  EXPECT_FALSE(bounds->validate(CorvConfig(dof, {3.0 + 1e-12})));
  bounds->minValue(3.0);
  EXPECT_TRUE(bounds->validate(CorvConfig(dof, {3.0})));
  EXPECT_FALSE(bounds->validate(CorvConfig(dof, {2.9})));

  bounds->minValue(-1.0);
  const CorvDirectPathShPtr path = dof->steeringMethod()->makeDirectPath(CorvConfig(dof), CorvConfig(dof, {5.0}));
  for (const double from : {0.0, 1.0, 2.5})
  {
    double bound = 0.0;
    bool isExact = true;
    ASSERT_TRUE(
      bounds->validMotion(*path, from, CorvAbstractPath::FORWARD, ClumParameterMapConstShPtr(), bound, isExact)
        .succeeded());
    EXPECT_FALSE(isExact);
    CorvConfig reached(dof);
    ASSERT_TRUE(path->getConfigAtDistance(from + bound, reached).succeeded());
    EXPECT_TRUE(bounds->validate(reached));
    EXPECT_GT(bound, 0.0);
  }
}

TEST_F(ValidatorFrame, CompositeJudgesEverySubspaceAtItsOwnRank)
{
  const CorvCSCompositeShPtr top = CorvCSComposite::create("test.top");
  const CorvConfigSpaceShPtr left = sampleSpace();
  const CorvConfigSpaceShPtr right = sampleSpace();
  ASSERT_TRUE(top->appendSubspace(left).succeeded());
  ASSERT_TRUE(top->appendSubspace(right).succeeded());
  ASSERT_TRUE(top->configValidators()->validatorNamed(CorvValidatorCfgComposite::DEFAULT_NAME, false));
  const CorvValidatorShPtr composite =
    top->configValidators()->validatorNamed(CorvValidatorCfgComposite::DEFAULT_NAME, false);

  // First by the flat walk over the dofs, then, with a validator of a sub-space's own, by the walk over sub-spaces.
  for (const bool hasOwnJudge : {false, true})
  {
    if (hasOwnJudge)
    {
      ASSERT_TRUE(right->configValidators()->add(CorvValidatorCfgBounds::create(right)).succeeded());
    }
    EXPECT_TRUE(composite->validate(CorvConfig(top, {1.0, 2.0, 3.0, 4.0})));
    EXPECT_TRUE(CorvConfig(top, {1.0, 2.0, 3.0, 4.0}).validate(ClumParameterMapConstShPtr()));
    for (unsigned int rank = 0; rank < 4; ++rank)
    {
      CorvConfig outside(top);
      outside.dofValue(rank, 10.5);
      EXPECT_FALSE(composite->validate(outside)) << rank;
      EXPECT_FALSE(outside.isValid());
      EXPECT_EQ(outside.size(), 4u); // the walk has ended
      CorvConfig again(top);
      again.dofValue(rank, 10.5);
      EXPECT_FALSE(again.validate(ClumParameterMapConstShPtr())) << rank;
    }
  }
}

TEST_F(ValidatorFrame, PathIsAsValidAsItsDirectPaths)
{
  const CorvValidatorShPtr judge = CorvValidatorPathDirectPaths::create(space);
  const CorvPathShPtr path = CorvPath::create(space);
  ASSERT_TRUE(path->appendDirectPath(straight(space, 1.0, 0.0)).succeeded());
  EXPECT_TRUE(judge->validate(*path));
  EXPECT_TRUE(path->report(CorvValidatorPathDirectPaths::DEFAULT_NAME));
  const CorvDirectPathConstShPtr piece = path->directPath(0);
  const CorvValidationReportShPtr refusal = CorvValidationReport::create();
  refusal->isValid(false);
  piece->setReport("somebody else", refusal);
  EXPECT_FALSE(judge->validate(*path));
  EXPECT_FALSE(path->isValid());
}
