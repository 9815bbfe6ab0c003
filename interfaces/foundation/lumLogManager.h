#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"

#include <iosfwd>
#include <string>

/// What a log entry is.
enum ElumLogType
{
  LUM_LOG_ERROR = 0,
  LUM_LOG_WARNING = 1,
  LUM_LOG_INFO = 2
};

/// Where log entries go. Derive from it to take them; `write` is called in the thread that logs, one call at a time.
class LUM_API ClumLogSink
{
public:
  virtual ~ClumLogSink() = default;
  virtual void write(ElumLogType i_type, const std::string& i_text) = 0;
};

/// The log of the library. Entries go to one sink, at first one that writes errors and warnings to standard error.
/// Logging never throws and never stops the caller.
class LUM_API ClumLogManager
{
public:
  static void addError(const std::string& i_text);
  static void addError(const char* i_file, int i_line, const std::string& i_text);
  static void addWarning(const std::string& i_text);
  static void addInfo(const std::string& i_text);
  /// Logs all that is left in the stream as one entry.
  static void writeLog(std::istream& i_text, ElumLogType i_type);

  /// Replaces the sink. @return the previous one, so that a caller can put it back. A null sink drops all entries.
  static ClumLogSinkShPtr sink(const ClumLogSinkShPtr& i_sink);
};
