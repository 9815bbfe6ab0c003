#pragma once

#include "foundation/lumCodable.h"
#include "foundation/lumMat4.h"

#include <memory>
#include <string>
#include <variant>
#include <vector>

// What the memory coder keeps of a graph.

constexpr std::size_t NO_OBJECT = ~std::size_t(0);

/// A reference to one of the coder's objects, or to none.
struct CCodedReference
{
  std::size_t object;
};

using TCodedBuffer = std::vector<unsigned char>;

struct CCodedEntry;

/// What was written under the keys of one object or in one vector, in the order of writing.
struct CCodedSpace
{
  std::vector<CCodedEntry> entries;
  bool isVector = false;
};

using TCodedValue = std::variant<int, unsigned int, std::size_t, float, double, std::string, bool, ClumMat4, ClumVect3,
                                 void*, ShPtr<void>, ShPtr<const void>, CCodedReference, TCodedBuffer,
                                 std::vector<double>, std::unique_ptr<CCodedSpace>>;

struct CCodedEntry
{
  std::string key;
  TCodedValue value;
};

/// An object that was met while encoding.
struct CCodedObject
{
  enum EState
  {
    MENTIONED, ///< by weak references only
    WRITTEN,
    PINNED,
    REFUSED
  };

  const ClumCodable* source;
  ClumCodableConstShPtr handle; ///< keeps a written or pinned object, and so its address
  EState state = MENTIONED;
  ClumClassShPtr classObject;
  CCodedSpace space;
  bool isDecoded = false;
  ClumCodableShPtr decoded;
};

/// Where reading stands in one space.
struct CReadingFrame
{
  const CCodedSpace* space;
  std::size_t next = 0;
  std::size_t nextAtLastTest = NO_OBJECT; ///< of `canContinueVectorDecoding`: a loop that reads nothing has to end
};
