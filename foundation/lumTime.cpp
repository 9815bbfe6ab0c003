#include "foundation/lumTime.h"

#include <chrono>

namespace
{
double stopwatchClock()
{
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}
} // namespace

void ClumTime::start(double i_elapsed)
{
  m_elapsed = i_elapsed;
  m_since = stopwatchClock();
  m_isStarted = true;
}

void ClumTime::stop()
{
  m_elapsed = elapsedTime();
  m_isStarted = false;
}

double ClumTime::elapsedTime() const
{
  return m_isStarted ? m_elapsed + (stopwatchClock() - m_since) : m_elapsed;
}
