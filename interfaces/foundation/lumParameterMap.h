#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"
#include "foundation/lumStatus.h"
#include "foundation/lumStringKey.h"

#include <cstdint>
#include <vector>

/// Options on their way down a chain of calls: typed values under keys, with an optional base map below.
///
/// A key that the map itself does not hold is looked for in its base, then in the base's base. A nested call refines
/// what it was given by laying a map of its own on top; it never writes into the map that it was handed. Combining
/// writes (`addDouble`, `multiplyDouble`, `orBool`) are kept as such and applied to what the base gives at the time of
/// reading; where nothing below has a value they act on 0, 1 and false. On a key that the map holds itself they change
/// the value at once.
///
/// A double is also read from an int; otherwise a key whose value is of another type counts as absent, and so hides
/// the base's. A map holds few keys: it is a flat list, and a reading allocates nothing. Writing is for one thread at a
/// time, reading for any number.
class LUM_API ClumParameterMap
{
public:
  /// @param i_copiesBase true if the map takes the values of a base as they are when it is set, instead of following
  /// the base as it changes.
  static ClumParameterMapShPtr create(bool i_copiesBase = false);
  static ClumParameterMapShPtr createWithBase(const ClumParameterMapConstShPtr& i_base, bool i_copiesBase = false);
  /// A map with the values of `i_top`, those of its bases included, over `i_bottom`. Either may be null.
  static ClumParameterMapShPtr createByStacking(const ClumParameterMapConstShPtr& i_top,
                                                const ClumParameterMapConstShPtr& i_bottom);

  /// @return -1, without a change, if the map itself is among the bases of `i_base`. Null takes the base away.
  lmStatus setBase(const ClumParameterMapConstShPtr& i_base);
  const ClumParameterMapConstShPtr& base() const { return m_base; }
  /// Writes the values of `i_other`, those of its bases first, over this map's own.
  ClumParameterMap& inject(const ClumParameterMap& i_other);

  ClumParameterMap& setBool(const ClumStringKey& i_key, bool i_value);
  ClumParameterMap& setInt(const ClumStringKey& i_key, int i_value);
  ClumParameterMap& setDouble(const ClumStringKey& i_key, double i_value);
  /// The map does not own what the pointer leads to.
  ClumParameterMap& setPointer(const ClumStringKey& i_key, void* i_value);
  ClumParameterMap& setShPtr(const ClumStringKey& i_key, const ShPtr<void>& i_value);
  ClumParameterMap& setConstShPtr(const ClumStringKey& i_key, const ShPtr<const void>& i_value);
  ClumParameterMap& addDouble(const ClumStringKey& i_key, double i_value);
  ClumParameterMap& multiplyDouble(const ClumStringKey& i_key, double i_value);
  ClumParameterMap& orBool(const ClumStringKey& i_key, bool i_value);
  /// Writes under `i_key` what `i_other` gives under `i_otherKey`. @return -1 if that is nothing.
  lmStatus setFrom(const ClumStringKey& i_key, const ClumParameterMap& i_other, const ClumStringKey& i_otherKey);
  /// Takes the map's own value away, so that the base's is read again.
  ClumParameterMap& remove(const ClumStringKey& i_key);

  /// True if the map itself, without its bases, holds nothing.
  bool empty() const { return m_entries.empty(); }
  /// True if the map and its bases hold the pointer under this key and nothing else.
  bool holdsOnlyPointer(const ClumStringKey& i_key) const;
  bool hasBool(const ClumStringKey& i_key) const;
  bool hasInt(const ClumStringKey& i_key) const;
  bool hasDouble(const ClumStringKey& i_key) const;
  bool hasPointer(const ClumStringKey& i_key) const;
  bool hasConstShPtr(const ClumStringKey& i_key) const;

  bool boolValue(const ClumStringKey& i_key, bool i_default) const;
  int intValue(const ClumStringKey& i_key, int i_default) const;
  double doubleValue(const ClumStringKey& i_key, double i_default) const;

  // With a status: -1, the argument left alone, if the key is absent.
  lmStatus getBool(const ClumStringKey& i_key, bool& o_value) const;
  lmStatus getInt(const ClumStringKey& i_key, int& o_value) const;
  lmStatus getDouble(const ClumStringKey& i_key, double& o_value) const;
  lmStatus getPointer(const ClumStringKey& i_key, void*& o_value) const;
  lmStatus getVoidShPtr(const ClumStringKey& i_key, ShPtr<void>& o_value) const;
  /// Reads mutable handles too.
  lmStatus getVoidConstShPtr(const ClumStringKey& i_key, ShPtr<const void>& o_value) const;
  /// A handle that was stored as one on exactly a `T`. @return null if the key is absent.
  template <class T>
  ShPtr<T> shPtrValue(const ClumStringKey& i_key) const
  {
    ShPtr<void> handle;
    getVoidShPtr(i_key, handle);
    return boost::static_pointer_cast<T>(handle);
  }
  template <class T>
  ShPtr<const T> constShPtrValue(const ClumStringKey& i_key) const
  {
    ShPtr<const void> handle;
    getVoidConstShPtr(i_key, handle);
    return boost::static_pointer_cast<const T>(handle);
  }

private:
  enum EType
  {
    BOOL,
    INT,
    DOUBLE,
    POINTER,
    SH_PTR,
    CONST_SH_PTR,
    OR_BOOL,       ///< base's or own
    SCALED_DOUBLE, ///< base's * scale + offset
  };

  struct CEntry
  {
    explicit CEntry(const ClumStringKey& i_key, EType i_type) : key(i_key), type(i_type) {}
    ClumStringKey key;
    EType type;
    union
    {
      bool boolean;
      int integer;
      double number = 0.0; ///< also the offset of a scaled double
      void* pointer;
    };
    double scale = 1.0;
    double neutral = 0.0; ///< what a scaled double acts on where no base has a value
    ShPtr<const void> handle;
  };

  explicit ClumParameterMap(bool i_copiesBase) : m_copiesBase(i_copiesBase) {}
  const CEntry* ownEntry(const ClumStringKey& i_key) const;
  CEntry& entryOf(const ClumStringKey& i_key, EType i_type);
  CEntry* numberEntry(const ClumStringKey& i_key, double i_neutral);
  void apply(const CEntry& i_entry);
  const CEntry* findEntry(const ClumStringKey& i_key, EType i_type) const;

  std::vector<CEntry> m_entries;
  std::uint64_t m_marks = 0; ///< those of the entries' keys: where a key's is missing, the key is
  ClumParameterMapConstShPtr m_base;
  bool m_copiesBase;
};
