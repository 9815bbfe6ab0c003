#include "foundation/lumMemoryCoder.h"

#include "foundation/lumClass.h"
#include "foundation/lumCodedGraph.h"

#include <algorithm>

namespace
{
/// Compares what two coders hold, pairing their objects as it meets them.
class CCodedComparison
{
public:
  CCodedComparison(const std::deque<CCodedObject>& i_first, const std::deque<CCodedObject>& i_second)
    : m_first(i_first), m_second(i_second), m_partner(i_first.size(), NO_OBJECT), m_isTaken(i_second.size(), false)
  {
  }

  bool areEqual(const CCodedSpace& i_first, const CCodedSpace& i_second)
  {
    if (i_first.entries.size() != i_second.entries.size() || i_first.isVector != i_second.isVector)
      return false;
    for (std::size_t i = 0; i < i_first.entries.size(); ++i)
      if (i_first.entries[i].key != i_second.entries[i].key ||
          !areEqual(i_first.entries[i].value, i_second.entries[i].value))
        return false;
    return true;
  }

private:
  bool areEqual(const TCodedValue& i_first, const TCodedValue& i_second)
  {
    if (i_first.index() != i_second.index())
      return false;
    return std::visit(
      [&](const auto& first)
      {
        using T = std::decay_t<decltype(first)>;
        const T& second = std::get<T>(i_second);
        if constexpr (std::is_same_v<T, CCodedReference>)
          return areSameObject(first.object, second.object);
        else if constexpr (std::is_same_v<T, std::unique_ptr<CCodedSpace>>)
          return areEqual(*first, *second);
        else if constexpr (std::is_same_v<T, std::unique_ptr<ClumMat4>>)
          return std::equal(first->data(), first->data() + 16, second->data(), areSameNumber<double>);
        else if constexpr (std::is_same_v<T, ClumVect3>)
          return std::equal(first.data(), first.data() + 3, second.data(), areSameNumber<double>);
        else if constexpr (std::is_same_v<T, std::vector<double>> || std::is_same_v<T, std::vector<float>>)
          return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                            areSameNumber<typename T::value_type>);
        else
          return areSameNumber(first, second);
      },
      i_first);
  }

  /// A number that is none equals another such.
  template <class T>
  static bool areSameNumber(const T& i_first, const T& i_second)
  {
    return i_first == i_second || (i_first != i_first && i_second != i_second);
  }

  bool areSameObject(std::size_t i_first, std::size_t i_second)
  {
    if (i_first == NO_OBJECT || i_second == NO_OBJECT)
      return i_first == i_second;
    const CCodedObject &first = m_first[i_first], &second = m_second[i_second];
    if (first.state != CCodedObject::WRITTEN || second.state != CCodedObject::WRITTEN)
      return first.state == second.state && first.source == second.source;
    if (m_partner[i_first] != NO_OBJECT || m_isTaken[i_second])
      return m_partner[i_first] == i_second;
    m_partner[i_first] = i_second;
    m_isTaken[i_second] = true;
    return first.classObject == second.classObject && areEqual(first.space, second.space);
  }

  const std::deque<CCodedObject>& m_first;
  const std::deque<CCodedObject>& m_second;
  std::vector<std::size_t> m_partner;
  std::vector<bool> m_isTaken;
};

using TCodedPairs = std::vector<std::pair<const ClumCodable*, const ClumCodable*>>;

/// Collects the pairs of written objects of one class that stand under the same keys in two spaces, and below these.
void collectCodedPairs(const CCodedSpace& i_first, const std::deque<CCodedObject>& i_firstObjects,
                       const CCodedSpace& i_second, const std::deque<CCodedObject>& i_secondObjects,
                       std::vector<bool>& io_isDone, TCodedPairs& io_pairs)
{
  const std::size_t count = std::min(i_first.entries.size(), i_second.entries.size());
  for (std::size_t i = 0; i < count; ++i)
  {
    const CCodedEntry &first = i_first.entries[i], &second = i_second.entries[i];
    if (first.key != second.key || first.value.index() != second.value.index())
      continue;
    if (const auto* inner = std::get_if<std::unique_ptr<CCodedSpace>>(&first.value))
      collectCodedPairs(**inner, i_firstObjects, *std::get<std::unique_ptr<CCodedSpace>>(second.value), i_secondObjects,
                        io_isDone, io_pairs);
    const auto* reference = std::get_if<CCodedReference>(&first.value);
    const std::size_t other = reference ? std::get<CCodedReference>(second.value).object : NO_OBJECT;
    if (!reference || reference->object == NO_OBJECT || other == NO_OBJECT || io_isDone[reference->object])
      continue;
    const CCodedObject &a = i_firstObjects[reference->object], &b = i_secondObjects[other];
    if (a.state != CCodedObject::WRITTEN || b.state != CCodedObject::WRITTEN || a.classObject != b.classObject)
      continue;
    io_isDone[reference->object] = true;
    io_pairs.emplace_back(a.source, b.source);
    collectCodedPairs(a.space, i_firstObjects, b.space, i_secondObjects, io_isDone, io_pairs);
  }
}
} // namespace

ClumMemoryCoder::~ClumMemoryCoder() = default;

ClumMemoryCoderShPtr ClumMemoryCoder::create()
{
  return lumCreate<ClumMemoryCoder>();
}

lmStatus ClumMemoryCoder::init(const ClumMemoryCoderWkPtr& i_weakPtr)
{
  return ClumGraphCoder::init(i_weakPtr);
}

void ClumMemoryCoder::pin(const ClumCodable* i_object)
{
  if (!i_object)
    return;
  CCodedObject& object = m_graph->objects[m_graph->rankOf(i_object)];
  if (object.state != CCodedObject::MENTIONED)
    return;
  object.state = CCodedObject::PINNED;
  object.handle = i_object->self();
}

void ClumMemoryCoder::setDecoded(const ClumCodable* i_encoded, const ClumCodable* i_decoded)
{
  if (!i_encoded)
    return;
  CCodedObject& object = m_graph->objects[m_graph->rankOf(i_encoded)];
  object.isDecoded = true;
  object.decoded = i_decoded ? boost::const_pointer_cast<ClumCodable>(i_decoded->self()) : ClumCodableShPtr();
}

void ClumMemoryCoder::setDecodedRecursive(const ClumCodable* i_encoded, const ClumCodable* i_decoded)
{
  if (!i_encoded || !i_decoded)
  {
    setDecoded(i_encoded, i_decoded);
    return;
  }
  const ClumMemoryCoderShPtr encoded = create(), decoded = create();
  encoded->encodeObject(i_encoded, "object");
  decoded->encodeObject(i_decoded, "object");
  std::vector<bool> isDone(encoded->m_graph->objects.size(), false);
  TCodedPairs pairs;
  collectCodedPairs(encoded->m_graph->root, encoded->m_graph->objects, decoded->m_graph->root,
                    decoded->m_graph->objects, isDone, pairs);
  for (const auto& [from, to] : pairs)
    setDecoded(from, to);
}

bool ClumMemoryCoder::hasEqualContent(const ClumMemoryCoder& i_other) const
{
  CCodedComparison comparison(m_graph->objects, i_other.m_graph->objects);
  return comparison.areEqual(m_graph->root, i_other.m_graph->root);
}
