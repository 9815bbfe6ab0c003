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

/// Reads the command line. An argument "@FILE" stands for the words in that file, parted by white space; double quotes
/// keep a word together, and `#` at a word's beginning starts a comment to the end of the line.
/// @return true if `o_options` holds a request to plan. Otherwise either help was printed, `o_isHelp`, or the input is
///         bad, with one line in `o_error`.
bool parseOptions(int i_count, const char* const* i_arguments, PlanOptions& o_options, bool& o_isHelp,
                  std::string& o_error);
