#include "foundation/lumBox.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryCollection.h"
#include "foundation/lumInstance.h"
#include "foundation/lumMat4.h"
#include "foundation/lumMemoryCoder.h"
#include "foundation/lumVersion.h"
#include "foundation/lumXMLCoder.h"
#include "foundation/codedValues.h"
#include "support/logCapture.h"

#include <clocale>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

LUM_HANDLES(FileProbe)

/// Owns a left and a right, knows another weakly.
class FileProbe : public ClumMutableCodable
{
  LUM_CONCRETE(FileProbe, ClumMutableCodable);

public:
  static FileProbeShPtr create(int i_number) { return lumCreate<FileProbe>(i_number); }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override
  {
    ClumMutableCodable::encodeWithCoder(i_coder);
    i_coder->encodeInt(number, "number");
    i_coder->encodeObjectShPtr(left, "left");
    i_coder->encodeObjectShPtr(right, "right");
    i_coder->encodeWeakObjectWkPtr(other, "other");
    i_coder->beginVectorEncoding("pairs");
    for (const auto& [first, second] : pairs)
    {
      i_coder->encodeInt(first, "first");
      i_coder->encodeString(second, "second");
    }
    i_coder->endVectorEncoding();
  }

  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override
  {
    const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
    number = i_coder->decodeInt("number");
    left = i_coder->decode<FileProbe>("left");
    right = i_coder->decodePart<FileProbe>("right");
    other = i_coder->decodeWeak<FileProbe>("other");
    i_coder->beginVectorDecoding("pairs");
    while (i_coder->canContinueVectorDecoding())
    {
      const int first = i_coder->decodeInt("first");
      pairs.emplace_back(first, i_coder->decodeString("second"));
    }
    i_coder->endVectorDecoding();
    if (!i_coder->isDecodedVersionStrictlyLowerThan(-500000))
      isNew = true;
    return number < 0 ? lmStatus(lmStatus::FAILURE) : status;
  }

  void awake() override
  {
    ClumMutableCodable::awake();
    order = s_awakened++;
  }

  int number = 0;
  FileProbeShPtr left;
  FileProbeShPtr right;
  FileProbeWkPtr other;
  std::vector<std::pair<int, std::string>> pairs;
  bool isNew = false;
  int order = -1;
  static int s_awakened;

protected:
  FileProbe() = default;
  explicit FileProbe(int i_number) : number(i_number) {}
};

int FileProbe::s_awakened = 0;

LUM_DESCRIBE(FileProbe)
{
}

namespace
{
/// A text with the given elements, by a release.
std::string textWith(const std::string& i_elements, const std::string& i_version = "-601000")
{
  return "<orvane generator=\"orvane\" version=\"" + i_version + "\" revision=\"0\">\n" + i_elements + "\n</orvane>\n";
}

/// The coder that another reads the text of.
ClumXMLCoderShPtr readBack(const ClumXMLCoderShPtr& i_coder)
{
  const ClumXMLCoderShPtr reader = ClumXMLCoder::create();
  EXPECT_TRUE(reader->parse(i_coder->data()).succeeded());
  return reader;
}

template <class T, class BITS>
T fromBits(BITS i_bits)
{
  T value;
  static_assert(sizeof(value) == sizeof(i_bits));
  std::memcpy(&value, &i_bits, sizeof(value));
  return value;
}

template <class BITS, class T>
BITS bitsOf(T i_value)
{
  return fromBits<BITS>(i_value);
}

std::string contentsOf(const std::filesystem::path& i_path)
{
  std::ifstream file(i_path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

/// A folder of its own for each test.
class ClumXMLFile : public testing::Test
{
protected:
  void SetUp() override
  {
    std::string name = (std::filesystem::temp_directory_path() / "orvaneXXXXXX").string();
    ASSERT_NE(::mkdtemp(name.data()), nullptr);
    m_folder = name;
  }
  void TearDown() override { std::filesystem::remove_all(m_folder); }

  std::size_t countFiles() const
  {
    return static_cast<std::size_t>(
      std::distance(std::filesystem::directory_iterator(m_folder), std::filesystem::directory_iterator()));
  }

  std::filesystem::path m_folder;
};

ClumXMLCoderShPtr coderOf(const ClumCodableConstShPtr& i_object)
{
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  coder->encodeObjectShPtr(i_object, "object");
  return coder;
}
} // namespace

TEST(ClumXMLCoder, KeepsEveryKindOfValueButNoPointer)
{
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  const CodedValues values;
  values.encode(*coder);
  coder->encodePointer(nullptr, "pointer");
  coder->encodeSharedPointer(ShPtr<void>(), "shared");
  const ClumXMLCoderShPtr read = readBack(coder);
  EXPECT_EQ(read->data(), coder->data());
  values.expectIn(*read);
  EXPECT_EQ(read->decodePointer("pointer"), nullptr);
  EXPECT_FALSE(read->decodeSharedPointer("shared"));
  EXPECT_TRUE(read->decodingStatus().succeeded());

  const LogCapture log;
  int target = 0;
  const ClumXMLCoderShPtr other = ClumXMLCoder::create();
  other->encodePointer(&target, "target");
  EXPECT_TRUE(log.contains("'target'"));
  EXPECT_EQ(other->writeToFile("unused"), ClumXMLCoder::UNCODABLE_OBJECT_ERROR);
  EXPECT_EQ(log.count(), 2u);
}

TEST(ClumXMLCoder, KeepsDoublesToTheBitInEveryLocale)
{
  std::vector<double> values{0.0,
                             -0.0,
                             0.1,
                             1.0 / 3.0,
                             std::numeric_limits<double>::denorm_min(),
                             -std::numeric_limits<double>::max(),
                             std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN(),
                             fromBits<double>(std::uint64_t(0xfff8000000000000u)),
                             fromBits<double>(std::uint64_t(0x7ff800000000beefu))};
  // Patterns of all exponents.
  std::uint64_t bits = 0x9e3779b97f4a7c15u;
  for (int i = 0; i < 2000; ++i, bits = bits * 6364136223846793005u + 1442695040888963407u)
    values.push_back(fromBits<double>(bits));
  const std::string before = std::setlocale(LC_ALL, nullptr);
  for (const char* locale : {"de_DE.UTF-8", "fr_FR.UTF-8", "tr_TR.UTF-8"})
    if (std::setlocale(LC_ALL, locale))
      break;
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  coder->encodeDoubleVector(values, "values");
  for (unsigned int i = 0; i < values.size(); ++i)
    coder->encodeDouble(values[i], "value" + std::to_string(i));
  coder->encodeFloat(fromBits<float>(0x7fc00001u), "float");
  const ClumXMLCoderShPtr read = readBack(coder);
  std::setlocale(LC_ALL, before.c_str());
  std::vector<double> list;
  read->decodeDoubleVector("values", list);
  ASSERT_EQ(list.size(), values.size());
  // Backwards too: a large space is read in any order.
  for (std::size_t i = values.size(); i-- > 0;)
  {
    const bool isSignalling = values[i] != values[i] && (bitsOf<std::uint64_t>(values[i]) & 0x0008000000000000u) == 0;
    if (isSignalling)
      continue; // a processor may quieten them when they are handed around
    EXPECT_EQ(bitsOf<std::uint64_t>(list[i]), bitsOf<std::uint64_t>(values[i])) << i;
    EXPECT_EQ(bitsOf<std::uint64_t>(read->decodeDouble("value" + std::to_string(i))), bitsOf<std::uint64_t>(values[i]));
  }
  EXPECT_EQ(bitsOf<std::uint32_t>(read->decodeFloat("float")), 0x7fc00001u);
}

TEST(ClumXMLCoder, KeepsEveryByteOfAString)
{
  std::string all;
  for (int i = 0; i < 256; ++i)
    all += static_cast<char>(i);
  std::vector<std::string> texts{all,
                                 "",
                                 " ",
                                 "\n\t\r \r\n",
                                 "<&>\"'&amp;&#10;]]>",
                                 "\xc3\xa9 \xe2\x82\xac \xf0\x9f\xa4\x96",
                                 "\xed\xa0\x80",     // a surrogate
                                 "\xef\xbf\xbf",     // no character
                                 "\xc0\x80",         // an overlong zero
                                 "\xf4\x90\x80\x80", // beyond the last character
                                 "\xe2\x82",         // broken off
                                 std::string("\0", 1),
                                 std::string(100000, 'x')};
  for (int i = 0; i < 256; ++i)
    texts.emplace_back(2, static_cast<char>(i));
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  coder->encodeStringVector(texts, "texts");
  coder->encodeInt(1, "a <key> & \"more\"");
  const ClumXMLCoderShPtr read = readBack(coder);
  std::vector<std::string> back;
  read->decodeStringVector("texts", back);
  EXPECT_EQ(back, texts);
  EXPECT_EQ(read->decodeInt("a <key> & \"more\""), 1);

  const LogCapture log;
  const ClumXMLCoderShPtr bad = ClumXMLCoder::create();
  bad->encodeInt(1, "\x01");
  EXPECT_EQ(bad->data(), "");
  EXPECT_EQ(bad->writeToFile("unused"), ClumXMLCoder::UNCODABLE_OBJECT_ERROR);
  EXPECT_EQ(log.count(), 2u);
}

TEST(ClumXMLCoder, KeepsIdentityWeakReferencesAndTheOrderOfAwakening)
{
  const FileProbeShPtr root = FileProbe::create(1), leaf = FileProbe::create(2), outsider = FileProbe::create(3);
  root->left = leaf;
  root->right = FileProbe::create(4);
  root->right->left = leaf;
  leaf->other = root;
  root->other = outsider;
  root->pairs = {{1, "one"}, {2, ""}};
  const ClumXMLCoderShPtr coder = coderOf(root);
  coder->encodeWeakObject(leaf.get(), "leaf");

  const ClumMemoryCoderShPtr memory = ClumMemoryCoder::create();
  memory->encodeObjectShPtr(root, "object");
  for (const ClumGraphCoderShPtr& reader : {ClumGraphCoderShPtr(readBack(coder)), ClumGraphCoderShPtr(memory)})
  {
    FileProbe::s_awakened = 0;
    const FileProbeShPtr copy = reader->decode<FileProbe>("object");
    ASSERT_TRUE(copy);
    ASSERT_TRUE(copy->left && copy->right);
    EXPECT_EQ(copy->right->left, copy->left);
    EXPECT_EQ(copy->left->other.lock(), copy);
    EXPECT_FALSE(copy->other.lock()) << "an object that is only referred to is not written";
    EXPECT_EQ(copy->pairs, root->pairs);
    EXPECT_EQ(copy->self(), copy);
    EXPECT_EQ((std::vector<int>{copy->left->order, copy->right->order, copy->order}), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(reader->decodeObject("object"), copy);
  }
  const ClumXMLCoderShPtr again = readBack(coder);
  EXPECT_EQ(again->decodeObject("leaf"), again->decode<FileProbe>("object")->left);
}

TEST(ClumXMLCoder, TellsTheReleaseThatWroteAText)
{
  const auto read = [](const std::string& i_version)
  {
    const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
    EXPECT_TRUE(coder->parse(textWith("<object id='7' class='FileProbe'/><object key='object' ref='7'/>", i_version))
                  .succeeded());
    EXPECT_EQ(std::to_string(coder->decodedVersion()), i_version);
    EXPECT_EQ(coder->decodedGenerator(), "orvane");
    EXPECT_EQ(coder->decodedRevision(), 0);
    return coder->decode<FileProbe>("object")->isNew;
  };
  EXPECT_FALSE(read("-499999"));
  EXPECT_TRUE(read("-500000"));
  EXPECT_TRUE(read("-601000"));
  const ClumXMLCoderShPtr coder = coderOf(FileProbe::create(1));
  EXPECT_EQ(coder->decodedVersion(), LUM_CODING_VERSION);
  EXPECT_NE(coder->data().find("version=\"-601000\""), std::string::npos);
}

TEST(ClumXMLCoder, RefusesTextsThatAreNoGraphAndNamesThePlace)
{
  const std::string probe = "<object id='1' class='FileProbe'/>";
  const struct
  {
    const char* what;
    std::string text;
    const char* place;
  } cases[] = {
    {"empty", "", "line 1"},
    {"no xml", "hello", "line 1"},
    {"foreign", "<svg/>", "line 1, column 2"},
    {"broken off", textWith(probe).substr(0, 70), "line 2"},
    {"zero byte", textWith(std::string("<int key='a' value='1'/>\0", 25)), "line 2, column 25"},
    {"two roots", textWith("") + textWith(""), "line 4"},
    {"document type", "<!DOCTYPE orvane>" + textWith(""), "line 1"},
    {"entities",
     "<!DOCTYPE l [<!ENTITY a 'aaaaaaaa'><!ENTITY b '&a;&a;&a;&a;'><!ENTITY c '&b;&b;&b;&b;'>]>" +
       textWith("<string key='k' value='&c;'/>"),
     "line 1"},
    {"no version", "<orvane generator='orvane' revision='0'/>", "'version' is missing"},
    {"version of no release", textWith("", "7"), "not a negative number"},
    {"text", textWith("stray"), "line 1"},
    {"data section", textWith("<![CDATA[x]]>"), "line 2"},
    {"unknown element", textWith("<script key='k'/>"), "'script' is unknown"},
    {"missing key", textWith("<int value='1'/>"), "'key' is missing"},
    {"missing value", textWith("<int key='k'/>"), "'value' is missing"},
    {"contents", textWith("<int key='k' value='1'><int key='k' value='1'/></int>"), "has contents"},
    {"int out of range", textWith("<int key='k' value='2147483648'/>"), "out of range"},
    {"negative unsigned", textWith("<unsigned key='k' value='-1'/>"), "out of range"},
    {"fraction as int", textWith("<int key='k' value='1.5'/>"), "no number"},
    {"double out of range", textWith("<double key='k' value='1e999'/>"), "out of range"},
    {"double that vanishes", textWith("<double key='k' value='1e-999'/>"), "out of range"},
    {"comma", textWith("<double key='k' value='1,5'/>"), "no number"},
    {"hexadecimal", textWith("<double key='k' value='0x10'/>"), "no number"},
    {"infinity by another name", textWith("<double key='k' value='infinity'/>"), "no number"},
    {"not a nan", textWith("<double key='k' value='nan:3ff0000000000000'/>"), "no number"},
    {"no bool", textWith("<bool key='k' value='1'/>"), "neither"},
    {"short frame", textWith("<mat4 key='k' value='1 2 3'/>"), "not of 16 numbers"},
    {"no base 64", textWith("<buffer key='k' value='a=bc'/>"), "base 64"},
    {"bytes that are no text", textWith("<string key='k' value='\xff'/>"), "no text"},
    {"unknown class", textWith("<object id='1' class='CorvNothing'/>"), "'CorvNothing'"},
    {"abstract class", textWith("<object id='1' class='ClumGeometry'/>"), "'ClumGeometry'"},
    {"class without name", textWith("<object id='1'/>"), "'class' is missing"},
    {"id twice", textWith(probe + "\n" + probe), "line 3"},
    {"dangling reference", textWith("<object key='k' ref='2'/>"), "no object of the id 2"},
    {"dangling weak reference", textWith("<weak key='k' ref='2'/>"), "no object of the id 2"},
    {"object that owns itself", textWith("<object id='1' class='FileProbe'><object key='left' ref='1'/></object>"),
     "owns itself"},
    {"circle of owners",
     textWith("<object id='1' class='FileProbe'><object key='left' ref='2'/></object>\n"
              "<object id='2' class='FileProbe'><object key='right' ref='1'/></object>"),
     "owns itself"},
  };
  for (const auto& each : cases)
  {
    const LogCapture log;
    const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
    EXPECT_EQ(coder->parse(each.text, "some.xml"), ClumXMLCoder::MALFORMED_TEXT_ERROR) << each.what;
    EXPECT_EQ(coder->decodingStatus(), ClumXMLCoder::MALFORMED_TEXT_ERROR);
    EXPECT_EQ(log.count(), 1u) << each.what;
    EXPECT_TRUE(log.contains("some.xml, line ")) << each.what;
    EXPECT_TRUE(log.contains(each.place)) << each.what;
    EXPECT_FALSE(coder->hasKey("k")) << "nothing is left of a text that was refused";
  }
}

TEST(ClumXMLCoder, RefusesGraphsThatTheirClassesDoNotTake)
{
  const std::string fine = "<object id='9' class='FileProbe'/>";
  const struct
  {
    const char* what;
    std::string objects;
    const char* reason;
  } cases[] = {
    {"another type", "<object id='1' class='FileProbe'><string key='number' value='1'/></object>", "another type"},
    {"a number for an object", "<object id='1' class='FileProbe'><int key='left' value='1'/></object>", "another type"},
    {"refused by the class", "<object id='1' class='FileProbe'><int key='number' value='-1'/></object>",
     "not whole or sound"},
    {"refused far below",
     "<object id='1' class='FileProbe'><object key='left' ref='2'/></object>"
     "<object id='2' class='FileProbe'><object key='left' ref='3'/></object>"
     "<object id='3' class='FileProbe'><int key='number' value='-1'/></object>",
     "not whole or sound"},
    {"an object of another class",
     "<object id='1' class='FileProbe'><object key='left' ref='2'/></object><object id='2' "
     "class='ClumSequenceOperation'/>",
     "ClumSequenceOperation"},
    {"weakly what is owned", fine + "<object id='1' class='FileProbe'><weak key='left' ref='1'/></object>",
     "only refers"},
    {"one part of two",
     fine + "<object id='1' class='FileProbe'><object key='left' ref='2'/><object key='right' ref='9'/></object>"
            "<object id='2' class='FileProbe'><object key='right' ref='9'/></object>",
     "already part"},
    {"a record that begins otherwise",
     "<object id='1' class='FileProbe'><vector key='pairs'><int key='last' value='1'/></vector></object>", "'last'"},
    {"a list for a vector of records", "<object id='1' class='FileProbe'><ints key='pairs' value='1 2'/></object>",
     "another type"},
  };
  for (const auto& each : cases)
  {
    const LogCapture log;
    const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
    ASSERT_TRUE(coder->parse(textWith(each.objects + "<object key='object' ref='1'/>"), "some.xml").succeeded())
      << each.what;
    FileProbe::s_awakened = 0;
    EXPECT_FALSE(coder->decodeObject("object")) << each.what;
    EXPECT_EQ(coder->decodingStatus(), ClumXMLCoder::REFUSED_OBJECT_ERROR);
    EXPECT_EQ(FileProbe::s_awakened, 0) << "nothing of a refused graph is awakened";
    EXPECT_EQ(log.count(), 1u) << each.what;
    EXPECT_TRUE(log.contains("some.xml, line 2") && log.contains(each.reason)) << each.what;
    EXPECT_FALSE(coder->decodeObject("object"));
  }
}

TEST(ClumXMLCoder, RefusesDepthWithoutExhaustingTheStack)
{
  const LogCapture log;
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  constexpr int DEPTH = 1000000;
  std::string nested;
  for (const char* tag : {"<vector key='k'>", "</vector>"})
    for (int i = 0; i < DEPTH; ++i)
      nested += tag;
  EXPECT_EQ(coder->parse(textWith(nested)), ClumXMLCoder::MALFORMED_TEXT_ERROR);
  EXPECT_TRUE(log.contains("depth"));

  std::string chain = "<object key='object' ref='0'/>";
  for (int i = 0; i < DEPTH / 10; ++i)
    chain += "<object id='" + std::to_string(i) + "' class='FileProbe'><object key='left' ref='" +
             std::to_string(i + 1) + "'/></object>";
  chain += "<object id='" + std::to_string(DEPTH / 10) + "' class='FileProbe'/>";
  ASSERT_TRUE(coder->parse(textWith(chain)).succeeded());
  EXPECT_FALSE(coder->decodeObject("object"));
  EXPECT_EQ(log.count(), 2u);

  // What is too deep to be read is not written either; what is just deep enough is.
  const auto chained = [](int i_count)
  {
    const FileProbeShPtr first = FileProbe::create(0);
    FileProbeShPtr last = first;
    for (int i = 1; i < i_count; ++i)
      last = last->left = FileProbe::create(i);
    return first;
  };
  EXPECT_TRUE(readBack(coderOf(chained(1000)))->decodeObject("object"));
  EXPECT_EQ(coderOf(chained(1001))->writeToFile("unused"), ClumXMLCoder::UNCODABLE_OBJECT_ERROR);
}

TEST(ClumXMLCoder, RefusesSharingThatUnfoldsWithoutEnd)
{
  const auto doubling = [](int i_levels)
  {
    std::string objects = "<object key='object' ref='0'/>";
    for (int i = 0; i <= i_levels; ++i)
    {
      const std::string next = "' ref='" + std::to_string(i + 1) + "'/>";
      objects += "<object id='" + std::to_string(i) + "' class='ClumSequenceOperation'><vector key='operations'>";
      if (i < i_levels)
        objects += "<object key='operations/0" + next + "<object key='operations/1" + next;
      objects += "</vector></object>";
    }
    return textWith(objects);
  };
  const LogCapture log;
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  EXPECT_EQ(coder->parse(doubling(60)), ClumXMLCoder::MALFORMED_TEXT_ERROR);
  EXPECT_TRUE(log.contains("unfold"));
  EXPECT_TRUE(coder->parse(doubling(15)).succeeded());
}

TEST(ClumXMLCoder, TakesAMillionFlatElements)
{
  std::string flat;
  for (int i = 0; i < 1000000; ++i)
    flat += "<bool key='k' value='true'/>";
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  ASSERT_TRUE(coder->parse(textWith(flat)).succeeded());
  EXPECT_FALSE(coder->hasKey("absent"));
  EXPECT_TRUE(coder->decodeBool("k"));
}

TEST_F(ClumXMLFile, IsWrittenWholeAndReadBack)
{
  const std::filesystem::path path = m_folder / "a.xml";
  const ClumGeometryCollectionShPtr group = ClumGeometryCollection::create();
  group->addMember(ClumBox::create(1.0, 2.0, 3.0));
  group->addMember(ClumInstance::create(ClumBox::create(0.1, 0.2, 0.3)));
  ASSERT_TRUE(coderOf(group)->writeToFile(path.string()).succeeded());
  const ClumXMLCoderShPtr reader = ClumXMLCoder::create();
  ASSERT_TRUE(reader->parseFile(path.string()).succeeded());
  const ClumCodableShPtr read = reader->decodeObject("object");
  ASSERT_TRUE(read);
  EXPECT_TRUE(read->equalByCoding(*group));

  // A second writing replaces the file, keeps its rights and follows a link.
  std::filesystem::permissions(path, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  std::filesystem::create_symlink("a.xml", m_folder / "link.xml");
  ASSERT_TRUE(coderOf(FileProbe::create(5))->writeToFile((m_folder / "link.xml").string()).succeeded());
  EXPECT_TRUE(std::filesystem::is_symlink(m_folder / "link.xml"));
  EXPECT_EQ(contentsOf(path), coderOf(FileProbe::create(5))->data());
  EXPECT_EQ(std::filesystem::status(path).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  EXPECT_EQ(countFiles(), 2u);
}

TEST_F(ClumXMLFile, FailuresNamePathAndReason)
{
  const LogCapture log;
  const ClumXMLCoderShPtr coder = coderOf(FileProbe::create(1));
  const std::string nowhere = (m_folder / "absent" / "a.xml").string();
  EXPECT_EQ(coder->writeToFile(nowhere), ClumXMLCoder::UNWRITABLE_FILE_ERROR);
  EXPECT_EQ(coder->parseFile(nowhere), ClumXMLCoder::UNREADABLE_FILE_ERROR);
  EXPECT_TRUE(log.contains("Cannot write " + nowhere + ": No such file") &&
              log.contains("Cannot read " + nowhere + ": No such file"));
  EXPECT_EQ(coder->decodingStatus(), ClumXMLCoder::UNREADABLE_FILE_ERROR);
  // Only regular files are read and replaced.
  EXPECT_EQ(coder->writeToFile(m_folder.string()), ClumXMLCoder::UNWRITABLE_FILE_ERROR);
  EXPECT_EQ(coder->parseFile(m_folder.string()), ClumXMLCoder::UNREADABLE_FILE_ERROR);
  EXPECT_EQ(coder->writeToFile("/dev/null"), ClumXMLCoder::UNWRITABLE_FILE_ERROR);
  EXPECT_EQ(coder->parseFile("/dev/null"), ClumXMLCoder::UNREADABLE_FILE_ERROR);
  EXPECT_EQ(coder->writeToFile(""), ClumXMLCoder::UNWRITABLE_FILE_ERROR);
  EXPECT_EQ(countFiles(), 0u);
}

TEST_F(ClumXMLFile, FullDiskOrAKillLeavesTheOldOne)
{
  const std::filesystem::path path = m_folder / "a.xml";
  ASSERT_TRUE(coderOf(FileProbe::create(1))->writeToFile(path.string()).succeeded());
  const std::string before = contentsOf(path);
  const ClumXMLCoderShPtr large = ClumXMLCoder::create();
  large->encodeString(std::string(1 << 20, 'x'), "large");
  // No process may write more than 64 kB into a file: the signal of that either fails the writing or kills.
  for (const bool doesKill : {false, true})
  {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0)
    {
      const LogCapture log;
      std::signal(SIGXFSZ, doesKill ? SIG_DFL : SIG_IGN);
      const rlimit limit{1 << 16, 1 << 16};
      const rlimit noCore{0, 0};
      ::setrlimit(RLIMIT_CORE, &noCore);
      ::setrlimit(RLIMIT_FSIZE, &limit);
      const lmStatus status = large->writeToFile(path.string());
      const bool isTold = log.contains("Cannot write " + path.string() + ": File too large");
      ::_exit(status == ClumXMLCoder::UNWRITABLE_FILE_ERROR && isTold ? 0 : 1);
    }
    int result = 0;
    ASSERT_EQ(::waitpid(child, &result, 0), child);
    if (doesKill)
      EXPECT_TRUE(WIFSIGNALED(result)) << "it died in the middle of writing";
    else
      EXPECT_TRUE(WIFEXITED(result) && WEXITSTATUS(result) == 0);
    EXPECT_EQ(contentsOf(path), before);
    EXPECT_EQ(countFiles(), doesKill ? 2u : 1u);
  }
}
