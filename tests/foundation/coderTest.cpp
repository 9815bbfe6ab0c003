#include "foundation/lumCloner.h"
#include "foundation/lumCodable.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumMat4.h"
#include "foundation/lumObjectFilter.h"
#include "foundation/lumVersion.h"
#include "foundation/codedValues.h"
#include "support/logCapture.h"

#include <gtest/gtest.h>

LUM_HANDLES(CoderProbe)
LUM_HANDLES(UnlistedProbe)

/// A node of a graph: it owns children and knows its parent and a friend weakly.
class CoderProbe : public ClumMutableCodable
{
  LUM_CONCRETE(CoderProbe, ClumMutableCodable);

public:
  static CoderProbeShPtr create(const std::string& i_name) { return lumCreate<CoderProbe>(i_name); }

  void add(const CoderProbeShPtr& i_child)
  {
    children.push_back(i_child);
    i_child->parent = self();
  }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override
  {
    ClumMutableCodable::encodeWithCoder(i_coder);
    i_coder->encodeString(name, "name");
    i_coder->encodeObjects(children, "children");
    i_coder->encodeWeakObjectWkPtr(parent, "parent");
    i_coder->encodeWeakObjectWkPtr(other, "friend");
    i_coder->encodeObjectShPtr(extra, "extra");
    i_coder->encodeBool(isUnreadable, "unreadable");
  }

  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override
  {
    const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
    if (status.failed())
      return status;
    name = i_coder->decodeString("name");
    i_coder->decodeObjects("children", children);
    parent = i_coder->decodeWeak<CoderProbe>("parent");
    other = i_coder->decodeWeak<CoderProbe>("friend");
    extra = i_coder->decodeObject("extra");
    return i_coder->decodeBool("unreadable") ? lmStatus(-1) : lmStatus();
  }

  void awake() override
  {
    ClumMutableCodable::awake();
    ++awakenings;
    const CoderProbeShPtr above = parent.lock();
    wasParentCompleteOnAwakening = !above || above->children.size() == above->childrenWhenComplete;
    for (const CoderProbeShPtr& child : children)
      areChildrenNamed = areChildrenNamed && child && !child->name.empty();
  }

  std::string name;
  std::vector<CoderProbeShPtr> children;
  CoderProbeWkPtr parent;
  CoderProbeWkPtr other;
  ClumCodableShPtr extra;
  bool isUnreadable = false;

  int awakenings = 0;
  std::size_t childrenWhenComplete = 2;
  bool wasParentCompleteOnAwakening = false;
  bool areChildrenNamed = true;

protected:
  CoderProbe() = default;
  explicit CoderProbe(const std::string& i_name) : name(i_name) {}
};

LUM_DESCRIBE(CoderProbe)
{
}

/// A class without a class object of its own.
class UnlistedProbe : public CoderProbe
{
  LUM_UNREFLECTED(UnlistedProbe, CoderProbe);

public:
  static UnlistedProbeShPtr create() { return lumCreate<UnlistedProbe>(); }
};

namespace
{
/// A root with two children; the second child's friend is the first.
CoderProbeShPtr makeFamily()
{
  const CoderProbeShPtr root = CoderProbe::create("root");
  root->add(CoderProbe::create("first"));
  root->add(CoderProbe::create("second"));
  root->children[1]->other = root->children[0];
  return root;
}

CoderProbeShPtr clonedThrough(const ClumMemoryCoderShPtr& i_coder, const CoderProbeShPtr& i_object)
{
  i_coder->encodeObjectShPtr(i_object, "object");
  return i_coder->decode<CoderProbe>("object");
}
} // namespace

TEST(ClumMemoryCoder, KeepsValuesOfEveryKindAndDefaultsForMissingKeys)
{
  const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
  const CodedValues values;
  values.encode(*coder);
  values.expectIn(*coder);

  int target = 0;
  const ShPtr<void> shared(new int(4));
  const ClumObjectShPtr object = CoderProbe::create("held");
  coder->encodePointer(&target, "pointer");
  coder->encodeSharedPointer(shared, "shared");
  coder->encodeValueVector({ClumValue(object)}, "objects");
  EXPECT_EQ(coder->decodePointer("pointer"), &target);
  EXPECT_EQ(coder->decodeSharedPointer("shared"), shared);
  lumRegister_CoderProbe();
  std::vector<ClumValue> read;
  coder->decodeValueVector("objects", read);
  ASSERT_EQ(read.size(), 1u);
  EXPECT_EQ(boost::dynamic_pointer_cast<CoderProbe>(read[0].getObject())->name, "held");

  EXPECT_TRUE(coder->hasKey("int") && !coder->hasKey("absent"));
  EXPECT_EQ(coder->decodeInt("absent"), 0);
  EXPECT_EQ(coder->decodeInt("string"), 0);
  EXPECT_EQ(coder->decodeMat4("absent"), ClumMat4::IDENTITY);
  EXPECT_FALSE(coder->decodeObject("absent"));
}

TEST(ClumMemoryCoder, ReadsVectorsOfRecordsAndEndsOnAMisreadOne)
{
  const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
  coder->beginVectorEncoding("records");
  for (int i = 0; i < 3; ++i)
  {
    coder->encodeInt(i, "rank");
    coder->encodeObject(nullptr, "object");
    coder->encodeDoubleVector(std::vector<double>(static_cast<std::size_t>(i), 1.0), "values");
  }
  coder->endVectorEncoding();
  coder->encodeInt(9, "after");

  coder->beginVectorDecoding("records");
  int count = 0;
  for (; coder->canContinueVectorDecoding(); ++count)
  {
    EXPECT_TRUE(coder->hasKey("rank") && !coder->hasKey("after"));
    EXPECT_EQ(coder->decodeInt("rank"), count);
    EXPECT_FALSE(coder->decodeObject("object"));
    std::vector<double> values;
    coder->decodeDoubleVector("values", values);
    EXPECT_EQ(values.size(), static_cast<std::size_t>(count));
  }
  EXPECT_EQ(count, 3);
  coder->endVectorDecoding();
  EXPECT_EQ(coder->decodeInt("after"), 9);

  const LogCapture log;
  coder->beginVectorDecoding("records");
  for (count = 0; coder->canContinueVectorDecoding() && count < 100; ++count)
    coder->decodeInt("misspelt");
  EXPECT_EQ(count, 1);
  EXPECT_EQ(log.count(), 1u);
  coder->endVectorDecoding();
  coder->beginVectorDecoding("absent");
  EXPECT_FALSE(coder->canContinueVectorDecoding());
  coder->endVectorDecoding();
}

TEST(ClumMemoryCoder, KeepsIdentityAndAwakesTheWholeGraphOnce)
{
  const CoderProbeShPtr root = makeFamily();
  const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
  coder->encodeObjectShPtr(root, "one");
  coder->encodeObjectShPtr(root->children[1], "two");
  const CoderProbeShPtr copy = coder->decode<CoderProbe>("one");
  ASSERT_TRUE(copy);
  ASSERT_EQ(copy->children.size(), 2u);
  EXPECT_NE(copy, root);
  EXPECT_EQ(copy->self(), copy);
  EXPECT_EQ(coder->decodeObject("two"), copy->children[1]);
  EXPECT_EQ(coder->decodeObject("one"), copy);
  EXPECT_EQ(copy->children[1]->other.lock(), copy->children[0]);
  for (const CoderProbeShPtr& object : {copy, copy->children[0], copy->children[1]})
  {
    EXPECT_EQ(object->awakenings, 1);
    EXPECT_TRUE(object->wasParentCompleteOnAwakening && object->areChildrenNamed);
  }
  EXPECT_EQ(copy->children[0]->parent.lock(), copy);
}

TEST(ClumMemoryCoder, ObjectReachedOnlyWeaklyDecodesAsNull)
{
  const CoderProbeShPtr root = makeFamily();
  const CoderProbeShPtr alone = clonedThrough(ClumMemoryCoder::create(), root->children[0]);
  ASSERT_TRUE(alone);
  EXPECT_FALSE(alone->parent.lock());
  // The object is met weakly first, and written later.
  const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
  coder->encodeWeakObjectWkPtr(root, "weak");
  coder->encodeObjectShPtr(root, "strong");
  EXPECT_TRUE(coder->decodeObject("weak"));
  EXPECT_EQ(coder->decodeObject("weak"), coder->decodeObject("strong"));
}

TEST(ClumMemoryCoder, DropsWhatCannotBeReadOrMade)
{
  const LogCapture log;
  const CoderProbeShPtr root = makeFamily();
  root->children[0]->isUnreadable = true;
  const CoderProbeShPtr copy = clonedThrough(ClumMemoryCoder::create(), root);
  ASSERT_TRUE(copy);
  EXPECT_FALSE(copy->children[0]);
  ASSERT_TRUE(copy->children[1]);
  EXPECT_FALSE(copy->children[1]->other.lock());
  EXPECT_EQ(log.count(), 1u);

  const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
  EXPECT_TRUE(coder->encodeObjectShPtr(UnlistedProbe::create(), "object").failed());
  EXPECT_FALSE(coder->decodeObject("object"));
  EXPECT_EQ(log.count(), 2u);
}

TEST(ClumMemoryCoder, PinsAndReplacesObjects)
{
  const CoderProbeShPtr root = makeFamily();
  const CoderProbeShPtr first = root->children[0];
  const CoderProbeShPtr copy =
    boost::dynamic_pointer_cast<CoderProbe>(root->cloneByCodingWithPinnedObjects({first, root}));
  ASSERT_TRUE(copy);
  EXPECT_NE(copy, root);
  EXPECT_EQ(copy->children[0], first);
  EXPECT_EQ(copy->children[1]->other.lock(), first);
  EXPECT_EQ(first->awakenings, 0);

  const CoderProbeShPtr other = makeFamily();
  const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
  coder->setDecodedRecursive(root.get(), other.get());
  const CoderProbeShPtr holder = CoderProbe::create("holder");
  holder->extra = root->children[1];
  holder->other = root;
  EXPECT_EQ(clonedThrough(coder, holder)->extra, other->children[1]);
  EXPECT_EQ(coder->decode<CoderProbe>("object")->other.lock(), other);
}

TEST(ClumCloner, SharesWhatItsFiltersName)
{
  const CoderProbeShPtr root = makeFamily();
  const ClumClonerShPtr cloner = ClumCloner::create();
  const CoderProbe* first = root->children[0].get();
  cloner->addNonClonableFilter(
    ClumCallbackObjectFilter([first](const ClumObject& object) { return &object == first; }));
  const CoderProbeShPtr copy = clonedThrough(cloner, root);
  EXPECT_EQ(copy->children[0].get(), first);
  EXPECT_NE(copy->children[1], root->children[1]);

  const ClumClonerShPtr byClass = ClumCloner::create();
  byClass->addNonClonableClass(ClumMutableCodable::CLASS);
  EXPECT_EQ(clonedThrough(byClass, root), root);
}

TEST(ClumCodable, EqualByCodingComparesGraphsAndOutsideReferences)
{
  const CoderProbeShPtr root = makeFamily();
  EXPECT_TRUE(root->equalByCoding(*root->cloneByCoding()));
  const CoderProbeShPtr changed = makeFamily();
  EXPECT_TRUE(root->equalByCoding(*changed));
  changed->children[1]->other = changed->children[1];
  EXPECT_FALSE(root->equalByCoding(*changed));
  changed->children[1]->other = root->children[0];
  EXPECT_FALSE(root->equalByCoding(*changed));
  changed->children[1]->other = changed->children[0];
  changed->children[0]->name = "third";
  EXPECT_FALSE(root->equalByCoding(*changed));

  // Two that know one outsider are equal, two with different parents are not.
  const CoderProbeShPtr a = CoderProbe::create("x"), b = CoderProbe::create("x");
  a->other = b->other = root;
  EXPECT_TRUE(a->equalByCoding(*b));
  b->other = changed;
  EXPECT_FALSE(a->equalByCoding(*b));
}

TEST(ClumCoder, VersionsCompareByMagnitude)
{
  const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
  EXPECT_EQ(coder->decodedVersion(), LUM_CODING_VERSION);
  EXPECT_FALSE(coder->isDecodedVersionStrictlyLowerThan(-600000));
  EXPECT_FALSE(coder->isDecodedVersionStrictlyLowerThan(-601000));
  EXPECT_TRUE(coder->isDecodedVersionStrictlyLowerThan(-601001));
}
