#include "foundation/lumNotificator.h"

#include "foundation/lumNotification.h"

#include <algorithm>

ClumNotificatorShPtr ClumNotificator::create()
{
  return ClumNotificatorShPtr(new ClumNotificator);
}

lmStatus ClumNotificator::subscribe(unsigned int i_id, const WkPtr<const void>& i_listener,
                                    const ShPtr<ClumBaseNotificationCallback>& i_callback)
{
  if (!i_callback || i_listener.expired())
    return lmStatus(lmStatus::FAILURE);
  for (const CSubscription& subscription : m_subscriptions)
    if (subscription.callback && subscription.id == i_id && subscription.callback->target() == i_callback->target() &&
        !subscription.listener.expired())
      return lmStatus(lmStatus::FAILURE);
  m_subscriptions.push_back(CSubscription{i_id, i_listener, i_callback});
  return lmStatus();
}

lmStatus ClumNotificator::unsubscribe(unsigned int i_id, const WkPtr<const void>&, const void* i_target)
{
  return unsubscribe(i_id, i_target);
}

lmStatus ClumNotificator::unsubscribe(unsigned int i_id, const void* i_target)
{
  return removeIf([&](const CSubscription& s) { return s.id == i_id && s.callback->target() == i_target; });
}

lmStatus ClumNotificator::unsubscribe(const void* i_target)
{
  return removeIf([&](const CSubscription& s) { return s.callback->target() == i_target; });
}

template <class PREDICATE>
lmStatus ClumNotificator::removeIf(PREDICATE i_predicate)
{
  bool isAnyRemoved = false;
  for (CSubscription& subscription : m_subscriptions)
    if (subscription.callback && i_predicate(subscription))
    {
      subscription.callback.reset();
      isAnyRemoved = true;
    }
  m_needsSweep = m_needsSweep || isAnyRemoved;
  sweep();
  return isAnyRemoved ? lmStatus() : lmStatus(lmStatus::FAILURE);
}

void ClumNotificator::sweep() const
{
  if (m_depth > 0 || !m_needsSweep)
    return;
  m_needsSweep = false;
  m_subscriptions.erase(
    std::remove_if(m_subscriptions.begin(), m_subscriptions.end(), [](const CSubscription& s) { return !s.callback; }),
    m_subscriptions.end());
}

void ClumNotificator::notify(const ShPtr<const ClumNotification>& i_notification) const
{
  ++m_depth;
  // By index, and no further than what was there at the start: a listener may subscribe, which may move the vector.
  const std::size_t count = m_subscriptions.size();
  for (std::size_t i = 0; i < count; ++i)
  {
    if (m_subscriptions[i].id != i_notification->id() || !m_subscriptions[i].callback)
      continue;
    const ShPtr<const void> listener = m_subscriptions[i].listener.lock();
    if (!listener)
    {
      m_subscriptions[i].callback.reset();
      m_needsSweep = true;
      continue;
    }
    const ShPtr<ClumBaseNotificationCallback> callback = m_subscriptions[i].callback;
    callback->call(i_notification);
  }
  --m_depth;
  sweep();
  const std::vector<ClumNotificatorShPtr> relays = m_relays;
  for (const ClumNotificatorShPtr& relay : relays)
    relay->notify(i_notification);
}

bool ClumNotificator::hasSubscribers(unsigned int i_id) const
{
  const auto listens = [&](const CSubscription& s) { return s.id == i_id && s.callback; };
  const auto relays = [&](const ClumNotificatorShPtr& r) { return r->hasSubscribers(i_id); };
  return std::any_of(m_subscriptions.begin(), m_subscriptions.end(), listens) ||
         std::any_of(m_relays.begin(), m_relays.end(), relays);
}

void ClumNotificator::addRelay(const ClumNotificatorShPtr& i_notificator)
{
  if (i_notificator && i_notificator.get() != this &&
      std::find(m_relays.begin(), m_relays.end(), i_notificator) == m_relays.end())
    m_relays.push_back(i_notificator);
}

void ClumNotificator::removeRelay(const ClumNotificatorShPtr& i_notificator)
{
  m_relays.erase(std::remove(m_relays.begin(), m_relays.end(), i_notificator), m_relays.end());
}
