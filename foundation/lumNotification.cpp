#include "foundation/lumNotification.h"

#include "foundation/lumClass.h"
#include "foundation/lumDescribe.h"

ClumNotificationShPtr ClumNotification::create(unsigned int i_id, const ShPtr<const void>& i_sender)
{
  const ClumNotificationShPtr notification(new ClumNotification(i_id));
  return notification->initWithShPtr(notification, i_sender).succeeded() ? notification : ClumNotificationShPtr();
}

lmStatus ClumNotification::initWithShPtr(const ClumNotificationWkPtr&, const ShPtr<const void>& i_sender)
{
  m_sender = i_sender;
  return lmStatus();
}

unsigned int ClumNotification::makeID(const std::string& i_className, const std::string& i_name)
{
  // 32-bit FNV-1a (Fowler, Noll and Vo) of "class::name".
  unsigned int hash = 2166136261u;
  for (const char character : i_className + "::" + i_name)
    hash = (hash ^ static_cast<unsigned char>(character)) * 16777619u;
  return hash;
}

void ClumNotification::value(const std::string& i_key, const ClumValue& i_value)
{
  for (auto& [key, value] : m_values)
    if (key == i_key)
    {
      value = i_value;
      return;
    }
  m_values.emplace_back(i_key, i_value);
}

ClumValue ClumNotification::value(const std::string& i_key) const
{
  for (const auto& [key, value] : m_values)
    if (key == i_key)
      return value;
  return ClumValue();
}

unsigned int lumRegisterNotification(const ClumClassShPtr& i_class, const char* i_name)
{
  const unsigned int id = ClumNotification::makeID(i_class->name(), i_name);
  i_class->addNotification(ClumNotificationDescriptor::create(i_name, i_class->name(), id));
  return id;
}
