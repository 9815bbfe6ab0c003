#include "monitor.h"
#include "options.h"
#include "output.h"
#include "report.h"
#include "scene.h"
#include "search.h"

#include "foundation/lumLogManager.h"
#include "kinematics/orvUtility.h"
#include "paths/orvPath.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>

namespace
{
enum EExitCode
{
  EXIT_PATH = 0,
  EXIT_NONE_FOUND = 1,
  EXIT_BAD_INPUT = 2,
  EXIT_INVALID_END = 3
};

/// Keeps what the library logs, each text once, so that it can be told in the result.
class LogNotes : public ClumLogSink
{
public:
  void write(ElumLogType i_type, const std::string& i_text) override
  {
    const bool isNew = std::find(m_notes.begin(), m_notes.end(), i_text) == m_notes.end();
    if (i_type != LUM_LOG_INFO && isNew && m_notes.size() < MAX_COUNT)
      m_notes.push_back(i_text);
  }

  const std::vector<std::string>& notes() const { return m_notes; }

private:
  static const std::size_t MAX_COUNT = 10;
  std::vector<std::string> m_notes;
};

int fail(const std::string& i_error, int i_code)
{
  printError(i_error);
  return i_code;
}

/// @return false, the faults told on standard error, if start or goal is invalid.
bool areEndsValid(const PlanScene& i_scene)
{
  bool areValid = true;
  for (const auto& [name, config] : {std::pair("start", &i_scene.start()), std::pair("goal", &i_scene.goal())})
    for (const std::string& fault : i_scene.faultsOf(*config))
    {
      printError(std::string("the ") + name + " is invalid: " + fault);
      areValid = false;
    }
  return areValid;
}

/// Between the rows of the table; what was asked for makes it no longer than a hundred thousand rows.
double tableStep(const PlanOptions& i_options, const SearchResult& i_result)
{
  const double mostRows = 1e5;
  return std::fmax(i_options.sampleStep.value_or(i_result.lengthAfter / 200.0), i_result.lengthAfter / mostRows);
}

/// Writes the files that were asked for. @return false with one line in `o_error`.
bool writeFiles(const PlanOptions& i_options, const PlanScene& i_scene, const SearchResult& i_result,
                std::string& o_error)
{
  if (!i_options.out.empty() && i_result.isSolved)
  {
    if (!writeFile(i_options.out, pathTable(*i_result.path, tableStep(i_options, i_result)), o_error))
      return false;
  }
  return i_options.svg.empty() || writeFile(i_options.svg, scenePicture(i_scene, i_result), o_error);
}

std::vector<std::string> gatherNotes(const PlanOptions& i_options, const PlanScene& i_scene, const LogNotes& i_log,
                                     const SearchResult& i_result)
{
  std::vector<std::string> notes = i_scene.notes();
  notes.insert(notes.end(), i_result.notes.begin(), i_result.notes.end());
  notes.insert(notes.end(), i_log.notes().begin(), i_log.notes().end());
  if (i_result.isSolved && i_options.sampleStep && tableStep(i_options, i_result) > *i_options.sampleStep)
    notes.push_back("--sample-step is too small for a table of 100000 rows at most: a larger one is taken");
  if (i_result.isSolved && i_options.doesOptimize && isInterrupted())
    notes.push_back("the shortening of the path was interrupted");
  return notes;
}

int planAndReport(const PlanOptions& i_options, const LogNotes& i_log)
{
  const auto begin = std::chrono::steady_clock::now();
  PlanScene scene;
  std::string error;
  if (!checkOutputs(i_options, error) || !scene.load(i_options, error))
    return fail(error, EXIT_BAD_INPUT);
  if (!areEndsValid(scene))
    return EXIT_INVALID_END;
  const double loadSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();

  CorvUtility::randomSeed(i_options.seed);
  SearchResult result = search(scene, i_options);
  result.loadSeconds = loadSeconds;
  const std::vector<std::string> notes = gatherNotes(i_options, scene, i_log, result);
  const bool isWritten = writeFiles(i_options, scene, result, error);
  std::fputs((i_options.isJson ? resultJson(i_options, notes, result) : resultText(i_options, notes, result)).c_str(),
             stdout);
  if (!isWritten)
    return fail(error, EXIT_BAD_INPUT);
  if (std::fflush(stdout) != 0)
    return fail(std::string("cannot print the result: ") + std::strerror(errno), EXIT_BAD_INPUT);
  return result.isSolved ? EXIT_PATH : EXIT_NONE_FOUND;
}
} // namespace

int main(int i_count, char** i_arguments)
{
  catchInterrupts();
  const ShPtr<LogNotes> log(new LogNotes);
  ClumLogManager::sink(log);
  try
  {
    PlanOptions options;
    std::string error;
    bool isHelp = false;
    if (!parseOptions(i_count, i_arguments, options, isHelp, error))
      return isHelp ? EXIT_PATH : fail(error, EXIT_BAD_INPUT);
    return planAndReport(options, *log);
  }
  catch (const std::bad_alloc&)
  {
    return fail("out of memory", EXIT_BAD_INPUT);
  }
  catch (const std::exception& exception)
  {
    return fail(exception.what(), EXIT_BAD_INPUT);
  }
}
