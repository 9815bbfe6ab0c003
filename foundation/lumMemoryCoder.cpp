#include "foundation/lumMemoryCoder.h"

#include "foundation/lumAssert.h"
#include "foundation/lumClass.h"
#include "foundation/lumCodedGraph.h"
#include "foundation/lumVersion.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <unordered_map>

struct ClumMemoryCoder::CStore
{
  CCodedSpace root;
  std::deque<CCodedObject> objects;
  std::unordered_map<const ClumCodable*, std::size_t> ranks;
  std::vector<CCodedSpace*> writing{&root};
  std::vector<CReadingFrame> reading{CReadingFrame{&root}};
  std::vector<ClumCodableShPtr> sleeping; ///< decoded, `awake` still to come
  unsigned int depth = 0;                 ///< of nested `decodeObject` calls

  std::size_t rankOf(const ClumCodable* i_object)
  {
    const auto [place, isNew] = ranks.emplace(i_object, objects.size());
    if (isNew)
    {
      objects.emplace_back();
      objects.back().source = i_object;
    }
    return place->second;
  }

  template <class T>
  void write(const std::string& i_key, T&& i_value)
  {
    writing.back()->entries.push_back(CCodedEntry{i_key, TCodedValue(std::forward<T>(i_value))});
  }

  /// The value under a key: in a vector only the next one. @return null if it is missing.
  const TCodedValue* look(const std::string& i_key, bool i_doesConsume)
  {
    CReadingFrame& frame = reading.back();
    const std::vector<CCodedEntry>& entries = frame.space->entries;
    // Reading follows the order of writing, so the search mostly ends where it begins.
    const std::size_t reach =
      frame.space->isVector ? std::min<std::size_t>(1, entries.size() - frame.next) : entries.size();
    for (std::size_t i = 0; i < reach; ++i)
    {
      const std::size_t rank = frame.space->isVector ? frame.next : (frame.next + i) % entries.size();
      if (entries[rank].key != i_key)
        continue;
      if (i_doesConsume)
        frame.next = rank + 1;
      return &entries[rank].value;
    }
    return nullptr;
  }

  template <class T>
  T read(const std::string& i_key)
  {
    const TCodedValue* value = look(i_key, true);
    const T* typed = value ? std::get_if<T>(value) : nullptr;
    return typed ? *typed : T();
  }

  ClumCodableShPtr decode(std::size_t i_object, const ClumCoderShPtr& i_coder);
  void awakeAll();
};

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
        else
          return first == second || (first != first && second != second);
      },
      i_first);
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

ClumCodableShPtr ClumMemoryCoder::CStore::decode(std::size_t i_object, const ClumCoderShPtr& i_coder)
{
  if (i_object == NO_OBJECT)
    return ClumCodableShPtr();
  CCodedObject& object = objects[i_object];
  if (object.isDecoded)
    return object.decoded;
  if (object.state == CCodedObject::PINNED)
    return boost::const_pointer_cast<ClumCodable>(object.handle);
  if (object.state != CCodedObject::WRITTEN)
    return ClumCodableShPtr();

  // Known before its fields are read, so that the graph's cycles close on it.
  object.isDecoded = true;
  object.decoded = boost::dynamic_pointer_cast<ClumCodable>(object.classObject->allocator()());
  const ClumCodableShPtr decoded = object.decoded;
  const std::size_t level = reading.size();
  reading.push_back(CReadingFrame{&object.space});
  const lmStatus status = decoded->initWithCoder(i_coder, decoded);
  reading.resize(level, CReadingFrame{&root});
  if (status.failed())
  {
    ClumLogManager::addWarning("Cannot decode an object of class " + object.classObject->name() + ": " +
                               status.description());
    object.decoded.reset();
    return ClumCodableShPtr();
  }
  sleeping.push_back(decoded);
  return decoded;
}

void ClumMemoryCoder::CStore::awakeAll()
{
  std::vector<ClumCodableShPtr> decoded;
  decoded.swap(sleeping);
  for (const ClumCodableShPtr& object : decoded)
    object->awake();
}

ClumMemoryCoder::ClumMemoryCoder() : m_store(new CStore)
{
}

ClumMemoryCoder::~ClumMemoryCoder() = default;

ClumMemoryCoderShPtr ClumMemoryCoder::create()
{
  return lumCreate<ClumMemoryCoder>();
}

lmStatus ClumMemoryCoder::init(const ClumMemoryCoderWkPtr& i_weakPtr)
{
  return ClumCoder::init(i_weakPtr);
}

void ClumMemoryCoder::pin(const ClumCodable* i_object)
{
  if (!i_object)
    return;
  CCodedObject& object = m_store->objects[m_store->rankOf(i_object)];
  if (object.state != CCodedObject::MENTIONED)
    return;
  object.state = CCodedObject::PINNED;
  object.handle = i_object->self();
}

void ClumMemoryCoder::setDecoded(const ClumCodable* i_encoded, const ClumCodable* i_decoded)
{
  if (!i_encoded)
    return;
  CCodedObject& object = m_store->objects[m_store->rankOf(i_encoded)];
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
  std::vector<bool> isDone(encoded->m_store->objects.size(), false);
  TCodedPairs pairs;
  collectCodedPairs(encoded->m_store->root, encoded->m_store->objects, decoded->m_store->root,
                    decoded->m_store->objects, isDone, pairs);
  for (const auto& [from, to] : pairs)
    setDecoded(from, to);
}

bool ClumMemoryCoder::hasEqualContent(const ClumMemoryCoder& i_other) const
{
  CCodedComparison comparison(m_store->objects, i_other.m_store->objects);
  return comparison.areEqual(m_store->root, i_other.m_store->root);
}

void ClumMemoryCoder::encodeInt(int i_value, const std::string& i_key)
{
  m_store->write(i_key, i_value);
}

void ClumMemoryCoder::encodeUnsignedInt(unsigned int i_value, const std::string& i_key)
{
  m_store->write(i_key, i_value);
}

void ClumMemoryCoder::encodeSizeT(std::size_t i_value, const std::string& i_key)
{
  m_store->write(i_key, i_value);
}

void ClumMemoryCoder::encodeFloat(float i_value, const std::string& i_key)
{
  m_store->write(i_key, i_value);
}

void ClumMemoryCoder::encodeDouble(double i_value, const std::string& i_key)
{
  m_store->write(i_key, i_value);
}

void ClumMemoryCoder::encodeString(const std::string& i_value, const std::string& i_key)
{
  m_store->write(i_key, i_value);
}

void ClumMemoryCoder::encodeBool(bool i_value, const std::string& i_key)
{
  m_store->write(i_key, i_value);
}

lmStatus ClumMemoryCoder::encodeObject(const ClumCodable* i_object, const std::string& i_key)
{
  const std::size_t rank = i_object ? m_store->rankOf(i_object) : NO_OBJECT;
  m_store->write(i_key, CCodedReference{rank});
  if (!i_object)
    return lmStatus();
  CCodedObject& object = m_store->objects[rank];
  if (object.state == CCodedObject::REFUSED)
    return lmStatus(lmStatus::FAILURE);
  if (object.state != CCodedObject::MENTIONED)
    return lmStatus();

  object.classObject = i_object->classObject();
  // A class without a class object of its own answers an ancestor's, which would make another kind of object.
  const bool canBeMade = object.classObject->allocator() && object.classObject->type() == typeid(*i_object);
  object.state = canBeMade ? CCodedObject::WRITTEN : CCodedObject::REFUSED;
  if (!canBeMade)
  {
    handleEncodingFailure(lmStatus(lmStatus::FAILURE));
    return lmStatus(lmStatus::FAILURE);
  }
  object.handle = i_object->self();
  const std::size_t level = m_store->writing.size();
  m_store->writing.push_back(&object.space);
  i_object->encodeWithCoder(self());
  m_store->writing.resize(level);
  return lmStatus();
}

void ClumMemoryCoder::encodeWeakObject(const ClumCodable* i_object, const std::string& i_key)
{
  m_store->write(i_key, CCodedReference{i_object ? m_store->rankOf(i_object) : NO_OBJECT});
}

void ClumMemoryCoder::encodeMat4(const ClumMat4& i_value, const std::string& i_key)
{
  m_store->write(i_key, i_value);
}

void ClumMemoryCoder::encodeVect3(const ClumVect3& i_value, const std::string& i_key)
{
  m_store->write(i_key, i_value);
}

void ClumMemoryCoder::encodePointer(void* i_pointer, const std::string& i_key)
{
  m_store->write(i_key, i_pointer);
}

void ClumMemoryCoder::encodeSharedPointer(const ShPtr<void>& i_pointer, const std::string& i_key)
{
  m_store->write(i_key, i_pointer);
}

void ClumMemoryCoder::encodeConstSharedPointer(const ShPtr<const void>& i_pointer, const std::string& i_key)
{
  m_store->write(i_key, i_pointer);
}

void ClumMemoryCoder::beginVectorEncoding(const std::string& i_key)
{
  auto space = std::make_unique<CCodedSpace>();
  space->isVector = true;
  CCodedSpace* const opened = space.get();
  m_store->write(i_key, std::move(space));
  m_store->writing.push_back(opened);
}

void ClumMemoryCoder::endVectorEncoding()
{
  const bool isInVector = m_store->writing.back()->isVector;
  LUM_ASSERT(isInVector);
  if (isInVector)
    m_store->writing.pop_back();
}

void ClumMemoryCoder::encodeBuffer(const void* i_data, std::size_t i_size, const std::string& i_key)
{
  const auto* bytes = static_cast<const unsigned char*>(i_data);
  m_store->write(i_key, i_size > 0 ? TCodedBuffer(bytes, bytes + i_size) : TCodedBuffer());
}

void ClumMemoryCoder::encodeDoubleVector(const std::vector<double>& i_values, const std::string& i_key)
{
  m_store->write(i_key, i_values);
}

bool ClumMemoryCoder::hasKey(const std::string& i_key)
{
  return m_store->look(i_key, false) != nullptr;
}

int ClumMemoryCoder::decodeInt(const std::string& i_key)
{
  return m_store->read<int>(i_key);
}

unsigned int ClumMemoryCoder::decodeUnsignedInt(const std::string& i_key)
{
  return m_store->read<unsigned int>(i_key);
}

std::size_t ClumMemoryCoder::decodeSizeT(const std::string& i_key)
{
  return m_store->read<std::size_t>(i_key);
}

float ClumMemoryCoder::decodeFloat(const std::string& i_key)
{
  return m_store->read<float>(i_key);
}

double ClumMemoryCoder::decodeDouble(const std::string& i_key)
{
  return m_store->read<double>(i_key);
}

std::string ClumMemoryCoder::decodeString(const std::string& i_key)
{
  return m_store->read<std::string>(i_key);
}

bool ClumMemoryCoder::decodeBool(const std::string& i_key)
{
  return m_store->read<bool>(i_key);
}

ClumMat4 ClumMemoryCoder::decodeMat4(const std::string& i_key)
{
  return m_store->read<ClumMat4>(i_key);
}

ClumVect3 ClumMemoryCoder::decodeVect3(const std::string& i_key)
{
  return m_store->read<ClumVect3>(i_key);
}

ClumCodableShPtr ClumMemoryCoder::decodeObject(const std::string& i_key)
{
  const TCodedValue* value = m_store->look(i_key, true);
  const CCodedReference* reference = value ? std::get_if<CCodedReference>(value) : nullptr;
  if (!reference)
    return ClumCodableShPtr();
  ++m_store->depth;
  const ClumCodableShPtr object = m_store->decode(reference->object, self());
  if (--m_store->depth == 0)
    m_store->awakeAll();
  return object;
}

void* ClumMemoryCoder::decodePointer(const std::string& i_key)
{
  return m_store->read<void*>(i_key);
}

ShPtr<void> ClumMemoryCoder::decodeSharedPointer(const std::string& i_key)
{
  return m_store->read<ShPtr<void>>(i_key);
}

ShPtr<const void> ClumMemoryCoder::decodeConstSharedPointer(const std::string& i_key)
{
  return m_store->read<ShPtr<const void>>(i_key);
}

void ClumMemoryCoder::beginVectorDecoding(const std::string& i_key)
{
  static const CCodedSpace s_empty{{}, true};
  const TCodedValue* value = m_store->look(i_key, true);
  const auto* space = value ? std::get_if<std::unique_ptr<CCodedSpace>>(value) : nullptr;
  m_store->reading.push_back(CReadingFrame{space ? space->get() : &s_empty});
}

bool ClumMemoryCoder::canContinueVectorDecoding()
{
  CReadingFrame& frame = m_store->reading.back();
  LUM_ASSERT(frame.space->isVector);
  const bool hasMoved = frame.next != frame.nextAtLastTest;
  LUM_ASSERT(hasMoved);
  frame.nextAtLastTest = frame.next;
  return frame.space->isVector && hasMoved && frame.next < frame.space->entries.size();
}

void ClumMemoryCoder::endVectorDecoding()
{
  const bool isInVector = m_store->reading.back().space->isVector;
  LUM_ASSERT(isInVector);
  if (isInVector)
    m_store->reading.pop_back();
}

std::size_t ClumMemoryCoder::decodeBufferSize(const std::string& i_key)
{
  const TCodedValue* value = m_store->look(i_key, false);
  const TCodedBuffer* buffer = value ? std::get_if<TCodedBuffer>(value) : nullptr;
  return buffer ? buffer->size() : 0;
}

void ClumMemoryCoder::decodeBufferData(void* o_data, const std::string& i_key)
{
  const TCodedBuffer buffer = m_store->read<TCodedBuffer>(i_key);
  if (!buffer.empty())
    std::memcpy(o_data, buffer.data(), buffer.size());
}

void ClumMemoryCoder::decodeDoubleVector(const std::string& i_key, std::vector<double>& o_values)
{
  o_values = m_store->read<std::vector<double>>(i_key);
}

std::string ClumMemoryCoder::decodedGenerator() const
{
  return "orvane";
}

int ClumMemoryCoder::decodedVersion() const
{
  return LUM_CODING_VERSION;
}

int ClumMemoryCoder::decodedRevision() const
{
  return 0;
}
