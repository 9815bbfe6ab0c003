#pragma once

#include "foundation/lumCodable.h"
#include "foundation/lumColor.h"
#include "foundation/lumMat4.h"
#include "foundation/lumVersion.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

// What a coder keeps of a graph.

constexpr std::size_t NO_OBJECT = ~std::size_t(0);

/// A reference to one of the coder's objects, or to none.
struct CCodedReference
{
  std::size_t object;
  bool isWeak = false;
};

using TCodedBuffer = std::vector<unsigned char>;

struct CCodedEntry;

/// What was written under the keys of one object or in one vector, in the order of writing.
struct CCodedSpace
{
  std::vector<CCodedEntry> entries;
  bool isVector = false;
};

/// Frames are held by a handle of their own, for a value is to stay small.
using TCodedValue =
  std::variant<int, unsigned int, std::size_t, float, double, std::string, bool, ClumColor, std::unique_ptr<ClumMat4>,
               ClumVect3, void*, ShPtr<void>, ShPtr<const void>, CCodedReference, TCodedBuffer, std::vector<int>,
               std::vector<unsigned int>, std::vector<std::size_t>, std::vector<float>, std::vector<double>,
               std::vector<bool>, std::unique_ptr<CCodedSpace>>;

struct CCodedEntry
{
  std::string_view key; ///< in the graph's store of keys
  TCodedValue value;
};

/// An object that was met while encoding, or that a text holds.
struct CCodedObject
{
  enum EState
  {
    MENTIONED, ///< by weak references only
    WRITTEN,
    PINNED,
    REFUSED
  };

  const ClumCodable* source = nullptr;
  ClumCodableConstShPtr handle; ///< keeps a written or pinned object, and so its address
  EState state = MENTIONED;
  ClumClassShPtr classObject;
  CCodedSpace space;
  std::size_t line = 0;      ///< of the text it came from
  bool isDecoded = false;    ///< its `initWithCoder` has begun, or something else stands for it
  bool hasSoleOwner = false; ///< of a foreign graph: it was read as a part of one whole
  ClumCodableShPtr decoded;

  bool isReadyMade(ClumCodableShPtr& o_object) const;
  /// @return false if that was done before.
  bool allocate();
};

/// Where reading stands in one space.
struct CReadingFrame
{
  explicit CReadingFrame(const CCodedSpace& i_space) : space(&i_space) {}

  const CCodedSpace* space;
  std::size_t next = 0;
  std::size_t nextAtLastTest = NO_OBJECT; ///< of `canContinueVectorDecoding`: a loop that reads nothing has to end
  std::vector<std::size_t> byKey;         ///< the ranks by key, once a large space is read out of order
};

/// Keeps the characters of keys, block by block, where they stay.
class CKeyStore
{
public:
  std::string_view keep(std::string_view i_key)
  {
    if (m_blocks.empty() || m_room < i_key.size())
    {
      m_room = std::max<std::size_t>(BLOCK_SIZE, i_key.size());
      m_blocks.emplace_back(new char[m_room]);
      m_end = m_blocks.back().get();
    }
    std::memcpy(m_end, i_key.data(), i_key.size());
    const std::string_view kept(m_end, i_key.size());
    m_end += i_key.size();
    m_room -= i_key.size();
    return kept;
  }

private:
  static constexpr std::size_t BLOCK_SIZE = 16384;

  std::vector<std::unique_ptr<char[]>> m_blocks;
  char* m_end = nullptr;
  std::size_t m_room = 0;
};

/// A graph with the state of its writing and reading.
struct CCodedGraph
{
  CKeyStore keys;
  CCodedSpace root;
  std::deque<CCodedObject> objects;
  std::unordered_map<const ClumCodable*, std::size_t> ranks;
  std::vector<CCodedSpace*> writing{&root};
  std::vector<CReadingFrame> reading{CReadingFrame(root)};
  std::vector<std::size_t> underWay;      ///< objects whose `initWithCoder` runs, the outermost first
  std::vector<std::size_t> promised;      ///< objects that were handed out before their `initWithCoder` began
  std::vector<ClumCodableShPtr> sleeping; ///< decoded, `awake` still to come
  std::size_t maximumDepth = NO_OBJECT;   ///< of objects within objects
  unsigned int depth = 0;                 ///< of nested `decodeObject` calls
  std::string generator = "orvane";
  int version = LUM_CODING_VERSION;
  int revision = 0;

  // Of a graph that came from outside.
  bool isForeign = false;
  bool isRefused = false;
  std::string name; ///< of where it came from

  std::size_t rankOf(const ClumCodable* i_object);

  template <class T>
  void write(const std::string& i_key, T&& i_value)
  {
    writing.back()->entries.push_back(CCodedEntry{keys.keep(i_key), TCodedValue(std::forward<T>(i_value))});
  }

  /// The value under a key: in a vector only the next one. @return null if it is missing.
  const TCodedValue* look(const std::string& i_key, bool i_doesConsume);

  /// The value under a key. @return null if it is missing or of another type, which refuses a foreign graph.
  template <class T>
  const T* find(const std::string& i_key)
  {
    const TCodedValue* value = look(i_key, true);
    const T* typed = value ? std::get_if<T>(value) : nullptr;
    if (value && !typed)
      refuse("'" + i_key + "' is of another type than what is read");
    return typed;
  }

  template <class T>
  T read(const std::string& i_key)
  {
    const T* value = find<T>(i_key);
    return value ? *value : T();
  }

  /// From now on a foreign graph decodes as null; the first reason goes to the log with the place.
  void refuse(const std::string& i_reason);

  /// The object of a reference. One that is only known weakly is handed out as it was allocated, and read in its turn,
  /// with its owner: so an object that is read finds what it owns complete.
  ClumCodableShPtr decode(const CCodedReference& i_reference, const ClumCoderShPtr& i_coder);
  void awakeAll();

private:
  ClumCodableShPtr promise(std::size_t i_object);
  ClumCodableShPtr decodeNow(std::size_t i_object, const ClumCoderShPtr& i_coder);
  std::size_t findRank(CReadingFrame& io_frame, const std::string& i_key) const;
};

/// "line 3, column 14" of a place in a text.
std::string lumPlaceInText(const std::string& i_text, std::size_t i_place);
