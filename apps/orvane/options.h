#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

/// What `orvane plan` was asked for. Lengths are in the meshes' unit, angles in radians.
struct PlanOptions
{
  std::string part;
  std::vector<std::string> obstacles;
  std::array<double, 6> start{}; ///< x y z rx ry rz
  std::array<double, 6> goal{};
  std::array<double, 6> bounds{}; ///< xmin ymin zmin xmax ymax zmax, of the part's origin
  std::optional<double> penetration;
  std::optional<double> deviation;
  unsigned int seed = 1;
  unsigned int maxSteps = 100000;
  std::optional<double> timeLimit; ///< seconds of planning and optimising
  bool doesOptimize = false;
  std::optional<double> sampleStep;
  std::string out;
  std::string svg;
  bool isJson = false;
};

/// Reads the command line.
/// @return an exit code if the program is to end at once (help: 0, bad input: 2, with one line on standard error);
///         nothing if `o_options` holds a request to plan.
std::optional<int> parseOptions(int i_count, const char* const* i_arguments, PlanOptions& o_options);
