#pragma once

#include "foundation/handles.h"
#include "kinematics/orvConfig.h"
#include "planners/orvPathPlannerDelegate.h"
#include "roadmaps/handles.h"

#include <chrono>
#include <optional>
#include <vector>

/// From now on the first interrupt (Ctrl-C) is noted, and a second one ends the program.
void catchInterrupts();
bool isInterrupted();

/// Watches a search: counts its steps, ends it at a limit or an interrupt, and draws a progress line on a terminal.
class SearchMonitor : public CorvPathPlannerDelegate
{
public:
  SearchMonitor(unsigned int i_maxSteps, std::optional<double> i_timeLimit, const CorvConfig& i_start,
                const CorvConfig& i_goal);
  ~SearchMonitor() override;

  /// Takes a roadmap into the progress line.
  void watch(const CorvRoadmapShPtr& i_roadmap) { m_roadmaps.push_back(i_roadmap); }
  /// Stops the planner, without an ending, after this many steps from now.
  void beginTurn(unsigned int i_steps) { m_turnEnd = m_steps + i_steps; }

  bool plannerShouldStopPlanning(const CorvPathPlannerShPtr& i_planner) override;

  unsigned int steps() const { return m_steps; }
  double seconds() const;
  /// Why the search was ended from outside, or an empty text.
  const std::string& ending() const { return m_ending; }
  /// From now on steps are neither counted nor limited, and the line says what goes on.
  void beginOptimizing() { m_isOptimizing = true; }
  void clearLine();

private:
  void draw();
  double distanceToGoal(const CorvRoadmap& i_roadmap) const;

  unsigned int m_maxSteps;
  std::optional<double> m_timeLimit;
  std::vector<CorvRoadmapShPtr> m_roadmaps;
  CorvConfig m_start;
  CorvConfig m_goal;
  unsigned int m_steps = 0;
  unsigned int m_turnEnd = 0;
  bool m_isOptimizing = false;
  bool m_isTerminal;
  bool m_hasLine = false;
  std::string m_ending;
  std::chrono::steady_clock::time_point m_begin;
  std::chrono::steady_clock::time_point m_nextDrawing;
};
