#include "foundation/lumParameterMap.h"

#include <algorithm>

namespace
{
/// One of 64 bits. Two keys may share it, so that it tells only what is not there.
std::uint64_t markOf(const ClumStringKey& i_key)
{
  const auto address = reinterpret_cast<std::uintptr_t>(&i_key.text());
  return std::uint64_t(1) << (address / sizeof(std::string)) % 64;
}
} // namespace

ClumParameterMapShPtr ClumParameterMap::create(bool i_copiesBase)
{
  return ClumParameterMapShPtr(new ClumParameterMap(i_copiesBase));
}

ClumParameterMapShPtr ClumParameterMap::createWithBase(const ClumParameterMapConstShPtr& i_base, bool i_copiesBase)
{
  const ClumParameterMapShPtr map = create(i_copiesBase);
  map->setBase(i_base);
  return map;
}

ClumParameterMapShPtr ClumParameterMap::createByStacking(const ClumParameterMapConstShPtr& i_top,
                                                         const ClumParameterMapConstShPtr& i_bottom)
{
  const ClumParameterMapShPtr map = createWithBase(i_bottom);
  if (i_top)
    map->inject(*i_top);
  return map;
}

lmStatus ClumParameterMap::setBase(const ClumParameterMapConstShPtr& i_base)
{
  for (const ClumParameterMap* below = i_base.get(); below; below = below->m_base.get())
    if (below == this)
      return lmStatus(lmStatus::FAILURE);
  if (i_base && m_copiesBase)
  {
    const ClumParameterMapShPtr copy = create();
    copy->inject(*i_base);
    m_base = copy;
  }
  else
    m_base = i_base;
  return lmStatus();
}

ClumParameterMap& ClumParameterMap::inject(const ClumParameterMap& i_other)
{
  if (&i_other == this)
    return *this;
  if (i_other.m_base)
    inject(*i_other.m_base);
  for (const CEntry& entry : i_other.m_entries)
    apply(entry);
  return *this;
}

ClumParameterMap& ClumParameterMap::setBool(const ClumStringKey& i_key, bool i_value)
{
  entryOf(i_key, BOOL).boolean = i_value;
  return *this;
}

ClumParameterMap& ClumParameterMap::setInt(const ClumStringKey& i_key, int i_value)
{
  entryOf(i_key, INT).integer = i_value;
  return *this;
}

ClumParameterMap& ClumParameterMap::setDouble(const ClumStringKey& i_key, double i_value)
{
  entryOf(i_key, DOUBLE).number = i_value;
  return *this;
}

ClumParameterMap& ClumParameterMap::setPointer(const ClumStringKey& i_key, void* i_value)
{
  entryOf(i_key, POINTER).pointer = i_value;
  return *this;
}

ClumParameterMap& ClumParameterMap::setShPtr(const ClumStringKey& i_key, const ShPtr<void>& i_value)
{
  entryOf(i_key, SH_PTR).handle = i_value;
  return *this;
}

ClumParameterMap& ClumParameterMap::setConstShPtr(const ClumStringKey& i_key, const ShPtr<const void>& i_value)
{
  entryOf(i_key, CONST_SH_PTR).handle = i_value;
  return *this;
}

ClumParameterMap& ClumParameterMap::addDouble(const ClumStringKey& i_key, double i_value)
{
  numberEntry(i_key, 0.0)->number += i_value;
  return *this;
}

ClumParameterMap& ClumParameterMap::multiplyDouble(const ClumStringKey& i_key, double i_value)
{
  CEntry* const entry = numberEntry(i_key, 1.0);
  entry->number *= i_value;
  entry->scale *= i_value;
  return *this;
}

ClumParameterMap& ClumParameterMap::orBool(const ClumStringKey& i_key, bool i_value)
{
  const CEntry* const own = ownEntry(i_key);
  if (own && (own->type == BOOL || own->type == OR_BOOL))
    const_cast<CEntry*>(own)->boolean = own->boolean || i_value;
  else
    entryOf(i_key, OR_BOOL).boolean = i_value;
  return *this;
}

lmStatus ClumParameterMap::setFrom(const ClumStringKey& i_key, const ClumParameterMap& i_other,
                                   const ClumStringKey& i_otherKey)
{
  const CEntry* found = nullptr;
  for (const ClumParameterMap* map = &i_other; map && !found; map = map->m_base.get())
    found = map->ownEntry(i_otherKey);
  if (!found)
    return lmStatus(lmStatus::FAILURE);
  const CEntry source = *found;
  if (source.type == SCALED_DOUBLE)
    setDouble(i_key, i_other.doubleValue(i_otherKey, 0.0));
  else if (source.type == OR_BOOL)
    setBool(i_key, i_other.boolValue(i_otherKey, false));
  else
  {
    CEntry& entry = entryOf(i_key, source.type);
    entry = source;
    entry.key = i_key;
  }
  return lmStatus();
}

ClumParameterMap& ClumParameterMap::remove(const ClumStringKey& i_key)
{
  if (!ownEntry(i_key))
    return *this;
  m_entries.erase(
    std::remove_if(m_entries.begin(), m_entries.end(), [&](const CEntry& i_entry) { return i_entry.key == i_key; }),
    m_entries.end());
  return *this;
}

bool ClumParameterMap::holdsOnlyPointer(const ClumStringKey& i_key) const
{
  bool isFound = false;
  for (const ClumParameterMap* map = this; map; map = map->m_base.get())
    for (const CEntry& entry : map->m_entries)
    {
      if (entry.type != POINTER || !(entry.key == i_key))
        return false;
      isFound = true;
    }
  return isFound;
}

bool ClumParameterMap::hasBool(const ClumStringKey& i_key) const
{
  bool value;
  return getBool(i_key, value).succeeded();
}

bool ClumParameterMap::hasInt(const ClumStringKey& i_key) const
{
  return findEntry(i_key, INT);
}

bool ClumParameterMap::hasDouble(const ClumStringKey& i_key) const
{
  double value;
  return getDouble(i_key, value).succeeded();
}

bool ClumParameterMap::hasPointer(const ClumStringKey& i_key) const
{
  return findEntry(i_key, POINTER);
}

bool ClumParameterMap::hasConstShPtr(const ClumStringKey& i_key) const
{
  ShPtr<const void> value;
  return getVoidConstShPtr(i_key, value).succeeded();
}

bool ClumParameterMap::boolValue(const ClumStringKey& i_key, bool i_default) const
{
  getBool(i_key, i_default);
  return i_default;
}

int ClumParameterMap::intValue(const ClumStringKey& i_key, int i_default) const
{
  getInt(i_key, i_default);
  return i_default;
}

double ClumParameterMap::doubleValue(const ClumStringKey& i_key, double i_default) const
{
  getDouble(i_key, i_default);
  return i_default;
}

lmStatus ClumParameterMap::getBool(const ClumStringKey& i_key, bool& o_value) const
{
  bool combined = false;
  bool isFound = false;
  for (const ClumParameterMap* map = this; map; map = map->m_base.get())
  {
    const CEntry* const entry = map->ownEntry(i_key);
    if (!entry)
      continue;
    if (entry->type != BOOL && entry->type != OR_BOOL)
      break;
    isFound = true;
    combined = combined || entry->boolean;
    if (entry->type == BOOL)
      break;
  }
  if (!isFound)
    return lmStatus(lmStatus::FAILURE);
  o_value = combined;
  return lmStatus();
}

lmStatus ClumParameterMap::getInt(const ClumStringKey& i_key, int& o_value) const
{
  const CEntry* const entry = findEntry(i_key, INT);
  if (!entry)
    return lmStatus(lmStatus::FAILURE);
  o_value = entry->integer;
  return lmStatus();
}

lmStatus ClumParameterMap::getDouble(const ClumStringKey& i_key, double& o_value) const
{
  // What is read is scale * x + offset, x the value further down.
  double scale = 1.0;
  double offset = 0.0;
  double lowest = 0.0;
  bool isFound = false;
  for (const ClumParameterMap* map = this; map; map = map->m_base.get())
  {
    const CEntry* const entry = map->ownEntry(i_key);
    if (!entry)
      continue;
    const bool isScaled = entry->type == SCALED_DOUBLE;
    if (!isScaled && entry->type != DOUBLE && entry->type != INT)
      break;
    isFound = true;
    lowest = isScaled ? entry->neutral : (entry->type == INT ? entry->integer : entry->number);
    if (!isScaled)
      break;
    offset += scale * entry->number;
    scale *= entry->scale;
  }
  if (!isFound)
    return lmStatus(lmStatus::FAILURE);
  o_value = scale * lowest + offset;
  return lmStatus();
}

lmStatus ClumParameterMap::getPointer(const ClumStringKey& i_key, void*& o_value) const
{
  const CEntry* const entry = findEntry(i_key, POINTER);
  if (!entry)
    return lmStatus(lmStatus::FAILURE);
  o_value = entry->pointer;
  return lmStatus();
}

lmStatus ClumParameterMap::getVoidShPtr(const ClumStringKey& i_key, ShPtr<void>& o_value) const
{
  const CEntry* const entry = findEntry(i_key, SH_PTR);
  if (!entry)
    return lmStatus(lmStatus::FAILURE);
  o_value = boost::const_pointer_cast<void>(entry->handle);
  return lmStatus();
}

lmStatus ClumParameterMap::getVoidConstShPtr(const ClumStringKey& i_key, ShPtr<const void>& o_value) const
{
  const CEntry* entry = findEntry(i_key, CONST_SH_PTR);
  if (!entry)
    entry = findEntry(i_key, SH_PTR);
  if (!entry)
    return lmStatus(lmStatus::FAILURE);
  o_value = entry->handle;
  return lmStatus();
}

const ClumParameterMap::CEntry* ClumParameterMap::ownEntry(const ClumStringKey& i_key) const
{
  if ((m_marks & markOf(i_key)) == 0)
    return nullptr;
  for (const CEntry& entry : m_entries)
    if (entry.key == i_key)
      return &entry;
  return nullptr;
}

ClumParameterMap::CEntry& ClumParameterMap::entryOf(const ClumStringKey& i_key, EType i_type)
{
  CEntry fresh(i_key, i_type);
  for (CEntry& entry : m_entries)
    if (entry.key == i_key)
      return entry = fresh;
  m_entries.push_back(fresh);
  m_marks |= markOf(i_key);
  return m_entries.back();
}

/// The entry that a combining write changes: a number that the map holds itself, or one relative to the base.
ClumParameterMap::CEntry* ClumParameterMap::numberEntry(const ClumStringKey& i_key, double i_neutral)
{
  if (CEntry* const own = const_cast<CEntry*>(ownEntry(i_key)))
  {
    if (own->type == DOUBLE || own->type == SCALED_DOUBLE)
      return own;
    if (own->type == INT)
    {
      const int value = own->integer;
      own->type = DOUBLE;
      own->number = value;
      return own;
    }
  }
  CEntry& entry = entryOf(i_key, SCALED_DOUBLE);
  entry.neutral = i_neutral;
  return &entry;
}

/// Writes an entry of another map over this map's own of the same key.
void ClumParameterMap::apply(const CEntry& i_entry)
{
  if (i_entry.type == OR_BOOL)
    orBool(i_entry.key, i_entry.boolean);
  else if (i_entry.type == SCALED_DOUBLE)
  {
    CEntry* const entry = numberEntry(i_entry.key, i_entry.neutral);
    entry->scale *= i_entry.scale;
    entry->number = entry->number * i_entry.scale + i_entry.number;
  }
  else
    entryOf(i_entry.key, i_entry.type) = i_entry;
}

/// The entry that is read under a key: null if there is none or if it is of another type.
const ClumParameterMap::CEntry* ClumParameterMap::findEntry(const ClumStringKey& i_key, EType i_type) const
{
  for (const ClumParameterMap* map = this; map; map = map->m_base.get())
    if (const CEntry* const entry = map->ownEntry(i_key))
      return entry->type == i_type ? entry : nullptr;
  return nullptr;
}
