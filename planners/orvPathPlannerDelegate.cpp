#include "planners/orvPathPlannerDelegate.h"

#include "planners/orvPathPlanner.h"

#include <algorithm>

/// A delegate that goes while it stands in a chain takes those behind it out, lest they keep the planner's address.
CorvPathPlannerDelegate::~CorvPathPlannerDelegate()
{
  for (const CNext& next : m_next)
  {
    if (const CorvPathPlannerDelegateShPtr delegate = next.held ? next.held : next.weak.lock())
      delegate->dissolveChain(*next.planner);
  }
}

void CorvPathPlannerDelegate::plannerWillStartPlanning(const CorvPathPlannerShPtr& i_planner,
                                                       const CorvPathConstShPtr& i_inputPath)
{
  if (const CorvPathPlannerDelegateShPtr next = nextDelegate(*i_planner))
    next->plannerWillStartPlanning(i_planner, i_inputPath);
}

void CorvPathPlannerDelegate::plannerDidFinishPlanning(const CorvPathPlannerShPtr& i_planner,
                                                       const CorvPathConstShPtr& i_outputPath, const lmStatus& i_status)
{
  if (const CorvPathPlannerDelegateShPtr next = nextDelegate(*i_planner))
    next->plannerDidFinishPlanning(i_planner, i_outputPath, i_status);
}

bool CorvPathPlannerDelegate::plannerShouldStopPlanning(const CorvPathPlannerShPtr& i_planner)
{
  const CorvPathPlannerDelegateShPtr next = nextDelegate(*i_planner);
  return next && next->plannerShouldStopPlanning(i_planner);
}

void CorvPathPlannerDelegate::plannerDidComputePartialPath(const CorvPathPlannerShPtr& i_planner,
                                                           const CorvPathConstShPtr& i_path)
{
  if (const CorvPathPlannerDelegateShPtr next = nextDelegate(*i_planner))
    next->plannerDidComputePartialPath(i_planner, i_path);
}

const CorvPathPlannerDelegate::CNext* CorvPathPlannerDelegate::entryOf(const CorvPathPlanner& i_planner) const
{
  const auto at =
    std::find_if(m_next.begin(), m_next.end(), [&](const CNext& next) { return next.planner == &i_planner; });
  return at == m_next.end() ? nullptr : &*at;
}

CorvPathPlannerDelegateShPtr CorvPathPlannerDelegate::nextDelegate(const CorvPathPlanner& i_planner) const
{
  const CNext* entry = entryOf(i_planner);
  if (!entry)
    return CorvPathPlannerDelegateShPtr();
  return entry->held ? entry->held : entry->weak.lock();
}

void CorvPathPlannerDelegate::nextDelegate(const CorvPathPlanner& i_planner,
                                           const CorvPathPlannerDelegateShPtr& i_delegate, bool i_isOwner)
{
  CNext next{&i_planner, i_isOwner ? CorvPathPlannerDelegateShPtr() : i_delegate, i_delegate};
  m_next.erase(
    std::remove_if(m_next.begin(), m_next.end(), [&](const CNext& entry) { return entry.planner == &i_planner; }),
    m_next.end());
  if (next.weak.lock())
    m_next.push_back(next);
}

void CorvPathPlannerDelegate::dissolveChain(const CorvPathPlanner& i_planner)
{
  CorvPathPlannerDelegateShPtr next = nextDelegate(i_planner);
  nextDelegate(i_planner, CorvPathPlannerDelegateShPtr());
  while (next)
  {
    const CorvPathPlannerDelegateShPtr behind = next->nextDelegate(i_planner);
    next->nextDelegate(i_planner, CorvPathPlannerDelegateShPtr());
    next = behind;
  }
}
