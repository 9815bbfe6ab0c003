#pragma once

#include "foundation/lumExport.h"

/// A stopwatch in seconds, on a clock that never goes back.
class LUM_API ClumTime
{
public:
  /// Starts it anew. @param i_elapsed seconds that count as already gone.
  void start(double i_elapsed = 0.0);
  /// Holds the elapsed time as it is; nothing happens if the watch does not run.
  void stop();
  bool isStarted() const { return m_isStarted; }
  /// @return seconds since the start, up to the stop if it was stopped; 0 before the first start.
  double elapsedTime() const;

private:
  bool m_isStarted = false;
  double m_elapsed = 0.0; ///< counted before `m_since`
  double m_since = 0.0;   ///< the clock's reading at the start
};
