#include "foundation/lumBox.h"
#include "foundation/lumClass.h"
#include "foundation/lumCodable.h"
#include "foundation/lumDescriptors.h"
#include "foundation/lumMemberFunction.h"
#include "foundation/lumMat4.h"
#include "foundation/lumRuntime.h"
#include "foundation/lumSphere.h"
#include "foundation/lumXMLCoder.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "paths/orvSteeringMethod.h"
#include "roadmaps/orvBuilder.h"
#include "support/devices.h"
#include "support/logCapture.h"
#include "support/samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

// What every class of the library has to hold, whatever it does.

namespace
{
/// The names of all reflected classes, from the lists of the layers.
const std::vector<std::string>& listedClasses()
{
  static const std::vector<std::string> s_names = {
#define LUM_CLASS(NAME) #NAME,
#define LUM_PLAIN_CLASS(NAME)
#include "foundation/classes.def"
#include "kinematics/classes.def"
#include "metrics/classes.def"
#include "paths/classes.def"
#include "validation/classes.def"
#include "constraints/classes.def"
#include "manifolds/classes.def"
#include "roadmaps/classes.def"
#include "planners/classes.def"
#include "optimizers/classes.def"
#undef LUM_CLASS
#undef LUM_PLAIN_CLASS
  };
  return s_names;
}

/// The properties of a class and of those above it.
std::vector<ClumPropertyDescriptorShPtr> allProperties(const ClumClassShPtr& i_class)
{
  std::vector<ClumPropertyDescriptorShPtr> properties = i_class->properties();
  for (const ClumClassShPtr& parent : i_class->parents())
  {
    const std::vector<ClumPropertyDescriptorShPtr> inherited = allProperties(parent);
    properties.insert(properties.end(), inherited.begin(), inherited.end());
  }
  return properties;
}

/// Fills what an object fills lazily, and codes too, so that two objects can be compared by coding.
const ClumCodable& settled(const ClumCodable& i_object)
{
  for (const ClumPropertyDescriptorShPtr& property : allProperties(i_object.classObject()))
  {
    ClumValue value;
    i_object.getProperty(property->name(), value);
  }
  i_object.cloneByCoding();
  return i_object;
}

/// The nearest method of that name, in the class or above it; null if there is none.
ClumMethodShPtr methodNamed(const ClumClassShPtr& i_class, const std::string& i_name)
{
  for (const ClumMethodShPtr& method : i_class->methods())
    if (method->name() == i_name)
      return method;
  return i_class->parents().empty() ? ClumMethodShPtr() : methodNamed(i_class->parents()[0], i_name);
}

/// The text of an object and of what surrounds it.
std::string textOf(const ClumCodableConstShPtr& i_object, const std::vector<ClumCodableShPtr>& i_surroundings)
{
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  coder->encodeObjectShPtr(i_object, "object");
  coder->encodeObjects(i_surroundings, "surroundings");
  return coder->data();
}

/// The first line in which two texts differ, of both; empty if there is none.
std::string firstDifference(const std::string& i_first, const std::string& i_second)
{
  std::istringstream first(i_first), second(i_second);
  std::string a, b;
  while (std::getline(first, a))
    if (!std::getline(second, b) || a != b)
      return a + " / " + b;
  return std::getline(second, b) ? b : std::string();
}

/// Writes, reads and writes again: both texts have to be one and the same.
void expectFileRoundTrip(const ClumCodableShPtr& i_object)
{
  settled(*i_object);
  textOf(i_object, sampleSurroundings());
  const std::string text = textOf(i_object, sampleSurroundings());
  ASSERT_FALSE(text.empty());
  const ClumXMLCoderShPtr reader = ClumXMLCoder::create();
  ASSERT_TRUE(reader->parse(text).succeeded());
  const ClumCodableShPtr read = reader->decodeObject("object");
  std::vector<ClumCodableShPtr> surroundings;
  reader->decodeObjects("surroundings", surroundings);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->classObject(), i_object->classObject());
  EXPECT_EQ(ClumObjectShPtr(read->ClumObject::self()), read);
  EXPECT_EQ(firstDifference(textOf(read, surroundings), text), "");
  settled(*read);
  EXPECT_EQ(firstDifference(textOf(read, surroundings), text), "");
}

class EveryClass : public testing::TestWithParam<std::string>
{
protected:
  ClumClassShPtr classObject() const { return ClumRuntime::classWithName(GetParam()); }
};

class EverySample : public testing::TestWithParam<SampleMaker>
{
};
} // namespace

TEST(Conformance, RuntimeKnowsTheListedClassesAndNoOthersOfTheLibrary)
{
  std::set<std::string> known;
  for (const ClumClassShPtr& object : ClumRuntime::instance().classes())
    if (object->name().rfind("Clum", 0) == 0 || object->name().rfind("Corv", 0) == 0)
      known.insert(object->name());
  EXPECT_EQ(known, std::set<std::string>(listedClasses().begin(), listedClasses().end()));
  EXPECT_EQ(known.size(), listedClasses().size());
}

TEST_P(EveryClass, HasItsPlaceInTheTree)
{
  const ClumClassShPtr object = classObject();
  ASSERT_TRUE(object);
  EXPECT_EQ(object->name(), GetParam());
  EXPECT_TRUE(object->isA(*ClumObject::CLASS));
  if (object == ClumObject::CLASS)
    return;
  ASSERT_EQ(object->parents().size(), 1u);
  const ClumClassShPtr parent = object->parents()[0];
  const std::vector<ClumClassShPtr> siblings = parent->children();
  EXPECT_EQ(std::count(siblings.begin(), siblings.end(), object), 1);
  EXPECT_TRUE(object->isA(*parent));
  EXPECT_FALSE(parent->isA(*object));
}

TEST_P(EveryClass, AllocatesAnObjectOfItself)
{
  const ClumClassShPtr object = classObject();
  ASSERT_TRUE(object);
  if (!object->allocator())
    return;
  const ClumObjectShPtr made = object->allocator()();
  ASSERT_TRUE(made);
  EXPECT_EQ(made->classObject(), object);
  const ClumObject& reference = *made;
  EXPECT_EQ(std::type_index(typeid(reference)), object->type());
  EXPECT_FALSE(made->self()) << "an allocated object is not initialised";
  EXPECT_EQ(static_cast<bool>(boost::dynamic_pointer_cast<ClumCodable>(made)), object->isA(*ClumCodable::CLASS));
}

TEST_P(EveryClass, NamesEachMemberOnce)
{
  std::set<std::string> names;
  for (const ClumPropertyDescriptorShPtr& property : allProperties(classObject()))
    EXPECT_TRUE(names.insert(property->name()).second) << property->name();
  for (const ClumCollectionDescriptorShPtr& collection : classObject()->collections())
    EXPECT_TRUE(names.insert(collection->name()).second) << collection->name();
  for (const ClumEnumShPtr& enumeration : classObject()->enums())
    EXPECT_FALSE(enumeration->name().empty());
}

INSTANTIATE_TEST_SUITE_P(Conformance, EveryClass, testing::ValuesIn(listedClasses()),
                         [](const auto& i_info) { return i_info.param; });

TEST(Conformance, EveryCodableClassHasASample)
{
  std::set<std::string> sampled;
  for (const SampleMaker& maker : sampleMakers())
    EXPECT_TRUE(sampled.insert(maker.className).second) << maker.className;
  std::vector<std::string> missing;
  for (const std::string& name : listedClasses())
  {
    const ClumClassShPtr object = ClumRuntime::classWithName(name);
    if (object->allocator() && object->isA(*ClumCodable::CLASS) && sampled.count(name) == 0)
      missing.push_back(name);
  }
  // The base of the spaces is only made as one of its kinds; the others know an object, a joint or a space weakly, and
  // are complete only beside it.
  EXPECT_EQ(missing,
            (std::vector<std::string>{"ClumCollectionAdapterGeometry", "ClumSceneExtractorGeometry", "CorvConfigSpace",
                                      "CorvMetricJointSweep", "CorvMetricSlerp", "CorvRWCache", "CorvRWSlerp"}));
}

TEST_P(EverySample, IsOfItsClassAndReadsItsProperties)
{
  const ClumCodableShPtr sample = GetParam().make();
  ASSERT_TRUE(sample);
  EXPECT_EQ(sample->classObject()->name(), GetParam().className);
  EXPECT_EQ(ClumObjectShPtr(sample->ClumObject::self()), sample);
  EXPECT_FALSE(sample->description().empty());
  for (const ClumPropertyDescriptorShPtr& property : allProperties(sample->classObject()))
  {
    ClumValue value;
    EXPECT_TRUE(sample->getProperty(property->name(), value).succeeded()) << property->name();
  }
}

TEST_P(EverySample, SurvivesACodingRoundTrip)
{
  const ClumCodableShPtr sample = GetParam().make();
  ASSERT_TRUE(sample);
  const LogCapture log;
  const ClumCodableShPtr copy = sample->cloneByCoding();
  ASSERT_TRUE(copy);
  EXPECT_NE(copy, sample);
  EXPECT_EQ(copy->classObject(), sample->classObject());
  EXPECT_EQ(ClumObjectShPtr(copy->ClumObject::self()), copy);
  EXPECT_TRUE(settled(*copy).equalByCoding(settled(*sample)));
  EXPECT_TRUE(sample->equalByCoding(*copy));
  EXPECT_EQ(log.count(), 0u);
}

TEST_P(EverySample, SurvivesAFile)
{
  const ClumCodableShPtr sample = GetParam().make();
  ASSERT_TRUE(sample);
  const LogCapture log;
  // No file keeps a roadmap or a notificator.
  const std::string name = GetParam().className;
  const bool holdsPointer = sample->classObject()->isA(*CorvBuilder::CLASS) || name == "CorvBuilderPlanner" ||
                            name == "ClumAutotuningParallelCooperativeOperation";
  if (holdsPointer)
    EXPECT_EQ(textOf(sample, {}), "");
  else
    expectFileRoundTrip(sample);
  EXPECT_EQ(log.contains("A file keeps no pointers"), holdsPointer);
  EXPECT_EQ(log.count() > 0, holdsPointer);
}

TEST(Conformance, LargerGraphsSurviveAFile)
{
  const CorvDeviceShPtr arm = sixAxisArm();
  arm->addObstacleGeometry(ClumBox::create(1.0, 2.0, 3.0));
  arm->obstacleGeometry(0)->position(ClumMat4());
  const CorvConfigSpaceShPtr space = arm->configSpace();
  const CorvPathShPtr path = CorvPath::create(space);
  CorvConfig from(space);
  for (int i = 1; i < 6; ++i)
  {
    const CorvConfig to(space, std::vector<double>(space->size(), 0.1 * i * i));
    const CorvDirectPathShPtr motion = space->steeringMethod()->makeDirectPath(from, to);
    ASSERT_TRUE(motion);
    ASSERT_TRUE(path->appendDirectPath(motion).succeeded());
    from = to;
  }
  const CorvDirectPathShPtr cut = CorvDirectPath::createReversed(CorvDirectPath::createByExtracting(
    path->directPath(2), 0.25 * path->directPath(2)->length(), 0.75 * path->directPath(2)->length()));
  for (const ClumCodableShPtr& object :
       {ClumCodableShPtr(arm), ClumCodableShPtr(space), ClumCodableShPtr(path), ClumCodableShPtr(cut),
        ClumCodableShPtr(twoFreeFlyers(ClumBox::create(1.0, 1.0, 1.0), ClumSphere::create(0.5)))})
  {
    ASSERT_TRUE(object);
    SCOPED_TRACE(object->classObject()->name());
    const LogCapture log;
    expectFileRoundTrip(object);
    EXPECT_EQ(log.count(), 0u);
  }

  // What was read moves and is judged as the original.
  const ClumXMLCoderShPtr reader = ClumXMLCoder::create();
  ASSERT_TRUE(reader->parse(textOf(path, {})).succeeded());
  const CorvPathShPtr read = reader->decode<CorvPath>("object");
  ASSERT_TRUE(read);
  EXPECT_EQ(read->length(), path->length());
  for (double distance : {0.0, 0.3, 1.0, 0.9 * path->length()})
  {
    CorvConfig here(space), there(read->configSpace());
    ASSERT_TRUE(path->getConfigAtDistance(distance, here).succeeded());
    ASSERT_TRUE(read->getConfigAtDistance(distance, there).succeeded());
    EXPECT_EQ(here.dofValues(), there.dofValues());
    EXPECT_EQ(here.validate(ClumParameterMapConstShPtr()), there.validate(ClumParameterMapConstShPtr()));
  }
}

TEST_P(EverySample, CopiesItselfAsAnEqual)
{
  const ClumCodableShPtr sample = GetParam().make();
  ASSERT_TRUE(sample);
  const ClumMethodShPtr clone = methodNamed(sample->classObject(), "clone");
  if (!clone)
    return;
  ClumValue made;
  ASSERT_TRUE(clone->memberFunction()->call(sample.get(), {}, made).succeeded());
  const ClumCodableConstShPtr copy = boost::dynamic_pointer_cast<const ClumCodable>(made.getConstObject());
  ASSERT_TRUE(copy);
  EXPECT_NE(copy, sample);
  EXPECT_EQ(copy->classObject(), sample->classObject());
  EXPECT_EQ(ClumObjectShPtr(copy->ClumObject::self()), copy);
  EXPECT_TRUE(settled(*copy).equalByCoding(settled(*sample)));
}

TEST_P(EverySample, TakesItsOwnPropertyValuesBack)
{
  const ClumCodableShPtr sample = GetParam().make();
  ASSERT_TRUE(sample);
  const ClumCodableShPtr before = sample->cloneByCoding();
  for (const ClumPropertyDescriptorShPtr& property : allProperties(sample->classObject()))
  {
    ClumValue value;
    sample->getProperty(property->name(), value);
    EXPECT_EQ(sample->setProperty(property->name(), value).succeeded(), !property->isReadOnly()) << property->name();
  }
  EXPECT_TRUE(settled(*sample).equalByCoding(settled(*before)));
}

INSTANTIATE_TEST_SUITE_P(Conformance, EverySample, testing::ValuesIn(sampleMakers()),
                         [](const auto& i_info) { return std::string(i_info.param.className); });

TEST(Conformance, StatusCodesStandInTheBlocksOfTheirClasses)
{
  const std::map<std::string, std::pair<unsigned int, unsigned int>> blocks = {{"CorvPathPlanner", {20100, 20199}},
                                                                               {"CorvDevice", {20400, 20499}},
                                                                               {"CorvJoint", {20500, 20599}},
                                                                               {"CorvHybridPath", {20750, 20799}},
                                                                               {"CorvPath", {20800, 20849}}};
  const ClumRuntime::TStatusCodeMap& codes = ClumRuntime::instance().statusCodeMap();
  std::set<std::pair<std::string, std::string>> names;
  for (const auto& [number, code] : codes)
  {
    const ClumClassShPtr owner = code.owner.lock();
    ASSERT_TRUE(owner) << number;
    // The foundation's own codes stand below those of the library.
    const auto block = blocks.find(owner->name());
    const bool isInPlace = block == blocks.end() ? owner->name().rfind("Clum", 0) == 0 && number < 20100
                                                 : number >= block->second.first && number <= block->second.second;
    EXPECT_TRUE(isInPlace) << owner->name() << " " << number;
    EXPECT_FALSE(code.message.empty()) << number;
    EXPECT_TRUE(names.emplace(owner->name(), code.name).second) << code.name;
  }
  for (const auto& [owner, block] : blocks)
    EXPECT_NE(codes.lower_bound(block.first), codes.upper_bound(block.second)) << owner;
}

TEST(Conformance, SecondStatusCodeOfANumberIsRefused)
{
  ClumRuntime& runtime = ClumRuntime::instance();
  const ClumRuntime::TStatusCodeMap before = runtime.statusCodeMap();
  ASSERT_FALSE(before.empty());
  for (const auto& [number, code] : before)
  {
    EXPECT_EQ(runtime.registerStatusCode(ClumObject::CLASS, "ANOTHER_ERROR", number, "Another."), lmStatus::FAILURE);
    EXPECT_EQ(runtime.statusCodeMap().at(number).message, code.message);
  }
  EXPECT_EQ(runtime.statusCodeMap().size(), before.size());
}
