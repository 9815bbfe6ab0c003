#include "kinematics/orvConfig.h"
#include "kinematics/orvUtility.h"
#include "manifolds/orvManifoldUnion.h"
#include "manifolds/orvPointManifold.h"
#include "support/plainSpace.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
class Manifold : public testing::Test
{
protected:
  Manifold() : space(plainSpace({false, true})), both(CorvManifoldUnion::create(space)) {}
  void SetUp() override { CorvUtility::randomSeed(5); }

  CorvConfig at(double i_x, double i_angle) const { return CorvConfig(space, {i_x, i_angle}); }
  CorvPointManifoldShPtr point(double i_x, double i_angle) const
  {
    return CorvPointManifold::create(at(i_x, i_angle), space);
  }

  CorvConfigSpaceShPtr space;
  CorvManifoldUnionShPtr both;
};
} // namespace

TEST_F(Manifold, PointHasOneElementWhateverIsAsked)
{
  const CorvPointManifoldShPtr one = point(1.0, 2.0);
  EXPECT_EQ(one->dimension(), 0u);
  EXPECT_EQ(one->cardinality(), 1u);
  CorvConfig config = at(9.0, 9.0);
  EXPECT_TRUE(one->makeRandomStep(config, 0.5).succeeded());
  EXPECT_EQ(config, at(1.0, 2.0));
  EXPECT_TRUE(one->project(at(-3.0, 0.0), config).succeeded());
  EXPECT_EQ(config, at(1.0, 2.0));
  EXPECT_TRUE(one->isElement(at(1.0, 2.0 - 4.0 * std::acos(0.0))));
  EXPECT_FALSE(one->isElement(at(1.0, 2.1)));
  EXPECT_TRUE(one->getCountableElement(1, config).failed());
  double low = 0.0, high = 0.0;
  one->getAmbientBounds(0, low, high);
  EXPECT_EQ(std::make_pair(low, high), std::make_pair(1.0, 1.0));
  one->getOrbitPeriod(1, high);
  EXPECT_NEAR(high, 4.0 * std::acos(0.0), 1e-12);
  EXPECT_FALSE(CorvPointManifold::create(at(0.0, 0.0), CorvConfigSpaceShPtr()));
  EXPECT_FALSE(CorvPointManifold::create(CorvConfig(), space));
  EXPECT_TRUE(one->clone()->equalByCoding(*one));
}

TEST_F(Manifold, PointOfAnotherSpaceIsConverted)
{
  const CorvConfigSpaceShPtr ambient = space->dof(1);
  const CorvPointManifoldShPtr one = CorvPointManifold::create(at(1.0, 2.0), ambient);
  CorvConfig element;
  ASSERT_TRUE(one->getRandomElement(element).succeeded());
  EXPECT_EQ(element.space(), ambient);
  EXPECT_EQ(element.dofValue(0), 2.0);
  EXPECT_TRUE(one->isElement(element));
  EXPECT_FALSE(one->isElement(at(1.0, 2.0)));
}

TEST_F(Manifold, EmptyUnionHasNothing)
{
  CorvConfig config = at(3.0, 3.0);
  EXPECT_TRUE(both->isEmpty());
  EXPECT_TRUE(both->getRandomElement(config).failed());
  EXPECT_TRUE(both->makeRandomStep(config, 1.0).failed());
  EXPECT_TRUE(both->project(config, config).failed());
  EXPECT_FALSE(both->isElement(config));
  EXPECT_EQ(config, at(3.0, 3.0));
}

TEST_F(Manifold, UnionDrawsFromAllAndProjectsOnTheNearest)
{
  const CorvPointManifoldShPtr one = point(0.0, 0.0);
  const CorvPointManifoldShPtr two = point(4.0, 0.0);
  ASSERT_TRUE(both->addManifold(one).succeeded());
  ASSERT_TRUE(both->addManifold(two).succeeded());
  for (const CorvManifoldConstShPtr& refused :
       {CorvManifoldConstShPtr(one), CorvManifoldConstShPtr(both), CorvManifoldConstShPtr(),
        CorvManifoldConstShPtr(CorvPointManifold::create(at(0.0, 0.0), plainSpace({false, true})))})
    EXPECT_TRUE(both->addManifold(refused).failed());
  EXPECT_EQ(both->countManifolds(), 2u);
  EXPECT_EQ(both->cardinality(), 2u);

  int seconds = 0;
  for (int i = 0; i < 200; ++i)
  {
    CorvConfig config;
    ASSERT_TRUE(both->getRandomElement(config).succeeded());
    EXPECT_TRUE(both->isElement(config));
    seconds += config == at(4.0, 0.0);
  }
  EXPECT_GT(seconds, 60);
  EXPECT_LT(seconds, 140);

  CorvConfig config;
  ASSERT_TRUE(both->project(at(2.5, 0.0), config).succeeded());
  EXPECT_EQ(config, at(4.0, 0.0));
  ASSERT_TRUE(both->project(at(2.0, 0.0), config).succeeded());
  EXPECT_EQ(config, at(0.0, 0.0));
  ASSERT_TRUE(both->getCountableElement(1, config).succeeded());
  EXPECT_EQ(config, at(4.0, 0.0));
  EXPECT_TRUE(both->getCountableElement(2, config).failed());
  EXPECT_FALSE(both->areConnected(at(0.0, 0.0), at(4.0, 0.0)));
  double low = 0.0, high = 0.0;
  both->getAmbientBounds(0, low, high);
  EXPECT_EQ(std::make_pair(low, high), std::make_pair(0.0, 4.0));

  const CorvManifoldShPtr copy = both->clone();
  EXPECT_TRUE(copy->equalByCoding(*both));
  EXPECT_TRUE(both->removeManifold(one).succeeded());
  EXPECT_TRUE(both->removeManifold(one).failed());
  EXPECT_EQ(copy->cardinality(), 2u);
}

TEST_F(Manifold, CardinalitiesAddUpByKind)
{
  const unsigned int finite = CorvManifold::FINITE_CARDINALITY;
  const unsigned int countable = CorvManifold::COUNTABLE_INFINITE_CARDINALITY;
  const unsigned int continuum = CorvManifold::UNCOUNTABLE_CARDINALITY;
  EXPECT_EQ(CorvManifold::sumCardinalities(3, 4), 7u);
  EXPECT_EQ(CorvManifold::sumCardinalities(3, finite), finite);
  EXPECT_EQ(CorvManifold::sumCardinalities(countable, finite), countable);
  EXPECT_EQ(CorvManifold::sumCardinalities(countable, continuum), continuum);
  EXPECT_EQ(CorvManifold::sumCardinalities(0x7ffffffeu, 0), finite);
  EXPECT_EQ(CorvManifold::sumCardinalities(0x7ffffffdu, 0x7ffffffdu), 0xfffffffau);
}
