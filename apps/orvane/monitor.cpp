#include "monitor.h"

#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRoadmap.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace
{
volatile std::sig_atomic_t g_isInterrupted = 0;

void noteInterrupt(int i_signal)
{
  g_isInterrupted = 1;
  std::signal(i_signal, SIG_DFL);
}
} // namespace

void catchInterrupts()
{
  std::signal(SIGINT, noteInterrupt);
}

bool isInterrupted()
{
  return g_isInterrupted != 0;
}

SearchMonitor::SearchMonitor(unsigned int i_maxSteps, std::optional<double> i_timeLimit, const CorvConfig& i_start,
                             const CorvConfig& i_goal)
  : m_maxSteps(i_maxSteps), m_timeLimit(i_timeLimit), m_start(i_start), m_goal(i_goal),
    m_isTerminal(isatty(fileno(stderr)) != 0), m_begin(std::chrono::steady_clock::now()), m_nextDrawing(m_begin)
{
}

SearchMonitor::~SearchMonitor()
{
  clearLine();
}

double SearchMonitor::seconds() const
{
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
}

bool SearchMonitor::plannerShouldStopPlanning(const CorvPathPlannerShPtr& i_planner)
{
  const auto now = std::chrono::steady_clock::now();
  if (m_isTerminal && now >= m_nextDrawing)
  {
    draw();
    m_nextDrawing = now + std::chrono::milliseconds(100);
  }
  if (isInterrupted())
    m_ending = "interrupted";
  else if (m_timeLimit && seconds() >= *m_timeLimit)
    m_ending = "the time limit was reached";
  else if (!m_isOptimizing && m_steps >= m_maxSteps)
    m_ending = "no path within " + std::to_string(m_maxSteps) + " steps";
  if (!m_ending.empty() || (!m_isOptimizing && m_steps >= m_turnEnd))
    return true;
  m_steps += !m_isOptimizing;
  return CorvPathPlannerDelegate::plannerShouldStopPlanning(i_planner);
}

double SearchMonitor::distanceToGoal(const CorvRoadmap& i_roadmap) const
{
  const CorvNodeShPtr start = i_roadmap.nodeWithEquivalentConfig(m_start);
  CorvNodeShPtr nearest;
  return start ? start->connectedComponent()->minDistanceTo(m_goal, nearest) : m_start.distanceTo(m_goal);
}

void SearchMonitor::draw()
{
  static const char* const s_wheel = "|/-\\";
  const char turn = s_wheel[(static_cast<unsigned int>(seconds() * 10.0)) % 4];
  if (m_isOptimizing)
    std::fprintf(stderr, "\r%c shortening the path, %.1f s\033[K", turn, seconds());
  else
  {
    const int width = 10, filled = static_cast<int>(static_cast<double>(m_steps) / std::max(m_maxSteps, 1u) * width);
    char bar[width + 1] = "..........";
    for (int i = 0; i < filled && i < width; ++i)
      bar[i] = '#';
    unsigned int nodes = 0, components = 0;
    double distance = m_start.distanceTo(m_goal);
    for (const CorvRoadmapShPtr& roadmap : m_roadmaps)
    {
      nodes += roadmap->countNodes();
      components += roadmap->countConnectedComponents();
      distance = std::min(distance, distanceToGoal(*roadmap));
    }
    std::fprintf(stderr, "\r%c [%s] step %u, %u nodes in %u components, %.4g to the goal\033[K", turn, bar, m_steps,
                 nodes, components, distance);
  }
  std::fflush(stderr);
  m_hasLine = true;
}

void SearchMonitor::clearLine()
{
  if (m_hasLine)
    std::fputs("\r\033[K", stderr);
  m_hasLine = false;
}
