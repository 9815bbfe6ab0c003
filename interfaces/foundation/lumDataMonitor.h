#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"

#include <string>

/// Takes what the data monitor is given. Derive from it to draw, write or count.
class LUM_API ClumDataMonitorSink
{
public:
  virtual ~ClumDataMonitorSink() = default;
  /// The next value of a curve.
  virtual void plot(const std::string& i_name, double i_value) = 0;
  /// A thing to be shown under a name, in place of what was shown there.
  virtual void display(const std::string& i_name, const ClumObjectConstShPtr& i_object) = 0;
};

/// A window into running operations, for those who look for faults.
///
/// Without a sink nothing is sent: a sender asks `s_hasMonitor` first, so that a name is not even put together. One
/// thread at a time.
class LUM_API ClumDataMonitor
{
public:
  /// True while there is a sink. To be read only.
  static bool s_hasMonitor;

  static void plot(const std::string& i_name, double i_value);
  static void display(const std::string& i_name, const ClumObjectConstShPtr& i_object);

  /// Replaces the sink; null for none, as at first. @return the previous one.
  static ClumDataMonitorSinkShPtr sink(const ClumDataMonitorSinkShPtr& i_sink);
};
