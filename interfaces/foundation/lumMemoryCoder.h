#pragma once

#include "foundation/lumGraphCoder.h"

/// A coder that keeps its values in memory: what deep copies go through.
///
/// A pinned object passes by reference: it decodes as itself, and nothing is written of it. An object whose
/// `initWithCoder` fails is dropped: references to it decode as null.
class LUM_API ClumMemoryCoder : public ClumGraphCoder
{
  LUM_UNREFLECTED(ClumMemoryCoder, ClumGraphCoder);

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

protected:
  ClumMemoryCoder() = default;
  lmStatus init(const ClumMemoryCoderWkPtr& i_weakPtr);
};
