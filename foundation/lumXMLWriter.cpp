#include "foundation/lumClass.h"
#include "foundation/lumCodedGraph.h"
#include "foundation/lumXMLText.h"

#include <charconv>
#include <cstdint>

namespace
{
const char* const BASE64_DIGITS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint64_t DEFAULT_NAN_BITS = 0x7ff8000000000000u;
constexpr std::uint32_t DEFAULT_FLOAT_NAN_BITS = 0x7fc00000u;

/// The length of the UTF-8 sequence of an allowed character; 0 if there is none.
std::size_t xmlCharacterLength(const unsigned char* i_text, std::size_t i_size)
{
  const unsigned char first = i_text[0];
  if (first < 0x80)
    return first >= 0x20 || first == '\t' || first == '\n' || first == '\r' ? 1 : 0;
  const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || i_size < length)
    return 0;
  unsigned int code = first & (0xffu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i)
  {
    if ((i_text[i] & 0xc0) != 0x80)
      return 0;
    code = (code << 6) | (i_text[i] & 0x3fu);
  }
  constexpr unsigned int SMALLEST[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
  return code < SMALLEST[length] || code > 0x10ffff || isSurrogate || code == 0xfffe || code == 0xffff ? 0 : length;
}

/// Appends the elements of a graph to a text.
class CXMLWriter
{
public:
  CXMLWriter(const CCodedGraph& i_graph, std::string& io_text)
    : m_graph(i_graph), m_text(io_text), m_ids(i_graph.objects.size(), 0)
  {
    // What is only known weakly has no number: equal graphs give equal texts, whatever knows them.
    std::size_t count = 0;
    for (std::size_t rank = 0; rank < m_ids.size(); ++rank)
      m_ids[rank] = isWritten(rank) ? count++ : NO_OBJECT;
  }

  void write()
  {
    m_text += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<orvane generator=\"";
    escape(m_graph.generator);
    m_text += "\" version=\"";
    number(m_graph.version);
    m_text += "\" revision=\"";
    number(m_graph.revision);
    m_text += "\">\n";
    for (std::size_t rank = 0; rank < m_graph.objects.size(); ++rank)
      if (isWritten(rank))
        object(rank);
    space(m_graph.root, 1);
    m_text += "</orvane>\n";
  }

  const std::string& error() const { return m_error; }

private:
  bool isWritten(std::size_t i_rank) const { return m_graph.objects[i_rank].state == CCodedObject::WRITTEN; }

  void object(std::size_t i_rank)
  {
    const CCodedObject& coded = m_graph.objects[i_rank];
    m_text += " <object id=\"";
    number(m_ids[i_rank]);
    m_text += "\" class=\"";
    m_text += coded.classObject->name();
    m_text += "\">\n";
    space(coded.space, 2);
    m_text += " </object>\n";
  }

  void space(const CCodedSpace& i_space, unsigned int i_level)
  {
    for (const CCodedEntry& entry : i_space.entries)
    {
      if (!lumIsXMLText(entry.key.data(), entry.key.size()))
        m_error = "a key holds characters that are no text";
      std::visit([&](const auto& value) { element(entry.key, value, i_level); }, entry.value);
    }
  }

  void begin(const char* i_name, std::string_view i_key, unsigned int i_level)
  {
    m_text.append(i_level, ' ');
    m_text += '<';
    m_text += i_name;
    m_text += " key=\"";
    escape(i_key);
    m_text += '"';
  }

  template <class FILL>
  void leaf(const char* i_name, std::string_view i_key, unsigned int i_level, FILL i_fill)
  {
    begin(i_name, i_key, i_level);
    m_text += " value=\"";
    i_fill();
    m_text += "\"/>\n";
  }

  template <class T>
  void number(T i_value)
  {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof(digits), i_value).ptr;
    m_text.append(digits, end);
  }

  void number(double i_value)
  {
    if (i_value != i_value)
    {
      std::uint64_t bits = 0;
      std::memcpy(&bits, &i_value, sizeof(bits));
      notANumber(bits, bits == DEFAULT_NAN_BITS);
      return;
    }
    char digits[32];
    m_text.append(digits, std::to_chars(digits, digits + sizeof(digits), i_value).ptr);
  }

  void number(float i_value)
  {
    if (i_value != i_value)
    {
      std::uint32_t bits = 0;
      std::memcpy(&bits, &i_value, sizeof(bits));
      notANumber(bits, bits == DEFAULT_FLOAT_NAN_BITS);
      return;
    }
    char digits[32];
    m_text.append(digits, std::to_chars(digits, digits + sizeof(digits), i_value).ptr);
  }

  void notANumber(std::uint64_t i_bits, bool i_isDefault)
  {
    m_text += "nan";
    if (i_isDefault)
      return;
    m_text += ':';
    char digits[32];
    m_text.append(digits, std::to_chars(digits, digits + sizeof(digits), i_bits, 16).ptr);
  }

  template <class ITERATOR>
  void numbers(ITERATOR i_begin, ITERATOR i_end)
  {
    for (ITERATOR i = i_begin; i != i_end; ++i)
    {
      if (i != i_begin)
        m_text += ' ';
      number(*i);
    }
  }

  template <class ITERATOR>
  void list(const char* i_name, std::string_view i_key, ITERATOR i_begin, ITERATOR i_end, unsigned int i_level)
  {
    leaf(i_name, i_key, i_level, [&] { numbers(i_begin, i_end); });
  }

  void element(std::string_view i_key, int i_value, unsigned int i_level)
  {
    leaf("int", i_key, i_level, [&] { number(i_value); });
  }
  void element(std::string_view i_key, unsigned int i_value, unsigned int i_level)
  {
    leaf("unsigned", i_key, i_level, [&] { number(i_value); });
  }
  void element(std::string_view i_key, std::size_t i_value, unsigned int i_level)
  {
    leaf("size", i_key, i_level, [&] { number(i_value); });
  }
  void element(std::string_view i_key, float i_value, unsigned int i_level)
  {
    leaf("float", i_key, i_level, [&] { number(i_value); });
  }
  void element(std::string_view i_key, double i_value, unsigned int i_level)
  {
    leaf("double", i_key, i_level, [&] { number(i_value); });
  }
  void element(std::string_view i_key, bool i_value, unsigned int i_level)
  {
    leaf("bool", i_key, i_level, [&] { m_text += i_value ? "true" : "false"; });
  }
  void element(std::string_view i_key, const std::string& i_value, unsigned int i_level)
  {
    const bool isText = lumIsXMLText(i_value.data(), i_value.size());
    const auto* bytes = reinterpret_cast<const unsigned char*>(i_value.data());
    leaf(isText ? "string" : "bytes", i_key, i_level,
         [&] { isText ? escape(i_value) : base64(bytes, i_value.size()); });
  }
  void element(std::string_view i_key, const ClumColor& i_value, unsigned int i_level)
  {
    const float parts[] = {i_value.red(), i_value.green(), i_value.blue(), i_value.alpha()};
    list("color", i_key, parts, parts + 4, i_level);
  }
  void element(std::string_view i_key, const std::unique_ptr<ClumMat4>& i_value, unsigned int i_level)
  {
    list("mat4", i_key, i_value->data(), i_value->data() + 16, i_level);
  }
  void element(std::string_view i_key, const ClumVect3& i_value, unsigned int i_level)
  {
    list("vect3", i_key, i_value.data(), i_value.data() + 3, i_level);
  }
  void element(std::string_view i_key, const TCodedBuffer& i_value, unsigned int i_level)
  {
    leaf("buffer", i_key, i_level, [&] { base64(i_value.data(), i_value.size()); });
  }
  void element(std::string_view i_key, const std::vector<int>& i_value, unsigned int i_level)
  {
    list("ints", i_key, i_value.begin(), i_value.end(), i_level);
  }
  void element(std::string_view i_key, const std::vector<unsigned int>& i_value, unsigned int i_level)
  {
    list("unsigneds", i_key, i_value.begin(), i_value.end(), i_level);
  }
  void element(std::string_view i_key, const std::vector<std::size_t>& i_value, unsigned int i_level)
  {
    list("sizes", i_key, i_value.begin(), i_value.end(), i_level);
  }
  void element(std::string_view i_key, const std::vector<float>& i_value, unsigned int i_level)
  {
    list("floats", i_key, i_value.begin(), i_value.end(), i_level);
  }
  void element(std::string_view i_key, const std::vector<double>& i_value, unsigned int i_level)
  {
    list("doubles", i_key, i_value.begin(), i_value.end(), i_level);
  }
  void element(std::string_view i_key, const std::vector<bool>& i_value, unsigned int i_level)
  {
    leaf("bools", i_key, i_level,
         [&]
         {
           for (const bool bit : i_value)
             m_text += bit ? '1' : '0';
         });
  }
  void element(std::string_view i_key, const CCodedReference& i_value, unsigned int i_level)
  {
    begin(i_value.isWeak ? "weak" : "object", i_key, i_level);
    if (i_value.object != NO_OBJECT && isWritten(i_value.object))
    {
      m_text += " ref=\"";
      number(m_ids[i_value.object]);
      m_text += '"';
    }
    m_text += "/>\n";
  }
  void element(std::string_view i_key, const std::unique_ptr<CCodedSpace>& i_value, unsigned int i_level)
  {
    begin("vector", i_key, i_level);
    m_text += ">\n";
    space(*i_value, i_level + 1);
    m_text.append(i_level, ' ');
    m_text += "</vector>\n";
  }
  // Pointers exist in memory only.
  void element(std::string_view, void*, unsigned int) { m_error = "it holds a pointer"; }
  void element(std::string_view, const ShPtr<void>&, unsigned int) { m_error = "it holds a pointer"; }
  void element(std::string_view, const ShPtr<const void>&, unsigned int) { m_error = "it holds a pointer"; }

  void escape(std::string_view i_text)
  {
    std::size_t done = 0;
    for (std::size_t i = i_text.find_first_of("<>&\"\t\n\r"); i != std::string_view::npos;
         i = i_text.find_first_of("<>&\"\t\n\r", done))
    {
      m_text.append(i_text, done, i - done);
      done = i + 1;
      switch (i_text[i])
      {
      case '<': m_text += "&lt;"; break;
      case '>': m_text += "&gt;"; break;
      case '&': m_text += "&amp;"; break;
      case '"': m_text += "&quot;"; break;
      case '\t': m_text += "&#9;"; break;
      case '\n': m_text += "&#10;"; break;
      default: m_text += "&#13;";
      }
    }
    m_text.append(i_text, done, std::string_view::npos);
  }

  void base64(const unsigned char* i_bytes, std::size_t i_size)
  {
    for (std::size_t i = 0; i < i_size; i += 3)
    {
      const std::size_t left = i_size - i;
      const unsigned int group =
        i_bytes[i] << 16 | (left > 1 ? i_bytes[i + 1] << 8 : 0) | (left > 2 ? i_bytes[i + 2] : 0);
      m_text += BASE64_DIGITS[group >> 18];
      m_text += BASE64_DIGITS[group >> 12 & 63];
      m_text += left > 1 ? BASE64_DIGITS[group >> 6 & 63] : '=';
      m_text += left > 2 ? BASE64_DIGITS[group & 63] : '=';
    }
  }

  const CCodedGraph& m_graph;
  std::string& m_text;
  std::vector<std::size_t> m_ids; ///< by the rank of the object
  std::string m_error;
};

} // namespace

bool lumIsXMLText(const char* i_text, std::size_t i_size)
{
  const auto* bytes = reinterpret_cast<const unsigned char*>(i_text);
  for (std::size_t i = 0; i < i_size;)
  {
    if (bytes[i] >= 0x20 && bytes[i] < 0x80)
    {
      ++i;
      continue;
    }
    const std::size_t length = xmlCharacterLength(bytes + i, i_size - i);
    if (length == 0)
      return false;
    i += length;
  }
  return true;
}

bool lumWriteXML(const CCodedGraph& i_graph, std::string& o_text, std::string& o_error)
{
  std::size_t object = 0;
  if (!lumCheckOwners(i_graph, object, o_error))
  {
    o_error = i_graph.objects[object].classObject->name() + ": " + o_error;
    return false;
  }
  CXMLWriter writer(i_graph, o_text);
  writer.write();
  o_error = writer.error();
  return o_error.empty();
}
