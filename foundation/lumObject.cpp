#include "foundation/lumObject.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumNotificator.h"

struct ClumObject::CDynamicProperties
{
  std::vector<std::pair<std::string, ClumValue>> values;
};

LUM_DESCRIBE(ClumObject) {}

LUM_NOTIFICATION(ClumObject, WILL_CHANGE_PROPERTY);
LUM_NOTIFICATION(ClumObject, DID_CHANGE_PROPERTY);
LUM_NOTIFICATION(ClumObject, WILL_CHANGE_COLLECTION);
LUM_NOTIFICATION(ClumObject, DID_CHANGE_COLLECTION);
const std::string ClumObject::ELEMENT_NAME_KEY = "elementName";
const std::string ClumObject::ACTION_KEY = "action";
const std::string ClumObject::INDEX_KEY = "index";

ClumObject::~ClumObject() = default;

ClumObject::ClumObject(const ClumObject& i_other)
{
  if (i_other.m_dynamicProperties)
    m_dynamicProperties.reset(new CDynamicProperties(*i_other.m_dynamicProperties));
}

lmStatus ClumObject::init(const ClumObjectWkPtr& i_weakPtr)
{
  m_self = i_weakPtr;
  return lmStatus();
}

std::string ClumObject::description() const
{
  return classObject()->name();
}

const ClumNotificatorShPtr& ClumObject::objectNotificator() const
{
  if (!m_notificator)
  {
    m_notificator = ClumNotificator::create();
    willReturnObjectNotificator();
  }
  return m_notificator;
}

void ClumObject::willReturnObjectNotificator() const
{
}

lmStatus ClumObject::getProperty(const std::string& i_name, ClumValue& o_value) const
{
  const ClumPropertyDescriptorShPtr property = classObject()->propertyNamed(i_name);
  return property ? property->get(*this, o_value) : lmStatus(lmStatus::FAILURE);
}

lmStatus ClumObject::setProperty(const std::string& i_name, const ClumValue& i_value)
{
  const ClumPropertyDescriptorShPtr property = classObject()->propertyNamed(i_name);
  return property ? property->set(*this, i_value) : lmStatus(lmStatus::FAILURE);
}

ClumValue ClumObject::dynamicProperty(const std::string& i_name) const
{
  if (m_dynamicProperties)
    for (const auto& [name, value] : m_dynamicProperties->values)
      if (name == i_name)
        return value;
  const ClumValue* defaultValue = classObject()->dynamicPropertyDefault(i_name);
  return defaultValue ? *defaultValue : ClumValue();
}

lmStatus ClumObject::dynamicProperty(const std::string& i_name, const ClumValue& i_value)
{
  if (!classObject()->dynamicPropertyDefault(i_name))
    return lmStatus(lmStatus::FAILURE);
  if (!m_dynamicProperties)
    m_dynamicProperties.reset(new CDynamicProperties);
  for (auto& [name, value] : m_dynamicProperties->values)
    if (name == i_name)
    {
      value = i_value;
      return lmStatus();
    }
  m_dynamicProperties->values.emplace_back(i_name, i_value);
  return lmStatus();
}

bool ClumObject::hasListeners(unsigned int i_id) const
{
  return m_notificator && m_notificator->hasSubscribers(i_id);
}

void ClumObject::notify(unsigned int i_id) const
{
  if (hasListeners(i_id))
    m_notificator->notify(ClumNotification::create(i_id, self()));
}

void ClumObject::notify(const ShPtr<const ClumNotification>& i_notification) const
{
  if (i_notification && hasListeners(i_notification->id()))
    m_notificator->notify(i_notification);
}

void ClumObject::notifyProperty(unsigned int i_id, const char* i_name) const
{
  if (!hasListeners(i_id))
    return;
  const ClumNotificationShPtr notification = ClumNotification::create(i_id, self());
  notification->stringValue(ELEMENT_NAME_KEY, i_name);
  m_notificator->notify(notification);
}

void ClumObject::notifyCollection(unsigned int i_id, const char* i_name, ECollectionChangeAction i_action,
                                  int i_index) const
{
  if (!hasListeners(i_id))
    return;
  const ClumNotificationShPtr notification = ClumNotification::create(i_id, self());
  notification->stringValue(ELEMENT_NAME_KEY, i_name);
  notification->intValue(ACTION_KEY, i_action);
  notification->intValue(INDEX_KEY, i_index);
  m_notificator->notify(notification);
}
