#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJointRotation.h"
#include "support/composites.h"
#include "support/devices.h"
#include "support/logCapture.h"
#include "validation/orvValidatorCfg6DofSingularity.h"
#include "validation/orvValidatorCfgDof.h"
#include "validation/orvValidatorSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

LUM_HANDLES(CountedValidator)

/// Counts how often it was told to have come and gone.
class CountedValidator : public CorvConfigValidator
{
  LUM_UNREFLECTED(CountedValidator, CorvConfigValidator);

public:
  static CountedValidatorShPtr create(const CorvConfigSpaceShPtr& i_space, const std::string& i_name)
  {
    return lumCreate<CountedValidator>(i_space, i_name);
  }
  CorvValidatorShPtr clone() const override { return lumCreateCopy<CountedValidator>(self()); }
  void didAddToConfigSpace() override { ++members; }
  void willRemoveFromConfigSpace() override { --members; }

  int members = 0;

protected:
  CountedValidator(const CorvConfigSpaceShPtr& i_space, const std::string& i_name)
    : CorvConfigValidator(i_space, i_name)
  {
  }
  CountedValidator(const CountedValidator&) = default;
  lmStatus init(const CountedValidatorWkPtr& i_weakPtr) { return CorvConfigValidator::init(i_weakPtr); }
};

namespace
{
/// Stretched, the arm is at j5 = 0.
const std::vector<double> BENT = {0.1, -0.4, 0.8, 0.3, 0.5, 0.0};
} // namespace

TEST(CorvValidatorSet, EditsAgreeWithAPlainListAndFailedOnesChangeNothing)
{
  for (unsigned int seed = 0; seed < 30; ++seed)
  {
    std::mt19937 random(seed);
    const CorvCSCompositeShPtr space = compositeOfSize(1), other = compositeOfSize(1);
    const CorvValidatorSetShPtr set = CorvValidatorSet::create(space);
    std::vector<CountedValidatorShPtr> pool, model;
    for (int rank = 0; rank < 12; ++rank)
      pool.push_back(CountedValidator::create(rank % 6 == 5 ? other : space, "v" + std::to_string(rank % 8)));
    const auto place = [&](const CountedValidatorShPtr& i_one) { return std::find(model.begin(), model.end(), i_one); };
    const auto canBeAdded = [&](const CountedValidatorShPtr& i_one)
    {
      return i_one->configSpace() == space &&
             std::none_of(model.begin(), model.end(),
                          [&](const CountedValidatorShPtr& i_member) { return i_member->name() == i_one->name(); });
    };
    const LogCapture log;
    for (int step = 0; step < 120; ++step)
    {
      const CountedValidatorShPtr one = pool[random() % pool.size()], neighbour = pool[random() % pool.size()];
      const unsigned int version = space->version();
      const auto at = place(neighbour);
      const bool isNeighbour = at != model.end();
      lmStatus status;
      bool isExpected = false;
      switch (random() % 8)
      {
      case 0:
      case 1:
      case 2:
        isExpected = canBeAdded(one);
        status = set->add(one);
        if (isExpected)
          model.push_back(one);
        break;
      case 3:
      case 4:
        isExpected = canBeAdded(one) && isNeighbour;
        status = set->addBefore(one, neighbour);
        if (isExpected)
          model.insert(at, one);
        break;
      case 5:
        isExpected = canBeAdded(one) && isNeighbour;
        status = set->addAfter(one, neighbour);
        if (isExpected)
          model.insert(at + 1, one);
        break;
      default:
        isExpected = place(one) != model.end();
        status = set->remove(one);
        if (isExpected)
          model.erase(place(one));
      }
      ASSERT_EQ(status.succeeded(), isExpected);
      EXPECT_EQ(space->version() != version, isExpected);
      ASSERT_EQ(set->count(), model.size());
      for (unsigned int rank = 0; rank < set->count(); ++rank)
        EXPECT_EQ(set->at(rank), model[rank]);
    }
    for (const CountedValidatorShPtr& one : pool)
      EXPECT_EQ(one->members, place(one) != model.end() ? 1 : 0);
    set->clear();
    for (const CountedValidatorShPtr& one : pool)
      EXPECT_EQ(one->members, 0);
  }
}

TEST(CorvValidatorSet, IsNoMemberOfItself)
{
  const CorvCSCompositeShPtr space = compositeOfSize(1);
  const CorvValidatorSetShPtr outer = CorvValidatorSet::create(space), inner = CorvValidatorSet::create(space);
  const LogCapture log;
  EXPECT_TRUE(outer->add(outer).failed());
  ASSERT_TRUE(outer->add(inner).succeeded());
  EXPECT_TRUE(inner->add(outer).failed());
  EXPECT_EQ(log.count(), 2u);
  EXPECT_EQ(inner->count(), 0u);
  EXPECT_TRUE(outer->validate(CorvConfig(space)));
}

TEST(CorvValidatorCfg6DofSingularity, KeepsTheFifthAxisAwayFromItsSingularValue)
{
  const double degree = std::acos(-1.0) / 180.0, infinity = std::numeric_limits<double>::infinity();
  struct Case
  {
    double low, high, singular, value;
    bool isValid;
  };
  const std::vector<Case> cases = {
    {5 * degree, infinity, 0.0, 0.0, false},
    {5 * degree, infinity, 0.0, 4.999 * degree, false},
    {5 * degree, infinity, 0.0, -5.001 * degree, true},
    {5 * degree, infinity, 0.0, 2.0, true},
    {5 * degree, infinity, 0.3, 0.3, false},
    {0.25, 1.0, 0.5, 0.75, true},
    {0.25, 1.0, 0.5, 1.5, true},
    {0.25, 1.0, 0.5, 1.625, false},
    {0.25, 1.0, 0.5, -0.5, true},
    {0.25, 1.0, 0.5, -0.625, false},
  };
  const CorvCSCompositeShPtr space = compositeOfSize(8);
  for (const Case& one : cases)
  {
    const auto validator = CorvValidatorCfg6DofSingularity::create(space, 5u, one.low, one.high, one.singular);
    ASSERT_TRUE(validator);
    CorvConfig config(space);
    config.dofValue(5, one.value);
    EXPECT_EQ(validator->validate(config), one.isValid) << one.value;
    EXPECT_EQ(config.isValidFor("orvane.core.cfg-6dofsingularity"), one.isValid);
  }

  const auto listed = CorvValidatorCfg6DofSingularity::create(space, {7, 6, 3, 2, 1, 0});
  ASSERT_TRUE(listed);
  EXPECT_EQ(listed->j5Dof(), 1u);
  EXPECT_DOUBLE_EQ(listed->j5MinAllowedValue(), 5 * degree);
  EXPECT_EQ(listed->j5MaxAllowedValue(), infinity);
  EXPECT_FALSE(CorvValidatorCfg6DofSingularity::create(space, {0, 1, 2, 3}));
  EXPECT_FALSE(CorvValidatorCfg6DofSingularity::create(space, 8u));
}

TEST(CorvValidatorCfg6DofSingularity, FindsTheFifthAxisOfAnArm)
{
  const CorvDeviceShPtr arm = sixAxisArm();
  const auto validator = CorvValidatorCfg6DofSingularity::create(arm);
  ASSERT_TRUE(validator);
  CorvConfig config(arm->configSpace(), BENT);
  EXPECT_TRUE(validator->validate(config));
  EXPECT_EQ(config.space()->dof(validator->j5Dof()), arm->configSpace()->dof(4));
  config.dofValue(4, 0.05);
  EXPECT_FALSE(validator->validate(config));
  EXPECT_FALSE(CorvValidatorCfg6DofSingularity::create(planarArm(4)));
  EXPECT_TRUE(CorvValidatorCfg6DofSingularity::create(planarArm(5)));
  EXPECT_FALSE(CorvValidatorCfg6DofSingularity::create(CorvDeviceShPtr()));
}
