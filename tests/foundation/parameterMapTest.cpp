#include "foundation/lumCodable.h"
#include "foundation/lumObjectFilter.h"
#include "foundation/lumOperation.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumSequenceOperation.h"
#include "foundation/lumTime.h"
#include "foundation/lumUtilityMultithread.h"

#include <gtest/gtest.h>

#include <thread>

namespace
{
const ClumStringKey s_a("test.a");
const ClumStringKey s_b("test.b");
} // namespace

TEST(ClumStringKey, EqualTextsAreOneKey)
{
  std::string built("test.");
  built += 'a';
  EXPECT_TRUE(ClumStringKey(built) == s_a);
  EXPECT_TRUE(s_b != s_a);
  EXPECT_EQ(ClumStringKey(built).text(), "test.a");
}

TEST(ClumParameterMap, AbsentKeyGivesTheDefaultOrAFailureAndLeavesTheArgumentAlone)
{
  const ClumParameterMapShPtr map = ClumParameterMap::create();
  bool boolean = true;
  int integer = 7;
  double number = 0.25;
  void* pointer = &number;
  ShPtr<const void> handle(new int(3));
  EXPECT_TRUE(map->getBool(s_a, boolean).failed() && boolean);
  EXPECT_TRUE(map->getInt(s_a, integer).failed() && integer == 7);
  EXPECT_TRUE(map->getDouble(s_a, number).failed() && number == 0.25);
  EXPECT_TRUE(map->getPointer(s_a, pointer).failed() && pointer == &number);
  EXPECT_TRUE(map->getVoidConstShPtr(s_a, handle).failed() && handle);
  EXPECT_EQ(map->doubleValue(s_a, 4.5), 4.5);
  EXPECT_EQ(map->intValue(s_a, -2), -2);
  EXPECT_TRUE(map->boolValue(s_a, true));
  EXPECT_FALSE(map->hasDouble(s_a) || map->hasBool(s_a) || map->hasInt(s_a) || map->hasConstShPtr(s_a));
}

TEST(ClumParameterMap, WhatIsWrittenIsReadByItsTypeOnly)
{
  int target = 1;
  const ShPtr<int> shared(new int(5));
  const ClumParameterMapShPtr map = ClumParameterMap::create();
  map->setInt(s_a, 3).setPointer(s_b, &target);
  EXPECT_EQ(map->doubleValue(s_a, 0.0), 3.0); // an int serves as a double
  EXPECT_FALSE(map->hasBool(s_a));
  void* pointer = nullptr;
  EXPECT_TRUE(map->getPointer(s_b, pointer).succeeded() && pointer == &target);

  map->setDouble(s_a, 2.5);
  EXPECT_FALSE(map->hasInt(s_a));
  map->setShPtr(s_a, shared).setConstShPtr(s_b, ShPtr<const void>(shared));
  ShPtr<void> handle;
  EXPECT_TRUE(map->getVoidShPtr(s_a, handle).succeeded());
  EXPECT_EQ(*map->shPtrValue<int>(s_a), 5);
  EXPECT_EQ(*map->constShPtrValue<int>(s_a), 5);
  EXPECT_TRUE(map->getVoidShPtr(s_b, handle).failed()); // a const handle is not given away as a mutable one
  EXPECT_FALSE(map->hasDouble(s_a));
  EXPECT_FALSE(map->remove(s_a).hasConstShPtr(s_a));
}

TEST(ClumParameterMap, BaseIsReadThroughAndOwnValuesHideIt)
{
  const ClumParameterMapShPtr base = ClumParameterMap::create();
  base->setDouble(s_a, 1.0).setBool(s_b, true);
  const ClumParameterMapShPtr map = ClumParameterMap::createWithBase(base);
  EXPECT_EQ(map->doubleValue(s_a, 0.0), 1.0);
  base->setDouble(s_a, 2.0);
  EXPECT_EQ(map->doubleValue(s_a, 0.0), 2.0);
  map->setInt(s_b, 4);
  EXPECT_FALSE(map->hasBool(s_b)); // hidden by a value of another type
  EXPECT_TRUE(map->remove(s_b).boolValue(s_b, false));

  const ClumParameterMapShPtr snapshot = ClumParameterMap::createWithBase(base, true);
  base->setDouble(s_a, 3.0);
  EXPECT_EQ(snapshot->doubleValue(s_a, 0.0), 2.0);
  EXPECT_TRUE(base->setBase(map).failed());
  EXPECT_FALSE(base->base());
}

TEST(ClumParameterMap, CombiningWritesRefineWhatTheBaseGives)
{
  struct
  {
    bool hasBase;
    double expected;
  } cases[] = {{false, 2.0 * (0.0 + 0.5) + 0.25}, {true, 2.0 * (3.0 + 0.5) + 0.25}};
  for (const auto& test : cases)
  {
    const ClumParameterMapShPtr base = ClumParameterMap::create();
    if (test.hasBase)
      base->setDouble(s_a, 3.0);
    const ClumParameterMapShPtr middle = ClumParameterMap::createWithBase(base);
    middle->addDouble(s_a, 0.5);
    const ClumParameterMapShPtr top = ClumParameterMap::createWithBase(middle);
    top->multiplyDouble(s_a, 2.0).addDouble(s_a, 0.25);
    EXPECT_EQ(top->doubleValue(s_a, -1.0), test.expected);
    EXPECT_EQ(ClumParameterMap::createByStacking(top, ClumParameterMapConstShPtr())->doubleValue(s_a, -1.0),
              test.expected);
  }
  const ClumParameterMapShPtr base = ClumParameterMap::create();
  const ClumParameterMapShPtr top = ClumParameterMap::createWithBase(base);
  top->multiplyDouble(s_a, 3.0).orBool(s_b, false);
  EXPECT_EQ(top->doubleValue(s_a, -1.0), 3.0); // without a base a factor acts on 1
  EXPECT_FALSE(top->boolValue(s_b, true));
  base->setDouble(s_a, 5.0).setBool(s_b, true);
  EXPECT_EQ(top->doubleValue(s_a, -1.0), 15.0);
  EXPECT_TRUE(top->boolValue(s_b, false));
  top->setDouble(s_a, 1.0).addDouble(s_a, 1.0).multiplyDouble(s_a, 4.0);
  EXPECT_EQ(top->doubleValue(s_a, -1.0), 8.0);
}

TEST(ClumParameterMap, StackingAndInjectionLeaveTheirSourcesAlone)
{
  const ClumParameterMapShPtr bottom = ClumParameterMap::create();
  bottom->setDouble(s_a, 10.0).setInt(s_b, 1);
  const ClumParameterMapShPtr top = ClumParameterMap::create();
  top->addDouble(s_a, 1.0);
  const ClumParameterMapShPtr stacked = ClumParameterMap::createByStacking(top, bottom);
  EXPECT_EQ(stacked->doubleValue(s_a, 0.0), 11.0);
  EXPECT_EQ(stacked->intValue(s_b, 0), 1);
  stacked->inject(*top).setInt(s_b, 2);
  EXPECT_EQ(stacked->doubleValue(s_a, 0.0), 12.0);
  EXPECT_EQ(bottom->intValue(s_b, 0), 1);
  EXPECT_FALSE(top->base());

  const ClumParameterMapShPtr output = ClumParameterMap::create();
  EXPECT_TRUE(output->setFrom(s_b, *stacked, s_a).succeeded());
  EXPECT_EQ(output->doubleValue(s_b, 0.0), 12.0);
  EXPECT_TRUE(output->setFrom(s_a, *ClumParameterMap::create(), s_a).failed());
  EXPECT_FALSE(output->hasDouble(s_a));
}

TEST(ClumObjectFilter, TestsAndImplicationsFollowTheClassTree)
{
  const ClumSequenceOperationShPtr sequence = ClumSequenceOperation::create();
  const TlumObjectClassFilter<ClumOperation> operations;
  const TlumObjectClassFilter<ClumSequenceOperation> sequences;
  const TlumObjectClassFilter<ClumObject> objects;
  const ClumCallbackObjectFilter none([](const ClumObject&) { return false; });
  EXPECT_TRUE(operations.accepts(*sequence));
  EXPECT_FALSE((!operations).accepts(*sequence));
  EXPECT_TRUE((!(!operations)).accepts(*sequence));
  EXPECT_FALSE((operations & none).accepts(*sequence));
  EXPECT_TRUE((operations & sequences).accepts(*sequence));
  EXPECT_FALSE(operations.cloneByRejection(sequences)->accepts(*sequence));

  EXPECT_TRUE(sequences.implies(operations));
  EXPECT_FALSE(operations.implies(sequences));
  EXPECT_TRUE((!operations).implies(!sequences));
  EXPECT_FALSE((!sequences).implies(!operations));
  EXPECT_TRUE((none & sequences).implies(operations));
  EXPECT_TRUE(sequences.implies(operations & objects));
  EXPECT_FALSE(operations.implies(operations & sequences));
  EXPECT_TRUE(none.implies(*none.clone()));
  EXPECT_FALSE(none.implies(ClumCallbackObjectFilter([](const ClumObject&) { return false; })));

  const ClumObjectValueFilterShPtr values = ClumObjectValueFilter::create(operations);
  EXPECT_TRUE(values->accepts(ClumValue(ClumObjectConstShPtr(sequence))));
  EXPECT_FALSE(values->accepts(ClumValue(3)));
}

TEST(ClumUtilityMultithread, MutexAndCounterHoldUnderTwoThreads)
{
  const ClumMutexShPtr mutex = ClumUtilityMultithread::createMutex();
  const unsigned int rounds = 20000;
  unsigned int guarded = 0;
  unsigned int volatile counted = 0;
  const auto work = [&]
  {
    for (unsigned int round = 0; round < rounds; ++round)
    {
      ClumUtilityMultithread::lock(mutex);
      ++guarded;
      ClumUtilityMultithread::unlock(mutex);
      ClumUtilityMultithread::atomicIncrement(counted);
    }
  };
  std::thread other(work);
  work();
  other.join();
  EXPECT_EQ(guarded, 2 * rounds);
  EXPECT_EQ(counted, 2 * rounds);
}

TEST(ClumTime, StoppedWatchHoldsItsTime)
{
  ClumTime watch;
  EXPECT_EQ(watch.elapsedTime(), 0.0);
  watch.start(2.0);
  EXPECT_TRUE(watch.isStarted());
  EXPECT_GE(watch.elapsedTime(), 2.0);
  watch.stop();
  const double held = watch.elapsedTime();
  EXPECT_EQ(watch.elapsedTime(), held);
  watch.stop();
  EXPECT_EQ(watch.elapsedTime(), held);
  EXPECT_FALSE(watch.isStarted());
}
