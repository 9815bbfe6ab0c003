#pragma once

#include "foundation/lumRuntimeElement.h"
#include "foundation/lumValue.h"

#include <typeindex>
#include <utility>
#include <vector>

/// The class object: what the library knows at run time of one of its classes.
///
/// Made on first need by the class's `__classObject()`, filled while the library loads, read-only afterwards but for
/// dynamic properties.
class LUM_API ClumClass : public ClumRuntimeElement
{
public:
  /// Makes an object that is not initialised; a decoder brings it to life.
  using TAllocator = ClumObjectShPtr (*)();

  /// @param i_allocator null for an abstract class.
  static ClumClassShPtr create(const std::string& i_name, TAllocator i_allocator, const std::type_info& i_type);

  TAllocator allocator() const { return m_allocator; }
  const std::type_index& type() const { return m_type; }

  void addParent(const ClumClassShPtr& i_parent) { m_parents.push_back(i_parent); }
  void addChild(const ClumClassWkPtr& i_child) { m_children.push_back(i_child); }
  std::vector<ClumClassShPtr> parents() const { return m_parents; }
  std::vector<ClumClassShPtr> children() const;
  /// @return true for the class itself and for every class above it.
  bool isA(const ClumClass& i_class) const;

  void addMethod(const ClumMethodShPtr& i_method) { m_methods.push_back(i_method); }
  void addEnum(const ClumEnumShPtr& i_enum) { m_enums.push_back(i_enum); }
  void addTypedef(const ClumTypedefShPtr& i_typedef) { m_typedefs.push_back(i_typedef); }
  void addCollection(const ClumCollectionDescriptorShPtr& i_collection) { m_collections.push_back(i_collection); }
  void addNotification(const ClumNotificationDescriptorShPtr& i_descriptor) { m_notifications.push_back(i_descriptor); }
  void internalAddProperty(const ClumPropertyDescriptorShPtr& i_property) { m_properties.push_back(i_property); }
  /// Lets a value be attached by name to the objects of the class. A second call for a name keeps the first default.
  static void addDynamicProperty(const ClumClassShPtr& i_class, const std::string& i_name, const ClumValue& i_default);

  // The members that the class itself declares.
  const std::vector<ClumMethodShPtr>& methods() const { return m_methods; }
  const std::vector<ClumEnumShPtr>& enums() const { return m_enums; }
  const std::vector<ClumTypedefShPtr>& typedefs() const { return m_typedefs; }
  const std::vector<ClumCollectionDescriptorShPtr>& collections() const { return m_collections; }
  const std::vector<ClumNotificationDescriptorShPtr>& notifications() const { return m_notifications; }
  const std::vector<ClumPropertyDescriptorShPtr>& properties() const { return m_properties; }

  // By name, in this class or above it; null if there is none.
  ClumPropertyDescriptorShPtr propertyNamed(const std::string& i_name) const;
  ClumCollectionDescriptorShPtr collectionNamed(const std::string& i_name) const;
  ClumEnumShPtr enumNamed(const std::string& i_name) const;
  const ClumValue* dynamicPropertyDefault(const std::string& i_name) const;

private:
  ClumClass(const std::string& i_name, TAllocator i_allocator, const std::type_info& i_type);

  TAllocator m_allocator;
  std::type_index m_type;
  std::vector<ClumClassShPtr> m_parents;
  std::vector<ClumClassWkPtr> m_children;
  std::vector<ClumMethodShPtr> m_methods;
  std::vector<ClumEnumShPtr> m_enums;
  std::vector<ClumTypedefShPtr> m_typedefs;
  std::vector<ClumCollectionDescriptorShPtr> m_collections;
  std::vector<ClumNotificationDescriptorShPtr> m_notifications;
  std::vector<ClumPropertyDescriptorShPtr> m_properties;
  std::vector<std::pair<std::string, ClumValue>> m_dynamicProperties;
};
