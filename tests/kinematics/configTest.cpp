#include "foundation/lumMemoryCoder.h"
#include "foundation/lumNotificator.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvUtility.h"
#include "metrics/orvMetric.h"
#include "support/allocations.h"
#include "support/logCapture.h"
#include "support/composites.h"
#include "support/sumConstraint.h"
#include "validation/orvValidationReport.h"
#include "validation/orvValidatorSet.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace
{
using Values = std::vector<double>;

/// Counts how often it is unvalidated.
class CountedConfig : public CorvConfig
{
public:
  using CorvConfig::CorvConfig;
  void didUnvalidate() const override { ++count; }
  mutable int count = 0;
};

CorvValidationReportShPtr makeReport(bool i_isValid)
{
  const CorvValidationReportShPtr report = CorvValidationReport::create();
  report->isValid(i_isValid);
  return report;
}

/// x, y, z with z = x + y by a constraint on the whole space.
struct SummedSpace
{
  CorvDofShPtr x = CorvDof::create(false);
  CorvDofShPtr y = CorvDof::create(false);
  CorvDofShPtr z = CorvDof::create(false);
  CorvCSCompositeShPtr space = compositeOf({x, y, z});
  SumConstraintShPtr sum = SumConstraint::create(space, "sum", {{{x, y}, {z}}});

  SummedSpace() { EXPECT_TRUE(space->constraints()->add(sum).succeeded()); }
};

/// The body of 32-bit MurmurHash3 written from its definition, on blocks of four bytes.
std::uint32_t referenceHash(const Values& i_values)
{
  std::uint32_t hash = 0;
  for (double value : i_values)
  {
    std::uint32_t words[2] = {0, 0};
    value += 0.0;
    std::memcpy(words, &value, sizeof(words));
    std::uint32_t k = 0;
    if (value != 0.0)
      k = ((words[1] / 4) + (words[1] * 64) + words[0]) ^ words[1];
    k *= 3432918353u;
    k = (k * 32768u) | (k / 131072u);
    k *= 461845907u;
    hash ^= k;
    hash = (hash * 8192u) | (hash / 524288u);
    hash = hash * 5 + 3864292196u;
  }
  return hash;
}
} // namespace

TEST(CorvConfig, ConvertsItselfByTheIdentityOfDofs)
{
  const CorvDofShPtr a = CorvDof::create(false);
  const CorvDofShPtr b = CorvDof::create(false);
  const CorvDofShPtr c = CorvDof::create(false);
  const CorvDofShPtr d = CorvDof::create(false);
  const CorvDofShPtr e = CorvDof::create(false);
  const CorvCSCompositeShPtr space = compositeOf({a, b, c});
  CorvConfig config(space, Values{1, 2, 3});
  config.setReport("test", makeReport(false));

  // A dof that is new takes what stood at its rank, one beyond the old end is 0.
  ASSERT_TRUE(space->insertSubspace(d, 1).succeeded());
  ASSERT_TRUE(space->appendSubspace(e).succeeded());
  EXPECT_EQ(config.dofValue(2), 2.0);
  EXPECT_EQ(config.dofValues(), (Values{1, 2, 2, 3, 0}));
  EXPECT_EQ(config.countReports(true), 0u);

  // Two changes between two readings make one conversion.
  ASSERT_TRUE(space->removeSubspace(a).succeeded());
  ASSERT_TRUE(space->removeSubspace(e).succeeded());
  EXPECT_EQ(config.dofValues(), (Values{2, 2, 3}));

  CorvConfig untouched(space, Values{4, 5, 6});
  d->tolerance(1e-3);
  b->boundWithin(0, 10);
  EXPECT_EQ(untouched.dofValues(), (Values{4, 5, 6}));

  // Another space that shares two of the dofs.
  const CorvConfig source(space, Values{7, 8, 9});
  ASSERT_TRUE(space->removeSubspace(c).succeeded());
  const CorvCSCompositeShPtr other = compositeOf({c, a});
  CorvConfig converted(source);
  ASSERT_TRUE(converted.convert().succeeded());
  ASSERT_TRUE(converted.convert(other).succeeded());
  EXPECT_EQ(converted.dofValues(), (Values{7, 8}));
  EXPECT_EQ(converted.space(), other);
}

TEST(CorvConfig, FailedConversionKeepsTheValuesAndShowsAsInvalid)
{
  const CorvCSCompositeShPtr space = compositeOfSize(2);
  const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
  coder->pin(space.get());
  coder->encodeObjectShPtr(space, "c/configSpace");
  coder->encodeUnsignedInt(4711, "c/spaceVersion");
  coder->encodeUnsignedInt(4711, "c/validationSpaceVersion");
  coder->encodeDoubleVector(Values{3, 4, 5}, "c/dofValues");

  const LogCapture log;
  const CorvConfig config(*coder, "c");
  EXPECT_TRUE(log.contains("Configuration 'c' might be decoded incorrectly"));
  EXPECT_FALSE(config.isValid());
  const std::size_t logged = log.count();
  EXPECT_TRUE(log.contains(
    "Assertion failed: ( ((unsigned int)0) == (space()->getDofsAtVersion(m_spaceVersion, oldDofs)).code() )"));
  Values values;
  EXPECT_TRUE(config.getDofValues(values).failed());
  EXPECT_FALSE(config.beginPtr());
  EXPECT_EQ(config.dofValue(2), 5.0);
  EXPECT_FALSE(config == CorvConfig(space, Values{3, 4}));
  EXPECT_EQ(log.count(), logged) << "one attempt for each version";
  EXPECT_FALSE(config.isValid());

  CorvConfig map(space, Values{1, 2});
  const CorvCSCompositeShPtr other = compositeOfSize(2);
  EXPECT_TRUE(map.convert(other, {0}).failed());
  EXPECT_TRUE(map.convert(other, {0, 2}).failed());
  EXPECT_EQ(map.space(), space);
  EXPECT_EQ(map.dofValues(), (Values{1, 2}));
  EXPECT_TRUE(map.convert(other, {1, 0}).succeeded());
  EXPECT_EQ(map.dofValues(), (Values{2, 1}));
  EXPECT_TRUE(CorvConfig().convert().failed());
}

TEST(CorvConfig, WritesInOneChangeUnvalidateOnce)
{
  CountedConfig config(compositeOfSize(3));
  config.didChange();
  config.didChange();
  EXPECT_EQ(config.count, 2);
  config.beginChange();
  config.dofValue(0, 1.0);
  config.beginChange();
  config.dofValue(1, 2.0);
  config.endChange();
  config.dofValue(2, 3.0);
  config.endChange();
  EXPECT_EQ(config.count, 3);
  config.dofValue(0, 1.0);
  EXPECT_TRUE(config.setDofValues(Values{1, 2, 3}).succeeded());
  EXPECT_EQ(config.count, 3);
  EXPECT_TRUE(config.setDofValues(Values{3, 2, 1}).succeeded());
  EXPECT_EQ(config.count, 4);
  EXPECT_TRUE(config.setDofValues(Values{3, 2}).failed());
  EXPECT_EQ(config.dofValues(), (Values{3, 2, 1}));

  // A copy made within a change is outside of it.
  config.beginChange();
  config.dofValue(0, 9.0);
  CountedConfig copy(config);
  copy.count = 0;
  copy.didChange();
  copy.didChange();
  EXPECT_EQ(copy.count, 2);
  config.endChange();
}

TEST(CorvConfig, CopiesAndWritesAllocateNothing)
{
  const auto allocations = [](const auto& i_action)
  {
    const std::size_t before = countAllocations();
    i_action();
    return countAllocations() - before;
  };
  const CorvCSCompositeShPtr space = compositeOfSize(8);
  CorvConfig config(space);
  CorvConfig target(space);
  target.dofValue(0, 1.0);
  EXPECT_EQ(allocations([&] { const CorvConfig copy(config); }), 0u);
  EXPECT_EQ(allocations([&] { target = config; }), 0u);
  EXPECT_EQ(allocations(
              [&]
              {
                config.beginChange();
                for (unsigned int rank = 0; rank < 8; ++rank)
                  config.dofValue(rank, rank + 1.0);
                config.endChange();
              }),
            0u);
  EXPECT_EQ(allocations([&] { EXPECT_TRUE(config.isValid()); }), 0u);
  EXPECT_EQ(allocations([&] { EXPECT_EQ(config.beginPtr()[7], 8.0); }), 0u);
  const CorvConfig large(compositeOfSize(9));
  EXPECT_EQ(allocations([&] { const CorvConfig copy(large); }), 1u);
}

TEST(CorvConfig, PassiveDofBelongsToItsConstraint)
{
  const SummedSpace summed;
  ASSERT_TRUE(summed.space->isDofPassive(2) && summed.space->isDofComputed(2));
  EXPECT_TRUE(summed.space->isDofFree(0));
  CorvConfig config(summed.space, Values{1, 2, 50});
  EXPECT_EQ(config.dofValue(2), 3.0);
  config.dofValue(2, 7.0);
  EXPECT_EQ(config.dofValue(2), 3.0);
  config.dofValue(0, 5.0);
  EXPECT_EQ(config.dofValue(2), 7.0);
  EXPECT_EQ(config.restrict(summed.z).dofValues(), Values{7});

  // Once valid, a configuration asks the constraint no more.
  const int applications = summed.sum->applications;
  EXPECT_EQ(config.dofValues(), (Values{5, 2, 7}));
  EXPECT_TRUE(config.isValid());
  EXPECT_EQ(summed.sum->applications, applications);

  // Inside a change the computed value is stale; walking, what stands is read.
  config.beginChange();
  config.dofValue(0, 6.0);
  EXPECT_EQ(config.dofValue(2), 7.0);
  config.endChange();
  ASSERT_TRUE(config.walkDofs().succeeded());
  ASSERT_TRUE(config.nextDof().succeeded() && config.nextDof().succeeded());
  EXPECT_EQ(config.dofValue(0), 8.0);
  config.dofValue(0, 100.0);
  EXPECT_EQ(config.dofValue(0), 8.0);
  config.endWalk();

  CorvConfig free(config);
  free.isSelfValidationEnabled(false);
  free.dofValue(2, -1.0);
  EXPECT_EQ(free.dofValues(), (Values{6, 2, -1}));

  summed.x->lockAt(20.0);
  EXPECT_EQ(config.dofValues(), (Values{20, 2, 22}));
  summed.x->isLocked(false);
  config.dofValue(0, 1.0);
  EXPECT_EQ(config.dofValues(), (Values{1, 2, 3}));
}

TEST(CorvConfig, FailingConstraintMakesItInvalidUntilTheSpaceChanges)
{
  const SummedSpace summed;
  CorvConfig config(summed.space, Values{1, 2, 0});
  summed.sum->fails = true;
  EXPECT_FALSE(config.isValidItself());
  EXPECT_FALSE(config.isValid());
  summed.sum->fails = false;
  EXPECT_FALSE(config.isValid());
  summed.space->invalidateCache();
  EXPECT_TRUE(config.isValid());
  EXPECT_EQ(config.dofValue(2), 3.0);
  summed.sum->fails = true;
  config.lock();
  EXPECT_TRUE(config.isLocked() && config.isValidItself());
  config.dofValue(0, 2.0);
  EXPECT_FALSE(config.isValid());
}

TEST(CorvValidable, ReportsAreSharedUntilOneSideWrites)
{
  const CorvCSCompositeShPtr space = compositeOfSize(2);
  CorvConfig source(space);
  source.setReport("a", makeReport(true));
  source.setReport("b", makeReport(false));
  CorvConfig copy(source);
  EXPECT_EQ(copy.report("a"), source.report("a"));
  copy.setReport("c", makeReport(false));
  EXPECT_FALSE(source.report("c"));
  source.removeReport("b");
  EXPECT_TRUE(copy.report("b"));
  EXPECT_TRUE(source.isValid());
  CorvConfig third(copy);
  copy.clearReports();
  EXPECT_EQ(third.countReports(false), 3u);
  EXPECT_FALSE(third.isValidFor("b"));
  EXPECT_TRUE(third.isValidFor("nothing"));
  third.setReport("d", CorvValidationReportConstShPtr());
  EXPECT_EQ(third.countReports(false), 3u);
  std::string name;
  EXPECT_TRUE(third.report(2, name, false));
  EXPECT_EQ(name, "c");
  EXPECT_FALSE(third.report(3, name, false));
  copy = third;
  copy.dofValue(0, 1.0);
  EXPECT_EQ(copy.countReports(true), 0u);
  EXPECT_EQ(third.countReports(true), 3u);
}

TEST(CorvValidable, ReportCountsInItsSpaceAndThoseThatIncludeIt)
{
  const CorvCSCompositeShPtr space = compositeOfSize(2);
  CorvConfig config(space);
  config.walkDofs();
  config.setReport("dof", makeReport(false));
  EXPECT_FALSE(config.isValid());
  config.nextDof();
  EXPECT_TRUE(config.isValid());
  EXPECT_FALSE(config.report("dof"));
  config.endWalk();
  EXPECT_FALSE(config.isValid());
  EXPECT_EQ(config.countReports(false), 0u);
  EXPECT_EQ(config.countReports(true), 1u);
  config.removeReport("dof");
  EXPECT_FALSE(config.isValid());
  config.setReport("foreign", makeReport(false), compositeOfSize(1));
  EXPECT_EQ(config.countReports(true), 1u);
}

TEST(CorvConfig, NotionsOfEqualityDiffer)
{
  const double pi = 3.14159265358979323846;
  const CorvDofShPtr turn = CorvDof::create(true);
  const CorvCSCompositeShPtr space = compositeOf({CorvDof::create(false), turn});
  const CorvCSCompositeShPtr otherSpace = compositeOfSize(2);
  const CorvConfig base(space, Values{1, 0.5});
  struct Case
  {
    CorvConfig other;
    bool equal, equivalent, canonical, less;
  };
  const std::vector<Case> cases = {
    {base, true, true, true, false},
    {CorvConfig(space, Values{1 + 1e-11, 0.5}), false, true, false, false},
    {CorvConfig(space, Values{1 - 1e-11, 0.5}), false, true, false, false},
    {CorvConfig(space, Values{1 + 1e-9, 0.5}), false, false, false, true},
    {CorvConfig(space, Values{1, 0.25}), false, false, false, false},
    {CorvConfig(otherSpace, Values{1, 0.5}), false, false, false, false},
  };
  for (const Case& one : cases)
  {
    EXPECT_EQ(base == one.other, one.equal);
    EXPECT_EQ(base.isEquivalent(one.other), one.equivalent);
    EXPECT_EQ(CorvConfig::equivalent_to()(one.other, base), one.equivalent);
    EXPECT_EQ(CorvConfig::canonically_equal_to()(base, one.other), one.canonical);
    EXPECT_EQ(CorvConfig::less()(base, one.other), one.less);
  }

  // A half turn is the same angle from either side; a bounded angle is what it says.
  const CorvConfig half(space, Values{1, pi});
  const CorvConfig back(space, Values{1, -pi});
  EXPECT_NE(half, back);
  EXPECT_TRUE(CorvConfig::canonically_equal_to()(half, back));
  EXPECT_EQ(CorvConfig::canonical_hash()(half), CorvConfig::canonical_hash()(back));
  EXPECT_EQ(half.canonical().dofValues(), (Values{1, -pi}));
  turn->boundWithin(-4, 4);
  EXPECT_FALSE(CorvConfig::canonically_equal_to()(half, back));
  EXPECT_NE(CorvConfig::canonical_hash()(half), CorvConfig::canonical_hash()(back));
  EXPECT_EQ(half.canonical().dofValues(), (Values{1, pi}));
}

TEST(CorvConfig, HashIsTheBodyOfMurmurHash3)
{
  const CorvCSCompositeShPtr space = compositeOfSize(3);
  for (const Values& values : {Values{0, 0, 0}, Values{1, -2.5, 1e300}, Values{-0.0, 1e-310, 3.25}})
  {
    const CorvConfig config(space, values);
    EXPECT_EQ(CorvConfig::hash()(config), referenceHash(values));
    EXPECT_EQ(CorvConfig::canonical_hash()(config), referenceHash(values));
  }
  EXPECT_EQ(CorvConfig::hash()(CorvConfig(space, Values{-0.0, 1, 2})),
            CorvConfig::hash()(CorvConfig(space, Values{0.0, 1, 2})));
}

TEST(CorvConfig, WalkNarrowsTheViewAndComesBack)
{
  const CorvCSCompositeShPtr left = compositeOfSize(2);
  const CorvCSCompositeShPtr empty = compositeOfSize(0);
  const CorvCSCompositeShPtr right = compositeOfSize(3);
  const CorvCSCompositeShPtr space = CorvCSComposite::create("test.tree");
  for (const CorvCSCompositeShPtr& part : {left, empty, right})
    ASSERT_TRUE(space->appendSubspace(part).succeeded());
  CorvConfig config(space, Values{1, 2, 3, 4, 5});
  EXPECT_TRUE(config.popSpace().failed());
  EXPECT_TRUE(config.nextSubspace().failed());

  ASSERT_TRUE(config.pushSpace().succeeded());
  EXPECT_EQ(config.space(), left);
  EXPECT_EQ(config.dofValues(), (Values{1, 2}));
  ASSERT_TRUE(config.nextSubspace().succeeded());
  EXPECT_EQ(config.size(), 0u);
  EXPECT_TRUE(config.pushSpace().failed());
  EXPECT_TRUE(config.walkDofs().failed());
  ASSERT_TRUE(config.nextSubspace().succeeded());
  ASSERT_TRUE(config.pushSpace().succeeded());
  ASSERT_TRUE(config.nextSubspace().succeeded());
  EXPECT_EQ(config.dofValues(), Values{4});
  config.dofValue(0, 40.0);
  const CorvConfig copy(config);
  EXPECT_EQ(copy.dofValues(), Values{40});
  ASSERT_TRUE(config.popSpace().succeeded());
  EXPECT_EQ(config.dofValues(), (Values{3, 40, 5}));
  EXPECT_TRUE(config.nextSubspace().failed());
  ASSERT_TRUE(config.popSpace().succeeded());
  EXPECT_EQ(config.dofValues(), (Values{1, 2, 3, 40, 5}));
  copy.popSpace();
  copy.popSpace();
  EXPECT_EQ(copy, config);

  ASSERT_TRUE(config.pushRestriction(right).succeeded());
  EXPECT_TRUE(config.pushRestriction(left).failed());
  ASSERT_TRUE(config.walkDofs().succeeded());
  ASSERT_TRUE(config.nextDof().succeeded() && config.nextDof().succeeded());
  EXPECT_EQ(config.dofValue(0), 5.0);
  EXPECT_TRUE(config.nextDof().failed());
  EXPECT_TRUE(config.convert(space).failed());
  ASSERT_TRUE(config.endWalk().succeeded());
  ASSERT_TRUE(config.popRestriction().succeeded());
  EXPECT_EQ(config.size(), 5u);
  const LogCapture log;
  EXPECT_EQ(config.dofValue(5), 0.0);
  config.dofValue(5, 1.0);
  EXPECT_EQ(log.count(), 2u);
}

TEST(CorvConfig, RestrictionAndInjectionAreInverse)
{
  const CorvCSCompositeShPtr part = compositeOfSize(2);
  const CorvCSCompositeShPtr space = compositeOfSize(1);
  ASSERT_TRUE(space->appendSubspace(part).succeeded());
  CorvConfig config(space, Values{1, 2, 3});
  CorvConfig inner = config.restrict(part);
  EXPECT_EQ(inner.dofValues(), (Values{2, 3}));
  EXPECT_EQ(config.restrict(1), inner);
  inner *= 10.0;
  ASSERT_TRUE(config.inject(inner).succeeded());
  EXPECT_EQ(config.dofValues(), (Values{1, 20, 30}));
  EXPECT_TRUE(inner.inject(config).failed());
  EXPECT_FALSE(config.restrict(2).space());
  EXPECT_FALSE(config.restrict(compositeOfSize(1)).space());
  EXPECT_EQ(CorvConfig(space, 1, Values{7, 8, 9, 10}).dofValues(), (Values{8, 9, 10}));
  EXPECT_EQ((config / 2.0 - config + config).dofValues(), (Values{0.5, 10, 15}));

  const LogCapture log;
  CorvConfig() += config;
  EXPECT_TRUE(log.contains("Assertion failed: ( ((unsigned int)0) == (getDofValues(myValues)).code() )"));
  EXPECT_TRUE(log.contains("Assertion failed: ( ((unsigned int)0) == (setDofValues(myValues)).code() )"));
}

TEST(CorvConfig, SamplesFreeDofsOnly)
{
  const CorvDofShPtr bounded = CorvDof::create(false);
  const CorvDofShPtr locked = CorvDof::create(false);
  const CorvDofShPtr turn = CorvDof::create(true);
  bounded->boundWithin(2, 3);
  locked->lockAt(7.0);
  const CorvCSCompositeShPtr space = compositeOf({bounded, locked, turn});
  CorvConfig config(space);
  CorvUtility::randomSeed(5);
  for (int draw = 0; draw < 50; ++draw)
  {
    config.randomize();
    EXPECT_GE(config.dofValue(0), 2.0);
    EXPECT_LE(config.dofValue(0), 3.0);
    EXPECT_EQ(config.dofValue(1), 7.0);
  }
  EXPECT_NE(config.dofValue(2), 0.0);
  CorvUtility::randomSeed(6);
  CorvConfig first(config);
  first.randomStep(0.5);
  CorvUtility::randomSeed(6);
  CorvConfig second(config);
  second.randomStep(0.5);
  EXPECT_EQ(first, second);
  EXPECT_NE(first, config);
  EXPECT_EQ(first.dofValue(1), 7.0);
}

TEST(CorvConfig, CodedValueReadsBack)
{
  const SummedSpace summed;
  const CorvConfig config(summed.space, Values{1, 2, 0});
  const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
  config.encodeValueWithCoder(*coder, "c");
  summed.space->appendSubspace(CorvDof::create(false));
  const CorvConfig decoded(coder, "c");
  EXPECT_EQ(decoded.space(), summed.space);
  EXPECT_EQ(decoded.dofValues(), (Values{1, 2, 3, 0}));
}

TEST(CorvConfig, WithoutASpaceItIsEmpty)
{
  CorvConfig config;
  EXPECT_EQ(config.size(), 0u);
  EXPECT_FALSE(config.beginPtr());
  EXPECT_TRUE(config.setDofValues(Values()).failed());
  EXPECT_TRUE(config.pushSpace().failed());
  EXPECT_TRUE(config.isValid());
  EXPECT_EQ(config, CorvConfig());
  bool isColliding = false;
  EXPECT_TRUE(config.isColliding(isColliding).failed());
  config.clear();
  config.randomize();
  EXPECT_EQ(config.distanceTo(config), std::numeric_limits<double>::infinity());
}
