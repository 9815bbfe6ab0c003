#include "options.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>
#include <sstream>

namespace
{
std::array<double, 6> sixNumbers(const std::string& i_text)
{
  std::string separated = i_text;
  for (char& character : separated)
    if (character == ',')
      character = ' ';
  std::istringstream stream(separated);
  std::vector<double> values;
  for (std::string word; stream >> word;)
  {
    char* end = nullptr;
    const double value = std::strtod(word.c_str(), &end);
    if (*end != '\0' || !std::isfinite(value))
      throw CLI::ValidationError("expected six finite numbers, got '" + word + "' in '" + i_text + "'");
    values.push_back(value);
  }
  if (values.size() != 6)
    throw CLI::ValidationError("expected six numbers, got " + std::to_string(values.size()) + ": '" + i_text + "'");
  std::array<double, 6> result{};
  std::copy(values.begin(), values.end(), result.begin());
  return result;
}

void addSixNumbers(CLI::App& io_command, const std::string& i_name, std::array<double, 6>& o_values,
                   const std::string& i_description)
{
  io_command
    .add_option_function<std::string>(
      i_name,
      [&o_values, i_name](const std::string& i_text)
      {
        try
        {
          o_values = sixNumbers(i_text);
        }
        catch (const CLI::ValidationError& error)
        {
          throw CLI::ValidationError(i_name, error.what());
        }
      },
      i_description)
    ->required()
    ->type_name("\"SIX NUMBERS\"");
}

/// `--start "-1 0 …"` must not be taken for an option: the value is joined to its name.
std::vector<std::string> joinedArguments(int i_count, const char* const* i_arguments)
{
  std::vector<std::string> arguments;
  for (int i = 1; i < i_count; ++i)
  {
    const std::string argument = i_arguments[i];
    const bool takesSix = argument == "--start" || argument == "--goal" || argument == "--bounds";
    if (takesSix && i + 1 < i_count)
      arguments.push_back(argument + "=" + i_arguments[++i]);
    else
      arguments.push_back(argument);
  }
  return {arguments.rbegin(), arguments.rend()};
}
} // namespace

std::optional<int> parseOptions(int i_count, const char* const* i_arguments, PlanOptions& o_options)
{
  CLI::App app("Plans motions that are proved free of collision.", "orvane");
  app.require_subcommand(1);
  CLI::App* plan = app.add_subcommand("plan", "Plan a motion of a free-flying rigid part among obstacles.");
  plan->add_option("--part", o_options.part, "Mesh file of the part; its poses move the file's origin")->required();
  plan->add_option("--obstacles", o_options.obstacles, "Mesh files of the obstacles")->required();
  addSixNumbers(*plan, "--start", o_options.start, "Pose x y z rx ry rz: translation, then Rx(rx)·Ry(ry)·Rz(rz)");
  addSixNumbers(*plan, "--goal", o_options.goal, "Pose, in the same convention");
  addSixNumbers(*plan, "--bounds", o_options.bounds, "xmin ymin zmin xmax ymax zmax of the part's origin");
  plan
    ->add_option("--penetration", o_options.penetration,
                 "Depth that the proof may miss; 0 proves exactly; by default from the part's size")
    ->check(CLI::NonNegativeNumber);
  plan->add_option("--deviation", o_options.deviation, "Size of a random step; by default from the scene")
    ->check(CLI::PositiveNumber);
  plan->add_option("--seed", o_options.seed, "Seed of the random generator")->capture_default_str();
  plan->add_option("--max-steps", o_options.maxSteps, "Steps of the search at most")->capture_default_str();
  plan->add_option("--time-limit", o_options.timeLimit, "Seconds at most")->check(CLI::PositiveNumber);
  plan->add_flag("--optimize", o_options.doesOptimize, "Shorten the path that was found");
  plan->add_option("--sample-step", o_options.sampleStep, "Distance between the configurations written")
    ->check(CLI::PositiveNumber);
  plan->add_option("--out", o_options.out, "CSV file for the configurations");
  plan->add_option("--svg", o_options.svg, "SVG file for a picture of scene and path");
  plan->add_flag("--json", o_options.isJson, "Print the result as JSON");
  try
  {
    app.parse(joinedArguments(i_count, i_arguments));
  }
  catch (const CLI::CallForHelp& help)
  {
    return app.exit(help);
  }
  catch (const CLI::ParseError& error)
  {
    std::fprintf(stderr, "orvane: %s\n", error.what());
    return 2;
  }
  for (int axis = 0; axis < 3; ++axis)
    if (o_options.bounds[axis] > o_options.bounds[axis + 3])
    {
      std::fprintf(stderr, "orvane: --bounds: minimum %g exceeds maximum %g\n", o_options.bounds[axis],
                   o_options.bounds[axis + 3]);
      return 2;
    }
  return std::nullopt;
}
