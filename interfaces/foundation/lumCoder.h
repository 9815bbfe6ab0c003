#pragma once

#include "foundation/lumObject.h"

#include <cstddef>
#include <vector>

/// A keyed store that objects are written to and read back from.
///
/// Keys are texts; an object, and each record of a vector, is a space of keys of its own. The coder keeps identity: an
/// object that is encoded twice is decoded as one, so shared handles, weak back references and cycles with one weak
/// edge survive. A weak reference never causes the object to be written: if nothing else wrote it, it decodes as null.
/// Decoding makes an object by its class name, calls `initWithCoder`, and once the whole graph stands, `awake` on every
/// object of it.
///
/// A missing key of a plain type reads as 0 or empty; a null object is legal. The vector operations are written here on
/// `beginVectorEncoding`, the scalar operations and `endVectorEncoding`, so a store has to supply only those.
/// Used by one thread; the graph must not change meanwhile.
class LUM_API ClumCoder : public ClumObject
{
  LUM_UNREFLECTED(ClumCoder, ClumObject);

public:
  // Scalars.
  virtual void encodeInt(int i_value, const std::string& i_key) = 0;
  virtual void encodeUnsignedInt(unsigned int i_value, const std::string& i_key) = 0;
  virtual void encodeSizeT(std::size_t i_value, const std::string& i_key) = 0;
  virtual void encodeFloat(float i_value, const std::string& i_key) = 0;
  virtual void encodeDouble(double i_value, const std::string& i_key) = 0;
  virtual void encodeString(const std::string& i_value, const std::string& i_key) = 0;
  virtual void encodeBool(bool i_value, const std::string& i_key) = 0;

  // Objects. Null is legal.
  /// @return failure if the object cannot be coded (its class has no class object or cannot be made by name); null is
  /// then written in its place.
  virtual lmStatus encodeObject(const ClumCodable* i_object, const std::string& i_key) = 0;
  virtual void encodeWeakObject(const ClumCodable* i_object, const std::string& i_key) = 0;

  // Values. Pointers are kept as they are, which only a coder in memory can do.
  virtual void encodeColor(const ClumColor& i_value, const std::string& i_key) = 0;
  virtual void encodeMat4(const ClumMat4& i_value, const std::string& i_key) = 0;
  virtual void encodeVect3(const ClumVect3& i_value, const std::string& i_key) = 0;
  virtual void encodePointer(void* i_pointer, const std::string& i_key) = 0;
  virtual void encodeSharedPointer(const ShPtr<void>& i_pointer, const std::string& i_key) = 0;
  virtual void encodeConstSharedPointer(const ShPtr<const void>& i_pointer, const std::string& i_key) = 0;

  // Vectors by hand: items, or records of several fields, under whatever keys, in order.
  virtual void beginVectorEncoding(const std::string& i_key) = 0;
  virtual void endVectorEncoding() = 0;
  virtual void encodeBuffer(const void* i_data, std::size_t i_size, const std::string& i_key) = 0;

  // Vectors in one call.
  virtual void encodeObjectVector(const std::vector<const ClumCodable*>& i_objects, const std::string& i_key);
  virtual void encodeObjectShPtrVector(const std::vector<ClumCodableConstShPtr>& i_objects, const std::string& i_key);
  virtual void encodeWeakObjectVector(const std::vector<const ClumCodable*>& i_objects, const std::string& i_key);
  virtual void encodeWeakObjectShPtrVector(const std::vector<ClumCodableConstShPtr>& i_objects,
                                           const std::string& i_key);
  virtual void encodeWeakObjectWkPtrVector(const std::vector<ClumCodableConstWkPtr>& i_objects,
                                           const std::string& i_key);
  virtual void encodePointerVector(const std::vector<void*>& i_pointers, const std::string& i_key);
  virtual void encodeSharedPointerVector(const std::vector<ShPtr<void>>& i_pointers, const std::string& i_key);
  virtual void encodeIntVector(const std::vector<int>& i_values, const std::string& i_key);
  virtual void encodeUnsignedIntVector(const std::vector<unsigned int>& i_values, const std::string& i_key);
  virtual void encodeSizeTVector(const std::vector<std::size_t>& i_values, const std::string& i_key);
  virtual void encodeFloatVector(const std::vector<float>& i_values, const std::string& i_key);
  virtual void encodeDoubleVector(const std::vector<double>& i_values, const std::string& i_key);
  virtual void encodeStringVector(const std::vector<std::string>& i_values, const std::string& i_key);
  virtual void encodeBoolVector(const std::vector<bool>& i_values, const std::string& i_key);
  virtual void encodeColorVector(const std::vector<ClumColor>& i_values, const std::string& i_key);
  virtual void encodeMat4Vector(const std::vector<ClumMat4>& i_values, const std::string& i_key);
  virtual void encodeVect3Vector(const std::vector<ClumVect3>& i_values, const std::string& i_key);
  virtual void encodePoint3Vector(const std::vector<ClumPoint3>& i_values, const std::string& i_key);
  virtual void encodeValueVector(const std::vector<ClumValue>& i_values, const std::string& i_key);

  /// True if the key was written in the space of keys that is being read. Inside a vector: if it is the next item's.
  virtual bool hasKey(const std::string& i_key) = 0;

  // Reading.
  virtual int decodeInt(const std::string& i_key) = 0;
  virtual unsigned int decodeUnsignedInt(const std::string& i_key) = 0;
  virtual std::size_t decodeSizeT(const std::string& i_key) = 0;
  virtual float decodeFloat(const std::string& i_key) = 0;
  virtual double decodeDouble(const std::string& i_key) = 0;
  virtual std::string decodeString(const std::string& i_key) = 0;
  virtual bool decodeBool(const std::string& i_key) = 0;
  virtual ClumColor decodeColor(const std::string& i_key) = 0;
  /// The identity if the key is missing.
  virtual ClumMat4 decodeMat4(const std::string& i_key) = 0;
  virtual ClumVect3 decodeVect3(const std::string& i_key) = 0;
  /// The object of a strong or weak reference, not complete before `awake`.
  virtual ClumCodableShPtr decodeObject(const std::string& i_key) = 0;
  virtual void* decodePointer(const std::string& i_key) = 0;
  virtual ShPtr<void> decodeSharedPointer(const std::string& i_key) = 0;
  virtual ShPtr<const void> decodeConstSharedPointer(const std::string& i_key) = 0;

  /// A missing key reads as an empty vector. Each `begin` needs its `end`.
  virtual void beginVectorDecoding(const std::string& i_key) = 0;
  virtual bool canContinueVectorDecoding() = 0;
  virtual void endVectorDecoding() = 0;
  virtual std::size_t decodeBufferSize(const std::string& i_key) = 0;
  /// Does not move on, inside a vector, past the buffer before its data are read.
  /// @param o_data takes `decodeBufferSize` bytes.
  virtual void decodeBufferData(void* o_data, const std::string& i_key) = 0;

  virtual void decodeObjectVector(const std::string& i_key, std::vector<ClumCodable*>& o_objects);
  virtual void decodeObjectShPtrVector(const std::string& i_key, std::vector<ClumCodableShPtr>& o_objects);
  virtual void decodeWeakObjectVector(const std::string& i_key, std::vector<ClumCodable*>& o_objects);
  virtual void decodeWeakObjectShPtrVector(const std::string& i_key, std::vector<ClumCodableShPtr>& o_objects);
  virtual void decodeWeakObjectWkPtrVector(const std::string& i_key, std::vector<ClumCodableWkPtr>& o_objects);
  virtual void decodePointerVector(const std::string& i_key, std::vector<void*>& o_pointers);
  virtual void decodeSharedPointerVector(const std::string& i_key, std::vector<ShPtr<void>>& o_pointers);
  virtual void decodeIntVector(const std::string& i_key, std::vector<int>& o_values);
  virtual void decodeUnsignedIntVector(const std::string& i_key, std::vector<unsigned int>& o_values);
  virtual void decodeSizeTVector(const std::string& i_key, std::vector<std::size_t>& o_values);
  virtual void decodeFloatVector(const std::string& i_key, std::vector<float>& o_values);
  virtual void decodeDoubleVector(const std::string& i_key, std::vector<double>& o_values);
  virtual void decodeStringVector(const std::string& i_key, std::vector<std::string>& o_values);
  virtual void decodeBoolVector(const std::string& i_key, std::vector<bool>& o_values);
  virtual void decodeColorVector(const std::string& i_key, std::vector<ClumColor>& o_values);
  virtual void decodeMat4Vector(const std::string& i_key, std::vector<ClumMat4>& o_values);
  virtual void decodeVect3Vector(const std::string& i_key, std::vector<ClumVect3>& o_values);
  virtual void decodePoint3Vector(const std::string& i_key, std::vector<ClumPoint3>& o_values);
  virtual void decodeValueVector(const std::string& i_key, std::vector<ClumValue>& o_values);

  /// The key of a vector's item: the vector's key, "/" and the rank.
  virtual std::string makeVectorItemKey(const std::string& i_key, unsigned int i_rank) const;
  /// Who wrote what is being read, and by which version and revision.
  virtual std::string decodedGenerator() const = 0;
  virtual int decodedVersion() const = 0;
  virtual int decodedRevision() const = 0;

  lmStatus encodeObjectShPtr(const ClumCodableConstShPtr& i_object, const std::string& i_key);
  void encodeWeakObjectWkPtr(const ClumCodableConstWkPtr& i_object, const std::string& i_key);
  /// True if what is being read was written by an older release than `i_version`. Versions are negative, and a newer
  /// release has the larger magnitude.
  bool isDecodedVersionStrictlyLowerThan(int i_version) const;

  /// `decodeObject` for a reference that owns, beside others perhaps: null if the object is of another class.
  template <class X>
  ShPtr<X> decode(const std::string& i_key)
  {
    return decodeHeld<X>(i_key, SHARED);
  }
  /// The same for an object that belongs to one owner alone, as the members of a tree do.
  template <class X>
  ShPtr<X> decodePart(const std::string& i_key)
  {
    return decodeHeld<X>(i_key, SOLE);
  }
  /// The same for a reference that is held weakly, for instance to the owner of what is being read.
  template <class X>
  ShPtr<X> decodeWeak(const std::string& i_key)
  {
    return decodeHeld<X>(i_key, WEAK);
  }
  /// Vectors of handles of any codable class. On reading, an object of another class gives null.
  template <class X>
  void encodeObjects(const std::vector<ShPtr<X>>& i_objects, const std::string& i_key)
  {
    encodeObjectShPtrVector(std::vector<ClumCodableConstShPtr>(i_objects.begin(), i_objects.end()), i_key);
  }
  template <class X>
  void decodeObjects(const std::string& i_key, std::vector<ShPtr<X>>& o_objects)
  {
    decodeHeldObjects(i_key, SHARED, o_objects);
  }
  template <class X>
  void decodeParts(const std::string& i_key, std::vector<ShPtr<X>>& o_objects)
  {
    decodeHeldObjects(i_key, SOLE, o_objects);
  }

protected:
  ClumCoder() = default;
  lmStatus init(const ClumCoderWkPtr& i_weakPtr);

  /// What becomes of an object that could not be encoded. Here: an error in the log.
  virtual void handleEncodingFailure(const lmStatus& i_status);

  /// How the reader holds an object: a coder that does not trust what it reads refuses an object with two sole owners
  /// and one that is owned where the text only refers to it, since both could close a circle of owners.
  enum EHold
  {
    SHARED,
    SOLE,
    WEAK
  };
  /// @return null if the object is not fitting.
  virtual ClumCodableShPtr decodeHeldObject(const std::string& i_key, EHold i_hold,
                                            bool (*i_isFitting)(const ClumObject&));

private:
  template <class X>
  ShPtr<X> decodeHeld(const std::string& i_key, EHold i_hold)
  {
    return boost::dynamic_pointer_cast<X>(decodeHeldObject(i_key, i_hold, &isOfClass<X>));
  }
  template <class X>
  void decodeHeldObjects(const std::string& i_key, EHold i_hold, std::vector<ShPtr<X>>& o_objects)
  {
    o_objects.clear();
    beginVectorDecoding(i_key);
    while (canContinueVectorDecoding())
      o_objects.push_back(decodeHeld<X>(makeVectorItemKey(i_key, static_cast<unsigned int>(o_objects.size())), i_hold));
    endVectorDecoding();
  }
  template <class X>
  static bool isOfClass(const ClumObject& i_object)
  {
    return dynamic_cast<const X*>(&i_object) != nullptr;
  }
};
