#include "options.h"
#include "report.h"
#include "scene.h"
#include "search.h"

#include "kinematics/orvUtility.h"
#include "paths/orvPath.h"

#include <chrono>
#include <cmath>
#include <cstdio>

namespace
{
enum EExitCode
{
  EXIT_PATH = 0,
  EXIT_NONE_FOUND = 1,
  EXIT_BAD_INPUT = 2,
  EXIT_INVALID_END = 3
};

int fail(const std::string& i_error, int i_code)
{
  std::fprintf(stderr, "orvane: %s\n", i_error.c_str());
  return i_code;
}

/// @return false, the faults told on standard error, if start or goal is invalid.
bool areEndsValid(const PlanScene& i_scene)
{
  bool areValid = true;
  for (const auto& [name, config] : {std::pair("start", &i_scene.start()), std::pair("goal", &i_scene.goal())})
    for (const std::string& fault : i_scene.faultsOf(*config))
    {
      std::fprintf(stderr, "orvane: the %s is invalid: %s\n", name, fault.c_str());
      areValid = false;
    }
  return areValid;
}

/// Writes the files that were asked for. @return false with one line in `o_error`.
bool writeFiles(const PlanOptions& i_options, const PlanScene& i_scene, const SearchResult& i_result,
                std::string& o_error)
{
  if (!i_options.out.empty() && i_result.isSolved)
  {
    const double step = i_options.sampleStep.value_or(std::fmax(i_result.lengthAfter / 200.0, 1e-12));
    if (!writeFile(i_options.out, pathTable(*i_result.path, step), o_error))
      return false;
  }
  return i_options.svg.empty() || writeFile(i_options.svg, scenePicture(i_scene, i_result), o_error);
}
} // namespace

int main(int i_count, char** i_arguments)
{
  PlanOptions options;
  if (const std::optional<int> code = parseOptions(i_count, i_arguments, options))
    return *code;

  const auto begin = std::chrono::steady_clock::now();
  PlanScene scene;
  std::string error;
  if (!scene.load(options, error))
    return fail(error, EXIT_BAD_INPUT);
  const double loadSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  if (!areEndsValid(scene))
    return EXIT_INVALID_END;

  CorvUtility::randomSeed(options.seed);
  SearchResult result = search(scene, options);
  result.loadSeconds = loadSeconds;
  const std::string text = options.isJson ? resultJson(options, scene, result) : resultText(options, scene, result);
  std::fputs(text.c_str(), stdout);
  if (!writeFiles(options, scene, result, error))
    return fail(error, EXIT_BAD_INPUT);
  return result.isSolved ? EXIT_PATH : EXIT_NONE_FOUND;
}
