#include "harness.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <vector>

namespace
{
std::map<std::string, void (*)()>& sections()
{
  static std::map<std::string, void (*)()> s_sections;
  return s_sections;
}

double secondsFor(const std::function<void()>& i_work, unsigned int i_count)
{
  const auto begin = std::chrono::steady_clock::now();
  for (unsigned int i = 0; i < i_count; ++i)
    i_work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() / i_count;
}

unsigned int executionsPerRound(const std::function<void()>& i_work)
{
  unsigned int count = 1;
  while (secondsFor(i_work, count) * count < 0.02 && count < (1u << 24))
    count *= 2;
  return count;
}

double median(std::vector<double> i_values)
{
  std::nth_element(i_values.begin(), i_values.begin() + i_values.size() / 2, i_values.end());
  return i_values[i_values.size() / 2];
}
} // namespace

Comparison compare(const std::function<void()>& i_first, const std::function<void()>& i_second)
{
  const unsigned int firstCount = executionsPerRound(i_first), secondCount = executionsPerRound(i_second);
  std::vector<double> first, second;
  for (int round = 0; round < 11; ++round)
  {
    first.push_back(secondsFor(i_first, firstCount));
    second.push_back(secondsFor(i_second, secondCount));
  }
  return {median(first), median(second)};
}

void report(const std::string& i_what, double i_ratio, const std::string& i_target)
{
  std::printf("  %-78s %10.3g   (%s)\n", i_what.c_str(), i_ratio, i_target.c_str());
  std::fflush(stdout);
}

void report(const std::string& i_what, const std::string& i_value)
{
  std::printf("  %-78s %10s\n", i_what.c_str(), i_value.c_str());
  std::fflush(stdout);
}

Section::Section(const char* i_name, void (*i_run)())
{
  sections()[i_name] = i_run;
}

/// Runs the sections named, or all.
int main(int i_count, char** i_arguments)
{
  const std::vector<std::string> wanted(i_arguments + 1, i_arguments + i_count);
  for (const std::string& name : wanted)
    if (sections().find(name) == sections().end())
    {
      std::fprintf(stderr, "no such section: %s; there are:", name.c_str());
      for (const auto& section : sections())
        std::fprintf(stderr, " %s", section.first.c_str());
      std::fprintf(stderr, "\n");
      return 2;
    }
  for (const auto& [name, run] : sections())
    if (wanted.empty() || std::find(wanted.begin(), wanted.end(), name) != wanted.end())
    {
      std::printf("%s\n", name.c_str());
      run();
    }
  return 0;
}
