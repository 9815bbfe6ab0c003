#pragma once

#include "foundation/lumLogManager.h"

#include <string>
#include <vector>

/// Takes the log for as long as it lives.
class LogCapture
{
public:
  LogCapture() : m_sink(new Sink), m_previous(ClumLogManager::sink(m_sink)) {}
  ~LogCapture() { ClumLogManager::sink(m_previous); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::size_t count() const { return m_sink->entries.size(); }
  bool contains(const std::string& i_text) const
  {
    for (const std::string& entry : m_sink->entries)
      if (entry.find(i_text) != std::string::npos)
        return true;
    return false;
  }

private:
  struct Sink : ClumLogSink
  {
    void write(ElumLogType, const std::string& i_text) override { entries.push_back(i_text); }
    std::vector<std::string> entries;
  };

  ShPtr<Sink> m_sink;
  ClumLogSinkShPtr m_previous;
};
