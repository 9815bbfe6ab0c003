#include "foundation/lumDataMonitor.h"

bool ClumDataMonitor::s_hasMonitor = false;

namespace
{
ClumDataMonitorSinkShPtr& dataMonitorSink()
{
  static ClumDataMonitorSinkShPtr s_sink;
  return s_sink;
}
} // namespace

void ClumDataMonitor::plot(const std::string& i_name, double i_value)
{
  if (const ClumDataMonitorSinkShPtr sink = dataMonitorSink())
    sink->plot(i_name, i_value);
}

void ClumDataMonitor::display(const std::string& i_name, const ClumObjectConstShPtr& i_object)
{
  if (const ClumDataMonitorSinkShPtr sink = dataMonitorSink())
    sink->display(i_name, i_object);
}

ClumDataMonitorSinkShPtr ClumDataMonitor::sink(const ClumDataMonitorSinkShPtr& i_sink)
{
  ClumDataMonitorSinkShPtr previous = i_sink;
  previous.swap(dataMonitorSink());
  s_hasMonitor = static_cast<bool>(i_sink);
  return previous;
}
