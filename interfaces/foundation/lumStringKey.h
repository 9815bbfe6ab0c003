#pragma once

#include "foundation/lumExport.h"

#include <string>

/// An interned text: two keys of equal text hold the same pointer, so that comparing them costs one instruction.
///
/// Making one looks the text up in a table of the process (under a lock); code that runs often keeps its keys in
/// statics. The table only grows. Copying costs nothing.
class LUM_API ClumStringKey
{
public:
  ClumStringKey(const char* i_text);
  ClumStringKey(const std::string& i_text);

  const std::string& text() const { return *m_text; }

  bool operator==(const ClumStringKey& i_other) const { return m_text == i_other.m_text; }
  bool operator!=(const ClumStringKey& i_other) const { return m_text != i_other.m_text; }

private:
  const std::string* m_text; ///< in the table, for as long as the process lives
};
