#include "foundation/lumRuntime.h"

#include "foundation/lumClass.h"
#include "foundation/lumClassTable.h"
#include "foundation/lumStatus.h"

namespace
{
/// The one static initialiser of reflection: every class of every layer describes itself.
const bool s_areLayersRegistered = []
{
#define LUM_REGISTER_LAYER(NAME) lumRegisterLayer_##NAME();
  LUM_FOR_EACH_LAYER(LUM_REGISTER_LAYER)
#undef LUM_REGISTER_LAYER
  return true;
}();
}  // namespace

ClumRuntime& ClumRuntime::instance()
{
  static ClumRuntime s_runtime;
  return s_runtime;
}

ClumClassShPtr ClumRuntime::registerClassObject(const ClumClassShPtr& i_class)
{
  return m_classes.emplace(i_class->name(), i_class).first->second;
}

ClumClassShPtr ClumRuntime::classWithName(const std::string& i_name)
{
  const auto& classes = instance().m_classes;
  const auto found = classes.find(i_name);
  return found == classes.end() ? ClumClassShPtr() : found->second;
}

std::vector<ClumClassShPtr> ClumRuntime::classes() const
{
  std::vector<ClumClassShPtr> classes;
  for (const auto& [name, object] : m_classes)
    classes.push_back(object);
  return classes;
}

unsigned int ClumRuntime::registerStatusCode(const ClumClassShPtr& i_owner, const std::string& i_name,
                                             unsigned int i_number, const std::string& i_message)
{
  const bool isNew = m_statusCodes.emplace(i_number, CStatusCode{i_owner, i_name, i_message}).second;
  return isNew ? i_number : lmStatus::FAILURE;
}

std::string ClumRuntime::statusMessage(unsigned int i_code) const
{
  if (i_code == lmStatus::SUCCESS)
    return "Success.";
  const auto found = m_statusCodes.find(i_code);
  if (found != m_statusCodes.end())
    return found->second.message;
  return i_code == lmStatus::FAILURE ? "Failure." : "Unknown status code " + std::to_string(i_code) + ".";
}
