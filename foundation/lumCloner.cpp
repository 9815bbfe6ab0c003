#include "foundation/lumCloner.h"

#include "foundation/lumClass.h"
#include "foundation/lumCodable.h"
#include "foundation/lumObjectFilter.h"

#include <algorithm>

ClumCloner::~ClumCloner() = default;

ClumClonerShPtr ClumCloner::create()
{
  return lumCreate<ClumCloner>();
}

lmStatus ClumCloner::init(const ClumClonerWkPtr& i_weakPtr)
{
  return ClumMemoryCoder::init(i_weakPtr);
}

void ClumCloner::addNonClonableFilter(const ClumObjectFilter& i_filter)
{
  m_filters.push_back(i_filter.clone());
}

void ClumCloner::addNonClonableClass(const ShPtr<ClumClass>& i_class)
{
  if (i_class)
    m_classes.push_back(i_class);
}

bool ClumCloner::isShared(const ClumCodable& i_object) const
{
  const ClumClassShPtr object = i_object.classObject();
  return std::any_of(m_filters.begin(), m_filters.end(),
                     [&](const ClumObjectFilterConstShPtr& filter) { return filter->accepts(i_object); }) ||
         std::any_of(m_classes.begin(), m_classes.end(),
                     [&](const ClumClassShPtr& shared) { return object->isA(*shared); });
}

lmStatus ClumCloner::encodeObject(const ClumCodable* i_object, const std::string& i_key)
{
  if (i_object && isShared(*i_object))
    pin(i_object);
  return ClumMemoryCoder::encodeObject(i_object, i_key);
}

void ClumCloner::encodeWeakObject(const ClumCodable* i_object, const std::string& i_key)
{
  if (i_object && isShared(*i_object))
    pin(i_object);
  ClumMemoryCoder::encodeWeakObject(i_object, i_key);
}
