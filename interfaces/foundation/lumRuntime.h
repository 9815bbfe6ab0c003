#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"

#include <map>
#include <string>
#include <vector>

/// The registry of all class objects and status codes.
///
/// It is filled while the library loads, by one walk over the class tables of the layers; no call by a client starts it.
class LUM_API ClumRuntime
{
public:
  struct CStatusCode
  {
    ClumClassWkPtr owner;
    std::string name;
    std::string message;
  };
  using TStatusCodeMap = std::map<unsigned int, CStatusCode>;

  static ClumRuntime& instance();

  /// Keeps the class object. @return the one that is kept: the first that was registered under its name.
  ClumClassShPtr registerClassObject(const ClumClassShPtr& i_class);
  /// @return null if no class has that name.
  static ClumClassShPtr classWithName(const std::string& i_name);
  /// All class objects, by name.
  std::vector<ClumClassShPtr> classes() const;

  /// First come, first served: a number that is taken is not given again.
  /// @return the number, or -1 (all bits set) if it already stands for another code.
  unsigned int registerStatusCode(const ClumClassShPtr& i_owner, const std::string& i_name, unsigned int i_number,
                                  const std::string& i_message);
  const TStatusCodeMap& statusCodeMap() const { return m_statusCodes; }
  /// The message for humans of any code, registered or not.
  std::string statusMessage(unsigned int i_code) const;

private:
  ClumRuntime() = default;

  std::map<std::string, ClumClassShPtr> m_classes;
  TStatusCodeMap m_statusCodes;
};
