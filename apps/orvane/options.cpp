#include "options.h"

#include <CLI/CLI.hpp>

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
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

/// Refuses, in few words, what is no finite number of the range.
CLI::Validator numberCheck(bool i_isZeroAllowed)
{
  const std::string range = i_isZeroAllowed ? "not below 0" : "above 0";
  const auto check = [=](const std::string& i_text)
  {
    char* end = nullptr;
    const double value = std::strtod(i_text.c_str(), &end);
    const bool isNumber = end != i_text.c_str() && *end == '\0' && std::isfinite(value);
    const bool isGood = isNumber && (i_isZeroAllowed ? value >= 0.0 : value > 0.0);
    return isGood ? std::string() : "expected a number " + range + ", got '" + i_text + "'";
  };
  return CLI::Validator(check, std::string(), "number");
}

CLI::Validator wholeNumberCheck()
{
  const auto check = [](const std::string& i_text)
  {
    const bool isWhole = !i_text.empty() && i_text.find_first_not_of("0123456789") == std::string::npos &&
                         (i_text[0] != '0' || i_text.size() == 1) && i_text.size() <= 10 &&
                         std::strtoull(i_text.c_str(), nullptr, 10) <= std::numeric_limits<unsigned int>::max();
    return isWhole ? std::string() : "expected a whole number from 0 to 4294967295, got '" + i_text + "'";
  };
  return CLI::Validator(check, std::string(), "whole number");
}

CLI::Validator nameCheck()
{
  const auto check = [](const std::string& i_text)
  { return i_text.empty() ? std::string("the file name is empty") : std::string(); };
  return CLI::Validator(check, std::string(), "file name");
}

/// Appends the words of an argument file. @throw CLI::FileError if it cannot be read.
void readArgumentFile(const std::string& i_path, std::vector<std::string>& io_arguments)
{
  std::error_code ignored;
  std::ifstream file(i_path);
  if (!std::filesystem::is_regular_file(i_path, ignored) || !file)
    throw CLI::FileError("cannot read the argument file '" + i_path + "'");
  std::string word;
  bool isWord = false, isQuoted = false;
  const auto endWord = [&]
  {
    if (isWord)
      io_arguments.push_back(word);
    word.clear();
    isWord = false;
  };
  for (char character; file.get(character);)
  {
    if (character == '"')
    {
      isQuoted = !isQuoted;
      isWord = true;
    }
    else if (!isQuoted && std::isspace(static_cast<unsigned char>(character)))
      endWord();
    else if (!isQuoted && !isWord && character == '#')
      file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    else
    {
      word += character;
      isWord = true;
    }
  }
  if (isQuoted)
    throw CLI::FileError("a quote is not closed in the argument file '" + i_path + "'");
  endWord();
}

std::vector<std::string> expandedArguments(int i_count, const char* const* i_arguments)
{
  std::vector<std::string> arguments;
  for (int i = 1; i < i_count; ++i)
    if (i_arguments[i][0] == '@')
      readArgumentFile(i_arguments[i] + 1, arguments);
    else
      arguments.push_back(i_arguments[i]);
  return arguments;
}

/// `--start "-1 0 …"` must not be taken for an option: the value is joined to its name. In reverse order, as the parser
/// takes them.
std::vector<std::string> joinedArguments(const std::vector<std::string>& i_arguments)
{
  std::vector<std::string> joined;
  for (std::size_t i = 0; i < i_arguments.size(); ++i)
  {
    const std::string& argument = i_arguments[i];
    const bool takesSix = argument == "--start" || argument == "--goal" || argument == "--bounds";
    if (takesSix && i + 1 < i_arguments.size() && i_arguments[i + 1].rfind("--", 0) != 0)
      joined.push_back(argument + "=" + (i_arguments[++i].empty() ? " " : i_arguments[i]));
    else
      joined.push_back(argument);
  }
  return {joined.rbegin(), joined.rend()};
}

void addOptions(CLI::App& io_plan, PlanOptions& o_options)
{
  io_plan.add_option("--part", o_options.part, "Mesh file of the part; its poses move the file's origin")
    ->required()
    ->check(nameCheck());
  io_plan.add_option("--obstacles", o_options.obstacles, "Mesh files of the obstacles")->required()->check(nameCheck());
  addSixNumbers(io_plan, "--start", o_options.start, "Pose x y z rx ry rz: translation, then Rx(rx)·Ry(ry)·Rz(rz)");
  addSixNumbers(io_plan, "--goal", o_options.goal, "Pose, in the same convention");
  addSixNumbers(io_plan, "--bounds", o_options.bounds, "xmin ymin zmin xmax ymax zmax of the part's origin");
  io_plan
    .add_option("--penetration", o_options.penetration,
                "Depth that the proof may miss; 0 proves exactly; by default from the part's size")
    ->check(numberCheck(true));
  io_plan.add_option("--deviation", o_options.deviation, "Size of a random step; by default from the scene")
    ->check(numberCheck(false));
  io_plan.add_option("--seed", o_options.seed, "Seed of the random generator")
    ->check(wholeNumberCheck())
    ->capture_default_str();
  io_plan.add_option("--max-steps", o_options.maxSteps, "Steps of the search at most")
    ->check(wholeNumberCheck())
    ->capture_default_str();
  io_plan.add_option("--time-limit", o_options.timeLimit, "Seconds at most")->check(numberCheck(false));
  io_plan.add_flag("--optimize", o_options.doesOptimize, "Shorten the path that was found");
  io_plan.add_option("--sample-step", o_options.sampleStep, "Distance between the configurations written")
    ->check(numberCheck(false));
  io_plan.add_option("--out", o_options.out, "CSV file for the configurations")->check(nameCheck());
  io_plan.add_option("--svg", o_options.svg, "SVG file for a picture of scene and path")->check(nameCheck());
  io_plan.add_flag("--json", o_options.isJson, "Print the result as JSON");
  io_plan.footer("The exit code is 0 for a path, 1 if none was found within the limits, 2 for bad input, 3 for an "
                 "invalid start or goal.\n\"@FILE\" stands for the arguments written in that file.");
}

bool areBoundsOrdered(const std::array<double, 6>& i_bounds, std::string& o_error)
{
  for (int axis = 0; axis < 3; ++axis)
    if (i_bounds[axis] > i_bounds[axis + 3])
    {
      std::ostringstream text;
      text << "--bounds: minimum " << i_bounds[axis] << " exceeds maximum " << i_bounds[axis + 3];
      o_error = text.str();
      return false;
    }
  return true;
}
} // namespace

bool parseOptions(int i_count, const char* const* i_arguments, PlanOptions& o_options, bool& o_isHelp,
                  std::string& o_error)
{
  CLI::App app("Plans motions that are proved free of collision.", "orvane");
  app.require_subcommand(1);
  app.set_version_flag("--version", "orvane " ORVANE_VERSION);
  addOptions(*app.add_subcommand("plan", "Plan a motion of a free-flying rigid part among obstacles."), o_options);
  o_isHelp = false;
  try
  {
    app.parse(joinedArguments(expandedArguments(i_count, i_arguments)));
  }
  catch (const CLI::Success& help)
  {
    app.exit(help);
    o_isHelp = true;
    return false;
  }
  catch (const CLI::RequiredError& error)
  {
    o_error = std::string(error.what()) + "; 'orvane plan --help' tells more";
    return false;
  }
  catch (const CLI::ParseError& error)
  {
    o_error = error.what();
    return false;
  }
  return areBoundsOrdered(o_options.bounds, o_error);
}
