#include "foundation/lumCoder.h"

#include "foundation/lumCodable.h"
#include "foundation/lumColor.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumMat4.h"

namespace
{
/// Writes a vector: `ENCODE` writes one item under one key.
template <class T, class ENCODE>
void encodeCoderItems(ClumCoder& io_coder, const std::vector<T>& i_items, const std::string& i_key, ENCODE i_encode)
{
  io_coder.beginVectorEncoding(i_key);
  for (unsigned int i = 0; i < i_items.size(); ++i)
    i_encode(i_items[i], io_coder.makeVectorItemKey(i_key, i));
  io_coder.endVectorEncoding();
}

template <class T, class DECODE>
void decodeCoderItems(ClumCoder& io_coder, const std::string& i_key, std::vector<T>& o_items, DECODE i_decode)
{
  o_items.clear();
  io_coder.beginVectorDecoding(i_key);
  while (io_coder.canContinueVectorDecoding())
    o_items.push_back(i_decode(io_coder.makeVectorItemKey(i_key, static_cast<unsigned int>(o_items.size()))));
  io_coder.endVectorDecoding();
}

const char* const VALUE_TYPE_KEY = "type";
const char* const VALUE_KEY = "value";

void encodeCodedValue(ClumCoder& io_coder, const ClumValue& i_value)
{
  io_coder.encodeInt(i_value.type(), VALUE_TYPE_KEY);
  switch (i_value.type())
  {
  case ClumValue::NONE: break;
  case ClumValue::BOOL: io_coder.encodeBool(i_value.asBool(), VALUE_KEY); break;
  case ClumValue::INT: io_coder.encodeInt(i_value.asInt(), VALUE_KEY); break;
  case ClumValue::UNSIGNED_INT: io_coder.encodeUnsignedInt(i_value.asUnsignedInt(), VALUE_KEY); break;
  case ClumValue::DOUBLE: io_coder.encodeDouble(i_value.asDouble(), VALUE_KEY); break;
  case ClumValue::STRING: io_coder.encodeString(i_value.asString(), VALUE_KEY); break;
  case ClumValue::OBJECT:
  case ClumValue::CONST_OBJECT:
    io_coder.encodeObjectShPtr(boost::dynamic_pointer_cast<const ClumCodable>(i_value.getConstObject()), VALUE_KEY);
    break;
  case ClumValue::VOID: io_coder.encodeSharedPointer(i_value.asVoid(), VALUE_KEY); break;
  case ClumValue::CONST_VOID: io_coder.encodeConstSharedPointer(i_value.asConstVoid(), VALUE_KEY); break;
  }
}

ClumValue decodeCodedValue(ClumCoder& io_coder)
{
  switch (io_coder.decodeInt(VALUE_TYPE_KEY))
  {
  case ClumValue::BOOL: return ClumValue(io_coder.decodeBool(VALUE_KEY));
  case ClumValue::INT: return ClumValue(io_coder.decodeInt(VALUE_KEY));
  case ClumValue::UNSIGNED_INT: return ClumValue(io_coder.decodeUnsignedInt(VALUE_KEY));
  case ClumValue::DOUBLE: return ClumValue(io_coder.decodeDouble(VALUE_KEY));
  case ClumValue::STRING: return ClumValue(io_coder.decodeString(VALUE_KEY));
  case ClumValue::OBJECT: return ClumValue(ClumObjectShPtr(io_coder.decodeObject(VALUE_KEY)));
  case ClumValue::CONST_OBJECT: return ClumValue(ClumObjectConstShPtr(io_coder.decodeObject(VALUE_KEY)));
  case ClumValue::VOID: return ClumValue(io_coder.decodeSharedPointer(VALUE_KEY));
  case ClumValue::CONST_VOID: return ClumValue(io_coder.decodeConstSharedPointer(VALUE_KEY));
  default: return ClumValue();
  }
}
} // namespace

lmStatus ClumCoder::init(const ClumCoderWkPtr& i_weakPtr)
{
  return ClumObject::init(i_weakPtr);
}

// One line an operation: the vectors of a type go through the scalar operations of that type.
#define LUM_CODER_VECTOR(NAME, ITEM, SCALAR)                                                                           \
  void ClumCoder::encode##NAME##Vector(const std::vector<ITEM>& i_items, const std::string& i_key)                     \
  {                                                                                                                    \
    encodeCoderItems(*this, i_items, i_key,                                                                            \
                     [this](const auto& item, const std::string& key) { encode##SCALAR(item, key); });                 \
  }                                                                                                                    \
  void ClumCoder::decode##NAME##Vector(const std::string& i_key, std::vector<ITEM>& o_items)                           \
  {                                                                                                                    \
    decodeCoderItems(*this, i_key, o_items, [this](const std::string& key) { return decode##SCALAR(key); });           \
  }

LUM_CODER_VECTOR(Pointer, void*, Pointer)
LUM_CODER_VECTOR(SharedPointer, ShPtr<void>, SharedPointer)
LUM_CODER_VECTOR(Int, int, Int)
LUM_CODER_VECTOR(UnsignedInt, unsigned int, UnsignedInt)
LUM_CODER_VECTOR(SizeT, std::size_t, SizeT)
LUM_CODER_VECTOR(Float, float, Float)
LUM_CODER_VECTOR(Double, double, Double)
LUM_CODER_VECTOR(String, std::string, String)
LUM_CODER_VECTOR(Bool, bool, Bool)
LUM_CODER_VECTOR(Color, ClumColor, Color)
LUM_CODER_VECTOR(Mat4, ClumMat4, Mat4)
LUM_CODER_VECTOR(Vect3, ClumVect3, Vect3)
#undef LUM_CODER_VECTOR

void ClumCoder::encodePoint3Vector(const std::vector<ClumPoint3>& i_values, const std::string& i_key)
{
  encodeCoderItems(*this, i_values, i_key,
                   [this](const ClumPoint3& point, const std::string& key) { encodeVect3(point.toVect3(), key); });
}

void ClumCoder::decodePoint3Vector(const std::string& i_key, std::vector<ClumPoint3>& o_values)
{
  decodeCoderItems(*this, i_key, o_values, [this](const std::string& key) { return ClumPoint3(decodeVect3(key)); });
}

void ClumCoder::encodeValueVector(const std::vector<ClumValue>& i_values, const std::string& i_key)
{
  encodeCoderItems(*this, i_values, i_key,
                   [this](const ClumValue& value, const std::string&) { encodeCodedValue(*this, value); });
}

void ClumCoder::decodeValueVector(const std::string& i_key, std::vector<ClumValue>& o_values)
{
  decodeCoderItems(*this, i_key, o_values, [this](const std::string&) { return decodeCodedValue(*this); });
}

void ClumCoder::encodeObjectVector(const std::vector<const ClumCodable*>& i_objects, const std::string& i_key)
{
  encodeCoderItems(*this, i_objects, i_key,
                   [this](const ClumCodable* object, const std::string& key) { encodeObject(object, key); });
}

void ClumCoder::encodeObjectShPtrVector(const std::vector<ClumCodableConstShPtr>& i_objects, const std::string& i_key)
{
  encodeCoderItems(*this, i_objects, i_key,
                   [this](const ClumCodableConstShPtr& object, const std::string& key)
                   { encodeObject(object.get(), key); });
}

void ClumCoder::encodeWeakObjectVector(const std::vector<const ClumCodable*>& i_objects, const std::string& i_key)
{
  encodeCoderItems(*this, i_objects, i_key,
                   [this](const ClumCodable* object, const std::string& key) { encodeWeakObject(object, key); });
}

void ClumCoder::encodeWeakObjectShPtrVector(const std::vector<ClumCodableConstShPtr>& i_objects,
                                            const std::string& i_key)
{
  encodeCoderItems(*this, i_objects, i_key,
                   [this](const ClumCodableConstShPtr& object, const std::string& key)
                   { encodeWeakObject(object.get(), key); });
}

void ClumCoder::encodeWeakObjectWkPtrVector(const std::vector<ClumCodableConstWkPtr>& i_objects,
                                            const std::string& i_key)
{
  encodeCoderItems(*this, i_objects, i_key,
                   [this](const ClumCodableConstWkPtr& object, const std::string& key)
                   { encodeWeakObject(object.lock().get(), key); });
}

void ClumCoder::decodeObjectVector(const std::string& i_key, std::vector<ClumCodable*>& o_objects)
{
  decodeCoderItems(*this, i_key, o_objects, [this](const std::string& key) { return decodeObject(key).get(); });
}

void ClumCoder::decodeObjectShPtrVector(const std::string& i_key, std::vector<ClumCodableShPtr>& o_objects)
{
  decodeCoderItems(*this, i_key, o_objects, [this](const std::string& key) { return decodeObject(key); });
}

void ClumCoder::decodeWeakObjectVector(const std::string& i_key, std::vector<ClumCodable*>& o_objects)
{
  decodeObjectVector(i_key, o_objects);
}

void ClumCoder::decodeWeakObjectShPtrVector(const std::string& i_key, std::vector<ClumCodableShPtr>& o_objects)
{
  decodeObjectShPtrVector(i_key, o_objects);
}

void ClumCoder::decodeWeakObjectWkPtrVector(const std::string& i_key, std::vector<ClumCodableWkPtr>& o_objects)
{
  decodeCoderItems(*this, i_key, o_objects,
                   [this](const std::string& key) { return ClumCodableWkPtr(decodeObject(key)); });
}

std::string ClumCoder::makeVectorItemKey(const std::string& i_key, unsigned int i_rank) const
{
  return i_key + "/" + std::to_string(i_rank);
}

lmStatus ClumCoder::encodeObjectShPtr(const ClumCodableConstShPtr& i_object, const std::string& i_key)
{
  return encodeObject(i_object.get(), i_key);
}

void ClumCoder::encodeWeakObjectWkPtr(const ClumCodableConstWkPtr& i_object, const std::string& i_key)
{
  encodeWeakObject(i_object.lock().get(), i_key);
}

ClumCodableShPtr ClumCoder::decodeHeldObject(const std::string& i_key, EHold, bool (*i_isFitting)(const ClumObject&))
{
  const ClumCodableShPtr object = decodeObject(i_key);
  return object && i_isFitting(*object) ? object : ClumCodableShPtr();
}

bool ClumCoder::isDecodedVersionStrictlyLowerThan(int i_version) const
{
  return decodedVersion() > i_version;
}

void ClumCoder::handleEncodingFailure(const lmStatus& i_status)
{
  ClumLogManager::addError("Cannot encode an object: " + i_status.description());
}
