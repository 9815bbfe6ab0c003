#include "foundation/lumGraphCoder.h"

#include "foundation/lumAssert.h"
#include "foundation/lumClass.h"
#include "foundation/lumCodedGraph.h"

#include <algorithm>
#include <numeric>

namespace
{
/// Spaces up to this size are searched from end to end.
constexpr std::size_t SMALL_CODED_SPACE = 32;
} // namespace

std::string lumPlaceInText(const std::string& i_text, std::size_t i_place)
{
  const std::size_t place = std::min(i_place, i_text.size());
  const auto line = std::count(i_text.begin(), i_text.begin() + static_cast<std::ptrdiff_t>(place), '\n') + 1;
  const std::size_t begin = place == 0 ? std::string::npos : i_text.rfind('\n', place - 1);
  const std::size_t column = begin == std::string::npos ? place + 1 : place - begin;
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

std::size_t CCodedGraph::rankOf(const ClumCodable* i_object)
{
  const auto [place, isNew] = ranks.emplace(i_object, objects.size());
  if (isNew)
  {
    objects.emplace_back();
    objects.back().source = i_object;
  }
  return place->second;
}

// Reading follows the order of writing, so the search mostly ends where it begins.
std::size_t CCodedGraph::findRank(CReadingFrame& io_frame, const std::string& i_key) const
{
  const std::vector<CCodedEntry>& entries = io_frame.space->entries;
  if (io_frame.next < entries.size() && entries[io_frame.next].key == i_key)
    return io_frame.next;
  if (io_frame.space->isVector)
    return NO_OBJECT;
  if (entries.size() <= SMALL_CODED_SPACE)
  {
    for (std::size_t i = 1; i <= entries.size(); ++i)
      if (const std::size_t rank = (io_frame.next + i) % entries.size(); entries[rank].key == i_key)
        return rank;
    return NO_OBJECT;
  }
  if (io_frame.byKey.size() != entries.size())
  {
    io_frame.byKey.resize(entries.size());
    std::iota(io_frame.byKey.begin(), io_frame.byKey.end(), std::size_t(0));
    std::stable_sort(io_frame.byKey.begin(), io_frame.byKey.end(),
                     [&](std::size_t a, std::size_t b) { return entries[a].key < entries[b].key; });
  }
  // The next of that key, or from the beginning again.
  for (const std::size_t from : {io_frame.next, std::size_t(0)})
  {
    const auto isBefore = [&](std::size_t rank, const std::string& key)
    { return entries[rank].key != key ? entries[rank].key < key : rank < from; };
    const auto found = std::lower_bound(io_frame.byKey.begin(), io_frame.byKey.end(), i_key, isBefore);
    if (found != io_frame.byKey.end() && entries[*found].key == i_key)
      return *found;
  }
  return NO_OBJECT;
}

const TCodedValue* CCodedGraph::look(const std::string& i_key, bool i_doesConsume)
{
  if (isRefused)
    return nullptr;
  CReadingFrame& frame = reading.back();
  const std::size_t rank = findRank(frame, i_key);
  if (rank == NO_OBJECT)
    return nullptr;
  if (i_doesConsume)
    frame.next = rank + 1;
  return &frame.space->entries[rank].value;
}

void CCodedGraph::refuse(const std::string& i_reason)
{
  if (!isForeign || isRefused)
    return;
  isRefused = true;
  std::string where = name;
  if (!underWay.empty())
  {
    const CCodedObject& object = objects[underWay.back()];
    where += ", line " + std::to_string(object.line) + ", " + object.classObject->name();
  }
  ClumLogManager::addError("Cannot decode " + where + ": " + i_reason + ".");
}

/// What stands for an object whose `initWithCoder` need not or cannot run.
bool CCodedObject::isReadyMade(ClumCodableShPtr& o_object) const
{
  if (isDecoded)
    o_object = decoded;
  else if (state == PINNED)
    o_object = boost::const_pointer_cast<ClumCodable>(handle);
  return isDecoded || state != WRITTEN;
}

bool CCodedObject::allocate()
{
  if (decoded)
    return false;
  decoded = boost::dynamic_pointer_cast<ClumCodable>(classObject->allocator()());
  return true;
}

ClumCodableShPtr CCodedGraph::decode(const CCodedReference& i_reference, const ClumCoderShPtr& i_coder)
{
  if (i_reference.object == NO_OBJECT || isRefused)
    return ClumCodableShPtr();
  if (depth > 0 && i_reference.isWeak)
    return promise(i_reference.object);
  ++depth;
  const ClumCodableShPtr object = decodeNow(i_reference.object, i_coder);
  for (std::size_t i = 0; depth == 1 && i < promised.size(); ++i)
    decodeNow(promised[i], i_coder);
  if (--depth == 0)
    awakeAll();
  return isRefused ? ClumCodableShPtr() : object;
}

ClumCodableShPtr CCodedGraph::promise(std::size_t i_object)
{
  CCodedObject& object = objects[i_object];
  ClumCodableShPtr readyMade;
  if (object.isReadyMade(readyMade))
    return readyMade;
  if (object.allocate())
    promised.push_back(i_object);
  return object.decoded;
}

ClumCodableShPtr CCodedGraph::decodeNow(std::size_t i_object, const ClumCoderShPtr& i_coder)
{
  CCodedObject& object = objects[i_object];
  ClumCodableShPtr readyMade;
  if (object.isReadyMade(readyMade) || isRefused)
    return readyMade;
  if (underWay.size() >= maximumDepth)
  {
    refuse("it holds objects within objects to a depth of more than " + std::to_string(maximumDepth));
    return ClumCodableShPtr();
  }

  // Known before its fields are read, so that the graph's cycles close on it.
  object.allocate();
  object.isDecoded = true;
  const ClumCodableShPtr decoded = object.decoded;
  const std::size_t level = reading.size();
  reading.emplace_back(object.space);
  underWay.push_back(i_object);
  const lmStatus status = decoded->initWithCoder(i_coder, decoded);
  if (status.failed())
    refuse("the object is not whole or sound: " + status.description());
  underWay.pop_back();
  reading.erase(reading.begin() + static_cast<std::ptrdiff_t>(level), reading.end());
  if (status.succeeded() && !isRefused)
  {
    sleeping.push_back(decoded);
    return decoded;
  }
  if (!isForeign)
    ClumLogManager::addWarning("Cannot decode an object of class " + object.classObject->name() + ": " +
                               status.description());
  object.decoded.reset();
  return ClumCodableShPtr();
}

void CCodedGraph::awakeAll()
{
  std::vector<ClumCodableShPtr> decoded;
  decoded.swap(sleeping);
  promised.clear();
  if (isRefused)
  {
    for (CCodedObject& object : objects)
      object.decoded.reset();
    return;
  }
  for (const ClumCodableShPtr& object : decoded)
    object->awake();
}

ClumGraphCoder::ClumGraphCoder() : m_graph(new CCodedGraph)
{
}

ClumGraphCoder::~ClumGraphCoder() = default;

lmStatus ClumGraphCoder::init(const ClumGraphCoderWkPtr& i_weakPtr)
{
  return ClumCoder::init(i_weakPtr);
}

// Values that are stored as they are. The second operand is how the value is read back.
#define LUM_CODED_VALUE(NAME, TYPE, ARGUMENT)                                                                          \
  void ClumGraphCoder::encode##NAME(ARGUMENT i_value, const std::string& i_key)                                        \
  {                                                                                                                    \
    m_graph->write(i_key, i_value);                                                                                    \
  }                                                                                                                    \
  TYPE ClumGraphCoder::decode##NAME(const std::string& i_key)                                                          \
  {                                                                                                                    \
    return m_graph->read<TYPE>(i_key);                                                                                 \
  }

LUM_CODED_VALUE(Int, int, int)
LUM_CODED_VALUE(UnsignedInt, unsigned int, unsigned int)
LUM_CODED_VALUE(SizeT, std::size_t, std::size_t)
LUM_CODED_VALUE(Float, float, float)
LUM_CODED_VALUE(Double, double, double)
LUM_CODED_VALUE(String, std::string, const std::string&)
LUM_CODED_VALUE(Bool, bool, bool)
LUM_CODED_VALUE(Color, ClumColor, const ClumColor&)
LUM_CODED_VALUE(Vect3, ClumVect3, const ClumVect3&)
LUM_CODED_VALUE(Pointer, void*, void*)
LUM_CODED_VALUE(SharedPointer, ShPtr<void>, const ShPtr<void>&)
LUM_CODED_VALUE(ConstSharedPointer, ShPtr<const void>, const ShPtr<const void>&)
#undef LUM_CODED_VALUE

// Vectors of numbers are one value.
#define LUM_CODED_VECTOR(NAME, ITEM)                                                                                   \
  void ClumGraphCoder::encode##NAME##Vector(const std::vector<ITEM>& i_values, const std::string& i_key)               \
  {                                                                                                                    \
    m_graph->write(i_key, i_values);                                                                                   \
  }                                                                                                                    \
  void ClumGraphCoder::decode##NAME##Vector(const std::string& i_key, std::vector<ITEM>& o_values)                     \
  {                                                                                                                    \
    if (const auto* values = m_graph->find<std::vector<ITEM>>(i_key))                                                  \
      o_values = *values;                                                                                              \
    else                                                                                                               \
      o_values.clear();                                                                                                \
  }

LUM_CODED_VECTOR(Int, int)
LUM_CODED_VECTOR(UnsignedInt, unsigned int)
LUM_CODED_VECTOR(SizeT, std::size_t)
LUM_CODED_VECTOR(Float, float)
LUM_CODED_VECTOR(Double, double)
LUM_CODED_VECTOR(Bool, bool)
#undef LUM_CODED_VECTOR

void ClumGraphCoder::encodeMat4(const ClumMat4& i_value, const std::string& i_key)
{
  m_graph->write(i_key, std::make_unique<ClumMat4>(i_value));
}

ClumMat4 ClumGraphCoder::decodeMat4(const std::string& i_key)
{
  const auto* frame = m_graph->find<std::unique_ptr<ClumMat4>>(i_key);
  return frame ? **frame : ClumMat4();
}

lmStatus ClumGraphCoder::encodeObject(const ClumCodable* i_object, const std::string& i_key)
{
  const std::size_t rank = i_object ? m_graph->rankOf(i_object) : NO_OBJECT;
  m_graph->write(i_key, CCodedReference{rank});
  if (!i_object)
    return lmStatus();
  CCodedObject& object = m_graph->objects[rank];
  if (object.state == CCodedObject::REFUSED)
    return lmStatus(lmStatus::FAILURE);
  if (object.state != CCodedObject::MENTIONED)
    return lmStatus();

  object.classObject = i_object->classObject();
  // A class without a class object of its own answers an ancestor's, which would make another kind of object.
  const bool canBeMade = object.classObject->allocator() && object.classObject->type() == typeid(*i_object) &&
                         m_graph->underWay.size() < m_graph->maximumDepth;
  object.state = canBeMade ? CCodedObject::WRITTEN : CCodedObject::REFUSED;
  if (!canBeMade)
  {
    handleEncodingFailure(lmStatus(lmStatus::FAILURE));
    return lmStatus(lmStatus::FAILURE);
  }
  object.handle = i_object->self();
  const std::size_t level = m_graph->writing.size();
  m_graph->writing.push_back(&object.space);
  m_graph->underWay.push_back(rank);
  i_object->encodeWithCoder(self());
  m_graph->underWay.pop_back();
  m_graph->writing.resize(level);
  return lmStatus();
}

void ClumGraphCoder::encodeWeakObject(const ClumCodable* i_object, const std::string& i_key)
{
  m_graph->write(i_key, CCodedReference{i_object ? m_graph->rankOf(i_object) : NO_OBJECT, true});
}

void ClumGraphCoder::beginVectorEncoding(const std::string& i_key)
{
  auto space = std::make_unique<CCodedSpace>();
  space->isVector = true;
  CCodedSpace* opened = space.get();
  m_graph->write(i_key, std::move(space));
  m_graph->writing.push_back(opened);
}

void ClumGraphCoder::endVectorEncoding()
{
  const bool isInVector = m_graph->writing.back()->isVector;
  LUM_ASSERT(isInVector);
  if (isInVector)
    m_graph->writing.pop_back();
}

void ClumGraphCoder::encodeBuffer(const void* i_data, std::size_t i_size, const std::string& i_key)
{
  const auto* bytes = static_cast<const unsigned char*>(i_data);
  m_graph->write(i_key, i_size > 0 ? TCodedBuffer(bytes, bytes + i_size) : TCodedBuffer());
}

bool ClumGraphCoder::hasKey(const std::string& i_key)
{
  return m_graph->look(i_key, false) != nullptr;
}

ClumCodableShPtr ClumGraphCoder::decodeObject(const std::string& i_key)
{
  const CCodedReference* reference = m_graph->find<CCodedReference>(i_key);
  return reference ? m_graph->decode(*reference, self()) : ClumCodableShPtr();
}

ClumCodableShPtr ClumGraphCoder::decodeHeldObject(const std::string& i_key, EHold i_hold,
                                                  bool (*i_isFitting)(const ClumObject&))
{
  if (!m_graph->isForeign)
    return ClumCoder::decodeHeldObject(i_key, i_hold, i_isFitting);
  const CCodedReference* reference = m_graph->find<CCodedReference>(i_key);
  if (!reference || reference->object == NO_OBJECT)
    return ClumCodableShPtr();
  CCodedObject& object = m_graph->objects[reference->object];
  if (i_hold != WEAK && reference->isWeak)
    m_graph->refuse("'" + i_key + "' only refers to an object that is to be owned");
  if (i_hold == SOLE && object.hasSoleOwner)
    m_graph->refuse("'" + i_key + "' is an object that is already part of another");
  object.hasSoleOwner = object.hasSoleOwner || i_hold == SOLE;
  const ClumCodableShPtr decoded = m_graph->decode(*reference, self());
  if (decoded && i_isFitting(*decoded))
    return decoded;
  m_graph->refuse("'" + i_key + "' is an object of class " + object.classObject->name() + ", which has no place here");
  return ClumCodableShPtr();
}

void ClumGraphCoder::beginVectorDecoding(const std::string& i_key)
{
  static const CCodedSpace s_empty{{}, true};
  const auto* space = m_graph->find<std::unique_ptr<CCodedSpace>>(i_key);
  m_graph->reading.emplace_back(space ? **space : s_empty);
}

bool ClumGraphCoder::canContinueVectorDecoding()
{
  CReadingFrame& frame = m_graph->reading.back();
  LUM_ASSERT(frame.space->isVector);
  if (!frame.space->isVector || m_graph->isRefused || frame.next >= frame.space->entries.size())
    return false;
  const bool hasMoved = frame.next != frame.nextAtLastTest;
  frame.nextAtLastTest = frame.next;
  if (!hasMoved)
    m_graph->refuse("a record begins with '" + std::string(frame.space->entries[frame.next].key) +
                    "', which has no place there");
  LUM_ASSERT(hasMoved || m_graph->isForeign);
  return hasMoved;
}

void ClumGraphCoder::endVectorDecoding()
{
  const bool isInVector = m_graph->reading.back().space->isVector;
  LUM_ASSERT(isInVector);
  if (isInVector)
    m_graph->reading.pop_back();
}

std::size_t ClumGraphCoder::decodeBufferSize(const std::string& i_key)
{
  const TCodedValue* value = m_graph->look(i_key, false);
  const TCodedBuffer* buffer = value ? std::get_if<TCodedBuffer>(value) : nullptr;
  return buffer ? buffer->size() : 0;
}

void ClumGraphCoder::decodeBufferData(void* o_data, const std::string& i_key)
{
  const TCodedBuffer* buffer = m_graph->find<TCodedBuffer>(i_key);
  if (buffer && !buffer->empty())
    std::memcpy(o_data, buffer->data(), buffer->size());
}

std::string ClumGraphCoder::decodedGenerator() const
{
  return m_graph->generator;
}

int ClumGraphCoder::decodedVersion() const
{
  return m_graph->version;
}

int ClumGraphCoder::decodedRevision() const
{
  return m_graph->revision;
}
