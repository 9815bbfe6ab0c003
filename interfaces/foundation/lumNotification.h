#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"
#include "foundation/lumStatus.h"
#include "foundation/lumValue.h"

#include <string>
#include <utility>
#include <vector>

/// A message from an object to its listeners: an id, the sender and a few values under string keys. Derive from it for
/// one that carries more.
class LUM_API ClumNotification
{
public:
  virtual ~ClumNotification() = default;

  static ClumNotificationShPtr create(unsigned int i_id, const ShPtr<const void>& i_sender);
  /// The id of a notification: a hash of the two names, the same in every run and on every machine.
  static unsigned int makeID(const std::string& i_className, const std::string& i_name);

  unsigned int id() const { return m_id; }
  /// The sending object, told by its address: a sender need not be a `ClumObject`.
  const ShPtr<const void>& sender() const { return m_sender; }

  void value(const std::string& i_key, const ClumValue& i_value);
  /// @return an empty value if there is none under the key.
  ClumValue value(const std::string& i_key) const;
  void stringValue(const std::string& i_key, const std::string& i_value) { value(i_key, ClumValue(i_value)); }
  std::string stringValue(const std::string& i_key) const { return value(i_key).asString(); }
  void intValue(const std::string& i_key, int i_value) { value(i_key, ClumValue(i_value)); }
  int intValue(const std::string& i_key) const { return value(i_key).asInt(); }
  void unsignedIntValue(const std::string& i_key, unsigned int i_value) { value(i_key, ClumValue(i_value)); }
  unsigned int unsignedIntValue(const std::string& i_key) const { return value(i_key).asUnsignedInt(); }

protected:
  explicit ClumNotification(unsigned int i_id) : m_id(i_id) {}
  /// Second phase of construction, for derived notifications too: notes the sender.
  lmStatus initWithShPtr(const ClumNotificationWkPtr& i_weakPtr, const ShPtr<const void>& i_sender);

private:
  unsigned int m_id;
  ShPtr<const void> m_sender;
  std::vector<std::pair<std::string, ClumValue>> m_values;
};
