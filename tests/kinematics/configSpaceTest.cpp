#include "foundation/lumParameterMap.h"
#include "kinematics/orvCSGroup.h"
#include "kinematics/orvCSVoid.h"
#include "kinematics/orvConfig.h"
#include "metrics/orvMetric.h"
#include "support/logCapture.h"
#include "support/composites.h"
#include "validation/orvValidationReport.h"
#include "validation/orvValidatorDofBounds.h"
#include "validation/orvValidatorSet.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <set>

LUM_HANDLES(RecordingValidator)

/// Accepts what its function accepts, and notes when and where it was asked.
class RecordingValidator : public CorvConfigValidator
{
  LUM_UNREFLECTED(RecordingValidator, CorvConfigValidator);

public:
  struct Call
  {
    std::string name;
    std::vector<double> values;
    const CorvConfigSpace* validationSpace;
  };

  static RecordingValidatorShPtr create(const CorvConfigSpaceShPtr& i_space, const std::string& i_name,
                                        std::vector<Call>* io_calls, bool i_answer)
  {
    return lumCreate<RecordingValidator>(i_space, i_name, io_calls, i_answer);
  }
  CorvValidatorShPtr clone() const override { return lumCreateCopy<RecordingValidator>(self()); }
  bool doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                        const CorvValidationReportConstShPtr&, CorvValidationReportShPtr&) const override
  {
    m_calls->push_back({name(), i_cfg.dofValues(), unwrappedValidationSpace(i_params)});
    return m_answer;
  }

protected:
  RecordingValidator(const CorvConfigSpaceShPtr& i_space, const std::string& i_name, std::vector<Call>* io_calls,
                     bool i_answer)
    : CorvConfigValidator(i_space, i_name), m_calls(io_calls), m_answer(i_answer)
  {
  }
  RecordingValidator(const RecordingValidator&) = default;
  lmStatus init(const RecordingValidatorWkPtr& i_weakPtr) { return CorvConfigValidator::init(i_weakPtr); }

private:
  std::vector<Call>* m_calls;
  bool m_answer;
};

namespace
{
using Spaces = CorvConfigSpace::TSpaces;

/// A random tree, with every space of it, the root first, and groups of its spaces.
class RandomTree
{
public:
  explicit RandomTree(unsigned int i_seed) : m_random(i_seed)
  {
    root = grow(3);
    for (int count = 0; count < 3; ++count)
      addGroup();
  }

  unsigned int below(unsigned int i_count) { return static_cast<unsigned int>(m_random() % i_count); }
  Spaces someSpaces()
  {
    Spaces some;
    for (unsigned int count = below(5); count > 0; --count)
      some.push_back(spaces[below(static_cast<unsigned int>(spaces.size()))]);
    return some;
  }

  CorvConfigSpaceShPtr root;
  Spaces spaces;

private:
  /// Of some spaces that have no dof in common.
  void addGroup()
  {
    const CorvCSGroupShPtr group = CorvCSGroup::create("test.group");
    for (const CorvConfigSpaceShPtr& space : someSpaces())
    {
      if (!space->intersects(Spaces(1, group)))
        group->appendSubspace(space);
    }
    spaces.push_back(group);
  }
  CorvConfigSpaceShPtr grow(unsigned int i_depth)
  {
    const bool isLeaf = i_depth == 0 || (i_depth < 3 && below(3) == 0);
    const CorvConfigSpaceShPtr space =
      isLeaf ? CorvConfigSpaceShPtr(CorvDof::create(false)) : CorvCSComposite::create("test.tree");
    spaces.push_back(space);
    for (unsigned int count = isLeaf ? 0 : below(4); count > 0; --count)
      EXPECT_TRUE(space->appendSubspace(grow(i_depth - 1)).succeeded());
    return space;
  }

  std::mt19937 m_random;
};

std::set<CorvDofShPtr> leavesOf(const Spaces& i_spaces)
{
  std::set<CorvDofShPtr> leaves;
  for (const CorvConfigSpaceShPtr& space : i_spaces)
  {
    std::vector<CorvDofShPtr> dofs;
    space->getDofs(dofs);
    leaves.insert(dofs.begin(), dofs.end());
  }
  return leaves;
}

std::set<CorvDofShPtr> combined(const std::set<CorvDofShPtr>& i_a, const std::set<CorvDofShPtr>& i_b,
                                const std::function<bool(bool, bool)>& i_isIn)
{
  std::set<CorvDofShPtr> all = i_a;
  all.insert(i_b.begin(), i_b.end());
  std::set<CorvDofShPtr> result;
  for (const CorvDofShPtr& dof : all)
    if (i_isIn(i_a.count(dof) != 0, i_b.count(dof) != 0))
      result.insert(dof);
  return result;
}

unsigned int countLeaves(const Spaces& i_spaces)
{
  unsigned int count = 0;
  for (const CorvConfigSpaceShPtr& space : i_spaces)
    count += space->size();
  return count;
}
} // namespace

TEST(CorvConfigSpace, VersionCountsInvalidationsUpToTheRoot)
{
  const CorvCSCompositeShPtr inner = compositeOfSize(1);
  const CorvCSCompositeShPtr root = compositeOfSize(1);
  ASSERT_TRUE(root->appendSubspace(inner).succeeded());
  const CorvCSGroupShPtr group = CorvCSGroup::create("test.group");
  const CorvDofShPtr leaf = inner->dof(0);
  ASSERT_TRUE(group->appendSubspace(leaf).succeeded());
  EXPECT_EQ(leaf->parent(), inner);

  const unsigned int version = root->version();
  const unsigned int groupVersion = group->version();
  EXPECT_EQ(root->version(), version);
  std::vector<CorvDofWkPtr> dofs;
  EXPECT_TRUE(root->getDofsAtVersion(version, dofs).succeeded());
  EXPECT_EQ(dofs.size(), 2u);
  EXPECT_TRUE(root->getDofsAtVersion(version + 1, dofs).failed());

  leaf->invalidateCache();
  leaf->invalidateCache();
  EXPECT_TRUE(root->getDofsAtVersion(version + 1, dofs).failed());
  EXPECT_EQ(root->version(), version + 2);
  EXPECT_EQ(group->version(), groupVersion + 2);
  EXPECT_TRUE(root->hasSameDofsAtVersions(version, version + 2));

  ASSERT_TRUE(inner->appendSubspace(CorvDof::create(false)).succeeded());
  EXPECT_EQ(root->size(), 3u);
  EXPECT_EQ(root->version(), version + 3);
  EXPECT_FALSE(root->hasSameDofsAtVersions(version, version + 3));
  EXPECT_TRUE(root->getDofsAtVersion(version, dofs).succeeded());
  EXPECT_EQ(dofs.size(), 2u);
  EXPECT_EQ(leaf->root(), root);

  ASSERT_TRUE(group->removeSubspace(leaf).succeeded());
  const unsigned int later = group->version();
  leaf->invalidateCache();
  EXPECT_EQ(group->version(), later);
}

TEST(CorvConfigSpace, RefusedEditLeavesTheTreeAsItWas)
{
  const CorvCSCompositeShPtr inner = compositeOfSize(2);
  const CorvCSCompositeShPtr root = compositeOfSize(1);
  ASSERT_TRUE(root->appendSubspace(inner).succeeded());
  const CorvDofShPtr stranger = CorvDof::create(false);
  const CorvCSCompositeShPtr other = compositeOfSize(0);
  const unsigned int version = root->version();
  EXPECT_TRUE(root->insertSubspace(stranger, 3).failed());
  EXPECT_TRUE(root->appendSubspace(CorvConfigSpaceShPtr()).failed());
  EXPECT_TRUE(root->appendSubspace(root).failed());
  EXPECT_TRUE(inner->appendSubspace(root).failed());
  EXPECT_TRUE(other->appendSubspace(inner).failed());
  EXPECT_TRUE(root->removeSubspace(2u).failed());
  EXPECT_TRUE(root->removeSubspace(stranger).failed());
  EXPECT_TRUE(stranger->appendSubspace(CorvDof::create(false)).failed());
  EXPECT_EQ(root->version(), version);
  EXPECT_EQ(inner->parent(), root);
  EXPECT_FALSE(stranger->parent());
  EXPECT_EQ(other->countSubspaces(), 0u);
  const CorvCSGroupShPtr group = CorvCSGroup::create("test.group");
  EXPECT_TRUE(group->appendSubspace(inner).succeeded());
  EXPECT_TRUE(group->appendSubspace(group).failed());
  EXPECT_EQ(inner->parent(), root);
  EXPECT_FALSE(CorvCSComposite::create(""));
  EXPECT_TRUE(root->clear().succeeded());
  EXPECT_EQ(root->size(), 0u);
  EXPECT_FALSE(inner->parent());
}

TEST(CorvConfigSpace, RanksAndPositionsFollowTheDepthFirstOrder)
{
  for (unsigned int seed = 0; seed < 20; ++seed)
  {
    RandomTree tree(seed);
    const std::function<void(const CorvConfigSpaceShPtr&, std::vector<unsigned int>, unsigned int&)> walk =
      [&](const CorvConfigSpaceShPtr& i_space, std::vector<unsigned int> i_position, unsigned int& io_rank)
    {
      unsigned int rank = 0;
      ASSERT_TRUE(tree.root->getFirstDofRankOfSubspace(i_space, rank).succeeded());
      EXPECT_EQ(rank, io_rank);
      std::vector<unsigned int> position;
      EXPECT_TRUE(tree.root->getPositionOfSubspace(i_space, position).succeeded());
      EXPECT_EQ(position, i_position);
      EXPECT_EQ(tree.root->getSubspaceAtPosition(position), i_space);
      if (boost::dynamic_pointer_cast<CorvDof>(i_space))
      {
        EXPECT_EQ(tree.root->dof(io_rank), i_space);
        ++io_rank;
      }
      for (unsigned int child = 0; child < i_space->countSubspaces(); ++child)
      {
        i_position.push_back(child);
        walk(i_space->subspace(child), i_position, io_rank);
        i_position.pop_back();
      }
    };
    unsigned int count = 0;
    walk(tree.root, {}, count);
    EXPECT_EQ(tree.root->size(), count);
  }
  unsigned int rank = 0;
  EXPECT_TRUE(compositeOfSize(1)->getFirstDofRankOfSubspace(CorvDof::create(false), rank).failed());
  const LogCapture log;
  EXPECT_FALSE(compositeOfSize(1)->dof(1));
  EXPECT_EQ(log.count(), 1u);
}

TEST(CorvConfigSpace, AlgebraAgreesWithSetsOfDofs)
{
  const auto both = [](bool i_a, bool i_b) { return i_a && i_b; };
  const auto either = [](bool i_a, bool i_b) { return i_a || i_b; };
  const auto onlyFirst = [](bool i_a, bool i_b) { return i_a && !i_b; };
  for (unsigned int seed = 0; seed < 400; ++seed)
  {
    RandomTree tree(seed);
    const Spaces a = tree.someSpaces();
    const Spaces b = tree.someSpaces();
    const std::set<CorvDofShPtr> leavesA = leavesOf(a);
    const std::set<CorvDofShPtr> leavesB = leavesOf(b);

    Spaces merged;
    CorvConfigSpace::merge(merged, a);
    EXPECT_EQ(leavesOf(merged), leavesA);
    CorvConfigSpace::merge(merged, b);
    EXPECT_EQ(leavesOf(merged), combined(leavesA, leavesB, either));
    EXPECT_EQ(countLeaves(merged), leavesOf(merged).size()) << "a dof stands in it twice, seed " << seed;

    Spaces common(1, tree.root);
    CorvConfigSpace::intersect(a, b, common);
    EXPECT_EQ(leavesOf(common), combined(leavesA, leavesB, both));
    EXPECT_EQ(CorvConfigSpace::intersect(a, b), !leavesOf(common).empty());

    Spaces rest = a;
    CorvConfigSpace::subtract(rest, b);
    EXPECT_EQ(leavesOf(rest), combined(leavesA, leavesB, onlyFirst));
    Spaces again = a;
    Spaces taken;
    CorvConfigSpace::subtractAndCumulate(again, b, taken);
    EXPECT_EQ(leavesOf(again), leavesOf(rest));
    EXPECT_EQ(leavesOf(taken), leavesOf(common));

    for (const CorvConfigSpaceShPtr& space : tree.spaces)
    {
      const std::set<CorvDofShPtr> leaves = leavesOf(Spaces(1, space));
      EXPECT_EQ(space->isFullyIncludedIn(a), combined(leaves, leavesA, onlyFirst).empty());
      EXPECT_EQ(space->intersects(a), !combined(leaves, leavesA, both).empty());
    }
  }
}

TEST(CorvConfigSpace, StackGivesItsTopAndNeverEmpties)
{
  const CorvCSCompositeShPtr space = compositeOfSize(1);
  const CorvValidatorSetShPtr bottom = space->configValidators();
  std::vector<RecordingValidator::Call> calls;
  EXPECT_TRUE(space->popConfigValidators().failed());
  ASSERT_TRUE(space->pushConfigValidators().succeeded());
  const CorvValidatorSetShPtr top = space->configValidators();
  EXPECT_NE(top, bottom);
  EXPECT_EQ(top->count(), bottom->count());
  EXPECT_EQ(top->at(0), bottom->at(0));
  const unsigned int version = space->version();
  ASSERT_TRUE(top->add(RecordingValidator::create(space, "refuse", &calls, false)).succeeded());
  EXPECT_NE(space->version(), version);
  CorvConfig config(space);
  EXPECT_FALSE(config.validate(ClumParameterMapConstShPtr()));
  ASSERT_TRUE(space->popConfigValidators().succeeded());
  EXPECT_EQ(space->configValidators(), bottom);
  EXPECT_TRUE(config.validate(ClumParameterMapConstShPtr()));
  EXPECT_TRUE(space->pushConstraints(CorvValidatorSetShPtr()).failed());
}

TEST(CorvConfigSpace, ValidatorsOfTheTreeAreAskedInOrderOnTheirOwnSpace)
{
  const CorvDofShPtr x = CorvDof::create(false);
  const CorvDofShPtr y = CorvDof::create(false);
  const CorvCSCompositeShPtr inner = compositeOf({y});
  const CorvCSCompositeShPtr space = compositeOf({x});
  ASSERT_TRUE(space->appendSubspace(inner).succeeded());
  x->boundWithin(0, 1);
  y->boundWithin(-1, 0);
  std::vector<RecordingValidator::Call> calls;
  const RecordingValidatorShPtr first = RecordingValidator::create(space, "first", &calls, true);
  const RecordingValidatorShPtr deep = RecordingValidator::create(inner, "deep", &calls, true);
  ASSERT_TRUE(inner->configValidators()->add(deep).succeeded());
  ASSERT_TRUE(space->configValidators()->addBefore(first, space->configValidators()->at(0)).succeeded());

  CorvConfig config(space, std::vector<double>{0.5, -0.5});
  EXPECT_TRUE(config.validate(ClumParameterMapConstShPtr()));
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].name, "first");
  EXPECT_EQ(calls[0].values, (std::vector<double>{0.5, -0.5}));
  EXPECT_EQ(calls[1].name, "deep");
  EXPECT_EQ(calls[1].values, (std::vector<double>{-0.5}));
  for (const RecordingValidator::Call& call : calls)
    EXPECT_EQ(call.validationSpace, space.get());
  EXPECT_EQ(config.countReports(true), 0u);

  // The first refusal ends it, and says where.
  config.dofValue(1, 0.5);
  calls.clear();
  EXPECT_FALSE(config.validate(ClumParameterMapConstShPtr()));
  EXPECT_EQ(calls.size(), 1u);
  EXPECT_EQ(config.countReports(true), 1u);
  config.pushRestriction(y);
  EXPECT_FALSE(config.isValidFor(y->boundsValidator()->name()));
  config.popRestriction();
  EXPECT_TRUE(config.restrict(x).validate(ClumParameterMapConstShPtr()));

  // A refusal that no longer holds goes away, with or without the report of the old one.
  y->bounds(-1, 0.75);
  EXPECT_TRUE(config.validate(ClumParameterMapConstShPtr()));
  config.setReport("other", CorvValidationReport::create());
  EXPECT_TRUE(config.validate(ClumParameterMapConstShPtr()));
  config.dofValue(0, 2.0);
  EXPECT_FALSE(config.validate(ClumParameterMapConstShPtr()));
  x->boundsValidator()->isActivated(false);
  EXPECT_TRUE(config.validate(ClumParameterMapConstShPtr()));
}

TEST(CorvConfigSpace, CloneIsATreeOfItsOwn)
{
  const CorvDofShPtr x = CorvDof::create(true);
  const CorvDofShPtr y = CorvDof::create(false);
  const CorvCSCompositeShPtr space = compositeOf({x, y});
  y->boundWithin(-1, 2);
  x->lockAt(0.25);
  const unsigned int version = space->version();
  x->weightMultiplier(3.0);
  const CorvCSCompositeShPtr copy = CorvCSComposite::createCopy(space);
  ASSERT_TRUE(copy);
  EXPECT_EQ(copy->version(), space->version());
  EXPECT_TRUE(copy->equalByCoding(*space));
  ASSERT_EQ(copy->size(), 2u);
  EXPECT_NE(copy->dof(0), x);
  EXPECT_TRUE(*copy == *space);
  EXPECT_TRUE(*copy->dof(0) == *x && *copy->dof(1) == *y);
  EXPECT_EQ(copy->dof(0)->parent(), copy);
  EXPECT_EQ(copy->dof(0)->weight(), x->weight());
  std::vector<CorvDofWkPtr> dofs;
  ASSERT_TRUE(copy->getDofsAtVersion(version, dofs).succeeded());
  EXPECT_EQ(dofs[1].lock(), copy->dof(1));

  // Its bounds and locks are its own.
  copy->dof(1)->bounds(-1, 1);
  copy->dof(0)->isLocked(false);
  EXPECT_EQ(copy->dof(1)->configValidators()->count(), 1u);
  EXPECT_EQ(copy->dof(0)->constraints()->count(), 0u);
  EXPECT_TRUE(CorvConfig(space, std::vector<double>{0, 1.5}).validate(ClumParameterMapConstShPtr()));
  EXPECT_FALSE(CorvConfig(copy, std::vector<double>{0, 1.5}).validate(ClumParameterMapConstShPtr()));
  EXPECT_TRUE(space->isDofPassive(0));
  EXPECT_FALSE(copy->isDofPassive(0));

  const CorvDofShPtr alone = CorvDof::createCopy(y);
  EXPECT_FALSE(alone->parent());
  EXPECT_FALSE(CorvDof::createCopy(CorvDofConstShPtr()));
}

TEST(CorvCSVoid, HasNothingAndTakesNothing)
{
  const CorvCSVoidShPtr space = CorvCSVoid::create();
  std::vector<RecordingValidator::Call> calls;
  EXPECT_EQ(space->type(), "orvane.core.config-space.void");
  EXPECT_EQ(space->size(), 0u);
  EXPECT_TRUE(*space == *CorvCSVoid::nullSpace());
  EXPECT_FALSE(*space == *compositeOfSize(0));
  const LogCapture log;
  EXPECT_TRUE(space->configValidators()->add(RecordingValidator::create(space, "any", &calls, true)).failed());
  EXPECT_EQ(CorvConfig(space).distanceTo(CorvConfig(space)), 0.0);
}

TEST(CorvDof, BoundsAreKeptByAValidator)
{
  const CorvDofShPtr dof = CorvDof::create(false);
  EXPECT_TRUE(dof->bounds(2, 1).failed());
  EXPECT_TRUE(dof->boundWithin(std::nan(""), 1).failed());
  EXPECT_EQ(dof->upperBound(), 0.0);
  EXPECT_FALSE(dof->isBounded());
  EXPECT_EQ(dof->configValidators()->count(), 0u);
  EXPECT_FALSE(dof->hasFiniteSize());
  ASSERT_TRUE(dof->boundWithin(-1, 1).succeeded());
  EXPECT_TRUE(dof->hasFiniteSize());
  EXPECT_EQ(dof->configValidators()->count(), 1u);
  EXPECT_EQ(dof->boundsValidator()->maxValue(), 1.0);
  const unsigned int version = dof->version();
  EXPECT_TRUE(dof->bounds(-1, 1).succeeded());
  EXPECT_EQ(dof->version(), version);
  dof->isBounded(false);
  EXPECT_EQ(dof->configValidators()->count(), 0u);
  EXPECT_TRUE(CorvDof::create(true)->hasFiniteSize());

  double value = 0.0;
  EXPECT_TRUE(dof->getConstantValue(value).failed());
  dof->boundWithin(3, 3);
  EXPECT_TRUE(dof->isConstant() && dof->getConstantValue(value).succeeded());
  EXPECT_EQ(value, 3.0);
  dof->lockAt(4);
  EXPECT_TRUE(dof->getConstantValue(value).succeeded());
  EXPECT_EQ(value, 4.0);
}

TEST(CorvDof, MetricFollowsTheFlagsAndKeepsTheWeights)
{
  const double pi = 3.14159265358979323846;
  const CorvDofShPtr dof = CorvDof::create(true);
  EXPECT_NEAR(dof->distance(0.1, 2 * pi), 0.05, 1e-14);
  EXPECT_EQ(dof->weight(), 0.5);
  dof->weightMultiplier(4.0);
  dof->userWeightScaler(3.0);
  EXPECT_EQ(dof->weight(), 6.0);
  dof->boundWithin(-10, 10);
  EXPECT_DOUBLE_EQ(dof->distance(0.0, 2 * pi), 12 * pi);
  dof->isRevolute(false);
  EXPECT_EQ(dof->weight(), 12.0);
  EXPECT_EQ(dof->weightMultiplier(), 4.0);
  dof->weightMultiplier(1.0);
  dof->userWeightScaler(0.0);
  EXPECT_EQ(dof->distance(0.0, 1.0), 0.0);

  // A metric of the client's own stays.
  const CorvDofShPtr custom = CorvDof::create(true);
  custom->metric(CorvCSComposite::create("test")->metric());
  const CorvMetricShPtr metric = custom->metric();
  custom->isRevolute(false);
  EXPECT_EQ(custom->metric(), metric);
}

TEST(CorvDof, EquivalenceIsAbsoluteOrRelative)
{
  const CorvDofShPtr dof = CorvDof::create(false);
  EXPECT_TRUE(dof->equivalentValues(0, 0));
  EXPECT_TRUE(dof->equivalentValues(1000, 1000.0005));
  EXPECT_FALSE(dof->equivalentValues(0, 1e-5));
  EXPECT_TRUE(dof->equivalentValues(0, 1e-7));
  EXPECT_FALSE(dof->equivalentValues(1, 1.00001));

  const CorvDofShPtr other = CorvDof::create(false);
  other->lockAt(5.0);
  other->isLocked(false);
  EXPECT_TRUE(*dof == *other);
  other->tolerance(1e-3);
  EXPECT_FALSE(*dof == *other);
}
