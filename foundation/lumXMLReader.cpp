#include "foundation/lumClass.h"
#include "foundation/lumCodedGraph.h"
#include "foundation/lumRuntime.h"
#include "foundation/lumXMLText.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <pugixml.hpp>

namespace
{
/// Vectors within vectors: the reader calls itself for each.
constexpr unsigned int MAXIMUM_VECTOR_DEPTH = 64;

bool isSpaceCharacter(char i_character)
{
  return i_character == ' ' || i_character == '\t' || i_character == '\n' || i_character == '\r';
}

/// The whole text as a number. Doubles that are out of range are refused, not rounded to infinity or zero.
template <class T>
bool readDigits(std::string_view i_text, T& o_value)
{
  const auto [end, error] = std::from_chars(i_text.data(), i_text.data() + i_text.size(), o_value);
  return error == std::errc() && end == i_text.data() + i_text.size();
}

/// The bits of a "nan:…", or those of the default number that is none.
template <class T, class BITS>
bool readNotANumber(std::string_view i_text, BITS i_default, T& o_value)
{
  BITS bits = i_default;
  if (i_text.size() > 3)
  {
    const std::string_view digits = i_text.substr(4);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), bits, 16);
    if (i_text[3] != ':' || error != std::errc() || end != digits.data() + digits.size())
      return false;
  }
  std::memcpy(&o_value, &bits, sizeof(bits));
  return o_value != o_value;
}

template <class T, class BITS>
bool readReal(std::string_view i_text, BITS i_defaultNaN, T& o_value)
{
  if (i_text.substr(0, 3) == "nan")
    return readNotANumber(i_text, i_defaultNaN, o_value);
  // What is accepted beside digits is "inf" alone, not the other names that the conversion knows.
  const bool isNegative = !i_text.empty() && i_text[0] == '-';
  const char first = i_text.size() > isNegative ? i_text[isNegative] : '\0';
  const bool isInfinite = i_text.substr(isNegative) == "inf";
  return ((first >= '0' && first <= '9') || first == '.' || isInfinite) && readDigits(i_text, o_value);
}

template <class T>
bool readNumber(std::string_view i_text, T& o_value)
{
  return readDigits(i_text, o_value);
}

bool readNumber(std::string_view i_text, double& o_value)
{
  return readReal(i_text, std::uint64_t(0x7ff8000000000000u), o_value);
}

bool readNumber(std::string_view i_text, float& o_value)
{
  return readReal(i_text, std::uint32_t(0x7fc00000u), o_value);
}

/// A list of numbers with white space between them.
template <class T>
bool readNumbers(std::string_view i_text, std::vector<T>& o_values)
{
  const char* at = i_text.data();
  const char* const end = at + i_text.size();
  o_values.reserve(i_text.size() / 8 + 1); // near enough for most lists
  while (true)
  {
    while (at != end && isSpaceCharacter(*at))
      ++at;
    if (at == end)
      return true;
    const char* const begin = at;
    while (at != end && !isSpaceCharacter(*at))
      ++at;
    o_values.emplace_back();
    if (!readNumber(std::string_view(begin, static_cast<std::size_t>(at - begin)), o_values.back()))
      return false;
  }
}

int base64Digit(char i_character)
{
  if (i_character >= 'A' && i_character <= 'Z')
    return i_character - 'A';
  if (i_character >= 'a' && i_character <= 'z')
    return i_character - 'a' + 26;
  if (i_character >= '0' && i_character <= '9')
    return i_character - '0' + 52;
  return i_character == '+' ? 62 : i_character == '/' ? 63 : -1;
}

bool readBase64(std::string_view i_text, TCodedBuffer& o_bytes)
{
  if (i_text.size() % 4 != 0)
    return false;
  const std::size_t padding = i_text.empty() ? 0 : i_text.size() - std::min(i_text.find('='), i_text.size());
  if (padding > 2)
    return false;
  o_bytes.reserve(i_text.size() / 4 * 3);
  unsigned int group = 0;
  for (std::size_t i = 0; i < i_text.size(); ++i)
  {
    const int digit = i < i_text.size() - padding ? base64Digit(i_text[i]) : 0;
    if (digit < 0)
      return false;
    group = group << 6 | static_cast<unsigned int>(digit);
    if (i % 4 != 3)
      continue;
    for (int shift = 16; shift >= 0; shift -= 8)
      o_bytes.push_back(static_cast<unsigned char>(group >> shift & 0xffu));
    group = 0;
  }
  o_bytes.resize(o_bytes.size() - padding);
  return true;
}

/// Fills a graph from a parsed text. Each operation returns false, with the fault noted, as soon as something is wrong.
class CXMLReader
{
public:
  CXMLReader(const std::string& i_text, CCodedGraph& io_graph, CXMLFault& o_fault)
    : m_text(i_text), m_graph(io_graph), m_fault(o_fault)
  {
  }

  bool read(const pugi::xml_document& i_document)
  {
    pugi::xml_node root;
    for (const pugi::xml_node& node : i_document.children())
    {
      if (node.type() == pugi::node_doctype)
        return refuse(node, "a document type is not taken");
      if (node.type() != pugi::node_element || root)
        return refuse(node, "there is more than one element");
      root = node;
    }
    if (std::string_view(root.name()) != "orvane")
      return refuse(root, "this is not a file of this library");
    return readHeader(root) && readObjectList(root) && readContents(root);
  }

private:
  bool refuse(const pugi::xml_node& i_node, const std::string& i_reason)
  {
    m_fault.reason = i_reason;
    m_fault.place = i_node.offset_debug() > 0 ? static_cast<std::size_t>(i_node.offset_debug()) : 0;
    return false;
  }

  bool readHeader(const pugi::xml_node& i_root)
  {
    std::string_view generator;
    if (!readText(i_root, "generator", generator) || !readValue(i_root, "version", m_graph.version) ||
        !readValue(i_root, "revision", m_graph.revision))
      return false;
    m_graph.generator = std::string(generator);
    return m_graph.version < 0 || refuse(i_root, "the version is not a negative number");
  }

  /// Finds the objects, so that references can lead forward.
  bool readObjectList(const pugi::xml_node& i_root)
  {
    std::size_t line = 1, counted = 0;
    for (const pugi::xml_node& node : i_root.children())
    {
      if (!isObject(node))
        continue;
      std::size_t id = 0;
      std::string_view name;
      if (!readValue(node, "id", id) || !readText(node, "class", name))
        return false;
      if (!m_ranks.emplace(id, m_graph.objects.size()).second)
        return refuse(node, "the id " + std::to_string(id) + " stands twice");
      const ClumClassShPtr classObject = ClumRuntime::classWithName(std::string(name));
      const bool canBeMade = classObject && classObject->allocator() && classObject->isA(*ClumCodable::CLASS);
      if (!canBeMade)
        return refuse(node, "no object can be made of the class '" + std::string(name) + "'");
      CCodedObject& object = m_graph.objects.emplace_back();
      object.state = CCodedObject::WRITTEN;
      object.classObject = classObject;
      const std::size_t place = static_cast<std::size_t>(node.offset_debug());
      line += static_cast<std::size_t>(std::count(m_text.begin() + static_cast<std::ptrdiff_t>(counted),
                                                  m_text.begin() + static_cast<std::ptrdiff_t>(place), '\n'));
      counted = place;
      object.line = line;
      m_places.push_back(place);
    }
    return true;
  }

  bool readContents(const pugi::xml_node& i_root)
  {
    std::size_t rank = 0;
    for (const pugi::xml_node& node : i_root.children())
      if (!(isObject(node) ? readSpace(node, m_graph.objects[rank++].space, 0) : readEntry(node, m_graph.root, 0)))
        return false;
    std::size_t object = 0;
    if (lumCheckOwners(m_graph, object, m_fault.reason))
      return true;
    m_fault.place = m_places[object];
    return false;
  }

  /// An "object" with an id is one; without, it is a reference to one.
  static bool isObject(const pugi::xml_node& i_node)
  {
    return std::string_view(i_node.name()) == "object" && i_node.attribute("id");
  }

  bool readSpace(const pugi::xml_node& i_node, CCodedSpace& io_space, unsigned int i_depth)
  {
    std::size_t count = 0;
    for (pugi::xml_node child = i_node.first_child(); child; child = child.next_sibling())
      ++count;
    io_space.entries.reserve(count);
    for (pugi::xml_node child = i_node.first_child(); child; child = child.next_sibling())
      if (!readEntry(child, io_space, i_depth))
        return false;
    return true;
  }

  /// Any bytes, for what is made sure of otherwise.
  bool readBytes(const pugi::xml_node& i_node, const char* i_attribute, std::string_view& o_text)
  {
    const pugi::xml_attribute attribute = i_node.attribute(i_attribute);
    if (!attribute)
      return refuse(i_node, std::string("the attribute '") + i_attribute + "' is missing");
    o_text = attribute.value();
    return true;
  }

  bool readText(const pugi::xml_node& i_node, const char* i_attribute, std::string_view& o_text)
  {
    if (!readBytes(i_node, i_attribute, o_text))
      return false;
    return lumIsXMLText(o_text.data(), o_text.size()) ||
           refuse(i_node, std::string("the attribute '") + i_attribute + "' holds characters that are no text");
  }

  template <class T>
  bool readValue(const pugi::xml_node& i_node, const char* i_attribute, T& o_value)
  {
    std::string_view text;
    return readBytes(i_node, i_attribute, text) &&
           (readNumber(text, o_value) || refuse(i_node, std::string("the attribute '") + i_attribute +
                                                          "' is no number of the kind, or out of range"));
  }

  bool readEntry(const pugi::xml_node& i_node, CCodedSpace& io_space, unsigned int i_depth)
  {
    using TRead = bool (CXMLReader::*)(const pugi::xml_node&, TCodedValue&, unsigned int);
    static const std::unordered_map<std::string_view, TRead> s_kinds = {
      {"int", &CXMLReader::number<int>},
      {"unsigned", &CXMLReader::number<unsigned int>},
      {"size", &CXMLReader::number<std::size_t>},
      {"float", &CXMLReader::number<float>},
      {"double", &CXMLReader::number<double>},
      {"bool", &CXMLReader::boolean},
      {"string", &CXMLReader::string},
      {"bytes", &CXMLReader::bytes},
      {"color", &CXMLReader::color},
      {"mat4", &CXMLReader::mat4},
      {"vect3", &CXMLReader::vect3},
      {"buffer", &CXMLReader::buffer},
      {"ints", &CXMLReader::numbers<int>},
      {"unsigneds", &CXMLReader::numbers<unsigned int>},
      {"sizes", &CXMLReader::numbers<std::size_t>},
      {"floats", &CXMLReader::numbers<float>},
      {"doubles", &CXMLReader::numbers<double>},
      {"bools", &CXMLReader::booleans},
      {"object", &CXMLReader::reference},
      {"weak", &CXMLReader::reference},
      {"vector", &CXMLReader::vector},
    };
    if (i_node.type() != pugi::node_element)
      return refuse(i_node, "there is text or a data section where an element is due");
    const auto kind = s_kinds.find(i_node.name());
    if (kind == s_kinds.end())
      return refuse(i_node, std::string("the element '") + i_node.name() + "' is unknown");
    std::string_view key;
    if (!readText(i_node, "key", key))
      return false;
    if (kind->first != "vector" && i_node.first_child())
      return refuse(i_node, "the element has contents");
    CCodedEntry& entry = io_space.entries.emplace_back();
    entry.key = m_graph.keys.keep(key);
    return (this->*kind->second)(i_node, entry.value, i_depth);
  }

  template <class T>
  bool number(const pugi::xml_node& i_node, TCodedValue& o_value, unsigned int)
  {
    return readValue(i_node, "value", o_value.emplace<T>());
  }

  template <class T>
  bool numbers(const pugi::xml_node& i_node, TCodedValue& o_value, unsigned int)
  {
    return readList(i_node, o_value.emplace<std::vector<T>>());
  }

  template <class T>
  bool readList(const pugi::xml_node& i_node, std::vector<T>& o_values)
  {
    std::string_view text;
    return readBytes(i_node, "value", text) &&
           (readNumbers(text, o_values) || refuse(i_node, "the list holds what is no number of the kind"));
  }

  template <class T>
  bool readList(const pugi::xml_node& i_node, std::size_t i_count, std::vector<T>& o_values)
  {
    return readList(i_node, o_values) &&
           (o_values.size() == i_count || refuse(i_node, "the list is not of " + std::to_string(i_count) + " numbers"));
  }

  bool boolean(const pugi::xml_node& i_node, TCodedValue& o_value, unsigned int)
  {
    std::string_view text;
    if (!readText(i_node, "value", text))
      return false;
    o_value = text == "true";
    return text == "true" || text == "false" || refuse(i_node, "the value is neither 'true' nor 'false'");
  }

  bool booleans(const pugi::xml_node& i_node, TCodedValue& o_value, unsigned int)
  {
    std::string_view text;
    if (!readText(i_node, "value", text))
      return false;
    std::vector<bool>& bits = o_value.emplace<std::vector<bool>>();
    for (const char bit : text)
    {
      if (bit != '0' && bit != '1')
        return refuse(i_node, "the value is not of '0' and '1' alone");
      bits.push_back(bit == '1');
    }
    return true;
  }

  bool string(const pugi::xml_node& i_node, TCodedValue& o_value, unsigned int)
  {
    std::string_view text;
    if (!readText(i_node, "value", text))
      return false;
    o_value.emplace<std::string>(text);
    return true;
  }

  bool readBuffer(const pugi::xml_node& i_node, TCodedBuffer& o_bytes)
  {
    std::string_view text;
    return readText(i_node, "value", text) &&
           (readBase64(text, o_bytes) || refuse(i_node, "the value is not in base 64"));
  }

  bool bytes(const pugi::xml_node& i_node, TCodedValue& o_value, unsigned int)
  {
    TCodedBuffer buffer;
    if (!readBuffer(i_node, buffer))
      return false;
    o_value.emplace<std::string>(buffer.begin(), buffer.end());
    return true;
  }

  bool buffer(const pugi::xml_node& i_node, TCodedValue& o_value, unsigned int)
  {
    return readBuffer(i_node, o_value.emplace<TCodedBuffer>());
  }

  bool color(const pugi::xml_node& i_node, TCodedValue& o_value, unsigned int)
  {
    std::vector<float> parts;
    if (!readList(i_node, 4, parts))
      return false;
    o_value = ClumColor(parts[0], parts[1], parts[2], parts[3]);
    return true;
  }

  bool mat4(const pugi::xml_node& i_node, TCodedValue& o_value, unsigned int)
  {
    std::vector<double> values;
    if (!readList(i_node, 16, values))
      return false;
    auto frame = std::make_unique<ClumMat4>();
    std::copy(values.begin(), values.end(), frame->data());
    o_value = std::move(frame);
    return true;
  }

  bool vect3(const pugi::xml_node& i_node, TCodedValue& o_value, unsigned int)
  {
    std::vector<double> values;
    if (!readList(i_node, 3, values))
      return false;
    o_value = ClumVect3(values[0], values[1], values[2]);
    return true;
  }

  bool reference(const pugi::xml_node& i_node, TCodedValue& o_value, unsigned int)
  {
    CCodedReference& reference = o_value.emplace<CCodedReference>();
    reference = {NO_OBJECT, i_node.name()[0] == 'w'};
    if (!i_node.attribute("ref"))
      return true;
    std::size_t id = 0;
    if (!readValue(i_node, "ref", id))
      return false;
    const auto found = m_ranks.find(id);
    if (found == m_ranks.end())
      return refuse(i_node, "there is no object of the id " + std::to_string(id));
    reference.object = found->second;
    return true;
  }

  bool vector(const pugi::xml_node& i_node, TCodedValue& o_value, unsigned int i_depth)
  {
    if (i_depth >= MAXIMUM_VECTOR_DEPTH)
      return refuse(i_node, "vectors stand in vectors to a depth of more than " + std::to_string(MAXIMUM_VECTOR_DEPTH));
    auto space = std::make_unique<CCodedSpace>();
    space->isVector = true;
    CCodedSpace& inner = *space;
    o_value = std::move(space);
    return readSpace(i_node, inner, i_depth + 1);
  }

  const std::string& m_text;
  CCodedGraph& m_graph;
  CXMLFault& m_fault;
  std::vector<std::size_t> m_places;                    ///< of the objects, in the text
  std::unordered_map<std::size_t, std::size_t> m_ranks; ///< of the objects, by id
};
} // namespace

bool lumReadXML(const std::string& i_text, CCodedGraph& io_graph, CXMLFault& o_fault)
{
  const std::size_t zero = i_text.find('\0');
  if (zero != std::string::npos)
  {
    o_fault = {"there is a zero byte", zero};
    return false;
  }
  pugi::xml_document document;
  const unsigned int options =
    pugi::parse_escapes | pugi::parse_wconv_attribute | pugi::parse_doctype | pugi::parse_cdata;
  const pugi::xml_parse_result result =
    document.load_buffer(i_text.data(), i_text.size(), options, pugi::encoding_utf8);
  if (!result)
  {
    o_fault = {result.description(), static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0))};
    return false;
  }
  return CXMLReader(i_text, io_graph, o_fault).read(document);
}
