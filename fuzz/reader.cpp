// The fuzz target of the file reader: whatever a text says, it is refused, or what comes of it can be used.
// Texts are changed as trees of elements, for mere bytes hardly get past the parser.

#include "foundation/lumClass.h"
#include "foundation/lumCodable.h"
#include "foundation/lumDescriptors.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumRuntime.h"
#include "foundation/lumXMLCoder.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "metrics/orvMetric.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "paths/orvSteeringMethod.h"

#include <cstdint>
#include <cstdlib>
#include <pugixml.hpp>
#include <random>
#include <sstream>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* io_data, std::size_t i_size, std::size_t i_maximum);

namespace
{
void useProperties(const ClumCodable& i_object, const ClumClass& i_class)
{
  for (const ClumPropertyDescriptorShPtr& property : i_class.properties())
  {
    ClumValue value;
    i_object.getProperty(property->name(), value);
  }
  for (const ClumClassShPtr& parent : i_class.parents())
    useProperties(i_object, *parent);
}

void useSpace(const CorvConfigSpaceShPtr& i_space)
{
  if (!i_space)
    return;
  const unsigned int count = std::min(i_space->size(), 10000u);
  CorvConfig start(i_space), end(i_space);
  for (unsigned int rank = 0; rank < count; ++rank)
    end.dofValue(rank, 0.25);
  if (i_space->metric())
    start.distanceTo(end);
  i_space->root();
  i_space->countPassiveDofs();
  if (i_space->steeringMethod())
    i_space->steeringMethod()->makeDirectPath(start, end);
}

template <class PATH>
void usePath(const PATH& i_path)
{
  const CorvConfigSpaceShPtr space = i_path.configSpace();
  if (!space)
    return;
  CorvConfig cfg(space);
  i_path.getConfigAtDistance(0.5 * i_path.length(), cfg);
}

void use(const ClumCodableShPtr& i_object)
{
  i_object->description();
  useProperties(*i_object, *i_object->classObject());
  if (const auto device = boost::dynamic_pointer_cast<CorvDevice>(i_object))
  {
    useSpace(device->configSpace());
    CorvConfig cfg(device);
    device->setCurrentConfig(cfg);
    device->countBodies();
  }
  useSpace(boost::dynamic_pointer_cast<CorvConfigSpace>(i_object));
  if (const auto path = boost::dynamic_pointer_cast<CorvDirectPath>(i_object))
    usePath(*path);
  if (const auto path = boost::dynamic_pointer_cast<CorvPath>(i_object))
    usePath(*path);
  if (const ClumCodableShPtr copy = i_object->cloneByCoding())
    copy->equalByCoding(*i_object);
  const ClumXMLCoderShPtr writer = ClumXMLCoder::create();
  writer->encodeObjectShPtr(i_object, "object");
  writer->data();
}

/// Changes a text element by element.
class CTextMutator
{
public:
  explicit CTextMutator(unsigned int i_seed) : m_random(i_seed) {}

  std::string mutated(const char* i_text, std::size_t i_size)
  {
    pugi::xml_document document;
    if (!document.load_buffer(i_text, i_size) || !document.first_child())
      return std::string();
    collect(document.document_element());
    const unsigned int count = 1 + draw(3);
    for (unsigned int i = 0; i < count && !m_elements.empty(); ++i)
      change(m_elements[draw(m_elements.size())]);
    std::ostringstream text;
    document.save(text, "", pugi::format_raw);
    return text.str();
  }

private:
  std::size_t draw(std::size_t i_count) { return m_random() % i_count; }

  void collect(const pugi::xml_node& i_node)
  {
    m_elements.push_back(i_node);
    for (const pugi::xml_node& child : i_node.children())
      collect(child);
  }

  void change(pugi::xml_node i_node)
  {
    if (!i_node.parent() || i_node.parent().type() == pugi::node_document)
      return;
    pugi::xml_node other = m_elements[draw(m_elements.size())];
    switch (draw(8))
    {
    case 0:
      i_node.parent().remove_child(i_node);
      m_elements.assign(1, i_node.root().first_child());
      return;
    case 1: i_node.parent().insert_copy_after(i_node, i_node); return;
    case 2: i_node.set_name(other.name()); return;
    case 3:
      if (i_node.attribute("class"))
        i_node.attribute("class").set_value(className().c_str());
      return;
    default: break;
    }
    if (i_node.attribute("ref") || std::string(i_node.name()) == "object" || std::string(i_node.name()) == "weak")
      changeReference(i_node, other);
    else if (i_node.attribute("value"))
      i_node.attribute("value").set_value(changedValue(i_node.attribute("value").value()).c_str());
  }

  void changeReference(pugi::xml_node i_node, const pugi::xml_node& i_other)
  {
    const pugi::xml_attribute id = i_other.attribute("id") ? i_other.attribute("id") : i_other.attribute("ref");
    if (!i_node.attribute("id") && id)
    {
      i_node.remove_attribute("ref");
      i_node.append_attribute("ref").set_value(id.value());
    }
    else if (!i_node.attribute("id"))
      i_node.remove_attribute("ref");
  }

  std::string className()
  {
    const std::vector<ClumClassShPtr> classes = ClumRuntime::instance().classes();
    return classes[draw(classes.size())]->name();
  }

  std::string changedValue(const std::string& i_value)
  {
    static const char* const s_values[] = {"0",
                                           "1",
                                           "-1",
                                           "2",
                                           "3",
                                           "1e300",
                                           "-1e300",
                                           "1e-300",
                                           "nan",
                                           "inf",
                                           "-inf",
                                           "4294967295",
                                           "2147483647",
                                           "true",
                                           "false",
                                           "",
                                           "18446744073709551615",
                                           "0.5",
                                           "100000"};
    const std::string value = s_values[draw(std::size(s_values))];
    const std::size_t gap = i_value.find(' ', draw(i_value.size() + 1));
    if (gap == std::string::npos || draw(4) == 0)
      return value;
    // One of a list is changed, left out or added.
    const std::size_t next = i_value.find(' ', gap + 1);
    const std::string rest = next == std::string::npos ? std::string() : i_value.substr(next);
    switch (draw(3))
    {
    case 0: return i_value.substr(0, gap) + ' ' + value + rest;
    case 1: return i_value.substr(0, gap) + rest;
    default: return i_value + ' ' + value;
    }
  }

  std::mt19937 m_random;
  std::vector<pugi::xml_node> m_elements;
};
} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
  ClumLogManager::sink(ClumLogSinkShPtr());
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* io_data, std::size_t i_size, std::size_t i_maximum,
                                               unsigned int i_seed)
{
  if (i_seed % 16 == 0)
    return LLVMFuzzerMutate(io_data, i_size, i_maximum);
  const std::string text = CTextMutator(i_seed).mutated(reinterpret_cast<const char*>(io_data), i_size);
  if (text.empty() || text.size() > i_maximum)
    return LLVMFuzzerMutate(io_data, i_size, i_maximum);
  std::copy(text.begin(), text.end(), io_data);
  return text.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* i_data, std::size_t i_size)
{
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  if (coder->parse(std::string(reinterpret_cast<const char*>(i_data), i_size)).failed())
    return 0;
  if (const ClumCodableShPtr object = coder->decodeObject("object"))
    use(object);
  return 0;
}
