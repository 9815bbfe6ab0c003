#include "foundation/lumStringKey.h"

#include <mutex>
#include <unordered_set>

namespace
{
struct CInternedTexts
{
  std::mutex mutex;
  std::unordered_set<std::string> texts;
};

const std::string* internedText(const std::string& i_text)
{
  // Never destroyed: keys in statics of any library must stay readable until the process ends.
  static CInternedTexts* const s_table = new CInternedTexts;
  const std::lock_guard<std::mutex> guard(s_table->mutex);
  return &*s_table->texts.insert(i_text).first;
}
} // namespace

ClumStringKey::ClumStringKey(const char* i_text) : m_text(internedText(i_text ? i_text : ""))
{
}

ClumStringKey::ClumStringKey(const std::string& i_text) : m_text(internedText(i_text))
{
}
