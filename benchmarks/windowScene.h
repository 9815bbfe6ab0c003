#pragma once

#include "options.h"

/// The hook and the window of the examples, for the benchmarks: lengths in millimetres, angles in radians.
inline PlanOptions windowScene(unsigned int i_seed)
{
  const std::string folder = std::string(ORVANE_DATA_DIR) + '/';
  PlanOptions options;
  options.part = folder + "hook.obj";
  options.obstacles = {folder + "wall.stl", folder + "pillar.obj", folder + "beam.stl"};
  options.start = {-200.0, 0.0, 0.0, 0.0, 0.0, 0.0};
  options.goal = {200.0, 0.0, 0.0, 0.0, 0.0, 0.0};
  options.bounds = {-300.0, -200.0, -200.0, 300.0, 200.0, 200.0};
  options.seed = i_seed;
  return options;
}
