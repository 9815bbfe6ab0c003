#include "foundation/lumStatus.h"

#include "foundation/lumRuntime.h"

#include <algorithm>

lmStatus& lmStatus::operator=(const lmStatus& i_other)
{
  if (this != &i_other)
  {
    m_code = i_other.m_code;
    m_causes.reset();
    if (i_other.m_causes)
      copyCauses(i_other);
  }
  return *this;
}

lmStatus& lmStatus::operator=(unsigned int i_code)
{
  m_code = i_code;
  m_causes.reset();
  return *this;
}

void lmStatus::push(unsigned int i_code)
{
  if (m_code != SUCCESS)
  {
    if (!m_causes)
      m_causes = std::make_unique<std::vector<unsigned int>>();
    m_causes->insert(m_causes->begin(), m_code);
  }
  m_code = i_code;
}

void lmStatus::setWithReason(unsigned int i_code, unsigned int i_reason)
{
  *this = i_reason;
  push(i_code);
}

void lmStatus::setWithReason(unsigned int i_code, const lmStatus& i_reason)
{
  *this = i_reason;
  push(i_code);
}

bool lmStatus::hasCode(unsigned int i_code) const
{
  return m_code == i_code ||
         (m_causes && std::find(m_causes->begin(), m_causes->end(), i_code) != m_causes->end());
}

std::string lmStatus::description() const
{
  std::string text = ClumRuntime::instance().statusMessage(m_code);
  if (m_causes)
    for (const unsigned int cause : *m_causes)
      text += ", because: " + ClumRuntime::instance().statusMessage(cause);
  return text;
}

void lmStatus::copyCauses(const lmStatus& i_other)
{
  m_causes = std::make_unique<std::vector<unsigned int>>(*i_other.m_causes);
}
