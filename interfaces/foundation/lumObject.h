#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"
#include "foundation/lumStatus.h"
#include "foundation/lumValue.h"

#include <boost/smart_ptr/make_shared_object.hpp>

#include <memory>
#include <string>
#include <tuple>
#include <typeinfo>
#include <utility>

/// The one door to the protected parts of a class: its constructors and its `init`.
///
/// Every class is a friend of it by the line that declares it. What the frame does with constructors and `init` is
/// written here, once.
class LumAccess
{
public:
  /// First phase of construction: the object and the count of its handles, in one block.
  template <class X, class... ARGS>
  static ShPtr<X> construct(ARGS&&... i_arguments)
  {
    return boost::allocate_shared<X>(Allocator<X>(), std::forward<ARGS>(i_arguments)...);
  }

  /// Second phase of construction. @return null, the object destroyed, if `init` failed.
  template <class X, class... ARGS>
  static ShPtr<X> initialise(ShPtr<X> i_new, ARGS&&... i_arguments)
  {
    if (i_new->init(WkPtr<X>(i_new), std::forward<ARGS>(i_arguments)...).failed())
      i_new.reset();
    return i_new;
  }

  template <class X>
  static ShPtr<X> createCopy(const ShPtr<const X>& i_objectToCopy)
  {
    if (!i_objectToCopy)
      return ShPtr<X>();
    if constexpr (HasCopyingInit<X>::value)
      return initialise(construct<X>(*i_objectToCopy), i_objectToCopy);
    else
      return initialise(construct<X>(*i_objectToCopy));
  }

  template <class X>
  static ClumObjectShPtr alloc()
  {
    return construct<X>();
  }

  /// The class object's allocator: null for a class that cannot be made.
  template <class X>
  static ClumObjectShPtr (*allocator())()
  {
    if constexpr (IsConcrete<X>::value)
      return &LumAccess::alloc<X>;
    else
      return nullptr;
  }

private:
  /// The standard allocator, but for constructors that only the frame may call.
  template <class X>
  struct Allocator : std::allocator<X>
  {
    template <class Y>
    struct rebind
    {
      using other = Allocator<Y>;
    };

    Allocator() = default;
    template <class Y>
    Allocator(const Allocator<Y>&)
    {
    }

    template <class Y, class... ARGS>
    void construct(Y* o_place, ARGS&&... i_arguments)
    {
      LumAccess::constructAt(o_place, std::forward<ARGS>(i_arguments)...);
    }
    template <class Y>
    void destroy(Y* io_object)
    {
      io_object->~Y();
    }
  };

  template <class X, class... ARGS>
  static void constructAt(X* o_place, ARGS&&... i_arguments)
  {
    ::new (static_cast<void*>(o_place)) X(std::forward<ARGS>(i_arguments)...);
  }

  /// True if the class itself, not only a base, is declared concrete.
  template <class X>
  struct IsConcrete
  {
    template <class Y>
    static std::is_same<typename Y::Concrete, Y> test(int);
    template <class Y>
    static std::false_type test(...);
    static constexpr bool value = decltype(test<X>(0))::value;
  };

  /// True if the class has an `init(weak, source)` for copies.
  template <class X>
  struct HasCopyingInit
  {
    template <class Y>
    static auto test(int) -> decltype(std::declval<Y&>().init(std::declval<const WkPtr<Y>&>(),
                                                              std::declval<const ShPtr<const Y>&>()),
                                      std::true_type());
    template <class Y>
    static std::false_type test(...);
    static constexpr bool value = decltype(test<X>(0))::value;
  };
};

/// Makes an object: `new X(arguments...)`, a handle, `init(weak)`. @return null if `init` failed.
template <class X, class... ARGS>
ShPtr<X> lumCreate(ARGS&&... i_constructorArguments)
{
  return LumAccess::initialise(LumAccess::construct<X>(std::forward<ARGS>(i_constructorArguments)...));
}

/// Groups constructor arguments for `lumCreateWith`.
template <class... ARGS>
std::tuple<ARGS&&...> lumConstruct(ARGS&&... i_arguments)
{
  return std::tuple<ARGS&&...>(std::forward<ARGS>(i_arguments)...);
}

/// Makes an object whose `init` takes arguments too: `lumCreateWith<X>(lumConstruct(a, b), c)` is `new X(a, b)`, then
/// `init(weak, c)`. @return null if `init` failed.
template <class X, class... ARGS, class... INIT>
ShPtr<X> lumCreateWith(std::tuple<ARGS...>&& i_constructorArguments, INIT&&... i_initArguments)
{
  return LumAccess::initialise(
    std::apply([](auto&&... a) { return LumAccess::construct<X>(std::forward<decltype(a)>(a)...); },
               std::move(i_constructorArguments)), std::forward<INIT>(i_initArguments)...);
}

/// Copy by constructor, then `init(weak, source)` if the class has one, else `init(weak)`. Null stays null.
template <class X>
ShPtr<X> lumCreateCopy(const ShPtr<const X>& i_objectToCopy)
{
  return LumAccess::createCopy<X>(i_objectToCopy);
}

/// A handle on an object that has one, of the object's own class.
template <class X>
ShPtr<X> lumSelf(const X& i_object);

/// The root of all classes that take part in reflection, notification and reference by handle.
///
/// An object has three stages: constructed (no handle yet), initialised (after `init`, `self()` works) and destroyed,
/// when the last shared handle goes. Copies get neither handle nor listeners. Objects carry no lock.
class LUM_API ClumObject
{
public:
  enum ECollectionChangeAction
  {
    COLLECTION_INSERTION = 0,
    COLLECTION_REMOVAL = 1,
    COLLECTION_CHANGE = 2
  };

  using Self = ClumObject;
  using Super = void;

  static const ClumClassShPtr CLASS;
  static ClumClassShPtr __classObject();

  static const unsigned int WILL_CHANGE_PROPERTY;
  static const unsigned int DID_CHANGE_PROPERTY;
  static const unsigned int WILL_CHANGE_COLLECTION;
  static const unsigned int DID_CHANGE_COLLECTION;
  /// Values of these notifications: the element's name, and for collections the action and the index (-1 for none).
  static const std::string ELEMENT_NAME_KEY;
  static const std::string ACTION_KEY;
  static const std::string INDEX_KEY;

  virtual ~ClumObject();
  virtual ClumClassShPtr classObject() const;
  /// A short text for humans: the class name unless a class says more.
  virtual std::string description() const;

  ClumObjectShPtr self() const { return m_self.lock(); }

  /// The notificator of this object, made on first need.
  const ClumNotificatorShPtr& objectNotificator() const;
  bool isObjectNotificatorInitialized() const { return static_cast<bool>(m_notificator); }

  /// Reads or writes a property by name.
  /// @return -1 if the class has no such property, the property is read-only or the value of another type.
  lmStatus getProperty(const std::string& i_name, ClumValue& o_value) const;
  lmStatus setProperty(const std::string& i_name, const ClumValue& i_value);

  /// The value attached under a dynamic property's name, its class's default if none was set, an empty value if the
  /// class has no such dynamic property.
  ClumValue dynamicProperty(const std::string& i_name) const;
  /// @return -1 if the class has no such dynamic property.
  lmStatus dynamicProperty(const std::string& i_name, const ClumValue& i_value);

protected:
  ClumObject() = default;
  ClumObject(const ClumObject& i_other);
  ClumObject& operator=(const ClumObject&) { return *this; }
  lmStatus init(const ClumObjectWkPtr& i_weakPtr);

  /// Called once, when the notificator has been made. An override calls the base's first, then subscribes.
  virtual void willReturnObjectNotificator() const;

  /// Sends to the listeners of this object. Costs nothing without a listener.
  void notify(unsigned int i_id) const;
  void notify(const ShPtr<const ClumNotification>& i_notification) const;
  /// True if somebody listens for the id: tested before a notification with values is built.
  bool hasListeners(unsigned int i_id) const;

  void notifyPropertyWillChange(const char* i_name) const { notifyProperty(WILL_CHANGE_PROPERTY, i_name); }
  void notifyPropertyDidChange(const char* i_name) const { notifyProperty(DID_CHANGE_PROPERTY, i_name); }
  /// @param i_index the rank of the element, or -1 for a change of the whole collection.
  void notifyCollectionWillChange(const char* i_name, ECollectionChangeAction i_action, int i_index) const
  {
    notifyCollection(WILL_CHANGE_COLLECTION, i_name, i_action, i_index);
  }
  void notifyCollectionDidChange(const char* i_name, ECollectionChangeAction i_action, int i_index) const
  {
    notifyCollection(DID_CHANGE_COLLECTION, i_name, i_action, i_index);
  }

private:
  friend class LumAccess;
  template <class X>
  friend ShPtr<X> lumSelf(const X& i_object);
  struct CDynamicProperties;

  void notifyProperty(unsigned int i_id, const char* i_name) const;
  void notifyCollection(unsigned int i_id, const char* i_name, ECollectionChangeAction i_action, int i_index) const;

  ClumObjectWkPtr m_self;
  mutable ClumNotificatorShPtr m_notificator;
  ShPtr<CDynamicProperties> m_dynamicProperties;  ///< null until one is set, never shared
};

template <class X>
ShPtr<X> lumSelf(const X& i_object)
{
  return boost::static_pointer_cast<X>(static_cast<const ClumObject&>(i_object).m_self.lock());
}

/// What every class with a class object declares first. Afterwards access is private.
#define LUM_CLASS_BODY(CLASS_NAME, PARENT_NAME)                    \
public:                                                            \
  using Self = CLASS_NAME;                                         \
  using Super = PARENT_NAME;                                       \
  static const ClumClassShPtr CLASS;                               \
  static ClumClassShPtr __classObject();                           \
  ClumClassShPtr classObject() const override;

/// Declares a class of which objects are made. `self()` gives a mutable handle.
#define LUM_CONCRETE(CLASS_NAME, PARENT_NAME)                              \
  LUM_CLASS_BODY(CLASS_NAME, PARENT_NAME)                                  \
  using Concrete = CLASS_NAME;                                             \
  static ClumObjectShPtr alloc() { return LumAccess::alloc<CLASS_NAME>(); } \
  CLASS_NAME##ShPtr self() const { return lumSelf(*this); }                \
                                                                           \
private:                                                                   \
  friend class LumAccess

/// Declares an abstract class.
#define LUM_ABSTRACT(CLASS_NAME, PARENT_NAME)               \
  LUM_CLASS_BODY(CLASS_NAME, PARENT_NAME)                   \
  CLASS_NAME##ShPtr self() const { return lumSelf(*this); } \
                                                            \
private:                                                    \
  friend class LumAccess

/// The same for the families whose objects never change and are handled as const.
#define LUM_CONST_CONCRETE(CLASS_NAME, PARENT_NAME)                        \
  LUM_CLASS_BODY(CLASS_NAME, PARENT_NAME)                                  \
  using Concrete = CLASS_NAME;                                             \
  static ClumObjectShPtr alloc() { return LumAccess::alloc<CLASS_NAME>(); } \
  CLASS_NAME##ConstShPtr self() const { return lumSelf(*this); }           \
                                                                           \
private:                                                                   \
  friend class LumAccess

#define LUM_CONST_ABSTRACT(CLASS_NAME, PARENT_NAME)              \
  LUM_CLASS_BODY(CLASS_NAME, PARENT_NAME)                        \
  CLASS_NAME##ConstShPtr self() const { return lumSelf(*this); } \
                                                                 \
private:                                                         \
  friend class LumAccess

/// Declares a class that is not reflected: it answers its nearest reflected ancestor's class object.
#define LUM_UNREFLECTED(CLASS_NAME, PARENT_NAME)            \
public:                                                     \
  using Self = CLASS_NAME;                                  \
  using Super = PARENT_NAME;                                \
  CLASS_NAME##ShPtr self() const { return lumSelf(*this); } \
                                                            \
private:                                                    \
  friend class LumAccess
