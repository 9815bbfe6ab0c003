#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"

#include <map>
#include <string>

/// Something that reflection knows by name: a class, or a member of one.
class LUM_API ClumRuntimeElement
{
public:
  virtual ~ClumRuntimeElement() = default;

  const std::string& name() const { return m_name; }
  /// The class that the element belongs to; a class object names itself.
  const std::string& className() const { return m_className; }

  /// Free annotations; "orvane.next.clr-name" is the name of an operation or enum in a managed-language binding.
  void setMetaAttribute(const std::string& i_key, const std::string& i_value) { m_metaAttributes[i_key] = i_value; }
  /// @return an empty text if there is none.
  std::string metaAttribute(const std::string& i_key) const
  {
    const auto found = m_metaAttributes.find(i_key);
    return found == m_metaAttributes.end() ? std::string() : found->second;
  }

protected:
  ClumRuntimeElement(const std::string& i_className, const std::string& i_name)
    : m_name(i_name), m_className(i_className)
  {
  }

private:
  std::string m_name;
  std::string m_className;
  std::map<std::string, std::string> m_metaAttributes;
};
