#include "constraints/orvConstraintDofLock.h"
#include "constraints/orvConstraintLock.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "support/composites.h"
#include "support/logCapture.h"
#include "validation/orvValidatorCfgDof.h"
#include "validation/orvValidatorSet.h"

#include <gtest/gtest.h>

#include <random>

LUM_HANDLES(ScaledSum)

/// A constraint that can be coded: its one output is a factor times the sum of its inputs, by each variant at other
/// dofs.
class ScaledSum : public CorvConstraint
{
  LUM_CONCRETE(ScaledSum, CorvConstraint);

public:
  using Spaces = std::vector<CorvConfigSpaceShPtr>;

  /// @param i_variants inputs and, last, the output of each variant.
  static ScaledSumShPtr create(const CorvConfigSpaceShPtr& i_space, const std::string& i_name, double i_factor,
                               const std::vector<Spaces>& i_variants)
  {
    return lumCreate<ScaledSum>(i_space, i_name, i_factor, i_variants);
  }
  CorvValidatorShPtr clone() const override { return lumCreateCopy<ScaledSum>(self()); }

  using CorvConstraint::doApply;
  using CorvConstraint::getTransitivity;
  lmStatus doApply(unsigned int i_variant, unsigned int, CorvConfig& io_config,
                   const ClumParameterMapConstShPtr&) const override
  {
    double sum = 0.0;
    const std::vector<CorvConfigSpaceWkPtr>& dofs = m_variants[i_variant];
    for (std::size_t i = 0; i + 1 < dofs.size(); ++i)
      sum += io_config.dofValue(rankOf(dofs[i].lock()));
    io_config.dofValue(rankOf(dofs.back().lock()), m_factor * sum);
    return lmStatus();
  }
  void getTransitivity(unsigned int i_variant, Spaces& o_inputs, Spaces& o_outputs) const override
  {
    o_inputs.clear();
    for (const CorvConfigSpaceWkPtr& dof : m_variants[i_variant])
      o_inputs.push_back(dof.lock());
    o_outputs.assign(1, o_inputs.back());
    o_inputs.pop_back();
  }
  unsigned int countVariants() const override { return static_cast<unsigned int>(m_variants.size()); }
  unsigned int countPartialVariants(unsigned int) const override { return 2; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override
  {
    CorvConstraint::encodeWithCoder(i_coder);
    i_coder->encodeDouble(m_factor, "factor");
    i_coder->beginVectorEncoding("variants");
    for (const std::vector<CorvConfigSpaceWkPtr>& dofs : m_variants)
      i_coder->encodeWeakObjectWkPtrVector(std::vector<ClumCodableConstWkPtr>(dofs.begin(), dofs.end()), "dofs");
    i_coder->endVectorEncoding();
  }
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override
  {
    const lmStatus status = CorvConstraint::initWithCoder(i_coder, i_self);
    m_factor = i_coder->decodeDouble("factor");
    i_coder->beginVectorDecoding("variants");
    while (i_coder->canContinueVectorDecoding())
    {
      std::vector<ClumCodableShPtr> objects;
      i_coder->decodeWeakObjectShPtrVector("dofs", objects);
      m_variants.emplace_back();
      for (const ClumCodableShPtr& object : objects)
        m_variants.back().push_back(boost::dynamic_pointer_cast<CorvConfigSpace>(object));
    }
    i_coder->endVectorDecoding();
    return status;
  }

protected:
  ScaledSum() = default;
  ScaledSum(const CorvConfigSpaceShPtr& i_space, const std::string& i_name, double i_factor,
            const std::vector<Spaces>& i_variants)
    : CorvConstraint(i_space, i_name), m_factor(i_factor)
  {
    for (const Spaces& dofs : i_variants)
      m_variants.emplace_back(dofs.begin(), dofs.end());
  }
  ScaledSum(const ScaledSum&) = default;
  lmStatus init(const ScaledSumWkPtr& i_weakPtr)
  {
    const lmStatus status = CorvConstraint::init(i_weakPtr);
    for (unsigned int variant = 0; status.succeeded() && variant < countVariants(); ++variant)
      if (countActivatedPartialVariants(variant) != 1)
        setActivatedPartialVariant(variant, 0);
    return status;
  }

private:
  unsigned int rankOf(const CorvConfigSpaceShPtr& i_dof) const
  {
    unsigned int rank = ~0u;
    configSpace()->getFirstDofRankOfSubspace(i_dof, rank);
    return rank;
  }

  double m_factor = 1.0;
  std::vector<std::vector<CorvConfigSpaceWkPtr>> m_variants;
};

LUM_DESCRIBE(ScaledSum)
{
}

namespace
{
using Values = std::vector<double>;

/// x, (y, z), w.
struct NestedSpace
{
  NestedSpace()
  {
    space->appendSubspace(inner);
    space->appendSubspace(CorvDof::create(false));
  }
  CorvDofShPtr dof(unsigned int i_rank) const { return space->dof(i_rank); }
  ScaledSumShPtr addSum(const std::string& i_name, double i_factor, const std::vector<ScaledSum::Spaces>& i_variants)
  {
    const ScaledSumShPtr sum = ScaledSum::create(space, i_name, i_factor, i_variants);
    EXPECT_TRUE(space->constraints()->add(sum).succeeded());
    return sum;
  }

  CorvCSCompositeShPtr inner = compositeOfSize(2);
  CorvCSCompositeShPtr space = compositeOfSize(1);
};
} // namespace

TEST(CorvConfigSpaceMerge, ConstraintsAndValidatorsComputeAndJudgeInTheTargetAsInTheSource)
{
  NestedSpace source, target;
  source.addSum("sum", 2.0, {{source.dof(0), source.dof(1), source.dof(3)}});
  const ScaledSumShPtr deep = ScaledSum::create(source.inner, "deep", -1.0, {{source.dof(1), source.dof(2)}});
  ASSERT_TRUE(source.inner->constraints()->add(deep).succeeded());
  ASSERT_TRUE(source.inner->configValidators()->add(CorvValidatorCfgBounds::create(source.inner)).succeeded());
  source.dof(2)->boundWithin(-3.0, 3.0);
  target.dof(2)->boundWithin(-2.0, 9.0);
  target.dof(1)->boundWithin(-5.0, 5.0);
  const CorvConfigSpaceShPtr before = target.space->clone();

  ASSERT_TRUE(target.space->mergeClonedValidatorsAndConstraintsFrom(source.space).succeeded());
  const CorvValidatorShPtr copied = target.inner->constraints()->validatorNamed("deep", false);
  ASSERT_TRUE(copied);
  EXPECT_NE(copied, deep);
  EXPECT_EQ(copied->configSpace(), target.inner);
  EXPECT_TRUE(target.inner->configValidators()->validatorNamed("orvane.core.cfg-bounds", false));
  std::mt19937 random(11);
  unsigned int accepted = 0;
  for (int round = 0; round < 500; ++round)
  {
    Values values(4);
    for (double& value : values)
      value = static_cast<double>(random() % 17) - 8.0;
    const CorvConfig expected(source.space, values), merged(target.space, values);
    ASSERT_EQ(merged.dofValues(), expected.dofValues());
    const bool isValid = expected.validate(ClumParameterMapConstShPtr()) &&
                         CorvConfig(before, expected.dofValues()).validate(ClumParameterMapConstShPtr());
    EXPECT_EQ(merged.validate(ClumParameterMapConstShPtr()), isValid);
    accepted += isValid;
  }
  EXPECT_GT(accepted, 50u);
  EXPECT_LT(accepted, 450u);

  // A second time there is nothing new, and nothing of the source is needed any more.
  ASSERT_TRUE(target.space->mergeClonedValidatorsAndConstraintsFrom(source.space).succeeded());
  EXPECT_EQ(target.inner->constraints()->count(), 2u);
  source = NestedSpace();
  EXPECT_EQ(CorvConfig(target.space, Values{1, 2, 0, 0}).dofValues(), (Values{1, 2, -2, 6}));
  EXPECT_TRUE(target.space->mergeClonedValidatorsAndConstraintsFrom(CorvConfigSpaceConstShPtr()).failed());
}

TEST(CorvConfigSpaceMerge, BoundsIntersectAndASinglePointLocks)
{
  std::mt19937 random(12);
  unsigned int merged = 0, locked = 0;
  for (int round = 0; round < 400; ++round)
  {
    const NestedSpace source;
    const CorvCSCompositeShPtr target = compositeOfSize(4); // the tree of the target may be another one
    double low[2][4], high[2][4];
    bool fits = true;
    for (unsigned int rank = 0; rank < 4; ++rank)
      for (int side = 0; side < 2; ++side)
      {
        low[side][rank] = static_cast<double>(random() % 5);
        high[side][rank] = low[side][rank] + static_cast<double>(random() % 5);
        const bool isBounded = random() % 3 != 0;
        if (isBounded)
          (side == 0 ? source.dof(rank) : target->dof(rank))->boundWithin(low[side][rank], high[side][rank]);
        else
        {
          low[side][rank] = -1e9;
          high[side][rank] = 1e9;
        }
        if (side == 1)
          fits = fits && std::max(low[0][rank], low[1][rank]) <= std::min(high[0][rank], high[1][rank]);
      }
    const LogCapture log;
    ASSERT_EQ(target->mergeClonedValidatorsAndConstraintsFrom(source.space).succeeded(), fits);
    EXPECT_EQ(
      log.contains("When merging bounds validator: conflict could not be solved because of non-intersecting bounds."),
      !fits);
    if (!fits)
      continue;
    ++merged;
    for (unsigned int rank = 0; rank < 4; ++rank)
    {
      const double lower = std::max(low[0][rank], low[1][rank]), upper = std::min(high[0][rank], high[1][rank]);
      const CorvDofShPtr dof = target->dof(rank);
      EXPECT_EQ(dof->isBounded(), lower > -1e9);
      if (!dof->isBounded())
        continue;
      EXPECT_EQ(dof->vmin(), lower);
      EXPECT_EQ(dof->vmax(), upper);
      const bool bothBounded = std::min(low[0][rank], low[1][rank]) > -1e9;
      EXPECT_EQ(dof->isLocked(), bothBounded && lower == upper);
      locked += dof->isLocked();
      if (dof->isLocked())
      {
        EXPECT_EQ(dof->lockedValue(), lower);
        EXPECT_TRUE(log.contains("When merging bounds validator: locking dof with equal bounds."));
      }
    }
  }
  EXPECT_GT(merged, 100u);
  EXPECT_GT(locked, 50u);
}

TEST(CorvConfigSpaceMerge, ConflictsAreNamed)
{
  struct Case
  {
    const char* message;
    void (*prepare)(NestedSpace& io_source, NestedSpace& io_target);
  };
  const std::vector<Case> cases = {
    {"Cannot mix periodic and non-periodic dofs when merging space validators and constraints.",
     [](NestedSpace& io_source, NestedSpace&) { io_source.dof(2)->isRevolute(true); }},
    {"When merging constraint of class ScaledSum: name conflict unsolved.",
     [](NestedSpace& io_source, NestedSpace& io_target)
     {
       io_source.addSum("sum", 2.0, {{io_source.dof(0), io_source.dof(1)}});
       io_target.addSum("sum", 2.0, {{io_target.dof(2), io_target.dof(3)}});
     }},
    {"When merging constraint of class ScaledSum: transitivity conflict unsolved.",
     [](NestedSpace& io_source, NestedSpace& io_target)
     {
       io_source.addSum("a", 2.0, {{io_source.dof(0), io_source.dof(1)}});
       io_target.addSum("b", 2.0, {{io_target.dof(2), io_target.dof(1)}});
     }},
    {"When merging constraint of class ScaledSum: partial variant conflict unsolved.",
     [](NestedSpace& io_source, NestedSpace& io_target)
     {
       io_source.addSum("sum", 2.0, {{io_source.dof(0), io_source.dof(1)}})->setActivatedPartialVariant(0, 1);
       io_target.addSum("sum", 2.0, {{io_target.dof(0), io_target.dof(1)}});
     }},
    {"When merging lock constraint: conflict could not be solved because of different lock values.",
     [](NestedSpace& io_source, NestedSpace& io_target)
     {
       io_source.dof(1)->lockAt(1.0);
       io_target.dof(1)->lockAt(1.5);
     }},
    {"When merging lock constraint: conflict could not be solved because constraints prevent from locking dof.",
     [](NestedSpace& io_source, NestedSpace& io_target)
     {
       io_source.dof(1)->lockAt(1.0);
       io_target.addSum("sum", 2.0, {{io_target.dof(0), io_target.dof(1)}});
     }},
    {"When merging bounds validator: constraints prevent from locking dof with equal bounds.",
     [](NestedSpace& io_source, NestedSpace& io_target)
     {
       io_source.dof(1)->boundWithin(0.0, 1.0);
       io_target.dof(1)->boundWithin(1.0, 2.0);
       io_target.addSum("sum", 2.0, {{io_target.dof(0), io_target.dof(1)}});
     }},
  };
  for (const Case& one : cases)
  {
    NestedSpace source, target;
    one.prepare(source, target);
    const unsigned int constraints = target.space->constraints()->count();
    const LogCapture log;
    EXPECT_TRUE(target.space->mergeClonedValidatorsAndConstraintsFrom(source.space).failed()) << one.message;
    EXPECT_TRUE(log.contains(one.message)) << one.message;
    EXPECT_EQ(target.space->constraints()->count(), constraints) << one.message;
  }
  const LogCapture log;
  EXPECT_TRUE(compositeOfSize(3)->mergeClonedValidatorsAndConstraintsFrom(compositeOfSize(2)).failed());
  EXPECT_EQ(log.count(), 1u);
}

TEST(CorvConfigSpaceMerge, VariantsOfEqualConstraintsAreJoinedAndOthersMoveApart)
{
  NestedSpace source, target;
  const auto variants = [](const NestedSpace& i_of) {
    return std::vector<ScaledSum::Spaces>{{i_of.dof(0), i_of.dof(1)}, {i_of.dof(1), i_of.dof(0)}};
  };
  const ScaledSumShPtr wanted = source.addSum("sum", 3.0, variants(source));
  wanted->variant(1);
  wanted->setPartialVariantState({{true, true}, {true, false}});
  const ScaledSumShPtr old = target.addSum("sum", 3.0, variants(target));
  ASSERT_TRUE(target.space->mergeClonedValidatorsAndConstraintsFrom(source.space).succeeded());
  const CorvConstraintShPtr joined =
    boost::dynamic_pointer_cast<CorvConstraint>(target.space->constraints()->validatorNamed("sum", false));
  ASSERT_TRUE(joined);
  EXPECT_NE(joined, old);
  EXPECT_EQ(joined->variant(), 1u);
  EXPECT_EQ(joined->getPartialVariantState(), wanted->getPartialVariantState());
  EXPECT_EQ(CorvConfig(target.space, Values{0, 5, 0, 0}).dofValue(0), 15.0);

  // A writer of the same dof makes the other constraint take its second variant.
  NestedSpace flexible, writer;
  const ScaledSumShPtr movable = flexible.addSum("movable", 3.0, variants(flexible));
  writer.addSum("writer", 1.0, {{writer.dof(2), writer.dof(1)}});
  ASSERT_TRUE(flexible.space->mergeClonedValidatorsAndConstraintsFrom(writer.space).succeeded());
  EXPECT_EQ(movable->variant(), 1u);
  EXPECT_EQ(CorvConfig(flexible.space, Values{0, 0, 4, 0}).dofValues(), (Values{12, 4, 4, 0}));

  // Locks come over, and what they decide is locked too.
  NestedSpace locked, decided;
  locked.dof(0)->lockAt(2.0);
  locked.dof(3)->lockAt(7.0);
  decided.dof(3)->lockAt(7.0 + 1e-8);
  decided.addSum("sum", 3.0, {{decided.dof(0), decided.dof(1)}});
  ASSERT_TRUE(decided.space->mergeClonedValidatorsAndConstraintsFrom(locked.space).succeeded());
  EXPECT_TRUE(decided.dof(0)->isLocked() && decided.dof(1)->isLocked());
  EXPECT_EQ(decided.dof(1)->lockedValue(), 6.0);
  EXPECT_EQ(decided.dof(3)->lockedValue(), 7.0 + 1e-8);
}

TEST(CorvConfigSpaceMerge, ValidatorOfADeviceWatchesTheOtherDevice)
{
  const CorvDeviceShPtr first = CorvDevice::create(), second = CorvDevice::create();
  ASSERT_TRUE(first->addExtraDof(CorvDof::create(false)).succeeded());
  ASSERT_TRUE(second->addExtraDof(CorvDof::create(false)).succeeded());
  const CorvConfigSpaceShPtr from = first->configSpace(), to = second->configSpace();
  ASSERT_TRUE(from->configValidators()->add(CorvValidatorCfgLock::create(from)).succeeded());
  ASSERT_TRUE(from->constraints()->add(CorvConstraintLock::create(from)).succeeded());
  ASSERT_TRUE(to->mergeClonedValidatorsAndConstraintsFrom(from).succeeded());
  for (const CorvValidatorSetShPtr& set : {to->configValidators(), to->constraints()})
  {
    const CorvValidatorShPtr last = set->at(set->count() - 1);
    EXPECT_EQ(last->configSpace(), to);
    EXPECT_EQ(last->device(), second);
  }
  EXPECT_TRUE(to->configValidators()->validatorNamed("orvane.core.cfg-lock", false));
}
