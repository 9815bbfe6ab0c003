#pragma once

#include "foundation/lumStatus.h"
#include "foundation/lumValue.h"

#include <cstddef>
#include <tuple>
#include <vector>

/// A function of a class that can be called on an object known only as a `ClumObject`, with values for arguments.
class LUM_API ClumMemberFunction
{
public:
  virtual ~ClumMemberFunction() = default;
  virtual std::size_t countArguments() const = 0;
  /// Calls the function. `i_object` is not looked at by a static function.
  /// @return -1 without a call if the object is of another class, or if the arguments do not fit in number or type.
  virtual lmStatus call(ClumObject* i_object, const std::vector<ClumValue>& i_arguments, ClumValue& o_result) const = 0;
};

namespace lumDetail
{
template <class T>
using Plain = std::remove_cv_t<std::remove_reference_t<T>>;

template <class... ARGS>
struct Arguments
{
  std::tuple<Plain<ARGS>...> values;

  bool read(const std::vector<ClumValue>& i_values)
  {
    return i_values.size() == sizeof...(ARGS) && read(i_values, std::index_sequence_for<ARGS...>());
  }

  template <std::size_t... I>
  bool read([[maybe_unused]] const std::vector<ClumValue>& i_values, std::index_sequence<I...>)
  {
    return (lumFromValue(i_values[I], std::get<I>(values)) && ...);
  }
};

template <class R, class FUNCTION>
ClumValue callForValue(const FUNCTION& i_function)
{
  if constexpr (std::is_void_v<R>)
  {
    i_function();
    return ClumValue();
  }
  else
  {
    const Plain<R> result = i_function();
    return lumToValue(result);  // deduced, so that handles find their own overload
  }
}
}  // namespace lumDetail

/// The wrapper of one function: `R (C::*)(ARGS...)`, its const form, or `R (*)(ARGS...)`.
template <class C, class FUNCTION, class R, class... ARGS>
class TlumMemberFunction : public ClumMemberFunction
{
public:
  explicit TlumMemberFunction(FUNCTION i_function) : m_function(i_function) {}

  std::size_t countArguments() const override { return sizeof...(ARGS); }

  lmStatus call(ClumObject* i_object, const std::vector<ClumValue>& i_arguments, ClumValue& o_result) const override
  {
    lumDetail::Arguments<ARGS...> arguments;
    if (!arguments.read(i_arguments))
      return lmStatus(lmStatus::FAILURE);
    const FUNCTION function = m_function;
    if constexpr (std::is_member_function_pointer_v<FUNCTION>)
    {
      C* object = dynamic_cast<C*>(i_object);
      if (!object)
        return lmStatus(lmStatus::FAILURE);
      o_result = std::apply(
        [&](auto&... a) { return lumDetail::callForValue<R>([&]() -> R { return (object->*function)(a...); }); },
        arguments.values);
    }
    else
      o_result = std::apply(
        [&](auto&... a) { return lumDetail::callForValue<R>([&]() -> R { return function(a...); }); },
        arguments.values);
    return lmStatus();
  }

private:
  FUNCTION m_function;
};

template <class C, class R, class... ARGS>
ClumMemberFunctionShPtr lumMemberFunction(R (C::*i_function)(ARGS...))
{
  return ClumMemberFunctionShPtr(new TlumMemberFunction<C, R (C::*)(ARGS...), R, ARGS...>(i_function));
}

template <class C, class R, class... ARGS>
ClumMemberFunctionShPtr lumMemberFunction(R (C::*i_function)(ARGS...) const)
{
  return ClumMemberFunctionShPtr(new TlumMemberFunction<C, R (C::*)(ARGS...) const, R, ARGS...>(i_function));
}

template <class R, class... ARGS>
ClumMemberFunctionShPtr lumMemberFunction(R (*i_function)(ARGS...))
{
  return ClumMemberFunctionShPtr(new TlumMemberFunction<void, R (*)(ARGS...), R, ARGS...>(i_function));
}
