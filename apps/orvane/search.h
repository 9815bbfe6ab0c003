#pragma once

#include "options.h"
#include "scene.h"

#include "foundation/handles.h"
#include "paths/handles.h"

#include <cstdint>
#include <string>
#include <vector>

/// What a search came to.
struct SearchResult
{
  bool isSolved = false;
  CorvPathShPtr path; ///< null unless solved
  std::string ending; ///< why the search ended, if it found nothing

  double penetration = 0.0; ///< what was used, given or chosen
  double deviation = 0.0;
  double extension = 0.0;    ///< longest motion tried at once by the near search
  double farExtension = 0.0; ///< and by the far one
  std::vector<std::string> notes;

  unsigned int steps = 0;
  unsigned int nodes = 0;
  unsigned int edges = 0;
  unsigned long motionsTested = 0;
  unsigned long configsTested = 0;
  std::uint64_t collisionQueries = 0;

  double loadSeconds = 0.0;
  double planSeconds = 0.0;
  double optimizeSeconds = 0.0;
  double lengthBefore = 0.0;
  double lengthAfter = 0.0;
};

/// Plans from the scene's start to its goal, and shortens the path if asked to. Shows its progress on a terminal;
/// an interrupt or a limit ends it with what was found.
///
/// Two searches take turns, one of short motions and one of longer ones.
SearchResult search(const PlanScene& i_scene, const PlanOptions& i_options);
