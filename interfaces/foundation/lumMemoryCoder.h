#pragma once

#include "foundation/lumCoder.h"

#include <memory>

/// A coder that keeps its values in memory: what deep copies go through.
///
/// It holds the objects that were encoded until it dies. A graph is decoded once: a second `decodeObject` of the same
/// object gives the same handle. A pinned object passes by reference: it decodes as itself, and nothing is written of
/// it.
class LUM_API ClumMemoryCoder : public ClumCoder
{
  LUM_UNREFLECTED(ClumMemoryCoder, ClumCoder);

public:
  ~ClumMemoryCoder() override;
  static ClumMemoryCoderShPtr create();

  /// Lets the object pass by reference. No effect on an object whose own encoding has begun.
  void pin(const ClumCodable* i_object);
  /// Lets `i_encoded`, wherever it is referred to, decode as `i_decoded`; null lets it decode as null.
  void setDecoded(const ClumCodable* i_encoded, const ClumCodable* i_decoded);
  /// `setDecoded` for the two objects and for each pair of objects that they own under the same keys, as far as the two
  /// graphs have one shape.
  void setDecodedRecursive(const ClumCodable* i_encoded, const ClumCodable* i_decoded);
  /// True if both hold equal values under equal keys in the same order, and graphs of one shape. References to objects
  /// that neither wrote are equal if they lead to the same object.
  bool hasEqualContent(const ClumMemoryCoder& i_other) const;

  void encodeInt(int i_value, const std::string& i_key) override;
  void encodeUnsignedInt(unsigned int i_value, const std::string& i_key) override;
  void encodeSizeT(std::size_t i_value, const std::string& i_key) override;
  void encodeFloat(float i_value, const std::string& i_key) override;
  void encodeDouble(double i_value, const std::string& i_key) override;
  void encodeString(const std::string& i_value, const std::string& i_key) override;
  void encodeBool(bool i_value, const std::string& i_key) override;
  lmStatus encodeObject(const ClumCodable* i_object, const std::string& i_key) override;
  void encodeWeakObject(const ClumCodable* i_object, const std::string& i_key) override;
  void encodeMat4(const ClumMat4& i_value, const std::string& i_key) override;
  void encodeVect3(const ClumVect3& i_value, const std::string& i_key) override;
  void encodePointer(void* i_pointer, const std::string& i_key) override;
  void encodeSharedPointer(const ShPtr<void>& i_pointer, const std::string& i_key) override;
  void encodeConstSharedPointer(const ShPtr<const void>& i_pointer, const std::string& i_key) override;
  void beginVectorEncoding(const std::string& i_key) override;
  void endVectorEncoding() override;
  void encodeBuffer(const void* i_data, std::size_t i_size, const std::string& i_key) override;
  void encodeDoubleVector(const std::vector<double>& i_values, const std::string& i_key) override;

  bool hasKey(const std::string& i_key) override;
  int decodeInt(const std::string& i_key) override;
  unsigned int decodeUnsignedInt(const std::string& i_key) override;
  std::size_t decodeSizeT(const std::string& i_key) override;
  float decodeFloat(const std::string& i_key) override;
  double decodeDouble(const std::string& i_key) override;
  std::string decodeString(const std::string& i_key) override;
  bool decodeBool(const std::string& i_key) override;
  ClumMat4 decodeMat4(const std::string& i_key) override;
  ClumVect3 decodeVect3(const std::string& i_key) override;
  ClumCodableShPtr decodeObject(const std::string& i_key) override;
  void* decodePointer(const std::string& i_key) override;
  ShPtr<void> decodeSharedPointer(const std::string& i_key) override;
  ShPtr<const void> decodeConstSharedPointer(const std::string& i_key) override;
  void beginVectorDecoding(const std::string& i_key) override;
  bool canContinueVectorDecoding() override;
  void endVectorDecoding() override;
  std::size_t decodeBufferSize(const std::string& i_key) override;
  void decodeBufferData(void* o_data, const std::string& i_key) override;
  void decodeDoubleVector(const std::string& i_key, std::vector<double>& o_values) override;

  std::string decodedGenerator() const override;
  /// The current version: what was encoded in this process is never old.
  int decodedVersion() const override;
  int decodedRevision() const override;

protected:
  ClumMemoryCoder();
  lmStatus init(const ClumMemoryCoderWkPtr& i_weakPtr);

private:
  struct CStore;

  std::unique_ptr<CStore> m_store;
};
