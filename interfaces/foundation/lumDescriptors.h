#pragma once

#include "foundation/lumRuntimeElement.h"
#include "foundation/lumStatus.h"
#include "foundation/lumValue.h"

#include <utility>
#include <vector>

// What a class object knows of the members of its class. All are made at load and read-only from then on.

/// An operation that can be called by name.
class LUM_API ClumMethod : public ClumRuntimeElement
{
public:
  /// The four texts repeat the declaration, such as "static CorvDofShPtr", "create", "(bool i_revolute)", "".
  static ClumMethodShPtr create(const std::string& i_className, const std::string& i_returnType,
                                const std::string& i_name, const std::string& i_parameters,
                                const std::string& i_modifiers);

  const std::string& returnType() const { return m_returnType; }
  const std::string& parameters() const { return m_parameters; }
  const std::string& modifiers() const { return m_modifiers; }
  const ClumMemberFunctionConstShPtr& memberFunction() const { return m_function; }
  void memberFunction(const ClumMemberFunctionConstShPtr& i_function) { m_function = i_function; }

private:
  ClumMethod(const std::string& i_className, const std::string& i_name) : ClumRuntimeElement(i_className, i_name) {}

  std::string m_returnType;
  std::string m_parameters;
  std::string m_modifiers;
  ClumMemberFunctionConstShPtr m_function;
};

/// A value of an object that can be read, and perhaps written, by name.
class LUM_API ClumPropertyDescriptor : public ClumRuntimeElement
{
public:
  /// @param i_setter null for a read-only property.
  static ClumPropertyDescriptorShPtr create(const std::string& i_className, const std::string& i_name,
                                            const ClumMemberFunctionConstShPtr& i_setter,
                                            const ClumMemberFunctionConstShPtr& i_getter);

  bool isReadOnly() const { return !m_setter; }
  /// @return -1 if the object is not of the class.
  lmStatus get(const ClumObject& i_object, ClumValue& o_value) const;
  /// @return -1 if the property is read-only, the object is not of the class, or the value is of another type.
  lmStatus set(ClumObject& i_object, const ClumValue& i_value) const;

private:
  ClumPropertyDescriptor(const std::string& i_className, const std::string& i_name)
    : ClumRuntimeElement(i_className, i_name)
  {
  }

  ClumMemberFunctionConstShPtr m_setter;
  ClumMemberFunctionConstShPtr m_getter;
};

/// An ordered collection of an object, read by a counting function and an item function.
class LUM_API ClumCollectionDescriptor : public ClumRuntimeElement
{
public:
  static ClumCollectionDescriptorShPtr create(const std::string& i_className, const std::string& i_name,
                                              const std::string& i_elementType,
                                              const ClumMemberFunctionConstShPtr& i_count,
                                              const ClumMemberFunctionConstShPtr& i_item);

  const std::string& elementType() const { return m_elementType; }
  lmStatus count(const ClumObject& i_object, unsigned int& o_count) const;
  lmStatus item(const ClumObject& i_object, unsigned int i_rank, ClumValue& o_item) const;

private:
  ClumCollectionDescriptor(const std::string& i_className, const std::string& i_name)
    : ClumRuntimeElement(i_className, i_name)
  {
  }

  std::string m_elementType;
  ClumMemberFunctionConstShPtr m_count;
  ClumMemberFunctionConstShPtr m_item;
};

/// An enumeration, made from the text of its declaration.
class LUM_API ClumEnum : public ClumRuntimeElement
{
public:
  /// @param i_text such as "A, B = 0x04, C = A | B": a value is a number, or earlier names and numbers joined by `|`;
  ///               without one it is the one before plus 1. A trailing comma is accepted.
  /// @return null if the text is none of these.
  static ClumEnumShPtr create(const std::string& i_className, const std::string& i_name, const std::string& i_text);

  const std::string& text() const { return m_text; }
  const std::vector<std::pair<std::string, int>>& values() const { return m_values; }
  /// @return false if no enumerator has that name.
  bool valueOf(const std::string& i_enumerator, int& o_value) const;
  /// The first name of that value, or an empty text.
  std::string nameOf(int i_value) const;

private:
  ClumEnum(const std::string& i_className, const std::string& i_name) : ClumRuntimeElement(i_className, i_name) {}
  bool parse();
  bool parseValue(const std::string& i_expression, int& o_value) const;

  std::string m_text;
  std::vector<std::pair<std::string, int>> m_values;
};

/// A type alias of a class, with the text of its target.
class LUM_API ClumTypedef : public ClumRuntimeElement
{
public:
  static ClumTypedefShPtr create(const std::string& i_className, const std::string& i_name, const std::string& i_text);
  const std::string& text() const { return m_text; }

private:
  ClumTypedef(const std::string& i_className, const std::string& i_name) : ClumRuntimeElement(i_className, i_name) {}
  std::string m_text;
};

/// A notification that objects of a class send.
class LUM_API ClumNotificationDescriptor : public ClumRuntimeElement
{
public:
  static ClumNotificationDescriptorShPtr create(const std::string& i_name, const std::string& i_className,
                                                unsigned int i_id);
  unsigned int id() const { return m_id; }

private:
  ClumNotificationDescriptor(const std::string& i_className, const std::string& i_name)
    : ClumRuntimeElement(i_className, i_name)
  {
  }
  unsigned int m_id = 0;
};
