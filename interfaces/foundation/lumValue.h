#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"

#include <string>
#include <type_traits>
#include <utility>
#include <variant>

/// A value of one of a few types: what properties, notifications and parameter maps carry.
///
/// Reading as another type than the one held gives that type's zero value, never a conversion, but for numbers:
/// `asInt`, `asUnsignedInt` and `asDouble` convert between the numeric types.
class LUM_API ClumValue
{
public:
  enum EType
  {
    NONE,
    BOOL,
    INT,
    UNSIGNED_INT,
    DOUBLE,
    STRING,
    OBJECT,
    CONST_OBJECT,
    VOID,
    CONST_VOID
  };

  ClumValue() = default;
  ClumValue(bool i_value) : m_value(i_value) {}
  ClumValue(int i_value) : m_value(i_value) {}
  ClumValue(unsigned int i_value) : m_value(i_value) {}
  ClumValue(double i_value) : m_value(i_value) {}
  ClumValue(const char* i_value) : m_value(std::string(i_value)) {}
  ClumValue(const std::string& i_value) : m_value(i_value) {}
  ClumValue(const ClumObjectShPtr& i_object) : m_value(i_object) {}
  ClumValue(const ClumObjectConstShPtr& i_object) : m_value(i_object) {}
  ClumValue(const ShPtr<void>& i_pointer) : m_value(i_pointer) {}
  ClumValue(const ShPtr<const void>& i_pointer) : m_value(i_pointer) {}

  EType type() const { return static_cast<EType>(m_value.index()); }

  bool asBool() const { return get<bool>(); }
  int asInt() const { return number<int>(); }
  unsigned int asUnsignedInt() const { return number<unsigned int>(); }
  double asDouble() const { return number<double>(); }
  std::string asString() const { return get<std::string>(); }
  /// @return the mutable object held, or null: a const object is not given away as a mutable one.
  ClumObjectShPtr getObject() const { return get<ClumObjectShPtr>(); }
  ClumObjectConstShPtr getConstObject() const;
  ShPtr<void> asVoid() const { return get<ShPtr<void>>(); }
  ShPtr<const void> asConstVoid() const;

  /// Same type and equal value; handles are compared by the object that they lead to.
  bool operator==(const ClumValue& i_other) const { return m_value == i_other.m_value; }
  bool operator!=(const ClumValue& i_other) const { return !(*this == i_other); }

private:
  template <class T>
  T get() const
  {
    const T* value = std::get_if<T>(&m_value);
    return value ? *value : T();
  }

  template <class T>
  T number() const
  {
    switch (type())
    {
    case BOOL: return static_cast<T>(std::get<bool>(m_value));
    case INT: return static_cast<T>(std::get<int>(m_value));
    case UNSIGNED_INT: return static_cast<T>(std::get<unsigned int>(m_value));
    case DOUBLE: return static_cast<T>(std::get<double>(m_value));
    default: return T();
    }
  }

  std::variant<std::monostate, bool, int, unsigned int, double, std::string, ClumObjectShPtr, ClumObjectConstShPtr,
               ShPtr<void>, ShPtr<const void>>
    m_value;
};

/// A C++ value as a `ClumValue`: numbers, strings and object handles as themselves, anything else as a shared copy.
template <class T>
ClumValue lumToValue(const T& i_value)
{
  if constexpr (std::is_enum_v<T>)
    return ClumValue(static_cast<int>(i_value));
  else if constexpr (std::is_constructible_v<ClumValue, const T&>)
    return ClumValue(i_value);
  else
    return ClumValue(ShPtr<const void>(new T(i_value)));
}

template <class U>
ClumValue lumToValue(const ShPtr<U>& i_handle)
{
  if constexpr (std::is_convertible_v<U*, ClumObject*>)
    return ClumValue(ClumObjectShPtr(i_handle));
  else if constexpr (std::is_convertible_v<U*, const ClumObject*>)
    return ClumValue(ClumObjectConstShPtr(i_handle));
  else
    return ClumValue(ShPtr<const void>(i_handle));
}

namespace lumDetail
{
template <class T>
struct HandleOf
{
  static constexpr bool IS_HANDLE = false;
};

template <class U>
struct HandleOf<ShPtr<U>>
{
  static constexpr bool IS_HANDLE = true;
  using Pointee = U;
};
}  // namespace lumDetail

/// The reverse of `lumToValue`. @return false if the value does not hold a `T`; `o_value` is then left alone.
template <class T>
bool lumFromValue(const ClumValue& i_value, T& o_value)
{
  if constexpr (lumDetail::HandleOf<T>::IS_HANDLE)
  {
    using U = typename lumDetail::HandleOf<T>::Pointee;
    if constexpr (std::is_convertible_v<U*, const ClumObject*>)
    {
      const bool isNull = !i_value.getConstObject();
      T handle;
      if constexpr (std::is_const_v<U>)
        handle = boost::dynamic_pointer_cast<U>(i_value.getConstObject());
      else
        handle = boost::dynamic_pointer_cast<U>(i_value.getObject());
      if (!handle && !isNull)
        return false;
      o_value = handle;
      return true;
    }
    else
      return false;
  }
  else if constexpr (std::is_same_v<T, bool>)
    return i_value.type() == ClumValue::BOOL ? (o_value = i_value.asBool(), true) : false;
  else if constexpr (std::is_enum_v<T>)
    return i_value.type() == ClumValue::INT ? (o_value = static_cast<T>(i_value.asInt()), true) : false;
  else if constexpr (std::is_arithmetic_v<T>)
  {
    const bool isNumber = i_value.type() >= ClumValue::INT && i_value.type() <= ClumValue::DOUBLE;
    if (isNumber)
      o_value = static_cast<T>(i_value.asDouble());
    return isNumber;
  }
  else if constexpr (std::is_same_v<T, std::string>)
    return i_value.type() == ClumValue::STRING ? (o_value = i_value.asString(), true) : false;
  else
  {
    const ShPtr<const void> held = i_value.asConstVoid();
    if (!held)
      return false;
    o_value = *static_cast<const T*>(held.get());
    return true;
  }
}
