#pragma once

#include "foundation/lumClass.h"
#include "foundation/lumDescriptors.h"
#include "foundation/lumMemberFunction.h"
#include "foundation/lumNotification.h"
#include "foundation/lumObject.h"
#include "foundation/lumRuntime.h"

/// Fills a class object. A class's `LUM_DESCRIBE` block gets one as `i_class`:
///
///     LUM_DESCRIBE(CorvMetricScale)
///     {
///       i_class.creates("(const CorvMetricShPtr& i_scaledMetric, const std::string& i_type)", &Self::create);
///       i_class.property<double>("scale", &Self::scale, &Self::scale);
///     }
template <class X>
class ClumDescriber
{
public:
  /// A getter `T f() const` or `const T& f() const`, picked from its overloads.
  template <class T>
  struct Getter
  {
    Getter(T (X::*i_function)() const) : function(lumMemberFunction(i_function)) {}
    Getter(const T& (X::*i_function)() const) : function(lumMemberFunction(i_function)) {}
    ClumMemberFunctionConstShPtr function;
  };

  /// A setter of a `T`, by value or const reference, that returns nothing or a status.
  template <class T>
  struct Setter
  {
    Setter() = default;
    Setter(void (X::*i_function)(T)) : function(lumMemberFunction(i_function)) {}
    Setter(void (X::*i_function)(const T&)) : function(lumMemberFunction(i_function)) {}
    Setter(lmStatus (X::*i_function)(T)) : function(lumMemberFunction(i_function)) {}
    Setter(lmStatus (X::*i_function)(const T&)) : function(lumMemberFunction(i_function)) {}
    ClumMemberFunctionConstShPtr function;
  };

  /// The item function of a collection.
  template <class T>
  struct Item
  {
    Item(T (X::*i_function)(unsigned int) const) : function(lumMemberFunction(i_function)) {}
    Item(const T& (X::*i_function)(unsigned int) const) : function(lumMemberFunction(i_function)) {}
    ClumMemberFunctionConstShPtr function;
  };

  explicit ClumDescriber(const ClumClassShPtr& i_class) : m_class(i_class) { copyOperations(); }

  const ClumClassShPtr& object() const { return m_class; }

  template <class T>
  void property(const char* i_name, Getter<T> i_getter, Setter<T> i_setter = Setter<T>())
  {
    m_class->internalAddProperty(
      ClumPropertyDescriptor::create(m_class->name(), i_name, i_setter.function, i_getter.function));
  }

  /// @param i_elementType the element's type as written, such as "CorvJointShPtr".
  template <class T>
  void collection(const char* i_name, const char* i_elementType, Getter<unsigned int> i_count, Item<T> i_item)
  {
    m_class->addCollection(ClumCollectionDescriptor::create(m_class->name(), i_name, i_elementType, i_count.function,
                                                            i_item.function));
  }

  /// @param i_text the enumerators as declared.
  void enumeration(const char* i_name, const char* i_text, const char* i_clrName = nullptr)
  {
    const ClumEnumShPtr descriptor = ClumEnum::create(m_class->name(), i_name, i_text);
    if (!descriptor)
      return;
    if (i_clrName)
      descriptor->setMetaAttribute("orvane.next.clr-name", i_clrName);
    m_class->addEnum(descriptor);
  }

  void typeAlias(const char* i_name, const char* i_text)
  {
    m_class->addTypedef(ClumTypedef::create(m_class->name(), i_name, i_text));
  }

  /// A static `create`, with its parameters as declared.
  template <class R, class... ARGS>
  void creates(const char* i_parameters, R (*i_function)(ARGS...))
  {
    addMethod("static " + m_class->name() + (isConstFamily<R>() ? "ConstShPtr" : "ShPtr"), "create", i_parameters, "",
              lumMemberFunction(i_function));
  }

  /// Any other public operation; `i_clrName` names it for a managed-language binding.
  template <class FUNCTION>
  void method(const char* i_returnType, const char* i_name, const char* i_parameters, const char* i_modifiers,
              FUNCTION i_function, const char* i_clrName = nullptr)
  {
    const ClumMethodShPtr added =
      addMethod(i_returnType, i_name, i_parameters, i_modifiers, lumMemberFunction(i_function));
    if (i_clrName)
      added->setMetaAttribute("orvane.next.clr-name", i_clrName);
  }

  void dynamicProperty(const char* i_name, const ClumValue& i_default)
  {
    ClumClass::addDynamicProperty(m_class, i_name, i_default);
  }

private:
  template <class HANDLE>
  static constexpr bool isConstFamily()
  {
    return std::is_const_v<typename HANDLE::element_type>;
  }

  template <class Y, class = void>
  struct HasCreateCopy : std::false_type
  {
  };
  template <class Y>
  struct HasCreateCopy<Y, std::void_t<decltype(Y::createCopy(std::declval<const ShPtr<const Y>&>()))>> : std::true_type
  {
  };
  template <class Y, class = void>
  struct HasClone : std::false_type
  {
  };
  template <class Y>
  struct HasClone<Y, std::void_t<decltype(std::declval<const Y&>().clone())>> : std::true_type
  {
  };

  /// `createCopy` and `clone` are the same for every class that has them.
  void copyOperations()
  {
    if constexpr (HasCreateCopy<X>::value)
    {
      using R = decltype(X::createCopy(std::declval<const ShPtr<const X>&>()));
      if constexpr (std::is_same_v<std::remove_const_t<typename R::element_type>, X>)
        addMethod("static " + m_class->name() + (isConstFamily<R>() ? "ConstShPtr" : "ShPtr"), "createCopy",
                  "(const " + m_class->name() + "ConstShPtr & i_objectToCopy)", "",
                  lumMemberFunction(static_cast<R (*)(const ShPtr<const X>&)>(&X::createCopy)));
    }
    if constexpr (HasClone<X>::value)
    {
      using R = decltype(std::declval<const X&>().clone());
      using Root = std::remove_const_t<typename R::element_type>;
      addMethod("virtual " + Root::__classObject()->name() + (isConstFamily<R>() ? "ConstShPtr" : "ShPtr"), "clone",
                "()", std::is_abstract_v<X> ? "const = 0" : "const",
                lumMemberFunction(static_cast<R (X::*)() const>(&X::clone)));
    }
  }

  ClumMethodShPtr addMethod(const std::string& i_returnType, const std::string& i_name, const std::string& i_parameters,
                            const std::string& i_modifiers, const ClumMemberFunctionConstShPtr& i_function)
  {
    const ClumMethodShPtr added =
      ClumMethod::create(m_class->name(), i_returnType, i_name, i_parameters, i_modifiers);
    added->memberFunction(i_function);
    m_class->addMethod(added);
    return added;
  }

  ClumClassShPtr m_class;
};

/// Makes and registers the class object of X, its parent's first.
template <class X>
ClumClassShPtr lumMakeClassObject(const char* i_name)
{
  const ClumClassShPtr object = ClumClass::create(i_name, LumAccess::allocator<X>(), typeid(X));
  if constexpr (!std::is_void_v<typename X::Super>)
  {
    const ClumClassShPtr parent = X::Super::__classObject();
    object->addParent(parent);
    parent->addChild(object);
  }
  return ClumRuntime::instance().registerClassObject(object);
}

/// Registers a notification id. @return the id, a hash of the two names.
LUM_API unsigned int lumRegisterNotification(const ClumClassShPtr& i_class, const char* i_name);

/// The body of `LUM_DESCRIBE`.
template <class X>
struct LumDescription
{
  using Self = X;
  static void describe(ClumDescriber<X>& i_class);
};

/// Defines the class object of a class and opens the block in which the class describes its members. The block runs
/// once, at load, with `i_class` the describer and `Self` the class.
#define LUM_DESCRIBE(CLASS_NAME)                                                            \
  const ClumClassShPtr CLASS_NAME::CLASS = CLASS_NAME::__classObject();                     \
  ClumClassShPtr CLASS_NAME::__classObject()                                                \
  {                                                                                         \
    static const ClumClassShPtr s_class = lumMakeClassObject<CLASS_NAME>(#CLASS_NAME);      \
    return s_class;                                                                         \
  }                                                                                         \
  ClumClassShPtr CLASS_NAME::classObject() const                                            \
  {                                                                                         \
    return __classObject();                                                                 \
  }                                                                                         \
  template <>                                                                               \
  void LumDescription<CLASS_NAME>::describe(ClumDescriber<CLASS_NAME>& i_class);            \
  void lumRegister_##CLASS_NAME();                                                          \
  void lumRegister_##CLASS_NAME()                                                           \
  {                                                                                         \
    ClumDescriber<CLASS_NAME> describer(CLASS_NAME::__classObject());                       \
    LumDescription<CLASS_NAME>::describe(describer);                                        \
  }                                                                                         \
  template <>                                                                               \
  void LumDescription<CLASS_NAME>::describe([[maybe_unused]] ClumDescriber<CLASS_NAME>& i_class)

/// Defines a static status code member and registers it.
#define LUM_STATUS_CODE(CLASS_NAME, CODE_NAME, NUMBER, MESSAGE)                                                     \
  const unsigned int CLASS_NAME::CODE_NAME =                                                                        \
    ClumRuntime::instance().registerStatusCode(CLASS_NAME::__classObject(), #CODE_NAME, NUMBER, MESSAGE)

/// Defines a static notification id member and registers it.
#define LUM_NOTIFICATION(CLASS_NAME, NOTIFICATION_NAME) \
  const unsigned int CLASS_NAME::NOTIFICATION_NAME =    \
    lumRegisterNotification(CLASS_NAME::__classObject(), #NOTIFICATION_NAME)
