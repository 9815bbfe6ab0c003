#pragma once

#include "foundation/lumMemoryCoder.h"

/// The copying coder: encode a graph, decode it from the same coder, and what comes is a deep copy.
///
/// Objects that a filter names pass by reference instead of being copied.
class LUM_API ClumCloner : public ClumMemoryCoder
{
  LUM_UNREFLECTED(ClumCloner, ClumMemoryCoder);

public:
  ~ClumCloner() override;
  static ClumClonerShPtr create();

  /// Objects that the filter accepts are shared by original and copy. The filter is copied.
  void addNonClonableFilter(const ClumObjectFilter& i_filter);
  /// The same for the objects of a class and of the classes below it.
  void addNonClonableClass(const ShPtr<ClumClass>& i_class);

  lmStatus encodeObject(const ClumCodable* i_object, const std::string& i_key) override;
  void encodeWeakObject(const ClumCodable* i_object, const std::string& i_key) override;

protected:
  ClumCloner() = default;
  lmStatus init(const ClumClonerWkPtr& i_weakPtr);

private:
  bool isShared(const ClumCodable& i_object) const;

  std::vector<ClumObjectFilterConstShPtr> m_filters;
  std::vector<ClumClassShPtr> m_classes;
};
