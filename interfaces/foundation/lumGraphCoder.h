#pragma once

#include "foundation/lumCoder.h"

#include <memory>

struct CCodedGraph;

/// What the coders share that hold a whole coded graph: identity of objects, spaces of keys, order of awakening.
///
/// The graph keeps the objects that were encoded until the coder dies. A graph is decoded once: a second `decodeObject`
/// of the same object gives the same handle. A graph that this process encoded is read as it is; one that came from
/// outside is taken as a whole or not at all: the first thing in it that is not as the reader asks for it is logged
/// with its place, and from then on everything decodes as null.
class LUM_API ClumGraphCoder : public ClumCoder
{
  LUM_UNREFLECTED(ClumGraphCoder, ClumCoder);

public:
  ~ClumGraphCoder() override;

  void encodeInt(int i_value, const std::string& i_key) override;
  void encodeUnsignedInt(unsigned int i_value, const std::string& i_key) override;
  void encodeSizeT(std::size_t i_value, const std::string& i_key) override;
  void encodeFloat(float i_value, const std::string& i_key) override;
  void encodeDouble(double i_value, const std::string& i_key) override;
  void encodeString(const std::string& i_value, const std::string& i_key) override;
  void encodeBool(bool i_value, const std::string& i_key) override;
  lmStatus encodeObject(const ClumCodable* i_object, const std::string& i_key) override;
  void encodeWeakObject(const ClumCodable* i_object, const std::string& i_key) override;
  void encodeColor(const ClumColor& i_value, const std::string& i_key) override;
  void encodeMat4(const ClumMat4& i_value, const std::string& i_key) override;
  void encodeVect3(const ClumVect3& i_value, const std::string& i_key) override;
  void encodePointer(void* i_pointer, const std::string& i_key) override;
  void encodeSharedPointer(const ShPtr<void>& i_pointer, const std::string& i_key) override;
  void encodeConstSharedPointer(const ShPtr<const void>& i_pointer, const std::string& i_key) override;
  void beginVectorEncoding(const std::string& i_key) override;
  void endVectorEncoding() override;
  void encodeBuffer(const void* i_data, std::size_t i_size, const std::string& i_key) override;
  void encodeIntVector(const std::vector<int>& i_values, const std::string& i_key) override;
  void encodeUnsignedIntVector(const std::vector<unsigned int>& i_values, const std::string& i_key) override;
  void encodeSizeTVector(const std::vector<std::size_t>& i_values, const std::string& i_key) override;
  void encodeFloatVector(const std::vector<float>& i_values, const std::string& i_key) override;
  void encodeDoubleVector(const std::vector<double>& i_values, const std::string& i_key) override;
  void encodeBoolVector(const std::vector<bool>& i_values, const std::string& i_key) override;

  bool hasKey(const std::string& i_key) override;
  int decodeInt(const std::string& i_key) override;
  unsigned int decodeUnsignedInt(const std::string& i_key) override;
  std::size_t decodeSizeT(const std::string& i_key) override;
  float decodeFloat(const std::string& i_key) override;
  double decodeDouble(const std::string& i_key) override;
  std::string decodeString(const std::string& i_key) override;
  bool decodeBool(const std::string& i_key) override;
  ClumColor decodeColor(const std::string& i_key) override;
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
  void decodeIntVector(const std::string& i_key, std::vector<int>& o_values) override;
  void decodeUnsignedIntVector(const std::string& i_key, std::vector<unsigned int>& o_values) override;
  void decodeSizeTVector(const std::string& i_key, std::vector<std::size_t>& o_values) override;
  void decodeFloatVector(const std::string& i_key, std::vector<float>& o_values) override;
  void decodeDoubleVector(const std::string& i_key, std::vector<double>& o_values) override;
  void decodeBoolVector(const std::string& i_key, std::vector<bool>& o_values) override;

  std::string decodedGenerator() const override;
  /// The current version unless what is read came from outside: what was encoded in this process is never old.
  int decodedVersion() const override;
  int decodedRevision() const override;

protected:
  ClumGraphCoder();
  lmStatus init(const ClumGraphCoderWkPtr& i_weakPtr);

  std::unique_ptr<CCodedGraph> m_graph;

private:
  ClumCodableShPtr decodeHeldObject(const std::string& i_key, EHold i_hold,
                                    bool (*i_isFitting)(const ClumObject&)) override;
};
