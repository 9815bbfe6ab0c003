#include "foundation/lumLogManager.h"

#include <cstdio>
#include <iterator>
#include <istream>
#include <mutex>

namespace
{
class StandardErrorSink : public ClumLogSink
{
public:
  void write(ElumLogType i_type, const std::string& i_text) override
  {
    if (i_type == LUM_LOG_INFO)
      return;
    std::fprintf(stderr, "%s: %s\n", i_type == LUM_LOG_ERROR ? "error" : "warning", i_text.c_str());
  }
};

struct Log
{
  std::mutex mutex;
  ClumLogSinkShPtr sink = ClumLogSinkShPtr(new StandardErrorSink);
};

Log& theLog()
{
  static Log s_log;
  return s_log;
}

void writeLogEntry(ElumLogType i_type, const std::string& i_text)
{
  Log& log = theLog();
  const std::lock_guard<std::mutex> lock(log.mutex);
  if (log.sink)
    log.sink->write(i_type, i_text);
}
}  // namespace

void ClumLogManager::addError(const std::string& i_text)
{
  writeLogEntry(LUM_LOG_ERROR, i_text);
}

void ClumLogManager::addError(const char* i_file, int i_line, const std::string& i_text)
{
  writeLogEntry(LUM_LOG_ERROR, std::string(i_file) + ":" + std::to_string(i_line) + ": " + i_text);
}

void ClumLogManager::addWarning(const std::string& i_text)
{
  writeLogEntry(LUM_LOG_WARNING, i_text);
}

void ClumLogManager::addInfo(const std::string& i_text)
{
  writeLogEntry(LUM_LOG_INFO, i_text);
}

void ClumLogManager::writeLog(std::istream& i_text, ElumLogType i_type)
{
  writeLogEntry(i_type, std::string(std::istreambuf_iterator<char>(i_text), std::istreambuf_iterator<char>()));
}

ClumLogSinkShPtr ClumLogManager::sink(const ClumLogSinkShPtr& i_sink)
{
  Log& log = theLog();
  const std::lock_guard<std::mutex> lock(log.mutex);
  ClumLogSinkShPtr previous = i_sink;
  previous.swap(log.sink);
  return previous;
}
