#pragma once

#include <boost/shared_ptr.hpp>
#include <boost/smart_ptr/weak_ptr.hpp>

/// Shared owning handle. An object lives as long as some shared handle holds it.
template <class T>
using ShPtr = boost::shared_ptr<T>;

/// Weak handle, the form of every reference from a part back to its owner.
template <class T>
using WkPtr = boost::weak_ptr<T>;

/// Forward-declares a class with its handle names.
#define LUM_HANDLES(CLASS_NAME)                       \
  class CLASS_NAME;                                   \
  using CLASS_NAME##ShPtr = ShPtr<CLASS_NAME>;        \
  using CLASS_NAME##ConstShPtr = ShPtr<const CLASS_NAME>; \
  using CLASS_NAME##WkPtr = WkPtr<CLASS_NAME>;        \
  using CLASS_NAME##ConstWkPtr = WkPtr<const CLASS_NAME>;
