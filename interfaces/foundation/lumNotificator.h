#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"
#include "foundation/lumStatus.h"

#include <vector>

/// What a subscription calls.
class LUM_API ClumBaseNotificationCallback
{
public:
  virtual ~ClumBaseNotificationCallback() = default;
  virtual void call(const ShPtr<const ClumNotification>& i_notification) = 0;
  /// The object that is called, by which a subscription is found again.
  virtual const void* target() const = 0;
};

/// A callback to a member function `void f(const ShPtr<const ClumNotification>&)`.
template <class LISTENER>
class TlumNotificationCallback : public ClumBaseNotificationCallback
{
public:
  using TMember = void (LISTENER::*)(const ShPtr<const ClumNotification>&);

  TlumNotificationCallback(LISTENER* i_listener, TMember i_member) : m_listener(i_listener), m_member(i_member) {}
  void call(const ShPtr<const ClumNotification>& i_notification) override { (m_listener->*m_member)(i_notification); }
  const void* target() const override { return m_listener; }

private:
  LISTENER* m_listener;
  TMember m_member;
};

/// Hands the notifications of one sender to its subscribers, synchronously, in the order of subscription.
///
/// A subscription holds its listener weakly; a dead listener's subscription is dropped without a call. Subscribers may
/// subscribe and unsubscribe while a notification is on its way: a new one gets the next notification, a removed one
/// is not called any more. A relay gets all notifications of the notificator that it was added to.
class LUM_API ClumNotificator
{
public:
  static ClumNotificatorShPtr create();

  /// @return -1 for a null callback, a dead listener, or a target that is already subscribed to the id.
  lmStatus subscribe(unsigned int i_id, const WkPtr<const void>& i_listener,
                     const ShPtr<ClumBaseNotificationCallback>& i_callback);
  template <class LISTENER, class DERIVED>
  lmStatus subscribe(unsigned int i_id, const WkPtr<const void>& i_listener, DERIVED* i_object,
                     void (LISTENER::*i_member)(const ShPtr<const ClumNotification>&))
  {
    return subscribe(i_id, i_listener,
                     ShPtr<ClumBaseNotificationCallback>(new TlumNotificationCallback<LISTENER>(i_object, i_member)));
  }

  /// Ends the subscriptions of a target: to one id, or to all. @return -1 if there was none.
  lmStatus unsubscribe(unsigned int i_id, const WkPtr<const void>& i_listener, const void* i_target);
  lmStatus unsubscribe(unsigned int i_id, const void* i_target);
  lmStatus unsubscribe(const void* i_target);

  void notify(const ShPtr<const ClumNotification>& i_notification) const;
  bool hasSubscribers(unsigned int i_id) const;

  void addRelay(const ClumNotificatorShPtr& i_notificator);
  void removeRelay(const ClumNotificatorShPtr& i_notificator);

private:
  struct CSubscription
  {
    unsigned int id;
    WkPtr<const void> listener;
    ShPtr<ClumBaseNotificationCallback> callback;  ///< null once unsubscribed
  };

  ClumNotificator() = default;
  template <class PREDICATE>
  lmStatus removeIf(PREDICATE i_predicate);
  void sweep() const;

  mutable std::vector<CSubscription> m_subscriptions;
  std::vector<ClumNotificatorShPtr> m_relays;
  mutable unsigned int m_depth = 0;        ///< of nested `notify` calls, during which no subscription moves
  mutable bool m_needsSweep = false;
};
