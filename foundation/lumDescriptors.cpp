#include "foundation/lumDescriptors.h"

#include "foundation/lumMemberFunction.h"
#include "foundation/lumObject.h"

#include <cstdlib>

namespace
{
std::string trimmed(const std::string& i_text)
{
  const char* const blanks = " \t\n";
  const std::size_t first = i_text.find_first_not_of(blanks);
  return first == std::string::npos ? std::string()
                                    : i_text.substr(first, i_text.find_last_not_of(blanks) - first + 1);
}

/// The trimmed pieces between the separators; an empty last piece is dropped.
std::vector<std::string> splitText(const std::string& i_text, char i_separator)
{
  std::vector<std::string> pieces;
  std::size_t begin = 0;
  for (std::size_t end = 0; end != std::string::npos; begin = end + 1)
  {
    end = i_text.find(i_separator, begin);
    pieces.push_back(trimmed(i_text.substr(begin, end == std::string::npos ? end : end - begin)));
  }
  if (pieces.back().empty())
    pieces.pop_back();
  return pieces;
}

/// Getters and counting functions are const members: the wrapper takes them as members of a mutable object.
ClumObject* mutableObject(const ClumObject& i_object)
{
  return const_cast<ClumObject*>(&i_object);
}
}  // namespace

ClumMethodShPtr ClumMethod::create(const std::string& i_className, const std::string& i_returnType,
                                   const std::string& i_name, const std::string& i_parameters,
                                   const std::string& i_modifiers)
{
  const ClumMethodShPtr method(new ClumMethod(i_className, i_name));
  method->m_returnType = i_returnType;
  method->m_parameters = i_parameters;
  method->m_modifiers = i_modifiers;
  return method;
}

ClumPropertyDescriptorShPtr ClumPropertyDescriptor::create(const std::string& i_className, const std::string& i_name,
                                                           const ClumMemberFunctionConstShPtr& i_setter,
                                                           const ClumMemberFunctionConstShPtr& i_getter)
{
  const ClumPropertyDescriptorShPtr property(new ClumPropertyDescriptor(i_className, i_name));
  property->m_setter = i_setter;
  property->m_getter = i_getter;
  return property;
}

lmStatus ClumPropertyDescriptor::get(const ClumObject& i_object, ClumValue& o_value) const
{
  return m_getter->call(mutableObject(i_object), {}, o_value);
}

lmStatus ClumPropertyDescriptor::set(ClumObject& i_object, const ClumValue& i_value) const
{
  if (isReadOnly())
    return lmStatus(lmStatus::FAILURE);
  ClumValue result;
  return m_setter->call(&i_object, {i_value}, result);
}

ClumCollectionDescriptorShPtr ClumCollectionDescriptor::create(const std::string& i_className,
                                                               const std::string& i_name,
                                                               const std::string& i_elementType,
                                                               const ClumMemberFunctionConstShPtr& i_count,
                                                               const ClumMemberFunctionConstShPtr& i_item)
{
  const ClumCollectionDescriptorShPtr collection(new ClumCollectionDescriptor(i_className, i_name));
  collection->m_elementType = i_elementType;
  collection->m_count = i_count;
  collection->m_item = i_item;
  return collection;
}

lmStatus ClumCollectionDescriptor::count(const ClumObject& i_object, unsigned int& o_count) const
{
  ClumValue value;
  const lmStatus status = m_count->call(mutableObject(i_object), {}, value);
  if (status.succeeded())
    o_count = value.asUnsignedInt();
  return status;
}

lmStatus ClumCollectionDescriptor::item(const ClumObject& i_object, unsigned int i_rank, ClumValue& o_item) const
{
  return m_item->call(mutableObject(i_object), {ClumValue(i_rank)}, o_item);
}

ClumEnumShPtr ClumEnum::create(const std::string& i_className, const std::string& i_name, const std::string& i_text)
{
  const ClumEnumShPtr result(new ClumEnum(i_className, i_name));
  result->m_text = i_text;
  return result->parse() ? result : ClumEnumShPtr();
}

bool ClumEnum::parse()
{
  int next = 0;
  for (const std::string& enumerator : splitText(m_text, ','))
  {
    const std::size_t equals = enumerator.find('=');
    const std::string name = trimmed(enumerator.substr(0, equals));
    if (name.empty())
      return false;
    if (equals != std::string::npos && !parseValue(enumerator.substr(equals + 1), next))
      return false;
    m_values.emplace_back(name, next++);
  }
  return true;
}

bool ClumEnum::parseValue(const std::string& i_expression, int& o_value) const
{
  int value = 0;
  for (const std::string& term : splitText(i_expression, '|'))
  {
    int termValue = 0;
    if (!valueOf(term, termValue))
    {
      char* end = nullptr;
      termValue = static_cast<int>(std::strtol(term.c_str(), &end, 0));
      if (term.empty() || *end != '\0')
        return false;
    }
    value |= termValue;
  }
  o_value = value;
  return true;
}

bool ClumEnum::valueOf(const std::string& i_enumerator, int& o_value) const
{
  for (const auto& [name, value] : m_values)
    if (name == i_enumerator)
    {
      o_value = value;
      return true;
    }
  return false;
}

std::string ClumEnum::nameOf(int i_value) const
{
  for (const auto& [name, value] : m_values)
    if (value == i_value)
      return name;
  return std::string();
}

ClumTypedefShPtr ClumTypedef::create(const std::string& i_className, const std::string& i_name,
                                     const std::string& i_text)
{
  const ClumTypedefShPtr result(new ClumTypedef(i_className, i_name));
  result->m_text = i_text;
  return result;
}

ClumNotificationDescriptorShPtr ClumNotificationDescriptor::create(const std::string& i_name,
                                                                   const std::string& i_className, unsigned int i_id)
{
  const ClumNotificationDescriptorShPtr descriptor(new ClumNotificationDescriptor(i_className, i_name));
  descriptor->m_id = i_id;
  return descriptor;
}
