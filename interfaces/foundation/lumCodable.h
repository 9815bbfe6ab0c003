#pragma once

#include "foundation/lumObject.h"

/// An object that can be written to a coder and read back.
///
/// `encodeWithCoder` calls the base's first, then writes the class's own fields under literal keys in a fixed order.
/// `initWithCoder` calls the base's first, returns at once if that failed, then reads the same keys; the class's `init`
/// is not run. `awake` is called on each object once a whole graph is decoded: it makes anew what cannot be stored
/// (subscriptions, caches).
class LUM_API ClumCodable : public ClumObject
{
  LUM_CLASS_BODY(ClumCodable, ClumObject)
  ClumCodableConstShPtr self() const { return lumSelf(*this); }

  virtual void encodeWithCoder(const ClumCoderShPtr& i_coder) const;
  /// @param i_self a handle on this object, which the coder has just allocated.
  virtual lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self);
  virtual void awake();
  /// A deep copy through a memory coder; null if the object cannot be coded.
  virtual ClumCodableShPtr cloneByCoding() const;

  /// A deep copy in which the objects of the list are shared with the original instead of copied.
  ClumCodableShPtr cloneByCodingWithPinnedObjects(const std::vector<ClumCodableConstShPtr>& i_pinned) const;
  /// True if both are of one class and write the same coded form. References to objects outside count as equal if they
  /// lead to the same object.
  bool equalByCoding(const ClumCodable& i_other) const;

protected:
  ClumCodable() = default;
  ClumCodable(const ClumCodable&) = default;
  ClumCodable& operator=(const ClumCodable&) = default;
  lmStatus init(const ClumCodableWkPtr& i_weakPtr);

private:
  friend class LumAccess;
};

/// A codable object that may change after it was made.
class LUM_API ClumMutableCodable : public ClumCodable
{
  LUM_CLASS_BODY(ClumMutableCodable, ClumCodable)
  ClumMutableCodableShPtr self() const { return lumSelf(*this); }

protected:
  ClumMutableCodable() = default;
  ClumMutableCodable(const ClumMutableCodable&) = default;
  ClumMutableCodable& operator=(const ClumMutableCodable&) = default;
  lmStatus init(const ClumMutableCodableWkPtr& i_weakPtr);

private:
  friend class LumAccess;
};
