#include "foundation/lumClass.h"

#include "foundation/lumDescriptors.h"

namespace
{
template <class ELEMENT>
ShPtr<ELEMENT> elementNamed(const std::vector<ShPtr<ELEMENT>>& i_elements, const std::string& i_name)
{
  for (const ShPtr<ELEMENT>& element : i_elements)
    if (element->name() == i_name)
      return element;
  return ShPtr<ELEMENT>();
}
}  // namespace

ClumClassShPtr ClumClass::create(const std::string& i_name, TAllocator i_allocator, const std::type_info& i_type)
{
  return ClumClassShPtr(new ClumClass(i_name, i_allocator, i_type));
}

ClumClass::ClumClass(const std::string& i_name, TAllocator i_allocator, const std::type_info& i_type)
  : ClumRuntimeElement(i_name, i_name), m_allocator(i_allocator), m_type(i_type)
{
}

std::vector<ClumClassShPtr> ClumClass::children() const
{
  std::vector<ClumClassShPtr> children;
  for (const ClumClassWkPtr& child : m_children)
    if (const ClumClassShPtr alive = child.lock())
      children.push_back(alive);
  return children;
}

bool ClumClass::isA(const ClumClass& i_class) const
{
  if (this == &i_class)
    return true;
  for (const ClumClassShPtr& parent : m_parents)
    if (parent->isA(i_class))
      return true;
  return false;
}

void ClumClass::addDynamicProperty(const ClumClassShPtr& i_class, const std::string& i_name, const ClumValue& i_default)
{
  if (i_class && !i_class->dynamicPropertyDefault(i_name))
    i_class->m_dynamicProperties.emplace_back(i_name, i_default);
}

ClumPropertyDescriptorShPtr ClumClass::propertyNamed(const std::string& i_name) const
{
  ClumPropertyDescriptorShPtr found = elementNamed(m_properties, i_name);
  for (auto parent = m_parents.begin(); !found && parent != m_parents.end(); ++parent)
    found = (*parent)->propertyNamed(i_name);
  return found;
}

ClumCollectionDescriptorShPtr ClumClass::collectionNamed(const std::string& i_name) const
{
  ClumCollectionDescriptorShPtr found = elementNamed(m_collections, i_name);
  for (auto parent = m_parents.begin(); !found && parent != m_parents.end(); ++parent)
    found = (*parent)->collectionNamed(i_name);
  return found;
}

ClumEnumShPtr ClumClass::enumNamed(const std::string& i_name) const
{
  ClumEnumShPtr found = elementNamed(m_enums, i_name);
  for (auto parent = m_parents.begin(); !found && parent != m_parents.end(); ++parent)
    found = (*parent)->enumNamed(i_name);
  return found;
}

const ClumValue* ClumClass::dynamicPropertyDefault(const std::string& i_name) const
{
  for (const auto& [name, value] : m_dynamicProperties)
    if (name == i_name)
      return &value;
  for (const ClumClassShPtr& parent : m_parents)
    if (const ClumValue* value = parent->dynamicPropertyDefault(i_name))
      return value;
  return nullptr;
}
