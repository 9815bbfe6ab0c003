#include "constraints/orvConstraintComposite.h"
#include "constraints/orvConstraintDofLock.h"
#include "constraints/orvConstraintLock.h"
#include "foundation/lumMat.h"
#include "support/logCapture.h"
#include "support/composites.h"
#include "support/sumConstraint.h"
#include "validation/orvValidatorSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

namespace
{
using Values = std::vector<double>;
using Constraints = std::vector<CorvConstraintShPtr>;
using Spaces = CorvConfigSpace::TSpaces;

/// A composite of translation dofs, with short access to them.
struct Dofs
{
  explicit Dofs(unsigned int i_count) : space(compositeOfSize(i_count)) {}
  CorvConfigSpaceShPtr operator[](unsigned int i_rank) const { return space->dof(i_rank); }
  SumConstraintShPtr sum(const std::string& i_name, const std::vector<SumConstraint::Variant>& i_variants,
                         bool i_isImplicit = false) const
  {
    return SumConstraint::create(space, i_name, i_variants, i_isImplicit);
  }
  lmStatus add(const CorvConstraintShPtr& i_constraint) const { return space->constraints()->add(i_constraint); }

  CorvCSCompositeShPtr space;
};

struct DofSets
{
  std::set<unsigned int> in, out;
  bool isImplicit = false;
};

bool meet(const std::set<unsigned int>& i_a, const std::set<unsigned int>& i_b)
{
  return std::any_of(i_a.begin(), i_a.end(), [&](unsigned int i_dof) { return i_b.count(i_dof) != 0; });
}

std::set<unsigned int> without(const std::set<unsigned int>& i_a, const std::set<unsigned int>& i_b)
{
  std::set<unsigned int> rest;
  std::set_difference(i_a.begin(), i_a.end(), i_b.begin(), i_b.end(), std::inserter(rest, rest.begin()));
  return rest;
}

/// True if the first must come before the second, by the definition on sets of dofs.
bool mustPrecede(const DofSets& i_first, const DofSets& i_second)
{
  const std::set<unsigned int> written = without(i_first.out, i_first.in);
  return meet(written, without(i_second.out, i_second.in)) || meet(written, without(i_second.in, i_second.out));
}

bool isOrdered(const std::vector<DofSets>& i_sets, const std::vector<unsigned int>& i_order)
{
  for (std::size_t late = 0; late < i_order.size(); ++late)
  {
    const DofSets& one = i_sets[i_order[late]];
    if (!one.isImplicit && meet(one.in, one.out))
      return false;
    for (std::size_t early = 0; early < late; ++early)
      if (mustPrecede(one, i_sets[i_order[early]]))
        return false;
  }
  return true;
}
} // namespace

TEST(CorvConstraint, DependencyOrderAgreesWithAllPermutations)
{
  std::mt19937 random(7);
  const Dofs dofs(6);
  unsigned int sortable = 0;
  for (unsigned int round = 0; round < 300; ++round)
  {
    std::vector<DofSets> sets(1 + random() % 5);
    Constraints constraints;
    for (DofSets& set : sets)
    {
      SumConstraint::Variant variant;
      set.isImplicit = random() % 3 == 0;
      for (unsigned int dof = 0; dof < 6; ++dof)
      {
        const unsigned int role = random() % 9;
        if (role == 0 || (role == 2 && set.isImplicit))
          set.in.insert(dof);
        if (role == 1 || (role == 2 && set.isImplicit))
          set.out.insert(dof);
      }
      for (const unsigned int dof : set.in)
        variant.inputs.push_back(dofs[dof]);
      for (const unsigned int dof : set.out)
        variant.outputs.push_back(dofs[dof]);
      constraints.push_back(dofs.sum("c", {variant}, set.isImplicit));
    }
    std::vector<unsigned int> order(sets.size());
    for (unsigned int rank = 0; rank < order.size(); ++rank)
      order[rank] = rank;
    bool canBeSorted = false;
    do
      canBeSorted = isOrdered(sets, order);
    while (!canBeSorted && std::next_permutation(order.begin(), order.end()));

    Constraints sorted;
    ASSERT_EQ(CorvConstraint::sortByDependency(constraints, {}, sorted).succeeded(), canBeSorted) << round;
    if (!canBeSorted)
      continue;
    ++sortable;
    for (unsigned int rank = 0; rank < order.size(); ++rank)
      order[rank] = static_cast<unsigned int>(std::find(constraints.begin(), constraints.end(), sorted[rank]) -
                                              constraints.begin());
    EXPECT_TRUE(isOrdered(sets, order)) << round;
  }
  EXPECT_GT(sortable, 50u);
  EXPECT_LT(sortable, 250u);
}

TEST(CorvConstraint, ChainIsAppliedInTheOrderOfItsDependencies)
{
  const Dofs dofs(4);
  ASSERT_TRUE(dofs.add(dofs.sum("last", {{{dofs[2]}, {dofs[3]}}})).succeeded());
  ASSERT_TRUE(dofs.add(dofs.sum("middle", {{{dofs[1], dofs[0]}, {dofs[2]}}})).succeeded());
  ASSERT_TRUE(dofs.add(dofs.sum("first", {{{dofs[0]}, {dofs[1]}}})).succeeded());
  const CorvConfig config(dofs.space, Values{1, 0, 0, 0});
  EXPECT_EQ(config.dofValues(), (Values{1, 1, 2, 2}));
  EXPECT_EQ(dofs.space->countPassiveDofs(), 3u);
  EXPECT_EQ(dofs.space->countFreeDofs(), 1u);
  Spaces controlling;
  dofs.space->getControllingSpaces(controlling);
  EXPECT_EQ(controlling, Spaces{dofs[0]});
  EXPECT_FALSE(dofs.space->isSubspaceTransitivelyLocked(dofs[3]));

  // Deactivated, a constraint computes nothing and blocks nothing.
  dofs.space->constraints()->validatorNamed("middle", false)->isActivated(false);
  EXPECT_TRUE(dofs.space->isDofFree(2));
  EXPECT_EQ(config.dofValues(), (Values{1, 1, 2, 2}));
  EXPECT_TRUE(dofs.add(dofs.sum("other", {{{}, {dofs[2]}}})).succeeded());
  EXPECT_EQ(config.dofValues(), (Values{1, 1, 0, 0}));
}

TEST(CorvConstraint, ClashingWritersAndCyclesAreRefused)
{
  const Dofs dofs(3);
  ASSERT_TRUE(dofs.add(dofs.sum("a", {{{dofs[0]}, {dofs[1]}}})).succeeded());
  const LogCapture log;
  const unsigned int version = dofs.space->version();
  const unsigned int count = dofs.space->constraints()->count();
  EXPECT_TRUE(dofs.add(dofs.sum("second writer", {{{}, {dofs[1]}}})).failed());
  EXPECT_TRUE(log.contains("CorvValidatorSet::add(): cannot add constraint because of a transitivity issue."));
  EXPECT_TRUE(dofs.add(dofs.sum("cycle", {{{dofs[1]}, {dofs[0]}}})).failed());
  EXPECT_TRUE(dofs.add(dofs.sum("self", {{{dofs[2]}, {dofs[2]}}})).failed());
  EXPECT_EQ(dofs.space->constraints()->count(), count);
  EXPECT_EQ(dofs.space->version(), version);
  EXPECT_TRUE(dofs.add(dofs.sum("implicit", {{{dofs[2]}, {dofs[2]}}}, true)).succeeded());
  EXPECT_TRUE(dofs.space->isDofComputed(2));
  EXPECT_FALSE(dofs.space->isDofPassive(2));
  EXPECT_FALSE(dofs.space->canAddActiveConstraint(CorvConstraintShPtr()));
  EXPECT_FALSE(dofs.space->canAddActiveConstraint(Dofs(1).sum("elsewhere", {{{}, {}}})));
}

TEST(CorvConstraint, VariantsMoveApartWhenAConstraintIsAdded)
{
  const Dofs dofs(3);
  const SumConstraintShPtr flexible = dofs.sum("flexible", {{{dofs[0]}, {dofs[1]}}, {{dofs[1]}, {dofs[0]}}});
  ASSERT_TRUE(dofs.add(flexible).succeeded());
  const CorvValidatorSetShPtr set = dofs.space->constraints();
  const SumConstraintShPtr writer = dofs.sum("writer", {{{dofs[2]}, {dofs[1]}}});
  const LogCapture log;
  EXPECT_TRUE(dofs.space->addConstraintByAdjustingVariants(CorvConstraintShPtr(), set).failed());
  EXPECT_TRUE(log.contains("Unable to add a null constraint."));

  flexible->isVariantLocked(true);
  EXPECT_TRUE(dofs.space->addConstraintByAdjustingVariants(writer, set).failed());
  EXPECT_TRUE(log.contains("No admissible variant combination could be found."));
  EXPECT_EQ(flexible->variant(), 0u);
  flexible->isVariantLocked(false);

  // The name is taken: the variants are put back.
  EXPECT_TRUE(
    dofs.space->addConstraintByAdjustingVariants(dofs.sum("flexible", {{{dofs[2]}, {dofs[1]}}}), set).failed());
  EXPECT_TRUE(log.contains("An admissible variant combination was found but constraint addition failed."));
  EXPECT_EQ(flexible->variant(), 0u);

  EXPECT_TRUE(dofs.space->addConstraintByAdjustingVariants(writer, set).succeeded());
  EXPECT_EQ(flexible->variant(), 1u);
  EXPECT_EQ(CorvConfig(dofs.space, Values{0, 0, 5}).dofValues(), (Values{5, 5, 5}));
}

TEST(CorvConstraint, PresentVariantsAreSuggestedFirst)
{
  const Dofs dofs(2);
  const SumConstraint::Variant nothing = {{}, {}};
  const SumConstraint::Variant writes = {{}, {dofs[0]}};
  const SumConstraintShPtr a = dofs.sum("a", {nothing, nothing, writes});
  const SumConstraintShPtr b = dofs.sum("b", {writes, nothing, writes});
  a->variant(1);
  b->variant(2);
  std::vector<unsigned int> variants;
  ASSERT_TRUE(CorvConstraint::suggestVariants({a, b}, variants).succeeded());
  EXPECT_EQ(variants, (std::vector<unsigned int>{1, 2}));
  a->variant(2);
  a->isVariantLocked(true);
  ASSERT_TRUE(CorvConstraint::suggestVariants({a, b}, variants).succeeded());
  EXPECT_EQ(variants, (std::vector<unsigned int>{2, 1}));
  b->isVariantLocked(true);
  EXPECT_TRUE(CorvConstraint::suggestVariants({a, b}, variants).failed());

  // A dof is made free for a lock.
  b->isVariantLocked(false);
  const Dofs other(2);
  const SumConstraintShPtr movable = other.sum("movable", {{{other[0]}, {other[1]}}, {{other[1]}, {other[0]}}});
  ASSERT_TRUE(other.add(movable).succeeded());
  EXPECT_TRUE(other.space->setConstraintVariantsForWriting(other.space->dof(1)).succeeded());
  EXPECT_EQ(movable->variant(), 1u);
  movable->isVariantLocked(true);
  const LogCapture log;
  EXPECT_TRUE(other.space->setConstraintVariantsForWriting(other.space->dof(0)).failed());
  EXPECT_EQ(movable->variant(), 1u);
}

TEST(CorvConstraint, DeactivatedPartialVariantForbidsItsBranch)
{
  const Dofs dofs(2);
  const SumConstraintShPtr branches = dofs.sum("branches", {{{dofs[0]}, {dofs[1]}, 2}, {{dofs[0]}, {dofs[1]}, 2}});
  ASSERT_TRUE(dofs.add(branches).succeeded());
  const LogCapture log;
  const CorvConfig config(dofs.space, Values{1, 0});
  EXPECT_FALSE(config.isValid()) << "two partial variants are on";
  EXPECT_TRUE(log.contains("Cannot apply a constraint with more than one active partial variant."));

  ASSERT_TRUE(branches->setActivatedPartialVariant(0, 1).succeeded());
  EXPECT_TRUE(config.isValid());
  EXPECT_EQ(config.dofValue(1), 11.0);
  // The other variant reaches this configuration by its second branch only.
  branches->isPartialVariantActivated(1, 1, false);
  EXPECT_FALSE(config.isValid());
  branches->setActivatedPartialVariant(1, 1);
  EXPECT_TRUE(config.isValid());
  branches->isPartialVariantActivated(1, 1, false);
  EXPECT_FALSE(config.isValid());
  EXPECT_FALSE(branches->arePartialVariantsWellDefined());

  branches->setPartialVariantState({{true, false}, {true, true}});
  branches->intersectPartialVariantState({{true, true}, {false, true}});
  EXPECT_EQ(branches->getPartialVariantState(), (CorvConstraint::TPartialVariantState{{true, false}, {false, true}}));
  unsigned int partial = 7;
  EXPECT_TRUE(branches->getActivatedPartialVariant(1, partial).succeeded());
  EXPECT_EQ(partial, 1u);
  EXPECT_TRUE(branches->setActivatedPartialVariant(0, 2).failed());
  EXPECT_TRUE(branches->setActivatedPartialVariant(2, 0).failed());
}

TEST(CorvConstraintDofLock, WritesOnlyWhereItMay)
{
  const CorvDofShPtr dof = CorvDof::create(false);
  EXPECT_FALSE(CorvConstraintDofLock::create(compositeOfSize(2), 1.0));
  const CorvConstraintDofLockShPtr loose = CorvConstraintDofLock::create(dof, 4.0);
  ASSERT_TRUE(loose);
  CorvConfig config(dof, Values{1});
  EXPECT_TRUE(loose->validate(config));
  EXPECT_EQ(config.dofValue(0), 4.0) << "an active dof is written";

  dof->lockAt(2.0);
  EXPECT_EQ(config.dofValue(0), 2.0);
  EXPECT_TRUE(loose->doApply(config, ClumParameterMapConstShPtr()).succeeded());
  EXPECT_EQ(config.dofValue(0), 2.0) << "a passive one is not";
  config.isSelfValidationEnabled(false);
  EXPECT_TRUE(loose->doApply(config, ClumParameterMapConstShPtr()).succeeded());
  EXPECT_EQ(config.dofValue(0), 4.0) << "but for a configuration that does not validate itself";

  const CorvConstraintDofLockShPtr lock = dof->lockConstraint();
  EXPECT_EQ(lock->name(), "orvane.core.constraint-dof-lock");
  EXPECT_EQ(lock->value(), 2.0);
  dof->lockedValue(3.0);
  EXPECT_EQ(lock->value(), 3.0);
  ClumMat matrix;
  EXPECT_TRUE(lock->getLipschitzMatrix(matrix, CorvDomainConstShPtr()).succeeded());
  EXPECT_EQ(matrix.height(), 0u);
  EXPECT_EQ(matrix.width(), 1u);

  // Without its one partial variant the lock makes everything invalid.
  CorvConfig fresh(dof);
  lock->isPartialVariantActivated(0, 0, false);
  const LogCapture log;
  EXPECT_FALSE(fresh.isValid());
}

TEST(CorvConstraintLock, PinsTheLockedDofsOfItsSpace)
{
  const Dofs dofs(3);
  const CorvConstraintLockShPtr lock = CorvConstraintLock::create(dofs.space);
  ASSERT_TRUE(lock);
  dofs.space->dof(0)->lockAt(7.0);
  dofs.space->dof(2)->lockAt(9.0);
  Spaces inputs;
  Spaces outputs;
  lock->getTransitivity(inputs, outputs);
  EXPECT_TRUE(inputs.empty());
  EXPECT_EQ(outputs, (Spaces{dofs[0], dofs[2]}));
  CorvConfig config(dofs.space, Values{1, 2, 3});
  config.isSelfValidationEnabled(false);
  EXPECT_TRUE(lock->doApply(config, ClumParameterMapConstShPtr()).succeeded());
  EXPECT_EQ(config.dofValues(), (Values{7, 2, 9}));
}

TEST(CorvConstraintComposite, RunsTheConstraintsBelowInEitherWayOfWalking)
{
  const Dofs inner(3);
  const Dofs outer(1);
  ASSERT_TRUE(outer.space->appendSubspace(inner.space).succeeded());
  inner.space->dof(2)->lockAt(5.0);
  EXPECT_TRUE(CorvConstraintComposite::canFlattenConstraints(*outer.space));
  const CorvValidatorShPtr composite = outer.space->constraints()->at(0);
  CorvConfig config(outer.space, Values{1, 2, 3, 0});
  config.isSelfValidationEnabled(false);
  EXPECT_TRUE(composite->validate(config));
  EXPECT_EQ(config.dofValues(), (Values{1, 2, 3, 5}));

  const SumConstraintShPtr sum = inner.sum("sum", {{{inner[0], inner[2]}, {inner[1]}}});
  ASSERT_TRUE(inner.add(sum).succeeded());
  EXPECT_FALSE(CorvConstraintComposite::canFlattenConstraints(*outer.space));
  config.setDofValues(Values{1, 2, 3, 5});
  EXPECT_TRUE(composite->validate(config));
  EXPECT_EQ(config.dofValue(2), 7.0);
  sum->fails = true;
  EXPECT_FALSE(composite->validate(config));
  EXPECT_EQ(config.space(), outer.space);
  sum->fails = false;
  // The space itself runs the members, the composite only stands for them.
  EXPECT_EQ(CorvConfig(outer.space, Values{1, 2, 3, 0}).dofValues(), (Values{1, 2, 7, 5}));
  Spaces inputs;
  Spaces outputs;
  composite->getTransitivity(inputs, outputs);
  EXPECT_EQ(inputs, Spaces{inner[0]});
  EXPECT_EQ(outputs.size(), 2u);

  const LogCapture log;
  CorvConfig any(outer.space);
  const CorvConstraint& judged = dynamic_cast<const CorvConstraint&>(*composite);
  EXPECT_TRUE(judged.doApply(any, ClumParameterMapConstShPtr()).failed());
  EXPECT_TRUE(log.contains("Assertion failed: false"));
}

TEST(CorvConfigSpace, ConstantDofsAreLockedAndTheirConstraintsGo)
{
  const Dofs dofs(5);
  ASSERT_TRUE(dofs.add(dofs.sum("decided", {{{dofs[0]}, {dofs[1]}}})).succeeded());
  ASSERT_TRUE(dofs.add(dofs.sum("then decided", {{{dofs[1], dofs[0]}, {dofs[2]}}})).succeeded());
  ASSERT_TRUE(dofs.add(dofs.sum("open", {{{dofs[1], dofs[3]}, {dofs[4]}}})).succeeded());
  dofs.space->dof(0)->lockAt(2.0);
  EXPECT_TRUE(dofs.space->isSubspaceTransitivelyLocked(dofs[2]));
  EXPECT_FALSE(dofs.space->isSubspaceTransitivelyLocked(dofs[4]));
  EXPECT_FALSE(dofs.space->isFullyLocked());
  const CorvConfig config(dofs.space, Values{0, 0, 0, 1, 0});
  EXPECT_EQ(config.dofValues(), (Values{2, 2, 4, 1, 3}));
  ASSERT_TRUE(dofs.space->lockConstantDofs().succeeded());
  EXPECT_TRUE(dofs.space->dof(1)->isLocked() && dofs.space->dof(2)->isLocked());
  EXPECT_EQ(dofs.space->dof(2)->lockedValue(), 4.0);
  EXPECT_FALSE(dofs.space->constraints()->validatorNamed("decided", false));
  EXPECT_TRUE(dofs.space->constraints()->validatorNamed("open", false));
  EXPECT_EQ(config.dofValues(), (Values{2, 2, 4, 1, 3}));
}

TEST(CorvConstraint, TreeOfConstraintsComputesWhatEvaluationInOrderDoes)
{
  for (unsigned int seed = 0; seed < 60; ++seed)
  {
    std::mt19937 random(seed);
    const CorvCSCompositeShPtr left = compositeOfSize(3), right = compositeOfSize(3), deep = compositeOfSize(2);
    const CorvCSCompositeShPtr root = compositeOfSize(2);
    ASSERT_TRUE(right->insertSubspace(deep, random() % 4).succeeded());
    ASSERT_TRUE(root->insertSubspace(left, random() % 3).succeeded());
    ASSERT_TRUE(root->insertSubspace(right, random() % 4).succeeded());

    // Later dofs of a random order are sums of one or two earlier ones, or locked, or free.
    std::vector<CorvDofShPtr> order;
    root->getDofs(order);
    std::shuffle(order.begin(), order.end(), random);
    struct Sum
    {
      unsigned int target;
      std::vector<unsigned int> sources;
    };
    std::vector<Sum> sums;
    for (unsigned int place = 2; place < order.size(); ++place)
      if (random() % 3 != 0)
        sums.push_back({place, {static_cast<unsigned int>(random() % place)}});
    for (Sum& sum : sums)
      if (random() % 2 == 0)
        sum.sources.push_back((sum.sources[0] + 1) % sum.target);
    std::vector<double> locks(order.size(), 0.0);
    if (random() % 2 == 0)
    {
      locks[0] = 17.0;
      order[0]->lockAt(locks[0]);
    }

    std::vector<Sum> added = sums;
    std::shuffle(added.begin(), added.end(), random);
    for (const Sum& sum : added)
    {
      SumConstraint::Variant variant{{}, {order[sum.target]}};
      for (const unsigned int source : sum.sources)
        variant.inputs.push_back(order[source]);
      // On the smallest space that holds all, or on one around it.
      CorvConfigSpaceShPtr place = root;
      for (const CorvConfigSpaceShPtr& inner : Spaces{left, right, deep})
        if (random() % 2 == 0 && inner->includes(order[sum.target]) &&
            std::all_of(variant.inputs.begin(), variant.inputs.end(),
                        [&](const CorvConfigSpaceShPtr& i_dof) { return inner->includes(i_dof); }))
          place = inner;
      const std::string name = "sum" + std::to_string(sum.target);
      ASSERT_TRUE(place->constraints()->add(SumConstraint::create(place, name, {variant})).succeeded());
    }

    Values values(root->size());
    for (double& value : values)
      value = static_cast<double>(random() % 50);
    CorvConfig config(root, values);
    const auto rankOf = [&](unsigned int i_place)
    {
      unsigned int rank = 0;
      root->getFirstDofRankOfSubspace(order[i_place], rank);
      return rank;
    };
    if (order[0]->isLocked())
      values[rankOf(0)] = locks[0];
    for (const Sum& sum : sums)
    {
      values[rankOf(sum.target)] = 0.0;
      for (const unsigned int source : sum.sources)
        values[rankOf(sum.target)] += values[rankOf(source)];
    }
    EXPECT_EQ(config.dofValues(), values) << "seed " << seed;
    EXPECT_EQ(root->countPassiveDofs(), sums.size() + (order[0]->isLocked() ? 1 : 0));

    // The dofs that are free decide all others.
    Spaces controlling;
    root->getControllingSpaces(controlling);
    unsigned int count = 0;
    for (const CorvConfigSpaceShPtr& space : controlling)
      count += space->size();
    EXPECT_EQ(count, root->countFreeDofs()) << "seed " << seed;
  }
}
